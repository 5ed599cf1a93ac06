#include "cli/IconChoice.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <charconv>

namespace pixkit::cli {

namespace {

bool parseLength(std::string_view text, std::int32_t& length) {
    std::uint16_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    length = value;
    return error == std::errc() && end == text.data() + text.size();
}

} // namespace

void parseIconSize(std::string_view text, IconChoice& choice) {
    const std::size_t cross = text.find_first_of("xX");
    const std::string_view height = cross == std::string_view::npos ? text : text.substr(cross + 1);
    if (!parseLength(text.substr(0, cross), choice.width) || !parseLength(height, choice.height)) {
        throw UsageError("'" + std::string(text) + "' is no icon size; that is N or WxH, as in 48 or 64x32, 0 for any");
    }
}

std::vector<IconEntrySize> parseIconEntries(std::string_view text) {
    std::vector<IconEntrySize> entries;
    while (true) {
        const std::string_view entry = text.substr(0, text.find(','));
        const std::size_t colon = entry.find(':');
        IconChoice choice;
        parseIconSize(entry.substr(0, colon), choice);
        const bool hasDepth = colon == std::string_view::npos || parseLength(entry.substr(colon + 1), choice.depth);
        if (!hasDepth || choice.width == 0 || choice.height == 0 || choice.depth < 1 || choice.depth > 32) {
            throw UsageError("'" + std::string(entry) +
                             "' is no icon entry; that is a size and perhaps its bits, as in 48, 64x32 or 16:8");
        }
        entries.push_back({choice.width, choice.height, choice.depth});
        if (entry.size() == text.size()) return entries;
        text.remove_prefix(entry.size() + 1);
    }
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
