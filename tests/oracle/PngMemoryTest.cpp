// What a load takes beside pixels and input, and what it does when the system gives no more. Linux tells both.
#include "platform/interaction.h"
#include "support/Pictures.h"
#include "support/PngBuilder.h"
#include <algorithm>
#include <cstdio>
#include <malloc.h>
#include <sys/resource.h>

using namespace pixkit;
using namespace pixkit::test;

namespace {

// The sanitizers keep books and freed blocks beside the program's own memory.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool memoryIsTheProgramsOwn = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool memoryIsTheProgramsOwn = false;
#else
constexpr bool memoryIsTheProgramsOwn = true;
#endif
#else
constexpr bool memoryIsTheProgramsOwn = true;
#endif

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

// Big blocks go back to the system as soon as they are freed, so that the peak is what the program holds.
void keepNoFreedBlocks() {
    mallopt(M_MMAP_THRESHOLD, 1 << 17);
    malloc_trim(0);
}

} // namespace

TEST(PngMemory, ALoadTakesMoreThanTheInflatedDataAndAMegabyte) {
    if (!memoryIsTheProgramsOwn) GTEST_SKIP();
    const TemporaryFolder folder;
    const PngImage kinds[] = {
        {1600, 1200, 8, 2}, {1600, 1200, 8, 3}, {1600, 1200, 8, 6}, {1600, 1200, 8, 6, 0, 0, 1}, {1600, 1200, 16, 6}};
    for (const PngImage& image : kinds) {
        const Bytes rows = filteredRows(image, noise(5));
        for (const std::size_t pieceSize : {0U, 8192U, 100U}) {
            const Bytes data = PngBuilder().IHDR(image).IDAT(zlibStored(rows), pieceSize).IEND();
            writeFile(folder.path(u8"a.png"), data);
            const std::string name = folder.name(u8"a.png");
            const ByteArray array(data);
            for (const bool fromFile : {false, true}) {
                cPixSheet sheet;
                keepNoFreedBlocks();
                std::ofstream("/proc/self/clear_refs") << 5; // forgets the peak
                const std::int64_t before = processStatus("VmRSS:");
                ASSERT_TRUE(fromFile ? sheet.LoadPicture_File(name) : sheet.LoadPicture_Stream(array));
                const std::int64_t taken = processStatus("VmHWM:") - before;
                const std::int64_t pixels = std::int64_t{sheet.scanWidth()} * sheet.Height();
                const std::int64_t input = fromFile ? static_cast<std::int64_t>(data.size()) : 0;
                auto allowed = static_cast<std::int64_t>(rows.size()) + megabyte;
                // Pieces in an array are joined before the pixels take their memory; what is bigger than the pixels (16
                // bits of noise) shows.
                if (!fromFile && pieceSize != 0) {
                    allowed += std::max(std::int64_t{0}, static_cast<std::int64_t>(data.size()) - pixels);
                }
                EXPECT_LE(taken - pixels - input, allowed)
                    << "colour type " << +image.colorType << ", interlace " << +image.interlace << ", pieces of "
                    << pieceSize << (fromFile ? ", file" : ", array");
            }
        }
    }
}

TEST(PngMemory, ASystemWithoutMemoryEndsTheProcessOrLeavesHalfAPicture) {
    if (!memoryIsTheProgramsOwn) GTEST_SKIP();
    int boxes = 0;
    platform::setMessageBoxHandler([&](const auto&, const auto&, auto) { return ++boxes, platform::answerOk; });
    const ByteArray array(png({1000, 1000, 8, 6}, noise(3)));
    int failures = 0;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
    for (std::int64_t room = 0; room <= 64 * megabyte; room = room == 0 ? megabyte : room * 2) {
        cPixSheet sheet;
        sheet.InitializeDIB(3, 2);
        keepNoFreedBlocks();
        const rlimit tight{static_cast<rlim_t>(processStatus("VmSize:") + room), limit.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
        const bool loaded = sheet.LoadPicture_Stream(array);
        ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
        EXPECT_EQ(sheet.Handle() != 0, loaded);
        EXPECT_EQ(sheet.Width(), loaded ? 1000 : 0);
        EXPECT_TRUE(sheet.LoadPicture_Stream(array)) << "not usable after a failure with room for " << room;
        failures += loaded ? 0 : 1;
    }
    platform::setMessageBoxHandler({});
    EXPECT_GE(failures, 2) << "the rows, then the pixels, find no room";
    EXPECT_GE(boxes, 1);
}
