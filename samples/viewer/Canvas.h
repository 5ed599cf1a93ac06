// What the window shows, drawn into an image of the window's size first, so that nothing flickers.
#pragma once
#include "Sheet.h"
#include "View.h"

namespace viewer {

class Canvas {
  public:
    Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas();

    // Dots per inch: as many as make texts and squares readable.
    void setDpi(int dpi);
    bool resize(long width, long height);

    // Begins anew: the background, the squares behind the picture, and the picture over them. False when the picture
    // could not be drawn; its lastError() says why.
    bool draw(const Sheet& picture, const View& view);
    // A line at the lower edge, on top of what has been drawn; a panel of lines in the middle, of two columns parted by
    // a tab.
    void drawMessage(const std::wstring& text) const;
    void drawPanel(const std::wstring& text) const;

    void paint(HDC target, const RECT& part) const;

  private:
    int scaled(int pixels) const { return MulDiv(pixels, m_dpi, 96); }
    void drawBoard(const RECT& place) const;

    Sheet m_frame, m_board;
    HFONT m_font = nullptr;
    int m_dpi = 96;
    long m_width = 0, m_height = 0;
};

} // namespace viewer
// SPDX-License-Identifier: MIT
