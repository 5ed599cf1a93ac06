// The reference, for every processor.
#include "kernels/scalar/alpha.h"
#include "kernels/scalar/blend.h"
#include "kernels/scalar/checksums.h"
#include "kernels/scalar/codes.h"
#include "kernels/scalar/convolve.h"
#include "kernels/scalar/effects.h"
#include "kernels/scalar/filter.h"
#include "kernels/scalar/jpeg.h"
#include "kernels/scalar/layouts.h"
#include "kernels/scalar/resample.h"
#include "kernels/scalar/samples.h"
#include "kernels/scalar/shadow.h"
#include "kernels/scalar/unfilter.h"

namespace pixkit::kernels {

constinit const Table reference = {
    .scanAlpha = scanAlpha,
    .copyScanningAlpha = copyScanningAlpha,
    .setOpaque = setOpaque,
    .premultiply = premultiply,
    .copyPremultiplying = copyPremultiplying,
    .unpremultiply = unpremultiply,
    .straighten = straighten,
    .invert = invert,
    .grayscale = grayscale,
    .adjustLightness = adjustLightness,
    .blendToColour = blendToColour,
    .replacePixel = replacePixel,
    .flatten24 = flatten24,
    .flatten32 = flatten32,
    .mirror = mirror,
    .gatherPixels = gatherPixels,
    .sampleBilinear = sampleBilinear,
    .sampleWidened = sampleWidened,
    .widenPixels = widenPixels,
    .mixPairs = mixPairs,
    .mixRows = mixRows,
    .walkNearest = walkNearest,
    .walkBilinear = walkBilinear,
    .sumAlongRow = sumAlongRow,
    .sumRows = sumRows,
    .blendOver = blendOver,
    .blendScaled = blendScaled,
    .blendToned = blendToned,
    .slideAlphaSums = slideAlphaSums,
    .shadeBoxes = shadeBoxes,
    .swapRedBlue = swapRedBlue,
    .pack24 = pack24,
    .unpack24 = unpack24,
    .extractAlpha = extractAlpha,
    .alphaBits = alphaBits,
    .unfilterSub = unfilterSub,
    .unfilterUp = unfilterUp,
    .unfilterAvg = unfilterAvg,
    .unfilterAvgOfFirstRow = unfilterAvgOfFirstRow,
    .unfilterPaeth = unfilterPaeth,
    .unfilterPaethTwice = unfilterPaethTwice,
    .filterSub = filterSub,
    .filterUp = filterUp,
    .filterAvg = filterAvg,
    .filterPaeth = filterPaeth,
    .filterSums = filterSums,
    .adler32 = adler32,
    .crc32 = crc32,
    .joinCodes = joinCodes,
    .fromRgb8 = fromRgb8,
    .fromRgba8 = fromRgba8,
    .fromGrayAlpha8 = fromGrayAlpha8,
    .fromIndex8 = fromIndex8,
    .fromGray16 = fromGray16,
    .fromRgb16 = fromRgb16,
    .fromRgba16 = fromRgba16,
    .fromGrayAlpha16 = fromGrayAlpha16,
    .unpackSamples = unpackSamples,
    .scatter = scatter,
    .toYCbCr = toYCbCr,
    .halveSamples = halveSamples,
    .transformBlocks = transformBlocks,
};

} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
