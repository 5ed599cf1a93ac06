// What the targets share: loads, pictures made of the input, comparisons. A broken rule ends the process.
#pragma once
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace pixkit::fuzz {

inline void require(bool holds) {
    if (!holds) std::abort();
}

inline std::size_t pixelCount(const cPixSheet& sheet) {
    return static_cast<std::size_t>(sheet.Width()) * static_cast<std::size_t>(sheet.Height());
}

inline ByteArray arrayOf(const std::uint8_t* data, std::size_t bytes) {
    return ByteArray(std::vector<std::uint8_t>(data, data + bytes));
}

// A picture of whole pixels, or none and nothing left behind.
inline bool load(cPixSheet& sheet, const ByteArray& file, std::int32_t icon = 32, std::int32_t depth = 32) {
    const bool loaded = sheet.LoadPicture_Stream(file, icon, icon, 0, 0, true, depth);
    require(loaded == (sheet.Handle() != 0) && loaded == (pixelCount(sheet) != 0));
    return loaded;
}

// Both empty, or the same picture.
inline void requireSame(const cPixSheet& a, const cPixSheet& b) {
    require(a.Width() == b.Width() && a.Height() == b.Height() && a.Alpha() == b.Alpha());
    require(std::equal(a.BitsPointer(), a.BitsPointer() + pixelCount(a) * 4, b.BitsPointer()));
}

// The input as numbers: again and again, a little different each time.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t bytes) : m_data(data, data + bytes) {}
    std::uint8_t byte() {
        if (m_data.empty()) return 0;
        const std::size_t at = m_next++;
        return static_cast<std::uint8_t>(m_data[at % m_data.size()] + at / m_data.size() / 8);
    }
    // A picture of at most so many columns and rows, opaque, on or off, or translucent, of all colours, few, or grays.
    void fill(cPixSheet& sheet, std::int32_t most) {
        const std::int32_t width = 1 + byte() * most / 256, height = 1 + byte() * most / 256;
        const unsigned kind = byte();
        require(sheet.InitializeDIB(width, height));
        for (std::size_t i = 0; i < pixelCount(sheet); ++i) {
            std::uint8_t* const pixel = sheet.BitsPointer() + i * 4;
            const unsigned alpha = kind % 4 == 0 ? 255U : kind % 4 == 1 ? byte() % 2 * 255U : byte();
            for (int c = 0; c < 3; ++c) {
                const unsigned value = (kind & 8) != 0 ? byte() & 0xC0 : byte();
                pixel[c] = (kind & 4) != 0 && c > 0 ? pixel[0] : static_cast<std::uint8_t>(value * alpha / 255);
            }
            pixel[3] = static_cast<std::uint8_t>(alpha);
        }
        sheet.Alpha(kind % 4 == 0 ? AlphaNone : AlphaComplex);
    }

  private:
    std::vector<std::uint8_t> m_data;
    std::size_t m_next = 0;
};

} // namespace pixkit::fuzz

using namespace pixkit;       // NOLINT: every target is one small file
using namespace pixkit::fuzz; // NOLINT
