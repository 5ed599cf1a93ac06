#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the fuzz targets and runs them, one after the other.
# Usage: scripts/fuzz.sh [TARGET] [SECONDS] [PRESET]
#
#   TARGET   readers, writers, sequences, dropfiles, inflate or all (default)
#   SECONDS  for each, 600 unless said otherwise
#   PRESET   fuzz (default), fuzz32 with 32-bit sizes, both under the address and undefined-behaviour sanitizers, or
#            fuzz-memory under the memory sanitizer
#
# What a run finds new stays in build/PRESET/corpus; inputs that fail stay in build/PRESET/findings under the name that
# says how (crash-, oom-, timeout-). A finding, once mended, goes to tests/data/regression/ with a name that keeps the
# outcome first and says the fault, and is replayed by the tests for ever; one of no file becomes a case of a test.
set -euo pipefail
cd "$(dirname "$0")/.."
target=${1:-all} seconds=${2:-600} preset=${3:-fuzz}

if [ "$(id -u)" = 0 ]; then
    scripts/setup.sh fuzz
    [ "$preset" != fuzz32 ] || scripts/setup.sh native32
fi
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
longest=20 # seconds for one input; the memory sanitizer takes more time
[ "$preset" != fuzz-memory ] || longest=60
export LSAN_OPTIONS=suppressions=$PWD/tests/support/leaks.txt:print_suppressions=0

status=0
for program in "build/$preset"/fuzz/fuzz_*; do
    name=${program##*/fuzz_}
    [ -f "$program" ] && [ -x "$program" ] || continue
    [ "$target" = all ] || [ "$target" = "$name" ] || continue
    corpus=build/$preset/corpus/$name findings=build/$preset/findings/$name
    mkdir -p "$corpus" "$findings"
    options=() most=16384
    case $name in
    readers) options+=(tests/data/pictures/*/ tests/data/regression fuzz/seeds/picture fuzz/seeds/gif) ;;
    sequences) most=960 ;;
    esac
    [ ! -d "fuzz/seeds/$name" ] || options+=("fuzz/seeds/$name")
    [ ! -f "fuzz/dictionaries/$name.dict" ] || options+=(-dict="fuzz/dictionaries/$name.dict")
    echo "fuzz_$name of $preset for $seconds s"
    "$program" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=$longest -max_len=$most -print_final_stats=1 \
        -artifact_prefix="$findings/" "$corpus" "${options[@]}" >"$findings.log" 2>&1 || status=1
    grep -aE 'ERROR|SUMMARY|exec|new_units|peak_rss' "$findings.log" | tail -n 8
done
exit $status
