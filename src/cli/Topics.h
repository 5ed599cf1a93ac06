// What `pixkit help TOPIC` explains beyond the options: each subject once, for the help and the manual page.
#pragma once
#include <span>
#include <string_view>

namespace pixkit::cli {

struct Topic {
    std::string_view name; // "colours"
    std::string_view title;
    std::string_view text; // lines of at most 110 characters, the last one ended
};

std::span<const Topic> topics();

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
