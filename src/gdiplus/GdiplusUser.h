#pragma once

namespace pixkit {

// Somebody for whom GDI+, once started, stays so between calls: each instance that may use it, and the component as a
// whole while it is loaded. With the last of them it ends.
class GdiplusUser {
  public:
    GdiplusUser() noexcept;
    ~GdiplusUser();
    // Whoever is made of a user is another one.
    GdiplusUser(const GdiplusUser&) noexcept : GdiplusUser() {}
    GdiplusUser& operator=(const GdiplusUser&) noexcept { return *this; }
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
