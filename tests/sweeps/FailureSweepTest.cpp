// What members do when every allocation and every call of the system fails: the answer is the stated one, nothing is
// half done, lost or left behind, and the next try succeeds.
#include "loading/ForeignPictures.h"
#include "platform/files.h"
#include "platform/icons.h"
#include "platform/interaction.h"
#include "platform/pictures.h"
#include "platform/regions.h"
#include "platform/text.h"
#include "render/Canvas.h"
#include "shared/resources.h"
#include "support/MemoryClipboard.h"
#include "support/Pictures.h"
#include "support/Sweep.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

const bool isSlow = platform::canLoadMetafiles(); // as a system's own loader is, and its files under Wine

// Everything that members are called with or leave something in.
struct Scene {
    cPixSheet sheet, host;
    Canvas canvas{12, 9, 24};
    ByteArray array;
    std::string said; // what else was given back
    MemoryClipboard clipboard;

    void set() {
        sheet.LoadPicture_Stream(kept, 0, 0, 0, 0, true);
        sheet.HighQualityInterpolation(true);
        HostAccess::osCAP(sheet, capNtFamily | capAlphaBlendReliable);
        draw(host, 12, 9, AlphaComplex, [](unsigned x, unsigned y) { return pixelAt(x * y, x + y); });
        std::fill_n(canvas.bits, canvas.size, std::uint8_t{77});
        array = ByteArray(Bytes{1, 2, 3});
        said.clear();
        clipboard.blocks = {{"old", {1}}};
    }
    std::string look() const {
        platform::GdiFlush();
        std::string all = said + bytesText(bytesOf(array)) + bytesText({canvas.bits, canvas.bits + canvas.size});
        for (const cPixSheet* one : {&sheet, &host}) {
            ByteArray original;
            one->GetOrginalFormat(original);
            all += std::to_string(one->Width()) + "x" + std::to_string(one->Height()) + " " +
                   std::to_string(one->ImageType()) + " " + std::to_string(one->Alpha()) + bytesText(bytesOf(original));
            for (const Pixel& pixel : pixelsOf(*one))
                all.append(pixel.begin(), pixel.end());
        }
        for (const auto& block : clipboard.blocks)
            all += block.format + bytesText(block.bytes);
        return all + std::to_string(clipboard.opened);
    }
    static Pixel pixelAt(unsigned color, unsigned alpha) {
        const auto a = static_cast<std::uint8_t>(alpha % 4 * 85);
        return {static_cast<std::uint8_t>(color * 7 % 256 * a / 255), static_cast<std::uint8_t>(a / 2), a, a};
    }
    static std::string bytesText(const Bytes& bytes) { return "[" + std::string(bytes.begin(), bytes.end()) + "]"; }

    static ByteArray makeKept() {
        cPixSheet made;
        ByteArray file;
        draw(made, 6, 5, AlphaComplex, [](unsigned x, unsigned y) { return pixelAt(x, x == 0 ? 0 : y); });
        made.SaveToStream_PNG(file);
        return file;
    }
    const ByteArray kept = makeKept();
};

// What a failure leaves: everything as it was, or the sheet without an image, or what came before the failure, or that,
// or done in another way: less of it where borrowed libraries do not all say that they found no memory, or with the
// rounding of another way of drawing.
enum Left { unchanged, emptied, part, partOrOther };

struct Operation {
    std::string name;
    std::function<bool(Scene&)> act; // takes no memory itself
    Left left = unchanged;
    std::function<void(Scene&)> before = {}; // what is there besides
};

class FailureSweep : public testing::Test {
  protected:
    FailureSweep() {
        platform::setMessageBoxHandler([this](const std::string& text, auto&, auto) {
            isTold = isTold || text == "std::bad_alloc";
            return platform::answerOk;
        });
    }
    ~FailureSweep() override {
        platform::setMessageBoxHandler({});
        EXPECT_FALSE(isTold);
    }
    bool isTold = false; // whether somebody was told of an end of memory, which is a refusal like others

