#include "cli/Commands.h"
#include "cli/Text.h"
#include "platform/faults.h"
#include "platform/pictures.h"
#include "support/AllocationFault.h"
#include "support/Pictures.h"
#include "support/SourceFolder.h"
#include <regex>
#include <set>
#include <tuple>

namespace pixkit::test {
namespace {

// What a transcript cannot say. Everything else about the command stands in tests/data/cli.
class Command : public testing::Test {
  protected:
    int gallery() {
        const auto picture = [](const char* name) { return cli::toUtf8(sourceFolder() / "tests/data/cli" / name); };
        cli::Console console{m_in, m_out, m_err, false, false};
        return cli::gallery({{picture("alpha.png"), picture("opaque.png")}, m_folder.name(u8"gallery")}, console);
    }

    TemporaryFolder m_folder;
    std::istringstream m_in;
    std::ostringstream m_out, m_err;
};

TEST_F(Command, TheGalleryLinksOnlyToFilesThatAreThere) {
    ASSERT_EQ(gallery(), cli::exitOk);
    const auto folder = m_folder.path(u8"gallery");
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
                                          {"gallery", bad, good, "-o", m_folder.name(u8"gallery")}}) {
        cli::Console console{m_in, m_out, m_err, false, false};
        m_out.str("");
        EXPECT_EQ(cli::run(line, console), cli::exitSomeFailed) << line.front();
        EXPECT_FALSE(m_out.str().empty()) << line.front() << ": " << m_err.str();
    }
}

TEST_F(Command, APictureWithoutMemoryDoesNotEndTheGallery) {
    bool happened = false;
    for (long after = 0; !happened; ++after) { // until it is the first picture's work that finds no memory
        m_err.str("");
        int exitCode = cli::exitOk;
        try {
            const AllocationFault fault(after);
            exitCode = gallery();
            ASSERT_TRUE(fault.hasHappened()) << "no failure of this kind came up";
        } catch (const std::bad_alloc&) {
            continue; // before the first picture
        }
        happened = m_err.str().find("alpha.png: not enough memory") != std::string::npos;
        EXPECT_TRUE(!happened || exitCode == cli::exitSomeFailed);
    }
    EXPECT_TRUE(std::filesystem::exists(m_folder.path(u8"gallery/opaque/00-original.png")));
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
