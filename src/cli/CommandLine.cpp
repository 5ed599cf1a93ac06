// The command line: options, help, and which sub-command runs.
#include "cli/Commands.h"
#include "cli/Mistakes.h"
#include "cli/Text.h"
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

// For commands that work with the pixels.
void addTurning(CLI::App& sub, LoadingOptions& loading) {
    const char* const reading = "Reading";
    sub.add_flag_callback(
           "--no-orient", [&loading] { loading.orients = false; },
           "Leave photographs as they are stored, however their EXIF data\nwants them turned")
        ->group(reading);
}

// What is said.
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
        "The alpha class is 'opaque' (0), 'on or off' (1: pixels are opaque or invisible) or 'partial' (2).\n\n"
        "Examples:\n"
        "  pixkit info photo.png\n"
        "  pixkit info --json *.png");
}

constexpr const char* effectsGroup = "Effects, applied in the order given; each may be repeated";

constexpr const char* placeHelp =
    "PLACE is X,Y: pixels from the left and upper edge (-20,10); left, center, right and top, center, bottom;\n"
    "percentages between them (0% left, 100% right); each word or percentage with an offset in pixels, which\n"
    "counts to the right and down: right-10,bottom-10 is ten pixels inside of that corner. One word alone\n"
    "(center, bottom-10) is centred in what it does not say.\n\n";
constexpr const char* textHelp =
    "PART of a text is any of\n"
    "  font=FAMILY               Arial unless said otherwise, or the path of a font file where the system takes one\n"
    "  size=24, size=5%          in pixels, or in parts of the picture's height; 24 unless said otherwise\n"
    "  color=COLOUR              #000000 unless said otherwise\n"
    "  at=PLACE                  center unless said otherwise\n"
    "  opacity=50%               1 to 100 %\n"
    "  angle=DEGREES             turned clockwise\n"
    "  width=300, width=80%      lines are broken to fit, in pixels or in parts of the picture's width\n"
    "  align=left|center|right   of lines; as in at= unless said otherwise\n"
    "  bold, italic\n"
    "In the text \\n begins a line, \\: is a colon and \\\\ a backslash.\n\n";

// The callbacks run while the line is parsed, which keeps the order across options.
void addEffect(CLI::App& sub, const EffectOption& effect, std::vector<EffectStep>& steps,
               const char* group = effectsGroup) {
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

std::int32_t parseFilter(const std::string& word) {
    constexpr std::array<std::string_view, 6> words = {"none", "sub", "up", "average", "paeth", "adaptive"};
    const auto found = std::ranges::find(words, toLower(word));
    if (found == words.end()) {
        throw UsageError("--png-filter takes none, sub, up, average, paeth or adaptive, not '" + word + "'");
    }
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
           "PNG: none, sub, up, average, paeth or adaptive; what\nsuits the picture unless said otherwise")
        ->type_name("FILTER")
        ->group(saving);
    sub.add_flag_callback(
           "--png-interlace", [&request] { request.pngProperties.emplace_back(pngInterlaced, 1); },
           "PNG: interlaced, coarse to fine")
        ->group(saving);
    sub.add_option_function<std::vector<std::string>>(
           "--png-text",
           [&request](const std::vector<std::string>& texts) {
               for (const std::string& text : texts) {
                   const std::size_t equals = text.find('=');
                   if (equals == std::string::npos) {
                       throw UsageError("--png-text takes KEYWORD=TEXT, not '" + text + "'");
                   }
                   request.pngTexts.emplace_back(text.substr(0, equals), text.substr(equals + 1));
               }
           },
           "PNG: a text, such as Title=... or Author=...; may be\nrepeated")
        ->type_name("KEYWORD=TEXT")
        ->allow_extra_args(false)
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

// How results are saved.
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
           "ICO, CUR: the images, as in 16,32:8,64x48,256: pixels,\nand bits (1, 4, 8, 24 or 32; 32 when left out). "
           "Unless said\notherwise the picture's size up to 256, of larger ones\n16,32,48,256")
        ->type_name("SIZE[:BITS],...")
        ->group(saving);
    addReplacing(sub, request);
    sub.add_option(
           "--to", request.format,
           "The format where no extension says it, of results in a folder\nand of what goes through pipes: bmp, "
           "tga, png, gif, jpg, ico or\ncur; in a folder png unless said otherwise")
        ->type_name("FORMAT")
        ->group(saving);
}

