#pragma once

namespace pixkit {

// Somebody for whom GDI+, once started, stays so between calls: each instance that may use it, and the component as a
// whole while it is loaded. With the last of them it ends.
class GdiplusUser {
  public:
    GdiplusUser() noexcept;
    ~GdiplusUser();
    GdiplusUser(const GdiplusUser&) = delete;
    GdiplusUser& operator=(const GdiplusUser&) = delete;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
