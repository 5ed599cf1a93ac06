// The sub-commands, each with what its command line asks for. They return the program's exit code.
#pragma once
#include "cli/Console.h"
#include "cli/IconChoice.h"
#include "cli/effects.h"
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pixkit::cli {

inline constexpr int exitOk = 0;
inline constexpr int exitSomeFailed = 1; // at least one input; the others are done
inline constexpr int exitUsage = 2;

struct InfoRequest {
    std::vector<std::string> files;
    bool json = false;
    IconChoice icon = {};
};
int info(const InfoRequest& request, Console& console);

struct ConvertRequest {
    std::vector<std::string> paths; // the inputs and, last, the file or folder for the results
    IconChoice icon = {};
    std::vector<EffectStep> steps;
    std::optional<std::int32_t> background; // BMP: what transparent pixels are flattened onto; nothing = black
    bool keepAlpha = false;                 // BMP; TGA always keeps it
    bool tgaRle = false;
    bool tgaPalette = false;
    bool overwrite = false;
};
// Throws UsageError when the paths make no sense together.
int convert(const ConvertRequest& request, Console& console);

struct GalleryRequest {
    std::vector<std::string> pictures;
    std::string folder = "out/gallery";
    IconChoice icon = {};
};
int gallery(const GalleryRequest& request, Console& console);

// The whole command: `arguments` in UTF-8, without the program's name.
int run(std::vector<std::string> arguments, Console& console);

} // namespace pixkit::cli
