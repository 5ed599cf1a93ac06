// What the component says to the person in front of it.
#pragma once
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

// Shows a modal message box (texts are UTF-8) and returns the answer. On Windows the system shows it unless a handler
// is set; on the portable side the handler answers, and without one the answer is No for Yes/No boxes and OK otherwise.
int MessageBoxW(const std::string& text, const std::string& caption, std::uint32_t style) noexcept;

// Replaces the handler for the whole process; an empty one restores the platform's own behaviour.
void setMessageBoxHandler(MessageBoxHandler handler);

// Whether the desktop's windows are Unicode ones, which chooses between the wide and the narrow file functions. Always
// true on the portable side.
bool isDesktopWindowUnicode() noexcept;

} // namespace pixkit::platform
