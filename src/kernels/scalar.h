// The reference kernels: the plain definition of every entry of the table. The vector variants end their rows with
// them, where less than one vector is left.
#pragma once
#include "kernels/kernels.h"

namespace pixkit::kernels::scalar {

bool scanAlpha(const std::uint8_t* pixels, std::size_t count, AlphaScan& scan);
bool copyScanningAlpha(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, AlphaScan& scan);
void setOpaque(std::uint8_t* pixels, std::size_t count);
bool premultiply(std::uint8_t* pixels, std::size_t count);
bool copyPremultiplying(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void unpremultiply(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);

void invert(std::uint8_t* pixels, std::size_t count);
void grayscale(std::uint8_t* pixels, std::size_t count, const GrayWeights& weights);
void adjustLightness(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::int16_t* adjust,
                     bool lighten);
void blendToColour(std::uint8_t* pixels, std::size_t count, const std::uint8_t* blendColour, std::uint32_t opacity);
std::size_t replacePixel(std::uint8_t* pixels, std::size_t count, const std::uint8_t* from, const std::uint8_t* to);
void flatten24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* fill);
void flatten32(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* fill);
void mirror(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);

void gatherPixels(std::uint8_t* dst, const std::uint8_t* src, const std::int32_t* offsets, std::size_t count);
void sampleBilinear(std::uint8_t* dst, const WeightedRows& rows, const std::int32_t* offsets, const double* nearWeights,
                    const double* farWeights, std::size_t count);
void sampleWidened(std::uint8_t* dst, const WeightedWideRows& rows, const std::int32_t* offsets,
                   const double* nearWeights, const double* farWeights, std::size_t count);
void widenPixels(double* dst, const std::uint8_t* src, std::size_t count);

void blendOver(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void blendScaled(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha);
void blendToned(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                const Tone& tone);

void slideAlphaSums(std::uint16_t* sums, const std::uint8_t* entering, const std::uint8_t* leaving, std::size_t count);
void shadeBoxes(std::uint8_t* dst, const std::uint16_t* sums, std::size_t count, std::size_t window,
                const std::uint8_t* shades);
void walkNearest(std::uint8_t* dst, const PixelWalk& walk, std::size_t count);
void walkBilinear(std::uint8_t* dst, const PixelWalk& walk, std::size_t count);

void swapRedBlue(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void pack24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, bool swap);
void unpack24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, bool swap);
void extractAlpha(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);

void unfilterSub(std::uint8_t* row, std::size_t bytes, std::size_t step);
void unfilterUp(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes);
void unfilterAvg(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step);
void unfilterAvgOfFirstRow(std::uint8_t* row, std::size_t bytes, std::size_t step);
void unfilterPaeth(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step);

void filterSub(std::uint8_t* dst, const std::uint8_t* row, std::size_t bytes, std::size_t step);
void filterUp(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes);
void filterAvg(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
               std::size_t step);
void filterPaeth(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                 std::size_t step);
void filterSums(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                std::size_t step);
std::uint32_t adler32(std::uint32_t sum, const std::uint8_t* bytes, std::size_t count);

void fromRgb8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void fromRgba8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void fromGrayAlpha8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void fromIndex8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* lut);
void fromGray16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void fromRgb16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void fromRgba16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void fromGrayAlpha16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
void unpackSamples(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, unsigned depth);
void scatter(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::size_t dstStep);

void toYCbCr(std::uint8_t* y, std::uint8_t* cb, std::uint8_t* cr, const std::uint8_t* src, std::size_t count);
void halveSamples(std::uint8_t* dst, const std::uint8_t* upper, const std::uint8_t* lower, std::size_t count);
void transformBlocks(std::int16_t* coefficients, std::uint64_t* nonzero, const std::uint8_t* samples,
                     std::size_t stride, std::size_t count, const BlockQuantiser& quantiser);

// The row filters from byte `from` on, everything before it being undone already.
void unfilterSubFrom(std::uint8_t* row, std::size_t from, std::size_t bytes, std::size_t step);
void unfilterAvgFrom(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                     std::size_t step);
void unfilterPaethFrom(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                       std::size_t step);

// The same for filtering, from byte `from` to before byte `to`; the sums are added to.
void filterSubPart(std::uint8_t* dst, const std::uint8_t* row, std::size_t from, std::size_t to, std::size_t step);
void filterAvgPart(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                   std::size_t to, std::size_t step);
void filterPaethPart(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                     std::size_t to, std::size_t step);
void filterSumsPart(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                    std::size_t to, std::size_t step);

} // namespace pixkit::kernels::scalar
