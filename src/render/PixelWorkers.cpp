#include "render/PixelWorkers.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace pixkit {

namespace {

// Vector kernels hold no table of 256 adjustments; they work an adjustment out as (alpha * scale + bias) >> 24. Finds
// the bias with which that gives every entry of the table, whose rounding lifted some entries above alpha * slope. For
// nearly every lightness there is one; else isLinear stays false and the kernels look entries up.
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

void spt_LightenDarken(float Lightness, PixelView rtnArray, ConstPixelView cImage) {
    const kernels::Tone tone = spt_LightnessTone(Lightness);
    for (std::size_t y = 0; y < rtnArray.height; ++y)
        kernels::table().adjustLightness(rtnArray.row(y), cImage.row(y), rtnArray.width, tone);
}

bool spt_MirrorDIB(PixelView mirrorBytes, ConstPixelView cImage, bool mirrorsColumns, bool mirrorsRows) {
    if (!mirrorsColumns && !mirrorsRows) return false;
    for (std::size_t y = 0; y < cImage.height; ++y) {
        std::uint8_t* const target = mirrorsRows ? mirrorBytes.rowFromTop(y) : mirrorBytes.row(y);
        if (mirrorsColumns) {
            kernels::table().mirror(target, cImage.row(y), cImage.width);
        } else {
            std::memcpy(target, cImage.row(y), cImage.width * 4);
        }
    }
    return true;
}

void spt_MirrorDIB(DrawJob& job, PixelBuffer& aMirrorBytes) {
    const ConstPixelView source = job.image.part(job.source);
    aMirrorBytes = PixelBuffer(source.width, source.height);
    spt_MirrorDIB(aMirrorBytes.view(), source, job.mirrorsColumns, job.mirrorsRows);
    job.image = aMirrorBytes.view();
    job.source = job.image.rect();
    job.mirrorsColumns = job.mirrorsRows = false;
}

} // namespace pixkit
