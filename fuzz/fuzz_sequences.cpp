// Sequences of calls on three instances, two of which a call may take, while calls of the system fail now and then. The
// input is a row of records of equal length: a call, and what it is given. After each call all three hold a whole image
// or none, and what failed has left what it should; at the end nothing is lost.
#include "mutators/pictures.h"
#include "platform/faults.h"
#include "platform/icons.h"
#include "platform/pictures.h"
#include "platform/regions.h"
#include "platform/text.h"
#include "render/Canvas.h"
#include "support/MemoryClipboard.h"
#include "targets.h"
#include <bit>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <tuple>
#include <unistd.h>

namespace {

using platform::UniqueBitmap, platform::UniqueIcon, platform::UniqueRegion;

constexpr std::size_t recordBytes = 24, mostRecords = 40;

// A folder in memory for one file and a link to it.
const std::filesystem::path folder = "/dev/shm/fuzz_sequences-" + std::to_string(getpid());

// The bytes of all files there; of links, too.
std::map<std::string, Bytes> lookAtFolder() {
    std::map<std::string, Bytes> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string kind = entry.is_symlink() ? "link " : "file ";
        files[kind + entry.path().filename().string()] = {std::istreambuf_iterator(file), {}};
    }
    return files;
}

// Everything that calls work on, and their arguments, taken from a record.
struct Stage {
    cPixSheet sheets[3];
    cPixSheet *sheet = sheets, *other = sheets; // the two of a call, or twice the same
    test::Canvas canvas{37, 21, 24};
    test::MemoryClipboard clipboard;
    ByteArray saved, block; // a file, pixels
    Input input{nullptr, 0};

    Stage() {
        for (cPixSheet& each : sheets)
            each.MaxPixels(mostPixels);
        std::filesystem::create_directory(folder);
        std::filesystem::create_symlink("file.cur", folder / "link.ico");
    }
    ~Stage() { std::filesystem::remove_all(folder); }
    // Of an instance, of the canvas, of nothing.
    std::intptr_t dc() {
        const std::uint8_t kind = input.byte();
        return kind < 64 ? other->LoadDIBinDC(true) : kind < 192 ? canvas.dc : input.number();
    }
    cPixSheet* host() { return input.byte() % 2 != 0 ? other : nullptr; }
    // The pixels of an instance where they lie, a file that was saved, or one like it.
    ByteArray bytes() {
        const std::uint8_t kind = input.byte();
        if (kind < 32 && other->Handle() != 0)
            return ByteArray::borrow(other->BitsPointer(), {kind, static_cast<std::uint32_t>(pixels(*other).size())});
        Dice dice(kind * 256U + input.byte());
        Bytes file(saved.bytes().begin(), saved.bytes().end());
        if (kind >= 160) mutatePicture(file, dice);
        return ByteArray(file.size() < 20000 ? file : Bytes(), kind % 8);
    }
    platform::StdFont font() {
        return {"Tahoma", 1.0 + input.byte() % 40, input.byte() % 2 != 0, input.byte() % 2 != 0};
    }
    std::string text() {
        constexpr const char* texts[] = {"", "Office\tsheet", "\xD7\x90 1\r\n2", "\xF0\x9F\x98\x80 e\xCC\x81 \xFF"};
        return texts[input.byte() % std::size(texts)];
    }
    std::string name() {
        constexpr const char* names[] = {"file.cur", "link.ico", "file.cur/none", "", "file.cur", "link.ico"};
        return folder / names[input.byte() % std::size(names)];
    }

    // Who fails says why, and nobody else.
    bool told(bool done) const {
        require(done == sheet->LastErrorText().empty());
        return done;
    }
    // The old image goes in every case.
    bool replaced(bool done) const {
        require(told(done) || sheet->Handle() == 0);
        return true;
    }
    bool drawn(bool done) const { return told(done) || true; }
    bool unchanged(bool done) const { return told(done) && false; }

