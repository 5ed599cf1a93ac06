#include "com/FontArgument.h"
#include "com/LateBound.h"
#include "com/Values.h"
#include "platform/text.h"
#include <optional>

namespace pixkit::com {

namespace {

// The value of a property as a type; nothing when there is none that can be one.
bool property(IDispatch* object, const wchar_t* name, VARTYPE type, Variant& value) noexcept {
    Variant found;
    return SUCCEEDED(callByName(object, name, {}, found)) && SUCCEEDED(changeType(found, type, value));
}

bool flag(IDispatch* object, const wchar_t* name) noexcept {
    Variant value;
    return property(object, name, VT_BOOL, value) && value.boolVal != VARIANT_FALSE;
}

std::int16_t number(IDispatch* object, const wchar_t* name, std::int16_t otherwise) noexcept {
    Variant value;
    return property(object, name, VT_I2, value) ? value.iVal : otherwise;
}

// What the system's own font objects go by.
double pixelsInAnInchOfTheScreen() noexcept {
    const HDC screen = ::GetDC(nullptr);
    const int pixels = screen != nullptr ? ::GetDeviceCaps(screen, LOGPIXELSY) : 96;
    if (screen != nullptr) ::ReleaseDC(nullptr, screen);
    return pixels;
}

// Of an object that has at least a name and a size, which is a currency value of points.
std::optional<platform::StdFont> described(IDispatch* object) {
    Variant name, size;
    if (!property(object, L"Name", VT_BSTR, name) || !property(object, L"Size", VT_R8, size)) return {};
    platform::StdFont font;
    font.Name = toUtf8(name.bstrVal);
    font.Size = size.dblVal * pixelsInAnInchOfTheScreen() / 96; // 96 are an inch of a StdFont's
    font.Bold = flag(object, L"Bold");
    font.Italic = flag(object, L"Italic");
    font.Underline = flag(object, L"Underline");
    font.Strikethrough = flag(object, L"Strikethrough");
    font.Weight = number(object, L"Weight", font.Weight);
    font.Charset = number(object, L"Charset", font.Charset);
    return font;
}

} // namespace

FontArgument::FontArgument(IUnknown* object) {
    ComPtr<IUnknown> held; // it may empty the variable that it came in
    held.hold(object);
    if (borrow(object)) return;
    const auto dispatch = interfaceOf<IDispatch>(object);
    if (!dispatch) return;
    if (const auto font = described(dispatch.get()))
        m_made.reset(platform::CreateFontIndirectW(platform::recordOf(*font)));
}

// The handle is the object's, which changes it with its properties: so it is told that it is in use.
bool FontArgument::borrow(IUnknown* object) noexcept {
    HFONT font = nullptr;
    *m_lender.put() = interfaceOf<IFont>(object, IID_IFont).detach();
    if (!m_lender || FAILED(m_lender->get_hFont(&font)) || font == nullptr || FAILED(m_lender->AddRefHfont(font)))
        return false;
    m_lent = font;
    return true;
}

FontArgument::~FontArgument() {
    if (m_lent != nullptr) m_lender->ReleaseHfont(m_lent);
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
