// The system's font objects.
#pragma once
#include "com/Automation.h"
#include <ocidl.h>
#include <olectl.h>

namespace pixkit::test {

// Tahoma, of a size in points, as an interface of such an object.
inline HRESULT makeFont(int points, REFIID interfaceId, void** font) {
    FONTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.lpstrName = const_cast<LPOLESTR>(L"Tahoma");
    description.cySize.int64 = points * 10'000;
    description.sWeight = FW_NORMAL;
    description.sCharset = DEFAULT_CHARSET;
    return ::OleCreateFontIndirect(&description, interfaceId, font);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
