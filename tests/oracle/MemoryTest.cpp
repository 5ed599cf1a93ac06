// What loads and resampling take beside pixels and input. Linux tells.
#include "support/Pictures.h"
#include <malloc.h>

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
// A window and a few rows; code that is run for the first time, and what the system counts late, are up to half as
// much.
constexpr std::int64_t mostOfALoad = (256 + 128) << 10;

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

class Memory : public testing::Test {
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

    // The peak during the call, above what was held before.
    template <class Call>
    static std::int64_t takenBy(Call&& call) {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << 5; // forgets the peak
        const std::int64_t before = processStatus("VmRSS:");
        EXPECT_TRUE(call());
        return processStatus("VmHWM:") - before;
    }
};

} // namespace

TEST_F(Memory, ALoadTakesMuchMoreThanItsWindow) {
    const TemporaryFolder folder;
    for (const AlphaTypeEnum alpha : {AlphaNone, AlphaComplex}) {
        for (const bool isInterlaced : {false, true}) {
            const ByteArray array = bigPicture(alpha, isInterlaced);
            writeFile(folder.path(u8"a.png"), bytesOf(array));
            const std::string name = folder.name(u8"a.png");
            for (const bool fromFile : {false, true}) {
                cPixSheet sheet;
                const std::int64_t taken =
                    takenBy([&] { return fromFile ? sheet.LoadPicture_File(name) : sheet.LoadPicture_Stream(array); });
                const std::int64_t pixels = std::int64_t{sheet.scanWidth()} * sheet.Height();
                const auto file = static_cast<std::int64_t>(array.size());
                EXPECT_LE(taken - pixels - (fromFile ? file : 0), mostOfALoad) << alpha << isInterlaced << fromFile;
            }
        }
    }
}

TEST_F(Memory, ResamplingTakesMuchMoreThanItsResult) {
    const std::int32_t sizes[][2] = {{1154, 866}, {256, 192}, {20, 15}, {3264, 100}, {3600, 2700}};
    for (const AlphaTypeEnum alpha : {AlphaNone, AlphaComplex}) {
        for (const eResampleFilters filter : {resampleArea, resampleTriangle, resampleMitchell, resampleLanczos3}) {
            for (const auto& size : sizes) {
                const std::int32_t width = size[0], height = size[1];
                cPixSheet sheet;
                draw(sheet, 3264, 2448, alpha, [](unsigned x, unsigned y) {
                    return Pixel{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 9, 255};
                });
                const std::int64_t taken = takenBy([&] { return sheet.Resample(width, height, filter); });
                EXPECT_LE(taken - std::int64_t{4} * width * height, megabyte) << alpha << ' ' << filter << ' ' << width;
            }
        }
    }
}
// SPDX-License-Identifier: MIT
