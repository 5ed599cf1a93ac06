// All pictures of tests/data/pictures (scripts/draw_test_pictures.py), good, odd and bad, and inputs that once did
// harm: what each of them gives is written down in tests/data/ledger.txt, one line a file. scripts/ledger.sh writes the
// ledger anew; the difference is then seen in review.
#include "support/Ledger.h"
#include "codecs/Formats.h"
#include "loading/LoadRequest.h"
#include "platform/pictures.h"
#include "support/QuietLoads.h"
#include <algorithm>
#include <memory>

using namespace pixkit;
using namespace pixkit::test;

namespace {

const std::filesystem::path data = sourceFolder() / "tests" / "data";

// Names in the ledger, relative to tests/data, in the order of the alphabet on every system.
std::vector<std::string> pictureNames() {
    std::vector<std::string> names;
    for (const char* folder : {"pictures", "regression"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(data / folder))
            if (entry.is_regular_file()) names.push_back(entry.path().lexically_relative(data).generic_string());
    }
    std::ranges::sort(names);
    return names;
}

// Of a refused load nothing remains.
std::string outcome(const cPixSheet& sheet, bool isLoaded) {
    EXPECT_EQ(sheet.Handle() != 0, isLoaded);
    EXPECT_EQ(sheet.BitsPointer() != nullptr, isLoaded);
    EXPECT_EQ(sheet.ImageType() != imgError, isLoaded);
    EXPECT_EQ(sheet.LastErrorText().empty(), isLoaded);
    if (!isLoaded) return "refused: " + std::string(sheet.LastErrorText());
    constexpr const char* alphas[] = {"AlphaNone", "AlphaSimple", "AlphaComplex"};
    const std::size_t bytes = static_cast<std::size_t>(sheet.scanWidth()) * static_cast<std::size_t>(sheet.Height());
    std::ostringstream text; // the store's rows are bottom-up, B, G, R, A
    text << sheet.Width() << "x" << sheet.Height() << " " << alphas[sheet.Alpha()] << " type " << sheet.ImageType()
         << " " << checksum({sheet.BitsPointer(), bytes});
    return text.str();
}

// Of bytes that end where their memory does, and begin `offset` bytes behind it, over an existing image.
std::string loadExactly(std::span<const std::uint8_t> bytes, std::size_t offset = 0) {
    const auto copy = std::make_unique<std::uint8_t[]>(offset + bytes.size());
    std::ranges::copy(bytes, copy.get() + offset);
    cPixSheet sheet;
    sheet.InitializeDIB(3, 2);
    const auto size = static_cast<std::uint32_t>(offset + bytes.size());
    const bool isLoaded =
        sheet.LoadPicture_Stream(ByteArray::borrow(copy.get(), {0, size}), 32, 32, static_cast<std::int32_t>(offset));
    return outcome(sheet, isLoaded);
}

std::string loadFile(const std::filesystem::path& path) {
    const auto name = path.u8string();
    cPixSheet sheet;
    sheet.InitializeDIB(3, 2);
    const bool isLoaded = sheet.LoadPicture_File({name.begin(), name.end()});
    return outcome(sheet, isLoaded);
}

// Of what our readers refuse, systems' loaders may show something, and each something else: that is kept out.
bool isLeftToTheSystem(const Bytes& bytes) {
    const ByteArray array(bytes);
    LoadRequest request(array, 0, bytes.size(), IconRequest(32, 32, 32));
    return std::ranges::any_of(formats(), [&](const Format& format) {
        cPixSheet sheet;
        return format.read != nullptr && format.goesToSystem != nullptr && format.sniff(bytes) &&
               !format.read(request, sheet);
    });
}

class Ledger : public QuietLoads {};

} // namespace

TEST_F(Ledger, APictureGivesSomethingElseThanIsWrittenDown) {
    std::ostringstream actual;
    for (const std::string& name : pictureNames()) {
        SCOPED_TRACE(name);
        const Bytes bytes = readFile(data / name);
        if (isLeftToTheSystem(bytes)) platform::armFault(platform::SeamCall::oleLoadPicture);
        const std::string withLibraries = loadExactly(bytes);
        // Smaller files are refused without a look.
        if (bytes.size() > 56) {
            EXPECT_EQ(loadFile(data / name), withLibraries) << "as a file";
        }
        platform::armFault(platform::SeamCall::loadLibrary); // no zlib
        const std::string result = loadExactly(bytes);
        if (withLibraries.ends_with("the CRC does not match")) { // which nobody else tells; there is more wrong then
            EXPECT_TRUE(result.starts_with("refused")) << result;
        } else {
            EXPECT_EQ(withLibraries, result);
        }
        actual << name << ": " << result;
        const std::string inside = loadExactly(bytes, 1000);
        if (inside != result) actual << "; inside of an array: " << inside;
        actual << '\n';
        platform::disarmFaults();
    }
    compareWithLedger("ledger.txt", actual.str());
}

// Every prefix of up to 1000 bytes, then of each thirtieth part of the file.
TEST_F(Ledger, ACutPictureIsNotSurvived) {
    for (const std::string& name : pictureNames()) {
        SCOPED_TRACE(name);
        const Bytes bytes = readFile(data / name);
        const std::size_t step = bytes.size() / 30 + 1;
        for (std::size_t size = 20; size < bytes.size(); size += size < 1000 ? 1 : step) {
            // A loader that is the system's own is slow to refuse: it sees one cut in 128.
            if (platform::canLoadMetafiles() && size % 128 != 0) platform::armFault(platform::SeamCall::oleLoadPicture);
            loadExactly(std::span(bytes).first(size));
            platform::disarmFaults();
            if (HasFailure()) FAIL() << "cut to " << size;
        }
    }
}
// SPDX-License-Identifier: MIT
