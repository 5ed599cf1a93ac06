// Vector kernels for JPEG samples. Blocks are transformed in 16-bit lanes, eight to a row, so that every 16
// bytes of a vector hold a row of one block.
#pragma once
#include "kernels/jpeg_factors.h"
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// Two factors for the words of each 32-bit lane.
inline Vec factorPair(int low, int high) {
    return all32((static_cast<unsigned>(low) & 0xFFFFU) | static_cast<unsigned>(high) << 16);
}

// --- colours

template <int red, int green, int blue, int rounding>
Vec weighted(Vec blueRed, Vec greenAlpha) {
    const Vec sum =
        add32(multiplyAddPairs16(blueRed, factorPair(blue, red)), multiplyAddPairs16(greenAlpha, factorPair(green, 0)));
    return shiftRight32<jpeg::colourBits>(add32(sum, all32(static_cast<unsigned>(rounding))));
}

// Four vectors of 32-bit lanes below 256 as one of bytes.
Vec narrowed(const Vec (&lanes)[4]) {
    return packedTwiceInOrder(packUnsigned16(packSigned32(lanes[0], lanes[1]), packSigned32(lanes[2], lanes[3])));
}

void toYCbCr(std::uint8_t* y, std::uint8_t* cb, std::uint8_t* cr, const std::uint8_t* src, std::size_t count) {
    using namespace jpeg;
    for (; count >= vecBytes; count -= vecBytes, src += 4 * vecBytes, y += vecBytes, cb += vecBytes, cr += vecBytes) {
        Vec luma[4], blueness[4], redness[4];
        for (std::size_t i = 0; i < 4; ++i) {
            const Vec pixels = load(src + i * vecBytes);
            const Vec blueRed = bitAnd(pixels, all32(0x00FF00FF));
            const Vec greenAlpha = shiftRight16<8>(pixels);
            luma[i] = weighted<yRed, yGreen, yBlue, yRounding>(blueRed, greenAlpha);
            blueness[i] = weighted<cbRed, cbGreen, cbBlue, chromaRounding>(blueRed, greenAlpha);
            redness[i] = weighted<crRed, crGreen, crBlue, chromaRounding>(blueRed, greenAlpha);
        }
        store(y, narrowed(luma));
        store(cb, narrowed(blueness));
        store(cr, narrowed(redness));
    }
    reference.toYCbCr(y, cb, cr, src, count);
}

// The sums of neighbours in words.
inline Vec pairSums(Vec bytes) {
    return add16(bitAnd(bytes, all16(0xFF)), shiftRight16<8>(bytes));
}

void halveSamples(std::uint8_t* dst, const std::uint8_t* upper, const std::uint8_t* lower, std::size_t count) {
    const Vec rounding = factorPair(1, 2);
    const auto means = [&](std::size_t at) {
        return shiftRight16<2>(add16(add16(pairSums(load(upper + at)), pairSums(load(lower + at))), rounding));
    };
    for (; count >= vecBytes; count -= vecBytes, dst += vecBytes, upper += 2 * vecBytes, lower += 2 * vecBytes)
        store(dst, packedInOrder(packUnsigned16(means(0), means(vecBytes))));
    reference.halveSamples(dst, upper, lower, count); // an even number of means was stored: 1 and 2 go on by turns
}

// --- transform

struct Products {
    Vec low, high;
};
// a * p + b * q in 32-bit lanes.
inline Products products(Vec a, Vec b, int p, int q) {
    const Vec factors = factorPair(p, q);
    return {multiplyAddPairs16(interleaveLow16(a, b), factors), multiplyAddPairs16(interleaveHigh16(a, b), factors)};
}
inline Products operator+(const Products& a, const Products& b) {
    return {add32(a.low, b.low), add32(a.high, b.high)};
}
template <bool isFirst>
inline Vec descaled(const Products& sum) {
    constexpr int bits = jpeg::factorBits + (isFirst ? -jpeg::passBits : jpeg::passBits);
    const Vec half = all32(1U << (bits - 1));
    return packSigned32(shiftRightSigned32<bits>(add32(sum.low, half)),
                        shiftRightSigned32<bits>(add32(sum.high, half)));
}
template <bool isFirst>
inline Vec evenPart(Vec sum) {
    if (isFirst) return shiftLeft16<jpeg::passBits>(sum);
    return shiftRightSigned16<jpeg::passBits>(add16(sum, all16(1U << (jpeg::passBits - 1))));
}

