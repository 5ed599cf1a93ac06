#include "coding/deflate/Inflate.h"

#include "coding/deflate/StreamWriter.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

using namespace deflate_test;
using pixkit::deflate::Outcome;
using pixkit::deflate::Result;

struct Inflated {
    Outcome outcome;
    Bytes data;
};

using Inflate = decltype(&pixkit::deflate::inflate);

// Inflates between guard bytes; the stream is a heap block of its exact size, for the address sanitizer to watch.
Inflated run(const Bytes& stream, std::size_t capacity, Inflate inflate = pixkit::deflate::inflate) {
    constexpr std::size_t guard = 64;
    const auto input = std::make_unique<std::uint8_t[]>(stream.size());
    std::copy(stream.begin(), stream.end(), input.get());
    Bytes memory(capacity + 2 * guard, 0xA5);
    const Result result = inflate(memory.data() + guard, capacity, input.get(), stream.size());
    const auto at = [&](std::size_t offset) { return memory.begin() + static_cast<std::ptrdiff_t>(offset); };
    EXPECT_LE(result.written, capacity);
    EXPECT_EQ(std::count(at(0), at(guard), 0xA5), 64) << "written before the output";
    EXPECT_EQ(std::count(at(guard + capacity), memory.end(), 0xA5), 64) << "written behind the output";
    return {result.outcome, Bytes(at(guard), at(guard + std::min(result.written, capacity)))};
}

Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes pseudoRandom(std::size_t count, unsigned modulus) {
    Bytes data(count);
    std::uint32_t state = 12345;
    for (auto& byte : data)
        byte = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) / 65536 % modulus);
    return data;
}

// A complete code with literals short enough to share a table entry, and the lengths 3, 10, 227 to 257 and 258.
Lengths letters() {
    Lengths lengths(286, 0);
    lengths['a'] = lengths['b'] = 2;
    for (const unsigned symbol : {99u, 100u, 256u}) // c, d, the end of the block
        lengths[symbol] = 4;
    for (std::size_t symbol = 'e'; symbol <= 'j'; ++symbol)
        lengths[symbol] = 5;
    for (const unsigned symbol : {257u, 264u, 284u, 285u})
        lengths[symbol] = 5;
    return lengths;
}

Lengths allDistances() {
    Lengths lengths(30, 5);
    lengths[0] = lengths[1] = 4;
    return lengths;
}

// A stream together with what it stands for.
struct Sample {
    StreamWriter stream;
    Bytes data;

    Sample& stored(const Bytes& bytes, bool last = false) {
        stream.stored(bytes, last);
        data.insert(data.end(), bytes.begin(), bytes.end());
        return *this;
    }
    Sample& text(std::string_view letters) {
        stream.text(letters);
        data.insert(data.end(), letters.begin(), letters.end());
        return *this;
    }
    Sample& match(unsigned length, unsigned distance) {
        stream.match(length, distance);
        for (unsigned i = 0; i < length; ++i)
            data.push_back(data[data.size() - distance]);
        return *this;
    }
};

// Every kind of block, long enough that the middle is decoded without looking at the ends.
Sample everyKind() {
    Sample sample;
    sample.stored(pseudoRandom(40, 256));
    sample.stream.fixed();
    sample.text("fixed codes").match(30, 12).match(258, 1);
    sample.stream.end().dynamic(letters(), allDistances());
    for (int i = 0; i < 20; ++i)
        sample.text("aabbacabddbcaajaaabbaabh").match(10, 7).text("abcdefghij").match(3, 100);
    sample.match(240, 333).text("b");
    sample.stream.end().stored({}).fixed(true);
    sample.text("tail").match(5, 3);
    sample.stream.end();
    return sample;
}

Bytes withZlibHeader(const Bytes& stream, unsigned first, unsigned second) {
    Bytes wrapped{static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(second)};
    wrapped.insert(wrapped.end(), stream.begin(), stream.end());
    return wrapped;
}

