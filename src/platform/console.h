// What a program started from a shell is given.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace pixkit::platform {

// The program's arguments in UTF-8, without its name, from what main received. On Windows the wide command line is read
// instead, because main's is in the narrow code page, and * and ? are expanded to the files that match, because the
// shells there leave that to the program.
std::vector<std::string> commandLineArguments(int argc, const char* const* argv);

enum class StandardStream : std::uint8_t { input = 0, output = 1, error = 2 };

// Whether a person is at the other end, not a file or a pipe.
bool isTerminal(StandardStream stream) noexcept;

// Takes the places of standard streams that the program was started without: a file would get them, and whatever is
// said would be written into it. Reading from and writing to them fails, as without. To be called before anything is
// opened; nothing to do on Windows, where the language's own streams keep their places.
void occupyStandardStreams() noexcept;

// From now on a standard stream carries bytes as they are, not lines; nothing to do on the portable side.
void useBytes(StandardStream stream) noexcept;

// The console shows UTF-8 for the length of a scope; nothing to do on the portable side.
class Utf8Console {
  public:
    Utf8Console() noexcept;
    ~Utf8Console();
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;

  private:
    [[maybe_unused]] std::uint32_t m_previousCodePage;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
