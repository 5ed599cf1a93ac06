// What transcripts cannot say: forms of arguments that only some hosts have, arrays that must stay as they are, objects
// that are none of ours, callers compiled by others.
#define INITGUID // this file defines what the generated header only declares
#include "LateObject.h"
#include "Pictures.h"
#include "Server.h"
#include "support/SourceFolder.h"
#include <cstring>
#include <ocidl.h>
#include <olectl.h>

namespace pixkit::test {

using OddCalls = ComTest;

TEST_F(OddCalls, NumbersOfAnyTypeAreTakenWhereATypedValueFits) {
    SHORT small = 6;
    VARIANT held = number(7), nested = variable(held), twice = variable(nested), deep = variable(twice);
    for (const auto& [value, expected] : {std::pair{number(5, VT_UI1), 5},
                                          {number(9, VT_UI4), 9},
                                          {typed(VT_I2, &small), 6},
                                          {variable(nested), 7},
                                          {variable(deep), 7}}) {
        EXPECT_TRUE(isTrue(sheet.get(), L"InitializeDIB", {value, number(1)})) << value.vt;
        EXPECT_EQ(width(), expected);
    }
}

TEST_F(OddCalls, ResultsComeBackInTheCallersOwnType) {
    ASSERT_TRUE(makeImage(1, 1));
    setPixel(0, 0, 255);
    LONG asLong = 0;
    SHORT asInteger = 0;
    double asDouble = 0;
    VARIANT_BOOL asBoolean = VARIANT_FALSE;
    for (const VARIANT& argument :
         {typed(VT_I4, &asLong), typed(VT_I2, &asInteger), typed(VT_R8, &asDouble), typed(VT_BOOL, &asBoolean)})
        EXPECT_EQ(call(sheet.get(), L"GetPixel", {number(0), number(0), argument}), S_OK);
    EXPECT_EQ(std::tuple(asLong, asInteger, asDouble, asBoolean), std::tuple(255, 255, 255.0, VARIANT_TRUE));
    EXPECT_EQ(sheet->Invoke(4711, GUID{}, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr), E_POINTER);
    DISPPARAMS none{};
    EXPECT_EQ(sheet->Invoke(4, IID_IUnknown, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
}

TEST_F(OddCalls, ANameThatIsNotUtf16BecomesAnotherFile) {
    const TemporaryFolder folder;
    ASSERT_TRUE(makeImage(1, 1));
    const VARIANT name = text((folder.path(u8"").wstring() + L"a\xD800.bmp").c_str());
    EXPECT_FALSE(isTrue(sheet.get(), L"SaveToFile_Bitmap", {name, number(0), number(0), number(0)}));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path(u8"")));
    writeFile(folder.path(u8"a\uFFFD.bmp"), readFile(sourceFolder() / "samples/pictures/landscape.png"));
    EXPECT_FALSE(isTrue(sheet.get(), L"LoadPicture_File", {name}));
}

TEST_F(OddCalls, NothingBecomesANewObjectWithOneReference) {
    ASSERT_TRUE(makeImage(3, 2));
    IDispatch* dispatch = nullptr;
    IUnknown* unknown = nullptr;
    VARIANT nothing = object(nullptr), empty{};
    for (const VARIANT& argument :
         {typed(VT_DISPATCH, &dispatch), typed(VT_UNKNOWN, &unknown), variable(nothing), variable(empty)})
        EXPECT_EQ(call(sheet.get(), L"CopyImageTo", {argument}), S_OK);
    for (IUnknown* const created : {static_cast<IUnknown*>(dispatch), unknown, nothing.punkVal, empty.punkVal}) {
        ASSERT_NE(created, nullptr);
        EXPECT_EQ(created->Release(), 0u) << "one reference too many";
    }
    EXPECT_EQ(call(sheet.get(), L"CopyImageTo", {object(nullptr)}), S_OK); // by value: made, and let go again
}

// --- arrays

TEST_F(OddCalls, EveryFormOfByteArrayLoadsTheSamePicture) {
    const auto png = readFile((sourceFolder() / "samples/pictures/sprite-4-bit.png").make_preferred());
    OwnArray bytes(VT_UI1, png), variants(VT_VARIANT, png);
    VARIANT held = arrayValue(VT_UI1, bytes.array), heldVariants = arrayValue(VT_VARIANT, variants.array);
    VARIANT nested = typed(VT_ARRAY | VT_UI1, &bytes.array);
    for (const VARIANT& form : {held, nested, variable(held), variable(nested), heldVariants, variable(heldVariants),
                                typed(VT_ARRAY | VT_VARIANT, &variants.array)}) {
        ASSERT_TRUE(makeImage(1, 1));
        EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_Stream", {form})) << form.vt;
        EXPECT_GT(width(), 1);
    }
    ::SafeArrayLock(bytes.array); // borrowed, not taken
    bytes.array->fFeatures |= FADF_FIXEDSIZE;
    EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_Stream", {nested}));
    EXPECT_EQ(bytes.array->cLocks, 1u);
    bytes.array->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
    ::SafeArrayUnlock(bytes.array);
    EXPECT_EQ(std::memcmp(bytes.array->pvData, png.data(), png.size()), 0);
}

// What scripts can index; programs in other languages that pass an empty variable get the same.
TEST_F(OddCalls, AnEmptyVariableReceivesAnArrayOfOtherThingsThanVariants) {
    const OwnArray icon(VT_UI1, picture("ico/two-1-bit-icon.ico"));
    const VARIANT none = missing();
    VARIANT name = text(L"a.png");
    ASSERT_TRUE(isTrue(sheet.get(), L"LoadPicture_Stream",
                       {arrayValue(VT_UI1, icon.array), none, none, none, none, number(-1)}));
    const struct {
        const wchar_t* member;
        UINT dimensions;
        VARTYPE element;
    } rows[] = {
        {L"GetDIBbits", 2, VT_UI1},       {L"GetAlphaMask", 2, VT_UI1},   {L"GetOrginalFormat", 1, VT_UI1},
        {L"SaveToStream_PNG", 1, VT_UI1}, {L"SourceIconSizes", 2, VT_I4}, {L"GetDroppedFileNames", 1, VT_BSTR},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::filesystem::path(row.member));
        Variant result;
        std::vector<VARIANT> given = {variable(result)};
        if (row.element == VT_BSTR) given.insert(given.begin(), variable(name));
        EXPECT_EQ(call(sheet.get(), row.member, given), S_OK);
        ASSERT_EQ(result.vt, VT_ARRAY | VT_VARIANT);
        VARTYPE type = VT_EMPTY;
        EXPECT_EQ(::SafeArrayGetVartype(result.parray, &type), S_OK);
        EXPECT_EQ(std::pair(type, result.parray->cDims), (std::pair<VARTYPE, USHORT>(VT_VARIANT, row.dimensions)));
        EXPECT_EQ(static_cast<const VARIANT*>(result.parray->pvData)->vt, row.element);
    }
}