TEST(InflateZlib, AStreamOfAnotherCompressorIsReadWrong) {
    // Made by zlib, the Adler-32 left off: a picture may lack it.
    const Bytes fixed{0x78, 0xda, 0x2b, 0xc9, 0x48, 0x55, 0x28, 0x4e, 0xcc, 0x4d, 0x55, 0x28,
                      0xca, 0x2f, 0xd7, 0x51, 0x28, 0x41, 0xe1, 0x25, 0xe6, 0xe5, 0x03, 0x05,
                      0x8a, 0x40, 0x1c, 0x6b, 0x34, 0x29, 0x6a, 0x28, 0x04, 0x00};
    const std::string row = "the same row, the same row, another row; ";
    EXPECT_EQ(run(fixed, 200, pixkit::deflate::inflateZlib).data, bytesOf(row + row + row));

    const Bytes dynamic{0x78, 0xda, 0x0d, 0xcb, 0xb1, 0x01, 0xc0, 0x40, 0x08, 0xc3, 0xc0, 0x95, 0x80, 0x37,
                        0x04, 0xb4, 0xff, 0x60, 0x71, 0xa5, 0xc2, 0xe7, 0x20, 0x11, 0x47, 0x0e, 0xd5, 0xbc,
                        0x41, 0xc7, 0x88, 0x4d, 0x32, 0x82, 0x2c, 0x57, 0xf2, 0x6a, 0x71, 0x26, 0x36, 0xd5,
                        0xee, 0x1e, 0xaf, 0x64, 0xef, 0xb7, 0x9d, 0xe4, 0xae, 0xe8, 0x3a, 0xfa, 0x1b, 0x7e};
    std::string squares;
    for (int i = 0; i < 25; ++i)
        squares += std::to_string(i * i) + ":";
    EXPECT_EQ(run(dynamic, 200, pixkit::deflate::inflateZlib).data, bytesOf(squares));
}

TEST(Inflate, AStreamThatEndsEarlyLosesOrInventsBytes) {
    const Sample sample = everyKind();
    const Bytes& whole = sample.stream.bytes();
    std::size_t before = 0;
    for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
        const Inflated result =
            run(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(bytes)), sample.data.size() + 400);
        ASSERT_EQ(result.outcome, Outcome::inputEnded) << bytes;
        ASSERT_GE(result.data.size(), before) << bytes;
        ASSERT_TRUE(std::equal(result.data.begin(), result.data.end(), sample.data.begin())) << bytes;
        before = result.data.size();
    }
    EXPECT_EQ(before, sample.data.size()) << "only the end-of-block code was missing";
    EXPECT_EQ(run(whole, sample.data.size() + 400).outcome, Outcome::complete);
}

TEST(Inflate, EverySymbolThatIsWholeIsWritten) {
    StreamWriter stream;
    stream.fixed(true).text("abc"); // 3 + 3 * 8 bits: the fourth byte holds the last three
    for (unsigned bytes = 0; bytes <= 4; ++bytes) {
        const Bytes cut(stream.bytes().begin(), stream.bytes().begin() + bytes);
        EXPECT_EQ(run(cut, 10).data.size(), bytes < 2 ? 0u : bytes - 1) << bytes;
    }
    EXPECT_EQ(run(StreamWriter().stored(bytesOf("stored")).bytes(), 10).data, bytesOf("stored"));
    Bytes cut = StreamWriter().stored(bytesOf("stored"), true).bytes();
    cut.resize(cut.size() - 2);
    EXPECT_EQ(run(cut, 10).data, bytesOf("stor"));
}

TEST(Inflate, AnOutputThatIsTooShortIsOverrunOrLeftUnfilled) {
    const Sample sample = everyKind();
    for (std::size_t capacity = 0; capacity <= sample.data.size() + 2; ++capacity) {
        const Inflated result = run(sample.stream.bytes(), capacity);
        const bool fits = capacity >= sample.data.size();
        ASSERT_EQ(result.outcome, fits ? Outcome::complete : Outcome::outputFull) << capacity;
        ASSERT_EQ(result.data.size(), std::min(capacity, sample.data.size()));
        ASSERT_TRUE(std::equal(result.data.begin(), result.data.end(), sample.data.begin())) << capacity;
    }
}

