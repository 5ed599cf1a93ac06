#include "platform/console.h"
#include "platform/win32/system/names.h"
#include <fcntl.h>
#include <io.h>
#include <memory>
// windows.h needs to come before shellapi.h.
#include <windows.h>

#include <shellapi.h>

namespace pixkit::platform {

namespace {

// Adds the files that match a pattern, or the pattern itself when none does: the message then names what was typed. A
// name that would be taken for an option gets its folder in front.
void addMatches(const std::wstring& pattern, std::vector<std::string>& arguments) {
    const std::wstring folder = pattern.substr(0, pattern.find_last_of(L"\\/:") + 1);
    const std::size_t before = arguments.size();
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(pattern.c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        const auto close = [](void* handle) { FindClose(handle); };
        const std::unique_ptr<void, decltype(close)> closed(search, close);
        do {
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                const bool looksLikeOption = folder.empty() && found.cFileName[0] == L'-';
                arguments.push_back(nameToUtf8((looksLikeOption ? L".\\" : folder) + found.cFileName));
            }
        } while (FindNextFileW(search, &found));
    }
    if (arguments.size() == before) arguments.push_back(nameToUtf8(pattern));
}

} // namespace

std::vector<std::string> commandLineArguments(int argc, const char* const* argv) {
    int count = 0;
    const auto release = [](LPWSTR* list) { LocalFree(list); };
    const std::unique_ptr<LPWSTR, decltype(release)> wide(CommandLineToArgvW(GetCommandLineW(), &count), release);
    if (!wide) return {argv + (argc > 0 ? 1 : 0), argv + argc};
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        const std::wstring argument = wide.get()[i];
        if (argument.find_first_of(L"*?") == std::wstring::npos) {
            arguments.push_back(nameToUtf8(argument));
        } else {
            addMatches(argument, arguments);
        }
    }
    return arguments;
}

bool isTerminal(StandardStream stream) noexcept {
    // Not _isatty, which takes the null device for a terminal.
    constexpr DWORD names[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(names[static_cast<int>(stream)]), &mode) != FALSE;
}

void occupyStandardStreams() noexcept {}

void useBytes(StandardStream stream) noexcept {
    _setmode(static_cast<int>(stream), _O_BINARY);
}

Utf8Console::Utf8Console() noexcept : m_previousCodePage(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
}

Utf8Console::~Utf8Console() {
    if (m_previousCodePage != 0) SetConsoleOutputCP(m_previousCodePage);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
