// From pixels to the filtered rows that a PNG file compresses (PNG standard, clauses 8 and 9).
#pragma once
#include "codecs/png/PngForm.h"
#include "shared/enumerations.h"
#include <cstdint>
#include <vector>

namespace pixkit {

// All rows, each with its filter type in front; interlaced ones pass by pass. The image's memory rows are bottom-up.
std::vector<std::uint8_t> pngFilteredRows(ConstPixelView image, bool hasAlpha, const PngForm& form,
                                          eFilterMethods filter, bool isInterlaced);

} // namespace pixkit
