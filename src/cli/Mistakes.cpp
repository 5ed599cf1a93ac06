#include "cli/Mistakes.h"
#include <algorithm>
#include <numeric>
#include <string_view>
#include <vector>

namespace pixkit::cli {

namespace {

// How many letters are to be put in, left out or replaced to come from one word to the other.
std::size_t distanceBetween(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1); // from the beginning of `from` so far, to each beginning of `to`
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

// The option whose name is nearest, if one is near.
std::string suggestionFor(const CLI::App& command, std::string_view word) {
    constexpr std::size_t farthest = 3; // of them two letters may be wrong, but not three
    std::string nearest;
    std::size_t least = farthest;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            const std::size_t distance = distanceBetween(word, "--" + name);
            if (distance >= least) continue;
            least = distance;
            nearest = "; did you mean --" + name + "?";
        }
    }
    return nearest;
}

} // namespace

std::string describeMistake(const CLI::App& command, const CLI::ParseError& error) {
    std::string text = error.what();
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        const std::vector<std::string> rest = command.remaining();
        if (!rest.empty()) {
            const std::string word = rest.front().substr(0, rest.front().find('='));
            return "'" + word + "' is not an option of " + command.get_name() + suggestionFor(command, word);
        }
    }
    constexpr std::string_view required = ": 1 required ";
    constexpr std::string_view missing = " missing";
    const std::size_t at = text.find(required);
    if (at == std::string::npos || !text.ends_with(missing)) return text;
    const std::size_t type = at + required.size();
    return text.substr(0, at) + " needs " + text.substr(type, text.size() - missing.size() - type) + " behind it";
}

} // namespace pixkit::cli
