// Byte arrays in and out, typed and as scripts have them.
#include "Pictures.h"
#include "Server.h"
#include "support/SourceFolder.h"
#include <numeric>

namespace pixkit::test {

class Arrays : public ComTest {
  protected:
    // A PNG file: what a load takes.
    std::vector<std::uint8_t> png = readFile((sourceFolder() / "samples/pictures/sprite-4-bit.png").make_preferred());

    bool load(SAFEARRAY** array, LONG start = 0, LONG length = 0) {
        VARIANT_BOOL loaded = VARIANT_FALSE;
        EXPECT_EQ(sheet->LoadPicture_Stream(array, 32, 32, start, length, VARIANT_FALSE, 32, &loaded), S_OK);
        return loaded == VARIANT_TRUE;
    }
    bool lateLoad(VARIANT stream) {
        Variant loaded;
        EXPECT_EQ(call(sheet.get(), L"LoadPicture_Stream", {stream}, &loaded), S_OK);
        return loaded.vt == VT_BOOL && loaded.boolVal == VARIANT_TRUE;
    }
    bool save(SAFEARRAY** array) {
        VARIANT_BOOL saved = VARIANT_FALSE;
        EXPECT_EQ(sheet->SaveToStream_Bitmap(array, VARIANT_FALSE, 0, &saved), S_OK);
        return saved == VARIANT_TRUE;
    }
    LONG width() {
        LONG value = 0;
        sheet->get_Width(&value);
        return value;
    }
};

SAFEARRAY* variantsOf(const std::vector<std::uint8_t>& bytes) {
    SAFEARRAY* const array = ::SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(bytes.size()));
    auto* const elements = static_cast<VARIANT*>(array->pvData);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        elements[i] = i % 2 == 0 ? number(bytes[i]) : real(bytes[i]);
    return array;
}

// Rows of the array are the image's width, height, depth and whether it is a PNG; its columns are the images.
TEST_F(Arrays, IconSizesComeInAnyFormOfLongArray) {
    // 1 x 1 and 2 x 1 pixels of 24 bits.
    const auto image = [](std::uint8_t width) {
        std::vector<std::uint8_t> bitmap(40 + 8);
        bitmap[0] = 40, bitmap[4] = width, bitmap[8] = 2, bitmap[14] = 24;
        return bitmap;
    };
    std::vector<std::uint8_t> icon = {0, 0, 1, 0, 2, 0};
    for (const std::uint8_t width : {std::uint8_t{1}, std::uint8_t{2}}) {
        const std::uint8_t offset = static_cast<std::uint8_t>(38 + 48 * (width - 1));
        icon.insert(icon.end(), {width, 1, 0, 0, 0, 0, 0, 0, 48, 0, 0, 0, offset, 0, 0, 0});
    }
    for (const std::uint8_t width : {std::uint8_t{1}, std::uint8_t{2}}) {
        const auto bitmap = image(width);
        icon.insert(icon.end(), bitmap.begin(), bitmap.end());
    }
    Bytes file(icon);
    VARIANT_BOOL loaded = VARIANT_FALSE;
    ASSERT_EQ(sheet->LoadPicture_Stream(&file.array, 2, 1, 0, 0, VARIANT_TRUE, 32, &loaded), S_OK);
    ASSERT_EQ(width(), 2);

    Bytes longs(3, 5, VT_I4);
    SAFEARRAY* none = nullptr;
    Variant empty, variants;
    variants.vt = VT_ARRAY | VT_VARIANT;
    variants.parray = ::SafeArrayCreateVector(VT_VARIANT, 0, 2);
    for (const VARIANT& form :
         {typed(VT_ARRAY | VT_I4, &longs.array), typed(VT_ARRAY | VT_I4, &none), variable(empty), variable(variants)}) {
        Variant count;
        EXPECT_EQ(call(sheet.get(), L"SourceIconSizes", {form}, &count), S_OK);
        EXPECT_EQ(count.lVal, 2);
        SAFEARRAY* const sizes = form.vt == (VT_BYREF | VT_VARIANT) ? form.pvarVal->parray : *form.pparray;
        EXPECT_EQ(boundsOf(sizes), (std::vector<std::pair<LONG, LONG>>{{0, 3}, {0, 1}}));
        const bool areVariants = sizes->cbElements == sizeof(VARIANT);
        for (LONG i = 0; i < 8; ++i) {
            constexpr LONG expected[] = {1, 1, 24, 0, 2, 1, 24, 0};
            EXPECT_EQ(areVariants ? static_cast<VARIANT*>(sizes->pvData)[i].lVal : static_cast<LONG*>(sizes->pvData)[i],
                      expected[i]);
        }
    }
    ::SafeArrayDestroy(none);
    LONG count = 7;
    Bytes bytes(8);
    EXPECT_EQ(sheet->SourceIconSizes(&bytes.array, &count), S_OK);
    EXPECT_EQ(count, 0) << "elements of another type";
    ::SafeArrayLock(longs.array);
    EXPECT_EQ(sheet->SourceIconSizes(&longs.array, &count), S_OK);
    EXPECT_EQ(count, 0) << "locked";
    ::SafeArrayUnlock(longs.array);
    EXPECT_EQ(sheet->SourceIconSizes(nullptr, &count), E_POINTER);
    ASSERT_TRUE(makeImage(1, 1));
    EXPECT_EQ(sheet->SourceIconSizes(&longs.array, &count), S_OK);
    EXPECT_EQ(count, 0) << "no icon";
    EXPECT_EQ(boundsOf(longs.array).size(), 2u) << "lost";
}

