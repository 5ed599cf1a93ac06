// How a C++ program holds a cPixSheet: the pointer to its early-bound interface, and calls that answer by values.
#pragma once
#include <windows.h>
// After windows.h, which it needs.
#include "pixkit_com.h"
#include <string>
#include <utility>
#include <vector>

namespace viewer {

// A text as COM passes it.
class Text {
  public:
    explicit Text(const std::wstring& text) : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { SysFreeString(m_text); }
    operator BSTR() const { return m_text; }

  private:
    BSTR m_text;
};

// COM for this thread, and the component in it: the one beside the program if its manifest is there, with no
// registration at all, else the registered one.
class Component {
  public:
    Component();
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;
    ~Component();

  private:
    HANDLE m_context = INVALID_HANDLE_VALUE;
    ULONG_PTR m_cookie = 0;
};

// One image. It can be moved, not copied: copies of pixels are asked for, by CopyImageTo.
class Sheet {
  public:
    Sheet(); // isThere() is false where there is no component
    Sheet(Sheet&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Sheet& operator=(Sheet&& other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~Sheet();

    bool isThere() const { return m_object != nullptr; }
    // Members whose answer is not needed are called as they are.
    _cPixSheet* operator->() const { return m_object; }

    // Calls a member whose last parameter is its answer: ask(&_cPixSheet::InitializeDIB, 640, 480). False when the call
    // itself fails.
    template <class... Parameters, class... Arguments>
    bool ask(HRESULT (STDMETHODCALLTYPE _cPixSheet::*member)(Parameters...), Arguments&&... arguments) const {
        VARIANT_BOOL answer = VARIANT_FALSE;
        return SUCCEEDED((m_object->*member)(arguments..., &answer)) && answer != VARIANT_FALSE;
    }
    // A property.
    template <class Value>
    Value get(HRESULT (STDMETHODCALLTYPE _cPixSheet::*member)(Value*)) const {
        Value value{};
        (m_object->*member)(&value);
        return value;
    }
    long width() const { return get(&_cPixSheet::get_Width); }
    long height() const { return get(&_cPixSheet::get_Height); }
    bool isEmpty() const { return get(&_cPixSheet::get_Handle) == 0; }

    // Draws all of the image into a rectangle of another one.
    bool drawOnto(const Sheet& host, const RECT& place) const;
    // Writes a file of the format that its extension names. Empty, or why that failed.
    std::wstring save(const std::wstring& file) const;
    // Why the last call failed.
    std::wstring lastError() const;

  private:
    _cPixSheet* m_object = nullptr;
};

// A handle as the component takes it in a Variant.
VARIANT handleValue(const void* handle);
// The texts of an array, which is freed.
std::vector<std::wstring> takeTexts(SAFEARRAY* array);
// The extensions that the viewer opens, in lower case: ".png".
const std::vector<std::wstring>& extensions();
// That of a file, in lower case.
std::wstring extensionOf(const std::wstring& file);

} // namespace viewer
// SPDX-License-Identifier: MIT
