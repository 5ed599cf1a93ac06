// `pixkit compose`: pictures in layers on one canvas.
#include "cli/Batch.h"
#include "cli/EffectParsing.h"
#include "cli/Saving.h"
#include "cli/Streams.h"
#include "cli/Targets.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <limits>
#include <memory>
#include <ostream>
#include <vector>

namespace pixkit::cli {

ComposeCanvas parseCanvas(const std::string& text) {
    try {
        const std::size_t colon = text.find(':');
        const PictureSize size = parseSize(std::string_view(text).substr(0, colon));
        ComposeCanvas canvas{size.width, size.height};
        if (colon != std::string::npos) canvas.colour = parseAnyColour(std::string_view(text).substr(colon + 1));
        return canvas;
    } catch (const UsageError& error) {
        throw UsageError(std::string("--canvas: ") + error.what());
    }
}

namespace {

// The layers of a request, loaded, each brought to its size as soon as that is known.
class Layers {
  public:
    Layers(const ComposeRequest& request, Console& console) : m_layers(request.layers) {
        for (const ComposeLayer& layer : m_layers) {
            m_pictures.push_back(std::make_unique<cPixSheet>());
            cPixSheet& picture = *m_pictures.back();
            forFile(layer.file, [&] {
                if (!load(picture, openSource(layer.file, console.in), request.loading))
                    throw Failed(layer.file, problemOf(picture));
                warn(console.err, layer.file, picture, request.loading);
                if (!layer.scaling.dependsOnCanvas()) scale(picture, layer, {});
            });
        }
    }

    // Large enough for the layers whose size does not depend on it, and a pixel at least.
    ComposeCanvas canvas() const {
        ComposeCanvas canvas{1, 1};
        for (std::size_t i = 0; i < m_layers.size(); ++i) {
            const ComposeLayer& layer = m_layers[i];
            if (layer.scaling.dependsOnCanvas()) continue;
            stretchTo(canvas.width, layer.place.x.canvasFor(m_pictures[i]->Width()));
            stretchTo(canvas.height, layer.place.y.canvasFor(m_pictures[i]->Height()));
        }
        return canvas;
    }

    void drawOn(cPixSheet& canvas) const {
        for (std::size_t i = 0; i < m_layers.size(); ++i) {
            const ComposeLayer& layer = m_layers[i];
            cPixSheet& picture = *m_pictures[i];
            if (layer.scaling.dependsOnCanvas()) scale(picture, layer, {canvas.Width(), canvas.Height()});
            // By the blender on every system, so that the result has the same bytes everywhere.
            picture.isAlphaBlendFriendly(false);
            const std::int32_t x = layer.place.x.position(canvas.Width(), picture.Width());
            const std::int32_t y = layer.place.y.position(canvas.Height(), picture.Height());
            if (!picture.Render(0, x, y, 0, 0, 0, 0, 0, 0, layer.opacity, true, true, &canvas)) {
                throw Failed(layer.file, problemOf(picture));
            }
        }
    }

  private:
    static void stretchTo(std::int32_t& size, std::int64_t end) {
        size = static_cast<std::int32_t>(std::clamp<std::int64_t>(end, size, std::numeric_limits<std::int32_t>::max()));
    }

    static void scale(cPixSheet& picture, const ComposeLayer& layer, PictureSize canvas) {
        const PictureSize size = layer.scaling.sizeFor({picture.Width(), picture.Height()}, canvas);
        if (!picture.Resample(size.width, size.height)) {
            throw Failed(layer.file + " at " + std::to_string(size.width) + " x " + std::to_string(size.height),
                         problemOf(picture));
        }
    }

    const std::vector<ComposeLayer>& m_layers;
    std::vector<std::unique_ptr<cPixSheet>> m_pictures;
};

void makeCanvas(cPixSheet& sheet, const ComposeCanvas& canvas) {
    if (!sheet.InitializeDIB(canvas.width, canvas.height)) {
        throw Failed("the canvas of " + std::to_string(canvas.width) + " x " + std::to_string(canvas.height),
                     problemOf(sheet));
    }
    if (canvas.colour.alpha != 0) fillWith(sheet, canvas.colour);
}

void composeOne(const ComposeRequest& request, const Target& target, Console& console, Result& result) {
    const Layers layers(request, console);
    cPixSheet sheet;
    sheet.MaxPixels(request.loading.mostPixels);
    makeCanvas(sheet, request.canvas ? *request.canvas : layers.canvas());
    layers.drawOn(sheet);
    classifyAlpha(sheet);
    for (const EffectStep& text : request.texts) {
        if (!text.apply(sheet)) throw Failed(text.option, problemOf(sheet));
    }
    const std::size_t count = request.layers.size();
    result.summary = std::to_string(sheet.Width()) + " x " + std::to_string(sheet.Height()) + ", " +
                     std::to_string(count) + (count == 1 ? " layer" : " layers");
    savePicture(
        sheet, target, request, [&](const std::string& question) { return confirm(console, question); }, console,
        result);
}

} // namespace

int compose(const ComposeRequest& request, Console& console) {
    const Target target = targetOf(request.output, request.format);
    checkSaving(request, target.name, target.format);
    if (!request.canvas && std::ranges::all_of(request.layers, [](const ComposeLayer& layer) {
            return layer.scaling.dependsOnCanvas();
        })) {
        throw UsageError("every layer takes its size from the canvas; give that one with --canvas WxH");
    }
    std::vector<std::string> files;
    for (const ComposeLayer& layer : request.layers)
        files.push_back(layer.file);
    refuseTwice(files);
    const ReportArray reports(request.reporting.isJson, true, console);
    Result result{{}, target.name};
    result.reason = reasonToSkip(target, files, request);
    result.status = Result::Status::skipped;
    if (result.reason.empty()) succeeds(result, [&] { composeOne(request, target, console, result); });
    report(result, request.reporting, "compose", 0, console);
    return result.status == Result::Status::failed ? exitSomeFailed : exitOk;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
