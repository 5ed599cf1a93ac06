// Row loops over bytes. A kernel knows nothing of images: plain pointers and counts. The scalar definition of each
// is the reference; the faster variants give the same bytes for every input. Pixels are four bytes B, G, R, A.
//
// Unless a kernel says otherwise, source and destination either are the same row or do not overlap, rows need no
// alignment, a count of 0 is allowed, and nothing outside the stated bytes is read or written.
#pragma once
#include "kernels/code_entry.h"
#include "kernels/cpu.h"

#include <cstddef>
#include <cstdint>

namespace pixkit::kernels {

// What scanAlpha has seen so far; starts as declared here and is carried from row to row.
struct AlphaScan {
    enum State : std::uint8_t {
        consistent,       // everything seen fits premultiplied data
        colourInClear,    // a pixel with alpha 0 had colour: suspicious, settled by the next visible pixel
        notPremultiplied, // proven; the scan stops
    };
    std::size_t zeroCount = 0;   // pixels with alpha 0
    std::size_t opaqueCount = 0; // pixels with alpha 255 that did not stop the scan
    State state = consistent;
    bool partial = false; // a pixel with alpha 1 to 254 was seen that did not stop the scan
};

// Grayscale weights as the single-precision values they are defined with.
struct GrayWeights {
    float r, g, b;
};

// The two rows that interpolation mixes, or one: then `second` is null.
struct WeightedRows {
    const std::uint8_t* first;
    const std::uint8_t* second;
    double firstWeight, secondWeight;
};
// The same for rows that were widened.
struct WeightedWideRows {
    const double* first;
    const double* second;
    double firstWeight, secondWeight;
};

// Pairs of neighbours in a row that are mixed for columns at a step of whole sixteenths of a pixel: sixteen columns,
// whose pattern comes again `advance` pixels further on. Of column k the first pixel is starts[k / 4] + places[2 * k],
// the other starts[k / 4] + places[2 * k + 1], the one behind it. Their weights in sixteenths are weights[8 * k] and
// weights[8 * k + 1], repeated for each channel. In every four columns places begin with 0.
struct PairPattern {
    std::uint32_t advance;
    std::uint32_t starts[4];
    std::uint8_t places[32];
    std::uint8_t weights[128];
};

// The quantisation of one kind of 8 x 8 block, in the order of transformBlocks' coefficients. A magnitude x, eight
// times a coefficient, is divided by d (eight times the table's entry, 8 .. 2,040) and rounded, halves up:
// ((x + bias) * reciprocal >> 16) * scale >> 16, which is exactly (x + d / 2) / d for every x below 15,000.
struct BlockQuantiser {
    std::uint16_t bias[64], reciprocal[64], scale[64];
};

// A straight walk over pixels: `u` counts columns, `v` rows from `origin`, both with 32 bits behind the point. No pixel
// lies 4 GB or further behind the origin.
struct PixelWalk {
    const std::uint8_t* origin;
    std::size_t stride;
    std::int64_t u, v, du, dv;
};

// Which pixels of a row are summed up for each of many results, and how much each counts: `taps` of them, a multiple of
// 4, from `offsets[i]` bytes into the row on, weighed by the numbers from weights[i * taps] on. The weight of tap k
// stands at tapPlace(k). The sums are kept with so many bits of a fraction less as `shift` says.
struct TapsAlongRow {
    const std::int32_t* offsets;
    const std::int16_t* weights;
    std::size_t taps;
    unsigned shift; // 1 .. 30
};
// In groups of four the second and the third change places, as vectors of pixels are interleaved.
constexpr std::size_t tapPlace(std::size_t tap) {
    constexpr std::size_t places[] = {0, 2, 1, 3};
    return (tap & ~std::size_t{3}) + places[tap & 3];
}
// Rows of such sums, and how much each counts. Their number is even.
struct WeighedRows {
    const std::int16_t* const* rows;
    const std::int16_t* weights;
    std::size_t count;
    unsigned shift; // 1 .. 30
};

// How a source is changed on its way to where it is drawn: lightened or darkened first, then made gray.
struct Tone {
    bool isLight = false;
    bool lightens = false;         // with adjust >= 0, colours held at alpha; else with adjust <= 0, held at 0
    std::int16_t adjust[256] = {}; // for each alpha, -255 .. 255
    // Where this is so, |adjust[alpha]| is (alpha * scale + bias) >> 24 for every alpha, in 32 bits. Vector kernels
    // hold no table; they take lines.
    bool isLinear = false;
    std::uint32_t scale = 0;
    std::uint32_t bias = 0;

