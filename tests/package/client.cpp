// A program that knows the component's name only, and what stands in for the system where Wine lacks it.
//
//   client create FILE.png   makes an object, draws with it and saves: exit code 0
//   client join              lets the classes that the user registers be found among the machine's, as Windows merges
//                            the two and Wine does not: four links of the registry, which lead nowhere until then
//   client part              takes the links away
//   client hold DLL FILE     has the DLL loaded, makes the file, and ends when that is gone
#include <cstdio>
#include <initializer_list>
#include <string>
#include <windows.h>

#include <initguid.h>
// From the archive: it defines the identifiers here.
#include <pixkit_com.h>

namespace {

constexpr wchar_t classes[] = L"\\Classes\\";
std::wstring braced(const wchar_t* kind, REFGUID id) {
    wchar_t text[40];
    ::StringFromGUID2(id, text, 40);
    return std::wstring(kind) + L"\\" + text;
}

HRESULT call(IDispatch* object, const wchar_t* member, std::initializer_list<VARIANT> arguments, VARIANT* result) {
    DISPID id;
    auto name = const_cast<wchar_t*>(member);
    HRESULT status = object->GetIDsOfNames(IID_NULL, &name, 1, 0, &id);
    VARIANT backwards[8];
    UINT count = 0;
    for (auto argument = arguments.end(); argument != arguments.begin();)
        backwards[count++] = *--argument;
    DISPPARAMS parameters{backwards, nullptr, count, 0};
    if (SUCCEEDED(status))
        status = object->Invoke(id, IID_NULL, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &parameters, result, nullptr,
                                nullptr);
    return status;
}

VARIANT number(LONG value) {
    VARIANT variant{};
    variant.vt = VT_I4;
    variant.lVal = value;
    return variant;
}

int create(const wchar_t* file) {
    CLSID id;
    IDispatch* object = nullptr;
    HRESULT status = ::CLSIDFromProgID(L"pixkit.cPixSheet", &id);
    if (SUCCEEDED(status))
        status =
            ::CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&object));
    VARIANT name{}, version{}, done{};
    name.vt = VT_BSTR;
    name.bstrVal = ::SysAllocString(file);
    if (SUCCEEDED(status)) status = call(object, L"Version", {}, &version);
    if (SUCCEEDED(status)) status = call(object, L"InitializeDIB", {number(40), number(30)}, &done);
    if (SUCCEEDED(status)) status = call(object, L"SaveToFile_PNG", {name}, &done);
    const bool succeeded = SUCCEEDED(status) && done.vt == VT_BOOL && done.boolVal != VARIANT_FALSE;
    std::printf("%s %ls (0x%08lx), %d bits\n", succeeded ? "saved by version" : "no object",
                version.vt == VT_BSTR ? version.bstrVal : L"", status, static_cast<int>(sizeof(void*) * 8));
    if (object != nullptr) object->Release();
    return succeeded ? 0 : 1;
}

// A link's target is the name that the kernel has for a key.
std::wstring kernelName(const std::wstring& key) {
    using QueryKey = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<QueryKey>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll"), "NtQueryKey")));
    struct {
        ULONG size;
        wchar_t name[500];
    } found{};
    ULONG taken;
    HKEY user;
    ::RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &user);
    query(user, 3, &found, sizeof found, &taken); // KeyNameInformation
    return std::wstring(found.name, found.size / sizeof(wchar_t)) + key;
}

int link(const std::wstring& key, bool join) {
    HKEY made;
    const std::wstring place = classes + key, name = L"Software" + place;
    const LSTATUS opened =
        join ? ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0, nullptr, REG_OPTION_CREATE_LINK, KEY_ALL_ACCESS,
                                 nullptr, &made, nullptr)
             : ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), REG_OPTION_OPEN_LINK, KEY_ALL_ACCESS, &made);
    if (opened != ERROR_SUCCESS) return static_cast<int>(opened);
    if (join) {
        const std::wstring target = kernelName(place);
        return static_cast<int>(::RegSetValueExW(made, L"SymbolicLinkValue", 0, REG_LINK,
                                                 reinterpret_cast<const BYTE*>(target.c_str()),
                                                 static_cast<DWORD>(target.size() * sizeof(wchar_t))));
    }
    using DeleteKey = LONG(WINAPI*)(HANDLE);
    return reinterpret_cast<DeleteKey>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll"), "NtDeleteKey")))(made);
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    const std::wstring what = count > 1 ? arguments[1] : L"";
    if (what == L"join" || what == L"part") {
        int failed = 0;
        for (const std::wstring& key : {std::wstring(L"pixkit.cPixSheet"), braced(L"CLSID", CLSID_cPixSheet),
                                        braced(L"Interface", IID__cPixSheet), braced(L"TypeLib", LIBID_pixkit)})
            failed |= link(key, what == L"join");
        return failed;
    }
    if (count < 3) return 2;
    if (what == L"hold" && count > 3) {
        if (::LoadLibraryW(arguments[2]) == nullptr) return 1;
        ::CloseHandle(::CreateFileW(arguments[3], GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
        while (::GetFileAttributesW(arguments[3]) != INVALID_FILE_ATTRIBUTES)
            ::Sleep(100);
        return 0;
    }
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    return create(arguments[2]);
}
// SPDX-License-Identifier: MIT