TEST_F(OddCalls, ArraysThatAreUnfitOrPassedByValueAreReplacedUnderTheCaller) {
    const struct {
        VARTYPE type;
        USHORT feature;
        bool isLocked;
    } rows[] = {{VT_UI1, 0, true}, {VT_UI1, FADF_FIXEDSIZE, false}, {VT_UI1, FADF_STATIC, false}, {VT_I4, 0, false},
                {VT_I1, 0, false}, {VT_VARIANT, 0, false},          {VT_VARIANT, 0, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        ASSERT_TRUE(makeImage(3, 2));
        OwnArray own(row.type, std::vector<std::uint8_t>(8));
        SAFEARRAY* const before = own.array;
        own.array->fFeatures |= row.feature;
        if (row.isLocked) ::SafeArrayLock(own.array);
        VARIANT_BOOL done = VARIANT_TRUE;
        EXPECT_EQ(sheet->SaveToStream_Bitmap(&own.array, VARIANT_FALSE, 0, &done), S_OK);
        EXPECT_EQ(done, VARIANT_FALSE);
        VARIANT held = arrayValue(row.type, own.array);
        for (const VARIANT& form : {held, row.isLocked ? variable(held) : held}) {
            Variant saved;
            call(sheet.get(), L"SaveToStream_Bitmap", {form}, &saved);
            EXPECT_NE(saved.boolVal, VARIANT_TRUE);
        }
        EXPECT_TRUE(own.array == before && before->rgsabound[0].cElements == 8);
        if (row.isLocked) ::SafeArrayUnlock(own.array);
        own.array->fFeatures &= static_cast<USHORT>(~row.feature);
    }
    OwnArray bytes(VT_UI1, std::vector<std::uint8_t>(64));
    VARIANT lie = arrayValue(VT_VARIANT, bytes.array);
    EXPECT_EQ(call(sheet.get(), L"SetDIBbits", {variable(lie)}), DISP_E_TYPEMISMATCH) << "read as VARIANTs";
}

TEST_F(OddCalls, PixelsLandInTheSameArrayAgainAndTheImagesOwnMemoryIsNeverReplaced) {
    ASSERT_TRUE(makeImage(3, 2));
    setPixel(2, 1, 0x0000FF);
    OwnArray own(VT_UI1, std::vector<std::uint8_t>(24, 0xEE)); // 24 bits: 3 bytes of padding a row
    SAFEARRAY* const before = own.array;
    VARIANT_BOOL done = VARIANT_FALSE;
    EXPECT_EQ(sheet->GetDIBbits(&own.array, 0, -1, 0, -1, -1, 0, 0, 0, 0, -1, &done), S_OK);
    EXPECT_EQ(own.array, before);
    EXPECT_EQ(static_cast<const std::uint8_t*>(own.array->pvData)[11], 0) << "old bytes in the padding";

    LONG_PTR bits = 0;
    sheet->get_BitsPointer(&bits);
    SAFEARRAY overlay{}; // as callers make them to work on pixels directly
    overlay.cDims = 1;
    overlay.cbElements = 1;
    overlay.pvData = reinterpret_cast<void*>(bits);
    overlay.rgsabound[0].cElements = 24;
    SAFEARRAY* array = &overlay;
    EXPECT_EQ(sheet->GetDIBbits(&array, 0, -1, -1, -1, -1, 0, 0, 0, 0, -1, &done), S_OK);
    EXPECT_EQ(done, VARIANT_FALSE);
    EXPECT_EQ(sheet->SaveToStream_Bitmap(&array, VARIANT_FALSE, 0, &done), S_OK);
    EXPECT_EQ(done, VARIANT_FALSE);
    EXPECT_EQ(sheet->SetDIBbits(&array, -1, -1, -1, -1, 0, 0, 0, 0, &done), S_OK);
    EXPECT_EQ(done, VARIANT_TRUE);
    EXPECT_EQ(array, &overlay);
    EXPECT_EQ(pixel(2, 1), 0x0000FF);
}

// --- objects

TEST_F(OddCalls, StrangersObjectsOfAnotherCopyAndOnesThatLieAreNotTakenForOurs) {
    ASSERT_TRUE(makeImage(4, 3));
    const Server copy(programFolder() / "zlib-counting" / "pixkit.dll");
    ComPtr<_cPixSheet> copys;
    *copys.put() = copy.create();
    LateObject stranger({}), liar({});
    liar.isLiar = true;
    for (IDispatch* const other : std::initializer_list<IDispatch*>{&stranger, &liar, copys.get()}) {
        auto* disguised = static_cast<_cPixSheet*>(other);
        auto* picture = reinterpret_cast<IPictureDisp*>(other);
        VARIANT_BOOL done = VARIANT_TRUE;
        EXPECT_EQ(sheet->SwapDIBs(&disguised), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(sheet->CopyImageTo(&disguised, 0, 0, VARIANT_FALSE), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(sheet->TileImage(0, 0, 0, 1, 1, 100, 0, 0, 0, &disguised, &done), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(call(sheet.get(), L"SwapDIBs", {object(other)}), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(sheet->LoadPicture_StdPicture(&picture, &done), S_OK);
        EXPECT_EQ(done, VARIANT_FALSE);
        ASSERT_TRUE(makeImage(4, 3));
    }
    EXPECT_EQ(stranger.references + liar.references, 2U);
}

TEST_F(OddCalls, OneIdentityAndTruthfulSideInterfaces) {
    ComPtr<IUnknown> unknown, again;
    ComPtr<IProvideClassInfo> classInfo;
    ComPtr<ISupportErrorInfo> errorInfo;
    ASSERT_EQ(sheet->QueryInterface(IID_IProvideClassInfo, classInfo.putVoid()), S_OK);
    ASSERT_EQ(sheet->QueryInterface(IID_ISupportErrorInfo, errorInfo.putVoid()), S_OK);
    sheet->QueryInterface(IID_IUnknown, unknown.putVoid());
    classInfo->QueryInterface(IID_IUnknown, again.putVoid());
    EXPECT_EQ(unknown.get(), again.get());
    EXPECT_EQ(errorInfo->InterfaceSupportsErrorInfo(IID__cPixSheet), S_FALSE);
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(classInfo->GetClassInfo(info.put()), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, CLSID_cPixSheet);
    info->ReleaseTypeAttr(attributes);
    void* other = &unknown;
    EXPECT_EQ(sheet->QueryInterface(IID_IStream, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}

TEST_F(OddCalls, AnOptionalNumberHasNoDefaultInTheTypeLibrary) {
    int byReference = 0;
    eachMember([&](const FUNCDESC& function, const auto&) {
        for (SHORT k = 0; k < function.cParams; ++k) {
            const auto& [type, parameter] =
                std::tie(function.lprgelemdescParam[k].tdesc, function.lprgelemdescParam[k].paramdesc);
            if ((parameter.wParamFlags & PARAMFLAG_FOPT) == 0) continue;
            const bool isReference = type.vt == VT_PTR;
            const bool isObject = type.vt == VT_DISPATCH || (isReference && type.lptdesc->vt == VT_PTR);
            EXPECT_EQ((parameter.wParamFlags & PARAMFLAG_FHASDEFAULT) == 0, isObject) << function.memid << ' ' << k;
            byReference += isReference && !isObject;
        }
    });
    EXPECT_EQ(byReference, 6); // of GetPixel and TrimImage
}

TEST_F(OddCalls, PictureObjectsAreTakenInEveryFormAndOthersAreNot) {
    PICTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.picType = PICTYPE_ICON;
    description.icon.hicon = ::CopyIcon(::LoadIconW(nullptr, IDI_APPLICATION));
    ComPtr<IPictureDisp> picture;
    ASSERT_EQ(::OleCreatePictureIndirect(&description, IID_IPictureDisp, TRUE, picture.putVoid()), S_OK);
    IPictureDisp* place = picture.get();
    VARIANT held = object(place), wrong = object(sheet.get());
    for (const VARIANT& form : {held, typed(VT_DISPATCH, &place), variable(held)})
        EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_StdPicture", {form})) << form.vt;
    VARIANT handle =
        number(static_cast<LONG>(reinterpret_cast<LONG_PTR>(description.icon.hicon))); // scripts have no wider
    EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_ByHandle", {variable(handle)}));
    EXPECT_EQ(call(sheet.get(), L"LoadPicture_StdPicture", {wrong}), DISP_E_TYPEMISMATCH);
    EXPECT_FALSE(isTrue(sheet.get(), L"LoadPicture_StdPicture", {object(nullptr)}));
    EXPECT_EQ(width(), 0);
}

// --- callers' machines

#ifdef __i386__
// Calls a member without arguments but `this` and a result with the stack four bytes off the alignment that vector
// code of this compiler expects, as callers from other compilers do.
HRESULT __attribute__((noinline)) callMisaligned(void* function, void* object, void* result) {
    HRESULT status;
    asm volatile("movl %%esp, %%edi\n\t"
                 "andl $-16, %%esp\n\t"
                 "subl $4, %%esp\n\t"
                 "pushl %3\n\t"
                 "pushl %2\n\t"
                 "call *%1\n\t"
                 "movl %%edi, %%esp"
                 : "=a"(status)
                 : "r"(function), "r"(object), "r"(result)
                 : "edi", "ecx", "edx", "memory", "cc");
    return status;
}

TEST_F(OddCalls, CallersWithAFourByteAlignedStackSurviveVectorCode) {
    ASSERT_TRUE(makeImage(67, 5));
    setPixel(3, 3, 0x0000FF);
    std::size_t place = 0;
    eachMember([&](const FUNCDESC& function, const auto&) {
        if (function.memid == 501) // MakeImageInverse
            place = (static_cast<std::size_t>(function.oVft) & ~std::size_t{1}) / sizeof(void*);
    });
    VARIANT_BOOL done = VARIANT_FALSE;
    EXPECT_EQ(callMisaligned((*reinterpret_cast<void***>(sheet.get()))[place], sheet.get(), &done), S_OK);
    EXPECT_EQ(pixel(3, 3), 0xFFFF00);
}
#endif

// A context whose origin was moved, and with a region to draw in, onto which the component's own drawing and the
// system's must put the same.
TEST_F(OddCalls, DrawingMissesMovedOriginsAndClipRegions) {
    ASSERT_TRUE(makeImage(3, 3));
    for (LONG i = 0; i < 9; ++i)
        setPixel(i % 3, i / 3, 100 + i);
    ComPtr<_cPixSheet> canvas;
    *canvas.put() = server.create();
    VARIANT_BOOL done = VARIANT_FALSE;
    LONG_PTR dc = 0;
    canvas->InitializeDIB(8, 8, &done);
    for (const VARIANT_BOOL friendly : {VARIANT_FALSE, VARIANT_TRUE}) {
        sheet->put_isAlphaBlendFriendly(friendly);
        canvas->EraseDIB();
        canvas->LoadDIBinDC(VARIANT_TRUE, &dc);
        ::SetViewportOrgEx(reinterpret_cast<HDC>(dc), 4, 5, nullptr);
        ::IntersectClipRect(reinterpret_cast<HDC>(dc), -3, -3, 0, 2); // in the moved coordinates
        EXPECT_TRUE(isTrue(sheet.get(), L"Render", {number(static_cast<LONG>(dc)), number(-2), number(-4)}));
        canvas->LoadDIBinDC(VARIANT_FALSE, &dc);
        for (LONG i = 0; i < 64; ++i) {
            const LONG x = i % 8 - 4, y = i / 8 - 5;
            VARIANT_BOOL asStored = VARIANT_TRUE;
            LONG alpha = 0, color = 0;
            canvas->GetPixel(i % 8, i / 8, &alpha, &asStored, &color);
            const bool isDrawn = x >= -2 && x < 0 && y >= -3 && y < -1;
            EXPECT_EQ(color, isDrawn ? 100 + (y + 4) * 3 + x + 2 : 0)
                << x << ", " << y << (friendly ? " by the system" : "");
        }
    }
    canvas->LoadDIBinDC(VARIANT_TRUE, &dc);
    ::SetMapMode(reinterpret_cast<HDC>(dc), MM_ANISOTROPIC);
    ::SetViewportExtEx(reinterpret_cast<HDC>(dc), 1, -1, nullptr); // y grows upwards
    sheet->put_isAlphaBlendFriendly(VARIANT_FALSE);
    EXPECT_TRUE(isTrue(sheet.get(), L"Render", {number(static_cast<LONG>(dc)), number(0), number(-5)}));
    canvas->LoadDIBinDC(VARIANT_FALSE, &dc);
    LONG drawn = 0;
    canvas->GetPixel(0, 5, nullptr, nullptr, &drawn);
    EXPECT_EQ(drawn, 100);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
