// What text costs beside GDI's own: a mask of 400 x 50 pixels with one line in it, and that line drawn onto an image.
#include "pixkit/pixkit.h"
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>
#include <windows.h>

namespace {

using namespace pixkit;

constexpr int width = 400, height = 50;
constexpr int lines = 10;
const std::string text = "Hamburgefonstiv \xC3\xA4\xC3\xB6 AVAT";
const std::wstring wideText = L"Hamburgefonstiv \u00E4\u00F6 AVAT";
const std::u32string longText = U"Hamburgefonstiv \u00E4\u00F6 AVAT";

// Milliseconds for one: the best of many rounds.
template <class Body>
double timed(Body body) {
    double best = 1e9;
    for (int round = 0; round < 100; ++round) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < lines; ++i)
            body();
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
        best = std::min(best, taken.count() / lines);
    }
    return best;
}

// As a program without this component would make a mask.
void gdiMask(HFONT font) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HDC dc = ::CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ oldBitmap = ::SelectObject(dc, bitmap), oldFont = ::SelectObject(dc, font);
    ::SetTextColor(dc, 0xFFFFFF);
    ::SetBkMode(dc, TRANSPARENT);
    RECT rectangle = {5, 5, width - 5, height - 5};
    ::DrawTextW(dc, wideText.c_str(), -1, &rectangle, DT_SINGLELINE | DT_NOPREFIX);
    ::GdiFlush();
    ::SelectObject(dc, oldFont);
    ::SelectObject(dc, oldBitmap);
    ::DeleteObject(bitmap);
    ::DeleteDC(dc);
}

void ownMask(HFONT font, std::vector<std::uint8_t>& mask) {
    const auto opened = platform::openFont(reinterpret_cast<platform::Handle>(font));
    const auto line = opened->layOut(longText, false);
    const platform::PlacedLine placed = {line.get(), 5, 35};
    opened->draw({&placed, 1}, {}, width, height, mask.data());
}

} // namespace

int main() {
    const HFONT font = ::CreateFontW(-24, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, OUT_TT_PRECIS,
                                     CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY, 0, L"Tahoma");
    std::vector<std::uint8_t> mask(std::size_t{width} * height);
    cPixSheet sheet;
    sheet.isGDIplusEnabled(false);
    sheet.InitializeDIB(width, height);
    const auto draw = [&](float Angle) {
        sheet.DrawText_hFont(0, reinterpret_cast<std::intptr_t>(font), text, 5, 11, 0, 0, 0xFF, 100, txtLeft, false,
                             Angle);
    };
    const double gdi = timed([&] { gdiMask(font); });
    const double own = timed([&] { ownMask(font, mask); });
    std::printf("mask of 400 x 50 by GDI                  %8.4f ms\n", gdi);
    std::printf("mask of 400 x 50 by this component       %8.4f ms, %.2f times GDI's\n", own, own / gdi);
    const double drawn = timed([&] { draw(0); });
    std::printf("DrawText_hFont onto the image itself     %8.4f ms, %.2f times GDI's mask\n", drawn, drawn / gdi);
    std::printf("DrawText_hFont, turned by 30 degrees     %8.4f ms\n", timed([&] { draw(30); }));
    ::DeleteObject(font);
    return own <= 2 * gdi ? 0 : 1;
}
// SPDX-License-Identifier: MIT
