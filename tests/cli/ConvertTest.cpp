#include "CommandFixture.h"
#include <functional>

namespace pixkit::test {
namespace {

using cli::exitOk;
using cli::exitSomeFailed;
using cli::exitUsage;

std::vector<std::uint8_t> bitmapOf(cPixSheet& sheet, bool keepAlpha, std::int32_t background = 0) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_Bitmap(stream, keepAlpha, background));
    return bytesOf(stream);
}

TEST_F(Command, ConvertAppliesRepeatedOptionsInTheOrderGiven) {
    struct Case {
        std::vector<std::string> options;
        std::function<void(cPixSheet&)> calls;
        bool keepAlpha = false;
        std::int32_t background = 0;
    };
    const std::vector<Case> cases = {
        {{}, [](cPixSheet&) {}},
        {{"--background", "#102030"}, [](cPixSheet&) {}, false, 0x302010},
        {{"--keep-alpha"}, [](cPixSheet&) {}, true},
        {{"--lighten", "50", "--invert"},
         [](cPixSheet& sheet) {
             sheet.MakeLighterDarker(50);
             sheet.MakeImageInverse();
         }},
        {{"--invert", "--lighten", "50"},
         [](cPixSheet& sheet) {
             sheet.MakeImageInverse();
             sheet.MakeLighterDarker(50);
         }},
        {{"--lighten=60", "--darken", "12.5", "--lighten", "60", "--invert", "--invert", "--darken", "70"},
         [](cPixSheet& sheet) {
             sheet.MakeLighterDarker(60);
             sheet.MakeLighterDarker(-12.5F);
             sheet.MakeLighterDarker(60);
             sheet.MakeImageInverse();
             sheet.MakeImageInverse();
             sheet.MakeLighterDarker(-70);
         }},
        {{"--transparent", "#ff0000", "--fill", "#00ff80", "--keep-alpha", "--mirror", "x"},
         [](cPixSheet& sheet) {
             sheet.MakeTransparent(0x0000FF);
             sheet.MakeTransparent(0x80FF00, true);
             sheet.MirrorImage(true, false);
         },
         true},
        {{"--fill", "#00ff80", "--transparent", "#FF0000", "--keep-alpha"},
         [](cPixSheet& sheet) {
             sheet.MakeTransparent(0x80FF00, true);
             sheet.MakeTransparent(0x0000FF);
         },
         true},
        {{"--blend", "#0000ff", "--mirror", "y", "--blend", "#ffff00:70", "--mirror", "xy"},
         [](cPixSheet& sheet) {
             sheet.BlendToColor(0xFF0000, 33);
             sheet.MirrorImage(false, true);
             sheet.BlendToColor(0x00FFFF, 70);
             sheet.MirrorImage(true, true);
         }},
    };
    for (const Case& test : cases) {
        std::vector<std::string> arguments = {"convert", name(u8"alpha.png"), name(u8"out.bmp"), "--overwrite"};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const Result result = run(arguments);
        EXPECT_EQ(result.exitCode, exitOk) << result.err;
        cPixSheet sheet;
        sheet.LoadPicture_File(name(u8"alpha.png"));
        test.calls(sheet);
        EXPECT_EQ(bytes(u8"out.bmp"), bitmapOf(sheet, test.keepAlpha, test.background))
            << testing::PrintToString(test.options);
    }
}

TEST_F(Command, AnOptionOfTgaFilesIsNotPassedOn) {
    for (const bool rle : {false, true}) {
        for (const bool palette : {false, true}) {
            for (const std::u8string picture : {u8"opaque.png", u8"alpha.png"}) {
                std::vector<std::string> arguments = {"convert", name(picture), name(u8"out.TGA"), "--overwrite"};
                if (rle) arguments.emplace_back("--tga-rle");
                if (palette) arguments.emplace_back("--tga-palette");
                const Result result = run(arguments);
                EXPECT_EQ(result.exitCode, exitOk) << result.err;
                cPixSheet sheet;
                sheet.LoadPicture_File(name(picture));
                ByteArray expected;
                sheet.SaveToStream_TGA(expected, rle, palette);
                EXPECT_EQ(bytes(u8"out.TGA"), bytesOf(expected));
            }
        }
    }
    EXPECT_EQ(run({"info", name(u8"out.TGA")}).exitCode, exitOk);
}

