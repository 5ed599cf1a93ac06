// Single pixels, alpha masks and blocks of pixels in a caller's layout.
#include "kernels/kernels.h"
#include "shared/AlphaChannel.h"
#include "shared/Colors.h"
#include "shared/checked.h"
#include "surface/attempt.h"
#include <array>
#include <cstring>
#include <vector>

namespace pixkit {

namespace {

// A rectangle of an image, y counted from the top: sizes of 0 mean the whole image's; what reaches past the right or
// bottom edge is cut. Null when nothing is left.
template <class Byte>
BasicPixelView<Byte> cutPart(BasicPixelView<Byte> image, std::int32_t x, std::int32_t y, std::int32_t Width,
                             std::int32_t Height) {
    if (!image || x < 0 || y < 0) return {};
    const Rect all = image.rect();
    const Rect part =
        Rect::ofSize(Width == 0 ? all.width() : Width, Height == 0 ? all.height() : Height).moved(x, y).cut(all);
    return part.isEmpty() ? BasicPixelView<Byte>{} : image.part(part);
}

void redimRows(ByteArray& array, std::size_t rowLength, std::size_t rows, bool as2dArray) {
    if (as2dArray) {
        array.redim(rowLength, rows);
    } else {
        array.redim(rowLength * rows);
    }
}

// How a caller lays out rows of pixels.
struct BlockLayout {
    bool isBGR, is32bpp, isWordAligned, isBottomUp;