    bool saveIcons() {
        const IconEntrySize sizes[] = {{input.byte(), input.byte(), input.number()}, {input.byte() % 64, 0, 8}};
        const cPixSheet* const sources[] = {sheet, other};
        const auto chosen = std::span(sizes).first(input.byte() % 3);
        const auto from = std::span(sources).first(input.byte() % 3);
        return (input.byte() % 2 != 0 ? sheet->SaveToFile_ICO(name(), from, false, chosen)
                                      : sheet->SaveToStream_ICO(saved, from, chosen)) != 0;
    }
    // Files that are dropped, or pasted: by names, and contents, which may fail to come.
    bool loadFile(const struct Any& a);
    bool spoilClipboard() {
        if (clipboard.blocks.empty()) return false;
        if (input.byte() % 8 == 0) {
            const ByteArray given = this->bytes();
            clipboard.blocks[0].bytes.assign(given.bytes().begin(), given.bytes().end());
        }
        Bytes& bytes = clipboard.blocks[input.byte() % clipboard.blocks.size()].bytes;
        if (input.byte() % 8 == 0) bytes.resize(input.byte());
        if (!bytes.empty()) bytes[static_cast<std::uint32_t>(input.number()) % bytes.size()] ^= 1 << input.byte() % 8;
        return false;
    }
};

// Any argument, whatever its type.
struct Any {
    Stage& stage;
    operator std::int32_t() const { return stage.input.number(); }
    operator std::uint8_t() const { return stage.input.byte(); }
    operator RowFormat() const { return static_cast<RowFormat>(stage.input.byte() % 4); }
    operator bool() const { return stage.input.byte() % 2 != 0; }
    operator float() const {
        const std::int32_t value = stage.input.number();
        return value > -1000 && value < 1000 ? static_cast<float>(value) / 2 : std::bit_cast<float>(value);
    }
};

bool Stage::loadFile(const Any& a) {
    const ByteArray made = bytes();
    const Bytes copy(made.bytes().begin(), made.bytes().end());
    const auto contents = [copy](std::uint64_t) { return copy.empty() ? throw 1 : copy; };
    clipboard.contents = {{name()}, {"", contents}, {name()}};
    const std::int32_t index = input.byte() % 5;
    if (a) return sheet->LoadPicture_DropedFiles(clipboard.contents, index, a, a, a, a);
    clipboard.blocks = {{"FileGroupDescriptorW", {}}};
    return sheet->LoadPicture_PastedFiles(index, a, a, a, a);
}

