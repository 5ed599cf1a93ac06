#include "coding/lzw/LzwEncoder.h"
#include "coding/BitWriter.h"
#include "coding/ByteWriter.h"
#include "coding/Hash.h"
#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace pixkit {

namespace {

constexpr unsigned longestCode = 12;
constexpr unsigned mostCodes = 1U << longestCode;
constexpr std::size_t bytesOfCode = 2; // at most
constexpr std::size_t longestSubBlock = 255;

// The strings that have a code: a code for the string without its last index, and that index, lead to the code for the
// whole. A small table of hashed strings, which stays in the cache, serves until some string is more than a few slots
// from its place, as it may be in pictures that were made for that: from then on each string has a place of its own.
class Dictionary {
  public:
    static constexpr unsigned none = 0xFFFFFFFF;

    void clear() noexcept {
        for (; m_used != 0; --m_used)
            m_codeOf[m_slots[m_used - 1]] = noCode;
        m_slots.fill(none);
    }

    unsigned find(unsigned prefix, unsigned index) {
        const std::uint32_t key = prefix << 8 | index;
        if (!m_codeOf) {
            std::size_t slot = first(key);
            for (unsigned step = 0; step < mostSteps; ++step, slot = (slot + 1) % slots) {
                if (m_slots[slot] == none) return none;
                if (m_slots[slot] >> longestCode == key) return m_slots[slot] & (mostCodes - 1);
            }
            spreadOut();
        }
        return m_codeOf[key] == noCode ? none : m_codeOf[key];
    }
    // A string that was looked for and is not there yet.
    void add(unsigned prefix, unsigned index, unsigned code) noexcept {
        const std::uint32_t key = prefix << 8 | index;
        if (m_codeOf) {
            put(key, code);
            return;
        }
        std::size_t slot = first(key);
        while (m_slots[slot] != none)
            slot = (slot + 1) % slots;
        m_slots[slot] = key << longestCode | code;
    }

  private:
    static constexpr unsigned slotBits = longestCode + 1; // twice the most entries
    static constexpr std::size_t slots = std::size_t{1} << slotBits;
    static constexpr unsigned mostSteps = 32; // one picture in thousands has a string so far from its place
    static constexpr std::size_t keys = std::size_t{1} << (longestCode + 8);
    static constexpr std::uint16_t noCode = 0xFFFF;

    static std::size_t first(std::uint32_t key) noexcept { return spreadHash<slotBits>(key); }
    void put(std::uint32_t key, unsigned code) noexcept {
        m_codeOf[key] = static_cast<std::uint16_t>(code);
        m_slots[m_used++] = key;
    }
    void spreadOut() {
        m_codeOf = std::make_unique_for_overwrite<std::uint16_t[]>(keys);
        std::fill_n(m_codeOf.get(), keys, noCode);
        for (const std::uint32_t entry : std::exchange(m_slots, {}))
            if (entry != none) put(entry >> longestCode, entry & (mostCodes - 1));
    }

    // 20 bits of key, 12 of code. Never all ones: no string has a code that its own prefix has. Once strings have
    // places of their own, the keys of those that are there.
    std::array<std::uint32_t, slots> m_slots;
    std::size_t m_used = 0; // of m_slots, then
    std::unique_ptr<std::uint16_t[]> m_codeOf;
};

class Compressor {
  public:
    Compressor(std::span<const std::uint8_t> indexes, unsigned depth, std::vector<std::uint8_t>& out)
        : m_indexes(indexes), m_depth(depth), m_codes(out) {}
    void run();

  private:
    // A stretch of indexes as codes, and what they cost.
    struct Stretch {
        std::vector<std::uint16_t> codes;
        std::size_t end = 0; // behind its last index
        std::uint64_t bits = 0;
    };

    unsigned clearCode() const noexcept { return 1U << m_depth; }
    void codeAfresh(std::size_t from, Dictionary& dictionary, Stretch& stretch) const;
    // The code of the longest string at `at` that the dictionary has; moves `at` behind it.
    unsigned longestString(Dictionary& dictionary, std::size_t& at) const {
        unsigned code = m_indexes[at++];
        while (at < m_indexes.size()) {
            const unsigned longer = dictionary.find(code, m_indexes[at]);
            if (longer == Dictionary::none) break;
            code = longer;
            ++at;
        }
        return code;
    }
    bool codeOn(std::size_t from, Dictionary& dictionary, const Stretch& rival, Stretch& stretch) const;
    void writeAfresh(const Stretch& stretch);
    void put(unsigned code, unsigned size) noexcept {
        m_codes.put(code, size);
        m_codes.flush();
    }

