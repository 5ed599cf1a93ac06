// Builds TGA data in memory, field by field, and says what a load makes of it.
#pragma once
#include "support/PngLoading.h"

namespace pixkit::test {

struct Tga {
    std::uint8_t type = 2;
    std::uint8_t depth = 24;
    std::uint16_t width = 1, height = 1;
    std::uint8_t descriptor = 0;
    Bytes pixels = {};
    std::uint8_t mapType = 0;
    std::uint16_t firstEntry = 0, mapLength = 0;
    std::uint8_t entrySize = 0;
    Bytes map = {};
    Bytes id = {};

    Bytes data() const {
        const auto low = [](unsigned v) { return static_cast<std::uint8_t>(v); };
        const auto high = [](unsigned v) { return static_cast<std::uint8_t>(v >> 8); };
        Bytes bytes = {low(static_cast<unsigned>(id.size())),
                       mapType,
                       type,
                       low(firstEntry),
                       high(firstEntry),
                       low(mapLength),
                       high(mapLength),
                       entrySize,
                       9, // origins, which nobody looks at
                       8,
                       7,
                       6,
                       low(width),
                       high(width),
                       low(height),
                       high(height),
                       depth,
                       descriptor};
        for (const Bytes& part : {id, map, pixels})
            bytes.insert(bytes.end(), part.begin(), part.end());
        return bytes;
    }
};

inline Bytes footer(std::uint32_t extensionOffset = 0, std::string_view signature = "TRUEVISION-XFILE.") {
    Bytes bytes(8);
    for (std::size_t i = 0; i < 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(extensionOffset >> (8 * i));
    bytes.insert(bytes.end(), signature.begin(), signature.end());
    bytes.push_back(0);
    return bytes;
}

// An extension area and the footer that leads to it, to be put behind `bytes`.
inline Bytes withExtension(const Bytes& bytes, std::uint8_t attributesType, std::uint16_t size = 495) {
    Bytes area(495);
    area[0] = static_cast<std::uint8_t>(size);
    area[1] = static_cast<std::uint8_t>(size >> 8);
    area[494] = attributesType;
    return bytes + area + footer(static_cast<std::uint32_t>(bytes.size()));
}

// Loads an array of at least 20 bytes; data that is shorter gets bytes behind it, which no reader needs.
inline Loaded loadTga(Bytes data, std::size_t before = 0) {
    if (data.size() < 20) data.resize(20);
    const auto length = static_cast<std::int32_t>(data.size());
    data.insert(data.begin(), before, 0xEE);
    cPixSheet sheet;
    sheet.InitializeDIB(3, 2);
    const bool loaded =
        sheet.LoadPicture_Stream(ByteArray(data), 32, 32, static_cast<std::int32_t>(before), length, false);
    EXPECT_EQ(sheet.Handle() != 0, loaded);
    EXPECT_EQ(sheet.ImageType(), loaded ? imgTGA : imgError);
    return {sheet.Width(), sheet.Height(), pixelsOf(sheet), sheet.Alpha()};
}

} // namespace pixkit::test
