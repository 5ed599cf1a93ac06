#include "cli/Options.h"
#include "cli/Files.h"
#include "cli/Mistakes.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <string_view>

namespace pixkit::cli {

namespace {

void addIconOptions(CLI::App& sub, IconChoice& icon) {
    const char* const choosing = "Icons and cursors";
    sub.add_option_function<std::string>(
           "--icon-size", [&icon](const std::string& text) { parseIconSize(text, icon); },
           "Take the image of this size, else the next larger\nor the largest; 0 for any, 32 unless said otherwise")
        ->type_name("N|WxH")
        ->group(choosing);
    sub.add_option("--icon-depth", icon.depth, "Of those, the one of the nearest depth in bits, 0 for\nthe deepest")
        ->type_name("BITS")
        ->check(CLI::Range(0, 32).description(""))
        ->group(choosing);
}

} // namespace

void addLoading(CLI::App& sub, LoadingOptions& loading) {
    addIconOptions(sub, loading.icon);
    sub.add_option_function<std::string>(
           "--limit",
           [&loading](const std::string& text) {
               loading.mostPixels = parseLimit(text);
               loading.isLimited = true;
           },
           "The most pixels of a picture and of what is made of\nit: 1000MP, 1.5GP or none; 256MP unless said "
           "otherwise")
        ->type_name("LIMIT")
        ->group("Limits");
}

void addRecursive(CLI::App& sub, bool& recursive) {
    sub.add_flag("-r,--recursive", recursive, "Of folders take the pictures in them, and in the folders in\nthem")
        ->group("Reading");
}

void addTurning(CLI::App& sub, LoadingOptions& loading) {
    const char* const reading = "Reading";
    sub.add_flag_callback(
           "--no-orient", [&loading] { loading.orients = false; },
           "Leave photographs as they are stored, however their EXIF data\nwants them turned")
        ->group(reading);
}

void addReporting(CLI::App& sub, SavingOptions& saving, LoadingOptions& loading) {
    const char* const saying = "Messages";
    sub.add_flag_callback(
           "-q,--quiet", [&] { saving.reporting.isQuiet = loading.isQuiet = true; },
           "Say what fails alone, not what is done, nor what of a file is\nleft out: a colour profile, further frames, "
           "...")
        ->group(saying);
    sub.add_flag("-v,--verbose", saving.reporting.isVerbose, "Say sizes, too")->group(saying);
    sub.add_flag("--json", saving.reporting.isJson, "Say it as a JSON array")->group(saying);
    sub.add_flag("-n,--dry-run", saving.isDryRun, "Do everything but write")->group(saying);
}

// The callbacks run while the line is parsed, which keeps the order across options.
void addEffect(CLI::App& sub, const EffectOption& effect, std::vector<EffectStep>& steps, const char* group) {
    CLI::Option* option = nullptr;
    if (effect.argumentLeftOut != nullptr) {
        // Only --name=argument gives one: what follows --name is another option, or a picture. Left out, it is read as
        // "true".
        option = sub.add_flag(effect.name, effect.help);
        option->option_text(effect.argument)->each([&](const std::string& argument) {
            steps.push_back(makeStep(effect, argument == "true" ? effect.argumentLeftOut : argument));
        });
    } else if (effect.argument == nullptr) {
        option = sub.add_flag_callback(
            effect.name, [&] { steps.push_back(makeStep(effect, "")); }, effect.help);
    } else {
        option = sub.add_option_function<std::string>(
            effect.name, [&](const std::string& argument) { steps.push_back(makeStep(effect, argument)); },
            effect.help);
        option->type_name(effect.argument);
    }
    option->trigger_on_parse()->group(group);
}

namespace {

std::int32_t parseFilter(const std::string& word) {
    constexpr std::array<std::string_view, 6> words = {"none", "sub", "up", "average", "paeth", "adaptive"};
    const auto found = std::ranges::find(words, toLower(word));
    if (found == words.end())
        throw UsageError(std::string("--png-filter: ") + unknownWord(word, "a filter", words).what());
    return filterNone + static_cast<std::int32_t>(found - words.begin());
}

void addPngOptions(CLI::App& sub, SavingOptions& request) {
    const char* const saving = "Saving";
    const auto keep = [&request](ePngProperties property) {
        return [&request, property](std::int32_t value) { request.pngProperties.emplace_back(property, value); };
    };
    sub.add_option_function<std::int32_t>("--png-level", keep(pngCompressionLevel),
                                          "PNG: compression, 0 (none), 1 (fast) to 9 (small); 6\nunless said otherwise")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, 9).description(""))
        ->group(saving);
    sub.add_option_function<std::string>(
           "--png-filter", [keep](const std::string& word) { keep(pngFilterMethod)(parseFilter(word)); },
           "PNG: unless said otherwise what takes least where tried,\non parts of large pictures")
        ->type_name("none|sub|up|average|paeth|adaptive")
        ->group(saving);
    sub.add_flag_callback(
           "--png-interlace", [&request] { request.pngProperties.emplace_back(pngInterlaced, 1); },
           "PNG: interlaced, coarse to fine")
        ->group(saving);
    sub.add_option_function<std::string>(
           "--png-text",
           [&request](const std::string& text) {
               const std::size_t equals = text.find('=');
               if (equals == std::string::npos || equals + 1 == text.size())
                   throw UsageError("--png-text takes KEYWORD=TEXT, such as \"Title=Invoice 12\", not '" + text + "'");
               request.pngTexts.emplace_back(text.substr(0, equals), text.substr(equals + 1));
           },
           "PNG: a text under a keyword, such as \"Title=Invoice 12\";\nmay be repeated")
        ->type_name("KEYWORD=TEXT")
        ->trigger_on_parse()
        ->group(saving);
}

