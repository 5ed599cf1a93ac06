// What keeps the DLL loaded, and what objects leave behind.
#include "Server.h"
#include <psapi.h>

namespace pixkit::test {

using Lifetime = ComTest;

TEST(Unloading, EveryReferenceAndLockCountsUntilItIsGivenBack) {
    const Server server;
    const auto canUnload = [&] { return server.plain("DllCanUnloadNow") == S_OK; };
    ASSERT_TRUE(canUnload());
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IClassFactory, factory.putVoid()), S_OK);
    EXPECT_FALSE(canUnload()) << "a held class factory";
    factory->LockServer(TRUE);
    factory->LockServer(TRUE);
    ComPtr<_cPixSheet> sheet;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID__cPixSheet, sheet.putVoid()), S_OK);
    factory.reset();
    EXPECT_FALSE(canUnload());
    sheet.reset();
    EXPECT_FALSE(canUnload()) << "two locks";
    ASSERT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IClassFactory, factory.putVoid()), S_OK);
    factory->LockServer(FALSE);
    factory->LockServer(FALSE);
    EXPECT_FALSE(canUnload());
    factory.reset();
    EXPECT_TRUE(canUnload());
}

TEST(Unloading, RefusalsLeaveNoReferenceAndNoPointer) {
    const Server server;
    void* object = &object;
    EXPECT_EQ(server.getClassObject(IID_IUnknown, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IDispatch, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(server.getClassObject(CLSID_cPixSheet, IID_IUnknown, nullptr), E_POINTER);
    ComPtr<IClassFactory> factory;
    server.getClassObject(CLSID_cPixSheet, IID_IClassFactory, factory.putVoid());
    object = &object;
    EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    factory.reset();
    EXPECT_EQ(server.plain("DllCanUnloadNow"), S_OK);
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
    VARIANT value;
    value.vt = VT_UNKNOWN;
    value.punkVal = &clinging;
    EXPECT_EQ(sheet->putref_Tag(value), S_OK);
    EXPECT_EQ(clinging.references, 1u);
    sheet.reset();
    EXPECT_EQ(clinging.references, 0u);
}

struct Resources {
    DWORD gdiObjects, handles;
    std::size_t bytes;
};

Resources inUse() {
    PROCESS_MEMORY_COUNTERS memory{};
    memory.cb = sizeof memory;
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof memory);
    DWORD handles = 0;
    using GetProcessHandleCount = BOOL WINAPI(HANDLE, DWORD*);
    const auto count = reinterpret_cast<GetProcessHandleCount*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32"), "GetProcessHandleCount")));
    if (count != nullptr) count(::GetCurrentProcess(), &handles);
    return {::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS), handles, memory.PagefileUsage};
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
    const Resources before = inUse();
    for (int i = 0; i < 10'000; ++i)
        cycle(i % 100 == 0);
    const Resources after = inUse();
    EXPECT_EQ(after.gdiObjects, before.gdiObjects);
    EXPECT_EQ(after.handles, before.handles);
    // The heap keeps some freed memory; one byte lost of each object's smallest part would already be more than this.
    EXPECT_LT(after.bytes, before.bytes + 256 * 1024);
}

} // namespace pixkit::test