TEST_F(Command, AnOptionOfJpegOrGifFilesIsNotPassedOn) {
    struct Case {
        std::u8string file;
        std::vector<std::string> options;
        std::function<bool(cPixSheet&, const std::string&)> save;
    };
    const std::vector<Case> cases = {
        {u8"out.JPG", {}, [](auto& sheet, auto& file) { return sheet.SaveToFile_JPG(file, 70, 0, false); }},
        {u8"out.jpeg",
         {"--quality", "93", "--background", "#102030"},
         [](auto& sheet, auto& file) { return sheet.SaveToFile_JPG(file, 93, 0x302010, false); }},
        {u8"out.GIF", {}, [](auto& sheet, auto& file) { return sheet.SaveToFile_GIF(file, true, 128, false); }},
        {u8"out.gif",
         {"--gif-websafe", "--gif-tolerance", "1"},
         [](auto& sheet, auto& file) { return sheet.SaveToFile_GIF(file, false, 1, false); }},
    };
    for (const Case& test : cases) {
        std::vector<std::string> arguments = {"convert", name(u8"alpha.png"), name(test.file), "--overwrite"};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const Result result = run(arguments);
        EXPECT_EQ(result.exitCode, exitOk) << result.err;
        cPixSheet sheet;
        sheet.LoadPicture_File(name(u8"alpha.png"));
        EXPECT_TRUE(test.save(sheet, name(u8"expected")));
        EXPECT_EQ(bytes(test.file), bytes(u8"expected")) << testing::PrintToString(test.options);
    }
}

TEST_F(Command, AnIconLosesAnEntry) {
    const auto sizes = [&](const std::u8string& file, const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"convert", name(u8"alpha.png"), name(file), "--overwrite"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Result result = run(arguments);
        EXPECT_EQ(result.exitCode, exitOk) << result.err;
        cPixSheet sheet;
        std::vector<IconSourceSize> found;
        EXPECT_TRUE(sheet.LoadPicture_File(name(file), 0, 0, true));
        sheet.SourceIconSizes(found);
        return found;
    };
    EXPECT_EQ(sizes(u8"out.ico", {"--icon", "16,20x8:4,256:24,24:16"}),
              (std::vector<IconSourceSize>{{16, 16, 32, 0}, {20, 8, 4, 0}, {256, 256, 32, 1}, {24, 24, 24, 0}}));
    EXPECT_EQ(sizes(u8"out.CUR", {"--resize", "9x5:stretch"}), (std::vector<IconSourceSize>{{9, 5, 32, 0}}));
    EXPECT_EQ(bytes(u8"out.CUR").at(2), 2);
    EXPECT_EQ(sizes(u8"large.ico", {"--resize", "300x20:stretch"}).size(), 4U);
}

TEST_F(Command, AnOptionOfPngFilesIsNotPassedOn) {
    const Result result = run({"convert", name(u8"alpha.png"), name(u8"out.PNG"), "--png-text", "Title=a=b",
                               "--png-filter", "Paeth", "--png-interlace", "--png-level", "9", "--png-text", "Own=x"});
    EXPECT_EQ(result.exitCode, exitOk) << result.err;
    cPixSheet sheet;
    sheet.LoadPicture_File(name(u8"alpha.png"));
    sheet.PngPropertySet(pngTitle, "a=b");
    sheet.PngPropertySet(pngText, "x", "Own");
    sheet.PngPropertySet(pngFilterMethod, filterPaeth);
    sheet.PngPropertySet(pngInterlaced, 1);
    sheet.PngPropertySet(pngCompressionLevel, 9);
    ByteArray expected;
    sheet.SaveToStream_PNG(expected);
    EXPECT_EQ(bytes(u8"out.PNG"), bytesOf(expected));
}

TEST_F(Command, EachGrayscaleWordMeansItsFormula) {
    const char* const words[] = {"ntscpal",   "ccir709",  "simpleavg",    "redmask",
                                 "greenmask", "bluemask", "redgreenmask", "BlueGreenMask"};
    for (std::int32_t formula = gsclNTSCPAL; formula <= gsclBlueGreenMask; ++formula) {
        run({"convert", "--grayscale", words[formula], name(u8"alpha.png"), name(u8"out.bmp"), "--overwrite"});
        cPixSheet sheet;
        sheet.LoadPicture_File(name(u8"alpha.png"));
        sheet.MakeGrayScale(formula);
        EXPECT_EQ(bytes(u8"out.bmp"), bitmapOf(sheet, false)) << words[formula];
    }
}

