#include "codecs/gif/GifCodes.h"
#include <algorithm>
#include <array>

namespace pixkit {

namespace {

constexpr unsigned greatestWidth = 12; // bits of a code
constexpr std::size_t tableSize = std::size_t{1} << greatestWidth;

// Codes of changing width out of sub-blocks, low bits first.
class ChainReader {
  public:
    explicit ChainReader(std::span<const std::uint8_t> chain) noexcept : m_chain(chain) {}

    // False when the chain ends before the code does.
    bool next(unsigned width, std::size_t& code) noexcept {
        for (; m_available < width; m_available += 8) {
            if (m_at == m_blockEnd && !beginBlock()) return false;
            m_bits |= std::uint32_t{m_chain[m_at++]} << m_available;
        }
        code = m_bits & ((std::uint32_t{1} << width) - 1);
        m_bits >>= width;
        m_available -= width;
        return true;
    }

  private:
    bool beginBlock() noexcept {
        if (m_at >= m_chain.size() || m_chain[m_at] == 0 || m_chain.size() - m_at <= m_chain[m_at]) return false;
        m_blockEnd = m_at + 1 + m_chain[m_at];
        ++m_at;
        return true;
    }

    std::span<const std::uint8_t> m_chain;
    std::size_t m_at = 0;
    std::size_t m_blockEnd = 0;
    std::uint32_t m_bits = 0; // those read and not yet used, the next one lowest
    unsigned m_available = 0; // how many
};

} // namespace

bool codesFillImage(std::span<const std::uint8_t> chain, unsigned codeSize, std::uint64_t count) noexcept {
    if (codeSize < 1 || codeSize >= greatestWidth) return false;
    const std::size_t clear = std::size_t{1} << codeSize;
    const std::size_t endCode = clear + 1;
    std::array<std::uint16_t, tableSize> lengths; // of the strings that codes stand for
    std::fill_n(lengths.begin(), clear, std::uint16_t{1});

    ChainReader codes(chain);
    std::size_t next = endCode + 1; // the entry that is made next
    unsigned width = codeSize + 1;
    std::uint16_t last = 0; // the last string's length; 0 when the table has just been cleared
    while (count != 0) {
        std::size_t code = 0;
        if (!codes.next(width, code) || code == endCode) return false;
        if (code == clear) {
            next = endCode + 1;
            width = codeSize + 1;
            last = 0;
            continue;
        }
        if (last == 0) {
            if (code > endCode) return false;
        } else if (next < tableSize) {
            lengths[next++] = static_cast<std::uint16_t>(last + 1);
        }
        if (code >= next) return false;
        if (next == std::size_t{1} << width && width < greatestWidth) ++width;
        last = lengths[code];
        count -= std::min<std::uint64_t>(count, last);
    }
    return true;
}

} // namespace pixkit
