// Reads bits of which the first is the lowest of the first byte: those of DEFLATE (RFC 1951, 3.1.1) and of GIF.
#pragma once
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace pixkit {

// Little-endian load from any address; compilers make one instruction of it.
template <typename Word>
inline Word loadWord(const std::uint8_t* from) noexcept {
    static_assert(std::endian::native == std::endian::little);
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

// Bits wait in a machine word, the next one lowest. Above the `count` bits that belong to the reader the word may hold
// further bits of the stream; they are the right ones, and a refill puts the same ones over them again.
class BitReader {
  public:
    // The widest word that one instruction shifts: 64 bits, in 32-bit programs 32.
    using Word = std::size_t;
    static constexpr unsigned wordBits = sizeof(Word) * 8;
    // At least so many bits are there after a refill, unless the data ends.
    static constexpr unsigned refilled = wordBits - 8;

    BitReader(const std::uint8_t* data, std::size_t bytes) noexcept : m_next(data), m_end(data + bytes) {}

    // Refills where at least a word of data is known to follow: no branch, no loop.
    void refillFast() noexcept {
        m_word |= loadWord<Word>(m_next) << count();
        m_next += (~m_count & (wordBits - 1)) >> 3;
        m_count |= refilled;
    }
    // Refills anywhere. Near the end of the data fewer bits may be there; those missing read as zero.
    void refill() noexcept {
        if (bytesLeft() >= sizeof(Word)) {
            refillFast();
            return;
        }
        m_count = count();
        for (; m_count < refilled && m_next != m_end; m_count += 8)
            m_word |= Word{*m_next++} << m_count;
    }

    Word peek() const noexcept { return m_word; }
    unsigned count() const noexcept { return m_count & (wordBits - 1); }
    // Bytes that no refill has taken yet.
    std::size_t bytesLeft() const noexcept { return static_cast<std::size_t>(m_end - m_next); }

    // What stands in `bits` above a word's width does not matter: whoever has more there need not clear it.
    void drop(unsigned bits) noexcept {
        m_word >>= bits & (wordBits - 1);
        m_count -= bits;
    }

    // Takes `bits` (at most 16) bits, refilling as needed; false when the data ends first.
    bool take(unsigned bits, unsigned& value) noexcept {
        if (count() < bits) refill();
        if (count() < bits) return false;
        value = static_cast<unsigned>(m_word & ((Word{1} << bits) - 1));
        drop(bits);
        return true;
    }

    // Goes to the next byte border; whole bytes that a refill took are given back.
    void alignToByte() noexcept {
        m_next -= bytesHeld();
        m_word = 0;
        m_count = 0;
    }
    // The data that no refill has taken yet; what is held too, after alignToByte.
    const std::uint8_t* bytes() const noexcept { return m_next; }
    void skipBytes(std::size_t bytes) noexcept { m_next += bytes; }
    // Before the data that no refill has taken yet there are so many bytes that alignToByte may give back.
    std::size_t bytesHeld() const noexcept { return count() >> 3; }
    // From here on the data is elsewhere: bytesLeft() bytes of it, and those held before them, are the same there.
    void continueAt(const std::uint8_t* next, const std::uint8_t* end) noexcept {
        m_next = next;
        m_end = end;
    }

  private:
    Word m_word = 0;
    unsigned m_count = 0; // its lowest bits, which count to the word's width
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
