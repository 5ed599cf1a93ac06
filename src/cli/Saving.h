// Results on their way into files.
#pragma once
#include "cli/Commands.h"
#include "cli/Targets.h"
#include "cli/Text.h"
#include "saving/OutputFile.h"
#include "shared/ByteArray.h"
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace pixkit {
class cPixSheet;
}

namespace pixkit::cli {

// One file could not be read or written; the reason goes to the person, the rest goes on.
class Failed : public std::runtime_error {
  public:
    Failed(const std::string& file, std::string_view reason)
        : std::runtime_error(shownName(file) + ": " + shown(reason)), m_file(file), m_reason(reason) {}
    const std::string& file() const noexcept { return m_file; }
    const std::string& reason() const noexcept { return m_reason; }

  private:
    std::string m_file, m_reason;
};

// What to tell a person of an exception.
const char* reasonOf(const std::exception& error) noexcept;
// Does work for a file, which is Failed's if the work throws something else. Throws Failed.
void forFile(const std::string& file, const std::function<void()>& work);
// The same for a result, of its input or else its output. False, and the result says why, where it fails.
bool succeeds(Result& result, const std::function<void()>& work);

// Whether the options suit the result. Throws UsageError.
void checkSaving(const SavingOptions& options, const std::string& output, FileFormat format);

// Why an existing file is to be kept without a question; empty otherwise.
std::string reasonToSkip(const Target& target, std::span<const std::string> inputs, const SavingOptions& options);

// Puts a question to a person; false where nobody answers.
using Confirm = std::function<bool(const std::string& question)>;

// Asks before an existing file is replaced, if the options want a person to decide. Throws Failed when it is kept.
void askToReplace(const std::string& file, const SavingOptions& options, const Confirm& confirm);

// Whether a page is there, and something else than what leaves that mark has made it.
bool isForeignPage(const std::string& page, std::string_view mark);

// Puts a picture onto a colour. False when that fails; the instance says why.
bool flatten(cPixSheet& sheet, std::int32_t background);

// What is to be a file. What is in its place stays until then.
class Draft {
  public:
    // `make` gives what it is to hold. Throws Failed, before `make` is called where it is known already that the file
    // cannot be written.
    Draft(const std::string& name, const std::function<ByteArray()>& make);
    // Throws Failed.
    void takePlace();

  private:
    std::string m_name;
    OutputFile m_file;
    ByteArray m_bytes;
};
// The same of text.
std::unique_ptr<Draft> draftOf(const std::string& name, const std::function<void(std::ostream& out)>& write);

// Saves in the target's format, and fills in what that gave. Says on `console` what is odd of the file. Throws Failed.
void savePicture(cPixSheet& sheet, const Target& target, const SavingOptions& options, const Confirm& confirm,
                 Console& console, Result& result);
// The same, but of a small picture only the bytes of the file are made, for which the picture is no longer needed: what
// is left to do is finishPicture. Nothing where all is done.
std::optional<ByteArray> preparePicture(cPixSheet& sheet, const Target& target, const SavingOptions& options,
                                        const Confirm& confirm, Console& console, Result& result);
void finishPicture(ByteArray&& bytes, const Reporting& reporting, Console& console, Result& result);

// Both at once.
void writeWhole(const std::string& name, const std::function<void(std::ostream& out)>& write);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
