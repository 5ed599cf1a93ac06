#include "platform/files.h"
#include "platform/faults.h"
#include "platform/win32/system/FileFacts.h"
#include "platform/win32/system/names.h"
#include <new>
#include <vector>
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

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct OpenMode {
    DWORD access, share, disposition;
};

OpenMode modeOf(FileUse use) noexcept {
    if (use == FileUse::openExisting) return {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING};
    return {GENERIC_WRITE, 0, static_cast<DWORD>(use == FileUse::overwrite ? OPEN_EXISTING : CREATE_ALWAYS)};
}

// What a function returns that fails for a reason of its own.
template <class Result>
Result failed(DWORD error, Result answer) noexcept {
    ::SetLastError(error);
    return answer;
}

// Whether a call is to fail for a test.
bool isFaulty(SeamCall call) noexcept {
    return faultDue(call) && failed(ERROR_GEN_FAILURE, true);
}

// Calls `function` with the name in UTF-16, or gives `failure` for a name that has none.
template <class Result, class Function>
Result withWideName(const std::string& name, Result failure, Function function) noexcept {
    try {
        std::wstring wide;
        return toUtf16(name, wide) ? function(wide.c_str()) : failed(ERROR_INVALID_NAME, failure);
    } catch (...) {
        return failed(ERROR_NOT_ENOUGH_MEMORY, failure);
    }
}

template <class Result, class Function>
Result withNarrowName(const std::string& name, Result failure, Function function) noexcept {
    try {
        std::string narrow;
        return toNarrow(name, narrow) ? function(narrow.c_str()) : failed(ERROR_INVALID_NAME, failure);
    } catch (...) {
        return failed(ERROR_NOT_ENOUGH_MEMORY, failure);
    }
}

// Whether the narrow functions could be given the name.
bool isNarrowName(const std::string& name) noexcept {
    return withNarrowName(name, false, [](const char*) { return true; });
}

// A function of kernel32 that systems before Windows Vista do not have; null there.
template <class Function>
Function* kernelFunction(const char* name) noexcept {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), name)));
}

} // namespace

FileError GetLastError() noexcept {
    constexpr DWORD diskQuotaExceeded = 1295; // headers leave it out
    switch (::GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
        return FileError::notFound;
    case ERROR_ACCESS_DENIED:
        return FileError::denied;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_UNABLE_TO_REMOVE_REPLACED:
        return FileError::inUse;
    case ERROR_WRITE_PROTECT:
        return FileError::readOnlySystem;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case diskQuotaExceeded:
        return FileError::diskFull;
    case ERROR_TOO_MANY_OPEN_FILES:
        return FileError::tooManyOpen;
    case ERROR_FILE_TOO_LARGE:
        return FileError::tooLarge;
    case ERROR_CRC:
    case ERROR_IO_DEVICE:
    case ERROR_NOT_READY:
    case ERROR_READ_FAULT:
    case ERROR_WRITE_FAULT:
        return FileError::device;
    case ERROR_INVALID_NAME:
    case ERROR_FILENAME_EXCED_RANGE:
        return FileError::badName;
    case ERROR_CANT_RESOLVE_FILENAME:
        return FileError::circle;
    case ERROR_TOO_MANY_LINKS:
        return FileError::irreplaceable;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
        return FileError::noMemory;
    default:
        return FileError::other;
    }
}

