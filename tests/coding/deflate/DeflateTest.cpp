// What the encoder writes is read back by the decoder here and by zlib in the oracle tests; the bytes themselves are
// held by one checksum, the same on every build.
#include "coding/deflate/Deflate.h"
#include "coding/Crc32.h"
#include "coding/deflate/HuffmanCode.h"
#include "coding/deflate/Inflate.h"
#include "coding/deflate/RunCompressor.h"
#include "kernels/kernels.h"
#include <gtest/gtest.h>
#include <new>
#include <numeric>
#include <string_view>

namespace pixkit::deflate {
namespace {

using Bytes = std::vector<std::uint8_t>;

class Random {
  public:
    std::uint32_t below(std::uint32_t limit) {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(m_state >> 33) % limit;
    }

  private:
    std::uint64_t m_state = 7;
};

Bytes made(std::size_t count, auto&& byteAt) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(byteAt(i, bytes));
    return bytes;
}

struct Data {
    const char* what;
    Bytes bytes;
};

std::vector<Data> allData() {
    Random random;
    const auto noise = [&](std::uint32_t spread) {
        return [&random, spread](std::size_t, const Bytes&) { return random.below(spread); };
    };
    std::vector<Data> all;
    for (std::size_t count = 0; count < 20; ++count)
        all.push_back({"too short to be hashed, or just not", made(count, noise(2))});
    all.push_back({"one byte repeated", Bytes(100'000, 0)});
    all.push_back({"noise, stored in several blocks", made(200'000, noise(256))});
    all.push_back({"noise of one stored block", made(65'535, noise(256))});
    all.push_back({"noise of one stored block and a byte", made(65'536, noise(256))});
    all.push_back({"small values", made(150'000, noise(9))});
    all.push_back(
        {"a copy from as far as can be, and from a byte further", made(100'000, [&](std::size_t i, const Bytes& b) {
             return i < 32767 ? random.below(256) : i < 65534 ? b[i - 32767] : b[i - 32768];
         })});
    all.push_back({"copies of every length at every distance",
                   made(300'000, [&, left = 0U, far = 1U](std::size_t i, const Bytes& b) mutable {
                       if (left == 0) {
                           left = 1 + random.below(300);
                           far = 1 + random.below(random.below(2) == 0 ? 40 : 32768);
                       }
                       return --left < 3 || far > i ? random.below(256) : b[i - far];
                   })});
    // Each value is as frequent as the two before it together: codes would be longer than any code may be.
    all.push_back({"frequencies of the deepest tree", made(120'000, [&](std::size_t, const Bytes&) {
                       std::uint32_t value = 0;
                       while (value < 24 && random.below(1000) >= 382)
                           ++value;
                       return value * 10;
                   })});
    all.push_back({"statistics that change", made(200'000, [&](std::size_t i, const Bytes&) {
                       return i / 20'000 % 2 == 0 ? random.below(4) : 200 + random.below(30);
                   })});
    return all;
}

TEST(Deflate, DataComesBackChangedOrLongerThanStored) {
    std::uint64_t checksum = 0xCBF29CE484222325U;
    for (const Data& data : allData()) {
        for (int level = 0; level <= 9; ++level) {
            SCOPED_TRACE(std::string(data.what) + ", level " + std::to_string(level));
            Bytes stream = {1, 2, 3}; // is appended to
            compressZlib(data.bytes, level, stream);
            const std::size_t size = stream.size() - 3;
            EXPECT_LE(size, data.bytes.size() + (data.bytes.size() / 65535 + 1) * 5 + 6);
            Bytes back(data.bytes.size() + 1);
            const Result result = inflateZlib(back.data(), back.size(), stream.data() + 3, size);
            EXPECT_EQ(result.outcome, Outcome::complete);
            back.resize(result.written);
            ASSERT_TRUE(back == data.bytes);
            const std::uint32_t sum = kernels::table().adler32(1, data.bytes.data(), data.bytes.size());
            for (std::size_t i = 0; i < 4; ++i)
                EXPECT_EQ(stream[stream.size() - 4 + i], static_cast<std::uint8_t>(sum >> (24 - 8 * i)));
            for (const std::uint8_t byte : stream)
                checksum = (checksum ^ byte) * 0x100000001B3U;
        }
    }
    EXPECT_EQ(checksum, 0x1799B94C2670E173U) << "other bytes than other builds write";
}

TEST(Deflate, APieceOrARunIsTooLongForItsBlock) {
    Bytes bytes(3'000'000, 3), stream;
    for (std::size_t i = 0; i < bytes.size(); i += 1 + i % 100'000)
        bytes[i] = 4;
    RunCompressor runs(stream, 32768);
    runs.add(std::span(bytes).first(1), false);
    runs.add(std::span(bytes).subspan(1, 2'999'998), false);
    runs.add(std::span(bytes).last(1), true);
    Bytes back(bytes.size());
    EXPECT_EQ(inflateZlib(back.data(), back.size(), stream.data(), stream.size()).outcome, Outcome::complete);
    EXPECT_TRUE(back == bytes);
}

TEST(Deflate, CodesAreNoneOrTooLongForTheirFormat) {
    for (const unsigned longest : {7U, 14U, 15U}) {
        for (std::size_t symbols : {1U, 2U, 3U, 19U, 30U, 286U}) {
            if (symbols > 1U << longest) continue;
            for (const bool isSteep : {false, true}) {
                SCOPED_TRACE(std::to_string(longest) + " bits, " + std::to_string(symbols));
                std::vector<std::uint32_t> frequencies(symbols);
                for (std::size_t i = 0; i < symbols; ++i)
                    frequencies[i] = isSteep && i > 1 && i < 30 ? frequencies[i - 1] + frequencies[i - 2] : 1;
                if (symbols == 1) frequencies = {0, 5, 0}; // a second code must come from somewhere
                std::vector<std::uint8_t> lengths(frequencies.size());
                makeCodeLengths(frequencies, longest, lengths);
                std::uint32_t kraft = 0;
                for (std::size_t i = 0; i < lengths.size(); ++i) {
                    EXPECT_LE(lengths[i], longest);
                    if (frequencies[i] != 0) {
                        EXPECT_GT(lengths[i], 0);
                    }
                    if (lengths[i] != 0) kraft += 1U << (15 - lengths[i]);
                }
                EXPECT_EQ(kraft, 1U << 15) << "not a complete code";
            }
        }
    }
}

TEST(Deflate, ChecksumsAreNotThoseOfTheStandards) {
    constexpr std::string_view digits = "123456789";
    const Bytes bytes(digits.begin(), digits.end());
    EXPECT_EQ(crc32(0, bytes), 0xCBF43926U);
    EXPECT_EQ(kernels::table().adler32(1, bytes.data(), bytes.size()), 0x091E01DEU);
    const Bytes many(1000, 0xA7);
    for (const std::size_t cut : {0U, 1U, 15U, 16U, 17U, 500U}) // in two pieces as in one
        EXPECT_EQ(crc32(crc32(0, std::span(many).first(cut)), std::span(many).subspan(cut)), crc32(0, many));
}

} // namespace
} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
