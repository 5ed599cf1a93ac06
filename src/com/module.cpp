#include "com/module.h"

namespace pixkit::com {

namespace {
HINSTANCE instance = nullptr;
LONG references = 0;
} // namespace

void setModuleInstance(HINSTANCE module) noexcept {
    instance = module;
}

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

bool isModuleInUse() noexcept {
    return references != 0;
}

ModuleReference::ModuleReference() noexcept {
    lockModule(true);
}

ModuleReference::~ModuleReference() {
    lockModule(false);
}

} // namespace pixkit::com
