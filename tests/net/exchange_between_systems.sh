#!/usr/bin/env bash
# A host on Linux and one on Windows send each other packets over loopback, either one packing, and
# pack the same world into the same bits.
#
# usage: exchange_between_systems.sh <packet_road of the one> <packet_road of the other>
set -uo pipefail
run=$(dirname "${BASH_SOURCE[0]}")/../../examples/packet_road/run.sh
for program in "$@"; do
  if [ ! -x "$program" ]; then
    echo "skipped: $program is not built"
    exit 77
  fi
done

fingerprints=()
for pair in "$1 $2" "$2 $1"; do
  read -r server client <<<"$pair"
  output=$("$run" "$server" "$client" --ticks 300 --damage 7 --seed 5) || { echo "$output"; exit 1; }
  echo "$output" | grep -E 'arrived equal|fingerprint'
  fingerprints+=("$(sed -n 's/.*fingerprint is \([0-9a-f]*\).*/\1/p' <<<"$output")")
done
[ -n "${fingerprints[0]}" ] && [ "${fingerprints[0]}" = "${fingerprints[1]}" ] && exit 0
echo "different packets: ${fingerprints[*]}"
exit 1
