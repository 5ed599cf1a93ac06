#include "platform/portable/system/FileStanding.h"
#include "platform/files.h"
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace pixkit::platform {

namespace {

constexpr const char* accessList = "system.posix_acl_access";

// Labels and marks of these spaces are the system's: it gives a new file those that it shall have.
bool isSystems(std::string_view attribute) noexcept {
    return attribute.starts_with("security.") || attribute.starts_with("trusted.");
}

bool takeOverAttribute(int descriptor, const char* name, const char* attribute) {
    const ssize_t size = lgetxattr(name, attribute, nullptr, 0);
    if (size < 0) return errno == ENODATA;
    std::vector<char> value(static_cast<std::size_t>(size));
    return lgetxattr(name, attribute, value.data(), value.size()) == size &&
           fsetxattr(descriptor, attribute, value.data(), value.size(), 0) == 0;
}

bool takeOverAttributes(int descriptor, const char* name) {
    const ssize_t size = llistxattr(name, nullptr, 0);
    if (size < 0) return errno == EOPNOTSUPP;
    std::vector<char> names(static_cast<std::size_t>(size)); // each ends with a NUL
    if (llistxattr(name, names.data(), names.size()) != size) return false;
    for (std::size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
        if (!isSystems(&names[at]) && !takeOverAttribute(descriptor, name, &names[at])) return false;
    }
    return true;
}

} // namespace

bool isReplaceable(const struct stat& file) noexcept {
    return S_ISREG(file.st_mode) && file.st_nlink == 1;
}

bool takeOver(int descriptor, const std::string& name, const struct stat& old) {
    struct stat made {};
    if (fstat(descriptor, &made) != 0) return false;
    const bool isTheirs = made.st_uid == old.st_uid && made.st_gid == old.st_gid;
    if (!isTheirs && fchown(descriptor, old.st_uid, old.st_gid) != 0) return false;
    // The folder may have given it an access list that the old file does not have.
    fremovexattr(descriptor, accessList);
    if (!takeOverAttributes(descriptor, name.c_str())) return false;
    // Not the marks that a program runs as its owner or group by: whatever is written to a file loses them.
    constexpr mode_t permissions = 0777;
    if (fstat(descriptor, &made) != 0) return false;
    return ((made.st_mode ^ old.st_mode) & permissions) == 0 || fchmod(descriptor, old.st_mode & permissions) == 0;
}

NameOfOpen nameOfOpen(int descriptor) noexcept {
    NameOfOpen name{};
    std::snprintf(name.text, sizeof name.text, "/proc/self/fd/%d", descriptor);
    return name;
}

void synchroniseFolderOf(const std::string& name) noexcept {
    const std::size_t length = folderLength(name);
    try {
        const std::string folder = length == 0 ? std::string(".") : name.substr(0, length);
        const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (descriptor < 0) return;
        fsync(descriptor);
        close(descriptor);
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): as any failure here
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