    std::span<const std::uint8_t> m_indexes;
    unsigned m_depth;
    BitWriter m_codes;
    unsigned m_size = 0; // of the next code
};

// Codes from a clear code on, until the dictionary is full or the indexes end.
void Compressor::codeAfresh(std::size_t from, Dictionary& dictionary, Stretch& stretch) const {
    dictionary.clear();
    stretch.codes.clear();
    unsigned size = m_depth + 1;
    stretch.bits = size; // the clear code
    unsigned next = clearCode() + 2;
    std::size_t at = from;
    while (at < m_indexes.size() && next < mostCodes) {
        const unsigned code = longestString(dictionary, at);
        stretch.codes.push_back(static_cast<std::uint16_t>(code));
        stretch.bits += size;
        if (at < m_indexes.size()) dictionary.add(code, m_indexes[at], next);
        if (next == 1U << size) ++size;
        ++next;
    }
    stretch.end = at;
}

// Codes with a full dictionary up to where the rival ended. False as soon as that is known to be dearer for its length.
bool Compressor::codeOn(std::size_t from, Dictionary& dictionary, const Stretch& rival, Stretch& stretch) const {
    stretch.codes.clear();
    stretch.bits = 0;
    std::size_t at = from;
    while (at < rival.end) {
        const unsigned code = longestString(dictionary, at);
        stretch.codes.push_back(static_cast<std::uint16_t>(code));
        stretch.bits += longestCode;
        if (stretch.bits > rival.bits + longestCode) return false;
    }
    stretch.end = at;
    return stretch.bits * (rival.end - from) <= rival.bits * (at - from);
}

void Compressor::writeAfresh(const Stretch& stretch) {
    m_codes.reserve((stretch.codes.size() + 1) * bytesOfCode);
    put(clearCode(), m_size);
    m_size = m_depth + 1;
    unsigned next = clearCode() + 2;
    for (const unsigned code : stretch.codes) {
        put(code, m_size);
        // The reader makes an entry for every code but the first, one code later than the writer.
        if (next == 1U << m_size && m_size < longestCode) ++m_size;
        ++next;
    }
}

// Wherever the dictionary is full, both ways of going on are worked out: to keep it as it is, or to clear it and build
// a new one. They are compared over the indexes that fill the new one, and the one that takes fewer bits is written.
void Compressor::run() {
    auto current = std::make_unique<Dictionary>(), fresh = std::make_unique<Dictionary>();
    Stretch afresh, onward;
    m_size = m_depth + 1;
    codeAfresh(0, *current, afresh);
    writeAfresh(afresh);
    for (std::size_t at = afresh.end; at < m_indexes.size();) {
        codeAfresh(at, *fresh, afresh);
        if (codeOn(at, *current, afresh, onward)) {
            m_codes.reserve(onward.codes.size() * bytesOfCode);
            for (const unsigned code : onward.codes)
                put(code, longestCode);
            at = onward.end;
        } else {
            writeAfresh(afresh);
            at = afresh.end;
            std::swap(current, fresh);
        }
    }
    m_codes.reserve(bytesOfCode);
    put(clearCode() + 1, m_size); // the end
    m_codes.alignToByte();
    m_codes.finish();
}

} // namespace

void gifCompress(std::span<const std::uint8_t> indexes, unsigned depth, std::vector<std::uint8_t>& out) {
    depth = std::max(depth, 2U); // the format has no codes of two bits
    std::vector<std::uint8_t> codes;
    codes.reserve(indexes.size() / 2);
    Compressor(indexes, depth, codes).run();
    out.reserve(out.size() + codes.size() + codes.size() / longestSubBlock + 3);
    ByteWriter data(out);
    data.byte(depth);
    for (std::span<const std::uint8_t> rest(codes); !rest.empty();) {
        const auto block = rest.first(std::min(longestSubBlock, rest.size()));
        data.byte(block.size());
        data.bytes(block);
        rest = rest.subspan(block.size());
    }
    data.byte(0);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
