// Writes DEFLATE streams by hand, right ones and wrong ones.
#pragma once
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace deflate_test {

using Bytes = std::vector<std::uint8_t>;
using Lengths = std::vector<std::uint8_t>; // the code length of every symbol

// The code of a symbol by the rule of RFC 1951, 3.2.2.
inline unsigned codeOf(const Lengths& lengths, std::size_t symbol) {
    unsigned code = 0;
    for (unsigned bits = 1; bits <= lengths[symbol]; ++bits) {
        code <<= 1;
        for (std::size_t other = 0; other < lengths.size(); ++other)
            code += lengths[other] == bits && (bits < lengths[symbol] || other < symbol);
    }
    return code;
}

inline Lengths fixedLiterals() {
    Lengths lengths(288, 8);
    std::fill(lengths.begin() + 144, lengths.begin() + 256, std::uint8_t{9});
    std::fill(lengths.begin() + 256, lengths.begin() + 280, std::uint8_t{7});
    return lengths;
}

// One code of each length from 1 to 14 and two of 15, on the symbols `first`, `first + step`, ...
inline Lengths staircase(std::size_t symbols, std::size_t first, std::size_t step) {
    Lengths lengths(symbols, 0);
    for (std::size_t i = 0; i < 16; ++i)
        lengths[first + i * step] = static_cast<std::uint8_t>(std::min<std::size_t>(i + 1, 15));
    return lengths;
}

class StreamWriter {
  public:
    StreamWriter& bits(unsigned value, unsigned count) {
        for (unsigned i = 0; i < count; ++i, ++m_bitCount) {
            if (m_bitCount % 8 == 0) m_bytes.push_back(0);
            m_bytes.back() = static_cast<std::uint8_t>(m_bytes.back() | (value >> i & 1) << m_bitCount % 8);
        }
        return *this;
    }
    StreamWriter& stored(std::span<const std::uint8_t> data, bool last = false) {
        bits(last, 1).bits(0, 2).align().bits(static_cast<unsigned>(data.size()), 16);
        bits(~static_cast<unsigned>(data.size()), 16);
        m_bytes.insert(m_bytes.end(), data.begin(), data.end());
        m_bitCount = m_bytes.size() * 8;
        return *this;
    }
    StreamWriter& align() {
        m_bitCount = m_bytes.size() * 8;
        return *this;
    }
    StreamWriter& fixed(bool last = false) {
        m_literals = fixedLiterals();
        m_distances = Lengths(32, 5);
        return bits(last, 1).bits(1, 2);
    }
    // The head of a dynamic block, every code length written with four bits. Wrong codes are written as they are.
    StreamWriter& dynamic(const Lengths& literals, const Lengths& distances, bool last = false) {
        m_literals = literals;
        m_distances = distances;
        bits(last, 1).bits(2, 2);
        counts(literals.size(), distances.size(), 19);
        bits(0, 9); // 16, 17 and 18 are not used
        for (int i = 3; i < 19; ++i)
            bits(4, 3);
        for (const Lengths* lengths : {&literals, &distances})
            for (unsigned length : *lengths)
                huffman(Lengths(16, 4), length);
        return *this;
    }
    StreamWriter& counts(std::size_t literals, std::size_t distances, std::size_t codeLengths) {
        return bits(static_cast<unsigned>(literals - 257), 5)
            .bits(static_cast<unsigned>(distances - 1), 5)
            .bits(static_cast<unsigned>(codeLengths - 4), 4);
    }
    StreamWriter& huffman(const Lengths& lengths, std::size_t symbol) {
        const unsigned code = codeOf(lengths, symbol);
        for (unsigned i = lengths[symbol]; i-- != 0;)
            bits(code >> i, 1);
        return *this;
    }
    StreamWriter& literal(std::size_t symbol) { return huffman(m_literals, symbol); }
    StreamWriter& distance(std::size_t symbol) { return huffman(m_distances, symbol); }
    StreamWriter& text(std::string_view text) {
        for (char c : text)
            literal(static_cast<std::uint8_t>(c));
        return *this;
    }
    StreamWriter& match(unsigned length, unsigned distance) {
        static constexpr std::array<unsigned, 29> lengthBases{3,  4,  5,  6,   7,   8,   9,   10,  11, 13,
                                                              15, 17, 19, 23,  27,  31,  35,  43,  51, 59,
                                                              67, 83, 99, 115, 131, 163, 195, 227, 258};
        unsigned symbol = 28;
        while (lengthBases[symbol] > length)
            --symbol;
        literal(257 + symbol).bits(length - lengthBases[symbol], symbol < 8 || symbol == 28 ? 0 : symbol / 4 - 1);
        unsigned distanceSymbol = 0, base = 1, extra = 0;
        while (distance >= base + (1u << extra)) {
            base += 1u << extra;
            extra = ++distanceSymbol < 4 ? 0 : distanceSymbol / 2 - 1;
        }
        return this->distance(distanceSymbol).bits(distance - base, extra);
    }
    StreamWriter& end() { return literal(256); }
    const Bytes& bytes() const { return m_bytes; }

  private:
    Bytes m_bytes;
    std::size_t m_bitCount = 0;
    Lengths m_literals, m_distances;
};

} // namespace deflate_test
