#include "operations.h"
#include "render/PixelWorkers.h"

#include "codecs/jpg/JpgQuantisation.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace pixkit::kernels::test {

namespace {

using Bytes = std::uint8_t*;
using Source = const std::uint8_t*;

void putValidPixels(std::vector<std::uint8_t>& row, Numbers& numbers) {
    for (std::size_t i = 0; i + 4 <= row.size();) {
        const std::uint32_t kind = numbers.below(3);
        for (std::uint32_t run = 1 + numbers.below(12); run > 0 && i + 4 <= row.size(); --run, i += 4) {
            const std::uint32_t alpha = kind == 0 ? 0 : kind == 1 ? 255 : 1 + numbers.below(254);
            for (std::size_t channel = 0; channel < 3; ++channel)
                row[i + channel] = static_cast<std::uint8_t>(numbers.below(alpha + 1));
            row[i + 3] = static_cast<std::uint8_t>(alpha);
        }
    }
}

constexpr std::array<GrayWeights, 14> weightChoices = {{
    {0.299F, 0.587F, 0.114F},
    {0.213F, 0.715F, 0.072F},
    {0.333F, 0.334F, 0.333F},
    {0.8F, 0.1F, 0.1F},
    {0.1F, 0.8F, 0.1F},
    {0.1F, 0.1F, 0.8F},
    {0.45F, 0.45F, 0.1F},
    {0.1F, 0.45F, 0.45F},
    {0.5F, 0.25F, 0.25F}, // ties
    {0.5F, 0.5F, 0.0F},   // ties, with a weight of nothing
    {1.0F, 0.0F, 0.0F},   // outside what the fast form takes
    {3.0F, 0.5F, 0.25F},  // sums beyond 8 bits
    {0.01F, 0.98F, 0.01F},
    {0.25F, 0.75F, 0.0078125F},
}};

std::array<std::int16_t, 256> lightness(int percent) {
    std::array<std::int16_t, 256> adjust{};
    for (int alpha = 0; alpha < 256; ++alpha)
        adjust[static_cast<std::size_t>(alpha)] = static_cast<std::int16_t>(alpha * percent / 100);
    return adjust;
}

// Light, gray, both, each found by a line and looked up, and at both kinds of opacity.
const std::vector<Tone>& toneChoices() {
    static const std::vector<Tone> all = [] {
        std::vector<Tone> tones;
        for (const float percent : {0.0F, 25.0F, -37.5F, 100.0F, -100.0F}) {
            for (unsigned kind = 0; kind < 8; ++kind) {
                Tone tone = percent == 0.0F ? Tone() : spt_LightnessTone(percent);
                tone.isLinear = tone.isLinear && (kind & 2) != 0;
                tone.isGray = (kind & 4) != 0;
                tone.weights = weightChoices[(kind & 2) == 0 ? 0 : 8];
                if (tone.isGray || tone.isLight) tones.push_back(tone);
            }
        }
        return tones;
    }();
    return all;
}

std::uint64_t summary(bool result, const AlphaScan& scan) {
    std::uint64_t all = scan.zeroCount;
    all = all * 1'000'003 + scan.opaqueCount;
    return all * 64 + scan.state * 4U + (scan.partial ? 2U : 0U) + (result ? 1U : 0U);
}

// The entries that only take rows and a count.
template <auto entry>
std::uint64_t rows(const Table& table, Bytes dst, Source src, std::size_t count, unsigned) {
    (table.*entry)(dst, src, count);
    return 0;
}

template <auto entry>
std::uint64_t swapping(const Table& table, Bytes dst, Source src, std::size_t count, unsigned swap) {
    (table.*entry)(dst, src, count, swap != 0);
    return 0;
}

template <auto entry>
std::uint64_t flattening(const Table& table, Bytes dst, Source src, std::size_t count, unsigned fill) {
    const std::uint8_t colour[] = {static_cast<std::uint8_t>(fill), static_cast<std::uint8_t>(fill >> 8),
                                   static_cast<std::uint8_t>(fill >> 16)};
    (table.*entry)(dst, src, count, colour);
    return 0;
}

template <auto entry>
std::uint64_t withAbove(const Table& table, Bytes dst, Source src, std::size_t count, unsigned step) {
    (table.*entry)(dst, src, count, step);
    return 0;
}

// Sums of alpha that a box may hold, and the shades of one colour, from random bytes.
std::vector<std::uint16_t> boxSums(Source src, std::size_t entries, unsigned window) {
    std::vector<std::uint16_t> sums(entries);
    for (std::size_t i = 0; i < entries; ++i)
        sums[i] = static_cast<std::uint16_t>((src[4 * i] * 256U + src[4 * i + 1]) % (255 * window + 1));
    return sums;
}

std::vector<std::uint8_t> shadesOf(const std::array<unsigned, 4>& opaque) {
    std::vector<std::uint8_t> shades;
    for (unsigned alpha = 0; alpha < 256; ++alpha)
        for (const unsigned channel : opaque)
            shades.push_back(static_cast<std::uint8_t>(channel * alpha / 255));
    return shades;
}

// `which`: 1 a row enters, 2 one leaves, 3 both.
std::uint64_t slideSums(const Table& t, Bytes dst, Source src, std::size_t count, unsigned which) {
    std::vector<std::uint16_t> sums(count);
    if (count > 0) std::memcpy(sums.data(), dst, count * 2);
    t.slideAlphaSums(sums.data(), (which & 1) != 0 ? src : nullptr, (which & 2) != 0 ? src + 4 * count : nullptr,
                     count);
    if (count > 0) std::memcpy(dst, sums.data(), count * 2);
    return 0;
}

std::uint64_t shade(const Table& t, Bytes dst, Source src, std::size_t count, unsigned window) {
    const std::vector<std::uint8_t> shades = shadesOf({200, window * 12, 1, 255});
    std::vector<std::uint16_t> sums(window);
    const std::vector<std::uint16_t> rest = boxSums(src, count, window);
    sums.insert(sums.end(), rest.begin(), rest.end());
    t.shadeBoxes(dst, sums.data(), count, window, shades.data());
    return 0;
}

// Columns that walk over a row of as many pixels, by a third of a pixel and `ratio` sixteenths, until its end.
struct Columns {
    Columns(std::size_t count, unsigned ratio) : offsets(count), near(count), far(count) {
        for (std::size_t i = 0; i < count; ++i) {
            const double position =
                std::min(static_cast<double>(i) * (ratio / 16.0 + 1.0 / 3.0), static_cast<double>(count) - 1.25);
            const double whole = std::floor(std::max(position, 0.0));
            offsets[i] = static_cast<std::int32_t>(whole) * 4;
            far[i] = std::max(position, 0.0) - whole;
            near[i] = 1.0 - far[i];
        }
    }
    std::vector<std::int32_t> offsets;
    std::vector<double> near, far;
};

std::uint64_t gathering(const Table& table, Bytes dst, Source src, std::size_t count, unsigned ratio) {
    table.gatherPixels(dst, src, Columns(count, ratio).offsets.data(), count);
    return 0;
}

// The source holds two rows one after the other; a ratio above 100 asks for the first alone.
std::uint64_t interpolating(const Table& table, Bytes dst, Source src, std::size_t count, unsigned ratio) {
    if (count < 2) return 0;
    const Columns columns(count, ratio % 100);
    const WeightedRows both = {src, src + 4 * count, 0.3, 0.7};
    const WeightedRows one = {src, nullptr, 1.0, 0.0};
    table.sampleBilinear(dst, ratio > 100 ? one : both, columns.offsets.data(), columns.near.data(), columns.far.data(),
                         count);
    // Widened, it gives the same.
    std::vector<double> wide(8 * count);
    table.widenPixels(wide.data(), src, 2 * count);
    const WeightedWideRows wideBoth = {wide.data(), wide.data() + 4 * count, 0.3, 0.7};
    const WeightedWideRows wideOne = {wide.data(), nullptr, 1.0, 0.0};
    std::vector<std::uint8_t> again(4 * count);
    table.sampleWidened(again.data(), ratio > 100 ? wideOne : wideBoth, columns.offsets.data(), columns.near.data(),
                        columns.far.data(), count);
    return std::memcmp(dst, again.data(), again.size()) == 0 ? 0 : 1;
}

// Over a source of 8 rows whose lengths are half the count, from its middle in a direction that stays within.
template <auto entry>
std::uint64_t walking(const Table& table, Bytes dst, Source src, std::size_t count, unsigned direction) {
    const std::size_t width = count / 2;
    if (width < 2) return 0;
    const auto step = static_cast<std::int64_t>((static_cast<std::uint64_t>(width - 2) << 32) / (2 * count));
    const std::int64_t down = (std::int64_t{3} << 32) / static_cast<std::int64_t>(count);
    const std::int64_t signs[][2] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}, {0, 1}, {1, 0}};
    const auto [right, up] = signs[direction];
    const std::int64_t u = static_cast<std::int64_t>(static_cast<std::uint64_t>(width - 2) << 31) + 0x12345678;
    (table.*entry)(dst, {src, 4 * width, width == 2 ? 0 : u, (std::int64_t{7} << 31) + 7, right * step, up * down},
                   count);
    return 0;
}

