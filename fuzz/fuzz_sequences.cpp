// Sequences of calls on three instances, any of which a call may take twice, while calls of the system fail now and
// then. The input is a row of records of equal length: a call, and what it is given. After each call all three hold a
// whole image or none, and what failed has left what it should; at the end nothing is lost.
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

constexpr std::size_t recordBytes = 24, mostRecords = 40;

class Sequence {
  public:
    void play(Input record) {
        input = record;
        const std::uint8_t call = input.byte() % callCount, which = input.byte();
        cPixSheet& sheet = sheets[which % 3];
        other = &sheets[which / 3 % 3];
        for (std::size_t i = 0; i < 3; ++i)
            before[i] = Look(sheets[i]);
        const std::uint8_t fault = input.byte();
        bool mayChange = true;
        if (fault < 64)
            platform::armFault(static_cast<platform::SeamCall>(input.byte() % seamCalls), fault % 4,
                               fault % 8 < 4 ? 1 : -1);
        switch (call / 8) {
        case 0:
            mayChange = makeOrLoad(sheet, call % 8);
            break;
        case 1:
            mayChange = edit(sheet, call % 8);
            break;
        case 2:
            mayChange = draw(sheet, call % 8);
            break;
        default:
            mayChange = handOut(sheet, call % 8);
        }
        platform::disarmFaults();
        for (std::size_t i = 0; i < 3; ++i) {
            requireSound(sheets[i]);
            require(mayChange || Look(sheets[i]) == before[i]);
        }
        require(clipboard.opened == 0);
    }

  private:
    static constexpr std::uint8_t callCount = 32;
    static constexpr auto seamCalls = static_cast<std::uint8_t>(platform::SeamCall::count);

    // What an instance holds.
    struct Look {
        std::intptr_t handle = 0;
        eImageFormat type = imgError;
        AlphaTypeEnum alpha = AlphaNone;
        std::uint32_t checksum = 0;
        Look() = default;
        explicit Look(const cPixSheet& sheet)
            : handle(sheet.Handle()), type(sheet.ImageType()), alpha(sheet.Alpha()), checksum(crc32(0, pixels(sheet))) {
        }
        bool operator==(const Look&) const = default;
    };

    std::int32_t n() { return input.number(); }
    // Huge ones stay, since they are refused.
    std::int32_t side() {
        const std::int32_t value = n();
        return value > 1000 || value < -1000 ? value : value % 300;
    }
    bool coin() { return input.byte() % 2 != 0; }
    float real() {
        const std::int32_t value = n();
        return value > -1000 && value < 1000 ? static_cast<float>(value) / 2 : std::bit_cast<float>(value);
    }
    // Of an instance, of the canvas, of nothing.
    std::intptr_t dc() {
        const std::uint8_t kind = input.byte();
        return kind < 64 ? other->LoadDIBinDC(true) : kind < 224 ? canvas.dc : n();
    }
    cPixSheet* host() { return coin() ? other : nullptr; }
    // The pixels of an instance, as they lie there, what was saved last, or a file with a few bytes changed.
    ByteArray bytes() {
        const std::uint8_t kind = input.byte();
        if (kind < 32 && other->Handle() != 0)
            return ByteArray::borrow(other->BitsPointer(), {n(), static_cast<std::uint32_t>(pixelCount(*other) * 4)});
        if (kind < 160) return saved;
        Dice dice(kind * 256U + input.byte());
        Bytes file(saved.bytes().begin(), saved.bytes().end());
        mutatePicture(file, dice);
        return ByteArray(file.size() < 20000 ? file : Bytes(), coin() ? 0 : n() % 1000);
    }

    // Each of these says whether an image may have changed.