    void sweep(const std::vector<Operation>& operations) {
        Scene scene;
        for (const Operation& operation : operations) {
            SCOPED_TRACE(operation.name);
            const auto prepare = [&] {
                scene.set();
                if (operation.before) operation.before(scene);
            };
            prepare();
            std::string failed = scene.look();
            ASSERT_TRUE(operation.act(scene)) << scene.sheet.LastErrorText();
            const std::string done = scene.look();
            std::string_view reason;
            if (operation.left == emptied) {
                prepare();
                scene.sheet.DestroyDIB();
                failed = scene.look();
            }
            const auto check = [&](bool isDone, bool isFaulty) {
                const bool isKnown = !isFaulty || operation.left < part || (isDone && operation.left == part);
                EXPECT_TRUE(!isKnown || scene.look() == (isDone ? done : failed)) << (isDone ? "done" : "failed");
                EXPECT_EQ(reason.empty(), isDone) << reason;
                if (!isDone && operation.left != unchanged) prepare();
            };
            const auto attempt = [&] {
                const bool isDone = operation.act(scene);
                reason = scene.sheet.LastErrorText();
                return isDone;
            };
            Sweep{prepare, attempt, check}.run();
        }
    }
};

} // namespace

TEST_F(FailureSweep, AFailedDrawingLeavesHalfOfIt) {
    std::vector<Operation> operations;
    struct Drawing {
        const char* name;
        std::int32_t width, gray;
        float angle;
    };
    for (const bool isFriendly : {false, true})
        for (const int onto : {0, 1, 2})
            for (const Drawing& drawing : {Drawing{"plain", 0, gsclNone, 0},
                                           {"stretched", 9, gsclNone, 0},
                                           {"mirrored, gray", -6, gsclNTSCPAL, 0},
                                           {"turned", 0, gsclNone, 30},
                                           {"turned by 90", 0, gsclNone, 90}})
                operations.push_back(
                    {std::string(drawing.name) + " onto " + std::to_string(onto) + (isFriendly ? ", AlphaBlend" : ""),
                     [=](Scene& s) {
                         cPixSheet* const hosts[] = {&s.host, &s.sheet, nullptr};
                         return s.sheet.Render(onto == 2 ? s.canvas.dc : 0, 1, 2, drawing.width, 0, 0, 0, 0, 0, 60,
                                               true, true, hosts[onto], drawing.gray, 0, drawing.angle);
                     },
                     unchanged, [=](Scene& s) { s.sheet.isAlphaBlendFriendly(isFriendly); }});
    const auto add = [&](const char* name, const std::function<bool(Scene&)>& act) {
        operations.push_back({name, act});
    };
    add("shadow on a host", [](auto& s) { return s.sheet.RenderDropShadow_JIT(0, 1, 1, 2, 255, 50, 0, &s.host); });
    add("shadow on a context", [](auto& s) { return s.sheet.RenderDropShadow_JIT(s.canvas.dc, 1, 1, 2); });
    add("shadow on itself", [](auto& s) { return s.sheet.RenderDropShadow_JIT(0, 1, 1, 2, 255, 50, 0, &s.sheet); });
    for (const bool isFriendly : {false, true}) {
        const auto before = [=](Scene& s) { s.sheet.isAlphaBlendFriendly(isFriendly); };
        operations.push_back({"tiles on a host",
                              [](auto& s) { return s.sheet.TileImage(0, 0, 0, 12, 9, 60, 1, 1, 1, &s.host); },
                              partOrOther, before});
        operations.push_back({"tiles on a context",
                              [](auto& s) { return s.sheet.TileImage(s.canvas.dc, 0, 0, 12, 9, 60, 1, 1, 1); },
                              partOrOther, before});
        operations.push_back({"tiles on itself",
                              [](auto& s) { return s.sheet.TileImage(0, 0, 0, 6, 5, 60, 1, 1, 1, &s.sheet); },
                              unchanged, before});
    }
    add("resize", [](auto& s) { return s.sheet.Resize(-9, 7); });
    add("resample", [](auto& s) { return s.sheet.Resample(-9, 7); });
    add("trim", [](auto& s) { return s.sheet.TrimImage(trimAll); });
    add("mirror", [](auto& s) { return s.sheet.MirrorImage(true, true); });
    add("gray", [](auto& s) { return s.sheet.MakeGrayScale(gsclNTSCPAL); });
    add("inverse", [](auto& s) { return s.sheet.MakeImageInverse(); });
    add("lighter", [](auto& s) { return s.sheet.MakeLighterDarker(20); });
    add("transparent", [](auto& s) { return s.sheet.MakeTransparent(0, true); });
    add("blend", [](auto& s) { return s.sheet.BlendToColor(255); });
    add("checkerboard", [](auto& s) { return s.sheet.CreateCheckerBoard(2); });
    add("shadow", [](auto& s) {
        const auto shadow = s.sheet.CreateDropShadow(2);
        s.said = shadow ? std::to_string(shadow->Width()) : "";
        return shadow != nullptr;
    });
    operations.push_back({"new image",
                          [](auto& s) {
                              s.sheet.ManageOwnDC(true);
                              return s.sheet.InitializeDIB(3, 3);
                          },
                          emptied});
    add("context", [](auto& s) { return s.sheet.LoadDIBinDC(true) != 0; });
    add("bits", [](auto& s) { return s.sheet.GetDIBbits(s.array); });
    add("mask", [](auto& s) { return s.sheet.GetAlphaMask(s.array, false, false); });
    add("rows", [](auto& s) { return !s.sheet.GetRows().empty(); });
    const ByteArray bits(Bytes(120, 9));
    operations.push_back({"set rows", [&](auto& s) { return s.sheet.SetRows(bits.bytes(), 5, 6); }, emptied});
    operations.push_back({"own rows",
                          [](auto& s) {
                              const auto bytes = static_cast<std::size_t>(s.sheet.scanWidth()) * 2;
                              return s.sheet.SetRows({s.sheet.BitsPointer(), bytes}, s.sheet.Width(), 2);
                          },
                          emptied});
    add("set bits", [&](auto& s) { return s.sheet.SetDIBbits(bits, true, true, false); });
    // A file natively: fontconfig, which finds fonts by their names, does not survive a want of memory itself.
    const platform::StdFont font{platform::takesFontFiles() ? "/usr/share/wine/fonts/tahoma.ttf" : "Tahoma", 7};
    if (platform::canDrawText()) {
        operations.push_back({"text",
                              [&font](auto& s) {
                                  return s.sheet.DrawText_stdFont(0, font, "a b\nc", 0, 0, 9, 9, 255, 80, txtCenter,
                                                                  true, 20, &s.host);
                              },
                              partOrOther});
        operations.push_back({"text's size",
                              [&font](auto& s) {
                                  std::int32_t w = 0, h = 0;
                                  const bool isDone = s.sheet.MeasureText_stdFont(font, "a b\nc", w, h, 9, true);
                                  s.said = isDone ? std::to_string(w) + " " + std::to_string(h) : "";
                                  return isDone;
                              },
                              partOrOther});
    }
    sweep(operations);
}

