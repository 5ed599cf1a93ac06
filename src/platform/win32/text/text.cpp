#include "platform/text.h"
#include "platform/faults.h"
#include "platform/win32/system/names.h"
#include "platform/win32/text/GdiFont.h"
#include <algorithm>
#include <new>
#include <windows.h>

namespace pixkit::platform {

Handle CreateFontIndirectW(const FontRecord& record) noexcept {
    if (faultDue(SeamCall::createFont)) return 0;
    try {
        LOGFONTW native{};
        std::wstring name;
        if (!toUtf16(record.Name, name)) return 0;
        name.resize(std::min<std::size_t>(name.size(), LF_FACESIZE - 1)); // as all names of fonts are
        std::copy(name.begin(), name.end(), native.lfFaceName);
        native.lfHeight = record.height;
        native.lfWeight = record.weight;
        native.lfItalic = record.italic ? TRUE : FALSE;
        native.lfUnderline = record.underline ? TRUE : FALSE;
        native.lfStrikeOut = record.strikeOut ? TRUE : FALSE;
        native.lfCharSet = record.charSet;
        return reinterpret_cast<Handle>(::CreateFontIndirectW(&native));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

std::unique_ptr<TextFont> openFont(Handle font) noexcept {
    if (faultDue(SeamCall::openFont)) return nullptr;
    try {
        return GdiFont::open(reinterpret_cast<HFONT>(font));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool canDrawText() noexcept {
    return uniscribe() != nullptr;
}

bool takesFontFiles() noexcept {
    return false;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
