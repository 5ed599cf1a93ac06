// Pixels: raw rows and run-length packets to B, G, R, A in the rows of the store.
#include "codecs/tga/TgaRunLength.h"
#include "codecs/tga/cTGAparser.h"
#include "kernels/kernels.h"
#include "shared/AlphaChannel.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cstring>

namespace pixkit {

const cTGAparser::Lookup cTGAparser::grayLookup = [] {
    Lookup pixels{};
    for (std::size_t gray = 0; gray < 256; ++gray) {
        std::fill_n(&pixels[gray * 4], 3, static_cast<std::uint8_t>(gray));
        pixels[gray * 4 + 3] = 255;
    }
    return pixels;
}();

namespace {

// Pixels of a right-to-left file begin at the last pixel's place less one byte, and the store is one row after the
// other: each byte lies one lower than it would, which mixes up the channels. Programs that set this bit have been
// shown so ever since, so it stays. The store's first byte would be the one before it and is dropped; its last stays 0.
// The bytes that come to be alpha decide what Alpha becomes.
AlphaTypeEnum turnRightToLeft(PixelView image, bool hasAlpha) noexcept {
    constexpr std::uint32_t all = 0xFFFFFFFF, withoutAlpha = 0xFFFFFF;
    const std::uint32_t kept = hasAlpha ? all : withoutAlpha; // what the file does not supply is 0, in somebody's red
    const auto turned = [kept](const std::uint8_t* from) {
        std::uint32_t pixel;
        std::memcpy(&pixel, from, 4);
        return pixel & kept;
    };
    AlphaOfRows rows(image, false);
    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t* const first = image.row(y);
        std::uint8_t *left = first, *right = first + (image.width - 1) * 4;
        for (; left <= right; left += 4, right -= 4) {
            const std::uint32_t pixel = turned(left), other = turned(right);
            std::memcpy(left, &other, 4);
            std::memcpy(right, &pixel, 4);
        }
        const bool isLowest = y == 0;
        std::memmove(isLowest ? first : first - 1, isLowest ? first + 1 : first, image.stride - isLowest);
        if (!isLowest) rows.isWritten(); // the row below, whose last byte this one had
    }
    image.row(image.height)[-1] = 0;
    rows.isWritten();
    return rows.finish().bIsAlpha;
}

} // namespace

void TgaLayout::convert(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
    switch (bytes) {
    case 1:
        kernels::table().fromIndex8(dst, src, count, lookup);
        break;
    case 2:
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint32_t pixel = tgaPixel<2>(src + i * 2, *this);
            std::memcpy(dst + i * 4, &pixel, 4);
        }
        break;
    case 3:
        kernels::table().unpack24(dst, src, count, false);
        break;
    default:
        std::memcpy(dst, src, count * 4);
    }
}

ReadResult cTGAparser::buildSurface(cPixSheet& cHost, const TgaLayout& layout) const {
    const std::size_t pixels = std::size_t{m_header.width} * m_header.height;
    if (m_header.isRunLength() && !TgaRunLength::canHold(pixels, m_pixelData.size(), layout.bytes))
        return ReadResult::damaged("TGA: too little data for the run-length packets");
    if (const Reason limit = HostAccess::limits(cHost).problem(m_header.width, m_header.height))
        return ReadResult::forbidden(limit);
    if (!cHost.InitializeDIB(m_header.width, m_header.height)) return ReadResult::damaged(noMemoryForPixels);
    const PixelView image = HostAccess::pixels(cHost);
    const bool isTurned = m_header.isRightToLeft();
    AlphaOfRows rows(image, m_header.isTopDown());
    // Without alpha all pixels are opaque already, which is what the classification would come to.
    const bool isClassified = layout.hasAlpha && !isTurned;
    if (!placeRows(image, layout, isClassified ? &rows : nullptr))
        return ReadResult::damaged("TGA: the run-length packets end early");
    AlphaTypeEnum alpha = AlphaNone;
    if (isTurned) {
        alpha = turnRightToLeft(image, layout.hasAlpha);
    } else if (isClassified) {
        alpha = rows.finish().bIsAlpha;
    }
    cHost.Alpha(alpha);
    HostAccess::ImageType(cHost, imgTGA);
    return ReadResult::loaded();
}

// False when run-length packets end before the image is full.
bool cTGAparser::placeRows(PixelView image, const TgaLayout& layout, AlphaOfRows* alpha) const {
    TgaRunLength packets(m_pixelData, layout);
    const std::uint8_t* raw = m_pixelData.data();
    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t* const dst = m_header.isTopDown() ? image.rowFromTop(y) : image.row(y);
        if (m_header.isRunLength()) {
            if (!packets.nextRow(dst, image.width)) return false;
        } else {
            const std::uint8_t* const src = raw;
            raw += image.width * layout.bytes;
            if (layout.bytes == 4 && alpha != nullptr) {
                alpha->copy(src);
                continue;
            }
            layout.convert(dst, src, image.width);
        }
        if (alpha != nullptr) alpha->isWritten();
    }
    return true;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
