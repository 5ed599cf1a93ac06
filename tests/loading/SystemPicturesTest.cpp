// What programs have in memory already: handles of bitmaps and icons, and resources that they provide.
#include "codecs/ico/IcoBuilder.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include "shared/resources.h"
#include "support/GifBuilder.h"
#include "support/SourceFolder.h"
#include <stdexcept>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class SystemPictures : public QuietLoads {
  protected:
    ~SystemPictures() override { setResourceProvider({}); }
};

using UniqueBitmap = platform::UniqueHandle<platform::DeleteObject>;
using UniqueIcon = platform::UniqueHandle<platform::DestroyIcon>;

// 1 x 1 pixels, hidden by the mask.
UniqueIcon maskedIcon(platform::Handle color, bool isIcon) {
    const Bytes masks(4, 0x80); // the second row is what a monochrome icon inverts
    const UniqueBitmap mask(platform::CreateMonochromeBitmap(1, color != 0 ? 1 : 2, masks.data()));
    return UniqueIcon(platform::CreateIconIndirect({isIcon, 0, 0, mask.get(), color}));
}

UniqueBitmap opaqueBitmap(std::uint16_t bitCount = 32) {
    platform::BitmapInfoHeader header{.biWidth = 1, .biHeight = 1, .biBitCount = bitCount};
    void* bits = nullptr;
    UniqueBitmap bitmap(platform::CreateDIBSection(0, header, &bits));
    if (bits != nullptr) std::copy_n(Pixel{1, 2, 3, 255}.begin(), bitCount / 8, static_cast<std::uint8_t*>(bits));
    return bitmap;
}

} // namespace

TEST_F(SystemPictures, AHandleIsTakenForAnotherKind) {
    const UniqueBitmap bitmap = opaqueBitmap();
    const Bytes noMask(2);
    const UniqueBitmap mask(platform::CreateMonochromeBitmap(1, 1, noMask.data()));
    const UniqueIcon icon(platform::CreateIconIndirect({true, 0, 0, mask.get(), bitmap.get()}));
    const platform::ScreenDC screen;
    const platform::Handle stale = opaqueBitmap().get();
    cPixSheet sheet;
    EXPECT_TRUE(sheet.LoadPicture_ByHandle(bitmap.get()));
    EXPECT_EQ(sheet.ImageType(), imgBitmap);
    EXPECT_EQ(pixelsOf(sheet), std::vector<Pixel>({{1, 2, 3, 255}}));
    EXPECT_TRUE(sheet.LoadPicture_ByHandle(icon.get()));
    EXPECT_EQ(sheet.ImageType(), imgIconARGB);
    EXPECT_EQ(pixelsOf(sheet), std::vector<Pixel>({{1, 2, 3, 255}}));
    // Another instance's and its own, selected into a device context.
    cPixSheet other;
    EXPECT_NE(sheet.LoadDIBinDC(true), 0);
    EXPECT_TRUE(other.LoadPicture_ByHandle(sheet.Handle()));
    EXPECT_EQ(pixelsOf(other), std::vector<Pixel>({{1, 2, 3, 255}}));
    EXPECT_TRUE(sheet.LoadPicture_ByHandle(sheet.Handle()));
    EXPECT_EQ(pixelsOf(sheet), std::vector<Pixel>({{1, 2, 3, 255}}));
    const auto ofItself = platform::OleCreatePictureIndirect(sheet.Handle(), platform::PictureType::bitmap, false);
    EXPECT_TRUE(ofItself && sheet.LoadPicture_StdPicture(ofItself.get()));
    EXPECT_EQ(pixelsOf(sheet), std::vector<Pixel>({{1, 2, 3, 255}}));
    for (const platform::Handle handle : {platform::Handle{0}, platform::Handle{-1}, stale, screen.get()}) {
        EXPECT_FALSE(sheet.LoadPicture_ByHandle(handle));
        EXPECT_EQ(sheet.Handle(), 0);
    }
}

