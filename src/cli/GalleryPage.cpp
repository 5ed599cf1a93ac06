#include "cli/GalleryPage.h"
#include "cli/PageStyle.h"
#include "cli/Text.h"
#include <algorithm>
#include <ostream>

namespace pixkit::cli {

namespace {

constexpr const char* style = R"css(
header, main, footer { max-width: 1800px; margin: 0 auto; padding: 0 clamp(10px, 3vw, 32px); }
h1 { margin: 24px 0 2px; font-size: 26px; letter-spacing: -.01em; overflow-wrap: anywhere; }
h2 { margin: 26px 0 10px; font-size: 15px; color: var(--soft); overflow-wrap: anywhere; }
p { margin: 0; }
a { color: var(--accent); }
:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; }
.soft, footer { color: var(--soft); font-size: 13px; }
footer { padding-top: 32px; padding-bottom: 32px; }
ul { list-style: none; margin: 16px 0 0; padding: 0; display: grid; gap: 12px;
     grid-template-columns: repeat(auto-fill, minmax(min(46%, 190px), 1fr)); }
li { background: var(--card); border: 1px solid var(--line); border-radius: 8px; }
li > a { display: flex; align-items: center; justify-content: center; height: 184px; padding: 8px; border-radius: 8px; }
img, .pair { background: repeating-conic-gradient(var(--square-a) 0 25%, var(--square-b) 0 50%) 0 0 / 18px 18px; }
li img { display: block; max-width: 100%; max-height: 100%; width: auto; height: auto; }
li p { padding: 6px 10px 9px; border-top: 1px solid var(--line); font-size: 12px; overflow-wrap: anywhere; }
li b { display: block; font-size: 13px; }
dialog { width: 100vw; height: 100vh; height: 100dvh; max-width: none; max-height: none; margin: 0; padding: 0; border: 0;
         background: var(--page); color: var(--ink); }
dialog[open] { display: flex; flex-direction: column; }
.stage { flex: 1; min-height: 0; overflow: auto; display: flex; cursor: zoom-in; }
.pair { position: relative; flex: none; margin: auto; }
.pair.black { background: #000; }
.pair.white { background: #fff; }
.pair img { position: absolute; inset: 0; width: 100%; height: 100%; background: none; user-select: none; }
.pair.large img { image-rendering: pixelated; }
.bar { display: flex; flex-wrap: wrap; align-items: center; gap: 6px 10px; padding: 8px 12px; background: var(--card);
       border-top: 1px solid var(--line); font-size: 13px; }
.bar p { flex: 1 1 220px; min-width: 0; overflow-wrap: anywhere; }
.bar button { min-width: 40px; min-height: 36px; border: 1px solid var(--line); border-radius: 8px; background: var(--page);
              color: inherit; font: inherit; cursor: pointer; }
.bar label { display: flex; align-items: center; gap: 6px; }
[hidden] { display: none !important; }
)css";

void writeEntry(std::ostream& html, const GalleryEntry& entry) {
    html << "<li><a href=\"" << entry.picture << "\"><img src=\"" << entry.thumbnail << "\" width=\""
         << entry.thumbnailSize.width << "\" height=\"" << entry.thumbnailSize.height << "\" alt=\""
         << htmlText(entry.name) << "\" loading=\"lazy\" decoding=\"async\"></a><p><b>" << htmlText(entry.name)
         << "</b><span>" << htmlText(entry.facts) << "</span>";
    if (!entry.before.empty()) html << " · <a href=\"" << entry.before << "\">before</a>";
    html << "</p></li>\n";
}

// In the order of the entries, a list for each run of one folder.
void writeLists(std::ostream& html, std::span<const std::optional<GalleryEntry>> entries) {
    const GalleryEntry* last = nullptr;
    for (const auto& entry : entries) {
        if (!entry) continue;
        if (last == nullptr || entry->folder != last->folder) {
            if (last != nullptr) html << "</ul>\n";
            if (!entry->folder.empty()) html << "<h2>" << htmlText(entry->folder) << "</h2>\n";
            html << "<ul>\n";
        }
        writeEntry(html, *entry);
        last = &*entry;
    }
    if (last != nullptr) html << "</ul>\n";
}

} // namespace

void writeGalleryPage(std::ostream& html, const GalleryHead& head,
                      std::span<const std::optional<GalleryEntry>> entries) {
    const auto count = std::ranges::count_if(entries, [](const auto& entry) { return entry.has_value(); });
    // An icon that is empty keeps browsers from asking for one.
    html << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
         << galleryMark << ' ' << htmlText(head.version)
         << "\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
         << htmlText(head.title) << "</title>\n<link rel=\"icon\" href=\"data:,\">\n<style>" << pageStyle << style;
    if (!head.orients) html << "img { image-orientation: none; }\n";
    html << "</style>\n</head>\n<body>\n<header>\n<h1>" << htmlText(head.title) << "</h1>\n<p class=\"soft\">" << count
         << (count == 1 ? " picture" : " pictures") << "</p>\n</header>\n<main>\n";
    writeLists(html, entries);
    html << "</main>\n<footer>Made by pixkit " << htmlText(head.version) << ".</footer>\n"
         << galleryViewer << "</body>\n</html>\n";
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
