#include "cli/Files.h"
#include "cli/Mistakes.h"
#include "cli/Text.h"
#include <system_error>
#include <vector>

namespace pixkit::cli {

namespace fs = std::filesystem;

namespace {

std::string extensionOf(const fs::path& file) {
    return toLower(toUtf8(file.extension()));
}

} // namespace

bool isFile(std::string_view name) {
    std::error_code error;
    return fs::is_regular_file(toPath(name), error);
}

bool isFolder(std::string_view name) {
    try {
        std::error_code error;
        return fs::is_directory(toPath(name), error);
    } catch (const std::system_error&) { // the name is no text; who opens it says so
        return false;
    }
}

std::optional<FileFormat> formatOf(const fs::path& file) {
    const std::string extension = extensionOf(file);
    for (const Format& format : formats()) {
        if (!extension.empty() && (extension == format.extension || extension == format.otherExtension))
            return format.id;
    }
    return {};
}

std::optional<std::string> formatProblem(const fs::path& target) {
    std::vector<std::string> extensions;
    extensions.reserve(formatWords.size());
    for (const std::string_view word : formatWords)
        extensions.push_back(std::string(".").append(word));
    const std::vector<std::string_view> known(extensions.begin(), extensions.end());
    const std::string written = "this version writes " + listed(known);
    const std::string extension = extensionOf(target);
    if (formatOf(target)) return {};
    if (extension.empty()) return "has no extension, which would say the format; " + written;
    return "the extension '" + extension + "' is not known; " + written + orSuggestion(extension, known);
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
