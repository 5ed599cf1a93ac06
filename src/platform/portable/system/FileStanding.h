// What a file is besides its bytes, and how a new one becomes the same.
#pragma once
#include <string>
#include <sys/stat.h>

namespace pixkit::platform {

// Whether a new file under the same name could be what this one is: a file of one name.
bool isReplaceable(const struct stat& file) noexcept;

// Gives an open, new file the owner, the mode, the access list and the extended attributes of the file `name`, whose
// status is `old`. False when it cannot have one of them. May throw std::bad_alloc.
bool takeOver(int descriptor, const std::string& name, const struct stat& old);

// The name that the kernel has for what is open.
struct NameOfOpen {
    char text[32];
};
NameOfOpen nameOfOpen(int descriptor) noexcept;

// Brings a change of names in a folder onto the disk. There is nothing to be done about a failure: either name leads to
// a whole file.
void synchroniseFolderOf(const std::string& name) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
