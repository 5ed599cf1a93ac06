// What programs have in memory already: handles of bitmaps and icons, and resources that they provide.
#include "platform/gdi.h"
#include "platform/icons.h"
#include "shared/resources.h"
#include "support/PngLoading.h"
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

UniqueBitmap opaqueBitmap() {
    platform::BitmapInfoHeader header{.biWidth = 1, .biHeight = 1};
    void* bits = nullptr;
    UniqueBitmap bitmap(platform::CreateDIBSection(0, header, &bits));
    if (bits != nullptr) std::ranges::copy(Pixel{1, 2, 3, 255}, static_cast<std::uint8_t*>(bits));
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
    // The instance's own, selected into its device context.
    EXPECT_NE(sheet.LoadDIBinDC(true), 0);
    EXPECT_TRUE(sheet.LoadPicture_ByHandle(sheet.Handle()));
    EXPECT_EQ(pixelsOf(sheet), std::vector<Pixel>({{1, 2, 3, 255}}));
    for (const platform::Handle handle : {platform::Handle{0}, platform::Handle{-1}, stale, screen.get()}) {
        EXPECT_FALSE(sheet.LoadPicture_ByHandle(handle));
        EXPECT_EQ(sheet.Handle(), 0);
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
