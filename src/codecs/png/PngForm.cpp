#include "codecs/png/PngForm.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <bit>
#include <bitset>
#include <cstring>
#include <tuple>

namespace pixkit {

namespace {

constexpr PngPixel opaque = 0xFF000000U;

using Color = std::array<std::uint8_t, 3>; // R, G, B

PngPixel pixelAt(const std::uint8_t* p, bool hasAlpha) noexcept {
    const PngPixel pixel = p[0] | PngPixel{p[1]} << 8 | PngPixel{p[2]} << 16 | PngPixel{p[3]} << 24;
    if (!hasAlpha) return pixel | opaque;
    return p[3] == 0 ? 0 : pixel;
}
std::uint8_t blueOf(PngPixel pixel) noexcept {
    return static_cast<std::uint8_t>(pixel);
}
std::uint8_t greenOf(PngPixel pixel) noexcept {
    return static_cast<std::uint8_t>(pixel >> 8);
}
std::uint8_t redOf(PngPixel pixel) noexcept {
    return static_cast<std::uint8_t>(pixel >> 16);
}
unsigned alphaOf(PngPixel pixel) noexcept {
    return pixel >> 24;
}
bool isGrayPixel(PngPixel pixel) noexcept {
    return blueOf(pixel) == greenOf(pixel) && greenOf(pixel) == redOf(pixel);
}

// What is in a picture. Rows are left as soon as nothing new can come.
struct Survey {
    bool isGray = true;
    bool hasClear = false;
    bool hasPartial = false;
    std::bitset<256> grays;                                                         // opaque ones
    std::shared_ptr<PngPaletteIndex> palette = std::make_shared<PngPaletteIndex>(); // null: too many colours

