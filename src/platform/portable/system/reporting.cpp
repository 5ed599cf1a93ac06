#include "platform/reporting.h"
#include <dlfcn.h>
#include <sys/utsname.h>

namespace pixkit::platform {

bool showErrorDialog(const std::string&, const std::string&, const std::string&) noexcept {
    return false;
}

void OutputDebugStringW(const std::string&) noexcept {}

std::vector<NamedVersion> versionsInUse() {
    std::vector<NamedVersion> result;
    utsname system{};
    if (uname(&system) == 0) result.push_back({system.sysname, system.release});
    if (void* const zlib = dlopen("libz.so.1", RTLD_LAZY | RTLD_NOLOAD)) {
        if (void* const function = dlsym(zlib, "zlibVersion"))
            result.push_back({"zlib", reinterpret_cast<const char* (*)()>(function)()});
        dlclose(zlib);
    }
    return result;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
