// What the DLL exports.
#include "com/ClassFactory.h"
#include "com/Registration.h"
#include "com/TypeInformation.h"
#include "com/module.h"
#include "diagnostics/ErrorReport.h"
#include "pixkit_com.h"
#include <olectl.h>

// Per-thread notices stay on: the statically linked run-time library frees its per-thread data by them.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) pixkit::com::setModuleInstance(instance);
    // For programs that load and free the DLL themselves and never ask DllCanUnloadNow.
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) pixkit::com::TypeInformation::forget();
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (classId != CLSID_cPixSheet) return CLASS_E_CLASSNOTAVAILABLE;
    try { // here and not in DllMain: it takes memory
        pixkit::setErrorReportPresenter([](const pixkit::ErrorReport& report) {
            const pixkit::com::ModuleReference stays; // a host may release its objects while it reads
            return pixkit::showErrorReport(report);
        });
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return pixkit::com::createClassFactory(interfaceId, object);
}

STDAPI DllCanUnloadNow() {
    if (pixkit::com::isModuleInUse()) return S_FALSE;
    pixkit::com::TypeInformation::forget();
    pixkit::com::giveGdiplusBack();
    return S_OK;
}

STDAPI DllRegisterServer() {
    return pixkit::com::registerServer(pixkit::com::Scope::machine);
}

STDAPI DllUnregisterServer() {
    return pixkit::com::unregisterServer(pixkit::com::Scope::machine);
}

// `regsvr32 /n /i:user` registers for the current user only, which needs no administrator rights; without a word the
// machine is meant, as with DllRegisterServer.
STDAPI DllInstall(BOOL install, PCWSTR commandLine) {
    using namespace pixkit::com;
    if (commandLine == nullptr || *commandLine == L'\0') return install ? DllRegisterServer() : DllUnregisterServer();
    if (::lstrcmpiW(commandLine, L"user") != 0) return E_INVALIDARG;
    return install ? registerServer(Scope::user) : unregisterServer(Scope::user);
}
// SPDX-License-Identifier: MIT
