#include "cli/Loading.h"
#include "cli/EffectParsing.h"
#include "cli/Effects.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "surface/HostAccess.h"
#include <cmath>
#include <iomanip>
#include <memory>
#include <sstream>
#include <utility>

namespace pixkit::cli {

namespace {

constexpr double megapixel = 1e6, gigapixel = 1e9;

// Makes the density that the file states that of a picture on its side. Not as the caller's own, which would pass to
// the next picture of the instance.
void exchangeDensities(cPixSheet& sheet) {
    const auto& loaded = HostAccess::loadedProperties(sheet);
    const auto density = loaded ? loaded->density() : std::nullopt;
    if (!density || density->first == density->second) return;
    auto turned = std::make_shared<PngProperties>(*loaded);
    turned->set(pngPixelsPerMeterX, density->second, {});
    turned->set(pngPixelsPerMeterY, density->first, {});
    HostAccess::loadedProperties(sheet, std::move(turned));
}

// Shows the picture as its file wants it; see cPixSheet::Orientation.
bool turn(cPixSheet& sheet) {
    struct Move {
        bool mirrorsX, mirrorsY;
        const char* degrees; // clockwise, after that
    };
    constexpr Move moves[] = {{false, false, nullptr}, {true, false, nullptr}, {true, true, nullptr},
                              {false, true, nullptr},  {true, false, "270"},   {false, false, "90"},
                              {true, false, "90"},     {false, false, "270"}};
    const Move& move = moves[sheet.Orientation() - 1];
    const bool isMirrored = move.mirrorsX || move.mirrorsY;
    if (isMirrored && !sheet.MirrorImage(move.mirrorsX, move.mirrorsY)) return false;
    if (move.degrees == nullptr) return true;
    if (!makeStep("--rotate", move.degrees).apply(sheet)) return false;
    exchangeDensities(sheet);
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

bool load(cPixSheet& sheet, const std::string& file, const LoadingOptions& options, bool keepsFile) {
    const IconChoice& icon = options.icon;
    sheet.MaxPixels(options.mostPixels);
    return sheet.LoadPicture_File(file, icon.width, icon.height, keepsFile, icon.depth) &&
           (!options.orients || turn(sheet));
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
