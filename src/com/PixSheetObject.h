// The cPixSheet object that COM clients hold: a thin shell over the native class. Every member forwards; what is done
// here is conversion and nothing else.
#pragma once
#include "com/Arrays.h"
#include "com/Automation.h"
#include "com/FontArgument.h"
#include "com/IconArguments.h"
#include "com/LateCall.h"
#include "com/LiveObject.h"
#include "com/TypeInformation.h"
#include "com/module.h"
#include "diagnostics/guard.h"
#include "pixkit_com.h"
#include "surface/HostAccess.h"
#include <ocidl.h>
#include <optional>
#include <type_traits>

namespace pixkit::com {

class PixSheetObject final : public _cPixSheet, public IProvideClassInfo, public ISupportErrorInfo {
  public:
    static HRESULT create(REFIID interfaceId, void** object) noexcept;

    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    STDMETHODIMP Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* arguments, VARIANT* result,
                        EXCEPINFO* exception, UINT* argumentError) override;

    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID interfaceId) override;

    // --- properties

    STDMETHODIMP get_Alpha(::AlphaTypeEnum* result) override {
        return give(result, [&] { return m_sheet->Alpha(); });
    }
    STDMETHODIMP put_Alpha(::AlphaTypeEnum value) override {
        return run([&] { m_sheet->Alpha(static_cast<pixkit::AlphaTypeEnum>(value)); });
    }
    STDMETHODIMP get_BitsPointer(LONG_PTR* result) override {
        return give(result, [&] { return m_sheet->BitsPointer(); });
    }
    STDMETHODIMP get_Handle(LONG_PTR* result) override {
        return give(result, [&] { return m_sheet->Handle(); });
    }
    STDMETHODIMP get_Width(LONG* result) override {
        return give(result, [&] { return m_sheet->Width(); });
    }
    STDMETHODIMP get_Height(LONG* result) override {
        return give(result, [&] { return m_sheet->Height(); });
    }
    STDMETHODIMP get_scanWidth(LONG* result) override {
        return give(result, [&] { return m_sheet->scanWidth(); });
    }
    STDMETHODIMP get_ImageType(::eImageFormat* result) override {
        return give(result, [&] { return m_sheet->ImageType(); });
    }
    STDMETHODIMP get_HighQualityInterpolation(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->HighQualityInterpolation(); });
    }
    STDMETHODIMP put_HighQualityInterpolation(VARIANT_BOOL value) override {
        return run([&] { m_sheet->HighQualityInterpolation(isTrue(value)); });
    }
    STDMETHODIMP get_ManageOwnDC(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->ManageOwnDC(); });
    }
    STDMETHODIMP put_ManageOwnDC(VARIANT_BOOL value) override {
        return run([&] { m_sheet->ManageOwnDC(isTrue(value)); });
    }
    STDMETHODIMP get_isAlphaBlendFriendly(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->isAlphaBlendFriendly(); });
    }
    STDMETHODIMP put_isAlphaBlendFriendly(VARIANT_BOOL value) override {
        return run([&] { m_sheet->isAlphaBlendFriendly(isTrue(value)); });
    }
    STDMETHODIMP get_isGDIplusEnabled(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->isGDIplusEnabled(); });
    }
    STDMETHODIMP put_isGDIplusEnabled(VARIANT_BOOL value) override {
        return run([&] { m_sheet->isGDIplusEnabled(isTrue(value)); });
    }
    STDMETHODIMP get_isZlibEnabled(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->isZlibEnabled(); });
    }
    STDMETHODIMP get_gdiToken(LONG* result) override {
        return give(result, [&] { return m_sheet->gdiToken(); });
    }
    STDMETHODIMP put_gdiToken(LONG value) override {
        return run([&] { m_sheet->gdiToken(value); });
    }
    STDMETHODIMP get_KeepGDIplusActive(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->KeepGDIplusActive(); });
    }
    STDMETHODIMP put_KeepGDIplusActive(VARIANT_BOOL value) override {
        return run([&] { m_sheet->KeepGDIplusActive(isTrue(value)); });
    }
    STDMETHODIMP get_Tag(VARIANT* result) override;
    STDMETHODIMP put_Tag(VARIANT value) override;
    STDMETHODIMP putref_Tag(VARIANT value) override { return put_Tag(value); }
    STDMETHODIMP get_Version(BSTR* result) override;
    STDMETHODIMP get_LastErrorText(BSTR* result) override;
    STDMETHODIMP get_LoadNotes(BSTR* result) override;
    STDMETHODIMP get_Orientation(LONG* result) override {
        return give(result, [&] { return m_sheet->Orientation(); });
    }
    STDMETHODIMP get_Unattended(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->Unattended(); });
    }
    STDMETHODIMP put_Unattended(VARIANT_BOOL value) override {
        return run([&] { m_sheet->Unattended(isTrue(value)); });
    }

    // --- surface

    STDMETHODIMP InitializeDIB(LONG Width, LONG Height, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->InitializeDIB(Width, Height); });
    }
    STDMETHODIMP DestroyDIB() override {
        return run([&] { m_sheet->DestroyDIB(); });
    }
    STDMETHODIMP EraseDIB() override {
        return run([&] { m_sheet->EraseDIB(); });
    }
    STDMETHODIMP LoadDIBinDC(VARIANT_BOOL bLoad, LONG_PTR* result) override {
        return give(result, [&] { return m_sheet->LoadDIBinDC(isTrue(bLoad)); });
    }
    STDMETHODIMP CopyImageTo(_cPixSheet** cDIBclass, LONG newWidth, LONG newHeight,
                             VARIANT_BOOL CopyOriginalFormat) override;
    STDMETHODIMP SwapDIBs(_cPixSheet** SwapFromDIB) override;

    // --- pixels

    STDMETHODIMP GetPixel(LONG x, LONG y, LONG* AlphaValue, VARIANT_BOOL* asPreMultiplied, LONG* result) override;
    STDMETHODIMP SetPixel(LONG x, LONG y, LONG Color, LONG AlphaValue, VARIANT_BOOL isPreMultiplied,
                          LONG_PTR* result) override {
        return give(result, [&] { return m_sheet->SetPixel(x, y, Color, AlphaValue, isTrue(isPreMultiplied)); });
    }
    STDMETHODIMP GetAlphaMask(SAFEARRAY** outStream, VARIANT_BOOL as2dArray, VARIANT_BOOL asWordAligned,
                              VARIANT_BOOL asBottomUp, LONG x, LONG y, LONG Width, LONG Height,
                              VARIANT_BOOL* result) override {
        return fill(outStream, Access::refill, result, [&](ByteArray& bytes) {
            return m_sheet->GetAlphaMask(bytes, isTrue(as2dArray), isTrue(asWordAligned), isTrue(asBottomUp), x, y,
                                         Width, Height);
        });
    }
    STDMETHODIMP GetDIBbits(SAFEARRAY** outStream, VARIANT_BOOL as2dArray, VARIANT_BOOL asBGRformat,
                            VARIANT_BOOL as32bpp, VARIANT_BOOL asWordAligned, VARIANT_BOOL asBottomUp, LONG x, LONG y,
                            LONG Width, LONG Height, VARIANT_BOOL asPreMultiplied, VARIANT_BOOL* result) override {
        return fill(outStream, Access::refill, result, [&](ByteArray& bytes) {
            return m_sheet->GetDIBbits(bytes, isTrue(as2dArray), isTrue(asBGRformat), isTrue(as32bpp),
                                       isTrue(asWordAligned), isTrue(asBottomUp), x, y, Width, Height,
                                       isTrue(asPreMultiplied));
        });
    }
    STDMETHODIMP SetDIBbits(SAFEARRAY** inStream, VARIANT_BOOL isBGRformat, VARIANT_BOOL is32bpp,
                            VARIANT_BOOL isWordAligned, VARIANT_BOOL isBottomUp, LONG dstX, LONG dstY, LONG dstWidth,
                            LONG dstHeight, VARIANT_BOOL* result) override {
        return read(inStream, result, [&](const ByteArray& bytes) {
            return m_sheet->SetDIBbits(bytes, isTrue(isBGRformat), isTrue(is32bpp), isTrue(isWordAligned),
                                       isTrue(isBottomUp), dstX, dstY, dstWidth, dstHeight);
        });
    }

    STDMETHODIMP PixelAlpha(LONG x, LONG y, LONG* result) override {
        return give(result, [&] { return m_sheet->PixelAlpha(x, y); });
    }
    STDMETHODIMP AlphaMask(VARIANT_BOOL as2dArray, VARIANT_BOOL asWordAligned, VARIANT_BOOL asBottomUp, LONG x, LONG y,
                           LONG Width, LONG Height, VARIANT_BOOL asVariants, VARIANT* result) override {
        return hand(result, isTrue(asVariants), [&](ByteArray& bytes) {
            return m_sheet->GetAlphaMask(bytes, isTrue(as2dArray), isTrue(asWordAligned), isTrue(asBottomUp), x, y,
                                         Width, Height);
        });
    }
    STDMETHODIMP DIBbits(VARIANT_BOOL as2dArray, VARIANT_BOOL asBGRformat, VARIANT_BOOL as32bpp,
                         VARIANT_BOOL asWordAligned, VARIANT_BOOL asBottomUp, LONG x, LONG y, LONG Width, LONG Height,
                         VARIANT_BOOL asPreMultiplied, VARIANT_BOOL asVariants, VARIANT* result) override {
        return hand(result, isTrue(asVariants), [&](ByteArray& bytes) {
            return m_sheet->GetDIBbits(bytes, isTrue(as2dArray), isTrue(asBGRformat), isTrue(as32bpp),
                                       isTrue(asWordAligned), isTrue(asBottomUp), x, y, Width, Height,
                                       isTrue(asPreMultiplied));
        });
    }

    // --- loading

    STDMETHODIMP LoadPicture_File(BSTR FileName, LONG iconCx, LONG iconCy, VARIANT_BOOL SaveFormat, LONG iconBitDepth,
                                  VARIANT_BOOL* result) override {
        return give(result, [&] {
            return m_sheet->LoadPicture_File(nameToUtf8(FileName), iconCx, iconCy, isTrue(SaveFormat), iconBitDepth);
        });
    }
    STDMETHODIMP LoadPicture_Stream(SAFEARRAY** inStream, LONG iconCx, LONG iconCy, LONG streamStart, LONG streamLength,
                                    VARIANT_BOOL SaveFormat, LONG iconBitDepth, VARIANT_BOOL* result) override {
        if (inStream == nullptr) return E_POINTER;
        return give(result, [&] {
            // An array that cannot be read is one without data: refused, and the instance emptied, by the native
            // member.
            const CallersBytes array(inStream, Access::read);
            const bool isLoaded = m_sheet->LoadPicture_Stream(array.bytes(), iconCx, iconCy, streamStart, streamLength,
                                                              isTrue(SaveFormat), iconBitDepth);
            return array.isUsable() ? isLoaded : refuse(noArrayOfBytes);
        });
    }
    STDMETHODIMP LoadPicture_Resource(VARIANT ResIndex, VARIANT ResSection, IDispatch* VBglobal, LONG iconCx,
                                      LONG iconCy, LONG streamStart, LONG streamLength, LONG iconBitDepth,
                                      VARIANT_BOOL* result) override;
    STDMETHODIMP LoadPicture_FromOrignalFormat(LONG iconCx, LONG iconCy, LONG iconBitDepth,
                                               VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->LoadPicture_FromOrignalFormat(iconCx, iconCy, iconBitDepth); });
    }
    STDMETHODIMP GetOrginalFormat(SAFEARRAY** outStream, VARIANT_BOOL* result) override {
        return fill(outStream, Access::replace, result,
                    [&](ByteArray& bytes) { return m_sheet->GetOrginalFormat(bytes); });
    }
    STDMETHODIMP SourceIconSizes(SAFEARRAY** sizeArray, LONG* result) override;
    STDMETHODIMP LoadPicture_StdPicture(IPictureDisp** Picture, VARIANT_BOOL* result) override;
    STDMETHODIMP LoadPicture_ClipBoard(VARIANT_BOOL SaveFormat, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->LoadPicture_ClipBoard(isTrue(SaveFormat)); });
    }
    STDMETHODIMP LoadPicture_ByHandle(LONG_PTR* Handle, VARIANT_BOOL* result) override {
        if (Handle == nullptr) return E_POINTER;
        return give(result, [&] { return m_sheet->LoadPicture_ByHandle(*Handle); });
    }

    // --- saving

    STDMETHODIMP SaveToFile_Bitmap(BSTR FileName, VARIANT_BOOL KeepPreMultipliedPixels, LONG TransparentFillColor,
                                   VARIANT_BOOL PromptOverWrite, VARIANT_BOOL* result) override {
        return give(result, [&] {
            return m_sheet->SaveToFile_Bitmap(nameToUtf8(FileName), isTrue(KeepPreMultipliedPixels),
                                              TransparentFillColor, isTrue(PromptOverWrite));
        });
    }
    STDMETHODIMP SaveToStream_Bitmap(SAFEARRAY** outStream, VARIANT_BOOL KeepPreMultipliedPixels,
                                     LONG TransparentFillColor, VARIANT_BOOL* result) override {
        return fill(outStream, Access::replace, result, [&](ByteArray& bytes) {
            return m_sheet->SaveToStream_Bitmap(bytes, isTrue(KeepPreMultipliedPixels), TransparentFillColor);
        });
    }

    STDMETHODIMP SaveToFile_TGA(BSTR FileName, VARIANT_BOOL Compress, VARIANT_BOOL ReduceBitDepth,
                                VARIANT_BOOL AllowPreMultipliedPixels, VARIANT_BOOL PromptOverWrite,
                                VARIANT_BOOL* result) override {
        return give(result, [&] {
            return m_sheet->SaveToFile_TGA(nameToUtf8(FileName), isTrue(Compress), isTrue(ReduceBitDepth),
                                           isTrue(AllowPreMultipliedPixels), isTrue(PromptOverWrite));
        });
    }
    STDMETHODIMP SaveToStream_TGA(SAFEARRAY** outStream, VARIANT_BOOL Compress, VARIANT_BOOL ReduceBitDepth,
                                  VARIANT_BOOL AllowPreMultipliedPixels, VARIANT_BOOL* result) override {
        return fill(outStream, Access::replace, result, [&](ByteArray& bytes) {
            return m_sheet->SaveToStream_TGA(bytes, isTrue(Compress), isTrue(ReduceBitDepth),
                                             isTrue(AllowPreMultipliedPixels));
        });
    }

    STDMETHODIMP SaveToFile_JPG(BSTR FileName, LONG Quality, LONG TransparentFillColor, VARIANT_BOOL PromptOverWrite,
                                VARIANT_BOOL* result) override {
        return give(result, [&] {
            return m_sheet->SaveToFile_JPG(nameToUtf8(FileName), Quality, TransparentFillColor,
                                           isTrue(PromptOverWrite));
        });
    }
    STDMETHODIMP SaveToStream_JPG(SAFEARRAY** outStream, LONG Quality, VARIANT_BOOL* result) override {
        return fill(outStream, Access::replace, result,
                    [&](ByteArray& bytes) { return m_sheet->SaveToStream_JPG(bytes, Quality); });
    }
    STDMETHODIMP SaveToFile_GIF(BSTR FileName, VARIANT_BOOL UseAdaptivePalette, BYTE OpaquenessTolerance,
                                VARIANT_BOOL PromptOverWrite, VARIANT_BOOL* result) override {
        return give(result, [&] {
            return m_sheet->SaveToFile_GIF(nameToUtf8(FileName), isTrue(UseAdaptivePalette), OpaquenessTolerance,
                                           isTrue(PromptOverWrite));
        });
    }
    STDMETHODIMP SaveToStream_GIF(SAFEARRAY** outStream, VARIANT_BOOL UseAdaptivePalette, BYTE OpaquenessTolerance,
                                  VARIANT_BOOL PromptOverWrite, VARIANT_BOOL* result) override {
        return fill(outStream, Access::replace, result, [&](ByteArray& bytes) {
            return m_sheet->SaveToStream_GIF(bytes, isTrue(UseAdaptivePalette), OpaquenessTolerance,
                                             isTrue(PromptOverWrite));
        });
    }

    STDMETHODIMP CopyToClipBoard(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->CopyToClipBoard(); });
    }
    STDMETHODIMP SaveToFile_ICO(BSTR FileName, VARIANT* Source, VARIANT_BOOL PromptOverWrite, SAFEARRAY** Sizes,
                                LONG* result) override;
    STDMETHODIMP SaveToStream_ICO(SAFEARRAY** outStream, VARIANT* Source, SAFEARRAY** Sizes, LONG* result) override;

    STDMETHODIMP SaveToFile_PNG(BSTR FileName, VARIANT_BOOL PromptOverWrite, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->SaveToFile_PNG(nameToUtf8(FileName), isTrue(PromptOverWrite)); });
    }
    STDMETHODIMP SaveToStream_PNG(SAFEARRAY** outStream, VARIANT_BOOL* result) override {
        return fill(outStream, Access::replace, result,
                    [&](ByteArray& bytes) { return m_sheet->SaveToStream_PNG(bytes); });
    }
    STDMETHODIMP StreamOf(::eStreamFormats Format, SAFEARRAY** Options, VARIANT* result) override {
        return hand(result, false, [&](ByteArray& bytes) {
            std::vector<std::int32_t> numbers;
            if (!collectOptions(Options, numbers)) return refuse("an option is neither a number nor a Boolean");
            bytes = m_sheet->StreamOf(Format, numbers);
            return bytes.isAllocated();
        });
    }
    STDMETHODIMP PngPropertyGet(::ePngProperties Property, BSTR Keyword, VARIANT* result) override;
    STDMETHODIMP PngPropertySet(::ePngProperties Property, VARIANT Value, BSTR Keyword, VARIANT_BOOL* result) override {
        return give(result, [&] {
            const std::string keyword = toUtf8(Keyword); // the code of an object in Value may free the caller's
            const auto value = pngValueOf(Value);
            if (!value) return refuse("no property has such a value");
            return m_sheet->PngPropertySet(static_cast<pixkit::ePngProperties>(Property), *value, keyword);
        });
    }

    // --- rendering and effects

    STDMETHODIMP MakeGrayScale(::eGrayScaleFormulas Formula, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->MakeGrayScale(Formula); });
    }
    STDMETHODIMP MakeImageInverse(VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->MakeImageInverse(); });
    }
    STDMETHODIMP MakeLighterDarker(float Percent, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->MakeLighterDarker(Percent); });
    }
    STDMETHODIMP MakeTransparent(LONG TransparentColor, VARIANT_BOOL Revert, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->MakeTransparent(TransparentColor, isTrue(Revert)); });
    }
    STDMETHODIMP BlendToColor(LONG BlendColor, LONG BlendOpacity, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->BlendToColor(BlendColor, BlendOpacity); });
    }
    STDMETHODIMP MirrorImage(VARIANT_BOOL MirrorAxisX, VARIANT_BOOL MirrorAxisY, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->MirrorImage(isTrue(MirrorAxisX), isTrue(MirrorAxisY)); });
    }
    STDMETHODIMP Render(LONG_PTR destinationDC, LONG destX, LONG destY, LONG destWidth, LONG destHeight, LONG SrcX,
                        LONG SrcY, LONG srcWidth, LONG srcHeight, LONG Opacity, VARIANT_BOOL Blend,
                        VARIANT_BOOL SetHalfTone, _cPixSheet** destHostDIB, ::eGrayScaleFormulas grayScale,
                        float LightAdjustment, float Angle, VARIANT_BOOL CenterOnDestXY,
                        VARIANT_BOOL* result) override {
        return drawOnto(destHostDIB, result, [&](cPixSheet* host) {
            return m_sheet->Render(destinationDC, destX, destY, destWidth, destHeight, SrcX, SrcY, srcWidth, srcHeight,
                                   Opacity, isTrue(Blend), isTrue(SetHalfTone), host, grayScale, LightAdjustment, Angle,
                                   isTrue(CenterOnDestXY));
        });
    }
    STDMETHODIMP RenderDropShadow_JIT(LONG_PTR hDC, LONG x, LONG y, LONG blurDepth, LONG Color, LONG Opacity,
                                      float LightAdjustment, _cPixSheet** destHostDIB, VARIANT_BOOL* result) override {
        return drawOnto(destHostDIB, result, [&](cPixSheet* host) {
            return m_sheet->RenderDropShadow_JIT(hDC, x, y, blurDepth, Color, Opacity, LightAdjustment, host);
        });
    }
    STDMETHODIMP CreateGDIplusToken(LONG* result) override {
        return give(result, [&] { return m_sheet->CreateGDIplusToken(); });
    }
    STDMETHODIMP DestroyGDIplusToken(LONG Token, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->DestroyGDIplusToken(Token); });
    }
    STDMETHODIMP Resize(LONG newWidth, LONG newHeight, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->Resize(newWidth, newHeight); });
    }
    STDMETHODIMP Resample(LONG newWidth, LONG newHeight, ::eResampleFilters Filter, _cPixSheet** destHostDIB,
                          VARIANT_BOOL* result) override {
        return drawOnto(destHostDIB, result,
                        [&](cPixSheet* host) { return m_sheet->Resample(newWidth, newHeight, Filter, host); });
    }
    STDMETHODIMP ScaleImage(LONG destWidth, LONG destHeight, LONG* newWidth, LONG* newHeight,
                            ::eScaleOptions ScaleMode) override;

    STDMETHODIMP CreateDropShadow(LONG blurDepth, LONG Color, _cPixSheet** result) override {
        return give(result, [&] { return newObject(m_sheet->CreateDropShadow(blurDepth, Color)); });
    }
    STDMETHODIMP CreateCheckerBoard(LONG CheckerSize, LONG FirstColor, LONG SecondColor,
                                    VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->CreateCheckerBoard(CheckerSize, FirstColor, SecondColor); });
    }
    STDMETHODIMP TileImage(LONG_PTR destinationDC, LONG destX, LONG destY, LONG destWidth, LONG destHeight,
                           LONG Opacity, LONG offsetX, LONG offsetY, LONG Gap, _cPixSheet** destHostDIB,
                           VARIANT_BOOL* result) override {
        return drawOnto(destHostDIB, result, [&](cPixSheet* host) {
            return m_sheet->TileImage(destinationDC, destX, destY, destWidth, destHeight, Opacity, offsetX, offsetY,
                                      Gap, host);
        });
    }
    STDMETHODIMP TrimImage(::eTrimOptions TrimOptions, VARIANT_BOOL ReportOnly, LONG* x, LONG* y, LONG* Width,
                           LONG* Height, VARIANT_BOOL* result) override;

    // --- dropped and pasted files

    STDMETHODIMP LoadPicture_DropedFiles(VARIANT* Data, LONG FileIndex, LONG iconCx, LONG iconCy,
                                         VARIANT_BOOL SaveFormat, LONG iconBitDepth, VARIANT_BOOL* result) override;
    STDMETHODIMP GetDroppedFileNames(VARIANT* Data, SAFEARRAY** FileNames, LONG* result) override;
    STDMETHODIMP LoadPicture_PastedFiles(LONG FileIndex, LONG iconCx, LONG iconCy, VARIANT_BOOL SaveFormat,
                                         LONG iconBitDepth, VARIANT_BOOL* result) override {
        return give(result, [&] {
            return m_sheet->LoadPicture_PastedFiles(FileIndex, iconCx, iconCy, isTrue(SaveFormat), iconBitDepth);
        });
    }
    STDMETHODIMP GetPastedFileNames(SAFEARRAY** FileNames, LONG* result) override;

    // --- text

    STDMETHODIMP DrawText_hFont(LONG_PTR destinationDC, LONG_PTR hFont, BSTR Text, LONG destX, LONG destY,
                                LONG destWidth, LONG destHeight, LONG Color, LONG Opacity, ::eTextAlignment Alignment,
                                VARIANT_BOOL WordWrap, float Angle, _cPixSheet** destHostDIB,
                                VARIANT_BOOL* result) override {
        return drawOnto(destHostDIB, result, [&](cPixSheet* host) {
            return m_sheet->DrawText_hFont(destinationDC, hFont, allToUtf8(Text), destX, destY, destWidth, destHeight,
                                           Color, Opacity, Alignment, isTrue(WordWrap), Angle, host);
        });
    }
    STDMETHODIMP DrawText_stdFont(LONG_PTR destinationDC, IFontDisp** Font, BSTR Text, LONG destX, LONG destY,
                                  LONG destWidth, LONG destHeight, LONG Color, LONG Opacity, ::eTextAlignment Alignment,
                                  VARIANT_BOOL WordWrap, float Angle, _cPixSheet** destHostDIB,
                                  VARIANT_BOOL* result) override {
        if (Font == nullptr) return E_POINTER;
        return drawOnto(destHostDIB, result, [&](cPixSheet* host) {
            const std::string words = allToUtf8(Text); // the font's code may free or change the caller's string
            const FontArgument font(*Font);
            if (!font) return refuse(noFont);
            return m_sheet->DrawText_hFont(destinationDC, font.handle(), words, destX, destY, destWidth, destHeight,
                                           Color, Opacity, Alignment, isTrue(WordWrap), Angle, host);
        });
    }
    STDMETHODIMP MeasureText_hFont(LONG_PTR hFont, BSTR Text, LONG* Width, LONG* Height, LONG maxWidth,
                                   VARIANT_BOOL WordWrap, ::eTextAlignment Alignment, VARIANT_BOOL* result) override {
        if (Width == nullptr || Height == nullptr) return E_POINTER;
        return give(result, [&] {
            return measureText(hFont, allToUtf8(Text), *Width, *Height, maxWidth, WordWrap, Alignment);
        });
    }
    STDMETHODIMP MeasureText_stdFont(IFontDisp** Font, BSTR Text, LONG* Width, LONG* Height, LONG maxWidth,
                                     VARIANT_BOOL WordWrap, ::eTextAlignment Alignment, VARIANT_BOOL* result) override {
        if (Font == nullptr || Width == nullptr || Height == nullptr) return E_POINTER;
        return give(result, [&] {
            const std::string words = allToUtf8(Text); // as above
            const FontArgument font(*Font);
            if (!font) return refuse(noFont);
            return measureText(font.handle(), words, *Width, *Height, maxWidth, WordWrap, Alignment);
        });
    }

    // --- handing out

    STDMETHODIMP CreateBitmap(::ePictureStyles Style, LONG BackColor, LONG_PTR* result) override {
        return give(result, [&] { return m_sheet->CreateBitmap(Style, BackColor); });
    }
    STDMETHODIMP CreateIcon(LONG Width, LONG Height, LONG_PTR* result) override {
        return give(result, [&] { return m_sheet->CreateIcon(Width, Height); });
    }
    STDMETHODIMP CreateCursor(LONG HotspotX, LONG HotspotY, LONG Width, LONG Height, LONG_PTR* result) override {
        return give(result, [&] { return m_sheet->CreateCursor(HotspotX, HotspotY, Width, Height); });
    }
    STDMETHODIMP CreateStdPicture(::ePictureStyles Style, LONG BackColor, IPictureDisp** result) override;
    STDMETHODIMP UpdateLayeredWindow(LONG_PTR hWnd, LONG x, LONG y, LONG Opacity, VARIANT_BOOL* result) override {
        return give(result, [&] { return m_sheet->UpdateLayeredWindow(hWnd, x, y, Opacity); });
    }

    // --- regions

    STDMETHODIMP CreateRegion(::eRegionStyles RegionStyle, BYTE OpaquenessTolerance, LONG_PTR* result) override {
        return give(result, [&] { return m_sheet->CreateRegion(RegionStyle, OpaquenessTolerance); });
    }

    // --- limits

    STDMETHODIMP get_MaxPixels(DOUBLE* result) override {
        return give(result, [&] { return m_sheet->MaxPixels(); });
    }
    STDMETHODIMP put_MaxPixels(DOUBLE value) override {
        return run([&] { m_sheet->MaxPixels(value); });
    }
    STDMETHODIMP get_MaxMemory(DOUBLE* result) override {
        return give(result, [&] { return m_sheet->MaxMemory(); });
    }
    STDMETHODIMP put_MaxMemory(DOUBLE value) override {
        return run([&] { m_sheet->MaxMemory(value); });
    }

  private:
    using Access = CallersBytes::Access;

    // May throw std::bad_alloc: the object is put on the list of those that live.
    explicit PixSheetObject(std::unique_ptr<cPixSheet> sheet) : m_sheet(std::move(sheet)) {}
    ~PixSheetObject() = default;

    // The object behind an interface when this very DLL made it; null for every other implementation.
    static PixSheetObject* ours(_cPixSheet* object) noexcept {
        return LiveObject::isOne(object) ? static_cast<PixSheetObject*>(object) : nullptr;
    }
    // The same for an object that a member may be given; `isOther` where there is one, but none of this DLL's.
    static PixSheetObject* given(_cPixSheet** object, bool& isOther) noexcept {
        PixSheetObject* const found = object != nullptr && *object != nullptr ? ours(*object) : nullptr;
        isOther = found == nullptr && object != nullptr && *object != nullptr;
        return found;
    }
    HRESULT types() noexcept;
    // Whether an array was laid over the pixels by its owner: then it cannot be replaced, nor filled from them.
    bool liesInImage(const SAFEARRAY* array) const noexcept;

    // An object around a native one; null for null.
    static PixSheetObject* newObject(std::unique_ptr<cPixSheet> sheet) {
        return sheet ? new PixSheetObject(std::move(sheet)) : nullptr;
    }

    // Nothing for a value of a kind that no property has.
    static std::optional<PngValue> pngValueOf(const VARIANT& value);

    // The images and sizes of an icon file; null in the place of an object that is none of this DLL's, and a size that
    // is refused where one is none. Foreign code runs.
    struct IconArguments {
        IconArguments(const VARIANT* source, SAFEARRAY** entries); // may throw std::bad_alloc
        std::vector<ComPtr<_cPixSheet>> objects;
        std::vector<const cPixSheet*> sheets;
        std::vector<IconEntrySize> sizes;
    };

    // Why a member fails before the native one is asked, or after it: for LastErrorText. Always false.
    bool refuse(Reason reason) const noexcept { return HostAccess::outcome(*m_sheet, refused(reason)); }
    static constexpr Reason noArrayOfBytes = "no array of bytes in one or two dimensions that can be locked";
    static constexpr Reason noRoomInArray = "no array of bytes that another can take the place of";

    static constexpr Reason noFont = "the object is no font";
    bool measureText(std::intptr_t hFont, const std::string& Text, LONG& Width, LONG& Height, LONG maxWidth,
                     VARIANT_BOOL WordWrap, ::eTextAlignment Alignment) const {
        std::int32_t width = Width, height = Height;
        const bool isMeasured =
            m_sheet->MeasureText_hFont(hFont, Text, width, height, maxWidth, isTrue(WordWrap), Alignment);
        Width = width;
        Height = height;
        return isMeasured;
    }

    // Puts names into the caller's array. False, and why, when it cannot be replaced.
    bool giveNames(SAFEARRAY** FileNames, const std::vector<std::string>& names) const;

    // Callers write True as any number but 0.
    static bool isTrue(VARIANT_BOOL value) noexcept { return value != VARIANT_FALSE; }

    static void convert(bool from, VARIANT_BOOL* to) noexcept { *to = from ? VARIANT_TRUE : VARIANT_FALSE; }
    // NOLINTNEXTLINE(readability-non-const-parameter): the other one would be taken
    static void convert(std::uint8_t* from, LONG_PTR* to) noexcept { *to = reinterpret_cast<LONG_PTR>(from); }
    template <class From, class To>
    static void convert(From from, To* to) noexcept {
        *to = static_cast<To>(from);
    }

    // Adds the arguments, of late-bound calls, and the variables of the native object.
    friend void describeInstance(const PixSheetObject& object, ErrorReport& report);

    // Holds the object while a member of it runs: a host that is called back, or a timer of the program's while a
    // question is open, may let go of the last reference.
    class Hold {
      public:
        explicit Hold(PixSheetObject& object) noexcept : m_object(object) { m_object.AddRef(); }
        ~Hold() { m_object.Release(); }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

      private:
        PixSheetObject& m_object;
    };

    // The forms of a member, which the guard knows by its name and line; reports of the native member that it calls,
    // which has a guard of its own, name the parameters in any case. A null pointer for what it gives is refused before
    // anything happens; whatever goes wrong inside becomes the member's failure value, never an HRESULT. The
    // object is held.
    template <class Body>
    HRESULT run(Body&& body, const Procedure& member = __builtin_FUNCTION()) noexcept {
        const Hold held(*this);
        Outcome outcome = guardedOutcome(Call(*this, member), [&] { return body(), done(); });
        if (!outcome) HostAccess::outcome(*m_sheet, std::move(outcome)); // else it is that of the native member
        return S_OK;
    }
    template <class Result, class Body>
    HRESULT give(Result* result, Body&& body, const Procedure& member = __builtin_FUNCTION()) noexcept {
        if (result == nullptr) return E_POINTER;
        *result = Result();
        return run([&] { convert(body(), result); }, member);
    }
    // `body` gets the object to draw on, or null where the caller names none.
    template <class Body>
    HRESULT drawOnto(_cPixSheet** host, VARIANT_BOOL* result, Body&& body,
                     const Procedure& member = __builtin_FUNCTION()) noexcept {
        bool isOther = false;
        PixSheetObject* const target = given(host, isOther);
        if (isOther) return DISP_E_TYPEMISMATCH;
        ComPtr<_cPixSheet> held; // a font object's code may run
        held.hold(target);
        return give(
            result, [&] { return body(target != nullptr ? target->m_sheet.get() : nullptr); }, member);
    }
    template <class Body>
    HRESULT read(SAFEARRAY** stream, VARIANT_BOOL* result, Body&& body,
                 const Procedure& member = __builtin_FUNCTION()) noexcept {
        if (stream == nullptr) return E_POINTER;
        return give(
            result,
            [&] {
                const CallersBytes array(stream, Access::read);
                return array.isUsable() ? body(array.bytes()) : refuse(noArrayOfBytes);
            },
            member);
    }
    template <class Result, class Body>
    HRESULT fill(SAFEARRAY** stream, Access access, Result* result, Body&& body,
                 const Procedure& member = __builtin_FUNCTION()) noexcept {
        if (stream == nullptr) return E_POINTER;
        return give(
            result,
            [&] {
                CallersBytes array(stream, access);
                using Filled = decltype(body(array.bytes()));
                if (!array.isUsable() || liesInImage(*stream)) return static_cast<Filled>(refuse(noRoomInArray));
                const auto filled = body(array.bytes());
                return array.store() ? filled : static_cast<Filled>(refuse(noMemory));
            },
            member);
    }
    // An array of bytes by value, for the languages whose variables a member cannot store in: Empty where `body` fails.
    // What scripts can look into are arrays of VARIANT.
    template <class Body>
    HRESULT hand(VARIANT* result, bool asVariants, Body&& body,
                 const Procedure& member = __builtin_FUNCTION()) noexcept {
        if (result == nullptr) return E_POINTER;
        *result = VARIANT{};
        return run(
            [&] {
                SAFEARRAY* filled = nullptr;
                CallersBytes array(&filled, Access::replace);
                if (!body(array.bytes())) return;
                if (!array.store() || (asVariants && !becomeVariants(filled))) {
                    refuse(noMemory);
                    return;
                }
                result->vt = static_cast<VARTYPE>(VT_ARRAY | (asVariants ? VT_VARIANT : VT_UI1));
                result->parray = filled;
            },
            member);
    }

    ModuleReference m_module; // first, so that the DLL stays while the rest goes
    LONG m_references = 1;
    std::unique_ptr<cPixSheet> m_sheet;
    std::shared_ptr<const TypeInformation> m_types;
    const LateCall* m_lateCall = nullptr; // the innermost one that is being made
    Variant m_Tag;                        // goes before the others: releasing an object may run code that asks for them
    LiveObject m_live{this};              // last: an object that is going is no argument for others
};

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
