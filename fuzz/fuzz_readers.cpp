// Every reader, from arrays and files. The input is a file; how it is asked for follows from its checksum.
#include "codecs/PictureFacts.h"
#include "codecs/bmp/BmpInfo.h"
#include "coding/lzw/LzwDecoder.h"
#include "mutators/pictures.h"
#include "targets.h"
#include <sys/mman.h>
#include <unistd.h>

namespace {

// How a load asks for an image of an icon, and how many pixels it allows.
struct Wish {
    std::int32_t size, depth;
    double most;
};

std::optional<PictureFacts> factsOf(std::span<const std::uint8_t> file) {
    struct Headers : HeaderSource {
        explicit Headers(std::span<const std::uint8_t> all) : bytes(all) {}
        std::uint64_t size() const override { return bytes.size(); }
        Bytes read(std::uint64_t position, std::size_t count) override {
            const auto rest = bytes.subspan(static_cast<std::size_t>(std::min<std::uint64_t>(position, bytes.size())));
            const auto part = rest.first(std::min(count, rest.size()));
            return {part.begin(), part.end()};
        }
        std::span<const std::uint8_t> bytes;
    } headers(file);
    return readPictureFacts(headers);
}

// Files of some sizes are read without a limit, but where the picture is large and an image can hold it: rows of one
// pixel take the most time.
double limitOf(std::span<const std::uint8_t> file, const std::optional<PictureFacts>& facts) {
    constexpr double large = 1 << 20, largest = 1 << 30;
    const double pixels = facts ? double(facts->width) * facts->height : large;
    return file.size() % 16 != 0 || (pixels >= large && pixels < largest) ? mostPixels : 0;
}

bool isAmong(const cPixSheet& sheet, std::initializer_list<eImageFormat> types) {
    return std::ranges::count(types, sheet.ImageType()) != 0;
}

// The form of pixels, and no more of them than so many bytes can describe.
void requirePixels(const cPixSheet& sheet, std::span<const std::uint8_t> file) {
    const std::size_t bytes = file.size();
    const bool isPng = isAmong(sheet, {imgPNG, imgPNGicon}) || !embeddedPicture(file).empty();
    const std::size_t most = isAmong(sheet, {imgGIF}) ? 4 * 4096 : 128; // strings of indexes; runs in two bytes
    require(isPng || isAmong(sheet, {imgBitmap}) || pixelCount(sheet) <= bytes * most); // JPEG is a bitmap, too
    for (std::size_t at = 0; at < pixelCount(sheet) * 4; at += 4) {
        const std::uint8_t* const p = sheet.BitsPointer() + at;
        require(sheet.Alpha() == AlphaNone ? p[3] == 255 : p[0] <= p[3] && p[1] <= p[3] && p[2] <= p[3]);
        require(sheet.Alpha() != AlphaSimple || p[3] == 0 || p[3] == 255 || isPng);
    }
}

// Somewhere in a larger array, and from a file.
void requireSameElsewhere(const cPixSheet& sheet, const ByteArray& file, Wish wish, Dice& odd) {
    static const int memory = memfd_create("fuzz_readers", 0);
    static const std::string name = "/proc/self/fd/" + std::to_string(memory);
    const std::int32_t before = odd.byte(), lower = odd.byte() - 100;
    Bytes larger = odd.noise(static_cast<std::size_t>(before));
    append(larger, file.bytes());
    append(larger, odd.noise(odd.below(40)));
    cPixSheet other;
    other.MaxPixels(wish.most);
    const auto length = static_cast<std::int32_t>(file.size());
    require(load(other, ByteArray(larger, lower), wish.size, wish.depth, lower + before, length) ==
            (sheet.Handle() != 0));
    if (sheet.ImageType() != imgTGA) requireSame(sheet, other); // where one lies counts
    require(ftruncate(memory, 0) == 0 && pwrite(memory, file.data(), file.size(), 0) >= 0);
    if (other.LoadPicture_File(name, wish.size, wish.size, false, wish.depth))
        requireSame(sheet, other); // not the reverse
    requireSound(other);
}

// What headers tell of a file, of which only pixels can be damaged, is what a load finds.
void requireSameFacts(const cPixSheet& sheet, const std::optional<PictureFacts>& facts) {
    if (!facts || sheet.Handle() == 0 || sheet.ImageType() != facts->type) return;
    require(facts->width == sheet.Width() && facts->height == sheet.Height());
    require(!facts->isCertain || facts->alpha == sheet.Alpha());
    require(facts->notes.orientation == sheet.Orientation());
}

// The sizes that an icon file is said to have; the picture is one of them, unless it is a PNG, which may have a second
// header.
void requireIconSizes(const cPixSheet& sheet) {
    std::vector<IconSourceSize> sizes;
    require(static_cast<std::size_t>(sheet.SourceIconSizes(sizes)) == sizes.size());
    require(sizes.empty() != isAmong(sheet, {imgIcon, imgCursor, imgIconARGB, imgCursorARGB, imgPNGicon}));
    require(sizes.empty() || std::ranges::any_of(sizes, [&](const IconSourceSize& s) {
                return s.isPNG == 1 ? isAmong(sheet, {imgPNGicon})
                                    : s.Width == sheet.Width() && s.Height == sheet.Height();
            }));
}

// What is saved in the picture's own format is read as the same picture, wherever nothing rounds. What a PNG file in a
// BMP file says of its alpha, a BMP file cannot.
void requireSameSaved(const cPixSheet& sheet, std::span<const std::uint8_t> file, Dice& odd) {
    const bool isTga = sheet.ImageType() == imgTGA, asStored = odd.oneIn(2);
    cPixSheet again;
    ByteArray saved;
    if (!isTga && !isAmong(sheet, {imgBitmap, imgBmpARGB, imgBmpPARGB})) return;
    if (!embeddedPicture(file).empty()) return;
    require(isTga ? sheet.SaveToStream_TGA(saved, odd.oneIn(2), odd.oneIn(2), asStored)
                  : sheet.SaveToStream_Bitmap(saved, true));
    require(load(again, saved));
    if (!isTga || asStored || sheet.Alpha() == AlphaNone) requireSame(sheet, again);
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t bytes, std::size_t most, unsigned seed) {
    return mutateInput(data, bytes, most, seed, mutatePicture);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes == 0) return -1;
    constexpr std::int32_t sizes[] = {32, 0, 1, 16, 200, -1, 0x7FFFFFFF}, depths[] = {32, 0, 1, 8, 33, -5};
    Dice odd(crc32(0, {data, bytes}));
    const std::span codes(data + 1, bytes - 1);
    require(lzwDescribes(codes, data[0] % 13, bytes * 2) == bool(LzwIndexes(codes, data[0] % 13, bytes * 2)));
    const ByteArray file(Bytes(data, data + bytes));
    const auto facts = factsOf(file.bytes());
    const Wish wish{odd.oneOf(sizes), odd.oneOf(depths), limitOf(file.bytes(), facts)};
    cPixSheet sheet, again;
    sheet.MaxPixels(wish.most);
    again.MaxPixels(wish.most);
    const bool loaded = load(sheet, file, wish.size, wish.depth);
    require(load(again, file, wish.size, wish.depth) == loaded && again.ImageType() == sheet.ImageType());
    requireSame(sheet, again);
    requireSameElsewhere(sheet, file, wish, odd);
    requireSameFacts(sheet, facts);
    if (!loaded) return 0;
    requirePixels(sheet, file.bytes());
    requireIconSizes(sheet);
    requireSameSaved(sheet, file.bytes(), odd);
    again.LoadPicture_FromOrignalFormat(odd.byte(), odd.byte(), odd.byte() % 34);
    requireSound(again);
    require(again.LoadPicture_FromOrignalFormat(wish.size, wish.size, wish.depth) || again.Handle() == 0);
    return 0;
}
// SPDX-License-Identifier: MIT
