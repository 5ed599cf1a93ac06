// Files through POSIX: names are the bytes given, which the library keeps as UTF-8.
#include "platform/files.h"
#include "platform/faults.h"
#include "platform/portable/HandleTable.h"
#include "platform/portable/system/FileStanding.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <new>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace pixkit::platform {

namespace {

thread_local FileError lastError = FileError::other;

FileError meaningOf(int error) noexcept {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return FileError::notFound;
    case EACCES:
    case EPERM:
        return FileError::denied;
    case EBUSY:
    case ETXTBSY:
        return FileError::inUse;
    case EROFS:
        return FileError::readOnlySystem;
    case ENOSPC:
    case EDQUOT:
        return FileError::diskFull;
    case EMFILE:
    case ENFILE:
        return FileError::tooManyOpen;
    case EFBIG:
        return FileError::tooLarge;
    case EIO:
        return FileError::device;
    case EINVAL:
    case ENAMETOOLONG:
    case EILSEQ:
        return FileError::badName;
    case ELOOP:
        return FileError::circle;
    case ENOMEM:
        return FileError::noMemory;
    default:
        return FileError::other;
    }
}

// What a function that fails returns: the cause is kept for GetLastError.
template <class Result>
Result failed(FileError error, Result answer) noexcept {
    lastError = error;
    return answer;
}
template <class Result>
Result failed(Result answer) noexcept {
    return failed(meaningOf(errno), answer);
}

struct File {
    File(int openedDescriptor, bool isUnnamed) noexcept : descriptor(openedDescriptor), hasNoName(isUnnamed) {}
    ~File() {
        if (descriptor >= 0) close(descriptor);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int descriptor;
    bool hasNoName; // a draft whose name is still to come
};

HandleTable<File>& files() noexcept {
    static NeverDestroyed<HandleTable<File>> table{HandleKind::file};
    return table.value;
}

// A handle for an open descriptor, which is closed when there can be none.
Handle handleOf(int descriptor, bool isUnnamed = false) noexcept {
    try {
        const Handle handle = files().add(std::make_shared<File>(descriptor, isUnnamed));
        return handle != 0 ? handle : failed(FileError::tooManyOpen, invalidHandle);
    } catch (const std::bad_alloc&) {
        close(descriptor);
        return failed(FileError::noMemory, invalidHandle);
    }
}

// A name with a NUL inside would silently mean another file.
bool isName(const std::string& name) noexcept {
    if (name.find('\0') != std::string::npos) return failed(FileError::badName, false);
    return name.empty() ? failed(FileError::notFound, false) : true;
}

bool status(const std::string& name, struct stat& result) noexcept {
    return isName(name) && (stat(name.c_str(), &result) == 0 || failed(false));
}

// Neither directories nor devices are deleted, and on no system a file marked read-only.
bool mayGo(const struct stat& file) noexcept {
    return S_ISLNK(file.st_mode) || (S_ISREG(file.st_mode) && (file.st_mode & S_IWUSR) != 0);
}

// Without blocking, so that a pipe that nobody writes to is refused by the caller instead of waited for.
int openFile(const std::string& name, FileUse use) noexcept {
    int how = O_RDONLY;
    if (use == FileUse::createAlways) how = O_WRONLY | O_CREAT | O_TRUNC;
    if (use == FileUse::overwrite) how = O_WRONLY | O_NOFOLLOW;
    int descriptor;
    do { // a slow file system may be interrupted
        descriptor = open(name.c_str(), how | O_CLOEXEC | O_NONBLOCK, 0666);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

// Moves bytes by `transfer` until all are moved, the file ends or an error comes up (false).
template <class Transfer>
bool moveAll(std::uint32_t bytes, std::uint32_t& done, Transfer transfer) noexcept {
    done = 0;
    while (done < bytes) {
        const ssize_t moved = transfer(done, bytes - done);
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) return failed(false);
        if (moved == 0) break;
        done += static_cast<std::uint32_t>(moved);
    }
    return true;
}

} // namespace

FileError GetLastError() noexcept {
    return lastError;
}

Handle CreateFileW(const std::string& name, FileUse use) noexcept {
    if (!isName(name)) return invalidHandle;
    if (faultDue(SeamCall::createFile)) return failed(FileError::other, invalidHandle);
    const int descriptor = openFile(name, use);
    if (descriptor < 0) return failed(invalidHandle);
    struct stat opened {};
    if (fstat(descriptor, &opened) == 0 && S_ISREG(opened.st_mode)) return handleOf(descriptor);
    close(descriptor);
    return failed(FileError::other, invalidHandle);
}

bool CloseHandle(Handle file) noexcept {
    const std::shared_ptr<File> opened = files().remove(file);
    if (!opened) return failed(FileError::other, false);
    const bool isFaulty = faultDue(SeamCall::closeFile);
    if (opened.use_count() > 1) return true; // the thread that uses it still closes it
    const int answer = close(std::exchange(opened->descriptor, -1));
    if (isFaulty) return failed(FileError::device, false);
    // The descriptor is gone after an interruption too, and what was written is not in danger.
    return answer == 0 || errno == EINTR || failed(false);
}

bool ReadFile(Handle file, void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept {
    done = 0;
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened || faultDue(SeamCall::readFile)) return failed(FileError::other, false);
    return moveAll(bytes, done, [&](std::uint32_t offset, std::uint32_t count) {
        return read(opened->descriptor, static_cast<std::uint8_t*>(buffer) + offset, count);
    });
}

bool WriteFile(Handle file, const void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept {
    done = 0;
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened) return failed(FileError::other, false);
    lastError = FileError::other; // of a write that ends early
    if (faultDue(SeamCall::writeFile)) bytes /= 2;
    return moveAll(bytes, done, [&](std::uint32_t offset, std::uint32_t count) {
        return write(opened->descriptor, static_cast<const std::uint8_t*>(buffer) + offset, count);
    });
}

bool SetFilePointer(Handle file, std::uint32_t position) noexcept {
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened || faultDue(SeamCall::setFilePointer)) return failed(FileError::other, false);
    return lseek(opened->descriptor, static_cast<off_t>(position), SEEK_SET) >= 0 || failed(false);
}

