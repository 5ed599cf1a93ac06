#include "platform/console.h"
#include <unistd.h>

namespace pixkit::platform {

std::vector<std::string> commandLineArguments(int argc, const char* const* argv) {
    if (argc < 2) return {};
    return {argv + 1, argv + argc};
}

bool isTerminal(StandardStream stream) noexcept {
    return isatty(static_cast<int>(stream)) != 0;
}

void useBytes(StandardStream /*stream*/) noexcept {}

Utf8Console::Utf8Console() noexcept : m_previousCodePage(0) {}
Utf8Console::~Utf8Console() = default;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
