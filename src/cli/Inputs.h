// The pictures that a command line names: files, and with --recursive those in folders.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace pixkit::cli {

struct Input {
    std::string name;
    std::filesystem::path folder = {}; // in which it lies, seen from the folder that was named; empty for a file
    std::string problem = {};          // why it cannot be had; else empty
};

// Files as they are named. With `recursive`, a folder is those of its files, and of the folders in it, whose extension
// is that of a format, in the order of their names; links to folders are not followed, and `except`, the folder for
// results, is left out, and is a problem where it is named itself. Otherwise a folder is a problem. Throws UsageError
// when a pipe is named twice.
std::vector<Input> findInputs(const std::vector<std::string>& names, bool recursive,
                              const std::filesystem::path& except = {});

// The same, but a file that is named twice is there once.
std::vector<Input> findDifferentInputs(const std::vector<std::string>& names, bool recursive,
                                       const std::filesystem::path& except);

// What results of it are called: its name without the extension, and of pipes stdin or pipe-N.
std::filesystem::path stemOf(const Input& input);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
