// JPEG files of every usual kind are read as djpeg reads them, to the last bit, and as ImageMagick does where there are
// four inks; of a damaged one either nothing comes or a whole picture. cjpeg, jpegtran and ImageMagick write them.
#include "support/Pictures.h"
#include "support/PngLoading.h"
#include <algorithm>
#include <cstdlib>
#include <sstream>

using namespace pixkit;
using namespace pixkit::test;

namespace {

using Rgb = std::vector<std::uint8_t>; // top row first

class JpgReaderOracle : public testing::Test {
  protected:
    // Smooth colours with noise, an odd number of rows and columns, so that no block of any sampling is whole.
    void SetUp() override {
        std::mt19937 random(9);
        std::string ppm = "P6\n83 61\n255\n";
        for (int y = 0; y < 61; ++y)
            for (int x = 0; x < 83; ++x)
                for (const int value : {x * 3, y * 4, 255 - x - y})
                    ppm.push_back(static_cast<char>(std::clamp(value + static_cast<int>(random() % 9) - 4, 0, 255)));
        writeFile(m_folder.path(u8"in.ppm"), Bytes(ppm.begin(), ppm.end()));
    }

    Bytes output(const std::string& command) const {
        const std::string to = m_folder.path(u8"out").string();
        const int status =
            std::system(("cd '" + m_folder.path(u8"").string() + "' && (" + command + ") >'" + to + "' 2>err").c_str());
        EXPECT_EQ(status, 0) << command << " (scripts/setup.sh installs what this needs)";
        return readFile(to);
    }

    // A PPM or PGM file's colours.
    static Rgb colorsOf(const Bytes& pnm) {
        std::istringstream header(std::string(pnm.begin(), pnm.end()));
        std::string magic;
        int width = 0, height = 0, most = 0;
        if (!(header >> magic >> width >> height >> most)) return {};
        Rgb colors;
        for (auto at = static_cast<std::size_t>(header.tellg()) + 1; at < pnm.size(); ++at)
            colors.insert(colors.end(), magic == "P5" ? 3 : 1, pnm[at]);
        return colors;
    }

    static Rgb loaded(const Bytes& jpeg) {
        cPixSheet sheet;
        if (!sheet.LoadPicture_Stream(ByteArray(jpeg))) return {};
        EXPECT_EQ(sheet.Alpha(), AlphaNone);
        Rgb colors;
        for (const Pixel& pixel : pixelsOf(sheet))
            colors.insert(colors.end(), {pixel[2], pixel[1], pixel[0]});
        return colors;
    }

    TemporaryFolder m_folder;
};

} // namespace

TEST_F(JpgReaderOracle, PixelsDifferFromDjpegs) {
    const char* const writers[] = {
        "cjpeg -grayscale",
        "cjpeg -rgb",
        "cjpeg -quality 95 -sample 1x1",
        "cjpeg -sample 2x1",
        "cjpeg -sample 1x2",
        "cjpeg -sample 2x2",
        "cjpeg -sample 4x1",
        "cjpeg -sample 2x2 -progressive",
        "cjpeg -grayscale -progressive",
        "cjpeg -sample 2x2 -restart 1",
        "cjpeg -sample 1x1 -progressive -restart 3B",
        "cjpeg -arithmetic",
        "cjpeg -optimize -quality 100",
        "cjpeg -quality 1",
        "cjpeg -dct float -smooth 20",
    };
    for (const std::string writer : writers) {
        const Bytes jpeg = output(writer + " in.ppm");
        writeFile(m_folder.path(u8"a.jpg"), jpeg);
        const Rgb theirs = colorsOf(output("djpeg -pnm a.jpg"));
        EXPECT_EQ(theirs.size(), 83U * 61 * 3) << writer;
        EXPECT_TRUE(loaded(jpeg) == theirs) << writer;
        // Cut short: what is there is shown like theirs, the rest is gray for both.
        const Bytes cut(jpeg.begin(), jpeg.end() - 60);
        writeFile(m_folder.path(u8"a.jpg"), cut);
        EXPECT_TRUE(loaded(cut) == colorsOf(output("djpeg -pnm a.jpg; [ $? -le 2 ]"))) << writer << ", cut";
    }
}

// djpeg rounds inks in its own way. ImageMagick takes them to be inverted always, we only where Adobe's marker stands,
// which is what it is good for; without it, ours are the negative's.
TEST_F(JpgReaderOracle, InksAreMixedOtherwiseThanByImageMagick) {
    constexpr std::ptrdiff_t transformAt = 11;
    struct Case {
        const char* kind;
        char marker;
        std::uint8_t transform; // 0: CMYK, 2: YCCK
        const char* treatment;
    };
    const Case cases[] = {{"CMYK", 'A', 0, ""}, {"YCCK", 'A', 2, ""}, {"CMYK, not marked", 'B', 0, "-negate"}};
    for (const char* const sampling : {"1x1", "2x2"}) {
        Bytes jpeg = output("convert-im6.q16 in.ppm -colorspace CMYK -quality 95 -sampling-factor " +
                            std::string(sampling) + " jpg:-");
        constexpr std::string_view adobe = "Adobe";
        const auto marker = std::search(jpeg.begin(), jpeg.end(), adobe.begin(), adobe.end());
        ASSERT_GT(jpeg.end() - marker, transformAt);
        for (const Case& c : cases) {
            marker[0] = static_cast<std::uint8_t>(c.marker);
            marker[transformAt] = c.transform;
            writeFile(m_folder.path(u8"a.jpg"), jpeg);
            const Rgb theirs = colorsOf(
                output("convert-im6.q16 a.jpg " + std::string(c.treatment) + " -colorspace sRGB -depth 8 ppm:-"));
            const Rgb ours = loaded(jpeg);
            ASSERT_EQ(ours.size(), theirs.size());
            int most = 0;
            for (std::size_t i = 0; i < ours.size(); ++i)
                most = std::max(most, std::abs(ours[i] - theirs[i]));
            EXPECT_LE(most, 1) << c.kind << ' ' << sampling;
        }
    }
}

// What the decoder gives up must not come out as a picture, and what it only warns of must.
TEST_F(JpgReaderOracle, ADamagedFileIsShownOtherwiseThanByDjpeg) {
    std::mt19937 random(6);
    for (const std::string writer : {"cjpeg -sample 2x2", "cjpeg -progressive", "cjpeg -grayscale -restart 1"}) {
        const Bytes whole = output(writer + " in.ppm");
        for (int round = 0; round < 60; ++round) {
            Bytes damaged = whole;
            damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
            writeFile(m_folder.path(u8"a.jpg"), damaged);
            const Rgb theirs = colorsOf(output("djpeg -pnm a.jpg || true"));
            const Rgb ours = loaded(damaged);
            EXPECT_TRUE(ours == theirs) << writer << ' ' << round << ": " << ours.size() << ", theirs "
                                        << theirs.size();
        }
    }
}
