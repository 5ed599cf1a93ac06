// Dropped and pasted files in the forms that C++ alone has: contents, and what a program gives as pasted.
#include "platform/DropBlocks.h"
#include "platform/drops.h"
#include "support/MemoryClipboard.h"
#include "support/QuietLoads.h"
#include "support/SourceFolder.h"
#include <cmath>
#include <stdexcept>

using namespace pixkit;
using namespace pixkit::test;

namespace {

using DroppedFiles = QuietLoads;

const Bytes tgaOfOne{0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 24, 0, 1, 2, 3};

DroppedFile holding(const Bytes& bytes) {
    return {"", [bytes](std::uint64_t) { return bytes; }};
}

} // namespace

TEST_F(DroppedFiles, ContentsAreNotLoadedOrASourceThatFailsEndsTheSearch) {
    const std::vector<DroppedFile> files = {{"", [](auto) { return throw std::runtime_error("gone"), Bytes(); }},
                                            holding({1, 2, 3}),
                                            {"no such file.png"},
                                            {"named.tga", [](auto) { return tgaOfOne; }}};
    expectedReports = {"LoadPicture_DropedFiles", "LoadPicture_DropedFiles"};
    cPixSheet sheet;
    EXPECT_TRUE(sheet.LoadPicture_DropedFiles(files, 0, 32, 32, true));
    EXPECT_EQ(pixelsOf(sheet), (std::vector<Pixel>{{1, 2, 3, 255}}));
    ByteArray kept;
    EXPECT_TRUE(sheet.GetOrginalFormat(kept) && kept.size() == tgaOfOne.size());
    for (const std::int32_t index : {1, 2, 3, 5, -1}) {
        sheet.InitializeDIB(1, 1);
        EXPECT_FALSE(sheet.LoadPicture_DropedFiles(files, index) || sheet.Handle() != 0) << index;
    }
    EXPECT_TRUE(sheet.LoadPicture_DropedFiles(files, 4));
    std::vector<std::string> names;
    EXPECT_EQ(sheet.GetDroppedFileNames(files, names), 2);
    EXPECT_EQ(names, (std::vector<std::string>{"no such file.png", "named.tga"}));
}

TEST_F(DroppedFiles, ContentsAreNotCountedAsAFilesOrReadBeyondTheLimit) {
    std::uint64_t asked = 0;
    const std::vector<DroppedFile> files = {{"", [&](std::uint64_t most) {
                                                 asked = most;
                                                 return tgaOfOne;
                                             }}};
    const double pixels = 4;
    const auto size = static_cast<double>(tgaOfOne.size());
    cPixSheet sheet;
    for (const double limit : {0.0, size + pixels, HUGE_VAL}) {
        sheet.MaxMemory(limit);
        EXPECT_TRUE(sheet.LoadPicture_DropedFiles(files)) << limit;
    }
    for (const double limit : {size + pixels - 1, size - 1}) {
        sheet.MaxMemory(limit);
        EXPECT_FALSE(sheet.LoadPicture_DropedFiles(files)) << limit;
        EXPECT_EQ(sheet.LastErrorText(), "more memory than MaxMemory allows");
    }
    EXPECT_EQ(asked, tgaOfOne.size()) << "one too many, which tells that there are more";
}

