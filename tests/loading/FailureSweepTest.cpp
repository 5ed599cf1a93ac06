// Every allocation and every call of the system that loads and saves make fails once, and then with all that follow:
// the answer is the stated one, nothing is half done, lost or left behind, and the next try succeeds.
#include "MemoryClipboard.h"
#include "loading/ForeignPictures.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include "platform/interaction.h"
#include "platform/pictures.h"
#include "platform/regions.h"
#include "support/AllocationFault.h"
#include "support/Pictures.h"
#include "support/SourceFolder.h"
#include <functional>

using namespace pixkit;
using namespace pixkit::test;
using platform::SeamCall;

namespace {

class FailureSweep : public testing::Test {
  protected:
    FailureSweep() {
        platform::setMessageBoxHandler([this](const std::string& text, auto&, auto) {
            isTold = isTold || text == "std::bad_alloc";
            return platform::answerOk;
        });
    }
    ~FailureSweep() override { platform::setMessageBoxHandler({}); }
    bool isTold = false; // whether somebody was told of an end of memory, which is a refusal like others
};

// One try at something, what has to be there before it, and a look at what it left, given whether it said that it was a
// success.
struct Subject {
    std::function<void()> prepare;
    std::function<bool()> attempt;
    std::function<void(bool isDone)> check;

    // How often a success makes a call.
    int callsOf(SeamCall call) const {
        constexpr int most = 60;
        int left = 0;
        prepare();
        const platform::ScopedFault unmet(call, most, 1);
        EXPECT_TRUE(attempt());
        while (left <= most && !platform::faultDue(call))
            ++left;
        return most - left;
    }

    // `failingly` runs the attempt with a failure and says whether it was met.
    template <class Failingly>
    bool meet(const std::string& failure, Failingly&& failingly) const {
        SCOPED_TRACE(failure);
        const auto live = liveAllocations();
        const auto handles = platform::openHandles();
        bool isDone = false;
        prepare();
        const bool isMet = failingly(isDone);
        EXPECT_TRUE(isDone || isMet);
        check(isDone); // a success too: some things can be done without, such as a question about the old file
        prepare();
        EXPECT_TRUE(attempt()) << "not usable after a failure";
        check(true);
        EXPECT_EQ(liveAllocations(), live);
        EXPECT_EQ(platform::openHandles(), handles);
        return isMet && !testing::Test::HasFailure();
    }

    void sweep(std::initializer_list<int> lengths) const {
        prepare();
        ASSERT_TRUE(attempt());
        for (const int times : lengths) {
            SCOPED_TRACE(times < 0 ? "and all that follow" : "once");
            const auto atAllocation = [&](long after) {
                return meet("allocation " + std::to_string(after), [&](bool& isDone) {
                    const AllocationFault fault(after, times);
                    isDone = attempt();
                    return fault.hasHappened();
                });
            };
            for (long after = 0; atAllocation(after);)
                ++after;
            for (int call = 0; call < static_cast<int>(SeamCall::count); ++call) {
                for (int after = callsOf(static_cast<SeamCall>(call)); after-- > 0;)
                    meet("call " + std::to_string(call) + " after " + std::to_string(after), [&](bool& isDone) {
                        const platform::ScopedFault fault(static_cast<SeamCall>(call), after, times);
                        isDone = attempt();
                        return true;
                    });
            }
        }
    }
};

} // namespace

