// Callers that know names only, with values in every form in which scripts and hosts pass them.
#include "Server.h"

namespace pixkit::test {

using LateBound = ComTest;

TEST_F(LateBound, NumbersAndStringsOfAnyTypeAreTakenWhereATypedValueFits) {
    short small = 6;
    VARIANT held = number(7), byte;
    byte.vt = VT_UI1;
    byte.bVal = 5;
    VARIANT unsignedLong;
    unsignedLong.vt = VT_UI4;
    unsignedLong.ulVal = 9;
    VARIANT empty;
    ::VariantInit(&empty);
    const struct {
        const char* form;
        VARIANT value;
        LONG expected;
    } rows[] = {
        {"Long", number(3), 3},          {"Double, rounded to even", real(2.5), 2},
        {"String", text(L"12"), 12},     {"Byte", byte, 5},
        {"unsigned", unsignedLong, 9},   {"Integer by reference", typed(VT_I2, &small), 6},
        {"variable", variable(held), 7},
    };
    for (const auto& row : rows) {
        Variant made, width;
        EXPECT_EQ(call(sheet.get(), L"InitializeDIB", {row.value, number(1)}, &made), S_OK) << row.form;
        EXPECT_EQ(made.vt, VT_BOOL);
        EXPECT_EQ(made.boolVal, VARIANT_TRUE) << row.form;
        EXPECT_EQ(call(sheet.get(), L"Width", {}, &width), S_OK);
        EXPECT_EQ(width.lVal, row.expected) << row.form;
    }
    EXPECT_EQ(call(sheet.get(), L"InitializeDIB", {empty, number(1)}), S_OK); // Empty counts as 0, as everywhere
}

TEST_F(LateBound, NamesAreFoundInAnyCase) {
    EXPECT_EQ(call(sheet.get(), L"initializedib", {number(2), number(2)}), S_OK);
    Variant width;
    EXPECT_EQ(call(sheet.get(), L"WIDTH", {}, &width), S_OK);
    EXPECT_EQ(width.lVal, 2);
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_FromOrignalFormat"), S_OK);
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_FromOriginalFormat"), DISP_E_UNKNOWNNAME);
}

TEST_F(LateBound, OmittedAndNamedArgumentsGetTheirDefaults) {
    ASSERT_TRUE(makeImage(2, 2));
    Variant color;
    // AlphaValue defaults to 255, whether it is left out at the end, in the middle, or everything is named.
    EXPECT_EQ(call(sheet.get(), L"SetPixel", {number(0), number(0), number(0x0A0B0C)}), S_OK);
    EXPECT_EQ(call(sheet.get(), L"SetPixel",
                   {number(1), number(0), number(0x0A0B0C), missing(), typed(VT_BOOL, &color.boolVal)}),
              S_OK);
    EXPECT_EQ(call(sheet.get(), L"SetPixel", {}, nullptr,
                   {{L"Color", number(0x0A0B0C)}, {L"y", number(1)}, {L"x", number(1)}}),
              S_OK);
    EXPECT_EQ(call(sheet.get(), L"SetPixel", {number(0), number(1)}, nullptr,
                   {{L"AlphaValue", number(128)}, {L"Color", number(255)}}),
              S_OK);
    for (const auto& [x, y, expected] : {std::tuple{0, 0, 0x0A0B0C}, {1, 0, 0x0A0B0C}, {1, 1, 0x0A0B0C}}) {
        EXPECT_EQ(pixel(x, y), expected) << x << ", " << y;
    }
    LONG alpha = 0, read = 0;
    sheet->GetPixel(0, 1, &alpha, nullptr, &read);
    EXPECT_EQ(alpha, 128);
}

TEST_F(LateBound, ByReferenceResultsComeBackInTheCallersOwnType) {
    ASSERT_TRUE(makeImage(1, 1));
    call(sheet.get(), L"SetPixel", {number(0), number(0), number(255), number(128)});
    LONG asLong = 0;
    short asInteger = 0;
    double asDouble = 0;
    VARIANT empty, old = text(L"17");
    ::VariantInit(&empty);
    for (const VARIANT& argument : {typed(VT_I4, &asLong), typed(VT_I2, &asInteger), typed(VT_R8, &asDouble),
                                    variable(empty), variable(old), number(0), missing()}) {
        Variant color;
        EXPECT_EQ(call(sheet.get(), L"GetPixel", {number(0), number(0), argument}, &color), S_OK);
        EXPECT_EQ(color.lVal, 255) << "type " << argument.vt;
    }
    EXPECT_EQ(asLong, 128);
    EXPECT_EQ(asInteger, 128);
    EXPECT_EQ(asDouble, 128);
    EXPECT_EQ(empty.lVal, 128);
    EXPECT_EQ(old.vt, VT_I4);
    EXPECT_EQ(old.lVal, 128);
    VARIANT flag = number(1);
    Variant stored;
    EXPECT_EQ(call(sheet.get(), L"GetPixel", {number(0), number(0), missing(), variable(flag)}, &stored), S_OK);
    EXPECT_EQ(stored.lVal, 128);
    EXPECT_EQ(flag.vt, VT_I4) << "a variable that nothing was written to changed its type";
}

TEST_F(LateBound, WrongCallsGetTheStandardErrorsAndTheOffendingArgument) {
    ASSERT_TRUE(makeImage(2, 2));
    VARIANT null;
    null.vt = VT_NULL;
    const VARIANT one = number(1);
    const struct {
        const wchar_t* member;
        std::vector<VARIANT> arguments; // in order
        HRESULT expected;
        UINT argumentError; // counted from the last, as callers pass them
    } rows[] = {
        {L"InitializeDIB", {one, text(L"wide")}, DISP_E_TYPEMISMATCH, 0},
        {L"InitializeDIB", {null, one}, DISP_E_TYPEMISMATCH, 1},
        {L"InitializeDIB", {real(1e10), one}, DISP_E_OVERFLOW, 1},
        {L"InitializeDIB", {one}, DISP_E_BADPARAMCOUNT, 99},
        {L"InitializeDIB", {missing(), one}, DISP_E_PARAMNOTOPTIONAL, 1},
        {L"InitializeDIB", {one, one, one}, DISP_E_BADPARAMCOUNT, 99},
        {L"Width", {one}, DISP_E_BADPARAMCOUNT, 99},
        {L"CopyImageTo", {one}, DISP_E_TYPEMISMATCH, 0},
        {L"LoadPicture_Stream", {one}, DISP_E_TYPEMISMATCH, 0},
        {L"LoadPicture_Stream", {typed(VT_ARRAY | VT_UI1, nullptr)}, DISP_E_TYPEMISMATCH, 0},
        {L"GetPixel", {one, one, typed(VT_VARIANT, nullptr)}, DISP_E_TYPEMISMATCH, 0},
    };
    for (const auto& row : rows) {
        UINT argumentError = 99;
        EXPECT_EQ(call(sheet.get(), row.member, row.arguments, nullptr, {}, &argumentError), row.expected)
            << std::filesystem::path(row.member) << " with " << row.arguments.size();
        EXPECT_EQ(argumentError, row.argumentError) << std::filesystem::path(row.member);
    }
    EXPECT_EQ(call(sheet.get(), L"InitializeDIB", {one}, nullptr, {{L"Width", one}}), DISP_E_BADPARAMCOUNT)
        << "an argument given twice";
    EXPECT_EQ(put(sheet.get(), L"Width", one), DISP_E_MEMBERNOTFOUND) << "a property that can only be read";
    EXPECT_EQ(sheet->Invoke(4711, GUID{}, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr), E_POINTER);
    DISPPARAMS none{};
    EXPECT_EQ(sheet->Invoke(4711, GUID{}, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(sheet->Invoke(4, IID_IUnknown, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
    LONG width = 0;
    sheet->get_Width(&width);
    EXPECT_EQ(width, 2) << "a refused call did something";
}

TEST_F(LateBound, PropertiesTakeScriptValues) {
    Variant got;
    EXPECT_EQ(put(sheet.get(), L"HighQualityInterpolation", number(5)), S_OK);
    EXPECT_EQ(call(sheet.get(), L"HighQualityInterpolation", {}, &got), S_OK);
    EXPECT_EQ(got.vt, VT_BOOL);
    EXPECT_EQ(got.boolVal, VARIANT_TRUE);
    VARIANT held = text(L"2");
    EXPECT_EQ(put(sheet.get(), L"Alpha", variable(held)), S_OK);
    EXPECT_EQ(call(sheet.get(), L"Alpha", {}, &got), S_OK);
    EXPECT_EQ(got.lVal, AlphaComplex);
    EXPECT_EQ(call(sheet.get(), L"BitsPointer", {}, &got), S_OK);
    EXPECT_EQ(got.vt, sizeof(void*) == 8 ? VT_I8 : VT_I4);
    EXPECT_EQ(call(sheet.get(), L"MakeLighterDarker", {text(L"1e1")}, &got), S_OK);
}

TEST_F(LateBound, FloatsReachTheMemberAsFloats) {
    ASSERT_TRUE(makeImage(1, 1));
    setPixel(0, 0, 0x646464);
    Variant done;
    EXPECT_EQ(call(sheet.get(), L"MakeLighterDarker", {real(20)}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_TRUE);
    EXPECT_EQ(pixel(0, 0), 0x979797); // 100 + 255 * 20 \ 100
}

TEST_F(LateBound, SizesComeBackByReferenceAndResizeTakesThem) {
    ASSERT_TRUE(makeImage(200, 100));
    LONG width = 0;
    short height = 0;
    VARIANT held = text(L"0");
    EXPECT_EQ(call(sheet.get(), L"ScaleImage", {number(50), number(50), typed(VT_I4, &width), typed(VT_I2, &height)}),
              S_OK);
    EXPECT_EQ(width, 50);
    EXPECT_EQ(height, 25);
    EXPECT_EQ(call(sheet.get(), L"ScaleImage", {number(400), number(1000), variable(held), typed(VT_I2, &height)},
                   nullptr, {{L"ScaleMode", number(0)}}),
              S_OK);
    EXPECT_EQ(held.lVal, 400);
    EXPECT_EQ(height, 200);
    EXPECT_EQ(sheet->ScaleImage(1, 1, &width, nullptr, ::ScaleToSize), E_POINTER);

    Variant done;
    EXPECT_EQ(call(sheet.get(), L"Resize", {number(-40), text(L"0")}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_TRUE);
    EXPECT_EQ(sheet->get_Width(&width), S_OK);
    EXPECT_EQ(width, 40);
    EXPECT_EQ(call(sheet.get(), L"Resize", {number(40000), number(40000)}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_FALSE);
}

TEST_F(LateBound, ShadowsBoardsAndTrimmingGiveWhatScriptsAskedFor) {
    Variant made, done;
    EXPECT_EQ(call(sheet.get(), L"CreateDropShadow", {}, &made), S_OK);
    EXPECT_TRUE(made.vt == VT_DISPATCH && made.pdispVal == nullptr) << "no image, so Nothing";
    ASSERT_TRUE(makeImage(6, 4));
    call(sheet.get(), L"SetPixel", {number(2), number(1), number(255)});
    EXPECT_EQ(call(sheet.get(), L"CreateDropShadow", {}, &made, {{L"blurDepth", number(2)}}), S_OK);
    ASSERT_TRUE(made.vt == VT_DISPATCH && made.pdispVal != nullptr);
    Variant size, shade;
    VARIANT alpha = number(0);
    EXPECT_EQ(call(made.pdispVal, L"Width", {}, &size), S_OK);
    EXPECT_EQ(size.lVal, 10);
    EXPECT_EQ(call(made.pdispVal, L"GetPixel", {number(4), number(3), variable(alpha)}, &shade), S_OK);
    EXPECT_EQ(alpha.lVal, 255 / 25);

    VARIANT left = text(L"17"), height = number(0);
    EXPECT_EQ(call(sheet.get(), L"TrimImage",
                   {missing(), number(-1), variable(left), missing(), missing(), variable(height)}, &done),
              S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_TRUE);
    EXPECT_EQ(left.lVal, 2);
    EXPECT_EQ(height.lVal, 1);
    EXPECT_EQ(call(sheet.get(), L"TrimImage", {number(eTrimOptions::trimLeft | eTrimOptions::trimTop)}, &done), S_OK);
    EXPECT_EQ(call(sheet.get(), L"Width", {}, &size), S_OK);
    EXPECT_EQ(size.lVal, 4);

    EXPECT_EQ(call(sheet.get(), L"CreateCheckerBoard", {number(0)}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_FALSE);
    EXPECT_EQ(call(sheet.get(), L"CreateCheckerBoard", {number(1), missing(), number(0x0000FF)}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_TRUE);
    EXPECT_EQ(pixel(0, 0), 0xFFFFFF);
    EXPECT_EQ(pixel(1, 0), 0x0000FF);
    EXPECT_EQ(call(sheet.get(), L"ImageType", {}, &size), S_OK);
    EXPECT_EQ(size.lVal, imgCheckerBoard);

    // The host is the last of the optional arguments, and a variable in scripts.
    ComPtr<_cPixSheet> host;
    *host.put() = server.create();
    VARIANT_BOOL initialized = VARIANT_FALSE;
    host->InitializeDIB(20, 20, &initialized);
    VARIANT held = object(host.get());
    EXPECT_EQ(call(sheet.get(), L"TileImage", {number(0), number(0), number(0), number(20), number(20)}, &done,
                   {{L"destHostDIB", variable(held)}, {L"offsetX", number(1)}}),
              S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_TRUE);
    LONG color = 0;
    host->GetPixel(19, 19, nullptr, nullptr, &color);
    EXPECT_EQ(color, pixel((19 - 1) % 4, 19 % 3));
    EXPECT_EQ(call(sheet.get(), L"TileImage", {number(0), number(0), number(0), number(20), number(20)}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_FALSE) << "no destination";
}

TEST_F(LateBound, PngPropertiesTakeAndGiveScriptValues) {
    VARIANT date{}, yes{}, held = text(L"caf\x00E9");
    date.vt = VT_DATE;
    date.date = 45351.5;
    yes.vt = VT_BOOL;
    yes.boolVal = VARIANT_TRUE;
    const struct {
        LONG property;
        VARIANT value;
        VARTYPE given; // what PngPropertyGet returns; VT_EMPTY: the value is refused
    } rows[] = {
        {::pngTitle, variable(held), VT_BSTR},
        {::pngLastModified, date, VT_DATE},
        {::pngLastModified, text(L"2024-02-29 12:00:00"), VT_DATE},
        {::pngBackgroundColor, real(255), VT_I4},
        {::pngInterlaced, yes, VT_BOOL},
        {::pngPixelsPerMeterY, text(L"12"), VT_EMPTY},
        {::pngTitle, object(sheet.get()), VT_EMPTY},
    };
    for (const auto& row : rows) {
        Variant done, got;
        EXPECT_EQ(call(sheet.get(), L"PngPropertySet", {number(row.property), row.value}, &done), S_OK);
        EXPECT_EQ(done.boolVal != VARIANT_FALSE, row.given != VT_EMPTY) << row.property;
        EXPECT_EQ(call(sheet.get(), L"PngPropertyGet", {number(row.property)}, &got), S_OK);
        if (row.given != VT_EMPTY) {
            EXPECT_EQ(got.vt, row.given) << row.property;
        }
        if (got.vt == VT_DATE) {
            EXPECT_EQ(got.date, 45351.5);
        }
    }
    Variant done, got, saved;
    EXPECT_EQ(call(sheet.get(), L"PngPropertySet", {number(::pngText), text(L"x"), text(L"My key")}, &done), S_OK);
    EXPECT_EQ(
        call(sheet.get(), L"PngPropertyGet", {}, &got, {{L"Keyword", text(L"My key")}, {L"Property", number(11)}}),
        S_OK);
    ASSERT_EQ(got.vt, VT_BSTR);
    EXPECT_EQ(std::wstring(got.bstrVal), L"x");

    ASSERT_TRUE(makeImage(30, 20));
    VARIANT stream{};
    EXPECT_EQ(call(sheet.get(), L"SaveToStream_PNG", {variable(stream)}, &saved), S_OK);
    EXPECT_EQ(saved.boolVal, VARIANT_TRUE);
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_Stream", {variable(stream)}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_TRUE) << "what was saved is loaded again";
    ::VariantClear(&stream);
    EXPECT_EQ(call(sheet.get(), L"SaveToFile_PNG", {text(L"")}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_FALSE);
}

// Source and Sizes in every form in which scripts and VB programs give them; what comes is read back.
TEST_F(LateBound, IconsLoseASourceOrASize) {
    ASSERT_TRUE(makeImage(20, 20));
    ComPtr<_cPixSheet> other;
    *other.put() = server.create();
    VARIANT_BOOL made = VARIANT_FALSE;
    ASSERT_EQ(other->InitializeDIB(40, 40, &made), S_OK);
    const auto arrayOf = [](std::initializer_list<VARIANT> elements) {
        VARIANT v;
        v.vt = VT_ARRAY | VT_VARIANT;
        v.parray = ::SafeArrayCreateVector(VT_VARIANT, 1, static_cast<ULONG>(elements.size()));
        auto* out = static_cast<VARIANT*>(v.parray->pvData);
        for (const VARIANT& element : elements)
            ::VariantCopy(out++, const_cast<VARIANT*>(&element));
        return v;
    };
    const auto table = [](ULONG rows) { // two images; a fourth row says what is not asked
        SAFEARRAYBOUND bounds[2] = {{rows, 0}, {2, 0}};
        SAFEARRAY* const array = ::SafeArrayCreate(VT_I4, 2, bounds);
        for (ULONG i = 0; i < 2 * rows; ++i) {
            constexpr LONG values[] = {16, 16, 8, 1};
            static_cast<LONG*>(array->pvData)[i] = values[i % rows] * (i < rows ? 1 : i % rows < 2 ? 2 : 1);
        }
        VARIANT v;
        v.vt = VT_ARRAY | VT_I4;
        v.parray = array;
        return v;
    };
    VARIANT empty, nothing = object(nullptr), self = object(sheet.get()), that = object(other.get());
    ::VariantInit(&empty);
    Variant both, triples, table3, table4;
    static_cast<VARIANT&>(both) = arrayOf({self, that, nothing});
    static_cast<VARIANT&>(triples) = arrayOf({number(16), real(16), text(L"4"), number(48), number(48), number(-1)});
    static_cast<VARIANT&>(table3) = table(3);
    static_cast<VARIANT&>(table4) = table(4);
    const struct {
        const char* form;
        std::vector<VARIANT> arguments; // behind the stream
        LONG count;
        BYTE firstWidth;
    } rows[] = {
        {"nothing given", {}, 1, 20},
        {"missing", {missing()}, 1, 20},
        {"Empty", {empty}, 1, 20},
        {"Nothing", {nothing}, 1, 20},
        {"an object", {that}, 1, 40},
        {"a variable", {variable(that)}, 1, 40},
        {"an array", {both}, 2, 20},
        {"an array by reference", {variable(both)}, 2, 20},
        {"numbers", {that, number(16), number(16), number(-16777216), number(8), number(8), number(1)}, 2, 16},
        {"numbers, no source", {missing(), number(7), number(16), number(16776960)}, 1, 7},
        {"an array of numbers", {that, triples}, 2, 16},
        {"a table", {that, table3}, 2, 16},
        {"a table of four rows", {that, variable(table4)}, 2, 16},
        {"not three numbers", {that, number(16), number(16)}, 0, 0},
        {"no number", {that, number(16), number(16), text(L"deep")}, 0, 0},
        {"no such depth", {that, number(16), number(16), number(99)}, 0, 0},
        {"no image", {number(3)}, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.form);
        Variant stream, count;
        std::vector<VARIANT> arguments = {variable(stream)};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        ASSERT_EQ(call(sheet.get(), L"SaveToStream_ICO", arguments, &count), S_OK);
        EXPECT_EQ(count.vt, VT_I4);
        EXPECT_EQ(count.lVal, row.count);
        if (row.count == 0) continue;
        ASSERT_NE(stream.vt & VT_ARRAY, 0);
        Variant width, loaded;
        EXPECT_EQ(call(other.get(), L"LoadPicture_Stream", {variable(stream), number(1), number(1)}, &loaded), S_OK);
        EXPECT_EQ(loaded.boolVal, VARIANT_TRUE);
        Variant first;
        EXPECT_EQ(call(other.get(), L"LoadPicture_Stream", {variable(stream), number(row.firstWidth), number(0)}),
                  S_OK);
        EXPECT_EQ(call(other.get(), L"Width", {}, &width), S_OK);
        EXPECT_EQ(width.lVal, row.firstWidth);
        ASSERT_EQ(other->InitializeDIB(40, 40, &made), S_OK);
    }
    const std::wstring file = programFolder() / L"late-bound.ico";
    Variant count;
    EXPECT_EQ(call(sheet.get(), L"SaveToFile_ICO",
                   {text(file.c_str()), both, number(0), number(9), number(9), number(8)}, &count),
              S_OK);
    EXPECT_EQ(count.lVal, 1);
    EXPECT_EQ(call(sheet.get(), L"SaveToFile_ICO", {text(file.c_str()), both}), DISP_E_BADPARAMCOUNT)
        << "whether to ask must be said";
    LONG saved = 0;
    EXPECT_EQ(sheet->SaveToFile_ICO(text(file.c_str()).bstrVal, nullptr, VARIANT_FALSE, nullptr, &saved), S_OK);
    EXPECT_EQ(saved, 1);
    EXPECT_EQ(std::filesystem::file_size(file), 22U + 40 + 20 * 20 * 4 + 20 * 4);
    std::filesystem::remove(file);
}

TEST_F(LateBound, NothingBecomesANewObjectInEveryFormOfVariable) {
    ASSERT_TRUE(makeImage(3, 2));
    IDispatch* dispatch = nullptr;
    IUnknown* unknown = nullptr;
    VARIANT nothing = object(nullptr), empty;
    ::VariantInit(&empty);
    for (const VARIANT& argument :
         {typed(VT_DISPATCH, &dispatch), typed(VT_UNKNOWN, &unknown), variable(nothing), variable(empty)}) {
        EXPECT_EQ(call(sheet.get(), L"CopyImageTo", {argument}), S_OK);
    }
    for (IUnknown* const created : {static_cast<IUnknown*>(dispatch), unknown, nothing.punkVal, empty.punkVal}) {
        ASSERT_NE(created, nullptr);
        ComPtr<_cPixSheet> copy;
        EXPECT_EQ(created->QueryInterface(IID__cPixSheet, copy.putVoid()), S_OK);
        LONG width = 0;
        copy->get_Width(&width);
        EXPECT_EQ(width, 3);
        copy.reset();
        EXPECT_EQ(created->Release(), 0u) << "one reference too many";
    }
    EXPECT_EQ(empty.vt, VT_DISPATCH);
    EXPECT_EQ(call(sheet.get(), L"CopyImageTo", {object(nullptr)}), S_OK); // by value: made, and let go again
}

TEST_F(LateBound, ObjectsPassedAnyWayAreTheSameObject) {
    ASSERT_TRUE(makeImage(3, 2));
    ComPtr<_cPixSheet> other;
    *other.put() = server.create();
    IDispatch* dispatch = other.get();
    VARIANT held = object(dispatch);
    LONG width = 0;
    for (const VARIANT& argument : {object(dispatch), typed(VT_DISPATCH, &dispatch), variable(held)}) {
        EXPECT_EQ(call(sheet.get(), L"SwapDIBs", {argument}), S_OK);
    }
    other->get_Width(&width); // swapped three times
    EXPECT_EQ(width, 3);
    EXPECT_EQ((other->AddRef(), other->Release()), 1u);
}

TEST_F(LateBound, DrawingReachesHostsAndDeviceContextsInEveryFormOfVariable) {
    ASSERT_TRUE(makeImage(2, 1));
    setPixel(0, 0, 0x0000FF);
    setPixel(1, 0, 0x00FF00);
    ComPtr<_cPixSheet> host;
    *host.put() = server.create();
    VARIANT_BOOL made = 0;
    IDispatch* dispatch = host.get();
    VARIANT held = object(dispatch), nothing = object(nullptr);
    for (const VARIANT& argument : {object(dispatch), typed(VT_DISPATCH, &dispatch), variable(held)}) {
        host->InitializeDIB(4, 1, &made);
        Variant done;
        // Mirrored, at half opacity, and the host named.
        EXPECT_EQ(call(sheet.get(), L"Render", {number(0), number(1), number(0), number(-2)}, &done,
                       {{L"Opacity", text(L"150")}, {L"destHostDIB", argument}}),
                  S_OK);
        EXPECT_EQ(done.vt, VT_BOOL);
        EXPECT_EQ(done.boolVal, VARIANT_TRUE);
        const std::tuple<LONG, LONG, LONG> expected[] = {{0, 0, 0}, {1, 0x00FF00, 127}, {2, 0x0000FF, 127}, {3, 0, 0}};
        for (const auto& [x, color, alpha] : expected) {
            LONG read = 0, readAlpha = 0;
            host->GetPixel(x, 0, &readAlpha, nullptr, &read);
            EXPECT_EQ(read, color) << x;
            EXPECT_EQ(readAlpha, alpha) << x;
        }
    }
    Variant done;
    EXPECT_EQ(call(sheet.get(), L"Render", {number(0)}, &done, {{L"destHostDIB", variable(nothing)}}), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_FALSE) << "neither a device context nor an object";
    EXPECT_EQ(call(sheet.get(), L"Render", {number(0)}, nullptr, {{L"destHostDIB", number(1)}}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(call(sheet.get(), L"RenderDropShadow_JIT", {number(0), number(0), number(0)}, &done,
                   {{L"blurDepth", number(0)}, {L"destHostDIB", object(dispatch)}}),
              S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_TRUE);
    EXPECT_EQ(call(sheet.get(), L"CreateGDIplusToken", {}, &done), S_OK);
    EXPECT_EQ(done.lVal, 0);
    EXPECT_EQ(call(sheet.get(), L"DestroyGDIplusToken", {number(0)}, &done), S_OK);
    EXPECT_EQ(done.boolVal, VARIANT_FALSE);
    EXPECT_EQ((host->AddRef(), host->Release()), 1u);
}

// A context whose origin was moved, and with a region to draw in, onto which the component's own drawing and the
// system's must put the same.
TEST_F(LateBound, DrawingMissesMovedOriginsAndClipRegions) {
    ASSERT_TRUE(makeImage(3, 3));
    for (LONG i = 0; i < 9; ++i)
        setPixel(i % 3, i / 3, 100 + i);
    const HDC dc = ::CreateCompatibleDC(nullptr);
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 8, 8, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HBITMAP bitmap = ::CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = ::SelectObject(dc, bitmap);
    ::SetViewportOrgEx(dc, 4, 5, nullptr);
    ::IntersectClipRect(dc, -3, -3, 0, 2); // in the moved coordinates
    for (const VARIANT_BOOL friendly : {VARIANT_FALSE, VARIANT_TRUE}) {
        sheet->put_isAlphaBlendFriendly(friendly);
        ::PatBlt(dc, -4, -5, 8, 8, BLACKNESS);
        Variant done;
        EXPECT_EQ(call(sheet.get(), L"Render",
                       {number(static_cast<LONG>(reinterpret_cast<LONG_PTR>(dc))), number(-2), number(-4)}, &done),
                  S_OK);
        EXPECT_EQ(done.boolVal, VARIANT_TRUE);
        ::GdiFlush();
        for (LONG y = -5; y < 3; ++y)
            for (LONG x = -4; x < 4; ++x) {
                const bool drawn = x >= -2 && x < 0 && y >= -3 && y < -1;
                const COLORREF expected = drawn ? static_cast<COLORREF>(100 + (y + 4) * 3 + x + 2) : 0;
                const auto* const pixel = static_cast<const std::uint8_t*>(bits) + ((7 - (y + 5)) * 8 + x + 4) * 4;
                EXPECT_EQ(pixel[2], expected) << x << ", " << y << (friendly ? " by the system" : "");
            }
    }
    ::SelectObject(dc, before);
    ::DeleteObject(bitmap);
    ::DeleteDC(dc);
}

} // namespace pixkit::test