// What becomes of files that are there.
void addReplacing(CLI::App& sub, SavingOptions& request) {
    const char* const saving = "Saving";
    const auto replace = [&](const char* name, Replacing replacing, const char* help) {
        return sub
            .add_flag_callback(
                name, [&request, replacing] { request.replacing = replacing; }, help)
            ->group(saving);
    };
    CLI::Option* const always = replace("--overwrite", Replacing::always, "Replace existing files without a question");
    CLI::Option* const never = replace("--no-overwrite", Replacing::never,
                                       "Keep existing files without a question, and without their\nbeing a failure");
    CLI::Option* const older = replace("--skip-newer", Replacing::older,
                                       "Replace existing files that are older than their picture, and\nkeep "
                                       "the others");
    never->excludes(always);
    older->excludes(always)->excludes(never);
}

} // namespace

void addJobs(CLI::App& sub, unsigned& jobs) {
    sub.add_option("-j,--jobs", jobs,
                   "How many pictures are worked on at a time; as many as there\nare processors unless said otherwise")
        ->type_name("N")
        ->check(CLI::Range(1, 1024).description(""))
        ->group("Work");
}

void addSaving(CLI::App& sub, SavingOptions& request) {
    const char* const saving = "Saving";
    sub.add_option_function<std::string>(
           "--background", [&](const std::string& text) { request.background = parseColour(text); },
           "BMP, JPEG: what transparent pixels are flattened onto;\n#000000 unless said otherwise")
        ->type_name("COLOUR")
        ->group(saving);
    sub.add_flag("--keep-alpha", request.keepAlpha,
                 "BMP: save alpha, 32 bits a pixel, colour premultiplied.\nTGA and PNG do it anyway, straight")
        ->group(saving);
    sub.add_flag("--tga-rle", request.tgaRle, "TGA: run-length coding, where it is shorter")->group(saving);
    sub.add_flag("--tga-palette", request.tgaPalette, "TGA: a palette, for opaque results of at most 256\ncolours")
        ->group(saving);
    sub.add_option("--quality", request.quality, "JPEG: 1 (smallest) to 100 (best); 70 unless said\notherwise")
        ->type_name("1..100")
        ->check(CLI::Range(1, 100).description(""))
        ->group(saving);
    sub.add_flag("--gif-websafe", request.gifWebSafe, "GIF: the 216 web-safe colours, dithered")->group(saving);
    sub.add_option_function<std::int32_t>(
           "--gif-tolerance",
           [&](const std::int32_t& alpha) { request.gifTolerance = static_cast<std::uint8_t>(alpha); },
           "GIF: pixels with less alpha become transparent, all\nothers opaque; 128 unless said otherwise")
        ->type_name("0..255")
        ->check(CLI::Range(0, 255).description(""))
        ->group(saving);
    addPngOptions(sub, request);
    sub.add_option_function<std::string>(
           "--icon", [&](const std::string& text) { request.iconEntries = parseIconEntries(text); },
           "ICO, CUR: the images, as in 16,32:8,64x48,256: pixels,\nand bits (1, 4, 8, 24 or 32, of others the next "
           "larger;\n32 when left out). "
           "Unless said otherwise the picture's size\nup to 256, of larger ones 16,32,48,256")
        ->type_name("SIZE[:BITS],...")
        ->group(saving);
    addReplacing(sub, request);
    sub.add_option("--to", request.format,
                   "The format where no extension says it: of results in a\nfolder, png unless said otherwise, and of "
                   "what goes\n"
                   "through pipes")
        ->type_name(joined(formatWords, "|", "|"))
        ->group(saving);
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