TEST_F(Arrays, EveryFormOfByteArrayLoadsTheSamePicture) {
    ASSERT_GT(png.size(), 57u);
    Bytes plain(png);
    ASSERT_TRUE(load(&plain.array));
    const LONG expected = width();
    ASSERT_GT(expected, 0);

    SAFEARRAY* variants = variantsOf(png);
    VARIANT held = arrayValue(VT_UI1, plain.array), heldVariants = arrayValue(VT_VARIANT, variants);
    VARIANT nested = typed(VT_ARRAY | VT_UI1, &plain.array);
    const struct {
        const char* form;
        VARIANT value;
    } rows[] = {
        {"bytes", arrayValue(VT_UI1, plain.array)},
        {"bytes by reference", typed(VT_ARRAY | VT_UI1, &plain.array)},
        {"variable with bytes", variable(held)},
        {"variable with a reference to bytes", variable(nested)},
        {"variants", arrayValue(VT_VARIANT, variants)},
        {"variants by reference", typed(VT_ARRAY | VT_VARIANT, &variants)},
        {"variable with variants", variable(heldVariants)},
    };
    for (const auto& row : rows) {
        sheet->DestroyDIB();
        EXPECT_TRUE(lateLoad(row.value)) << row.form;
        EXPECT_EQ(width(), expected) << row.form;
    }
    EXPECT_EQ(contentOf(plain.array), png);
    EXPECT_EQ(::SafeArrayDestroy(variants), S_OK) << "still locked";
}

TEST_F(Arrays, OffsetArraysAreAddressedByTheirOwnIndexes) {
    std::vector<std::uint8_t> padded(10, 0xEE);
    padded.insert(padded.end(), png.begin(), png.end());
    Bytes array(padded, 100);
    EXPECT_FALSE(load(&array.array));
    EXPECT_TRUE(load(&array.array, 110));
}

TEST_F(Arrays, BytesAreBorrowedSoALockedOrFixedArrayCanStillBeRead) {
    Bytes array(png);
    ::SafeArrayLock(array.array);
    EXPECT_TRUE(load(&array.array));
    EXPECT_EQ(array.array->cLocks, 1u);
    ::SafeArrayUnlock(array.array);
    array.array->fFeatures |= FADF_FIXEDSIZE;
    EXPECT_TRUE(load(&array.array));
    array.array->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
}

TEST_F(Arrays, UnfitArraysAreRefusedAndNothingIsLost) {
    ASSERT_TRUE(makeImage(3, 2));
    const struct {
        const char* form;
        ULONG count;
        VARTYPE type;
        USHORT feature;
        bool locked;
    } rows[] = {
        {"locked", 8, VT_UI1, 0, true},
        {"fixed", 8, VT_UI1, FADF_FIXEDSIZE, false},
        {"static", 8, VT_UI1, FADF_STATIC, false},
        {"Long elements", 8, VT_I4, 0, false},
        {"Variant elements", 8, VT_VARIANT, 0, false},
        {"signed elements", 8, VT_I1, 0, false},
    };
    for (const auto& row : rows) {
        Bytes array(row.count, 0, row.type);
        const auto* const before = array.array;
        array.array->fFeatures |= row.feature;
        if (row.locked) ::SafeArrayLock(array.array);
        EXPECT_FALSE(save(&array.array)) << row.form;
        EXPECT_EQ(array.array, before) << row.form;
        if (row.type != VT_UI1) {
            EXPECT_FALSE(load(&array.array)) << row.form;
            EXPECT_EQ(width(), 0) << row.form << ": a load that is refused empties the instance";
            ASSERT_TRUE(makeImage(3, 2));
        }
        if (row.locked) ::SafeArrayUnlock(array.array);
        array.array->fFeatures &= static_cast<USHORT>(~row.feature);
    }
    Bytes longs(8, 0, VT_I4);
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_Stream", {typed(VT_ARRAY | VT_I4, &longs.array)}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(width(), 3);
}

