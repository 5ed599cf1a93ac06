// What is refused before a reader sees it, slices, the kept original bytes, and what a failed load says and leaves.
#include "codecs/png/cPNGparser.h"
#include "shared/modParsers.h"
#include "support/AllocationFault.h"
#include "support/PngLoading.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class LoadDispatch : public QuietLoads {
  protected:
    LoadDispatch() { EXPECT_TRUE(sheet.InitializeDIB(3, 2)); }

    const Bytes picture = png({1, 1, 8, 0}, {0, 77}); // 70 bytes
    TemporaryFolder folder;
    cPixSheet sheet;

    std::string fileOf(const Bytes& data) {
        writeFile(folder.path(u8"a.png"), data);
        return folder.name(u8"a.png");
    }
};

Bytes keptBytes(const cPixSheet& sheet) {
    ByteArray kept;
    return sheet.GetOrginalFormat(kept) ? bytesOf(kept) : Bytes();
}

} // namespace

TEST_F(LoadDispatch, ASliceIsTakenFromTheWrongPlace) {
    // The picture from index 10 of an array that goes on behind it.
    constexpr std::int32_t before = 10, after = 30;
    const auto size = static_cast<std::int32_t>(picture.size());
    Bytes surrounded(before, 0x89);
    surrounded.insert(surrounded.end(), picture.begin(), picture.end());
    surrounded.resize(surrounded.size() + after);
    const struct {
        const char* slice;
        const Bytes& data;
        std::int32_t lower, start, length;
        bool loads;
    } rows[] = {
        {"all", picture, 0, 0, 0, true},
        {"all, lower bound above 0", picture, 7, 0, 0, true},
        {"all, lower bound below 0", picture, -100, -100, 0, true},
        {"start below the lower bound", picture, 7, -2000000000, 0, true},
        {"0 is an index, not an offset", picture, -100, 0, 0, false},
        {"to the end", surrounded, 0, before, 0, true},
        {"to the end, lower bound below 0", surrounded, -4, before - 4, 0, true},
        {"exactly the picture", surrounded, 1, before + 1, size, true},
        {"one index early", surrounded, 0, before - 1, size, false},
        {"to the last byte", surrounded, 0, before, size + after, true},
        {"one byte beyond the array", surrounded, 0, before, size + after + 1, false},
        {"two bytes short", surrounded, 0, before, size - 2, false},
        {"19 bytes", surrounded, 0, before, 19, false},
        {"negative length", picture, 0, 0, -1, false},
        {"start behind the end", picture, 0, size, 0, false},
        {"start far behind the end", picture, 0, 2147483647, 0, false},
        {"length that overflows with the start", surrounded, 0, before, 2147483647, false},
        {"greatest lower bound", picture, 2147483647 - size + 1, 0, 0, true},
        {"least lower bound", picture, -2147483647 - 1, -2147483647 - 1, size, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.slice);
        const bool loaded =
            sheet.LoadPicture_Stream(ByteArray(row.data, row.lower), 32, 32, row.start, row.length, true);
        EXPECT_EQ(loaded, row.loads);
        contentOf(sheet, row.loads);
        if (!row.loads) continue;
        EXPECT_EQ(sheet.GetPixel(0, 0), 0x4D4D4D);
        EXPECT_EQ(keptBytes(sheet), row.data) << "the whole array is kept, not only the slice";
    }
}

