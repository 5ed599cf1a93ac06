// Entry points of the DLL.
#include "com/module.h"
#include "com/ClassFactory.h"
#include "com/Registration.h"
#include "com/TypeInformation.h"
#include "pixkit_com.h"
#include <olectl.h>

namespace pixkit::com {

namespace {
HINSTANCE instance = nullptr;
LONG references = 0;
} // namespace

HINSTANCE moduleInstance() noexcept {
    return instance;
}

std::wstring modulePath() noexcept try {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(instance, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2); // it was cut
    }
} catch (...) {
    return {};
}

void lockModule(bool lock) noexcept {
    lock ? ::InterlockedIncrement(&references) : ::InterlockedDecrement(&references);
}

ModuleReference::ModuleReference() noexcept {
    lockModule(true);
}

ModuleReference::~ModuleReference() {
    lockModule(false);
}

} // namespace pixkit::com

// Per-thread notices stay on: the statically linked run-time library frees its per-thread data by them.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) pixkit::com::instance = instance;
    // For programs that load and free the DLL themselves and never ask DllCanUnloadNow.
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) pixkit::com::TypeInformation::forget();
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (classId != CLSID_cPixSheet) return CLASS_E_CLASSNOTAVAILABLE;
    return pixkit::com::createClassFactory(interfaceId, object);
}

STDAPI DllCanUnloadNow() {
    if (pixkit::com::references != 0) return S_FALSE;
    pixkit::com::TypeInformation::forget();
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
