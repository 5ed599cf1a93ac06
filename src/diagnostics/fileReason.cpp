#include "diagnostics/fileReason.h"
#include "platform/files.h"

namespace pixkit {

Reason fileReason(Reason otherwise) noexcept {
    switch (platform::GetLastError()) {
    case platform::FileError::notFound:
        return "the file does not exist";
    case platform::FileError::denied:
        return "the system denies access to it";
    case platform::FileError::inUse:
        return "another program is using the file";
    case platform::FileError::readOnlySystem:
        return "the file system is read-only";
    case platform::FileError::diskFull:
        return "the disk is full";
    case platform::FileError::tooManyOpen:
        return "too many files are open";
    case platform::FileError::tooLarge:
        return "the file is too large for the file system";
    case platform::FileError::device:
        return "the disk reports an error";
    case platform::FileError::badName:
        return "the system takes no such name";
    case platform::FileError::circle:
        return "its links lead to one another";
    case platform::FileError::noMemory:
        return noMemory;
    case platform::FileError::irreplaceable:
    case platform::FileError::other:
        break;
    }
    return otherwise;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
