#include "platform/pictures.h"
#include "platform/faults.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

using namespace pixkit::platform;

namespace {

using UniqueBitmap = UniqueHandle<&DeleteObject>;
using MemoryDC = UniqueHandle<&DeleteObject>;
using Blues = std::vector<int>;

UniqueBitmap makeBitmap(int width, int height, int bits, std::uint8_t** pixels, const ColorTable* colors = nullptr) {
    const ScreenDC screen;
    void* memory = nullptr;
    BitmapInfoHeader header{.biWidth = width, .biHeight = height};
    header.biBitCount = static_cast<std::uint16_t>(bits);
    UniqueBitmap bitmap(CreateDIBSection(screen.get(), header, &memory, colors));
    if (pixels != nullptr) *pixels = static_cast<std::uint8_t*>(memory);
    return bitmap;
}

// 2 x 2 pixels whose blue is, top row first, 11, 12, 13, 14.
UniqueBitmap makeSample(int bits) {
    ColorTable colors{};
    for (std::uint32_t i = 0; i < 256; ++i)
        colors[i] = i + 10;
    std::uint8_t* pixels = nullptr;
    UniqueBitmap bitmap = makeBitmap(2, 2, bits, &pixels, &colors);
    const std::size_t step = static_cast<std::size_t>(bits) / 8;
    const std::size_t stride = bits == 32 ? 8 : bits == 24 ? 8 : 4;
    for (std::size_t y = 0; y < 2; ++y)
        for (std::size_t x = 0; x < 2; ++x)
            pixels[y * stride + x * step] = static_cast<std::uint8_t>((bits == 8 ? 1 : 11) + (1 - y) * 2 + x);
    return bitmap;
}

} // namespace

TEST(Pictures, ABitmapIsDrawnWholeStretchedAndCutFromEveryDepth) {
    struct Case {
        std::int32_t x, y, width, height;
        bool drawn;
        Blues seen; // 4 x 2, top row first; 99 where nothing is drawn
    };
    const Case cases[] = {
        {0, 0, 2, 2, true, {11, 12, 99, 99, 13, 14, 99, 99}},
        {3, -1, 2, 2, true, {99, 99, 99, 13, 99, 99, 99, 99}},
        {0, 0, 4, 2, true, {11, 11, 12, 12, 13, 13, 14, 14}},
        {-2, 0, 4, 4, true, {12, 12, 99, 99, 12, 12, 99, 99}},
        {-1, 0, 4, 2, true, {11, 12, 12, 99, 13, 14, 14, 99}},
        {5, 5, 2, 2, true, Blues(8, 99)},
        {0, 0, 0, 2, false, Blues(8, 99)},
        {0, 0, 2, -2, false, Blues(8, 99)},
    };
    for (const int bits : {8, 24, 32}) {
        const UniqueBitmap sample = makeSample(bits);
        const auto picture = OleCreatePictureIndirect(sample.get(), PictureType::bitmap, false);
        ASSERT_TRUE(picture) << bits;
        EXPECT_EQ(picture->Type(), PictureType::bitmap);
        EXPECT_TRUE(isSameObject(picture->handle(), sample.get()));
        EXPECT_EQ(picture->Width(), 2);
        EXPECT_EQ(picture->Height(), 2);
        for (const Case& c : cases) {
            std::uint8_t* pixels = nullptr;
            const UniqueBitmap target = makeBitmap(4, 2, 32, &pixels);
            std::memset(pixels, 99, 32);
            MemoryDC dc(CreateCompatibleDC(0));
            const Handle before = SelectObject(dc.get(), target.get());
            EXPECT_EQ(picture->Render(dc.get(), c.x, c.y, c.width, c.height), c.drawn) << bits;
            SelectObject(dc.get(), before);
            Blues seen;
            for (const std::size_t row : {1U, 0U})
                for (std::size_t x = 0; x < 4; ++x)
                    seen.push_back(pixels[row * 16 + x * 4]);
            EXPECT_EQ(seen, c.seen) << bits << " bits at " << c.x << ", " << c.y << ", " << c.width << " x "
                                    << c.height;
        }
    }
}

TEST(Pictures, APictureFreesWhatItOwnsAndOnlyThat) {
    for (const bool own : {false, true}) {
        UniqueBitmap bitmap = makeSample(24);
        auto picture = OleCreatePictureIndirect(bitmap.get(), PictureType::bitmap, own);
        ASSERT_TRUE(picture);
        picture.reset();
        EXPECT_EQ(GetObjectType(bitmap.get()), own ? ObjectType::none : ObjectType::bitmap);
        if (own) bitmap.release();
    }
}

