// What the bytes of a save go into before they are the file that was asked for.
#pragma once
#include "diagnostics/Outcome.h"
#include "platform/files.h"
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace pixkit {

// Whether a file, named without its folder, is called as drafts are: it was left behind.
bool isDraftName(std::string_view file) noexcept;

// A draft in the folder of the target, which takes the target's place when it is complete; a link is written through.
// Its name begins with "~pixkit" and has the target's extension, should a crash leave it behind on a file system where
// drafts do not vanish by themselves.
//
// A target that nothing can replace (platform::CreateDraftW), or in whose folder nothing can be created, is written
// over in place, if it may be. The room for it is taken first, so that a full disk costs nothing; only a disk that
// fails, or a process that ends, in the middle of writing leaves a file that is neither the old nor the new one.
class OutputFile {
  public:
    // The target is as it was until save().
    OutputFile(const std::string& target, bool useUnicode);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Why the target cannot be written, if that is known already.
    const Outcome& outcome() const noexcept { return m_outcome; }
    // Once: all the pieces, one after the other, are the target afterwards, and are on the disk.
    Outcome save(std::span<const std::span<const std::uint8_t>> pieces) noexcept;

  private:
    void overwriteInstead();
    bool write(std::span<const std::span<const std::uint8_t>> pieces) noexcept;

    std::string m_target; // no link
    std::string m_draft;  // empty when the target is written in place
    bool m_useUnicode;
    platform::UniqueFile m_file;
    Outcome m_outcome;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
