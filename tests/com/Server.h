// What the tests of the component share: the DLL loaded as a program without registration loads it, and late-bound
// calls in the forms in which scripts make them.
#pragma once
#include "com/Automation.h"
#include "pixkit_com.h"
#include <filesystem>
#include <gtest/gtest.h>
#include <ocidl.h>
#include <utility>
#include <vector>

namespace pixkit::test {

using com::ComPtr;
using com::Variant;

inline std::filesystem::path programFolder() {
    wchar_t path[MAX_PATH];
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path();
}

// pixkit.dll, by default the one beside the test program.
class Server {
  public:
    explicit Server(const std::filesystem::path& dll = programFolder() / "pixkit.dll")
        : m_module(::LoadLibraryW(dll.c_str())) {
        EXPECT_NE(m_module, nullptr) << dll;
    }
    ~Server() {
        if (m_module != nullptr) ::FreeLibrary(m_module);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    HMODULE module() const { return m_module; }

    template <class Function>
    Function* entry(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(m_module, name)));
    }
    HRESULT plain(const char* name) const { return entry<HRESULT WINAPI()>(name)(); }
    HRESULT getClassObject(REFCLSID id, REFIID interfaceId, void** object) const {
        return entry<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject")(id, interfaceId, object);
    }
    _cPixSheet* create() const {
        ComPtr<IClassFactory> factory;
        _cPixSheet* sheet = nullptr;
        if (SUCCEEDED(getClassObject(CLSID_cPixSheet, IID_IClassFactory, factory.putVoid())))
            factory->CreateInstance(nullptr, IID__cPixSheet, reinterpret_cast<void**>(&sheet));
        return sheet;
    }

  private:
    HMODULE m_module;
};

// An initialised apartment, the DLL and one object.
class ComTest : public testing::Test {
  protected:
    ComTest() {
        ::CoInitialize(nullptr);
        *sheet.put() = server.create();
    }
    ~ComTest() override {
        sheet.reset();
        EXPECT_EQ(server.plain("DllCanUnloadNow"), S_OK) << "something still holds the DLL";
        ::CoUninitialize();
    }
    void SetUp() override { ASSERT_TRUE(sheet); }

    bool makeImage(LONG width, LONG height) {
        VARIANT_BOOL made = VARIANT_FALSE;
        return sheet->InitializeDIB(width, height, &made) == S_OK && made == VARIANT_TRUE;
    }
    LONG pixel(LONG x, LONG y) {
        LONG color = 0;
        sheet->GetPixel(x, y, nullptr, nullptr, &color);
        return color;
    }
    void setPixel(LONG x, LONG y, LONG color) {
        LONG_PTR address = 0;
        sheet->SetPixel(x, y, color, 255, VARIANT_FALSE, &address);
    }

    Server server;
    ComPtr<_cPixSheet> sheet;
};

inline VARIANT number(LONG value) {
    VARIANT v;
    v.vt = VT_I4;
    v.lVal = value;
    return v;
}
inline VARIANT real(double value) {
    VARIANT v;
    v.vt = VT_R8;
    v.dblVal = value;
    return v;
}
inline VARIANT text(const wchar_t* value) { // the call's own; tests are short enough not to free it
    VARIANT v;
    v.vt = VT_BSTR;
    v.bstrVal = ::SysAllocString(value);
    return v;
}
inline VARIANT object(IDispatch* value) {
    VARIANT v;
    v.vt = VT_DISPATCH;
    v.pdispVal = value;
    return v;
}
inline VARIANT missing() {
    VARIANT v;
    v.vt = VT_ERROR;
    v.scode = DISP_E_PARAMNOTFOUND;
    return v;
}
inline VARIANT typed(VARTYPE type, void* place) { // VT_BYREF values of one type
    VARIANT v;
    v.vt = static_cast<VARTYPE>(VT_BYREF | type);
    v.byref = place;
    return v;
}
inline VARIANT variable(VARIANT& value) { // how scripts pass their variables
    return typed(VT_VARIANT, &value);
}
inline VARIANT arrayValue(VARTYPE element, SAFEARRAY* array) {
    VARIANT v;
    v.vt = static_cast<VARTYPE>(VT_ARRAY | element);
    v.parray = array;
    return v;
}

