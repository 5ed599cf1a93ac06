// What the targets share: rules that always hold, pictures made of the input. A broken rule ends the process.
#pragma once
#include "platform/gdi.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#if __has_feature(memory_sanitizer)
// What libraries without the sanitizer write counts as unwritten: there are none to borrow.
extern "C" inline void* dlopen(const char* /*name*/, int /*mode*/) {
    return nullptr;
}
#endif

namespace pixkit::fuzz {

inline void require(bool holds) {
    if (!holds) std::abort();
}

inline std::size_t pixelCount(const cPixSheet& sheet) {
    return static_cast<std::size_t>(sheet.Width()) * static_cast<std::size_t>(sheet.Height());
}

inline std::span<const std::uint8_t> pixels(const cPixSheet& sheet) {
    return {sheet.BitsPointer(), pixelCount(sheet) * 4};
}

// A whole image, or nothing at all: what properties say agrees, and so does the bitmap behind the handle.
inline void requireSound(const cPixSheet& sheet) {
    const bool isThere = sheet.Handle() != 0;
    require(isThere == (sheet.BitsPointer() != nullptr) && isThere == (sheet.ImageType() != imgError));
    require(isThere == (sheet.Width() > 0) && isThere == (sheet.Height() > 0) && sheet.Width() >= 0);
    require(sheet.Orientation() >= 1 && sheet.Orientation() <= 8 && (isThere || sheet.LoadNotes().empty()));
    require(sheet.Alpha() >= AlphaNone && sheet.Alpha() <= AlphaComplex && sheet.scanWidth() == sheet.Width() * 4);
    if (!isThere) return;
    platform::BitmapRecord bitmap;
    require(platform::GetObjectA(sheet.Handle(), bitmap) && bitmap.bmBitsPixel == 32);
    require(bitmap.bmWidth == sheet.Width() && bitmap.bmHeight == sheet.Height());
    const volatile std::uint8_t last = pixels(sheet).back(); // the sanitizers look
    static_cast<void>(last);
}

constexpr double mostPixels = 1 << 18; // larger pictures only cost time

// A whole image, or none, nothing left behind, and a reason.
inline bool load(cPixSheet& sheet, const ByteArray& file, std::int32_t icon = 32, std::int32_t depth = 32,
                 std::int32_t start = 0, std::int32_t length = 0) {
    const bool loaded = sheet.LoadPicture_Stream(file, icon, icon, start, length, true, depth);
    ByteArray kept;
    require(loaded == sheet.LastErrorText().empty() && loaded == (sheet.Handle() != 0));
    require(loaded == sheet.GetOrginalFormat(kept) && (!loaded || std::ranges::equal(kept.bytes(), file.bytes())));
    requireSound(sheet);
    return loaded;
}

// Both empty, or the same picture.
inline void requireSame(const cPixSheet& a, const cPixSheet& b) {
    require(a.Width() == b.Width() && a.Height() == b.Height() && a.Alpha() == b.Alpha());
    require(std::ranges::equal(pixels(a), pixels(b)));
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
    // Mostly near the sizes of small pictures, else anything; never a size that only costs time.
    std::int32_t number() {
        const std::uint8_t kind = byte();
        if (kind < 96) return kind % 3 - (kind == 95);
        if (kind < 224) return static_cast<std::int8_t>(byte());
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value = value << 8 | byte();
        if (kind < 240) value = 0x80000000U + (value & 0x7FF) - 0x400; // about the greatest and the least
        const auto any = static_cast<std::int32_t>(value);
        return any > 1 << 28 || any < -(1 << 28) ? any : any % 1000;
    }
    // A picture of at most so many columns and rows, opaque, on or off, or translucent, of all colours, few, or grays.
    // False where there is no memory for it.
    bool fill(cPixSheet& sheet, std::int32_t most) {
        const std::int32_t width = 1 + byte() * most / 256, height = 1 + byte() * most / 256;
        const unsigned kind = byte();
        if (!sheet.InitializeDIB(width, height)) return false;
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
        return true;
    }

  private:
    std::vector<std::uint8_t> m_data;
    std::size_t m_next = 0;
};

} // namespace pixkit::fuzz

using namespace pixkit;       // NOLINT: every target is one small file
using namespace pixkit::fuzz; // NOLINT
// SPDX-License-Identifier: MIT
