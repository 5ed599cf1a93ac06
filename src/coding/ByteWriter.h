// Puts the bytes of a file behind one another, numbers in either order of bytes. Members have the names of
// ByteReader's.
#pragma once
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace pixkit {

class ByteWriter {
  public:
    // Appends to `out`, which must outlive the writer. Others may append between two calls. Every call may throw
    // std::bad_alloc.
    explicit ByteWriter(std::vector<std::uint8_t>& out) noexcept : m_out(out) {}

    std::vector<std::uint8_t>& target() noexcept { return m_out; }
    std::size_t size() const noexcept { return m_out.size(); }

    // Of each value as many of the lowest bits as the name says.
    void byte(std::uint64_t value) { m_out.push_back(static_cast<std::uint8_t>(value)); }
    void littleEndian16(std::uint64_t value) { put(value, {0, 8}); }
    void littleEndian32(std::uint64_t value) { put(value, {0, 8, 16, 24}); }
    void bigEndian16(std::uint64_t value) { put(value, {8, 0}); }
    void bigEndian32(std::uint64_t value) { put(value, {24, 16, 8, 0}); }

    void bytes(std::span<const std::uint8_t> bytes) { m_out.insert(m_out.end(), bytes.begin(), bytes.end()); }
    void bytes(std::initializer_list<std::uint8_t> bytes) {
        for (const std::uint8_t value : bytes)
            byte(value);
    }
    void text(std::string_view text) {
        for (const char c : text)
            byte(static_cast<unsigned char>(c));
    }
    void zeros(std::size_t count) { m_out.resize(m_out.size() + count); }

    // Puts a number that was not known before into the place that was left for it.
    void bigEndian32At(std::size_t place, std::uint64_t value) noexcept {
        for (unsigned i = 0; i < 4; ++i)
            m_out[place + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }

  private:
    void put(std::uint64_t value, std::initializer_list<unsigned> shifts) {
        for (const unsigned shift : shifts)
            byte(value >> shift);
    }

    std::vector<std::uint8_t>& m_out;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