template <bool isCopying>
std::uint64_t scanning(const Table& table, Bytes dst, Source src, std::size_t count, unsigned isCarriedOn) {
    AlphaScan scan;
    if (isCarriedOn != 0) scan = {3, 4, AlphaScan::colourInClear, false};
    const bool result = isCopying ? table.copyScanningAlpha(dst, src, count, scan) : table.scanAlpha(src, count, scan);
    return summary(result, scan);
}

void addJpeg(std::vector<Operation>& all) {
    all.push_back({"toYCbCr", 24, 32, false,
                   [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned) {
                       t.toYCbCr(dst, dst + count, dst + 2 * count, src, count);
                       return std::uint64_t{0};
                   },
                   0});
    all.push_back({"halveSamples", 8, 32, false,
                   [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned) {
                       t.halveSamples(dst, src, src + 2 * count, count);
                       return std::uint64_t{0};
                   },
                   0});
    for (const unsigned quality : {1U, 50U, 70U, 100U}) {
        all.push_back({"transformBlocks " + std::to_string(quality), 1024, 512, false,
                       [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned argument) {
                           const BlockQuantiser quantiser =
                               jpgBlockQuantiser(jpgQuantisation(false, static_cast<std::int32_t>(argument)));
                           std::vector<std::int16_t> coefficients(64 * count); // dst need not be aligned for them
                           std::vector<std::uint64_t> nonzero(count);
                           t.transformBlocks(coefficients.data(), nonzero.data(), src, 8 * count, count, quantiser);
                           if (count > 0) std::memcpy(dst, coefficients.data(), 128 * count);
                           std::uint64_t all64 = 0;
                           for (const std::uint64_t bits : nonzero)
                               all64 = all64 * 1'000'003 + bits;
                           return all64;
                       },
                       quality});
    }
}

