#include "platform/libraries.h"
#include "platform/faults.h"
#include "platform/portable/HandleTable.h"
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <new>

namespace pixkit::platform {

namespace {

struct Library {
    explicit Library(void* loadedModule) noexcept : module(loadedModule) {}
    ~Library() { dlclose(module); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    void* const module;
};

HandleTable<Library>& libraries() noexcept {
    static NeverDestroyed<HandleTable<Library>> table{HandleKind::library};
    return table.value;
}

void* openLibrary(const char* name) noexcept {
    struct Alias {
        const char* asked;
        const char* systemName;
    };
    constexpr Alias staying[] = {
        {"zlib1.dll", "libz.so.1"}, {"zlib.dll", "libz.so.1"}, {"libturbojpeg.so.0", "libturbojpeg.so.0"}};
    for (const Alias& alias : staying)
        if (std::strcmp(name, alias.asked) == 0)
            // These are looked for at every picture: once loaded they stay (RTLD_NODELETE), so that asking again only
            // counts a reference instead of mapping and relocating them anew.
            return dlopen(alias.systemName, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    return dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

} // namespace

Handle LoadLibraryA(const char* name) noexcept {
    if (name == nullptr || *name == '\0' || faultDue(SeamCall::loadLibrary)) return 0;
    void* const module = openLibrary(name);
    if (module == nullptr) return 0;
    try {
        return libraries().add(std::make_shared<Library>(module));
    } catch (const std::bad_alloc&) {
        dlclose(module);
        return 0;
    }
}

void* GetProcAddress(Handle library, const char* function) noexcept {
    const std::shared_ptr<Library> found = libraries().find(library);
    if (!found || function == nullptr || faultDue(SeamCall::getProcAddress)) return nullptr;
    return dlsym(found->module, function);
}

bool FreeLibrary(Handle library) noexcept {
    return libraries().remove(library) != nullptr;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
