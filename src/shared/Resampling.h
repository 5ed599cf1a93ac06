// Pictures at another size, by filters that look at every pixel.
#pragma once
#include "shared/PixelView.h"
#include "shared/enumerations.h"

namespace pixkit {

struct Resampling {
    eResampleFilters across = resampleAuto, along = resampleAuto; // of columns, of rows
    bool mirrorsColumns = false, mirrorsRows = false;
    bool isOpaque = false; // the result, whatever the source's alpha bytes hold
    // Of the source, from its first column and its top row, what becomes the target; 0: all of it. Pixels that lie
    // beyond in part, by less than one, count like others.
    double sourceWidth = 0, sourceHeight = 0;
};

// Fills `target` with the source at its size; both have pixels, and do not overlap. Columns first, then rows
// (FilterAxis.h says what each pixel is made of), in whole numbers that are the same in every build: sums along rows
// are rounded to nearest with six bits of a fraction, less from 64 rows to a pixel on, the sums of those to bytes, all
// halves up. That is within 1 of the exact convolution. Colours are held at their alpha, which filters with negative
// lobes may pass. Takes less than a mebibyte besides, and less than two where a pixel is made of 30,000 rows or columns
// and more. Throws std::bad_alloc.
void resample(PixelView target, ConstPixelView source, const Resampling& how);

} // namespace pixkit
// SPDX-License-Identifier: MIT