    bool makeOrLoad(cPixSheet& sheet, int call) {
        bool done = true;
        switch (call) {
        case 0:
            done = sheet.InitializeDIB(side(), side());
            break;
        case 1:
            done = input.fill(sheet, 48);
            break;
        case 2:
            done = sheet.LoadPicture_Stream(bytes(), n(), n(), n() % 100, n(), coin(), n());
            break;
        case 3:
            if (const bool had = sheet.Handle() != 0; !sheet.LoadPicture_FromOrignalFormat(n(), n(), n())) return had;
            break;
        case 4:
            done = sheet.LoadPicture_ClipBoard(coin());
            break;
        case 5:
            done = sheet.LoadPicture_ByHandle(coin() ? other->Handle() : n());
            break;
        case 6:
            coin() ? sheet.DestroyDIB() : sheet.EraseDIB();
            break;
        default:
            sheet.SwapDIBs(other);
        }
        require(done || sheet.Handle() == 0); // the old image goes in every case
        return true;
    }

    bool edit(cPixSheet& sheet, int call) {
        TrimRectangle kept;
        switch (call) {
        case 0:
            return sheet.Resize(side(), side());
        case 1:
            return sheet.TrimImage(n(), coin(), &kept);
        case 2:
            return sheet.SetDIBbits(coin() ? block : bytes(), coin(), coin(), coin(), coin(), n(), n(), n(), n());
        case 3:
            return sheet.SetPixel(n(), n(), n(), n(), coin()) != nullptr;
        case 4:
            return sheet.CreateCheckerBoard(n(), n(), n());
        case 5:
            switch (input.byte() % 6) {
            case 0:
                return sheet.MakeGrayScale(n());
            case 1:
                return sheet.MakeImageInverse();
            case 2:
                return sheet.MakeLighterDarker(real());
            case 3:
                return sheet.MakeTransparent(n(), coin());
            case 4:
                return sheet.BlendToColor(n(), n());
            default:
                return sheet.MirrorImage(coin(), coin());
            }
        case 6:
            sheet.CopyImageTo(*other, side(), side(), coin());
            return true;
        default:
            sheet.HighQualityInterpolation(coin());
            sheet.isAlphaBlendFriendly(coin());
            sheet.ManageOwnDC(coin());
            sheet.KeepGDIplusActive(coin());
            sheet.LoadDIBinDC(coin());
            return false;
        }
    }

    bool draw(cPixSheet& sheet, int call) {
        constexpr const char* texts[] = {"", "a", "Office\tsheet", "\xD7\x90 1\r\n2",
                                         "\xF0\x9F\x98\x80 e\xCC\x81 \xFF"};
        const std::intptr_t onto = dc();
        switch (call) {
        case 0:
        case 1:
        case 2:
            sheet.Render(onto, n(), n(), n(), n(), n(), n(), n(), n(), coin() ? 100 : n(), true, coin(), host(),
                         coin() ? gsclNone : n(), coin() ? 0 : real(), coin() ? 0 : real(), coin());
            break;
        case 3:
            sheet.TileImage(onto, n(), n(), n(), n(), coin() ? 100 : n(), n(), n(), n(), host());
            break;
        case 4:
            sheet.RenderDropShadow_JIT(onto, n(), n(), n(), n(), n(), real(), host());
            break;
        case 5:
        case 6: {
            const platform::StdFont font{"Tahoma", 1.0 + input.byte() % 40, coin(), coin(), coin(), coin()};
            sheet.DrawText_stdFont(onto, font, texts[input.byte() % std::size(texts)], n(), n(), n(), n(), n(),
                                   coin() ? 100 : n(), n(), coin(), coin() ? 0 : real(), host());
            break;
        }
        default:
            if (const auto shadow = sheet.CreateDropShadow(n(), n())) shadow->SwapDIBs(other);
        }
        return true;
    }

