// `pixkit sheet`: many pictures as one, in rows, and a file that says where each lies.
#include "cli/Batch.h"
#include "cli/EffectParsing.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/Saving.h"
#include "cli/Streams.h"
#include "cli/Targets.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <ostream>
#include <set>

namespace pixkit::cli {

PictureSize parseCell(const std::string& text) {
    try {
        return parseSize(text);
    } catch (const UsageError& error) {
        throw UsageError(std::string("--cell: ") + error.what());
    }
}

namespace {

constexpr std::int32_t labelHeight = 20, labelSize = 12; // pixels

// A picture, made as small as its cell asks, and where it lies.
struct Sprite {
    std::string file;
    std::unique_ptr<cPixSheet> picture;
    std::int32_t x = 0, y = 0;
};

// A name as --text reads it.
std::string textOf(const std::string& name) {
    std::string text;
    for (const char c : shown(name)) {
        if (c == '\\' || c == ':') text += '\\';
        text += c;
    }
    return text;
}

class Sheet {
  public:
    Sheet(const SheetRequest& request, std::vector<Sprite> sprites)
        : m_request(request), m_sprites(std::move(sprites)) {
        if (request.cell) m_cell = *request.cell;
        for (const Sprite& sprite : m_sprites) {
            if (request.cell) break;
            m_cell = {std::max(m_cell.width, sprite.picture->Width()),
                      std::max(m_cell.height, sprite.picture->Height())};
        }
        const auto count = static_cast<std::int32_t>(m_sprites.size());
        const auto root = static_cast<std::int32_t>(std::ceil(std::sqrt(count)));
        m_columns = std::clamp(request.columns != 0 ? request.columns : root, 1, std::max(count, 1));
        m_rows = (count + m_columns - 1) / m_columns;
    }

    void draw(cPixSheet& sheet) {
        const std::int64_t width = m_columns * stepX() + m_request.gap;
        const std::int64_t height = m_rows * stepY() + m_request.gap;
        constexpr std::int64_t most = 0x7FFFFFFF; // which no picture has; the member says so
        if (!sheet.InitializeDIB(static_cast<std::int32_t>(std::min(width, most)),
                                 static_cast<std::int32_t>(std::min(height, most)))) {
            throw Failed("a sheet of " + std::to_string(width) + " x " + std::to_string(height), problemOf(sheet));
        }
        if (m_request.canvas.alpha != 0) fillWith(sheet, m_request.canvas);
        for (std::size_t i = 0; i < m_sprites.size(); ++i)
            drawSprite(sheet, m_sprites[i], static_cast<std::int32_t>(i));
        classifyAlpha(sheet);
    }

    void writeJson(std::ostream& out, const cPixSheet& sheet) const {
        out << "{\"image\": " << jsonString(imageName()) << ", \"width\": " << sheet.Width()
            << ", \"height\": " << sheet.Height() << ", \"sprites\": [";
        const char* separator = "\n  ";
        for (const Sprite& sprite : m_sprites) {
            out << separator << "{\"file\": " << jsonString(sprite.file) << ", \"x\": " << sprite.x
                << ", \"y\": " << sprite.y << ", \"width\": " << sprite.picture->Width()
                << ", \"height\": " << sprite.picture->Height() << '}';
            separator = ",\n  ";
        }
        out << "\n]}\n";
    }

    void writeCss(std::ostream& out) const {
        out << ".sprite { display: inline-block; background: url(\"" << urlPath(imageName()) << "\") no-repeat; }\n";
        std::set<std::string> taken;
        for (const Sprite& sprite : m_sprites) {
            const std::string name = className(sprite.file);
            std::string own = name;
            for (int copy = 2; !taken.insert(own).second; ++copy)
                own = name + "-" + std::to_string(copy);
            out << ".sprite-" << own << " { width: " << sprite.picture->Width()
                << "px; height: " << sprite.picture->Height() << "px; background-position: " << -sprite.x << "px "
                << -sprite.y << "px; }\n";
        }
    }

