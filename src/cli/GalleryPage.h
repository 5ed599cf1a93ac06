// The index.html of `pixkit gallery`.
#pragma once
#include "cli/Scaling.h"
#include <iosfwd>
#include <optional>
#include <span>
#include <string>

namespace pixkit::cli {

// One picture of the page. Links are as they stand in it: relative to the page wherever that can be, encoded.
struct GalleryEntry {
    std::string name;
    std::string folder; // under whose heading it stands; may be empty
    std::string facts;  // size, format, bytes
    std::string picture;
    std::string thumbnail;
    PictureSize thumbnailSize;
    std::string before = {}; // the picture as it was; empty where there is none
};

struct GalleryHead {
    std::string title;
    std::string version; // of the program
    bool orients = true; // browsers turn photographs as their EXIF data says
};

// What tells the page from others' in its first bytes.
inline constexpr const char* galleryMark = "<meta name=\"generator\" content=\"pixkit gallery";

// One page with its style and script and nothing from elsewhere but the pictures; without scripts the thumbnails link
// to them. Entries that are missing are left out: failed, or not done yet.
void writeGalleryPage(std::ostream& html, const GalleryHead& head,
                      std::span<const std::optional<GalleryEntry>> entries);

// The part of the page in which a picture is shown large, and its script (cli/GalleryViewer.cpp).
extern const char* const galleryViewer;

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
