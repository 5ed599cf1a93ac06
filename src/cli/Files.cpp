#include "cli/Files.h"
#include "cli/Text.h"
#include "platform/pictures.h"
#include "shared/limits.h"
#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <vector>

namespace pixkit::cli {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

namespace {

constexpr bool always() {
    return true;
}
constexpr bool never() {
    return false;
}
constexpr FileKind jpegFile = {"a JPEG file", platform::canLoadJpeg,
                               "which is not supported here: libturbojpeg.so.0 cannot be loaded"};
constexpr const char* onlyOnWindows = "which is not supported here: only Windows draws it";

struct Signature {
    FileKind kind;
    std::string_view bytes;
    std::size_t offset = 0;
    bool inTail = false; // `offset` counts from the file's end
};
constexpr std::array<Signature, 18> signatures = {{
    {{"a PNG file", always}, "\x89PNG\r\n\x1A\n"sv},
    {jpegFile, "\xFF\xD8\xFF"sv},
    {{"a GIF file", always}, "GIF87a"sv},
    {{"a GIF file", always}, "GIF89a"sv},
    {{"a BMP file", always}, "BM"sv},
    {{"an icon file", always}, "\0\0\1\0"sv},
    {{"a cursor file", always}, "\0\0\2\0"sv},
    {{"a TGA file", always}, "TRUEVISION-XFILE.\0"sv, 18, true},
    {{"a TIFF file", never}, "II*\0"sv},
    {{"a TIFF file", never}, "MM\0*"sv},
    {{"a WebP file", never}, "WEBP"sv, 8},
    {{"an AVIF file", never}, "ftypavif"sv, 4},
    {{"a HEIC file", never}, "ftyphei"sv, 4},
    {{"a WMF file", platform::canLoadMetafiles, onlyOnWindows}, "\xD7\xCD\xC6\x9A"sv},
    {{"an EMF file", platform::canLoadMetafiles, onlyOnWindows}, " EMF"sv, 40},
    {{"an SVG file", never}, "<svg"sv},
    {{"a PDF file", never}, "%PDF-"sv},
    {{"a text file with markup", never}, "<?xml"sv},
}};

bool matches(const Signature& signature, std::span<const std::uint8_t> head, std::span<const std::uint8_t> tail) {
    const std::span<const std::uint8_t> bytes = signature.inTail ? tail : head;
    if (bytes.size() < signature.offset) return false;
    const std::size_t start = signature.inTail ? bytes.size() - signature.offset : signature.offset;
    return bytes.size() - start >= signature.bytes.size() &&
           std::ranges::equal(bytes.subspan(start, signature.bytes.size()), signature.bytes,
                              [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); });
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

const FileKind* sniff(std::span<const std::uint8_t> head, std::span<const std::uint8_t> tail) {
    const auto found =
        std::ranges::find_if(signatures, [&](const Signature& signature) { return matches(signature, head, tail); });
    return found == signatures.end() ? nullptr : &found->kind;
}

std::optional<TargetFormat> formatOf(const fs::path& file) {
    const std::string extension = extensionOf(file);
    if (extension == ".bmp") return TargetFormat::bmp;
    if (extension == ".tga") return TargetFormat::tga;
    if (extension == ".ico" || extension == ".cur") return TargetFormat::ico;
    if (extension == ".gif") return TargetFormat::gif;
    if (extension == ".png") return TargetFormat::png;
    if (extension == ".jpg" || extension == ".jpeg") return TargetFormat::jpg;
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
    if (const FileKind* kind = sniff(head, tail)) {
        const std::string is = std::string("is ") + kind->description;
        return kind->hasReader() ? is + " that is damaged, too large, or of a rare kind" : is + ", " + kind->otherwise;
    }
    // Older files of this format carry no mark at all.
    if (formatOf(file) == TargetFormat::tga) return "is a TGA file by its name, but damaged, or too large";
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
