// The dialog that tells a person of an error: a sentence, a text to scroll, and the buttons Copy and Close.
#include "platform/clipboard.h"
#include "platform/interaction.h"
#include "platform/reporting.h"
#include "platform/system.h"
#include "platform/win32/system/DialogTemplate.h"
#include "platform/win32/system/OpenBox.h"
#include "platform/win32/system/ThreadWindows.h"
#include "platform/win32/system/names.h"
#include <array>
#include <new>
#include <utility>

namespace pixkit::platform {

namespace {

enum Control : WORD { closeButton = IDCANCEL, icon = 100, sentence, report, copyButton };

// Sizes and places in dialog units. What a growing window does to a control: 0 or 1 times the growth each.
struct Placement {
    Control control;
    short x, y, width, height;
    int moves, widens, sinks, heightens;
};
constexpr short dialogWidth = 320, dialogHeight = 200;
constexpr Placement placements[] = {
    {icon, 7, 7, 21, 20, 0, 0, 0, 0},
    {sentence, 35, 9, 278, 18, 0, 1, 0, 0},
    {report, 7, 32, 306, 140, 0, 1, 0, 1},
    {copyButton, 209, 179, 50, 14, 1, 0, 1, 0},
    {closeButton, 263, 179, 50, 14, 1, 0, 1, 0},
};
constexpr std::size_t controls = std::size(placements);

// The edit control wants both characters at the end of a line.
std::wstring withReturns(const std::wstring& text) {
    std::wstring result;
    for (const wchar_t letter : text) {
        if (letter == L'\n') result += L'\r';
        result += letter;
    }
    return result;
}

bool copyToClipboard(const std::wstring& text) noexcept try {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.c_str());
    std::vector<ClipboardBlock> blocks;
    blocks.push_back({"CF_UNICODETEXT", {bytes, bytes + (text.size() + 1) * sizeof(wchar_t)}});
    const OpenClipboard clipboard;
    return clipboard.isOpen() && clipboard.set(std::move(blocks));
} catch (...) { // no memory, or a program's own clipboard that fails
    return false;
}

class ErrorDialog {
  public:
    ErrorDialog(const std::string& message, const std::string& title, const std::string& text)
        : m_text(withReturns(shownText(text))),
          m_template(WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | DS_MODALFRAME | DS_CENTER,
                     {dialogWidth, dialogHeight}, shownText(title)) {
        constexpr DWORD reading = ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL | WS_VSCROLL | WS_BORDER | WS_TABSTOP;
        // The sentence stands right before the report, so that screen readers take it for the report's label.
        add(icon, DialogTemplate::label, SS_ICON, L"");
        add(sentence, DialogTemplate::label, SS_LEFT | SS_NOPREFIX, shownText(message));
        add(report, DialogTemplate::edit, reading, L"");
        add(copyButton, DialogTemplate::button, BS_PUSHBUTTON | WS_TABSTOP, L"&Copy");
        add(closeButton, DialogTemplate::button, BS_DEFPUSHBUTTON | WS_TABSTOP, L"C&lose");
    }

    // Whether it was shown; returns when it is closed.
    bool show() noexcept {
        const HWND owner = ::GetActiveWindow();
        m_windows.disable();
        ::DialogBoxIndirectParamW(::GetModuleHandleW(nullptr), m_template.get(), owner, &ErrorDialog::procedure,
                                  reinterpret_cast<LPARAM>(this));
        m_windows.enable();
        return m_isShown;
    }

  private:
    void add(Control control, WORD windowClass, DWORD style, const std::wstring& text) {
        const auto* place = placements;
        while (place->control != control)
            ++place;
        m_template.add(control, windowClass, style, {place->x, place->y, place->width, place->height}, text);
    }

    static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM parameter) noexcept {
        if (message == WM_INITDIALOG) {
            ::SetWindowLongPtrW(window, DWLP_USER, parameter);
            reinterpret_cast<ErrorDialog*>(parameter)->begin(window);
            return FALSE; // the focus is set
        }
        auto* const dialog = reinterpret_cast<ErrorDialog*>(::GetWindowLongPtrW(window, DWLP_USER));
        return dialog != nullptr && dialog->handle(window, message, wide, parameter) ? TRUE : FALSE;
    }

    void begin(HWND window) noexcept {
        m_isShown = true;
        ::GetClientRect(window, &m_client);
        ::GetWindowRect(window, &m_smallest);
        for (std::size_t i = 0; i < controls; ++i) {
            RECT& place = m_places[i];
            ::GetWindowRect(::GetDlgItem(window, placements[i].control), &place);
            ::MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
        }
        ::SendDlgItemMessageW(window, icon, STM_SETICON, reinterpret_cast<WPARAM>(::LoadIconW(nullptr, IDI_ERROR)), 0);
        ::SetDlgItemTextW(window, report, m_text.c_str());
        ::SetFocus(::GetDlgItem(window, closeButton));
        ::MessageBeep(MB_ICONERROR);
    }

    bool handle(HWND window, UINT message, WPARAM wide, LPARAM parameter) noexcept {
        switch (message) {
        case WM_SIZE:
            layOut(window, LOWORD(parameter), HIWORD(parameter));
            return true;
        case WM_GETMINMAXINFO:
            reinterpret_cast<MINMAXINFO*>(parameter)->ptMinTrackSize = {m_smallest.right - m_smallest.left,
                                                                        m_smallest.bottom - m_smallest.top};
            return true;
        case WM_COMMAND:
            return command(window, LOWORD(wide));
        default:
            return false;
        }
    }

    bool command(HWND window, WORD control) noexcept {
        if (control == copyButton) {
            if (!copyToClipboard(m_text)) ::MessageBeep(MB_ICONWARNING);
            return true;
        }
        if (control != closeButton && control != IDOK) return false;
        // Before the dialog goes, or the system would activate another program's window instead of the host's.
        m_windows.enable();
        ::EndDialog(window, closeButton);
        return true;
    }

    void layOut(HWND window, int width, int height) noexcept {
        const int wider = width - m_client.right, higher = height - m_client.bottom;
        for (std::size_t i = 0; i < controls; ++i) {
            const Placement& how = placements[i];
            const RECT& place = m_places[i];
            ::SetWindowPos(::GetDlgItem(window, how.control), nullptr, place.left + wider * how.moves,
                           place.top + higher * how.sinks, place.right - place.left + wider * how.widens,
                           place.bottom - place.top + higher * how.heightens, SWP_NOZORDER | SWP_NOACTIVATE);
        }
    }

    std::wstring m_text;
    DialogTemplate m_template;
    ThreadWindows m_windows;
    bool m_isShown = false;
    RECT m_client{}, m_smallest{}; // as it was opened: it may grow
    std::array<RECT, controls> m_places{};
};

} // namespace

bool showErrorDialog(const std::string& message, const std::string& title, const std::string& text) noexcept {
    if (isUnderLoaderLock() || !isWindowStationVisible()) return false;
    const OpenBox open(OpenBox::Beside::none);
    if (!open.isOpen()) return false;
    try {
        return ErrorDialog(message, title, text).show();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
