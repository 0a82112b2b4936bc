#!/usr/bin/env bash
# Starts a server host and a client host as two processes and shows what both have to say.
#
# usage: run.sh <server program> <client program> [option of packet_road]...
#
# A program for Windows runs under Wine. PACKET_ROAD_SERVER_OPTIONS are for the server alone. Ends
# with 0 only if both roles are content.
set -uo pipefail
wine=$(dirname "${BASH_SOURCE[0]}")/../../scripts/wine.sh
server=$1 client=$2
shift 2
log=$(mktemp)
trap 'kill $(jobs -p) 2>/dev/null; rm -f "$log"' EXIT

host() {
  case $1 in
    *.exe) "$wine" "$@" ;;
    *) "$@" ;;
  esac
}

case " $* " in *" --help "* | *" -h "*) host "$client" "$@"; exit ;; esac

# Unless the caller names a port, one in the range that systems leave to programs; the next one if
# somebody else has it.
first=$((20000 + $$ % 8000)) given=
case " $* " in *" --port"*) given=yes ;; esac
for port in $first $((first + 8000)) $((first + 4001)); do
  options=("$@")
  [ -n "$given" ] || options+=(--port "$port")
  host "$server" server "${options[@]}" ${PACKET_ROAD_SERVER_OPTIONS:-} >"$log" 2>&1 &
  running=$!
  until grep -q listens "$log" || ! kill -0 $running 2>/dev/null; do sleep 0.02; done
  if grep -q listens "$log"; then
    host "$client" client "${options[@]}"
    client_code=$?
    wait $running
    server_code=$?
    echo
    cat "$log"
    [ $client_code = 0 ] && [ $server_code = 0 ]
    exit
  fi
  wait $running
  code=$?
  [ $code = 3 ] && [ -z "$given" ] || break # 3: the port is taken
done
cat "$log" >&2
exit 1
