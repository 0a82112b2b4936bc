#!/usr/bin/env bash
# Runs the demo: a small engine that culls, picks, sends and draws its agents through the library,
# and leaves pictures and a page in build/demo/engine_host. From a bare checkout it installs what is
# missing, builds and runs.
#
# usage: demo.sh [option]...             the engine host; --help shows its options
#        demo.sh packets [option]...     two hosts exchange packets, some damaged on purpose
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
log=build/demo.log
mkdir -p build
if ! { scripts/bootstrap.sh demo && cmake --workflow --preset demo; } >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
programs=build/demo/bin
if [ "${1:-}" = packets ]; then
  shift
  exec examples/packet_road/run.sh $programs/packet_road $programs/packet_road "$@"
fi
exec $programs/engine_host --out build/demo/engine_host "$@"
