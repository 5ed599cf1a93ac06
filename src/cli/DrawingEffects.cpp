// Effects that give the picture another size, or draw it onto a fresh image that takes its place.
#include "cli/EffectParsing.h"
#include "cli/Mistakes.h"
#include "shared/AlphaType.h"
#include "shared/ScaledSize.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace pixkit::cli {

namespace {

// 'WxH', 'Wx' or 'xH', where what is left out is 0. Nothing for anything else.
std::optional<PictureSize> readSize(std::string_view text) {
    const std::size_t x = text.find('x');
    if (x == std::string_view::npos || text.size() == 1) return {};
    const auto readSide = [](std::string_view side, std::int32_t& length) {
        return side.empty() || (parseEntirely(side, length) && length > 0);
    };
    PictureSize size{};
    return readSide(text.substr(0, x), size.width) && readSide(text.substr(x + 1), size.height) ? std::optional(size)
                                                                                                : std::nullopt;
}

} // namespace

PictureSize parseSize(std::string_view text) {
    const auto size = readSize(text);
    if (size && size->width != 0 && size->height != 0) return *size;
    throw UsageError("'" + std::string(text) + "' is not a size; write it as WxH, such as 640x480");
}

std::int32_t parsePercentage(const std::string& text) {
    std::int32_t percent = 0;
    const std::string_view digits = std::string_view(text).substr(0, text.size() - (text.ends_with('%') ? 1 : 0));
    if (!parseEntirely(digits, percent) || percent < 1 || percent > 100) {
        throw UsageError("'" + text + "' is not a whole percentage from 1 to 100");
    }
    return percent;
}

float parseAngle(const std::string& text) {
    float degrees = 0;
    if (!parseEntirely(text, degrees) || !(std::abs(degrees) <= 36000)) { // which refuses a NaN as well
        throw UsageError("'" + text + "' is not an angle from -36000 to 36000 degrees");
    }
    return degrees;
}

void classifyAlpha(cPixSheet& sheet) {
    sheet.Alpha(alphaTypeOf(HostAccess::pixels(sheet)));
}

bool redraw(cPixSheet& sheet, PictureSize size, const std::function<bool(cPixSheet& canvas)>& draw) {
    cPixSheet canvas;
    canvas.MaxPixels(sheet.MaxPixels());
    if (!canvas.InitializeDIB(size.width, size.height)) {
        return HostAccess::outcome(sheet, Outcome(HostAccess::outcome(canvas)));
    }
    if (!draw(canvas)) return false;
    classifyAlpha(canvas);
    HostAccess::takeNotes(canvas, sheet);
    sheet.SwapDIBs(&canvas);
    return true;
}

bool drawOn(cPixSheet& canvas, cPixSheet& sheet, std::int32_t x, std::int32_t y, std::int32_t opacity, float angle) {
    sheet.isAlphaBlendFriendly(false); // which rounds otherwise on some systems: the same bytes everywhere
    return sheet.Render(0, x, y, 0, 0, 0, 0, 0, 0, opacity, true, true, &canvas, gsclNone, 0, angle);
}

