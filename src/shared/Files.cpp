#include "shared/Files.h"
#include "platform/interaction.h"

namespace pixkit {

namespace {

using platform::fileAttributeNormal;
using platform::FileUse;
using platform::invalidFileAttributes;

// The system's functions for names of one kind.
struct NamedFiles {
    decltype(&platform::CreateFileW) create;
    decltype(&platform::GetFileAttributesW) getAttributes;
    decltype(&platform::SetFileAttributesW) setAttributes;
    decltype(&platform::DeleteFileW) remove;
    decltype(&platform::GetFinalPathNameW) finalName;
    decltype(&platform::CreateDraftW) createDraft;
    decltype(&platform::ReplaceFileW) replace;
};

const NamedFiles& files(bool useUnicode) noexcept {
    static constexpr NamedFiles wide{&platform::CreateFileW,        &platform::GetFileAttributesW,
                                     &platform::SetFileAttributesW, &platform::DeleteFileW,
                                     &platform::GetFinalPathNameW,  &platform::CreateDraftW,
                                     &platform::ReplaceFileW};
    static constexpr NamedFiles narrow{&platform::CreateFileA,        &platform::GetFileAttributesA,
                                       &platform::SetFileAttributesA, &platform::DeleteFileA,
                                       &platform::GetFinalPathNameA,  &platform::CreateDraftA,
                                       &platform::ReplaceFileA};
    return useUnicode || platform::isDesktopWindowUnicode() ? wide : narrow;
}

} // namespace

platform::Handle iparseGetFileHandle(const std::string& FileName, bool bOpen, bool useUnicode) noexcept {
    return files(useUnicode).create(FileName, bOpen ? FileUse::openExisting : FileUse::createAlways);
}

platform::Handle iparseOpenToOverwrite(const std::string& FileName, bool useUnicode) noexcept {
    return files(useUnicode).create(FileName, FileUse::overwrite);
}

std::string iparseFinalFileName(const std::string& FileName, bool useUnicode) noexcept {
    return files(useUnicode).finalName(FileName);
}

platform::Handle iparseCreateDraft(const std::string& DraftName, const std::string& FileName,
                                   bool useUnicode) noexcept {
    return files(useUnicode).createDraft(DraftName, FileName);
}

bool iparseWriteWhole(platform::Handle FileHandle, std::span<const std::uint8_t> bytes) noexcept {
    std::uint32_t done = 0;
    const auto count = static_cast<std::uint32_t>(bytes.size());
    return platform::WriteFile(FileHandle, bytes.data(), count, done) && done == count;
}

bool iparseFileExists(const std::string& FileName, bool useUnicode) noexcept {
    return files(useUnicode).getAttributes(FileName) != invalidFileAttributes;
}

bool iparseIsDirectory(const std::string& FileName, bool useUnicode) noexcept {
    const std::uint32_t attributes = files(useUnicode).getAttributes(FileName);
    return attributes != invalidFileAttributes && (attributes & platform::fileAttributeDirectory) != 0;
}

bool iparseDeleteFile(const std::string& FileName, bool useUnicode) noexcept {
    const NamedFiles& system = files(useUnicode);
    const bool isNormal = system.setAttributes(FileName, fileAttributeNormal); // who may not, may delete all the same
    return system.remove(FileName) && isNormal;
}

bool iparseReplaceFile(const std::string& FileName, const std::string& ReplacedName, bool useUnicode) noexcept {
    return files(useUnicode).replace(ReplacedName, FileName);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
