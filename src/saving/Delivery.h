// Where the bytes of a save go.
#pragma once
#include "codecs/Writing.h"
#include "shared/ByteArray.h"
#include <functional>
#include <string>

namespace pixkit {

// Into an array, in one dimension from 0. Without a file the array stays as it was.
Outcome deliverToStream(ByteArray& outStream, WrittenFile&& file);

struct FileTarget {
    const std::string& name;
    bool promptOverwrite; // whether a person is asked first when the name exists
    bool isAttended;      // whether there is one; else the answer is No
    bool useUnicode;      // whether wide names are used whatever the desktop says
};

// Into a file: settles whether the name may be written, lets `write` make the bytes, and puts them into a file that
// takes the target's place when it is complete (OutputFile.h): a full disk costs nobody both. Refuses, and whatever had
// the name as it was, for no name, a directory, a No, when there is nothing to write, or where the system fails.
Outcome deliverToFile(const FileTarget& target, const std::function<WrittenFile()>& write);

} // namespace pixkit
// SPDX-License-Identifier: MIT
