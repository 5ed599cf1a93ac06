#include "View.h"
#include <algorithm>
#include <cmath>
#include <iterator>

namespace viewer {

namespace {

constexpr double ladder[] = {0.01, 0.02, 0.03, 0.05, 0.07, 0.1, 0.15, 0.2, 0.25, 0.33, 0.5, 0.67,
                             1,    1.5,  2,    3,    4,    6,   8,    12,  16,   24,   32};

// Whole where it lies inside, else so that no gap opens.
double limited(double position, double extent, double window) {
    if (extent <= window) return std::floor((window - extent) / 2);
    return std::clamp(position, window - extent, 0.0);
}

} // namespace

void View::setPicture(long width, long height) {
    m_fitting = Fitting::down;
    changePicture(width, height);
}

void View::changePicture(long width, long height) {
    m_width = width;
    m_height = height;
    refit();
}

void View::setWindow(long width, long height) {
    // What was in the middle stays there.
    m_x += (width - m_windowWidth) / 2.0;
    m_y += (height - m_windowHeight) / 2.0;
    m_windowWidth = width;
    m_windowHeight = height;
    refit();
}

void View::fit() {
    m_fitting = Fitting::both;
    refit();
}

void View::refit() {
    if (m_fitting != Fitting::none && m_width > 0 && m_height > 0) {
        const double fitting = std::min(static_cast<double>(m_windowWidth) / static_cast<double>(m_width),
                                        static_cast<double>(m_windowHeight) / static_cast<double>(m_height));
        m_zoom = std::clamp(fitting, ladder[0], m_fitting == Fitting::down ? 1.0 : *std::rbegin(ladder));
    }
    limit();
}

void View::zoomTo(double zoom, POINT about) {
    m_fitting = Fitting::none;
    m_x = static_cast<double>(about.x) - (static_cast<double>(about.x) - m_x) / m_zoom * zoom;
    m_y = static_cast<double>(about.y) - (static_cast<double>(about.y) - m_y) / m_zoom * zoom;
    m_zoom = zoom;
    limit();
}

void View::zoomBy(int steps, POINT about) {
    double zoom = m_zoom;
    for (; steps > 0; --steps) {
        const double* larger = std::upper_bound(std::begin(ladder), std::end(ladder), zoom * 1.001);
        if (larger != std::end(ladder)) zoom = *larger;
    }
    for (; steps < 0; ++steps) {
        const double* notSmaller = std::lower_bound(std::begin(ladder), std::end(ladder), zoom * 0.999);
        if (notSmaller != std::begin(ladder)) zoom = *std::prev(notSmaller);
    }
    zoomTo(zoom, about);
}

void View::scroll(long x, long y) {
    m_x += static_cast<double>(x);
    m_y += static_cast<double>(y);
    limit();
}

void View::limit() {
    const RECT all = place();
    m_x = limited(m_x, static_cast<double>(all.right - all.left), static_cast<double>(m_windowWidth));
    m_y = limited(m_y, static_cast<double>(all.bottom - all.top), static_cast<double>(m_windowHeight));
}

RECT View::place() const {
    const long left = std::lround(m_x), top = std::lround(m_y);
    const long width = std::max(1L, std::lround(static_cast<double>(m_width) * m_zoom));
    const long height = std::max(1L, std::lround(static_cast<double>(m_height) * m_zoom));
    return {left, top, left + width, top + height};
}

} // namespace viewer
// SPDX-License-Identifier: MIT
