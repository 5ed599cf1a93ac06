#!/usr/bin/env bash
# Builds the fuzz targets and runs them.
# Usage: scripts/fuzz.sh [TARGET] [SECONDS]     TARGET: png_stream, png_file, inflate, ... or all (default); 600 s each
#
# What a run finds new stays in build/fuzz/corpus; inputs that fail stay in build/fuzz/findings under the name that says
# how (crash-, oom-, timeout-). A finding, once mended, goes to tests/data/regression/ with a name that keeps the
# outcome first and says the fault, and is replayed by the tests for ever.
set -euo pipefail
cd "$(dirname "$0")/.."
target=${1:-all} seconds=${2:-600}

[ "$(id -u)" = 0 ] && scripts/setup.sh fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

status=0
for program in build/fuzz/fuzz/fuzz_*; do
    name=${program##*/fuzz_}
    [ -f "$program" ] && [ -x "$program" ] || continue
    [ "$target" = all ] || [ "$target" = "$name" ] || continue
    corpus=build/fuzz/corpus/${name%%_*} findings=build/fuzz/findings/$name
    mkdir -p "$corpus" "$findings"
    seeds=()
    for folder in fuzz/seeds tests/data/pictures; do
        [ ! -d "$folder/${name%%_*}" ] || seeds+=("$folder/${name%%_*}")
    done
    echo "fuzz_$name for $seconds s"
    "$program" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=20 -max_len=16384 -print_final_stats=1 \
        -artifact_prefix="$findings/" "$corpus" "${seeds[@]}" >"$findings.log" 2>&1 || status=1
    grep -E 'ERROR|SUMMARY|exec|new_units|peak_rss' "$findings.log" | tail -n 8
done
exit $status
