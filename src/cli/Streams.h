// Pictures that come and go through pipes.
#pragma once
#include "shared/ByteArray.h"
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pixkit::cli {

// Whether a name means the standard stream, '-', or is one of those by which shells hand over pipes: /dev/stdin,
// /dev/stdout, /dev/fd/N. Other pipes and devices are no files to the command: it could wait for them for ever.
bool isStream(std::string_view name);
// Of streams, those that the command itself was given.
bool isStandard(std::string_view name);

// Throws UsageError when two of the names mean one stream.
void refuseTwice(const std::vector<std::string>& names);

// What a picture is read from: a file, or all that came through a pipe.
struct PictureSource {
    PictureSource(std::string file) : name(std::move(file)) {}

    std::string name;
    std::optional<ByteArray> bytes = {}; // nothing: they are in the file
};

// Reads a pipe to its end. Throws Failed when nothing can be read, or more than 2 GiB.
PictureSource openSource(const std::string& name, std::istream& standardInput);

// Throws Failed when they do not all arrive.
void writeStream(const std::string& name, const ByteArray& bytes, std::ostream& standardOutput);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
