#include "codecs/jpg/JpgQuantisation.h"
#include <algorithm>
#include <bit>

namespace pixkit {

namespace {

// A block's coefficients by diagonals, first to the right and then down and up by turns. They stand there column after
// column: horizontal frequency * 8 + vertical frequency.
constexpr std::array<std::uint8_t, 64> makeZigzag() {
    std::array<std::uint8_t, 64> order{};
    std::size_t place = 0;
    for (unsigned diagonal = 0; diagonal < 15; ++diagonal) {
        for (unsigned i = 0; i <= diagonal; ++i) {
            const unsigned horizontal = diagonal % 2 == 0 ? i : diagonal - i;
            const unsigned vertical = diagonal - horizontal;
            if (horizontal < 8 && vertical < 8) order[place++] = static_cast<std::uint8_t>(8 * horizontal + vertical);
        }
    }
    return order;
}

// [i][byte]: what the eight bits of byte i become.
using BitLookup = std::array<std::array<std::uint64_t, 256>, 8>;

constexpr BitLookup makeBitLookup() {
    BitLookup lookup{};
    const auto order = makeZigzag();
    for (unsigned place = 0; place < 64; ++place) {
        const unsigned from = order[place];
        for (unsigned byte = 0; byte < 256; ++byte) {
            if ((byte >> from % 8 & 1U) != 0) lookup[from / 8][byte] |= std::uint64_t{1} << place;
        }
    }
    return lookup;
}

constexpr BitLookup bitLookup = makeBitLookup();

// Tables K.1 and K.2, row after row.
constexpr std::array<std::uint8_t, 64> luminance = {
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55, //
    14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62, //
    18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92, //
    49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
constexpr std::array<std::uint8_t, 64> chrominance = {17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, //
                                                      24, 26, 56, 99, 99, 99, 99, 99, 47, 66, 99, 99, 99, 99, 99, 99, //
                                                      99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, //
                                                      99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

} // namespace

constexpr std::array<std::uint8_t, 64> jpgZigzag = makeZigzag();

std::uint64_t jpgZigzagBits(std::uint64_t blockBits) noexcept {
    std::uint64_t bits = 0; // all eight: to find out where there are no more takes longer
    for (std::size_t i = 0; i < 8; ++i)
        bits |= bitLookup[i][blockBits >> 8 * i & 0xFF];
    return bits;
}

JpgQuantisation jpgQuantisation(bool isChroma, std::int32_t quality) noexcept {
    const auto& example = isChroma ? chrominance : luminance;
    const std::int32_t percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    JpgQuantisation table;
    for (std::size_t place = 0; place < 64; ++place) {
        const std::size_t horizontal = jpgZigzag[place] / 8U;
        const std::size_t vertical = jpgZigzag[place] % 8U;
        const std::int32_t scaled = (example[8 * vertical + horizontal] * percent + 50) / 100;
        table[place] = static_cast<std::uint8_t>(std::clamp(scaled, 1, 255));
    }
    return table;
}

kernels::BlockQuantiser jpgBlockQuantiser(const JpgQuantisation& table) noexcept {
    kernels::BlockQuantiser quantiser{};
    for (std::size_t place = 0; place < 64; ++place) {
        const std::uint32_t divisor = table[place] * 8U;
        // 2^(16 + shift) / divisor, rounded up, in 16 bits. What it is too large by, below `divisor`, times a dividend
        // below 2^14 stays below 2^(16 + shift): the quotient is never one too large.
        const unsigned shift = static_cast<unsigned>(std::bit_width((divisor - 1) / 2));
        const std::size_t at = jpgZigzag[place];
        quantiser.bias[at] = static_cast<std::uint16_t>(divisor / 2);
        quantiser.reciprocal[at] = static_cast<std::uint16_t>(((0x10000U << shift) + divisor - 1) / divisor);
        quantiser.scale[at] = static_cast<std::uint16_t>(0x10000U >> shift);
    }
    return quantiser;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
