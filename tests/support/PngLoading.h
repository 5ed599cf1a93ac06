// Loads PNG data in every way there is, and watches what a load must not do on the side.
#pragma once
#include "diagnostics/guard.h"
#include "platform/faults.h"
#include "platform/handle.h"
#include "platform/interaction.h"
#include "support/Pictures.h"
#include "support/PngBuilder.h"
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

// Fails a test in which a message box came up or a run-time error was trapped without the test asking for it.
class QuietLoads : public testing::Test {
  protected:
    QuietLoads() {
        platform::setMessageBoxHandler([this](const std::string& text, const std::string&, std::uint32_t style) {
            EXPECT_EQ(style, platform::messageBoxOk);
            boxes.push_back(text);
            return platform::answerOk;
        });
        setErrorReportHandler([this](const ErrorReport& report) { reports.push_back(report.procedure); });
    }
    ~QuietLoads() override {
        platform::setMessageBoxHandler({});
        setErrorReportHandler({});
        EXPECT_EQ(boxes, expectedBoxes);
        EXPECT_EQ(reports, expectedReports);
        EXPECT_EQ(platform::openHandles(), handles) << "handles leak";
    }

    std::vector<std::string> boxes, reports;
    std::vector<std::string> expectedBoxes, expectedReports;

  private:
    std::size_t handles = platform::openHandles();
};

} // namespace pixkit::test
