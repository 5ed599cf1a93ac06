#define INITGUID // this file defines what the generated header only declares
#include "com/PixSheetObject.h"
#include "com/Dispatch.h"
#include "com/DroppedFiles.h"
#include "com/IconArguments.h"
#include "com/Resources.h"
#include "com/Values.h"
#include "platform/win32/system/version_record.h"
#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <variant>

namespace pixkit::com {

namespace {

// What the native members refuse, in their own order: where a caller's sizes are none.
constexpr IconEntrySize noSize = {-1, -1};

constexpr Reason noSuchResource = "there is no such resource";

constexpr LONG beingDestroyed = 1L << 30;

// As the DLL's version record says; its third number is not used here. Empty without one.
std::string ownVersion() {
    const auto record = platform::versionRecord(moduleInstance());
    if (!record) return {};
    return std::to_string((*record)[0]) + "." + std::to_string((*record)[1]) + "." + std::to_string((*record)[3]);
}

} // namespace

HRESULT PixSheetObject::create(REFIID interfaceId, void** object) noexcept try {
    auto* const created = new PixSheetObject(std::make_unique<cPixSheet>());
    keepGdiplus();
    const HRESULT status = created->QueryInterface(interfaceId, object);
    created->Release();
    return status;
} catch (...) {
    return E_OUTOFMEMORY;
}

// --- IUnknown

HRESULT PixSheetObject::QueryInterface(REFIID interfaceId, void** object) {
    if (object == nullptr) return E_POINTER;
    if (interfaceId == IID_IUnknown || interfaceId == IID_IDispatch || interfaceId == IID__cPixSheet) {
        *object = static_cast<_cPixSheet*>(this);
    } else if (interfaceId == IID_IProvideClassInfo) {
        *object = static_cast<IProvideClassInfo*>(this);
    } else if (interfaceId == IID_ISupportErrorInfo) {
        *object = static_cast<ISupportErrorInfo*>(this);
    } else {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG PixSheetObject::AddRef() {
    return static_cast<ULONG>(::InterlockedIncrement(&m_references));
}

ULONG PixSheetObject::Release() {
    const LONG left = ::InterlockedDecrement(&m_references);
    if (left == 0) {
        m_references = beingDestroyed; // what Tag held may still take and return references while it goes
        delete this;
    }
    return static_cast<ULONG>(left);
}

bool PixSheetObject::liesInImage(const SAFEARRAY* array) const noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(m_sheet->BitsPointer());
    const auto size = static_cast<std::uintptr_t>(m_sheet->scanWidth()) * static_cast<unsigned>(m_sheet->Height());
    return array != nullptr && first != 0 && reinterpret_cast<std::uintptr_t>(array->pvData) - first < size;
}

// --- IDispatch and what describes the object

HRESULT PixSheetObject::types() noexcept {
    return m_types ? S_OK : TypeInformation::get(m_types);
}

HRESULT PixSheetObject::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT PixSheetObject::GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** info) {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    if (const HRESULT status = types(); FAILED(status)) return status;
    *info = m_types->interfaceInfo();
    (*info)->AddRef();
    return S_OK;
}

HRESULT PixSheetObject::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID /*locale*/, DISPID* ids) {
    if (!::IsEqualGUID(reserved, GUID{})) return DISP_E_UNKNOWNINTERFACE;
    if (names == nullptr || ids == nullptr) return E_POINTER;
    if (count == 0) return E_INVALIDARG;
    if (std::find(names, names + count, nullptr) != names + count) return E_POINTER;
    if (const HRESULT status = types(); FAILED(status)) return status;
    return m_types->interfaceInfo()->GetIDsOfNames(names, count, ids);
}

HRESULT PixSheetObject::Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* arguments,
                               VARIANT* result, EXCEPINFO* /*exception*/, UINT* argumentError) {
    if (!::IsEqualGUID(reserved, GUID{})) return DISP_E_UNKNOWNINTERFACE;
    if (const HRESULT status = types(); FAILED(status)) return status;
    const Hold held(*this);
    const LateCall call{id, arguments};
    const LateCall* const outer = std::exchange(m_lateCall, &call);
    const HRESULT status = invoke(*m_types, this, id, locale, flags, arguments, result, argumentError);
    m_lateCall = outer;
    return status;
}