std::vector<Operation> made() {
    std::vector<Operation> all = {
        {"scanAlpha", 0, 32, false, scanning<false>, 0},
        {"scanAlpha carried on", 0, 32, false, scanning<false>, 1},
        {"copyScanningAlpha", 32, 32, false, scanning<true>, 0},
        {"copyScanningAlpha carried on", 32, 32, false, scanning<true>, 1},
        {"setOpaque", 32, 0, true,
         [](const Table& t, Bytes dst, Source, std::size_t count, unsigned) {
             t.setOpaque(dst, count);
             return std::uint64_t{0};
         },
         0},
        {"premultiply", 32, 0, true,
         [](const Table& t, Bytes dst, Source, std::size_t count, unsigned) {
             return std::uint64_t{t.premultiply(dst, count)};
         },
         0},
        {"copyPremultiplying", 32, 32, false,
         [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned) {
             return std::uint64_t{t.copyPremultiplying(dst, src, count)};
         },
         0},
        {"unpremultiply", 32, 32, false, rows<&Table::unpremultiply>, 0},
        {"unpremultiply in place", 32, 0, true,
         [](const Table& t, Bytes dst, Source, std::size_t count, unsigned) {
             t.unpremultiply(dst, dst, count);
             return std::uint64_t{0};
         },
         0},
        {"invert", 32, 0, true,
         [](const Table& t, Bytes dst, Source, std::size_t count, unsigned) {
             t.invert(dst, count);
             return std::uint64_t{0};
         },
         0},
        {"mirror", 32, 32, false, rows<&Table::mirror>, 0},
        {"blendOver", 32, 32, true, rows<&Table::blendOver>, 0},
        {"swapRedBlue", 32, 32, false, rows<&Table::swapRedBlue>, 0},
        {"swapRedBlue in place", 32, 0, true,
         [](const Table& t, Bytes dst, Source, std::size_t count, unsigned) {
             t.swapRedBlue(dst, dst, count);
             return std::uint64_t{0};
         },
         0},
        {"pack24", 24, 32, false, swapping<&Table::pack24>, 0},
        {"pack24 swapped", 24, 32, false, swapping<&Table::pack24>, 1},
        {"unpack24", 32, 24, false, swapping<&Table::unpack24>, 0},
        {"unpack24 swapped", 32, 24, false, swapping<&Table::unpack24>, 1},
        {"extractAlpha", 8, 32, false, rows<&Table::extractAlpha>, 0},
        {"unfilterUp", 8, 8, true, rows<&Table::unfilterUp>, 0},
        {"fromRgb8", 32, 24, false, rows<&Table::fromRgb8>, 0},
        {"fromRgba8", 32, 32, false, rows<&Table::fromRgba8>, 0},
        {"fromGrayAlpha8", 32, 16, false, rows<&Table::fromGrayAlpha8>, 0},
        {"fromIndex8", 32, 8, false,
         [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned) {
             Numbers numbers(9);
             const std::vector<std::uint8_t> lut = rowOf(Content::bytes, 1024, numbers);
             t.fromIndex8(dst, src, count, lut.data());
             return std::uint64_t{0};
         },
         0},
        {"fromGray16", 32, 16, false, rows<&Table::fromGray16>, 0},
        {"fromRgb16", 32, 48, false, rows<&Table::fromRgb16>, 0},
        {"fromRgba16", 32, 64, false, rows<&Table::fromRgba16>, 0},
        {"fromGrayAlpha16", 32, 32, false, rows<&Table::fromGrayAlpha16>, 0},
    };
    for (unsigned choice = 0; choice < weightChoices.size(); ++choice) {
        all.push_back({"grayscale " + std::to_string(choice), 32, 0, true,
                       [](const Table& t, Bytes dst, Source, std::size_t count, unsigned which) {
                           t.grayscale(dst, count, weightChoices[which]);
                           return std::uint64_t{0};
                       },
                       choice});
    }
    for (const unsigned percent : {0U, 1U, 25U, 99U, 100U, 110U, 150U, 199U, 200U}) { // 100 above what it means
        all.push_back({"adjustLightness " + std::to_string(static_cast<int>(percent) - 100), 32, 32, false,
                       [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned raised) {
                           const int signedPercent = static_cast<int>(raised) - 100;
                           t.adjustLightness(dst, src, count, lightness(signedPercent).data(), signedPercent > 0);
                           return std::uint64_t{0};
                       },
                       percent});
    }
    for (const unsigned globalAlpha : {0U, 2U, 127U, 254U, 255U}) {
        all.push_back({"blendScaled " + std::to_string(globalAlpha), 32, 32, true,
                       [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned scale) {
                           t.blendScaled(dst, src, count, static_cast<std::uint8_t>(scale));
                           return std::uint64_t{0};
                       },
                       globalAlpha});
    }
    for (unsigned choice = 0; choice < toneChoices().size(); ++choice) {
        all.push_back({"blendToned " + std::to_string(choice), 32, 32, true,
                       [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned which) {
                           t.blendToned(dst, src, count, which % 2 == 0 ? 255 : 77, toneChoices()[which]);
                           return std::uint64_t{0};
                       },
                       choice});
    }
    for (const unsigned opacity : {1U, 33U, 50U, 99U, 100U}) {
        all.push_back({"blendToColour " + std::to_string(opacity), 32, 0, true,
                       [](const Table& t, Bytes dst, Source, std::size_t count, unsigned percent) {
                           const std::uint8_t colour[] = {255, 130, 0};
                           t.blendToColour(dst, count, colour, percent);
                           return std::uint64_t{0};
                       },
                       opacity});
    }
    all.push_back({"replacePixel", 32, 0, true,
                   [](const Table& t, Bytes dst, Source, std::size_t count, unsigned) {
                       const std::uint8_t clear[4] = {};
                       const std::uint8_t colour[4] = {1, 2, 3, 255};
                       return std::uint64_t{t.replacePixel(dst, count, clear, colour)};
                   },
                   0});
    for (const unsigned ratio : {0U, 4U, 13U, 29U, 60U})
        all.push_back({"gatherPixels " + std::to_string(ratio), 32, 32, false, gathering, ratio});
    for (const unsigned ratio : {0U, 9U, 20U, 109U, 120U})
        all.push_back({"sampleBilinear " + std::to_string(ratio), 32, 64, false, interpolating, ratio});
    for (unsigned direction = 0; direction < 6; ++direction) {
        const std::string name = " towards " + std::to_string(direction);
        all.push_back({"walkNearest" + name, 32, 128, false, walking<&Table::walkNearest>, direction});
        all.push_back({"walkBilinear" + name, 32, 128, false, walking<&Table::walkBilinear>, direction});
    }
    for (const unsigned fill : {0x000000U, 0xFFFFFFU, 0x40C001U}) {
        all.push_back({"flatten24 " + std::to_string(fill), 24, 32, false, flattening<&Table::flatten24>, fill});
        all.push_back({"flatten32 " + std::to_string(fill), 32, 32, false, flattening<&Table::flatten32>, fill});
    }
    for (const unsigned which : {1U, 2U, 3U})
        all.push_back({"slideAlphaSums " + std::to_string(which), 16, 64, true, slideSums, which});
    for (const unsigned window : {1U, 3U, 9U, 15U, 17U, 21U})
        all.push_back({"shadeBoxes " + std::to_string(window), 32, 32, false, shade, window});
    for (unsigned step = 1; step <= 8; ++step) {
        const std::string name = " step " + std::to_string(step);
        all.push_back({"unfilterSub" + name, 8, 0, true,
                       [](const Table& t, Bytes dst, Source, std::size_t count, unsigned distance) {
                           t.unfilterSub(dst, count, distance);
                           return std::uint64_t{0};
                       },
                       step});
        all.push_back({"unfilterAvg" + name, 8, 8, true, withAbove<&Table::unfilterAvg>, step});
        all.push_back({"unfilterPaeth" + name, 8, 8, true, withAbove<&Table::unfilterPaeth>, step});
    }
    for (const unsigned step : {1U, 2U, 3U, 4U, 5U, 8U}) {
        const std::string name = " step " + std::to_string(step);
        all.push_back({"filterSub" + name, 8, 8, false, withAbove<&Table::filterSub>, step});
        // Two rows, the second of which is above.
        all.push_back({"filterUp, Avg, Paeth" + name, 24, 16, false,
                       [](const Table& t, Bytes dst, Source src, std::size_t count, unsigned distance) {
                           t.filterUp(dst, src, src + count, count);
                           t.filterAvg(dst + count, src, src + count, count, distance);
                           t.filterPaeth(dst + 2 * count, src, src + count, count, distance);
                           return std::uint64_t{0};
                       },
                       step});
        all.push_back({"filterSums" + name, 0, 16, false,
                       [](const Table& t, Bytes, Source src, std::size_t count, unsigned distance) {
                           std::uint64_t sums[5];
                           t.filterSums(sums, src, src + count, count, distance);
                           return (((sums[0] * 1009 + sums[1]) * 1009 + sums[2]) * 1009 + sums[3]) * 1009 + sums[4];
                       },
                       step});
    }
    all.push_back({"adler32", 0, 64, false,
                   [](const Table& t, Bytes, Source src, std::size_t count, unsigned) {
                       return std::uint64_t{t.adler32(0xFFF0FFF0, src, 8 * count)};
                   },
                   0});
    for (const unsigned depth : {1U, 2U, 4U})
        all.push_back(
            {"unpackSamples " + std::to_string(depth), 8, depth, false, withAbove<&Table::unpackSamples>, depth});
    addJpeg(all);
    return all;
}

} // namespace

std::vector<std::uint8_t> rowOf(Content content, std::size_t bytes, Numbers& numbers) {
    std::vector<std::uint8_t> row(bytes);
    if (content == Content::bytes || content == Content::opaque)
        std::generate(row.begin(), row.end(), [&] { return numbers.byte(); });
    if (content == Content::opaque)
        for (std::size_t i = 3; i < bytes; i += 4)
            row[i] = 255;
    if (content == Content::premultiplied || content == Content::spoiled) putValidPixels(row, numbers);
    if (content == Content::spoiled && bytes >= 4) {
        const std::size_t pixel = numbers.below(static_cast<std::uint32_t>(bytes / 4));
        row[4 * pixel + numbers.below(3)] = 255;
    }
    return row;
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = made();
    return all;
}

} // namespace pixkit::kernels::test
