// Reference kernels for JPEG samples.
#pragma once
#include "kernels/jpeg_factors.h"
#include "kernels/reference.h"

namespace pixkit::kernels {
namespace {

void toYCbCr(std::uint8_t* y, std::uint8_t* cb, std::uint8_t* cr, const std::uint8_t* src, std::size_t count) {
    using namespace jpeg;
    for (std::size_t i = 0; i < count; ++i, src += 4) {
        const std::int32_t b = src[0], g = src[1], r = src[2];
        y[i] = static_cast<std::uint8_t>((yBlue * b + yGreen * g + yRed * r + yRounding) >> colourBits);
        cb[i] = static_cast<std::uint8_t>((cbBlue * b + cbGreen * g + cbRed * r + chromaRounding) >> colourBits);
        cr[i] = static_cast<std::uint8_t>((crBlue * b + crGreen * g + crRed * r + chromaRounding) >> colourBits);
    }
}

void halveSamples(std::uint8_t* dst, const std::uint8_t* upper, const std::uint8_t* lower, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned sum = unsigned{upper[2 * i]} + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1];
        dst[i] = static_cast<std::uint8_t>((sum + 1 + i % 2) >> 2);
    }
}

// One pass over eight values that stand `step` apart. The first pass leaves passBits behind the point, the second takes
// them away again.
template <bool isFirst>
void transformLine(std::int32_t* d, std::size_t step) {
    using namespace jpeg;
    const auto descale = [](std::int32_t value) {
        constexpr int bits = factorBits + (isFirst ? -passBits : passBits);
        return (value + (1 << (bits - 1))) >> bits;
    };
    const auto even = [](std::int32_t value) {
        return isFirst ? value * (1 << passBits) : (value + (1 << (passBits - 1))) >> passBits;
    };
    const auto at = [&](std::size_t i) -> std::int32_t& { return d[i * step]; };
    const std::int32_t sum07 = at(0) + at(7), sum16 = at(1) + at(6), sum25 = at(2) + at(5), sum34 = at(3) + at(4);
    const std::int32_t odd7 = at(0) - at(7), odd6 = at(1) - at(6), odd5 = at(2) - at(5), odd4 = at(3) - at(4);

    const std::int32_t outerSum = sum07 + sum34, outerDifference = sum07 - sum34;
    const std::int32_t innerSum = sum16 + sum25, innerDifference = sum16 - sum25;
    at(0) = even(outerSum + innerSum);
    at(4) = even(outerSum - innerSum);
    const std::int32_t turned = (innerDifference + outerDifference) * fix_0_541196100;
    at(2) = descale(turned + outerDifference * fix_0_765366865);
    at(6) = descale(turned - innerDifference * fix_1_847759065);

    const std::int32_t z5 = (odd4 + odd6 + odd5 + odd7) * fix_1_175875602;
    const std::int32_t z1 = (odd4 + odd7) * -fix_0_899976223, z2 = (odd5 + odd6) * -fix_2_562915447;
    const std::int32_t z3 = z5 - (odd4 + odd6) * fix_1_961570560, z4 = z5 - (odd5 + odd7) * fix_0_390180644;
    at(7) = descale(odd4 * fix_0_298631336 + z1 + z3);
    at(5) = descale(odd5 * fix_2_053119869 + z2 + z4);
    at(3) = descale(odd6 * fix_3_072711026 + z2 + z3);
    at(1) = descale(odd7 * fix_1_501321110 + z1 + z4);
}

void transformBlocks(std::int16_t* coefficients, std::uint64_t* nonzero, const std::uint8_t* samples,
                     std::size_t stride, std::size_t count, const BlockQuantiser& quantiser) {
    for (; count > 0; --count, coefficients += 64, ++nonzero, samples += 8) {
        std::int32_t block[64]; // column after column
        for (std::size_t i = 0; i < 64; ++i)
            block[i] = samples[i % 8 * stride + i / 8] - 128;
        for (std::size_t i = 0; i < 8; ++i)
            transformLine<true>(block + 8 * i, 1);
        for (std::size_t i = 0; i < 8; ++i)
            transformLine<false>(block + i, 8);
        *nonzero = 0;
        for (std::size_t i = 0; i < 64; ++i) {
            const auto magnitude = static_cast<std::uint32_t>(block[i] < 0 ? -block[i] : block[i]);
            const std::uint32_t quotient =
                ((magnitude + quantiser.bias[i]) * quantiser.reciprocal[i] >> 16) * quantiser.scale[i] >> 16;
            coefficients[i] = static_cast<std::int16_t>(block[i] < 0 ? -static_cast<std::int32_t>(quotient)
                                                                     : static_cast<std::int32_t>(quotient));
            *nonzero |= std::uint64_t{quotient != 0} << i;
        }
    }
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
