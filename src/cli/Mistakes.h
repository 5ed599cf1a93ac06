// Command lines that the parser of options refuses, in words like those for all other mistakes.
#pragma once
#include <span>
#include <string>
#include <string_view>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace pixkit::cli {

// 'did you mean ...?' for the one of the known words that is nearest, if one is near; else empty.
std::string suggestionFor(std::string_view word, std::span<const std::string_view> known);

// What is wrong with a line of that command, which the parser has refused, in one sentence without a full stop.
std::string describeMistake(const CLI::App& command, const CLI::ParseError& error);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
