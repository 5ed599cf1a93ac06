// The built-in inflater against zlib, on streams that zlib made and on what damage makes of them.
#include "oracle/zlibVerdict.h"
#include <gtest/gtest.h>
#include <random>

namespace {

using Bytes = std::vector<std::uint8_t>;

// Runs, repeated pixels and noise of a given spread, as any of zlib's levels packs them.
Bytes compressed(std::mt19937& random, std::size_t size) {
    Bytes data;
    while (data.size() < size) {
        const std::size_t stretch = 1 + random() % 400, pixel = 1 + random() % 8;
        const auto spread = 1u << random() % 9, kind = static_cast<unsigned>(random() % 2);
        for (std::size_t i = 0; i < stretch && data.size() < size; ++i)
            data.push_back(kind == 0 && data.size() >= pixel ? data[data.size() - pixel]
                                                             : static_cast<std::uint8_t>(random() % spread));
    }
    auto length = compressBound(static_cast<uLong>(size));
    Bytes output(length);
    EXPECT_EQ(compress2(output.data(), &length, data.data(), static_cast<uLong>(size), static_cast<int>(random() % 10)),
              Z_OK);
    output.resize(length);
    return output;
}

bool agrees(const Bytes& stream, std::size_t capacity) {
    Bytes output(capacity);
    const auto result = pixkit::deflate::inflateZlib(output.data(), capacity, stream.data(), stream.size());
    return agreesWithZlib(result, output.data(), capacity, stream.data(), stream.size());
}

TEST(InflateOracle, AStreamIsJudgedDifferentlyThanByZlib) {
    std::mt19937 random(20);
    for (int round = 0; round < 400; ++round) {
        const std::size_t size = random() % (round % 10 == 0 ? 300000 : 5000);
        const Bytes stream = compressed(random, size);
        ASSERT_TRUE(agrees(stream, size) && agrees(stream, size + 700) && agrees(stream, random() % (size + 1)))
            << round;
        ASSERT_TRUE(agrees(
            Bytes(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(random() % stream.size())), size));
        for (int hit = 0; hit < 20; ++hit) {
            Bytes damaged = stream;
            damaged[random() % damaged.size()] ^= static_cast<std::uint8_t>(1u << random() % 8);
            ASSERT_TRUE(agrees(damaged, size + 300)) << round << ", " << hit;
        }
    }
    for (int round = 0; round < 100000; ++round) { // heads of blocks, most of them dynamic
        Bytes stream = {0x78, 0x9c, static_cast<std::uint8_t>(random() % 4 == 0 ? random() : (random() & ~6u) | 4u)};
        for (std::size_t i = random() % 90; i > 0; --i)
            stream.push_back(static_cast<std::uint8_t>(random()));
        ASSERT_TRUE(agrees(stream, 400)) << round;
    }
}

} // namespace
// SPDX-License-Identifier: MIT
