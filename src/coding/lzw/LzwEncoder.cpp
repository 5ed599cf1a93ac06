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

// The strings that have a code: a code for the string without its last index, and that index, are the key of the whole.
// A table of hashed keys serves until some string is more than a few slots from its place, as it may be in pictures
// that were made for that: from then on each key has a slot of its own.
class Dictionary {
  public:
    // 20 bits of key, 12 of the code. Never all ones: no string has a code that its own prefix has.
    using Entry = std::uint32_t;
    static constexpr Entry none = 0xFFFFFFFF;

    // Where a key is, or a free slot for it.
    struct Place {
        Entry* slot;
        Entry entry;
        std::uint32_t isTaken; // all ones, or zeros where the slot is free
    };
    // False where there is no free slot nearby.
    template <bool isSpread>
    bool find(std::uint32_t key, Place& place) noexcept {
        place.slot = isSpread ? &m_spread[key] : &m_hashed[spreadHash<slotBits>(key)];
        look(place);
        if (isSpread || isItsOwn(key, place)) [[likely]]
            return true;
        return findFurther(key, place);
    }
    // Where keys are spread: says which one will have a code if the code comes to be used; the last one that was said
    // holds.
    void keepKey(std::uint32_t key, unsigned code) noexcept { m_keys[code] = key; }
    void clear() noexcept {
        if (!m_spread) {
            m_hashed.fill(none);
            return;
        }
        for (const std::uint32_t key : m_keys)
            m_spread[key] = none;
    }
    // Gives each key a slot of its own; those that are there take theirs where the dictionary is in use.
    void spreadOut(bool isInUse) {
        m_spread = std::make_unique_for_overwrite<Entry[]>(keys);
        std::fill_n(m_spread.get(), keys, none);
        if (!isInUse) return;
        for (const Entry entry : m_hashed) {
            if (entry == none) continue;
            m_spread[entry >> longestCode] = entry;
            keepKey(entry >> longestCode, entry & (mostCodes - 1));
        }
    }

  private:
    static constexpr unsigned slotBits = longestCode + 3; // so that seven in eight are free at least
    static constexpr std::size_t slots = std::size_t{1} << slotBits;
    static constexpr unsigned mostSteps = 32; // one picture in thousands has a string so far from its place
    static constexpr std::size_t keys = std::size_t{1} << (longestCode + 8);

    static void look(Place& place) noexcept {
        place.entry = *place.slot;
        place.isTaken = std::uint32_t{0} - static_cast<std::uint32_t>(place.entry != none);
        asm("" : "+r"(place.isTaken)); // or compilers would make branches that no processor foresees
    }
    static bool isItsOwn(std::uint32_t key, const Place& place) noexcept {
        return ((place.entry >> longestCode ^ key) & place.isTaken) == 0;
    }
    bool findFurther(std::uint32_t key, Place& place) noexcept {
        for (unsigned step = 1; step < mostSteps; ++step) {
            place.slot = &m_hashed[static_cast<std::size_t>(place.slot + 1 - m_hashed.data()) % slots];
            look(place);
            if (isItsOwn(key, place)) return true;
        }
        return false;
    }

    std::array<Entry, slots> m_hashed; // used, as soon as it has been cleared
    std::unique_ptr<Entry[]> m_spread;
    std::uint32_t m_keys[mostCodes] = {}; // of each code, once they are spread
};

class Compressor {
  public:
    Compressor(std::span<const std::uint8_t> indexes, unsigned depth, std::vector<std::uint8_t>& out)
        : m_indexes(indexes), m_depth(depth), m_codes(out) {}
    void run();

  private:
    // A stretch of indexes as codes.
    struct Stretch {
        std::uint16_t codes[mostCodes + 2] = {};
        std::size_t count = 0;
        std::size_t end = 0; // behind its last index
    };

    unsigned clearCode() const noexcept { return 1U << m_depth; }
    unsigned firstAdded() const noexcept { return clearCode() + 2; }
    template <bool isSpread>
    bool code(std::size_t from) noexcept;
    bool isOnwardCheaper(std::size_t from) const noexcept;
    void writeAfresh();
    void put(unsigned code, unsigned size) noexcept {
        m_codes.put(code, size);
        m_codes.flush();
    }

    std::span<const std::uint8_t> m_indexes;
    unsigned m_depth;
    BitWriter m_codes;
    unsigned m_size = 0; // of the next code
    Dictionary m_dictionaries[2];
    Dictionary *m_full = &m_dictionaries[0], *m_fresh = &m_dictionaries[1];
    Stretch m_afresh, m_onward;
};

// With one index more a string becomes longer, which gives its code; or it has ended, and the index begins the next
// one.
inline std::uint32_t codeWith(std::uint32_t index, const Dictionary::Place& place) {
    Dictionary::Entry entry = place.entry;
    asm("" : "+r"(entry)); // a conditional move, of what `place` has said already
    return entry == Dictionary::none ? index : entry & (mostCodes - 1);
}

