// gdiplus.dll, borrowed at run time.
#include "platform/gdiplus.h"
#include "platform/faults.h"
#include "platform/win32/MemoryStream.h"
#include "platform/win32/system/SystemLibrary.h"
#include <algorithm>
#include <memory>
#include <string_view>
#include <windows.h>
// What follows takes these two from the global namespace. NOLINTBEGIN(misc-unused-using-decls)
using std::max;
using std::min;
// NOLINTEND(misc-unused-using-decls)
#include <gdiplus.h>

namespace pixkit::platform {

namespace {

namespace gp = Gdiplus;
namespace flat = Gdiplus::DllExports;

// NOLINTNEXTLINE(bugprone-macro-parentheses)
#define PIXKIT_BORROW(name) const decltype(&flat::name) name = find<decltype(&flat::name)>(#name)

// The library, and what it exports; shared by all that is made of them, the last of which frees it.
class Library {
  public:
    Library() noexcept = default;
    ~Library() {
        if (m_module != nullptr) ::FreeLibrary(m_module);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // Whether it was found, with every function.
    bool isComplete() const noexcept { return m_isComplete; }

  private:
    template <class Function>
    Function find(const char* name) noexcept {
        const auto function = m_module == nullptr ? nullptr : ::GetProcAddress(m_module, name);
        m_isComplete = m_isComplete && function != nullptr && !faultDue(SeamCall::getProcAddress);
        return reinterpret_cast<Function>(reinterpret_cast<void*>(function));
    }

    HMODULE m_module = loadSystemLibrary(L"gdiplus.dll");
    bool m_isComplete = true;

  public:
    const decltype(&gp::GdiplusStartup) GdiplusStartup = find<decltype(&gp::GdiplusStartup)>("GdiplusStartup");
    const decltype(&gp::GdiplusShutdown) GdiplusShutdown = find<decltype(&gp::GdiplusShutdown)>("GdiplusShutdown");
    PIXKIT_BORROW(GdipLoadImageFromStream);
    PIXKIT_BORROW(GdipCreateBitmapFromScan0);
    PIXKIT_BORROW(GdipDisposeImage);
    PIXKIT_BORROW(GdipGetImageWidth);
    PIXKIT_BORROW(GdipGetImageHeight);
    PIXKIT_BORROW(GdipBitmapLockBits);
    PIXKIT_BORROW(GdipBitmapUnlockBits);
    PIXKIT_BORROW(GdipGetImageEncodersSize);
    PIXKIT_BORROW(GdipGetImageEncoders);
    PIXKIT_BORROW(GdipSaveImageToStream);
    PIXKIT_BORROW(GdipCreateFromHDC);
    PIXKIT_BORROW(GdipGetImageGraphicsContext);
    PIXKIT_BORROW(GdipDeleteGraphics);
    PIXKIT_BORROW(GdipFlush);
    PIXKIT_BORROW(GdipSetPageUnit);
    PIXKIT_BORROW(GdipSetInterpolationMode);
    PIXKIT_BORROW(GdipSetPixelOffsetMode);
    PIXKIT_BORROW(GdipSetClipRectI);
    PIXKIT_BORROW(GdipTranslateWorldTransform);
    PIXKIT_BORROW(GdipRotateWorldTransform);
    PIXKIT_BORROW(GdipCreateImageAttributes);
    PIXKIT_BORROW(GdipDisposeImageAttributes);
    PIXKIT_BORROW(GdipSetImageAttributesWrapMode);
    PIXKIT_BORROW(GdipSetImageAttributesColorMatrix);
    PIXKIT_BORROW(GdipDrawImageRectRectI);
};
using Shared = std::shared_ptr<const Library>;

// --- from the seam's types to the system's

gp::GpImage* native(GpImage* image) noexcept {
    return reinterpret_cast<gp::GpImage*>(image);
}
gp::GpBitmap* bitmap(GpImage* image) noexcept {
    return static_cast<gp::GpBitmap*>(native(image));
}
gp::GpGraphics* native(GpGraphics* graphics) noexcept {
    return reinterpret_cast<gp::GpGraphics*>(graphics);
}
gp::GpImageAttributes* native(const GpImageAttributes* attributes) noexcept {
    return reinterpret_cast<gp::GpImageAttributes*>(const_cast<GpImageAttributes*>(attributes));
}

GpStatus status(gp::GpStatus answer) noexcept {
    return answer == gp::Ok ? GpStatus::Ok : GpStatus::GenericError;
}

// For calls that make something, and leave its place as it is when they fail.
template <class Made, class Native, class Make>
GpStatus receive(Made*& made, Native* object, Make&& make) {
    const GpStatus answer = status(make(&object));
    if (answer == GpStatus::Ok) made = reinterpret_cast<Made*>(object);
    return answer;
}

// --- the API, subject by subject

void takeStartup(GdiplusApi& api, const Shared& library) {
    api.GdiplusStartup = [library](std::uintptr_t& token) {
        ULONG_PTR started = 0;
        const gp::GdiplusStartupInput input;
        const GpStatus answer = status(library->GdiplusStartup(&started, &input, nullptr));
        if (answer == GpStatus::Ok) token = started;
        return answer;
    };
    api.GdiplusShutdown = [library](std::uintptr_t token) {
        library->GdiplusShutdown(token);
        return GpStatus::Ok;
    };
}

GpStatus lockAndCopy(const Library& library, GpImage* image, const GpScan& scan) {
    gp::BitmapData data{};
    data.Width = static_cast<UINT>(scan.width);
    data.Height = static_cast<UINT>(scan.height);
    data.Stride = scan.stride;
    data.PixelFormat = static_cast<gp::PixelFormat>(scan.format);
    data.Scan0 = scan.scan0;
    const gp::GpRect all(0, 0, scan.width, scan.height);
    const auto answer = library.GdipBitmapLockBits(
        bitmap(image), &all, gp::ImageLockModeRead | gp::ImageLockModeUserInputBuf, data.PixelFormat, &data);
    return status(answer == gp::Ok ? library.GdipBitmapUnlockBits(bitmap(image), &data) : answer);
}

void takeImages(GdiplusApi& api, const Shared& library) {
    api.GdipLoadImageFromStream = [library](std::span<const std::uint8_t> bytes, GpImage*& image) {
        const Reference<IStream> stream = streamOver(bytes);
        if (!stream) return GpStatus::GenericError;
        return receive(image, static_cast<gp::GpImage*>(nullptr),
                       [&](gp::GpImage** made) { return library->GdipLoadImageFromStream(stream.get(), made); });
    };
    api.GdipCreateBitmapFromScan0 = [library](const GpScan& scan, GpImage*& image) {
        return receive(image, static_cast<gp::GpBitmap*>(nullptr), [&](gp::GpBitmap** made) {
            return library->GdipCreateBitmapFromScan0(scan.width, scan.height, scan.stride,
                                                      static_cast<gp::PixelFormat>(scan.format), scan.scan0, made);
        });
    };
    api.GdipDisposeImage = [library](GpImage* image) { return status(library->GdipDisposeImage(native(image))); };
    api.GdipGetImageWidth = [library](GpImage* image, std::uint32_t& width) {
        return status(library->GdipGetImageWidth(native(image), &width));
    };
    api.GdipGetImageHeight = [library](GpImage* image, std::uint32_t& height) {
        return status(library->GdipGetImageHeight(native(image), &height));
    };
    api.GdipBitmapLockBits = [library](GpImage* image, const GpScan& scan) {
        return lockAndCopy(*library, image, scan);
    };
}

// --- encoders

// False where there is none for the type.
bool findEncoder(const Library& library, std::string_view mimeType, CLSID& encoder) {
    UINT count = 0;
    UINT bytes = 0;
    if (library.GdipGetImageEncodersSize(&count, &bytes) != gp::Ok || bytes == 0) return false;
    // The list is followed by the texts that it points to.
    std::vector<gp::ImageCodecInfo> list(bytes / sizeof(gp::ImageCodecInfo) + 1);
    if (library.GdipGetImageEncoders(count, bytes, list.data()) != gp::Ok) return false;
    const auto end = list.begin() + static_cast<std::ptrdiff_t>(count);
    const auto found = std::find_if(list.begin(), end, [&](const gp::ImageCodecInfo& info) {
        const std::wstring_view type(info.MimeType != nullptr ? info.MimeType : L"");
        return std::equal(type.begin(), type.end(), mimeType.begin(), mimeType.end());
    });
    if (found == end) return false;
    encoder = found->Clsid;
    return true;
}

bool readWhole(IStream& stream, std::vector<std::uint8_t>& bytes) {
    HGLOBAL memory = nullptr;
    STATSTG statistics{};
    if (::GetHGlobalFromStream(&stream, &memory) != S_OK || stream.Stat(&statistics, STATFLAG_NONAME) != S_OK)
        return false;
    const auto* const first =
        static_cast<const std::uint8_t*>(faultDue(SeamCall::globalLock) ? nullptr : ::GlobalLock(memory));
    if (first == nullptr) return false;
    try {
        bytes.assign(first, first + statistics.cbSize.QuadPart);
    } catch (...) {
        ::GlobalUnlock(memory);
        throw;
    }
    ::GlobalUnlock(memory);
    return true;
}

GpStatus save(const Library& library, GpImage* image, const GpEncoding& encoding, std::vector<std::uint8_t>& bytes) {
    CLSID encoder;
    if (!findEncoder(library, encoding.mimeType, encoder)) return GpStatus::GenericError;
    const Reference<IStream> stream = streamOn(nullptr);
    if (!stream) return GpStatus::GenericError;
    ULONG quality = static_cast<ULONG>(encoding.quality);
    gp::EncoderParameters parameters{};
    parameters.Count = 1;
    parameters.Parameter[0].Guid = {0x1d5be4b5, 0xfa4a, 0x452d, {0x9c, 0xdd, 0x5d, 0xb3, 0x51, 0x05, 0xe7, 0xeb}};
    parameters.Parameter[0].Type = gp::EncoderParameterValueTypeLong;
    parameters.Parameter[0].NumberOfValues = 1;
    parameters.Parameter[0].Value = &quality;
    const auto answer = library.GdipSaveImageToStream(native(image), stream.get(), &encoder,
                                                      encoding.quality == 0 ? nullptr : &parameters);
    return answer == gp::Ok && readWhole(*stream.get(), bytes) ? GpStatus::Ok : GpStatus::GenericError;
}

// --- drawing

// GDI+ and GDI do not agree about the coordinates of a context with a mapping mode, a moved origin or a transform.
bool countsItsOwnPixels(HDC dc) noexcept {
    constexpr LONG side = 1000;
    POINT corners[] = {{0, 0}, {side, side}};
    return ::LPtoDP(dc, corners, 2) != FALSE && corners[0].x == 0 && corners[0].y == 0 && corners[1].x == side &&
           corners[1].y == side;
}

void takeGraphics(GdiplusApi& api, const Shared& library) {
    api.GdipCreateFromHDC = [library](Handle dc, GpGraphics*& graphics) {
        const auto target = reinterpret_cast<HDC>(dc);
        if (!countsItsOwnPixels(target)) return GpStatus::GenericError;
        return receive(graphics, static_cast<gp::GpGraphics*>(nullptr), [&](gp::GpGraphics** made) {
            const auto answer = library->GdipCreateFromHDC(target, made);
            if (answer != gp::Ok) return answer;
            // Printers' contexts begin with another unit, of which there are 100 to an inch.
            const auto unitAnswer = library->GdipSetPageUnit(*made, gp::UnitPixel);
            if (unitAnswer != gp::Ok) library->GdipDeleteGraphics(*made);
            return unitAnswer;
        });
    };
    api.GdipGetImageGraphicsContext = [library](GpImage* image, GpGraphics*& graphics) {
        return receive(graphics, static_cast<gp::GpGraphics*>(nullptr), [&](gp::GpGraphics** made) {
            return library->GdipGetImageGraphicsContext(native(image), made);
        });
    };
    api.GdipDeleteGraphics = [library](GpGraphics* graphics) {
        return status(library->GdipDeleteGraphics(native(graphics)));
    };
    api.GdipFlush = [library](GpGraphics* graphics) {
        return status(library->GdipFlush(native(graphics), gp::FlushIntentionSync));
    };
    api.GdipSetInterpolationMode = [library](GpGraphics* graphics, GpInterpolationMode mode) {
        return status(library->GdipSetInterpolationMode(native(graphics), static_cast<gp::InterpolationMode>(mode)));
    };
    api.GdipSetPixelOffsetMode = [library](GpGraphics* graphics, GpPixelOffsetMode mode) {
        return status(library->GdipSetPixelOffsetMode(native(graphics), static_cast<gp::PixelOffsetMode>(mode)));
    };
    api.GdipSetClipRectI = [library](GpGraphics* graphics, const Rect& clip) {
        return status(library->GdipSetClipRectI(native(graphics), clip.left, clip.top, clip.right - clip.left,
                                                clip.bottom - clip.top, gp::CombineModeReplace));
    };
    api.GdipTranslateWorldTransform = [library](GpGraphics* graphics, float x, float y) {
        return status(library->GdipTranslateWorldTransform(native(graphics), x, y, gp::MatrixOrderPrepend));
    };
    api.GdipRotateWorldTransform = [library](GpGraphics* graphics, float degrees) {
        return status(library->GdipRotateWorldTransform(native(graphics), degrees, gp::MatrixOrderPrepend));
    };
}

void takeDrawing(GdiplusApi& api, const Shared& library) {
    api.GdipCreateImageAttributes = [library](GpImageAttributes*& attributes) {
        return receive(attributes, static_cast<gp::GpImageAttributes*>(nullptr),
                       [&](gp::GpImageAttributes** made) { return library->GdipCreateImageAttributes(made); });
    };
    api.GdipDisposeImageAttributes = [library](GpImageAttributes* attributes) {
        return status(library->GdipDisposeImageAttributes(native(attributes)));
    };
    api.GdipSetImageAttributesWrapMode = [library](GpImageAttributes* attributes, GpWrapMode mode) {
        return status(
            library->GdipSetImageAttributesWrapMode(native(attributes), static_cast<gp::WrapMode>(mode), 0, FALSE));
    };
    api.GdipSetImageAttributesColorMatrix = [library](GpImageAttributes* attributes, const GpColorMatrix& matrix) {
        gp::ColorMatrix converted{};
        for (std::size_t row = 0; row < matrix.size(); ++row)
            std::copy(matrix[row].begin(), matrix[row].end(), converted.m[row]);
        return status(library->GdipSetImageAttributesColorMatrix(native(attributes), gp::ColorAdjustTypeBitmap, TRUE,
                                                                 &converted, nullptr, gp::ColorMatrixFlagsDefault));
    };
    api.GdipDrawImageRectRectI = [library](GpGraphics* graphics, GpImage* image, const Rect& to, const Rect& from,
                                           const GpImageAttributes* attributes) {
        return status(library->GdipDrawImageRectRectI(native(graphics), native(image), to.left, to.top,
                                                      to.right - to.left, to.bottom - to.top, from.left, from.top,
                                                      from.right - from.left, from.bottom - from.top, gp::UnitPixel,
                                                      native(attributes), nullptr, nullptr));
    };
}

} // namespace

GdiplusApi systemGdiplus() {
    GdiplusApi api;
    const auto library = std::make_shared<const Library>();
    if (!library->isComplete()) return api;
    takeStartup(api, library);
    takeImages(api, library);
    api.GdipSaveImageToStream = [library](GpImage* image, const GpEncoding& encoding,
                                          std::vector<std::uint8_t>& bytes) {
        return save(*library, image, encoding, bytes);
    };
    takeGraphics(api, library);
    takeDrawing(api, library);
    return api;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