HRESULT PixSheetObject::GetClassInfo(ITypeInfo** info) {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    if (const HRESULT status = types(); FAILED(status)) return status;
    *info = m_types->classInfo();
    (*info)->AddRef();
    return S_OK;
}

HRESULT PixSheetObject::InterfaceSupportsErrorInfo(REFIID /*interfaceId*/) {
    return S_FALSE; // members never raise
}

void describeInstance(const PixSheetObject& object, ErrorReport& report) {
    if (object.m_lateCall != nullptr) object.m_lateCall->describe(*object.m_types, report);
    describeInstance(*object.m_sheet, report);
}

// --- members that are more than forwarding

HRESULT PixSheetObject::get_Tag(VARIANT* result) {
    if (result == nullptr) return E_POINTER;
    ::VariantInit(result);
    const Hold held(*this); // copying an object runs its code, here as below
    return ::VariantCopy(result, &m_Tag);
}

HRESULT PixSheetObject::put_Tag(VARIANT value) {
    const Hold held(*this);
    Variant copied;
    if (const HRESULT status = copyOf(value, copied); FAILED(status)) return status;
    // The old value goes last: releasing an object may run code that asks for Tag.
    std::swap(static_cast<VARIANT&>(copied), static_cast<VARIANT&>(m_Tag));
    return S_OK;
}

PixSheetObject::IconArguments::IconArguments(const VARIANT* source, SAFEARRAY** entries) {
    if (source != nullptr && !collectSheets(*source, objects)) sheets.push_back(nullptr);
    if (entries != nullptr && *entries != nullptr && !collectIconSizes(*entries, sizes)) sizes = {noSize};
    for (const ComPtr<_cPixSheet>& object : objects) {
        const PixSheetObject* const sheet = ours(object.get());
        sheets.push_back(sheet != nullptr ? sheet->m_sheet.get() : nullptr);
    }
}

HRESULT PixSheetObject::SaveToFile_ICO(BSTR FileName, VARIANT* Source, VARIANT_BOOL PromptOverWrite, SAFEARRAY** Sizes,
                                       LONG* result) {
    return give(result, [&] {
        const std::string name = nameToUtf8(FileName); // the objects' code may free the caller's string
        const IconArguments icon(Source, Sizes);
        return m_sheet->SaveToFile_ICO(name, icon.sheets, isTrue(PromptOverWrite), icon.sizes);
    });
}

// The objects are asked before the caller's array is looked at: their code may replace it.
HRESULT PixSheetObject::SaveToStream_ICO(SAFEARRAY** outStream, VARIANT* Source, SAFEARRAY** Sizes, LONG* result) {
    if (outStream == nullptr || result == nullptr) return E_POINTER;
    const Hold held(*this);
    std::optional<IconArguments> icon;
    const HRESULT status = run([&] { icon.emplace(Source, Sizes); });
    *result = 0;
    if (!icon) return status;
    return fill(outStream, Access::replace, result,
                [&](ByteArray& bytes) { return m_sheet->SaveToStream_ICO(bytes, icon->sheets, icon->sizes); });
}

HRESULT PixSheetObject::PngPropertyGet(::ePngProperties Property, BSTR Keyword, VARIANT* result) {
    if (result == nullptr) return E_POINTER;
    *result = VARIANT{};
    return run([&] {
        const PngValue value = m_sheet->PngPropertyGet(static_cast<pixkit::ePngProperties>(Property), toUtf8(Keyword));
        if (const auto* number = std::get_if<std::int32_t>(&value)) {
            result->vt = Property == ::pngInterlaced ? VT_BOOL : VT_I4;
            if (Property == ::pngInterlaced) {
                convert(*number != 0, &result->boolVal);
            } else {
                result->lVal = *number;
            }
        } else if (const auto* date = std::get_if<double>(&value)) {
            result->vt = VT_DATE;
            result->date = *date;
        } else if (const auto* text = std::get_if<std::string>(&value)) {
            result->bstrVal = toBstr(*text);
            if (result->bstrVal != nullptr) result->vt = VT_BSTR;
        }
    });
}