TEST(Inflate, WhatStandsBehindAFullOutputSpoilsIt) {
    const StreamWriter abc = StreamWriter().fixed().text("abc");
    const struct {
        const char* name;
        StreamWriter stream;
        Outcome outcome;
    } rows[] = {
        {"nothing", abc, Outcome::outputFull},
        {"a literal", StreamWriter(abc).text("d"), Outcome::outputFull},
        {"a distance too far back", StreamWriter(abc).match(3, 4), Outcome::outputFull},
        {"an unused length symbol", StreamWriter(abc).literal(286), Outcome::outputFull},
        {"no further block", StreamWriter(abc).end(), Outcome::outputFull},
        {"an impossible block", StreamWriter(abc).end().bits(7, 3), Outcome::outputFull},
        {"an empty last block", StreamWriter(abc).end().stored({}).fixed(true).end(), Outcome::complete},
    };
    for (const auto& row : rows) {
        const Inflated result = run(row.stream.bytes(), 3);
        EXPECT_EQ(result.outcome, row.outcome) << row.name;
        EXPECT_EQ(result.data, bytesOf("abc")) << row.name;
    }
}

TEST(Inflate, OverlappingMatchesRepeatTheWrongBytes) {
    const Bytes start = pseudoRandom(300, 256);
    for (unsigned distance = 1; distance <= 70; ++distance) {
        for (unsigned length : {3u, 4u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 32u, 33u, 64u, 65u, 100u, 257u, 258u}) {
            Sample sample;
            sample.stored(start);
            sample.stream.fixed(true);
            sample.match(length, distance).match(5, distance + length).text("z");
            sample.stream.end();
            // Room and data behind it: copied in wide steps. Neither: byte by byte.
            Bytes padded = sample.stream.bytes();
            padded.resize(padded.size() + 100);
            ASSERT_EQ(run(padded, sample.data.size() + 1000).data, sample.data) << distance << " " << length;
            ASSERT_EQ(run(sample.stream.bytes(), sample.data.size()).data, sample.data) << distance << " " << length;
        }
    }
}

TEST(Inflate, TheFarthestDistanceIsMissedOrExceeded) {
    const Bytes window = pseudoRandom(32768, 256);
    for (unsigned before : {32767u, 32768u}) {
        for (std::size_t padding : {0u, 100u}) {
            Sample sample;
            sample.stored(Bytes(window.begin(), window.begin() + before));
            StreamWriter stream = sample.stream;
            stream.fixed(true).match(258, 32768).end();
            Bytes padded = stream.bytes();
            padded.resize(padded.size() + padding);
            const Inflated result = run(padded, 40000);
            ASSERT_EQ(result.outcome, before == 32768 ? Outcome::complete : Outcome::damaged);
            ASSERT_EQ(result.data.size(), before == 32768 ? before + 258 : before);
            const Bytes copied(result.data.begin() + before, result.data.end());
            EXPECT_TRUE(std::equal(copied.begin(), copied.end(), window.begin()));
        }
    }
}

TEST(Inflate, LiteralsThatShareAnEntryAreLostOrSwapped) {
    // Entries are shared only where much data follows, whatever it is.
    Sample sample;
    sample.stream.dynamic(letters(), allDistances(), true);
    const Bytes choice = pseudoRandom(5000, 15);
    for (std::uint8_t c : choice)
        sample.text(std::string(1, "aaaaabbbbcdefgj"[c]));
    sample.match(250, 4000);
    sample.stream.end();
    Bytes padded = sample.stream.bytes();
    padded.resize(padded.size() + 20000);
    for (std::size_t less : {0u, 1u, 2u, 249u, 250u, 251u, 252u, 600u}) {
        const std::size_t capacity = sample.data.size() - less;
        const Bytes expected(sample.data.begin(), sample.data.begin() + static_cast<std::ptrdiff_t>(capacity));
        EXPECT_EQ(run(padded, capacity).data, expected) << less;
        EXPECT_EQ(run(sample.stream.bytes(), capacity).data, expected) << less;
    }
}

