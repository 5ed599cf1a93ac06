#include "com/module.h"
#include "gdiplus/Session.h"
#include "platform/Lock.h"
#include "platform/NeverDestroyed.h"
#include <mutex>
#include <optional>

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

namespace {
platform::Lock gdiplusMutex;

// Not the loader's to destroy: GDI+ must not be ended while a library is unloaded.
std::optional<GdiplusUser>& gdiplusUser() noexcept {
    static constinit platform::NeverDestroyed<std::optional<GdiplusUser>> user;
    return user.value;
}
} // namespace

void keepGdiplus() noexcept {
    const std::scoped_lock lock(gdiplusMutex);
    if (!gdiplusUser()) gdiplusUser().emplace();
}

void giveGdiplusBack() noexcept {
    const std::scoped_lock lock(gdiplusMutex);
    gdiplusUser().reset();
    GdiplusSession::forget();
}

void lockModule(bool lock) noexcept {
    lock ? ::InterlockedIncrement(&references) : ::InterlockedDecrement(&references);
}

bool isModuleInUse() noexcept {
    return references != 0 || areGdiplusTokensOut();
}

ModuleReference::ModuleReference() noexcept {
    lockModule(true);
}

ModuleReference::~ModuleReference() {
    lockModule(false);
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
