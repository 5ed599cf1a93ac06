// A dialog described in memory, in the font that the person chose for messages.
#pragma once
#include <string>
#include <vector>
#include <windows.h>

namespace pixkit::platform {

// DLGTEMPLATE and its items. Sizes are in dialog units, a quarter of the font's average width and an eighth of its
// height. All may throw std::bad_alloc.
class DialogTemplate {
  public:
    enum WindowClass : WORD { button = 0x80, edit = 0x81, label = 0x82 };
    struct Size {
        short width, height;
    };
    struct Place {
        short x, y, width, height;
    };

    DialogTemplate(DWORD style, Size size, const std::wstring& title);
    void add(WORD id, WORD windowClass, DWORD style, Place place, const std::wstring& text);
    const DLGTEMPLATE* get() const noexcept { return reinterpret_cast<const DLGTEMPLATE*>(m_words.data()); }

  private:
    void addDouble(DWORD value);
    void addText(const std::wstring& text);

    std::vector<WORD> m_words;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
