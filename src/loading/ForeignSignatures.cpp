#include "loading/ForeignSignatures.h"
#include "platform/pictures.h"
#include <algorithm>
#include <cstddef>
#include <string_view>

namespace pixkit {

using namespace std::string_view_literals;

namespace {

struct Signature {
    std::size_t offset;
    std::string_view bytes;
    Reason reason;
    bool isMetafile = false;
};

constexpr Signature signatures[] = {
    {0, "II*\0"sv, "a TIFF file, which no reader here takes"},
    {0, "MM\0*"sv, "a TIFF file, which no reader here takes"},
    {8, "WEBP"sv, "a WebP file, which no reader here takes"},
    {4, "ftypavif"sv, "an AVIF file, which no reader here takes"},
    {4, "ftyphei"sv, "a HEIC file, which no reader here takes"},
    {0, "\xD7\xCD\xC6\x9A"sv, "a WMF file, which only Windows draws", true},
    {40, " EMF"sv, "an EMF file, which only Windows draws", true},
    {0, "<svg"sv, "an SVG file, which no reader here takes"},
    {0, "%PDF-"sv, "a PDF file, which no reader here takes"},
    {0, "<?xml"sv, "a text file with markup, which no reader here takes"},
};

bool bears(std::span<const std::uint8_t> start, const Signature& signature) noexcept {
    return start.size() >= signature.offset + signature.bytes.size() &&
           std::ranges::equal(start.subspan(signature.offset, signature.bytes.size()), signature.bytes,
                              [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); });
}

} // namespace

Reason reasonOfUnknown(std::span<const std::uint8_t> start) noexcept {
    const auto found = std::ranges::find_if(signatures, [&](const auto& signature) { return bears(start, signature); });
    if (found == std::end(signatures)) return "no format known here begins like this";
    if (found->isMetafile && platform::canLoadMetafiles()) return "a metafile, which the system's loader refuses";
    return found->reason;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
