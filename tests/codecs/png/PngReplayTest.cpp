// Seeds of the fuzz targets, and inputs that did harm or would do it to a careless reader. The latter are named by
// outcome: image-... must load, refused-... must not, crash-..., oom-..., timeout-... must be survived.
#include "support/PngLoading.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class PngReplay : public QuietLoads {
  protected:
    template <class Check>
    void forEachFile(const char* folder, Check check) {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(std::string(PIXKIT_SOURCE_DIR) + folder)) {
            SCOPED_TRACE(entry.path().string());
            const Bytes data = readFile(entry.path());
            check(entry.path().filename().string(), load(data), load(data, Source::file),
                  load(data, Source::stream, false));
            ++count;
        }
        EXPECT_GT(count, 0U) << folder;
    }
};

} // namespace

TEST_F(PngReplay, ASeedNoLongerLoads) {
    forEachFile("/fuzz/seeds/png",
                [](const std::string&, const Loaded& stream, const Loaded& file, const Loaded& noZlib) {
                    EXPECT_GT(stream.width, 0);
                    EXPECT_EQ(stream, file);
                    EXPECT_EQ(stream, noZlib);
                });
}

TEST_F(PngReplay, AnOldFaultIsBack) {
    forEachFile("/tests/data/regression",
                [](const std::string& name, const Loaded& stream, const Loaded& file, const Loaded&) {
                    EXPECT_TRUE(!name.starts_with("image-") || (stream.width != 0 && file.width != 0));
                    EXPECT_TRUE(!name.starts_with("refused-") || (stream.width == 0 && file.width == 0));
                });
}
