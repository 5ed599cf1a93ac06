// The pictures that a command line names: files, and with --recursive those in folders.
#pragma once
#include "platform/files.h"
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace pixkit::cli {

struct Input {
    std::string name;
    std::filesystem::path folder = {}; // in which it lies, seen from the folder that was named; empty for a file
    std::string problem = {};          // why it cannot be had; else empty
};

// Files as they are named. With `recursive`, a folder is what has the extension of a format in it and in the folders in
// it, in the order of their names: files, pipes, devices and links that lead to no folder, but no drafts of results;
// `except`, the folder for results, is left out, and is a problem where it is named itself. Otherwise a folder is a
// problem. Throws UsageError when a pipe is named twice.
std::vector<Input> findInputs(const std::vector<std::string>& names, bool recursive,
                              const std::filesystem::path& except = {});

// The same, but a file that is named twice is there once.
std::vector<Input> findDifferentInputs(const std::vector<std::string>& names, bool recursive,
                                       const std::filesystem::path& except);

// The files that pictures come from, which results must not replace: by what they are, so that many of one name cost no
// more than others.
class InputFiles {
  public:
    // Nothing is kept of what is no file.
    void add(const Input& input);
    // The name of the input that the file is which a result is to replace; null where it is none.
    const std::string* replacedBy(const std::string& result) const;

  private:
    std::map<platform::FileIdentity, std::string> m_names;
};

// What results of it are called: its name without the extension, and of pipes stdin or pipe-N.
std::filesystem::path stemOf(const Input& input);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