namespace {

// By what pictures get another size: a filter of Resample's, or none for Resize.
struct ResizeFilter {
    const char* word;
    const char* constant; // behind the sizes in the call
    std::optional<eResampleFilters> filter;
    bool isBilinear = false; // else Resize takes the nearest pixels
};
constexpr std::array<ResizeFilter, 7> resizeFilters = {{{"auto", "", resampleAuto},
                                                        {"area", ", resampleArea", resampleArea},
                                                        {"triangle", ", resampleTriangle", resampleTriangle},
                                                        {"mitchell", ", resampleMitchell", resampleMitchell},
                                                        {"lanczos", ", resampleLanczos3", resampleLanczos3},
                                                        {"bilinear", "", {}, true},
                                                        {"nearest", "", {}}}};

const ResizeFilter& resizeFilter(const std::string& word) {
    const auto found = std::ranges::find_if(resizeFilters, [&](const ResizeFilter& one) { return word == one.word; });
    if (found != resizeFilters.end()) return *found;
    throw unknownWord(word, "a filter", wordsOf(resizeFilters, &ResizeFilter::word));
}

bool resizeTo(cPixSheet& sheet, PictureSize size, const ResizeFilter& by) {
    if (by.filter) return sheet.Resample(size.width, size.height, *by.filter);
    const bool before = sheet.HighQualityInterpolation();
    sheet.HighQualityInterpolation(by.isBilinear);
    const bool isDone = sheet.Resize(size.width, size.height);
    sheet.HighQualityInterpolation(before);
    return isDone;
}

std::string resizeCall(const std::string& width, const std::string& height, const ResizeFilter& by) {
    return (by.filter ? "Resample(" : "Resize(") + width + ", " + height + by.constant + ")";
}

// A step that resizes to what `sizeFor` makes of the picture's size.
EffectStep resizing(std::string title, std::string call, const ResizeFilter& by,
                    std::function<PictureSize(PictureSize picture)> sizeFor) {
    EffectStep step{"", std::move(title), std::move(call), {}, [sizeFor, &by](cPixSheet& sheet) {
                        return resizeTo(sheet, sizeFor({sheet.Width(), sheet.Height()}), by);
                    }};
    if (by.filter) step.filteredResize = {*by.filter, std::move(sizeFor)};
    return step;
}

EffectStep resizeByPercent(const std::string& argument, const ResizeFilter& by) {
    double percent = 0;
    if (!parseEntirely(std::string_view(argument).substr(0, argument.size() - 1), percent) ||
        !(percent > 0 && percent <= 10000)) {
        throw UsageError("'" + argument + "' is not a percentage above 0 and up to 10000");
    }
    const std::string factor = argument.substr(0, argument.size() - 1) + " / 100";
    return resizing("Resized to " + argument.substr(0, argument.size() - 1) + " %",
                    resizeCall("Width * " + factor, "Height * " + factor, by), by, [percent](PictureSize picture) {
                        return PictureSize{percentOf(picture.width, percent), percentOf(picture.height, percent)};
                    });
}

struct Fit {
    const char* word;
    char sign; // the same, behind a size; 0 for none
    const char* constant;
    const char* title;
    std::optional<eScaleOptions> value; // of ScaleImage, which knows no filling
    Scaling::Mode mode;                 // the same, of a box that is open
};
constexpr std::array<Fit, 4> fits = {
    {{"size", 0, "ScaleToSize", "Resized to fit ", ScaleToSize, Scaling::Mode::fit},
     {"down", '>', "scaleDownAsNeeded", "Made smaller to fit ", scaleDownAsNeeded, Scaling::Mode::down},
     {"stretch", '!', "ScaleStretch", "Stretched to ", ScaleStretch, Scaling::Mode::stretch},
     {"fill", '^', "", "Resized to cover ", {}, Scaling::Mode::fill}}};

const Fit& parseFit(const std::string& word) {
    const auto found = std::ranges::find_if(fits, [&](const Fit& fit) { return word == fit.word; });
    if (found == fits.end()) throw unknownWord(word, "a way to fit", wordsOf(fits, &Fit::word));
    return *found;
}

// Into a box that may be open: what ScaleImage does not work out.
EffectStep resizeToBox(PictureSize box, const Fit& fit, const ResizeFilter& by) {
    const bool isClosed = box.width != 0 && box.height != 0, isWidth = box.width != 0;
    const std::string width = isWidth ? std::to_string(box.width) : "w";
    const std::string height = box.height != 0 ? std::to_string(box.height) : "h";
    const Scaling scaling{fit.mode, 100, {static_cast<double>(box.width)}, {static_cast<double>(box.height)}};
    const std::string title = isClosed  ? width + " × " + height
                              : isWidth ? width + " pixels in width"
                                        : height + " pixels in height";
    return resizing(fit.title + title, isClosed ? resizeCall("w", "h", by) : resizeCall(width, height, by), by,
                    [scaling](PictureSize picture) { return scaling.sizeFor(picture, {}); });
}

// 'W' alone is a width, as most programs read it.
std::optional<PictureSize> readBox(std::string_view text) {
    PictureSize size{};
    if (parseEntirely(text, size.width)) return size.width > 0 ? std::optional(size) : std::nullopt;
    return readSize(text);
}

EffectStep resizeBy(const std::string& argument, const ResizeFilter& by) {
    if (argument.ends_with('%') && argument.find(':') == std::string::npos) return resizeByPercent(argument, by);
    std::string text = argument;
    const Fit* fit = &fits.front();
    const std::size_t colon = text.find(':');
    const auto sign = std::ranges::find_if(
        fits, [&](const Fit& each) { return each.sign != 0 && !text.empty() && text.back() == each.sign; });
    if (colon != std::string::npos) {
        fit = &parseFit(text.substr(colon + 1));
        text.resize(colon);
    } else if (sign != fits.end()) {
        fit = &*sign;
        text.pop_back();
    }
    const auto box = readBox(text);
    double percent = 0;
    if (!box && text.ends_with('%') && parseEntirely(std::string_view(text).substr(0, text.size() - 1), percent)) {
        throw UsageError("'" + argument + "' is in proportion in any case; write " + text + ", without a way to fit");
    }
    if (!box) {
        throw UsageError("'" + text +
                         "' is not a size; write it as WxH, Wx, xH or a percentage, such as 640x480, 640x "
                         "or 50%");
    }
    const PictureSize size = *box;
    if (size.width == 0 || size.height == 0 || !fit->value) return resizeToBox(size, *fit, by);
    const std::string numbers = std::to_string(size.width) + ", " + std::to_string(size.height);
    return resizing(fit->title + std::to_string(size.width) + " × " + std::to_string(size.height),
                    "ScaleImage(" + numbers + ", w, h, " + fit->constant + "), " + resizeCall("w", "h", by), by,
                    [size, mode = *fit->value](PictureSize picture) {
                        const auto [width, height] =
                            scaledSize(picture.width, picture.height, size.width, size.height, mode);
                        // The thinnest picture keeps a pixel; 0 would mean its old size.
                        return PictureSize{std::max(width, 1), std::max(height, 1)};
                    });
}

} // namespace

