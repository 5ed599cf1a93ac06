#include "cli/Batch.h"
#include "platform/Lock.h"
#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <istream>
#include <map>
#include <mutex>
#include <ostream>
#include <thread>
#include <utility>
#include <vector>

namespace pixkit::cli {

class Batch {
  public:
    Batch(std::size_t pieces, unsigned jobs, Console& console, const std::function<void(Piece&)>& work)
        : m_pieces(pieces), m_jobs(jobs), m_console(console), m_work(work) {}

    Console& console() noexcept { return m_console; }

    void run(std::size_t threads) {
        {
            std::vector<std::jthread> helpers;
            try {
                while (helpers.size() + 1 < std::min(threads, m_pieces))
                    helpers.emplace_back([this] { takePieces(); });
            } catch (const std::exception&) { // no more threads, or no memory for them: fewer do the work
            }
            takePieces();
        }
        if (m_failure) std::rethrow_exception(m_failure);
    }

    // Seldom: to ask a person, and where memory ends. So nothing that wakes threads is kept, which on some systems
    // stays behind when the last of them is gone.
    void awaitTurn(std::size_t index) noexcept {
        while (m_turn != index)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    void leaveWork(bool& isAtWork) noexcept {
        if (std::exchange(isAtWork, false)) --m_atWork;
    }

    void progress(std::size_t index, const std::string& line) noexcept {
        const std::scoped_lock lock(m_lock);
        if (!m_console.personWatches || m_turn != index) return;
        try {
            rewrite('[' + std::to_string(index + 1) + '/' + std::to_string(m_pieces) + "] " + line);
        } catch (const std::exception&) { // it is not worth the work
        }
    }

    // At once, so that an interrupt leaves nothing unsaid that is done.
    void say(const std::string& out, const std::string& err) noexcept {
        try {
            if (m_shownLength != 0) {
                rewrite("");
                m_console.err << '\r';
            }
            m_console.err << err << std::flush;
            m_console.out << out << std::flush;
        } catch (const std::exception&) { // streams of other programs may throw; the command's do not
        }
    }

  private:
    // Waits until fewer pieces are worked on than may be. False when all have been taken. What waits does so for less
    // time than a small picture takes.
    bool beginWork() noexcept {
        for (unsigned atWork = m_atWork; m_taken < m_pieces;) {
            if (atWork < m_jobs && m_atWork.compare_exchange_weak(atWork, atWork + 1)) return true;
            if (atWork < m_jobs) continue;
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            atWork = m_atWork;
        }
        return false;
    }

    // Pieces are taken in order, by who may begin, so that whoever waits for its turn waits for pieces that somebody is
    // at.
    void takePieces() noexcept {
        while (beginWork()) {
            bool isAtWork = true;
            const std::size_t index = m_taken++;
            if (index >= m_pieces) return leaveWork(isAtWork);
            std::string out, err;
            try {
                Piece piece(*this, index, isAtWork);
                if (!m_hasFailed) m_work(piece);
                out = std::move(piece.m_out).str();
                err = std::move(piece.m_err).str();
            } catch (...) {
                const std::scoped_lock lock(m_lock);
                if (!m_failure) m_failure = std::current_exception();
                m_hasFailed = true;
            }
            leaveWork(isAtWork);
            deliver(index, std::move(out), std::move(err));
        }
    }

    // Kept until it is this piece's turn. Where there is no memory to keep it, the thread waits instead.
    void deliver(std::size_t index, std::string&& out, std::string&& err) noexcept {
        try {
            const std::scoped_lock lock(m_lock);
            if (m_turn != index) {
                auto& [keptOut, keptErr] = m_kept[index];
                keptOut = std::move(out);
                keptErr = std::move(err);
                return;
            }
        } catch (const std::exception&) {
            awaitTurn(index);
        }
        const std::scoped_lock lock(m_lock);
        say(out, err);
        for (auto next = m_kept.begin(); next != m_kept.end() && next->first == m_turn + 1; next = m_kept.begin()) {
            ++m_turn;
            say(next->second.first, next->second.second);
            m_kept.erase(next);
        }
        ++m_turn;
    }

    // In the place of the last such line. Spaces cover what that leaves: not every console knows how to erase.
    void rewrite(const std::string& line) {
        m_console.err << '\r' << line << std::string(std::max(m_shownLength, line.size()) - line.size(), ' ')
                      << std::flush;
        m_shownLength = line.size();
    }

    const std::size_t m_pieces;
    const unsigned m_jobs;
    Console& m_console;
    const std::function<void(Piece&)>& m_work;
    std::atomic<std::size_t> m_taken = 0, m_turn = 0; // the first piece that is not taken; not said
    std::atomic<unsigned> m_atWork = 0;               // pieces
    std::atomic<bool> m_hasFailed = false;
    platform::Lock m_lock; // of all below
    std::map<std::size_t, std::pair<std::string, std::string>> m_kept;
    std::exception_ptr m_failure;
    std::size_t m_shownLength = 0; // of the line that tells how far work has come
};

Piece::Piece(Batch& batch, std::size_t index, bool& isAtWork)
    : m_batch(batch), m_index(index),
      m_isAtWork(isAtWork), m_console{batch.console().in, m_out, m_err, batch.console().personAnswers} {}

void Piece::awaitTurn() {
    m_batch.awaitTurn(m_index);
}

void Piece::progress(const std::string& line) noexcept {
    m_batch.progress(m_index, line);
}

void Piece::letOthersWork() noexcept {
    m_batch.leaveWork(m_isAtWork);
}

bool Piece::confirm(const std::string& question) {
    awaitTurn();
    m_batch.say("", std::exchange(m_err, std::ostringstream()).str());
    return cli::confirm(m_batch.console(), question);
}

void runBatch(std::size_t pieces, unsigned jobs, Console& console, const std::function<void(Piece&)>& work,
              bool letsOthersWork) {
    if (jobs == 0) jobs = std::max(std::thread::hardware_concurrency(), 1U);
    Batch(pieces, jobs, console, work).run(letsOthersWork && jobs > 1 ? std::size_t{2} * jobs : jobs);
}

bool confirm(Console& console, const std::string& question) {
    std::string line;
    if (!console.personAnswers) return false;
    console.err << question << " [y/N] " << std::flush;
    std::getline(console.in, line);
    return line.starts_with('y') || line.starts_with('Y');
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
