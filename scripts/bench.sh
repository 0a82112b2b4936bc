#!/usr/bin/env bash
# Builds and runs the benchmarks and prints one table of ratios, ours / peer.
#
# usage: bench.sh [--quick] [word]...
#   --quick  few and short repetitions, to see that everything runs
#   word     only programs whose path below benchmarks/ contains one of the words
#
# benchmarks/README.md has the convention that the names follow, benchmarks/goals.txt the goals.
# Ends with 1 when a goal is missed.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
options=(--benchmark_repetitions=15 --benchmark_min_time=0.05)
words=()
for argument in "$@"; do
  case $argument in
    --quick) options=(--benchmark_repetitions=3 --benchmark_min_time=0.005) ;;
    -h | --help) sed -n '2,/^set /{s/^# \{0,1\}//;/^set /!p}' "$0"; exit 0 ;;
    *) words+=("$argument") ;;
  esac
done

scripts/bootstrap.sh bench
cmake --preset linux-release >/dev/null
cmake --build --preset linux-release --target benchmarks

results=build/linux-release/benchmark-results
rm -rf "$results"
mkdir -p "$results"
programs=build/linux-release/bin/benchmarks
while read -r program; do
  path=${program#"$programs"/}
  if [ ${#words[@]} -gt 0 ]; then
    wanted=
    for word in "${words[@]}"; do [[ $path == *"$word"* ]] && wanted=yes; done
    [ "$wanted" ] || continue
  fi
  echo "running $path" >&2
  "$program" --benchmark_enable_random_interleaving=true "${options[@]}" \
    --benchmark_out_format=json --benchmark_out="$results/${path//\//-}.json" >/dev/null
done < <(find "$programs" -type f -name '*_benchmark' 2>/dev/null | sort)
curve=$results/memory-link_list_benchmark.json
if [ -e "$curve" ]; then
  /usr/bin/python3 scripts/bench_curve.py "$curve" link_list_allocate "$results/link_list.svg" \
    --argument "free ranges passed by"
  echo "drew $results/link_list.svg" >&2
fi
exec python3 scripts/bench_table.py --goals benchmarks/goals.txt \
  $([ ${#words[@]} -gt 0 ] && echo --some) "$results"/*.json
