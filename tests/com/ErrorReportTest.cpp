// The dialog that tells a person of an unexpected error, shown by the DLL and read by another thread.
#include "ImageFile.h"
#include "Server.h"
#include "shared/version.h"
#include <atomic>
#include <fstream>
#include <functional>
#include <thread>

namespace pixkit::test {
namespace {

// The DLL's memory ends at blocks of this size.
constexpr std::size_t tooMuch = 50'000;
void* allocateLittle(std::size_t bytes) {
    return bytes < tooMuch ? std::malloc(bytes) : nullptr;
}

std::wstring textOf(HWND window) {
    std::wstring text(20'000, L'\0');
    text.resize(static_cast<std::size_t>(
        ::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

constexpr int sentenceId = 101, reportId = 102, copyId = 103, questionId = 0xFFFF;

struct Box {
    const wchar_t* title;
    int textId;
    WPARAM answer;
};
constexpr Box errorBox = {L"Application Error", reportId, IDCANCEL};
constexpr Box questionBox = {L"Overwrite Confirmation", questionId, IDNO};

// Other processes may show theirs on the same desktop.
HWND find(const Box& box) {
    HWND found = nullptr;
    while ((found = ::FindWindowExW(nullptr, found, L"#32770", box.title)) != nullptr) {
        DWORD process = 0;
        ::GetWindowThreadProcessId(found, &process);
        if (process == ::GetCurrentProcessId()) break;
    }
    return found;
}

// Reads and closes each box of a kind that comes up in its time.
class Person {
  public:
    explicit Person(
        std::function<void(HWND)> look = [](HWND) {}, const Box& box = errorBox)
        : m_look(std::move(look)), m_thread([this, box] {
              for (; !m_isGone; ::Sleep(5)) {
                  const HWND window = find(box);
                  // It is there before it is filled.
                  if (window == nullptr || textOf(::GetDlgItem(window, box.textId)).empty()) continue;
                  ++boxes;
                  sentence = textOf(::GetDlgItem(window, sentenceId));
                  report = textOf(::GetDlgItem(window, box.textId));
                  m_look(window);
                  ::PostMessageW(window, WM_COMMAND, box.answer, 0);
                  while (::IsWindow(window) != FALSE)
                      ::Sleep(5);
              }
          }) {}
    ~Person() { leave(); }
    Person(const Person&) = delete;
    Person& operator=(const Person&) = delete;

    void leave() {
        m_isGone = true;
        if (m_thread.joinable()) m_thread.join();
    }

    int boxes = 0;
    std::wstring sentence, report;

  private:
    std::function<void(HWND)> m_look;
    std::atomic<bool> m_isGone = false;
    std::thread m_thread;
};

std::wstring clipboardText() {
    std::wstring text;
    if (::OpenClipboard(nullptr) == FALSE) return text;
    if (const auto* const held = static_cast<const wchar_t*>(::GlobalLock(::GetClipboardData(CF_UNICODETEXT))))
        text = held;
    ::CloseClipboard();
    return text;
}

constexpr UINT failAnotherWay = WM_APP;

// A host with two windows, and an image whose rows are too large for the DLL's memory.
class ErrorReports : public ComTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(sheet);
        ASSERT_EQ(ImageFile(server.module()).replaceImport("malloc", reinterpret_cast<void*>(&allocateLittle)), 1);
        ASSERT_TRUE(makeImage(30'000, 2));
        WNDCLASSW description{};
        description.lpszClassName = L"pixkit error report test";
        description.lpfnWndProc = &procedure;
        ::RegisterClassW(&description);
        for (HWND& window : windows)
            window = ::CreateWindowW(description.lpszClassName, L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200,
                                     100, nullptr, nullptr, nullptr, nullptr);
        ::SetWindowLongPtrW(windows[0], GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        ::SetActiveWindow(windows[0]);
    }
    void TearDown() override {
        for (const HWND window : windows)
            ::DestroyWindow(window);
    }

    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM parameter) {
        auto* const self = reinterpret_cast<ErrorReports*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message != failAnotherWay) return ::DefWindowProcW(window, message, wide, parameter);
        self->save();
        return 0;
    }

    bool mirror() { return isTrue(sheet.get(), L"MirrorImage", {number(-1, VT_BOOL), number(0, VT_BOOL)}); }
    bool save() {
        SAFEARRAY* bytes = nullptr;
        VARIANT_BOOL saved = VARIANT_FALSE;
        EXPECT_EQ(sheet->SaveToStream_Bitmap(&bytes, VARIANT_FALSE, 0, &saved), S_OK);
        return saved != VARIANT_FALSE;
    }
    int enabledWindows() const {
        return (::IsWindowEnabled(windows[0]) != FALSE ? 1 : 0) + (::IsWindowEnabled(windows[1]) != FALSE ? 1 : 0);
    }

    HWND windows[2] = {};
};

TEST_F(ErrorReports, DoNotSayWhatFailedOrAreShownAgainOrInsideOfEachOther) {
    int enabled = -1;
    std::wstring copied;
    Person person([&](HWND dialog) {
        enabled = enabledWindows();
        ::SendMessageW(dialog, WM_COMMAND, copyId, 0);
        copied = clipboardText();
        ::SendMessageW(windows[0], failAnotherWay, 0, 0);
    });
    EXPECT_FALSE(mirror());
    EXPECT_EQ(enabledWindows(), 2);
    EXPECT_FALSE(mirror());
    person.leave();
    EXPECT_EQ(person.boxes, 1);
    EXPECT_EQ(enabled, 0);
    EXPECT_EQ(person.sentence, L"pixkit has encountered a problem. We are sorry for the inconvenience.");
    for (const wchar_t* const part :
         {L"Error: std::bad_alloc\r\nModule: render/Effects.cpp\r\nProcedure: MirrorImage\r\nLine: ",
          L"Parameters:\r\n  MirrorAxisX = True\r\n  MirrorAxisY = False\r\n", L"  Width = 30000\r\n  Height = 2\r\n",
          L"Versions:\r\n  pixkit " PIXKIT_FULL_VERSION " (", L"  Windows "})
        EXPECT_NE(person.report.find(part), std::wstring::npos)
            << std::filesystem::path(part) << " is not in " << std::filesystem::path(person.report);
    EXPECT_EQ(copied, person.report);

    Person another; // the error that came meanwhile was not shown, and now is
    EXPECT_FALSE(save());
    another.leave();
    EXPECT_EQ(another.boxes, 1);
}

TEST_F(ErrorReports, DoNotNameTheArgumentsOfALateBoundCall) {
    const std::wstring endless(tooMuch, L'x'); // for the guard of the COM member: it becomes UTF-8 there
    Person person;
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_File", {text(endless.c_str()), number(16)}, nullptr,
                   {{L"iconBitDepth", number(8)}, {L"SaveFormat", number(-1, VT_BOOL)}}),
              S_OK);
    person.leave();
    EXPECT_EQ(person.boxes, 1);
    const std::wstring expected = L"Procedure: LoadPicture_File\r\nLine: ";
    EXPECT_NE(person.report.find(expected), std::wstring::npos) << std::filesystem::path(person.report);
    const std::wstring parameters = L"Parameters:\r\n  FileName = \"" + endless.substr(0, 80) +
                                    L"\"...\r\n  iconCx = 16\r\n  SaveFormat = True\r\n  iconBitDepth = 8\r\n";
    EXPECT_NE(person.report.find(parameters), std::wstring::npos) << std::filesystem::path(person.report);
}

TEST_F(ErrorReports, AreShownInsideOfAQuestion) {
    const auto file = std::filesystem::temp_directory_path() / "pixkit-error-report.bmp";
    std::ofstream(file) << "old";
    Person reader;
    Person asked([&](HWND) { ::SendMessageW(windows[0], failAnotherWay, 0, 0); }, questionBox);
    EXPECT_FALSE(isTrue(sheet.get(), L"SaveToFile_Bitmap", {text(file.c_str())}));
    asked.leave();
    reader.leave();
    EXPECT_EQ(asked.boxes, 1);
    EXPECT_EQ(reader.boxes, 0);
    std::filesystem::remove(file);
}

TEST_F(ErrorReports, AreNotShownWhereNobodyReadsThemOrUnderTheLoadersLock) {
    Person person;
    const HWINSTA visible = ::GetProcessWindowStation();
    const HWINSTA service = ::CreateWindowStationW(L"Service-0x0-test", 0, GENERIC_ALL, nullptr);
    ASSERT_NE(::SetProcessWindowStation(service), FALSE);
    EXPECT_FALSE(mirror());
    const auto file = std::filesystem::temp_directory_path() / "pixkit-service.bmp";
    std::ofstream(file) << "old";
    Person asked([](HWND) {}, questionBox);
    EXPECT_FALSE(isTrue(sheet.get(), L"SaveToFile_Bitmap", {text(file.c_str())}));
    asked.leave();
    EXPECT_EQ(asked.boxes, 0);
    std::filesystem::remove(file);
    ::SetProcessWindowStation(visible);
    ::CloseWindowStation(service);

    const HMODULE system = ::GetModuleHandleW(L"ntdll.dll");
    const auto function = [&](const char* name) { return reinterpret_cast<void*>(::GetProcAddress(system, name)); };
    ULONG_PTR cookie = 0;
    reinterpret_cast<LONG(WINAPI*)(ULONG, ULONG*, ULONG_PTR*)>(function("LdrLockLoaderLock"))(0, nullptr, &cookie);
    EXPECT_FALSE(mirror());
    reinterpret_cast<LONG(WINAPI*)(ULONG, ULONG_PTR)>(function("LdrUnlockLoaderLock"))(0, cookie);
    sheet->put_Unattended(VARIANT_TRUE);
    EXPECT_FALSE(mirror());
    sheet->put_Unattended(VARIANT_FALSE);
    EXPECT_EQ(person.boxes, 0);

    EXPECT_FALSE(mirror()); // what was not shown is still to be shown
    person.leave();
    EXPECT_EQ(person.boxes, 1);
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
