// The viewer's window: what keys, mouse, menu and drops do to the picture and to how it is seen.
#pragma once
#include "Canvas.h"
#include "Picture.h"
#include "View.h"

namespace viewer {

class ViewerWindow {
  public:
    // Registers the class of windows and creates one; handle() is null on failure.
    explicit ViewerWindow(HINSTANCE program);
    ViewerWindow(const ViewerWindow&) = delete;
    ViewerWindow& operator=(const ViewerWindow&) = delete;

    HWND handle() const { return m_window; }
    void open(const std::wstring& file);

  private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM longer);
    LRESULT answer(UINT message, WPARAM wide, LPARAM longer);
    void runCommand(int command);

    void askAndOpen();
    void askAndSave();
    void showShape();

    void resize();
    void changeDpi(int dpi, const RECT& suggested);
    void drag(POINT to);
    void turnWheel(int delta, POINT about);

    // What follows a change: of the picture, of how it is turned, of how it is seen.
    void showNew();
    void showChanged();
    void redraw();
    void setTitle() const;
    void paint() const;
    void markMenu(HMENU menu) const;

    HWND m_window = nullptr;
    Picture m_picture;
    View m_view;
    Canvas m_canvas;
    bool m_isHelpShown = false, m_isDragged = false;
    POINT m_dragged = {};
    int m_wheel = 0; // what fine wheels have turned towards the next step
};

} // namespace viewer
// SPDX-License-Identifier: MIT
