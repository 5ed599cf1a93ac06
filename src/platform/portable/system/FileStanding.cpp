#include "platform/portable/system/FileStanding.h"
#include "platform/files.h"
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace pixkit::platform {

namespace {

// What is open by its name alone, to be looked at; its contents stay closed. -1 where it cannot be.
class Place {
  public:
    explicit Place(int descriptor) noexcept : m_descriptor(descriptor) {}
    ~Place() {
        const int reason = errno;
        if (m_descriptor >= 0) close(m_descriptor);
        errno = reason;
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    int get() const noexcept { return m_descriptor; }

  private:
    const int m_descriptor;
};

// In a folder that all may write to, and nobody may remove others' files from, a stranger can put a link where
// somebody is going to write, who then replaces whatever file it leads to. Links of the caller and of the folder's
// owner lead nobody astray. Kernels may have this rule too (fs.protected_symlinks), but keep it only when they follow a
// link themselves.
bool mayFollow(const struct stat& link, const struct stat& folder) noexcept {
    constexpr mode_t shared = S_ISVTX | S_IWOTH;
    return (folder.st_mode & shared) != shared || link.st_uid == geteuid() || link.st_uid == folder.st_uid;
}

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

std::optional<std::string> textOfLink(const std::string& name) {
    struct stat folder {
    }, link{};
    const auto refusedFor = [](int reason) {
        errno = reason;
        return std::nullopt;
    };
    // One link in one folder is looked at, judged and read, whatever takes its name meanwhile.
    const Place in(open(folderOf(name).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (in.get() < 0) return {};
    const Place at(openat(in.get(), name.c_str() + folderLength(name), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (at.get() < 0 || fstat(in.get(), &folder) != 0 || fstat(at.get(), &link) != 0) return {};
    if (!S_ISLNK(link.st_mode)) return refusedFor(EINVAL);
    if (!mayFollow(link, folder)) return refusedFor(EACCES);
    std::string text(PATH_MAX, '\0');
    const ssize_t length = readlinkat(at.get(), "", text.data(), text.size());
    if (length < 0) return {};
    if (length == PATH_MAX) return refusedFor(ENAMETOOLONG);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

NameOfOpen nameOfOpen(int descriptor) noexcept {
    NameOfOpen name{};
    std::snprintf(name.text, sizeof name.text, "/proc/self/fd/%d", descriptor);
    return name;
}

std::string folderOf(const std::string& name) {
    const std::size_t length = folderLength(name);
    return length == 0 ? std::string(".") : name.substr(0, length);
}

void synchroniseFolderOf(const std::string& name) noexcept {
    try {
        const int descriptor = open(folderOf(name).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (descriptor < 0) return;
        fsync(descriptor);
        close(descriptor);
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): as any failure here
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