TEST_F(Command, SenselessCommandLinesAreRefusedBeforeAnythingIsWritten) {
    const std::string in = name(u8"alpha.png");
    const std::string out = name(u8"out.bmp");
    struct Case {
        std::vector<std::string> arguments;
        const char* reason; // part of the message
    };
    const std::vector<Case> cases = {
        {{}, "Subcommands"},
        {{"sharpen", in, out}, "'sharpen' is not a command"},
        {{"info"}, "FILE"},
        {{"convert", in}, "at least one picture"},
        {{"convert", in, out, "--sepia"}, "--sepia"},
        {{"convert", in, out, "--grayscale", "sepia"}, "bluegreenmask"},
        {{"convert", in, out, "--lighten", "0"}, "percentage above 0"},
        {{"convert", in, out, "--lighten", "101"}, "percentage above 0"},
        {{"convert", in, out, "--darken", "-5"}, "percentage above 0"},
        {{"convert", in, out, "--darken", "nan"}, "percentage above 0"},
        {{"convert", in, out, "--darken", "10%"}, "percentage above 0"},
        {{"convert", in, out, "--mirror", "z"}, "axis"},
        {{"convert", in, out, "--blend", "#0000ff:0"}, "1 to 100"},
        {{"convert", in, out, "--blend", "#0000ff:"}, "1 to 100"},
        {{"convert", in, out, "--resize", "0x5"}, "not a size"},
        {{"convert", in, out, "--resize", "5x5x5"}, "not a size"},
        {{"convert", in, out, "--resize", "5"}, "not a size"},
        {{"convert", in, out, "--resize", "99999999999x5"}, "not a size"},
        {{"convert", in, out, "--resize", "0%"}, "percentage above 0"},
        {{"convert", in, out, "--resize", "%"}, "percentage above 0"},
        {{"convert", in, out, "--resize", "5x5:tight"}, "known are size, down and stretch"},
        {{"convert", in, out, "--fit", "tight"}, "known are size, down and stretch"},
        {{"convert", in, out, "--rotate", "nan"}, "not an angle"},
        {{"convert", in, out, "--rotate", "1e9"}, "not an angle"},
        {{"convert", in, out, "--opacity", "0"}, "1 to 100"},
        {{"convert", in, out, "--opacity", "50%%"}, "1 to 100"},
        {{"convert", in, out, "--shadow", "11"}, "0 to 10"},
        {{"convert", in, out, "--shadow", "-1"}, "0 to 10"},
        {{"convert", in, out, "--shadow", "3:red"}, "'#rrggbb'"},
        {{"convert", in, out, "--checkerboard=0"}, "size of squares"},
        {{"convert", in, out, "--checkerboard=big"}, "size of squares"},
        {{"convert", in, out, "--tile", "-5x5"}, "not a size"},
        {{"compose", in}, "--output"},
        {{"compose", "-o", out}, "LAYER"},
        {{"compose", "-o", out, in, "--canvas", "5"}, "not a size"},
        {{"compose", "-o", out, in, "--canvas", "5x5:red"}, "'#rrggbb'"},
        {{"compose", "-o", out, in + "@1,2:101%"}, "1 to 100"},
        {{"compose", "-o", out, "@1,2"}, "names no picture"},
        {{"compose", "-o", out, in, "--tga-rle"}, "are for .tga"},
        {{"convert", in, name(u8"out.ico"), "--icon", "16,0"}, "no icon entry"},
        {{"convert", in, name(u8"out.ico"), "--icon", "16:33"}, "no icon entry"},
        {{"convert", in, name(u8"out.ico"), "--icon", "16,"}, "no icon size"},
        {{"convert", in, name(u8"out.png"), "--icon", "16"}, "--icon is for .ico"},
        {{"convert", in, out, "--transparent", "ff00ff"}, "'#rrggbb'"},
        {{"convert", in, out, "--fill", "#ff00f"}, "'#rrggbb'"},
        {{"convert", in, out, "--background", "#ff00fg"}, "'#rrggbb'"},
        {{"convert", in, out, "--background", "#-12345"}, "'#rrggbb'"},
        {{"convert", in, out, "--background", ""}, "'#rrggbb'"},
        {{"convert", in, name(u8"out.png"), "--background", "#ffffff"}, "--background is for .bmp"},
        {{"convert", in, out, "--png-level", "5"}, "are for .png"},
        {{"convert", in, name(u8"out.png"), "--png-level", "10"}, "--png-level"},
        {{"convert", in, name(u8"out.png"), "--png-filter", "best"}, "--png-filter"},
        {{"convert", in, name(u8"out.png"), "--png-text", "Title"}, "KEYWORD=TEXT"},
        {{"convert", in, name(u8"out.png"), "--png-text", " Title=x"}, "without spaces at its ends"},
        {{"convert", in, out, "--quality", "5"}, "--quality is for .jpg"},
        {{"convert", in, name(u8"out.jpg"), "--quality", "101"}, "--quality"},
        {{"convert", in, name(u8"out.gif"), "--background", "#ffffff"}, "--background is for .bmp and .jpg"},
        {{"convert", in, name(u8"out.jpg"), "--gif-websafe"}, "are for .gif"},
        {{"convert", in, name(u8"out.gif"), "--gif-tolerance", "256"}, "--gif-tolerance"},
        {{"convert", in, name(u8"out.TGA"), "--background", "#ffffff"}, "--background is for .bmp and .jpg"},
        {{"convert", in, out, "--tga-rle"}, "are for .tga"},
        {{"convert", in, name(u8"results/"), "--tga-palette"}, "are for .tga"},
        {{"convert", in, name(u8"out.xyz")}, "'.xyz' is not known"},
        {{"convert", in, name(u8"out")}, "has no extension"},
        {{"convert", in, in, name(u8"opaque.png")}, "is a file"},
    };
    for (const Case& test : cases) {
        const Result result = run(test.arguments);
        EXPECT_EQ(result.exitCode, exitUsage) << testing::PrintToString(test.arguments);
        EXPECT_NE((result.out + result.err).find(test.reason), std::string::npos) << result.out << result.err;
        EXPECT_FALSE(std::filesystem::exists(path(u8"out.bmp")));
    }
}

