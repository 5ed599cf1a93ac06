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

// A string in the output.
struct Entry {
    std::uint32_t start;
    std::uint32_t length;
};

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

// Follows the codes until they stand for `count` indexes, and not more than one string beyond. They are written from
// `output + alphabet` on, unless they are only counted.
template <Purpose purpose>
bool follow(BitReader codes, unsigned codeSize, std::uint8_t* output, std::size_t count) noexcept {
    const unsigned clear = 1U << codeSize;
    const unsigned endCode = clear + 1;
    Entry table[tableSize];
    for (std::size_t i = 0; i < clear; ++i)
        table[i] = {static_cast<std::uint32_t>(i % alphabet), 1};
    table[clear] = table[endCode] = {0, 0};

    unsigned next = endCode + 1; // the entry that is made next
    unsigned width = codeSize + 1;
    bool fresh = true; // no string yet since the table was cleared
    std::size_t place = alphabet;
    const std::size_t end = alphabet + count;
    Entry last{};
    while (place < end) {
        unsigned code;
        if (!codes.take(width, code)) return false;
        if (code - clear <= 1) {
            if (code == endCode) return false;
            next = endCode + 1;
            width = codeSize + 1;
            fresh = true;
            continue;
        }
        if (fresh) {
            if (code > endCode) return false;
            fresh = false;
        } else if (next < tableSize) {
            // The last string and the first index of this one, which will stand behind it.
            table[next++] = {last.start, last.length + 1};
        }
        if (code >= next) return false;
        if (next == 1U << width && width < greatestWidth) ++width;
        const Entry string = table[code];
        if constexpr (purpose == Purpose::decode) {
            std::uint8_t* const to = output + place;
            const std::uint8_t* const from = output + string.start;
            copyString(to, from, string.length);
            // The entry just made ends with the index that this copy began with.
            if (from + string.length > to) to[string.length - 1] = to[0];
        }
        last = {static_cast<std::uint32_t>(place), string.length};
        place += string.length;
    }
    return true;
}

// A string is at most one index longer than the one before it, and never longer than the table.
bool canDescribe(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count) noexcept {
    if (codeSize < lzwSmallestCodeSize || codeSize > lzwGreatestCodeSize) return false;
    const std::uint64_t mostCodes = std::uint64_t{codes.size()} * 8 / (codeSize + 1);
    return count != 0 && count / std::min<std::uint64_t>(mostCodes + 1, tableSize) <= mostCodes;
}

} // namespace

LzwIndexes::LzwIndexes(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count) {
    if (!canDescribe(codes, codeSize, count)) return;
    // A string that begins before the last index may reach beyond it, and so does the last step of its copy.
    auto memory = std::make_unique_for_overwrite<std::uint8_t[]>(alphabet + count + tableSize + copyStep);
    for (std::size_t i = 0; i < alphabet; ++i)
        memory[i] = static_cast<std::uint8_t>(i);
    if (!follow<Purpose::decode>(BitReader(codes.data(), codes.size()), codeSize, memory.get(), count)) return;
    m_memory = std::move(memory);
    m_indexes = m_memory.get() + alphabet;
}

bool lzwDescribes(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count) noexcept {
    return canDescribe(codes, codeSize, count) &&
           follow<Purpose::count>(BitReader(codes.data(), codes.size()), codeSize, nullptr, count);
}

} // namespace pixkit
