#include "cli/Files.h"
#include "cli/Mistakes.h"
#include "cli/Text.h"

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

std::optional<FileFormat> formatOf(const fs::path& file) {
    const std::string extension = extensionOf(file);
    for (const Format& format : formats()) {
        if (!extension.empty() && (extension == format.extension || extension == format.otherExtension))
            return format.id;
    }
    return {};
}

std::optional<std::string> formatProblem(const fs::path& target) {
    const std::string written = "this version writes .bmp, .tga, .png, .gif, .jpg, .ico and .cur";
    const std::string extension = extensionOf(target);
    if (formatOf(target)) return {};
    if (extension.empty()) return "has no extension, which would say the format; " + written;
    const std::string suggestion = suggestionFor(extension, wordsOf(formats(), &Format::extension));
    return "the extension '" + extension + "' is not known; " + (suggestion.empty() ? written : suggestion);
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
