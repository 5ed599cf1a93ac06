// System picture objects and handles, as hosts pass them.
#include "Server.h"
#include <olectl.h>

namespace pixkit::test {

class ComPictures : public ComTest {
  protected:
    // 2 x 1 pixels: one red, one that an icon's mask hides; the picture owns what it shows.
    static HBITMAP bitmap() {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, 2, 1, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        const HBITMAP made = ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        static_cast<DWORD*>(bits)[0] = 0x00FF0000;
        return made;
    }
    static HICON icon(bool isIcon) {
        const BYTE masked[] = {0x40, 0};
        ICONINFO info{isIcon, 1, 0, ::CreateBitmap(2, 1, 1, 1, masked), bitmap()};
        const HICON made = ::CreateIconIndirect(&info);
        ::DeleteObject(info.hbmMask);
        ::DeleteObject(info.hbmColor);
        return made;
    }
    static void picture(UINT type, ComPtr<IPictureDisp>& made) {
        PICTDESC description{};
        description.cbSizeofstruct = sizeof description;
        description.picType = type;
        if (type == PICTYPE_BITMAP)
            description.bmp.hbitmap = bitmap();
        else
            description.icon.hicon = icon(true);
        EXPECT_EQ(::OleCreatePictureIndirect(&description, IID_IPictureDisp, TRUE, made.putVoid()), S_OK);
    }
    // Red as it should be, and the type of the image.
    void expectLoaded(::eImageFormat type) {
        ::eImageFormat found = ::imgError;
        sheet->get_ImageType(&found);
        EXPECT_EQ(found, type);
        EXPECT_EQ(pixel(0, 0), 0x0000FF);
    }
    void expectEmpty() {
        LONG width = -1;
        sheet->get_Width(&width);
        EXPECT_EQ(width, 0);
    }
};

TEST_F(ComPictures, APictureObjectIsTakenInEveryForm) {
    for (const UINT type : {UINT{PICTYPE_BITMAP}, UINT{PICTYPE_ICON}}) {
        ComPtr<IPictureDisp> picture;
        this->picture(type, picture);
        ASSERT_TRUE(picture);
        const ::eImageFormat expected = type == PICTYPE_BITMAP ? ::imgBitmap : ::imgIcon;
        VARIANT_BOOL loaded = VARIANT_FALSE;
        IPictureDisp* early = picture.get();
        EXPECT_EQ(sheet->LoadPicture_StdPicture(&early, &loaded), S_OK);
        EXPECT_EQ(loaded, VARIANT_TRUE);
        expectLoaded(expected);
        IDispatch* place = picture.get();
        VARIANT held = object(picture.get());
        for (const VARIANT& form : {object(picture.get()), typed(VT_DISPATCH, &place), variable(held)}) {
            sheet->DestroyDIB();
            Variant result;
            EXPECT_EQ(call(sheet.get(), L"LoadPicture_StdPicture", {form}, &result), S_OK);
            EXPECT_EQ(result.boolVal, VARIANT_TRUE);
            expectLoaded(expected);
        }
    }
    ASSERT_TRUE(makeImage(1, 1));
    Variant result;
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_StdPicture", {object(nullptr)}, &result), S_OK);
    EXPECT_EQ(result.boolVal, VARIANT_FALSE);
    expectEmpty();
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_StdPicture", {object(sheet.get())}, &result), DISP_E_TYPEMISMATCH);
    // C++ callers may pass what is no picture.
    auto* notPicture = reinterpret_cast<IPictureDisp*>(sheet.get());
    VARIANT_BOOL loaded = VARIANT_TRUE;
    EXPECT_EQ(sheet->LoadPicture_StdPicture(&notPicture, &loaded), S_OK);
    EXPECT_EQ(loaded, VARIANT_FALSE);
    EXPECT_EQ(sheet->LoadPicture_StdPicture(nullptr, &loaded), E_POINTER);
}

TEST_F(ComPictures, HandlesOfTheSystemAreTold) {
    const HBITMAP picture = bitmap();
    const HICON shown = icon(true), cursor = icon(false);
    const struct {
        LONG_PTR handle;
        ::eImageFormat type;
    } rows[] = {{reinterpret_cast<LONG_PTR>(picture), ::imgBitmap},
                {reinterpret_cast<LONG_PTR>(shown), ::imgIcon},
                {reinterpret_cast<LONG_PTR>(cursor), ::imgCursor}};
    for (const auto& row : rows) {
        Variant result;
        VARIANT handle = number(static_cast<LONG>(row.handle)); // scripts have no wider numbers
        EXPECT_EQ(call(sheet.get(), L"LoadPicture_ByHandle", {variable(handle)}, &result), S_OK);
        EXPECT_EQ(result.boolVal, VARIANT_TRUE);
        EXPECT_EQ(handle.lVal, static_cast<LONG>(row.handle));
        expectLoaded(row.type);
    }
    ::DeleteObject(picture);
    ::DestroyIcon(shown);
    ::DestroyIcon(cursor);
    for (LONG_PTR handle : {LONG_PTR{0}, reinterpret_cast<LONG_PTR>(picture), LONG_PTR{-1}}) {
        VARIANT_BOOL loaded = VARIANT_TRUE;
        EXPECT_EQ(sheet->LoadPicture_ByHandle(&handle, &loaded), S_OK);
        EXPECT_EQ(loaded, VARIANT_FALSE);
        expectEmpty();
    }
}

} // namespace pixkit::test
