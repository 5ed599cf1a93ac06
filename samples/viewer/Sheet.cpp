#define INITGUID // one file of a program defines the identifiers that the header declares
#include "Sheet.h"
#include <cguid.h>
#include <cwctype>

namespace viewer {

Component::Component() {
    CoInitialize(nullptr);
    wchar_t path[MAX_PATH] = L"";
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring manifest(path, length);
    manifest = manifest.substr(0, manifest.find_last_of(L'\\') + 1) + L"pixkit.manifest";
    ACTCTXW context{};
    context.cbSize = sizeof context;
    context.lpSource = manifest.c_str();
    m_context = CreateActCtxW(&context);
    if (m_context != INVALID_HANDLE_VALUE) ActivateActCtx(m_context, &m_cookie);
}

Component::~Component() {
    if (m_context != INVALID_HANDLE_VALUE) {
        DeactivateActCtx(0, m_cookie);
        ReleaseActCtx(m_context);
    }
    CoUninitialize();
}

Sheet::Sheet() {
    if (FAILED(CoCreateInstance(CLSID_cPixSheet, nullptr, CLSCTX_INPROC_SERVER, IID__cPixSheet,
                                reinterpret_cast<void**>(&m_object))))
        m_object = nullptr;
}

Sheet::~Sheet() {
    if (m_object != nullptr) m_object->Release();
}

bool Sheet::drawOnto(const Sheet& host, const RECT& place) const {
    _cPixSheet* target = host.m_object;
    return ask(&_cPixSheet::Render, LONG_PTR{0}, place.left, place.top, place.right - place.left,
               place.bottom - place.top, 0, 0, 0, 0, 100, VARIANT_TRUE, VARIANT_TRUE, &target, gsclNone, 0.0F, 0.0F,
               VARIANT_FALSE);
}

std::wstring Sheet::save(const std::wstring& file) const {
    constexpr VARIANT_BOOL prompt = VARIANT_FALSE; // the dialog has asked already
    constexpr LONG white = 0xFFFFFF;               // stands for what is clear where a format has no alpha
    const std::wstring kind = extensionOf(file);
    const Text name(file);
    bool saved = false;
    if (kind == L".png") {
        saved = ask(&_cPixSheet::SaveToFile_PNG, name, prompt);
    } else if (kind == L".bmp") {
        saved = ask(&_cPixSheet::SaveToFile_Bitmap, name, VARIANT_FALSE, white, prompt);
    } else if (kind == L".gif") {
        saved = ask(&_cPixSheet::SaveToFile_GIF, name, VARIANT_TRUE, BYTE{128}, prompt);
    } else if (kind == L".jpg" || kind == L".jpeg") {
        saved = ask(&_cPixSheet::SaveToFile_JPG, name, 90, white, prompt);
    } else if (kind == L".tga") {
        saved = ask(&_cPixSheet::SaveToFile_TGA, name, VARIANT_TRUE, VARIANT_FALSE, VARIANT_FALSE, prompt);
    } else if (kind == L".ico") {
        VARIANT source{};                                           // nothing: of this image
        SAFEARRAY* sizes = SafeArrayCreateVector(VT_VARIANT, 0, 0); // none: at its own size
        LONG count = 0;
        m_object->SaveToFile_ICO(name, &source, prompt, &sizes, &count);
        SafeArrayDestroy(sizes);
        saved = count > 0;
    } else {
        return L"a file is saved as .png, .bmp, .gif, .jpg, .tga or .ico";
    }
    return saved ? L"" : lastError();
}

std::wstring Sheet::lastError() const {
    BSTR text = get(&_cPixSheet::get_LastErrorText);
    std::wstring result(text, SysStringLen(text));
    SysFreeString(text);
    return result;
}

VARIANT handleValue(const void* handle) {
    VARIANT value{};
    value.vt = sizeof handle == 8 ? VT_I8 : VT_I4;
    value.llVal = reinterpret_cast<LONG_PTR>(handle);
    return value;
}

std::vector<std::wstring> takeTexts(SAFEARRAY* array) {
    std::vector<std::wstring> texts;
    LONG index = 0, last = -1;
    if (array == nullptr || FAILED(SafeArrayGetLBound(array, 1, &index)) || FAILED(SafeArrayGetUBound(array, 1, &last)))
        return texts;
    for (; index <= last; ++index) {
        BSTR text = nullptr;
        if (SUCCEEDED(SafeArrayGetElement(array, &index, static_cast<void*>(&text))))
            texts.emplace_back(text, SysStringLen(text));
        SysFreeString(text);
    }
    SafeArrayDestroy(array);
    return texts;
}

const std::vector<std::wstring>& extensions() {
    static const std::vector<std::wstring> all = {L".png", L".bmp", L".dib", L".gif", L".jpg", L".jpeg", L".tga",
                                                  L".ico", L".cur", L".wmf", L".emf", L".tif", L".tiff"};
    return all;
}

std::wstring extensionOf(const std::wstring& file) {
    const std::size_t dot = file.find_last_of(L"./\\");
    std::wstring extension = dot == std::wstring::npos || file[dot] != L'.' ? L"" : file.substr(dot);
    for (wchar_t& character : extension)
        character = static_cast<wchar_t>(std::towlower(character));
    return extension;
}

} // namespace viewer
// SPDX-License-Identifier: MIT
