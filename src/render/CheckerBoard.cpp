// The backdrop that makes transparency visible.
#include "shared/Colors.h"
#include "surface/attempt.h"
#include <array>
#include <cstring>

namespace pixkit {

namespace {

using OpaquePixel = std::array<std::uint8_t, 4>;

OpaquePixel opaquePixel(std::int32_t Color) {
    const ColorChannels channels = iparseColorChannels(Color);
    return {channels.b, channels.g, channels.r, 255};
}

void paintSquares(std::uint8_t* row, std::size_t width, std::size_t size, const OpaquePixel& first,
                  const OpaquePixel& second) {
    for (std::size_t x = 0; x < width; ++x)
        std::memcpy(row + x * 4, (x / size % 2 == 0 ? first : second).data(), 4);
}

} // namespace

// Filled here and not with the system's brushes: they give the same colours but leave alpha 0, so that the image would
// have to be gone over again, and would need a device context.
bool cPixSheet::CreateCheckerBoard(std::int32_t CheckerSize, std::int32_t FirstColor,
                                   std::int32_t SecondColor) noexcept {
    const Call call(*this, "CreateCheckerBoard", "CheckerSize, FirstColor, SecondColor", CheckerSize, FirstColor,
                    SecondColor);
    return attempt(call, [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if (CheckerSize < 1) return refused("squares have at least 1 pixel a side");
        const auto size = static_cast<std::size_t>(CheckerSize);
        const OpaquePixel first = opaquePixel(FirstColor);
        const OpaquePixel second = opaquePixel(SecondColor);
        for (std::size_t y = 0; y < image.height; ++y) {
            std::uint8_t* const row = image.rowFromTop(y);
            const bool startsWithFirst = y / size % 2 == 0;
            if (y == 0 || y == size) {
                paintSquares(row, image.width, size, startsWithFirst ? first : second,
                             startsWithFirst ? second : first);
            } else {
                std::memcpy(row, image.rowFromTop(startsWithFirst ? 0 : size), image.stride);
            }
        }
        state().m_AlphaImage = AlphaNone;
        state().m_Format = imgCheckerBoard;
        return done();
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
