#include "render/PixelWorkers.h"
#include "kernels/kernels.h"
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace pixkit {

void spt_LightenDarken(float Lightness, PixelView rtnArray, std::size_t SrcX, std::size_t SrcY, ConstPixelView cImage) {
    // The factor is held in single precision, what leads to it and what it enters is not: the same tones on every
    // system.
    const auto factor = static_cast<float>(static_cast<double>(Lightness) / 100.0 * 255.0);
    std::array<std::int16_t, 256> adjust;
    for (std::size_t alpha = 0; alpha < adjust.size(); ++alpha) {
        const long scaled = std::lrint(static_cast<double>(alpha) * static_cast<double>(factor));
        adjust[alpha] = static_cast<std::int16_t>(scaled / 255);
    }
    const std::size_t bottomRow = cImage.height - SrcY - rtnArray.height;
    for (std::size_t y = 0; y < rtnArray.height; ++y) {
        kernels::table().adjustLightness(rtnArray.row(y), cImage.row(bottomRow + y) + SrcX * 4, rtnArray.width,
                                         adjust.data(), factor > 0.0F);
    }
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