TEST_F(FailureSweep, AFailedLoadLeavesHalfAPicture) {
    cPixSheet source;
    draw(source, 3, 2, AlphaComplex, Scene::pixelAt);
    const auto picture = platform::OleCreatePictureIndirect(source.Handle(), platform::PictureType::bitmap, false);
    const platform::UniqueHandle<platform::DeleteObject> mask(platform::CreateMonochromeBitmap(1, 1, nullptr));
    const platform::UniqueHandle<platform::DestroyIcon> icon(
        platform::CreateIconIndirect({.hbmMask = mask.get(), .hbmColor = source.Handle()}));
    const Bytes png = ::picture("png/interlaced-5x5.png");
    const std::string file = (sourceFolder() / "samples" / "pictures" / "sprite-4-bit.png").string();
    setResourceProvider({[&](auto&, auto) {
                             return platform::OleCreatePictureIndirect(source.Handle(), platform::PictureType::bitmap,
                                                                       false);
                         },
                         [&](auto&, auto&) { return Bytes(png); }});
    const ResourceId number(7), section("S");
    const std::vector<DroppedFile> files = {{"no such file.png"}, {"", [&](auto) { return Bytes(png); }}, {file}};
    Bytes names(20);
    names[0] = 20;
    names.insert(names.end(), file.begin(), file.end());
    names.insert(names.end(), 2, 0);
    const auto pasted = [&](Scene& s) { s.clipboard.blocks = {{"CF_HDROP", names}}; };
    std::vector<Operation> operations = {
        {"picture", [&](auto& s) { return s.sheet.LoadPicture_StdPicture(picture.get()); }, emptied},
        {"handle", [&](auto& s) { return s.sheet.LoadPicture_ByHandle(source.Handle()); }, emptied},
        {"icon", [&](auto& s) { return s.sheet.LoadPicture_ByHandle(icon.get()); }, emptied},
        {"file", [&](auto& s) { return s.sheet.LoadPicture_File(file, 32, 32, true); }, emptied},
        {"resource", [&](auto& s) { return s.sheet.LoadPicture_Resource(number, 0); }, emptied},
        {"resource of bytes", [&](auto& s) { return s.sheet.LoadPicture_Resource(number, section); }, emptied},
        {"dropped name", [&](auto& s) { return s.sheet.LoadPicture_DropedFiles(files, 3, 32, 32, true); }, emptied},
        {"dropped contents", [&](auto& s) { return s.sheet.LoadPicture_DropedFiles(files, 2); }, emptied},
        {"pasted name", [&](auto& s) { return s.sheet.LoadPicture_PastedFiles(1); }, emptied, pasted},
        {"kept", [](auto& s) { return s.sheet.LoadPicture_FromOrignalFormat(); }, emptied},
        {"the kept bytes", [](auto& s) { return s.sheet.GetOrginalFormat(s.array); }},
        {"copy", [](auto& s) { return s.sheet.CopyImageTo(s.host, 0, 0, true), s.sheet.LastErrorText().empty(); },
         part},
    };
    // What copies leave on the clipboard, each block alone.
    Scene scene;
    scene.set();
    ASSERT_TRUE(scene.sheet.CopyToClipBoard());
    for (const auto& block : scene.clipboard.blocks)
        operations.push_back({"clipboard: " + block.format, [](auto& s) { return s.sheet.LoadPicture_ClipBoard(true); },
                              emptied, [block](Scene& s) { s.clipboard.blocks = {block}; }});
    sweep(operations);
    setResourceProvider({});
}