// Each answers whether the image of one of the two may have changed.
constexpr bool (*calls[])(Stage&, Any) = {
    [](Stage& s, Any a) { return s.replaced(s.sheet->InitializeDIB(a, a)); },
    [](Stage& s, Any) { return s.replaced(s.input.fill(*s.sheet, 48)); },
    [](Stage& s, Any a) { return s.replaced(s.sheet->LoadPicture_Stream(s.bytes(), a, a, 0, 0, a, a)); },
    [](Stage& s, Any a) { return s.replaced(s.sheet->LoadPicture_Stream(s.bytes(), 0, 0, a, a, a)); },
    [](Stage& s, Any a) { return s.drawn(s.sheet->LoadPicture_FromOrignalFormat(a, a, a)); },
    [](Stage& s, Any a) { return s.replaced(s.loadFile(a)); },
    [](Stage& s, Any a) { return s.replaced(s.sheet->LoadPicture_ClipBoard(a)); },
    [](Stage& s, Any a) { return s.replaced(s.sheet->LoadPicture_ByHandle(a ? s.other->Handle() : 4711)); },
    [](Stage& s, Any) { return s.sheet->DestroyDIB(), true; },
    [](Stage& s, Any) { return s.sheet->EraseDIB(), true; },
    [](Stage& s, Any) { return s.sheet->SwapDIBs(s.other), true; },
    [](Stage& s, Any a) { return s.sheet->CopyImageTo(*s.other, a, a, a), true; },
    [](Stage& s, Any a) { return s.sheet->HighQualityInterpolation(a), false; },
    [](Stage& s, Any a) { return s.sheet->isAlphaBlendFriendly(a), false; },
    [](Stage& s, Any a) { return s.sheet->ManageOwnDC(a), false; },
    [](Stage& s, Any a) { return s.sheet->LoadDIBinDC(a) && false; },

    [](Stage& s, Any a) { return s.told(s.sheet->Resize(a, a)); },
    [](Stage& s, Any a) { return s.told(s.sheet->TrimImage(a, a)); },
    [](Stage& s, Any a) { return s.told(s.sheet->SetDIBbits(s.block, a, a, a, a)); },
    [](Stage& s, Any a) { return s.told(s.sheet->SetDIBbits(s.bytes(), a, a, a, a, a, a, a, a)); },
    [](Stage& s, Any a) { return s.told(s.sheet->SetPixel(a, a, a, a, a) != nullptr); },
    [](Stage& s, Any a) { return s.told(s.sheet->CreateCheckerBoard(a, a, a)); },
    [](Stage& s, Any a) { return s.told(s.sheet->MakeGrayScale(a)); },
    [](Stage& s, Any) { return s.told(s.sheet->MakeImageInverse()); },
    [](Stage& s, Any a) { return s.told(s.sheet->MakeLighterDarker(a)); },
    [](Stage& s, Any a) { return s.told(s.sheet->MakeTransparent(a, a)); },
    [](Stage& s, Any a) { return s.told(s.sheet->BlendToColor(a, a)); },
    [](Stage& s, Any a) { return s.told(s.sheet->MirrorImage(a, a)); },

    [](Stage& s, Any a) { return s.drawn(s.sheet->Render(s.dc(), a, a, a, a, a, a, a, a, a, true, a, s.host())); },
    [](Stage& s, Any a) {
        return s.drawn(s.sheet->Render(0, a, a, a, a, a, a, a, a, 100, true, a, s.other, a, a, a, a));
    },
    [](Stage& s, Any a) { return s.drawn(s.sheet->TileImage(s.dc(), a, a, a, a, a, a, a, a, s.host())); },
    [](Stage& s, Any a) { return s.drawn(s.sheet->RenderDropShadow_JIT(s.dc(), a, a, a, a, a, a, s.host())); },
    [](Stage& s, Any a) {
        return s.drawn(s.sheet->DrawText_stdFont(s.dc(), s.font(), s.text(), a, a, a, a, a, a, a, a, a, s.host()));
    },
    [](Stage& s, Any a) { return s.drawn(s.sheet->DrawText_stdFont(0, s.font(), s.text(), a, a, a, a, a, 50, a, a)); },
    [](Stage& s, Any a) { return s.sheet->SwapDIBs(s.sheet->CreateDropShadow(a, a).get()), true; },

    [](Stage& s, Any a) {
        std::int32_t width = a, height = a;
        return s.sheet->ScaleImage(a, a, width, height, a), false;
    },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->UpdateLayeredWindow(s.input.number(), a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(UniqueRegion(s.sheet->CreateRegion(a, a)).get() != 0); },
    [](Stage& s, Any) { return s.unchanged(s.sheet->SaveToStream_PNG(s.saved)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToStream_GIF(s.saved, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToStream_JPG(s.saved, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToStream_Bitmap(s.saved, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToStream_TGA(s.saved, a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToFile_PNG(s.name(), a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToFile_GIF(s.name(), a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToFile_JPG(s.name(), a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToFile_Bitmap(s.name(), a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToFile_TGA(s.name(), a, a, a, a)); },
    [](Stage& s, Any) { return s.unchanged(s.saveIcons()); },
    [](Stage& s, Any) { return s.unchanged(s.sheet->CopyToClipBoard()); },
    [](Stage& s, Any) { return s.spoilClipboard(); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->GetDIBbits(s.block, a, a, a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->GetDIBbits(s.block, a, a, a, a, a, a, a, a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->GetAlphaMask(s.block, a, a, a, a, a, a, a)); },
    [](Stage& s, Any a) {
        return s.other->LoadPicture_ByHandle(UniqueBitmap(s.sheet->CreateBitmap(a, a)).get()), true;
    },
    [](Stage& s, Any a) {
        const UniqueIcon icon(a ? s.sheet->CreateIcon(a, a) : s.sheet->CreateCursor(a, a));
        return s.other->LoadPicture_ByHandle(icon.get()), true;
    },
    [](Stage& s, Any a) { return s.other->LoadPicture_StdPicture(s.sheet->CreateStdPicture(a, a).get()), true; },
    [](Stage& s, Any a) { return s.told(s.sheet->Resample(a, a, a, s.host())) || true; },
    [](Stage& s, Any a) { return s.replaced(s.sheet->SetRows(s.bytes().bytes(), a, a, a)); },
    [](Stage& s, Any a) { return s.replaced(s.sheet->SetRows(s.bytes().bytes(), a, a, a, std::uint8_t{a})); },
    [](Stage& s, Any a) { return s.unchanged(!s.sheet->GetRows(a).empty()); },
    [](Stage& s, Any) { return swap(*s.sheet, *s.other), true; },
};

// What an instance holds.
auto lookAt(const cPixSheet& sheet) {
    return std::tuple(sheet.Handle(), sheet.ImageType(), sheet.Alpha(), crc32(0, pixels(sheet)));
}

void play(Stage& stage, const Input& record) {
    stage.input = record;
    const auto call = calls[stage.input.byte() % std::size(calls)];
    const std::uint8_t which = stage.input.byte(), fault = stage.input.byte();
    stage.sheet = &stage.sheets[which % 3];
    stage.other = &stage.sheets[which / 3 % 3];
    const decltype(lookAt(stage.sheets[0])) before[] = {lookAt(stage.sheets[0]), lookAt(stage.sheets[1]),
                                                        lookAt(stage.sheets[2])};
    const ByteArray saved = stage.saved;
    const auto files = lookAtFolder();
    if (fault < 64)
        platform::armFault(
            static_cast<platform::SeamCall>(stage.input.byte() % static_cast<int>(platform::SeamCall::count)),
            fault % 4, fault % 8 < 4 ? 1 : -1);
    const bool mayChange = call(stage, {stage});
    platform::disarmFaults();
    for (std::size_t i = 0; i < 3; ++i) {
        const cPixSheet& sheet = stage.sheets[i];
        requireSound(sheet);
        require((mayChange && (&sheet == stage.sheet || &sheet == stage.other)) || lookAt(sheet) == before[i]);
    }
    if (!stage.sheet->LastErrorText().empty()) {
        require(std::ranges::equal(saved.bytes(), stage.saved.bytes()));
        require(fault < 64 ? std::ranges::includes(lookAtFolder(), files) : lookAtFolder() == files);
    }
    require(stage.clipboard.opened == 0);
}

} // namespace

// Records come, go and change places; one changes a byte.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t bytes, std::size_t most, unsigned seed) {
    return mutateInput(data, bytes, most, seed, [](Bytes& all, Dice& dice) {
        std::vector<std::array<std::uint8_t, recordBytes>> records(all.size() / recordBytes);
        std::copy_n(all.data(), records.size() * recordBytes, reinterpret_cast<std::uint8_t*>(records.data()));
        if (records.size() < 4 || dice.oneIn(3))
            std::ranges::copy(dice.noise(recordBytes), records.emplace_back().begin());
        for (std::size_t moves = dice.below(4); moves > 0; --moves)
            dice.shuffle(records);
        if (!records.empty()) dice.anyOf(records)[dice.below(recordBytes)] = dice.byte();
        const auto* const first = reinterpret_cast<const std::uint8_t*>(records.data());
        all.assign(first, first + records.size() * recordBytes);
    });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    const platform::PretendedVersion windows2000({.dwPlatformId = 2, .dwMajorVersion = 5}); // has AlphaBlend
    const std::size_t handles = platform::openHandles();
    if (auto stage = std::make_unique<Stage>()) {
        for (std::size_t at = 0; at + recordBytes <= bytes && at < mostRecords * recordBytes; at += recordBytes)
            play(*stage, Input(data + at, recordBytes));
    }
    require(platform::openHandles() == handles);
    return 0;
}
// SPDX-License-Identifier: MIT
