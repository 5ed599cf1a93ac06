// Command lines that the parser of options refuses, in words like those for all other mistakes.
#pragma once
#include "cli/UsageError.h"
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace pixkit::cli {

// The words, with `between` between them, and `last` before the last.
std::string joined(std::span<const std::string_view> words, std::string_view between, std::string_view last);
// "a, b and c"
std::string listed(std::span<const std::string_view> words);

// 'did you mean ...?' for a known word that begins with it, or else the one that is nearest, if one is near; else
// empty. Known words are in lower case; `written` may be in any.
std::string suggestionFor(std::string_view written, std::span<const std::string_view> known);
// The same behind a semicolon, or nothing.
std::string orSuggestion(std::string_view word, std::span<const std::string_view> known);
// The suggestion, or else `otherwise`, or which are known.
std::string suggestionOr(std::string_view word, std::span<const std::string_view> known, std::string_view otherwise);
std::string suggestionOr(std::string_view word, std::span<const std::string_view> known);
// Of a word that is not `what`, such as "a filter".
UsageError unknownWord(std::string_view word, std::string_view what, std::span<const std::string_view> known);

// What the entries of a table are called.
template <class Table, class Name>
std::vector<std::string_view> wordsOf(const Table& table, Name name) {
    std::vector<std::string_view> words;
    words.reserve(std::size(table));
    for (const auto& entry : table)
        words.emplace_back(std::invoke(name, entry));
    return words;
}

// Brings words, of which the first is the command's name, into a form that the parser reads as people mean it: behind
// "--" all are names, also where there were some before. Throws UsageError for a long option with one dash, whose
// letters the parser would take for options of their own, or for the value of one: "-out" is no folder "ut".
void settleWords(const CLI::App& command, std::vector<std::string>& words);

// What is wrong with a line of that command, which the parser has refused, in one sentence without a full stop.
std::string describeMistake(const CLI::App& command, const CLI::ParseError& error);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
