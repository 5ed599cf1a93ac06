#!/bin/bash -eu
# SPDX-License-Identifier: MIT
# Builds the fuzz targets as services that fuzz want them: compilers, options and engine come from the environment, what
# runs goes to $OUT, with seeds and a dictionary for each target. Nothing else than the C++ library is linked: peers that
# give verdicts of their own are left to scripts/fuzz.sh. For the memory sanitizer nothing is left out, other than there: the
# service brings a C++ library that was built with it.
# The service runs a copy of this file, which lies beside the project.
[ -d "${SRC:-}/pixkit" ] && cd "$SRC/pixkit" || cd "$(dirname "$(readlink -f "$0")")/../.."

build=${WORK:-$(mktemp -d)}/pixkit
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS" \
    -DPIXKIT_FUZZ=ON -DPIXKIT_FUZZ_PEERS=OFF -DPIXKIT_FUZZ_ENGINE="$LIB_FUZZING_ENGINE" -DPIXKIT_TEXT=OFF \
    -DPIXKIT_TESTS=OFF -DPIXKIT_COMMAND=OFF
cmake --build "$build" ${JOBS:+-j "$JOBS"}

for program in "$build"/fuzz/fuzz_*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    target=$(basename "$program")
    name=${target#fuzz_}
    cp "$program" "$OUT/"
    [ ! -f "fuzz/dictionaries/$name.dict" ] || cp "fuzz/dictionaries/$name.dict" "$OUT/$target.dict"
    folders=(fuzz/seeds/"$name"/)
    [ "$name" != readers ] || folders=(tests/data/pictures/*/ tests/data/regression/ fuzz/seeds/picture/ fuzz/seeds/gif/)
    [ ! -d "${folders[0]}" ] || find "${folders[@]}" -type f | zip -q "$OUT/${target}_seed_corpus.zip" -@
done
