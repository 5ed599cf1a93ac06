// How the component gets known to a machine, and forgotten again.
#include "Server.h"
#include "shared/version.h"
#include <map>
#include <string>

namespace pixkit::test {

std::wstring textOf(REFGUID id) {
    wchar_t text[40];
    ::StringFromGUID2(id, text, 40);
    return text;
}

const std::wstring classId = textOf(CLSID_cPixSheet), interfaceId = textOf(IID__cPixSheet),
                   libraryId = textOf(LIBID_pixkit);

// Everything below a key: path -> value.
void collect(HKEY root, const std::wstring& path, std::map<std::wstring, std::wstring>& found) {
    HKEY key;
    if (::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    found[path]; // the key itself
    wchar_t name[256], value[1024];
    for (DWORD i = 0;; ++i) {
        DWORD nameSize = 256, valueSize = sizeof value;
        if (::RegEnumValueW(key, i, name, &nameSize, nullptr, nullptr, reinterpret_cast<BYTE*>(value), &valueSize) !=
            ERROR_SUCCESS)
            break;
        found[path + (nameSize != 0 ? L"@" + std::wstring(name) : L"")] = value;
    }
    for (DWORD i = 0;; ++i) {
        DWORD nameSize = 256;
        if (::RegEnumKeyExW(key, i, name, &nameSize, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        collect(root, path + L"\\" + name, found);
    }
    ::RegCloseKey(key);
}

std::map<std::wstring, std::wstring> registered(HKEY root) {
    std::map<std::wstring, std::wstring> found;
    for (const std::wstring& key : {L"CLSID\\" + classId, L"Interface\\" + interfaceId, L"TypeLib\\" + libraryId,
                                    std::wstring(L"pixkit.cPixSheet")})
        collect(root, L"Software\\Classes\\" + key, found);
    return found;
}

class Registration : public testing::Test {
  protected:
    ~Registration() override {
        install(TRUE, L"user"); // takes over what a test may have left as another copy's
        install(FALSE, L"user");
        server.plain("DllUnregisterServer");
    }
    HRESULT install(BOOL add, const wchar_t* forWhom) {
        return server.entry<HRESULT WINAPI(BOOL, const wchar_t*)>("DllInstall")(add, forWhom);
    }
    // As a client does that knows the component's name only.
    static HRESULT createByName() {
        CLSID id;
        if (const HRESULT found = ::CLSIDFromProgID(L"pixkit.cPixSheet", &id); FAILED(found)) return found;
        ComPtr<IDispatch> created;
        const HRESULT status = ::CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, created.putVoid());
        if (FAILED(status)) return status;
        Variant version;
        EXPECT_EQ(call(created.get(), L"Version", {}, &version), S_OK);
        EXPECT_STREQ(version.bstrVal, L"" PIXKIT_FULL_VERSION);
        return S_OK;
    }

    Server server;
};

TEST_F(Registration, ForTheMachineComesAndGoesWithoutATrace) {
    const HRESULT added = server.plain("DllRegisterServer");
    if (added == E_ACCESSDENIED) GTEST_SKIP() << "needs administrator rights";
    ASSERT_EQ(added, S_OK);
    auto found = registered(HKEY_LOCAL_MACHINE);
    const std::wstring server32 = L"Software\\Classes\\CLSID\\" + classId + L"\\InprocServer32";
    EXPECT_EQ(found[server32], (programFolder() / "pixkit.dll").wstring());
    EXPECT_EQ(found[server32 + L"@ThreadingModel"], L"Apartment");
    EXPECT_EQ(createByName(), S_OK);
    ComPtr<ITypeLib> library;
    EXPECT_EQ(::LoadRegTypeLib(LIBID_pixkit, 3, 0, 0, library.put()), S_OK);
    library.reset();
    EXPECT_EQ(server.plain("DllUnregisterServer"), S_OK);
    EXPECT_EQ(registered(HKEY_LOCAL_MACHINE).size(), 0u);
    EXPECT_EQ(server.plain("DllUnregisterServer"), S_OK) << "what is not there needs no removal";
}

// Whether the system looks classes up among the user's own; Wine only looks among the machine's.
bool userClassesCount() {
    HKEY made, seen = nullptr;
    ::RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\Classes\\pixkit-probe", &made);
    const bool count = ::RegOpenKeyExW(HKEY_CLASSES_ROOT, L"pixkit-probe", 0, KEY_READ, &seen) == ERROR_SUCCESS;
    ::RegCloseKey(seen);
    ::RegCloseKey(made);
    ::RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\Classes\\pixkit-probe");
    return count;
}

TEST_F(Registration, ForOneUserWritesTheSameAndTouchesNothingOfTheMachine) {
    ASSERT_EQ(install(TRUE, L"user"), S_OK);
    const auto forUser = registered(HKEY_CURRENT_USER);
    EXPECT_GT(forUser.size(), 10u);
    EXPECT_EQ(registered(HKEY_LOCAL_MACHINE).size(), 0u);
    if (userClassesCount()) {
        EXPECT_EQ(createByName(), S_OK);
    }
    if (server.plain("DllRegisterServer") == S_OK) {
        EXPECT_EQ(forUser, registered(HKEY_LOCAL_MACHINE));
        EXPECT_EQ(createByName(), S_OK);
        server.plain("DllUnregisterServer");
    }
    EXPECT_EQ(registered(HKEY_CURRENT_USER), forUser);
    EXPECT_EQ(install(FALSE, L"USER"), S_OK);
    EXPECT_EQ(registered(HKEY_CURRENT_USER).size(), 0u);
    EXPECT_EQ(install(TRUE, L"everybody"), E_INVALIDARG);
}

TEST_F(Registration, RemovingOneWordSizeKeepsWhatTheOtherNeeds) {
    ASSERT_EQ(install(TRUE, L"user"), S_OK);
    const std::wstring version = L"Software\\Classes\\TypeLib\\" + libraryId + L"\\3.0";
    const std::wstring other = version + (sizeof(void*) == 8 ? L"\\0\\win32" : L"\\0\\win64");
    HKEY key;
    ASSERT_EQ(::RegCreateKeyW(HKEY_CURRENT_USER, other.c_str(), &key), ERROR_SUCCESS);
    ::RegCloseKey(key);
    EXPECT_EQ(install(FALSE, L"user"), S_OK);
    auto left = registered(HKEY_CURRENT_USER);
    EXPECT_EQ(left.count(other), 1u);
    EXPECT_EQ(left.count(L"Software\\Classes\\pixkit.cPixSheet\\CLSID"), 1u);
    EXPECT_EQ(left.count(version + (sizeof(void*) == 8 ? L"\\0\\win64" : L"\\0\\win32")), 0u);
    ::RegDeleteKeyW(HKEY_CURRENT_USER, other.c_str());
    EXPECT_EQ(install(FALSE, L"user"), S_OK);
    EXPECT_EQ(registered(HKEY_CURRENT_USER).size(), 0u);
}

// The uninstaller of one copy runs after another was registered.
TEST_F(Registration, RemovesWhatNamesItAndNothingOfAnotherCopy) {
    const std::wstring own = (programFolder() / "pixkit.dll").wstring();
    const std::filesystem::path copy = std::filesystem::temp_directory_path() / "pixkit-copy.dll";
    std::filesystem::copy_file(own, copy, std::filesystem::copy_options::overwrite_existing);
    std::wstring loud = own;
    ::CharUpperW(loud.data());
    wchar_t brief[MAX_PATH];
    ASSERT_NE(::GetShortPathNameW(own.c_str(), brief, MAX_PATH), 0u);
    const std::wstring server32 = L"CLSID\\" + classId + L"\\InprocServer32";
    const std::wstring library =
        L"TypeLib\\" + libraryId + (sizeof(void*) == 8 ? L"\\3.0\\0\\win64" : L"\\3.0\\0\\win32");
    const struct {
        const wchar_t* what;
        std::wstring key, path;
        bool allStays, keyStays;
    } cases[] = {{L"a path in capitals", server32, loud, false, false},
                 {L"its short name", server32, brief, false, false},
                 {L"no path", server32, L"", false, false},
                 {L"another copy", server32, copy.wstring(), true, true},
                 {L"a drive that is not there", server32, L"X:\\new\\pixkit.dll", true, true},
                 {L"a file that is gone", server32, copy.wstring() + L".old", false, false},
                 {L"a type library by itself", library, copy.wstring(), false, true}};
    for (const auto& each : cases) {
        SCOPED_TRACE(std::filesystem::path(each.what));
        ASSERT_EQ(install(TRUE, L"user"), S_OK);
        const std::wstring key = L"Software\\Classes\\" + each.key;
        ::RegSetValueW(HKEY_CURRENT_USER, key.c_str(), REG_SZ, each.path.c_str(), 0);
        const auto before = registered(HKEY_CURRENT_USER);
        EXPECT_EQ(install(FALSE, L"user"), S_OK);
        const auto after = registered(HKEY_CURRENT_USER);
        EXPECT_EQ(after == before, each.allStays);
        EXPECT_EQ(after.contains(key), each.keyStays);
    }
    ASSERT_EQ(install(TRUE, L"user"), S_OK); // which takes it over
    std::filesystem::remove(copy);
}

TEST_F(Registration, TheShippedManifestServesWithoutAnyRegistration) {
    ASSERT_NE(createByName(), S_OK) << "registered already";
    ACTCTXW context{};
    context.cbSize = sizeof context;
    const std::wstring manifest = (programFolder() / "pixkit.manifest").wstring();
    context.lpSource = manifest.c_str();
    const HANDLE handle = ::CreateActCtxW(&context);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE) << ::GetLastError();
    ULONG_PTR cookie = 0;
    ASSERT_TRUE(::ActivateActCtx(handle, &cookie));
    EXPECT_EQ(createByName(), S_OK);
    ::DeactivateActCtx(0, cookie);
    ::ReleaseActCtx(handle);
    EXPECT_NE(createByName(), S_OK);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
