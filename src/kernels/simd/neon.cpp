// The kernels for NEON that gain by it. The layer comes first: the kernels are written with its words.
#include "kernels/simd/neon.h"

#include "kernels/simd/all.h"
#include "kernels/simd/neon_planes.h"
#include "kernels/simd/units.h"

void pixkit::kernels::useNeon(Table& table) noexcept {
    useAll(table);
    usePlanes(table);
    // Of these the compiler makes shorter loops from the reference: it knows loads and stores that sort bytes by
    // channels, and shifts that narrow, which other sets have not.
    table.pack24 = reference.pack24;
    table.unpack24 = reference.unpack24;
    table.extractAlpha = reference.extractAlpha;
    table.fromRgb8 = reference.fromRgb8;
    table.fromRgba8 = reference.fromRgba8;
    table.fromGrayAlpha8 = reference.fromGrayAlpha8;
    table.fromGray16 = reference.fromGray16;
    table.fromRgba16 = reference.fromRgba16;
    table.fromGrayAlpha16 = reference.fromGrayAlpha16;
    table.widenPixels = reference.widenPixels;
    table.mixRows = reference.mixRows;
    table.slideAlphaSums = reference.slideAlphaSums;
    table.toYCbCr = reference.toYCbCr;
}
// SPDX-License-Identifier: MIT
