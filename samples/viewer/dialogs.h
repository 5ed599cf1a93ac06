// The questions for files to open and to save. Empty when the person does not want to.
#pragma once
#include <string>
#include <windows.h>

namespace viewer {

std::wstring askForFileToOpen(HWND owner);
// Its extension says the format; a name without one gets that of the chosen kind.
std::wstring askForFileToSave(HWND owner, const std::wstring& openName);

} // namespace viewer
// SPDX-License-Identifier: MIT