TEST_F(LoadDispatch, ARefusedSourceLeavesTheOldPictureOrSpeaks) {
    const Bytes notPng(100, 'x');
    Bytes almost = picture;
    almost[7] = 0x0B; // the last byte of the signature
    ByteArray square;
    square.redim(50, 2);
    std::filesystem::create_directory(folder.path(u8"folder.png"));
    const auto refused = [&](const char* what, auto&& load) {
        SCOPED_TRACE(what);
        ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(picture), 32, 32, 0, 0, true));
        EXPECT_FALSE(load());
        contentOf(sheet, false);
    };
    refused("missing file", [&] { return sheet.LoadPicture_File(folder.name(u8"missing.png")); });
    refused("missing folder", [&] { return sheet.LoadPicture_File(folder.name(u8"missing/a.png")); });
    refused("folder", [&] { return sheet.LoadPicture_File(folder.name(u8"folder.png")); });
    refused("no name", [&] { return sheet.LoadPicture_File(""); });
    refused("empty file", [&] { return sheet.LoadPicture_File(fileOf({})); });
    refused("file of another kind", [&] { return sheet.LoadPicture_File(fileOf(notPng)); });
    refused("file with a damaged signature", [&] { return sheet.LoadPicture_File(fileOf(almost)); });
    refused("file of a signature alone", [&] {
        Bytes data(57);
        std::copy_n(picture.begin(), 8, data.begin());
        return sheet.LoadPicture_File(fileOf(data));
    });
    refused("unallocated array", [&] { return sheet.LoadPicture_Stream({}); });
    refused("empty array", [&] { return sheet.LoadPicture_Stream(ByteArray(Bytes())); });
    refused("two dimensions", [&] { return sheet.LoadPicture_Stream(square); });
    refused("array of another kind", [&] { return sheet.LoadPicture_Stream(ByteArray(notPng)); });
    refused("array with a damaged signature", [&] { return sheet.LoadPicture_Stream(ByteArray(almost)); });
    refused("nothing kept", [&] {
        sheet.LoadPicture_Stream(ByteArray(picture));
        return sheet.LoadPicture_FromOrignalFormat();
    });
}

// What a reader of its own has refused as damaged: the loaders of some systems fall over it.
TEST_F(LoadDispatch, TheSystemIsAskedForWhatWasRefusedAlready) {
    const Bytes rest(40, 0xF0);
    const struct {
        const char* what;
        Bytes start;
        bool isAsked;
    } rows[] = {
        {"icon", {0, 0, 1, 0, 1, 0}, false},
        {"cursor", {0, 0, 2, 0, 0, 1}, false},
        {"icons, none of them", {0, 0, 1, 0, 0, 0}, true},
        {"gif", {'g', 'I', 'F', '8', '0', 'x'}, false},
        {"PNG", {0x89, 'P', 'N', 'G', 1, 2}, false},
        {"BMP", {'B', 'M', 0, 0, 0, 0}, false},
        {"JPEG", {0xFF, 0xD8, 0xFF, 0, 0, 0}, true},
    };
    for (const auto& row : rows) {
        const platform::ScopedFault once(platform::SeamCall::oleLoadPicture, 0, 1);
        EXPECT_FALSE(sheet.LoadPicture_Stream(ByteArray(row.start + rest)));
        EXPECT_NE(platform::faultDue(platform::SeamCall::oleLoadPicture), row.isAsked) << row.what;
    }
}

// 56 bytes are the greatest file that is refused; no picture is that small, so the reader is asked itself.
TEST_F(LoadDispatch, TheReaderJudgesFilesByTheWrongSize) {
    const auto loadFile = [&](const Bytes& data) {
        const platform::UniqueFile file(iparseGetFileHandle(fileOf(data), true, true));
        return cPNGparser().LoadFile(file.get(), sheet);
    };
    const auto start = [&](std::size_t size, std::uint8_t firstByte) {
        Bytes data = picture;
        data.resize(size);
        data[0] = firstByte;
        return data;
    };
    EXPECT_FALSE(loadFile(start(56, 0x89))) << "not tested for the signature, so not called a PNG";
    EXPECT_TRUE(loadFile(start(57, 0x89))) << "a PNG by its signature, although no picture comes of it";
    EXPECT_TRUE(loadFile(start(58, 0x89)));
    EXPECT_FALSE(loadFile(start(57, 0x88)));
    EXPECT_TRUE(loadFile(picture));
    EXPECT_EQ(sheet.GetPixel(0, 0), 0x4D4D4D);
}