// Codes indexes from a clear code on, until the dictionary is full or the indexes end; and, behind the first stretch,
// with the full dictionary up to where that was, or until it is known to be dearer. Both at once: neither has to wait
// for the look-ups of the other one. No processor would foresee where strings end, so there is no branch for it. False
// where the dictionaries have to be spread out before.
template <bool isSpread>
bool Compressor::code(std::size_t from) noexcept {
    const std::uint8_t* const indexes = m_indexes.data();
    const std::size_t size = m_indexes.size();
    const std::uint32_t first = firstAdded();
    Dictionary &fresh = *m_fresh, &full = *m_full;
    fresh.clear();
    std::uint32_t freshCode = indexes[from], fullCode = freshCode; // of the strings so far
    std::uint32_t next = first, count = 0;                         // codes of the one, and of the other one
    std::uint32_t isWithinString = 1;                              // of the other one

    const auto stepFresh = [&](std::uint32_t index) {
        const std::uint32_t key = freshCode << 8 | index;
        Dictionary::Place place;
        if (!fresh.find<isSpread>(key, place)) return false;
        m_afresh.codes[next] = static_cast<std::uint16_t>(freshCode);
        if constexpr (isSpread) fresh.keepKey(key, next);
        *place.slot = place.entry & (key << longestCode | next | place.isTaken); // a free one is all ones
        freshCode = codeWith(index, place);
        next += 1 + place.isTaken;
        return true;
    };
    const auto stepFull = [&](std::uint32_t index) {
        Dictionary::Place place;
        if (!full.find<isSpread>(fullCode << 8 | index, place)) return false;
        m_onward.codes[count] = static_cast<std::uint16_t>(fullCode);
        fullCode = codeWith(index, place);
        count += 1 + place.isTaken;
        isWithinString = place.isTaken;
        return true;
    };

    std::size_t at = from + 1;
    while (from != 0 && at < size && next < mostCodes && count < mostCodes) {
        // So many indexes cannot give too many codes.
        std::size_t steps = std::min<std::size_t>({size - at, mostCodes - next, mostCodes - count});
        for (; steps != 0; --steps, ++at)
            if (!stepFresh(indexes[at]) || !stepFull(indexes[at])) return false;
    }
    for (; at < size && next < mostCodes; ++at)
        if (!stepFresh(indexes[at])) return false;
    // The index that filled the dictionary begins the next string.
    const bool isFilled = next == mostCodes;
    m_afresh.end = isFilled ? at - 1 : size;
    if (!isFilled) m_afresh.codes[next++] = static_cast<std::uint16_t>(freshCode);
    m_afresh.count = next - first;

    const bool isLost = from == 0 || count == mostCodes; // whatever has so many codes is dearer
    for (; isFilled && !isLost && at < size && isWithinString != 0; ++at)
        if (!stepFull(indexes[at])) return false;
    m_onward.end = isFilled && isWithinString == 0 ? at - 1 : size;
    if (m_onward.end == size) m_onward.codes[count++] = static_cast<std::uint16_t>(fullCode);
    m_onward.count = isLost ? mostCodes : count;
    return true;
}

// What a stretch with a new dictionary takes, and what it takes with the full one, for their lengths.
bool Compressor::isOnwardCheaper(std::size_t from) const noexcept {
    unsigned size = m_depth + 1;
    std::uint64_t afresh = size; // the clear code
    std::size_t next = firstAdded();
    for (std::size_t left = m_afresh.count; left != 0; ++size) {
        const std::size_t codes = std::min(left, (std::size_t{1} << size) - next + 1);
        afresh += codes * size;
        next += codes;
        left -= codes;
    }
    const std::uint64_t onward = std::uint64_t{m_onward.count} * longestCode;
    return onward <= afresh + longestCode && onward * (m_afresh.end - from) <= afresh * (m_onward.end - from);
}

void Compressor::writeAfresh() {
    m_codes.reserve((m_afresh.count + 1) * bytesOfCode);
    put(clearCode(), m_size);
    m_size = m_depth + 1;
    unsigned next = firstAdded();
    for (std::size_t i = 0; i < m_afresh.count; ++i) {
        put(m_afresh.codes[firstAdded() + i], m_size);
        // The reader makes an entry for every code but the first, one code later than the writer.
        if (next == 1U << m_size && m_size < longestCode) ++m_size;
        ++next;
    }
}

// Wherever the dictionary is full, both ways of going on are worked out: to keep it as it is, or to clear it and build
// a new one. They are compared over the indexes that fill the new one, and the one that takes fewer bits is written.
void Compressor::run() {
    m_size = m_depth + 1;
    bool isSpread = false;
    for (std::size_t at = 0; at < m_indexes.size();) {
        if (!isSpread && !code<false>(at)) {
            isSpread = true;
            m_full->spreadOut(at != 0);
            m_fresh->spreadOut(false);
        }
        if (isSpread) code<true>(at);
        if (at != 0 && isOnwardCheaper(at)) {
            m_codes.reserve(m_onward.count * bytesOfCode);
            for (std::size_t i = 0; i < m_onward.count; ++i)
                put(m_onward.codes[i], longestCode);
            at = m_onward.end;
        } else {
            writeAfresh();
            at = m_afresh.end;
            std::swap(m_full, m_fresh);
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
    std::make_unique<Compressor>(indexes, depth, codes)->run();
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