// The same sums as the reference's, with the factors of each word put together.
template <bool isFirst>
inline void transformRows(Vec (&d)[8]) {
    using namespace jpeg;
    const Vec sum07 = add16(d[0], d[7]), sum16 = add16(d[1], d[6]), sum25 = add16(d[2], d[5]),
              sum34 = add16(d[3], d[4]);
    const Vec odd7 = subtract16(d[0], d[7]), odd6 = subtract16(d[1], d[6]), odd5 = subtract16(d[2], d[5]),
              odd4 = subtract16(d[3], d[4]);

    const Vec outerSum = add16(sum07, sum34), outerDifference = subtract16(sum07, sum34);
    const Vec innerSum = add16(sum16, sum25), innerDifference = subtract16(sum16, sum25);
    d[0] = evenPart<isFirst>(add16(outerSum, innerSum));
    d[4] = evenPart<isFirst>(subtract16(outerSum, innerSum));
    d[2] = descaled<isFirst>(
        products(outerDifference, innerDifference, fix_0_541196100 + fix_0_765366865, fix_0_541196100));
    d[6] = descaled<isFirst>(
        products(outerDifference, innerDifference, fix_0_541196100, fix_0_541196100 - fix_1_847759065));

    const Vec odd46 = add16(odd4, odd6), odd57 = add16(odd5, odd7);
    const Products z3 = products(odd46, odd57, fix_1_175875602 - fix_1_961570560, fix_1_175875602);
    const Products z4 = products(odd46, odd57, fix_1_175875602, fix_1_175875602 - fix_0_390180644);
    d[7] = descaled<isFirst>(products(odd4, odd7, fix_0_298631336 - fix_0_899976223, -fix_0_899976223) + z3);
    d[1] = descaled<isFirst>(products(odd4, odd7, -fix_0_899976223, fix_1_501321110 - fix_0_899976223) + z4);
    d[5] = descaled<isFirst>(products(odd5, odd6, fix_2_053119869 - fix_2_562915447, -fix_2_562915447) + z4);
    d[3] = descaled<isFirst>(products(odd5, odd6, -fix_2_562915447, fix_3_072711026 - fix_2_562915447) + z3);
}

inline void transpose(Vec (&d)[8]) {
    Vec pairs[8], fours[8];
    for (int i = 0; i < 4; ++i) {
        pairs[2 * i] = interleaveLow16(d[2 * i], d[2 * i + 1]);
        pairs[2 * i + 1] = interleaveHigh16(d[2 * i], d[2 * i + 1]);
    }
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) {
            fours[4 * i + 2 * j] = interleaveLow32(pairs[4 * i + j], pairs[4 * i + 2 + j]);
            fours[4 * i + 2 * j + 1] = interleaveHigh32(pairs[4 * i + j], pairs[4 * i + 2 + j]);
        }
    }
    for (int i = 0; i < 4; ++i) {
        d[2 * i] = interleaveLow64(fours[i], fours[4 + i]);
        d[2 * i + 1] = interleaveHigh64(fours[i], fours[4 + i]);
    }
}

// Eight words of a table that serves every block.
inline Vec tableWords(const std::uint16_t* words) {
    return repeatedParts(load128(reinterpret_cast<const std::uint8_t*>(words)));
}

inline Vec quantised(Vec c, const BlockQuantiser& quantiser, std::size_t at) {
    const Vec sign = shiftRightSigned16<15>(c);
    const Vec magnitude = subtract16(bitXor(c, sign), sign);
    const Vec quotient = multiplyHigh16(
        multiplyHigh16(add16(magnitude, tableWords(quantiser.bias + at)), tableWords(quantiser.reciprocal + at)),
        tableWords(quantiser.scale + at));
    return subtract16(bitXor(quotient, sign), sign);
}

// Eight samples of each block in a vector as words.
template <std::size_t blocks>
inline Vec sampleWords(const std::uint8_t* samples) {
    return subtract16(widenUnsigned8(blocks == 1 ? load64InHalf(samples) : loadHalf(samples)), all16(128));
}

// A bit for every byte of two rows of words that is not 0 when narrowed with the sign kept.
inline auto nonzeroBits(Vec first, Vec second) {
    return ~byteMask(equal8(packSigned16(first, second), zeros()));
}

// The rows of a vector, each to its block.
template <std::size_t blocks, std::size_t block = 0>
inline void storeRows(std::int16_t* p, Vec v) {
    store128(reinterpret_cast<std::uint8_t*>(p + 64 * block), partOf<block>(v));
    if constexpr (block + 1 < blocks) storeRows<blocks, block + 1>(p, v);
}

// As many blocks as a vector holds, or one that is left.
template <std::size_t blocks>
inline void transformVector(std::int16_t* coefficients, std::uint64_t* nonzero, const std::uint8_t* samples,
                            std::size_t stride, const BlockQuantiser& quantiser) {
    Vec d[8];
    for (std::size_t i = 0; i < 8; ++i)
        d[i] = sampleWords<blocks>(samples + i * stride);
    transformRows<true>(d);
    transpose(d);
    transformRows<false>(d);
    std::uint64_t found[blocks] = {};
    for (std::size_t i = 0; i < 8; ++i)
        d[i] = quantised(d[i], quantiser, 8 * i);
    for (unsigned i = 0; i < 8; i += 2) {
        const auto bits = nonzeroBits(d[i], d[i + 1]);
        for (std::size_t block = 0; block < blocks; ++block)
            found[block] |= std::uint64_t{bits >> (16 * block) & 0xFFFF} << (8 * i);
    }
    for (std::size_t i = 0; i < 8; ++i)
        storeRows<blocks>(coefficients + 8 * i, d[i]);
    std::memcpy(nonzero, found, sizeof found);
}

void transformBlocks(std::int16_t* coefficients, std::uint64_t* nonzero, const std::uint8_t* samples,
                     std::size_t stride, std::size_t count, const BlockQuantiser& quantiser) {
    if constexpr (vecParts > 1) {
        for (; count >= vecParts; count -= vecParts, nonzero += vecParts) {
            transformVector<vecParts>(coefficients, nonzero, samples, stride, quantiser);
            coefficients += 64 * vecParts;
            samples += 8 * vecParts;
        }
    }
    for (; count > 0; --count, coefficients += 64, ++nonzero, samples += 8)
        transformVector<1>(coefficients, nonzero, samples, stride, quantiser);
}

inline void useJpeg(Table& table) {
    table.toYCbCr = toYCbCr;
    table.halveSamples = halveSamples;
    table.transformBlocks = transformBlocks;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