// Pictures of every kind that readers know: as many of tests/data/pictures as time allows.
TEST_F(FailureSweep, AFailedReaderLeavesHalfAPicture) {
    std::vector<std::filesystem::path> files;
    for (const char* folder : {"tests/data/pictures", "tests/data/metafiles", "fuzz/seeds/picture"})
        for (const auto& entry : std::filesystem::recursive_directory_iterator(sourceFolder() / folder))
            if (entry.is_regular_file() && entry.file_size() < 4000) files.push_back(entry.path());
    std::ranges::sort(files);
    const std::size_t step = isSlow ? 24 : 2;
    cPixSheet sheet;
    for (std::size_t i = 0; i < files.size(); i += files[i].string().find("pictures") != std::string::npos ? step : 1) {
        SCOPED_TRACE(files[i]);
        cPixSheet good, whole;
        const ByteArray array(readFile(files[i]));
        if (!good.LoadPicture_Stream(array, 0, 0, 0, 0, true) || good.Width() * good.Height() > 10'000) continue;
        LoadSystemPicture(array.bytes(), whole); // which may show what the reader has refused, in its own way
        const auto looksLike = [&](const cPixSheet& other) {
            return sheet.ImageType() == other.ImageType() && sheet.Alpha() == other.Alpha() &&
                   pixelsOf(sheet) == pixelsOf(other);
        };
        const auto check = [&](bool isLoaded, bool isFaulty) {
            ByteArray kept;
            EXPECT_EQ(sheet.GetOrginalFormat(kept), isLoaded);
            EXPECT_EQ(sheet.Handle() != 0, isLoaded);
            EXPECT_EQ(sheet.ImageType() != imgError, isLoaded);
            // In an icon file the next image serves where the best one cannot be had.
            const bool mayDiffer = isFaulty && (looksLike(whole) || files[i].extension() == ".ico");
            EXPECT_TRUE(!isLoaded || looksLike(good) || mayDiffer);
        };
        Sweep sweep{[&] { sheet.InitializeDIB(2, 2); },
                    [&] { return sheet.LoadPicture_Stream(array, 0, 0, 0, 0, true); }, check};
        sweep.mayLose =
            files[i].parent_path().filename() == "picture"; // the borrowed decoder does, when it is being made
        sweep.run();
        if (HasFailure()) return;
    }
}

TEST_F(FailureSweep, AFailedSaveCostsTheArrayOrTheOldFile) {
    const TemporaryFolder folder;
    const std::string name = folder.name(u8"gr\u00F6\u00DFe \u56FE.bin");
    const auto path = folder.path(u8"gr\u00F6\u00DFe \u56FE.bin");
    const IconEntrySize sizes[] = {{3, 3, 1}, {4, 4, 4}, {5, 2, 8}, {2, 2, 24}, {256, 1, 32}};
    const std::span<const IconEntrySize> bitmaps = std::span(sizes).first(4), compressed = std::span(sizes).last(1);
    using Save = std::function<bool(cPixSheet&, ByteArray&)>;
    const std::pair<const char*, Save> saves[] = {
        {"bmp", [](auto& s, auto& out) { return s.SaveToStream_Bitmap(out, true); }},
        {"bmp, flat", [](auto& s, auto& out) { return s.SaveToStream_Bitmap(out); }},
        {"tga", [](auto& s, auto& out) { return s.SaveToStream_TGA(out, true); }},
        {"tga, palette", [](auto& s, auto& out) { return s.SaveToStream_TGA(out, true, true); }},
        {"png", [](auto& s, auto& out) { return s.SaveToStream_PNG(out); }},
        {"jpg", [](auto& s, auto& out) { return s.SaveToStream_JPG(out, 60); }},
        {"jpg, best", [](auto& s, auto& out) { return s.SaveToStream_JPG(out, 95); }},
        {"gif", [](auto& s, auto& out) { return s.SaveToStream_GIF(out); }},
        {"gif, web-safe", [](auto& s, auto& out) { return s.SaveToStream_GIF(out, false); }},
        {"ico", [&](auto& s, auto& out) { return s.SaveToStream_ICO(out, {}, bitmaps) == 4; }},
    };
    std::vector<Operation> operations;
    const auto few = [](Scene& s) {
        draw(s.sheet, 5, 3, AlphaNone, [](unsigned x, unsigned) { return Scene::pixelAt(x, 3); });
    };
    const auto many = [](Scene& s) {
        draw(s.sheet, 19, 15, AlphaComplex, [](unsigned x, unsigned y) { return Scene::pixelAt(x * 19 + y, x + y); });
        for (const auto& [property, value] : std::initializer_list<std::pair<ePngProperties, PngValue>>{
                 {pngInterlaced, 1}, {pngFilterMethod, filterAdaptive}, {pngComment, std::string(300, 'n')}})
            s.sheet.PngPropertySet(property, value);
    };
    for (const auto& [what, save] : saves)
        for (const auto& [picture, before] : {std::pair<const char*, std::function<void(Scene&)>>{"", {}},
                                              {" of few colours", few},
                                              {" of many colours", many}})
            operations.push_back({what + std::string(picture),
                                  [&save = save](Scene& s) { return save(s.sheet, s.array); }, unchanged, before});
    operations.push_back(
        {"ico, compressed", [&](auto& s) { return s.sheet.SaveToStream_ICO(s.array, {}, compressed) == 1; }});
    operations.push_back({"clipboard", [](auto& s) { return s.sheet.CopyToClipBoard(); }});
    sweep(operations);

    cPixSheet sheet;
    draw(sheet, 2, 1, AlphaComplex, Scene::pixelAt);
    const Bytes old = {1, 2, 3};
    const auto prepare = [&] {
        std::error_code isMissing;
        std::filesystem::permissions(path, std::filesystem::perms::owner_write, isMissing);
        writeFile(path, old);
        std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    };
    const std::function<bool()> members[] = {
        [&] { return sheet.SaveToFile_PNG(name, false); },
        [&] { return sheet.SaveToFile_ICO(name, {}, false) == 1; },
        [&] { return sheet.SaveToFile_Bitmap(name, false, 0, false); },
        [&] { return sheet.SaveToFile_TGA(name, false, false, false, false); },
        [&] { return sheet.SaveToFile_JPG(name, 70, 0, false); },
        [&] { return sheet.SaveToFile_GIF(name, true, 128, false); },
    };
    for (const auto& save : std::span(members).first(isSlow ? 2 : 6)) {
        prepare();
        ASSERT_TRUE(save());
        const Bytes good = readFile(path);
        const auto check = [&](bool isSaved, bool) {
            EXPECT_EQ(readFile(path), isSaved ? good : old);
            EXPECT_TRUE(isSaved || (platform::GetFileAttributesW(name) & platform::fileAttributeReadonly) != 0);
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path(u8"")), {}), 1) << "left behind";
        };
        Sweep{prepare, save, check}.run({1});
    }

    // Under two names it is written over where it is: before anything is written there, it is the old one.
    const auto other = folder.path(u8"other.bin");
    std::filesystem::permissions(path, std::filesystem::perms::owner_write);
    std::filesystem::create_hard_link(path, other);
    long written = 0;
    const auto prepareTwo = [&] {
        writeFile(path, old);
        written = platform::callsMade(platform::SeamCall::writeFile);
    };
    prepareTwo();
    ASSERT_TRUE(members[2]());
    const Bytes good = readFile(path);
    const auto check = [&](bool isSaved, bool) {
        const Bytes now = readFile(path);
        const bool isWritten = platform::callsMade(platform::SeamCall::writeFile) != written;
        EXPECT_TRUE(isSaved ? now == good : now == old || isWritten);
        EXPECT_TRUE(readFile(other) == now) << "two files now";
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path(u8"")), {}), 2) << "left behind";
    };
    Sweep{prepareTwo, members[2], check}.run({1});
}

