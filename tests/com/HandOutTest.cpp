// What other programs do with the objects that the component hands out: with the system's functions alone, onto a
// background, whose pixels are read back.
#include "Server.h"
#include "platform/faults.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <array>
#include <chrono>
#include <commctrl.h>
#include <functional>
#include <olectl.h>

namespace pixkit::test {

namespace {

constexpr int cx = 4, cy = 2;
using Pixel = std::array<int, 4>; // B, G, R, A
constexpr Pixel clear = {0, 0, 0, 0}, beneath = {60, 130, 210, 255}, paper = {0, 0, 255, 255};
// Straight, from the top left. All channels are seen only where alpha counts.
constexpr Pixel drawn[] = {
    {10, 20, 30, 255}, {200, 100, 40, 128}, clear, {255, 255, 255, 64}, {0, 250, 0, 200}, clear, clear,
    {255, 0, 0, 30}};

// A context with a bitmap of others, or with one of what lies beneath.
class Context {
  public:
    explicit Context(LONG_PTR bitmap = 0) {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, cx, -cy, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        m_own = ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &m_bits, nullptr, 0);
        for (int i = 0; i < cx * cy * 4; ++i)
            static_cast<BYTE*>(m_bits)[i] = static_cast<BYTE>(beneath[i % 4]);
        m_before = ::SelectObject(m_dc, bitmap != 0 ? reinterpret_cast<HBITMAP>(bitmap) : m_own);
    }
    ~Context() {
        ::SelectObject(m_dc, m_before);
        ::DeleteDC(m_dc);
        ::DeleteObject(m_own);
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    operator HDC() const { return m_dc; }
    int at(std::size_t pixel, std::size_t channel) const {
        ::GdiFlush();
        return static_cast<const BYTE*>(m_bits)[pixel * 4 + channel];
    }

  private:
    HDC m_dc = ::CreateCompatibleDC(nullptr);
    HBITMAP m_own;
    HGDIOBJ m_before;
    void* m_bits = nullptr;
};

// --- uses of a bitmap, icon or IPictureDisp

bool copy(HDC dc, LONG_PTR bitmap) {
    return ::BitBlt(dc, 0, 0, cx, cy, Context(bitmap), 0, 0, SRCCOPY) != FALSE;
}
bool blend(HDC dc, LONG_PTR bitmap) {
    return ::AlphaBlend(dc, 0, 0, cx, cy, Context(bitmap), 0, 0, cx, cy, {AC_SRC_OVER, 0, 255, AC_SRC_ALPHA}) != FALSE;
}
bool blendFromMenu(HDC dc, LONG_PTR bitmap) {
    const HMENU menu = ::CreatePopupMenu();
    MENUITEMINFOW item{}, found{};
    item.cbSize = found.cbSize = sizeof item;
    item.fMask = found.fMask = MIIM_BITMAP;
    item.hbmpItem = reinterpret_cast<HBITMAP>(bitmap);
    const bool isThere = ::InsertMenuItemW(menu, 0, TRUE, &item) && ::GetMenuItemInfoW(menu, 0, TRUE, &found);
    return isThere && blend(dc, reinterpret_cast<LONG_PTR>(found.hbmpItem)) && ::DestroyMenu(menu);
}
template <class Add>
bool drawFromList(HDC dc, UINT flags, Add add) {
    const HIMAGELIST list = ::ImageList_Create(cx, cy, ILC_COLOR32 | flags, 1, 1);
    return add(list) == 0 && ::ImageList_Draw(list, 0, dc, 0, 0, ILD_TRANSPARENT) && ::ImageList_Destroy(list);
}
bool listBitmap(HDC dc, LONG_PTR bitmap) {
    const auto add = [&](HIMAGELIST list) { return ::ImageList_Add(list, reinterpret_cast<HBITMAP>(bitmap), nullptr); };
    return drawFromList(dc, 0, add);
}
bool listIcon(HDC dc, LONG_PTR icon) {
    const auto add = [&](HIMAGELIST list) { return ::ImageList_ReplaceIcon(list, -1, reinterpret_cast<HICON>(icon)); };
    return drawFromList(dc, ILC_MASK, add);
}
bool drawIcon(HDC dc, LONG_PTR icon) {
    return ::DrawIconEx(dc, 0, 0, reinterpret_cast<HICON>(icon), cx, cy, 0, nullptr, DI_NORMAL) != FALSE;
}
bool renderPicture(HDC dc, LONG_PTR object) {
    ComPtr<IPicture> picture;
    LONG wide = 0, high = 0;
    reinterpret_cast<IUnknown*>(object)->QueryInterface(IID_IPicture, picture.putVoid());
    picture->get_Width(&wide);
    picture->get_Height(&high);
    return SUCCEEDED(picture->Render(dc, 0, 0, cx, cy, 0, high, wide, -high, nullptr));
}
template <bool (*use)(HDC, LONG_PTR)>
bool useHandle(HDC dc, LONG_PTR picture) { // taken out of it, as ribbons do
    Variant handle;
    return call(reinterpret_cast<IDispatch*>(picture), L"Handle", {}, &handle) == S_OK && use(dc, handle.lVal);
}

bool deleteBitmap(LONG_PTR bitmap) {
    return ::DeleteObject(reinterpret_cast<HBITMAP>(bitmap)) != FALSE;
}
bool destroyIcon(LONG_PTR icon) {
    return ::DestroyIcon(reinterpret_cast<HICON>(icon)) != FALSE;
}
bool release(LONG_PTR picture) {
    return reinterpret_cast<IUnknown*>(picture)->Release() == 0;
}

class HandOut : public ComTest {
  protected:
    HandOut() {
        makeImage(cx, cy);
        sheet->put_Alpha(::AlphaComplex);
        LONG_PTR address = 0;
        for (int i = 0; i < cx * cy; ++i)
            sheet->SetPixel(i % cx, i / cx, RGB(drawn[i][2], drawn[i][1], drawn[i][0]), drawn[i][3], 0, &address);
    }
    ~HandOut() override { ::DestroyWindow(window); }
    // With a red background.
    LONG_PTR bitmap(int style) {
        LONG_PTR made = 0;
        sheet->CreateBitmap(static_cast<::ePictureStyles>(style), 0xFF, &made);
        return made;
    }
    LONG_PTR icon() {
        LONG_PTR made = 0;
        sheet->CreateIcon(0, 0, &made);
        return made;
    }
    LONG_PTR cursor(LONG x = -1, LONG y = -1) {
        LONG_PTR made = 0;
        sheet->CreateCursor(x, y, 0, 0, &made);
        return made;
    }
    LONG_PTR picture(int style) {
        IPictureDisp* made = nullptr;
        sheet->CreateStdPicture(static_cast<::ePictureStyles>(style), 0xFF, &made);
        return reinterpret_cast<LONG_PTR>(made);
    }

