#include "render/PixelWorkers.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace pixkit {

kernels::Tone spt_LightnessTone(float Lightness) noexcept {
    // The factor is held in single precision, what leads to it and what it enters is not: the same tones on every
    // system.
    const auto factor = static_cast<float>(static_cast<double>(Lightness) / 100.0 * 255.0);
    const double magnitude = std::abs(static_cast<double>(factor));
    kernels::Tone tone;
    tone.isLight = true;
    tone.lightens = factor > 0.0F;
    tone.scale = static_cast<std::uint32_t>(magnitude / 255.0 * 0x1p24);
    // A line that gives every entry has a bias within what each leaves, because the rounding of the product lifts some
    // entries above it. For nearly every lightness there is one. The loop is plain enough for vectors: drawing a small
    // picture takes less time than working out a table one by one.
    std::int32_t least = 0;
    std::int32_t most = std::numeric_limits<std::int32_t>::max();
    for (std::int32_t alpha = 0; alpha < 256; ++alpha) {
        constexpr double wholesOnly = 0x1.8p52; // has no place for a fraction: rounds to nearest, ties to even
        const double product = (static_cast<double>(alpha) * magnitude + wholesOnly) - wholesOnly;
        const std::int32_t entry = static_cast<std::int32_t>(product) / 255;
        tone.adjust[alpha] = static_cast<std::int16_t>(tone.lightens ? entry : -entry);
        const auto rest = static_cast<std::int32_t>((static_cast<std::uint32_t>(entry) << 24) -
                                                    static_cast<std::uint32_t>(alpha) * tone.scale);
        least = std::max(least, rest);
        most = std::min(most, rest + ((1 << 24) - 1));
    }
    tone.isLinear = least <= most;
    tone.bias = static_cast<std::uint32_t>(least);
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

void spt_MirrorInPlace(PixelView image, bool mirrorsColumns, bool mirrorsRows) {
    const auto spare = std::make_unique_for_overwrite<std::uint8_t[]>(image.width * 4);
    const auto put = [&](std::uint8_t* row, const std::uint8_t* from) {
        if (mirrorsColumns)
            kernels::table().mirror(row, from, image.width);
        else
            std::memcpy(row, from, image.width * 4);
    };
    const std::size_t pairs = mirrorsRows ? image.height / 2 : 0;
    for (std::size_t y = 0; y < pairs; ++y) {
        put(spare.get(), image.row(y));
        put(image.row(y), image.rowFromTop(y));
        std::memcpy(image.rowFromTop(y), spare.get(), image.width * 4);
    }
    if (!mirrorsColumns) return;
    // Rows that have none to change places with.
    for (std::size_t y = pairs; y < image.height - pairs; ++y) {
        std::memcpy(spare.get(), image.row(y), image.width * 4);
        put(image.row(y), spare.get());
    }
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
// SPDX-License-Identifier: MIT
