// PNG files through the system's GDI+, against the component's own reader.
#include "support/Pictures.h"
#include "gdiplus/CountingGdiplus.h"
#include "support/SourceFolder.h"
#include <algorithm>

namespace pixkit::test {
namespace {

// Decoders disagree about files that break the PNG standard: transparent colours with bits beyond the depth, or after
// the colour type takes none, and palettes that are too short, too long or given twice.
constexpr const char* otherSamples[] = {"odd-long-trns",
                                        "odd-short-palette",
                                        "order-palette-and-trns-twice",
                                        "rule-palette-index-beyond",
                                        "rule-palette-trns-first",
                                        "rule-trns-high-bytes",
                                        "rule-trns-long",
                                        "rule-trns-low-bits",
                                        "rule-trns-low-byte",
                                        "rule-trns-rgb-high-bytes",
                                        "rule-trns-taken-back"};

TEST(GdiplusPictures, ComeOutOtherThanThroughTheComponentsReader) {
    if (!platform::systemGdiplus().isComplete()) return; // only the system's decodes PNG
    CountingGdiplus gdiplus;
    int decoded = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(sourceFolder() / "tests" / "data" / "pictures" / "png")) {
        const auto name = entry.path().stem().string();
        SCOPED_TRACE(name);
        if (std::ranges::find(otherSamples, name) != std::end(otherSamples)) continue;
        const ByteArray file(readFile(entry.path()));
        cPixSheet here, there;
        here.isGDIplusEnabled(false);
        if (!here.LoadPicture_Stream(file) || here.ImageType() != imgPNG) continue; // damaged
        const int before = gdiplus.loads;
        ASSERT_TRUE(there.LoadPicture_Stream(file));
        decoded += gdiplus.loads - before;
        EXPECT_EQ(there.ImageType(), imgPNG);
        EXPECT_EQ(there.Alpha(), here.Alpha());
        EXPECT_TRUE(pixelsOf(there) == pixelsOf(here));
        const int asked = gdiplus.loads;
        there.MaxMemory(1);
        EXPECT_FALSE(there.LoadPicture_Stream(file));
        EXPECT_EQ(gdiplus.loads, asked); // it is not shown what exceeds the limits
    }
    EXPECT_GT(decoded, 100);
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