TEST_F(FailureSweep, AFailedLoadLeaksOrLeavesHalfAPicture) {
    const auto data = sourceFolder() / "tests" / "data" / "pictures";
    cPixSheet source;
    fill(source, 1, 1, {{1, 2, 3, 255}});
    const auto picture = platform::OleCreatePictureIndirect(source.Handle(), platform::PictureType::bitmap, false);
    const platform::UniqueHandle<platform::DeleteObject> mask(platform::CreateMonochromeBitmap(1, 1, nullptr));
    const platform::UniqueHandle<platform::DestroyIcon> icon(
        platform::CreateIconIndirect({.hbmMask = mask.get(), .hbmColor = source.Handle()}));
    using Load = std::function<bool(cPixSheet&)>;
    std::vector<std::pair<std::string, Load>> loads = {
        {"picture", [&](cPixSheet& sheet) { return sheet.LoadPicture_StdPicture(picture.get()); }},
        {"handle", [&](cPixSheet& sheet) { return sheet.LoadPicture_ByHandle(source.Handle()); }},
        {"icon", [&](cPixSheet& sheet) { return sheet.LoadPicture_ByHandle(icon.get()); }}};
    for (const char* name : {"png/odd-chunk-between-idats.png", "png/interlaced-5x5.png", "gif/table-local.gif",
                             "gif/transparent-1.gif", "bmp/rle8.bmp", "ico/two-1-bit-icon.ico", "ico/png.ico",
                             "tga/rgb-32-10-rle.tga", "../../../fuzz/seeds/picture/baseline"}) {
        const ByteArray array(readFile(data / name));
        loads.emplace_back(name, [array](cPixSheet& sheet) { return sheet.LoadPicture_Stream(array); });
        loads.emplace_back(std::string(name) + " twice", [array](cPixSheet& sheet) {
            return sheet.LoadPicture_Stream(array, 0, 0, 0, 0, true) && sheet.LoadPicture_FromOrignalFormat();
        });
    }
    for (const char* name : {"png/odd-chunk-between-idats.png", "bmp/rle8.bmp"})
        loads.emplace_back(name, [file = (data / name).string()](cPixSheet& sheet) {
            return sheet.LoadPicture_File(file, 32, 32, true);
        });
    MemoryClipboard clipboard;
    cPixSheet copied;
    fill(copied, 2, 1, {{64, 32, 16, 128}, {9, 8, 7, 255}});
    ASSERT_TRUE(copied.CopyToClipBoard());
    clipboard.blocks.erase(clipboard.blocks.begin(), clipboard.blocks.end() - 1); // one that nothing stands in for
    loads.emplace_back("clipboard", [](cPixSheet& sheet) { return sheet.LoadPicture_ClipBoard(true); });
    for (const auto& [name, load] : loads) {
        if (name.find("baseline") != std::string::npos && !platform::canLoadJpeg()) continue;
        SCOPED_TRACE(name);
        cPixSheet sheet, good, whole;
        ASSERT_TRUE(load(good));
        // A frame that the system's loader refuses is shown to it once more as a whole.
        if (good.ImageType() == imgGIF) LoadSystemPicture(readFile(data / name.substr(0, name.find(' '))), whole);
        const auto check = [&](bool isLoaded) {
            ByteArray kept;
            EXPECT_EQ(sheet.Handle() != 0, isLoaded);
            const cPixSheet& expected = sheet.ImageType() == whole.ImageType() ? whole : good;
            EXPECT_EQ(sheet.ImageType(), isLoaded ? expected.ImageType() : imgError);
            EXPECT_TRUE(isLoaded || !sheet.GetOrginalFormat(kept));
            EXPECT_EQ(pixelsOf(sheet), isLoaded ? pixelsOf(expected) : std::vector<Pixel>());
        };
        Subject{[] {}, [&, &load = load] { return load(sheet); }, check}.sweep({1, -1});
    }
    EXPECT_FALSE(isTold);
}

TEST_F(FailureSweep, AFailedCopyLosesWhatWasOnTheClipboard) {
    MemoryClipboard clipboard;
    cPixSheet sheet;
    fill(sheet, 2, 1, {{64, 32, 16, 128}, {9, 8, 7, 255}});
    const auto check = [&](bool isDone) {
        EXPECT_EQ(clipboard.blocks.front().format, isDone ? "PNG" : "old");
        EXPECT_EQ(clipboard.blocks.size(), isDone ? 4u : 1u);
        EXPECT_EQ(clipboard.opened, 0);
    };
    Subject{[&] { clipboard.blocks = {{"old", {1}}}; }, [&] { return sheet.CopyToClipBoard(); }, check}.sweep({1, -1});
}

