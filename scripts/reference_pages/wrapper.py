# SPDX-License-Identifier: MIT
"""The header with which C++ programs use the component as other languages do: written from the interface, at each build."""

# Of each type in Basic: what a caller passes, what a member returns.
PASSED = {"Long": "long", "Boolean": "bool", "Single": "float", "Double": "double", "Byte": "unsigned char", "LongPtr": "LONG_PTR",
          "String": "const std::wstring&", "Variant": "const Value&"}
RETURNED = {**PASSED, "String": "std::wstring", "Variant": "Value", "cPixSheet": "Sheet", "StdPicture": "Pointer<IPictureDisp>"}
# What a member stores something in. Objects are those of the caller's, which a member may replace; arrays, too.
CHANGED = {"Long": "long&", "Boolean": "bool&", "LongPtr": "LONG_PTR&", "Variant": "Value&", "cPixSheet": "Sheet&",
           "StdPicture": "Pointer<IPictureDisp>&", "StdFont": "Pointer<IFontDisp>&"}


def declared(argument, interface):
    """The argument as the wrapper's member has it."""
    kind = argument.type
    if argument.any_number:
        return f"const Values& {argument.name} = {{}}"
    if kind.endswith("()"):
        return f"Array& {argument.name}"
    if kind == "Object":
        return f"IDispatch* {argument.name}" + (" = nullptr" if argument.optional else "")
    if argument.comes_back:
        word = CHANGED[kind]
        return f"{word.rstrip('&')}* {argument.name} = nullptr" if argument.optional else f"{word} {argument.name}"
    word = kind if kind in interface.enumerations else PASSED[kind]
    default = {"False": "false", "True": "true", '""': "{}"}.get(argument.default, argument.default)
    if default == str(-2**31):
        default = "LONG_MIN"  # the literal itself would be too large
    return f"{word} {argument.name}" + (f" = {default}" if argument.optional else "")


def passed(argument):
    """How it goes to the interface, what stands before the call, and what after it."""
    name, kind = argument.name, argument.type
    if argument.any_number:
        return f"&own_{name}.place", [f"VariantList own_{name}({name});"], []
    if kind.endswith("()"):
        return f"&{name}.place", [], []
    if kind == "Variant" and not argument.comes_back or kind == "Object":
        return name, [], []
    if kind == "String":
        return f"own_{name}.text", [f"const SystemString own_{name}({name});"], []
    if kind == "Boolean" and not argument.comes_back:
        return f"fromBool({name})", [], []
    if not argument.comes_back:
        return name, [], []
    if kind == "Boolean":  # 16 bits there
        return (f"&own_{name}", [f"VARIANT_BOOL own_{name} = fromBool({name} != nullptr && *{name});"],
                [f"if ({name} != nullptr) *{name} = own_{name} != VARIANT_FALSE;"])
    if kind in ("cPixSheet", "StdPicture", "StdFont"):
        return (f"{name} != nullptr ? {name}->place() : nullptr" if argument.optional else f"{name}.place()"), [], []
    return (name if argument.optional else f"&{name}"), [], []


def member(item, interface, prefix=""):
    """A member that calls the interface's, for properties get_Name."""
    words = [declared(argument, interface) for argument in item.arguments]
    before, places, after = [], [], []
    for argument in item.arguments:
        place, first, last = passed(argument)
        places.append(place)
        before += first
        after += last
    result = item.result if item.result in interface.enumerations else RETURNED[item.result] if item.result else "void"
    back = ""
    if item.result:
        raw, own, back = {
            "bool": ("VARIANT_BOOL result = VARIANT_FALSE;", "&result", "return result != VARIANT_FALSE;"),
            "std::wstring": ("SystemString result;", "&result.text", "return result.words();"),
            "Value": ("Value result;", "&result", "return result;"),
            "Sheet": ("Sheet result(nullptr);", "result.place()", "return result;"),
            "Pointer<IPictureDisp>": ("Pointer<IPictureDisp> result;", "result.place()", "return result;"),
        }.get(result, (f"{result} result{{}};", "&result", "return result;"))
        before.append(raw)
        places.append(own)
    body = [*before, f"check(object().{prefix}{item.name}({', '.join(places)}));", *after, *([back] if back else [])]
    constant = " const" if prefix == "get_" else ""
    lines = [f"    // {item.summary}.", f"    {result} {item.name}({', '.join(words)}){constant} {{"]
    return "\n".join([*lines, *(f"        {line}" for line in body), "    }"])


def setter(item, interface):
    kind = item.result
    word = kind if kind in interface.enumerations else PASSED[kind]
    value = "fromBool(value)" if kind == "Boolean" else "value"
    return f"    void {item.name}({word} value) {{ check(object().put_{item.name}({value})); }}"


def header(interface):
    members = []
    for item in interface.members.values():
        if item.kind == "method":
            members.append(member(item, interface))
            continue
        members.append(member(item, interface, "get_"))
        if item.kind == "property":
            members.append(setter(item, interface))
    return TEMPLATE.replace("@MEMBERS@", "\n".join(members))


