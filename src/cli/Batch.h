// Many pieces of work, done by several threads, of which a person hears as if they were done one after the other.
#pragma once
#include "cli/Console.h"
#include <cstddef>
#include <functional>
#include <sstream>
#include <string>

namespace pixkit::cli {

class Batch;

// What a piece of work may know and say.
class Piece {
  public:
    std::size_t index() const noexcept { return m_index; }
    // What is said here comes out once all that belongs to earlier pieces has.
    Console& console() noexcept { return m_console; }
    // Waits until all earlier pieces are done.
    void awaitTurn();
    // Asks the person at the terminal, in turn. False where nobody answers.
    bool confirm(const std::string& question);
    // How far it has come, for a person who watches: a line that goes when something is said. Of several pieces that
    // are worked on, it is shown of the first.
    void progress(const std::string& line) noexcept;
    // What is left of it is mostly waiting, such as for a disk: another piece may be begun meanwhile.
    void letOthersWork() noexcept;

  private:
    friend class Batch;
    Piece(Batch& batch, std::size_t index, bool& isAtWork);

    Batch& m_batch;
    std::size_t m_index;
    bool& m_isAtWork; // until others may be
    std::ostringstream m_out, m_err;
    Console m_console;
};

// Does the work for each index below `pieces`, in any order, on up to `jobs` pieces at a time; 0: as many as there are
// processors for this program. With `letsOthersWork` and more than one job, as many others may be waiting. Ends with
// the first exception that work throws.
void runBatch(std::size_t pieces, unsigned jobs, Console& console, const std::function<void(Piece&)>& work,
              bool letsOthersWork = false);

// Asks, and reads a line. False unless it begins with y or Y.
bool confirm(Console& console, const std::string& question);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
