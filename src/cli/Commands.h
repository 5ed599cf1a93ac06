// The sub-commands, each with what its command line asks for. They return the program's exit code.
#pragma once
#include "cli/Colour.h"
#include "cli/ComposeLayer.h"
#include "cli/Console.h"
#include "cli/Effects.h"
#include "cli/Loading.h"
#include "cli/Results.h"
#include "shared/enumerations.h"
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pixkit::cli {

inline constexpr int exitOk = 0;
inline constexpr int exitSomeFailed = 1; // at least one input; the others are done
inline constexpr int exitUsage = 2;

struct InfoRequest {
    std::vector<std::string> files;
    bool json = false;
    bool region = false; // count the rectangles of each picture's shape
    bool recursive = false;
    LoadingOptions loading = {};
};
int info(const InfoRequest& request, Console& console);

// What becomes of a file that has the name of a result already.
enum class Replacing : std::uint8_t {
    ask,    // a person decides; without one it is kept, which is a failure
    always, // it is replaced
    never,  // it is kept, which is no failure
    older   // it is replaced unless it is as new as the picture
};

struct SavingOptions {
    std::optional<std::int32_t> background; // BMP, JPEG: what is under transparency; nothing = black
    bool keepAlpha = false;                 // BMP; TGA always keeps it
    bool tgaRle = false;
    bool tgaPalette = false;
    std::optional<std::int32_t> quality;                       // JPEG, 1 .. 100; nothing = 70
    std::vector<std::pair<std::string, std::string>> pngTexts; // keyword and text
    std::vector<std::pair<ePngProperties, std::int32_t>> pngProperties;
    bool gifWebSafe = false;
    std::optional<std::uint8_t> gifTolerance; // GIF: the least alpha of opaque pixels; nothing = 128
    std::vector<IconEntrySize> iconEntries;   // ICO, CUR; none = as the picture's size suggests
    std::string format;                       // an extension without its dot; empty = the target's own says it
    Replacing replacing = Replacing::ask;
    bool isDryRun = false; // all but writing
    Reporting reporting = {};
};

struct ConvertRequest : SavingOptions {
    std::vector<std::string> paths; // the inputs and, last, the file or folder for the results
    LoadingOptions loading = {};
    std::vector<EffectStep> steps;
    std::string fit; // of the steps that resize; settled when the line has been read
    bool recursive = false;
    unsigned jobs = 0; // threads; 0: as many as there are processors
};
// Throws UsageError when the paths make no sense together.
int convert(const ConvertRequest& request, Console& console);

struct ComposeCanvas {
    std::int32_t width, height;
    Colour colour = {0, 0};
};
// 'WxH[:COLOUR]'. Throws UsageError.
ComposeCanvas parseCanvas(const std::string& text);

struct ComposeRequest : SavingOptions {
    std::string output;
    LoadingOptions loading = {};
    std::optional<ComposeCanvas> canvas; // nothing: transparent, and large enough for every layer
    std::vector<ComposeLayer> layers;    // the lowest first
    std::vector<EffectStep> texts;       // over all layers
};
int compose(const ComposeRequest& request, Console& console);

struct SheetRequest : SavingOptions {
    std::vector<std::string> pictures;
    std::string output;
    std::string index; // a .json or .css file, or empty
    LoadingOptions loading = {};
    bool recursive = false;
    unsigned jobs = 0;               // as in ConvertRequest
    std::int32_t columns = 0;        // 0: as many as make the sheet about square
    std::optional<PictureSize> cell; // nothing: as large as the largest picture
    std::int32_t gap = 0;            // pixels between cells and around them
    bool hasLabels = false;
    Colour canvas = {0, 0};
};
// 'WxH' of a cell. Throws UsageError.
PictureSize parseCell(const std::string& text);
int sheet(const SheetRequest& request, Console& console);

// Of SavingOptions messages, --dry-run and --overwrite are asked for.
struct GalleryRequest : SavingOptions {
    std::vector<std::string> pictures;
    std::string folder = "out/gallery";
    std::string before; // a folder of pictures as they were, or empty
    std::string title = "Gallery";
    LoadingOptions loading = {};
    bool recursive = false;
    unsigned jobs = 0; // as in ConvertRequest
};
int gallery(const GalleryRequest& request, Console& console);

struct EffectsRequest : SavingOptions { // as of GalleryRequest
    std::vector<std::string> pictures;
    std::string folder = "out/effects";
    LoadingOptions loading = {};
    bool recursive = false;
    unsigned jobs = 0; // as in ConvertRequest
};
int showEffects(const EffectsRequest& request, Console& console);

// The whole command: `arguments` in UTF-8, without the program's name.
int run(std::vector<std::string> arguments, Console& console);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