    std::size_t rowLength(std::size_t width) const {
        if (is32bpp) return width * 4;
        const auto signedWidth = static_cast<std::int32_t>(width);
        return isWordAligned ? static_cast<std::size_t>(iparseByteAlignOnWord(24, signedWidth)) : width * 3;
    }
    std::size_t pixelBytes() const { return is32bpp ? 4 : 3; }
    // Index in the caller's rows of the rectangle's row `fromTop`.
    std::size_t rowIndex(std::size_t fromTop, std::size_t rows) const {
        return isBottomUp ? rows - 1 - fromTop : fromTop;
    }
};

// Whether an array holds `rows` rows of `used` bytes, `rowLength` apart in one dimension. The padding behind the last
// pixel is never read, so it need not be there.
bool holdsRows(const ByteArray& array, std::size_t rowLength, std::size_t used, std::size_t rows) {
    if (array.dimensions() == 2) return array.bound(1).count >= used && array.bound(2).count >= rows;
    return array.size() >= (rows - 1) * rowLength + used;
}

void copyPixelsOut(std::uint8_t* out, const std::uint8_t* pixels, std::size_t count, const BlockLayout& layout) {
    const auto& kernel = kernels::table();
    if (!layout.is32bpp) {
        kernel.pack24(out, pixels, count, !layout.isBGR);
    } else if (!layout.isBGR) {
        kernel.swapRedBlue(out, pixels, count);
    } else {
        std::memcpy(out, pixels, count * 4);
    }
}

void copyPixelsIn(std::uint8_t* pixels, const std::uint8_t* in, std::size_t count, const BlockLayout& layout) {
    const auto& kernel = kernels::table();
    if (!layout.is32bpp) {
        kernel.unpack24(pixels, in, count, !layout.isBGR);
    } else if (!layout.isBGR) {
        kernel.swapRedBlue(pixels, in, count);
    } else {
        std::memcpy(pixels, in, count * 4);
    }
}

constexpr Reason outside = "the pixel lies outside of the image";
constexpr Reason noSuchAlpha = "an alpha value is from 0 to 255";
constexpr Reason nothingLeft = "nothing of the rectangle lies within the image";

} // namespace

std::int32_t cPixSheet::GetPixel(std::int32_t x, std::int32_t y, std::int32_t* AlphaValue,
                                 bool asPreMultiplied) const noexcept {
    if (AlphaValue != nullptr) *AlphaValue = 0;
    if (x < 0 || x >= state().m_Width || y < 0 || y >= state().m_Height) {
        state().m_outcome.refuse(state().m_Handle == 0 ? noImage : outside);
        return -1;
    }
    state().m_outcome.succeed();
    std::array<std::uint8_t, 4> pixel;
    const auto* const stored =
        HostAccess::pixelsForOne(*this).rowFromTop(static_cast<std::size_t>(y)) + std::ptrdiff_t{x} * 4;
    std::memcpy(pixel.data(), stored, 4);
    if (AlphaValue != nullptr) *AlphaValue = pixel[3];
    // A channel above its alpha, which no valid image has, keeps the low 8 bits: it must not spill into the next one.
    if (!asPreMultiplied) kernels::table().unpremultiply(pixel.data(), pixel.data(), 1);
    return pixel[2] | pixel[1] << 8 | pixel[0] << 16;
}

std::uint8_t* cPixSheet::SetPixel(std::int32_t x, std::int32_t y, std::int32_t Color, std::int32_t AlphaValue,
                                  bool isPreMultiplied) noexcept {
    if (AlphaValue < 0 || AlphaValue > 255 || x < 0 || x >= state().m_Width || y < 0 || y >= state().m_Height) {
        const bool isInside = x >= 0 && x < state().m_Width && y >= 0 && y < state().m_Height;
        state().m_outcome.refuse(state().m_Handle == 0 ? noImage : isInside ? noSuchAlpha : outside);
        return nullptr;
    }
    state().m_outcome.succeed();
    auto* const stored =
        HostAccess::pixelsForOne(*this).rowFromTop(static_cast<std::size_t>(y)) + std::ptrdiff_t{x} * 4;
    const ColorChannels channels = iparseColorChannels(Color);
    // A channel of a premultiplied colour that exceeds alpha is scaled by alpha, not held at it: callers rely on
    // getting a darker tone of the same colour.
    const auto store = [&](std::uint8_t channel) {
        const bool scaled = (!isPreMultiplied && AlphaValue != 255) || channel > AlphaValue;
        return static_cast<std::uint8_t>(scaled ? channel * AlphaValue / 255 : channel);
    };
    const std::array<std::uint8_t, 4> pixel = {store(channels.b), store(channels.g), store(channels.r),
                                               static_cast<std::uint8_t>(AlphaValue)};
    std::memcpy(stored, pixel.data(), 4);
    if (AlphaValue != 255)
        state().m_AlphaImage = AlphaComplex; // never AlphaSimple, whatever the value: nothing is scanned here
    return stored;
}

bool cPixSheet::GetAlphaMask(ByteArray& outStream, bool as2dArray, bool asWordAligned, bool asBottomUp, std::int32_t x,
                             std::int32_t y, std::int32_t Width, std::int32_t Height) const noexcept {
    const Call call(*this, "GetAlphaMask", "outStream, as2dArray, asWordAligned, asBottomUp, x, y, Width, Height",
                    outStream, as2dArray, asWordAligned, asBottomUp, x, y, Width, Height);
    return attempt(call, [&] {
        const ConstPixelView part = cutPart(HostAccess::pixels(*this), x, y, Width, Height);
        if (!part) return refused(state().m_Handle == 0 ? noImage : nothingLeft);
        const std::size_t width = part.width;
        const std::size_t height = part.height;
        const auto rowLength =
            asWordAligned ? static_cast<std::size_t>(iparseByteAlignOnWord(8, static_cast<std::int32_t>(width)))
                          : width;
        redimRows(outStream, rowLength, height, as2dArray);
        for (std::size_t row = 0; row < height; ++row) {
            const std::size_t outRow = asBottomUp ? height - 1 - row : row;
            kernels::table().extractAlpha(outStream.data() + outRow * rowLength, part.rowFromTop(row), width);
        }
        return done();
    });
}

std::int32_t cPixSheet::PixelAlpha(std::int32_t x, std::int32_t y) const noexcept {
    std::int32_t alpha = 0;
    return GetPixel(x, y, &alpha) == -1 ? -1 : alpha;
}

ByteArray cPixSheet::AlphaMask(bool as2dArray, bool asWordAligned, bool asBottomUp, std::int32_t x, std::int32_t y,
                               std::int32_t Width, std::int32_t Height) const noexcept {
    ByteArray mask;
    GetAlphaMask(mask, as2dArray, asWordAligned, asBottomUp, x, y, Width, Height);
    return mask;
}

bool cPixSheet::GetDIBbits(ByteArray& outStream, bool as2dArray, bool asBGRformat, bool as32bpp, bool asWordAligned,
                           bool asBottomUp, std::int32_t x, std::int32_t y, std::int32_t Width, std::int32_t Height,
                           bool asPreMultiplied) const noexcept {
    const Call call(
        *this, "GetDIBbits",
        "outStream, as2dArray, asBGRformat, as32bpp, asWordAligned, asBottomUp, x, y, Width, Height, asPreMultiplied",
        outStream, as2dArray, asBGRformat, as32bpp, asWordAligned, asBottomUp, x, y, Width, Height, asPreMultiplied);
    return attempt(call, [&] {
        const ConstPixelView part = cutPart(HostAccess::pixels(*this), x, y, Width, Height);
        if (!part) return refused(state().m_Handle == 0 ? noImage : nothingLeft);
        const std::size_t width = part.width;
        const std::size_t height = part.height;
        const BlockLayout layout{asBGRformat, as32bpp, asWordAligned, asBottomUp};
        const std::size_t rowLength = layout.rowLength(width);
        std::vector<std::uint8_t> straight(asPreMultiplied ? 0 : width * 4);
        redimRows(outStream, rowLength, height, as2dArray);
        for (std::size_t row = 0; row < height; ++row) {
            const std::uint8_t* pixels = part.rowFromTop(row);
            if (!asPreMultiplied) {
                kernels::table().unpremultiply(straight.data(), pixels, width);
                pixels = straight.data();
            }
            copyPixelsOut(outStream.data() + layout.rowIndex(row, height) * rowLength, pixels, width, layout);
        }
        return done();
    });
}

ByteArray cPixSheet::DIBbits(bool as2dArray, bool asBGRformat, bool as32bpp, bool asWordAligned, bool asBottomUp,
                             std::int32_t x, std::int32_t y, std::int32_t Width, std::int32_t Height,
                             bool asPreMultiplied) const noexcept {
    ByteArray bits;
    GetDIBbits(bits, as2dArray, asBGRformat, as32bpp, asWordAligned, asBottomUp, x, y, Width, Height, asPreMultiplied);
    return bits;
}

bool cPixSheet::SetDIBbits(const ByteArray& inStream, bool isBGRformat, bool is32bpp, bool isWordAligned,
                           bool isBottomUp, std::int32_t dstX, std::int32_t dstY, std::int32_t dstWidth,
                           std::int32_t dstHeight) noexcept {
    const Call call(*this, "SetDIBbits",
                    "inStream, isBGRformat, is32bpp, isWordAligned, isBottomUp, dstX, dstY, dstWidth, dstHeight",
                    inStream, isBGRformat, is32bpp, isWordAligned, isBottomUp, dstX, dstY, dstWidth, dstHeight);
    return attempt(call, [&] {
        const PixelView image = HostAccess::pixels(*this);
        const PixelView part = cutPart(image, dstX, dstY, dstWidth, dstHeight);
        if (!part) return refused(state().m_Handle == 0 ? noImage : nothingLeft);
        const std::size_t width = part.width;
        const std::size_t height = part.height;
        const BlockLayout layout{isBGRformat, is32bpp, isWordAligned, isBottomUp};
        // Two dimensions say themselves where each row begins.
        const std::size_t rowLength = inStream.dimensions() == 2 ? inStream.bound(1).count : layout.rowLength(width);
        if (!holdsRows(inStream, rowLength, width * layout.pixelBytes(), height))
            return refused("the array is too short for the rectangle");
        if (state().pvOverlapsStore(inStream)) {
            SetDIBbits(ByteArray(inStream), isBGRformat, is32bpp, isWordAligned, isBottomUp, dstX, dstY, dstWidth,
                       dstHeight);
            return state().m_outcome;
        }
        for (std::size_t row = 0; row < height; ++row) {
            copyPixelsIn(part.rowFromTop(row), inStream.data() + layout.rowIndex(row, height) * rowLength, width,
                         layout);
        }
        state().m_AlphaImage = iparseValidateAlphaChannel(image, true, imgNone).bIsAlpha;
        return done();
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
