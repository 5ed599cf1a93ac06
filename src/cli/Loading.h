// How a command loads its pictures.
#pragma once
#include "cli/IconChoice.h"
#include <string>
#include <string_view>

namespace pixkit::cli {

struct LoadingOptions {
    IconChoice icon = {};
    double mostPixels = 256e6; // of a picture and of what is made of it (cPixSheet::MaxPixels); 0: any number
};

// '--limit': a number with the unit MP or GP, or 'none'; pixels, 0 for none. Throws UsageError.
double parseLimit(std::string_view text);

// Also sets the limit of the instance.
bool load(cPixSheet& sheet, const std::string& file, const LoadingOptions& options, bool keepsFile = false);

// Why the last call failed. Where it was for the limit, how that is raised.
std::string problemOf(const cPixSheet& sheet);

} // namespace pixkit::cli
