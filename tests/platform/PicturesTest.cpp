#include "platform/pictures.h"
#include "platform/Bitmaps.h"
#include "platform/icons.h"
#include <cstring>
#include <gtest/gtest.h>

using namespace pixkit::platform;
using namespace pixkit::test;

namespace {

constexpr std::uint8_t untouched = 0x60;

// What is blue in 4 x 2 pixels, top row first, after a picture was drawn there; nothing when the answer was no.
Bytes drawn(const StdPicture& picture, int bits, int x, int y, int width, int height) {
    std::uint8_t* pixels = nullptr;
    const UniqueBitmap target = makeBitmap(4, 2, bits, &pixels);
    const MemoryDC dc = makeMemoryDC();
    std::memset(pixels, untouched, static_cast<std::size_t>(bits));
    SelectObject(dc.get(), target.get());
    if (!picture.Render(dc.get(), x, y, width, height)) return {};
    GdiFlush();
    Bytes seen;
    for (const int place : {4, 5, 6, 7, 0, 1, 2, 3})
        seen.push_back(pixels[place * bits / 8]);
    return seen;
}

// 2 x 2 pixels whose blue is, top row first, 11, 12, 13, 14.
UniqueBitmap makeSample(int bits) {
    std::uint8_t* pixels = nullptr;
    UniqueBitmap bitmap = makeBitmap(2, 2, bits, &pixels);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x)
            pixels[(1 - y) * (bits == 8 ? 4 : 8) + x * bits / 8] =
                static_cast<std::uint8_t>((bits == 8 ? 1 : 11) + y * 2 + x);
    return bitmap;
}

} // namespace

TEST(Pictures, ABitmapIsDrawnWholeStretchedAndCutFromEveryDepth) {
    constexpr std::uint8_t o = untouched;
    const struct {
        int x, y, width, height;
        Bytes seen;
    } rows[] = {{0, 0, 2, 2, {11, 12, o, o, 13, 14, o, o}},
                {3, -1, 2, 2, {o, o, o, 13, o, o, o, o}},
                {0, 0, 4, 2, {11, 11, 12, 12, 13, 13, 14, 14}},
                {-2, 0, 4, 4, {12, 12, o, o, 12, 12, o, o}},
                {-1, 0, 4, 2, {11, 12, 12, o, 13, 14, 14, o}},
                {5, 5, 2, 2, Bytes(8, o)},
                {0, 0, 0, 2, {}},
                {0, 0, 2, -2, {}}};
    for (const int bits : {8, 24, 32})
        for (const bool own : {false, true}) {
            UniqueBitmap sample = makeSample(bits);
            auto picture = OleCreatePictureIndirect(sample.get(), PictureType::bitmap, own);
            ASSERT_TRUE(picture && picture->Type() == PictureType::bitmap);
            EXPECT_TRUE(isSameObject(picture->handle(), sample.get()));
            EXPECT_EQ(picture->Width() * 10 + picture->Height(), 22);
            for (const auto& row : rows)
                EXPECT_EQ(drawn(*picture, 32, row.x, row.y, row.width, row.height), row.seen) << bits << row.x;
            const MemoryDC dc = makeMemoryDC();
            const Handle stock = SelectObject(dc.get(), sample.get());
            EXPECT_EQ(drawn(*picture, 32, 0, 0, 2, 2).at(1), o) << "it is selected elsewhere";
            SelectObject(dc.get(), stock);
            picture.reset();
            EXPECT_EQ(GetObjectType(sample.get()), own ? ObjectType::none : ObjectType::bitmap);
            if (own) sample.release();
        }
}

// 2 x 1 pixels: the mask lets the target through in the second, which a colour there inverts.
TEST(Pictures, AnIconIsHeldDrawnAndFreedAsABitmapIs) {
    constexpr std::uint8_t masks[] = {0x40, 0, 0x80, 0};
    const bool isOurs = !canLoadMetafiles();
    const struct {
        int bits; // 0: monochrome
        Bytes colors;
        int first, second;
        bool everywhere = true; // else OLE's own affair: Wine's ORs such pixels with what is beneath
    } rows[] = {{24, {10, 20, 30, 0, 0, 0}, 10, untouched},
                {24, {10, 20, 30, 255, 255, 255}, 10, 255 - untouched, false},
                {32, {10, 20, 30, 0, 0, 0, 0, 0}, 10, untouched},
                {32, {10, 20, 30, 255, 0xE1, 0, 0, 128}, 10, 0xA1, false},
                {0, {}, 255, untouched}};
    for (const auto& row : rows)
        for (const bool own : {false, true}) {
            std::uint8_t* pixels = nullptr;
            const UniqueBitmap color = row.bits == 0 ? UniqueBitmap() : makeBitmap(2, 1, row.bits, &pixels);
            if (color) std::memcpy(pixels, row.colors.data(), row.colors.size());
            const UniqueBitmap mask(CreateMonochromeBitmap(2, color ? 1 : 2, masks));
            const Handle icon = CreateIconIndirect({.hbmMask = mask.get(), .hbmColor = color.get()});
            auto picture = OleCreatePictureIndirect(icon, PictureType::icon, own);
            ASSERT_TRUE(picture && picture->Type() == PictureType::icon && isSameObject(picture->handle(), icon));
            EXPECT_FALSE(OleCreatePictureIndirect(icon, PictureType::bitmap, false));
            EXPECT_EQ(picture->Width() * 10 + picture->Height(), 21);
            for (const int bits : {24, 32}) {
                EXPECT_EQ(drawn(*picture, bits, 0, 0, 0, 1), Bytes());
                const Bytes seen = drawn(*picture, bits, -1, 0, 4, 1);
                if (row.everywhere || isOurs) {
                    EXPECT_EQ(seen[0] * 1000 + seen[2], row.first * 1000 + row.second) << bits << " of " << row.bits;
                    EXPECT_EQ(seen[3], untouched);
                }
            }
            picture.reset();
            EXPECT_EQ(DestroyIcon(icon), !own);
        }
}

TEST(Pictures, WhatIsNoPictureIsRefused) {
    const UniqueBitmap bitmap = makeSample(32);
    const MemoryDC dc = makeMemoryDC();
    const std::pair<Handle, PictureType> none[] = {{0, PictureType::bitmap},
                                                   {0, PictureType::icon},
                                                   {dc.get(), PictureType::bitmap},
                                                   {bitmap.get(), PictureType::icon},
                                                   {bitmap.get(), PictureType::metafile}};
    for (const auto& [handle, type] : none)
        EXPECT_FALSE(OleCreatePictureIndirect(handle, type, false)) << static_cast<int>(type);
    EXPECT_FALSE(OleLoadPicture({}) || OleLoadPicture(Bytes(100, 'x')));
    const auto picture = OleCreatePictureIndirect(bitmap.get(), PictureType::bitmap, false);
    EXPECT_FALSE(picture->Render(0, 0, 0, 2, 2) || picture->Render(bitmap.get(), 0, 0, 2, 2)) << "no device context";
}
// SPDX-License-Identifier: MIT
