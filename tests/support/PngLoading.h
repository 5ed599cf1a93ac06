// Loads PNG data in every way there is, and watches what a load must not do on the side.
#pragma once
#include "platform/faults.h"
#include "support/Pictures.h"
#include "support/PngBuilder.h"
#include "support/QuietLoads.h"
#include <optional>
#include <ostream>

namespace pixkit::test {

// What a load leaves in an instance.
struct Loaded {
    std::int32_t width = 0, height = 0;
    std::vector<Pixel> pixels; // top row first
    AlphaTypeEnum alpha = AlphaNone;

    bool operator==(const Loaded&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Loaded& loaded) {
        out << loaded.width << " x " << loaded.height << ", alpha " << loaded.alpha << ':';
        for (const Pixel& p : loaded.pixels)
            out << ' ' << +p[0] << ',' << +p[1] << ',' << +p[2] << ',' << +p[3];
        return out;
    }
};

enum class Source : std::uint8_t { stream, file };

// Of a refused load nothing remains, whatever the instance held before.
inline Loaded contentOf(const cPixSheet& sheet, bool loaded) {
    EXPECT_EQ(sheet.Handle() != 0, loaded);
    EXPECT_EQ(sheet.BitsPointer() != nullptr, loaded);
    EXPECT_EQ(sheet.ImageType(), loaded ? imgPNG : imgError);
    if (!loaded) {
        ByteArray cache;
        EXPECT_FALSE(sheet.GetOrginalFormat(cache));
    }
    return {sheet.Width(), sheet.Height(), pixelsOf(sheet), sheet.Alpha()};
}

// Loads over an existing image.
inline Loaded load(const Bytes& data, Source source = Source::stream, bool withZlib = true) {
    std::optional<platform::ScopedFault> noZlib;
    if (!withZlib) noZlib.emplace(platform::SeamCall::loadLibrary);
    cPixSheet sheet;
    sheet.InitializeDIB(3, 2);
    if (source == Source::stream) return contentOf(sheet, sheet.LoadPicture_Stream(ByteArray(data)));
    const TemporaryFolder folder;
    writeFile(folder.path(u8"a.png"), data);
    return contentOf(sheet, sheet.LoadPicture_File(folder.name(u8"a.png")));
}

} // namespace pixkit::test