std::optional<PngValue> PixSheetObject::pngValueOf(const VARIANT& value) {
    Variant plain; // by value, also where it came by reference
    if (FAILED(copyOf(value, plain))) return {};
    switch (plain.vt) {
    case VT_EMPTY:
    case VT_NULL:
    case VT_ERROR: // left out
        return PngValue();
    case VT_BSTR:
        return PngValue(toUtf8(plain.bstrVal));
    case VT_DATE:
        return PngValue(plain.date);
    default: { // scripts keep numbers in any type
        Variant number;
        if (FAILED(changeType(plain, VT_I4, number))) return {};
        return PngValue(static_cast<std::int32_t>(number.lVal));
    }
    }
}

HRESULT PixSheetObject::get_Version(BSTR* result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return run([&] { *result = toBstr(ownVersion()); });
}

HRESULT PixSheetObject::get_LastErrorText(BSTR* result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return run([&] { *result = toBstr(std::string(m_sheet->LastErrorText())); });
}

HRESULT PixSheetObject::get_LoadNotes(BSTR* result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return run([&] { *result = toBstr(m_sheet->LoadNotes()); });
}

HRESULT PixSheetObject::CopyImageTo(_cPixSheet** cDIBclass, LONG newWidth, LONG newHeight,
                                    VARIANT_BOOL CopyOriginalFormat) {
    if (cDIBclass == nullptr) return E_POINTER;
    bool isOther = false;
    PixSheetObject* const target = given(cDIBclass, isOther);
    if (isOther) return DISP_E_TYPEMISMATCH;
    if (target != nullptr) {
        const Hold held(*target); // until what went wrong has been told, while the program may go on
        return run([&] { m_sheet->CopyImageTo(*target->m_sheet, newWidth, newHeight, isTrue(CopyOriginalFormat)); });
    }
    return run([&] {
        std::unique_ptr<cPixSheet> copy;
        m_sheet->CopyImageTo(copy, newWidth, newHeight, isTrue(CopyOriginalFormat));
        if (copy) *cDIBclass = newObject(std::move(copy));
    });
}

HRESULT PixSheetObject::SwapDIBs(_cPixSheet** SwapFromDIB) {
    if (SwapFromDIB == nullptr) return E_POINTER;
    bool isOther = false;
    PixSheetObject* const other = given(SwapFromDIB, isOther);
    if (isOther) return DISP_E_TYPEMISMATCH;
    return run([&] { m_sheet->SwapDIBs(other != nullptr ? other->m_sheet.get() : nullptr); });
}

// Both optionals come by reference; C++ callers leave them out as null pointers.
HRESULT PixSheetObject::GetPixel(LONG x, LONG y, LONG* AlphaValue, VARIANT_BOOL* asPreMultiplied, LONG* result) {
    return give(result, [&] {
        std::int32_t alpha = 0;
        const bool premultiplied = asPreMultiplied != nullptr && isTrue(*asPreMultiplied);
        const std::int32_t color = m_sheet->GetPixel(x, y, &alpha, premultiplied);
        if (AlphaValue != nullptr) *AlphaValue = alpha;
        return color;
    });
}

HRESULT PixSheetObject::ScaleImage(LONG destWidth, LONG destHeight, LONG* newWidth, LONG* newHeight,
                                   ::eScaleOptions ScaleMode) {
    if (newWidth == nullptr || newHeight == nullptr) return E_POINTER;
    return run([&] {
        std::int32_t width = *newWidth;
        std::int32_t height = *newHeight;
        m_sheet->ScaleImage(destWidth, destHeight, width, height, ScaleMode);
        *newWidth = width;
        *newHeight = height;
    });
}

// As in the native class, the caller's array changes only where there is something to tell.
HRESULT PixSheetObject::SourceIconSizes(SAFEARRAY** sizeArray, LONG* result) {
    if (sizeArray == nullptr) return E_POINTER;
    return give(result, [&] {
        static_assert(sizeof(IconSourceSize) == 4 * sizeof(std::int32_t));
        std::vector<IconSourceSize> sizes;
        const std::int32_t count = m_sheet->SourceIconSizes(sizes);
        if (count == 0) return 0;
        const bool isStored = !liesInImage(*sizeArray) &&
                              replaceByLongs(sizeArray, &sizes.front().Width, 4, static_cast<std::uint32_t>(count));
        if (!isStored) refuse("no array of numbers that another can take the place of");
        return isStored ? count : 0;
    });
}