    std::size_t count() const noexcept { return m_sprites.size(); }

  private:
    std::int64_t stepX() const { return std::int64_t{m_cell.width} + m_request.gap; }
    std::int64_t stepY() const {
        return std::int64_t{m_cell.height} + m_request.gap + (m_request.hasLabels ? labelHeight : 0);
    }
    // As the index names it.
    std::string imageName() const {
        const std::filesystem::path file = toPath(m_request.output), index = toPath(m_request.index);
        return toUtf8(
            std::filesystem::absolute(file).lexically_proximate(std::filesystem::absolute(index).parent_path()));
    }

    void drawSprite(cPixSheet& sheet, Sprite& sprite, std::int32_t index) const {
        cPixSheet& picture = *sprite.picture;
        const auto left = static_cast<std::int32_t>(m_request.gap + index % m_columns * stepX());
        const auto top = static_cast<std::int32_t>(m_request.gap + index / m_columns * stepY());
        sprite.x = left + (m_cell.width - picture.Width()) / 2;
        sprite.y = top + (m_cell.height - picture.Height()) / 2;
        if (!drawOn(sheet, picture, sprite.x, sprite.y)) throw Failed(sprite.file, problemOf(picture));
        if (!m_request.hasLabels) return;
        cPixSheet label; // of its own, so that a long name ends at the cell
        const std::string name = toUtf8(toPath(sprite.file).filename());
        const EffectStep text =
            makeStep("--text", textOf(name) + ":size=" + std::to_string(labelSize) + ":color=" + labelColour());
        if (!label.InitializeDIB(m_cell.width, labelHeight) || !text.apply(label) ||
            !drawOn(sheet, label, left, top + m_cell.height))
            throw Failed("--labels", problemOf(label));
    }

    // Dark on what is light, light on what is dark.
    const char* labelColour() const {
        const std::int32_t rgb = m_request.canvas.rgb;
        const int light = 2 * (rgb & 0xFF) + 5 * (rgb >> 8 & 0xFF) + (rgb >> 16 & 0xFF);
        return m_request.canvas.alpha != 0 && light < 8 * 128 ? "white" : "black";
    }

    // What a class may be called: letters, digits, hyphens; no bytes that are no UTF-8, which browsers take for one.
    static std::string className(const std::string& file) {
        std::string name = toLower(toUtf8(toPath(file).stem()));
        for (char& c : name)
            if ((c < 'a' || c > 'z') && (c < '0' || c > '9') && static_cast<unsigned char>(c) < 0x80) c = '-';
        return htmlText(name);
    }

