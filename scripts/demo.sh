#!/usr/bin/env bash
# Runs the demo: two host processes exchange packets through the library. From a bare checkout it
# installs what is missing, builds and runs; --help shows what the demo takes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
log=build/demo.log
mkdir -p build
if ! { scripts/bootstrap.sh demo && cmake --workflow --preset demo; } >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
exec examples/packet_road/run.sh build/demo/bin/packet_road build/demo/bin/packet_road "$@"
