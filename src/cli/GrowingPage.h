// A page in a folder, of pictures that are worked on several at a time.
#pragma once
#include "cli/Batch.h"
#include "cli/Inputs.h"
#include "cli/Saving.h"
#include "platform/Lock.h"
#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace pixkit::cli {

// What it is a page of, those that derive from it say. It is written whole again now and then while pictures come in,
// in any order: what interrupts the work leaves a page of those that are done, or the one that was there before.
class GrowingPage {
  public:
    // `mark` is in the first bytes of such pages, and of no other.
    GrowingPage(const char* command, const std::string& folder, const char* mark, const SavingOptions& options);
    virtual ~GrowingPage() = default;
    GrowingPage(const GrowingPage&) = delete;
    GrowingPage& operator=(const GrowingPage&) = delete;

    // All of it, and what is said of it. Returns the program's exit code.
    int make(const std::vector<Input>& inputs, unsigned jobs, Console& console);

  protected:
    // Calls `enter`, which brings a picture into the page.
    void put(const std::function<void()>& enter);

  private:
    // Makes folders. Throws Failed.
    virtual void prepare() = 0;
    // Makes of an input what the page shows, and puts that there, unless it is a dry run. Throws Failed.
    virtual void add(const Input& input, Piece& piece, Result& result) = 0;
    // The page of what there is so far.
    virtual void write(std::ostream& html) const = 0;

    void refuseForeign(Console& console) const;
    void writeFile() const;

    const char* const m_command;
    const std::string m_file;
    const char* const m_mark;
    const SavingOptions& m_options;
    const bool m_wasThere;
    platform::Lock m_lock; // of all below, and of what `enter` and `write` use
    bool m_isEmpty = true;
    std::chrono::steady_clock::time_point m_next = {}; // the page is written again; at once at first
};

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
