// The manual page, and what shells complete: all of it made of the options as they are declared.
#pragma once
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace pixkit::cli {

// A page of section 1, for man.
void writeManual(std::ostream& out, const CLI::App& app, std::string_view version);

// A script for 'bash', 'zsh' or 'fish'. False for any other shell.
bool writeCompletions(std::ostream& out, const CLI::App& app, std::string_view shell);

// What `pixkit help` explains or writes: commands, topics, the manual page, completions.
std::vector<std::string> helpTopics(const CLI::App& app);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
