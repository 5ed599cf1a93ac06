// What becomes of a GIF that is cut. Which files give which pixels, and which bytes are written, stands in the ledgers
// of tests/data; that others read the written ones, in tests/oracle.
#include "codecs/gif/cGIFparser.h"
#include "support/QuietLoads.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class GifFiles : public QuietLoads {};

} // namespace

TEST_F(GifFiles, DataThatEndsEarlyIsReadBeyondOrLeavesAPicture) {
    for (const char* name : {"extensions.gif", "table-local-transparent.gif"}) {
        const Bytes whole = picture(std::string("gif/") + name);
        for (std::size_t length = 0; length < whole.size(); ++length) {
            const auto cut = std::make_unique<std::uint8_t[]>(length); // sanitizers watch its end
            std::copy_n(whole.begin(), length, cut.get());
            cPixSheet sheet;
            const ReadResult result = cGIFparser().LoadStream({cut.get(), length}, sheet);
            EXPECT_EQ(static_cast<bool>(result), length == whole.size() - 1)
                << "only the trailer is not needed: " << length;
        }
    }
}
// SPDX-License-Identifier: MIT
