// Every entry of the kernel table as one uniform operation, so that tests can run them all alike.
#pragma once
#include "GuardedPages.h"
#include "PixelRows.h"
#include "codecs/jpg/JpgQuantisation.h"
#include "kernels/kernels.h"
#include "render/PixelWorkers.h"

#include <cmath>
#include <functional>
#include <numeric>
#include <string>

namespace pixkit::kernels::test {
namespace {

using pixkit::test::Content, pixkit::test::Numbers, pixkit::test::rowOf;

struct Call {
    const Table& t;
    std::uint8_t* dst;
    const std::uint8_t* src;
    std::size_t n; // pixels, samples, bytes, ...
};

struct Operation {
    std::string name;
    std::size_t dstBits, srcBits; // per count; a row takes them rounded up to bytes
    bool inPlace;                 // dst holds content before the call
    std::function<std::uint64_t(Call)> run;

    std::size_t dstBytes(std::size_t count) const { return (count * dstBits + 7) / 8; }
    std::size_t srcBytes(std::size_t count) const { return (count * srcBits + 7) / 8; }
};

// What kernels take beside their rows lies in front of pages that nothing may touch.
const GuardedPages scratch[4];

// Those of the component, some with ties, some that the fast form does not take, and sums beyond 8 bits.
constexpr GrayWeights weightChoices[] = {{0.299F, 0.587F, 0.114F}, {0.213F, 0.715F, 0.072F},  {0.333F, 0.334F, 0.333F},
                                         {0.8F, 0.1F, 0.1F},       {0.1F, 0.8F, 0.1F},        {0.1F, 0.1F, 0.8F},
                                         {0.45F, 0.45F, 0.1F},     {0.1F, 0.45F, 0.45F},      {0.5F, 0.25F, 0.25F},
                                         {0.5F, 0.5F, 0.0F},       {1.0F, 0.0F, 0.0F},        {3.0F, 0.5F, 0.25F},
                                         {0.01F, 0.98F, 0.01F},    {0.25F, 0.75F, 0.0078125F}};

std::uint64_t scanned(Call c, bool isCopying, AlphaScan scan) {
    const bool result = isCopying ? c.t.copyScanningAlpha(c.dst, c.src, c.n, scan) : c.t.scanAlpha(c.src, c.n, scan);
    const std::uint64_t counts = std::uint64_t{scan.zeroCount} * 1'000'003 + scan.opaqueCount;
    return counts * 64 + scan.state * 4U + (scan.partial ? 2U : 0U) + (result ? 1U : 0U);
}

void adjust(Call c, int percent) {
    Tone tone;
    for (int alpha = 0; alpha < 256; ++alpha)
        tone.adjust[alpha] = static_cast<std::int16_t>(alpha * percent / 100);
    tone.lightens = percent > 0;
    tone.isLinear = percent != 50;
    tone.scale = ((1U << 24) * static_cast<std::uint32_t>(std::abs(percent)) + 99) / 100;
    c.t.adjustLightness(c.dst, c.src, c.n, tone);
}

// `which`: 1 a row enters, 2 one leaves, 3 both.
void slideSums(Call c, unsigned which) {
    std::vector<std::uint16_t> values(c.n);
    if (c.n > 0) std::memcpy(values.data(), c.dst, 2 * c.n);
    std::uint16_t* const sums = scratch[0].atEnd(values);
    c.t.slideAlphaSums(sums, (which & 1) != 0 ? c.src : nullptr, (which & 2) != 0 ? c.src + 4 * c.n : nullptr, c.n);
    if (c.n > 0) std::memcpy(c.dst, sums, 2 * c.n);
}

// Sums of alpha that a box may hold, from random bytes.
void shade(Call c, unsigned window) {
    std::vector<std::uint8_t> shades;
    for (unsigned alpha = 0; alpha < 256; ++alpha)
        for (const unsigned channel : {200U, window * 12, 1U, 255U})
            shades.push_back(static_cast<std::uint8_t>(channel * alpha / 255));
    std::vector<std::uint16_t> sums(window + c.n);
    for (std::size_t i = 0; i < c.n; ++i)
        sums[window + i] = static_cast<std::uint16_t>((c.src[4 * i] * 256U + c.src[4 * i + 1]) % (255 * window + 1));
    c.t.shadeBoxes(c.dst, scratch[0].atEnd(sums), c.n, window, shades.data());
}

// Columns that walk over a row of as many pixels, by a third of a pixel and `ratio` sixteenths, until its end.
struct Columns {
    Columns(std::size_t count, unsigned ratio) {
        std::vector<std::int32_t> whole;
        std::vector<double> rest, complement;
        for (std::size_t i = 0; i < count; ++i) {
            const double position =
                std::min(static_cast<double>(i) * (ratio / 16.0 + 1.0 / 3.0), static_cast<double>(count) - 1.25);
            const double start = std::floor(std::max(position, 0.0));
            whole.push_back(static_cast<std::int32_t>(start) * 4);
            rest.push_back(std::max(position, 0.0) - start);
            complement.push_back(1.0 - rest.back());
        }
        offsets = scratch[0].atEnd(whole);
        far = scratch[1].atEnd(rest);
        near = scratch[2].atEnd(complement);
    }
    const std::int32_t* offsets;
    const double *near, *far;
};

// From two rows one after the other, or the first alone; widened, they give the same.
bool interpolate(Call c, unsigned ratio, bool isOneRow) {
    if (c.n < 2) return false;
    const Columns columns(c.n, ratio);
    double* const wide = scratch[3].atEnd(std::vector<double>(8 * c.n));
    WeightedRows rows = {c.src, c.src + 4 * c.n, 0.3, 0.7};
    WeightedWideRows wideRows = {wide, wide + 4 * c.n, 0.3, 0.7};
    if (isOneRow) rows = {c.src, nullptr, 1.0, 0.0}, wideRows = {wide, nullptr, 1.0, 0.0};
    c.t.sampleBilinear(c.dst, rows, columns.offsets, columns.near, columns.far, c.n);
    c.t.widenPixels(wide, c.src, 2 * c.n);
    std::vector<std::uint8_t> again(4 * c.n);
    c.t.sampleWidened(again.data(), wideRows, columns.offsets, columns.near, columns.far, c.n);
    return std::memcmp(c.dst, again.data(), again.size()) != 0;
}

// Columns at a step of so many sixteenths, mixed along each of two rows and then with each other.
void mixSixteenths(Call c, std::uint32_t step) {
    PairPattern pattern = {step, {}, {}, {}};
    for (std::uint32_t k = 0; k < 16; ++k) {
        const std::uint32_t at = 11 + k * step;
        pattern.starts[k / 4] = (11 + k / 4 * 4 * step) / 16;
        for (std::uint32_t i = 0; i < 8; ++i)
            pattern.weights[8 * k + i] = static_cast<std::uint8_t>(i % 2 == 0 ? 16 - at % 16 : at % 16);
        for (std::uint32_t i = 0; i < 2; ++i)
            pattern.places[2 * k + i] = static_cast<std::uint8_t>(at / 16 - pattern.starts[k / 4] + i);
    }
    const std::size_t groups = (c.n + 15) / 16;
    std::vector<std::uint8_t> row(4 * (groups * step + 8));
    std::uint16_t* mixed[2];
    for (std::size_t which = 0; which < 2; ++which) {
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = c.src[i % (4 * c.n) + which * 4 * c.n];
        mixed[which] = scratch[which].atEnd(std::vector<std::uint16_t>(64 * groups));
        c.t.mixPairs(mixed[which], scratch[2].atEnd(row), pattern, groups);
    }
    for (std::uint32_t weight = 0; weight <= 16; weight += 4)
        c.t.mixRows(c.dst + 4 * c.n * weight / 4, mixed[0], mixed[1], weight, 16 - weight, c.n);
}

// Over a source of 8 rows whose lengths are half the count, from its middle in a direction that stays within.
void walk(Call c, bool isBilinear, std::int64_t right, std::int64_t up) {
    const std::size_t width = c.n / 2;
    if (width < 2) return;
    const auto step = static_cast<std::int64_t>((static_cast<std::uint64_t>(width - 2) << 32) / (2 * c.n));
    const std::int64_t down = (std::int64_t{3} << 32) / static_cast<std::int64_t>(c.n);
    const std::int64_t u = static_cast<std::int64_t>(static_cast<std::uint64_t>(width - 2) << 31) + 0x12345678;
    const PixelWalk walk = {c.src, 4 * width, width == 2 ? 0 : u, (std::int64_t{7} << 31) + 7, right * step, up * down};
    (isBilinear ? c.t.walkBilinear : c.t.walkNearest)(c.dst, walk, c.n);
}

// Sums of `taps` pixels of the second half of a row, and rows of such sums, with weights of either sign.
void sumAlong(Call c, std::size_t taps) {
    if (c.n < taps) return;
    std::vector<std::int32_t> offsets;
    std::vector<std::int16_t> weights;
    for (std::size_t i = 0; i < c.n; ++i) {
        offsets.push_back(static_cast<std::int32_t>(4 * ((i * 7 / 3) % (c.n - taps + 1))));
        for (std::size_t tap = 0; tap < taps; ++tap)
            weights.push_back(static_cast<std::int16_t>((i * 31 + tap * 1013) % 8001) - 2000);
    }
    std::vector<std::int16_t> sums(4 * c.n);
    c.t.sumAlongRow(sums.data(), c.src + 4 * c.n, {scratch[0].atEnd(offsets), scratch[1].atEnd(weights), taps, 12},
                    c.n);
    std::memcpy(c.dst, sums.data(), 8 * c.n); // dst need not be aligned for them
}

void sumOver(Call c, std::size_t count, bool isOpaque) {
    constexpr std::int16_t weights[] = {-3000, 11000, 9000, -2000, 1500, -116};
    std::vector<std::int16_t> sums(4 * c.n + 4 * count);
    for (std::size_t i = 0; i < sums.size(); ++i)
        sums[i] = static_cast<std::int16_t>(c.src[i * 7 % (4 * c.n)] * 80 - 2000);
    const std::int16_t* const placed = scratch[0].atEnd(sums);
    std::vector<const std::int16_t*> rows;
    for (std::size_t row = 0; row < count; ++row)
        rows.push_back(placed + 4 * (row + 1));
    c.t.sumRows(c.dst, {rows.data(), weights, count, 20}, c.n, isOpaque);
}

std::uint64_t transform(Call c, std::int32_t quality) {
    std::int16_t* const coefficients = scratch[0].atEnd(std::vector<std::int16_t>(64 * c.n));
    std::vector<std::uint64_t> nonzero(c.n);
    c.t.transformBlocks(coefficients, nonzero.data(), c.src, 8 * c.n, c.n,
                        jpgBlockQuantiser(jpgQuantisation(false, quality)));
    if (c.n > 0) std::memcpy(c.dst, coefficients, 128 * c.n); // dst need not be aligned for them
    return std::accumulate(nonzero.begin(), nonzero.end(), std::uint64_t{0},
                           [](auto all, auto bits) { return all * 1'000'003 + bits; });
}

// The golden checksum depends on these and their order. With `everyOpacity` more follow.
std::vector<Operation> operations(bool everyOpacity) {
    std::vector<Operation> all;
    const auto add = [&all](const char* name, std::size_t dstBits, std::size_t srcBits, bool isInPlace, auto work) {
        all.push_back({name + (" " + std::to_string(all.size())), dstBits, srcBits, isInPlace, [work](Call c) {
                           if constexpr (std::is_void_v<decltype(work(c))>)
                               return work(c), std::uint64_t{0};
                           else
                               return std::uint64_t{work(c)};
                       }});
    };
    const AlphaScan carriedOn = {3, 4, AlphaScan::colourInClear, false};
    add("scanAlpha", 0, 32, false, [=](Call c) { return scanned(c, false, {}); });
    add("scanAlpha", 0, 32, false, [=](Call c) { return scanned(c, false, carriedOn); });
    add("copyScanningAlpha", 32, 32, false, [=](Call c) { return scanned(c, true, {}); });
    add("copyScanningAlpha", 32, 32, false, [=](Call c) { return scanned(c, true, carriedOn); });
    add("setOpaque", 32, 0, true, [](Call c) { c.t.setOpaque(c.dst, c.n); });
    add("premultiply", 32, 0, true, [](Call c) { return c.t.premultiply(c.dst, c.n); });
    add("copyPremultiplying", 32, 32, false, [](Call c) { return c.t.copyPremultiplying(c.dst, c.src, c.n); });
    add("unpremultiply", 32, 32, false, [](Call c) { c.t.unpremultiply(c.dst, c.src, c.n); });
    add("unpremultiply in place", 32, 0, true, [](Call c) { c.t.unpremultiply(c.dst, c.dst, c.n); });
    add("straighten", 32, 32, false, [](Call c) { c.t.straighten(c.dst, c.src, c.n); });
    add("straighten in place", 32, 0, true, [](Call c) { c.t.straighten(c.dst, c.dst, c.n); });
    add("invert", 32, 0, true, [](Call c) { c.t.invert(c.dst, c.n); });
    add("mirror", 32, 32, false, [](Call c) { c.t.mirror(c.dst, c.src, c.n); });
    add("blendOver", 32, 32, true, [](Call c) { c.t.blendOver(c.dst, c.src, c.n); });
    add("swapRedBlue", 32, 32, false, [](Call c) { c.t.swapRedBlue(c.dst, c.src, c.n); });
    add("swapRedBlue in place", 32, 0, true, [](Call c) { c.t.swapRedBlue(c.dst, c.dst, c.n); });
    for (const bool swap : {false, true})
        add("pack24", 24, 32, false, [=](Call c) { c.t.pack24(c.dst, c.src, c.n, swap); });
    for (const bool swap : {false, true})
        add("unpack24", 32, 24, false, [=](Call c) { c.t.unpack24(c.dst, c.src, c.n, swap); });
    add("extractAlpha", 8, 32, false, [](Call c) { c.t.extractAlpha(c.dst, c.src, c.n); });
    for (const int least : {0, 1, 128, 255})
        add("alphaBits", 1, 32, false,
            [=](Call c) { c.t.alphaBits(c.dst, c.src, c.n, static_cast<std::uint8_t>(least)); });
    add("unfilterUp", 8, 8, true, [](Call c) { c.t.unfilterUp(c.dst, c.src, c.n); });
    add("fromRgb8", 32, 24, false, [](Call c) { c.t.fromRgb8(c.dst, c.src, c.n); });
    add("fromRgba8", 32, 32, false, [](Call c) { c.t.fromRgba8(c.dst, c.src, c.n); });
    add("fromGrayAlpha8", 32, 16, false, [](Call c) { c.t.fromGrayAlpha8(c.dst, c.src, c.n); });
    Numbers numbers(9);
    const std::vector<std::uint8_t> lut = rowOf(Content::bytes, 1024, numbers);
    add("fromIndex8", 32, 8, false, [=](Call c) { c.t.fromIndex8(c.dst, c.src, c.n, lut.data()); });
    add("fromGray16", 32, 16, false, [](Call c) { c.t.fromGray16(c.dst, c.src, c.n); });
    add("fromRgb16", 32, 48, false, [](Call c) { c.t.fromRgb16(c.dst, c.src, c.n); });
    add("fromRgba16", 32, 64, false, [](Call c) { c.t.fromRgba16(c.dst, c.src, c.n); });
    add("fromGrayAlpha16", 32, 32, false, [](Call c) { c.t.fromGrayAlpha16(c.dst, c.src, c.n); });
    for (const GrayWeights& weights : weightChoices)
        add("grayscale", 32, 0, true, [=](Call c) { c.t.grayscale(c.dst, c.n, weights); });
    for (const int percent : {-100, -99, -75, -1, 0, 10, 50, 99, 100})
        add("adjustLightness", 32, 32, false, [=](Call c) { adjust(c, percent); });
    for (const int scale : {0, 2, 127, 254, 255})
        add("blendScaled", 32, 32, true,
            [=](Call c) { c.t.blendScaled(c.dst, c.src, c.n, static_cast<std::uint8_t>(scale)); });
    // Light, gray, both, each found by a line and looked up, and at both kinds of opacity.
    for (const float percent : {0.0F, 25.0F, -37.5F, 100.0F, -100.0F}) {
        for (unsigned kind = 0; kind < 8; ++kind) {
            Tone tone = percent == 0.0F ? Tone() : spt_LightnessTone(percent);
            tone.isLinear = tone.isLinear && (kind & 2) != 0;
            tone.isGray = (kind & 4) != 0;
            tone.weights = weightChoices[(kind & 1) == 0 ? 0 : 8];
            if (!tone.isGray && (!tone.isLight || (kind & 1) != 0)) continue;
            for (const int opacity : {77, 255})
                add("blendToned", 32, 32, true,
                    [=](Call c) { c.t.blendToned(c.dst, c.src, c.n, static_cast<std::uint8_t>(opacity), tone); });
        }
    }
    static constexpr std::uint8_t mixed[] = {255, 130, 0}, clear[4] = {}, colour[4] = {1, 2, 3, 255};
    static constexpr std::uint8_t fills[][3] = {{0, 0, 0}, {255, 255, 255}, {1, 0xC0, 0x40}};
    for (const unsigned opacity : {1U, 33U, 50U, 99U, 100U})
        add("blendToColour", 32, 0, true, [=](Call c) { c.t.blendToColour(c.dst, c.n, mixed, opacity); });
    add("replacePixel", 32, 0, true, [](Call c) { return c.t.replacePixel(c.dst, c.n, clear, colour); });
    for (const unsigned ratio : {0U, 4U, 13U, 29U, 60U})
        add("gatherPixels", 32, 32, false,
            [=](Call c) { c.t.gatherPixels(c.dst, c.src, Columns(c.n, ratio).offsets, c.n); });
    for (const bool isOneRow : {false, true})
        for (const unsigned ratio : {0U, 9U, 20U})
            if (ratio != 0 || !isOneRow)
                add("sampleBilinear", 32, 64, false, [=](Call c) { return interpolate(c, ratio, isOneRow); });
    for (const std::uint32_t step : {1U, 13U, 24U, 37U, 300U})
        add("mixSixteenths", 160, 64, false, [=](Call c) {
            if (c.n > 0) mixSixteenths(c, step);
        });
    for (const std::size_t taps : {4U, 8U, 12U, 20U})
        add("sumAlongRow", 64, 64, false, [=](Call c) { sumAlong(c, taps); });
    for (const std::size_t count : {2U, 6U})
        for (const bool isOpaque : {false, true})
            add("sumRows", 32, 32, false, [=](Call c) {
                if (c.n > 0) sumOver(c, count, isOpaque);
            });
    for (const auto& way : {std::pair{1, 1}, {-1, 1}, {1, -1}, {-1, -1}, {0, 1}, {1, 0}})
        for (const bool isBilinear : {false, true})
            add("walk", 32, 128, false, [=](Call c) { walk(c, isBilinear, way.first, way.second); });
    for (const std::uint8_t* fill : fills) {
        add("flatten24", 24, 32, false, [=](Call c) { c.t.flatten24(c.dst, c.src, c.n, fill); });
        add("flatten32", 32, 32, false, [=](Call c) { c.t.flatten32(c.dst, c.src, c.n, fill); });
    }
    for (const unsigned which : {1U, 2U, 3U})
        add("slideAlphaSums", 16, 64, true, [=](Call c) { slideSums(c, which); });
    for (const unsigned window : {1U, 3U, 9U, 15U, 17U, 21U})
        add("shadeBoxes", 32, 32, false, [=](Call c) { shade(c, window); });
    for (std::size_t step = 1; step <= 8; ++step) {
        add("unfilterSub", 8, 0, true, [=](Call c) { c.t.unfilterSub(c.dst, c.n, step); });
        add("unfilterAvg", 8, 8, true, [=](Call c) { c.t.unfilterAvg(c.dst, c.src, c.n, step); });
        add("unfilterPaeth", 8, 8, true, [=](Call c) { c.t.unfilterPaeth(c.dst, c.src, c.n, step); });
        add("unfilterPaethTwice", 16, 8, true,
            [=](Call c) { c.t.unfilterPaethTwice(c.dst, c.dst + c.n, c.src, c.n, step); });
    }
    for (const std::size_t step : {1U, 2U, 3U, 4U, 5U, 8U}) {
        add("filterSub", 8, 8, false, [=](Call c) { c.t.filterSub(c.dst, c.src, c.n, step); });
        add("filterUp, Avg, Paeth", 24, 16, false, [=](Call c) { // of two rows, the second of which is above
            c.t.filterUp(c.dst, c.src, c.src + c.n, c.n);
            c.t.filterAvg(c.dst + c.n, c.src, c.src + c.n, c.n, step);
            c.t.filterPaeth(c.dst + 2 * c.n, c.src, c.src + c.n, c.n, step);
        });
        add("filterSums", 0, 16, false, [=](Call c) {
            std::uint64_t sums[5];
            c.t.filterSums(sums, c.src, c.src + c.n, c.n, step);
            return (((sums[0] * 1009 + sums[1]) * 1009 + sums[2]) * 1009 + sums[3]) * 1009 + sums[4];
        });
    }
    add("adler32", 0, 64, false, [](Call c) { return c.t.adler32(0xFFF0FFF0, c.src, 8 * c.n); });
    add("crc32", 0, 64, false, [](Call c) { return c.t.crc32(0x12345678, c.src, 8 * c.n); });
    for (const unsigned depth : {1U, 2U, 4U})
        add("unpackSamples", 8, depth, false, [=](Call c) { c.t.unpackSamples(c.dst, c.src, c.n, depth); });
    add("toYCbCr", 24, 32, false, [](Call c) { c.t.toYCbCr(c.dst, c.dst + c.n, c.dst + 2 * c.n, c.src, c.n); });
    add("halveSamples", 8, 32, false, [](Call c) { c.t.halveSamples(c.dst, c.src, c.src + 2 * c.n, c.n); });
    for (const std::int32_t quality : {1, 50, 70, 100})
        add("transformBlocks", 1024, 512, false, [=](Call c) { return transform(c, quality); });
    for (unsigned scale = 0; everyOpacity && scale < 256; ++scale)
        add("blendScaled", 32, 32, true,
            [=](Call c) { c.t.blendScaled(c.dst, c.src, c.n, static_cast<std::uint8_t>(scale)); });
    for (unsigned opacity = 1; everyOpacity && opacity <= 100; ++opacity)
        add("blendToColour", 32, 0, true, [=](Call c) { c.t.blendToColour(c.dst, c.n, mixed, opacity); });
    return all;
}

} // namespace
} // namespace pixkit::kernels::test
// SPDX-License-Identifier: MIT
