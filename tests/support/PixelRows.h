// Random rows of pixels, the same in every build.
#pragma once
#include <algorithm>
#include <cstdint>
#include <vector>

namespace pixkit::test {

// xorshift64*: the same numbers in every build.
class Numbers {
  public:
    explicit Numbers(std::uint64_t seed) : m_state(seed * 2 + 1) {}
    std::uint32_t next() {
        m_state ^= m_state >> 12;
        m_state ^= m_state << 25;
        m_state ^= m_state >> 27;
        return static_cast<std::uint32_t>(m_state * 0x2545F4914F6CDD1DU >> 32);
    }
    std::uint32_t below(std::uint32_t limit) { return next() % limit; }
    std::uint8_t byte() { return static_cast<std::uint8_t>(next() >> 13); }

  private:
    std::uint64_t m_state;
};

// What rows may hold.
enum class Content : std::uint8_t {
    bytes,         // any bytes
    premultiplied, // runs of clear, opaque and partly clear pixels, all valid
    opaque,        // alpha 255
    clear,         // zeros
    spoiled,       // premultiplied, but one pixel somewhere breaks the rule
};
constexpr Content contents[] = {Content::bytes, Content::premultiplied, Content::opaque, Content::clear,
                                Content::spoiled};

inline void putValidPixels(std::vector<std::uint8_t>& row, Numbers& numbers) {
    for (std::size_t i = 0; i + 4 <= row.size();) {
        const std::uint32_t kind = numbers.below(3);
        for (std::uint32_t run = 1 + numbers.below(12); run > 0 && i + 4 <= row.size(); --run, i += 4) {
            const std::uint32_t alpha = kind == 0 ? 0 : kind == 1 ? 255 : 1 + numbers.below(254);
            for (std::size_t channel = 0; channel < 3; ++channel)
                row[i + channel] = static_cast<std::uint8_t>(numbers.below(alpha + 1));
            row[i + 3] = static_cast<std::uint8_t>(alpha);
        }
    }
}

inline std::vector<std::uint8_t> rowOf(Content content, std::size_t bytes, Numbers& numbers) {
    std::vector<std::uint8_t> row(bytes);
    if (content == Content::bytes || content == Content::opaque)
        std::generate(row.begin(), row.end(), [&] { return numbers.byte(); });
    if (content == Content::opaque)
        for (std::size_t i = 3; i < bytes; i += 4)
            row[i] = 255;
    if (content == Content::premultiplied || content == Content::spoiled) putValidPixels(row, numbers);
    if (content == Content::spoiled && bytes >= 4) {
        const std::size_t pixel = numbers.below(static_cast<std::uint32_t>(bytes / 4));
        row[4 * pixel + numbers.below(3)] = 255;
    }
    return row;
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
