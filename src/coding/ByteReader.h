// The one way in which bytes from outside are read: every access is checked against the end.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace pixkit {

class ByteReader {
  public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) noexcept : m_bytes(bytes) {}

    std::size_t size() const noexcept { return m_bytes.size(); }

    // `count` bytes from `offset`; nothing when they are not all there.
    std::optional<std::span<const std::uint8_t>> slice(std::size_t offset, std::size_t count) const noexcept {
        if (offset > m_bytes.size() || count > m_bytes.size() - offset) return {};
        return m_bytes.subspan(offset, count);
    }

    std::optional<std::uint8_t> byte(std::size_t offset) const noexcept {
        if (offset >= m_bytes.size()) return {};
        return m_bytes[offset];
    }

    std::optional<std::uint16_t> littleEndian16(std::size_t offset) const noexcept {
        const auto bytes = slice(offset, 2);
        if (!bytes) return {};
        return static_cast<std::uint16_t>((*bytes)[0] | (*bytes)[1] << 8);
    }

    std::optional<std::uint32_t> littleEndian32(std::size_t offset) const noexcept {
        const auto bytes = slice(offset, 4);
        if (!bytes) return {};
        const auto& b = *bytes;
        return b[0] | std::uint32_t{b[1]} << 8 | std::uint32_t{b[2]} << 16 | std::uint32_t{b[3]} << 24;
    }

    std::optional<std::uint32_t> bigEndian32(std::size_t offset) const noexcept {
        const auto bytes = slice(offset, 4);
        if (!bytes) return {};
        const auto& b = *bytes;
        return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 | b[3];
    }

  private:
    std::span<const std::uint8_t> m_bytes;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
