#include "CommandFixture.h"
#include <functional>

namespace pixkit::test {
namespace {

using cli::exitOk;
using cli::exitSomeFailed;

// Draws onto a fresh image by the blender, as the command promises for every system.
void redraw(cPixSheet& sheet, std::int32_t width, std::int32_t height, AlphaTypeEnum alpha,
            const std::function<bool(cPixSheet& canvas)>& draw) {
    cPixSheet canvas;
    canvas.InitializeDIB(width, height);
    sheet.isAlphaBlendFriendly(false);
    EXPECT_TRUE(draw(canvas));
    sheet.SwapDIBs(&canvas);
    sheet.Alpha(alpha);
}

bool draw(cPixSheet& sheet, cPixSheet& canvas, std::int32_t x, std::int32_t y, std::int32_t opacity = 100) {
    return sheet.Render(0, x, y, 0, 0, 0, 0, 0, 0, opacity, true, true, &canvas);
}

std::vector<std::uint8_t> savedBy(cPixSheet& sheet) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_Bitmap(stream, true));
    return bytesOf(stream);
}

TEST_F(Command, ConvertDrawsAndResizesByOtherCallsThanItsOptionsName) {
    struct Case {
        std::vector<std::string> options;
        std::function<void(cPixSheet&)> calls; // on the picture of 4 x 2 with alpha
    };
    const std::vector<Case> cases = {
        {{"--resize", "9x9"}, [](cPixSheet& sheet) { sheet.Resize(9, 4); }},
        {{"--resize", "9x9", "--fit", "down"}, [](cPixSheet&) {}},
        {{"--fit", "stretch", "--resize", "9x9", "--nearest", "--resize", "5x1:down", "--resize", "200%"},
         [](cPixSheet& sheet) {
             sheet.Resize(9, 9);
             sheet.HighQualityInterpolation(false);
             sheet.Resize(1, 1);
             sheet.Resize(2, 2);
         }},
        {{"--resize", "1x100"}, [](cPixSheet& sheet) { sheet.Resize(1, 1); }},
        {{"--resize", "12.5%"}, [](cPixSheet& sheet) { sheet.Resize(1, 1); }},
        {{"--nearest", "--resize", "7x5:stretch"},
         [](cPixSheet& sheet) {
             sheet.HighQualityInterpolation(false);
             sheet.Resize(7, 5);
         }},
        {{"--rotate", "-270", "--rotate=90", "--rotate", "360"},
         [](cPixSheet& sheet) { sheet.MirrorImage(true, true); }},
        {{"--rotate", "90", "--mirror", "x"},
         [](cPixSheet& sheet) { // exactly the rows as columns
             cPixSheet turned;
             turned.InitializeDIB(2, 4);
             for (std::int32_t y = 0; y < 4; ++y)
                 for (std::int32_t x = 0; x < 2; ++x)
                     std::copy_n(sheet.BitsPointer() + ((1 - x) * 4 + y) * 4, 4,
                                 turned.BitsPointer() + ((3 - y) * 2 + x) * 4);
             turned.Alpha(AlphaComplex);
             sheet.SwapDIBs(&turned);
         }},
        {{"--opacity", "40%"},
         [](cPixSheet& sheet) {
             redraw(sheet, 4, 2, AlphaComplex, [&](cPixSheet& canvas) { return draw(sheet, canvas, 0, 0, 40); });
         }},
        {{"--shadow", "2:#ff8000"},
         [](cPixSheet& sheet) {
             redraw(sheet, 8, 6, AlphaComplex, [&](cPixSheet& canvas) {
                 return sheet.RenderDropShadow_JIT(0, 0, 0, 2, 0x0080FF, 50, 0, &canvas) && draw(sheet, canvas, 0, 0);
             });
         }},
        {{"--checkerboard", "--checkerboard=1"},
         [](cPixSheet& sheet) {
             for (const std::int32_t size : {12, 1})
                 redraw(sheet, 4, 2, AlphaNone, [&](cPixSheet& canvas) {
                     return canvas.CreateCheckerBoard(size) && draw(sheet, canvas, 0, 0);
                 });
         }},
        {{"--tile", "7x5"},
         [](cPixSheet& sheet) {
             redraw(sheet, 7, 5, AlphaComplex,
                    [&](cPixSheet& canvas) { return sheet.TileImage(0, 0, 0, 7, 5, 100, 0, 0, 0, &canvas); });
         }},
        {{"--transparent", "#ff0000", "--trim"},
         [](cPixSheet& sheet) {
             sheet.MakeTransparent(0x0000FF);
             sheet.TrimImage();
         }},
    };
    for (const Case& test : cases) {
        std::vector<std::string> arguments = {"convert", name(u8"alpha.png"), name(u8"out.bmp"), "--overwrite",
                                              "--keep-alpha"};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const Result result = run(arguments);
        EXPECT_EQ(result.exitCode, exitOk) << result.err;
        cPixSheet sheet;
        sheet.LoadPicture_File(name(u8"alpha.png"));
        sheet.HighQualityInterpolation(true);
        test.calls(sheet);
        EXPECT_EQ(bytes(u8"out.bmp"), savedBy(sheet)) << testing::PrintToString(test.options);
    }
    const Result nothing = run({"convert", name(u8"opaque.png"), name(u8"gone.bmp"), "--resize", "1x1", "--opacity",
                                "1", "--opacity", "1", "--trim"});
    EXPECT_EQ(nothing.exitCode, exitSomeFailed);
    EXPECT_NE(nothing.err.find("--trim found nothing but transparent pixels"), std::string::npos) << nothing.err;
}

