#include "platform/pictures.h"
#include "coding/GifFrame.h"
#include "coding/lzw/LzwDecoder.h"
#include "platform/faults.h"
#include "platform/gdi.h"
#include "platform/win32/MemoryStream.h"
#include "platform/win32/pictures/OlePicture.h"
#include <cstring>
#include <new>
#include <utility>
#include <windows.h>
// The picture interface needs what comes before it here.
#include <ole2.h>
#include <olectl.h>

namespace pixkit::platform {

namespace {

// From hundredths of a millimetre to the screen's pixels.
std::int32_t toPixels(OLE_XSIZE_HIMETRIC length, int resolution) noexcept {
    constexpr int himetricPerInch = 2540;
    const int dpi = [&] {
        const ScreenDC screen;
        return ::GetDeviceCaps(reinterpret_cast<HDC>(screen.get()), resolution);
    }();
    return length <= 0 || dpi <= 0 ? 0 : ::MulDiv(length, dpi, himetricPerInch);
}

class OlePicture final : public StdPicture {
  public:
    explicit OlePicture(Reference<IPicture>&& picture) noexcept : m_picture(std::move(picture)) {}

    IPicture* get() const noexcept { return m_picture.get(); }
    IPicture** receive() noexcept { return m_picture.receive(); }

    PictureType Type() const noexcept override {
        SHORT type = PICTYPE_UNINITIALIZED;
        return m_picture->get_Type(&type) == S_OK ? static_cast<PictureType>(type) : PictureType::uninitialized;
    }

    Handle handle() const noexcept override {
        OLE_HANDLE handle = 0;
        if (m_picture->get_Handle(&handle) != S_OK) return 0;
        // Handles of graphics objects have 32 bits that count, in 64-bit systems too; these extend them by the sign.
        return static_cast<Handle>(static_cast<std::int32_t>(handle));
    }

    std::int32_t Width() const noexcept override {
        BitmapRecord bitmap;
        if (holdsBitmap(bitmap)) return bitmap.bmWidth;
        OLE_XSIZE_HIMETRIC width = 0;
        return m_picture->get_Width(&width) == S_OK ? toPixels(width, LOGPIXELSX) : 0;
    }

    std::int32_t Height() const noexcept override {
        BitmapRecord bitmap;
        if (holdsBitmap(bitmap)) return bitmap.bmHeight;
        OLE_YSIZE_HIMETRIC height = 0;
        return m_picture->get_Height(&height) == S_OK ? toPixels(height, LOGPIXELSY) : 0;
    }

    bool Render(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width,
                std::int32_t height) const noexcept override {
        if (width <= 0 || height <= 0 || faultDue(SeamCall::renderPicture)) return false;
        const ObjectType target = GetObjectType(dc);
        if (target != ObjectType::dc && target != ObjectType::memoryDC) return false;
        OLE_XSIZE_HIMETRIC wholeWidth = 0;
        OLE_YSIZE_HIMETRIC wholeHeight = 0;
        if (m_picture->get_Width(&wholeWidth) != S_OK || m_picture->get_Height(&wholeHeight) != S_OK) return false;
        // Metric y coordinates grow upwards: the source is the whole picture from its top.
        return SUCCEEDED(m_picture->Render(reinterpret_cast<HDC>(dc), x, y, width, height, 0, wholeHeight, wholeWidth,
                                           -wholeHeight, nullptr));
    }

  private:
    // A bitmap knows its size exactly; the metric one is rounded.
    bool holdsBitmap(BitmapRecord& bitmap) const noexcept {
        return Type() == PictureType::bitmap && GetObjectA(handle(), bitmap);
    }

    Reference<IPicture> m_picture;
};

std::unique_ptr<StdPicture> made(Reference<IPicture>&& picture) noexcept {
    if (!picture) return nullptr;
    return std::unique_ptr<StdPicture>(new (std::nothrow) OlePicture(std::move(picture)));
}

// Some of the system's loaders make a picture of a GIF whose codes end early, with pixels that nobody wrote.
bool isIncompleteGif(std::span<const std::uint8_t> bytes) {
    GifFrame frame;
    return findGifFrame(bytes, frame) == GifWalk::found &&
           !lzwDescribes(joinGifCodes(bytes, frame), bytes[frame.codeSizeAt], frame.width * frame.height);
}

} // namespace

std::unique_ptr<StdPicture> OleLoadPicture(std::span<const std::uint8_t> bytes, LeastSize /*least*/) noexcept {
    if (bytes.empty() || bytes.size() > MAXLONG || faultDue(SeamCall::oleLoadPicture)) return nullptr;
    try {
        if (isIncompleteGif(bytes)) return nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr; // as if the picture were not there
    }
    const Reference<IStream> stream = streamOver(bytes);
    Reference<IPicture> picture;
    if (!stream || FAILED(::OleLoadPicture(stream.get(), static_cast<LONG>(bytes.size()), FALSE, IID_IPicture,
                                           reinterpret_cast<void**>(picture.receive()))))
        return nullptr;
    return made(std::move(picture));
}

bool mayBePicture(std::span<const std::uint8_t> /*start*/) noexcept {
    return true;
}

std::unique_ptr<StdPicture> OleCreatePictureIndirect(Handle image, PictureType type, bool own) noexcept {
    if (image == 0 || faultDue(SeamCall::oleCreatePictureIndirect)) return nullptr;
    PICTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.picType = static_cast<UINT>(type);
    ICONINFO icon{};
    if (type == PictureType::bitmap && GetObjectType(image) == ObjectType::bitmap) {
        description.bmp.hbitmap = reinterpret_cast<HBITMAP>(image);
    } else if (type == PictureType::icon && ::GetIconInfo(reinterpret_cast<HICON>(image), &icon) != FALSE) {
        if (icon.hbmColor != nullptr) ::DeleteObject(icon.hbmColor);
        if (icon.hbmMask != nullptr) ::DeleteObject(icon.hbmMask);
        description.icon.hicon = reinterpret_cast<HICON>(image);
    } else {
        return nullptr;
    }
    // First, because the system's picture, once it is there, frees the image when it goes.
    std::unique_ptr<OlePicture> picture(new (std::nothrow) OlePicture({}));
    if (!picture || FAILED(::OleCreatePictureIndirect(&description, IID_IPicture, own ? TRUE : FALSE,
                                                      reinterpret_cast<void**>(picture->receive()))))
        return nullptr;
    return picture;
}

std::unique_ptr<StdPicture> wrapPicture(IPicture* picture) {
    if (picture == nullptr) return nullptr;
    picture->AddRef();
    return std::make_unique<OlePicture>(Reference<IPicture>(picture));
}

IPicture* pictureBehind(const StdPicture& picture) noexcept {
    return static_cast<const OlePicture&>(picture).get();
}

bool canLoadJpeg() noexcept {
    return true;
}

bool canLoadMetafiles() noexcept {
    return true;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
