// What keeps the DLL loaded, and what objects leave behind.
#include "Fonts.h"
#include "LateObject.h"
#include "Server.h"
#include "platform/faults.h"
#include <algorithm>
#include <fstream>
#include <ocidl.h>
#include <psapi.h>

namespace pixkit::test {

using Lifetime = ComTest;

TEST(Unloading, EveryReferenceAndLockCountsUntilItIsGivenBack) {
    const Server server;
    ASSERT_TRUE(server.canUnload());
    ComPtr<IClassFactory> factory;
    ComPtr<_cPixSheet> sheet;
    ASSERT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IClassFactory, factory.putVoid()), S_OK);
    EXPECT_FALSE(server.canUnload()) << "a held class factory";
    factory->LockServer(TRUE);
    ASSERT_EQ(factory->CreateInstance(nullptr, IID__cPixSheet, sheet.putVoid()), S_OK);
    factory.reset();
    EXPECT_FALSE(server.canUnload());
    sheet.reset();
    EXPECT_FALSE(server.canUnload()) << "a lock";
    ASSERT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IClassFactory, factory.putVoid()), S_OK);
    factory->LockServer(FALSE);

    // Refusals leave neither a reference nor a pointer.
    const auto refused = [](HRESULT status, auto&& ask) {
        void* object = &object;
        EXPECT_EQ(ask(&object), status);
        EXPECT_EQ(object, nullptr);
    };
    refused(CLASS_E_CLASSNOTAVAILABLE,
            [&](void** object) { return server.getClassObject(IID_IUnknown, IID_IClassFactory, object); });
    refused(E_NOINTERFACE,
            [&](void** object) { return server.getClassObject(CLSID_cPixSheet, IID_IDispatch, object); });
    refused(CLASS_E_NOAGGREGATION,
            [&](void** object) { return factory->CreateInstance(factory.get(), IID_IUnknown, object); });
    refused(E_NOINTERFACE, [&](void** object) { return factory->CreateInstance(nullptr, IID_IStream, object); });
    EXPECT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_FALSE(server.canUnload());
    factory.reset();
    EXPECT_TRUE(server.canUnload());
}

// What describes an object is the system's: programs may keep it beyond the DLL.
TEST(Unloading, DescriptionsHoldTheDllOrGoWithIt) {
    ComPtr<ITypeInfo> interfaceInfo, classInfo;
    {
        const Server server;
        ComPtr<_cPixSheet> sheet;
        ComPtr<IProvideClassInfo> provider;
        *sheet.put() = server.create();
        ASSERT_EQ(sheet->QueryInterface(IID_IProvideClassInfo, provider.putVoid()), S_OK);
        ASSERT_EQ(sheet->GetTypeInfo(0, LOCALE_USER_DEFAULT, interfaceInfo.put()), S_OK);
        ASSERT_EQ(provider->GetClassInfo(classInfo.put()), S_OK);
    }
    EXPECT_EQ(::GetModuleHandleW(L"pixkit.dll"), nullptr) << "still there";
    auto* name = const_cast<wchar_t*>(L"Render");
    MEMBERID id = 0;
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(interfaceInfo->GetIDsOfNames(&name, 1, &id), S_OK);
    EXPECT_EQ(id, 506);
    ASSERT_EQ(classInfo->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, CLSID_cPixSheet);
    classInfo->ReleaseTypeAttr(attributes);
}

// An object in Tag that asks its holder for something while both are going.
TEST_F(Lifetime, ATagThatClingsToItsHolderDoesNotDestroyItTwice) {
    LateObject clinging({});
    clinging.gone = [holder = sheet.get()] { holder->AddRef(), holder->Release(); };
    EXPECT_EQ(sheet->putref_Tag(object(&clinging, VT_UNKNOWN)), S_OK);
    EXPECT_EQ(clinging.Release(), 1u);
    sheet.reset();
    EXPECT_EQ(clinging.references, 0u);
}

_cPixSheet* asking = nullptr;

