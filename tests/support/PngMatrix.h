// Pictures of every kind that the PNG standard has, at every width from 1 to 70.
#pragma once
#include "support/PngBuilder.h"
#include <string>

namespace pixkit::test {

struct MatrixPicture {
    std::string name;
    PngImage image;
    bool isKeyed; // has a tRNS
    Bytes data;
};

// Calls `visit` with each picture of a colour type and depth: interlaced and not, with tRNS and without, all filters. A
// transparent 16-bit colour differs from the others in its high bytes too, where readers agree about it.
template <class Visit>
void forEachMatrixPicture(std::uint8_t colorType, std::uint8_t bitDepth, Visit&& visit) {
    for (std::uint32_t width = 1; width <= 70; ++width) {
        for (const bool isInterlaced : {false, true}) {
            for (const bool isKeyed : {false, true}) {
                if (isKeyed && (colorType & 4) != 0) continue;
                const std::uint32_t height = width % 11 + 1;
                PngImage image{width, height, bitDepth, colorType, 0, 0, isInterlaced};
                image.filters = {4, 1, 3, 2, 0};
                image.filters.resize(width % 5 + 1); // the first filters fall to other rows; one alone is Paeth
                const Samples samples = noise(width * 16U + bitDepth);
                // Few values at 16 bits, so that the transparent one is met, and alike in both bytes.
                const Samples fewValues = [&](std::size_t x, std::size_t y, std::size_t c) {
                    return (samples(x, y, c) & 7) * 0x1111U;
                };
                const Samples& chosen = isKeyed && bitDepth >= 8 && colorType != 3 ? fewValues : samples;
                PngBuilder before;
                if (colorType == 3) {
                    // A palette of every second picture is too short by one entry.
                    Bytes entries;
                    for (std::size_t i = 0; i < ((std::size_t{1} << bitDepth) - width % 2) * 3; ++i) {
                        entries.push_back(static_cast<std::uint8_t>(noise(99)(i, 0, 0)));
                    }
                    before.chunk("PLTE", entries);
                    Bytes alphas;
                    for (std::size_t i = 0; i < (std::size_t{1} << bitDepth) - 1; ++i) {
                        alphas.push_back(static_cast<std::uint8_t>(i % 3 == 0 ? 255 : noise(7)(i, width, 0)));
                    }
                    if (isKeyed) before.chunk("tRNS", alphas);
                } else if (isKeyed) {
                    Bytes key;
                    for (std::size_t c = 0; c < image.channels(); ++c) {
                        const unsigned sample = chosen(width / 2, height / 2, c);
                        const unsigned depthMask = (1U << bitDepth) - 1;
                        key.push_back(static_cast<std::uint8_t>((sample & depthMask) >> 8));
                        key.push_back(static_cast<std::uint8_t>(sample & depthMask));
                    }
                    before.chunk("tRNS", key);
                }
                visit(MatrixPicture{"width " + std::to_string(width) + (isInterlaced ? ", interlaced" : "") +
                                        (isKeyed ? ", tRNS" : ""),
                                    image, isKeyed, png(image, chosen, before)});
            }
        }
    }
}

struct PngFormat {
    std::uint8_t colorType, bitDepth;
};
inline constexpr PngFormat pngFormats[] = {{0, 1}, {0, 2}, {0, 4}, {0, 8}, {0, 16}, {2, 8}, {2, 16}, {3, 1},
                                           {3, 2}, {3, 4}, {3, 8}, {4, 8}, {4, 16}, {6, 8}, {6, 16}};

} // namespace pixkit::test
