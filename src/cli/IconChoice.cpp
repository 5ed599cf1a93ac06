#include "cli/IconChoice.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <charconv>

namespace pixkit::cli {

namespace {

bool parseLength(std::string_view text, std::int32_t& length) {
    std::uint16_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    length = value;
    return error == std::errc() && end == text.data() + text.size();
}

} // namespace

void parseIconSize(std::string_view text, IconChoice& choice) {
    const std::size_t cross = text.find_first_of("xX");
    const std::string_view height = cross == std::string_view::npos ? text : text.substr(cross + 1);
    if (!parseLength(text.substr(0, cross), choice.width) || !parseLength(height, choice.height)) {
        throw UsageError("'" + std::string(text) + "' is no icon size; that is N or WxH, as in 48 or 64x32, 0 for any");
    }
}

bool load(cPixSheet& sheet, const std::string& file, const IconChoice& choice, bool keepsFile) {
    return sheet.LoadPicture_File(file, choice.width, choice.height, keepsFile, choice.depth);
}

} // namespace pixkit::cli
