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
    // What is left to be done of it, which is mostly waiting, such as for a disk: other pieces are worked on meanwhile.
    // Up to sixteen such rests are done at a time, which keeps a disk busy, and none begins beside others while these
    // hold more than 32 MB of memory; whoever finds no place does the rest itself. So it is with one job or one piece.
    void leave(std::size_t bytesHeld, std::function<void(Piece& piece)> rest);

  private:
    friend class Batch;
    Piece(Batch& batch, std::size_t index);

    Batch& m_batch;
    std::size_t m_index;
    std::size_t m_bytesHeld = 0; // by the rest
    std::function<void(Piece& piece)> m_rest;
    bool m_hasFailed = false; // by an exception
    std::ostringstream m_out, m_err;
    Console m_console;
};

// Does the work for each index below `pieces`, in any order, on up to `jobs` pieces at a time; 0: as many as there are
// processors for this program. With more than one job, what pieces leave is done beside them. Ends with the first
// exception that work throws.
void runBatch(std::size_t pieces, unsigned jobs, Console& console, const std::function<void(Piece&)>& work);

// Asks, and reads a line. False unless it begins with y or Y.
bool confirm(Console& console, const std::string& question);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
