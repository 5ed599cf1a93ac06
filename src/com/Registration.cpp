#include "com/Registration.h"
#include "com/module.h"
#include "pixkit_com.h"
#include "platform/win32/system/FileFacts.h"
#include <olectl.h>
#include <shlwapi.h>
#include <string>
#include <vector>

namespace pixkit::com {

namespace {

constexpr wchar_t programId[] = L"pixkit.cPixSheet";
constexpr wchar_t libraryVersion[] = PIXKIT_LIBRARY_VERSION; // from pixkit.idl, through CMakeLists.txt
// The system's own marshaller, which works from type libraries.
constexpr wchar_t automationMarshaller[] = L"{00020424-0000-0000-C000-000000000046}";

constexpr const wchar_t* thisSystem = sizeof(void*) == 8 ? L"win64" : L"win32";
constexpr const wchar_t* otherSystem = sizeof(void*) == 8 ? L"win32" : L"win64";

class Key {
  public:
    Key() = default;
    ~Key() {
        if (m_key != nullptr) ::RegCloseKey(m_key);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    HKEY get() const { return m_key; }
    HKEY* put() { return &m_key; }

  private:
    HKEY m_key = nullptr;
};

// The classes of a scope: the root itself and not the merged view, in which what is written lands where the same name
// already is.
LSTATUS openClasses(Scope scope, Key& classes) {
    return ::RegCreateKeyExW(scope == Scope::user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, L"Software\\Classes", 0,
                             nullptr, 0, KEY_READ, nullptr, classes.put(), nullptr);
}

std::wstring text(REFGUID id) {
    wchar_t buffer[40];
    ::StringFromGUID2(id, buffer, 40);
    return buffer;
}

std::wstring classKey() {
    return L"CLSID\\" + text(CLSID_cPixSheet);
}

std::wstring interfaceKey() {
    return L"Interface\\" + text(IID__cPixSheet);
}

std::wstring libraryKey() {
    return L"TypeLib\\" + text(LIBID_pixkit);
}

std::wstring versionKey() {
    return libraryKey() + L"\\" + libraryVersion;
}

struct Value {
    std::wstring key;
    const wchar_t* name; // null: the key's own value
    std::wstring content;
};

std::vector<Value> registeredValues(const std::wstring& path) {
    const std::wstring folder = path.substr(0, path.find_last_of(L'\\'));
    const std::wstring library = text(LIBID_pixkit);
    return {
        {classKey(), nullptr, programId},
        {classKey() + L"\\InprocServer32", nullptr, path},
        {classKey() + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
        {classKey() + L"\\ProgID", nullptr, programId},
        {classKey() + L"\\Programmable", nullptr, L""},
        {classKey() + L"\\TypeLib", nullptr, library},
        {classKey() + L"\\Version", nullptr, libraryVersion},
        {programId, nullptr, programId},
        {std::wstring(programId) + L"\\CLSID", nullptr, text(CLSID_cPixSheet)},
        {interfaceKey(), nullptr, L"_cPixSheet"},
        {interfaceKey() + L"\\ProxyStubClsid32", nullptr, automationMarshaller},
        {interfaceKey() + L"\\TypeLib", nullptr, library},
        {interfaceKey() + L"\\TypeLib", L"Version", libraryVersion},
        {versionKey(), nullptr, L"pixkit imaging component " PIXKIT_LIBRARY_VERSION},
        {versionKey() + L"\\0\\" + thisSystem, nullptr, path},
        {versionKey() + L"\\FLAGS", nullptr, L"0"},
        {versionKey() + L"\\HELPDIR", nullptr, folder},
    };
}

LSTATUS write(HKEY classes, const Value& value) {
    Key key;
    const LSTATUS created =
        ::RegCreateKeyExW(classes, value.key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.put(), nullptr);
    if (created != ERROR_SUCCESS) return created;
    return ::RegSetValueExW(key.get(), value.name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.content.c_str()),
                            static_cast<DWORD>((value.content.size() + 1) * sizeof(wchar_t)));
}

bool exists(HKEY classes, const std::wstring& name) {
    Key key;
    return ::RegOpenKeyExW(classes, name.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

// Keeps the first error that is not "there was none".
void removeTree(HKEY classes, const std::wstring& name, LSTATUS& status) {
    const auto removed = static_cast<LSTATUS>(::SHDeleteKeyW(classes, name.c_str()));
    if (removed != ERROR_FILE_NOT_FOUND && status == ERROR_SUCCESS) status = removed;
}

// Whether two paths lead to one file of the machine: short names, links and drives may do so.
bool areOneFile(const std::wstring& path, const std::wstring& other) {
    const auto one = platform::factsOfFile(path.c_str()), two = platform::factsOfFile(other.c_str());
    if (!one || !two || (one->nFileIndexHigh | one->nFileIndexLow) == 0) return false;
    // Some systems number files beyond these 64 bits: then the rest tells two copies apart that came one after the
    // other.
    return one->dwVolumeSerialNumber == two->dwVolumeSerialNumber && one->nFileIndexHigh == two->nFileIndexHigh &&
           one->nFileIndexLow == two->nFileIndexLow && one->nFileSizeLow == two->nFileSizeLow &&
           ::CompareFileTime(&one->ftLastWriteTime, &two->ftLastWriteTime) == 0;
}

// Whether nothing is at a path, though its drive is there, and not one that comes and goes.
bool isGone(const std::wstring& path) {
    if (::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return false;
    const DWORD error = ::GetLastError();
    return (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) && path.size() > 2 && path[1] == L':' &&
           ::GetDriveTypeW((path.substr(0, 2) + L'\\').c_str()) == DRIVE_FIXED;
}

// Whether a key's own value is the path of a file, and not of the DLL at `path`, which may have been moved.
bool namesAnother(HKEY classes, const std::wstring& key, const std::wstring& path) {
    DWORD size = 0;
    if (::SHGetValueW(classes, key.c_str(), nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) return false;
    std::wstring found(size / sizeof(wchar_t) + 1, L'\0');
    size = static_cast<DWORD>(found.size() * sizeof(wchar_t));
    if (::SHGetValueW(classes, key.c_str(), nullptr, nullptr, found.data(), &size) != ERROR_SUCCESS) return true;
    found.resize(::lstrlenW(found.c_str()));
    return !found.empty() && ::_wcsicmp(found.c_str(), path.c_str()) != 0 && !areOneFile(found, path) && !isGone(found);
}

// Removes what the DLL at `path` has registered; without a path, whoever it was that did.
LSTATUS removeEntries(HKEY classes, const std::wstring& path) {
    const std::wstring thisLibrary = versionKey() + L"\\0\\" + thisSystem;
    const auto isOfAnother = [&](const std::wstring& key) { return !path.empty() && namesAnother(classes, key, path); };
    // The class is what programs ask for: the rest belongs to the copy that has it.
    if (isOfAnother(classKey() + L"\\InprocServer32")) return ERROR_SUCCESS;
    LSTATUS status = ERROR_SUCCESS;
    removeTree(classes, classKey(), status);
    const bool hasOther = exists(classes, versionKey() + L"\\0\\" + otherSystem);
    if (!hasOther) removeTree(classes, programId, status);
    if (isOfAnother(thisLibrary)) return status; // a type library that was registered alone, with the interface
    removeTree(classes, interfaceKey(), status);
    removeTree(classes, thisLibrary, status);
    if (hasOther) return status;
    removeTree(classes, versionKey(), status);
    ::SHDeleteEmptyKeyW(classes, libraryKey().c_str()); // unless another version of the library is there
    return status;
}

} // namespace

HRESULT registerServer(Scope scope) noexcept try {
    const std::wstring path = modulePath();
    if (path.empty()) return E_OUTOFMEMORY;
    Key classes;
    LSTATUS status = openClasses(scope, classes);
    for (const Value& value : registeredValues(path)) {
        if (status == ERROR_SUCCESS) status = write(classes.get(), value);
    }
    // All or nothing, also where an earlier registration was being replaced: half of each would be neither.
    if (status != ERROR_SUCCESS && classes.get() != nullptr) removeEntries(classes.get(), {});
    return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
} catch (...) {
    return E_OUTOFMEMORY;
}

HRESULT unregisterServer(Scope scope) noexcept try {
    const std::wstring path = modulePath();
    if (path.empty()) return E_OUTOFMEMORY;
    Key classes;
    LSTATUS status = openClasses(scope, classes);
    if (status == ERROR_SUCCESS) status = removeEntries(classes.get(), path);
    if (scope == Scope::user) { // a fresh profile had none of these before
        for (const wchar_t* const parent : {L"CLSID", L"Interface", L"TypeLib"})
            ::SHDeleteEmptyKeyW(classes.get(), parent);
    }
    return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
} catch (...) {
    return E_OUTOFMEMORY;
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