    void makeWindow(DWORD style) {
        ::DestroyWindow(window);
        window = ::CreateWindowExW(style, L"Static", L"", WS_POPUP, 1, 2, 9, 8, nullptr, nullptr, nullptr, nullptr);
    }
    bool update(std::vector<VARIANT> more = {}) {
        more.insert(more.begin(), number(static_cast<LONG>(reinterpret_cast<LONG_PTR>(window))));
        return isTrue(sheet.get(), L"UpdateLayeredWindow", more);
    }
    using Place = std::array<LONG, 4>; // left, top, width, height
    Place place() const {
        RECT rect{};
        ::GetWindowRect(window, &rect);
        return {rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top};
    }
    bool isLayered() const { return (::GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_LAYERED) != 0; }

    HWND window = nullptr;
};

} // namespace

TEST_F(HandOut, IsDrawnByOthersWithoutItsAlpha) {
    enum { whole, byMask }; // of an icon in a picture not every system takes the alpha
    const struct {
        const char* use;
        LONG_PTR made;
        bool (*draw)(HDC, LONG_PTR);
        bool (*free)(LONG_PTR);
        Pixel background = beneath;
        int seen = whole;
    } rows[] = {
        {"menu item", bitmap(pictPremultiplied), blendFromMenu, deleteBitmap},
        {"image list", bitmap(pictStraight), listBitmap, deleteBitmap},
        {"image list of icons", icon(), listIcon, destroyIcon},
        {"icon", icon(), drawIcon, destroyIcon},
        {"cursor", cursor(), drawIcon, destroyIcon},
        {"flat bitmap", bitmap(pictFlat), copy, deleteBitmap, paper},
        {"flat picture", picture(pictFlat), renderPicture, release, paper},
        {"picture box", picture(pictAuto), renderPicture, release, beneath, byMask},
        {"icon of a picture", picture(pictAuto), useHandle<drawIcon>, release},
        {"ribbon", picture(pictPremultiplied), useHandle<blend>, release},
    };
    for (const auto& row : rows) {
        const Context target;
        EXPECT_TRUE(row.made != 0 && row.draw(target, row.made) && row.free(row.made)) << row.use;
        for (std::size_t i = 0; i < std::size(drawn) * 3; ++i) {
            const int color = drawn[i / 3][i % 3], alpha = drawn[i / 3][3], below = row.background[i % 3];
            if (row.seen == byMask && alpha != 0 && alpha != 255) continue;
            const int expected = (color * alpha + below * (255 - alpha) + 127) / 255;
            EXPECT_NEAR(target.at(i / 3, i % 3), expected, 2)
                << row.use << ", pixel " << i / 3 << ", channel " << i % 3;
        }
    }
}

TEST_F(HandOut, LayeredWindowsAreElsewhereOrLeftHalfWay) {
    for (const DWORD style : {0UL, static_cast<DWORD>(WS_EX_LAYERED)}) {
        makeWindow(style);
        EXPECT_TRUE(update() && isLayered());
        EXPECT_EQ(place(), (Place{1, 2, cx, cy}));
        EXPECT_TRUE(update({number(-5), missing(), number(50)}));
        EXPECT_EQ(place(), (Place{-5, 2, cx, cy}));
        EXPECT_TRUE(update({number(7), number(8), number(-3)}));
        EXPECT_EQ(place(), (Place{7, 8, cx, cy}));
    }
    // A parent whose coordinates run from the right moves its child no less exactly.
    makeWindow(WS_EX_LAYOUTRTL);
    const HWND parent = std::exchange(window, nullptr);
    ::SetWindowPos(parent, nullptr, 100, 50, 60, 40, SWP_NOZORDER);
    window =
        ::CreateWindowExW(WS_EX_LAYERED, L"Static", L"", WS_CHILD, 10, 5, cx, cy, parent, nullptr, nullptr, nullptr);
    const Place child = place();
    EXPECT_TRUE(update({missing(), number(7)}));
    EXPECT_EQ(place(), (Place{child[0], child[1] + 2, cx, cy}));
    ::DestroyWindow(parent);
    makeWindow(WS_EX_LAYERED);
    ::SetLayeredWindowAttributes(window, 0, 128, LWA_ALPHA);
    EXPECT_FALSE(update({number(7), number(8)}));
    EXPECT_EQ(place(), (Place{1, 2, 9, 8}));
    makeWindow(0);
    cPixSheet native;
    native.InitializeDIB(cx, cy);
    for (const auto failing : {platform::SeamCall::createDIBSection, platform::SeamCall::createCompatibleDC,
                               platform::SeamCall::selectObject, platform::SeamCall::updateLayeredWindow}) {
        const platform::ScopedFault fault(failing);
        EXPECT_FALSE(native.UpdateLayeredWindow(reinterpret_cast<LONG_PTR>(window), 5, 6));
        EXPECT_TRUE(!native.LastErrorText().empty() && !isLayered());
        EXPECT_EQ(place(), (Place{1, 2, 9, 8}));
    }
    EXPECT_TRUE(native.UpdateLayeredWindow(reinterpret_cast<LONG_PTR>(window), 5, 6));
}

TEST_F(HandOut, LeaksObjectsOfTheSystem) {
    const std::size_t objects = platform::openHandles();
    const LONG_PTR held = bitmap(pictFlat), shown = icon();
    EXPECT_GT(platform::openHandles(), objects + 2) << "the count tells nothing";
    EXPECT_TRUE(deleteBitmap(held) && destroyIcon(shown));
    // Each cycle that leaves something shows; more of them only find what happens seldom, while there is time.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    for (int cycle = 0; cycle < 15 || (cycle < 1000 && std::chrono::steady_clock::now() < end); ++cycle)
        ASSERT_TRUE(deleteBitmap(bitmap(cycle % 3)) && destroyIcon(icon()) && destroyIcon(cursor()) &&
                    release(picture(cycle % 5 - 1)));
    EXPECT_EQ(platform::openHandles(), objects);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
