#include "shared/AlphaChannel.h"
#include "shared/AlphaType.h"
#include <cstring>

namespace pixkit {

using kernels::AlphaScan;

namespace {

constexpr std::int32_t alphaBytesUnused = -1;

// Nothing to tell pixels apart: all alpha is 0, or all is 255.
bool isAlphaUnused(const AlphaScan& scan, std::size_t pixelCount) noexcept {
    return scan.zeroCount == pixelCount || scan.opaqueCount == pixelCount;
}

// Whether `isWanted` says yes to a pixel, none of which it sees after that.
template <class View, class IsWanted>
bool anyPixel(View pixels, IsWanted&& isWanted) noexcept {
    for (std::size_t y = 0; y < pixels.height; ++y) {
        auto* pixel = pixels.row(y);
        for (std::size_t x = 0; x < pixels.width; ++x, pixel += 4)
            if (isWanted(pixel)) return true;
    }
    return false;
}

} // namespace

void AlphaOfRows::setOpaque(std::size_t from, std::size_t to) const noexcept {
    for (; from < to; ++from)
        kernels::table().setOpaque(row(from), m_image.width);
}

void AlphaOfRows::premultiply(std::size_t from, std::size_t to) noexcept {
    for (; from < to; ++from)
        m_isPartial |= kernels::table().premultiply(row(from), m_image.width);
}

void AlphaOfRows::isWritten() noexcept {
    const std::size_t index = m_rows++;
    if (m_scan.state == AlphaScan::notPremultiplied) {
        premultiply(index, m_rows);
        return;
    }
    kernels::table().scanAlpha(row(index), m_image.width, m_scan);
    weigh(index);
}

void AlphaOfRows::copy(const std::uint8_t* pixels) noexcept {
    const std::size_t index = m_rows++;
    if (m_scan.state == AlphaScan::notPremultiplied) {
        m_isPartial |= kernels::table().copyPremultiplying(row(index), pixels, m_image.width);
        return;
    }
    kernels::table().copyScanningAlpha(row(index), pixels, m_image.width, m_scan);
    weigh(index);
}

void AlphaOfRows::weigh(std::size_t index) noexcept {
    m_untouched = m_rows;
    if (m_scan.zeroCount < m_rows * m_image.width) {
        // Alpha is used after all. What was clear had colour, so it is premultiplied to nothing.
        for (; m_opaqueFrom < m_opaqueTo; ++m_opaqueFrom)
            std::memset(row(m_opaqueFrom), 0, m_image.width * 4);
    } else if (m_scan.state == AlphaScan::colourInClear) {
        // Most such files do not use their alpha. Rows without any colour are left alone: they may be an edge.
        if (m_opaqueTo == 0) m_opaqueFrom = index;
        m_opaqueTo = m_rows;
        setOpaque(index, m_rows);
    }
}

AlphaClassification AlphaOfRows::finish() noexcept {
    const std::size_t pixelCount = m_image.width * m_image.height;
    if (m_scan.zeroCount == pixelCount) setOpaque(0, m_opaqueTo == 0 ? m_rows : m_opaqueFrom);
    if (isAlphaUnused(m_scan, pixelCount)) return {AlphaNone, imgBitmap};
    if (m_scan.state == AlphaScan::consistent) return {m_scan.partial ? AlphaComplex : AlphaSimple, imgBmpPARGB};
    premultiply(0, m_untouched);
    return {m_isPartial ? AlphaComplex : AlphaSimple, imgBmpARGB};
}

AlphaClassification iparseValidateAlphaChannel(PixelView inStream, bool bPreMultiply, std::int32_t imgType) {
    if (!bPreMultiply) return iparseValidateAlphaChannel(ConstPixelView(inStream), imgType);
    if (imgType == alphaBytesUnused) {
        for (std::size_t y = 0; y < inStream.height; ++y)
            kernels::table().setOpaque(inStream.row(y), inStream.width);
        return {};
    }
    AlphaOfRows rows(inStream, false);
    for (std::size_t y = 0; y < inStream.height; ++y)
        rows.isWritten();
    return rows.finish();
}

AlphaClassification iparseValidateAlphaChannel(ConstPixelView inStream, std::int32_t imgType) {
    if (imgType == alphaBytesUnused) return {};
    AlphaScan scan;
    for (std::size_t y = 0; y < inStream.height; ++y) {
        if (!kernels::table().scanAlpha(inStream.row(y), inStream.width, scan)) break;
    }
    if (isAlphaUnused(scan, inStream.width * inStream.height)) return {};
    return {scan.partial ? AlphaComplex : AlphaSimple, scan.state == AlphaScan::consistent ? imgBmpPARGB : imgBmpARGB};
}

AlphaTypeEnum premultiplyStraight(PixelView pixels, bool mayBeUnused) {
    if (mayBeUnused && !iparseHasAlpha(pixels)) return iparseValidateAlphaChannel(pixels, true, imgNone).bIsAlpha;
    for (std::size_t y = 0; y < pixels.height; ++y)
        kernels::table().premultiply(pixels.row(y), pixels.width);
    return alphaTypeOf(pixels);
}

bool isTakenForPremultiplied(ConstPixelView straight) noexcept {
    AlphaScan scan;
    for (std::size_t y = 0; y < straight.height; ++y)
        if (!kernels::table().scanAlpha(straight.row(y), straight.width, scan)) return false;
    if (scan.state != AlphaScan::consistent || !scan.partial) return false;
    return anyPixel(straight, [](const std::uint8_t* pixel) { // black means the same either way
        return pixel[3] != 255 && (pixel[0] | pixel[1] | pixel[2]) != 0;
    });
}

bool proveStraight(PixelView straight) noexcept {
    if (!isTakenForPremultiplied(straight)) return true;
    // Blue, which eyes see least: systems that know only the masks of icons invert a clear pixel's bits.
    return anyPixel(straight, [](std::uint8_t* pixel) {
        if (pixel[3] == 0) pixel[0] = 1;
        return pixel[3] == 0;
    });
}

bool iparseHasAlpha(ConstPixelView inStream) noexcept {
    AlphaScan scan;
    for (std::size_t y = 0; y < inStream.height; ++y) {
        const bool goesOn = kernels::table().scanAlpha(inStream.row(y), inStream.width, scan);
        if (!goesOn || !isAlphaUnused(scan, inStream.width * (y + 1))) return true;
    }
    return false;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