TEST_F(DroppedFiles, TheFilesOfTheClipboardAreOthers) {
    MemoryClipboard clipboard;
    cPixSheet sheet;
    std::vector<std::string> names = {"old"};
    EXPECT_FALSE(sheet.LoadPicture_PastedFiles() || sheet.GetPastedFileNames(names) != 0);
    EXPECT_EQ(sheet.LastErrorText(), "there are no files on the clipboard");
    const auto path = (sourceFolder() / "samples" / "pictures" / "sprite-4-bit.png").string();
    Bytes block(20);
    block[0] = 20;
    block.insert(block.end(), path.begin(), path.end());
    for (const char letter : std::string("\0none.png\0\0", 11))
        block.push_back(static_cast<std::uint8_t>(letter));
    clipboard.blocks = {{"PNG", {1}}, {"CF_HDROP", block}};
    clipboard.busyFor = 2;
    EXPECT_TRUE(sheet.LoadPicture_PastedFiles() && sheet.LoadPicture_PastedFiles(1));
    EXPECT_EQ(sheet.Width(), 24);
    EXPECT_FALSE(sheet.LoadPicture_PastedFiles(2) || sheet.LoadPicture_PastedFiles(3) || sheet.Handle() != 0);
    EXPECT_EQ(sheet.GetPastedFileNames(names), 2);
    EXPECT_EQ(names, (std::vector<std::string>{path, "none.png"}));
    clipboard.blocks = {{"filegroupdescriptorW", {1}}}; // formats are registered without regard to capitals
    clipboard.contents = {holding(tgaOfOne)};
    EXPECT_TRUE(sheet.LoadPicture_PastedFiles());
    clipboard.busyFor = 1000;
    EXPECT_FALSE(sheet.LoadPicture_PastedFiles());
    EXPECT_EQ(sheet.LastErrorText(), "another program keeps the clipboard open");
    EXPECT_EQ(clipboard.opened, 0);
}

TEST_F(DroppedFiles, ABlockOfNamesIsTakenAtItsWord) {
    const struct {
        std::uint32_t first;
        bool areWide;
        std::string text, names; // '.' is a NUL; the names that are found, each in brackets
    } rows[] = {
        {20, false, "a.bc..", "[a][bc]"},
        {20, true, "a.b...c.d.......", "[ab][cd]"},
        {22, false, "xxa.b..", "[a][b]"},
        {20, true, "\x3A\x26=\xD8.\xDE=\xD8x.....", "[\u263A\U0001F600\xED\xA0\xBDx]"},
        {20, false, "a.bc", "[a]"}, // cut off
        {20, true, "a...b", "[a]"},
        {20, false, "..a..", ""},
        {20, false, "", ""},
        {19, false, "a..", ""}, // in the header
        {0, false, "a..", ""},
        {23, false, "a..", ""}, // at the end and beyond
        {0xFFFFFFF0, true, "a.......", ""},
        {0xFFFFFFFF, false, "a..", ""},
    };
    for (const auto& row : rows) {
        Bytes block(20);
        for (std::size_t i = 0; i < 4; ++i)
            block[i] = static_cast<std::uint8_t>(row.first >> (8 * i));
        block[16] = row.areWide ? 1 : 0;
        for (const char letter : row.text)
            block.push_back(letter == '.' ? 0 : static_cast<std::uint8_t>(letter));
        std::string names;
        for (const DroppedFile& file : platform::filesOfBlock(block))
            names += '[' + file.name + ']';
        EXPECT_EQ(names, row.names) << &row - rows;
        for (std::size_t size = 0; size < 20; ++size)
            EXPECT_TRUE(platform::filesOfBlock(std::span(block).first(size)).empty()) << size;
    }
}

TEST_F(DroppedFiles, DescriptionsThatAreNotThereOrFoldersCount) {
    constexpr std::size_t size = platform::narrowDescription;
    Bytes block(4 + 3 * size);
    block[0] = block[1] = block[2] = 0xFF;
    block[4] = 4 + 0x40;
    block[4 + 68] = 7; // bytes
    block[4 + 64] = 1; // times 2^32
    block[4 + size] = 4;
    block[4 + size + 36] = 0x10; // a folder
    block[4 + 2 * size + 36] = 0x10;
    const auto found = platform::virtualFilesOf(block, size);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].size, std::optional<std::uint64_t>(0x100000007));
    EXPECT_TRUE(found[1].index == 2 && !found[1].size);
    EXPECT_EQ(platform::virtualFilesOf(std::span(block).first(block.size() - 1), size).size(), 1U);
    EXPECT_TRUE(platform::virtualFilesOf(std::span(block).first(3), size).empty());
}
// SPDX-License-Identifier: MIT