TEST_F(Arrays, AnArrayLaidOverThePixelsIsNeitherFreedNorCleared) {
    ASSERT_TRUE(makeImage(3, 2));
    setPixel(2, 1, 0x0000FF);
    LONG_PTR bits = 0;
    sheet->get_BitsPointer(&bits);
    SAFEARRAY overlay{}; // as callers make them to work on pixels directly
    overlay.cDims = 1;
    overlay.cbElements = 1;
    overlay.pvData = reinterpret_cast<void*>(bits);
    overlay.rgsabound[0].cElements = 24;
    SAFEARRAY* array = &overlay;
    VARIANT_BOOL done = VARIANT_TRUE;
    EXPECT_EQ(sheet->GetDIBbits(&array, 0, -1, -1, -1, -1, 0, 0, 0, 0, -1, &done), S_OK);
    EXPECT_EQ(done, VARIANT_FALSE);
    EXPECT_FALSE(save(&array));
    EXPECT_EQ(array, &overlay);
    EXPECT_EQ(pixel(2, 1), 0x0000FF);
    EXPECT_EQ(sheet->SetDIBbits(&array, -1, -1, -1, -1, 0, 0, 0, 0, &done), S_OK);
    EXPECT_EQ(done, VARIANT_TRUE);
    EXPECT_EQ(pixel(2, 1), 0x0000FF);
}

TEST_F(Arrays, OneElementAndEmptyArraysAreReadNotOverrun) {
    ASSERT_TRUE(makeImage(3, 2));
    for (const ULONG count : {0u, 1u}) {
        Bytes array(count);
        VARIANT_BOOL set = VARIANT_TRUE;
        EXPECT_EQ(sheet->SetDIBbits(&array.array, -1, -1, -1, -1, 0, 0, 0, 0, &set), S_OK);
        EXPECT_EQ(set, VARIANT_FALSE);
        EXPECT_FALSE(load(&array.array));
        ASSERT_TRUE(makeImage(3, 2));
        EXPECT_TRUE(save(&array.array)) << "replaced by the file";
        EXPECT_EQ(contentOf(array.array).size(), 54u + 2 * 12);
    }
    SAFEARRAY* none = nullptr;
    EXPECT_FALSE(load(&none));
}

TEST_F(Arrays, PixelsComeInOneOrTwoDimensionsAndGoBackIn) {
    ASSERT_TRUE(makeImage(3, 2));
    setPixel(2, 0, 0x0000FF);
    for (const VARIANT_BOOL as2d : {VARIANT_TRUE, VARIANT_FALSE}) {
        Bytes bits;
        VARIANT_BOOL done = VARIANT_FALSE;
        EXPECT_EQ(sheet->GetDIBbits(&bits.array, as2d, -1, -1, -1, -1, 0, 0, 0, 0, -1, &done), S_OK);
        EXPECT_EQ(done, VARIANT_TRUE);
        using Bounds = std::vector<std::pair<LONG, LONG>>;
        EXPECT_EQ(boundsOf(bits.array), as2d ? (Bounds{{0, 11}, {0, 1}}) : Bounds({{0, 23}}));
        if (as2d) { // byte 10 of row 1, the top one: red of pixel 2
            LONG index[] = {10, 1};
            BYTE value = 0;
            ::SafeArrayGetElement(bits.array, index, &value);
            EXPECT_EQ(value, 255);
        }
        sheet->EraseDIB();
        EXPECT_EQ(pixel(2, 0), 0);
        Variant set;
        EXPECT_EQ(call(sheet.get(), L"SetDIBbits", {typed(VT_ARRAY | VT_UI1, &bits.array)}, &set), S_OK);
        EXPECT_EQ(set.boolVal, VARIANT_TRUE);
        EXPECT_EQ(pixel(2, 0), 0x0000FF);
    }
}

