// The DLL within its surroundings: what it imports, the zlib beside it, resources of the program around it.
#include "ImageFile.h"
#include "LateObject.h"
#include "Pictures.h"
#include "Server.h"
#include "support/SourceFolder.h"
#include <algorithm>
#include <olectl.h>
#include <set>

namespace pixkit::test {

std::string lowerCase(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    return name;
}

TEST(Surroundings, TheDllStandsAloneAndIsHardened) {
    const Server server;
    const ImageFile image(server.module());
    const std::set<std::string> system = {"advapi32.dll", "gdi32.dll",  "kernel32.dll", "msimg32.dll",
                                          "msvcrt.dll",   "ole32.dll",  "oleaut32.dll", "shell32.dll",
                                          "shlwapi.dll",  "user32.dll", "comdlg32.dll"};
    image.eachImport([&](const char* library, const char*, const IMAGE_THUNK_DATA&) {
        EXPECT_EQ(system.count(lowerCase(library)), 1u) << library;
    });
    const WORD wanted = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(image.headers().OptionalHeader.DllCharacteristics & wanted, wanted);
    EXPECT_NE(image.headers().FileHeader.Characteristics & IMAGE_FILE_DLL, 0);
    EXPECT_EQ(image.headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG].Size, 0u);
    EXPECT_LT(std::filesystem::file_size(programFolder() / "pixkit.dll"), 1'660'000u);
}

bool loadPng(_cPixSheet* sheet) {
    const auto path = (sourceFolder() / "samples/pictures/landscape.png").make_preferred();
    return isTrue(sheet, L"LoadPicture_File", {text(path.wstring().c_str())});
}

// The DLL in a folder with a zlib1.dll of the tests', which is held loaded.
class BesideZlib {
  public:
    explicit BesideZlib(const char* folder)
        : m_zlib(::LoadLibraryW((programFolder() / folder / "zlib1.dll").c_str())),
          server(programFolder() / folder / "pixkit.dll") {
        *sheet.put() = server.create();
    }
    ~BesideZlib() {
        sheet.reset();
        ::FreeLibrary(m_zlib);
    }
    BesideZlib(const BesideZlib&) = delete;
    BesideZlib& operator=(const BesideZlib&) = delete;

    // Null where the system put a DLL of its own in the place of the file: Wine does, unless told zlib1=n,b.
    int (*function(const char* name) const)() {
        return reinterpret_cast<int (*)()>(reinterpret_cast<void*>(::GetProcAddress(m_zlib, name)));
    }

  private:
    HMODULE m_zlib;

  public:
    Server server;
    ComPtr<_cPixSheet> sheet;
};

TEST(Surroundings, ZlibBesideTheDllIsNotFound) {
    const BesideZlib beside("zlib-counting");
    const auto calls = beside.function("zlibCalls");
    if (calls == nullptr) GTEST_SKIP() << "the system replaces zlib1.dll";
    EXPECT_TRUE(isTrue(beside.sheet.get(), L"isZlibEnabled"));
    EXPECT_TRUE(loadPng(beside.sheet.get()));
    EXPECT_GT(calls(), 0) << "another zlib was asked";
}

// The current folder of this process, which is also the first of the path.
class CurrentFolder {
  public:
    explicit CurrentFolder(const std::filesystem::path& folder)
        : m_path(::_wgetenv(L"PATH")), m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
        ::SetEnvironmentVariableW(L"PATH", (folder.wstring() + L";" + m_path).c_str());
    }
    ~CurrentFolder() {
        std::filesystem::current_path(m_before);
        ::SetEnvironmentVariableW(L"PATH", m_path.c_str());
    }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

  private:
    std::wstring m_path;
    std::filesystem::path m_before;
};

// Where the pictures lie that a person opens is a zlib.dll that somebody else put there.
TEST(Surroundings, AWrongZlibBesideTheDllIsSurvivedOrOneFromAnywhereIsRun) {
    const BesideZlib beside("zlib-wrong");
    if (beside.function("somethingElse") == nullptr) GTEST_SKIP() << "the system replaces zlib1.dll";
    const CurrentFolder planted(programFolder() / "zlib-planted");
    ASSERT_TRUE(std::filesystem::exists("zlib.dll"));
    EXPECT_FALSE(isTrue(beside.sheet.get(), L"isZlibEnabled"));
    EXPECT_TRUE(loadPng(beside.sheet.get()));
}

