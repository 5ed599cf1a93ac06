// What a file is besides its bytes, and how a new one becomes the same.
#pragma once
#include <optional>
#include <string>
#include <sys/stat.h>

namespace pixkit::platform {

// Whether a new file under the same name could be what this one is: a file of one name.
bool isReplaceable(const struct stat& file) noexcept;

// Gives an open, new file the owner, the mode, the access list and the extended attributes of the file `name`, whose
// status is `old`. False when it cannot have one of them. May throw std::bad_alloc.
bool takeOver(int descriptor, const std::string& name, const struct stat& old);

// Where a symbolic link leads, as it says. Nothing, with the cause in errno, for what is no link (EINVAL) or not there
// (ENOENT), and where following it is left to nobody but its owner (EACCES). May throw std::bad_alloc.
std::optional<std::string> textOfLink(const std::string& name);

// The name that the kernel has for what is open.
struct NameOfOpen {
    char text[32];
};
NameOfOpen nameOfOpen(int descriptor) noexcept;

// The folder that a name is in, which may be the current one. May throw std::bad_alloc.
std::string folderOf(const std::string& name);

// Brings a change of names in a folder onto the disk. There is nothing to be done about a failure: either name leads to
// a whole file.
void synchroniseFolderOf(const std::string& name) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
