// `pixkit effects`: every effect on every picture, and a page that shows them side by side.
#include "cli/Commands.h"
#include "cli/EffectsPage.h"
#include "cli/Files.h"
#include "cli/Names.h"
#include "cli/Progress.h"
#include "cli/Saving.h"
#include "cli/Text.h"
#include "shared/AlphaType.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <filesystem>
#include <functional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <utility>

namespace pixkit::cli {

namespace fs = std::filesystem;

namespace {

class EffectsError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Effect {
    const char* group;
    const char* title; // null: the step's own
    std::vector<EffectStep> steps;
};

std::optional<std::int32_t> mostFrequentOpaqueColour(const cPixSheet& sheet) {
    ByteArray bits;
    if (!sheet.GetDIBbits(bits, false, false)) return {};
    std::vector<std::int32_t> colours;
    const auto bytes = bits.bytes();
    for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
        if (bytes[i + 3] == 255) colours.push_back(bytes[i] | (bytes[i + 1] << 8) | (bytes[i + 2] << 16));
    }
    std::ranges::sort(colours);
    std::optional<std::int32_t> best;
    std::ptrdiff_t mostPixels = 0;
    for (auto run = colours.begin(); run != colours.end();) {
        const auto end = std::upper_bound(run, colours.end(), *run);
        if (end - run > mostPixels) {
            mostPixels = end - run;
            best = *run;
        }
        run = end;
    }
    return best;
}

// Sizes follow the picture's, up to what a page can show side by side.
void addDrawings(std::vector<Effect>& effects, cPixSheet& picture) {
    const auto add = [&](const char* group, std::vector<EffectStep> steps) {
        effects.push_back({group, nullptr, std::move(steps)});
    };
    const std::int32_t width = std::clamp(picture.Width(), 8, 600);
    const std::int32_t height = std::clamp(picture.Height(), 8, 600);
    const auto sizeText = [](std::int32_t x, std::int32_t y) { return std::to_string(x) + "x" + std::to_string(y); };
    add("Size", {makeStep("--resize", "50%")});
    add("Size", {makeStep("--resize", sizeText(width, height / 2) + ":stretch")});
    add("Size", {makeStep("--resize", sizeText(width / 2, height) + ":stretch")});
    if (picture.TrimImage(trimAll, true)) add("Size", {makeStep("--trim", "")}); // not where nothing would be left
    // A part seen from near shows what interpolation does.
    for (const bool nearest : {false, true}) {
        std::vector<EffectStep> steps = {makeStep("--resize", sizeText(width / 4, height / 4))};
        if (nearest) steps.push_back(makeStep("--nearest", ""));
        steps.push_back(makeStep("--resize", "400%"));
        effects.push_back({"Size", nearest ? "A quarter, enlarged by nearest pixels" : "A quarter, enlarged smoothly",
                           std::move(steps)});
    }
    for (const char* angle : {"15", "45", "90", "-120", "180"})
        add("Rotation", {makeStep("--rotate", angle)});
    effects.push_back(
        {"Rotation", "Rotated by -120°, nearest pixels", {makeStep("--nearest", ""), makeStep("--rotate", "-120")}});
    for (const char* opacity : {"75", "50", "25"})
        add("Opacity", {makeStep("--opacity", opacity)});
    add("Backdrop", {makeStep("--shadow", "4")});
    add("Backdrop", {makeStep("--shadow", "10:#0000ff")});
    add("Backdrop", {makeStep("--checkerboard", "12")});
    effects.push_back(
        {"Backdrop", "Shadow over a checkerboard", {makeStep("--shadow", "6"), makeStep("--checkerboard", "8")}});
    effects.push_back({"Tiles",
                       "A third, tiled",
                       {makeStep("--resize", sizeText(std::max(width / 3, 1), std::max(height / 3, 1))),
                        makeStep("--tile", sizeText(width, height))}});
}

std::vector<Effect> effectsFor(cPixSheet& picture) {
    constexpr const char* fillColour = "#ffb000";
    std::vector<Effect> effects;
    const auto add = [&](const char* group, const char* option, const std::string& argument) {
        effects.push_back({group, nullptr, {makeStep(option, argument)}});
    };
    for (const char* formula :
         {"ntscpal", "ccir709", "simpleavg", "redmask", "greenmask", "bluemask", "redgreenmask", "bluegreenmask"})
        add("Grayscale", "--grayscale", formula);
    add("Light", "--invert", "");
    for (const char* percent : {"25", "50"})
        add("Light", "--lighten", percent);
    for (const char* percent : {"25", "50"})
        add("Light", "--darken", percent);
    add("Colour", "--blend", "#0000ff:33");
    add("Colour", "--blend", "#ff8000:66");
    if (const auto key = mostFrequentOpaqueColour(picture)) {
        add("Colour", "--transparent", formatColour(*key));
        effects.push_back({"Colour",
                           "The same, then empty pixels filled",
                           {makeStep("--transparent", formatColour(*key)), makeStep("--fill", fillColour)}});
    }
    if (picture.Alpha() != AlphaNone) add("Colour", "--fill", fillColour);
    for (const char* axes : {"x", "y", "xy"})
        add("Mirror", "--mirror", axes);
    addDrawings(effects, picture);
    for (Effect& effect : effects)
        settleFilters(effect.steps);
    return effects;
}

// Saves one picture's results into a folder of their own.
class PictureFolder {
  public:
    PictureFolder(const fs::path& page, const fs::path& name) : m_page(page), m_name(name) {
        std::error_code error;
        fs::create_directories(page / name, error);
        if (error) throw EffectsError("cannot make its folder: " + error.message());
    }