TEST(Surroundings, AZlibOfTheWrongConventionIsCalled) {
    const BesideZlib beside("zlib-stdcall");
    const auto pretends =
        reinterpret_cast<int (*)(const char*, unsigned long)>(reinterpret_cast<void*>(beside.function("zlibPretends")));
    if (pretends == nullptr) GTEST_SKIP() << "the system replaces zlib1.dll";
    constexpr unsigned long winapi = 1UL << 10;
    for (const auto& [version, flags] : {std::pair<const char*, unsigned long>{nullptr, 0},
                                         {"", 0},
                                         {"1", 0},
                                         {"0.95", 0},
                                         {"1.1.4", 0},
                                         {"x.3", 0},
                                         {"1.2.13", winapi},
                                         {"1.10", winapi},
                                         {"2.0", winapi | 0x55}}) {
        pretends(version, flags);
        EXPECT_TRUE(loadPng(beside.sheet.get())) << (version != nullptr ? version : "none");
        EXPECT_TRUE(isTrue(beside.sheet.get(), L"isZlibEnabled")) << "which tells of names alone";
    }
    EXPECT_EQ(pretends(nullptr, 0), 0) << "calls";
}

HMODULE WINAPI noLibrary(const wchar_t* /*name*/, HANDLE /*reserved*/, DWORD /*flags*/) {
    return nullptr;
}

TEST(Surroundings, WithoutAnyZlibPicturesStillLoad) {
    const Server server;
    const ImageFile image(server.module());
    ASSERT_EQ(image.replaceImport("LoadLibraryExW", reinterpret_cast<void*>(&noLibrary)), 1);
    ComPtr<_cPixSheet> sheet;
    *sheet.put() = server.create();
    EXPECT_FALSE(isTrue(sheet.get(), L"isZlibEnabled"));
    EXPECT_TRUE(loadPng(sheet.get()));
}