// Once the question is open: lets go of the object that asks, and says yes.
void CALLBACK letGo(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND box = ::FindWindowW(L"#32770", L"Overwrite Confirmation");
    if (box == nullptr) return;
    ::KillTimer(nullptr, timer);
    EXPECT_GT(asking->Release(), 0u) << "destroyed under its member";
    ::PostMessageW(box, WM_COMMAND, IDYES, 0);
}

TEST_F(Lifetime, ATimerLetsGoOfTheLastReferenceWhileAQuestionIsOpen) {
    const auto path = std::filesystem::temp_directory_path() / "pixkit-lifetime.bmp";
    std::ofstream(path) << "old";
    asking = server.create();
    VARIANT_BOOL isSaved = VARIANT_FALSE;
    asking->InitializeDIB(2, 2, &isSaved);
    ::SetTimer(nullptr, 0, 10, letGo);
    asking->SaveToFile_Bitmap(text(path.wstring().c_str()).bstrVal, VARIANT_FALSE, 0, VARIANT_TRUE, &isSaved);
    EXPECT_EQ(isSaved, VARIANT_TRUE);
    EXPECT_EQ(std::filesystem::file_size(path), 54u + 16u);
    std::filesystem::remove(path);
}

struct InUse {
    std::size_t handles = platform::openHandles();
    PROCESS_MEMORY_COUNTERS memory{};
    InUse() { ::GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof memory); }
    // The heap keeps some freed memory; a few bytes lost of each object would already be more than this.
    void expectNoMore() const {
        const InUse after;
        EXPECT_EQ(after.handles, handles);
        EXPECT_LT(after.memory.PagefileUsage, memory.PagefileUsage + 256 * 1024);
    }
};

// Objects of one thread, one after the other.
DWORD WINAPI manyObjects(void* server) {
    ::CoInitialize(nullptr);
    for (int i = 0; i < 25'000; ++i) {
        ComPtr<_cPixSheet> one;
        VARIANT_BOOL made = VARIANT_FALSE;
        *one.put() = static_cast<const Server*>(server)->create();
        if (i % 8 == 0) one->InitializeDIB(8, 8, &made);
    }
    ::CoUninitialize();
    return 0;
}

TEST_F(Lifetime, AHundredThousandObjectsOfFourThreadsLeaveNothingBehind) {
    const auto round = [&] {
        HANDLE threads[4];
        for (HANDLE& thread : threads)
            thread = ::CreateThread(nullptr, 0, manyObjects, &server, 0, nullptr);
        ::WaitForMultipleObjects(4, threads, TRUE, INFINITE);
        std::for_each(threads, threads + 4, ::CloseHandle);
    };
    round();
    const InUse before;
    round();
    before.expectNoMore();
}

TEST_F(Lifetime, TenThousandObjectsAndTextsLeaveNoGdiObjectHandleOrMemoryBehind) {
    ComPtr<IFontDisp> font;
    ASSERT_EQ(makeFont(9, IID_IFontDisp, font.putVoid()), S_OK);
    const BSTR words = text(L"A word").bstrVal;
    const auto cycle = [&](bool late) {
        ComPtr<_cPixSheet> one;
        *one.put() = server.create();
        IFontDisp* given = font.get();
        VARIANT_BOOL done = VARIANT_FALSE;
        LONG_PTR dc = 0;
        one->InitializeDIB(32, 32, &done);
        one->DrawText_stdFont(0, &given, words, 0, 0, 0, 0, 0, 100, txtLeft, VARIANT_FALSE, 0, nullptr, &done);
        EXPECT_EQ(done, VARIANT_TRUE);
        one->LoadDIBinDC(VARIANT_TRUE, &dc);
        EXPECT_NE(dc, 0);
        Variant bits;
        if (late) call(one.get(), L"GetDIBbits", {variable(bits)});
    };
    for (int i = 0; i < 100; ++i)
        cycle(true);
    const InUse before;
    LONG_PTR held = 0;
    ASSERT_TRUE(makeImage(2, 2));
    sheet->LoadDIBinDC(VARIANT_TRUE, &held);
    EXPECT_GT(platform::openHandles(), before.handles) << "the count tells nothing";
    sheet->DestroyDIB();
    for (int i = 0; i < 10'000; ++i)
        cycle(i % 100 == 0);
    before.expectNoMore();
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
