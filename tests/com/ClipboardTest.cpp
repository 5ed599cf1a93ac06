// The system's clipboard: what it makes of pictures on their way, between programs too, and what a failing call leaves.
#include "platform/clipboard.h"
#include "Server.h"
#include "platform/faults.h"
#include "platform/gdi.h"
#include "support/Pictures.h"
#include "support/Sweep.h"
#include <psapi.h>

namespace pixkit::test {

namespace {

using platform::SeamCall;

void fillTranslucent(cPixSheet& sheet, std::int32_t width, std::int32_t height) {
    draw(sheet, width, height, AlphaComplex, [](unsigned x, unsigned y) {
        const auto alpha = static_cast<std::uint8_t>(x * 37 + y * 11);
        const auto colour = [&](unsigned part) { return static_cast<std::uint8_t>(alpha * part / 7); };
        return Pixel{colour(x % 8), colour(y % 8), colour(5), alpha};
    });
}

// Puts something there as any program does, with a window of its own.
template <class Put>
void put(Put&& putData) {
    HWND window = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_TRUE(::OpenClipboard(window) && ::EmptyClipboard());
    putData();
    ::CloseClipboard();
    ::DestroyWindow(window);
}

HENHMETAFILE redRectangle() {
    const HDC dc = ::CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    const HBRUSH red = ::CreateSolidBrush(0x0000FF);
    const RECT all{0, 0, 15, 9};
    ::FillRect(dc, &all, red);
    ::DeleteObject(red);
    return ::CloseEnhMetaFile(dc);
}

SIZE_T memoryInUse() {
    PROCESS_MEMORY_COUNTERS memory{};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof memory);
    return memory.PagefileUsage;
}

// Nobody holds it, and the window that it was opened for is gone.
void expectClosed() {
    EXPECT_TRUE(::OpenClipboard(nullptr)) << "still open";
    ::CloseClipboard();
    EXPECT_EQ(::FindWindowExA(HWND_MESSAGE, nullptr, "STATIC", "pixkit clipboard owner"), nullptr);
}

} // namespace

class SystemClipboard : public ComTest {
  protected:
    // Compared with what the DLL's object holds, byte for byte.
    void expectSame(const cPixSheet& native) {
        LONG_PTR bits = 0;
        LONG height = 0;
        sheet->get_BitsPointer(&bits);
        sheet->get_Height(&height);
        ASSERT_TRUE(width() == native.Width() && height == native.Height());
        EXPECT_TRUE(std::equal(native.BitsPointer(), native.BitsPointer() + native.scanWidth() * height,
                               reinterpret_cast<const std::uint8_t*>(bits)));
    }
};

TEST_F(SystemClipboard, BothWaysOfCallingCopyAndPasteEveryByte) {
    cPixSheet native;
    fillTranslucent(native, 61, 23);
    ASSERT_TRUE(native.CopyToClipBoard());
    VARIANT_BOOL loaded = VARIANT_FALSE;
    EXPECT_EQ(sheet->LoadPicture_ClipBoard(VARIANT_FALSE, &loaded), S_OK);
    EXPECT_EQ(loaded, VARIANT_TRUE);
    expectSame(native);
    sheet->DestroyDIB();
    EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_ClipBoard"));
    expectSame(native);

    VARIANT_BOOL copied = VARIANT_FALSE;
    EXPECT_EQ(sheet->CopyToClipBoard(&copied), S_OK);
    EXPECT_EQ(copied, VARIANT_TRUE);
    EXPECT_TRUE(isTrue(sheet.get(), L"CopyToClipBoard"));
    expectClosed();
    native.DestroyDIB();
    EXPECT_TRUE(native.LoadPicture_ClipBoard());
    expectSame(native);
    EXPECT_EQ(sheet->LoadPicture_ClipBoard(VARIANT_FALSE, nullptr), E_POINTER);
    EXPECT_EQ(sheet->CopyToClipBoard(nullptr), E_POINTER);
}

TEST_F(SystemClipboard, OtherProgramsFindWhatTheyKnowFirst) {
    cPixSheet native;
    fillTranslucent(native, 5, 4);
    ASSERT_TRUE(native.CopyToClipBoard());
    UINT wanted[] = {::RegisterClipboardFormatA("pixkit stored pixels 1"), CF_DIB, CF_DIBV5,
                     ::RegisterClipboardFormatA("PNG")};
    EXPECT_EQ(::GetPriorityClipboardFormat(wanted + 1, 3), CF_DIB);
    ASSERT_TRUE(::OpenClipboard(nullptr));
    for (UINT format = 0, i = 4; i-- > 0;)
        EXPECT_EQ(format = ::EnumClipboardFormats(format), wanted[i]) << i;
    EXPECT_NE(::GetClipboardData(CF_BITMAP), nullptr) << "the system makes none of ours";
    ::CloseClipboard();
}