// Gives every --resize to a size that has no FIT of its own the one of --fit, wherever in the line that stood.
void applyFit(std::vector<EffectStep>& steps, const std::string& fit) {
    const std::string resize = "--resize ";
    for (EffectStep& step : steps) {
        const bool takesFit = step.option.starts_with(resize) && step.option.find_first_of(":%") == std::string::npos;
        if (takesFit && !fit.empty()) step = makeStep("--resize", step.option.substr(resize.size()) + ":" + fit);
    }
}

void addConvert(CLI::App& app, ConvertRequest& request) {
    CLI::App* const sub = app.add_subcommand("convert", "Apply effects to pictures and save the results");
    sub->add_option("PATH", request.paths, "Pictures and, last, the file or folder for the results")
        ->required()
        ->type_name("");
    for (const EffectOption& effect : effectOptions())
        addEffect(*sub, effect, request.steps);
    addLoading(*sub, request.loading);
    addTurning(*sub, request.loading);
    sub->add_option_function<std::string>(
           "--fit",
           [&](const std::string& fit) {
               makeStep("--resize", "1x1:" + fit); // refuses what is none
               request.fit = fit;
           },
           "How pictures fit a --resize to a size: size, in proportion\n(as without --fit), down, never enlarged, or "
           "stretch")
        ->type_name("FIT")
        ->group(effectsGroup);
    addSaving(*sub, request);
    addRecursive(*sub, request.recursive);
    addReporting(*sub, request, request.loading);
    sub->add_option("-j,--jobs", request.jobs,
                    "How many pictures are worked on at a time; as many as there\nare "
                    "processors unless said otherwise")
        ->type_name("N")
        ->check(CLI::Range(1, 1024).description(""))
        ->group("Work");
    sub->footer(
        std::string("COLOUR is '#rrggbb', in quotation marks because # begins a comment in shells. The extension of "
                    "OUT says\nthe format: .bmp, .tga, .png, .gif, .jpg, .ico or .cur. Results in a folder are named "
                    "like their pictures.\nAn existing file is replaced after a question at a terminal, and kept "
                    "elsewhere.\n\n") +
        textHelp + placeHelp +
        "Examples:\n"
        "  pixkit convert logo.png logo.bmp --background '#ffffff'\n"
        "  pixkit convert logo.png grey.bmp --grayscale ntscpal --lighten 25 --keep-alpha\n"
        "  pixkit convert logo.png logo.tga --tga-rle\n"
        "  pixkit convert scan.bmp scan.png --png-level 9 --png-text 'Title=Invoice 12'\n"
        "  pixkit convert favicon.ico favicon.tga --icon-size 48\n"
        "  pixkit convert logo.png favicon.ico --icon 16,32,48,256\n"
        "  pixkit convert photo.png marked.jpg --text '(c) "
        "Me:size=5%:color=#ffffff:at=right-10,bottom-10:opacity=50%'\n"
        "  pixkit convert photo.png small.bmp --resize 320x240 --shadow 6 --checkerboard=8\n"
        "  pixkit convert *.png results --mirror x --blend '#0000ff:33' --overwrite");
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
    sub->footer(
        std::string("\nWhat lies outside of the canvas is left out.\n\n") + placeHelp +
        "PART of a layer is any of\n"
        "  60%                       the opacity, 1 to 100 %\n"
        "  640x480, 640x, x480       a box that the picture is brought into, in proportion\n"
        "  20%x, x10%, 50%x50%       the same in parts of the canvas\n"
        "  scale=50%                 a part of the picture's own size\n"
        "  fit, down, stretch, fill  how it is brought into the box, or else the canvas: in proportion, in proportion\n"
        "                            but never enlarged, out of proportion, in proportion and covering it all\n\n"
        "A name that itself ends like a place or a part needs one behind it, such as odd@center@0,0.\n\n" +
        textHelp +
        "Examples:\n"
        "  pixkit compose -o card.bmp --canvas '640x480:#204060' photo.png@20,20 logo.png@500,400:60%\n"
        "  pixkit compose -o marked.png photo.png logo.png@right-10,bottom-10:20%x:50%\n"
        "  pixkit compose -o banner.png --canvas 1200x400 sky.png@center:fill logo.png@5%,center:x60% "
        "sun.png@right,top\n"
        "  pixkit compose -o stack.tga back.png middle.png@8,8 front.png@16,16:50%");
}

