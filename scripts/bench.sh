#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs the benchmarks side by side with their peers and prints medians and ratios; leaves the raw figures as JSON.
# Usage: scripts/bench.sh [--quick] [FILTER]     FILTER: a regular expression over benchmark names, such as png/photo
# Without --quick and a filter the tables of docs/performance.md are written anew.
# Figures go to out/bench/. The machine should be otherwise idle; runs are interleaved and medians quoted all the same.
set -euo pipefail
cd "$(dirname "$0")/.."
repetitions=9
if [ "${1:-}" = --quick ]; then repetitions=3; shift; fi
filter=${1:-.}

[ "$(id -u)" = 0 ] && scripts/setup.sh bench
scripts/corpus.sh corpus
export PIXKIT_CORPUS=$PWD/corpus/pictures
cmake --preset bench >/dev/null
cmake --build --preset bench
mkdir -p out/bench
results=()
for program in build/bench/bench/bench_*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    name=$(basename "$program")
    echo "running $name"
    "$program" --benchmark_filter="$filter" --benchmark_repetitions="$repetitions" --benchmark_min_time=0.05 \
        --benchmark_enable_random_interleaving=true --benchmark_out="out/bench/$name.json" \
        --benchmark_out_format=json >/dev/null 2>"out/bench/$name.log" || { tail -n 5 "out/bench/$name.log"; exit 1; }
    # A program without any benchmark that matches the filter leaves an empty file.
    if [ -s "out/bench/$name.json" ]; then results+=("out/bench/$name.json"); fi
done
[ ${#results[@]} -gt 0 ] || { echo "no benchmark's name matches '$filter'"; exit 1; }
page=()
if [ "$filter" = . ] && [ "$repetitions" = 9 ]; then page=(--page=docs/performance.md); fi
python3 bench/report.py "${page[@]}" "${results[@]}"
echo "raw figures: out/bench/*.json"