    const SheetRequest& m_request;
    std::vector<Sprite> m_sprites;
    PictureSize m_cell{1, 1};
    std::int32_t m_columns = 1, m_rows = 1;
};

Sprite loadSprite(const Input& input, const SheetRequest& request, Console& console) {
    if (!input.problem.empty()) throw Failed(input.name, input.problem);
    std::vector<EffectStep> steps;
    if (request.cell) {
        const std::string cell = std::to_string(request.cell->width) + "x" + std::to_string(request.cell->height);
        steps = {makeStep("--resize", cell + ":down")};
        settleFilters(steps);
    }
    std::span<const EffectStep> rest = steps;
    auto picture = std::make_unique<cPixSheet>();
    PictureSize whole{};
    if (!load(*picture, openSource(input.name, console.in), request.loading, rest, whole))
        throw Failed(input.name, problemOf(*picture));
    warn(console.err, input.name, *picture, request.loading);
    for (const EffectStep& step : rest)
        if (!step.apply(*picture)) throw Failed(input.name, problemOf(*picture));
    return {input.name, std::move(picture)};
}

// In the order of the inputs. What does not load is left out, and is a result of its own.
std::vector<Sprite> loadSprites(const SheetRequest& request, const std::vector<Input>& inputs, Console& console,
                                std::size_t& results) {
    std::vector<Sprite> sprites(inputs.size());
    runBatch(inputs.size(), request.jobs, console, [&](Piece& piece) {
        const Input& input = inputs[piece.index()];
        Result result{input.name, {}};
        if (succeeds(result, [&] { sprites[piece.index()] = loadSprite(input, request, piece.console()); })) return;
        piece.awaitTurn();
        report(result, request.reporting, "sheet", results++, piece.console());
    });
    return sprites;
}

bool isCss(const std::string& index) {
    const std::string extension = toLower(toUtf8(toPath(index).extension()));
    if (extension != ".css" && extension != ".json")
        throw UsageError("--index takes a .json or .css file, not " + index);
    return extension == ".css";
}

// Picture and index belong together: they are kept where both are there. Throws Failed where one is not to be replaced
// and the other is not there.
std::string reasonToKeep(const SheetRequest& request, const Target& target, const std::vector<Input>& inputs) {
    std::vector<std::string> names;
    names.reserve(inputs.size());
    for (const Input& input : inputs)
        names.push_back(input.name);
    std::string reason = reasonToSkip(target, names, request);
    if (request.index.empty() || target.isStream()) return reason;
    const bool isThere = !reason.empty();
    const bool hasIndex = isFile(request.index);
    if (request.replacing == Replacing::never && isThere != hasIndex)
        throw Failed(isThere ? target.name : request.index, "it exists already and was kept, but not " +
                                                                (isThere ? request.index : target.name) +
                                                                "; --overwrite makes both");
    return hasIndex ? reason : "";
}

// The index lies beside the picture before that is saved, so that neither is there without the other.
void makeSheet(const SheetRequest& request, const Target& target, std::vector<Sprite> sprites, Console& console,
               Result& result) {
    if (sprites.empty()) throw Failed(target.name, "none of the pictures can be shown");
    Sheet sheet(request, std::move(sprites));
    cPixSheet canvas;
    canvas.MaxPixels(request.loading.mostPixels);
    sheet.draw(canvas);
    result.summary = std::to_string(canvas.Width()) + " x " + std::to_string(canvas.Height()) + ", " +
                     std::to_string(sheet.count()) + (sheet.count() == 1 ? " picture" : " pictures");
    const auto ask = [&](const std::string& question) { return confirm(console, question); };
    if (!request.index.empty()) askToReplace(request.index, request, ask);
    std::unique_ptr<Draft> index;
    if (!request.index.empty() && !request.isDryRun) {
        index = draftOf(request.index, [&](std::ostream& out) {
            if (isCss(request.index)) {
                sheet.writeCss(out);
            } else {
                sheet.writeJson(out, canvas);
            }
        });
    }
    savePicture(canvas, target, request, ask, console, result);
    if (index) index->takePlace();
}

} // namespace

int sheet(const SheetRequest& request, Console& console) {
    const Target target = targetOf(request.output, request.format);
    checkSaving(request, target.name, target.format);
    if (!request.index.empty()) isCss(request.index); // refuses what is neither
    const std::vector<Input> inputs = findInputs(request.pictures, request.recursive);
    const ReportArray reports(request.reporting.isJson, true, console);
    Result result{{}, target.name, Result::Status::skipped};
    bool isWhole = succeeds(result, [&] { result.reason = reasonToKeep(request, target, inputs); });
    std::size_t results = 0;
    if (isWhole && result.reason.empty()) {
        std::vector<Sprite> sprites = loadSprites(request, inputs, console, results);
        isWhole = std::erase_if(sprites, [](const Sprite& sprite) { return !sprite.picture; }) == 0;
        isWhole &= succeeds(result, [&] { makeSheet(request, target, std::move(sprites), console, result); });
    }
    report(result, request.reporting, "sheet", results, console);
    return isWhole ? exitOk : exitSomeFailed;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
