#include "cli/Loading.h"
#include "cli/EffectParsing.h"
#include "cli/Effects.h"
#include "cli/FileHeaders.h"
#include "cli/Files.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "shared/Resampling.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <sstream>
#include <utility>

namespace pixkit::cli {

namespace {

constexpr double megapixel = 1e6, gigapixel = 1e9;

// What makes a picture upright; see cPixSheet::Orientation.
struct Move {
    bool mirrorsX, mirrorsY;
    const char* degrees; // clockwise, after that
};
const Move& moveFor(std::int32_t orientation) {
    static constexpr Move moves[] = {{false, false, nullptr}, {true, false, nullptr}, {true, true, nullptr},
                                     {false, true, nullptr},  {true, false, "270"},   {false, false, "90"},
                                     {true, false, "90"},     {false, false, "270"}};
    return moves[orientation - 1];
}

// Shows the picture as its file wants it.
bool turn(cPixSheet& sheet) {
    const Move& move = moveFor(sheet.Orientation());
    const bool isMirrored = move.mirrorsX || move.mirrorsY;
    if (isMirrored && !sheet.MirrorImage(move.mirrorsX, move.mirrorsY)) return false;
    return move.degrees == nullptr || makeStep("--rotate", move.degrees).apply(sheet);
}

bool loadAsStored(cPixSheet& sheet, const PictureSource& source, const LoadingOptions& options,
                  bool keepsFile = false) {
    const IconChoice& icon = options.icon;
    sheet.MaxPixels(options.mostPixels);
    sheet.Unattended(true); // what goes wrong is said here, not in a box
    if (source.bytes)
        return sheet.LoadPicture_Stream(*source.bytes, icon.width, icon.height, 0, 0, keepsFile, icon.depth);
    return sheet.LoadPicture_File(source.name, icon.width, icon.height, keepsFile, icon.depth);
}

// --- pictures that the system's loader makes smaller

// What a step that resizes by a filter makes of a file's picture, both as it is stored.
struct Shrinking {
    PictureSize whole, result;
    eResampleFilters filter;
    bool isLaid; // the picture is to be turned by a quarter

    // Where each pixel is made of two of the loader's or more, in width and in height, it is hardly seen that those are
    // means already.
    platform::LeastSize least() const {
        const auto twice = [](std::int32_t side) {
            return 2 * std::min(side, std::numeric_limits<std::int32_t>::max() / 2);
        };
        return {twice(result.width), twice(result.height)};
    }
};

// By the headers of a JPEG file; nothing of other files.
std::optional<Shrinking> shrinkingOf(const PictureSource& source, const FilteredResize& resize, bool orients) {
    try {
        const auto headers = headersOf(source);
        const auto facts = headers ? readPictureFacts(*headers) : std::nullopt;
        if (!facts || facts->container != FileFormat::jpg) return {};
        const PictureSize whole{facts->width, facts->height};
        if (!orients || moveFor(facts->notes.orientation).degrees == nullptr)
            return Shrinking{whole, resize.sizeFor(whole), resize.filter, false};
        const PictureSize turned = resize.sizeFor({whole.height, whole.width});
        return Shrinking{whole, {turned.height, turned.width}, resize.filter, true};
    } catch (const std::runtime_error&) {
        return {}; // the load says why
    }
}

// How much of a side the pixels that the loader made of it stand for, in these: the last may reach beyond the end.
double extentOf(std::int32_t whole, std::int32_t loaded) {
    std::int32_t pixelsOfOne = 1;
    while ((whole + pixelsOfOne - 1) / pixelsOfOne > loaded)
        pixelsOfOne *= 2;
    return static_cast<double>(whole) / pixelsOfOne;
}

bool finish(const Shrinking& shrinking, cPixSheet& sheet) {
    cPixSheet result;
    result.MaxPixels(sheet.MaxPixels());
    if (!result.InitializeDIB(shrinking.result.width, shrinking.result.height))
        return HostAccess::outcome(sheet, Outcome(HostAccess::outcome(result)));
    resample(HostAccess::pixels(result), HostAccess::pixels(sheet),
             {.across = shrinking.filter,
              .along = shrinking.filter,
              .isOpaque = true,
              .sourceWidth = extentOf(shrinking.whole.width, sheet.Width()),
              .sourceHeight = extentOf(shrinking.whole.height, sheet.Height())});
    HostAccess::ImageType(result, sheet.ImageType());
    HostAccess::takeNotes(result, sheet);
    sheet.SwapDIBs(&result);
    return true;
}

} // namespace

double parseLimit(std::string_view text) {
    const std::string word = toLower(std::string(text));
    if (word == "none") return 0;
    const double unit = word.ends_with("mp") ? megapixel : word.ends_with("gp") ? gigapixel : 0;
    double number = 0;
    if (unit == 0 || !parseEntirely(std::string_view(word).substr(0, word.size() - 2), number) ||
        !std::isfinite(number) || number * unit < 1) {
        throw UsageError("--limit takes megapixels or gigapixels, as in 1000MP or 1.5GP, or none, not '" +
                         std::string(text) + "'");
    }
    return number * unit;
}

bool load(cPixSheet& sheet, const PictureSource& source, const LoadingOptions& options, bool keepsFile) {
    return loadAsStored(sheet, source, options, keepsFile) && (!options.orients || turn(sheet));
}

bool load(cPixSheet& sheet, const PictureSource& source, const LoadingOptions& options,
          std::span<const EffectStep>& steps, PictureSize& whole) {
    // Steps that call nothing choose a filter.
    const auto first = std::ranges::find_if(steps, [](const EffectStep& step) { return !step.call.empty(); });
    std::optional<Shrinking> shrinking;
    if (first != steps.end() && first->filteredResize)
        shrinking = shrinkingOf(source, *first->filteredResize, options.orients);
    if (!shrinking) {
        const bool isLoaded = load(sheet, source, options);
        whole = {sheet.Width(), sheet.Height()};
        return isLoaded;
    }
    whole = shrinking->whole;
    if (shrinking->isLaid) std::swap(whole.width, whole.height);
    HostAccess::leastSize(sheet, shrinking->least());
    const bool isLoaded = loadAsStored(sheet, source, options);
    HostAccess::leastSize(sheet, {});
    if (!isLoaded) return false;
    if (sheet.Width() < shrinking->whole.width) {
        if (!finish(*shrinking, sheet)) return false;
        steps = steps.subspan(static_cast<std::size_t>(first - steps.begin()) + 1);
    }
    return !options.orients || turn(sheet);
}

void warn(std::ostream& err, const std::string& file, const cPixSheet& sheet, const LoadingOptions& options) {
    if (options.isQuiet) return;
    std::istringstream notes(sheet.LoadNotes());
    for (std::string note; std::getline(notes, note);)
        err << "pixkit: warning: " << shown(file) << ": " << note << '\n';
}

std::string problemOf(const cPixSheet& sheet) {
    if (!isBeyondLimits(HostAccess::outcome(sheet))) return std::string(sheet.LastErrorText());
    const double limit = sheet.MaxPixels();
    std::ostringstream text;
    text << std::setprecision(15) << "more pixels than the limit of ";
    if (limit < megapixel) {
        text << limit << " pixels";
    } else {
        text << limit / megapixel << " MP";
    }
    text << "; --limit raises it";
    return std::move(text).str();
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
