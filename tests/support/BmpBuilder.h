// Builds BMP files in memory, right and wrong, and looks at what loading them gives.
#pragma once
#include "support/Pictures.h"
#include <optional>
#include <ostream>

namespace pixkit::test {

struct BmpFile {
    using Bytes = std::vector<std::uint8_t>;

    std::uint32_t headerSize = 40;
    std::int32_t width = 1, height = 1; // 16 bits each in a header of 12 bytes
    std::uint16_t bitCount = 24;
    std::uint32_t compression = 0;
    std::vector<std::uint32_t> masks = {}; // within the header where that has room for them, else behind it
    Bytes palette = {};
    Bytes pixels = {};
    std::uint32_t clrUsed = 0;
    std::optional<std::uint32_t> offBits = {}; // instead of where the pixels are
    std::size_t gap = 0;                       // bytes 0xEE between palette and pixels
    std::uint32_t statedSize = 0;              // bfSize

    Bytes build() const {
        Bytes file = {'B', 'M'};
        const auto put = [&](std::uint32_t value, int bytes) {
            for (int i = 0; i < bytes; ++i)
                file.push_back(static_cast<std::uint8_t>(std::uint64_t{value} >> (8 * i)));
        };
        const std::size_t masksBehind = headerSize < 52 ? masks.size() * 4 : 0;
        put(statedSize, 4);
        put(0, 4);
        put(offBits.value_or(static_cast<std::uint32_t>(14 + headerSize + masksBehind + palette.size() + gap)), 4);
        put(headerSize, 4);
        const int sizeBytes = headerSize == 12 ? 2 : 4;
        put(static_cast<std::uint32_t>(width), sizeBytes);
        put(static_cast<std::uint32_t>(height), sizeBytes);
        put(1, 2);
        put(bitCount, 2);
        put(compression, 4);
        file.insert(file.end(), 12, 0); // size of the pixels, resolution
        put(clrUsed, 4);
        file.resize(headerSize < 40 ? 14 + headerSize : 14 + 40);
        for (const std::uint32_t mask : masks)
            put(mask, 4);
        file.resize(14 + headerSize + masksBehind);
        file.insert(file.end(), palette.begin(), palette.end());
        file.insert(file.end(), gap, 0xEE);
        file.insert(file.end(), pixels.begin(), pixels.end());
        return file;
    }
};

// What a load leaves in an instance.
struct LoadedBmp {
    std::int32_t width = 0, height = 0;
    std::vector<Pixel> pixels; // top row first
    AlphaTypeEnum alpha = AlphaNone;
    eImageFormat type = imgError;

    bool operator==(const LoadedBmp&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const LoadedBmp& loaded) {
        out << loaded.width << " x " << loaded.height << ", alpha " << loaded.alpha << ", type " << loaded.type << ':';
        for (const Pixel& p : loaded.pixels)
            out << ' ' << +p[0] << ',' << +p[1] << ',' << +p[2] << ',' << +p[3];
        return out;
    }
};

// Loads over an existing image, of which nothing may remain.
inline LoadedBmp loadBmp(const std::vector<std::uint8_t>& data) {
    cPixSheet sheet;
    sheet.InitializeDIB(3, 2);
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(data));
    EXPECT_EQ(sheet.Handle() != 0, loaded);
    return {sheet.Width(), sheet.Height(), pixelsOf(sheet), sheet.Alpha(), sheet.ImageType()};
}
inline LoadedBmp loadBmp(const BmpFile& file) {
    return loadBmp(file.build());
}

} // namespace pixkit::test