TEMPLATE = r"""// The component for C++ programs, with names, defaults and results as other languages have them: a smart pointer to
// the object. Written from the description of the interface. What the interface refuses is thrown as a Failure;
// members that fail give their value, and LastErrorText says why. Empty objects must not be used.
//
//     pixkit_client::Sheet sheet;
//     if (!sheet.LoadPicture_File(L"a.png") || !sheet.Resize(320, 200)) throw std::runtime_error("no picture");
#pragma once
#include "pixkit_com.h"
#include <algorithm>
#include <climits>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace pixkit_client {

class Failure : public std::runtime_error {
  public:
    explicit Failure(HRESULT status)
        : std::runtime_error("the component refuses the call: " + std::to_string(status)), m_status(status) {}
    HRESULT status() const noexcept { return m_status; }

  private:
    HRESULT m_status;
};

inline void check(HRESULT status) {
    if (FAILED(status)) throw Failure(status);
}
inline VARIANT_BOOL fromBool(bool value) noexcept { return value ? VARIANT_TRUE : VARIANT_FALSE; }

// A counted reference.
template <class Interface>
class Pointer {
  public:
    Pointer() = default;
    explicit Pointer(Interface* own) noexcept : m_object(own) {}
    Pointer(const Pointer& other) noexcept : m_object(other.m_object) {
        if (m_object != nullptr) m_object->AddRef();
    }
    Pointer(Pointer&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Pointer& operator=(Pointer other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~Pointer() {
        if (m_object != nullptr) m_object->Release();
    }
    explicit operator bool() const noexcept { return m_object != nullptr; }
    Interface* get() const noexcept { return m_object; }
    Interface* operator->() const noexcept { return m_object; }
    // Where a member finds the object, and may store another, whose reference it takes over.
    Interface** place() noexcept { return &m_object; }

  private:
    Interface* m_object = nullptr;
};

// A value of any kind. What it holds is its own.
class Value : public VARIANT {
  public:
    Value() noexcept : VARIANT{} {}
    Value(long number) noexcept : VARIANT{} { vt = VT_I4, lVal = number; }
    Value(int number) noexcept : Value(static_cast<long>(number)) {}
    Value(bool truth) noexcept : VARIANT{} { vt = VT_BOOL, boolVal = fromBool(truth); }
    Value(double number) noexcept : VARIANT{} { vt = VT_R8, dblVal = number; }
    Value(const wchar_t* text) : VARIANT{} { vt = VT_BSTR, bstrVal = ::SysAllocString(text); }
    Value(IDispatch* object) noexcept : VARIANT{} {
        vt = VT_DISPATCH, pdispVal = object;
        if (object != nullptr) object->AddRef();
    }
    Value(const Value& other) : VARIANT{} { check(other.copyTo(*this)); }
    Value& operator=(const Value& other) {
        if (this != &other) check(other.copyTo(*this));
        return *this;
    }
    ~Value() { ::VariantClear(this); }
    bool isEmpty() const noexcept { return vt == VT_EMPTY; }
    // The system's declaration of the source differs between compilers in const alone.
    HRESULT copyTo(VARIANT& target) const noexcept { return ::VariantCopy(&target, const_cast<Value*>(this)); }
};
using Values = std::vector<Value>;

// An array of the system's, of what the member stores in it.
class Array {
  public:
    Array() = default;
    explicit Array(const std::vector<unsigned char>& bytes)
        : place(::SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()))) {
        if (place == nullptr) throw std::bad_alloc();
        std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(place->pvData));
    }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    ~Array() { ::SafeArrayDestroy(place); }
    std::size_t size() const noexcept {
        std::size_t count = place != nullptr ? 1 : 0;
        for (USHORT i = 0; place != nullptr && i < place->cDims; ++i)
            count *= place->rgsabound[i].cElements;
        return count;
    }
    const unsigned char* bytes() const noexcept {
        return place != nullptr ? static_cast<const unsigned char*>(place->pvData) : nullptr;
    }

    SAFEARRAY* place = nullptr;
};

// A string on its way to or from the component.
struct SystemString {
    SystemString() = default;
    explicit SystemString(const std::wstring& words)
        : text(::SysAllocStringLen(words.data(), static_cast<UINT>(words.size()))) {}
    SystemString(const SystemString&) = delete;
    SystemString& operator=(const SystemString&) = delete;
    ~SystemString() { ::SysFreeString(text); }
    std::wstring words() const { return {text != nullptr ? text : L"", ::SysStringLen(text)}; }

    BSTR text = nullptr;
};

// Any number of arguments on their way to the component.
struct VariantList {
    explicit VariantList(const Values& values)
        : place(::SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(values.size()))) {
        for (std::size_t i = 0; place != nullptr && i < values.size(); ++i)
            check(values[i].copyTo(static_cast<VARIANT*>(place->pvData)[i]));
    }
    VariantList(const VariantList&) = delete;
    VariantList& operator=(const VariantList&) = delete;
    ~VariantList() { ::SafeArrayDestroy(place); }

    SAFEARRAY* place;
};

// One image. A copy refers to the same object.
class Sheet {
  public:
    // A new object; COM must have been started on the thread.
    Sheet() {
        check(::CoCreateInstance(CLSID_cPixSheet, nullptr, CLSCTX_INPROC_SERVER, IID__cPixSheet,
                                 reinterpret_cast<void**>(m_object.place())));
    }
    // Takes over a reference; null is Nothing.
    explicit Sheet(_cPixSheet* own) noexcept : m_object(own) {}
    explicit operator bool() const noexcept { return static_cast<bool>(m_object); }
    _cPixSheet& object() const noexcept { return *m_object.get(); }
    _cPixSheet** place() noexcept { return m_object.place(); }

@MEMBERS@

  private:
    Pointer<_cPixSheet> m_object;
};

} // namespace pixkit_client
// SPDX-License-Identifier: MIT
"""
