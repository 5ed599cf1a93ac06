// What a call through COM costs: one pixel late and early bound, and a megapixel in one call, against memcpy; and what
// a region of 400,000 rectangles costs.
#define INITGUID
#include "com/Automation.h"
#include "pixkit_com.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

namespace {

using pixkit::com::ComPtr;
using pixkit::com::Variant;

double seconds() {
    LARGE_INTEGER now, frequency;
    ::QueryPerformanceCounter(&now);
    ::QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// Seconds for one run: the best of several rounds.
template <class Body>
double timed(int rounds, int runs, Body body) {
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double start = seconds();
        for (int i = 0; i < runs; ++i)
            body();
        best = std::min(best, (seconds() - start) / runs);
    }
    return best;
}

ComPtr<_cPixSheet> created(HMODULE dll) {
    const auto getClassObject = reinterpret_cast<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>(
        reinterpret_cast<void*>(::GetProcAddress(dll, "DllGetClassObject")));
    ComPtr<IClassFactory> factory;
    ComPtr<_cPixSheet> sheet;
    getClassObject(CLSID_cPixSheet, IID_IClassFactory, factory.putVoid());
    factory->CreateInstance(nullptr, IID__cPixSheet, sheet.putVoid());
    return sheet;
}

void lateGetPixel(_cPixSheet* sheet, DISPID id) {
    VARIANTARG arguments[2];
    arguments[0].vt = arguments[1].vt = VT_I4;
    arguments[0].lVal = 7;
    arguments[1].lVal = 9;
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    Variant color;
    sheet->Invoke(id, GUID{}, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &color, nullptr, nullptr);
}

void report(const char* what, double nanoseconds) {
    std::printf("%-58s %12.1f ns\n", what, nanoseconds * 1e9);
}

} // namespace

int main() {
    ::CoInitialize(nullptr);
    wchar_t path[MAX_PATH];
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const auto file = std::filesystem::path(path).parent_path() / "pixkit.dll";
    const HMODULE dll = ::LoadLibraryW(file.c_str());
    if (dll == nullptr) {
        std::puts("pixkit.dll is not beside the program");
        return 1;
    }
    ComPtr<_cPixSheet> sheet = created(dll);
    VARIANT_BOOL done;
    sheet->InitializeDIB(1024, 1024, &done);

    wchar_t name[] = L"GetPixel";
    wchar_t* names[] = {name};
    DISPID id = 0;
    sheet->GetIDsOfNames(GUID{}, names, 1, LOCALE_USER_DEFAULT, &id);
    const double late = timed(5, 100'000, [&] { lateGetPixel(sheet.get(), id); });
    const double early = timed(5, 1'000'000, [&] {
        LONG color;
        sheet->GetPixel(9, 7, nullptr, nullptr, &color);
    });
    report("GetPixel, late bound", late);
    report("GetPixel, early bound", early);
    std::printf("  late / early: %.1f\n", late / early);

    std::vector<char> copy(4 * 1024 * 1024);
    LONG_PTR bits;
    sheet->get_BitsPointer(&bits);
    const double memory =
        timed(20, 5, [&] { std::memcpy(copy.data(), reinterpret_cast<const void*>(bits), copy.size()); });
    report("memcpy of 1 MP", memory);
    SAFEARRAY* stream = nullptr;
    const auto getBits = [&] { sheet->GetDIBbits(&stream, -1, -1, -1, -1, -1, 0, 0, 0, 0, -1, &done); };
    const double again = timed(20, 5, getBits);
    const double fresh = timed(20, 5, [&] {
        ::SafeArrayDestroy(stream);
        stream = nullptr;
        getBits();
    });
    report("GetDIBbits of 1 MP into the same array again", again);
    std::printf("  of memcpy's speed: %.2f\n", memory / again);
    report("GetDIBbits of 1 MP into a new array", fresh);
    std::printf("  of memcpy's speed: %.2f (the system makes the array's pages)\n", memory / fresh);
    ::SafeArrayDestroy(stream);

    sheet->InitializeDIB(1000, 800, &done);
    sheet->get_BitsPointer(&bits);
    for (LONG_PTR i = 0; i < 400'000; ++i) // every second pixel, in turn the first and the second
        reinterpret_cast<BYTE*>(bits)[8 * i + 3 + i / 500 % 2 * 4] = 255;
    report("CreateRegion of 400,000 rectangles", timed(5, 1, [&] {
               LONG_PTR region;
               sheet->CreateRegion(regionShaped, 1, &region);
               ::DeleteObject(reinterpret_cast<HGDIOBJ>(region));
           }));
    sheet.reset();
    ::CoUninitialize();
}
// SPDX-License-Identifier: MIT
