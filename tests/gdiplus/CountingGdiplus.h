// GDI+ under watch: what is started, made and given back, in which order.
#pragma once
#include "platform/gdiplus.h"
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace pixkit::test {

// Counts what goes through a library, and holds it against the rules, which the library itself need not do.
class CountingGdiplus {
  public:
    CountingGdiplus();
    ~CountingGdiplus(); // everything was given back
    CountingGdiplus(const CountingGdiplus&) = delete;
    CountingGdiplus& operator=(const CountingGdiplus&) = delete;

    // Begins anew, with a library that nobody knows anything of.
    void reset();
    // Nothing is started, and nothing there.
    void expectGone() const;

    int startups = 0, shutdowns = 0, loads = 0, draws = 0, saves = 0; // that were asked for
    std::set<void*> objects;                                          // that are there

  private:
    platform::GdiplusApi watched();
};

// The system's library or, where there is none, a small one for tests. That one draws by nearest pixels, with opacity,
// does not turn, reads "II*\0", width and height in four bytes each, and straight pixels from the top, and writes files
// that are as long as their quality.
platform::GdiplusApi someGdiplus();
// A picture that it reads, two pixels wide and one high: half red at half its alpha, and clear.
std::vector<std::uint8_t> foreignPicture();

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
