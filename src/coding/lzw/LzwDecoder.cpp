// Every string of the table is the one before it and one index more, and both were written next to each other when they
// were decoded: a table entry is therefore only a place in the output and a length, and a code is one copy from there.
#include "coding/lzw/LzwDecoder.h"
#include <algorithm>
#include <bit>
#include <cstring>

namespace pixkit::platform {

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

// Codes of changing width out of a stream of bits, low bits first.
class CodeReader {
  public:
    // `bytes` must be readable for 8 more.
    explicit CodeReader(std::span<const std::uint8_t> bytes) noexcept
        : m_bytes(bytes.data()), m_end(bytes.size() * 8) {}

    // Past the end the bits are undefined, and isPastEnd says so.
    std::size_t next(unsigned width) noexcept {
        std::uint64_t bits = 0;
        std::memcpy(&bits, m_bytes + std::min(m_position, m_end) / 8, sizeof bits);
        static_assert(std::endian::native == std::endian::little);
        const auto code = static_cast<std::size_t>(bits >> m_position % 8) & ((std::size_t{1} << width) - 1);
        m_position += width;
        return code;
    }
    bool isPastEnd() const noexcept { return m_position > m_end; }

  private:
    const std::uint8_t* m_bytes;
    std::size_t m_position = 0; // in bits
    std::size_t m_end;
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

// Writes strings from `output + alphabet` on until `end` is reached, and not more than one string beyond.
bool decode(CodeReader& codes, unsigned codeSize, std::uint8_t* output, std::size_t end) noexcept {
    const std::size_t clear = std::size_t{1} << codeSize;
    const std::size_t endCode = clear + 1;
    Entry table[tableSize];
    for (std::size_t i = 0; i < clear; ++i)
        table[i] = {static_cast<std::uint32_t>(i % alphabet), 1};
    table[clear] = table[endCode] = {0, 0};

    std::size_t next = endCode + 1; // the entry that is made next
    unsigned width = codeSize + 1;
    bool fresh = true; // no string yet since the table was cleared
    std::size_t place = alphabet;
    Entry last{};
    while (place < end) {
        const std::size_t code = codes.next(width);
        if (codes.isPastEnd()) return false;
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
        if (next == std::size_t{1} << width && width < greatestWidth) ++width;
        const Entry string = table[code];
        std::uint8_t* const to = output + place;
        const std::uint8_t* const from = output + string.start;
        copyString(to, from, string.length);
        // The entry just made ends with the index that this copy began with.
        if (from + string.length > to) to[string.length - 1] = to[0];
        last = {static_cast<std::uint32_t>(place), string.length};
        place += string.length;
    }
    return true;
}

} // namespace

LzwPixels::LzwPixels(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count) {
    if (codeSize < lzwSmallestCodeSize || codeSize > lzwGreatestCodeSize) return;
    // A string is at most one index longer than the one before it, and never longer than the table.
    const std::size_t mostCodes = codes.size() * 8 / (codeSize + 1);
    if (count == 0 || count / std::min(mostCodes + 1, tableSize) > mostCodes) return;

    auto readable = std::make_unique_for_overwrite<std::uint8_t[]>(codes.size() + 8);
    std::ranges::copy(codes, readable.get());
    std::memset(readable.get() + codes.size(), 0, 8);
    // A string that begins before the last index may reach beyond it, and so does the last step of its copy.
    auto memory = std::make_unique_for_overwrite<std::uint8_t[]>(alphabet + count + tableSize + copyStep);
    for (std::size_t i = 0; i < alphabet; ++i)
        memory[i] = static_cast<std::uint8_t>(i);
    CodeReader reader({readable.get(), codes.size()});
    if (!decode(reader, codeSize, memory.get(), alphabet + count)) return;
    m_memory = std::move(memory);
    m_pixels = m_memory.get() + alphabet;
}

} // namespace pixkit::platform
