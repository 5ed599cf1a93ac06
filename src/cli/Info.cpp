// `pixkit info`: what a picture is, one line a file.
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/MessageBoxes.h"
#include "cli/Names.h"
#include "cli/Text.h"
#include "platform/regions.h"
#include "surface/cPixSheet.h"
#include <iomanip>
#include <optional>
#include <ostream>
#include <vector>

namespace pixkit::cli {

namespace {

struct Facts {
    std::string file;
    std::int32_t width, height;
    AlphaTypeEnum alpha;
    eImageFormat type;
    std::uintmax_t bytes;
    std::vector<IconSourceSize> images;    // of an icon file
    std::optional<std::size_t> rectangles; // where they were asked for
};

std::string withNumber(const char* word, int number) {
    return std::string(word) + " (" + std::to_string(number) + ")";
}

// Without rectangles their column is left out.
void printRow(std::ostream& out, const std::string& size, const std::string& alpha, const std::string& type,
              const std::string& bytes, const std::optional<std::string>& rectangles, const std::string& file) {
    out << std::setw(13) << size << "  " << std::left << std::setw(13) << alpha << "  " << std::setw(17) << type
        << std::right << std::setw(11) << bytes;
    if (rectangles) out << std::setw(12) << *rectangles;
    out << "  " << file << '\n';
}

void printImages(std::ostream& out, const std::vector<IconSourceSize>& images) {
    const char* separator = "               in the file: ";
    for (const IconSourceSize& image : images) {
        out << separator << image.Width << " x " << image.Height << " at " << image.bitDepth
            << (image.isPNG != 0 ? " bits (PNG)" : " bits");
        separator = ", ";
    }
    if (!images.empty()) out << '\n';
}

void printLine(std::ostream& out, const Facts& facts) {
    std::optional<std::string> rectangles;
    if (facts.rectangles) rectangles = std::to_string(*facts.rectangles);
    printRow(out, std::to_string(facts.width) + " x " + std::to_string(facts.height),
             withNumber(alphaName(facts.alpha).word, facts.alpha),
             withNumber(imageTypeName(facts.type).word, facts.type), std::to_string(facts.bytes), rectangles,
             shown(facts.file));
    printImages(out, facts.images);
}

void printJson(std::ostream& out, const Facts& facts) {
    out << "{\"file\": " << jsonString(facts.file) << ", \"width\": " << facts.width << ", \"height\": " << facts.height
        << ", \"alpha\": {\"value\": " << facts.alpha << ", \"name\": \"" << alphaName(facts.alpha).constant
        << "\"}, \"type\": {\"value\": " << facts.type << ", \"name\": \"" << imageTypeName(facts.type).constant
        << "\"}, \"bytes\": " << facts.bytes;
    if (facts.rectangles) out << ", \"rectangles\": " << *facts.rectangles;
    const char* separator = ", \"images\": [";
    for (const IconSourceSize& image : facts.images) {
        out << separator << "{\"width\": " << image.Width << ", \"height\": " << image.Height
            << ", \"depth\": " << image.bitDepth << ", \"png\": " << (image.isPNG != 0 ? "true" : "false") << "}";
        separator = ", ";
    }
    out << (facts.images.empty() ? "}" : "]}");
}

// The file is only kept for those that hold several images.
std::vector<IconSourceSize> imagesOf(cPixSheet& sheet, const std::string& file, const LoadingOptions& loading) {
    std::vector<IconSourceSize> images;
    const eImageFormat type = sheet.ImageType();
    const bool isIcon =
        type == imgIcon || type == imgIconARGB || type == imgPNGicon || type == imgCursor || type == imgCursorARGB;
    if (isIcon && load(sheet, file, loading, true)) sheet.SourceIconSizes(images);
    return images;
}

// Of the picture's shape; nothing where no region can be made of it.
std::optional<std::size_t> rectanglesOf(const cPixSheet& sheet) {
    const platform::UniqueRegion region(sheet.CreateRegion());
    return region ? std::optional(platform::GetRegionData(region.get())) : std::nullopt;
}

} // namespace

int info(const InfoRequest& request, Console& console) {
    int exitCode = exitOk;
    bool first = true;
    MessageBoxes boxes(console);
    if (request.json) console.out << '[';
    for (const std::string& file : request.files) {
        boxes.about(file);
        cPixSheet sheet;
        const bool isLoaded = load(sheet, file, request.loading);
        const auto rectangles = isLoaded && request.region ? rectanglesOf(sheet) : std::nullopt;
        if (!isLoaded || rectangles.has_value() != request.region) {
            console.err << "pixkit info: " << shown(file) << ": " << problemOf(sheet) << '\n';
            exitCode = exitSomeFailed;
            continue;
        }
        std::error_code gone; // the file may be deleted under our hands
        // Only now, because there is no path of a name that is not UTF-8 on Windows, where such a file is not loaded
        // either.
        const std::uintmax_t bytes = std::filesystem::file_size(toPath(file), gone);
        const Facts facts{file,
                          sheet.Width(),
                          sheet.Height(),
                          sheet.Alpha(),
                          sheet.ImageType(),
                          gone ? 0 : bytes,
                          imagesOf(sheet, file, request.loading),
                          rectangles};
        if (request.json) {
            console.out << (first ? "\n  " : ",\n  ");
            printJson(console.out, facts);
        } else {
            std::optional<std::string> heading;
            if (request.region) heading = "rectangles";
            if (first) printRow(console.out, "size", "alpha", "type", "bytes", heading, "file");
            printLine(console.out, facts);
        }
        first = false;
    }
    if (request.json) console.out << (first ? "]\n" : "\n]\n");
    return exitCode;
}

} // namespace pixkit::cli
