// The options that several commands have.
#pragma once
#include "cli/Commands.h"
#include <vector>

namespace CLI {
class App;
}

namespace pixkit::cli {

void addLoading(CLI::App& sub, LoadingOptions& loading);
void addRecursive(CLI::App& sub, bool& recursive);
// For commands that work with the pixels.
void addTurning(CLI::App& sub, LoadingOptions& loading);
// What is said.
void addReporting(CLI::App& sub, SavingOptions& saving, LoadingOptions& loading);
// How results are saved.
void addSaving(CLI::App& sub, SavingOptions& request);
void addJobs(CLI::App& sub, unsigned& jobs);

inline constexpr const char* effectsGroup = "Effects, applied in the order given; each may be repeated";
// Steps are added while the line is parsed, in its order.
void addEffect(CLI::App& sub, const EffectOption& effect, std::vector<EffectStep>& steps,
               const char* group = effectsGroup);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
