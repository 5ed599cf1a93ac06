// Runs the command in the test's own process as tests/data/cli/*.txt say, and compares everything that comes of it. The
// README beside them explains how they are written.
#include "cli/Commands.h"
#include "cli/Text.h"
#include "platform/text.h"
#include "support/Ledger.h"
#include <algorithm>
#include <map>

namespace pixkit::test {
namespace {

namespace fs = std::filesystem;

// The words of a line as a shell sees them: those in single quotes are one.
std::vector<std::string> wordsOf(const std::string& line) {
    std::vector<std::string> words;
    bool isQuoted = false;
    bool isInWord = false;
    for (const char c : line) {
        if (c == '\'') {
            isQuoted = !isQuoted;
        } else if (c == ' ' && !isQuoted) {
            isInWord = false;
            continue;
        }
        if (!isInWord) words.emplace_back();
        isInWord = true;
        if (c != '\'') words.back() += c;
    }
    return words;
}

// Whether a text is what a pattern says, in which * stands for any characters, ends of lines included.
bool fits(std::string_view pattern, std::string_view text) {
    const std::size_t star = pattern.find('*');
    if (star == std::string_view::npos) return pattern == text;
    if (!text.starts_with(pattern.substr(0, star))) return false;
    for (std::size_t at = star; at <= text.size(); ++at)
        if (fits(pattern.substr(star + 1), text.substr(at))) return true;
    return false;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// A folder of its own with the pictures of tests/data/cli, in which commands run and are seen to make files.
class Scene {
  public:
    Scene() {
        for (const auto& entry : fs::directory_iterator(sourceFolder() / "tests/data/cli"))
            if (entry.path().extension() == ".png")
                fs::copy_file(entry.path(), m_folder.path(entry.path().filename().u8string()));
        fs::current_path(m_folder.path(u8""));
    }
    ~Scene() { fs::current_path(m_before); }

    // Everything that a line gives, one line each.
    std::string run(const std::string& line) {
        std::vector<std::string> words = wordsOf(line);
        if (words[0] == "cp") {
            fs::remove(cli::toPath(words[2])); // not every library overwrites when it is told to
            fs::copy(sourceFolder() / cli::toPath(words[1]), cli::toPath(words[2]));
        } else if (words[0] == "mkdir") {
            fs::create_directories(cli::toPath(words[1]));
        } else if (words[0] == "write") {
            writeFile(cli::toPath(words[1]), {words[2].begin(), words[2].end()});
        } else {
            return runCommand(std::move(words));
        }
        return "";
    }

  private:
    // `pixkit ...`, or `Yes | pixkit ...` with what a person at the terminal types.
    std::string runCommand(std::vector<std::string> words) {
        const auto bar = std::ranges::find(words, "|");
        const bool hasPerson = bar != words.end();
        std::istringstream in(hasPerson ? (words[0] == "|" ? "" : words[0] + "\n") : "y\ny\n");
        words.erase(words.begin(), (hasPerson ? bar + 1 : words.begin()) + 1);
        std::ostringstream out, err;
        cli::Console console{in, out, err, hasPerson, false};
        auto before = files();
        const int exitCode = cli::run(std::move(words), console);
        std::string outcome = exitCode != 0 ? "exit " + std::to_string(exitCode) + "\n" : "";
        outcome += shown("> ", out.str()) + shown("! ", err.str());
        for (const auto& [name, content] : files())
            if (before[name] != content) outcome.append("+ ").append(name).append(" ").append(content).append("\n");
        return outcome;
    }
    static std::string shown(const std::string& mark, const std::string& text) {
        std::istringstream lines(replaced(text, cli::toUtf8(fs::current_path()), "."));
        std::string result;
        for (std::string line; std::getline(lines, line);)
            result +=
                (line.empty() ? mark.substr(0, 1) : mark + replaced(line, cPixSheet().Version(), "VERSION")) + "\n";
        return result;
    }
    // Names, and the size and checksum of what they hold.
    static std::map<std::string, std::string> files() {
        std::map<std::string, std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(".")) {
            if (!entry.is_regular_file()) continue;
            const auto bytes = readFile(entry);
            found[cli::toUtf8(entry.path().lexically_relative("."))] =
                std::to_string(bytes.size()) + " " + checksum(bytes);
        }
        return found;
    }

    TemporaryFolder m_folder;
    fs::path m_before = fs::current_path();
};

class CommandTranscript : public testing::TestWithParam<std::string> {};

TEST_P(CommandTranscript, ALineGivesSomethingElse) {
    const fs::path path = sourceFolder() / "tests/data/cli" / (GetParam() + ".txt");
    std::ifstream file(path);
    ASSERT_TRUE(file) << path;
    std::unique_ptr<Scene> scene;
    std::string written;
    std::string line;
    for (bool isThere = static_cast<bool>(std::getline(file, line)); isThere;) {
        written += line + "\n";
        if (line.starts_with('[')) {
            scene.reset(); // goes back to the folder that the next one starts from
            scene = std::make_unique<Scene>();
        }
        const std::string command = line.starts_with("$ ") ? line.substr(2) : "";
        std::string expected;
        while ((isThere = static_cast<bool>(std::getline(file, line))) && !line.empty() &&
               std::string_view("[#$").find(line[0]) == std::string_view::npos)
            expected += line + "\n";
        if (command.empty()) continue;
        const std::string outcome = scene->run(command);
        const bool isSame = fits(expected, outcome);
        const bool isWriting = std::getenv("PIXKIT_WRITE_TRANSCRIPTS") != nullptr;
        written += isSame ? expected : outcome;
        EXPECT_TRUE(isSame || isWriting) << command << "\nmust give\n" << expected << "and gives\n" << outcome;
    }
    scene.reset();
    if (std::getenv("PIXKIT_WRITE_TRANSCRIPTS") != nullptr) std::ofstream(path, std::ios::binary) << written;
}

INSTANTIATE_TEST_SUITE_P(Each, CommandTranscript,
                         testing::Values("batches", "compose", "convert", "drawing", "effects", "gallery", "info",
                                         "limits", "notes", "saving", "sheet", "usage",
                                         platform::canDrawText() ? "text" : "text-absent"),
                         [](const auto& each) { return each.param.substr(0, each.param.find('-')); });

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
