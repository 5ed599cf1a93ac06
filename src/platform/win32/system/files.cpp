#include "platform/files.h"
#include "platform/faults.h"
#include "platform/win32/system/names.h"
#include <new>
#include <windows.h>

namespace pixkit::platform {

namespace {

HANDLE native(Handle handle) noexcept {
    return reinterpret_cast<HANDLE>(handle);
}

// 0 and -1 are no files; to some functions of the system they stand for something else, such as this process.
bool isFile(Handle handle) noexcept {
    return handle != 0 && handle != invalidHandle;
}

struct OpenMode {
    DWORD access, share, disposition;
};

OpenMode modeOf(FileUse use) noexcept {
    if (use == FileUse::openExisting) return {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING};
    return {GENERIC_WRITE, 0, static_cast<DWORD>(use == FileUse::createNew ? CREATE_NEW : CREATE_ALWAYS)};
}

// Calls `function` with the name in UTF-16, or gives `failure` for a name that has none.
template <class Result, class Function>
Result withWideName(const std::string& name, Result failure, Function function) noexcept {
    try {
        std::wstring wide;
        return toUtf16(name, wide) ? function(wide.c_str()) : failure;
    } catch (...) {
        return failure;
    }
}

template <class Result, class Function>
Result withNarrowName(const std::string& name, Result failure, Function function) noexcept {
    try {
        std::string narrow;
        return toNarrow(name, narrow) ? function(narrow.c_str()) : failure;
    } catch (...) {
        return failure;
    }
}

} // namespace

Handle CreateFileW(const std::string& name, FileUse use) noexcept {
    if (faultDue(SeamCall::createFile)) return invalidHandle;
    const OpenMode mode = modeOf(use);
    return withWideName(name, invalidHandle, [&](const wchar_t* wide) {
        return reinterpret_cast<Handle>(
            ::CreateFileW(wide, mode.access, mode.share, nullptr, mode.disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    });
}

Handle CreateFileA(const std::string& name, FileUse use) noexcept {
    if (faultDue(SeamCall::createFile)) return invalidHandle;
    const OpenMode mode = modeOf(use);
    return withNarrowName(name, invalidHandle, [&](const char* narrow) {
        return reinterpret_cast<Handle>(
            ::CreateFileA(narrow, mode.access, mode.share, nullptr, mode.disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    });
}

bool CloseHandle(Handle file) noexcept {
    return isFile(file) && ::CloseHandle(native(file)) != FALSE;
}

bool ReadFile(Handle file, void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept {
    done = 0;
    if (!isFile(file) || faultDue(SeamCall::readFile)) return false;
    DWORD moved = 0;
    const bool success = ::ReadFile(native(file), buffer, bytes, &moved, nullptr) != FALSE;
    done = moved;
    return success;
}

bool WriteFile(Handle file, const void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept {
    done = 0;
    if (!isFile(file)) return false;
    if (faultDue(SeamCall::writeFile)) bytes /= 2;
    DWORD moved = 0;
    const bool success = ::WriteFile(native(file), buffer, bytes, &moved, nullptr) != FALSE;
    done = moved;
    return success;
}

bool SetFilePointer(Handle file, std::uint32_t position) noexcept {
    if (!isFile(file) || faultDue(SeamCall::setFilePointer)) return false;
    LARGE_INTEGER distance;
    distance.QuadPart = position;
    return ::SetFilePointerEx(native(file), distance, nullptr, FILE_BEGIN) != FALSE;
}

std::int64_t GetFileSize(Handle file) noexcept {
    if (!isFile(file) || faultDue(SeamCall::getFileSize)) return -1;
    LARGE_INTEGER size;
    return ::GetFileSizeEx(native(file), &size) != FALSE ? size.QuadPart : -1;
}

std::uint32_t GetFileAttributesW(const std::string& name) noexcept {
    if (faultDue(SeamCall::getFileAttributes)) return invalidFileAttributes;
    return withWideName(name, invalidFileAttributes,
                        [](const wchar_t* wide) -> std::uint32_t { return ::GetFileAttributesW(wide); });
}

std::uint32_t GetFileAttributesA(const std::string& name) noexcept {
    if (faultDue(SeamCall::getFileAttributes)) return invalidFileAttributes;
    return withNarrowName(name, invalidFileAttributes,
                          [](const char* narrow) -> std::uint32_t { return ::GetFileAttributesA(narrow); });
}

bool SetFileAttributesW(const std::string& name, std::uint32_t attributes) noexcept {
    if (faultDue(SeamCall::setFileAttributes)) return false;
    return withWideName(name, false,
                        [&](const wchar_t* wide) { return ::SetFileAttributesW(wide, attributes) != FALSE; });
}

bool SetFileAttributesA(const std::string& name, std::uint32_t attributes) noexcept {
    if (faultDue(SeamCall::setFileAttributes)) return false;
    return withNarrowName(name, false,
                          [&](const char* narrow) { return ::SetFileAttributesA(narrow, attributes) != FALSE; });
}

bool DeleteFileW(const std::string& name) noexcept {
    if (faultDue(SeamCall::deleteFile)) return false;
    return withWideName(name, false, [](const wchar_t* wide) { return ::DeleteFileW(wide) != FALSE; });
}

bool DeleteFileA(const std::string& name) noexcept {
    if (faultDue(SeamCall::deleteFile)) return false;
    return withNarrowName(name, false, [](const char* narrow) { return ::DeleteFileA(narrow) != FALSE; });
}

bool MoveFileExW(const std::string& from, const std::string& to) noexcept {
    if (faultDue(SeamCall::moveFile)) return false;
    return withWideName(from, false, [&](const wchar_t* wideFrom) {
        return withWideName(to, false, [&](const wchar_t* wideTo) {
            return ::MoveFileExW(wideFrom, wideTo, MOVEFILE_REPLACE_EXISTING) != FALSE;
        });
    });
}

bool MoveFileExA(const std::string& from, const std::string& to) noexcept {
    if (faultDue(SeamCall::moveFile)) return false;
    return withNarrowName(from, false, [&](const char* narrowFrom) {
        return withNarrowName(to, false, [&](const char* narrowTo) {
            return ::MoveFileExA(narrowFrom, narrowTo, MOVEFILE_REPLACE_EXISTING) != FALSE;
        });
    });
}

std::size_t folderLength(const std::string& name) noexcept {
    return name.find_last_of("/\\:") + 1; // nowhere is the greatest number
}

} // namespace pixkit::platform
