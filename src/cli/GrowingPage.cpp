#include "cli/GrowingPage.h"
#include "cli/Text.h"
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <ostream>

namespace pixkit::cli {

namespace fs = std::filesystem;

GrowingPage::GrowingPage(const char* command, const std::string& folder, const char* mark, const SavingOptions& options)
    : m_command(command), m_file(toUtf8(toPath(folder) / "index.html")), m_mark(mark), m_options(options),
      m_wasThere(isFile(m_file)) {}

// A page that something else has made is nobody's to replace without a question.
void GrowingPage::refuseForeign(Console& console) const {
    if (m_options.replacing != Replacing::ask || !isForeignPage(m_file, m_mark)) return;
    if (confirm(console, shown(m_file) + ": Overwrite existing file?")) return;
    throw Failed(m_file, "something else than this command has made it, and it was kept; --overwrite replaces it");
}

void GrowingPage::writeFile() const {
    forFile(m_file, [&] { writeWhole(m_file, [&](std::ostream& html) { write(html); }); });
}

void GrowingPage::put(const std::function<void()>& enter) {
    const std::scoped_lock lock(m_lock);
    enter();
    m_isEmpty = false;
    using Clock = std::chrono::steady_clock;
    const auto now = Clock::now();
    if (m_wasThere || now < m_next) return;
    try {
        writeFile();
    } catch (const Failed&) { // the last time says so
    }
    // A page of very many pictures takes a twentieth of the time at most.
    m_next = Clock::now() + std::max<Clock::duration>(std::chrono::seconds(1), 20 * (Clock::now() - now));
}

int GrowingPage::make(const std::vector<Input>& inputs, unsigned jobs, Console& console) {
    std::atomic<bool> hasFailed = false;
    const auto work = [&](Piece& piece) {
        const Input& input = inputs[piece.index()];
        Result result{input.name, {}};
        const bool isDone = succeeds(result, [&] {
            if (!input.problem.empty()) throw Failed(input.name, input.problem);
            add(input, piece, result);
        });
        if (!isDone) hasFailed = true;
        report(result, m_options.reporting, m_command, piece.index(), piece.console());
    };
    const auto hasDone = [&](const std::function<void()>& part) {
        try {
            part();
            return true;
        } catch (const Failed& failure) {
            console.err << "pixkit " << m_command << ": " << failure.what() << '\n';
            return false;
        }
    };
    const bool isReady = hasDone([&] {
        refuseForeign(console);
        if (!m_options.isDryRun) prepare();
    });
    {
        const ReportArray reports(m_options.reporting.isJson, isReady && !inputs.empty(), console);
        if (isReady) runBatch(inputs.size(), jobs, console, work);
    }
    if (isReady && m_isEmpty) return hasFailed ? exitSomeFailed : exitOk;
    if (!isReady || !hasDone([&] { writeFile(); })) return exitSomeFailed;
    if (!m_options.reporting.isQuiet && !m_options.reporting.isJson)
        console.out << "Look at " << shown(toUtf8(fs::absolute(toPath(m_file)))) << '\n';
    return hasFailed ? exitSomeFailed : exitOk;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
