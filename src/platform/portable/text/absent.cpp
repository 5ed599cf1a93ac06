// The side without libraries for text: there are no fonts.
#include "platform/text.h"

namespace pixkit::platform {

Handle CreateFontIndirectW(const FontRecord& /*record*/) noexcept {
    return 0;
}

std::unique_ptr<TextFont> openFont(Handle /*font*/) noexcept {
    return nullptr;
}

bool canDrawText() noexcept {
    return false;
}

bool takesFontFiles() noexcept {
    return false;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
