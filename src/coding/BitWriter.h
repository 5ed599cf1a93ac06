// Puts bits behind one another, the first into the lowest of a byte: those of DEFLATE (RFC 1951, 3.1.1) and of GIF.
#pragma once
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace pixkit {

class BitWriter {
  public:
    // Appends to `out`.
    explicit BitWriter(std::vector<std::uint8_t>& out) noexcept : m_out(out), m_size(out.size()) {}

    // Makes room for so many bytes; writing more than was reserved is not allowed. In bytes, because 32-bit programs
    // cannot count the bits of what they hold.
    void reserve(std::size_t bytes) {
        // Grown by halves, or each of many blocks would copy what is there.
        const std::size_t needed = m_size + bytes + 2 * sizeof m_bits;
        if (needed > m_out.capacity()) m_out.reserve(needed + m_out.capacity() / 2);
        if (needed > m_out.size()) m_out.resize(needed);
    }

    // `put` gathers, and may be called for at most 56 bits between two calls of `flush`. `bits` has no ones above
    // `count`.
    void put(std::uint64_t bits, unsigned count) noexcept {
        m_bits |= bits << m_count;
        m_count += count;
    }
    void flush() noexcept {
        const std::uint64_t bits = littleEndian(m_bits);
        std::memcpy(m_out.data() + m_size, &bits, sizeof bits);
        const unsigned whole = m_count >> 3;
        m_size += whole;
        m_bits = whole == 8 ? 0 : m_bits >> (8 * whole);
        m_count &= 7;
    }
    // Zeros up to the next byte border.
    void alignToByte() noexcept {
        m_count = (m_count + 7) & ~7U;
        flush();
    }
    // Only at a byte border.
    void putBytes(const std::uint8_t* bytes, std::size_t count) noexcept {
        if (count > 0) std::memcpy(m_out.data() + m_size, bytes, count);
        m_size += count;
    }
    // Cuts the output to what was written. Whole bytes only.
    void finish() { m_out.resize(m_size); }

    // Goes on where a copy of this writer stopped; a copy in a local variable is what compilers keep in registers.
    void takePosition(const BitWriter& copy) noexcept {
        m_size = copy.m_size;
        m_bits = copy.m_bits;
        m_count = copy.m_count;
    }

  private:
    static std::uint64_t littleEndian(std::uint64_t value) noexcept {
        if constexpr (std::endian::native == std::endian::little) return value;
        std::uint64_t swapped = 0;
        for (int i = 0; i < 8; ++i)
            swapped = swapped << 8 | ((value >> (8 * i)) & 0xFF);
        return swapped;
    }

    std::vector<std::uint8_t>& m_out;
    std::size_t m_size;
    std::uint64_t m_bits = 0;
    unsigned m_count = 0;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
