// What pixels become of every depth and mask, which entry is taken, and what a directory may lie about.
#include "codecs/ico/IcoBuilder.h"
#include "codecs/tga/TgaBuilder.h"
#include "loading/LoadRequest.h"
#include "surface/HostAccess.h"
#include <functional>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class IcoReader : public QuietLoads {};

const Pixel clear{0, 0, 0, 0}, black{0, 0, 0, 255}, white{255, 255, 255, 255}, blue{255, 0, 0, 255};

// 2 x 1 pixels. In a mask of 1 bit, the first pixel is bit 7 of the first of four bytes.
const Bytes maskNone = {0, 0, 0, 0}, maskFirst = {0x80, 0, 0, 0}, maskBoth = {0xC0, 0, 0, 0};

Bytes twoPixels(std::uint16_t bitCount, const Bytes& palette, const Bytes& colours, const Bytes& mask) {
    return icoBitmap({.width = 2, .height = 1, .bitCount = bitCount, .palette = palette, .pixels = colours}, mask);
}

LoadedBmp expected(Pixel left, Pixel right, AlphaTypeEnum alpha, eImageFormat type) {
    return {2, 1, {left, right}, alpha, type};
}

// Opaque, of one colour, and no more than its headers ask for.
Bytes solid(std::int32_t width, std::int32_t height, std::uint16_t bitCount = 24, std::uint8_t value = 7) {
    const std::size_t rowBytes = (static_cast<std::size_t>(width) * bitCount + 31) / 32 * 4;
    const Bytes palette(bitCount <= 8 ? std::size_t{4} << bitCount : 0);
    return icoBitmap({.width = width,
                      .height = height,
                      .bitCount = bitCount,
                      .palette = palette,
                      .pixels = Bytes(rowBytes * static_cast<std::size_t>(height), value)},
                     {});
}

Bytes pngOf(std::uint32_t width, std::uint32_t height, std::uint8_t bitDepth = 8, std::uint8_t colourType = 6) {
    PngBuilder palette;
    Bytes before;
    if (colourType == 3) palette = PngBuilder().chunk("PLTE", Bytes(6));
    return png(
        {.width = width, .height = height, .bitDepth = bitDepth, .colorType = colourType},
        [](auto, auto, std::size_t channel) { return channel == 3 ? 255U : 1U; }, palette);
}

} // namespace

TEST_F(IcoReader, PixelsAreWrong) {
    const Bytes black2 = {0, 0, 0, 0, 255, 255, 255, 0}; // black and white
    const Bytes blue16 = [] {
        Bytes palette(64);
        palette[4] = 255;
        return palette;
    }();
    const Bytes blue256 = blue16 + Bytes(1024 - 64);
    struct Row {
        const char* fault;
        Bytes payload;
        LoadedBmp icon;
    };
    const std::vector<Row> rows = {
        {"1 bit", twoPixels(1, black2, {0x40, 0, 0, 0}, maskNone), expected(black, white, AlphaNone, imgIcon)},
        {"1 bit, masked", twoPixels(1, black2, {0x40, 0, 0, 0}, maskFirst),
         expected(clear, white, AlphaSimple, imgIcon)},
        {"4 bits", twoPixels(4, blue16, {0x01, 0, 0, 0}, maskFirst), expected(clear, blue, AlphaSimple, imgIcon)},
        {"8 bits", twoPixels(8, blue256, {1, 0, 0, 0}, maskNone), expected(blue, black, AlphaNone, imgIcon)},
        {"16 bits", twoPixels(16, {}, {0x1F, 0, 0xFF, 0x7F}, maskFirst), expected(clear, white, AlphaSimple, imgIcon)},
        {"24 bits", twoPixels(24, {}, {255, 0, 0, 1, 2, 3, 0, 0}, maskNone),
         expected(blue, {1, 2, 3, 255}, AlphaNone, imgIcon)},
        {"inverting pixels among others", twoPixels(24, {}, {9, 9, 9, 1, 2, 3, 0, 0}, maskFirst),
         expected(clear, {1, 2, 3, 255}, AlphaSimple, imgIcon)},
        {"inverting pixels alone: the text cursor", twoPixels(1, black2, {0x40, 0, 0, 0}, maskBoth),
         expected(clear, black, AlphaSimple, imgIcon)},
        {"nothing but inverting pixels", twoPixels(24, {}, {255, 255, 255, 0, 0, 254, 0, 0}, maskBoth),
         expected(black, {255, 255, 1, 255}, AlphaNone, imgIcon)},
        {"32 bits without alpha: the mask decides", twoPixels(32, {}, {255, 0, 0, 0, 9, 9, 9, 0}, maskFirst),
         expected(clear, {9, 9, 9, 255}, AlphaSimple, imgIcon)},
        {"32 bits without alpha or mask", twoPixels(32, {}, {255, 0, 0, 0, 9, 9, 9, 0}, {}),
         expected(blue, {9, 9, 9, 255}, AlphaNone, imgIcon)},
        {"straight alpha: the mask does not count", twoPixels(32, {}, {200, 100, 50, 128, 9, 9, 9, 0}, maskFirst),
         expected({100, 50, 25, 128}, clear, AlphaComplex, imgIconARGB)},
        {"premultiplied alpha", twoPixels(32, {}, {100, 50, 25, 128, 0, 0, 0, 255}, maskNone),
         expected({100, 50, 25, 128}, black, AlphaComplex, imgIconARGB)},
        {"alpha on or off", twoPixels(32, {}, {9, 9, 9, 0, 255, 0, 0, 255}, maskNone),
         expected(clear, blue, AlphaSimple, imgIconARGB)},
        {"all opaque, the mask does not count", twoPixels(32, {}, {255, 0, 0, 255, 0, 0, 0, 255}, maskBoth),
         expected(blue, black, AlphaNone, imgIconARGB)},
    };
    for (const Row& row : rows) {
        const IcoImage image{row.payload, 2, 1};
        EXPECT_EQ(loadIco(icoFile({image})), row.icon) << row.fault;
        LoadedBmp cursor = row.icon;
        cursor.type = cursor.type == imgIcon ? imgCursor : imgCursorARGB;
        EXPECT_EQ(loadIco(icoFile({image}, 2)), cursor) << row.fault << ", as a cursor";
    }
}