TEST_F(FailureSweep, AFailedHandingOutLeavesObjectsBehind) {
    std::vector<Operation> operations = {
        {"bitmap", [](auto& s) { return platform::DeleteObject(s.sheet.CreateBitmap(pictStraight)); }},
        {"flat bitmap", [](auto& s) { return platform::DeleteObject(s.sheet.CreateBitmap(pictFlat)); }},
        {"icon", [](auto& s) { return platform::DestroyIcon(s.sheet.CreateIcon(3, 3)); }},
        {"cursor", [](auto& s) { return platform::DestroyIcon(s.sheet.CreateCursor(1, 0)); }},
        {"picture", [](auto& s) { return s.sheet.CreateStdPicture() != nullptr; }},
        {"flat picture", [](auto& s) { return s.sheet.CreateStdPicture(pictFlat) != nullptr; }},
    };
    for (const std::int32_t style : {regionBounds, regionEnclosed, regionShaped})
        operations.push_back({"region " + std::to_string(style), [=](Scene& s) {
                                  const platform::UniqueRegion region(s.sheet.CreateRegion(style));
                                  platform::Rect box;
                                  if (platform::GetRgnBox(region.get(), box) != platform::RegionKind::error)
                                      s.said = std::to_string(box.right) + " " + std::to_string(box.bottom);
                                  return static_cast<bool>(region);
                              }});
    sweep(operations);
}
// SPDX-License-Identifier: MIT
