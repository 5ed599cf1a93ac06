// Every reader, from arrays and files. The input is a file; how it is asked for follows from its checksum.
#include "coding/lzw/LzwDecoder.h"
#include "mutators/pictures.h"
#include "platform/faults.h"
#include "platform/pictures.h"
#include "targets.h"
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

bool isAmong(eImageFormat type, std::initializer_list<eImageFormat> types) {
    return std::ranges::count(types, type) != 0;
}

// Files that ask for so many pixels that they only cost time.
bool isLengthy(std::span<const std::uint8_t> file) {
    const ByteReader reader(file);
    const auto isMuch = [](std::uint64_t width, std::uint64_t height) { return width * height > 1 << 18; };
    for (std::size_t at = 0; at + 12 < file.size(); ++at) {
        const std::uint32_t word = *reader.bigEndian32(at), next = *reader.bigEndian32(at + 5);
        if (word == 0x49484452 && isMuch(*reader.bigEndian32(at + 4), *reader.bigEndian32(at + 8))) return true;
        if (file[0] == 0xFF && (word >> 16 & ~15U) == 0xFFC0 && isMuch(next >> 16, next & 0xFFFF)) return true;
    }
    return false;
}

// The form of pixels, and no more of them than so many bytes describe.
void requirePixels(const cPixSheet& sheet, const ByteArray& file) {
    const eImageFormat type = sheet.ImageType();
    const std::size_t most = type == imgGIF                                ? 4 * 4096 // indexes in a byte of codes
                             : file.data()[0] == 'B'                       ? 128      // runs of 255 in two bytes
                             : isAmong(type, {imgIcon, imgCursor, imgTGA}) ? 128
                                                                           : 1 << 20;
    require(pixelCount(sheet) <= file.size() * most);
    for (std::size_t at = 0; at < pixelCount(sheet) * 4; at += 4) {
        const std::uint8_t* const p = sheet.BitsPointer() + at;
        require(sheet.Alpha() == AlphaNone ? p[3] == 255 : p[0] <= p[3] && p[1] <= p[3] && p[2] <= p[3]);
        require(sheet.Alpha() != AlphaSimple || p[3] == 0 || p[3] == 255 || isAmong(type, {imgPNG, imgPNGicon}));
    }
}

// Somewhere in a larger array, from a file, and without zlib.
void requireSameElsewhere(const cPixSheet& sheet, const ByteArray& file, std::int32_t icon, std::int32_t depth,
                          Dice& odd) {
    cPixSheet other;
    const auto before = static_cast<std::int32_t>(odd.below(40)),
               lower = static_cast<std::int32_t>(odd.below(200)) - 100;
    Bytes larger = odd.noise(static_cast<std::size_t>(before));
    append(larger, file.bytes());
    append(larger, odd.noise(odd.below(40)));
    const bool loaded =
        load(other, ByteArray(larger, lower), icon, depth, lower + before, static_cast<std::int32_t>(file.size()));
    require(loaded == (sheet.Handle() != 0));
    if (sheet.ImageType() != imgTGA) requireSame(sheet, other); // where one lies counts
    static const int memory = memfd_create("fuzz_readers", 0);
    static const std::string name = "/proc/self/fd/" + std::to_string(memory);
    require(ftruncate(memory, 0) == 0 && pwrite(memory, file.data(), file.size(), 0) >= 0);
    if (other.LoadPicture_File(name, icon, icon, false, depth)) requireSame(sheet, other); // an array may lack a byte
    requireSound(other);
    std::vector<PngChunk> chunks = pngChunks({file.bytes().begin(), file.bytes().end()});
    if (file.data()[0] != 0x89 || chunks.empty()) return;
    const ByteArray unchecked(pngFile(chunks, [](std::uint32_t) { return 0U; }));
    cPixSheet withZlib;
    const bool isPng = load(withZlib, unchecked);
    const platform::ScopedFault noZlib(platform::SeamCall::loadLibrary);
    require(load(other, unchecked) == isPng);
    requireSame(withZlib, other);
}

// What the system's picture loader makes of it can be loaded and drawn.
void requireDrawable(std::span<const std::uint8_t> file) {
    const auto picture = platform::OleLoadPicture(file);
    if (!picture) return;
    cPixSheet sheet, canvas;
    require(sheet.LoadPicture_StdPicture(picture.get()) && sheet.Width() == picture->Width());
    require(canvas.InitializeDIB(31, 17) && picture->Render(canvas.LoadDIBinDC(true), -3, 2, 40, 9));
}

// The sizes that an icon file is said to have; the picture is one of them.
void requireIconSizes(const cPixSheet& sheet) {
    const eImageFormat type = sheet.ImageType();
    std::vector<IconSourceSize> sizes;
    require(static_cast<std::size_t>(sheet.SourceIconSizes(sizes)) == sizes.size());
    require(sizes.empty() != isAmong(type, {imgIcon, imgCursor, imgIconARGB, imgCursorARGB, imgPNGicon}));
    require(sizes.empty() || std::ranges::any_of(sizes, [&](const IconSourceSize& s) {
                return s.Width == sheet.Width() && s.Height == sheet.Height() && (s.isPNG == 1) == (type == imgPNGicon);
            }));
}

// What is saved in the picture's own format is read as the same picture, wherever nothing rounds.
void requireSameSaved(const cPixSheet& sheet) {
    cPixSheet again;
    ByteArray saved;
    if (isAmong(sheet.ImageType(), {imgBitmap, imgBmpARGB, imgBmpPARGB})) {
        require(sheet.SaveToStream_Bitmap(saved, true) && load(again, saved));
        requireSame(sheet, again);
    }
    for (unsigned options = 0; sheet.ImageType() == imgTGA && options < 8; ++options) {
        const bool asStored = (options & 4) != 0;
        require(sheet.SaveToStream_TGA(saved, (options & 1) != 0, (options & 2) != 0, asStored) && load(again, saved));
        if (asStored || sheet.Alpha() == AlphaNone) requireSame(sheet, again);
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t bytes, std::size_t most, unsigned seed) {
    return mutateInput(data, bytes, most, seed, mutatePicture);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes == 0 || isLengthy({data, bytes})) return -1;
    Dice odd(crc32(0, {data, bytes}));
    constexpr std::int32_t icons[] = {32, 0, 1, 16, 200, -1, 0x7FFFFFFF}, depths[] = {32, 0, 1, 8, 33, -5};
    const std::int32_t icon = odd.oneOf(icons), depth = odd.oneOf(depths);
    const std::span codes(data + 1, bytes - 1);
    require(lzwDescribes(codes, data[0] % 13, bytes * 2) == bool(LzwIndexes(codes, data[0] % 13, bytes * 2)));
    requireDrawable({data, bytes});
    const ByteArray file = arrayOf(data, bytes);
    cPixSheet sheet, again;
    const bool loaded = load(sheet, file, icon, depth);
    require(load(again, file, icon, depth) == loaded && again.ImageType() == sheet.ImageType());
    requireSame(sheet, again);
    requireSameElsewhere(sheet, file, icon, depth, odd);
    if (!loaded) return 0;
    requirePixels(sheet, file);
    requireIconSizes(sheet);
    requireSameSaved(sheet);
    require(again.LoadPicture_FromOrignalFormat(icon, icon, depth));
    requireSame(sheet, again);
    sheet.LoadPicture_FromOrignalFormat(odd.byte(), odd.byte(), odd.byte() % 34);
    requireSound(sheet);
    return 0;
}