HRESULT PixSheetObject::TrimImage(::eTrimOptions TrimOptions, VARIANT_BOOL ReportOnly, LONG* x, LONG* y, LONG* Width,
                                  LONG* Height, VARIANT_BOOL* result) {
    return give(result, [&] {
        TrimRectangle kept;
        if (!m_sheet->TrimImage(TrimOptions, isTrue(ReportOnly), &kept)) return false;
        if (x != nullptr) *x = kept.x;
        if (y != nullptr) *y = kept.y;
        if (Width != nullptr) *Width = kept.Width;
        if (Height != nullptr) *Height = kept.Height;
        return true;
    });
}

// Whatever object the caller has that knows the system's picture interface.
HRESULT PixSheetObject::LoadPicture_StdPicture(IPictureDisp** Picture, VARIANT_BOOL* result) {
    if (Picture == nullptr) return E_POINTER;
    return give(result, [&] { return m_sheet->LoadPicture_StdPicture(pictureOf(*Picture).get()); });
}

HRESULT PixSheetObject::CreateStdPicture(::ePictureStyles Style, LONG BackColor, IPictureDisp** result) {
    return give(result, [&] {
        const auto picture = m_sheet->CreateStdPicture(Style, BackColor);
        IPictureDisp* const made = picture ? pictureDispOf(*picture) : nullptr;
        if (picture && made == nullptr) refuse("the system's picture is no object for callers");
        return made;
    });
}

HRESULT PixSheetObject::LoadPicture_Resource(VARIANT ResIndex, VARIANT ResSection, IDispatch* VBglobal, LONG iconCx,
                                             LONG iconCy, LONG streamStart, LONG streamLength, LONG iconBitDepth,
                                             VARIANT_BOOL* result) {
    return give(result, [&] {
        if (!isCustomResource(ResSection)) {
            // The system draws icons at the size that is asked for.
            const double width = std::max<double>(iconCx, 1), height = std::max<double>(iconCy, 1);
            if (const Reason limit = HostAccess::limits(*m_sheet).problem(width, height)) {
                m_sheet->DestroyDIB(); // as every load that fails
                return refuse(limit);
            }
            const auto picture = resourcePicture(ResIndex, ResSection, VBglobal, iconCx, iconCy);
            const bool isLoaded = m_sheet->LoadPicture_StdPicture(picture.get());
            return picture ? isLoaded : refuse(noSuchResource);
        }
        bool isThere = false;
        const bool isLoaded = withResource(ResIndex, ResSection, VBglobal, [&](const ByteArray& bytes) {
            isThere = true;
            return m_sheet->LoadPicture_Stream(bytes, iconCx, iconCy, streamStart, streamLength, false, iconBitDepth);
        });
        if (isThere) return isLoaded;
        m_sheet->DestroyDIB(); // as every load that fails
        return refuse(noSuchResource);
    });
}

// --- dropped and pasted files

HRESULT PixSheetObject::LoadPicture_DropedFiles(VARIANT* Data, LONG FileIndex, LONG iconCx, LONG iconCy,
                                                VARIANT_BOOL SaveFormat, LONG iconBitDepth, VARIANT_BOOL* result) {
    if (Data == nullptr) return E_POINTER;
    return give(result, [&] {
        const auto files = droppedFiles(*Data);
        return m_sheet->LoadPicture_DropedFiles(files, FileIndex, iconCx, iconCy, isTrue(SaveFormat), iconBitDepth);
    });
}

bool PixSheetObject::giveNames(SAFEARRAY** FileNames, const std::vector<std::string>& names) const {
    return replaceByStrings(FileNames, names) || refuse("no array of strings that another can take the place of");
}

HRESULT PixSheetObject::GetDroppedFileNames(VARIANT* Data, SAFEARRAY** FileNames, LONG* result) {
    if (Data == nullptr || FileNames == nullptr) return E_POINTER;
    return give(result, [&] {
        std::vector<std::string> names;
        const std::int32_t count = m_sheet->GetDroppedFileNames(droppedFiles(*Data), names);
        return count != 0 && giveNames(FileNames, names) ? count : 0;
    });
}

HRESULT PixSheetObject::GetPastedFileNames(SAFEARRAY** FileNames, LONG* result) {
    if (FileNames == nullptr) return E_POINTER;
    return give(result, [&] {
        std::vector<std::string> names;
        const std::int32_t count = m_sheet->GetPastedFileNames(names);
        return count != 0 && giveNames(FileNames, names) ? count : 0;
    });
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
