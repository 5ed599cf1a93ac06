#include "CommandFixture.h"
#include "cli/Files.h"
#include "cli/Text.h"
#include "platform/faults.h"
#include "platform/pictures.h"
#include "support/AllocationFault.h"
#include "support/SourceFolder.h"
#include <regex>

namespace pixkit::test {
namespace {

using cli::exitOk;
using cli::exitSomeFailed;

TEST_F(Command, InfoShowsEachPictureThatLoads) {
    const Result result = run({"info", name(u8"alpha.png"), name(u8"broken.png"), name(u8"opaque.png")});
    EXPECT_EQ(result.exitCode, exitSomeFailed);
    EXPECT_TRUE(
        std::regex_search(result.out, std::regex(" 4 x 2 +partial \\(2\\) +PNG \\(10\\) +90 +[^\n]*alpha.png\n")))
        << result.out;
    EXPECT_TRUE(
        std::regex_search(result.out, std::regex(" 2 x 2 +opaque \\(0\\) +PNG \\(10\\) +79 +[^\n]*opaque.png\n")))
        << result.out;
}

TEST_F(Command, InfoWritesValidJsonWhateverFails) {
    const Result both = run({"info", "--json", name(u8"alpha.png"), name(u8"gone.png"), name(u8"opaque.png")});
    EXPECT_EQ(both.exitCode, exitSomeFailed);
    const std::string tail = R"("width": 2, "height": 2, "alpha": {"value": 0, "name": "AlphaNone"}, )"
                             R"("type": {"value": 10, "name": "imgPNG"}, "bytes": 79})";
    EXPECT_NE(both.out.find("},\n  {"), std::string::npos) << both.out;
    EXPECT_NE(both.out.find(tail + "\n]\n"), std::string::npos) << both.out;
    EXPECT_EQ(run({"info", "--json", name(u8"gone.png")}).out, "[]\n");
    EXPECT_EQ(cli::jsonString("a\"b\\c\n\xC3\xA4"), "\"a\\\"b\\\\c\\u000a\xC3\xA4\"");
}

TEST_F(Command, IconsAreListedAndChosenBySize) {
    writeFile(path(u8"a.ico"), readFile(sourceFolder() / "tests/data/pictures/ico/several.ico"));
    const std::string icon = name(u8"a.ico");
    const Result listed = run({"info", icon});
    EXPECT_NE(listed.out.find("\n               in the file: 16 x 16 at 4 bits, 32 x 32 at 8 bits, 9 x 7 at 24 bits, "
                              "20 x 18 at 32 bits (PNG), 32 x 32 at 24 bits\n"),
              std::string::npos)
        << listed.out;
    EXPECT_NE(listed.out.find("32 x 32  on or off"), std::string::npos) << listed.out;
    const Result json = run({"info", "--json", icon, "--icon-size", "20x18", "--icon-depth", "0"});
    EXPECT_NE(json.out.find(R"("width": 20, "height": 18)"), std::string::npos) << json.out;
    EXPECT_NE(json.out.find(R"({"width": 20, "height": 18, "depth": 32, "png": true}, {)"), std::string::npos);
    EXPECT_EQ(run({"convert", icon, name(u8"b.tga"), "--icon-size", "16"}).exitCode, exitOk);
    EXPECT_NE(run({"info", name(u8"b.tga")}).out.find(" 16 x 16 "), std::string::npos);
    for (const char* wrong : {"", "x", "16x", "x16", "-1", "16x16x16", "65536", "1.5", "large"})
        EXPECT_EQ(run({"info", icon, "--icon-size", wrong}).exitCode, cli::exitUsage) << wrong;
    EXPECT_EQ(run({"info", icon, "--icon-depth", "33"}).exitCode, cli::exitUsage);
}

TEST_F(Command, AnUnreadableFileIsNamedForWhatItHolds) {
    using Bytes = std::vector<std::uint8_t>;
    const auto padded = [](const std::string& head) {
        Bytes bytes(head.begin(), head.end());
        bytes.resize(100, 'x');
        return bytes;
    };
    Bytes targa(100, 0);
    const std::string mark("TRUEVISION-XFILE.\0", 18);
    targa.insert(targa.end(), mark.begin(), mark.end());
    struct Case {
        const char8_t* file;
        Bytes bytes;
        const char* reason;
    };
    const Case cases[] = {
        {u8"a", padded("\xFF\xD8\xFF\xE0"), "is a JPEG file that is damaged"},
        {u8"a.png", padded("GIF89a"), "is a GIF file that is damaged"},
        {u8"a", padded("BM"), "is a BMP file that is damaged"},
        {u8"a", padded(std::string("\0\0\1\0", 4)), "is an icon file that"},
        {u8"a", padded("RIFF1234WEBP"), "is a WebP file, which"},
        {u8"a", targa, "is a TGA file that is damaged"},
        {u8"a.TGA", Bytes(100, 7), "is a TGA file by its name"},
        {u8"a", Bytes(100, 7), "is not a picture in any format known here"},
        {u8"a", Bytes(56, 'B'), "has only 56 bytes"},
        {u8"a", Bytes(), "has only 0 bytes"},
        {u8"a", padded("\x89PNG\r\n\x1A\n"), "is a PNG file that is damaged"},
    };
    for (const Case& test : cases) {
        writeFile(path(test.file), test.bytes);
        EXPECT_EQ(cli::loadFailureReason(path(test.file)).find(test.reason), 0U)
            << cli::loadFailureReason(path(test.file)) << " instead of " << test.reason;
    }
    EXPECT_EQ(cli::loadFailureReason(path(u8"")), "is a folder, not a picture");
    if (platform::canLoadMetafiles()) return; // Windows needs no library for JPEG either
    writeFile(path(u8"a"), padded("\xFF\xD8\xFF\xE0"));
    const platform::ScopedFault noLibrary(platform::SeamCall::loadLibrary);
    EXPECT_EQ(cli::loadFailureReason(path(u8"a")).find("is a JPEG file, which is not supported here"), 0U);
    writeFile(path(u8"a"), padded("\xD7\xCD\xC6\x9A"));
    EXPECT_EQ(cli::loadFailureReason(path(u8"a")).find("is a WMF file, which is not supported here"), 0U);
}

TEST_F(Command, TheGalleryLinksOnlyToFilesThatAreThere) {
    writeFile(path(u8"a & <b>#1.png"), pngOpaque);
    const std::string folder = name(u8"gallery");
    const Result result = run({"gallery", name(u8"alpha.png"), name(u8"broken.png"), name(u8"alpha.png"),
                               name(u8"a & <b>#1.png"), "-o", folder});
    EXPECT_EQ(result.exitCode, exitSomeFailed);
    EXPECT_NE(result.out.find("index.html"), std::string::npos);
    const std::string page = text(u8"gallery/index.html");
    EXPECT_EQ(page.find("<b>#1"), std::string::npos) << "the file name is not quoted";
    EXPECT_EQ(page.find("broken"), std::string::npos);

    std::size_t links = 0;
    const std::regex reference("(?:src|href)=\"([^\"#]+)\"");
    for (std::sregex_iterator match(page.begin(), page.end(), reference); match != std::sregex_iterator(); ++match) {
        const std::string url = (*match)[1];
        std::string file;
        for (std::size_t i = 0; i < url.size(); ++i) {
            file += url[i] == '%' ? static_cast<char>(std::stoi(url.substr(i + 1, 2), nullptr, 16)) : url[i];
            if (url[i] == '%') i += 2;
        }
        EXPECT_TRUE(std::filesystem::exists(cli::toPath(folder) / cli::toPath(file))) << file;
        ++links;
    }
    EXPECT_GT(links, 100U);
}

TEST_F(Command, APictureWithoutMemoryDoesNotEndTheGallery) {
    bool happened = false;
    for (long after = 0; !happened; ++after) { // until it is the first picture's work that finds no memory
        std::istringstream in;
        std::ostringstream out;
        std::ostringstream err;
        cli::Console console{in, out, err, false, false};
        const cli::GalleryRequest request{{name(u8"alpha.png"), name(u8"opaque.png")}, name(u8"gallery")};
        int exitCode = exitOk;
        try {
            const AllocationFault fault(after);
            exitCode = cli::gallery(request, console);
            ASSERT_TRUE(fault.hasHappened()) << "no failure of this kind came up";
        } catch (const std::bad_alloc&) {
            continue; // before the first picture
        }
        happened = err.str().find("alpha.png: not enough memory") != std::string::npos;
        EXPECT_TRUE(!happened || exitCode == exitSomeFailed);
    }
    EXPECT_NE(text(u8"gallery/index.html").find("opaque/00-original.png"), std::string::npos);
}

TEST_F(Command, TheGallerySavesAnotherPictureOrLosesItsAlpha) {
    ASSERT_EQ(run({"gallery", name(u8"alpha.png"), "-o", name(u8"gallery")}).exitCode, exitOk);
    cPixSheet sheet;
    sheet.LoadPicture_File(name(u8"alpha.png"));
    ByteArray expected;
    sheet.SaveToStream_PNG(expected);
    EXPECT_EQ(bytes(u8"gallery/alpha/00-original.png"), bytesOf(expected));
}

} // namespace
} // namespace pixkit::test
