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

namespace {

using platform::UniqueBitmap, platform::UniqueIcon, platform::UniqueRegion;

constexpr std::size_t recordBytes = 24, mostRecords = 40;

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
    }
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
        return sheet->SaveToStream_ICO(saved, std::span(sources).first(input.byte() % 3), chosen) != 0;
    }
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
    bool took(bool) const { return true; }
};

// Any argument, whatever its type.
struct Any {
    Stage& stage;
    operator std::int32_t() const { return stage.input.number(); }
    operator std::uint8_t() const { return stage.input.byte(); }
    operator bool() const { return stage.input.byte() % 2 != 0; }
    operator float() const {
        const std::int32_t value = stage.input.number();
        return value > -1000 && value < 1000 ? static_cast<float>(value) / 2 : std::bit_cast<float>(value);
    }
};

// Each answers whether the image of one of the two may have changed.
constexpr bool (*calls[])(Stage&, Any) = {
    [](Stage& s, Any a) { return s.replaced(s.sheet->InitializeDIB(a, a)); },
    [](Stage& s, Any) { return s.replaced(s.input.fill(*s.sheet, 48)); },
    [](Stage& s, Any a) { return s.replaced(s.sheet->LoadPicture_Stream(s.bytes(), a, a, 0, 0, a, a)); },
    [](Stage& s, Any a) { return s.replaced(s.sheet->LoadPicture_Stream(s.bytes(), 0, 0, a, a, a)); },
    [](Stage& s, Any a) { return s.drawn(s.sheet->LoadPicture_FromOrignalFormat(a, a, a)); },
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

    [](Stage& s, Any a) { return s.unchanged(UniqueRegion(s.sheet->CreateRegion(a, a)).get() != 0); },
    [](Stage& s, Any) { return s.unchanged(s.sheet->SaveToStream_PNG(s.saved)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToStream_GIF(s.saved, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToStream_JPG(s.saved, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToStream_Bitmap(s.saved, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->SaveToStream_TGA(s.saved, a, a, a)); },
    [](Stage& s, Any) { return s.unchanged(s.saveIcons()); },
    [](Stage& s, Any) { return s.unchanged(s.sheet->CopyToClipBoard()); },
    [](Stage& s, Any) { return s.spoilClipboard(); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->GetDIBbits(s.block, a, a, a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->GetDIBbits(s.block, a, a, a, a, a, a, a, a, a, a)); },
    [](Stage& s, Any a) { return s.unchanged(s.sheet->GetAlphaMask(s.block, a, a, a, a, a, a, a)); },
    [](Stage& s, Any a) {
        return s.took(s.other->LoadPicture_ByHandle(UniqueBitmap(s.sheet->CreateBitmap(a, a)).get()));
    },
    [](Stage& s, Any a) { return s.took(s.other->LoadPicture_ByHandle(UniqueIcon(s.sheet->CreateIcon(a, a)).get())); },
    [](Stage& s, Any a) {
        return s.took(s.other->LoadPicture_ByHandle(UniqueIcon(s.sheet->CreateCursor(a, a)).get()));
    },
    [](Stage& s, Any a) { return s.took(s.other->LoadPicture_StdPicture(s.sheet->CreateStdPicture(a, a).get())); },
};

// What an instance holds.
struct Look {
    std::intptr_t handle;
    eImageFormat type;
    AlphaTypeEnum alpha;
    std::uint32_t checksum;
    bool operator==(const Look&) const = default;
};
Look lookAt(const cPixSheet& sheet) {
    return {sheet.Handle(), sheet.ImageType(), sheet.Alpha(), crc32(0, pixels(sheet))};
}

void play(Stage& stage, const Input& record) {
    stage.input = record;
    const auto call = calls[stage.input.byte() % std::size(calls)];
    const std::uint8_t which = stage.input.byte(), fault = stage.input.byte();
    stage.sheet = &stage.sheets[which % 3];
    stage.other = &stage.sheets[which / 3 % 3];
    const Look before[] = {lookAt(stage.sheets[0]), lookAt(stage.sheets[1]), lookAt(stage.sheets[2])};
    const ByteArray saved = stage.saved;
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
    require(stage.sheet->LastErrorText().empty() || std::ranges::equal(saved.bytes(), stage.saved.bytes()));
    require(stage.clipboard.opened == 0);
}

} // namespace

// Records come, go and change places; one changes a byte.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t bytes, std::size_t most, unsigned seed) {
    return mutateInput(data, bytes, most, seed, [](Bytes& all, Dice& dice) {
        std::vector<Bytes> records(all.size() / recordBytes);
        for (std::size_t i = 0; i < records.size(); ++i)
            append(records[i], std::span(all).subspan(i * recordBytes, recordBytes));
        if (records.size() < 4 || dice.oneIn(3)) records.push_back(dice.noise(recordBytes));
        for (std::size_t moves = dice.below(4); moves > 0; --moves)
            dice.shuffle(records);
        if (!records.empty()) records[dice.below(records.size())][dice.below(recordBytes)] = dice.byte();
        all.clear();
        for (const Bytes& record : records)
            append(all, record);
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
