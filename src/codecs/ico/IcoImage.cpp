#include "codecs/ico/IcoImage.h"
#include "codecs/palette/IndexedPicture.h"
#include "codecs/png/cPNGwriter.h"
#include "coding/ByteWriter.h"
#include "coding/Diffusion.h"
#include "coding/RowBytes.h"
#include "kernels/kernels.h"
#include "shared/AlphaChannel.h"
#include "shared/enumerations.h"
#include <algorithm>
#include <cstring>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

// Systems that know nothing of alpha, and depths that have none, show what is at least half there.
constexpr std::uint8_t leastShown = 128;
// From here on images are PNG files: readers of before PNG entries stop at smaller ones, and bitmaps grow large.
constexpr std::size_t leastPng = 256;

// Each pixel becomes clear or opaque.
void decideAlpha(PixelView pixels) {
    for (std::size_t y = 0; y < pixels.height; ++y) {
        std::uint8_t* pixel = pixels.row(y);
        kernels::table().unpremultiply(pixel, pixel, pixels.width);
        for (std::size_t x = 0; x < pixels.width; ++x, pixel += 4) {
            const bool isShown = pixel[3] >= leastShown;
            if (isShown) {
                pixel[3] = 255;
            } else {
                std::memset(pixel, 0, 4);
            }
        }
    }
}

int brightness(int b, int g, int r) noexcept {
    return (114 * b + 587 * g + 299 * r + 500) / 1000;
}

IndexedPicture blackAndWhite(PixelView pixels) {
    IndexedPicture picture;
    picture.palette = {{0, 0, 0}, {255, 255, 255}};
    Diffusion<1> errors(pixels.width);
    for (std::size_t y = 0; y < pixels.height; ++y, errors.nextRow()) {
        const std::uint8_t* pixel = pixels.rowFromTop(y);
        for (std::size_t x = 0; x < pixels.width; ++x, pixel += 4) {
            const bool isShown = pixel[3] != 0; // nothing is seen of others, and nothing passed on
            const int wanted = brightness(pixel[0], pixel[1], pixel[2]) + errors.owed(x);
            const bool isWhite = isShown && wanted >= 128;
            picture.indexes.push_back(isWhite ? 1 : 0);
            if (isShown) errors.spread(x, 1, wanted - (isWhite ? 255 : 0));
        }
    }
    return picture;
}

// A bitmap of 1 bit is black and white, in this order, wherever it can be: so systems know icons without colours.
void arrangeTwoColors(IndexedPicture& picture) {
    auto& palette = picture.palette;
    const auto brightnessOf = [](const IndexedPicture::Color& color) {
        return brightness(color[2], color[1], color[0]);
    };
    if (palette.size() == 1) {
        const auto other = static_cast<std::uint8_t>(brightnessOf(palette[0]) < 128 ? 255 : 0);
        palette.push_back({other, other, other});
    }
    if (brightnessOf(palette[0]) <= brightnessOf(palette[1])) return;
    std::swap(palette[0], palette[1]);
    for (std::uint8_t& index : picture.indexes)
        index ^= 1;
}

// Of pixels that are clear or opaque. Clear ones have a colour that is black, as the mask wants it.
IndexedPicture reduceColors(PixelView pixels, unsigned depth) {
    const std::size_t mostColors = std::size_t{1} << depth;
    // Clear pixels are all 0, which is black when alpha is not looked at, and black is one entry for both.
    StraightRows asOpaque(pixels, false, 0);
    auto exact = exactPicture(asOpaque, mostColors);
    if (exact) {
        if (depth == 1) arrangeTwoColors(*exact);
        return std::move(*exact);
    }
    if (depth == 1) return blackAndWhite(pixels);
    StraightRows rows(pixels, true, leastShown);
    return adaptivePicture(rows, mostColors);
}

// What the pixels look like with that palette.
void applyColors(PixelView pixels, const IndexedPicture& picture) {
    const std::uint8_t* index = picture.indexes.data();
    for (std::size_t y = 0; y < pixels.height; ++y) {
        std::uint8_t* pixel = pixels.rowFromTop(y);
        for (std::size_t x = 0; x < pixels.width; ++x, pixel += 4, ++index) {
            if (pixel[3] == 0) continue;
            for (std::size_t channel = 0; channel < 3; ++channel)
                pixel[channel] = picture.palette[*index][2 - channel];
        }
    }
}

// --- bitmaps

std::size_t rowBytes(std::size_t width, unsigned depth) noexcept {
    return static_cast<std::size_t>(paddedRowBytes(width, depth));
}

