// Callers compiled against the virtual function table.
#define INITGUID // this file defines what the generated header only declares
#include "Pictures.h"
#include "Server.h"
#include "support/SourceFolder.h"

namespace pixkit::test {

using EarlyBound = ComTest;

std::wstring picture(const char* name) {
    return (sourceFolder() / "samples/pictures" / name).make_preferred().wstring();
}

TEST_F(EarlyBound, TrueIsMinusOneForCallersThatNegateItBitwise) {
    VARIANT_BOOL answer = 99;
    EXPECT_EQ(sheet->InitializeDIB(4, 3, &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_TRUE);
    EXPECT_EQ(sheet->InitializeDIB(-1, 3, &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_FALSE);
    EXPECT_EQ(sheet->put_ManageOwnDC(1), S_OK); // a C caller's true
    EXPECT_EQ(sheet->get_ManageOwnDC(&answer), S_OK);
    EXPECT_EQ(answer, VARIANT_TRUE);
}

TEST_F(EarlyBound, HandlesAndAddressesCutToThirtyTwoBitsWouldNotReachThePixels) {
    ASSERT_TRUE(makeImage(4, 3));
    LONG_PTR bits = 0, handle = 0, dc = 0, address = 0;
    sheet->get_BitsPointer(&bits);
    sheet->get_Handle(&handle);
    sheet->SetPixel(1, 0, 0x030201, 255, VARIANT_FALSE, &address);
    EXPECT_EQ(address, bits + (2 * 4 + 1) * 4);
    EXPECT_EQ(*reinterpret_cast<const DWORD*>(address), 0xFF010203u);
    EXPECT_EQ(::GetObjectType(reinterpret_cast<HGDIOBJ>(handle)), DWORD{OBJ_BITMAP});
    sheet->LoadDIBinDC(VARIANT_TRUE, &dc);
    EXPECT_EQ(::GetPixel(reinterpret_cast<HDC>(dc), 1, 0), 0x030201u);
    sheet->LoadDIBinDC(VARIANT_FALSE, &dc);
    EXPECT_EQ(dc, 0);
}

TEST_F(EarlyBound, NullPointersAreRefusedBeforeAnythingHappens) {
    ASSERT_TRUE(makeImage(4, 3));
    SAFEARRAY* none = nullptr;
    VARIANT_BOOL answer = VARIANT_FALSE;
    EXPECT_EQ(sheet->InitializeDIB(9, 9, nullptr), E_POINTER);
    EXPECT_EQ(sheet->LoadPicture_File(nullptr, 0, 0, VARIANT_FALSE, 32, nullptr), E_POINTER);
    EXPECT_EQ(sheet->LoadPicture_Stream(nullptr, 0, 0, 0, 0, VARIANT_FALSE, 32, &answer), E_POINTER);
    EXPECT_EQ(sheet->SaveToStream_Bitmap(&none, VARIANT_FALSE, 0, nullptr), E_POINTER);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(sheet->SaveToStream_Bitmap(nullptr, VARIANT_FALSE, 0, &answer), E_POINTER);
    EXPECT_EQ(sheet->CopyImageTo(nullptr, 0, 0, VARIANT_FALSE), E_POINTER);
    EXPECT_EQ(sheet->SwapDIBs(nullptr), E_POINTER);
    EXPECT_EQ(sheet->get_Tag(nullptr), E_POINTER);
    EXPECT_EQ(sheet->get_Version(nullptr), E_POINTER);
    EXPECT_EQ(sheet->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    LONG width = 0;
    EXPECT_EQ(sheet->get_Width(&width), S_OK);
    EXPECT_EQ(width, 4) << "the picture is gone";
}

TEST_F(EarlyBound, PixelsOutsideTheImageReportByValue) {
    ASSERT_TRUE(makeImage(4, 3));
    LONG alpha = 7, color = 0;
    VARIANT_BOOL premultiplied = VARIANT_TRUE;
    EXPECT_EQ(sheet->GetPixel(4, 0, &alpha, &premultiplied, &color), S_OK);
    EXPECT_EQ(color, -1);
    EXPECT_EQ(alpha, 0);
}

TEST_F(EarlyBound, FilesWithNamesBeyondTheCodePageLoadEditAndSave) {
    const TemporaryFolder folder;
    const std::filesystem::path copy = folder.path(u8"\u732b \u20ac.png");
    std::filesystem::copy_file(picture("butterfly-interlaced.png"), copy);
    VARIANT_BOOL answer = VARIANT_FALSE;
    LONG width = 0;
    const VARIANT name = text(copy.wstring().c_str());
    EXPECT_EQ(sheet->LoadPicture_File(name.bstrVal, 32, 32, VARIANT_TRUE, 32, &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_TRUE);
    sheet->get_Width(&width);
    EXPECT_GT(width, 0);
    Bytes original;
    sheet->GetOrginalFormat(&original.array, &answer);
    EXPECT_EQ(answer, VARIANT_TRUE);
    EXPECT_EQ(contentOf(original.array), readFile(copy));

    const VARIANT target = text(folder.path(u8"\u732b.bmp").wstring().c_str());
    EXPECT_EQ(sheet->MakeGrayScale(::gsclSimpleAvg, &answer), S_OK);
    EXPECT_EQ(sheet->SaveToFile_Bitmap(target.bstrVal, VARIANT_FALSE, 0xFFFFFF, VARIANT_FALSE, &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_TRUE);
    Bytes stream;
    sheet->SaveToStream_Bitmap(&stream.array, VARIANT_FALSE, 0xFFFFFF, &answer);
    EXPECT_EQ(contentOf(stream.array), readFile(folder.path(u8"\u732b.bmp")));
}

TEST_F(EarlyBound, VersionComesFromTheVersionResource) {
    BSTR version = nullptr;
    EXPECT_EQ(sheet->get_Version(&version), S_OK);
    EXPECT_STREQ(version, L"3.0.41");
    ::SysFreeString(version);
}

TEST_F(EarlyBound, TagHoldsAnyValueAndObjectsByReference) {
    Variant got;
    EXPECT_EQ(sheet->get_Tag(&got), S_OK);
    EXPECT_EQ(got.vt, VT_EMPTY);
    VARIANT value = text(L"kept");
    EXPECT_EQ(sheet->put_Tag(value), S_OK);
    ::VariantClear(&value);
    EXPECT_EQ(sheet->get_Tag(&got), S_OK);
    EXPECT_STREQ(got.bstrVal, L"kept");
    ::VariantClear(&got);

    ComPtr<_cPixSheet> other;
    *other.put() = server.create();
    const ULONG before = (other->AddRef(), other->Release());
    sheet->putref_Tag(object(other.get()));
    EXPECT_EQ((other->AddRef(), other->Release()), before + 1) << "not held, or copied";
    EXPECT_EQ(put(sheet.get(), L"Tag", object(sheet.get()), DISPATCH_PROPERTYPUTREF), S_OK);
    EXPECT_EQ((other->AddRef(), other->Release()), before) << "not let go";
    EXPECT_EQ(put(sheet.get(), L"Tag", number(0)), S_OK); // or the object would hold itself for ever
}

// Somebody else's object with the same interface: it answers nothing but QueryInterface.
class Foreign final : public IUnknown {
  public:
    STDMETHODIMP QueryInterface(REFIID id, void** result) override {
        const bool known = id == IID_IUnknown || id == IID_IDispatch || id == IID__cPixSheet;
        *result = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
};

TEST_F(EarlyBound, ForeignImplementationsAreNotTakenForOurs) {
    ASSERT_TRUE(makeImage(4, 3));
    Foreign foreign;
    void* const raw = &foreign;
    _cPixSheet* disguised = static_cast<_cPixSheet*>(raw);
    EXPECT_EQ(sheet->SwapDIBs(&disguised), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(sheet->CopyImageTo(&disguised, 0, 0, VARIANT_FALSE), DISP_E_TYPEMISMATCH);
    IDispatch* const dispatch = static_cast<IDispatch*>(raw);
    EXPECT_EQ(call(sheet.get(), L"SwapDIBs", {object(dispatch)}), DISP_E_TYPEMISMATCH);
}

TEST_F(EarlyBound, CopyAndSwapWorkOnObjectReferences) {
    ASSERT_TRUE(makeImage(2, 2));
    setPixel(1, 1, 0x112233);
    ComPtr<_cPixSheet> copy;
    EXPECT_EQ(sheet->CopyImageTo(copy.put(), 0, 0, VARIANT_FALSE), S_OK);
    ASSERT_TRUE(copy) << "Nothing was not replaced by a new object";
    LONG color = 0;
    copy->GetPixel(1, 1, nullptr, nullptr, &color);
    EXPECT_EQ(color, 0x112233);
    ASSERT_TRUE(makeImage(7, 7));
    _cPixSheet* other = copy.get();
    EXPECT_EQ(sheet->SwapDIBs(&other), S_OK);
    EXPECT_EQ(pixel(1, 1), 0x112233);
    _cPixSheet* nothing = nullptr;
    EXPECT_EQ(sheet->SwapDIBs(&nothing), S_OK);
    sheet->DestroyDIB();
    EXPECT_EQ(sheet->CopyImageTo(&nothing, 0, 0, VARIANT_FALSE), S_OK);
    EXPECT_EQ(nothing, nullptr) << "an empty image has no copy";
}

TEST_F(EarlyBound, OneIdentityAndTruthfulSideInterfaces) {
    ComPtr<IUnknown> unknown, again;
    ComPtr<IProvideClassInfo> classInfo;
    ComPtr<ISupportErrorInfo> errorInfo;
    ASSERT_EQ(sheet->QueryInterface(IID_IProvideClassInfo, classInfo.putVoid()), S_OK);
    ASSERT_EQ(sheet->QueryInterface(IID_ISupportErrorInfo, errorInfo.putVoid()), S_OK);
    sheet->QueryInterface(IID_IUnknown, unknown.putVoid());
    classInfo->QueryInterface(IID_IUnknown, again.putVoid());
    EXPECT_EQ(unknown.get(), again.get());
    EXPECT_EQ(errorInfo->InterfaceSupportsErrorInfo(IID__cPixSheet), S_FALSE);
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(classInfo->GetClassInfo(info.put()), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, CLSID_cPixSheet);
    EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
    info->ReleaseTypeAttr(attributes);
    void* other = &unknown;
    EXPECT_EQ(sheet->QueryInterface(IID_IStream, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}

#ifdef __i386__
// Calls a member without arguments but `this` and a result with the stack four bytes off the alignment that vector
// code of this compiler expects, as callers from other compilers do.
HRESULT __attribute__((noinline)) callMisaligned(void* function, void* object, void* result) {
    HRESULT status;
    asm volatile("movl %%esp, %%edi\n\t"
                 "andl $-16, %%esp\n\t"
                 "subl $4, %%esp\n\t"
                 "pushl %3\n\t"
                 "pushl %2\n\t"
                 "call *%1\n\t"
                 "movl %%edi, %%esp"
                 : "=a"(status)
                 : "r"(function), "r"(object), "r"(result)
                 : "edi", "ecx", "edx", "memory", "cc");
    return status;
}

// The function behind a member, found by its type information.
void* functionOf(_cPixSheet* object, const wchar_t* member) {
    ComPtr<ITypeInfo> info;
    object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put());
    wchar_t* names[] = {const_cast<wchar_t*>(member)};
    MEMBERID id = 0;
    info->GetIDsOfNames(names, 1, &id);
    FUNCDESC* function = nullptr;
    for (UINT i = 0; SUCCEEDED(info->GetFuncDesc(i, &function)); ++i) {
        const bool found = function->memid == id;
        const auto place = static_cast<std::size_t>(function->oVft) / sizeof(void*);
        info->ReleaseFuncDesc(function);
        if (found) return (*reinterpret_cast<void***>(object))[place];
    }
    return nullptr;
}

TEST_F(EarlyBound, CallersWithAFourByteAlignedStackSurviveVectorCode) {
    ASSERT_TRUE(makeImage(67, 5));
    setPixel(3, 3, 0x0000FF);
    VARIANT_BOOL answer = VARIANT_FALSE;
    EXPECT_EQ(callMisaligned(functionOf(sheet.get(), L"MakeImageInverse"), sheet.get(), &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_TRUE);
    EXPECT_EQ(pixel(3, 3), 0xFFFF00);
}
#endif

} // namespace pixkit::test
