// Owners of what Automation hands out, and its strings.
#pragma once
#include <windows.h>

#include <ole2.h>

#include <string>
#include <utility>

namespace pixkit::com {

// A counted reference to an interface, released with this.
template <class Interface>
class ComPtr {
  public:
    ComPtr() = default;
    ~ComPtr() { reset(); }
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;
    ComPtr(ComPtr&& other) noexcept : m_pointer(other.detach()) {}

    Interface* get() const noexcept { return m_pointer; }
    Interface* operator->() const noexcept { return m_pointer; }
    explicit operator bool() const noexcept { return m_pointer != nullptr; }
    // Where a function stores a reference that becomes this one's own.
    Interface** put() noexcept {
        reset();
        return &m_pointer;
    }
    void** putVoid() noexcept { return reinterpret_cast<void**>(put()); }
    Interface* detach() noexcept { return std::exchange(m_pointer, nullptr); }
    void reset() noexcept {
        if (Interface* const released = detach()) released->Release();
    }
    // Becomes a reference of its own to an object that somebody else holds; null stays null.
    void hold(Interface* object) noexcept {
        if (object != nullptr) object->AddRef();
        reset();
        m_pointer = object;
    }

  private:
    Interface* m_pointer = nullptr;
};

// An interface of somebody's object, which the caller owns. Null where the object has none, whatever it stores then,
// and for one that says it has an interface of which nobody else has ever heard: it says so of any, and what it gives
// for this one is none.
void* queried(IUnknown* object, REFIID id) noexcept;
template <class Interface>
ComPtr<Interface> interfaceOf(IUnknown* object, REFIID id = __uuidof(Interface)) noexcept {
    ComPtr<Interface> found;
    *found.put() = static_cast<Interface*>(queried(object, id));
    return found;
}

// A VARIANT that clears what it holds.
class Variant : public VARIANT {
  public:
    Variant() noexcept : VARIANT{} {}
    ~Variant() {
        if (vt != VT_EMPTY) ::VariantClear(this);
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;

    // Hands the value over and becomes Empty.
    VARIANT detach() noexcept {
        const VARIANT value = *this;
        vt = VT_EMPTY;
        return value;
    }
};

// The value behind variables: hosts pass references to a VARIANT, and a procedure that passes on what it got by
// reference a reference to that. Null where one leads nowhere; after eight of them, the value as it is.
VARIANT* unwrapped(VARIANT* value) noexcept;

// UTF-8 of a string, up to its first NUL as all callers of system functions have it; a null BSTR is an empty string.
// May throw std::bad_alloc.
std::string toUtf8(const wchar_t* text);
// UTF-8 of all of a string, its NULs too, which for text that is drawn are control characters like others.
std::string allToUtf8(BSTR text);
// The same of the name of a file, which is refused, not changed, where it is not UTF-16.
std::string nameToUtf8(const wchar_t* name);

// Null for what is not UTF-8. May throw std::bad_alloc.
BSTR toBstr(const std::string& utf8);

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
