#include "platform/win32/system/DialogTemplate.h"
#include <cstddef>
#include <cstdlib>

namespace pixkit::platform {

namespace {

struct Font {
    std::wstring face;
    int points;
};

// The system scales it with its resolution, and dialog units with it.
Font messageFont() {
    NONCLIENTMETRICSW metrics{};
    // Without the field behind it, which newer systems have and older ones refuse.
    metrics.cbSize = offsetof(NONCLIENTMETRICSW, lfMessageFont) + sizeof metrics.lfMessageFont;
    if (::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0) == FALSE)
        return {L"MS Shell Dlg", 8};
    const HDC screen = ::GetDC(nullptr);
    const int pixelsInAnInch = screen != nullptr ? ::GetDeviceCaps(screen, LOGPIXELSY) : 96;
    if (screen != nullptr) ::ReleaseDC(nullptr, screen);
    const auto height = static_cast<int>(std::labs(metrics.lfMessageFont.lfHeight));
    return {metrics.lfMessageFont.lfFaceName, ::MulDiv(height, 72, pixelsInAnInch)};
}

constexpr std::size_t itemCount = 4; // where it stands, in words

} // namespace

DialogTemplate::DialogTemplate(DWORD style, Size size, const std::wstring& title) {
    const Font font = messageFont();
    addDouble(style | DS_SETFONT);
    addDouble(0);
    for (const int number :
         {0, 0, 0, int{size.width}, int{size.height}, 0, 0}) // no items yet, the place, no menu, class
        m_words.push_back(static_cast<WORD>(number));
    addText(title);
    m_words.push_back(static_cast<WORD>(font.points));
    addText(font.face);
}

void DialogTemplate::add(WORD id, WORD windowClass, DWORD style, Place place, const std::wstring& text) {
    if (m_words.size() % 2 != 0) m_words.push_back(0); // items begin at multiples of four bytes
    addDouble(style | WS_CHILD | WS_VISIBLE);
    addDouble(0);
    for (const int number :
         {int{place.x}, int{place.y}, int{place.width}, int{place.height}, int{id}, 0xFFFF, int{windowClass}})
        m_words.push_back(static_cast<WORD>(number));
    addText(text);
    m_words.push_back(0); // no data for its creation
    ++m_words[itemCount];
}

void DialogTemplate::addDouble(DWORD value) {
    m_words.push_back(LOWORD(value));
    m_words.push_back(HIWORD(value));
}

void DialogTemplate::addText(const std::wstring& text) {
    m_words.insert(m_words.end(), text.c_str(), text.c_str() + text.size() + 1);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
