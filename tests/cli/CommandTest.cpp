#include "cli/Commands.h"
#include "cli/Text.h"
#include "platform/faults.h"
#include "platform/pictures.h"
#include "support/AllocationFault.h"
#include "support/Pictures.h"
#include "support/SourceFolder.h"
#include <algorithm>
#include <cmath>
#include <regex>
#include <set>
#include <tuple>

namespace pixkit::test {
namespace {

// What a transcript cannot say. Everything else about the command stands in tests/data/cli.
class Command : public testing::Test {
  protected:
    int showEffects() {
        const auto picture = [](const char* name) { return cli::toUtf8(sourceFolder() / "tests/data/cli" / name); };
        cli::Console console{m_in, m_out, m_err, false, false};
        cli::EffectsRequest request;
        request.pictures = {picture("alpha.png"), picture("opaque.png")};
        request.folder = m_folder.name(u8"page");
        request.jobs = 1;
        return cli::showEffects(request, console);
    }

    TemporaryFolder m_folder;
    std::istringstream m_in;
    std::ostringstream m_out, m_err;
};

TEST_F(Command, ThePageOfEffectsLinksOnlyToFilesThatAreThere) {
    ASSERT_EQ(showEffects(), cli::exitOk);
    const auto folder = m_folder.path(u8"page");
    const auto bytes = readFile(folder / "index.html");
    const std::string page(bytes.begin(), bytes.end());
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        files.insert(cli::urlPath(cli::toUtf8(entry.path().lexically_relative(folder))));
    const std::regex reference("(?:src|href)=\"([^\"#]+)\"");
    std::ptrdiff_t links = 0;
    for (std::sregex_iterator match(page.begin(), page.end(), reference); match != std::sregex_iterator(); ++match)
        links += files.contains((*match)[1]) ? 1 : -1000;
    EXPECT_GT(links, 100);
    EXPECT_EQ(cli::urlPath("a b#1/ä.png"), "a%20b%231/%c3%a4.png");
    EXPECT_EQ(cli::htmlText("<a> & \"b\""), "&lt;a&gt; &amp; &quot;b&quot;");
    // Windows has no files of such names.
    EXPECT_EQ(cli::jsonString("a\"b \\c\nä\xFFz\xC3"), R"("a\"b \\c\u000aä\udcffz\udcc3")");
    EXPECT_EQ(cli::shown("e\x1B[31m\nä\x7F"), "e\\x1b[31m\\x0aä\\x7f");
}

TEST(ComposeLayer, NamesKeepTheirOwnColonsAndAtSigns) {
    for (const auto& [text, file, x, opacity] : {std::tuple(R"(C:\a@2x.png)", R"(C:\a@2x.png)", 0, 100),
                                                 {R"(C:\a@2x.png@7,top:fit:60%)", R"(C:\a@2x.png)", 7, 60},
                                                 {R"(C:\me@home\50%.png:scale=50%)", R"(C:\me@home\50%.png)", 0, 100},
                                                 {"b:50%@9,9", "b:50%", 9, 100},
                                                 {"b:70%:50%", "b:70%", 0, 50},
                                                 {"b@center@9,0", "b@center", 9, 100},
                                                 {"b@9:5x0:fit:fill", "b@9:5x0:fit", 0, 100}}) {
        const cli::ComposeLayer layer = cli::parseLayer(text);
        EXPECT_EQ(layer.file, file);
        EXPECT_EQ(layer.place.x.offset, x) << text;
        EXPECT_EQ(layer.opacity, opacity) << text;
    }
}

// Half a surrogate pair, which Windows allows in names, ends nothing but its own file.
TEST_F(Command, ANameThatIsNoTextEndsTheRun) {
    const std::string good = cli::toUtf8(sourceFolder() / "tests/data/cli/alpha.png"), bad = "\xED\xA0\x80.png";
    for (std::vector<std::string> line : {std::vector<std::string>{"info", bad, good},
                                          {"convert", bad, good, m_folder.name(u8"to/")},
                                          {"effects", bad, good, "-o", m_folder.name(u8"page")}}) {
        cli::Console console{m_in, m_out, m_err, false, false};
        m_out.str("");
        EXPECT_EQ(cli::run(line, console), cli::exitSomeFailed) << line.front();
        EXPECT_FALSE(m_out.str().empty()) << line.front() << ": " << m_err.str();
    }
}

TEST_F(Command, APictureWithoutMemoryDoesNotEndThePageOfEffects) {
    bool happened = false;
    for (long after = 0; !happened; ++after) { // until it is the first picture's work that finds no memory
        m_err.str("");
        int exitCode = cli::exitOk;
        try {
            const AllocationFault fault(after);
            exitCode = showEffects();
            ASSERT_TRUE(fault.hasHappened()) << "no failure of this kind came up";
        } catch (const std::bad_alloc&) {
            continue; // before the first picture
        }
        happened = m_err.str().find("alpha.png: not enough memory") != std::string::npos;
        EXPECT_TRUE(!happened || exitCode == cli::exitSomeFailed);
    }
    EXPECT_TRUE(std::filesystem::exists(m_folder.path(u8"page/opaque/00-original.png")));
}

// Wherever memory ends, programs read a whole array, people words, and no result replaces another.
TEST_F(Command, JsonIsCutWhereMemoryEnds) {
    const auto picture = [](const char* name) { return cli::toUtf8(sourceFolder() / "tests/data/cli" / name); };
    const std::string twin = m_folder.name(u8"alpha.png");
    std::filesystem::copy_file(cli::toPath(picture("opaque.png")), cli::toPath(twin));
    for (const bool isInfo : {true, false}) {
        std::vector<std::string> line{"info", "--json", picture("alpha.png"), picture("opaque.png")};
        if (!isInfo) {
            line.back() = twin;
            line.insert(line.end(), {m_folder.name(u8"to/"), "--dry-run", "--jobs", "1"});
            line.front() = "convert";
        }
        bool hasHappened = true;
        for (long after = 0; hasHappened; after += 7) {
            std::ostringstream out(std::string(5000, ' ')), err; // such that the stream itself needs no memory
            cli::Console console{m_in, out, err, false, false};
            std::vector<std::string> words = line;
            {
                const AllocationFault fault(after);
                cli::run(std::move(words), console);
                hasHappened = fault.hasHappened();
            }
            std::string said = out.str();
            said.erase(said.find_last_not_of(' ') + 1);
            EXPECT_TRUE(said.empty() || (said.starts_with('[') && said.ends_with("]\n"))) << said;
            EXPECT_EQ(std::ranges::count(said, '{'), std::ranges::count(said, '}')) << said;
            EXPECT_FALSE(said.starts_with("[,")) << said;
            EXPECT_EQ(said.find("planned"), said.rfind("planned")) << said;
            EXPECT_EQ(err.str().find("bad_alloc"), std::string::npos);
        }
    }
}

// A picture that is mirrored twice is the same, and has to be there as a whole.
TEST_F(Command, AJpegThatIsDecodedSmallerIsAnotherPicture) {
#ifdef PIXKIT_FOREIGN
    if (!platform::canLoadJpeg()) GTEST_SKIP() << "libturbojpeg is for another processor here";
#endif
    const std::string source = m_folder.name(u8"a.jpg"), target = m_folder.name(u8"a.bmp");
    const struct {
        std::uint8_t orientation; // by EXIF data
        std::vector<std::string> options;
        bool mayDiffer = true;
    } rows[] = {{1, {"--resize", "50x"}},
                {3, {"--filter", "triangle", "--resize", "24x90"}},
                {6, {"--resize", "24x"}},
                {8, {"--resize", "12%", "--rotate", "90"}},
                {6, {"--resize", "24x20:stretch", "--no-orient"}},
                {5, {"--resize", "60%"}, false},
                {1, {"--filter", "bilinear", "--resize", "24x"}, false},
                {1, {"--nearest", "--resize", "24x"}, false},
                {1, {"--rotate", "9", "--resize", "24x"}, false}};
    const auto converted = [&](std::vector<std::string> line) {
        line.insert(line.begin(), {"convert", source, target, "--overwrite", "--quiet"});
        cli::Console console{m_in, m_out, m_err, false, false};
        cPixSheet sheet;
        EXPECT_TRUE(cli::run(line, console) == cli::exitOk && sheet.LoadPicture_File(target)) << m_err.str();
        return std::pair(sheet.Width(), pixelsOf(sheet));
    };
    for (const auto& row : rows) {
        cPixSheet sheet;
        draw(sheet, 203, 131, AlphaNone, [](unsigned x, unsigned y) {
            const bool isInside = (x - 90) * (x - 90) + (y - 60) * (y - 60) < 2500;
            return Pixel{std::uint8_t(x), std::uint8_t(y + 60), std::uint8_t(isInside ? 200 : 40 + x % 8), 255};
        });
        ByteArray stream;
        sheet.SaveToStream_JPG(stream, 90);
        Bytes file = bytesOf(stream), exif{0xFF, 0xE1, 0, 34, 'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0};
        exif.insert(exif.end(), {1, 0, 0x12, 1, 3, 0, 1, 0, 0, 0, row.orientation, 0, 0, 0, 0, 0, 0, 0});
        file.insert(file.begin() + 2, exif.begin(), exif.end());
        writeFile(m_folder.path(u8"a.jpg"), file);
        auto whole = row.options;
        whole.insert(whole.begin(), {"--mirror", "x", "--mirror", "x"});
        const auto [width, wanted] = converted(whole);
        const auto [foundWidth, found] = converted(row.options);
        ASSERT_EQ(std::pair(foundWidth, found.size()), std::pair(width, wanted.size()));
        EXPECT_EQ(found != wanted, row.mayDiffer && !platform::canLoadMetafiles()) << row.options[1];
        double squares = 0;
        for (std::size_t i = 0; i < 3 * wanted.size(); ++i)
            squares += std::pow(found[i / 3][i % 3] - wanted[i / 3][i % 3], 2);
        EXPECT_LT(squares / static_cast<double>(3 * wanted.size()), 6.5) << row.options[1] << ": 40 decibels";
    }
}

TEST_F(Command, AFormatThatThisMachineCannotReadCountsAsDamaged) {
    if (platform::canLoadMetafiles()) return; // Windows needs no library for JPEG either
    const platform::ScopedFault noLibrary(platform::SeamCall::loadLibrary);
    for (const auto& [head, reason] : {std::pair("\xFF\xD8\xFF\xE0", "JPEG: libturbojpeg.so.0 cannot be loaded"),
                                       {"\xD7\xCD\xC6\x9A", "a WMF file, which only Windows draws"}}) {
        std::vector<std::uint8_t> bytes(head, head + 4);
        bytes.resize(100);
        writeFile(m_folder.path(u8"a"), bytes);
        cPixSheet sheet;
        EXPECT_FALSE(sheet.LoadPicture_File(m_folder.name(u8"a")));
        EXPECT_EQ(sheet.LastErrorText(), reason);
    }
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
