#include "render/PixelWorkers.h"
#include "kernels/kernels.h"
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace pixkit {

LightnessTable::LightnessTable(float Lightness) noexcept {
    // The factor is held in single precision, what leads to it and what it enters is not: the same tones on every
    // system.
    const auto factor = static_cast<float>(static_cast<double>(Lightness) / 100.0 * 255.0);
    for (std::size_t alpha = 0; alpha < m_adjust.size(); ++alpha) {
        const long scaled = std::lrint(static_cast<double>(alpha) * static_cast<double>(factor));
        m_adjust[alpha] = static_cast<std::int16_t>(scaled / 255);
    }
    m_lightens = factor > 0.0F;
}

void LightnessTable::apply(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
    kernels::table().adjustLightness(dst, src, count, m_adjust.data(), m_lightens);
}

void spt_LightenDarken(float Lightness, PixelView rtnArray, std::size_t SrcX, std::size_t SrcY, ConstPixelView cImage) {
    const LightnessTable lightness(Lightness);
    const std::size_t bottomRow = cImage.height - SrcY - rtnArray.height;
    for (std::size_t y = 0; y < rtnArray.height; ++y)
        lightness.apply(rtnArray.row(y), cImage.row(bottomRow + y) + SrcX * 4, rtnArray.width);
}

bool spt_MirrorDIB(MirrorRequest& request, PixelView mirrorBytes, ConstPixelView cImage) {
    if (request.newWidth >= 1 && request.newHeight > 0) return false;
    const bool reverseColumns = request.newWidth < 1;
    const bool reverseRows = request.newHeight < 0;
    const auto width = static_cast<std::size_t>(request.srcWidth);
    const auto height = static_cast<std::size_t>(request.srcHeight);
    const auto left = static_cast<std::size_t>(request.SrcX) * 4;
    const auto top = static_cast<std::size_t>(request.SrcY);
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* source = cImage.rowFromTop(top + y) + left;
        std::uint8_t* target = mirrorBytes.rowFromTop(reverseRows ? height - 1 - y : y);
        if (reverseColumns) {
            kernels::table().mirror(target, source, width);
        } else {
            std::memcpy(target, source, width * 4);
        }
    }
    request = {0, 0, request.srcWidth, request.srcHeight, std::abs(request.newWidth), std::abs(request.newHeight)};
    return true;
}

} // namespace pixkit