TEST_F(FailureSweep, AFailedHandingOutLeavesObjectsBehind) {
    cPixSheet sheet;
    fill(sheet, 2, 1, {{64, 32, 16, 128}, {9, 8, 7, 255}});
    sheet.Alpha(AlphaComplex);
    const std::function<bool()> members[] = {
        [&] { return platform::DeleteObject(sheet.CreateBitmap(pictStraight)); },
        [&] { return platform::DeleteObject(sheet.CreateBitmap(pictFlat)); },
        [&] { return platform::DestroyIcon(sheet.CreateIcon(3, 3)); },
        [&] { return platform::DestroyIcon(sheet.CreateCursor(1, 0)); },
        [&] { return sheet.CreateStdPicture() != nullptr; },
        [&] { return sheet.CreateStdPicture(pictFlat) != nullptr; },
    };
    for (const auto& member : members)
        Subject{[] {}, member, [&](bool isDone) { EXPECT_EQ(sheet.LastErrorText().empty(), isDone); }}.sweep({1, -1});
}

TEST_F(FailureSweep, AFailedSaveCostsTheOldFileOrTheArray) {
    const TemporaryFolder folder;
    const std::string name = folder.name(u8"gr\u00F6\u00DFe \u56FE.bin");
    const auto path = folder.path(u8"gr\u00F6\u00DFe \u56FE.bin");
    const Bytes old = {1, 2, 3};
    cPixSheet sheet;
    fill(sheet, 2, 1, {{64, 32, 16, 128}, {9, 8, 7, 255}});
    sheet.Alpha(AlphaComplex);
    const auto pixels = pixelsOf(sheet);
    // Into the array, or without one into the file.
    using Save = std::function<bool(ByteArray*)>;
    const Save saves[] = {
        [&](auto* out) {
            return out ? sheet.SaveToStream_Bitmap(*out) : sheet.SaveToFile_Bitmap(name, false, 0, false);
        },
        [&](auto* out) {
            return out ? sheet.SaveToStream_TGA(*out) : sheet.SaveToFile_TGA(name, false, false, false, false);
        },
        [&](auto* out) { return out ? sheet.SaveToStream_PNG(*out) : sheet.SaveToFile_PNG(name, false); },
        [&](auto* out) { return out ? sheet.SaveToStream_JPG(*out) : sheet.SaveToFile_JPG(name, 70, 0, false); },
        [&](auto* out) { return out ? sheet.SaveToStream_GIF(*out) : sheet.SaveToFile_GIF(name, true, 128, false); },
        [&](auto* out) { return (out ? sheet.SaveToStream_ICO(*out) : sheet.SaveToFile_ICO(name, {}, false)) == 1; },
    };
    for (const Save& save : saves) {
        SCOPED_TRACE("format " + std::to_string(&save - saves));
        ByteArray good, out;
        ASSERT_TRUE(save(&good));
        const auto isWritten = [&](bool isSaved) { EXPECT_EQ(bytesOf(out), isSaved ? bytesOf(good) : old); };
        Subject{[&] { out = ByteArray(old); }, [&] { return save(&out); }, isWritten}.sweep({1, -1});
        const auto prepare = [&] {
            std::error_code isMissing;
            std::filesystem::permissions(path, std::filesystem::perms::owner_write, isMissing);
            writeFile(path, old);
            std::filesystem::permissions(path, std::filesystem::perms::owner_read);
        };
        const auto check = [&](bool isSaved) {
            EXPECT_EQ(readFile(path), isSaved ? bytesOf(good) : old);
            EXPECT_TRUE(isSaved || (platform::GetFileAttributesW(name) & platform::fileAttributeReadonly) != 0);
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path(u8"")), {}), 1) << "left behind";
            EXPECT_EQ(pixelsOf(sheet), pixels);
        };
        Subject{prepare, [&] { return save(nullptr); }, check}.sweep({1});
    }
}

TEST_F(FailureSweep, AFailedRegionIsHalfARegionOrLeavesParts) {
    cPixSheet sheet;
    draw(sheet, 40, 30, AlphaSimple, [](unsigned x, unsigned y) {
        return Pixel{0, 0, 0, Pixel::value_type(x * y % 3)};
    });
    for (const std::int32_t style : {regionBounds, regionEnclosed, regionShaped}) {
        std::size_t made = 0;
        const auto attempt = [&] {
            const platform::UniqueRegion region(sheet.CreateRegion(style));
            made = platform::GetRegionData(region.get());
            return static_cast<bool>(region);
        };
        attempt();
        const auto check = [&, all = made](bool isDone) { EXPECT_EQ(made, isDone ? all : 0); };
        Subject{[] {}, attempt, check}.sweep({1, -1});
    }
}