    void see(PngPixel pixel) noexcept {
        const unsigned alpha = alphaOf(pixel);
        hasClear |= alpha == 0;
        hasPartial |= alpha != 0 && alpha != 255;
        if (isGray) {
            isGray = isGrayPixel(pixel);
            if (alpha == 255) grays.set(blueOf(pixel));
        }
        if (palette && !palette->add(pixel)) palette.reset();
    }
    // In a picture of many colours only alpha can still tell something.
    void seeAlphas(const std::uint8_t* row, std::size_t count) noexcept {
        bool clear = false;
        bool partial = false;
        for (std::size_t x = 0; x < count; ++x) {
            const unsigned alpha = row[4 * x + 3];
            clear |= alpha == 0;
            partial |= static_cast<std::uint8_t>(alpha + 1) > 1;
        }
        hasClear |= clear;
        hasPartial |= partial;
    }
    // Of a long row of opaque grays each is looked at once; false: the row is another one.
    bool seeGrayRow(const std::uint8_t* row, std::size_t count, bool hasAlpha) noexcept {
        if (!isGray || count < grays.size()) return false;
        PngPixel other = 0;
        for (std::size_t x = 0; x < count; ++x) {
            const PngPixel pixel = pixelAt(row + 4 * x, false);
            other |= ((pixel ^ pixel >> 8) & 0xFFFF) | (hasAlpha ? row[4 * x + 3] ^ 0xFFU : 0);
        }
        if (other != 0) return false;
        std::array<bool, 256> isThere{};
        for (std::size_t x = 0; x < count; ++x)
            isThere[row[4 * x]] = true;
        for (PngPixel gray = 0; gray < isThere.size(); ++gray)
            if (isThere[gray]) see(opaque | gray * 0x010101);
        return true;
    }
    void seeRow(const std::uint8_t* row, std::size_t count, bool hasAlpha) noexcept {
        if (!isGray && !palette) {
            if (hasAlpha && !hasPartial) seeAlphas(row, count);
            return;
        }
        if (seeGrayRow(row, count, hasAlpha)) return;
        PngPixel last = ~pixelAt(row, hasAlpha); // what was seen before needs no look
        for (std::size_t x = 0; x < count; ++x) {
            const PngPixel pixel = pixelAt(row + 4 * x, hasAlpha);
            if (palette ? !palette->has(pixel) : pixel != last) see(pixel);
            last = pixel;
        }
    }
};

// Grays that a depth has are the multiples of a step (PNG standard, 13.12).
unsigned grayStep(unsigned bitDepth) noexcept {
    return 255U / ((1U << bitDepth) - 1);
}

// The least depth that can say all grays of the picture and, if some of its pixels are clear, one more gray that stands
// for them: then of 8 bits, because programs that everybody has show a transparent gray of fewer bits as opaque.
std::optional<PngForm> grayForm(const Survey& survey) {
    for (const unsigned depth : {1U, 2U, 4U, 8U}) {
        if (survey.hasClear && depth < 8) continue;
        const unsigned step = grayStep(depth);
        std::size_t found = 0;
        std::optional<unsigned> free;
        for (unsigned gray = 0; gray < 256; gray += step) {
            if (survey.grays[gray]) {
                ++found;
            } else if (!free) {
                free = gray;
            }
        }
        if (found < survey.grays.count() || (survey.hasClear && !free)) continue;
        PngForm form{PngColorType::gray, depth, {}, {}, {}};
        if (survey.hasClear) {
            const auto gray = static_cast<std::uint8_t>(*free);
            form.clearColor = {gray, gray, gray};
        }
        return form;
    }
    return {};
}

// The first colours, of which nearly always one is free, take a look without a table.
constexpr unsigned firstColors = 64;

std::uint64_t firstColorsUsed(ConstPixelView image) {
    std::uint64_t used = 0;
    for (std::size_t y = 0; y < image.height; ++y) {
        const std::uint8_t* row = image.row(y);
        for (std::size_t x = 0; x < image.width; ++x) {
            const PngPixel pixel = pixelAt(row + 4 * x, true);
            if (pixel - opaque < firstColors) used |= std::uint64_t{1} << (pixel - opaque);
        }
    }
    return used;
}

// The first colour that no opaque pixel has.
std::optional<Color> freeColor(ConstPixelView image, const std::optional<Color>& background) {
    if (!background) {
        const auto free = static_cast<unsigned>(std::countr_one(firstColorsUsed(image)));
        if (free < firstColors) return Color{0, 0, static_cast<std::uint8_t>(free)};
    }
    std::vector<std::uint64_t> used(std::size_t{1} << 18); // a bit for each colour
    const auto use = [&](PngPixel color) { used[color >> 6 & 0x3FFFF] |= std::uint64_t{1} << (color & 63); };
    for (std::size_t y = 0; y < image.height; ++y) {
        const std::uint8_t* row = image.row(y);
        for (std::size_t x = 0; x < image.width; ++x)
            if (row[4 * x + 3] != 0) use(pixelAt(row + 4 * x, true));
    }
    if (background) use(PngPixel{(*background)[0]} << 16 | PngPixel{(*background)[1]} << 8 | (*background)[2]);
    for (PngPixel color = 0; color < 1U << 24; ++color) {
        if ((used[color >> 6] >> (color & 63) & 1) == 0) return Color{redOf(color), greenOf(color), blueOf(color)};
    }
    return {};
}

PngForm trueColorForm(ConstPixelView image, const Survey& survey, const std::optional<Color>& background) {
    if (survey.isGray && !survey.hasPartial) {
        if (auto form = grayForm(survey)) return std::move(*form);
    }
    if (survey.isGray) return {PngColorType::grayAlpha, 8, {}, {}, {}};
    if (!survey.hasPartial && !survey.hasClear) return {PngColorType::rgb, 8, {}, {}, {}};
    if (!survey.hasPartial) {
        if (const auto color = freeColor(image, background)) return {PngColorType::rgb, 8, {}, {}, color};
    }
    return {PngColorType::rgba, 8, {}, {}, {}};
}

PngForm paletteForm(std::shared_ptr<PngPaletteIndex> indexes) {
    std::vector<PngPixel> palette = indexes->arrange();
    unsigned depth = 1;
    while (palette.size() > std::size_t{1} << depth)
        depth *= 2;
    return {PngColorType::palette, depth, std::move(palette), std::move(indexes), {}};
}

// --- samples

// Puts `count` samples of one byte together, the first into the highest bits; the rest of the last byte is 0.
void packSamples(std::uint8_t* out, const std::uint8_t* samples, std::size_t count, unsigned bitDepth) {
    const std::size_t inByte = 8 / bitDepth;
    for (std::size_t i = 0; i < count; i += inByte) {
        unsigned byte = 0;
        for (std::size_t k = 0; k < inByte; ++k)
            byte = byte << bitDepth | (i + k < count ? samples[i + k] : 0U);
        *out++ = static_cast<std::uint8_t>(byte);
    }
}

void graySamples(const PngForm& form, bool hasAlpha, std::uint8_t* out, const std::uint8_t* pixels, std::size_t count) {
    // Grays that a depth has say their number in their upper bits, and once more below.
    const unsigned below = 8 - form.bitDepth;
    const unsigned clear = form.clearColor ? (*form.clearColor)[0] : 0;
    for (std::size_t i = 0; i < count; ++i) {
        const bool isClear = hasAlpha && pixels[4 * i + 3] == 0;
        out[i] = static_cast<std::uint8_t>((isClear ? clear : pixels[4 * i]) >> below);
    }
}

void paletteSamples(const PngForm& form, bool hasAlpha, std::uint8_t* out, const std::uint8_t* pixels,
                    std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = form.indexes->indexOf(pixelAt(pixels + 4 * i, hasAlpha));
}

void rgbSamples(const PngForm& form, std::uint8_t* out, const std::uint8_t* pixels, std::size_t count) {
    kernels::table().pack24(out, pixels, count, true);
    if (!form.clearColor) return;
    for (std::size_t i = 0; i < count; ++i)
        if (pixels[4 * i + 3] == 0) std::memcpy(out + 3 * i, form.clearColor->data(), 3);
}

// Straight R, G, B, A; whatever colour a clear pixel has is not written.
void rgbaSamples(std::uint8_t* out, const std::uint8_t* pixels, std::size_t count) {
    const auto& kernel = kernels::table();
    kernel.straighten(out, pixels, count);
    kernel.swapRedBlue(out, out, count);
}

} // namespace

std::vector<PngPixel> PngPaletteIndex::arrange() {
    std::vector<PngPixel> colors(m_colors.colors().begin(), m_colors.colors().end());
    const auto rank = [](PngPixel color) {
        const unsigned brightness = 2 * redOf(color) + 5 * greenOf(color) + blueOf(color);
        return std::tuple(alphaOf(color) == 255, brightness, color);
    };
    std::ranges::sort(colors, {}, rank);
    for (std::size_t i = 0; i < colors.size(); ++i)
        m_place[m_colors.indexOf(colors[i])] = static_cast<std::uint8_t>(i);
    return colors;
}

std::size_t PngForm::bitsPerPixel() const noexcept {
    switch (colorType) {
    case PngColorType::rgb:
        return 24;
    case PngColorType::grayAlpha:
        return 16;
    case PngColorType::rgba:
        return 32;
    default:
        return bitDepth;
    }
}

std::vector<PngForm> pngFormsOf(ConstPixelView image, bool hasAlpha, const std::optional<Color>& background) {
    Survey survey;
    if (background) {
        survey.see(opaque | PngPixel{(*background)[0]} << 16 | PngPixel{(*background)[1]} << 8 | (*background)[2]);
    }
    for (std::size_t y = 0; y < image.height; ++y)
        survey.seeRow(image.row(y), image.width, hasAlpha);

    std::vector<PngForm> forms;
    PngForm trueColor = trueColorForm(image, survey, background);
    // A palette must need fewer bits to be worth its chunk.
    if (survey.palette) {
        PngForm palette = paletteForm(survey.palette);
        if (palette.bitsPerPixel() < trueColor.bitsPerPixel()) forms.push_back(std::move(palette));
    }
    forms.push_back(std::move(trueColor));
    return forms;
}

void pngSamplesOf(const PngForm& form, bool hasAlpha, std::uint8_t* samples, const std::uint8_t* pixels,
                  std::size_t count, std::uint8_t* scratch) {
    std::uint8_t* const bytes = form.bitDepth < 8 ? scratch : samples;
    switch (form.colorType) {
    case PngColorType::gray:
        graySamples(form, hasAlpha, bytes, pixels, count);
        break;
    case PngColorType::palette:
        paletteSamples(form, hasAlpha, bytes, pixels, count);
        break;
    case PngColorType::rgb:
        return rgbSamples(form, samples, pixels, count);
    case PngColorType::grayAlpha:
        rgbaSamples(scratch, pixels, count);
        for (std::size_t i = 0; i < count; ++i) {
            samples[2 * i] = scratch[4 * i];
            samples[2 * i + 1] = scratch[4 * i + 3];
        }
        return;
    case PngColorType::rgba:
        return rgbaSamples(samples, pixels, count);
    }
    if (form.bitDepth < 8) packSamples(samples, bytes, count, form.bitDepth);
}

PngPixel pngStraight(PngPixel pixel) noexcept {
    const std::uint8_t stored[4] = {blueOf(pixel), greenOf(pixel), redOf(pixel),
                                    static_cast<std::uint8_t>(alphaOf(pixel))};
    std::uint8_t straight[4];
    kernels::table().straighten(straight, stored, 1);
    return pixelAt(straight, true);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