TEST_F(IcoReader, RowsOrMasksAreMisplaced) {
    const Pixel one{1, 1, 1, 255}, two{2, 2, 2, 255};
    const Bytes colours = {1, 1, 1, 0, 2, 2, 2, 0}; // 1 x 2: the bottom row comes first
    const auto icon = [&](const std::function<void(BmpFile&)>& change, const Bytes& mask, IcoImage image = {}) {
        BmpFile file{.width = 1, .height = 2, .bitCount = 24, .pixels = colours};
        change(file);
        image.payload = icoBitmap(file, mask);
        return loadIco(icoFile({image}));
    };
    const auto is = [](const std::vector<Pixel>& pixels, AlphaTypeEnum alpha) {
        return LoadedBmp{1, static_cast<std::int32_t>(pixels.size()), pixels, alpha, imgIcon};
    };
    const auto asItIs = [](BmpFile&) {};
    const Bytes bottomMasked = {0x80, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(icon(asItIs, bottomMasked), is({two, clear}, AlphaSimple));
    EXPECT_EQ(icon([](BmpFile& f) { f.height = -2; }, bottomMasked), is({clear, two}, AlphaSimple)) << "top-down";
    EXPECT_EQ(icon(asItIs, {}), is({two, one}, AlphaNone)) << "no mask";
    EXPECT_EQ(icon(asItIs, {0x80, 0, 0, 0, 0x80, 0, 0}), is({two, clear}, AlphaSimple)) << "a short mask";
    EXPECT_EQ(icon([](BmpFile& f) { f.headerSize = 12; }, bottomMasked), is({two, clear}, AlphaSimple)) << "core";
    EXPECT_EQ(icon([](BmpFile& f) { f.headerSize = 124; }, bottomMasked), is({two, clear}, AlphaSimple)) << "V5";
    EXPECT_EQ(icon([](BmpFile& f) { f.clrUsed = 2, f.palette = Bytes(8, 0xEE); }, bottomMasked),
              is({two, clear}, AlphaSimple))
        << "a palette beside true colour";
    EXPECT_EQ(icon(
                  [](BmpFile& f) {
                      f.bitCount = 32, f.compression = 3, f.masks = {0xFF0000, 0xFF00, 0xFF};
                  },
                  bottomMasked),
              is({{2, 2, 2, 255}, clear}, AlphaSimple))
        << "bit fields without alpha";
    EXPECT_EQ(icon([](BmpFile& f) { f.bitCount = 8, f.compression = 1, f.palette = Bytes(1024); }, bottomMasked),
              LoadedBmp{})
        << "run-length codes do not say where the mask begins";
    EXPECT_EQ(icon([](BmpFile& f) { f.pixels.pop_back(); }, {}), LoadedBmp{}) << "colours that are not there";
    // A height that does not count the mask's rows.
    BmpFile single{.width = 1, .height = 2, .bitCount = 24, .pixels = colours};
    Bytes payload = single.build();
    payload.erase(payload.begin(), payload.begin() + 14);
    EXPECT_EQ(loadIco(icoFile({{payload + maskNone, 1, 2}})), is({two, one}, AlphaNone)) << "agreed by the directory";
    EXPECT_EQ(loadIco(icoFile({{payload + maskNone, 1, 1}})), is({one}, AlphaNone)) << "the format's word";
    payload[8] = 1;
    EXPECT_EQ(loadIco(icoFile({{payload, 1, 9}})), is({one}, AlphaNone)) << "odd";
}

TEST_F(IcoReader, ADirectoryIsBelievedOrATrueOneRefused) {
    const Bytes pixel = twoPixels(24, {}, {255, 0, 0, 1, 2, 3, 0, 0}, maskFirst);
    const IcoImage good{pixel, 2, 1};
    const std::size_t at = 22;
    const LoadedBmp masked = expected(clear, {1, 2, 3, 255}, AlphaSimple, imgIcon);
    const auto with = [&](const std::function<void(IcoImage&)>& change) {
        IcoImage image = good;
        change(image);
        return icoFile({image});
    };
    const auto withByte = [&](std::size_t index, std::uint8_t value) {
        Bytes file = icoFile({good});
        file[index] = value;
        return file;
    };
    struct Row {
        const char* fault;
        Bytes data;
        LoadedBmp loaded;
    };
    const auto size = static_cast<std::uint32_t>(pixel.size());
    const LoadedBmp nothing;
    const std::vector<Row> rows = {
        {"plain", icoFile({good}), masked},
        {"another size", with([](IcoImage& i) { i.width = 99, i.height = 0; }), masked},
        {"another depth", with([](IcoImage& i) { i.bitCount = 1, i.planes = 77; }), masked},
        {"reserved bytes of entries may hold anything", withByte(9, 255), masked},
        {"planes of the bitmap", withByte(at + 12, 0), masked},
        {"no size: the payload's own", with([](IcoImage& i) { i.size = 0; }), masked},
        {"a size without the mask: there is none", with([&](IcoImage& i) { i.size = size - 4; }),
         expected(blue, {1, 2, 3, 255}, AlphaNone, imgIcon)},
        {"a size that does not hold the colours", with([&](IcoImage& i) { i.size = size - 5; }), masked},
        {"a size beyond the end", with([&](IcoImage& i) { i.size = size + 1; }), nothing},
        {"a size that wraps", with([](IcoImage& i) { i.size = 0xFFFFFFFF; }), nothing},
        {"an offset beyond the end", with([](IcoImage& i) { i.offset = 9999; }), nothing},
        {"an offset and size that wrap", with([&](IcoImage& i) { i.offset = 0xFFFFFFF0, i.size = 0x26; }), nothing},
        {"an offset into the directory", with([](IcoImage& i) { i.offset = 6, i.size = 20; }), nothing},
        {"reserved", withByte(0, 1), nothing},
        {"reserved, high", withByte(1, 1), nothing},
        {"type 0", icoFile({good}, 0), nothing},
        {"type 3", icoFile({good}, 3), nothing},
        {"type 257", icoFile({good}, 257), nothing},
        {"no entries", withByte(4, 0), nothing},
        {"more entries than there is room for", withByte(4, 9), nothing},
        {"entries that overlap the payload and make no sense", withByte(4, 2), masked},
        {"a depth that does not exist", withByte(at + 14, 23), nothing},
        {"no width", withByte(at + 4, 0), nothing},
        {"no height", withByte(at + 8, 0), nothing},
        {"a header of 8 bytes", withByte(at, 8), nothing},
        {"a good image behind a bad one", icoFile({{Bytes(40), 32, 32}, good}), masked},
        {"two entries of one image", icoFile({good, {{}, 1, 1, 1, 1, size, 38}}), masked},
    };
    for (const Row& row : rows)
        EXPECT_EQ(loadIco(row.data), row.loaded) << row.fault;
    EXPECT_EQ(loadIco(icoFile({{solid(256, 256), 0, 0}})).height, 256) << "256 does not fit a byte";
    // The size of the first image is a lie, and the second's colours are no mask for it.
    const Bytes maskless = twoPixels(24, {}, {255, 0, 0, 1, 2, 3, 0, 0}, {});
    const LoadedBmp first = loadIco(icoFile({{maskless, 2, 1, 1, 24, 0}, {solid(1, 9), 1, 9}}), {2, 1, 24});
    EXPECT_EQ(first, expected(blue, {1, 2, 3, 255}, AlphaNone, imgIcon));
}

TEST_F(IcoReader, ATrueColourTgaIsTakenForACursor) {
    for (const int entries : {0, 1, 3}) {
        Tga tga{.width = 9, .height = 9, .pixels = Bytes(9 * 9 * 3, 40)};
        tga.mapLength = static_cast<std::uint16_t>(entries);
        const LoadedBmp loaded = loadIco(tga.data());
        EXPECT_EQ(loaded.type, imgTGA) << entries;
    }
}

TEST_F(IcoReader, TheWrongEntryIsTaken) {
    const auto ofSizes = [](const std::vector<std::array<std::int32_t, 3>>& images) {
        std::vector<IcoImage> all;
        all.reserve(images.size());
        for (const auto& [width, height, bitCount] : images)
            all.push_back({solid(width, height, static_cast<std::uint16_t>(bitCount),
                                 static_cast<std::uint8_t>(images.size() - all.size()))});
        return icoFile(all);
    };
    const Bytes icon = ofSizes({{16, 16, 4}, {48, 48, 24}, {32, 32, 8}, {16, 16, 24}, {32, 32, 24}, {16, 16, 8}});
    struct Row {
        IcoWish wish;
        std::int32_t size;
        std::int32_t blue; // of the entry's pixels: what tells one depth from another; 0 from a palette
    };
    const Row rows[] = {
        {{16, 16, 24}, 16, 3}, {{16, 16, 32}, 16, 3}, {{16, 16, 8}, 16, 0}, {{16, 16, 0}, 16, 3},
        {{17, 17, 24}, 32, 2}, {{1, 1, 24}, 16, 3},   {{33, 10, 4}, 48, 5}, {{49, 49, 4}, 48, 5},
        {{32, 0, 24}, 32, 2},  {{0, 16, 1}, 16, 0},   {{0, 0, 1}, 48, 5},   {{-5, -5, 32}, 48, 5},
        {{16, 16, 33}, 16, 3}, {{16, 16, -1}, 16, 3}, {{16, 32, 8}, 32, 0}, {{2147483647, 1, 0}, 48, 5},
    };
    for (const Row& row : rows) {
        const LoadedBmp loaded = loadIco(icon, row.wish);
        EXPECT_EQ(loaded.width, row.size) << row.wish.cX << " x " << row.wish.cY << ", " << row.wish.bitDepth;
        EXPECT_EQ(loaded.pixels[0][0], row.blue) << row.wish.cX << " x " << row.wish.cY << ", " << row.wish.bitDepth;
    }
    // 16 is as far from 8 as from 24; of two equals the first counts, and the smaller of two that are larger.
    EXPECT_EQ(loadIco(ofSizes({{8, 8, 8}, {8, 8, 24}}), {8, 8, 16}).pixels[0][0], 1);
    EXPECT_EQ(loadIco(ofSizes({{8, 8, 24}, {8, 8, 24}}), {8, 8, 24}).pixels[0][0], 2);
    EXPECT_EQ(loadIco(ofSizes({{40, 40, 24}, {34, 35, 24}}), {33, 33, 24}).width, 34);
    EXPECT_EQ(loadIco(ofSizes({{8, 40, 24}, {20, 20, 24}}), {30, 30, 24}).width, 20) << "the largest by its area";

    const IconRequest odd(-1, -2147483647 - 1, 33);
    EXPECT_EQ(odd.cX + odd.cY, 0);
    EXPECT_EQ(odd.bitDepth, 32);
    EXPECT_EQ(IconRequest(0, 7, -1).bitDepth, 32);
    EXPECT_EQ(IconRequest(0, 7, 0).bitDepth, 0);
}

TEST_F(IcoReader, PngEntriesAreLostOrMisjudged) {
    const Bytes small = pngOf(1, 1);
    ASSERT_LT(small.size(), 80U) << "about as small as a PNG file can be";
    for (const std::uint16_t type : {std::uint16_t{1}, std::uint16_t{2}})
        EXPECT_EQ(loadIco(icoFile({{small}}, type)), (LoadedBmp{1, 1, {{1, 1, 1, 255}}, AlphaComplex, imgPNGicon}));
    // The size and depth of the request meet what IHDR says, not the directory.
    const Bytes mixed = icoFile({{solid(16, 16), 16, 16}, {pngOf(300, 200), 16, 16, 1, 1}, {pngOf(16, 16, 1, 3)}});
    EXPECT_EQ(loadIco(mixed, {0, 0, 0}).type, imgPNGicon);
    EXPECT_EQ(loadIco(mixed, {0, 0, 0}).width, 300);
    EXPECT_EQ(loadIco(mixed, {16, 16, 24}).type, imgIcon);
    EXPECT_EQ(loadIco(mixed, {16, 16, 1}).type, imgPNGicon);
    // A damaged one: the next best is taken, unless too many are damaged.
    Bytes damaged = pngOf(32, 32);
    damaged[40] ^= 0xFF;
    const IcoImage good{solid(16, 16), 16, 16};
    EXPECT_EQ(loadIco(icoFile({{damaged}, good})).width, 16);
    EXPECT_EQ(loadIco(icoFile({{damaged}, {damaged}, {damaged}, good})).width, 16);
    EXPECT_EQ(loadIco(icoFile({{damaged}, {damaged}, {damaged}, {damaged}, good})), LoadedBmp{});
    EXPECT_EQ(loadIco(icoFile({{small, 1, 1, 1, 32, 60}})).width, 1) << "a size that cuts it short";
    Bytes otherChunk = pngOf(32, 32);
    otherChunk[12] = 'i';
    EXPECT_EQ(loadIco(icoFile({{otherChunk}})), LoadedBmp{});
}

TEST_F(IcoReader, SizesAreMiscountedOrCannotBeReloaded) {
    const Bytes icon = icoFile({{solid(16, 16, 4)}, {Bytes(60)}, {pngOf(300, 200, 16)}, {solid(8, 9, 32), 1, 1, 1, 4}});
    cPixSheet sheet;
    std::vector<IconSourceSize> sizes = {{9, 9, 9, 9}};
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(icon)));
    EXPECT_EQ(sheet.SourceIconSizes(sizes), 0) << "the file was not kept";
    EXPECT_EQ(sizes.size(), 1U);
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(icon), 16, 16, 0, 0, true));
    EXPECT_EQ(sheet.SourceIconSizes(sizes), 3);
    EXPECT_EQ(sizes, (std::vector<IconSourceSize>{{16, 16, 4, 0}, {300, 200, 32, 1}, {8, 9, 32, 0}}));
    for (const IconSourceSize& size : std::vector(sizes)) {
        ASSERT_TRUE(sheet.LoadPicture_FromOrignalFormat(size.Width, size.Height, size.bitDepth));
        EXPECT_EQ(sheet.Height(), size.Height);
        EXPECT_EQ(sheet.SourceIconSizes(sizes), 3);
    }
    // A picture of another kind, with a kept file.
    BmpFile bmp{.pixels = Bytes(4)};
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(bmp.build()), 0, 0, 0, 0, true));
    EXPECT_EQ(sheet.SourceIconSizes(sizes), 0);
}