TEST(Inflate, CodesOfEveryLengthAreConfused) {
    // Codes of 1 to 15 bits, through tables and subtables; the far distances have 28 bits with their extra bits.
    Lengths literals = staircase(286, 0, 19); // symbols 0, 19, ... 285
    std::swap(literals[256], literals[247]);
    std::swap(literals[285], literals[38]);
    const struct {
        unsigned firstSymbol;
        std::vector<unsigned> distances;
    } rows[] = {
        {0, {1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64, 96, 128, 192, 256}},
        {14, {129, 256, 384, 500, 700, 1000, 1500, 2000, 3000, 4000, 6000, 8000, 12000, 16000, 24000, 24577, 32768}},
    };
    for (const auto& row : rows) {
        Sample sample;
        sample.stored(pseudoRandom(32800, 256));
        sample.stream.dynamic(literals, staircase(30, row.firstSymbol, 1), true);
        for (unsigned distance : row.distances) {
            for (std::size_t symbol = 0; symbol < 256; ++symbol)
                if (literals[symbol] != 0) sample.text(std::string(1, static_cast<char>(symbol)));
            sample.match(258, distance);
        }
        sample.stream.end();
        EXPECT_EQ(run(sample.stream.bytes(), sample.data.size() + 1000).data, sample.data) << row.firstSymbol;
        EXPECT_EQ(run(sample.stream.bytes(), sample.data.size()).data, sample.data) << row.firstSymbol;
    }
}

TEST(Inflate, TheLargestTablesAreOverrun) {
    // The code lengths that need most entries for subtables, with 286 literal/length and 29 distance symbols.
    const auto lengthsOf = [](std::initializer_list<std::pair<int, std::uint8_t>> counts) {
        Lengths lengths;
        for (const auto& [count, bits] : counts)
            lengths.insert(lengths.end(), static_cast<std::size_t>(count), bits);
        return lengths;
    };
    const Lengths literals = lengthsOf({{1, 1}, {1, 2}, {1, 3}, {1, 4}, {232, 12}, {47, 13}, {1, 14}, {2, 15}});
    const Lengths distances = lengthsOf(
        {{1, 1}, {1, 2}, {1, 3}, {1, 4}, {1, 5}, {13, 9}, {5, 10}, {1, 11}, {1, 12}, {1, 13}, {1, 14}, {2, 15}});
    Sample sample;
    sample.stored(pseudoRandom(32768, 256));
    sample.stream.dynamic(literals, distances, true);
    for (int byte = 0; byte < 256; ++byte)
        sample.text(std::string(1, static_cast<char>(byte)));
    for (unsigned distance = 1; distance <= 16384; distance = distance * 5 / 4 + 1)
        sample.match(3, distance).match(258, distance);
    sample.stream.end();
    EXPECT_EQ(run(sample.stream.bytes(), sample.data.size() + 1000).data, sample.data);
}

// The head of a dynamic block up to its code length code: HLIT, HDIST and 19 three-bit lengths in the order of RFC
// 1951.
StreamWriter head(const Lengths& codeLengths, unsigned distances = 1) {
    StreamWriter stream;
    stream.bits(5, 3).counts(257, distances, 19);
    static constexpr std::uint8_t order[] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
    for (const std::uint8_t symbol : order)
        stream.bits(codeLengths[symbol], 3);
    return stream;
}

Lengths lengthsWith(std::size_t symbols, std::initializer_list<std::pair<std::size_t, unsigned>> used) {
    Lengths lengths(symbols, 0);
    for (const auto& [symbol, bits] : used)
        lengths[symbol] = static_cast<std::uint8_t>(bits);
    return lengths;
}

