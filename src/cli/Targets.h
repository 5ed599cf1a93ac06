// Where results go, and in which format.
#pragma once
#include "cli/Batch.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace pixkit::cli {

struct Target {
    std::string name; // of a file, or of a stream
    FileFormat format;

    bool isStream() const;
    // Of a file.
    std::filesystem::path path() const;
};

// A named file or stream, by its extension, or else by --to. Throws UsageError when neither says a format that is
// written, or both say another.
Target targetOf(const std::string& name, const std::string& format);

// What a batch of pictures is brought to: one file or stream, or a folder, where each result has the name of its
// picture, and where pictures lay in folders the folders, too.
class Destination {
  public:
    // Throws UsageError when the inputs and the name make no sense together.
    Destination(const std::string& name, bool mayBeFile, const std::vector<Input>& inputs, const std::string& format);

    FileFormat format() const;
    // Makes the folder. Throws Failed.
    void prepare() const;
    // Throws Failed when the input is not to be had.
    Target targetFor(const Input& input) const;
    // Called when there is a result: two inputs of one name must not end up in one file, nor names that differ in
    // the case of Latin letters alone, which Windows takes for one. Makes the folder that the file is to lie in, if it
    // is to be written. Throws Failed.
    void claim(const Target& target, const Input& input, Piece& piece, bool isWritten);

  private:
    void refuseInput(const Target& target, const Input& input) const;

    std::string m_name;
    bool m_isFolder = false;
    std::string m_format;                           // extension without its dot
    std::map<std::string, std::size_t> m_claimants; // how many inputs may want the same target, by its lower-case name
    InputFiles m_inputs;                            // where results could replace some
    std::map<std::string, std::string> m_claims;    // those that several want, to the input that has it
};

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