TEST_F(Arrays, PixelsAskedForAgainLandInTheSameArrayWithCleanPadding) {
    ASSERT_TRUE(makeImage(3, 2));
    const auto get = [&](Bytes& bits, VARIANT_BOOL as2d) {
        VARIANT_BOOL done = VARIANT_FALSE;
        sheet->GetDIBbits(&bits.array, as2d, -1, 0, -1, -1, 0, 0, 0, 0, -1, &done); // 24 bits: 3 padding bytes a row
        return done == VARIANT_TRUE;
    };
    Bytes bits;
    ASSERT_TRUE(get(bits, VARIANT_TRUE));
    const auto fresh = contentOf(bits.array);
    const auto* const before = bits.array;
    std::fill_n(static_cast<std::uint8_t*>(bits.array->pvData), fresh.size(), std::uint8_t{0xEE});
    EXPECT_TRUE(get(bits, VARIANT_TRUE));
    EXPECT_EQ(bits.array, before);
    EXPECT_EQ(contentOf(bits.array), fresh);
    EXPECT_TRUE(get(bits, VARIANT_FALSE)) << "another shape";
    EXPECT_EQ(boundsOf(bits.array).size(), 1u);
    EXPECT_EQ(contentOf(bits.array), fresh);
    sheet->DestroyDIB();
    EXPECT_FALSE(get(bits, VARIANT_FALSE));
    EXPECT_EQ(contentOf(bits.array), fresh) << "a failed call lost what the array held";
}

TEST_F(Arrays, ScriptsGetArraysThatTheyCanIndex) {
    ASSERT_TRUE(makeImage(3, 2));
    setPixel(2, 0, 0x0000FF);
    Variant empty, variants;
    variants.vt = VT_ARRAY | VT_VARIANT; // Dim a(): an array that is not there yet
    variants.parray = nullptr;
    for (VARIANT* const held : {static_cast<VARIANT*>(&empty), static_cast<VARIANT*>(&variants)}) {
        Variant done;
        EXPECT_EQ(call(sheet.get(), L"GetDIBbits", {variable(*held)}, &done), S_OK);
        EXPECT_EQ(done.boolVal, VARIANT_TRUE);
        ASSERT_EQ(held->vt, VT_ARRAY | VT_VARIANT);
        LONG index[] = {10, 1};
        Variant value;
        ::SafeArrayGetElement(held->parray, index, &value);
        EXPECT_EQ(value.vt, VT_UI1);
        EXPECT_EQ(value.bVal, 255);
    }
    sheet->EraseDIB();
    EXPECT_EQ(call(sheet.get(), L"SetDIBbits", {variable(variants)}), S_OK);
    EXPECT_EQ(pixel(2, 0), 0x0000FF) << "what came out did not go back in";

    setPixel(2, 0, 0x00FF00);
    Variant again;
    EXPECT_EQ(call(sheet.get(), L"GetDIBbits", {variable(variants)}, &again), S_OK);
    LONG green[] = {9, 1};
    Variant value;
    ::SafeArrayGetElement(variants.parray, green, &value);
    EXPECT_EQ(value.bVal, 255) << "pixels asked for again in the same shape stayed the old ones";

    Variant kept; // nothing was kept by a load, so there is nothing to give
    EXPECT_EQ(call(sheet.get(), L"GetOrginalFormat", {variable(variants)}, &kept), S_OK);
    EXPECT_EQ(kept.boolVal, VARIANT_FALSE);
    EXPECT_TRUE((variants.vt & VT_ARRAY) == 0 || variants.parray != nullptr) << "an array that is not there";
}

TEST_F(Arrays, BytesThatPassForVariantsAreRefusedUnread) {
    ASSERT_TRUE(makeImage(3, 2));
    Bytes bytes(64);
    Variant lie;
    lie.vt = VT_ARRAY | VT_VARIANT;
    lie.parray = bytes.array;
    EXPECT_EQ(call(sheet.get(), L"SetDIBbits", {variable(lie)}), DISP_E_TYPEMISMATCH);
    lie.vt = VT_EMPTY;
}

