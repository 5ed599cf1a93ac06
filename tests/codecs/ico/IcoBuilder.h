// Builds icon and cursor files in memory, right and wrong, and says what a load makes of them.
#pragma once
#include "support/BmpBuilder.h"
#include "support/PngLoading.h"

namespace pixkit::test {

// A bitmap as icons hold it: no file header, and the height counts the mask's rows. `file.pixels` are the colours.
inline Bytes icoBitmap(BmpFile file, const Bytes& mask) {
    file.height *= 2;
    const Bytes built = file.build();
    return Bytes(built.begin() + 14, built.end()) + mask;
}

struct IcoImage {
    Bytes payload;
    std::uint8_t width = 1, height = 1;                  // what the directory says
    std::uint16_t planes = 1, bitCount = 32;             // in a cursor the hotspot
    std::optional<std::uint32_t> size = {}, offset = {}; // instead of the payload's
};

inline Bytes icoFile(const std::vector<IcoImage>& images, std::uint16_t type = 1) {
    Bytes file;
    const auto put = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file.push_back(static_cast<std::uint8_t>(std::uint64_t{value} >> (8 * i)));
    };
    put(0, 2);
    put(type, 2);
    put(static_cast<std::uint32_t>(images.size()), 2);
    std::size_t offset = 6 + 16 * images.size();
    for (const IcoImage& image : images) {
        put(image.width, 1);
        put(image.height, 1);
        put(0, 2); // colours, reserved
        put(image.planes, 2);
        put(image.bitCount, 2);
        put(image.size.value_or(static_cast<std::uint32_t>(image.payload.size())), 4);
        put(image.offset.value_or(static_cast<std::uint32_t>(offset)), 4);
        offset += image.payload.size();
    }
    for (const IcoImage& image : images)
        file.insert(file.end(), image.payload.begin(), image.payload.end());
    return file;
}

struct IcoWish {
    std::int32_t cX = 32, cY = 32, bitDepth = 32;
};

// Loads over an existing image, of which nothing may remain.
inline LoadedBmp loadIco(const Bytes& data, IcoWish wish = {}) {
    cPixSheet sheet;
    sheet.InitializeDIB(3, 2);
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(data), wish.cX, wish.cY, 0, 0, false, wish.bitDepth);
    EXPECT_EQ(sheet.Handle() != 0, loaded);
    return {sheet.Width(), sheet.Height(), pixelsOf(sheet), sheet.Alpha(), sheet.ImageType()};
}

} // namespace pixkit::test
