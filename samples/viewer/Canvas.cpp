#include "Canvas.h"
#include <algorithm>

namespace viewer {

namespace {

// A device context in which an image is selected for as long as this lives.
class SelectedSheet {
  public:
    explicit SelectedSheet(const Sheet& sheet) : m_sheet(sheet) {
        LONG_PTR dc = 0;
        m_sheet->LoadDIBinDC(VARIANT_TRUE, &dc);
        m_dc = reinterpret_cast<HDC>(dc);
    }
    SelectedSheet(const SelectedSheet&) = delete;
    SelectedSheet& operator=(const SelectedSheet&) = delete;
    ~SelectedSheet() {
        LONG_PTR ignored = 0;
        m_sheet->LoadDIBinDC(VARIANT_FALSE, &ignored);
    }
    operator HDC() const { return m_dc; }

  private:
    const Sheet& m_sheet;
    HDC m_dc = nullptr;
};

constexpr int square = 8; // side of the squares behind the picture at 96 dots per inch

} // namespace

Canvas::Canvas() {
    m_frame->put_ManageOwnDC(VARIANT_TRUE); // it is needed for every picture
    setDpi(96);
}

Canvas::~Canvas() {
    DeleteObject(m_font);
}

void Canvas::setDpi(int dpi) {
    m_dpi = dpi;
    NONCLIENTMETRICSW metrics{};
    // Newer systems know a longer record, which older ones refuse.
    metrics.cbSize = offsetof(NONCLIENTMETRICSW, lfMessageFont) + sizeof metrics.lfMessageFont;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0);
    metrics.lfMessageFont.lfHeight = -scaled(12);
    DeleteObject(m_font);
    m_font = CreateFontIndirectW(&metrics.lfMessageFont);
    // One tile of the pattern, two squares wide and high.
    m_board.ask(&_cPixSheet::InitializeDIB, 2 * scaled(square), 2 * scaled(square));
    m_board.ask(&_cPixSheet::CreateCheckerBoard, scaled(square), 0xFFFFFF, 0xC0C0C0);
}

bool Canvas::resize(long width, long height) {
    m_width = width;
    m_height = height;
    return m_frame.ask(&_cPixSheet::InitializeDIB, std::max(width, 1L), std::max(height, 1L));
}

bool Canvas::draw(const Sheet& picture, const View& view) {
    if (m_width <= 0 || m_height <= 0) return true; // not shown yet
    {
        const SelectedSheet dc(m_frame);
        const RECT all = {0, 0, m_width, m_height};
        FillRect(dc, &all, GetSysColorBrush(COLOR_APPWORKSPACE));
    }
    if (picture.isEmpty()) return true;
    const RECT place = view.place();
    if (picture.get(&_cPixSheet::get_Alpha) != AlphaNone) drawBoard(place);
    // Enlarged pixels are shown as they are.
    picture->put_HighQualityInterpolation(view.zoom() < 1 ? VARIANT_TRUE : VARIANT_FALSE);
    return picture.drawOnto(m_frame, place);
}

void Canvas::drawBoard(const RECT& place) const {
    const RECT window = {0, 0, m_width, m_height};
    RECT visible;
    if (!IntersectRect(&visible, &place, &window)) return;
    // The first square begins in the picture's corner, wherever that is.
    const LONG tile = m_board.width();
    _cPixSheet* target = m_frame.operator->();
    m_board.ask(&_cPixSheet::TileImage, LONG_PTR{0}, visible.left, visible.top, visible.right - visible.left,
                visible.bottom - visible.top, 100, (place.left - visible.left) % tile, (place.top - visible.top) % tile,
                0, &target);
}

void Canvas::drawMessage(const std::wstring& text) const {
    const SelectedSheet dc(m_frame);
    const HGDIOBJ before = SelectObject(dc, m_font);
    RECT strip = {scaled(8), 0, m_width - scaled(8), 0};
    constexpr UINT format = DT_WORDBREAK | DT_NOPREFIX;
    DrawTextW(dc, text.c_str(), -1, &strip, format | DT_CALCRECT);
    const RECT back = {0, m_height - strip.bottom - scaled(8), m_width, m_height};
    FillRect(dc, &back, GetSysColorBrush(COLOR_INFOBK));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_INFOTEXT));
    OffsetRect(&strip, 0, back.top + scaled(4));
    DrawTextW(dc, text.c_str(), -1, &strip, format);
    SelectObject(dc, before);
}

void Canvas::drawPanel(const std::wstring& text) const {
    const SelectedSheet dc(m_frame);
    const HGDIOBJ before = SelectObject(dc, m_font);
    // Tabs are counted in characters of average width.
    DRAWTEXTPARAMS tabs = {sizeof tabs, 24, 0, 0, 0};
    constexpr UINT format = DT_EXPANDTABS | DT_TABSTOP | DT_NOPREFIX;
    std::wstring lines = text; // the function may write to it
    RECT extent = {};
    DrawTextExW(dc, lines.data(), -1, &extent, format | DT_CALCRECT, &tabs);
    OffsetRect(&extent, std::max(scaled(12), static_cast<int>(m_width - extent.right) / 2),
               std::max(scaled(12), static_cast<int>(m_height - extent.bottom) / 2));
    RECT back = extent;
    InflateRect(&back, scaled(12), scaled(12));
    FillRect(dc, &back, GetSysColorBrush(COLOR_INFOBK));
    FrameRect(dc, &back, GetSysColorBrush(COLOR_INFOTEXT));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_INFOTEXT));
    DrawTextExW(dc, lines.data(), -1, &extent, format, &tabs);
    SelectObject(dc, before);
}

void Canvas::paint(HDC target, const RECT& part) const {
    const SelectedSheet dc(m_frame);
    BitBlt(target, part.left, part.top, part.right - part.left, part.bottom - part.top, dc, part.left, part.top,
           SRCCOPY);
}

} // namespace viewer
// SPDX-License-Identifier: MIT
