// Files, under the names of the Windows kernel. Names are UTF-8 everywhere above this seam. The ...W functions take any
// name; the ...A functions go through the system's narrow code page on Windows (a name that it cannot express fails)
// and are the same as ...W on the portable side.
#pragma once
#include "platform/handle.h"
#include <cstddef>
#include <cstdint>
#include <string>

namespace pixkit::platform {

enum class FileUse : std::uint8_t {
    openExisting, // read only, shared for reading
    createAlways, // write only, truncates an existing file
    createNew,    // write only, fails when the name exists
};

// invalidHandle on failure. A directory is not a file: it fails.
Handle CreateFileW(const std::string& name, FileUse use) noexcept;
Handle CreateFileA(const std::string& name, FileUse use) noexcept;
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
// Only `readonly` and `normal` mean something on the portable side (the owner's write permission).
bool SetFileAttributesW(const std::string& name, std::uint32_t attributes) noexcept;
bool SetFileAttributesA(const std::string& name, std::uint32_t attributes) noexcept;
// A directory is not deleted: false.
bool DeleteFileW(const std::string& name) noexcept;
bool DeleteFileA(const std::string& name) noexcept;

// Gives a file another name, in one step: whoever held that name is replaced or, on failure, untouched. A directory
// is not replaced, and a file marked read-only not on every system.
bool MoveFileExW(const std::string& from, const std::string& to) noexcept;
bool MoveFileExA(const std::string& from, const std::string& to) noexcept;

// How much of a name, from its beginning, is the folder; the last separator counts. 0 for a bare file name.
std::size_t folderLength(const std::string& name) noexcept;

using UniqueFile = UniqueHandle<&CloseHandle, invalidHandle>;

} // namespace pixkit::platform
