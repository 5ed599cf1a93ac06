// Vector kernels for walks over pixels. Gather instructions gained a tenth at most where they were tried, and nothing
// in vectors of 64 bytes; on some processors they are slow.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// A vector of pixels' positions on one axis, 32 bits behind the point. `first` has the first and second of every four
// pixels, `second` the third and fourth, so that what is packed of both is in order.
struct Positions {
    Vec first, second;

    Positions(std::int64_t start, std::int64_t step) {
        std::uint64_t numbers[2][vecBytes / 8];
        for (std::size_t i = 0; i < vecPixels; ++i)
            numbers[i / 2 % 2][i / 4 * 2 + i % 2] = bits(start) + i * bits(step);
        first = load(reinterpret_cast<const std::uint8_t*>(numbers[0]));
        second = load(reinterpret_cast<const std::uint8_t*>(numbers[1]));
    }
    void move(Vec by) {
        first = add64(first, by);
        second = add64(second, by);
    }
    static std::uint64_t bits(std::int64_t value) { return static_cast<std::uint64_t>(value); }
};

// A walk, a vector of pixels at a time.
class VectorWalk {
  public:
    explicit VectorWalk(const PixelWalk& walk)
        : u(walk.u, walk.du), v(walk.v, walk.dv), m_alongU(all64(vecPixels * Positions::bits(walk.du))),
          m_alongV(all64(vecPixels * Positions::bits(walk.dv))), m_stride(all32(static_cast<unsigned>(walk.stride))) {}
    // Where the pixels are, in bytes behind the walk's origin.
    void findOffsets(std::uint32_t* offsets) const {
        const Vec rows = multiplyLow32(upperHalves(v.first, v.second), m_stride);
        store(reinterpret_cast<std::uint8_t*>(offsets), add32(rows, shiftLeft32<2>(upperHalves(u.first, u.second))));
    }
    void step() {
        u.move(m_alongU);
        v.move(m_alongV);
    }

    Positions u, v;

  private:
    Vec m_alongU, m_alongV, m_stride;
};

// Calls work(i, walk) for vectors of pixels from the one at i, for all of them, some of the last ones twice.
template <class Work>
void walkInVectors(const PixelWalk& from, std::size_t count, Work work) {
    VectorWalk walk(from);
    std::size_t i = 0;
    for (; i + vecPixels <= count; i += vecPixels, walk.step())
        work(i, walk);
    if (i == count) return;
    i = count - vecPixels;
    PixelWalk last = from;
    last.u = static_cast<std::int64_t>(Positions::bits(from.u) + i * Positions::bits(from.du));
    last.v = static_cast<std::int64_t>(Positions::bits(from.v) + i * Positions::bits(from.dv));
    work(i, VectorWalk(last));
}

void walkNearest(std::uint8_t* dst, const PixelWalk& from, std::size_t count) {
    if (count < vecPixels) return reference.walkNearest(dst, from, count);
    walkInVectors(from, count, [dst, origin = from.origin](std::size_t i, const VectorWalk& walk) {
        std::uint32_t offsets[vecPixels];
        walk.findOffsets(offsets);
        for (std::size_t k = 0; k < vecPixels; k += 4)
            store128(dst + 4 * (i + k), fourPixels([&](std::size_t pixel) { return origin + offsets[k + pixel]; }));
    });
}

// The pixels at the first two of every four offsets, each with the next in its row.
inline Vec pairsAt(const std::uint8_t* origin, const std::uint32_t* offsets) {
    return fromParts(
        [=](std::size_t part) { return load64Twice(origin + offsets[4 * part], origin + offsets[4 * part + 1]); });
}

// Each channel as pixel * (256 - fraction) + next * fraction, which 16 bits hold.
inline Vec mixedInRow(Vec pairs, Vec fraction) {
    const Vec sorted = evenFirst32(pairs);
    const Vec near = multiplyLow16(widenLow8(sorted), subtract16(all16(256), fraction));
    return add16(near, multiplyLow16(widenHigh8(sorted), fraction));
}

// (row * (256 - fraction) + nextRow * fraction) / 65,536: the upper halves of both products, and what their lower
// halves carry, which is where a sum that is held at 65,535 is not the sum.
inline Vec mixedRows(Vec row, Vec nextRow, Vec fraction) {
    const Vec rest = subtract16(all16(256), fraction);
    const Vec low = multiplyLow16(row, rest);
    const Vec nextLow = multiplyLow16(nextRow, fraction);
    const Vec isWithoutCarry = equal16(add16(low, nextLow), addSaturated16(low, nextLow));
    const Vec high = add16(multiplyHigh16(row, rest), multiplyHigh16(nextRow, fraction));
    return add16(high, add16(isWithoutCarry, all16(1)));
}

inline Vec mixedAround(const std::uint8_t* origin, std::size_t stride, const std::uint32_t* offsets, Vec u, Vec v) {
    const Vec columnFraction = fractionsInWords(u);
    return mixedRows(mixedInRow(pairsAt(origin, offsets), columnFraction),
                     mixedInRow(pairsAt(origin + stride, offsets), columnFraction), fractionsInWords(v));
}

void walkBilinear(std::uint8_t* dst, const PixelWalk& from, std::size_t count) {
    if (count < vecPixels) return reference.walkBilinear(dst, from, count);
    walkInVectors(from, count,
                  [dst, origin = from.origin, stride = from.stride](std::size_t i, const VectorWalk& walk) {
                      std::uint32_t offsets[vecPixels];
                      walk.findOffsets(offsets);
                      const Vec first = mixedAround(origin, stride, offsets, walk.u.first, walk.v.first);
                      const Vec second = mixedAround(origin, stride, offsets + 2, walk.u.second, walk.v.second);
                      store(dst + 4 * i, packUnsigned16(first, second));
                  });
}

inline void useWalks(Table& table) {
    table.walkNearest = walkNearest;
    table.walkBilinear = walkBilinear;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
