#include "codecs/ico/IcoMask.h"
#include "kernels/kernels.h"
#include "shared/AlphaChannel.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cstring>

namespace pixkit {

namespace {

void hideUnderMask(PixelView pixels, const std::uint8_t* mask) {
    for (std::size_t y = 0; y < pixels.height; ++y) {
        std::uint8_t* pixel = pixels.row(y);
        for (std::size_t x = 0; x < pixels.width; ++x, pixel += 4)
            if (*mask++ != 0) std::memset(pixel, 0, 4);
    }
}

// Whether any pixel was black, and is transparent now.
bool showInverted(PixelView pixels) {
    bool isAnyHidden = false;
    for (std::size_t y = 0; y < pixels.height; ++y) {
        std::uint8_t* pixel = pixels.row(y);
        for (std::size_t x = 0; x < pixels.width; ++x, pixel += 4) {
            const bool isHidden = (pixel[0] | pixel[1] | pixel[2]) == 0;
            isAnyHidden |= isHidden;
            for (std::size_t channel = 0; channel < 4; ++channel)
                pixel[channel] = static_cast<std::uint8_t>(isHidden ? 0 : channel == 3 ? 255 : 255 - pixel[channel]);
        }
    }
    return isAnyHidden;
}

bool hasAnyAlpha(ConstPixelView pixels) {
    for (std::size_t y = 0; y < pixels.height; ++y) {
        const std::uint8_t* const row = pixels.row(y);
        for (std::size_t x = 0; x < pixels.width; ++x)
            if (row[x * 4 + 3] != 0) return true;
    }
    return false;
}

} // namespace

AlphaTypeEnum applyIcoMask(PixelView pixels, std::span<const std::uint8_t> mask) {
    const auto isClear = [](std::uint8_t bit) { return bit == 0; };
    if (std::ranges::all_of(mask, isClear)) return AlphaNone;
    if (std::ranges::none_of(mask, isClear)) return showInverted(pixels) ? AlphaSimple : AlphaNone;
    hideUnderMask(pixels, mask.data());
    return AlphaSimple;
}

bool completeIconByAlpha(cPixSheet& host, bool isCursor) {
    const PixelView pixels = HostAccess::pixels(host);
    if (!hasAnyAlpha(pixels)) return false;
    host.Alpha(iparseValidateAlphaChannel(pixels, true, imgNone).bIsAlpha);
    HostAccess::ImageType(host, isCursor ? imgCursorARGB : imgIconARGB);
    return true;
}

void completeIconByMask(cPixSheet& host, std::span<const std::uint8_t> mask, bool isCursor) {
    const PixelView pixels = HostAccess::pixels(host);
    for (std::size_t y = 0; y < pixels.height; ++y)
        kernels::table().setOpaque(pixels.row(y), pixels.width);
    host.Alpha(applyIcoMask(pixels, mask));
    HostAccess::ImageType(host, isCursor ? imgCursor : imgIcon);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
