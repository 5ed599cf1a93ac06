// Builds GIF data in memory, field by field, with an LZW encoder of its own.
#pragma once
#include "support/Pictures.h"
#include "support/PngBuilder.h"
#include <map>

namespace pixkit::test {

// Codes of the stated widths, low bits first.
class CodeStream {
  public:
    CodeStream& put(std::size_t code, unsigned width) {
        for (unsigned i = 0; i < width; ++i, ++m_bits) {
            if (m_bits % 8 == 0) m_bytes.push_back(0);
            m_bytes.back() = static_cast<std::uint8_t>(m_bytes.back() | (code >> i & 1) << m_bits % 8);
        }
        return *this;
    }
    const Bytes& bytes() const { return m_bytes; }

  private:
    Bytes m_bytes;
    std::size_t m_bits = 0;
};

struct LzwStyle {
    bool clearFirst = true;
    bool clearWhenFull = true; // else the table stays as it is
    bool endCode = true;
};

inline Bytes lzw(const std::vector<int>& indexes, unsigned codeSize, LzwStyle style = {}) {
    const std::size_t clear = std::size_t{1} << codeSize;
    CodeStream out;
    std::map<std::vector<int>, std::size_t> table;
    std::size_t next = 0;
    unsigned width = 0;
    const auto reset = [&] {
        table.clear();
        for (std::size_t i = 0; i < clear; ++i)
            table[{static_cast<int>(i)}] = i;
        next = clear + 2;
        width = codeSize + 1;
    };
    const auto grow = [&] { // the reader's table is one entry behind
        if (next++ == std::size_t{1} << width && width < 12) ++width;
    };
    reset();
    if (style.clearFirst) out.put(clear, width);
    std::vector<int> string;
    for (const int index : indexes) {
        std::vector<int> longer = string;
        longer.push_back(index);
        if (table.contains(longer)) {
            string = longer;
            continue;
        }
        out.put(table.at(string), width);
        if (next < 4096) {
            table[longer] = next;
            grow();
        } else if (style.clearWhenFull) {
            out.put(clear, width);
            reset();
        }
        string = {index};
    }
    if (!string.empty()) out.put(table.at(string), width);
    if (next < 4096) grow();
    if (style.endCode) out.put(clear + 1, width);
    return out.bytes();
}

inline Bytes subBlocks(const Bytes& data, std::size_t most = 255) {
    Bytes blocks;
    for (std::size_t at = 0; at < data.size(); at += most) {
        const std::size_t count = std::min(most, data.size() - at);
        blocks.push_back(static_cast<std::uint8_t>(count));
        blocks.insert(blocks.end(), data.begin() + static_cast<std::ptrdiff_t>(at),
                      data.begin() + static_cast<std::ptrdiff_t>(at + count));
    }
    blocks.push_back(0);
    return blocks;
}

struct Gif {
    std::uint16_t width = 1, height = 1;
    Bytes codes = {}; // see lzw()
    unsigned codeSize = 2;
    Bytes global = {}; // R, G, B each; 2, 4, 8, ... entries, or none
    Bytes local = {};
    bool interlaced = false;
    Bytes before = {};    // blocks before the image
    Bytes after = {0x3B}; // and after it
    std::string signature = "GIF89a";
    std::uint16_t screenWidth = 7, screenHeight = 9, left = 3, top = 5;
    std::size_t blockSize = 255;

    // Where a colour table begins and ends shows in its packed byte.
    static std::uint8_t packedOf(const Bytes& table) {
        unsigned logarithm = 0;
        while ((std::size_t{6} << logarithm) < table.size())
            ++logarithm;
        return static_cast<std::uint8_t>(table.empty() ? 0 : 0x80 | logarithm);
    }
    static Bytes word(unsigned value) {
        return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
    }

    Bytes data() const {
        Bytes bytes(signature.begin(), signature.end());
        const Bytes descriptor = Bytes{0x2C} + word(left) + word(top) + word(width) + word(height) +
                                 Bytes{static_cast<std::uint8_t>(packedOf(local) | (interlaced ? 0x40 : 0))};
        return bytes + word(screenWidth) + word(screenHeight) + Bytes{packedOf(global), 0, 0} + global + before +
               descriptor + local + Bytes{static_cast<std::uint8_t>(codeSize)} + subBlocks(codes, blockSize) + after;
    }
};

inline Bytes graphicControl(int transparent) {
    return {0x21,
            0xF9,
            4,
            static_cast<std::uint8_t>(transparent >= 0),
            0,
            0,
            static_cast<std::uint8_t>(transparent >= 0 ? transparent : 9),
            0};
}

} // namespace pixkit::test