TEST(Inflate, ADamagedStreamIsAcceptedOrAnOddOneRefused) {
    const Lengths repeats = lengthsWith(19, {{0, 2}, {1, 2}, {16, 2}, {18, 2}}); // codes 00, 01, 10, 11
    const Lengths one = lengthsWith(257, {{'a', 1}, {256, 1}}), none(1, 0);
    const Lengths oneWithMatch = lengthsWith(258, {{'a', 1}, {256, 2}, {257, 2}});
    const auto repeat = [&](StreamWriter stream, std::size_t symbol, unsigned value, unsigned bits) {
        return stream.huffman(repeats, symbol).bits(value, bits);
    };
    // Symbols 0 to 254 are not used: 138 and 117 zeros.
    const auto zeros = [&](unsigned distances) {
        return repeat(repeat(head(repeats, distances), 18, 127, 7), 18, 106, 7);
    };
    const struct {
        const char* name;
        StreamWriter stream;
        Outcome outcome;
        std::string written;
    } rows[] = {
        {"nothing", StreamWriter(), Outcome::inputEnded, ""},
        {"block type 3", StreamWriter().bits(7, 3), Outcome::damaged, ""},
        {"stored: complement wrong", StreamWriter().bits(1, 3).align().bits(1, 16).bits(0xffff, 16), Outcome::damaged,
         ""},
        {"stored: complement cut", StreamWriter().bits(1, 3).align().bits(1, 16).bits(0xfe, 8), Outcome::inputEnded,
         ""},
        {"fixed: length symbol 286", StreamWriter().fixed(true).text("a").literal(286), Outcome::damaged, "a"},
        {"fixed: length symbol 287", StreamWriter().fixed(true).text("a").literal(287), Outcome::damaged, "a"},
        {"fixed: distance symbol 30", StreamWriter().fixed(true).text("a").literal(257).distance(30), Outcome::damaged,
         "a"},
        {"fixed: distance symbol 31", StreamWriter().fixed(true).text("a").literal(257).distance(31), Outcome::damaged,
         "a"},
        {"distance before the start", StreamWriter().fixed(true).text("a").match(3, 2), Outcome::damaged, "a"},
        {"match at the very start", StreamWriter().fixed(true).match(3, 1), Outcome::damaged, ""},
        {"286 literal symbols",
         StreamWriter().dynamic(lengthsWith(286, {{'a', 1}, {256, 1}}), none, true).text("a").end(), Outcome::complete,
         "a"},
        {"287 literal symbols",
         StreamWriter().dynamic(lengthsWith(287, {{'a', 1}, {256, 1}}), none, true).text("a").end(), Outcome::damaged,
         ""},
        {"30 distance symbols", StreamWriter().dynamic(one, Lengths(30, 0), true).text("a").end(), Outcome::complete,
         "a"},
        {"31 distance symbols", StreamWriter().dynamic(one, Lengths(31, 0), true).text("a").end(), Outcome::damaged,
         ""},
        {"code lengths over-subscribed", head(lengthsWith(19, {{0, 1}, {1, 1}, {2, 1}})), Outcome::damaged, ""},
        {"code lengths incomplete", head(lengthsWith(19, {{0, 2}, {1, 2}, {18, 2}})), Outcome::damaged, ""},
        {"code lengths: a single code", head(lengthsWith(19, {{1, 1}})), Outcome::damaged, ""},
        {"code lengths: no code, cut", head(Lengths(19, 0)), Outcome::inputEnded, ""},
        {"code lengths: no code", head(Lengths(19, 0)).stored(Bytes(40)), Outcome::damaged, ""},
        {"repeat without a length before", repeat(head(repeats), 16, 0, 2), Outcome::damaged, ""},
        {"zeros beyond the last symbol", repeat(zeros(1), 18, 0, 7), Outcome::damaged, ""},
        {"repeat from literals into distances", repeat(zeros(2).huffman(repeats, 1), 16, 0, 2).bits(1, 1),
         Outcome::complete, ""},
        {"repeat beyond the distances", repeat(zeros(1).huffman(repeats, 1), 16, 0, 2), Outcome::damaged, ""},
        {"no end-of-block code", StreamWriter().dynamic(lengthsWith(257, {{'a', 1}, {'b', 1}}), none), Outcome::damaged,
         ""},
        {"literals over-subscribed", StreamWriter().dynamic(lengthsWith(257, {{'a', 1}, {'b', 1}, {256, 1}}), none),
         Outcome::damaged, ""},
        {"literals incomplete", StreamWriter().dynamic(lengthsWith(257, {{'a', 2}, {'b', 2}, {256, 2}}), none),
         Outcome::damaged, ""},
        {"end-of-block code alone, one bit", StreamWriter().dynamic(lengthsWith(257, {{256, 1}}), none, true).end(),
         Outcome::complete, ""},
        {"its other bit", StreamWriter().dynamic(lengthsWith(257, {{256, 1}}), none, true).bits(1, 1), Outcome::damaged,
         ""},
        {"end-of-block code alone, two bits", StreamWriter().dynamic(lengthsWith(257, {{256, 2}}), none, true).end(),
         Outcome::damaged, ""},
        {"distances over-subscribed", StreamWriter().dynamic(one, {1, 1, 1}), Outcome::damaged, ""},
        {"distances incomplete", StreamWriter().dynamic(one, {2, 2, 2}), Outcome::damaged, ""},
        {"a distance of two bits alone", StreamWriter().dynamic(one, {2}), Outcome::damaged, ""},
        {"a distance of one bit alone", StreamWriter().dynamic(oneWithMatch, {1}, true).text("a").match(3, 1).end(),
         Outcome::complete, "aaaa"},
        {"its other bit", StreamWriter().dynamic(oneWithMatch, {1}, true).text("a").literal(257).bits(1, 1),
         Outcome::damaged, "a"},
        {"no distances, none used", StreamWriter().dynamic(oneWithMatch, none, true).text("a").end(), Outcome::complete,
         "a"},
        {"no distances, one used", StreamWriter().dynamic(oneWithMatch, none, true).text("a").literal(257).bits(0, 1),
         Outcome::damaged, "a"},
    };
    for (const auto& row : rows) {
        // Once with nothing behind the stream, once with so much that it is decoded without looking at the ends.
        for (std::size_t padding : {0u, 64u}) {
            if (padding != 0 && row.outcome == Outcome::inputEnded) continue;
            Bytes stream = row.stream.bytes();
            stream.resize(stream.size() + padding);
            const Inflated result = run(stream, padding == 0 ? 20 : 1000);
            EXPECT_EQ(result.outcome, row.outcome) << row.name << ", padding " << padding;
            EXPECT_EQ(result.data, bytesOf(row.written)) << row.name << ", padding " << padding;
        }
    }
}