void addGallery(CLI::App& app, GalleryRequest& request) {
    CLI::App* const sub = app.add_subcommand("gallery", "Show every effect on pictures in one HTML page");
    sub->add_option("PICTURE", request.pictures, "Pictures")->required()->type_name("");
    sub->add_option("-o,--output", request.folder, "Folder for the page and the results")
        ->type_name("FOLDER")
        ->capture_default_str();
    addLoading(*sub, request.loading);
    addTurning(*sub, request.loading);
    sub->add_flag("-q,--quiet", request.loading.isQuiet, "Do not warn of what of a file is left out")
        ->group("Messages");
    sub->footer(
        "There are about 40 results of each picture, saved as PNG: 2 MB for 240 x 300 pixels with alpha. Existing "
        "files\nin the folder are replaced.\n\n"
        "Example:\n"
        "  pixkit gallery samples/pictures/*.png -o out/gallery");
}

bool isCommand(std::string_view word) {
    constexpr std::array<std::string_view, 4> commands = {"info", "convert", "compose", "gallery"};
    return std::ranges::find(commands, word) != commands.end();
}

int parseAndRun(std::vector<std::string>& arguments, Console& console) {
    CLI::App app("Load pictures, change them, save them.", "pixkit");
    InfoRequest infoRequest;
    ConvertRequest convertRequest;
    ComposeRequest composeRequest;
    GalleryRequest galleryRequest;
    app.allow_windows_style_options(false); // a path may begin with a slash everywhere
    app.get_formatter()->column_width(34);
    app.require_subcommand(1);
    app.set_version_flag("--version", "pixkit " + cPixSheet().Version(), "Show the version");
    app.footer(
        "'pixkit COMMAND --help' says more, with examples. This version reads PNG, GIF,\nJPEG, BMP, TGA, icons and "
        "cursors, and writes the same.\n"
        "Exit codes: 0 done, 1 some input failed (the others are done), 2 the command line makes no sense.");
    addInfo(app, infoRequest);
    addConvert(app, convertRequest);
    addCompose(app, composeRequest);
    addGallery(app, galleryRequest);
    if (arguments.empty()) {
        console.err << app.help() << '\n';
        return exitUsage;
    }
    const std::string first = arguments.front();
    if (!first.starts_with('-') && !isCommand(first)) {
        throw UsageError("'" + first + "' is not a command; known are info, convert, compose and gallery");
    }
    try {
        std::ranges::reverse(arguments); // the parser takes them from the end
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error, console.out, console.err); // a question for help
        throw UsageError(describeMistake(isCommand(first) ? *app.get_subcommand(first) : app, error));
    }
    if (app.got_subcommand("info")) return info(infoRequest, console);
    applyFit(convertRequest.steps, convertRequest.fit);
    settleFilters(convertRequest.steps);
    if (app.got_subcommand("convert")) return convert(convertRequest, console);
    if (app.got_subcommand("compose")) return compose(composeRequest, console);
    return gallery(galleryRequest, console);
}

} // namespace

int run(std::vector<std::string> arguments, Console& console) {
    const std::string first = arguments.empty() ? "" : arguments.front();
    try {
        const int exitCode = parseAndRun(arguments, console);
        if (!console.out.flush()) throw std::runtime_error("the output cannot be written");
        return exitCode;
    } catch (const UsageError& error) {
        console.err << "pixkit: " << shown(error.what()) << "\n'pixkit " << (isCommand(first) ? first + " " : "")
                    << "--help' says more.\n";
        return exitUsage;
    } catch (const std::exception& error) {
        console.err << "pixkit: " << error.what() << '\n';
        return exitSomeFailed;
    }
}

} // namespace pixkit::cli
