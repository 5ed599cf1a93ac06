#include "ViewerWindow.h"
#include "ShapeWindow.h"
#include "commands.h"
#include "dialogs.h"
#include <cmath>
#include <windowsx.h>

#ifndef WM_DPICHANGED // newer than the oldest system that the viewer runs on
#define WM_DPICHANGED 0x02E0
#endif

namespace viewer {

namespace {

constexpr wchar_t class_name[] = L"pixkit viewer";

constexpr wchar_t help[] = L"Ctrl+O, or drop a file\topen\n"
                           L"Ctrl+S\tsave as it is shown: PNG, BMP, GIF, JPEG, TGA, icon\n"
                           L"Ctrl+C, Ctrl+V\tcopy, paste a picture or files\n"
                           L"Page Down, Page Up\tnext, previous file of the folder\n"
                           L"+, -, wheel\tzoom, the wheel about the pointer\n"
                           L"0, F\tactual size, fit into the window\n"
                           L"arrows, drag\tscroll\n"
                           L"R, Shift+R\tturn right, left (with Ctrl by 5 degrees)\n"
                           L"M, Shift+M\tmirror left and right, top and bottom\n"
                           L"G\tgrayscale\n"
                           L"S\tonly the picture's shape on the desktop (S or Esc ends it)\n"
                           L"F1\tthese keys";

} // namespace

ViewerWindow::ViewerWindow(HINSTANCE program) {
    WNDCLASSEXW kind{};
    kind.cbSize = sizeof kind;
    kind.lpfnWndProc = procedure;
    kind.hInstance = program;
    kind.hIcon = LoadIcon(nullptr, IDI_APPLICATION);
    kind.hCursor = LoadCursor(nullptr, IDC_ARROW);
    kind.lpszMenuName = MAKEINTRESOURCEW(VIEWER_RESOURCES);
    kind.lpszClassName = class_name;
    RegisterClassExW(&kind);
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    m_canvas.setDpi(dpi);
    CreateWindowExW(WS_EX_ACCEPTFILES, class_name, class_name, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                    MulDiv(640, dpi, 96), MulDiv(520, dpi, 96), nullptr, nullptr, program, this);
}

void ViewerWindow::open(const std::wstring& file) {
    m_picture.open(file);
    showNew();
}

LRESULT CALLBACK ViewerWindow::procedure(HWND window, UINT message, WPARAM wide, LPARAM longer) {
    if (message == WM_NCCREATE) {
        auto* self = static_cast<ViewerWindow*>(reinterpret_cast<CREATESTRUCTW*>(longer)->lpCreateParams);
        self->m_window = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<ViewerWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return self != nullptr ? self->answer(message, wide, longer) : DefWindowProcW(window, message, wide, longer);
}

LRESULT ViewerWindow::answer(UINT message, WPARAM wide, LPARAM longer) {
    const POINT point = {GET_X_LPARAM(longer), GET_Y_LPARAM(longer)};
    switch (message) {
    case WM_COMMAND:
        runCommand(LOWORD(wide));
        return 0;
    case WM_INITMENUPOPUP:
        markMenu(reinterpret_cast<HMENU>(wide));
        return 0;
    case WM_SIZE:
        resize();
        return 0;
    case WM_DPICHANGED:
        changeDpi(HIWORD(wide), *reinterpret_cast<const RECT*>(longer));
        return 0;
    case WM_SYSCOLORCHANGE:
        redraw();
        return 0;
    case WM_ERASEBKGND:
        return 1; // the picture of the window covers all of it
    case WM_PAINT:
        paint();
        return 0;
    case WM_DROPFILES:
        m_picture.drop(reinterpret_cast<HDROP>(wide));
        DragFinish(reinterpret_cast<HDROP>(wide));
        showNew();
        return 0;
    case WM_MOUSEWHEEL:
        turnWheel(GET_WHEEL_DELTA_WPARAM(wide), point);
        return 0;
    case WM_LBUTTONDOWN:
        m_isDragged = true;
        m_dragged = point;
        SetCapture(m_window);
        return 0;
    case WM_MOUSEMOVE:
        drag(point);
        return 0;
    case WM_LBUTTONUP:
        ReleaseCapture();
        return 0;
    case WM_CAPTURECHANGED:
        m_isDragged = false;
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(m_window, message, wide, longer);
    }
}

void ViewerWindow::runCommand(int command) {
    constexpr long step = 48; // pixels that an arrow scrolls
    const auto scroll = [&](long x, long y) {
        m_view.scroll(x, y);
        redraw();
    };
    const auto zoomBy = [&](int steps) {
        m_view.zoomBy(steps, m_view.middle());
        redraw();
    };
    const auto turn = [&](int degrees) {
        m_picture.turn(degrees);
        showChanged();
    };
    const auto mirror = [&](bool leftAndRight) {
        m_picture.mirror(leftAndRight);
        showChanged();
    };
    switch (command) {
    case COMMAND_OPEN:
        askAndOpen();
        break;
    case COMMAND_SAVE:
        askAndSave();
        break;
    case COMMAND_NEXT:
        m_picture.openNeighbour(1);
        showNew();
        break;
    case COMMAND_PREVIOUS:
        m_picture.openNeighbour(-1);
        showNew();
        break;
    case COMMAND_EXIT:
        DestroyWindow(m_window);
        break;
    case COMMAND_COPY:
        m_picture.copy();
        redraw();
        break;
    case COMMAND_PASTE:
        m_picture.paste();
        showNew();
        break;
    case COMMAND_ZOOM_IN:
        zoomBy(1);
        break;
    case COMMAND_ZOOM_OUT:
        zoomBy(-1);
        break;
    case COMMAND_ACTUAL_SIZE:
        m_view.zoomTo(1, m_view.middle());
        redraw();
        break;
    case COMMAND_FIT:
        m_view.fit();
        redraw();
        break;
    case COMMAND_LEFT:
        scroll(step, 0);
        break;
    case COMMAND_RIGHT:
        scroll(-step, 0);
        break;
    case COMMAND_UP:
        scroll(0, step);
        break;
    case COMMAND_DOWN:
        scroll(0, -step);
        break;
    case COMMAND_TURN_RIGHT:
        turn(90);
        break;
    case COMMAND_TURN_LEFT:
        turn(-90);
        break;
    case COMMAND_TILT_RIGHT:
        turn(5);
        break;
    case COMMAND_TILT_LEFT:
        turn(-5);
        break;
    case COMMAND_MIRROR_ACROSS:
        mirror(true);
        break;
    case COMMAND_MIRROR_DOWN:
        mirror(false);
        break;
    case COMMAND_GRAYSCALE:
        m_picture.toggleGrayscale();
        showChanged();
        break;
    case COMMAND_SHAPE:
        showShape();
        break;
    case COMMAND_HELP:
        m_isHelpShown = !m_isHelpShown;
        redraw();
        break;
    default:
        break;
    }
}

void ViewerWindow::askAndOpen() {
    const std::wstring file = askForFileToOpen(m_window);
    if (!file.empty()) open(file);
}

void ViewerWindow::askAndSave() {
    if (m_picture.isEmpty()) {
        m_picture.fail(L"there is no picture to save");
    } else {
        const std::wstring file = askForFileToSave(m_window, m_picture.name());
        if (!file.empty()) m_picture.save(file);
    }
    redraw();
}

void ViewerWindow::showShape() {
    POINT corner = {m_view.place().left, m_view.place().top};
    ClientToScreen(m_window, &corner);
    const std::wstring problem = showShapeWindow(m_window, m_picture.shown(), corner, m_view.zoom());
    if (!problem.empty()) m_picture.fail(L"cannot show the shape: " + problem);
    redraw();
}

void ViewerWindow::resize() {
    RECT client;
    GetClientRect(m_window, &client);
    if (IsIconic(m_window)) return;
    m_view.setWindow(client.right, client.bottom);
    m_canvas.resize(client.right, client.bottom);
    redraw();
}

void ViewerWindow::changeDpi(int dpi, const RECT& suggested) {
    m_canvas.setDpi(dpi);
    SetWindowPos(m_window, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                 suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
    redraw();
}

void ViewerWindow::drag(POINT to) {
    if (!m_isDragged) return;
    m_view.scroll(to.x - m_dragged.x, to.y - m_dragged.y);
    m_dragged = to;
    redraw();
}

void ViewerWindow::turnWheel(int delta, POINT about) {
    ScreenToClient(m_window, &about);
    m_wheel += delta;
    m_view.zoomBy(m_wheel / WHEEL_DELTA, about);
    m_wheel %= WHEEL_DELTA;
    redraw();
}

void ViewerWindow::showNew() {
    m_view.setPicture(m_picture.shown().width(), m_picture.shown().height());
    redraw();
}

void ViewerWindow::showChanged() {
    m_view.changePicture(m_picture.shown().width(), m_picture.shown().height());
    redraw();
}

void ViewerWindow::redraw() {
    if (!m_canvas.draw(m_picture.shown(), m_view)) m_picture.fail(L"cannot draw: " + m_picture.shown().lastError());
    if (m_isHelpShown) m_canvas.drawPanel(help);
    if (!m_picture.error().empty())
        m_canvas.drawMessage(m_picture.error());
    else if (m_picture.isEmpty() && !m_isHelpShown)
        m_canvas.drawMessage(L"Ctrl+O opens a picture, or drop one here. F1 shows the keys.");
    setTitle();
    InvalidateRect(m_window, nullptr, FALSE);
}

void ViewerWindow::setTitle() const {
    std::wstring title = m_picture.name();
    if (title.empty() && !m_picture.isEmpty()) title = L"pasted";
    if (!m_picture.isEmpty()) {
        title +=
            L" - " + std::to_wstring(m_picture.shown().width()) + L" x " + std::to_wstring(m_picture.shown().height());
        title += L" - " + std::to_wstring(std::lround(m_view.zoom() * 100)) + L" %";
    }
    if (!m_picture.error().empty()) title += (title.empty() ? L"" : L" - ") + m_picture.error();
    SetWindowTextW(m_window, (title + (title.empty() ? L"" : L" - ") + class_name).c_str());
}

void ViewerWindow::paint() const {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(m_window, &paint);
    m_canvas.paint(dc, paint.rcPaint);
    EndPaint(m_window, &paint);
}

void ViewerWindow::markMenu(HMENU menu) const {
    CheckMenuItem(menu, COMMAND_GRAYSCALE, m_picture.isGray() ? MF_CHECKED : MF_UNCHECKED);
    const UINT state = m_picture.isEmpty() ? MF_GRAYED : MF_ENABLED;
    for (const UINT command : {COMMAND_SAVE, COMMAND_COPY, COMMAND_SHAPE, COMMAND_FIT, COMMAND_ACTUAL_SIZE})
        EnableMenuItem(menu, command, state);
}

} // namespace viewer
// SPDX-License-Identifier: MIT
