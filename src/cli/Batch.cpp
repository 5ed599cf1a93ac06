#include "cli/Batch.h"
#include "platform/Lock.h"
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <exception>
#include <istream>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <ostream>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace pixkit::cli {

class Batch {
  public:
    Batch(std::size_t pieces, unsigned jobs, Console& console, const std::function<void(Piece&)>& work)
        : m_pieces(pieces), m_jobs(jobs), m_console(console), m_work(work) {}

    Console& console() noexcept { return m_console; }

    void run() {
        {
            std::vector<std::jthread> helpers;
            try {
                while (helpers.size() + 1 < std::min<std::size_t>(m_jobs, m_pieces))
                    helpers.emplace_back([this] { takePieces(); });
            } catch (const std::exception&) { // no more threads, or no memory for them: fewer do the work
            }
            takePieces();
        }
        for (Carrier& carrier : m_carriers)
            if (carrier.thread.joinable()) carrier.thread.join();
        if (m_failure) std::rethrow_exception(m_failure);
    }

    // For questions to a person, names that several results would have, pictures that a sheet has to do without, and
    // where there is no memory to keep what is said. The thread sleeps and looks again: to be woken it would need
    // std::atomic's wait, for which the library of the Windows toolchain has a mutex and a condition variable whose
    // memory it never gives back.
    void awaitTurn(std::size_t index) noexcept {
        while (m_turn != index)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    void progress(std::size_t index, const std::string& line) noexcept {
        const std::scoped_lock lock(m_lock);
        if (!m_console.personWatches || m_turn != index) return;
        try {
            rewrite('[' + std::to_string(index + 1) + '/' + std::to_string(m_pieces) + "] " + line);
        } catch (const std::exception&) { // it is not worth the work
        }
    }

    // At once, so that an interrupt leaves nothing unsaid that is done. Where work failed before the first result of an
    // array was said, there is none that the comma before the next would divide it from.
    void say(std::string_view out, const std::string& err) noexcept {
        try {
            if (!m_hasSaid && out.starts_with(",\n")) out.remove_prefix(1);
            if (!out.empty()) m_hasSaid = true;
            if (m_shownColumns != 0) {
                rewrite("");
                m_console.err << '\r';
            }
            m_console.err << err << std::flush;
            m_console.out << out << std::flush;
        } catch (const std::exception&) { // streams of other programs may throw; the command's do not
        }
    }

  private:
    // A thread that does what a piece has left. They are as many as make a disk do several files at once, and end soon,
    // so that nobody has to wake them.
    struct Carrier {
        std::atomic<bool> isFree = true;
        std::thread thread; // that has ended, or is about to, if the carrier is free
    };

    // Pieces are taken in order, so that whoever waits for its turn waits for pieces that somebody is at.
    void takePieces() noexcept {
        for (std::size_t index = m_taken++; index < m_pieces; index = m_taken++) {
            std::shared_ptr<Piece> piece;
            try {
                piece.reset(new Piece(*this, index));
                if (!m_hasFailed) m_work(*piece);
            } catch (...) {
                fail(piece.get());
            }
            if (!piece || !piece->m_rest || !isCarried(piece)) finish(index, piece.get());
        }
    }

    // Whether a carrier does it: not with one job, of which people expect one thing after the other, nor for one piece,
    // beside which there is nothing to do.
    bool isCarried(const std::shared_ptr<Piece>& piece) noexcept {
        constexpr std::size_t mostBytes = std::size_t{32} << 20;
        if (m_jobs == 1 || m_pieces == 1 || m_bytesCarried > mostBytes) return false;
        const std::scoped_lock lock(m_carrierLock); // a thread may end before it is where it is to be kept
        const auto free = std::ranges::find_if(m_carriers, [](Carrier& each) { return each.isFree.exchange(false); });
        if (free == m_carriers.end()) return false;
        m_bytesCarried += piece->m_bytesHeld;
        try {
            if (free->thread.joinable()) free->thread.join();
            free->thread = std::thread([this, piece, &carrier = *free] {
                finish(piece->m_index, piece.get());
                m_bytesCarried -= piece->m_bytesHeld;
                carrier.isFree = true;
            });
            return true;
        } catch (const std::exception&) { // no more threads, or no memory for them
            m_bytesCarried -= piece->m_bytesHeld;
            free->isFree = true;
            return false;
        }
    }

    void finish(std::size_t index, Piece* piece) noexcept {
        std::string out, err;
        try {
            if (piece != nullptr && piece->m_rest) piece->m_rest(*piece);
        } catch (...) {
            fail(piece);
        }
        try {
            if (piece != nullptr) takeSaid(*piece, out, err);
        } catch (...) {
            fail(piece);
        }
        deliver(index, std::move(out), std::move(err));
    }

    // Of results what is whole, since programs read them, and of complaints what there is; where memory ended in the
    // middle, that is a failure, of which streams keep the exception.
    static void takeSaid(Piece& piece, std::string& out, std::string& err) {
        if (piece.m_out && !piece.m_hasFailed) out = std::move(piece.m_out).str();
        err = std::move(piece.m_err).str();
        if (!piece.m_out || !piece.m_err) throw std::bad_alloc();
    }

    // By the exception that is being handled.
    void fail(Piece* piece) noexcept {
        const std::scoped_lock lock(m_lock);
        if (piece != nullptr) piece->m_hasFailed = true;
        if (!m_failure) m_failure = std::current_exception();
        m_hasFailed = true;
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

    // In the place of the last such line, and within one row of the screen, which a line that is longer would fill.
    // Spaces cover what the last one leaves: not every console knows how to erase.
    void rewrite(const std::string& line) {
        constexpr std::size_t most = 79;
        std::size_t end = 0, columns = 0;
        for (; end < line.size() && columns + columnsOf(line[end]) <= most; ++end)
            columns += columnsOf(line[end]);
        m_console.err << '\r' << line.substr(0, end) << std::string(std::max(m_shownColumns, columns) - columns, ' ')
                      << std::flush;
        m_shownColumns = columns;
    }

    // How many columns the character takes whose UTF-8 begins with that byte, at most: those of two columns have three
    // bytes or more. None for the bytes behind the first.
    static std::size_t columnsOf(char first) noexcept {
        const auto byte = static_cast<unsigned char>(first);
        const bool isBehind = (byte & 0xC0) == 0x80;
        return isBehind ? 0 : byte < 0xE0 ? 1 : 2;
    }

    const std::size_t m_pieces;
    const unsigned m_jobs;
    Console& m_console;
    const std::function<void(Piece&)>& m_work;
    std::atomic<std::size_t> m_taken = 0, m_turn = 0; // the first piece that is not taken; not said
    platform::Lock m_carrierLock;
    std::array<Carrier, 16> m_carriers;
    std::atomic<std::size_t> m_bytesCarried = 0;
    std::atomic<bool> m_hasFailed = false;
    platform::Lock m_lock; // of all below
    std::map<std::size_t, std::pair<std::string, std::string>> m_kept;
    std::exception_ptr m_failure;
    bool m_hasSaid = false;         // anything on standard output
    std::size_t m_shownColumns = 0; // of the line that tells how far work has come
};

Piece::Piece(Batch& batch, std::size_t index)
    : m_batch(batch), m_index(index), m_console{batch.console().in, m_out, m_err, batch.console().personAnswers} {}

void Piece::awaitTurn() {
    m_batch.awaitTurn(m_index);
}

void Piece::progress(const std::string& line) noexcept {
    m_batch.progress(m_index, line);
}

void Piece::leave(std::size_t bytesHeld, std::function<void(Piece& piece)> rest) {
    m_bytesHeld = bytesHeld;
    m_rest = std::move(rest);
}

bool Piece::confirm(const std::string& question) {
    awaitTurn();
    m_batch.say("", std::exchange(m_err, std::ostringstream()).str());
    return cli::confirm(m_batch.console(), question);
}

void runBatch(std::size_t pieces, unsigned jobs, Console& console, const std::function<void(Piece&)>& work) {
    if (jobs == 0) jobs = std::max(std::thread::hardware_concurrency(), 1U);
    Batch(pieces, jobs, console, work).run();
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