// The environment tells the second program, a run of this test alone, that it is one.
TEST_F(SystemClipboard, AnotherProgramGetsEveryByte) {
    constexpr const char* role = "PIXKIT_CLIPBOARD_READER";
    cPixSheet native;
    fillTranslucent(native, 97, 31);
    if (::GetEnvironmentVariableA(role, nullptr, 0) == 0) {
        ASSERT_TRUE(native.CopyToClipBoard());
        wchar_t program[MAX_PATH];
        ::GetModuleFileNameW(nullptr, program, MAX_PATH);
        std::wstring command = L'"' + std::wstring(program) +
                               L"\" --gtest_brief=1 --gtest_output= "
                               L"--gtest_filter=SystemClipboard.AnotherProgramGetsEveryByte";
        ::SetEnvironmentVariableA(role, "yes");
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        const BOOL started =
            ::CreateProcessW(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process);
        ::SetEnvironmentVariableA(role, nullptr);
        ASSERT_TRUE(started);
        DWORD code = 1;
        ::WaitForSingleObject(process.hProcess, 60'000);
        ::GetExitCodeProcess(process.hProcess, &code);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
        EXPECT_EQ(code, 0u);
        // It left a picture of its own behind, and has ended.
        native.MirrorImage(true, false);
    }
    EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_ClipBoard"));
    expectSame(native);
    Variant mirrored;
    if (::GetEnvironmentVariableA(role, nullptr, 0) != 0) {
        call(sheet.get(), L"MirrorImage", {number(-1), number(0)}, &mirrored);
        EXPECT_TRUE(isTrue(sheet.get(), L"CopyToClipBoard"));
    }
}

TEST_F(SystemClipboard, BitmapsAndMetafilesLoad) {
    cPixSheet source;
    fillTranslucent(source, 9, 7);
    put([&] {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, 9, 7, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        const HBITMAP bitmap = ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        std::copy_n(source.BitsPointer(), 9 * 7 * 4, static_cast<std::uint8_t*>(bits));
        ::SetClipboardData(CF_BITMAP, bitmap);
    });
    EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_ClipBoard"));
    expectSame(source);
    put([&] { ::SetClipboardData(CF_BITMAP, reinterpret_cast<HBITMAP>(source.Handle())); });
    cPixSheet same;
    source.CopyImageTo(same);
    EXPECT_TRUE(source.LoadPicture_ClipBoard()) << "its own bitmap is what is offered";
    EXPECT_EQ(pixelsOf(source), pixelsOf(same));

    put([] { ::SetClipboardData(CF_ENHMETAFILE, redRectangle()); });
    EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_ClipBoard", {number(-1, VT_BOOL)}));
    eImageFormat type{};
    sheet->get_ImageType(reinterpret_cast<::eImageFormat*>(&type));
    EXPECT_EQ(type, imgEMF);
    EXPECT_EQ(pixel(5, 5), 0x0000FF);
    put([] { ::SetClipboardData(CF_DIB, reinterpret_cast<HANDLE>(LONG_PTR{0x1234560})); });
    EXPECT_FALSE(isTrue(sheet.get(), L"LoadPicture_ClipBoard")) << "a handle of nothing";
    EXPECT_EQ(width(), 0);
    expectClosed();
}

TEST(SystemClipboardFailures, AFailingCallKeepsMemoryTheWindowOrTheClipboard) {
    cPixSheet source, sheet;
    fillTranslucent(source, 400, 400);
    source.PngPropertySet(pngCompressionLevel, 0); // for haste
    const std::function<void()> contents[] = {
        [&] { ASSERT_TRUE(source.CopyToClipBoard()); },
        [&] { put([&] { ::SetClipboardData(CF_ENHMETAFILE, redRectangle()); }); },
        [&] { put([] { ::SetClipboardData(CF_BITMAP, ::CreateBitmap(300, 300, 1, 1, nullptr)); }); },
    };
    SIZE_T before = 0;
    for (int round = 0; round < 2; ++round) {
        if (round == 1) before = memoryInUse(); // what is kept for good is there now
        for (const auto& content : contents)
            Sweep{content, [&] { return sheet.LoadPicture_ClipBoard(); },
                  [&](bool isLoaded, bool) {
                      EXPECT_EQ(isLoaded, sheet.Handle() != 0);
                      expectClosed();
                  }}
                .run({1});
        long put = 0;
        Sweep{[&] { contents[2](), put = platform::callsMade(SeamCall::setClipboardData); },
              [&] { return source.CopyToClipBoard(); },
              [&](bool isCopied, bool) {
                  expectClosed();
                  const bool isBegun = platform::callsMade(SeamCall::setClipboardData) > put;
                  EXPECT_TRUE(isBegun || ::IsClipboardFormatAvailable(CF_BITMAP)) << "lost what was there";
                  EXPECT_TRUE(isCopied || !isBegun || ::CountClipboardFormats() == 0) << "half a copy";
              }}
            .run({1});
    }
    // Each of the blocks has 0.6 of them, and would have been lost more often.
    EXPECT_LT(memoryInUse(), before + 2 * 1024 * 1024);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