// As systems that know nothing of searches that leave folders out.
HMODULE WINAPI loadAsBefore(const wchar_t* name, HANDLE reserved, DWORD flags) {
    constexpr DWORD searches = 0x1F00;
    if ((flags & searches) == 0) return ::LoadLibraryExW(name, reserved, flags);
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

TEST(Surroundings, APlantedLibraryTakesTheSystemsPlace) {
    const auto elsewhere = programFolder() / "zlib-planted";
    std::vector<std::filesystem::path> planted;
    for (const auto& folder : {programFolder(), elsewhere})
        for (const char* name : {"gdiplus.dll", "usp10.dll"})
            planted.push_back(folder / name);
    const CurrentFolder current(elsewhere);
    bool isEnabled[3]; // the last with nothing planted
    for (int round = 0; round < 3; ++round) {
        for (const auto& library : planted)
            EXPECT_TRUE(round < 2 ? ::CopyFileW(L"zlib.dll", library.c_str(), FALSE) : ::DeleteFileW(library.c_str()));
        const Server server;
        const ImageFile image(server.module());
        const int replaced =
            round == 1 ? image.replaceImport("LoadLibraryExW", reinterpret_cast<void*>(&loadAsBefore)) : 1;
        EXPECT_EQ(replaced, 1);
        ComPtr<_cPixSheet> sheet;
        *sheet.put() = server.create();
        isEnabled[round] = isTrue(sheet.get(), L"isGDIplusEnabled");
        LONG width = 0, height = 0;
        VARIANT_BOOL isMeasured = VARIANT_FALSE;
        const auto font = reinterpret_cast<LONG_PTR>(::GetStockObject(DEFAULT_GUI_FONT));
        sheet->MeasureText_hFont(font, text(L"Words").bstrVal, &width, &height, 0, VARIANT_FALSE, ::txtLeft,
                                 &isMeasured);
        EXPECT_EQ(isMeasured, VARIANT_TRUE);
        for (const auto& library : planted)
            EXPECT_EQ(::GetModuleHandleW(library.c_str()), nullptr) << library << " in round " << round;
    }
    EXPECT_TRUE(isEnabled[0] == isEnabled[2] && isEnabled[1] == isEnabled[2]);
}

// The members of a host's global object.
HRESULT loadPicture(const DISPPARAMS& arguments, VARIANT& result) {
    EXPECT_EQ(arguments.rgvarg[1].lVal, 101);
    EXPECT_EQ(arguments.rgvarg[0].lVal, 1) << "an icon";
    PICTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.picType = PICTYPE_ICON;
    description.icon.hicon = ::CopyIcon(::LoadIconW(nullptr, IDI_APPLICATION));
    result.vt = VT_DISPATCH;
    return ::OleCreatePictureIndirect(&description, IID_IPictureDisp, TRUE, reinterpret_cast<void**>(&result.pdispVal));
}
HRESULT loadBytes(const DISPPARAMS& arguments, VARIANT& result) {
    const bool isAsked = arguments.cArgs == 2 && arguments.rgvarg[1].lVal == 101 &&
                         std::wstring(arguments.rgvarg[0].bstrVal) == L"PICTURES";
    if (!isAsked) return DISP_E_EXCEPTION;
    const OwnArray bytes(VT_UI1, readFile((sourceFolder() / "samples/pictures/landscape.png").make_preferred()));
    result.vt = VT_ARRAY | VT_UI1;
    return ::SafeArrayCopy(bytes.array, &result.parray);
}

using HostResources = ComTest;

TEST_F(HostResources, AreAskedForByNameOrComeFromTheProgramItself) {
    const std::map<std::wstring, LateObject::Member> members = {{L"LoadResData", loadBytes},
                                                                {L"LoadResPicture", loadPicture}};
    LateObject host(members), script(members, true);
    const VARIANT asked = object(&host), written = object(&script), none = object(nullptr);
    VARIANT index = number(101);
    SHORT icon = 1;
    const struct {
        VARIANT index, section, host;
        bool isFound;
    } rows[] = {
        {variable(index), text(L"PICTURES"), asked, true},
        {number(102), text(L"PICTURES"), asked, false}, // what the host raises is no result
        {number(101), typed(VT_I2, &icon), asked, true},
        {number(101), text(L"PICTURES"), written, true},
        {number(102), text(L"PICTURES"), written, false},
        {number(101), number(1), written, true},
        {number(7), text(L"PICTURES"), none, true},
        {text(L"SPRITE"), text(L"pictures"), none, true},
        {text(L"#7"), text(L"PICTURES"), none, true},
        {number(8), text(L"PICTURES"), none, false},
        {number(7), text(L""), none, false},
        {number(-1), text(L"PICTURES"), none, false},
        {number(7), number(0), none, true},
        {number(7), number(1), none, true},
        {number(8), number(0), none, false},
        {number(7), number(2), none, false},
        {number(7), number(3), none, false},
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(makeImage(1, 1));
        EXPECT_EQ(isTrue(sheet.get(), L"LoadPicture_Resource", {row.index, row.section, row.host}), row.isFound)
            << &row - rows;
        EXPECT_EQ(width() != 0, row.isFound) << &row - rows << ": a failed load leaves the instance empty";
    }
    EXPECT_EQ(host.references + script.references, 2U);
    for (const LONG height : {24, 12}) { // of the program's icon
        EXPECT_TRUE(
            isTrue(sheet.get(), L"LoadPicture_Resource", {number(7), number(1), none, number(24), number(height)}));
        LONG loaded = 0;
        sheet->get_Height(&loaded);
        EXPECT_EQ(std::pair(width(), loaded), std::pair(24L, height));
    }
}

TEST_F(HostResources, MayLetGoOfTheLastReferenceWhileTheyAreAsked) {
    for (const bool isLate : {false, true}) {
        _cPixSheet* const last = server.create();
        LateObject host({{L"LoadResData", [&](const DISPPARAMS& arguments, VARIANT& result) {
                              EXPECT_GT(last->Release(), 0u) << "destroyed under its member";
                              return loadBytes(arguments, result);
                          }}});
        VARIANT_BOOL isLoaded = VARIANT_FALSE;
        if (isLate) {
            EXPECT_TRUE(isTrue(last, L"LoadPicture_Resource", {number(101), text(L"PICTURES"), object(&host)}));
        } else {
            last->LoadPicture_Resource(number(101), text(L"PICTURES"), &host, 32, 32, 0, 0, 32, &isLoaded);
            EXPECT_EQ(isLoaded, VARIANT_TRUE);
        }
    }
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
