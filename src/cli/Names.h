// The component's enumerations in words.
#pragma once
#include "shared/enumerations.h"

namespace pixkit::cli {

struct Name {
    const char* word;     // for people
    const char* constant; // in the public header
};

Name alphaName(AlphaTypeEnum alpha);
Name imageTypeName(eImageFormat type);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
