#!/bin/bash
# SPDX-License-Identifier: MIT
# Fails when a unit of vector kernels gives the linker anything but its one way in. The linker keeps a single copy of an
# inline function or template for the whole program; one that was compiled for AVX2, say, would end the program on
# processors without it. So such functions must not be there at all.
#
#   simd_symbols.sh BUILD-FOLDER
set -uo pipefail
build=${1:?the folder of a build}
mapfile -t units < <(find "$build" -path '*/kernels/simd/*' -name '*.cpp.o*')
[ ${#units[@]} -gt 0 ] || { echo "simd_symbols: no units below $build" >&2; exit 1; }
failed=0
for unit in "${units[@]}"; do
    # Functions only (T, or W where they are weak). GNU nm reads the objects of Windows as well. What finds out where it is
    # has the same two instructions everywhere (position-independent code of 32 bits).
    extra=$(nm -C --extern-only --defined-only "$unit" | awk '$2 ~ /[TWi]/' | cut -d' ' -f3- |
        grep -v -e '^pixkit::kernels::use[A-Z][A-Za-z0-9]*(' -e '^__x86\.get_pc_thunk\.')
    [ -z "$extra" ] || { printf '%s: %s gives the linker\n%s\n' simd_symbols "${unit##*/kernels/}" "$extra" >&2; failed=1; }
done
exit "$failed"
