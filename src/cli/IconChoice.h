// Which image of an icon or cursor file a command takes, and which it writes.
#pragma once
#include "surface/cPixSheet.h"
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pixkit::cli {

// Pixels and bits; 0 means any. The values without options are the component's own.
struct IconChoice {
    std::int32_t width = 32, height = 32, depth = 32;
};

// 'N' or 'WxH' from 0 to 65535 into width and height; throws UsageError for anything else.
void parseIconSize(std::string_view text, IconChoice& choice);

// 'SIZE[:BITS],...', SIZE being 'N' or 'WxH' from 1 to 65535 and BITS, 32 when left out, from 1 to 32. Throws
// UsageError.
std::vector<IconEntrySize> parseIconEntries(std::string_view text);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
