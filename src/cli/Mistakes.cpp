#include "cli/Mistakes.h"
#include "cli/Files.h"
#include "cli/Text.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <optional>
#include <string_view>
#include <vector>

namespace pixkit::cli {

namespace {

// How many letters are to be put in, left out, replaced or exchanged with the next to come from one word to the other.
std::size_t distanceBetween(std::string_view from, std::string_view to) {
    // From the beginning of `from` so far, and before its last letters, to each beginning of `to`.
    std::vector<std::size_t> row(to.size() + 1), before(row), beforeThat(row);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        beforeThat.swap(before);
        before.swap(row);
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            row[j + 1] = std::min({before[j] + (from[i] == to[j] ? 0 : 1), before[j + 1] + 1, row[j] + 1});
            const bool isExchanged = i > 0 && j > 0 && from[i] == to[j - 1] && from[i - 1] == to[j];
            if (isExchanged) row[j + 1] = std::min(row[j + 1], beforeThat[j - 1] + 1);
        }
    }
    return row.back();
}

// The dot of an extension and the dashes of an option are none.
std::string_view lettersOf(std::string_view word) {
    return word.substr(std::min(word.find_first_not_of(".-"), word.size()));
}

// Of every three letters one may be wrong, of all of them two; but not the first of a short word: .tif is no .gif.
bool isNear(std::string_view word, std::string_view known, std::size_t distance) {
    constexpr std::size_t farthest = 2, shortLength = 3;
    const std::string_view letters = lettersOf(word), knownLetters = lettersOf(known);
    const std::size_t longest = std::max(letters.size(), knownLetters.size());
    return distance <= std::min(farthest, longest / 3) && distance < letters.size() &&
           (longest > shortLength || letters.front() == knownLetters.front());
}

} // namespace

std::string joined(std::span<const std::string_view> words, std::string_view between, std::string_view last) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i)
        text.append(i == 0 ? "" : i + 1 == words.size() ? last : between).append(words[i]);
    return text;
}

std::string listed(std::span<const std::string_view> words) {
    return joined(words, ", ", " and ");
}

std::string suggestionFor(std::string_view written, std::span<const std::string_view> known) {
    const std::string word = toLower(written);
    const auto longer = std::ranges::find_if(known, [&](std::string_view each) { return each.starts_with(word); });
    if (word.size() > 2 && longer != known.end()) return "did you mean " + std::string(*longer) + "?";
    std::string_view nearest;
    std::size_t least = word.size();
    for (const std::string_view each : known) {
        const std::size_t distance = distanceBetween(word, each);
        if (distance >= least || !isNear(word, each, distance)) continue;
        least = distance;
        nearest = each;
    }
    return nearest.empty() ? "" : "did you mean " + std::string(nearest) + "?";
}

std::string orSuggestion(std::string_view word, std::span<const std::string_view> known) {
    const std::string suggestion = suggestionFor(word, known);
    return suggestion.empty() ? "" : "; " + suggestion;
}

std::string suggestionOr(std::string_view word, std::span<const std::string_view> known, std::string_view otherwise) {
    const std::string suggestion = suggestionFor(word, known);
    return suggestion.empty() ? std::string(otherwise) : suggestion;
}

std::string suggestionOr(std::string_view word, std::span<const std::string_view> known) {
    return suggestionOr(word, known, "known are " + listed(known));
}

UsageError unknownWord(std::string_view word, std::string_view what, std::span<const std::string_view> known) {
    return UsageError("'" + std::string(word) + "' is not " + std::string(what) + "; " + suggestionOr(word, known));
}