TEST_F(Arrays, TypedVariablesKeepTheirType) {
    ASSERT_TRUE(makeImage(3, 2));
    Variant held, done;
    held.vt = VT_ARRAY | VT_UI1;
    held.parray = ::SafeArrayCreateVector(VT_UI1, 5, 1);
    EXPECT_EQ(call(sheet.get(), L"SaveToStream_Bitmap", {variable(held)}, &done), S_OK);
    EXPECT_EQ(held.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(contentOf(held.parray).size(), 54u + 2 * 12);
    // Nothing kept: the array becomes unallocated, and the variable must not point at one that is gone.
    EXPECT_EQ(call(sheet.get(), L"GetOrginalFormat", {variable(held)}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_FALSE);
    EXPECT_EQ(held.vt, VT_EMPTY);
}

TEST_F(Arrays, AFormatIsSavedWithoutAnArgumentOrItsDefault) {
    ASSERT_TRUE(makeImage(40, 30));
    setPixel(2, 0, 0x00FF80);
    const TemporaryFolder folder;
    const VARIANT no = number(0);
    const struct {
        std::wstring format;
        std::vector<VARIANT> defaults, others; // behind the array
        std::vector<VARIANT> byFile;           // behind the file's name, for the same as the defaults
        std::string begin;
    } rows[] = {
        {L"JPG", {number(70)}, {number(95)}, {number(70), number(0), no}, "\xFF\xD8\xFF\xE0"},
        {L"GIF", {number(-1), number(128), number(-1)}, {no}, {number(-1), number(128), no}, "GIF89a"},
    };
    for (const auto& row : rows) {
        const auto saved = [&](const std::vector<VARIANT>& behind) {
            Variant held, done;
            held.vt = VT_ARRAY | VT_UI1;
            held.parray = ::SafeArrayCreateVector(VT_UI1, 5, 1);
            std::vector<VARIANT> arguments = {variable(held)};
            arguments.insert(arguments.end(), behind.begin(), behind.end());
            EXPECT_EQ(call(sheet.get(), (L"SaveToStream_" + row.format).c_str(), arguments, &done), S_OK);
            EXPECT_EQ(done.boolVal, VARIANT_TRUE);
            return contentOf(held.parray);
        };
        const auto file = saved({});
        EXPECT_TRUE(std::equal(row.begin.begin(), row.begin.end(), file.begin(),
                               [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }));
        EXPECT_EQ(saved(row.defaults), file);
        EXPECT_NE(saved(row.others), file);
        const VARIANT name = text((folder.path(u8"") / row.format).c_str());
        std::vector<VARIANT> arguments = {name};
        arguments.insert(arguments.end(), row.byFile.begin(), row.byFile.end());
        Variant done;
        EXPECT_EQ(call(sheet.get(), (L"SaveToFile_" + row.format).c_str(), arguments, &done), S_OK);
        EXPECT_EQ(readFile(folder.path(u8"") / row.format), file);
    }
}

TEST_F(Arrays, ArraysPassedByValueAreNotReplacedUnderTheCaller) {
    ASSERT_TRUE(makeImage(3, 2));
    Bytes bytes(4);
    Variant variants;
    variants.vt = VT_ARRAY | VT_VARIANT;
    variants.parray = ::SafeArrayCreateVector(VT_VARIANT, 0, 4);
    ::SafeArrayLock(variants.parray);
    Variant done;
    const struct {
        const char* form;
        VARIANT value;
    } rows[] = {{"bytes by value", arrayValue(VT_UI1, bytes.array)},
                {"variants by value", arrayValue(VT_VARIANT, variants.parray)},
                {"locked variants", variable(variants)}};
    for (const auto& row : rows) {
        EXPECT_EQ(call(sheet.get(), L"SaveToStream_Bitmap", {row.value}, &done), S_OK) << row.form;
        EXPECT_EQ(done.boolVal, VARIANT_FALSE) << row.form;
    }
    EXPECT_EQ(boundsOf(bytes.array).front().second, 3);
    EXPECT_EQ(boundsOf(variants.parray).front().second, 3);
    ::SafeArrayUnlock(variants.parray);
}

TEST_F(Arrays, ElementsThatAreNoBytesAreATypeMismatch) {
    SAFEARRAY* array = variantsOf(png);
    auto* const elements = static_cast<VARIANT*>(array->pvData);
    elements[30] = text(L"thirty");
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_Stream", {typed(VT_ARRAY | VT_VARIANT, &array)}), DISP_E_TYPEMISMATCH);
    ::VariantClear(&elements[30]);
    elements[30] = number(256);
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_Stream", {typed(VT_ARRAY | VT_VARIANT, &array)}), DISP_E_OVERFLOW);
    EXPECT_EQ(::SafeArrayDestroy(array), S_OK) << "still locked";
}

} // namespace pixkit::test