// Samples of up to 8 bits into a row, the first in the uppermost bits.
void packRow(std::uint8_t* out, const std::uint8_t* indexes, std::size_t width, unsigned depth) {
    const std::size_t perByte = 8 / depth;
    for (std::size_t x = 0; x < width; ++x)
        out[x / perByte] |= static_cast<std::uint8_t>(indexes[x] << (8 - depth * (x % perByte + 1)));
}

void appendMask(Bytes& image, ConstPixelView pixels) {
    const std::size_t length = rowBytes(pixels.width, 1);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        const std::size_t at = image.size();
        image.resize(at + length);
        icoMask(&image[at], pixels.row(y), pixels.width);
    }
}

void appendHeader(Bytes& image, ConstPixelView pixels, unsigned depth) {
    const std::size_t rows = rowBytes(pixels.width, depth) + rowBytes(pixels.width, 1);
    ByteWriter out(image);
    out.littleEndian32(40);
    out.littleEndian32(pixels.width);
    out.littleEndian32(2 * pixels.height); // the mask's rows are counted too
    out.littleEndian16(1);                 // planes
    out.littleEndian16(depth);
    out.littleEndian32(0); // not compressed
    out.littleEndian32(rows * pixels.height);
    out.zeros(16); // no density; all of the palette
}

void appendIndexed(Bytes& image, ConstPixelView pixels, const IndexedPicture& picture, unsigned depth) {
    const std::size_t behindPalette = image.size() + (std::size_t{4} << depth);
    for (const IndexedPicture::Color& color : picture.palette)
        image.insert(image.end(), {color[2], color[1], color[0], 0});
    image.resize(behindPalette); // entries that are not used are black
    const std::size_t length = rowBytes(pixels.width, depth);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        const std::size_t at = image.size();
        image.resize(at + length);
        packRow(&image[at], &picture.indexes[(pixels.height - 1 - y) * pixels.width], pixels.width, depth);
    }
}

void appendColors(Bytes& image, ConstPixelView pixels) {
    const std::size_t length = rowBytes(pixels.width, 24);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        const std::size_t at = image.size();
        image.resize(at + length);
        kernels::table().pack24(&image[at], pixels.row(y), pixels.width, false);
    }
}

// Straight colours and alpha. False when readers that judge by the values would take them for premultiplied.
bool appendPixels(Bytes& image, ConstPixelView pixels) {
    const std::size_t at = image.size(), length = pixels.width * 4;
    image.resize(at + length * pixels.height);
    const PixelView straight{&image[at], pixels.width, pixels.height, length};
    for (std::size_t y = 0; y < pixels.height; ++y)
        kernels::table().straighten(straight.row(y), pixels.row(y), pixels.width);
    return proveStraight(straight);
}

} // namespace

std::optional<unsigned> icoDepth(std::int32_t bitDepth) noexcept {
    switch (bitDepth) {
    case HIGH_COLOR: // 16 bits, which few readers of icons know, lose nothing in 24
    case TRUE_COLOR:
        return 24;
    case TRUE_COLOR_ALPHA:
    case 0:
        return 32;
    default:
        for (const unsigned depth : {1U, 4U, 8U, 24U, 32U})
            if (bitDepth >= 1 && bitDepth <= static_cast<std::int32_t>(depth)) return depth;
        return {};
    }
}

void icoMask(std::uint8_t* out, const std::uint8_t* pixels, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x)
        if (pixels[x * 4 + 3] < leastShown) out[x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
}

IcoImageBytes icoImage(PixelView pixels, unsigned depth) {
    const bool isPng = pixels.width >= leastPng || pixels.height >= leastPng;
    std::optional<IndexedPicture> picture;
    if (depth < 32) decideAlpha(pixels);
    if (depth <= 8) picture = reduceColors(pixels, depth);
    if (isPng) {
        if (picture) applyColors(pixels, *picture);
        return {cPNGwriter::TrueColorAlpha(pixels), 32};
    }
    IcoImageBytes image{{}, depth};
    appendHeader(image.bytes, pixels, depth);
    if (picture) {
        appendIndexed(image.bytes, pixels, *picture, depth);
    } else if (depth < 32) {
        appendColors(image.bytes, pixels);
    } else if (!appendPixels(image.bytes, pixels)) {
        return {cPNGwriter::TrueColorAlpha(pixels), 32};
    }
    appendMask(image.bytes, pixels);
    return image;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
