// What the command says of files: which formats it knows by sight, and why one could not be read or written.
#pragma once
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace pixkit::cli {

// A format recognised by its first bytes; one without a signature by what it ends with. `head` and `tail` are the first
// and last bytes of the file, as many as there are up to sniffedBytes. Null when it is none that is known here.
struct FileKind {
    const char* description; // with its article: "a JPEG file"
    bool (*hasReader)();     // whether it can be read, in this version and on this machine
    const char* otherwise = "which this version cannot read";
};
inline constexpr std::size_t sniffedBytes = 64;
const FileKind* sniff(std::span<const std::uint8_t> head, std::span<const std::uint8_t> tail);

enum class TargetFormat : std::uint8_t { bmp, tga, gif, ico, jpg, png };
// What a file is by its extension; nothing for what this version does not write.
std::optional<TargetFormat> formatOf(const std::filesystem::path& file);

// Why a file that the component would not load is none it could: "no such file", "is a JPEG file, which this version
// cannot read", ...
std::string loadFailureReason(const std::filesystem::path& file);

// Why this version cannot write the format that the file's extension asks for; nothing when it can.
std::optional<std::string> formatProblem(const std::filesystem::path& target);

// Why a target that the component would not write could not be: "its folder does not exist", ...
std::string saveFailureReason(const std::filesystem::path& target);

} // namespace pixkit::cli
