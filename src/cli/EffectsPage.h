// The index.html of `pixkit effects`.
#pragma once
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pixkit::cli {

// One saved picture. File names are relative to the page.
struct EffectsCard {
    std::string title;
    std::vector<std::string> calls;    // the members that made it, in order; none for the picture as loaded
    std::string option;                // the same as options of `pixkit convert`
    std::vector<std::int32_t> colours; // COLORREFs to show beside the calls
    std::string alpha;                 // the alpha class in words
    std::string file;                  // PNG
    std::int32_t width = 0;
    std::int32_t height = 0;
};

struct EffectsGroup {
    std::string title;
    std::vector<EffectsCard> cards;
};

struct EffectsPicture {
    std::string name;
    std::string facts = {}; // size, type, alpha class, bytes
    EffectsCard original = {};
    std::vector<EffectsGroup> groups = {};
};

// What tells the page from others' in its first bytes.
inline constexpr const char* effectsMark = "<meta name=\"generator\" content=\"pixkit effects";

// One self-contained page: no scripts and nothing from elsewhere but the pictures beside it. Pictures that are missing
// are left out: failed, or not done yet.
void writeEffectsPage(std::ostream& html, std::span<const std::optional<EffectsPicture>> pictures,
                      const std::string& version);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
