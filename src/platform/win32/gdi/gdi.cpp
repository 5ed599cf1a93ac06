#include "platform/gdi.h"
#include "platform/faults.h"
#include <cstdlib>
#include <windows.h>

namespace pixkit::platform {

namespace {

static_assert(sizeof(BitmapInfoHeader) == sizeof(BITMAPINFOHEADER));

template <class Native>
Native native(Handle handle) noexcept {
    return reinterpret_cast<Native>(handle);
}
Handle ours(const void* handle) noexcept {
    return reinterpret_cast<Handle>(handle);
}

bool isDeviceContext(Handle handle) noexcept {
    const ObjectType type = GetObjectType(handle);
    return type == ObjectType::dc || type == ObjectType::memoryDC;
}

// The system also takes other depths and compressions; nobody above asks for them.
bool isSupported(const BitmapInfoHeader& header, const void* colors = nullptr) noexcept {
    const auto bits = header.biBitCount;
    return header.biSize == sizeof(BitmapInfoHeader) && (bits == 24 || bits == 32 || (bits == 8 && colors)) &&
           header.biCompression == BI_RGB && header.biWidth > 0 && header.biHeight != 0;
}

// BITMAPINFO with room for the colours of 8 bits, or the masks that the system may write.
struct BitmapInfo {
    BitmapInfoHeader header;
    ColorTable colors{};
};

} // namespace

Handle GetDC(Handle window) noexcept {
    if (faultDue(SeamCall::getDC)) return 0;
    return ours(::GetDC(native<HWND>(window)));
}

bool ReleaseDC(Handle window, Handle dc) noexcept {
    return ::ReleaseDC(native<HWND>(window), native<HDC>(dc)) != 0;
}

Handle CreateCompatibleDC(Handle dc) noexcept {
    if (faultDue(SeamCall::createCompatibleDC)) return 0;
    return ours(::CreateCompatibleDC(native<HDC>(dc)));
}

bool DeleteDC(Handle dc) noexcept {
    return ::DeleteDC(native<HDC>(dc)) != FALSE;
}

Handle SelectObject(Handle dc, Handle object) noexcept {
    if (faultDue(SeamCall::selectObject)) return 0;
    const HGDIOBJ before = ::SelectObject(native<HDC>(dc), native<HGDIOBJ>(object));
    return before == HGDI_ERROR ? 0 : ours(before);
}

bool DeleteObject(Handle object) noexcept {
    return ::DeleteObject(native<HGDIOBJ>(object)) != FALSE;
}

ObjectType GetObjectType(Handle object) noexcept {
    return static_cast<ObjectType>(::GetObjectType(native<HGDIOBJ>(object)));
}

bool isSameObject(Handle first, Handle second) noexcept {
    return static_cast<std::uint32_t>(first) == static_cast<std::uint32_t>(second);
}

Handle CreateDIBSection(Handle dc, const BitmapInfoHeader& header, void** bits, const ColorTable* colors) noexcept {
    if (bits != nullptr) *bits = nullptr;
    // The system does not look at the device context when there is no palette; a stale one is refused all the same.
    if (dc != 0 && !isDeviceContext(dc)) return 0;
    if (!isSupported(header, colors) || faultDue(SeamCall::createDIBSection)) return 0;
    BitmapInfo info{header};
    if (colors != nullptr) info.colors = *colors;
    void* pixels = nullptr; // the system refuses to make a section that nobody can reach
    const Handle section = ours(::CreateDIBSection(native<HDC>(dc), reinterpret_cast<const BITMAPINFO*>(&info),
                                                   DIB_RGB_COLORS, &pixels, nullptr, 0));
    if (section != 0 && bits != nullptr) *bits = pixels;
    return section;
}

int GetDIBits(Handle dc, Handle bitmap, std::uint32_t start, std::uint32_t lines, void* bits, BitmapInfoHeader& header,
              ColorTable* colors) noexcept {
    // Without a buffer the system would answer with a description of the bitmap, and for a success.
    if (bits == nullptr || !isSupported(header, colors) || faultDue(SeamCall::getDIBits)) return 0;
    // Not every system answers 0 for a start behind the last row.
    if (start >= static_cast<std::uint64_t>(std::abs(std::int64_t{header.biHeight}))) return 0;
    // More colours would be matched with a palette that nobody chose.
    BitmapRecord record;
    if (header.biBitCount == 8 && (!GetObjectA(bitmap, record) || record.bmBitsPixel != 8)) return 0;
    BitmapInfo info{header};
    const int rows = ::GetDIBits(native<HDC>(dc), native<HBITMAP>(bitmap), start, lines, bits,
                                 reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS);
    if (rows <= 0) return 0;
    header.biSizeImage = info.header.biSizeImage;
    if (header.biBitCount == 8) *colors = info.colors;
    return rows;
}

bool GetObjectA(Handle bitmap, BitmapRecord& record) noexcept {
    BITMAP native{};
    if (GetObjectType(bitmap) != ObjectType::bitmap || faultDue(SeamCall::getObject)) return false;
    if (::GetObjectA(reinterpret_cast<HGDIOBJ>(bitmap), sizeof native, &native) != sizeof native) return false;
    record = {native.bmWidth, native.bmHeight, native.bmBitsPixel};
    return true;
}

RegionKind GetClipBox(Handle dc, Rect& box) noexcept {
    if (faultDue(SeamCall::getClipBox)) return RegionKind::error;
    RECT nativeBox{};
    const int region = ::GetClipBox(native<HDC>(dc), &nativeBox);
    box = {nativeBox.left, nativeBox.top, nativeBox.right, nativeBox.bottom};
    return static_cast<RegionKind>(region);
}

bool BitBlt(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, Handle source,
            std::int32_t sourceX, std::int32_t sourceY, std::uint32_t rasterOperation) noexcept {
    if (faultDue(SeamCall::bitBlt)) return false;
    return ::BitBlt(native<HDC>(dc), x, y, width, height, native<HDC>(source), sourceX, sourceY, rasterOperation) !=
           FALSE;
}

int SetDIBitsToDevice(Handle dc, std::int32_t x, std::int32_t y, std::uint32_t width, std::uint32_t height,
                      std::int32_t sourceX, std::int32_t sourceY, std::uint32_t startScan, std::uint32_t lines,
                      const void* bits, const BitmapInfoHeader& header) noexcept {
    if (bits == nullptr || !isSupported(header, nullptr) || faultDue(SeamCall::setDIBitsToDevice)) return 0;
    return ::SetDIBitsToDevice(native<HDC>(dc), x, y, width, height, sourceX, sourceY, startScan, lines, bits,
                               reinterpret_cast<const BITMAPINFO*>(&header), DIB_RGB_COLORS);
}

StretchMode SetStretchBltMode(Handle dc, StretchMode mode) noexcept {
    return static_cast<StretchMode>(::SetStretchBltMode(native<HDC>(dc), static_cast<int>(mode)));
}

bool AlphaBlend(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, Handle source,
                std::int32_t sourceX, std::int32_t sourceY, std::int32_t sourceWidth, std::int32_t sourceHeight,
                BlendFunction blend) noexcept {
    if (faultDue(SeamCall::alphaBlend)) return false;
    const BLENDFUNCTION function = {blend.BlendOp, blend.BlendFlags, blend.SourceConstantAlpha, blend.AlphaFormat};
    return ::AlphaBlend(native<HDC>(dc), x, y, width, height, native<HDC>(source), sourceX, sourceY, sourceWidth,
                        sourceHeight, function) != FALSE;
}

void GdiFlush() noexcept {
    faultDue(SeamCall::gdiFlush);
    ::GdiFlush();
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
