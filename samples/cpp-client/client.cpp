// Uses the component from C++: first early bound, through the interface of the generated header, then late bound, by
// names only, as a program does that has no header.
//
//   client.exe PICTURE RESULT.bmp
#define INITGUID // one file of a program defines the identifiers that the header declares
#include "pixkit_com.h"
#include <cguid.h>
#include <cstdio>
#include <cwchar>

namespace {

bool earlyBound(BSTR picture, BSTR result) {
    _cPixSheet* sheet = nullptr;
    if (FAILED(CoCreateInstance(CLSID_cPixSheet, nullptr, CLSCTX_INPROC_SERVER, IID__cPixSheet,
                                reinterpret_cast<void**>(&sheet))))
        return false;
    VARIANT_BOOL loaded = VARIANT_FALSE, saved = VARIANT_FALSE, done;
    LONG width = 0, height = 0;
    sheet->LoadPicture_File(picture, 32, 32, VARIANT_FALSE, 32, &loaded);
    sheet->get_Width(&width);
    sheet->get_Height(&height);
    std::printf("loaded %d, %ld x %ld\n", loaded == VARIANT_TRUE, width, height);

    sheet->MakeGrayScale(gsclCCIR709, &done);
    sheet->MirrorImage(VARIANT_TRUE, VARIANT_FALSE, &done);
    // A byte array comes back in a SAFEARRAY; a null one is made for the caller.
    SAFEARRAY* bits = nullptr;
    sheet->GetDIBbits(&bits, VARIANT_TRUE, VARIANT_TRUE, VARIANT_TRUE, VARIANT_TRUE, VARIANT_TRUE, 0, 0, 0, 0,
                      VARIANT_TRUE, &done);
    std::printf("pixels in %u dimensions\n", bits != nullptr ? SafeArrayGetDim(bits) : 0);
    SafeArrayDestroy(bits);
    sheet->SaveToFile_Bitmap(result, VARIANT_FALSE, 0xFFFFFF, VARIANT_FALSE, &saved);
    sheet->Release();
    return loaded == VARIANT_TRUE && saved == VARIANT_TRUE;
}

// Calls a member by name with positional arguments, given last one first.
HRESULT call(IDispatch* object, const wchar_t* member, VARIANTARG* reversed, UINT count, VARIANT* result) {
    DISPID id;
    auto* name = const_cast<wchar_t*>(member);
    const HRESULT found = object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(found)) return found;
    DISPPARAMS arguments = {reversed, nullptr, count, 0};
    VariantInit(result);
    return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &arguments, result,
                          nullptr, nullptr);
}

bool lateBound(BSTR picture) {
    CLSID id;
    IDispatch* sheet = nullptr;
    if (FAILED(CLSIDFromProgID(L"pixkit.cPixSheet", &id)) ||
        FAILED(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&sheet))))
        return false;
    VARIANTARG arguments[3];
    VARIANT result;
    arguments[0].vt = VT_BSTR; // everything behind FileName is optional
    arguments[0].bstrVal = picture;
    call(sheet, L"LoadPicture_File", arguments, 1, &result);
    const bool loaded = result.boolVal == VARIANT_TRUE;

    LONG alpha = 0; // comes back by reference
    arguments[2].vt = arguments[1].vt = VT_I4;
    arguments[2].lVal = arguments[1].lVal = 0;
    arguments[0].vt = VT_BYREF | VT_I4;
    arguments[0].plVal = &alpha;
    call(sheet, L"GetPixel", arguments, 3, &result);
    std::printf("pixel 0, 0: colour %06lx, alpha %ld\n", result.lVal, alpha);

    IDispatch* copy = nullptr; // Nothing: the component creates the copy
    arguments[0].vt = VT_BYREF | VT_DISPATCH;
    arguments[0].ppdispVal = &copy;
    call(sheet, L"CopyImageTo", arguments, 1, &result);
    const bool copied = copy != nullptr;
    if (copied) copy->Release();
    sheet->Release();
    return loaded && copied;
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 3) {
        std::puts("client.exe PICTURE RESULT.bmp");
        return 2;
    }
    CoInitialize(nullptr);
    BSTR picture = SysAllocString(arguments[1]), result = SysAllocString(arguments[2]);
    const bool early = earlyBound(picture, result);
    const bool late = lateBound(picture);
    SysFreeString(picture);
    SysFreeString(result);
    CoUninitialize();
    std::printf("early bound %s, late bound %s\n", early ? "ok" : "FAILED", late ? "ok" : "FAILED");
    return early && late ? 0 : 1;
}
// SPDX-License-Identifier: MIT
