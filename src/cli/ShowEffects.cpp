// `pixkit effects`: every effect on every picture, and a page that shows them side by side.
#include "cli/EffectsPage.h"
#include "cli/FileHeaders.h"
#include "cli/GrowingPage.h"
#include "cli/Names.h"
#include "cli/Text.h"
#include "shared/AlphaType.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <filesystem>
#include <map>
#include <ostream>
#include <set>
#include <system_error>
#include <utility>

namespace pixkit::cli {

namespace fs = std::filesystem;

namespace {

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

// Which folder each picture gets: its own name where that is still free; where Windows takes two names for one, the
// second is not.
class FolderNames {
  public:
    explicit FolderNames(const std::vector<Input>& inputs) {
        for (const Input& input : inputs)
            ++m_wanted[toLower(nameFor(input))];
    }

    // Called when there is a picture: what is none takes no name. Those whose names nobody else could get need no turn.
    fs::path take(const Input& input, Piece& piece) {
        const std::string first = nameFor(input);
        if (!isDisputed(toLower(first))) return toPath(first);
        piece.awaitTurn();
        std::string name = first;
        for (int copy = 2; !m_taken.insert(toLower(name)).second; ++copy)
            name = first + "-" + std::to_string(copy);
        return toPath(name);
    }

  private:
    static std::string nameFor(const Input& input) {
        std::string stem;
        try {
            stem = toUtf8(stemOf(input));
        } catch (const std::system_error&) { // the name is no text; a load says so
        }
        // Windows drops dots and spaces at the end of a name; and a picture "...png" must not write into the folder
        // above.
        stem.resize(stem.find_last_not_of(". ") + 1);
        if (stem.empty()) stem = "picture";
        return toUtf8(input.folder / toPath(stem));
    }

    // Whether several want the name, or one of those may have to take it with its number.
    bool isDisputed(const std::string& name) const {
        const auto wanted = m_wanted.find(name);
        if (wanted == m_wanted.end()) return false;
        if (wanted->second > 1) return true;
        const std::size_t hyphen = name.find_last_not_of("0123456789");
        return hyphen + 1 < name.size() && hyphen != std::string::npos && name[hyphen] == '-' &&
               isDisputed(name.substr(0, hyphen));
    }

    static constexpr const char* page = "index.html";
    std::map<std::string, int> m_wanted = {{page, 1}};
    std::set<std::string> m_taken = {page};
};

// One picture, and the folder of its own for what is made of it.
class PictureEffects {
  public:
    PictureEffects(const EffectsRequest& request, const Input& input, const InputFiles& inputs, FolderNames& folders,
                   Piece& piece)
        : m_request(request), m_input(input), m_inputs(inputs), m_piece(piece) {
        cPixSheet& sheet = m_sheet;
        const PictureSource source = openSource(input.name, piece.console().in);
        if (!load(sheet, source, request.loading)) throw Failed(input.name, problemOf(sheet));
        warn(piece.console().err, input.name, sheet, request.loading);
        m_facts = factsFor(source);
        m_folder = folders.take(input, piece);
        if (request.isDryRun) return;
        std::error_code error;
        const fs::path folder = toPath(request.folder) / m_folder;
        fs::create_directories(folder, error);
        if (error) throw Failed(toUtf8(folder), "cannot be made: " + error.message());
    }

    EffectsPicture make(Result& result) {
        result.after = {m_sheet.Width(), m_sheet.Height()};
        const std::string name = isStream(m_input.name) ? m_input.name : toUtf8(toPath(m_input.name).filename());
        EffectsPicture picture{.name = toUtf8(m_input.folder / toPath(name)), .facts = m_facts};
        picture.original = save(m_sheet, "00-original");
        picture.original.title = "As loaded";
        const std::vector<Effect> effects = effectsFor(m_sheet);
        for (std::size_t number = 1; number <= effects.size(); ++number) {
            if (!m_request.reporting.isQuiet)
                m_piece.progress(std::to_string(number) + " of " + std::to_string(effects.size()) + ": " + shown(name));
            const Effect& effect = effects[number - 1];
            auto card = makeCard(effect, std::to_string(100 + number).substr(1));
            if (!card) continue;
            if (picture.groups.empty() || picture.groups.back().title != effect.group)
                picture.groups.push_back({effect.group, {}});
            picture.groups.back().cards.push_back(std::move(*card));
        }
        result.output = toUtf8(toPath(m_request.folder) / m_folder);
        result.bytes = m_bytes;
        result.summary = std::to_string(m_count) + " results";
        return picture;
    }

