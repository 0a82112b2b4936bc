#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of its own with a standing server.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
wine=/usr/lib/wine/wine64
server=/usr/lib/wine/wineserver64
export WINEPREFIX="${MORVANTIS_WINEPREFIX:-$root/build/wineprefix}" WINEDEBUG="${WINEDEBUG:--all}"
# No debugger on a crash: it would take the exit code with it.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d}"
unset DISPLAY WAYLAND_DISPLAY
mkdir -p "$(dirname "$WINEPREFIX")"
# One caller at a time starts the server and makes the prefix; started by a test, the server would
# inherit the test's pipe and keep ctest waiting.
exec 9>"$WINEPREFIX.lock"
flock 9
if "$server" -p60 </dev/null >/dev/null 2>&1 9>&- || [ ! -e "$WINEPREFIX/.ready" ]; then
  init=$([ -e "$WINEPREFIX/.ready" ] || echo -i)
  "$wine" wineboot $init </dev/null >/dev/null 2>&1 9>&- || true
  touch "$WINEPREFIX/.ready"
fi
flock -u 9
exec 9>&-
exec "$wine" "$@"