namespace {

std::vector<std::string> optionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

std::string describeUnknown(const CLI::App& command, const std::string& word) {
    if (command.get_name() == "help" && !word.starts_with('-'))
        return "help takes one word, not '" + word + "' as well";
    const std::vector<std::string> names = optionNames(command);
    const std::string suggestion = suggestionFor(word, std::vector<std::string_view>(names.begin(), names.end()));
    const CLI::App* const parent = command.get_parent();
    if (suggestion.empty()) {
        for (const CLI::App* other : (parent != nullptr ? *parent : command).get_subcommands({})) {
            if (std::ranges::count(optionNames(*other), word) == 0) continue;
            return "'" + word + "' is an option of " + other->get_name() +
                   (parent != nullptr ? ", not of " + command.get_name() : ", which has to stand before it");
        }
    }
    const std::string text = "'" + word + "' is not an option of " + command.get_name();
    if (isFile(word)) return text + "; the file of that name is ./" + word;
    return text + (suggestion.empty() ? "" : "; ") + suggestion;
}

// Null where there is none. (The parser's own member ends the program where memory ends.)
const CLI::Option* optionOf(const CLI::App& command, const std::string& name) {
    const std::vector<const CLI::Option*> options = command.get_options();
    const auto found = std::ranges::find_if(options, [&](const CLI::Option* each) { return each->check_name(name); });
    return found == options.end() ? nullptr : *found;
}

bool takesValue(const CLI::Option* option) {
    return option != nullptr && option->get_items_expected_max() != 0;
}

// Of a word with one dash that is no letters of options, or is nearly a long option: a value may stand right behind its
// letter ("-ofile"), so only options that begin with that letter count, and none where the value seems to be their
// name.
void refuseLongOption(const CLI::App& command, const std::string& word, bool isOfLetters) {
    constexpr std::size_t leastLetters = 3;
    const std::string written = word.substr(0, word.find('='));
    if (written.size() <= leastLetters) return;
    std::vector<std::string> names = optionNames(command);
    std::erase_if(names, [&](const std::string& name) { return name[2] != word[1] || word[1] == word[2]; });
    const std::string suggestion =
        orSuggestion("-" + written, std::vector<std::string_view>(names.begin(), names.end()));
    if (!isOfLetters || !suggestion.empty())
        throw UsageError("'" + written + "' is not an option of " + command.get_name() + suggestion);
}

// Whether the value of an option is what follows the word. Throws UsageError.
bool readsNext(const CLI::App& command, const std::string& word) {
    if (word.size() < 2 || word[0] != '-') return false;
    if (word[1] == '-') return takesValue(optionOf(command, word));
    const CLI::Option* option = nullptr;
    std::size_t at = 1; // of the first letter that is not an option without a value
    for (; at < word.size(); ++at) {
        option = optionOf(command, {'-', word[at]});
        if (option == nullptr || takesValue(option)) break;
    }
    refuseLongOption(command, word, at == 1 || option != nullptr); // what begins with no option is a name, or told of
    return takesValue(option) && at + 1 == word.size();
}

// What the parser says of each, and what a person is told instead; * is what stands in between.
struct Wording {
    std::string_view between, end, said, saidAtEnd;
};
constexpr Wording wordings[] = {
    {": 1 required ", " missing", " needs ", " behind it"},
    {" excludes ", "", " and ", " say different things; give one of them"},
    {" is required", "", " is missing", ""},
};

// What stands between the two; nothing where they are not there in this order.
std::optional<std::string> between(const std::string& text, std::string_view before, std::string_view behind) {
    const std::size_t at = text.find(before);
    if (at == std::string::npos) return {};
    const std::size_t start = at + before.size(), end = behind.empty() ? text.size() : text.find(behind, start);
    return end == std::string::npos ? std::nullopt : std::optional(text.substr(start, end - start));
}

// What the parser says of a value that is none.
std::optional<std::string> describeValue(const std::string& text) {
    if (const auto value = between(text, ": Value ", " not in range ")) {
        return text.substr(0, text.find(": Value ")) + " takes " + *between(text, " not in range ", "") + ", not '" +
               *value + "'";
    }
    const auto option = between(text, "Could not convert: ", " = ");
    if (!option) return {};
    return *option + " takes a whole number, not '" + *between(text, " = ", "") + "'";
}

} // namespace

void settleWords(const CLI::App& command, std::vector<std::string>& words) {
    std::size_t at = 1;
    while (at < words.size() && words[at] != "--")
        at += readsNext(command, words[at]) ? 2 : 1;
    if (at >= words.size()) return;
    words.erase(words.begin() + static_cast<std::ptrdiff_t>(at));
    for (; at < words.size(); ++at)
        if (words[at].size() > 1 && words[at].starts_with('-')) words[at].insert(0, "./");
}

std::string describeMistake(const CLI::App& command, const CLI::ParseError& error) {
    std::string text = error.what();
    const bool hasNoCommand = command.get_parent() == nullptr;
    if (hasNoCommand || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr ||
        dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        const std::vector<std::string> rest = command.remaining();
        if (!rest.empty()) return describeUnknown(command, rest.front().substr(0, rest.front().find('=')));
    }
    if (const auto value = describeValue(text)) return *value;
    constexpr std::string_view required = " is required";
    if (!text.starts_with('-') && text.ends_with(required))
        return "name at least one " + toLower(text.substr(0, text.size() - required.size()));
    for (const Wording& wording : wordings) {
        const std::size_t at = text.find(wording.between);
        if (at == std::string::npos || !text.ends_with(wording.end)) continue;
        const std::size_t rest = at + wording.between.size();
        return text.substr(0, at) + std::string(wording.said) +
               text.substr(rest, text.size() - wording.end.size() - rest) + std::string(wording.saidAtEnd);
    }
    return text;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
