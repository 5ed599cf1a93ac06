// Uniscribe lays out, because what it measures is what it draws; GDI's own measure of a text is another than that of
// the ClearType glyphs that it draws.
//
// Coverage comes from white text on black with ClearType: the mean of its three channels is linear, while the
// antialiasing without it goes through a curve that is made for black on white. A font that is not to be smoothed stays
// so.
#include "platform/win32/text/GdiFont.h"
#include "platform/faults.h"
#include <algorithm>
#include <cmath>
#include <mutex>
#include <string>

namespace pixkit::platform {

namespace {

// The coverage that a pixel of white text on black stands for. Most have none.
std::uint8_t meanOfChannels(std::uint32_t pixel) noexcept {
    if (pixel == 0) return 0;
    return static_cast<std::uint8_t>(((pixel & 0xFF) + (pixel >> 8 & 0xFF) + (pixel >> 16 & 0xFF) + 1) / 3);
}

// UTF-16 of code points. Throws std::bad_alloc.
std::wstring unitsOf(std::u32string_view text) {
    std::wstring units;
    units.reserve(text.size());
    for (const char32_t character : text) {
        if (character > 0xFFFF) {
            units += static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
            units += static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
        } else {
            units += static_cast<wchar_t>(character);
        }
    }
    return units;
}

// Pixels, far beyond what anybody sees: the widths of long lines stay within 32 bits, and the system, which may make a
// bitmap of each glyph, finds memory for it. There are systems that do not survive where it finds none.
constexpr LONG longestSide = 16'384;

// What glyphs may reach from their places. No glyph of the font is wider than the widest; marks stack above and below
// letters, and the fonts that stand in for it in other scripts may be higher: a line's height more leaves room for
// both.
Rect glyphBoxOf(const TEXTMETRICW& metrics) noexcept {
    const auto height = static_cast<std::int32_t>(metrics.tmHeight);
    const std::int32_t beside = std::max<std::int32_t>(height, metrics.tmMaxCharWidth);
    return {-beside, -metrics.tmAscent - height, beside, metrics.tmDescent + height};
}

} // namespace

GdiLine::~GdiLine() {
    if (m_analysis == nullptr) return;
    const std::scoped_lock lock(uniscribeInUse());
    m_api.ScriptStringFree(&m_analysis);
}

bool GdiLine::analyse(HDC dc, std::wstring_view units, bool isRightToLeft) noexcept {
    SCRIPT_CONTROL control{};
    SCRIPT_STATE state{};
    state.uBidiLevel = isRightToLeft ? 1 : 0;
    const DWORD flags = SSA_GLYPHS | SSA_FALLBACK | SSA_LINK | SSA_BREAK | (isRightToLeft ? DWORD{SSA_RTL} : 0U);
    const int count = static_cast<int>(units.size());
    const int roomForGlyphs = count * 3 / 2 + 16; // as much as the system's documentation asks for
    const std::scoped_lock lock(uniscribeInUse());
    return SUCCEEDED(m_api.ScriptStringAnalyse(dc, units.data(), count, roomForGlyphs, -1, flags, 0, &control, &state,
                                               nullptr, nullptr, nullptr, &m_analysis));
}

bool GdiLine::measure(std::u32string_view text, std::wstring_view units, const Rect& glyphBox) {
    std::vector<int> widths(units.size());
    const std::scoped_lock lock(uniscribeInUse());
    const SIZE* const size = m_api.ScriptString_pSize(m_analysis);
    const SCRIPT_LOGATTR* const attributes = m_api.ScriptString_pLogAttr(m_analysis);
    if (size == nullptr || attributes == nullptr) return false;
    if (FAILED(m_api.ScriptStringGetLogicalWidths(m_analysis, widths.data()))) return false;
    if (size->cx < 0) return false;
    m_width = size->cx;
    m_ink = {glyphBox.left, glyphBox.top, m_width + glyphBox.right, glyphBox.bottom};
    m_characters.reserve(text.size());
    std::size_t unit = 0;
    for (const char32_t character : text) {
        const bool canBreak = attributes[unit].fSoftBreak, isStart = attributes[unit].fCharStop;
        int advance = widths[unit++];
        if (character > 0xFFFF) advance += widths[unit++];
        m_characters.push_back({advance, canBreak, isStart});
    }
    return true;
}

bool GdiLine::draw(const PlacedLine& at) const noexcept {
    return SUCCEEDED(m_api.ScriptStringOut(m_analysis, at.x, at.y, 0, nullptr, 0, 0, FALSE));
}

std::unique_ptr<GdiFont> GdiFont::open(HFONT font) {
    const Uniscribe* const api = uniscribe();
    if (api == nullptr) return nullptr;
    std::unique_ptr<GdiFont> opened(new GdiFont(*api));
    return opened->select(font) ? std::move(opened) : nullptr;
}

bool GdiFont::select(HFONT font) noexcept {
    LOGFONTW record{};
    if (::GetObjectType(font) != OBJ_FONT || ::GetObjectW(font, sizeof record, &record) == 0) return false;
    record.lfEscapement = record.lfOrientation = 0;
    if (record.lfQuality != NONANTIALIASED_QUALITY) record.lfQuality = CLEARTYPE_QUALITY;
    m_font.reset(reinterpret_cast<Handle>(::CreateFontIndirectW(&record)));
    m_dc.reset(CreateCompatibleDC(0));
    if (!m_font || !m_dc || ::SelectObject(dc(), reinterpret_cast<HFONT>(m_font.get())) == nullptr) return false;
    TEXTMETRICW metrics{};
    if (::GetTextMetricsW(dc(), &metrics) == FALSE || metrics.tmHeight > longestSide ||
        metrics.tmMaxCharWidth > longestSide)
        return false;
    ::SetTextAlign(dc(), TA_BASELINE | TA_LEFT);
    ::SetBkMode(dc(), TRANSPARENT);
    ::SetTextColor(dc(), RGB(255, 255, 255));
    m_metrics = {.ascent = metrics.tmAscent,
                 .descent = metrics.tmDescent,
                 .averageWidth = metrics.tmAveCharWidth,
                 .isScalable = (metrics.tmPitchAndFamily & (TMPF_VECTOR | TMPF_TRUETYPE)) != 0};
    m_glyphBox = glyphBoxOf(metrics);
    return true;
}

std::unique_ptr<TextLine> GdiFont::layOut(std::u32string_view text, bool isRightToLeft) noexcept {
    if (text.empty() || text.size() > longestLine || faultDue(SeamCall::layOutText)) return nullptr;
    try {
        const std::wstring units = unitsOf(text);
        auto line = std::make_unique<GdiLine>(m_api);
        if (!line->analyse(dc(), units, isRightToLeft)) return nullptr;
        return line->measure(text, units, m_glyphBox) ? std::move(line) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool GdiFont::setTurn(const TextTurn& turn) noexcept {
    if (turn.cosine == 1) // no need for a mode in which the system draws with more care and more slowly
        return ::SetViewportOrgEx(dc(), static_cast<int>(turn.x), static_cast<int>(turn.y), nullptr) != FALSE;
    if (::SetGraphicsMode(dc(), GM_ADVANCED) == 0) return false;
    const auto number = [](double value) { return static_cast<FLOAT>(value); };
    const XFORM form = {number(turn.cosine), number(turn.sine), number(-turn.sine),
                        number(turn.cosine), number(turn.x),    number(turn.y)};
    return ::SetWorldTransform(dc(), &form) != FALSE;
}

void GdiFont::endTurn() noexcept {
    ::ModifyWorldTransform(dc(), nullptr, MWT_IDENTITY);
    ::SetGraphicsMode(dc(), GM_COMPATIBLE);
    ::SetViewportOrgEx(dc(), 0, 0, nullptr);
}

bool GdiFont::drawAll(std::span<const PlacedLine> lines) const noexcept {
    const std::scoped_lock lock(uniscribeInUse());
    const bool isDrawn = std::all_of(lines.begin(), lines.end(), [](const PlacedLine& placed) {
        return static_cast<const GdiLine*>(placed.line)->draw(placed);
    });
    ::GdiFlush();
    return isDrawn;
}

bool GdiFont::draw(std::span<const PlacedLine> lines, const TextTurn& turn, std::int32_t width, std::int32_t height,
                   std::uint8_t* coverage) noexcept {
    if (faultDue(SeamCall::drawText)) return false;
    void* bits = nullptr;
    const UniqueHandle<&DeleteObject> bitmap(
        CreateDIBSection(0, {.biWidth = width, .biHeight = -height}, &bits)); // which is black
    const Handle before = bitmap ? SelectObject(m_dc.get(), bitmap.get()) : 0;
    if (before == 0) return false;
    // Lines were measured unturned; the turn is only for drawing.
    const bool isDrawn = setTurn(turn) && drawAll(lines);
    endTurn();
    ::SelectObject(dc(), reinterpret_cast<HGDIOBJ>(before));
    const auto* const pixels = static_cast<const std::uint32_t*>(bits);
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::transform(pixels, pixels + count, coverage, meanOfChannels);
    return isDrawn;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