TEST_F(IcoReader, TheHotspotIsLost) {
    const Bytes cursor = icoFile({{solid(16, 16), 16, 16, 3, 5}, {solid(32, 32), 32, 32, 65535, 7}}, 2);
    cPixSheet sheet, other;
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(cursor), 32, 32));
    EXPECT_EQ(HostAccess::hotspot(sheet), (CursorHotspot{65535, 7}));
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(cursor), 16, 16));
    const CursorHotspot hotspot{3, 5}, none;
    EXPECT_EQ(HostAccess::hotspot(sheet), hotspot);
    sheet.CopyImageTo(other);
    EXPECT_EQ(HostAccess::hotspot(other), hotspot);
    sheet.CopyImageTo(other, 32, 8);
    EXPECT_EQ(HostAccess::hotspot(other), (CursorHotspot{6, 2}));
    other.DestroyDIB();
    EXPECT_EQ(HostAccess::hotspot(other), none);
    sheet.SwapDIBs(&other);
    EXPECT_EQ(HostAccess::hotspot(sheet), none);
    EXPECT_EQ(HostAccess::hotspot(other), hotspot);
    ASSERT_TRUE(other.LoadPicture_Stream(ByteArray(icoFile({{solid(1, 1)}}))));
    EXPECT_EQ(HostAccess::hotspot(other), none) << "planes and depth of an icon are no hotspot";
}

TEST_F(IcoReader, MissingMemoryOrAnyPrefixEndsBadly) {
    const Bytes icon = icoFile({{twoPixels(32, {}, {1, 2, 3, 4, 5, 6, 7, 8}, maskBoth), 2, 1}, {pngOf(1, 1)}});
    for (std::size_t length = 20; length < icon.size(); ++length) {
        const LoadedBmp loaded =
            loadIco(Bytes(icon.begin(), icon.begin() + static_cast<std::ptrdiff_t>(length)), {2, 1, 32});
        EXPECT_EQ(loaded.width, length < 38 + 52 ? 0 : 2) << length;
    }
    const platform::ScopedFault noSection(platform::SeamCall::createDIBSection);
    EXPECT_EQ(loadIco(icon), LoadedBmp{});
}
