// `pixkit compose`: pictures in layers on one canvas.
#include "cli/EffectParsing.h"
#include "cli/Files.h"
#include "cli/Saving.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <limits>
#include <memory>
#include <ostream>

namespace pixkit::cli {

// FILE[@X,Y][:OPACITY%], read from its end, since names of files may hold all of these signs: what does not read as a
// position or opacity belongs to the name.
ComposeLayer parseLayer(const std::string& text) {
    ComposeLayer layer;
    std::string_view rest = text;
    const std::size_t colon = rest.rfind(':');
    std::int32_t opacity = 0;
    if (rest.ends_with('%') && colon != std::string_view::npos &&
        parseEntirely(rest.substr(colon + 1, rest.size() - colon - 2), opacity)) {
        if (opacity < 1 || opacity > 100) {
            throw UsageError("'" + text + "': " + std::to_string(opacity) + " is not a percentage from 1 to 100");
        }
        layer.opacity = opacity;
        rest = rest.substr(0, colon);
    }
    const std::size_t at = rest.rfind('@');
    const std::size_t comma = rest.find(',', at == std::string_view::npos ? 0 : at);
    if (at != std::string_view::npos && comma != std::string_view::npos &&
        parseEntirely(rest.substr(at + 1, comma - at - 1), layer.x) && parseEntirely(rest.substr(comma + 1), layer.y)) {
        rest = rest.substr(0, at);
    } else {
        layer.x = layer.y = 0;
    }
    layer.file = rest;
    if (layer.file.empty()) throw UsageError("'" + text + "' names no picture");
    return layer;
}

ComposeCanvas parseCanvas(const std::string& text) {
    const std::size_t colon = text.find(':');
    const PictureSize size = parseSize(std::string_view(text).substr(0, colon));
    ComposeCanvas canvas{size.width, size.height, {}};
    if (colon != std::string::npos) canvas.colour = parseColour(std::string_view(text).substr(colon + 1));
    return canvas;
}

namespace {

// Where a layer ends on one axis; a canvas without a size of its own reaches that far, and a pixel at least.
void stretchTo(std::int32_t& size, std::int64_t end) {
    size = static_cast<std::int32_t>(std::clamp<std::int64_t>(end, size, std::numeric_limits<std::int32_t>::max()));
}

void makeCanvas(cPixSheet& sheet, const ComposeCanvas& canvas) {
    if (!sheet.InitializeDIB(canvas.width, canvas.height)) {
        throw Failed("the canvas of " + std::to_string(canvas.width) + " x " + std::to_string(canvas.height),
                     sheet.LastErrorText());
    }
    if (canvas.colour) sheet.MakeTransparent(*canvas.colour, true); // the empty pixels, which are all
}

} // namespace

int compose(const ComposeRequest& request, Console& console) {
    const std::filesystem::path target = toPath(request.output);
    if (const auto problem = formatProblem(target)) throw UsageError(request.output + ": " + *problem);
    checkSaving(request, formatOf(target).value_or(FileFormat::bmp));
    MessageBoxes boxes(console);
    try {
        std::vector<std::unique_ptr<cPixSheet>> pictures;
        ComposeCanvas canvas{1, 1, {}};
        for (const ComposeLayer& layer : request.layers) {
            boxes.about(layer.file);
            pictures.push_back(std::make_unique<cPixSheet>());
            if (!load(*pictures.back(), layer.file, request.icon)) {
                throw Failed(layer.file, pictures.back()->LastErrorText());
            }
            stretchTo(canvas.width, std::int64_t{layer.x} + pictures.back()->Width());
            stretchTo(canvas.height, std::int64_t{layer.y} + pictures.back()->Height());
        }
        cPixSheet result;
        makeCanvas(result, request.canvas.value_or(canvas));
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            const ComposeLayer& layer = request.layers[i];
            // By the blender on every system, so that the result has the same bytes everywhere.
            pictures[i]->isAlphaBlendFriendly(false);
            if (!pictures[i]->Render(0, layer.x, layer.y, 0, 0, 0, 0, 0, 0, layer.opacity, true, true, &result)) {
                throw Failed(layer.file, pictures[i]->LastErrorText());
            }
        }
        classifyAlpha(result);
        savePicture(result, target, request, boxes);
        console.out << shown(toUtf8(target)) << ": " << result.Width() << " x " << result.Height() << ", "
                    << pictures.size() << (pictures.size() == 1 ? " layer\n" : " layers\n");
        return exitOk;
    } catch (const Failed& failure) {
        console.err << "pixkit compose: " << failure.what() << '\n';
        return exitSomeFailed;
    }
}

} // namespace pixkit::cli
