#include "saving/OutputFile.h"
#include "diagnostics/fileReason.h"
#include "platform/system.h"
#include "shared/Files.h"
#include <algorithm>

namespace pixkit {

namespace {

constexpr Reason cannotBeReplaced = "the file cannot be replaced";
constexpr Reason notAllWritten = "not all of the file could be written";

constexpr std::string_view draftStart = "~pixkit", draftLetters = "0123456789abcdefghijklmnopqrstuv";
constexpr std::size_t draftLength = 8; // of the letters behind the start

// In the target's folder, with its extension. Nobody can guess it, so nobody can have it waiting. Empty on failure.
std::string draftName(const std::string& target) {
    constexpr std::size_t longestExtension = 8;
    std::uint8_t random[draftLength];
    if (!platform::RtlGenRandom(random, sizeof random)) return {};
    const std::size_t folder = platform::folderLength(target);
    std::string name = target.substr(0, folder).append(draftStart);
    for (const std::uint8_t value : random)
        name += draftLetters[value & 31];
    const std::size_t dot = target.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot >= folder && target.size() - dot <= longestExtension;
    return hasExtension ? name + target.substr(dot) : name;
}

// Why there can be no new file beside the target.
Reason folderProblem(const std::string& target, bool useUnicode) {
    constexpr Reason takesNone = "the folder takes no new file";
    const platform::FileError error = platform::GetLastError();
    if (error == platform::FileError::denied) return takesNone;
    if (error != platform::FileError::notFound) return fileReason(takesNone);
    const std::string folder = target.substr(0, platform::folderLength(target));
    return folder.empty() || iparseIsDirectory(folder, useUnicode) ? takesNone : Reason("the folder does not exist");
}

} // namespace

bool isDraftName(std::string_view file) noexcept {
    if (!file.starts_with(draftStart)) return false;
    file.remove_prefix(draftStart.size());
    const std::size_t length = std::min(file.find_first_not_of(draftLetters), file.size());
    return length == draftLength && (length == file.size() || file[length] == '.');
}

OutputFile::OutputFile(const std::string& target, bool useUnicode)
    : m_target(iparseFinalFileName(target, useUnicode)), m_useUnicode(useUnicode) {
    if (m_target.empty()) {
        m_outcome = refused(fileReason(cannotBeReplaced));
        return;
    }
    m_draft = draftName(m_target);
    if (m_draft.empty()) {
        m_outcome = refused("the system has no random numbers to name a draft by");
        return;
    }
    m_file.reset(iparseCreateDraft(m_draft, m_target, useUnicode));
    if (!m_file) overwriteInstead();
}

OutputFile::~OutputFile() {
    m_file.reset();
    if (!m_draft.empty()) iparseDeleteFile(m_draft, m_useUnicode); // unless it has vanished already
}

void OutputFile::overwriteInstead() {
    const platform::FileError error = platform::GetLastError();
    m_outcome = refused(folderProblem(m_target, m_useUnicode));
    m_draft.clear();
    const bool mayHelp = error == platform::FileError::denied || error == platform::FileError::irreplaceable;
    if (!mayHelp || !iparseFileExists(m_target, m_useUnicode)) return;
    m_file.reset(iparseOpenToOverwrite(m_target, m_useUnicode));
    m_outcome = m_file ? done() : refused(fileReason(cannotBeReplaced));
}

bool OutputFile::write(std::span<const std::span<const std::uint8_t>> pieces) noexcept {
    const bool isInPlace = m_draft.empty();
    std::int64_t size = 0;
    for (const auto& piece : pieces)
        size += static_cast<std::int64_t>(piece.size());
    if (isInPlace) {
        const std::int64_t old = platform::GetFileSize(m_file.get());
        if (old < 0 || (size > old && !platform::SetEndOfFile(m_file.get(), size))) return false;
    }
    const auto arrives = [&](std::span<const std::uint8_t> piece) { return iparseWriteWhole(m_file.get(), piece); };
    return std::ranges::all_of(pieces, arrives) && (!isInPlace || platform::SetEndOfFile(m_file.get(), size)) &&
           platform::FlushFileBuffers(m_file.get());
}

Outcome OutputFile::save(std::span<const std::span<const std::uint8_t>> pieces) noexcept {
    if (!write(pieces)) return refused(fileReason(notAllWritten));
    if (!m_draft.empty() && !platform::KeepDraft(m_file.get(), m_draft)) return refused(fileReason(cannotBeReplaced));
    if (!platform::CloseHandle(m_file.release())) return refused(fileReason(notAllWritten));
    if (m_draft.empty()) return done();
    if (!iparseReplaceFile(m_draft, m_target, m_useUnicode)) return refused(fileReason(cannotBeReplaced));
    m_draft.clear();
    return done();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
