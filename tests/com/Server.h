// What the tests of the component share: the DLL loaded as a program without registration loads it, values in the forms
// in which callers pass them, and late-bound calls.
#pragma once
#include "com/Automation.h"
#include "pixkit_com.h"
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
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

// pixkit.dll, by default the one beside the test program. Whoever uses it gives everything back first.
class Server {
  public:
    explicit Server(const std::filesystem::path& dll = programFolder() / "pixkit.dll")
        : m_module(::LoadLibraryW(dll.c_str())) {
        EXPECT_NE(m_module, nullptr) << dll;
        ::CoInitialize(nullptr);
    }
    ~Server() {
        EXPECT_TRUE(canUnload()) << "something still holds the DLL";
        ::CoUninitialize();
        ::FreeLibrary(m_module);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    HMODULE module() const { return m_module; }
    template <class Function>
    Function* entry(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(m_module, name)));
    }
    HRESULT plain(const char* name) const { return entry<HRESULT WINAPI()>(name)(); }
    bool canUnload() const { return plain("DllCanUnloadNow") == S_OK; }
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

// The DLL and one object.
class ComTest : public testing::Test {
  protected:
    ComTest() { *sheet.put() = server.create(); }
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
    LONG width() {
        LONG value = 0;
        sheet->get_Width(&value);
        return value;
    }
    // Of a member that gives a handle.
    void freeResult(MEMBERID id, LONG_PTR handle) {
        VARIANT_BOOL done = VARIANT_FALSE;
        if (id == 416 || id == 417) ::DestroyIcon(reinterpret_cast<HICON>(handle));
        if (id == 418 || id == 516) ::DeleteObject(reinterpret_cast<HGDIOBJ>(handle));
        if (id == 508) sheet->DestroyGDIplusToken(static_cast<LONG>(handle), &done);
    }
    // Every member as the table has it: its description, its name and those of its parameters.
    template <class Use>
    void eachMember(Use&& use) {
        ComPtr<ITypeInfo> info, table;
        HREFTYPE reference = 0;
        FUNCDESC* function = nullptr;
        sheet->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put());
        info->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference);
        ASSERT_EQ(info->GetRefTypeInfo(reference, table.put()), S_OK);
        for (UINT i = 0; SUCCEEDED(table->GetFuncDesc(i, &function)); ++i) {
            BSTR found[25];
            UINT count = 0;
            table->GetNames(function->memid, found, 25, &count);
            std::vector<std::wstring> names(found, found + count);
            names.resize(static_cast<std::size_t>(function->cParams) + 1, L"value"); // which is that of properties
            use(*function, names);
            std::for_each(found, found + count, ::SysFreeString);
            table->ReleaseFuncDesc(function);
        }
    }

    Server server;
    ComPtr<_cPixSheet> sheet;
};

inline VARIANT number(LONG value, VARTYPE type = VT_I4) {
    VARIANT v{};
    v.vt = type;
    v.lVal = value;
    return v;
}
inline VARIANT text(const wchar_t* value) { // the call's own; tests are short enough not to free it
    VARIANT v{};
    v.vt = VT_BSTR;
    v.bstrVal = ::SysAllocString(value);
    return v;
}
inline VARIANT object(IUnknown* value, VARTYPE type = VT_DISPATCH) {
    VARIANT v{};
    v.vt = type;
    v.punkVal = value;
    return v;
}
inline VARIANT missing() {
    return number(DISP_E_PARAMNOTFOUND, VT_ERROR);
}
inline VARIANT typed(int type, void* place) { // VT_BYREF values of one type
    VARIANT v{};
    v.vt = static_cast<VARTYPE>(VT_BYREF | type);
    v.byref = place;
    return v;
}
inline VARIANT variable(VARIANT& value) { // how scripts pass their variables
    return typed(VT_VARIANT, &value);
}
inline VARIANT arrayValue(VARTYPE element, SAFEARRAY* array) {
    VARIANT v{};
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

// Of a member that gives a Boolean.
inline bool isTrue(IDispatch* target, const wchar_t* member, const std::vector<VARIANT>& arguments = {}) {
    Variant result;
    EXPECT_EQ(call(target, member, arguments, &result), S_OK) << std::filesystem::path(member);
    return result.vt == VT_BOOL && result.boolVal == VARIANT_TRUE;
}

// An array of numbers that belongs to the test.
class OwnArray {
  public:
    explicit OwnArray(VARTYPE type, const std::vector<std::uint8_t>& values, LONG lower = 0)
        : array(::SafeArrayCreateVector(type, lower, static_cast<ULONG>(values.size()))) {
        auto* out = static_cast<std::uint8_t*>(array->pvData);
        for (const std::uint8_t value : values) {
            if (type == VT_VARIANT)
                *reinterpret_cast<VARIANT*>(out) = number(value);
            else
                *out = value;
            out += array->cbElements;
        }
    }
    ~OwnArray() { EXPECT_EQ(::SafeArrayDestroy(array), S_OK) << "still locked"; }
    OwnArray(const OwnArray&) = delete;
    OwnArray& operator=(const OwnArray&) = delete;

    SAFEARRAY* array;
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
