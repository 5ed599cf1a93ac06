// Files, under the names of the Windows kernel. Names are UTF-8 everywhere above this seam. The ...W functions take any
// name; the ...A functions go through the system's narrow code page on Windows (a name that it cannot express fails)
// and are the same as ...W on the portable side.
#pragma once
#include "platform/handle.h"
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace pixkit::platform {

enum class FileUse : std::uint8_t {
    openExisting, // read only, shared for reading
    createAlways, // write only, truncates an existing file
    overwrite,    // write only, an existing file as it is; a symbolic link fails
};

// Why a function failed, as far as a person can do something about it.
enum class FileError : std::uint8_t {
    other,
    notFound, // the file, or its folder
    denied,
    inUse, // by another program
    readOnlySystem,
    diskFull, // or the share of it that the caller may use
    tooManyOpen,
    tooLarge, // for the file system
    device,
    badName,
    circle,        // links that lead to one another
    irreplaceable, // no file that replaces it would be what it is (CreateDraftW)
    noMemory,
};

// Of the last function below that failed, in this thread. To be asked before anything else is called.
FileError GetLastError() noexcept;

// invalidHandle on failure. A directory is not a file: it fails.
Handle CreateFileW(const std::string& name, FileUse use) noexcept;
Handle CreateFileA(const std::string& name, FileUse use) noexcept;
// The handle is gone in any case. False also when the system tells only now that bytes written were lost.
bool CloseHandle(Handle file) noexcept;

// Both return whether the call itself succeeded; `done` receives the bytes moved, which may be fewer than asked for.
bool ReadFile(Handle file, void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept;
bool WriteFile(Handle file, const void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept;

// Moves to `position` from the start of the file. False on failure.
bool SetFilePointer(Handle file, std::uint32_t position) noexcept;

// The size in bytes; negative on failure. Sizes of 4 GiB and above are given whole.
std::int64_t GetFileSize(Handle file) noexcept;

inline constexpr std::uint32_t invalidFileAttributes = 0xFFFFFFFFU;
inline constexpr std::uint32_t fileAttributeReadonly = 1;
inline constexpr std::uint32_t fileAttributeDirectory = 16;
inline constexpr std::uint32_t fileAttributeNormal = 128;

// invalidFileAttributes when nothing of that name exists.
std::uint32_t GetFileAttributesW(const std::string& name) noexcept;
std::uint32_t GetFileAttributesA(const std::string& name) noexcept;
// Only `readonly` and `normal` mean something on the portable side (the owner's write permission). A symbolic link has
// none itself, and what it leads to is not touched.
bool SetFileAttributesW(const std::string& name, std::uint32_t attributes) noexcept;
bool SetFileAttributesA(const std::string& name, std::uint32_t attributes) noexcept;
// A directory is not deleted: false.
bool DeleteFileW(const std::string& name) noexcept;
bool DeleteFileA(const std::string& name) noexcept;

// What tells a file, under all its names, from the others that are there.
struct FileIdentity {
    std::uint64_t device, number;
    bool operator<(const FileIdentity& other) const noexcept {
        return device != other.device ? device < other.device : number < other.number;
    }
};
// Nothing where no file of that name is there, or its system does not say. May throw std::bad_alloc.
std::optional<FileIdentity> identityOf(const std::string& name);

// --- Files that are written to take the place of others

// The file that a symbolic link leads to, through any number of links, whether it is there or not; of what is no link
// the name itself. Empty on failure: links in a circle, or one that the system does not follow, or, on the portable
// side, a stranger's in a folder that all may write to.
std::string GetFinalPathNameW(const std::string& name) noexcept;
std::string GetFinalPathNameA(const std::string& name) noexcept;

// Creates a file of a new name for writing, which is to take the place of `target` in the same folder. invalidHandle on
// failure, and where the target cannot be replaced without losing what it is: it has several names (hard links), or, on
// the portable side, an owner or extended attributes that the draft cannot have. The draft is nobody else's from its
// first byte: it has the target's access list, on the portable side its owner, mode and attributes too. Without a
// target it is as any new file.
//
// Until KeepDraft a draft goes with its handle and with the process, however that ends, where the file system can do
// so; elsewhere it has to be deleted.
Handle CreateDraftW(const std::string& draft, const std::string& target) noexcept;
Handle CreateDraftA(const std::string& draft, const std::string& target) noexcept;
// From now on the draft stays, under its name.
bool KeepDraft(Handle file, const std::string& draft) noexcept;

// Bytes written are on the disk when it returns true.
bool FlushFileBuffers(Handle file) noexcept;
// Makes the file so long. What it grows by has room on the disk where the file system can promise that. When it cannot
// grow it is as it was.
bool SetEndOfFile(Handle file, std::int64_t size) noexcept;

// Gives a closed file the name of another, in one step: who held that name, if anybody, is replaced or, on failure,
// untouched. A file marked read-only is replaced too, a directory is not. On Windows the file takes over the
// attributes, the security and the streams of the one that it replaces.
bool ReplaceFileW(const std::string& replaced, const std::string& replacement) noexcept;
bool ReplaceFileA(const std::string& replaced, const std::string& replacement) noexcept;

// How much of a name, from its beginning, is the folder; the last separator counts. 0 for a bare file name.
std::size_t folderLength(const std::string& name) noexcept;

using UniqueFile = UniqueHandle<&CloseHandle, invalidHandle>;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
