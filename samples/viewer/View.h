// Where the picture lies in the window: zoom and scrolling. Only arithmetic.
#pragma once
#include <windows.h>

namespace viewer {

class View {
  public:
    // Both sizes in pixels. A new picture is shown whole, smaller pictures at their own size.
    void setPicture(long width, long height);
    void changePicture(long width, long height); // the same one, turned: the zoom stays
    void setWindow(long width, long height);

    void fit(); // as large as the window allows, until something else is chosen
    // The picture's point under a point of the window stays there.
    void zoomTo(double zoom, POINT about);
    void zoomBy(int steps, POINT about); // up and down a ladder of round zooms
    POINT middle() const { return {m_windowWidth / 2, m_windowHeight / 2}; }
    void scroll(long x, long y); // moves the picture, but not out of the window

    double zoom() const { return m_zoom; } // screen pixels for one of the picture
    RECT place() const;                    // of the whole picture, in pixels of the window

  private:
    enum class Fitting { none, down, both };
    void refit();
    void limit();

    long m_width = 0, m_height = 0, m_windowWidth = 0, m_windowHeight = 0;
    double m_zoom = 1, m_x = 0, m_y = 0; // the picture's top left corner in the window
    Fitting m_fitting = Fitting::down;
};

} // namespace viewer
// SPDX-License-Identifier: MIT
