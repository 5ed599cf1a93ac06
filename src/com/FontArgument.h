// A font object of the caller's.
#pragma once
#include "com/Automation.h"
#include "platform/gdi.h"
#include "platform/handle.h"
#include <ocidl.h>

namespace pixkit::com {

// Its font, for the length of a call: that of the system's font objects, which lends it, else one made of what the
// object tells of itself (Name, Size, Bold, Italic, Underline, Strikethrough, Weight, Charset). Both are as big as the
// screen's resolution makes them. Foreign code runs.
class FontArgument {
  public:
    // None for null, and for an object that is no font. Throws std::bad_alloc.
    explicit FontArgument(IUnknown* object);
    ~FontArgument();
    FontArgument(const FontArgument&) = delete;
    FontArgument& operator=(const FontArgument&) = delete;

    explicit operator bool() const noexcept { return handle() != 0; }
    platform::Handle handle() const noexcept {
        return m_lent != nullptr ? reinterpret_cast<platform::Handle>(m_lent) : m_made.get();
    }

  private:
    bool borrow(IUnknown* object) noexcept;

    ComPtr<IFont> m_lender;
    HFONT m_lent = nullptr;
    platform::UniqueHandle<&platform::DeleteObject> m_made;
};

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
