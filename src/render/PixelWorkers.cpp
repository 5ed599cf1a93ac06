#include "render/PixelWorkers.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace pixkit {

namespace {

// Looks for a line through the adjustments whose fractions, cut off, give them all. There hardly ever is none.
void findLine(kernels::Tone& tone, double slope) {
    constexpr double unit = 0x1p24;
    const auto scale = static_cast<std::int64_t>(std::abs(slope) * unit);
    std::int64_t least = 0;
    std::int64_t most = std::numeric_limits<std::int64_t>::max();
    for (std::int64_t alpha = 0; alpha < 256; ++alpha) {
        const std::int64_t here = (std::int64_t{std::abs(tone.adjust[alpha])} << 24) - alpha * scale;
        least = std::max(least, here);
        most = std::min(most, here + (1 << 24) - 1);
    }
    tone.isLinear = least <= most;
    tone.scale = static_cast<std::uint32_t>(scale);
    tone.bias = static_cast<std::uint32_t>(least);
}

} // namespace

kernels::Tone spt_LightnessTone(float Lightness) noexcept {
    // The factor is held in single precision, what leads to it and what it enters is not: the same tones on every
    // system.
    const auto factor = static_cast<float>(static_cast<double>(Lightness) / 100.0 * 255.0);
    kernels::Tone tone;
    tone.isLight = true;
    tone.lightens = factor > 0.0F;
    for (std::size_t alpha = 0; alpha < 256; ++alpha) {
        const long scaled = std::lrint(static_cast<double>(alpha) * static_cast<double>(factor));
        tone.adjust[alpha] = static_cast<std::int16_t>(scaled / 255);
    }
    findLine(tone, static_cast<double>(factor) / 255.0);
    return tone;
}

void spt_LightenDarken(float Lightness, PixelView rtnArray, std::size_t SrcX, std::size_t SrcY, ConstPixelView cImage) {
    const kernels::Tone tone = spt_LightnessTone(Lightness);
    const std::size_t bottomRow = cImage.height - SrcY - rtnArray.height;
    for (std::size_t y = 0; y < rtnArray.height; ++y)
        kernels::table().adjustLightness(rtnArray.row(y), cImage.row(bottomRow + y) + SrcX * 4, rtnArray.width,
                                         tone.adjust, tone.lightens);
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
