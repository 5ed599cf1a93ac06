// What keeps the DLL loaded, and what objects leave behind.
#include "Fonts.h"
#include "Server.h"
#include "platform/faults.h"
#include <algorithm>
#include <fstream>
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
    void* object = &object;
    EXPECT_EQ(server.getClassObject(IID_IUnknown, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IDispatch, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IUnknown, nullptr), E_POINTER);
    object = &object;
    EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_FALSE(server.canUnload());
    factory.reset();
    EXPECT_TRUE(server.canUnload());
}

// An object in Tag that asks its holder for something while both are going.
class Clinging final : public IUnknown {
  public:
    explicit Clinging(_cPixSheet* holder) : m_holder(holder) {}
    STDMETHODIMP QueryInterface(REFIID id, void** result) override {
        *result = id == IID_IUnknown ? this : nullptr;
        return id == IID_IUnknown ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override {
        if (--references == 0) {
            m_holder->AddRef();
            m_holder->Release();
        }
        return references;
    }
    ULONG references = 0;

  private:
    _cPixSheet* m_holder;
};

TEST_F(Lifetime, ATagThatClingsToItsHolderDoesNotDestroyItTwice) {
    Clinging clinging(sheet.get());
    EXPECT_EQ(sheet->putref_Tag(object(&clinging, VT_UNKNOWN)), S_OK);
    EXPECT_EQ(clinging.references, 1u);
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

TEST_F(Lifetime, TenThousandObjectsLeaveNoGdiObjectHandleOrMemoryBehind) {
    const auto cycle = [&](bool late) {
        ComPtr<_cPixSheet> one;
        *one.put() = server.create();
        VARIANT_BOOL made = VARIANT_FALSE;
        LONG_PTR dc = 0;
        one->InitializeDIB(32, 32, &made);
        one->LoadDIBinDC(VARIANT_TRUE, &dc);
        EXPECT_NE(dc, 0);
        if (late) {
            Variant bits;
            call(one.get(), L"GetDIBbits", {variable(bits)});
        }
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

TEST_F(Lifetime, TenThousandTextsLeaveAFontOrContextBehind) {
    ComPtr<IFontDisp> font;
    ASSERT_EQ(makeFont(9, IID_IFontDisp, font.putVoid()), S_OK);
    ASSERT_TRUE(makeImage(32, 16));
    const BSTR words = text(L"A word").bstrVal;
    const auto cycle = [&] {
        IFontDisp* given = font.get();
        VARIANT_BOOL isDrawn = VARIANT_FALSE;
        sheet->DrawText_stdFont(0, &given, words, 0, 0, 0, 0, 0, 100, txtLeft, VARIANT_FALSE, 0, nullptr, &isDrawn);
        EXPECT_EQ(isDrawn, VARIANT_TRUE);
    };
    for (int i = 0; i < 100; ++i)
        cycle();
    const InUse before;
    const auto held = ::CreateFontW(9, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, L"Tahoma");
    EXPECT_GT(platform::openHandles(), before.handles) << "the count tells nothing";
    ::DeleteObject(held);
    for (int i = 0; i < 10'000; ++i)
        cycle();
    before.expectNoMore();
}

} // namespace pixkit::test