void checkFit(const std::string& word) {
    try {
        parseFit(word);
    } catch (const UsageError& error) {
        throw UsageError(std::string("--fit: ") + error.what());
    }
}

EffectStep parseResize(const std::string& argument) {
    return resizeBy(argument, resizeFilters.front());
}

EffectStep parseResizeFilter(const std::string& argument) {
    resizeFilter(argument);
    return {"", "Filter " + argument, "", {}, [](cPixSheet&) { return true; }};
}

void settleFilters(std::vector<EffectStep>& steps) {
    const std::string filter = "--filter ", resize = "--resize ";
    const ResizeFilter* by = &resizeFilters.front();
    for (EffectStep& step : steps) {
        const std::string option = step.option, argument = step.argument;
        if (option == "--nearest") by = &resizeFilter("nearest");
        if (option.starts_with(filter)) by = &resizeFilter(argument);
        if (!option.starts_with(resize)) continue;
        step = resizeBy(argument, *by);
        step.option = option;
        step.argument = argument;
    }
}

EffectStep parseNearest(const std::string&) {
    return {"", "Nearest pixels", "HighQualityInterpolation(false)", {}, [](cPixSheet& sheet) {
                sheet.HighQualityInterpolation(false);
                return true;
            }};
}

namespace {

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

} // namespace

