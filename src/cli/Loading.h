// How a command loads its pictures.
#pragma once
#include "cli/IconChoice.h"
#include "cli/Scaling.h"
#include "cli/Streams.h"
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

namespace pixkit {
class cPixSheet;
}

namespace pixkit::cli {

struct LoadingOptions {
    IconChoice icon = {};
    double mostPixels = 256e6; // of a picture and of what is made of it (cPixSheet::MaxPixels); 0: any number
    bool isLimited = false;    // somebody has asked for the limit
    bool orients = true;       // turns pictures as their EXIF data says
    bool isQuiet = false;      // of what of a file its picture has not, nothing is said
};

// '--limit': a number with the unit MP or GP, or 'none'; pixels, 0 for none. Throws UsageError.
double parseLimit(std::string_view text);

// Also sets the limit of the instance, and turns the picture as its file says.
bool load(cPixSheet& sheet, const PictureSource& source, const LoadingOptions& options, bool keepsFile = false);

struct EffectStep;

// The same for a picture that is to go through `steps`; those that are done already are taken from them. Where a JPEG
// file's picture is first made smaller by a filter, the system's loader may give it at a half, a quarter or an eighth
// of its size, and the filter does the rest. `whole` is the size that the picture has in the file, as it is to be
// shown.
bool load(cPixSheet& sheet, const PictureSource& source, const LoadingOptions& options,
          std::span<const EffectStep>& steps, PictureSize& whole);

// Says what of the file the picture has not (cPixSheet::LoadNotes), a line each.
void warn(std::ostream& err, const std::string& file, const cPixSheet& sheet, const LoadingOptions& options);

// Why the last call failed. Where it was for the limit, how that is raised.
std::string problemOf(const cPixSheet& sheet);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