// 2 x 1 pixels: over a target of 0x60 in every channel a mask lets the second through, which a colour inverts.
TEST(Pictures, AnIconIsHeldDrawnAndFreedAsABitmapIs) {
    constexpr std::uint8_t rightHalf[] = {0x40, 0}, both[] = {0x40, 0, 0x80, 0};
    struct Case {
        const char* fault;
        int bits; // 0: monochrome
        std::vector<std::uint8_t> colors;
        Blues seen;
        bool everywhere = true; // else OLE's own affair: Wine's ORs such pixels with what is beneath
    };
    const bool isOurs = !canLoadMetafiles();
    const Case cases[] = {
        {"masked", 24, {10, 20, 30, 0, 0, 0}, {10, 0x60}},
        {"inverting", 24, {10, 20, 30, 255, 255, 255}, {10, 0x9F}, false},
        {"alpha that is not used", 32, {10, 20, 30, 0, 0, 0, 0, 0}, {10, 0x60}},
        {"alpha", 32, {10, 20, 30, 255, 0xE0, 0, 0, 128}, {10, 0xA0}, false},
        {"monochrome", 0, {}, {255, 0x60}},
    };
    for (const Case& c : cases) {
        for (const bool own : {false, true}) {
            SCOPED_TRACE(testing::Message() << c.fault << (own ? ", owned" : ""));
            UniqueBitmap color;
            if (c.bits != 0) {
                std::uint8_t* pixels = nullptr;
                color = makeBitmap(2, 1, c.bits, &pixels);
                std::memcpy(pixels, c.colors.data(), c.colors.size());
            }
            const UniqueBitmap mask(CreateMonochromeBitmap(2, c.bits == 0 ? 2 : 1, c.bits == 0 ? both : rightHalf));
            const Handle icon = CreateIconIndirect({.hbmMask = mask.get(), .hbmColor = color.get()});
            auto picture = OleCreatePictureIndirect(icon, PictureType::icon, own);
            ASSERT_TRUE(picture);
            EXPECT_FALSE(OleCreatePictureIndirect(icon, PictureType::bitmap, false));
            EXPECT_EQ(picture->Type(), PictureType::icon);
            EXPECT_TRUE(isSameObject(picture->handle(), icon));
            EXPECT_EQ(picture->Width(), 2);
            EXPECT_EQ(picture->Height(), 1);
            for (const int bits : {24, 32}) {
                std::uint8_t* pixels = nullptr;
                const UniqueBitmap target = makeBitmap(4, 2, bits, &pixels);
                std::memset(pixels, 0x60, bits == 24 ? 24 : 32);
                MemoryDC dc(CreateCompatibleDC(0));
                const Handle before = SelectObject(dc.get(), target.get());
                EXPECT_TRUE(picture->Render(dc.get(), -1, 0, 4, 1));
                EXPECT_FALSE(picture->Render(dc.get(), 0, 0, 0, 1));
                SelectObject(dc.get(), before);
                Blues seen; // of the upper row
                for (std::size_t x = 0; x < 4; ++x)
                    seen.push_back(pixels[(bits == 24 ? 12 : 16) + x * static_cast<std::size_t>(bits) / 8]);
                if (c.everywhere || isOurs) {
                    EXPECT_EQ(seen, (Blues{c.seen[0], c.seen[1], c.seen[1], 0x60})) << bits;
                }
            }
            picture.reset();
            EXPECT_EQ(DestroyIcon(icon), !own);
        }
    }
}

TEST(Pictures, WhatIsNoPictureIsRefused) {
    const UniqueBitmap bitmap = makeSample(32);
    const MemoryDC dc(CreateCompatibleDC(0));
    EXPECT_FALSE(OleCreatePictureIndirect(0, PictureType::bitmap, false));
    EXPECT_FALSE(OleCreatePictureIndirect(0, PictureType::icon, false));
    EXPECT_FALSE(OleCreatePictureIndirect(dc.get(), PictureType::bitmap, false));
    EXPECT_FALSE(OleCreatePictureIndirect(bitmap.get(), PictureType::icon, false));
    EXPECT_FALSE(OleCreatePictureIndirect(bitmap.get(), PictureType::metafile, false));
    EXPECT_FALSE(OleLoadPicture({}));
    EXPECT_FALSE(OleLoadPicture(std::vector<std::uint8_t>(100, 'x')));

    const auto picture = OleCreatePictureIndirect(bitmap.get(), PictureType::bitmap, false);
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->Render(0, 0, 0, 2, 2));
    EXPECT_FALSE(picture->Render(bitmap.get(), 0, 0, 2, 2)) << "a bitmap is no device context";
    const ScopedFault fault(SeamCall::renderPicture);
    EXPECT_FALSE(picture->Render(dc.get(), 0, 0, 2, 2));
}
