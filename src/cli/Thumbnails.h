// What a gallery makes of pictures: thumbnails, and PNG files of those that browsers do not read.
#pragma once
#include "cli/Commands.h"
#include "cli/Scaling.h"
#include "cli/Streams.h"
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace pixkit {
class cPixSheet;
}

namespace pixkit::cli {

// Makes the gallery's folder and those in it, and returns those that were not there. Throws Failed.
std::vector<std::filesystem::path> prepareThumbnails(const std::string& gallery);

// A picture on its way into a gallery. Files are seen from the gallery's folder, and named after the picture's place
// and the options that change what is made of it, so that the next run finds them. Those that have the time of the
// picture, which they are given, are kept, unless everything is to be replaced.
class GalleryPicture {
  public:
    GalleryPicture(const PictureSource& source, const GalleryRequest& request);

    struct Thumbnail {
        std::string file; // of at most 30,000 bytes
        PictureSize size;
        std::uintmax_t bytes = 0;
        bool isOld = false; // it was there
    };
    // Throws Failed. What of its file the picture has not is said on `console`.
    Thumbnail makeThumbnail(Console& console);
    // Makes the file that the link leads to, if the picture's own is none for browsers. Throws Failed.
    void convert(Console& console);

    // For the page: relative to it, encoded.
    const std::string& link() const noexcept { return m_link; }
    // Size, format and bytes, for people; once one of the others has been called.
    std::string facts() const;

  private:
    std::string inGallery(const std::string& file) const;
    bool isKept(const std::string& file) const;
    void takeTimeOfPicture(const std::string& file) const;
    Thumbnail keptThumbnail();
    void loadWhole(cPixSheet& sheet, Console& console);

    const PictureSource& m_source;
    const GalleryRequest& m_request;
    std::string m_link, m_key;
    std::string m_converted; // empty where browsers read the picture's own file
    PictureSize m_whole = {};
    std::string m_format;
    std::uintmax_t m_bytes = 0;
};

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
