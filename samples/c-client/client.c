/* Uses the component from C99, through the table of functions that the generated header describes: every call names the
 * object twice, arguments have no defaults, and the result comes back in the last one.
 *
 *   client.exe PICTURE RESULT.png            the registered component
 *   client.exe PICTURE RESULT.png MANIFEST   the one beside this pixkit.manifest, without any registration
 */
#define COBJMACROS
#define INITGUID /* one file of a program defines the identifiers that the header declares */
#include "pixkit_com.h"
#include <stdio.h>
#include <wchar.h>

/* While a context is active, classes that its manifest names are found as if they were registered. */
static HANDLE activate(const wchar_t* manifest, ULONG_PTR* cookie) {
    ACTCTXW description = {0};
    description.cbSize = sizeof description;
    description.lpSource = manifest;
    HANDLE context = CreateActCtxW(&description);
    if (context == INVALID_HANDLE_VALUE || !ActivateActCtx(context, cookie)) return NULL;
    return context;
}

static int sayWhy(_cPixSheet* sheet, const char* what) {
    BSTR reason = NULL;
    sheet->lpVtbl->get_LastErrorText(sheet, &reason);
    printf("failed: %s: %ls\n", what, reason != NULL ? reason : L"");
    SysFreeString(reason);
    return 0;
}

static int work(_cPixSheet* sheet, BSTR picture, BSTR result) {
    VARIANT_BOOL isDone = VARIANT_FALSE;
    sheet->lpVtbl->LoadPicture_File(sheet, picture, 32, 32, VARIANT_FALSE, 32, &isDone);
    if (!isDone) return sayWhy(sheet, "LoadPicture_File");
    LONG width = 0, height = 0, alpha = 0;
    sheet->lpVtbl->get_Width(sheet, &width);
    sheet->lpVtbl->get_Height(sheet, &height);
    sheet->lpVtbl->PixelAlpha(sheet, width / 2, height / 2, &alpha);
    printf("%ld x %ld, alpha %ld in the middle\n", width, height, alpha);

    /* An object of the component's as an argument: the shadow is drawn first, the picture onto it. */
    _cPixSheet* shadow = NULL;
    sheet->lpVtbl->CreateDropShadow(sheet, 6, 0x000000, &shadow);
    if (shadow == NULL) return sayWhy(sheet, "CreateDropShadow");
    sheet->lpVtbl->Render(sheet, 0, 4, 4, 0, 0, 0, 0, 0, 0, 100, VARIANT_TRUE, VARIANT_FALSE, &shadow, gsclNone, 0, 0,
                          VARIANT_FALSE, &isDone);
    if (isDone) shadow->lpVtbl->SaveToFile_PNG(shadow, result, VARIANT_FALSE, &isDone);
    shadow->lpVtbl->Release(shadow);
    return isDone ? 1 : sayWhy(sheet, "Render and SaveToFile_PNG");
}

int wmain(int count, wchar_t** arguments) {
    ULONG_PTR cookie = 0;
    HANDLE context = NULL;
    _cPixSheet* sheet = NULL;
    if (count < 3) {
        puts("client.exe PICTURE RESULT.png [MANIFEST]");
        return 2;
    }
    if (count > 3 && (context = activate(arguments[3], &cookie)) == NULL) {
        puts("failed: no such manifest");
        return 1;
    }
    CoInitialize(NULL);
    HRESULT status = CoCreateInstance(&CLSID_cPixSheet, NULL, CLSCTX_INPROC_SERVER, &IID__cPixSheet, (void**)&sheet);
    if (FAILED(status)) {
        printf("failed: CoCreateInstance: %08lx\n", (unsigned long)status);
        return 1;
    }
    BSTR picture = SysAllocString(arguments[1]), result = SysAllocString(arguments[2]);
    int isGood = work(sheet, picture, result);
    SysFreeString(picture);
    SysFreeString(result);
    sheet->lpVtbl->Release(sheet);
    CoUninitialize();
    if (context != NULL) {
        DeactivateActCtx(0, cookie);
        ReleaseActCtx(context);
    }
    if (isGood) printf("saved, %s\n", context != NULL ? "without registration" : "registered");
    return isGood ? 0 : 1;
}
/* SPDX-License-Identifier: MIT */
