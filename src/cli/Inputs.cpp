#include "cli/Inputs.h"
#include "cli/Files.h"
#include "cli/Streams.h"
#include "cli/Text.h"
#include "saving/OutputFile.h"
#include <algorithm>
#include <set>
#include <system_error>

namespace pixkit::cli {

namespace fs = std::filesystem;

namespace {

// What pictures in folders are known by; others, which may be anything, are loaded where they are named. What a run
// that was killed has left behind is none.
bool hasPictureName(const fs::path& file) {
    return formatOf(file).has_value() && !isDraftName(toUtf8(file.filename()));
}

class Walk {
  public:
    Walk(std::vector<Input>& found, const fs::path& except) : m_found(found), m_except(except) {}

    void enter(const fs::path& folder, const fs::path& below) {
        std::error_code error;
        if (!m_except.empty() && fs::equivalent(folder, m_except, error)) return;
        std::vector<fs::directory_entry> entries;
        fs::directory_iterator entry(folder, error);
        for (; !error && entry != fs::directory_iterator(); entry.increment(error))
            entries.push_back(*entry);
        if (error) m_found.push_back({toUtf8(folder), below, "the folder cannot be read: " + error.message()});
        std::ranges::sort(entries);
        for (const fs::directory_entry& each : entries)
            take(each, below);
    }

  private:
    void take(const fs::directory_entry& entry, const fs::path& below) {
        std::error_code error;
        if (entry.is_directory(error)) {
            if (!entry.is_symlink(error)) enter(entry.path(), below / entry.path().filename());
        } else if (hasPictureName(entry.path())) { // of what is no file, the load says so
            m_found.push_back({toUtf8(entry.path()), below});
        }
    }

    std::vector<Input>& m_found;
    const fs::path& m_except;
};

std::string normalName(const std::string& file) {
    try {
        return toUtf8(toPath(file).lexically_normal());
    } catch (const std::system_error&) { // the name is no text; a load says so
        return file;
    }
}

} // namespace

std::vector<Input> findInputs(const std::vector<std::string>& names, bool recursive, const fs::path& except) {
    refuseTwice(names);
    std::vector<Input> found;
    for (const std::string& name : names) {
        std::error_code error;
        if (name.empty()) {
            found.push_back({name, {}, "a picture's name is empty, as of a variable that is not set"});
        } else if (isStream(name) || !isFolder(name)) {
            found.push_back({name});
        } else if (!recursive) {
            found.push_back({name, {}, "it is a folder; --recursive takes the pictures in it"});
        } else if (!except.empty() && fs::equivalent(toPath(name), except, error)) {
            found.push_back({name, {}, "it is the folder for the results, too"});
        } else {
            const std::size_t before = found.size();
            Walk(found, except).enter(toPath(name), {});
            if (found.size() == before) found.push_back({name, {}, "there is no picture in it"});
        }
    }
    return found;
}

std::vector<Input> findDifferentInputs(const std::vector<std::string>& names, bool recursive, const fs::path& except) {
    std::vector<Input> inputs = findInputs(names, recursive, except);
    std::set<std::string> found;
    // Streams are there once already; the file ./- would have the name of one.
    std::erase_if(inputs, [&](const Input& input) {
        return !isStream(input.name) && !found.insert(normalName(input.name)).second;
    });
    return inputs;
}

void InputFiles::add(const Input& input) {
    const auto identity = isStream(input.name) ? std::nullopt : platform::identityOf(input.name);
    if (identity) m_names.emplace(*identity, input.name);
}

const std::string* InputFiles::replacedBy(const std::string& result) const {
    const auto identity = m_names.empty() ? std::nullopt : platform::identityOf(result);
    if (!identity) return nullptr;
    const auto input = m_names.find(*identity);
    if (input == m_names.end()) return nullptr;
    // What was an input may have been replaced since, by its own result.
    std::error_code error;
    return fs::equivalent(toPath(input->second), toPath(result), error) ? &input->second : nullptr;
}

fs::path stemOf(const Input& input) {
    if (isStandard(input.name)) return "stdin";
    fs::path stem = toPath(input.name).stem();
    return isStream(input.name) ? fs::path("pipe-" + stem.string()) : stem; // of /dev/fd/N
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
