#!/usr/bin/env bash
# Runs every test: Linux optimised, Linux under the address, undefined behaviour and thread
# sanitizers, Windows under Wine, the fuzz targets for a minute, static analysis, and the
# reference, whose warnings are errors. From a bare checkout it installs what is missing first.
#
# The last line is `tests: N passed, N failed, N skipped`, over all of it; details of a stage that
# failed stand above it and in build/logs/. Ends with 0 only if nothing failed.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
logs=build/logs
rm -rf "$logs"
mkdir -p "$logs"
fuzz_seconds=${MORVANTIS_FUZZ_SECONDS:-60} # all targets together

# stage <name> <command>...: runs a command with its output in a log, tells how long it took, and
# shows the log's end if it failed.
stage() {
  local name=$1 begin=$SECONDS result=passed
  shift
  "$@" >"$logs/$name.log" 2>&1 || result=FAILED
  printf '%-14s %s after %d s\n' "$name" "$result" $((SECONDS - begin))
  if [ $result = FAILED ]; then
    tail -n 150 "$logs/$name.log"
    echo "$name" >>"$logs/failed"
    return 1
  fi
  echo "$name" >>"$logs/passed"
}

# One configuration from its presets; results of a former run would be counted again.
workflow() {
  rm -rf "build/$2/results"
  cmake --workflow --preset "$1"
}

# One target starts from its corpus and searches for its share of the time. What it finds is kept
# outside the tree; a crash leaves its input in build/logs.
fuzz_target() {
  local name
  name=$(basename "$1")
  mkdir -p "build/fuzz/$name"
  UBSAN_OPTIONS=print_stacktrace=1 "$1" -max_total_time="$seconds_each" -print_final_stats=1 \
    -timeout=10 -artifact_prefix="$logs/$name-" "build/fuzz/$name" "fuzz/corpus/$name" \
    >"$logs/$name.log" 2>&1 && return
  tail -n 100 "$logs/$name.log"
  return 1
}

# All targets, two at a time.
fuzz() {
  local programs=() program
  for program in build/linux-asan/bin/fuzz/*_fuzz; do
    if [ -x "$program" ]; then programs+=("$program"); fi
  done
  if [ ${#programs[@]} -eq 0 ]; then echo "no fuzz targets"; return 1; fi
  export logs seconds_each=$((fuzz_seconds / ${#programs[@]}))
  export -f fuzz_target
  printf '%s\n' "${programs[@]}" | xargs -P2 -I{} bash -c 'fuzz_target {}'
}

stage bootstrap scripts/bootstrap.sh test || exit 1
stage linux workflow test linux-release
stage sanitizers workflow test-linux-asan linux-asan
stage threads workflow test-linux-tsan linux-tsan
stage windows workflow test-windows windows-release
stage fuzz fuzz
stage tidy scripts/tidy.sh
stage reference cmake --workflow --preset reference
echo "all after $SECONDS s"
exec python3 scripts/test_summary.py "$logs" \
  build/linux-release/results build/linux-asan/results build/linux-tsan/results build/windows-release/results