TEST_F(LoadDispatch, TheSmallestPicturesAreRefused) {
    const auto smallest = [](const Bytes& stream) { return PngBuilder().IHDR({1, 1, 8, 0}).IDAT(stream).IEND(); };
    const Bytes ofOneByte = smallest({0x78});
    ASSERT_EQ(ofOneByte.size(), 58U);
    EXPECT_TRUE(sheet.LoadPicture_File(fileOf(ofOneByte)));
    EXPECT_TRUE(sheet.LoadPicture_Stream(ByteArray(Bytes(ofOneByte.begin(), ofOneByte.end() - 1))));
}

TEST_F(LoadDispatch, KeptBytesAreLostOrKeptTooLong) {
    const Bytes other = png({2, 1, 8, 0}, {0, 1, 2});
    const std::string file = fileOf(picture);
    ASSERT_TRUE(sheet.LoadPicture_File(file, 32, 32, true));
    EXPECT_EQ(keptBytes(sheet), picture);
    sheet.MakeImageInverse();
    ASSERT_TRUE(sheet.LoadPicture_FromOrignalFormat());
    EXPECT_EQ(sheet.GetPixel(0, 0), 0x4D4D4D) << "read again from the bytes";
    EXPECT_EQ(keptBytes(sheet), picture) << "the bytes outlive reading them again";

    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(other)));
    EXPECT_EQ(keptBytes(sheet), Bytes()) << "a load without SaveFormat forgets the bytes of the picture before";
    ByteArray array(Bytes{1, 2, 3});
    EXPECT_FALSE(sheet.GetOrginalFormat(array));
    EXPECT_FALSE(array.isAllocated());
    EXPECT_FALSE(sheet.LoadPicture_FromOrignalFormat());

    // What was kept with a slice is the whole array, which does not begin with the picture.
    Bytes shifted(1);
    shifted.insert(shifted.end(), other.begin(), other.end());
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(shifted, 5), 32, 32, 6, 0, true));
    ASSERT_TRUE(sheet.GetOrginalFormat(array));
    EXPECT_EQ(array.lowerBound(), 0);
    EXPECT_FALSE(sheet.LoadPicture_FromOrignalFormat());
    contentOf(sheet, false);
}

TEST_F(LoadDispatch, NamesOutsideTheCodePageAreNotFound) {
    for (const char8_t* name : {u8"B\u00e4ume.png", u8"\u65e5\u672c.png", u8"\U0001F333 & 'x'.png"}) {
        writeFile(folder.path(name), picture);
        EXPECT_TRUE(sheet.LoadPicture_File(folder.name(name)));
    }
}

TEST_F(LoadDispatch, AFailingMachineLeavesHalfAPicture) {
    using platform::SeamCall;
    const std::string file = fileOf(picture);
    for (const SeamCall call : {SeamCall::createFile, SeamCall::getFileSize, SeamCall::setFilePointer,
                                SeamCall::readFile, SeamCall::createDIBSection}) {
        for (int after = 0;; ++after) {
            SCOPED_TRACE("call " + std::to_string(static_cast<int>(call)) + " fails after " + std::to_string(after));
            ASSERT_LT(after, 10);
            bool loaded = false;
            {
                const platform::ScopedFault fault(call, after);
                loaded = sheet.LoadPicture_File(file, 32, 32, true);
            }
            contentOf(sheet, loaded);
            if (loaded) break;
        }
    }
    // A file that was a picture a moment ago and cannot be read again, to be kept, is an error to report, without a
    // box.
    expectedReports = {reports.size(), "LoadPicture_File"};
    EXPECT_TRUE(sheet.LoadPicture_File(file));
}

TEST_F(LoadDispatch, AnUnexpectedErrorIsNotTold) {
    const std::string file = fileOf(picture);
    for (long after = 0; boxes.empty() && after < 100; ++after) {
        const AllocationFault fault(after);
        sheet.LoadPicture_File(file);
    }
    contentOf(sheet, false);
    expectedBoxes = {"std::bad_alloc"};
    expectedReports = {"cPNGparser"};
}
