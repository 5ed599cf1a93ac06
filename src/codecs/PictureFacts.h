// What the headers of a picture file tell, without a pixel being decoded: for programs that list pictures.
#pragma once
#include "codecs/Formats.h"
#include "surface/PictureNotes.h"
#include "surface/PngProperties.h"
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pixkit {

// A file, of which some places are read.
class HeaderSource {
  public:
    virtual ~HeaderSource() = default;
    virtual std::uint64_t size() const = 0;
    // Fewer than `count` bytes where the file ends. Throws std::runtime_error when it cannot be read.
    virtual std::vector<std::uint8_t> read(std::uint64_t position, std::size_t count) = 0;
};

struct PictureDensity {
    std::uint32_t x = 0, y = 0;
    enum class Unit : std::uint8_t { none, inch, centimetre, metre } unit = Unit::none; // none: the ratio alone
};

struct PictureFacts {
    FileFormat container = FileFormat::bmp;
    std::int32_t width = 0, height = 0;
    bool isCertain = true;           // the next two; else only a load tells them, or that it is no such file at all
    AlphaTypeEnum alpha = AlphaNone; // and what of them a load makes
    eImageFormat type = imgBitmap;
    unsigned depth = 0;      // bits of a channel, of a palette's index
    const char* color = "";  // "gray", "palette", "RGB", ...; may be empty
    const char* coding = ""; // "interlaced", "progressive", "run-length", ...; may be empty
    std::optional<PictureDensity> density = {};
    std::optional<double> gamma = {};
    std::string profile = {}; // the name of the colour profile, or "unnamed"; empty without one
    std::uint32_t frames = 1;
    std::vector<std::uint32_t> delays = {}; // of the frames, in milliseconds, as far as the file tells them
    std::optional<int> quality = {};        // JPEG: 1 to 100, as the tables of the IJG's library come nearest
    std::string sampling = {};              // JPEG: "4:2:0", ...
    std::shared_ptr<const PngProperties> properties = {}; // PNG: texts; may be null
    PictureNotes notes = {};
};

// Nothing of icons, of files that are damaged as far as that was looked at, and of what is of no format known here.
std::optional<PictureFacts> readPictureFacts(HeaderSource& file);

// --- of one format each; of a file that begins as one

std::optional<PictureFacts> readPngFacts(HeaderSource& file);
std::optional<PictureFacts> readJpgFacts(HeaderSource& file);
std::optional<PictureFacts> readGifFacts(HeaderSource& file);
std::optional<PictureFacts> readBmpFacts(HeaderSource& file);
std::optional<PictureFacts> readTgaFacts(HeaderSource& file);

} // namespace pixkit
// SPDX-License-Identifier: MIT