    bool isGray = false;
    GrayWeights weights{};
};

struct Table {
    // --- alpha
    // Scans pixels left to right and updates `scan`; stops and returns false at the pixel that proves the data not
    // premultiplied. For alpha 0: colour moves `consistent` to `colourInClear`; counted in zeroCount either way.
    // Alpha 255: in `colourInClear` proves, else counts in opaqueCount. Between: in `colourInClear`, or with any
    // colour byte above alpha, proves; else sets `partial`.
    bool (*scanAlpha)(const std::uint8_t* pixels, std::size_t count, AlphaScan& scan);
    // The same, and copies all pixels. Rows do not overlap.
    bool (*copyScanningAlpha)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, AlphaScan& scan);
    // Sets every alpha byte to 255.
    void (*setOpaque)(std::uint8_t* pixels, std::size_t count);
    // Straight to premultiplied in place: alpha 0 clears all four bytes, 255 keeps, else colour = colour * alpha / 255
    // truncated. Returns whether any alpha was 1 to 254.
    bool (*premultiply)(std::uint8_t* pixels, std::size_t count);
    // The same from one row to another.
    bool (*copyPremultiplying)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    // Premultiplied to straight: alpha 0 and 255 copy, else colour = (colour * 255 / alpha) truncated, low 8 bits.
    void (*unpremultiply)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    // Premultiplied to the least straight colours that premultiplying turns back into them: the quotient rounded up,
    // (colour * 255 + alpha - 1) / alpha. A colour above its alpha counts as alpha, so clear pixels become 0.
    void (*straighten)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);

    // --- effects; pixels with alpha 0 stay as they are unless said otherwise
    // Colour = alpha - colour, not below 0.
    void (*invert)(std::uint8_t* pixels, std::size_t count);
    // Colour = b*B + g*G + r*R evaluated exactly (double precision holds every such sum of the component's weights
    // without loss), rounded to nearest, ties to even, low 8 bits.
    void (*grayscale)(std::uint8_t* pixels, std::size_t count, const GrayWeights& weights);
    // Colour = colour + adjust[alpha]; held at alpha when the tone lightens, else at 0. Alpha 0 copies. dst may equal
    // src.
    void (*adjustLightness)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const Tone& tone);
    // Colour c = ((c * (100 - opacity) + blend_c * opacity) * alpha) / 25500 truncated; opacity 1 .. 100;
    // blendColour has B, G, R.
    void (*blendToColour)(std::uint8_t* pixels, std::size_t count, const std::uint8_t* blendColour,
                          std::uint32_t opacity);
    // Replaces every pixel whose four bytes equal `from` (memory order) by `to`; returns how many.
    std::size_t (*replacePixel)(std::uint8_t* pixels, std::size_t count, const std::uint8_t* from,
                                const std::uint8_t* to);
    // Flattens premultiplied pixels onto a colour (B, G, R): alpha 255 copies the colour, 0 writes the fill, else
    // fill * (255 - alpha) / 255 truncated + colour, held at 255. 24: three bytes a pixel. 32: alpha 255.
    void (*flatten24)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* fill);
    void (*flatten32)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* fill);
    // Copies pixels in reverse order. The rows do not overlap.
    void (*mirror)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);

    // --- resampling; rows do not overlap
    // Pixel i is the one that starts `offsets[i]` bytes behind src; offsets never fall from one to the next.
    void (*gatherPixels)(std::uint8_t* dst, const std::uint8_t* src, const std::int32_t* offsets, std::size_t count);
    // Pixel i is mixed from the pixel `offsets[i]` bytes into each row and the one behind it, which is there even where
    // its weight is 0. A byte is the sum, in double precision and in this order, of first row near, far, second row
    // near, far, each byte * (column weight * row weight), rounded down. No sum reaches 256.
    void (*sampleBilinear)(std::uint8_t* dst, const WeightedRows& rows, const std::int32_t* offsets,
                           const double* nearWeights, const double* farWeights, std::size_t count);
    // The same from rows of widened pixels, where offsets count numbers.
    void (*sampleWidened)(std::uint8_t* dst, const WeightedWideRows& rows, const std::int32_t* offsets,
                          const double* nearWeights, const double* farWeights, std::size_t count);
    // Bytes as numbers, four a pixel.
    void (*widenPixels)(double* dst, const std::uint8_t* src, std::size_t count);
    // For `groups` times the pattern's columns: each channel is the sum of a pair of pixels by its weights, 16 times as
    // large as a byte. From src on advance * groups + 8 pixels may be read.
    void (*mixPairs)(std::uint16_t* dst, const std::uint8_t* src, const PairPattern& pattern, std::size_t groups);
    // Each byte is the sum of the numbers at its place in two rows of such sums, weighed in sixteenths, / 256
    // truncated. Weights add up to 16; `count` is in pixels. The rows may be the same one.
    void (*mixRows)(std::uint8_t* dst, const std::uint16_t* first, const std::uint16_t* second,
                    std::uint32_t firstWeight, std::uint32_t secondWeight, std::size_t count);
    // The pixel that each of `count` positions falls on.
    void (*walkNearest)(std::uint8_t* dst, const PixelWalk& walk, std::size_t count);
    // The mean of that pixel, of the next in its row and of these two in the next row, which are all there, weighted by
    // the upper eight bits behind the points; bytes are rounded down.
    void (*walkBilinear)(std::uint8_t* dst, const PixelWalk& walk, std::size_t count);

    // --- weighted sums of pixels. No sum, with its half, leaves 32 bits; neither rows nor weights overlap dst.
    // Each channel of pixel i is a weighted sum along the row, (sum + half) >> shift, which fits 16 bits.
    void (*sumAlongRow)(std::int16_t* dst, const std::uint8_t* src, const TapsAlongRow& along, std::size_t count);
    // Each byte is a weighted sum of the numbers at its place in the rows, (sum + half) >> shift, held at 0 .. 255 and
    // at the alpha of its pixel, which is 255 when `isOpaque`.
    void (*sumRows)(std::uint8_t* dst, const WeighedRows& weighed, std::size_t count, bool isOpaque);

    // --- drawing premultiplied pixels over others, alpha included; source pixels with alpha 0 change nothing, whatever
    // colour they hold; results are held at 255, which colours not above their alpha never exceed. Rows do not overlap.
    // d = d * (255 - alpha) / 255 truncated + s.
    void (*blendOver)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    // d = (d * (255 - alpha * globalAlpha / 255) + s * globalAlpha) / 255, both truncated.
    void (*blendScaled)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha);
    // The same of pixels that adjustLightness and grayscale have changed as the tone says.
    void (*blendToned)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                       const Tone& tone);

    // --- shadows
    // Moves a box one row on, for `count` sums of alpha, one a column: adds the alpha of each pixel of the row that
    // enters it and takes off that of the row that leaves it. Either row may be null: outside the picture.
    void (*slideAlphaSums)(std::uint16_t* sums, const std::uint8_t* entering, const std::uint8_t* leaving,
                           std::size_t count);
    // Pixel i is the shade of the average alpha in its box, (sums[i + 1] + ... + sums[i + window]) / window^2
    // truncated. `sums` has count + window entries, of at most 255 * window each; window is 1 .. 21. `shades` are 256
    // ready pixels: one colour premultiplied (truncated) by each alpha.
    void (*shadeBoxes)(std::uint8_t* dst, const std::uint16_t* sums, std::size_t count, std::size_t window,
                       const std::uint8_t* shades);

    // --- layouts
    // Exchanges the first and third byte of each 4-byte pixel.
    void (*swapRedBlue)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    // 4-byte pixels to 3 bytes, alpha dropped; `swap` exchanges first and third byte. Rows do not overlap.
    void (*pack24)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, bool swap);
    // 3-byte pixels to 4 bytes with alpha 255. Rows do not overlap.
    void (*unpack24)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, bool swap);
    // The alpha byte of each pixel. Rows do not overlap.
    void (*extractAlpha)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    // Bit i % 8 of byte i / 8 says whether the alpha of pixel i is at least `least`; the last byte ends with zeros.
    // Rows do not overlap.
    void (*alphaBits)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t least);

    // --- PNG row filters, undone in place (PNG standard, filter method 0). `bytes` is the row without its filter
    // byte; `step` the distance in bytes to the pixel on the left, 1 .. 8, where left of the first pixel is 0.
    // `above` is the unfiltered previous row. The first row of a pass has zeros above: Up changes nothing there, Paeth
    // is Sub, and Avg has an entry of its own.
    void (*unfilterSub)(std::uint8_t* row, std::size_t bytes, std::size_t step);
    void (*unfilterUp)(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes);
    void (*unfilterAvg)(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step);
    void (*unfilterAvgOfFirstRow)(std::uint8_t* row, std::size_t bytes, std::size_t step);
    void (*unfilterPaeth)(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step);
    // Paeth of a row, and of the one below it.
    void (*unfilterPaethTwice)(std::uint8_t* row, std::uint8_t* below, const std::uint8_t* above, std::size_t bytes,
                               std::size_t step);

    // --- PNG row filters, applied. The parameters are those above; `above` is never null, and no row is written to but
    // dst, which overlaps neither.
    void (*filterSub)(std::uint8_t* dst, const std::uint8_t* row, std::size_t bytes, std::size_t step);
    void (*filterUp)(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes);
    void (*filterAvg)(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                      std::size_t step);
    void (*filterPaeth)(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                        std::size_t step);
    // For each of the five filter types the sum of what it would give, taken as signed bytes without their signs.
    void (*filterSums)(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                       std::size_t step);

    // --- checksums
    // Adler-32 (RFC 1950, 8.2) of what `sum` stands for, 1 for nothing, and then these bytes.
    std::uint32_t (*adler32)(std::uint32_t sum, const std::uint8_t* bytes, std::size_t count);
    // CRC-32 (PNG standard, annex D) of what `crc` stands for, 0 for nothing, and then these bytes.
    std::uint32_t (*crc32)(std::uint32_t crc, const std::uint8_t* bytes, std::size_t count);

    // --- Huffman codes
    // Makes of a decoding table, whose index has `indexBits` bits, one of 2^joinedBits entries: where a literal is
    // followed by what is not special, and the codes of both fit into the index, one entry for both, which puts out the
    // literal first. Elsewhere the entry stays. indexBits is 3 at least, joinedBits as much or one more; codes have 1
    // to indexBits bits. The tables do not overlap.
    void (*joinCodes)(CodeEntry* joined, unsigned joinedBits, const CodeEntry* entries, unsigned indexBits);

    // --- PNG samples to premultiplied B, G, R, A. Rows do not overlap. Partial alpha premultiplies truncated, alpha 0
    // gives 0, 0, 0, 0. 16-bit samples are big-endian and only their high byte counts.
    void (*fromRgb8)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    void (*fromRgba8)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    void (*fromGrayAlpha8)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    // One byte a pixel looked up in 256 ready pixels of four bytes.
    void (*fromIndex8)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* lut);
    void (*fromGray16)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    void (*fromRgb16)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    void (*fromRgba16)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    void (*fromGrayAlpha16)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count);
    // Samples of 1, 2 or 4 bits, most significant first, to one byte each; reads (count * depth + 7) / 8 bytes.
    void (*unpackSamples)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, unsigned depth);
    // Copies 4-byte pixels to places `dstStep` pixels apart: a row of an interlace pass.
    void (*scatter)(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::size_t dstStep);

    // --- JPEG samples (ITU-T T.81; colours as in JFIF 1.02). No two rows overlap.
    // Y, Cb and Cr of pixels, each a row of `count` bytes, rounded to nearest from factors of 15 bits. Alpha is not
    // looked at; equal B, G and R give Y as they are.
    void (*toYCbCr)(std::uint8_t* y, std::uint8_t* cb, std::uint8_t* cr, const std::uint8_t* src, std::size_t count);
    // The means of 2 x 2 samples, `count` of them from two rows of 2 * count; the sum of four gains 1 and 2 by turns
    // before it is divided.
    void (*halveSamples)(std::uint8_t* dst, const std::uint8_t* upper, const std::uint8_t* lower, std::size_t count);
    // Discrete cosine transform (Loeffler, Ligtenberg and Moschytz, factors of 13 bits) and quantisation of `count`
    // blocks that stand side by side in eight rows `stride` bytes apart. A block gives 64 coefficients; that of
    // horizontal frequency u and vertical frequency v stands at 8 * u + v. Bit i of its `nonzero` says that coefficient
    // i is not 0. Coefficients need the alignment of their type.
    void (*transformBlocks)(std::int16_t* coefficients, std::uint64_t* nonzero, const std::uint8_t* samples,
                            std::size_t stride, std::size_t count, const BlockQuantiser& quantiser);
};

// The table in use: the fastest kernels for the features in use (cpu.h). Chosen once.
const Table& table() noexcept;

// The table for a set of features, which the processor must have. For tests and benchmarks.
Table tableFor(CpuFeatures features) noexcept;

} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
