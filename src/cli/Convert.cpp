// `pixkit convert`: load, apply the effects in the order given, save.
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/MessageBoxes.h"
#include "cli/Saving.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <filesystem>
#include <map>
#include <ostream>
#include <span>

namespace pixkit::cli {

namespace fs = std::filesystem;

namespace {

// Where results go: one named file, or a folder that gives each its input's name.
class Destination {
  public:
    Destination(const std::vector<std::string>& paths, const std::string& extension) : m_extension("." + extension) {
        if (paths.size() < 2) throw UsageError("name at least one picture, and the file or folder for the result");
        const std::string& name = paths.back();
        m_path = toPath(name);
        std::error_code error;
        m_isFolder = paths.size() > 2 || fs::is_directory(m_path, error) || !m_path.has_filename();
        if (m_isFolder && fs::exists(m_path, error) && !fs::is_directory(m_path, error)) {
            throw UsageError("several pictures need a folder for their results, and " + name + " is a file");
        }
        const fs::path target = m_isFolder ? fs::path("a" + m_extension) : m_path;
        if (const auto problem = formatProblem(target))
            throw UsageError((m_isFolder ? "--to: " : name + ": ") + *problem);
    }

    FileFormat format() const { return formatOf(m_isFolder ? fs::path("a" + m_extension) : m_path).value(); }

    void prepare() const {
        std::error_code error;
        if (m_isFolder) fs::create_directories(m_path, error);
        if (error) throw Failed(toUtf8(m_path), "cannot be made: " + error.message());
    }

    // Two inputs of one name must not end up in one file, nor names that Windows' file systems take for one.
    fs::path claimTarget(const std::string& input) {
        fs::path target = m_isFolder ? m_path / toPath(input).stem() : m_path;
        if (m_isFolder) target += m_extension;
        const auto [entry, isNew] = m_claims.emplace(toLower(toUtf8(target)), input);
        if (!isNew) throw Failed(input, "its result would replace that of " + entry->second + " in " + toUtf8(target));
        return target;
    }

  private:
    fs::path m_path;
    bool m_isFolder = false;
    std::string m_extension;                     // of results in a folder
    std::map<std::string, std::string> m_claims; // lower-case target to input
};

// The result's name is claimed when there is a result: what is no picture takes it from nobody.
void convertOne(const std::string& input, Destination& destination, const ConvertRequest& request, MessageBoxes& boxes,
                Console& console) {
    boxes.about(input);
    cPixSheet sheet;
    std::span<const EffectStep> steps = request.steps;
    if (!load(sheet, input, request.loading, steps)) throw Failed(input, problemOf(sheet));
    warn(console.err, input, sheet, request.loading);
    sheet.HighQualityInterpolation(true); // until --nearest says otherwise
    for (const EffectStep& step : steps) {
        if (!step.apply(sheet)) throw Failed(input, step.option + ": " + problemOf(sheet));
    }
    const fs::path target = destination.claimTarget(input);
    savePicture(sheet, target, request, boxes);
    console.out << shown(input) << " -> " << shown(toUtf8(target)) << '\n';
}

} // namespace

int convert(const ConvertRequest& request, Console& console) {
    Destination destination(request.paths, request.folderFormat);
    checkSaving(request, destination.format());
    MessageBoxes boxes(console);
    int exitCode = exitOk;
    const auto attempt = [&](const auto& work) {
        try {
            work();
        } catch (const Failed& failure) {
            console.err << "pixkit convert: " << failure.what() << '\n';
            exitCode = exitSomeFailed;
        }
    };
    attempt([&] { destination.prepare(); });
    if (exitCode != exitOk) return exitCode;
    for (std::size_t i = 0; i + 1 < request.paths.size(); ++i) {
        const std::string& input = request.paths[i];
        attempt([&] { convertOne(input, destination, request, boxes, console); });
    }
    return exitCode;
}

} // namespace pixkit::cli