TEST_F(Command, ComposeMistakesALayersPlaceOpacityOrName) {
    writeFile(path(u8"a@b.png"), pngOpaque);
    writeFile(path(u8"50%.png"), pngOpaque);
    struct Layer {
        std::string argument;
        std::u8string file;
        std::int32_t x, y, opacity;
    };
    struct Case {
        std::vector<Layer> layers;
        std::string canvas;
        std::int32_t width, height, colour; // -1: transparent
    };
    const std::vector<Case> cases = {
        {{{"", u8"alpha.png", 0, 0, 100}}, "", 4, 2, -1},
        {{{"@3,1", u8"alpha.png", 3, 1, 100}, {"@-1,0:50%", u8"opaque.png", -1, 0, 50}}, "", 7, 3, -1},
        {{{":30%", u8"alpha.png", 0, 0, 30}, {"@6,6", u8"opaque.png", 6, 6, 100}}, "7x7", 7, 7, -1},
        {{{"@1,1", u8"a@b.png", 1, 1, 100}, {"", u8"50%.png", 0, 0, 100}}, "5x4:#204060", 5, 4, 0x604020},
        {{{"@2147483647,-2147483648", u8"opaque.png", 2147483647, -2147483647 - 1, 100}}, "2x1", 2, 1, -1},
        {{{"@-9,-9", u8"opaque.png", -9, -9, 100}}, "", 1, 1, -1},
    };
    for (const Case& test : cases) {
        std::vector<std::string> arguments = {"compose", "-o", name(u8"out.bmp"), "--overwrite", "--keep-alpha"};
        if (!test.canvas.empty()) arguments.insert(arguments.end(), {"--canvas", test.canvas});
        cPixSheet expected;
        expected.InitializeDIB(test.width, test.height);
        if (test.colour >= 0) expected.MakeTransparent(test.colour, true);
        for (const Layer& layer : test.layers) {
            arguments.push_back(name(layer.file) + layer.argument);
            cPixSheet picture;
            ASSERT_TRUE(picture.LoadPicture_File(name(layer.file)));
            picture.isAlphaBlendFriendly(false);
            draw(picture, expected, layer.x, layer.y, layer.opacity);
        }
        const Result result = run(arguments);
        EXPECT_EQ(result.exitCode, exitOk) << result.err;
        cPixSheet got;
        ASSERT_TRUE(got.LoadPicture_File(name(u8"out.bmp")));
        EXPECT_EQ(got.Width(), test.width);
        EXPECT_EQ(got.Height(), test.height);
        const bool isEmpty = pixelsOf(expected) == std::vector<Pixel>(pixelsOf(expected).size());
        EXPECT_TRUE(isEmpty || pixelsOf(got) == pixelsOf(expected))
            << arguments.back(); // empty BMP files read as black
    }
    const Result gone = run({"compose", "-o", name(u8"none.bmp"), name(u8"opaque.png"), name(u8"gone.png") + "@1,1"});
    EXPECT_EQ(gone.exitCode, exitSomeFailed);
    EXPECT_NE(gone.err.find("gone.png: no such file"), std::string::npos) << gone.err;
    EXPECT_FALSE(std::filesystem::exists(path(u8"none.bmp")));
    const Result large = run({"compose", "-o", name(u8"none.bmp"), name(u8"opaque.png") + "@2147483640,2147483640"});
    EXPECT_EQ(large.exitCode, exitSomeFailed);
    EXPECT_NE(large.err.find("the canvas: there is no memory"), std::string::npos) << large.err;
}

} // namespace
} // namespace pixkit::test
