// Command lines that the parser of options refuses, in words like those for all other mistakes.
#pragma once
#include <CLI/CLI.hpp>
#include <string>

namespace pixkit::cli {

// What is wrong with a line of that command, which the parser has refused, in one sentence without a full stop.
std::string describeMistake(const CLI::App& command, const CLI::ParseError& error);

} // namespace pixkit::cli