TEST_F(Command, AFailedInputDoesNotStopTheOthers) {
    const Result result = run({"convert", name(u8"alpha.png"), name(u8"gone.png"), name(u8"broken.png"),
                               name(u8"opaque.png"), name(u8"new/results")});
    EXPECT_EQ(result.exitCode, exitSomeFailed);
    EXPECT_TRUE(std::filesystem::exists(path(u8"new/results/alpha.png")));
    EXPECT_TRUE(std::filesystem::exists(path(u8"new/results/opaque.png")));
    EXPECT_NE(result.err.find("gone.png: no such file"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("broken.png: is a PNG file that is damaged"), std::string::npos) << result.err;
}

TEST_F(Command, TwoInputsOfOneNameDoNotOverwriteEachOther) {
    cPixSheet first;
    first.LoadPicture_File(name(u8"alpha.png"));
    std::filesystem::create_directory(path(u8"other"));
    for (const char8_t* second : {u8"other/alpha.png", u8"other/ALPHA.PNG"}) { // Windows ignores case
        writeFile(path(second), pngOpaque);
        const Result result =
            run({"convert", name(u8"alpha.png"), name(second), name(u8"results"), "--overwrite", "--to", "bmp"});
        EXPECT_EQ(result.exitCode, exitSomeFailed);
        EXPECT_NE(result.err.find("would replace that of"), std::string::npos) << result.err;
        EXPECT_EQ(bytes(u8"results/alpha.bmp"), bitmapOf(first, false));
    }
}

TEST_F(Command, AnExistingFileIsOnlyReplacedWhenSomebodyAgrees) {
    const std::vector<std::uint8_t> old = {'o', 'l', 'd'};
    struct Case {
        const char* answers; // null: nobody is there
        bool overwrite;
        bool replaced;
        bool asked;
    };
    const Case cases[] = {
        {nullptr, false, false, false}, {"", false, false, true},     {"\n", false, false, true},
        {"no\n", false, false, true},   {"Yes\n", false, true, true}, {nullptr, true, true, false},
    };
    for (const Case& test : cases) {
        writeFile(path(u8"out.bmp"), old);
        std::vector<std::string> arguments = {"convert", name(u8"alpha.png"), name(u8"out.bmp")};
        if (test.overwrite) arguments.push_back("--overwrite");
        const Result result = run(arguments, test.answers);
        EXPECT_EQ(bytes(u8"out.bmp") != old, test.replaced) << result.err;
        EXPECT_EQ(result.exitCode, test.replaced ? exitOk : exitSomeFailed);
        EXPECT_EQ(result.err.find("[y/N]") != std::string::npos, test.asked) << result.err;
        EXPECT_EQ(result.err.find("was kept") == std::string::npos, test.replaced) << result.err;
    }
}

TEST_F(Command, AResultThatCannotBeWrittenIsAFailureWithAReason) {
    std::filesystem::create_directory(path(u8"folder.bmp"));
    std::filesystem::create_directories(path(u8"results/alpha.bmp"));
    const Result noFolder = run({"convert", name(u8"alpha.png"), name(u8"missing/out.bmp")});
    EXPECT_EQ(noFolder.exitCode, exitSomeFailed);
    EXPECT_NE(noFolder.err.find("its folder does not exist"), std::string::npos) << noFolder.err;
    const Result isFolder = run({"convert", name(u8"alpha.png"), name(u8"results"), "--overwrite", "--to", "bmp"});
    EXPECT_EQ(isFolder.exitCode, exitSomeFailed);
    EXPECT_NE(isFolder.err.find("is a folder"), std::string::npos) << isFolder.err;
}

TEST_F(Command, NamesBeyondAsciiKeepTheirCharacters) {
    writeFile(path(u8"größe 東京.png"), pngOpaque);
    const Result result = run({"convert", name(u8"größe 東京.png"), m_folder.name(u8""), "--to", "bmp"});
    EXPECT_EQ(result.exitCode, exitOk) << result.err;
    EXPECT_TRUE(std::filesystem::exists(path(u8"größe 東京.bmp")));
}

} // namespace
} // namespace pixkit::test