    bool handOut(cPixSheet& sheet, int call) {
        switch (call) {
        case 0: {
            const platform::UniqueRegion region(sheet.CreateRegion(n(), input.byte()));
            require(region.get() == 0 || sheet.Handle() != 0);
            return false;
        }
        case 1:
            save(sheet);
            return false;
        case 2:
            save(sheet);
            return false;
        case 3:
            return sheet.CopyToClipBoard(), false;
        case 4:
            sheet.GetDIBbits(block, coin(), coin(), coin(), coin(), coin(), n(), n(), n(), n(), coin());
            return false;
        case 5:
            sheet.GetAlphaMask(block, coin(), coin(), coin(), n(), n(), n(), n());
            return false;
        case 6:
            if (coin()) {
                const platform::UniqueBitmap bitmap(sheet.CreateBitmap(n(), n()));
                return other->LoadPicture_ByHandle(bitmap.get()), true;
            } else {
                const platform::UniqueIcon icon(coin() ? sheet.CreateIcon(side(), side())
                                                       : sheet.CreateCursor(n(), n(), side(), side()));
                return other->LoadPicture_ByHandle(icon.get()), true;
            }
        default: {
            const auto picture = sheet.CreateStdPicture(n(), n());
            if (picture) picture->Render(dc(), n(), n(), n(), n());
            return other->LoadPicture_StdPicture(picture.get()), true;
        }
        }
    }

    void save(const cPixSheet& sheet) {
        const ByteArray kept = saved;
        const IconEntrySize sizes[] = {{side(), side(), n()}, {input.byte() % 64, input.byte() % 64, 8}};
        const cPixSheet* const sources[] = {&sheet, other};
        bool done = false;
        switch (input.byte() % 6) {
        case 0:
            done = sheet.SaveToStream_PNG(saved);
            break;
        case 1:
            done = sheet.SaveToStream_GIF(saved, coin(), input.byte());
            break;
        case 2:
            done = sheet.SaveToStream_JPG(saved, n());
            break;
        case 3:
            done = sheet.SaveToStream_Bitmap(saved, coin(), n());
            break;
        case 4:
            done = sheet.SaveToStream_TGA(saved, coin(), coin(), coin());
            break;
        default:
            done = sheet.SaveToStream_ICO(saved, std::span(sources).first(input.byte() % 3),
                                          std::span(sizes).first(input.byte() % 3)) != 0;
        }
        require(done == sheet.LastErrorText().empty() && (done || std::ranges::equal(kept.bytes(), saved.bytes())));
    }

    Input input{nullptr, 0};
    test::MemoryClipboard clipboard;
    test::Canvas canvas{37, 21, 24};
    cPixSheet sheets[3];
    cPixSheet* other = nullptr;
    Look before[3];
    ByteArray saved, block;
};

} // namespace

// Records come, go and change places; one changes a byte or all of them.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t bytes, std::size_t most, unsigned seed) {
    return mutateInput(data, bytes, most, seed, [](Bytes& records, Dice& dice) {
        std::vector<Bytes> parts;
        for (std::size_t at = 0; at + recordBytes <= records.size(); at += recordBytes)
            parts.emplace_back(records.begin() + static_cast<std::ptrdiff_t>(at),
                               records.begin() + static_cast<std::ptrdiff_t>(at + recordBytes));
        if (parts.size() < 4 || dice.oneIn(3))
            parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(dice.below(parts.size() + 1)),
                         dice.noise(recordBytes));
        if (dice.oneIn(2)) dice.shuffle(parts);
        if (dice.oneIn(2) && !parts.empty()) parts[dice.below(parts.size())][dice.below(recordBytes)] = dice.byte();
        records.clear();
        for (const Bytes& part : parts)
            append(records, part);
    });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    const platform::PretendedVersion windows2000({.dwPlatformId = 2, .dwMajorVersion = 5}); // has AlphaBlend
    const std::size_t handles = platform::openHandles();
    {
        Sequence sequence;
        for (std::size_t at = 0; at + recordBytes <= bytes && at < mostRecords * recordBytes; at += recordBytes)
            sequence.play(Input(data + at, recordBytes));
    }
    require(platform::openHandles() == handles);
    return 0;
}
