// The effects that the command offers: one table of options, used by `convert` for its command line and by `effects`
// for its pictures.
#pragma once
#include "cli/Scaling.h"
#include "shared/enumerations.h"
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pixkit {
class cPixSheet;
}

namespace pixkit::cli {

// Another size by a filter that looks at every pixel.
struct FilteredResize {
    eResampleFilters filter;
    std::function<PictureSize(PictureSize picture)> sizeFor; // the picture's size to the result's
};

// One effect with its settings, ready to be applied.
struct EffectStep {
    std::string option;                          // as on the command line: "--lighten 25"
    std::string title;                           // for people: "25 % lighter"
    std::string call;                            // the member behind it: "MakeLighterDarker(25)"
    std::optional<std::int32_t> colour;          // the COLORREF in it, to be shown
    std::function<bool(cPixSheet& sheet)> apply; // what the member answers; when that is false, the sheet says why
    std::optional<FilteredResize> filteredResize = {}; // of a step that does nothing else
    std::string argument = {};                         // as it was given, without quotation marks
};

struct EffectOption {
    const char* name;     // "--lighten"
    const char* argument; // what its argument is called in the help; null for an option without one
    const char* help;
    // Throws UsageError when the argument makes no sense. Leaves the step's `option` to makeStep.
    EffectStep (*parse)(const std::string& argument);
    const char* argumentLeftOut = nullptr; // of an option whose argument may be left out: what it is then
};

std::span<const EffectOption> effectOptions();
// By the option's name, which must be one of the table's.
const EffectOption& effectOption(std::string_view name);

// Steps that resize do it by the filter that the steps before them name: called once all are there.
void settleFilters(std::vector<EffectStep>& steps);

// Throws UsageError when that is not a way in which --resize fits pictures into a box, such as "down".
void checkFit(const std::string& word);

// A step from an entry of the table and its argument, empty for an option without one. Throws UsageError.
EffectStep makeStep(const EffectOption& option, const std::string& argument);
// The same by the option's name, which must be one of the table's.
EffectStep makeStep(std::string_view name, const std::string& argument);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
