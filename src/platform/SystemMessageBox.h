// The part of MessageBoxW that differs between the sides of the seam.
#pragma once
#include "platform/interaction.h"
#include <cstdint>
#include <string>

namespace pixkit::platform {

// What the platform answers when no handler is set. May throw std::bad_alloc.
int systemMessageBox(const std::string& text, const std::string& caption, std::uint32_t style);

// The answer of somebody who only closes the box: No where that is a choice, else OK.
constexpr int cautiousAnswer(std::uint32_t style) noexcept {
    constexpr std::uint32_t buttons = 0xF, yesNoCancel = 3, yesNo = 4;
    return (style & buttons) == yesNo || (style & buttons) == yesNoCancel ? answerNo : answerOk;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
