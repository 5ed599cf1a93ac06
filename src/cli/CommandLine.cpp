// The command line: the sub-commands, help, and which of them runs.
#include "cli/Commands.h"
#include "cli/Manual.h"
#include "cli/Mistakes.h"
#include "cli/Options.h"
#include "cli/Saving.h"
#include "cli/Text.h"
#include "cli/Topics.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <ostream>
#include <stdexcept>
#include <string_view>

namespace pixkit::cli {

namespace {

void addInfo(CLI::App& app, InfoRequest& request) {
    CLI::App* const sub = app.add_subcommand("info", "Show what pictures are, and what their files say");
    sub->add_option("FILE", request.files, "Pictures")->required()->type_name("");
    sub->add_flag("--json", request.json, "As a JSON array");
    sub->add_flag(
        "--region", request.region,
        "Also of how many rectangles a region of the\npicture's shape (all that is not fully transparent)\nconsists");
    addRecursive(*sub, request.recursive);
    addLoading(*sub, request.loading);
    sub->footer(
        "\nPNG, GIF, JPEG and BMP files are told by their headers, whatever their size unless --limit is given; "
        "whether\n"
        "their pixels are whole is not looked at. Others are loaded, and so are BMP files whose alpha only the pixels\n"
        "tell, up to the limit. Of an icon or cursor file, all images are listed. The quality of a JPEG is the one "
        "for\n"
        "which the usual tables come nearest to its own.\n"
        "The alpha class is 'opaque' (0), 'on or off' (1: pixels are opaque or invisible) or 'partial' (2). Of a PNG\n"
        "the headers alone say it: with an alpha channel it is 'partial', with any transparency in its palette or a\n"
        "transparent colour 'on or off'.\n\n"
        "Examples:\n"
        "  pixkit info photo.png\n"
        "  pixkit info --json *.png");
}

// Gives every --resize to a size that has no FIT of its own the one of --fit, wherever in the line that stood.
void applyFit(std::vector<EffectStep>& steps, const std::string& fit) {
    const std::string resize = "--resize ";
    for (EffectStep& step : steps) {
        const bool takesFit =
            step.option.starts_with(resize) && step.argument.find_first_of(":%>!^") == std::string::npos;
        if (takesFit && !fit.empty()) step = makeStep("--resize", step.argument + ":" + fit);
    }
}

void addConvert(CLI::App& app, ConvertRequest& request) {
    CLI::App* const sub = app.add_subcommand("convert", "Apply effects to pictures and save the results");
    sub->add_option("PATH", request.paths, "Pictures and, last, the file or folder for the results")->type_name("");
    for (const EffectOption& effect : effectOptions())
        addEffect(*sub, effect, request.steps);
    addLoading(*sub, request.loading);
    addTurning(*sub, request.loading);
    sub->add_option_function<std::string>(
           "--fit",
           [&](const std::string& fit) {
               checkFit(fit);
               request.fit = fit;
           },
           "For every --resize to a size, wherever it stands; once: in proportion, which is\nsize, the same but never "
           "enlarged, out of proportion, or in\nproportion and covering it")
        ->type_name("size|down|stretch|fill")
        ->group("How --resize fits");
    addSaving(*sub, request);
    addRecursive(*sub, request.recursive);
    addReporting(*sub, request, request.loading);
    addJobs(*sub, request.jobs);
    sub->footer(
        "The extension of the result says the format. With several pictures the last name is a folder, where results\n"
        "are named like their pictures. An existing file is replaced after a question at a terminal, and kept\n"
        "elsewhere. 'pixkit help colours', sizes, places, text and files say how these are written.\n\n"
        "Examples:\n"
        "  pixkit convert logo.png logo.bmp --background white\n"
        "  pixkit convert logo.png grey.bmp --grayscale ntscpal --lighten 25 --keep-alpha\n"
        "  pixkit convert scan.bmp scan.png --png-level 9 --png-text \"Title=Invoice 12\"\n"
        "  pixkit convert favicon.ico favicon.tga --icon-size 48\n"
        "  pixkit convert logo.png favicon.ico --icon 16,32,48,256\n"
        "  pixkit convert photo.png square.jpg --resize 400x400:fill --crop 400x400\n"
        "  pixkit convert photo.png marked.jpg --text \"(c) Me:size=5%:color=white:at=right-10,bottom-10\"\n"
        "  pixkit convert photo.png small.bmp --resize 320x240 --shadow 6 --checkerboard=8\n"
        "  pixkit convert photos thumbnails --recursive --to jpg --resize 160x160 --skip-newer\n"
        "  pixkit convert - - --to png --trim <logo.tga >logo.png");
}

void addCompose(CLI::App& app, ComposeRequest& request) {
    CLI::App* const sub = app.add_subcommand("compose", "Draw pictures in layers on one canvas");
    sub->add_option_function<std::vector<std::string>>(
           "LAYER",
           [&](const std::vector<std::string>& layers) {
               for (const std::string& layer : layers)
                   request.layers.push_back(parseLayer(layer));
           },
           "FILE[@PLACE][:PART]...: a picture, where it goes (0,0),\nhow large and how opaque it is; the first lies "
           "lowest")
        ->required()
        ->type_name("");
    sub->add_option("-o,--output", request.output, "The file for the result")->required()->type_name("FILE");
    sub->add_option_function<std::string>(
           "--canvas", [&](const std::string& canvas) { request.canvas = parseCanvas(canvas); },
           "Size of the result, transparent unless a colour is given;\nwithout it as large as the layers need")
        ->type_name("WxH[:COLOUR]");
    addEffect(*sub, effectOption("--text"), request.texts, "Text, over the layers; may be repeated");
    addLoading(*sub, request.loading);
    addTurning(*sub, request.loading);
    addReporting(*sub, request, request.loading);
    addSaving(*sub, request);
    sub->footer("'pixkit help layers', places, text and colours say how these are written.\n\n"
                "Examples:\n"
                "  pixkit compose -o card.bmp --canvas 640x480:navy photo.png@20,20 logo.png@500,400:60%\n"
                "  pixkit compose -o marked.png photo.png logo.png@right-10,bottom-10:20%x:50%\n"
                "  pixkit compose -o banner.png --canvas 1200x400 sky.png@center:fill logo.png@5%,center:x60% "
                "sun.png@right,top\n"
                "  pixkit compose -o stack.tga back.png middle.png@8,8 front.png@16,16:50%");
}

// Of a file or folder. One without a name is that of a variable which is not set, and no option that is not given.
CLI::Option* addName(CLI::App& sub, const char* option, std::string& name, const char* type, const char* help) {
    const std::string_view longName = std::string_view(option).substr(std::string_view(option).find("--"));
    const auto take = [&name, longName](const std::string& given) {
        if (given.empty())
            throw UsageError(std::string(longName) + ": the name is empty, as of a variable that is not set");
        name = given;
    };
    return sub.add_option_function<std::string>(option, take, help)->type_name(type)->default_str(name);
}

// What the commands have that make pages of many pictures.
template <class Request>
void addPageOptions(CLI::App& sub, Request& request) {
    addLoading(sub, request.loading);
    addRecursive(sub, request.recursive);
    addTurning(sub, request.loading);
    addReporting(sub, request, request.loading);
    sub.add_flag_callback(
           "--overwrite", [&request] { request.replacing = Replacing::always; },
           "Make all anew, and replace a page that something else has\nmade")
        ->group("Saving");
    addJobs(sub, request.jobs);
}

void addEffects(CLI::App& app, EffectsRequest& request) {
    CLI::App* const sub = app.add_subcommand("effects", "Show every effect on pictures in one HTML page");
    sub->add_option("PICTURE", request.pictures, "Pictures")->required()->type_name("");
    addName(*sub, "-o,--output", request.folder, "FOLDER", "Folder for the page and the results");
    addPageOptions(*sub, request);
    sub->footer("There are about 40 results of each picture, in a folder of its own, saved as PNG: 2 MB for 240 x 300 "
                "pixels with\n"
                "alpha. Existing ones are replaced; a page that something else has made is kept unless --overwrite is "
                "given.\n\n"
                "Example:\n"
                "  pixkit effects samples/pictures/*.png -o out/effects");
}

void addSheet(CLI::App& app, SheetRequest& request) {
    CLI::App* const sub = app.add_subcommand("sheet", "Put many pictures on one: a contact sheet, or sprites");
    const char* const layout = "Layout";
    sub->add_option("PICTURE", request.pictures, "Pictures, in rows from the upper left")->required()->type_name("");
    sub->add_option("-o,--output", request.output, "The file for the sheet")->required()->type_name("FILE");
    sub->add_option("--columns", request.columns,
                    "How many stand in a row; as many as make it about square\nunless "
                    "said otherwise")
        ->type_name("N")
        ->check(CLI::Range(1, 65535).description(""))
        ->group(layout);
    sub->add_option_function<std::string>(
           "--cell", [&](const std::string& text) { request.cell = parseCell(text); },
           "The room of each, into which it is made smaller; as large as\nthe largest unless said otherwise")
        ->type_name("WxH")
        ->group(layout);
    sub->add_option("--gap", request.gap, "Pixels between them and around; 0 unless said otherwise")
        ->type_name("N")
        ->check(CLI::Range(0, 4096).description(""))
        ->group(layout);
    sub->add_flag("--labels", request.hasLabels, "Write under each what its file is called")->group(layout);
    sub->add_option_function<std::string>(
           "--canvas", [&](const std::string& text) { request.canvas = parseAnyColour(text); },
           "What lies behind them; transparent unless said otherwise")
        ->type_name("COLOUR")
        ->group(layout);
    addName(*sub, "--index", request.index, "FILE", "Where each lies, in a file: .json, or .css with a class for\neach")
        ->group(layout);
    addLoading(*sub, request.loading);
    addRecursive(*sub, request.recursive);
    addTurning(*sub, request.loading);
    addReporting(*sub, request, request.loading);
    addSaving(*sub, request);
    addJobs(*sub, request.jobs);
    sub->footer("Examples:\n"
                "  pixkit sheet -o contacts.jpg --cell 160x120 --gap 12 --labels --canvas white *.jpg\n"
                "  pixkit sheet -o sprites.png --index sprites.css --gap 1 icons --recursive");
}

void addGallery(CLI::App& app, GalleryRequest& request) {
    CLI::App* const sub = app.add_subcommand("gallery", "Make an HTML page that shows pictures");
    const char* const page = "Page";
    sub->add_option("PICTURE", request.pictures, "Pictures")->required()->type_name("");
    addName(*sub, "-o,--output", request.folder, "FOLDER", "Folder for the page and the thumbnails");
    sub->add_option("--title", request.title, "What the page is called")->type_name("TEXT")->group(page);
    addName(*sub, "--before", request.before, "FOLDER",
            "Where pictures of the same names lie as they were before;\nthe page shows both")
        ->group(page);
    addPageOptions(*sub, request);
    sub->footer(
        "The page links to the pictures where they are; those that browsers do not read (TGA, BMP, icons) lie beside\n"
        "it as PNG. Thumbnails that are as new as their pictures are kept, so that a run that was interrupted goes "
        "on.\n"
        "In the page: arrows, + and -, 0 (fit), 1 (pixel by pixel), c (what is behind transparent parts), b (before),\n"
        "Escape.\n\n"
        "Examples:\n"
        "  pixkit gallery -o holidays --recursive photos --title \"In the mountains\"\n"
        "  pixkit gallery -o compared --recursive small --before photos");
}

void addHelp(CLI::App& app, std::string& topic) {
    CLI::App* const sub = app.add_subcommand("help", "Explain a command or another topic");
    std::string names;
    for (const Topic& each : topics())
        names += (names.empty() ? "" : ", ") + std::string(each.name);
    sub->add_option("TOPIC", topic, "A command, or " + names + ";\nman, bash, zsh and fish write what these read")
        ->type_name("");
}

// What the commands' lines are read into.
struct Requests {
    InfoRequest info;
    ConvertRequest convert;
    ComposeRequest compose;
    SheetRequest sheet;
    GalleryRequest gallery;
    EffectsRequest effects;
    std::string topic;
};

int runConvert(ConvertRequest& request, Console& console) {
    applyFit(request.steps, request.fit);
    settleFilters(request.steps);
    return convert(request, console);
}

struct Command {
    std::string_view name;
    void (*add)(CLI::App& app, Requests& requests);
    int (*run)(Requests& requests, Console& console); // null for help, which the parser itself is asked for
};
constexpr Command commands[] = {
    {"info", [](CLI::App& app, Requests& all) { addInfo(app, all.info); },
     [](Requests& all, Console& console) { return info(all.info, console); }},
    {"convert", [](CLI::App& app, Requests& all) { addConvert(app, all.convert); },
     [](Requests& all, Console& console) { return runConvert(all.convert, console); }},
    {"compose", [](CLI::App& app, Requests& all) { addCompose(app, all.compose); },
     [](Requests& all, Console& console) { return compose(all.compose, console); }},
    {"sheet", [](CLI::App& app, Requests& all) { addSheet(app, all.sheet); },
     [](Requests& all, Console& console) { return sheet(all.sheet, console); }},
    {"gallery", [](CLI::App& app, Requests& all) { addGallery(app, all.gallery); },
     [](Requests& all, Console& console) { return gallery(all.gallery, console); }},
    {"effects", [](CLI::App& app, Requests& all) { addEffects(app, all.effects); },
     [](Requests& all, Console& console) { return showEffects(all.effects, console); }},
    {"help", [](CLI::App& app, Requests& all) { addHelp(app, all.topic); }, nullptr},
};

// Null for other words.
const Command* commandOf(std::string_view word) {
    const auto found = std::ranges::find(commands, word, &Command::name);
    return found == std::end(commands) ? nullptr : &*found;
}

int help(const CLI::App& app, const std::string& name, std::ostream& out) {
    const auto topic = std::ranges::find(topics(), name, &Topic::name);
    if (name.empty()) {
        out << app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal) << '\n';
    } else if (commandOf(name) != nullptr) {
        out << app.get_subcommand(name)->help("pixkit") << '\n';
    } else if (topic != topics().end()) {
        out << topic->title << "\n\n" << topic->text;
    } else if (name == "man") {
        writeManual(out, app, cPixSheet().Version());
    } else if (!writeCompletions(out, app, name)) {
        const std::vector<std::string> known = helpTopics(app);
        throw unknownWord(name, "a topic", std::vector<std::string_view>(known.begin(), known.end()));
    }
    return exitOk;
}

// All commands but one.
void addOthers(CLI::App& app, Requests& requests, const Command* there) {
    for (const Command& command : commands)
        if (&command != there) command.add(app, requests);
}

int parseAndRun(std::vector<std::string>& arguments, Console& console, std::string& command) {
    CLI::App app("Load pictures, change them, save them.", "pixkit");
    Requests requests;
    app.allow_windows_style_options(false); // a path may begin with a slash everywhere
    app.get_formatter()->column_width(34);
    app.require_subcommand(1);
    app.set_version_flag("--version", "pixkit " + cPixSheet().Version(), "Show the version");
    app.footer(
        "'pixkit help COMMAND' says more, with examples. This version reads PNG, GIF,\nJPEG, BMP, TGA, icons and "
        "cursors, and writes the same.\n"
        "Exit codes: 0 done, 1 some input failed (the others are done), 2 the command line makes no sense.");
    const std::string first = arguments.empty() ? "" : arguments.front();
    const Command* const chosen = commandOf(first);
    if (!first.empty() && !first.starts_with('-') && chosen == nullptr) {
        constexpr std::string_view options[] = {"--help", "--version"};
        const std::string suggestion = suggestionFor(first, options);
        if (!suggestion.empty()) throw UsageError("'" + first + "' is not a command; " + suggestion);
        throw unknownWord(first, "a command", wordsOf(commands, &Command::name));
    }
    // Of a line that says which, the options of the others are left out, unless it needs explanations: their hundreds
    // take longer than a small picture.
    const bool isAlone = chosen != nullptr && chosen->run != nullptr;
    if (isAlone) {
        chosen->add(app, requests);
    } else if (first != "--version") {
        addOthers(app, requests, nullptr);
    }
    if (arguments.empty()) {
        console.err << app.help() << '\n';
        return exitUsage;
    }
    if (chosen != nullptr) command = first;
    try {
        if (isAlone) settleWords(*app.get_subcommand(first), arguments);
        std::ranges::reverse(arguments); // the parser takes them from the end
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error, console.out, console.err); // a question for help
        if (isAlone) addOthers(app, requests, chosen);
        throw UsageError(describeMistake(chosen != nullptr ? *app.get_subcommand(first) : app, error));
    }
    return isAlone ? chosen->run(requests, console) : help(app, requests.topic, console.out);
}

} // namespace

int run(std::vector<std::string> arguments, Console& console) {
    std::string command; // where the line begins with one
    try {
        const int exitCode = parseAndRun(arguments, console, command);
        if (!console.out.flush()) throw std::runtime_error("the output cannot be written");
        return exitCode;
    } catch (const UsageError& error) {
        console.err << "pixkit: " << shown(error.what()) << "\n'pixkit " << (command.empty() ? "" : command + " ")
                    << "--help' says more.\n";
        return exitUsage;
    } catch (const std::exception& error) {
        console.err << "pixkit: " << reasonOf(error) << '\n';
        return exitSomeFailed;
    }
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