// Whatever the system refuses, and however often: the whole picture or none, nothing kept, and an instance that works.
TEST_F(SystemPictures, AFailingSystemLeavesHalfAPictureOrSomethingOfItsOwn) {
    const UniqueBitmap bitmap = opaqueBitmap(), plain = opaqueBitmap(24);
    const UniqueIcon alpha = maskedIcon(bitmap.get(), true), color = maskedIcon(plain.get(), true),
                     monochrome = maskedIcon(0, false);
    const auto picture = platform::OleCreatePictureIndirect(bitmap.get(), platform::PictureType::bitmap, false);
    ASSERT_TRUE(bitmap && plain && alpha && color && monochrome && picture);
    const auto gif = [](int transparent) {
        return Gif{.width = 2,
                   .height = 1,
                   .codes = lzw({0, 1}, 2),
                   .global = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
                   .before = graphicControl(transparent)}
            .data();
    };
    const auto jpeg = readFile(sourceFolder() / "fuzz" / "seeds" / "picture" / "baseline");
    const BmpFile bmp{.width = 1, .height = 1, .bitCount = 24, .pixels = {1, 2, 3, 0}};
    using Load = std::function<bool(cPixSheet & sheet)>;
    const auto stream = [](const Bytes& bytes) -> Load {
        return [array = ByteArray(bytes)](cPixSheet& sheet) { return sheet.LoadPicture_Stream(array); };
    };
    const auto byHandle = [](platform::Handle handle) -> Load {
        return [handle](cPixSheet& sheet) { return sheet.LoadPicture_ByHandle(handle); };
    };
    const std::pair<const char*, Load> loads[] = {
        {"GIF", stream(gif(-1))},
        {"transparent GIF", stream(gif(1))},
        {"JPEG", stream(jpeg)},
        {"BMP", stream(bmp.build())},
        {"ICO", stream(icoFile({{icoBitmap(bmp, Bytes(4, 0))}}))},
        {"ICO with PNG", stream(icoFile({{png({1, 1, 8, 0}, {0, 77})}}))},
        {"bitmap", byHandle(bitmap.get())},
        {"icon with alpha", byHandle(alpha.get())},
        {"icon with colours", byHandle(color.get())},
        {"monochrome cursor", byHandle(monochrome.get())},
        {"picture", [&](cPixSheet& sheet) { return sheet.LoadPicture_StdPicture(picture.get()); }},
    };
    for (const auto& [name, load] : loads) {
        cPixSheet sheet;
        ASSERT_TRUE(load(sheet)) << name;
        const auto expected = pixelsOf(sheet);
        const auto open = platform::openHandles();
        for (int call = 0; call < static_cast<int>(platform::SeamCall::count); ++call) {
            for (int after = 0; after < 4; ++after) {
                for (const int times : {1, -1}) {
                    SCOPED_TRACE(std::string(name) + ", call " + std::to_string(call) + " after " +
                                 std::to_string(after) + ", " + std::to_string(times) + " times");
                    bool loaded = false;
                    {
                        const platform::ScopedFault fault(static_cast<platform::SeamCall>(call), after, times);
                        loaded = load(sheet);
                    }
                    EXPECT_EQ(pixelsOf(sheet), loaded ? expected : std::vector<Pixel>());
                    EXPECT_EQ(sheet.ImageType() == imgError, !loaded);
                    EXPECT_TRUE(load(sheet)) << "not usable afterwards";
                    EXPECT_EQ(platform::openHandles(), open);
                }
            }
        }
    }
}

TEST_F(SystemPictures, TheProvidersResourcesAreMixedUp) {
    cPixSheet sheet;
    const auto refuses = [&](const ResourceId& index, const ResourceId& section) {
        sheet.InitializeDIB(1, 1);
        const bool loaded = sheet.LoadPicture_Resource(index, section);
        return !loaded && sheet.Handle() == 0;
    };
    EXPECT_TRUE(refuses(1, 0)) << "nobody provides anything";
    EXPECT_TRUE(refuses(1, "PICTURES"));
    const Bytes picture = png({.width = 5, .height = 4}, noise(1));
    setResourceProvider({[](const ResourceId& index, PictureResource kind) -> std::unique_ptr<platform::StdPicture> {
                             if (index != ResourceId("logo") || kind != PictureResource::bitmap) return nullptr;
                             UniqueBitmap bitmap = opaqueBitmap();
                             auto made =
                                 platform::OleCreatePictureIndirect(bitmap.get(), platform::PictureType::bitmap, true);
                             if (made) bitmap.release();
                             return made;
                         },
                         [&](const ResourceId& index, const std::string& section) {
                             if (section != "PICTURES") throw std::out_of_range(section);
                             return index == ResourceId(7) ? Bytes{0xEE} + picture : Bytes();
                         }});
    EXPECT_TRUE(sheet.LoadPicture_Resource("logo", 0));
    EXPECT_EQ(sheet.Width(), 1);
    EXPECT_TRUE(sheet.LoadPicture_Resource(7, "PICTURES", 32, 32, 1));
    EXPECT_EQ(sheet.Width(), 5);
    EXPECT_TRUE(refuses(7, "PICTURES")) << "streamStart does not count";
    EXPECT_TRUE(refuses(8, "PICTURES"));
    EXPECT_TRUE(refuses("logo", 1));
    EXPECT_TRUE(refuses(7, 0));
    EXPECT_TRUE(refuses(7, "OTHERS")) << "what a provider throws";
    expectedReports = {"LoadPicture_Resource"};
}
