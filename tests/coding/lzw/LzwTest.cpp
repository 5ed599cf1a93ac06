// Codes that are written, then read, counted and damaged. Files of other programs are in the ledger and in
// tests/oracle.
#include "coding/GifFrame.h"
#include "coding/lzw/LzwDecoder.h"
#include "coding/lzw/LzwEncoder.h"
#include "support/Ledger.h"
#include <gtest/gtest.h>
#include <random>

namespace pixkit {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The codes alone, without the sub-blocks that they are written in.
Bytes codesOf(const Bytes& indexes, unsigned depth) {
    Bytes data;
    gifCompress(indexes, depth, data);
    GifFrame frame;
    frame.g87aStop = data.size() - 1;
    EXPECT_EQ(data.front(), std::max(depth, 2U));
    EXPECT_EQ(data.back(), 0);
    return joinGifCodes(data, frame);
}

// Runs and noise: short ones fill the table of strings soon, long ones make long strings.
Bytes someIndexes(std::mt19937& random, unsigned depth, std::size_t count) {
    Bytes indexes;
    const std::size_t longestRun = random() % 3 == 0 ? 200'000 : 1 + random() % 5;
    while (indexes.size() < count) {
        const auto index = static_cast<std::uint8_t>(random() % (1U << depth)); // before the length, on every machine
        indexes.resize(std::min(count, indexes.size() + 1 + random() % longestRun), index);
    }
    return indexes;
}

TEST(Lzw, IndexesComeBackChanged) {
    std::mt19937 random(4);
    Bytes all;
    for (int round = 0; round < 200; ++round) {
        const unsigned depth = 1 + static_cast<unsigned>(random() % 8);
        const Bytes indexes = someIndexes(random, depth, 1 + random() % (round % 10 == 0 ? 100'000 : 5000));
        const Bytes codes = codesOf(indexes, depth);
        all.insert(all.end(), codes.begin(), codes.end());
        const LzwIndexes decoded(codes, std::max(depth, 2U), indexes.size());
        ASSERT_TRUE(decoded) << round;
        EXPECT_TRUE(std::equal(indexes.begin(), indexes.end(), decoded.data())) << round;
        EXPECT_FALSE(LzwIndexes(codes, std::max(depth, 2U), indexes.size() + 1)) << "beyond the end code";
    }
    EXPECT_EQ(test::checksum(all), "9ef6a84d0bd7c251") << "other bytes than other builds write";
}

// Pairs of indexes that a multiplication by the golden ratio leads to one sixteenth of a table, more of them than have
// room there; behind pictures of another kind, before them, and alone.
TEST(Lzw, StringsThatMeetInOnePlaceComeBackChanged) {
    std::mt19937 random(6);
    Bytes meeting = {0};
    std::vector<bool> isThere(65536);
    while (meeting.size() < 8000) {
        const unsigned last = meeting.back() * 256U;
        unsigned index = 0;
        while (index < 255 && (((last + index) * 0x9E3779B1U >> 28) != 0 || isThere[last + index]))
            ++index;
        isThere[last + index] = true;
        meeting.push_back(static_cast<std::uint8_t>(index));
    }
    Bytes all;
    for (const std::size_t before : {0U, 9000U, 30'000U}) {
        Bytes indexes = someIndexes(random, 8, before);
        for (int i = 0; i < 4; ++i)
            indexes.insert(indexes.end(), meeting.begin(), meeting.end());
        const Bytes after = someIndexes(random, 8, 20'000);
        indexes.insert(indexes.end(), after.begin(), after.end());
        const Bytes codes = codesOf(indexes, 8);
        const LzwIndexes decoded(codes, 8, indexes.size());
        ASSERT_TRUE(decoded && std::equal(indexes.begin(), indexes.end(), decoded.data())) << before;
        all.insert(all.end(), codes.begin(), codes.end());
    }
    EXPECT_EQ(test::checksum(all), "fc575ddfe7918c07") << "other bytes than other builds write";
}

TEST(Lzw, DamagedCodesAreCountedOtherwiseThanTheyAreDecoded) {
    std::mt19937 random(8);
    int whole = 0;
    for (int round = 0; round < 5000; ++round) {
        const unsigned depth = 2 + static_cast<unsigned>(random() % 7);
        const std::size_t count = 1 + random() % 9000;
        Bytes codes = codesOf(someIndexes(random, depth, count), depth);
        if (round % 4 != 0) codes[random() % codes.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
        if (round % 4 == 3) codes.resize(random() % codes.size());
        const unsigned codeSize = round % 16 == 0 ? static_cast<unsigned>(random() % 14) : depth;
        for (const std::size_t wanted : {count - 1, count, count + 1}) {
            const bool isWhole = lzwDescribes(codes, codeSize, wanted);
            ASSERT_EQ(isWhole, static_cast<bool>(LzwIndexes(codes, codeSize, wanted))) << round;
            whole += isWhole ? 1 : 0;
        }
    }
    EXPECT_TRUE(whole > 1000 && whole < 14'000) << whole;
}

} // namespace
} // namespace pixkit
// SPDX-License-Identifier: MIT
