#include "platform/console.h"
#include <fcntl.h>
#include <unistd.h>

namespace pixkit::platform {

std::vector<std::string> commandLineArguments(int argc, const char* const* argv) {
    if (argc < 2) return {};
    return {argv + 1, argv + argc};
}

bool isTerminal(StandardStream stream) noexcept {
    return isatty(static_cast<int>(stream)) != 0;
}

void occupyStandardStreams() noexcept {
    // Each gets the lowest number that is free. A folder is there on every system, and by its path alone it can be
    // neither read nor written.
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) < 0) open("/", O_PATH);
}

void useBytes(StandardStream /*stream*/) noexcept {}

Utf8Console::Utf8Console() noexcept : m_previousCodePage(0) {}
Utf8Console::~Utf8Console() = default;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
