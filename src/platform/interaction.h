// What the component says to the person in front of it.
#pragma once
#include "platform/api.h"
#include <cstdint>
#include <functional>
#include <string>

namespace pixkit::platform {

// MessageBox styles and answers; the values are the system's.
inline constexpr std::uint32_t messageBoxOk = 0;
inline constexpr std::uint32_t messageBoxYesNoQuestionDefaultNo = 292; // MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2
inline constexpr int answerOk = 1;
inline constexpr int answerYes = 6;
inline constexpr int answerNo = 7;

// Answers a message box in place of a person: text, caption, style -> one of the answers above.
using MessageBoxHandler = std::function<int(const std::string& text, const std::string& caption, std::uint32_t style)>;

// Shows a message box (texts are UTF-8), modal to all windows of its thread, and returns the answer. A handler answers
// where one is set. Without one the system shows the box where somebody sees it (isWindowStationVisible), and elsewhere
// the answer is No for Yes/No boxes and OK otherwise.
int MessageBoxW(const std::string& text, const std::string& caption, std::uint32_t style) noexcept;

// Replaces the handler for the whole process; an empty one restores the platform's own behaviour.
PIXKIT_API void setMessageBoxHandler(MessageBoxHandler handler);

// Whether windows of this process are on a desktop that a person sees: services, and what they start, are not. Always
// false on the portable side, which shows none.
bool isWindowStationVisible() noexcept;

// Whether a message box reaches anybody: a handler, or somebody who sees it.
bool isSomebodyThere() noexcept;

// Whether the desktop's windows are Unicode ones, which chooses between the wide and the narrow file functions. Always
// true on the portable side.
bool isDesktopWindowUnicode() noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