TEST(InflateZlib, AHeaderIsJudgedOtherwiseThanByZlib) {
    const Bytes body = StreamWriter().fixed(true).text("pixels").end().bytes();
    const struct {
        const char* name;
        unsigned first, second;
        Outcome outcome;
    } rows[] = {
        {"32 K window", 0x78, 0x9c, Outcome::complete},   {"256 byte window", 0x08, 0x1d, Outcome::complete},
        {"64 K window", 0x88, 0x1c, Outcome::damaged},    {"method 7", 0x77, 0x9f, Outcome::damaged},
        {"checksum wrong", 0x78, 0x9d, Outcome::damaged}, {"preset dictionary", 0x78, 0x20, Outcome::damaged},
        {"any level", 0x78, 0xda, Outcome::complete},
    };
    for (const auto& row : rows) {
        const Inflated result = run(withZlibHeader(body, row.first, row.second), 10, pixkit::deflate::inflateZlib);
        EXPECT_EQ(result.outcome, row.outcome) << row.name;
        EXPECT_EQ(result.data, row.outcome == Outcome::complete ? bytesOf("pixels") : Bytes{}) << row.name;
    }
    for (std::size_t bytes : {0u, 1u, 2u})
        EXPECT_EQ(run(Bytes(bytes, 0x78), 0, pixkit::deflate::inflateZlib).outcome,
                  bytes < 2 ? Outcome::inputEnded : Outcome::damaged);
}

} // namespace
