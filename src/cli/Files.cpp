#include "cli/Files.h"
#include "cli/Text.h"
#include "platform/pictures.h"
#include "shared/limits.h"
#include <algorithm>
#include <array>
#include <fstream>
#include <span>
#include <string_view>
#include <vector>

namespace pixkit::cli {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

namespace {

struct FileKind {
    std::string_view description; // with its article: "a JPEG file"
    bool isRead;                  // in this version and on this machine
    const char* otherwise = "which this version cannot read";
};

// What the library's table of formats does not know by its first bytes.
struct Signature {
    std::string_view description, bytes;
    std::size_t offset = 0;
    bool (*isRead)() = [] { return false; };
    const char* otherwise = "which this version cannot read";
};
constexpr const char* onlyOnWindows = "which is not supported here: only Windows draws it";
constexpr const char* jpegLacks = "which is not supported here: libturbojpeg.so.0 cannot be loaded";
constexpr std::array<Signature, 10> signatures = {{
    {"a TIFF file", "II*\0"sv},
    {"a TIFF file", "MM\0*"sv},
    {"a WebP file", "WEBP"sv, 8},
    {"an AVIF file", "ftypavif"sv, 4},
    {"a HEIC file", "ftyphei"sv, 4},
    {"a WMF file", "\xD7\xCD\xC6\x9A"sv, 0, platform::canLoadMetafiles, onlyOnWindows},
    {"an EMF file", " EMF"sv, 40, platform::canLoadMetafiles, onlyOnWindows},
    {"an SVG file", "<svg"sv},
    {"a PDF file", "%PDF-"sv},
    {"a text file with markup", "<?xml"sv},
}};

bool bears(std::span<const std::uint8_t> bytes, std::string_view signature, std::size_t offset) {
    return bytes.size() >= offset && bytes.size() - offset >= signature.size() &&
           std::ranges::equal(bytes.subspan(offset, signature.size()), signature,
                              [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); });
}

// By its first bytes, or by what it ends with; `head` and `tail` are as many as there are up to sniffedBytes.
std::optional<FileKind> sniff(std::span<const std::uint8_t> head, std::span<const std::uint8_t> tail) {
    for (const Format& format : formats()) {
        if (format.sniff == nullptr || !format.sniff(head)) continue;
        const bool isCursor = format.id == FileFormat::ico && head[2] == 2;
        return FileKind{isCursor ? "a cursor file" : format.description,
                        format.read != nullptr || platform::canLoadJpeg(), jpegLacks};
    }
    constexpr std::string_view tgaFooter = "TRUEVISION-XFILE.\0"sv;
    if (tail.size() >= tgaFooter.size() && bears(tail, tgaFooter, tail.size() - tgaFooter.size()))
        return FileKind{"a TGA file", true};
    for (const Signature& signature : signatures) {
        if (bears(head, signature.bytes, signature.offset))
            return FileKind{signature.description, signature.isRead(), signature.otherwise};
    }
    return {};
}

std::vector<std::uint8_t> readPart(std::ifstream& file, std::uintmax_t start) {
    std::vector<std::uint8_t> bytes(sniffedBytes);
    file.clear();
    file.seekg(static_cast<std::streamoff>(start));
    file.read(reinterpret_cast<char*>(bytes.data()), sniffedBytes);
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

std::string extensionOf(const fs::path& file) {
    return toLower(toUtf8(file.extension()));
}

} // namespace

std::optional<FileFormat> formatOf(const fs::path& file) {
    const std::string extension = extensionOf(file);
    for (const Format& format : formats()) {
        if (!extension.empty() && (extension == format.extension || extension == format.otherExtension))
            return format.id;
    }
    return {};
}

std::string loadFailureReason(const fs::path& file) {
    std::error_code error;
    if (!fs::exists(file, error)) return error ? "cannot be opened: " + error.message() : "no such file";
    if (fs::is_directory(file, error)) return "is a folder, not a picture";
    if (!fs::is_regular_file(file, error)) return "is not a regular file"; // opening a pipe would wait for its writer
    const std::uintmax_t size = fs::file_size(file, error);
    std::ifstream stream(file, std::ios::binary);
    if (error || !stream) return "cannot be opened for reading";
    if (size <= static_cast<std::uintmax_t>(largestRefusedFile)) {
        return "has only " + std::to_string(size) + " bytes; no picture is that small";
    }
    const auto head = readPart(stream, 0);
    const auto tail = readPart(stream, size > sniffedBytes ? size - sniffedBytes : 0);
    if (const auto kind = sniff(head, tail)) {
        const std::string is = "is " + std::string(kind->description);
        return kind->isRead ? is + " that is damaged, too large, or of a rare kind" : is + ", " + kind->otherwise;
    }
    // Older files of this format carry no mark at all.
    if (formatOf(file) == FileFormat::tga) return "is a TGA file by its name, but damaged, or too large";
    return "is not a picture in any format known here";
}

std::optional<std::string> formatProblem(const fs::path& target) {
    const std::string written = "; this version writes .bmp, .tga, .png, .gif, .jpg, .ico and .cur";
    const std::string extension = extensionOf(target);
    if (formatOf(target)) return {};
    if (extension.empty()) return "has no extension, which would say the format" + written;
    return "the extension '" + extension + "' is not known" + written;
}

std::string saveFailureReason(const fs::path& target) {
    std::error_code error;
    if (fs::is_directory(target, error)) return "is a folder";
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, error)) return "its folder does not exist";
    return "cannot be written";
}

} // namespace pixkit::cli
