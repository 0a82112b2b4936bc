#!/usr/bin/env bash
# Packets that arrive, but not as the server's own world has them, make the demo fail.
#
# usage: notices_another_world.sh <packet_road>
set -uo pipefail
run=$(dirname "${BASH_SOURCE[0]}")/../../examples/packet_road/run.sh
export PACKET_ROAD_SERVER_OPTIONS="--seed 2"
output=$("$run" "$1" "$1" --ticks 30 --damage 0)
code=$?
echo "$output"
[ $code = 1 ] && grep -Eq 'arrived equal +0' <<<"$output" &&
  grep -Eq 'arrived different +30' <<<"$output" && grep -q 'every undamaged packet was answered' <<<"$output"
