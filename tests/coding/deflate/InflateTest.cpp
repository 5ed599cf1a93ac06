// Streams of every kind, right ones and wrong ones, stand in tests/data/inflate.txt with what each must give. Streams
// that other compressors made, and what damage makes of them, are tests/oracle's.
#include "coding/deflate/Inflate.h"
#include "support/InflateInPieces.h"
#include "support/Ledger.h"
#include <gtest/gtest.h>
#include <memory>

namespace pixkit::deflate {
namespace {

using test::Bytes;

// How much may follow a stream: nothing; enough for the loop that does not look at the ends; so much that literals
// share entries.
constexpr std::size_t paddings[] = {0, 64, 20000};

struct Row {
    std::string name, format, room, outcome, output;
    Bytes stream;

    bool isComplete() const { return outcome == "complete" && room == "any"; }
};

Bytes fromHex(const std::string& digits) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::vector<Row> allRows() {
    std::vector<Row> rows;
    std::ifstream file(test::sourceFolder() / "tests" / "data" / "inflate.txt");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        const std::size_t end = line.find(" | ");
        Row row;
        row.name = line.substr(0, end);
        std::string stream;
        std::istringstream(line.substr(end + 3)) >> row.format >> row.room >> row.outcome >> row.output >> stream;
        row.stream = fromHex(stream);
        rows.push_back(row);
    }
    EXPECT_GT(rows.size(), 70U);
    return rows;
}

struct Inflated {
    std::string outcome;
    Bytes data;
};

// Inflates between guard bytes; the stream is a heap block of its exact size, for the address sanitizer to watch.
Inflated run(const Row& row, std::size_t capacity, std::size_t bytes, std::size_t padding = 0) {
    constexpr std::size_t guard = 64;
    const auto input = std::make_unique<std::uint8_t[]>(bytes + padding);
    std::copy_n(row.stream.begin(), bytes, input.get());
    Bytes memory(capacity + 2 * guard, 0xA5);
    const auto function = row.format == "zlib" ? inflateZlib : inflate;
    const Result result = function(memory.data() + guard, capacity, input.get(), bytes + padding);
    EXPECT_LE(result.written, capacity);
    EXPECT_EQ(std::count(memory.begin(), memory.begin() + guard, 0xA5), guard) << "written before the output";
    EXPECT_EQ(std::count(memory.end() - guard, memory.end(), 0xA5), guard) << "written behind the output";
    Bytes stream = row.format == "zlib" ? Bytes() : Bytes{0x78, 1};
    stream.insert(stream.end(), input.get(), input.get() + bytes + padding);
    for (const std::size_t pieceBytes : {1, 9, 1200}) {
        test::InPieces pieces(stream, pieceBytes, capacity);
        const Result inPieces = pieces.run();
        EXPECT_TRUE(inPieces.outcome == result.outcome && inPieces.written == result.written) << pieceBytes;
        EXPECT_TRUE(std::equal(pieces.output.begin(), pieces.output.end(), memory.begin() + guard)) << pieceBytes;
    }
    constexpr const char* outcomes[] = {"complete", "outputFull", "inputEnded", "damaged"};
    memory.erase(memory.begin(), memory.begin() + guard);
    memory.resize(std::min(result.written, capacity));
    return {outcomes[static_cast<int>(result.outcome)], memory};
}

std::string described(const Bytes& data, const std::string& like) {
    if (like.find('/') != std::string::npos) return std::to_string(data.size()) + "/" + test::checksum(data);
    std::ostringstream digits;
    for (const unsigned byte : data)
        digits << std::hex << std::setfill('0') << std::setw(2) << byte;
    return data.empty() ? "-" : digits.str();
}

bool isBeginning(const Bytes& data, const Bytes& whole) {
    return data.size() <= whole.size() && std::equal(data.begin(), data.end(), whole.begin());
}

// Some hundred numbers below `count`, all of them where they are few.
template <class Use>
void forSomeBelow(std::size_t count, Use use) {
    for (std::size_t i = 0; i < count; i += std::max<std::size_t>(1, count / 300))
        use(i);
}

TEST(Inflate, AStreamIsJudgedOtherwiseOrGivesOtherBytes) {
    for (const Row& row : allRows()) {
        for (const std::size_t padding : paddings) {
            if (padding != 0 && row.outcome == "inputEnded") continue;
            SCOPED_TRACE(row.name + ", padding " + std::to_string(padding));
            const std::size_t room = row.room == "any" ? 50'000 : std::stoul(row.room);
            const Inflated result = run(row, room, row.stream.size(), padding);
            EXPECT_EQ(result.outcome, row.outcome);
            EXPECT_EQ(described(result.data, row.output), row.output);
        }
    }
}

TEST(Inflate, AnOutputThatIsTooShortIsOverrunOrLeftUnfilled) {
    for (const Row& row : allRows()) {
        if (!row.isComplete()) continue;
        const Bytes whole = run(row, 50'000, row.stream.size()).data;
        for (const std::size_t padding : paddings) {
            SCOPED_TRACE(row.name + ", padding " + std::to_string(padding));
            forSomeBelow(whole.size(), [&](std::size_t capacity) {
                const Inflated result = run(row, capacity, row.stream.size(), padding);
                EXPECT_EQ(result.outcome, "outputFull") << capacity;
                EXPECT_TRUE(result.data.size() == capacity && isBeginning(result.data, whole)) << capacity;
            });
            EXPECT_EQ(run(row, whole.size(), row.stream.size(), padding).outcome, "complete");
        }
    }
}

TEST(Inflate, AStreamThatEndsEarlyLosesOrInventsBytes) {
    for (const Row& row : allRows()) {
        if (!row.isComplete()) continue;
        SCOPED_TRACE(row.name);
        const Bytes whole = run(row, 50'000, row.stream.size()).data;
        std::size_t before = 0;
        forSomeBelow(row.stream.size(), [&](std::size_t bytes) {
            const Inflated result = run(row, whole.size() + 400, bytes);
            EXPECT_EQ(result.outcome, "inputEnded") << bytes;
            EXPECT_TRUE(result.data.size() >= before && isBeginning(result.data, whole)) << bytes;
            before = result.data.size();
        });
    }
}

} // namespace
} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
