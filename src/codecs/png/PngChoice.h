// Which of the forms and filters that say a picture exactly makes the smallest file: found by compressing.
#pragma once
#include "codecs/png/PngForm.h"
#include "shared/enumerations.h"
#include "surface/PngProperties.h"
#include <cstddef>
#include <vector>

namespace pixkit {

struct PngChoice {
    std::size_t form; // of those given
    eFilterMethods filter;
    std::size_t expected; // bytes of the file, estimated; 0: not known
};

// The choices that are worth being made into files, the most promising first. Of a large picture some rows are tried,
// of a small one all. What the properties ask for is not open to choice. Throws
// std::bad_alloc.
std::vector<PngChoice> pngChoices(ConstPixelView image, bool hasAlpha, const std::vector<PngForm>& forms,
                                  const PngProperties& props);

} // namespace pixkit
// SPDX-License-Identifier: MIT
