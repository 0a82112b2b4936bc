#!/usr/bin/env bash
# Runs the engine host: it ends well, leaves its files, and the hash over packets and records follows
# the seed and nothing else. With a second program, built for another system, the two come to the
# same hash and the same bytes.
#
# usage: engine_host_test.sh <engine_host> [<engine_host of the other system>]
set -uo pipefail
wine=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../scripts" && pwd)/wine.sh
programs=()
for program in "$@"; do programs+=("$(realpath "$program")"); done
set -- "${programs[@]}"
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
# Folders are relative: both systems write such ones alike.
cd "$out" || exit 1

fail() { echo "$1"; exit 1; }

# run <folder> <program> <option>...: runs it and prints the hash.
run() {
  local folder=$1 program=$2
  shift 2
  local command=("$program")
  case $program in *.exe) command=("$wine" "$program") ;; esac
  "${command[@]}" --frames 3 --agents 40 --out "$folder" "$@" >"$folder.log" 2>&1 ||
    { cat "$folder.log" >&2; return 1; }
  sed -n 's/.*have the hash \([0-9a-f]*\).*/\1/p' "$folder.log"
}

first=$(run first "$1") || fail "the run failed"
echo "hash $first"
[ ${#first} = 8 ] || fail "no hash"
for file in frame_000.png frame_001.png frame_002.png frames.html frames.records second_host.txt; do
  [ -s "first/$file" ] || fail "$file is missing"
done
grep -Eq 'arrived equal +12[[:space:]]*$' first/second_host.txt || fail "the second host did not see 12 packets"
[ "$(head -c 4 first/dump.dmp)" = MDMP ] || fail "the child left no dump"
# The warning of a nested call comes with its stack; where images have no symbol file that the
# system reads, with what it takes to look the frames up later.
case $1 in
  *.exe) frame='[#@].*' ;;
  *) frame='@engine_host@mishaps.cpp \([0-9]+\): .*inspect_agents' ;;
esac
grep -Eq "^  $frame" first.log || fail "the warning has no stack"
grep -Eq 'warning +unit|warning +cart' first.log || fail "the warning did not reach the host"
[ "$(run again "$1")" = "$first" ] || fail "another hash the second time"
[ "$(run seed "$1" --seed 2)" != "$first" ] || fail "the same hash for another seed"

# The records that were left, drawn again, give the same files.
run drawn "$1" --draw "first/frames.records" || fail "the records can't be drawn"
for file in frame_000.png frame_002.png frames.html; do
  cmp "first/$file" "drawn/$file" || fail "$file differs when it is drawn from the records"
done

[ $# -gt 1 ] || exit 0
if [ ! -x "$2" ]; then
  echo "skipped: $2 is not built"
  exit 77
fi
[ "$(run other "$2")" = "$first" ] || fail "another hash on the other system"
cmp "first/frames.records" "other/frames.records" || fail "other records on the other system"
