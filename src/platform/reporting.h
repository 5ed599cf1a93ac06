// What the report of an error asks of the machine.
#pragma once
#include <string>
#include <vector>

namespace pixkit::platform {

// Shows a text that does not fit a message box: `message`, and `text` to scroll and to copy. Modal to all windows of
// its thread; returns when the person closes it. False, and nothing shown, where that cannot be: always on the portable
// side; on Windows under the loader's lock, when nobody sees the process' window station, and while the component shows
// another box. All texts are UTF-8, with lines that end in \n.
bool showErrorDialog(const std::string& message, const std::string& title, const std::string& text) noexcept;

// To whoever listens to what the process says to debuggers. Does nothing on the portable side.
void OutputDebugStringW(const std::string& text) noexcept;

struct NamedVersion {
    std::string name, version;
};
// The system, and of the libraries that the component borrows at run time those that are loaded. May throw
// std::bad_alloc.
std::vector<NamedVersion> versionsInUse();

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