std::int64_t GetFileSize(Handle file) noexcept {
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened || faultDue(SeamCall::getFileSize)) return failed(FileError::other, -1);
    struct stat result {};
    return fstat(opened->descriptor, &result) == 0 ? result.st_size : failed(-1);
}

std::uint32_t GetFileAttributesW(const std::string& name) noexcept {
    struct stat result {};
    if (!status(name, result)) return invalidFileAttributes;
    if (faultDue(SeamCall::getFileAttributes)) return failed(FileError::other, invalidFileAttributes);
    std::uint32_t attributes = S_ISDIR(result.st_mode) ? fileAttributeDirectory : 0;
    if ((result.st_mode & S_IWUSR) == 0) attributes |= fileAttributeReadonly;
    return attributes != 0 ? attributes : fileAttributeNormal;
}

bool SetFileAttributesW(const std::string& name, std::uint32_t attributes) noexcept {
    struct stat existing {};
    if (!isName(name)) return false;
    if (lstat(name.c_str(), &existing) != 0) return failed(false);
    if (faultDue(SeamCall::setFileAttributes)) return failed(FileError::other, false);
    if (!S_ISREG(existing.st_mode)) return true; // the attribute protects no directory on Windows either
    constexpr mode_t everyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t mode = existing.st_mode & 07777U;
    const bool readonly = (attributes & fileAttributeReadonly) != 0;
    const mode_t wanted = readonly ? mode & ~everyWrite : mode | S_IWUSR;
    // A mode that is right already is not set: only the file's owner may. A link that has come there since is not
    // followed.
    return wanted == mode || fchmodat(AT_FDCWD, name.c_str(), wanted, AT_SYMLINK_NOFOLLOW) == 0 || failed(false);
}

bool DeleteFileW(const std::string& name) noexcept {
    struct stat target {};
    if (!isName(name)) return false;
    if (lstat(name.c_str(), &target) != 0) return failed(false);
    if (faultDue(SeamCall::deleteFile)) return failed(FileError::other, false);
    if (!mayGo(target)) return failed(FileError::denied, false);
    return unlink(name.c_str()) == 0 || failed(false);
}

std::string GetFinalPathNameW(const std::string& name) noexcept {
    constexpr int mostLinks = 40; // the kernel's own limit
    struct stat meant {
    }, found{};
    if (!isName(name)) return {};
    if (faultDue(SeamCall::getFinalPathName)) return failed(FileError::other, std::string());
    // What the kernel itself does not follow fails here; a link that leads nowhere yet may be followed.
    const bool isThere = stat(name.c_str(), &meant) == 0;
    if (!isThere && errno != ENOENT) return failed(std::string());
    try {
        std::string path = name;
        for (int links = 0; links < mostLinks; ++links) {
            const std::optional<std::string> next = textOfLink(path);
            if (!next) {
                if (errno != EINVAL && errno != ENOENT) return failed(std::string());
                if (!isThere) return path;
                const bool isSame =
                    lstat(path.c_str(), &found) == 0 && found.st_dev == meant.st_dev && found.st_ino == meant.st_ino;
                return isSame ? path : failed(FileError::other, std::string());
            }
            path.resize(next->starts_with('/') ? 0 : folderLength(path));
            path += *next;
        }
        return failed(FileError::circle, std::string());
    } catch (const std::bad_alloc&) {
        return failed(FileError::noMemory, std::string());
    }
}