    EffectsCard save(const cPixSheet& sheet, const std::string& name) const {
        EffectsCard card;
        card.alpha = alphaName(alphaTypeOf(HostAccess::pixels(sheet))).word; // of what is saved
        card.width = sheet.Width();
        card.height = sheet.Height();
        const fs::path relative = m_name / toPath(name + ".png");
        const std::string file = toUtf8(m_page / relative);
        if (!sheet.SaveToFile_PNG(file, false)) throw EffectsError(file + ": " + std::string(sheet.LastErrorText()));
        card.file = toUtf8(relative);
        return card;
    }

  private:
    fs::path m_page;
    fs::path m_name;
};

// Says of a picture what is missing on the page.
using Note = std::function<void(const std::string& text)>;

// Nothing, and a note, where the result exceeds the limit.
std::optional<EffectsCard> makeCard(cPixSheet& picture, const Effect& effect, const std::string& number,
                                    PictureFolder& folder, const Note& note) {
    cPixSheet copy;
    copy.MaxPixels(picture.MaxPixels());
    picture.CopyImageTo(copy);
    copy.HighQualityInterpolation(true);
    std::string fileName = number;
    std::string options;
    for (const EffectStep& step : effect.steps) {
        if (!step.apply(copy)) {
            const std::string problem = step.option + ": " + problemOf(copy);
            if (!isBeyondLimits(HostAccess::outcome(copy))) throw EffectsError(problem);
            note("left out: " + problem);
            return {};
        }
        options += (options.empty() ? "" : " ") + step.option;
        fileName += step.option.substr(1, step.option.find(' ') - 1);
    }
    EffectsCard card = folder.save(copy, fileName);
    card.title = effect.title != nullptr ? effect.title : effect.steps.front().title;
    card.option = options;
    for (const EffectStep& step : effect.steps) {
        card.calls.push_back(step.call);
        if (step.colour) card.colours.push_back(*step.colour);
    }
    return card;
}

EffectsPicture makePicture(const std::string& file, const LoadingOptions& loading, const fs::path& page,
                           const fs::path& folderName, Progress& progress, const Note& note, std::ostream& err) {
    cPixSheet sheet;
    if (!load(sheet, file, loading)) throw EffectsError(problemOf(sheet));
    if (!loading.isQuiet && !sheet.LoadNotes().empty()) {
        progress.clear();
        warn(err, file, sheet, loading);
    }
    PictureFolder folder(page, folderName);
    EffectsPicture picture;
    picture.name = toUtf8(toPath(file).filename());
    std::error_code gone; // the file may be deleted under our hands
    const std::uintmax_t bytes = fs::file_size(toPath(file), gone);
    picture.facts = std::to_string(sheet.Width()) + " × " + std::to_string(sheet.Height()) + " pixels · " +
                    imageTypeName(sheet.ImageType()).word + " · alpha: " + alphaName(sheet.Alpha()).word + " · " +
                    std::to_string(gone ? 0 : bytes) + " bytes";
    picture.original = folder.save(sheet, "00-original");
    picture.original.title = "As loaded";
    std::size_t number = 0;
    const std::vector<Effect> effects = effectsFor(sheet);
    for (const Effect& effect : effects) {
        progress.part(number, effects.size());
        const std::string digits = std::to_string(100 + ++number).substr(1);
        auto card = makeCard(sheet, effect, digits, folder, note);
        if (!card) continue;
        if (picture.groups.empty() || picture.groups.back().title != effect.group) {
            picture.groups.push_back({effect.group, {}});
        }
        picture.groups.back().cards.push_back(std::move(*card));
    }
    return picture;
}

// The picture's own name where that is still free. A picture "...png" must not write into the folder above.
fs::path freeFolderName(const std::string& file, std::set<std::string>& taken) {
    std::string stem = toUtf8(toPath(file).stem());
    if (stem == "." || stem == "..") stem = "picture";
    std::string name = stem;
    for (int copy = 2; !taken.insert(toLower(name)).second; ++copy)
        name = stem + "-" + std::to_string(copy);
    return toPath(name);
}

} // namespace

int showEffects(const EffectsRequest& request, Console& console) {
    const fs::path folder = toPath(request.folder);
    const std::string version = cPixSheet().Version();
    std::vector<EffectsPicture> pictures;
    std::set<std::string> folderNames = {"index.html"};
    const fs::path page = folder / "index.html";
    if (isForeignPage(toUtf8(page), effectsMark)) {
        console.err << "pixkit effects: " << shown(toUtf8(page))
                    << ": something else than this command has made it, and it was kept; name another folder with -o\n";
        return exitSomeFailed;
    }
    Progress progress(console, request.pictures.size());
    int exitCode = exitOk;
    const auto tell = [&](const std::string& file, const std::string& text) {
        progress.clear();
        console.err << "pixkit effects: " << shown(file) << ": " << text << '\n';
    };
    for (const std::string& file : request.pictures) {
        try {
            progress.nextItem(file);
            const auto note = [&](const std::string& text) { tell(file, text); };
            forFile(file, [&] {
                pictures.push_back(makePicture(file, request.loading, folder, freeFolderName(file, folderNames),
                                               progress, note, console.err));
            });
        } catch (const Failed& failure) {
            tell(file, failure.reason());
            exitCode = exitSomeFailed;
        }
    }
    progress.clear();
    if (pictures.empty()) return exitCode;
    try {
        writeWhole(toUtf8(page), [&](std::ostream& html) { writeEffectsPage(html, pictures, version); });
    } catch (const Failed& failure) {
        console.err << "pixkit effects: " << failure.what() << '\n';
        return exitSomeFailed;
    }
    console.out << "Look at " << shown(toUtf8(fs::absolute(page))) << '\n';
    return exitCode;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
