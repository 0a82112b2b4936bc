#!/usr/bin/env bash
# Prints which part of the lines of morvantis/ the tests reach on Linux, by folder and in all.
#
# Ends with 1 when the whole is below 95 %, or a test fails.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
scripts/bootstrap.sh coverage
build=build/linux-coverage
profiles=$root/$build/profiles
rm -rf "$profiles" "$build/results"
cmake --preset linux-coverage >/dev/null
cmake --build --preset linux-coverage
LLVM_PROFILE_FILE="$profiles/%p-%m.profraw" ctest --preset linux-coverage
# A child that is killed while it writes leaves half a profile.
llvm-profdata-19 merge --sparse --failure-mode=all -o "$profiles/all.profdata" "$profiles"/*.profraw

# Tests compile what the library does not export into themselves: their copies count as well.
binaries=("$build/lib/libMorvantis.Library.so")
for program in "$build"/bin/*_tests; do binaries+=(-object "$program"); done
llvm-cov-19 export "${binaries[@]}" -instr-profile="$profiles/all.profdata" -summary-only \
  >"$build/coverage.json"
exec python3 scripts/coverage_table.py "$build/coverage.json" "$root/morvantis" 95
