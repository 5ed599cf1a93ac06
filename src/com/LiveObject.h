// Which objects of this DLL there are. Whether an object is one of them is not asked of the object, which may say
// anything, but looked up: neither somebody else's implementation, nor a proxy, nor an object of another copy of the
// DLL is ever taken for one.
#pragma once
#include "pixkit_com.h"

namespace pixkit::com {

// Lists an object for as long as it lives.
class LiveObject {
  public:
    explicit LiveObject(_cPixSheet* object); // may throw std::bad_alloc
    ~LiveObject();
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;

    static bool isOne(_cPixSheet* object) noexcept;

  private:
    _cPixSheet* m_object;
};

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
