// From rows of samples to pixels: conversion to premultiplied B, G, R, A.
#include "codecs/png/cPNGparser.h"
#include "kernels/kernels.h"
#include <algorithm>

namespace pixkit {

namespace {

// Pixels converted at a time where they pass through a small buffer; a multiple of 8, so that every piece of a row of
// 1-bit samples starts at a byte.
constexpr std::size_t pieceWidth = 1024;

} // namespace

// Gray levels are looked up like palette entries; a palette that is missing is black, but for 1 bit, which is black and
// white.
void cPNGparser::InitializePalette() {
    if ((m_ColorType != 0 && m_ColorType != 3) || m_PaletteSize != 0) return;
    m_PaletteSize = m_Palette.size();
    m_Palette.fill(0);
    if (m_ColorType == 3) {
        if (m_BitDepth == 1) std::fill_n(m_Palette.begin() + 3, 3, std::uint8_t{0xFF});
    } else if (m_BitDepth <= 8) {
        const std::size_t levels = std::size_t{1} << m_BitDepth;
        const std::size_t step = 255 / (levels - 1);
        for (std::size_t i = 1; i < levels; ++i) {
            std::fill_n(m_Palette.begin() + static_cast<std::ptrdiff_t>(i) * 3, 3, static_cast<std::uint8_t>(i * step));
        }
    }
}

// Settles once what every pixel of a value becomes: the 256 possible indexes, or the one colour that is transparent.
void cPNGparser::prepareConversion() {
    const auto& kernel = kernels::table();
    const bool isKeyed = m_TransColor != -1;
    if ((m_ColorType == 0 || m_ColorType == 3) && m_BitDepth <= 8) {
        const std::size_t entries = m_PaletteSize / 3;
        for (std::size_t i = 0; i < 256; ++i) {
            std::uint8_t* pixel = &m_lookup[i * 4];
            std::fill_n(pixel, 3, std::uint8_t{0}); // an index beyond a short palette is black and opaque
            pixel[3] = 255;
            if (i >= entries) continue;
            if (m_ColorType == 0) {
                std::fill_n(pixel, 3, m_Palette[i * 3]); // a palette left over from an earlier IHDR may hold colours
            } else {
                std::reverse_copy(&m_Palette[i * 3], &m_Palette[i * 3] + 3, pixel);
            }
            if (m_ColorType == 3 && isKeyed && i < m_TransSize) pixel[3] = m_TransSimple[i];
            if (m_ColorType == 0 && static_cast<std::int32_t>(i) == m_TransColor) pixel[3] = 0;
        }
        kernel.premultiply(m_lookup.data(), 256);
    } else if (isKeyed && m_BitDepth == 16 && m_TransSize != 0) {
        // 16-bit samples are compared by their high bytes only, as they are shown by them only.
        if (m_ColorType == 0) {
            const std::uint8_t gray = m_TransSimple[0];
            m_transparentKey = {gray, gray, gray, 255};
        } else if (m_ColorType == 2 && m_TransSize > 4) {
            m_transparentKey = {m_TransSimple[4], m_TransSimple[2], m_TransSimple[0], 255};
        }
    } else if (isKeyed && m_ColorType == 2) {
        m_transparentKey = {static_cast<std::uint8_t>(m_TransColor), static_cast<std::uint8_t>(m_TransColor >> 8),
                            static_cast<std::uint8_t>(m_TransColor >> 16), 255};
    }
}

void cPNGparser::convertRow(std::uint8_t* hostRow, const std::uint8_t* raw, std::size_t count,
                            const InterlacePass& pass) const {
    if (pass.columnStep == 1) {
        convertPixels(hostRow, raw, count);
        return;
    }
    std::array<std::uint8_t, pieceWidth * 4> piece;
    std::uint8_t* target = hostRow + pass.startColumn * 4;
    for (std::size_t done = 0; done < count;) {
        const std::size_t pixels = std::min(pieceWidth, count - done);
        convertPixels(piece.data(), raw + GetBytesPerPixel(done), pixels);
        kernels::table().scatter(target, piece.data(), pixels, pass.columnStep);
        target += pixels * pass.columnStep * 4;
        done += pixels;
    }
}

// Pixels of one row, which start at a byte, to premultiplied B, G, R, A.
void cPNGparser::convertPixels(std::uint8_t* dst, const std::uint8_t* raw, std::size_t count) const {
    if (m_BitDepth == 16) {
        ConvertPNGtoBMP_16Bit(dst, raw, count);
    } else if (m_ColorType == 0 || m_ColorType == 3) {
        ConvertPNGtoBMP_Palettes(dst, raw, count);
    } else {
        ConvertPNGtoBMP_NonPalette(dst, raw, count);
    }
    if (m_transparentKey) {
        constexpr std::array<std::uint8_t, 4> transparent = {0, 0, 0, 0};
        kernels::table().replacePixel(dst, count, m_transparentKey->data(), transparent.data());
    }
}

void cPNGparser::ConvertPNGtoBMP_16Bit(std::uint8_t* dst, const std::uint8_t* raw, std::size_t count) const {
    const auto& kernel = kernels::table();
    switch (m_ColorType) {
    case 2:
        kernel.fromRgb16(dst, raw, count);
        break;
    case 4:
        kernel.fromGrayAlpha16(dst, raw, count);
        break;
    case 6:
        kernel.fromRgba16(dst, raw, count);
        break;
    default:
        kernel.fromGray16(dst, raw, count);
        break;
    }
}

void cPNGparser::ConvertPNGtoBMP_NonPalette(std::uint8_t* dst, const std::uint8_t* raw, std::size_t count) const {
    const auto& kernel = kernels::table();
    switch (m_ColorType) {
    case 4:
        kernel.fromGrayAlpha8(dst, raw, count);
        break;
    case 6:
        kernel.fromRgba8(dst, raw, count);
        break;
    default:
        kernel.fromRgb8(dst, raw, count);
        break;
    }
}

// Palette indexes and gray levels, 1 to 8 bits.
void cPNGparser::ConvertPNGtoBMP_Palettes(std::uint8_t* dst, const std::uint8_t* raw, std::size_t count) const {
    const auto& kernel = kernels::table();
    if (m_BitDepth == 8) {
        kernel.fromIndex8(dst, raw, count, m_lookup.data());
        return;
    }
    std::array<std::uint8_t, pieceWidth> indexes;
    for (std::size_t done = 0; done < count;) {
        const std::size_t pixels = std::min(pieceWidth, count - done);
        kernel.unpackSamples(indexes.data(), raw + GetBytesPerPixel(done), pixels, m_BitDepth);
        kernel.fromIndex8(dst + done * 4, indexes.data(), pixels, m_lookup.data());
        done += pixels;
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
