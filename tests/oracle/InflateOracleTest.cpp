// The built-in inflater against zlib, on streams that zlib made and on what damage makes of them.
#include "oracle/zlibVerdict.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using Bytes = std::vector<std::uint8_t>;
using pixkit::deflate::Result;

// Data like that of pictures: runs, repeated pixels, noise of a given spread, in stretches of random length.
Bytes pictureLike(std::mt19937& random, std::size_t count) {
    Bytes data;
    while (data.size() < count) {
        const std::size_t stretch = 1 + random() % 400, pixel = 1 + random() % 8;
        const auto spread = 1u << random() % 9, kind = static_cast<unsigned>(random() % 3);
        for (std::size_t i = 0; i < stretch && data.size() < count; ++i) {
            const bool again = kind == 0 ? data.size() >= pixel : kind == 1 && data.size() >= stretch;
            data.push_back(again ? data[data.size() - (kind == 0 ? pixel : stretch)]
                                 : static_cast<std::uint8_t>(random() % spread));
        }
    }
    return data;
}

Bytes compressed(std::mt19937& random, const Bytes& data) {
    z_stream stream{};
    deflateInit2(&stream, static_cast<int>(random() % 10), Z_DEFLATED, 9 + static_cast<int>(random() % 7),
                 1 + static_cast<int>(random() % 9), static_cast<int>(random() % 5));
    Bytes output(deflateBound(&stream, static_cast<uLong>(data.size())) + 64);
    stream.next_in = const_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size() / 2); // two calls, with a flush between them
    stream.next_out = output.data();
    stream.avail_out = static_cast<uInt>(output.size());
    deflate(&stream, random() % 2 == 0 ? Z_NO_FLUSH : Z_SYNC_FLUSH);
    stream.avail_in = static_cast<uInt>(data.size() - data.size() / 2);
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    output.resize(stream.total_out);
    deflateEnd(&stream);
    return output;
}

::testing::AssertionResult agrees(const Bytes& stream, std::size_t capacity) {
    Bytes output(capacity);
    const Result result = pixkit::deflate::inflateZlib(output.data(), capacity, stream.data(), stream.size());
    if (agreesWithZlib(result, output.data(), capacity, stream.data(), stream.size()))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "outcome " << static_cast<int>(result.outcome) << " after "
                                         << result.written << " of " << capacity << " bytes";
}

TEST(InflateOracle, APictureLoadsDifferentlyWithoutZlib) {
    std::mt19937 random(20);
    for (int round = 0; round < 400; ++round) {
        const std::size_t size = random() % (round % 10 == 0 ? 300000 : 5000);
        const Bytes stream = compressed(random, pictureLike(random, size));
        ASSERT_TRUE(agrees(stream, size)) << round;
        ASSERT_TRUE(agrees(stream, size + random() % 1000)) << round;
        ASSERT_TRUE(agrees(stream, random() % (size + 1))) << round;
        Bytes cut = stream;
        cut.resize(random() % stream.size());
        ASSERT_TRUE(agrees(cut, size)) << round;
        for (int hit = 0; hit < 20; ++hit) {
            Bytes damaged = stream;
            for (std::size_t bits = 1 + random() % 3; bits != 0; --bits)
                damaged[random() % damaged.size()] ^= static_cast<std::uint8_t>(1u << random() % 8);
            ASSERT_TRUE(agrees(damaged, size + 300)) << round << ", " << hit;
        }
    }
}

TEST(InflateOracle, ADamagedBlockHeadIsJudgedDifferently) {
    std::mt19937 random(21);
    for (int round = 0; round < 100000; ++round) {
        Bytes stream(2 + random() % 90);
        for (auto& byte : stream)
            byte = static_cast<std::uint8_t>(random());
        stream[0] = 0x78;
        stream[1] = 0x9c;
        if (round % 4 != 0 && stream.size() > 2)
            stream[2] = static_cast<std::uint8_t>((stream[2] & ~6u) | 4u); // a dynamic block
        ASSERT_TRUE(agrees(stream, 400)) << round;
    }
}

} // namespace
