// Enumerations and numbers in words.
#pragma once
#include "codecs/Formats.h"
#include "shared/enumerations.h"
#include <cstdint>
#include <string>

namespace pixkit::cli {

struct Name {
    const char* word;     // for people
    const char* constant; // in the public header
};

Name alphaName(AlphaTypeEnum alpha);
Name imageTypeName(eImageFormat type);
// The word for it. A JPEG is a bitmap to the component, but not to people.
const char* typeWord(eImageFormat type, bool isJpeg);
const char* containerName(FileFormat format);
// All digits of a small number of bytes, three of a large one: "9999", "10.0 kB".
std::string bytesText(std::uintmax_t bytes);
// The same for a page, always with its unit, from which no line break divides it.
std::string bytesWithUnit(std::uintmax_t bytes);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