namespace {

// A file that no name leads to, so that nothing is left of it when the process ends, and which can be given one. -1
// where the file system has none, or names cannot be given.
int openUnnamed(const std::string& folder, mode_t mode) noexcept {
    if (faultDue(SeamCall::vanishingDraft)) return -1;
    const int descriptor = open(folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, mode);
    if (descriptor < 0 || access(nameOfOpen(descriptor).text, F_OK) == 0) return descriptor;
    close(descriptor);
    return -1;
}

} // namespace

Handle CreateDraftW(const std::string& draft, const std::string& target) noexcept {
    constexpr mode_t nobodyElses = 0600;
    constexpr mode_t asNewFiles = 0666; // without what the process' mask takes away
    if (!isName(draft) || !isName(target)) return invalidHandle;
    if (faultDue(SeamCall::createDraft)) return failed(FileError::other, invalidHandle);
    struct stat old {};
    const bool isReplacing = lstat(target.c_str(), &old) == 0;
    if (!isReplacing && errno != ENOENT) return failed(invalidHandle);
    if (isReplacing && !isReplaceable(old)) return failed(FileError::irreplaceable, invalidHandle);
    const mode_t mode = isReplacing ? nobodyElses : asNewFiles;
    try {
        int descriptor = openUnnamed(folderOf(draft), mode);
        const bool isUnnamed = descriptor >= 0;
        if (!isUnnamed) descriptor = open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        if (descriptor < 0) return failed(invalidHandle);
        const bool isLike = !isReplacing || takeOver(descriptor, target, old);
        if (!isLike) close(descriptor);
        const Handle handle =
            isLike ? handleOf(descriptor, isUnnamed) : failed(FileError::irreplaceable, invalidHandle);
        // Nobody would know of the file that a failed call made.
        if (handle == invalidHandle && !isUnnamed) unlink(draft.c_str());
        return handle;
    } catch (const std::bad_alloc&) {
        return failed(FileError::noMemory, invalidHandle);
    }
}

bool KeepDraft(Handle file, const std::string& draft) noexcept {
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened || faultDue(SeamCall::keepDraft)) return failed(FileError::other, false);
    if (!opened->hasNoName) return true;
    const int answer =
        linkat(AT_FDCWD, nameOfOpen(opened->descriptor).text, AT_FDCWD, draft.c_str(), AT_SYMLINK_FOLLOW);
    if (answer != 0) return failed(false);
    opened->hasNoName = false;
    return true;
}

bool FlushFileBuffers(Handle file) noexcept {
    const std::shared_ptr<File> opened = files().find(file);
    if (!opened || faultDue(SeamCall::flushFile)) return failed(FileError::device, false);
    while (fsync(opened->descriptor) != 0) {
        if (errno == EINVAL || errno == ENOSYS) return true; // there is no disk behind this file
        if (errno != EINTR) return failed(false);
    }
    return true;
}

bool SetEndOfFile(Handle file, std::int64_t size) noexcept {
    const std::shared_ptr<File> opened = files().find(file);
    struct stat now {};
    if (!opened || faultDue(SeamCall::setEndOfFile)) return failed(FileError::other, false);
    if (fstat(opened->descriptor, &now) != 0) return failed(false);
    if (size > now.st_size && fallocate(opened->descriptor, 0, 0, size) != 0 && errno != EOPNOTSUPP) {
        const int error = errno;
        // It may have grown by a part.
        return failed(meaningOf(ftruncate(opened->descriptor, now.st_size) == 0 ? error : EIO), false);
    }
    return ftruncate(opened->descriptor, size) == 0 || failed(false);
}

bool ReplaceFileW(const std::string& replaced, const std::string& replacement) noexcept {
    if (!isName(replaced) || !isName(replacement)) return false;
    if (faultDue(SeamCall::replaceFile)) return failed(FileError::other, false);
    if (rename(replacement.c_str(), replaced.c_str()) != 0) return failed(false);
    synchroniseFolderOf(replaced);
    return true;
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
std::string GetFinalPathNameA(const std::string& name) noexcept {
    return GetFinalPathNameW(name);
}
Handle CreateDraftA(const std::string& draft, const std::string& target) noexcept {
    return CreateDraftW(draft, target);
}
bool ReplaceFileA(const std::string& replaced, const std::string& replacement) noexcept {
    return ReplaceFileW(replaced, replacement);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