EffectStep parseRotate(const std::string& argument) {
    const float degrees = parseAngle(argument);
    return {"", "Rotated by " + argument + "°", "Render(…, Angle = " + argument + ")", {}, [degrees](cPixSheet& sheet) {
                const PictureSize size = turnedSize({sheet.Width(), sheet.Height()}, static_cast<double>(degrees));
                // Rounded up: a quarter turn that would lie between pixels moves up and to the left.
                const std::int32_t x = (size.width - sheet.Width() + 1) >> 1;
                const std::int32_t y = (size.height - sheet.Height() + 1) >> 1;
                const bool isDone =
                    redraw(sheet, size, [&](cPixSheet& canvas) { return drawOn(canvas, sheet, x, y, 100, degrees); });
                if (isDone && std::abs(std::fmod(degrees, 180.0F)) == 90) exchangeDensities(sheet);
                return isDone;
            }};
}

EffectStep parseOpacity(const std::string& argument) {
    const std::int32_t opacity = parsePercentage(argument);
    return {"",
            "At " + std::to_string(opacity) + " % opacity",
            "Render(…, Opacity = " + std::to_string(opacity) + ")",
            {},
            [opacity](cPixSheet& sheet) {
                return redraw(sheet, {sheet.Width(), sheet.Height()},
                              [&](cPixSheet& canvas) { return drawOn(canvas, sheet, 0, 0, opacity); });
            }};
}

// The picture stands at the top left; its shadow, which reaches `depth` pixels beyond the silhouette on every side,
// falls `depth` pixels to the right and below.
EffectStep parseShadow(const std::string& argument) {
    constexpr std::int32_t opacity = 50;
    const std::size_t colon = argument.find(':');
    std::int32_t depth = 0;
    if (!parseEntirely(std::string_view(argument).substr(0, colon), depth) || depth < 0 || depth > 10) {
        throw UsageError("'" + argument.substr(0, colon) + "' is not a whole depth from 0 to 10");
    }
    const std::int32_t colour =
        colon == std::string::npos ? 0 : parseColour(std::string_view(argument).substr(colon + 1));
    return {"", "Shadow, " + std::to_string(depth) + (depth == 1 ? " pixel deep" : " pixels deep"),
            "RenderDropShadow_JIT(0, 0, 0, " + std::to_string(depth) + ", " + colourLiteral(colour) + "), Render(…)",
            colour, [depth, colour](cPixSheet& sheet) {
                return redraw(sheet, {sheet.Width() + 2 * depth, sheet.Height() + 2 * depth}, [&](cPixSheet& canvas) {
                    sheet.isAlphaBlendFriendly(false);
                    return sheet.RenderDropShadow_JIT(0, 0, 0, depth, colour, opacity, 0, &canvas) &&
                           drawOn(canvas, sheet, 0, 0);
                });
            }};
}

EffectStep parseCheckerboard(const std::string& argument) {
    std::int32_t checkerSize = 0;
    if (!parseEntirely(argument, checkerSize) || checkerSize < 1) {
        throw UsageError("'" + argument + "' is not a size of squares in pixels");
    }
    return {"",
            "Over a checkerboard",
            "CreateCheckerBoard(" + argument + "), Render(…)",
            {},
            [checkerSize](cPixSheet& sheet) {
                return redraw(sheet, {sheet.Width(), sheet.Height()}, [&](cPixSheet& canvas) {
                    return canvas.CreateCheckerBoard(checkerSize) && drawOn(canvas, sheet, 0, 0);
                });
            }};
}

EffectStep parseTile(const std::string& argument) {
    const PictureSize size = parseSize(argument);
    return {"",
            "Tiled over " + std::to_string(size.width) + " × " + std::to_string(size.height),
            "TileImage(0, 0, 0, " + std::to_string(size.width) + ", " + std::to_string(size.height) + ", …)",
            {},
            [size](cPixSheet& sheet) {
                return redraw(sheet, size, [&](cPixSheet& canvas) {
                    return sheet.TileImage(0, 0, 0, size.width, size.height, 100, 0, 0, 0, &canvas);
                });
            }};
}

EffectStep parseTrim(const std::string&) {
    return {"", "Transparent borders cut off", "TrimImage()", {}, [](cPixSheet& sheet) { return sheet.TrimImage(); }};
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
