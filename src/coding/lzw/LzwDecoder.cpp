// Every string of the table is the one before it and one index more, and both were written next to each other when they
// were decoded: a table entry is therefore only a place in the output and a length, and a code is one copy from there.
#include "coding/lzw/LzwDecoder.h"
#include "coding/BitReader.h"
#include <algorithm>
#include <cstring>

namespace pixkit {

namespace {

constexpr unsigned greatestWidth = 12; // bits of a code
constexpr std::size_t tableSize = std::size_t{1} << greatestWidth;
constexpr std::size_t copyStep = 16;  // bytes that are copied at once, needed or not
constexpr std::size_t alphabet = 256; // the output begins with every index in turn, where entries of one index point

// A string in the output: where it begins, and its length above that. In one word, since a half of what was just
// written is there sooner than two halves are.
using Entry = std::uint64_t;
constexpr unsigned lengthShift = 32;
constexpr Entry entryOf(std::size_t start, std::uint32_t length) noexcept {
    return start | Entry{length} << lengthShift;
}
constexpr std::uint32_t startOf(Entry entry) noexcept {
    return static_cast<std::uint32_t>(entry);
}
constexpr std::uint32_t lengthOf(Entry entry) noexcept {
    return static_cast<std::uint32_t>(entry >> lengthShift);
}

void copyString(std::uint8_t* to, const std::uint8_t* from, std::size_t length) noexcept {
    const std::uint8_t* const end = to + length;
    do {
        std::uint8_t piece[copyStep]; // read whole before it is written: the string may lie close before its copy
        std::memcpy(piece, from, copyStep);
        std::memcpy(to, piece, copyStep);
        from += copyStep;
        to += copyStep;
    } while (to < end);
}

enum class Purpose : std::uint8_t { decode, count };

// Follows the codes until they stand for `count` indexes, and not more than a few strings beyond. They are written from
// `output + alphabet` on, unless they are only counted.
template <Purpose purpose>
class Follower {
  public:
    Follower(unsigned codeSize, std::uint8_t* output) noexcept
        : m_output(output), m_codeSize(codeSize), m_clear(1U << codeSize) {
        for (std::size_t i = 0; i < m_clear; ++i)
            m_table[i] = entryOf(i % alphabet, 1);
        m_table[m_clear] = m_table[m_clear + 1] = 0;
    }

    bool run(BitReader codes, std::size_t count) noexcept {
        const std::size_t end = alphabet + count;
        Done done;
        clear();
        while (done.place < end) {
            if (!m_isFresh && m_next + codesAtOnce < 1U << m_width) {
                done = takeMany<true>(codes, end, done);
            } else if (!m_isFresh && m_next == tableSize) {
                done = takeMany<false>(codes, end, done);
            }
            if (done.place < end && !takeOne(codes, done)) return false;
        }
        return true;
    }

  private:
    static constexpr unsigned codesAtOnce = BitReader::refilled / greatestWidth;

    struct Done {
        std::size_t place = alphabet;
        Entry last = 0; // the string before that

        // The last string and the first index of the one that comes next, which will stand behind it.
        Entry longer() const noexcept { return last + entryOf(0, 1); }
    };

    void clear() noexcept {
        m_next = m_clear + 2;
        m_width = m_codeSize + 1;
        m_isFresh = true;
    }

    static void write(std::uint8_t* output, Entry string, Done& done) noexcept {
        const std::uint32_t length = lengthOf(string);
        if constexpr (purpose == Purpose::decode) {
            std::uint8_t* const to = output + done.place;
            copyString(to, output + startOf(string), length);
            // An entry just made ends with the index that this copy began with.
            if (startOf(string) + std::size_t{length} > done.place) to[length - 1] = to[0];
        }
        done.last = entryOf(done.place, length);
        done.place += length;
    }

    // Codes, all as wide as the next, up to one that is not a string's or another width: as many at once as a refill
    // brings. What changes from one to the next is held here, since the bytes that are written might be members.
    template <bool grows>
    Done takeMany(BitReader& codes, std::size_t end, Done done) noexcept {
        const unsigned width = m_width, mask = (1U << width) - 1, clear = m_clear;
        unsigned next = m_next, taken = codesAtOnce;
        std::uint8_t* const output = m_output;
        while (taken == codesAtOnce && done.place < end && codes.bytesLeft() >= sizeof(BitReader::Word) &&
               (!grows || next + codesAtOnce < 1U << width)) {
            codes.refillFast();
            BitReader::Word word = codes.peek();
            for (taken = 0; taken < codesAtOnce; ++taken, word >>= width) {
                const unsigned code = static_cast<unsigned>(word) & mask;
                if (grows) m_table[next] = done.longer();
                if (code - clear <= 1 || code >= next + (grows ? 1 : 0)) break;
                next += grows ? 1 : 0;
                write(output, m_table[code], done);
            }
            codes.drop(taken * width);
        }
        m_next = next;
        return done;
    }

    bool takeOne(BitReader& codes, Done& done) noexcept {
        unsigned code;
        if (!codes.take(m_width, code) || code == m_clear + 1) return false;
        if (code == m_clear) {
            clear();
            return true;
        }
        if (m_isFresh) {
            if (code > m_clear) return false;
            m_isFresh = false;
        } else if (m_next < tableSize) {
            m_table[m_next++] = done.longer();
        }
        if (code >= m_next) return false;
        if (m_next == 1U << m_width && m_width < greatestWidth) ++m_width;
        write(m_output, m_table[code], done);
        return true;
    }

    std::uint8_t* m_output;
    unsigned m_codeSize, m_clear;     // the code that clears the table; the next one ends the indexes
    unsigned m_next = 0, m_width = 0; // the entry that is made next; bits of a code
    bool m_isFresh = true;            // no string yet since the table was cleared
    Entry m_table[tableSize];
};

// A string is at most one index longer than the one before it, and never longer than the table.
bool canDescribe(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count) noexcept {
    if (codeSize < lzwSmallestCodeSize || codeSize > lzwGreatestCodeSize) return false;
    const std::uint64_t mostCodes = std::uint64_t{codes.size()} * 8 / (codeSize + 1);
    return count != 0 && count / std::min<std::uint64_t>(mostCodes + 1, tableSize) <= mostCodes;
}

} // namespace

LzwIndexes::LzwIndexes(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count) {
    if (!canDescribe(codes, codeSize, count)) return;
    // Strings of one refill that begin before the last index, or behind it, may reach beyond it, and so does the last
    // step of a copy.
    constexpr std::size_t beyond = (BitReader::refilled / greatestWidth + 1) * tableSize + copyStep;
    auto memory = std::make_unique_for_overwrite<std::uint8_t[]>(alphabet + count + beyond);
    for (std::size_t i = 0; i < alphabet; ++i)
        memory[i] = static_cast<std::uint8_t>(i);
    Follower<Purpose::decode> follower(codeSize, memory.get());
    if (!follower.run(BitReader(codes.data(), codes.size()), count)) return;
    m_memory = std::move(memory);
    m_indexes = m_memory.get() + alphabet;
}

bool lzwDescribes(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count) noexcept {
    return canDescribe(codes, codeSize, count) &&
           Follower<Purpose::count>(codeSize, nullptr).run(BitReader(codes.data(), codes.size()), count);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
