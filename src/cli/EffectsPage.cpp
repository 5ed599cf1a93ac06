#include "cli/EffectsPage.h"
#include "cli/Colour.h"
#include "cli/PageStyle.h"
#include "cli/Scaling.h"
#include "cli/Text.h"
#include <algorithm>
#include <ostream>

namespace pixkit::cli {

namespace {

constexpr const char* style = R"css(
body > header, main, footer { max-width: 1500px; margin: 0 auto; padding: 0 clamp(12px, 3vw, 32px); }
h1 { margin: 28px 0 4px; font-size: 28px; letter-spacing: -.01em; }
h2 { margin: 0; font-size: 20px; }
h3 { margin: 26px 0 10px; font-size: 12px; letter-spacing: .09em; text-transform: uppercase; color: var(--soft); }
p { margin: 0; max-width: 75ch; }
a { color: var(--accent); text-decoration: none; }
a:hover { text-decoration: underline; }
.soft, footer { color: var(--soft); }
nav { display: flex; flex-wrap: wrap; gap: 8px; margin: 18px 0 8px; }
nav a { padding: 4px 12px; border: 1px solid var(--line); border-radius: 99px; background: var(--card); }
section { margin: 36px 0 0; padding-top: 26px; border-top: 1px solid var(--line); }
.original { max-width: 560px; margin-top: 16px; }
.row { display: grid; gap: 14px; grid-template-columns: repeat(auto-fill, minmax(min(100%, 245px), 1fr)); }
figure { margin: 0; display: flex; flex-direction: column; background: var(--card); border: 1px solid var(--line);
         border-radius: 10px; overflow: hidden; }
.frame { display: flex; align-items: center; justify-content: center; min-height: 110px; padding: 10px; }
.picture { display: block; max-width: 100%;
           background: repeating-conic-gradient(var(--square-a) 0 25%, var(--square-b) 0 50%) 0 0 / 18px 18px; }
.picture img { display: block; max-width: 100%; height: auto; }
.tiny img { image-rendering: pixelated; }
figcaption { flex: 1; padding: 9px 12px 11px; border-top: 1px solid var(--line); font-size: 13px; }
figcaption b { display: block; font-size: 14px; }
code { font: 11px/1.6 ui-monospace, monospace; overflow-wrap: anywhere; }
.swatch { display: inline-block; width: .8em; height: .8em; margin-left: .35em; border-radius: 3px;
          border: 1px solid var(--line); vertical-align: -.05em; }
footer { margin-top: 48px; padding-bottom: 40px; font-size: 13px; }
)css";

// Very small pictures are shown larger, pixel by pixel, and tall ones as high as a screen shows; all of them is a click
// away.
PictureSize shownSize(const EffectsCard& card) {
    constexpr std::int32_t highest = 480;
    const std::int32_t longest = std::max({card.width, card.height, 1}), scale = longest > 64 ? 1 : 128 / longest;
    if (card.height <= highest) return {card.width * scale, card.height * scale};
    const std::int64_t width = std::int64_t{card.width} * highest / card.height;
    return {std::max(static_cast<std::int32_t>(width), 1), highest};
}

void writeFrame(std::ostream& html, const EffectsPicture& picture, const EffectsCard& card) {
    const PictureSize size = shownSize(card);
    html << "<div class=\"frame\"><a class=\"picture" << (size.width > card.width ? " tiny" : "") << "\" href=\""
         << urlPath(card.file) << "\"><img src=\"" << urlPath(card.file) << "\" alt=\""
         << htmlText(picture.name + ", " + card.title) << "\" width=\"" << size.width << "\" height=\"" << size.height
         << "\" loading=\"lazy\" decoding=\"async\"></a></div>\n";
}

void writeCaption(std::ostream& html, const EffectsCard& card) {
    html << "<figcaption><b>" << htmlText(card.title);
    for (const std::int32_t colour : card.colours) {
        const std::string rgb = formatColour(colour);
        html << "<span class=\"swatch\" style=\"background:" << rgb << "\" title=\"" << rgb << "\"></span>";
    }
    html << "</b>";
    for (const std::string& call : card.calls)
        html << "<code>" << htmlText(call) << "</code><br>";
    if (!card.option.empty()) html << "<code class=\"soft\">" << htmlText(card.option) << "</code><br>";
    html << "<span class=\"soft\">alpha: " << htmlText(card.alpha) << "</span>";
    html << "</figcaption>";
}

void writeCard(std::ostream& html, const EffectsPicture& picture, const EffectsCard& card, const char* cssClass) {
    html << "<figure" << cssClass << ">\n";
    writeFrame(html, picture, card);
    writeCaption(html, card);
    html << "</figure>\n";
}

std::string anchor(std::size_t index) {
    return "picture-" + std::to_string(index + 1);
}

} // namespace

void writeEffectsPage(std::ostream& html, std::span<const std::optional<EffectsPicture>> pictures,
                      const std::string& version) {
    html << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
         << effectsMark
         << "\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>pixkit effects</title>\n"
            "<style>"
         << pageStyle << style << "</style>\n</head>\n<body>\n<header>\n<h1>pixkit effects</h1>\n"
         << "<p class=\"soft\">Each picture was loaded, changed by the calls under it and saved as PNG. The "
            "checkerboard shows "
            "where a result is transparent.</p>\n<nav>\n";
    for (std::size_t i = 0; i < pictures.size(); ++i)
        if (pictures[i]) html << "<a href=\"#" << anchor(i) << "\">" << htmlText(pictures[i]->name) << "</a>\n";
    html << "</nav>\n</header>\n<main>\n";
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        if (!pictures[i]) continue;
        const EffectsPicture& picture = *pictures[i];
        html << "<section id=\"" << anchor(i) << "\">\n<h2>" << htmlText(picture.name) << "</h2>\n<p class=\"soft\">"
             << htmlText(picture.facts) << "</p>\n";
        writeCard(html, picture, picture.original, " class=\"original\"");
        for (const EffectsGroup& group : picture.groups) {
            html << "<h3>" << htmlText(group.title) << "</h3>\n<div class=\"row\">\n";
            for (const EffectsCard& card : group.cards)
                writeCard(html, picture, card, "");
            html << "</div>\n";
        }
        html << "</section>\n";
    }
    html << "</main>\n<footer>Made by pixkit " << htmlText(version) << ".</footer>\n</body>\n</html>\n";
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