  private:
    std::string factsFor(const PictureSource& source) const {
        std::error_code none; // the file is deleted under our hands
        const std::uintmax_t bytes = source.bytes ? source.bytes->size() : fs::file_size(toPath(source.name), none);
        const auto said = factsOf(source);
        return std::to_string(m_sheet.Width()) + " × " + std::to_string(m_sheet.Height()) + " pixels · " +
               typeWord(m_sheet.ImageType(), said && said->container == FileFormat::jpg) +
               " · alpha: " + alphaName(m_sheet.Alpha()).word + (none ? "" : " · " + bytesWithUnit(bytes));
    }

    EffectsCard save(const cPixSheet& sheet, const std::string& name) {
        EffectsCard card;
        card.alpha = alphaName(alphaTypeOf(HostAccess::pixels(sheet))).word; // of what is saved
        card.width = sheet.Width();
        card.height = sheet.Height();
        const fs::path relative = m_folder / toPath(name + ".png");
        card.file = toUtf8(relative);
        ++m_count;
        const std::string file = toUtf8(toPath(m_request.folder) / relative);
        if (const std::string* const input = m_inputs.replacedBy(file))
            throw Failed(m_input.name, "a result would replace " + *input + ", which is one of the pictures");
        if (m_request.isDryRun) return card;
        if (!sheet.SaveToFile_PNG(file, false)) throw Failed(file, sheet.LastErrorText());
        std::error_code gone;
        const std::uintmax_t bytes = fs::file_size(toPath(file), gone);
        m_bytes += gone ? 0 : bytes;
        return card;
    }

    // Nothing, and a note, where the result exceeds the limit, or what an image can hold.
    std::optional<EffectsCard> makeCard(const Effect& effect, const std::string& number) {
        cPixSheet copy;
        copy.MaxPixels(m_sheet.MaxPixels());
        m_sheet.CopyImageTo(copy);
        copy.HighQualityInterpolation(true);
        std::string fileName = number;
        std::string options;
        for (const EffectStep& step : effect.steps) {
            if (!step.apply(copy)) {
                const std::string problem = step.option + ": " + problemOf(copy);
                const Outcome& outcome = HostAccess::outcome(copy);
                if (!isBeyondLimits(outcome) && outcome.reason() != beyondAnyImage.text())
                    throw Failed(m_input.name, problem);
                if (!m_request.reporting.isQuiet)
                    m_piece.console().err << "pixkit effects: " << shown(m_input.name) << ": left out: " << problem
                                          << '\n';
                return {};
            }
            options += (options.empty() ? "" : " ") + step.option;
            fileName += step.option.substr(1, step.option.find(' ') - 1);
        }
        EffectsCard card = save(copy, fileName);
        card.title = effect.title != nullptr ? effect.title : effect.steps.front().title;
        card.option = options;
        for (const EffectStep& step : effect.steps) {
            card.calls.push_back(step.call);
            if (step.colour) card.colours.push_back(*step.colour);
        }
        return card;
    }

    const EffectsRequest& m_request;
    const Input& m_input;
    const InputFiles& m_inputs;
    Piece& m_piece;
    cPixSheet m_sheet;
    std::string m_facts;
    fs::path m_folder;       // below that of the page
    std::size_t m_count = 0; // of files
    std::uintmax_t m_bytes = 0;
};

class PageOfEffects : public GrowingPage {
  public:
    PageOfEffects(const EffectsRequest& request, const std::vector<Input>& inputs)
        : GrowingPage("effects", request.folder, effectsMark, request), m_request(request), m_folders(inputs),
          m_pictures(inputs.size()) {
        for (const Input& input : inputs)
            m_inputs.add(input);
    }

  private:
    void prepare() override {} // a page of nothing needs no folder

    void add(const Input& input, Piece& piece, Result& result) override {
        EffectsPicture picture = PictureEffects(m_request, input, m_inputs, m_folders, piece).make(result);
        result.status = m_request.isDryRun ? Result::Status::planned : Result::Status::done;
        if (!m_request.isDryRun) put([&] { m_pictures[piece.index()] = std::move(picture); });
    }

    void write(std::ostream& html) const override { writeEffectsPage(html, m_pictures, m_version); }

    const EffectsRequest& m_request;
    const std::string m_version = cPixSheet().Version();
    InputFiles m_inputs;
    FolderNames m_folders;
    std::vector<std::optional<EffectsPicture>> m_pictures;
};

} // namespace

int showEffects(const EffectsRequest& request, Console& console) {
    const std::vector<Input> inputs = findDifferentInputs(request.pictures, request.recursive, toPath(request.folder));
    return PageOfEffects(request, inputs).make(inputs, request.jobs, console);
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