struct Named {
    const wchar_t* name;
    VARIANT value;
};

// Positional arguments in order, then named ones.
inline HRESULT call(IDispatch* target, const wchar_t* member, std::vector<VARIANT> positional = {},
                    VARIANT* result = nullptr, std::vector<Named> named = {}, UINT* argumentError = nullptr,
                    WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
    std::vector<wchar_t*> names = {const_cast<wchar_t*>(member)};
    std::vector<VARIANT> values;
    for (const Named& argument : named) {
        names.push_back(const_cast<wchar_t*>(argument.name));
        values.push_back(argument.value);
    }
    std::vector<DISPID> ids(names.size());
    const HRESULT found =
        target->GetIDsOfNames(GUID{}, names.data(), static_cast<UINT>(names.size()), LOCALE_USER_DEFAULT, ids.data());
    if (FAILED(found)) return found;
    values.insert(values.end(), positional.rbegin(), positional.rend());
    DISPID propertyPut = DISPID_PROPERTYPUT;
    const bool isPut = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    DISPPARAMS arguments{values.data(), isPut ? &propertyPut : ids.data() + 1, static_cast<UINT>(values.size()),
                         isPut ? 1 : static_cast<UINT>(named.size())};
    return target->Invoke(ids[0], GUID{}, LOCALE_USER_DEFAULT, flags, &arguments, result, nullptr, argumentError);
}
inline HRESULT put(IDispatch* target, const wchar_t* member, VARIANT value, WORD flags = DISPATCH_PROPERTYPUT) {
    return call(target, member, {value}, nullptr, {}, nullptr, flags);
}

// An array of bytes that belongs to the test.
class Bytes {
  public:
    explicit Bytes(ULONG count, LONG lower = 0, VARTYPE type = VT_UI1) {
        SAFEARRAYBOUND bound;
        bound.cElements = count;
        bound.lLbound = lower;
        array = ::SafeArrayCreate(type, 1, &bound);
    }
    explicit Bytes(const std::vector<std::uint8_t>& bytes, LONG lower = 0)
        : Bytes(static_cast<ULONG>(bytes.size()), lower) {
        std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(array->pvData));
    }
    Bytes() = default;
    ~Bytes() {
        if (array != nullptr) {
            EXPECT_EQ(::SafeArrayDestroy(array), S_OK) << "still locked";
        }
    }
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;

    SAFEARRAY* array = nullptr;
};

// Bounds of an array, first dimension first: {lower, upper}.
inline std::vector<std::pair<LONG, LONG>> boundsOf(SAFEARRAY* array) {
    std::vector<std::pair<LONG, LONG>> bounds;
    for (UINT i = 1; array != nullptr && i <= ::SafeArrayGetDim(array); ++i) {
        LONG lower = 0, upper = 0;
        ::SafeArrayGetLBound(array, i, &lower);
        ::SafeArrayGetUBound(array, i, &upper);
        bounds.emplace_back(lower, upper);
    }
    return bounds;
}

inline std::size_t elementCount(SAFEARRAY* array) {
    std::size_t count = array->pvData == nullptr ? 0 : 1;
    for (const auto& [lower, upper] : boundsOf(array))
        count *= static_cast<std::size_t>(upper - lower + 1);
    return count;
}

inline std::vector<std::uint8_t> contentOf(SAFEARRAY* array) {
    if (array == nullptr) return {};
    std::size_t size = 1;
    for (const auto& [lower, upper] : boundsOf(array))
        size *= static_cast<std::size_t>(upper - lower + 1);
    const auto* const data = static_cast<std::uint8_t*>(array->pvData);
    return {data, data + size};
}

} // namespace pixkit::test
