// What a load takes beside pixels and input, and what it does when the system gives no more. Linux tells both.
#include "platform/interaction.h"
#include "support/Pictures.h"
#include <malloc.h>
#include <sys/resource.h>

using namespace pixkit;
using namespace pixkit::test;

namespace {

// A field of /proc/self/status, in bytes.
std::int64_t processStatus(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::int64_t kilobytes = 0;
        if (word == field && status >> kilobytes) return kilobytes * 1024;
    }
    return 0;
}

constexpr std::int64_t megabyte = 1 << 20;

// Noise, not compressed.
ByteArray bigPicture(AlphaTypeEnum alpha, bool isInterlaced) {
    cPixSheet sheet;
    draw(sheet, 1600, 1200, alpha, [](unsigned x, unsigned y) {
        const unsigned value = x * 2654435761U ^ y * 2246822519U;
        return Pixel{static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value >> 16),
                     static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(x)};
    });
    sheet.PngPropertySet(pngCompressionLevel, 0);
    sheet.PngPropertySet(pngInterlaced, isInterlaced ? 1 : 0);
    ByteArray file;
    EXPECT_TRUE(sheet.SaveToStream_PNG(file));
    return file;
}

class PngMemory : public testing::Test {
  protected:
    void SetUp() override {
        // Sanitizers keep books and freed blocks beside the program's own memory.
#if defined(__SANITIZE_ADDRESS__)
        GTEST_SKIP();
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
        GTEST_SKIP();
#endif
#endif
        // Big blocks go back to the system as soon as they are freed, so that the peak is what the program holds.
        mallopt(M_MMAP_THRESHOLD, 1 << 17);
        malloc_trim(0);
    }
};

} // namespace

TEST_F(PngMemory, ALoadTakesMoreThanTheInflatedDataAndAMegabyte) {
    const TemporaryFolder folder;
    for (const AlphaTypeEnum alpha : {AlphaNone, AlphaComplex}) {
        for (const bool isInterlaced : {false, true}) {
            const ByteArray array = bigPicture(alpha, isInterlaced);
            writeFile(folder.path(u8"a.png"), bytesOf(array));
            const std::string name = folder.name(u8"a.png");
            for (const bool fromFile : {false, true}) {
                cPixSheet sheet;
                malloc_trim(0);
                std::ofstream("/proc/self/clear_refs") << 5; // forgets the peak
                const std::int64_t before = processStatus("VmRSS:");
                ASSERT_TRUE(fromFile ? sheet.LoadPicture_File(name) : sheet.LoadPicture_Stream(array));
                const std::int64_t taken = processStatus("VmHWM:") - before;
                const std::int64_t pixels = std::int64_t{sheet.scanWidth()} * sheet.Height();
                const auto inflated = static_cast<std::int64_t>(array.size());
                EXPECT_LE(taken - pixels - (fromFile ? inflated : 0), inflated + megabyte)
                    << alpha << isInterlaced << fromFile;
            }
        }
    }
}

TEST_F(PngMemory, ASystemWithoutMemoryEndsTheProcessOrLeavesHalfAPicture) {
    int boxes = 0, failures = 0;
    platform::setMessageBoxHandler([&](const auto&, const auto&, auto) { return ++boxes, platform::answerOk; });
    const ByteArray array = bigPicture(AlphaComplex, false);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
    for (std::int64_t room = 0; room <= 64 * megabyte; room = room == 0 ? megabyte : room * 2) {
        cPixSheet sheet;
        sheet.InitializeDIB(3, 2);
        malloc_trim(0);
        const rlimit tight{static_cast<rlim_t>(processStatus("VmSize:") + room), limit.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
        const bool loaded = sheet.LoadPicture_Stream(array);
        ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
        EXPECT_EQ(sheet.Width(), loaded ? 1600 : 0);
        EXPECT_TRUE(sheet.LoadPicture_Stream(array)) << "not usable after a failure with room for " << room;
        failures += loaded ? 0 : 1;
    }
    platform::setMessageBoxHandler({});
    EXPECT_GE(failures, 2) << "the rows, then the pixels, find no room";
    EXPECT_GE(boxes, 1);
}
