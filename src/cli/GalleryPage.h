// The gallery's index.html.
#pragma once
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace pixkit::cli {

// One saved picture. File names are relative to the page.
struct GalleryCard {
    std::string title;
    std::vector<std::string> calls;    // the members that made it, in order; none for the picture as loaded
    std::string option;                // the same as options of `pixkit convert`
    std::vector<std::int32_t> colours; // COLORREFs to show beside the calls
    std::string alpha;                 // the alpha class in words
    std::string file;                  // PNG
    std::int32_t width = 0;
    std::int32_t height = 0;
};

struct GalleryGroup {
    std::string title;
    std::vector<GalleryCard> cards;
};

struct GalleryPicture {
    std::string name;
    std::string facts; // size, type, alpha class, bytes
    GalleryCard original;
    std::vector<GalleryGroup> groups;
};

// One self-contained page: no scripts and nothing from elsewhere but the pictures beside it.
void writeGalleryPage(std::ostream& html, const std::vector<GalleryPicture>& pictures, const std::string& version);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
