// What a set whose widest vectors are those of 16 bytes says of them. The layer includes its operations on 16 bytes
// before.
#pragma once
#include <cstddef>
#include <cstdint>

namespace pixkit::kernels {
namespace {

using Vec = Vec128;
using HalfVec = Vec128; // the first eight bytes

constexpr std::size_t vecBytes = sizeof(Vec);

// --- memory, at any alignment
inline Vec load(const std::uint8_t* p) {
    return load128(p);
}
inline void store(std::uint8_t* p, Vec v) {
    store128(p, v);
}
inline HalfVec loadHalf(const std::uint8_t* p) {
    return load64(p);
}
inline HalfVec load64InHalf(const std::uint8_t* p) {
    return load64(p);
}
// Two vectors in the order in which interleaving two others gave them.
inline void storeInterleaved(std::uint8_t* p, Vec low, Vec high) {
    store(p, low);
    store(p + vecBytes, high);
}

// --- constants
inline Vec zeros() {
    return zeros128();
}
inline Vec all8(unsigned value) {
    return all8In128(value);
}
inline Vec all16(unsigned value) {
    return all16In128(value);
}
inline Vec all32(unsigned value) {
    return all32In128(value);
}

// --- parts of 16 bytes
inline Vec repeatedParts(Vec128 part) {
    return part;
}
template <int index>
inline Vec128 partOf(Vec v) {
    static_assert(index == 0);
    return v;
}
// The vector whose part i is partAt(i).
template <class PartAt>
inline Vec fromParts(PartAt partAt) {
    return partAt(0);
}

// --- lanes
// Each 32-bit lane plus all before it.
inline Vec runningSums32(Vec v) {
    v = add32(v, shiftBytesUp<4>(v));
    return add32(v, shiftBytesUp<8>(v));
}
inline Vec widenUnsigned8(HalfVec v) {
    return widenLow8(v);
}
// A lane of each part in all lanes of that part.
template <int lane>
inline Vec repeatedInParts32(Vec v) {
    return repeated32<lane>(v);
}
inline Vec lastInAll32(Vec v) {
    return repeated32<3>(v);
}
// Puts in order what packing two vectors, and then two such results, has given.
inline Vec packedInOrder(Vec v) {
    return v;
}
inline Vec packedTwiceInOrder(Vec v) {
    return v;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
