#include "ShapeWindow.h"
#include <algorithm>
#include <cmath>
#include <memory>

namespace viewer {

namespace {

constexpr wchar_t class_name[] = L"pixkit viewer's shape";

// What belongs to one such window, and goes with it.
struct Shape {
    HWND owner;
    Sheet frame; // what it shows, opaque
};

void paint(HWND window, const Sheet& frame) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(window, &paint);
    LONG_PTR selected = 0, ignored = 0;
    frame->LoadDIBinDC(VARIANT_TRUE, &selected);
    BitBlt(dc, 0, 0, frame.width(), frame.height(), reinterpret_cast<HDC>(selected), 0, 0, SRCCOPY);
    frame->LoadDIBinDC(VARIANT_FALSE, &ignored);
    EndPaint(window, &paint);
}

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM longer) {
    auto* shape = reinterpret_cast<Shape*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (shape == nullptr) return DefWindowProcW(window, message, wide, longer); // not made yet
    switch (message) {
    case WM_PAINT:
        paint(window, shape->frame);
        return 0;
    case WM_NCHITTEST:
        return HTCAPTION; // it is moved by what can be seen of it
    case WM_KEYDOWN:
        if (wide == VK_ESCAPE || wide == 'S') DestroyWindow(window);
        return 0;
    case WM_NCLBUTTONDBLCLK:
        DestroyWindow(window);
        return 0;
    case WM_NCDESTROY:
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        ShowWindow(shape->owner, SW_SHOW);
        SetForegroundWindow(shape->owner);
        delete shape;
        return 0;
    default:
        return DefWindowProcW(window, message, wide, longer);
    }
}

// The picture over white, so that half-clear pixels at its edge have something behind them.
bool flatten(const Sheet& picture, const Sheet& frame) {
    const RECT all = {0, 0, picture.width(), picture.height()};
    return frame.ask(&_cPixSheet::InitializeDIB, all.right, all.bottom) &&
           frame.ask(&_cPixSheet::CreateCheckerBoard, 8, 0xFFFFFF, 0xFFFFFF) && picture.drawOnto(frame, all);
}

} // namespace

std::wstring showShapeWindow(HWND owner, const Sheet& picture, POINT corner, double zoom) {
    constexpr BYTE half = 128; // pixels that are clearer than that are no part of the shape
    Sheet sized;
    _cPixSheet* target = sized.operator->();
    const auto scaled = [&](long side) { return std::max(1L, std::lround(static_cast<double>(side) * zoom)); };
    picture->CopyImageTo(&target, scaled(picture.width()), scaled(picture.height()), VARIANT_FALSE);
    if (sized.isEmpty()) return picture.lastError();

    auto shape = std::make_unique<Shape>();
    shape->owner = owner;
    if (!flatten(sized, shape->frame)) return sized.lastError();
    LONG_PTR region = 0;
    sized->CreateRegion(regionShaped, half, &region);
    if (region == 0) return sized.lastError();
    RECT box;
    if (GetRgnBox(reinterpret_cast<HRGN>(region), &box) == NULLREGION) { // nobody could see it, nor close it
        DeleteObject(reinterpret_cast<HRGN>(region));
        return L"the picture is too clear everywhere to be a shape";
    }

    WNDCLASSEXW kind{};
    kind.cbSize = sizeof kind;
    kind.lpfnWndProc = procedure;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.hCursor = LoadCursor(nullptr, IDC_SIZEALL);
    kind.lpszClassName = class_name;
    RegisterClassExW(&kind); // fails when it has been done before
    const HWND window =
        CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_TOPMOST, class_name, class_name, WS_POPUP, corner.x, corner.y,
                        sized.width(), sized.height(), nullptr, nullptr, kind.hInstance, nullptr);
    // From here on the region is the system's.
    if (window == nullptr || SetWindowRgn(window, reinterpret_cast<HRGN>(region), FALSE) == 0) {
        DeleteObject(reinterpret_cast<HRGN>(region));
        if (window != nullptr) DestroyWindow(window);
        return L"the system makes no window of this shape";
    }
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(shape.release()));
    ShowWindow(owner, SW_HIDE);
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    return L"";
}

} // namespace viewer
// SPDX-License-Identifier: MIT