Handle CreateFileW(const std::string& name, FileUse use) noexcept {
    if (isFaulty(SeamCall::createFile)) return invalidHandle;
    const OpenMode mode = modeOf(use);
    return withWideName(name, invalidHandle, [&](const wchar_t* wide) {
        return reinterpret_cast<Handle>(
            ::CreateFileW(wide, mode.access, mode.share, nullptr, mode.disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    });
}

Handle CreateFileA(const std::string& name, FileUse use) noexcept {
    if (isFaulty(SeamCall::createFile)) return invalidHandle;
    const OpenMode mode = modeOf(use);
    return withNarrowName(name, invalidHandle, [&](const char* narrow) {
        return reinterpret_cast<Handle>(
            ::CreateFileA(narrow, mode.access, mode.share, nullptr, mode.disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    });
}

bool CloseHandle(Handle file) noexcept {
    const bool isDone = isFile(file) && ::CloseHandle(native(file)) != FALSE;
    return isDone && !isFaulty(SeamCall::closeFile);
}

bool ReadFile(Handle file, void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept {
    done = 0;
    if (!isFile(file) || isFaulty(SeamCall::readFile)) return false;
    DWORD moved = 0;
    const bool success = ::ReadFile(native(file), buffer, bytes, &moved, nullptr) != FALSE;
    done = moved;
    return success;
}

bool WriteFile(Handle file, const void* buffer, std::uint32_t bytes, std::uint32_t& done) noexcept {
    done = 0;
    if (!isFile(file)) return false;
    ::SetLastError(ERROR_SUCCESS); // what is told of a write that ends early
    if (faultDue(SeamCall::writeFile)) bytes /= 2;
    DWORD moved = 0;
    const bool success = ::WriteFile(native(file), buffer, bytes, &moved, nullptr) != FALSE;
    done = moved;
    return success;
}

bool SetFilePointer(Handle file, std::uint32_t position) noexcept {
    if (!isFile(file) || isFaulty(SeamCall::setFilePointer)) return false;
    LARGE_INTEGER distance;
    distance.QuadPart = position;
    return ::SetFilePointerEx(native(file), distance, nullptr, FILE_BEGIN) != FALSE;
}

std::int64_t GetFileSize(Handle file) noexcept {
    if (!isFile(file) || isFaulty(SeamCall::getFileSize)) return -1;
    LARGE_INTEGER size;
    return ::GetFileSizeEx(native(file), &size) != FALSE ? size.QuadPart : -1;
}

std::uint32_t GetFileAttributesW(const std::string& name) noexcept {
    if (isFaulty(SeamCall::getFileAttributes)) return invalidFileAttributes;
    return withWideName(name, invalidFileAttributes,
                        [](const wchar_t* wide) -> std::uint32_t { return ::GetFileAttributesW(wide); });
}

std::uint32_t GetFileAttributesA(const std::string& name) noexcept {
    if (isFaulty(SeamCall::getFileAttributes)) return invalidFileAttributes;
    return withNarrowName(name, invalidFileAttributes,
                          [](const char* narrow) -> std::uint32_t { return ::GetFileAttributesA(narrow); });
}

bool SetFileAttributesW(const std::string& name, std::uint32_t attributes) noexcept {
    if (isFaulty(SeamCall::setFileAttributes)) return false;
    return withWideName(name, false,
                        [&](const wchar_t* wide) { return ::SetFileAttributesW(wide, attributes) != FALSE; });
}

bool SetFileAttributesA(const std::string& name, std::uint32_t attributes) noexcept {
    if (isFaulty(SeamCall::setFileAttributes)) return false;
    return withNarrowName(name, false,
                          [&](const char* narrow) { return ::SetFileAttributesA(narrow, attributes) != FALSE; });
}

bool DeleteFileW(const std::string& name) noexcept {
    if (isFaulty(SeamCall::deleteFile)) return false;
    return withWideName(name, false, [](const wchar_t* wide) { return ::DeleteFileW(wide) != FALSE; });
}

bool DeleteFileA(const std::string& name) noexcept {
    if (isFaulty(SeamCall::deleteFile)) return false;
    return withNarrowName(name, false, [](const char* narrow) { return ::DeleteFileA(narrow) != FALSE; });
}

std::string GetFinalPathNameW(const std::string& name) noexcept {
    using GetFinalName = DWORD WINAPI(HANDLE, LPWSTR, DWORD, DWORD);
    if (isFaulty(SeamCall::getFinalPathName)) return {};
    return withWideName(name, std::string(), [&](const wchar_t* wide) -> std::string {
        const DWORD attributes = ::GetFileAttributesW(wide);
        auto* const getFinalName = kernelFunction<GetFinalName>("GetFinalPathNameByHandleW");
        const bool isLink = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if (!isLink || getFinalName == nullptr) return name;
        const UniqueFile file(reinterpret_cast<Handle>(
            ::CreateFileW(wide, 0, shareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)));
        if (!file) return {};
        std::wstring path(MAX_PATH, L'\0');
        DWORD length = getFinalName(native(file.get()), path.data(), MAX_PATH, 0);
        if (length >= path.size()) { // then it counts the NUL too
            path.resize(length);
            length = getFinalName(native(file.get()), path.data(), length, 0);
        }
        return length < path.size() ? toUtf8(path.substr(0, length)) : std::string();
    });
}

std::string GetFinalPathNameA(const std::string& name) noexcept {
    return isNarrowName(name) ? GetFinalPathNameW(name) : std::string();
}

namespace {

// Whether a file goes when its last handle does, however the process ends. False where the system cannot do so.
bool setVanishing(HANDLE file, bool isVanishing) noexcept {
    using SetInformation = BOOL WINAPI(HANDLE, int, void*, DWORD);
    constexpr int dispositionInfo = 4; // FileDispositionInfo
    auto* const set = kernelFunction<SetInformation>("SetFileInformationByHandle");
    BOOLEAN deletes = isVanishing ? TRUE : FALSE;
    return set != nullptr && set(file, dispositionInfo, &deletes, sizeof deletes) != FALSE;
}

// What is not there, or cannot be looked at, has one name.
bool hasSeveralNames(const wchar_t* name) noexcept {
    const auto facts = factsOfFile(name);
    return facts && facts->nNumberOfLinks > 1;
}

// Whether the file may be taken away: access lists allow it, and nobody has it open who would keep it. Some systems
// leave a file of their own behind when they find that out in the middle of ReplaceFile.
bool mayGo(const wchar_t* name) noexcept {
    return static_cast<bool>(UniqueFile(reinterpret_cast<Handle>(
        ::CreateFileW(name, DELETE, shareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))));
}

// The access list of a file, for one that is to take its place: nothing of what is not there, or where lists are not
// kept. False when there is one that may not be read, or no memory for it: the draft would be more public.
bool readAccessList(const wchar_t* name, std::vector<std::uint8_t>& descriptor) {
    DWORD size = 0;
    while (::GetFileSecurityW(name, DACL_SECURITY_INFORMATION, descriptor.data(), size, &size) == FALSE) {
        if (::GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
            const FileError error = GetLastError();
            descriptor.clear();
            return error != FileError::denied && error != FileError::noMemory;
        }
        descriptor.resize(size);
    }
    return true;
}

HANDLE createDraft(const wchar_t* draft, const wchar_t* target) {
    std::vector<std::uint8_t> descriptor;
    if (hasSeveralNames(target)) return failed(ERROR_TOO_MANY_LINKS, INVALID_HANDLE_VALUE);
    // With this list nobody could take the draft away either.
    if (!mayGo(target) && ::GetLastError() == ERROR_ACCESS_DENIED) return INVALID_HANDLE_VALUE;
    if (!readAccessList(target, descriptor)) return INVALID_HANDLE_VALUE;
    SECURITY_ATTRIBUTES security{sizeof security, descriptor.data(), FALSE};
    // Exactly this list: what files of the folder get besides may allow more.
    if (!descriptor.empty())
        reinterpret_cast<SECURITY_DESCRIPTOR_RELATIVE*>(descriptor.data())->Control |= SE_DACL_PROTECTED;
    // Nobody else can open it before it is complete.
    const HANDLE file = ::CreateFileW(draft, GENERIC_WRITE | DELETE, 0, descriptor.empty() ? nullptr : &security,
                                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE && !faultDue(SeamCall::vanishingDraft)) setVanishing(file, true);
    return file;
}

} // namespace

Handle CreateDraftW(const std::string& draft, const std::string& target) noexcept {
    if (isFaulty(SeamCall::createDraft)) return invalidHandle;
    return withWideName(draft, invalidHandle, [&](const wchar_t* wideDraft) {
        return withWideName(target, invalidHandle, [&](const wchar_t* wideTarget) {
            return reinterpret_cast<Handle>(createDraft(wideDraft, wideTarget));
        });
    });
}

Handle CreateDraftA(const std::string& draft, const std::string& target) noexcept {
    return isNarrowName(draft) && isNarrowName(target) ? CreateDraftW(draft, target) : invalidHandle;
}

bool KeepDraft(Handle file, const std::string& /*draft*/) noexcept {
    using GetInformation = BOOL WINAPI(HANDLE, int, void*, DWORD);
    constexpr int standardInfo = 1; // FileStandardInfo
    struct {
        LARGE_INTEGER allocated, size;
        DWORD links;
        BOOLEAN isVanishing, isFolder;
    } information{};
    if (!isFile(file) || isFaulty(SeamCall::keepDraft)) return false;
    if (setVanishing(native(file), false)) return true;
    const DWORD error = ::GetLastError();
    auto* const get = kernelFunction<GetInformation>("GetFileInformationByHandleEx");
    const bool isKnown = get != nullptr && get(native(file), standardInfo, &information, sizeof information) != FALSE;
    return isKnown && information.isVanishing ? failed(error, false) : true;
}

bool FlushFileBuffers(Handle file) noexcept {
    return isFile(file) && !isFaulty(SeamCall::flushFile) && ::FlushFileBuffers(native(file)) != FALSE;
}

bool SetEndOfFile(Handle file, std::int64_t size) noexcept {
    if (!isFile(file) || isFaulty(SeamCall::setEndOfFile)) return false;
    LARGE_INTEGER here, end;
    here.QuadPart = 0;
    end.QuadPart = size;
    return ::SetFilePointerEx(native(file), here, &here, FILE_CURRENT) != FALSE &&
           ::SetFilePointerEx(native(file), end, nullptr, FILE_BEGIN) != FALSE &&
           ::SetEndOfFile(native(file)) != FALSE &&
           ::SetFilePointerEx(native(file), here, nullptr, FILE_BEGIN) != FALSE;
}

namespace {

// With its folder: some systems take ReplaceFile's names for no others.
std::wstring fullName(const wchar_t* name) {
    std::wstring full(::GetFullPathNameW(name, 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(name, static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

// ReplaceFile, or a mere move where there is nobody to replace, and where the file system has no such thing.
bool takePlace(const wchar_t* replaced, const wchar_t* replacement, bool isThere) noexcept {
    if (isThere) {
        if (!mayGo(replaced)) return false;
        if (::ReplaceFileW(replaced, replacement, nullptr, 0, nullptr, nullptr) != FALSE) return true;
        const DWORD error = ::GetLastError();
        // The last one has removed the old file already.
        const bool isNeverDone = error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_FUNCTION ||
                                 error == ERROR_INVALID_PARAMETER || error == ERROR_UNABLE_TO_MOVE_REPLACEMENT;
        if (!isNeverDone) return failed(error, false);
    }
    constexpr DWORD how = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    return ::MoveFileExW(replacement, replaced, how) != FALSE;
}

bool replaceFile(const wchar_t* replaced, const wchar_t* replacement) noexcept {
    const DWORD attributes = ::GetFileAttributesW(replaced);
    const bool isThere = attributes != INVALID_FILE_ATTRIBUTES;
    if (isThere && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return failed(ERROR_ACCESS_DENIED, false);
    const bool isProtected = isThere && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (isProtected && ::SetFileAttributesW(replaced, attributes & ~FILE_ATTRIBUTE_READONLY) == FALSE) return false;
    const bool isDone = takePlace(replaced, replacement, isThere);
    const DWORD error = ::GetLastError();
    // Of the old file when it stays, of the new one when it has come: attributes do not come along on every way.
    if (isThere && (isDone || isProtected)) ::SetFileAttributesW(replaced, attributes);
    return isDone || failed(error, false);
}

} // namespace

bool ReplaceFileW(const std::string& replaced, const std::string& replacement) noexcept {
    if (isFaulty(SeamCall::replaceFile)) return false;
    return withWideName(replaced, false, [&](const wchar_t* wideReplaced) {
        return withWideName(replacement, false, [&](const wchar_t* wideReplacement) {
            return replaceFile(fullName(wideReplaced).c_str(), fullName(wideReplacement).c_str());
        });
    });
}

bool ReplaceFileA(const std::string& replaced, const std::string& replacement) noexcept {
    return isNarrowName(replaced) && isNarrowName(replacement) && ReplaceFileW(replaced, replacement);
}

std::size_t folderLength(const std::string& name) noexcept {
    return name.find_last_of("/\\:") + 1; // nowhere is the greatest number
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
