#include "platform/gdiplus.h"
#include "platform/HandlerSlot.h"
#include "platform/Lock.h"
#include "platform/NeverDestroyed.h"
#include "platform/system.h"
#include <mutex>
#include <utility>

namespace pixkit::platform {

namespace {

HandlerSlot<GdiplusProvider> providerInUse;

Lock libraryMutex;
bool isAsked = false;
constinit NeverDestroyed<std::shared_ptr<const GdiplusApi>> library; // ready before any static image asks

std::shared_ptr<const GdiplusApi> load() noexcept {
    try {
        const auto provider = providerInUse.get();
        auto loaded = std::make_shared<GdiplusApi>(provider ? (*provider)() : systemGdiplus());
        if (loaded->isComplete()) return loaded;
    } catch (...) {
        // as if there were none
    }
    return nullptr;
}

} // namespace

std::shared_ptr<const GdiplusApi> gdiplusLibrary() noexcept {
    const std::scoped_lock lock(libraryMutex);
    if (!isAsked && isUnderLoaderLock()) return nullptr; // for now
    if (!std::exchange(isAsked, true)) library.value = load();
    return library.value;
}

void forgetGdiplusLibrary() noexcept {
    std::shared_ptr<const GdiplusApi> last; // freed behind the lock
    const std::scoped_lock lock(libraryMutex);
    library.value.swap(last);
    isAsked = false;
}

void setGdiplusProvider(GdiplusProvider provider) {
    providerInUse.set(std::move(provider));
    forgetGdiplusLibrary();
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
