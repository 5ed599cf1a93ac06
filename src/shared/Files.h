// Files of a given name, through the system's wide or narrow functions. Names are UTF-8.
#pragma once
#include "platform/files.h"
#include <cstdint>
#include <span>
#include <string>

namespace pixkit {

// With `useUnicode` the wide functions are used, else whichever of the two kinds the desktop's windows have.

// Opens an existing file for reading, or creates one for writing when `bOpen` is false; -1 on failure.
platform::Handle iparseGetFileHandle(const std::string& FileName, bool bOpen, bool useUnicode) noexcept;
// Opens an existing file to be written over; -1 on failure.
platform::Handle iparseOpenToOverwrite(const std::string& FileName, bool useUnicode) noexcept;
// The file that a link leads to, or the name itself (platform::GetFinalPathNameW); empty on failure.
std::string iparseFinalFileName(const std::string& FileName, bool useUnicode) noexcept;
// Creates the file that is to take the place of `FileName` (platform::CreateDraftW); -1 on failure.
platform::Handle iparseCreateDraft(const std::string& DraftName, const std::string& FileName, bool useUnicode) noexcept;
// Writes all the bytes, in one piece; false when fewer arrived.
bool iparseWriteWhole(platform::Handle FileHandle, std::span<const std::uint8_t> bytes) noexcept;
// Whether the name has attributes: a directory counts as existing.
bool iparseFileExists(const std::string& FileName, bool useUnicode) noexcept;
bool iparseIsDirectory(const std::string& FileName, bool useUnicode) noexcept;
// Sets the attributes to normal, so that read-only files go too, and deletes the file; true when both steps succeed.
bool iparseDeleteFile(const std::string& FileName, bool useUnicode) noexcept;
// Moves the file `FileName` to `ReplacedName` in one step (platform::ReplaceFileW). A file that has that name already
// is replaced, even if it is read-only; when that fails it is as it was.
bool iparseReplaceFile(const std::string& FileName, const std::string& ReplacedName, bool useUnicode) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
