#include "cli/Targets.h"
#include "cli/Mistakes.h"
#include "cli/Saving.h"
#include "cli/Streams.h"
#include "cli/Text.h"

namespace pixkit::cli {

namespace fs = std::filesystem;

namespace {

constexpr const char* folderFormat = "png"; // unless --to says otherwise

FileFormat formatOfWord(const std::string& format) {
    if (format.find_first_of("./\\") != std::string::npos)
        throw UsageError("--to takes an extension without its dot, not " + format);
    const auto wanted = formatOf(toPath("a." + format));
    if (!wanted) {
        throw UsageError("--to: '" + format + "' is not a format; known are " + listed(formatWords) +
                         orSuggestion(format, formatWords));
    }
    return *wanted;
}

} // namespace

bool Target::isStream() const {
    return cli::isStream(name);
}

fs::path Target::path() const {
    return toPath(name);
}

Target targetOf(const std::string& name, const std::string& format) {
    if (name.empty()) throw UsageError("the name for the result is empty; name a file, a folder, or - for a pipe");
    const bool isStreamed = isStream(name);
    if (format.empty()) {
        if (isStreamed)
            throw UsageError("what goes to " + name +
                             " has no extension that says its format; name it, as in --to png");
        if (const auto problem = formatProblem(toPath(name))) throw UsageError(name + ": " + *problem);
        return {name, formatOf(toPath(name)).value()};
    }
    const FileFormat wanted = formatOfWord(format);
    const auto own = isStreamed ? std::nullopt : formatOf(toPath(name));
    if (own && *own != wanted) throw UsageError(name + ": its extension says another format than --to " + format);
    if (toLower(format) == "cur" && (isStreamed || !own)) {
        throw UsageError(name + ": a cursor needs a file whose name ends with .cur");
    }
    return {name, wanted};
}

Destination::Destination(const std::string& name, bool mayBeFile, const std::vector<Input>& inputs,
                         const std::string& format)
    : m_name(name), m_format(format) {
    if (name.empty()) targetOf(name, format); // refuses it
    const bool isNamedAsFolder = !isStream(name) && (isFolder(name) || !toPath(name).has_filename());
    m_isFolder = !mayBeFile || isNamedAsFolder;
    if (m_isFolder && isStream(name)) throw UsageError("several pictures need a folder for their results");
    std::error_code error;
    if (m_isFolder && fs::exists(toPath(name), error) && !isFolder(name)) {
        throw UsageError("several pictures need a folder for their results, and " + name + " is a file");
    }
    if (m_isFolder && !isNamedAsFolder && formatOf(toPath(name))) {
        throw UsageError("several pictures need a folder for their results, and " + name +
                         " is called as a picture is; a folder would be " + name + "/");
    }
    if (m_isFolder) {
        if (m_format.empty()) m_format = folderFormat;
        formatOfWord(m_format);
    } else {
        targetOf(name, format);
    }
    const bool isThere = !isStream(name) && fs::exists(toPath(name), error);
    for (const Input& input : inputs) {
        try {
            if (isThere) m_inputs.add(input);
            ++m_claimants[toLower(targetFor(input).name)];
            // What input and system say against it is said when its turn comes.
        } catch (const Failed&) {
        } catch (const std::system_error&) {
        }
    }
}

FileFormat Destination::format() const {
    return m_isFolder ? formatOfWord(m_format) : targetOf(m_name, m_format).format;
}

void Destination::prepare() const {
    std::error_code error;
    if (m_isFolder) fs::create_directories(toPath(m_name), error);
    if (error) throw Failed(m_name, "cannot be made: " + error.message());
}

Target Destination::targetFor(const Input& input) const {
    if (!input.problem.empty()) throw Failed(input.name, input.problem);
    if (!m_isFolder) return targetOf(m_name, m_format);
    fs::path target = toPath(m_name) / input.folder / stemOf(input);
    target += "." + m_format;
    return {toUtf8(target), formatOfWord(m_format)};
}

void Destination::refuseInput(const Target& target, const Input& input) const {
    const std::string* const other = m_inputs.replacedBy(target.name);
    std::error_code error;
    if (other == nullptr || *other == input.name || fs::equivalent(toPath(input.name), target.path(), error)) return;
    throw Failed(input.name, "its result would replace " + *other + ", which is one of the pictures");
}

// Those that nobody else wants need no turn. The others are looked at one after the other, by the order of the inputs.
void Destination::claim(const Target& target, const Input& input, Piece& piece, bool isWritten) {
    std::error_code error;
    refuseInput(target, input);
    const std::string key = toLower(target.name);
    if (m_claimants.at(key) > 1) {
        piece.awaitTurn();
        const auto [entry, isNew] = m_claims.emplace(key, input.name);
        if (!isNew)
            throw Failed(input.name, "its result would replace that of " + entry->second + " in " + target.name);
    }
    if (!isWritten || !m_isFolder || input.folder.empty()) return;
    const fs::path folder = target.path().parent_path();
    fs::create_directories(folder, error);
    if (error) throw Failed(toUtf8(folder), "cannot be made: " + error.message());
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
