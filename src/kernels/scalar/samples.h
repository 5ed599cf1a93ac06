// Reference kernels that turn PNG samples into premultiplied pixels.
#pragma once
#include "kernels/reference.h"

#include <cstring>

namespace pixkit::kernels {
namespace {

// Alpha 0 makes every product 0, alpha 255 keeps every colour.
void putPixel(std::uint8_t* dst, unsigned red, unsigned green, unsigned blue, unsigned alpha) {
    dst[0] = static_cast<std::uint8_t>(blue * alpha / 255);
    dst[1] = static_cast<std::uint8_t>(green * alpha / 255);
    dst[2] = static_cast<std::uint8_t>(red * alpha / 255);
    dst[3] = static_cast<std::uint8_t>(alpha);
}

void fromRgb8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 3)
        putPixel(dst, src[0], src[1], src[2], 255);
}

void fromRgba8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 4)
        putPixel(dst, src[0], src[1], src[2], src[3]);
}

void fromGrayAlpha8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 2)
        putPixel(dst, src[0], src[0], src[0], src[1]);
}

void fromIndex8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* lut) {
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(dst + 4 * i, lut + 4 * std::size_t{src[i]}, 4);
}

void fromGray16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 2)
        putPixel(dst, src[0], src[0], src[0], 255);
}

void fromRgb16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 6)
        putPixel(dst, src[0], src[2], src[4], 255);
}

void fromRgba16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 8)
        putPixel(dst, src[0], src[2], src[4], src[6]);
}

void fromGrayAlpha16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 4)
        putPixel(dst, src[0], src[0], src[0], src[2]);
}

void unpackSamples(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, unsigned depth) {
    const unsigned perByte = 8 / depth;
    const unsigned mask = (1U << depth) - 1;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned shift = 8 - depth * (1 + static_cast<unsigned>(i % perByte));
        dst[i] = static_cast<std::uint8_t>(src[i / perByte] >> shift & mask);
    }
}

void scatter(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::size_t dstStep) {
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(dst + i * dstStep * 4, src + i * 4, 4);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
