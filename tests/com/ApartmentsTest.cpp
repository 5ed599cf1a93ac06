// Objects that are used from another apartment than their own: through a proxy, which the system makes from the type
// library.
#include "Server.h"
#include <functional>

namespace pixkit::test {

class Apartments : public ComTest, public testing::WithParamInterface<DWORD> {
  protected:
    ~Apartments() override { server.plain("DllUnregisterServer"); }

    // Does something in another apartment while this one serves calls.
    void elsewhere(std::function<void()> work) {
        HANDLE thread = ::CreateThread(nullptr, 0, run, &work, 0, nullptr);
        for (MSG message; ::MsgWaitForMultipleObjects(1, &thread, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0;)
            while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                ::DispatchMessageW(&message);
        ::CloseHandle(thread);
    }
    static DWORD WINAPI run(void* work) {
        EXPECT_EQ(::CoInitializeEx(nullptr, GetParam()), S_OK);
        (*static_cast<std::function<void()>*>(work))();
        ::CoUninitialize();
        return 0;
    }
    // A proxy replaces the reference in the variable by another.
    static HRESULT swap(_cPixSheet& sheet, ComPtr<_cPixSheet>& with) {
        _cPixSheet* variable = with.detach();
        const HRESULT status = sheet.SwapDIBs(&variable);
        *with.put() = variable;
        return status;
    }
    // Calls of every kind of argument, of an object of another apartment.
    void useProxy(_cPixSheet* proxy) {
        ComPtr<_cPixSheet> own, copy;
        *own.put() = server.create();
        VARIANT_BOOL done = VARIANT_FALSE;
        LONG width = 0;
        EXPECT_TRUE(isTrue(proxy, L"InitializeDIB", {number(4), number(3)}));
        EXPECT_EQ(proxy->get_Width(&width), S_OK);
        EXPECT_EQ(width, 4);
        SAFEARRAY* file = nullptr;
        EXPECT_EQ(proxy->SaveToStream_Bitmap(&file, VARIANT_FALSE, 0, &done), S_OK);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->rgsabound[0].cElements, 54U + 36U);
        EXPECT_EQ(proxy->LoadPicture_Stream(&file, 32, 32, 0, 0, VARIANT_FALSE, 32, &done), S_OK);
        EXPECT_EQ(done, VARIANT_TRUE);
        EXPECT_EQ(proxy->SaveToStream_TGA(&file, VARIANT_FALSE, VARIANT_FALSE, VARIANT_FALSE, &done), S_OK);
        EXPECT_EQ(done, VARIANT_TRUE) << "an array in the place of another";
        ::SafeArrayDestroy(file);
        EXPECT_EQ(proxy->put_Tag(text(L"Any text")), S_OK);
        Variant tag, late;
        EXPECT_EQ(proxy->get_Tag(&tag), S_OK);
        EXPECT_STREQ(tag.bstrVal, L"Any text");
        EXPECT_EQ(call(proxy, L"GetDIBbits", {variable(late)}), S_OK);
        // An object of the same apartment as the proxy's is one; the other way round each is somebody else's.
        EXPECT_EQ(proxy->CopyImageTo(copy.put(), 8, 6, VARIANT_FALSE), S_OK);
        ASSERT_TRUE(copy);
        EXPECT_EQ(swap(*proxy, copy), S_OK);
        EXPECT_EQ(proxy->get_Width(&width), S_OK);
        EXPECT_EQ(width, 8);
        ComPtr<_cPixSheet> same;
        same.hold(proxy);
        EXPECT_EQ(swap(*own.get(), same), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(call(own.get(), L"CopyImageTo", {object(proxy)}), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(swap(*proxy, own), DISP_E_TYPEMISMATCH);
    }
};

TEST_P(Apartments, AreReachedThroughProxiesThatTheTypeLibraryMakes) {
    if (server.plain("DllRegisterServer") == E_ACCESSDENIED) GTEST_SKIP() << "needs administrator rights";
    IStream* passed = nullptr;
    ASSERT_EQ(::CoMarshalInterThreadInterfaceInStream(IID__cPixSheet, sheet.get(), &passed), S_OK);
    elsewhere([&] {
        ComPtr<_cPixSheet> proxy;
        ASSERT_EQ(::CoGetInterfaceAndReleaseStream(passed, IID__cPixSheet, proxy.putVoid()), S_OK);
        ASSERT_NE(proxy.get(), sheet.get());
        useProxy(proxy.get());
    });
}

TEST_P(Apartments, AreRefusedWhereNothingIsRegistered) {
    IStream* passed = nullptr;
    EXPECT_TRUE(FAILED(::CoMarshalInterThreadInterfaceInStream(IID__cPixSheet, sheet.get(), &passed)));
    EXPECT_TRUE(makeImage(2, 2));
}

INSTANTIATE_TEST_SUITE_P(FromOneAndMany, Apartments, testing::Values(COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED));

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
