// Files through POSIX: names are the bytes given, which the library keeps as UTF-8.
#include "platform/files.h"
#include "platform/faults.h"
#include "platform/portable/HandleTable.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace pixkit::platform {

namespace {

struct File {
    explicit File(int openedDescriptor) noexcept : descriptor(openedDescriptor) {}
    ~File() { close(descriptor); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    const int descriptor;
};

HandleTable<File>& files() noexcept {
    static NeverDestroyed<HandleTable<File>> table{HandleKind::file};
    return table.value;
}

// A name with a NUL inside would silently mean another file.
bool isName(const std::string& name) noexcept {
    return !name.empty() && name.find('\0') == std::string::npos;
}

bool status(const std::string& name, struct stat& result) noexcept {
    return isName(name) && stat(name.c_str(), &result) == 0;
}

// Neither directories nor devices are deleted or replaced, and on no system a file marked read-only.
bool mayGo(const struct stat& file) noexcept {
    return S_ISREG(file.st_mode) && (file.st_mode & S_IWUSR) != 0;
}

// Without blocking, so that a pipe that nobody writes to is refused by the caller instead of waited for.
int openFile(const std::string& name, FileUse use) noexcept {
    int how = O_RDONLY;
    if (use == FileUse::createAlways) how = O_WRONLY | O_CREAT | O_TRUNC;
    if (use == FileUse::createNew) how = O_WRONLY | O_CREAT | O_EXCL;
    return open(name.c_str(), how | O_CLOEXEC | O_NONBLOCK, 0666);
}

// Moves bytes by `transfer` until all are moved, the file ends or an error comes up (false).
template <class Transfer>
bool moveAll(std::uint32_t bytes, std::uint32_t& done, Transfer transfer) noexcept {
    done = 0;
    while (done < bytes) {
        const ssize_t moved = transfer(done, bytes - done);
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) return false;
        if (moved == 0) break;
        done += static_cast<std::uint32_t>(moved);
    }
    return true;
}

} // namespace

Handle CreateFileW(const std::string& name, FileUse use) noexcept {
    if (!isName(name) || faultDue(SeamCall::createFile)) return invalidHandle;
    const int descriptor = openFile(name, use);
    if (descriptor < 0) return invalidHandle;
    struct stat opened {};
    if (fstat(descriptor, &opened) != 0 || !S_ISREG(opened.st_mode)) {
        close(descriptor);
        return invalidHandle;
    }
    try {
        if (const Handle handle = files().add(std::make_shared<File>(descriptor)); handle != 0) return handle;
    } catch (const std::bad_alloc&) {
        close(descriptor);
    }
    // Nobody would know of the file that a failed call made.
    if (use == FileUse::createNew) unlink(name.c_str());
    return invalidHandle;
}

bool CloseHandle(Handle file) noexcept {
    return files().remove(file) != nullptr;
}

bool ReadFile(Handle file, void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept {
    done = 0;
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened || faultDue(SeamCall::readFile)) return false;
    return moveAll(bytes, done, [&](std::uint32_t offset, std::uint32_t count) {
        return read(opened->descriptor, static_cast<std::uint8_t*>(buffer) + offset, count);
    });
}

bool WriteFile(Handle file, const void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept {
    done = 0;
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened) return false;
    if (faultDue(SeamCall::writeFile)) bytes /= 2;
    return moveAll(bytes, done, [&](std::uint32_t offset, std::uint32_t count) {
        return write(opened->descriptor, static_cast<const std::uint8_t*>(buffer) + offset, count);
    });
}

bool SetFilePointer(Handle file, std::uint32_t position) noexcept {
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened || faultDue(SeamCall::setFilePointer)) return false;
    return lseek(opened->descriptor, static_cast<off_t>(position), SEEK_SET) >= 0;
}

std::int64_t GetFileSize(Handle file) noexcept {
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened || faultDue(SeamCall::getFileSize)) return -1;
    struct stat result {};
    return fstat(opened->descriptor, &result) == 0 ? result.st_size : -1;
}

std::uint32_t GetFileAttributesW(const std::string& name) noexcept {
    struct stat result {};
    if (!status(name, result) || faultDue(SeamCall::getFileAttributes)) return invalidFileAttributes;
    std::uint32_t attributes = S_ISDIR(result.st_mode) ? fileAttributeDirectory : 0;
    if ((result.st_mode & S_IWUSR) == 0) attributes |= fileAttributeReadonly;
    return attributes != 0 ? attributes : fileAttributeNormal;
}

bool SetFileAttributesW(const std::string& name, std::uint32_t attributes) noexcept {
    struct stat existing {};
    if (!status(name, existing) || faultDue(SeamCall::setFileAttributes)) return false;
    if (S_ISDIR(existing.st_mode)) return true; // as on Windows, where the attribute protects no directory
    constexpr mode_t everyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t mode = existing.st_mode & 07777U;
    const bool readonly = (attributes & fileAttributeReadonly) != 0;
    const mode_t wanted = readonly ? mode & ~everyWrite : mode | S_IWUSR;
    // A mode that is right already is not set: only the file's owner may.
    return wanted == mode || chmod(name.c_str(), wanted) == 0;
}

bool DeleteFileW(const std::string& name) noexcept {
    struct stat target {};
    if (!status(name, target) || faultDue(SeamCall::deleteFile)) return false;
    return mayGo(target) && unlink(name.c_str()) == 0;
}

bool MoveFileExW(const std::string& from, const std::string& to) noexcept {
    struct stat target {};
    if (!isName(from) || !isName(to) || faultDue(SeamCall::moveFile)) return false;
    if (status(to, target) && !mayGo(target)) return false;
    return rename(from.c_str(), to.c_str()) == 0;
}

std::size_t folderLength(const std::string& name) noexcept {
    return name.rfind('/') + 1; // nowhere is the greatest number
}

// There is one kind of name here.
Handle CreateFileA(const std::string& name, FileUse use) noexcept {
    return CreateFileW(name, use);
}
std::uint32_t GetFileAttributesA(const std::string& name) noexcept {
    return GetFileAttributesW(name);
}
bool SetFileAttributesA(const std::string& name, std::uint32_t attributes) noexcept {
    return SetFileAttributesW(name, attributes);
}
bool DeleteFileA(const std::string& name) noexcept {
    return DeleteFileW(name);
}
bool MoveFileExA(const std::string& from, const std::string& to) noexcept {
    return MoveFileExW(from, to);
}

} // namespace pixkit::platform
