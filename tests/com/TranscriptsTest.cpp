// The transcripts through COM: late-bound with the variables of scripts (everything in a VARIANT, small numbers in 16
// bits, arrays of VARIANT) and with those of typed languages, and early-bound through the virtual function table.
#include "Server.h"
#include "platform/win32/system/names.h"
#include "transcripts/Transcript.h"
#include <algorithm>
#include <cstring>
#include <map>

namespace pixkit::test {

namespace {

enum class Calls { script, typed, early };

Object objectOf(IUnknown* unknown) {
    IDispatch* dispatch = nullptr;
    if (unknown != nullptr) unknown->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch));
    return dispatch == nullptr ? Object() : Object(dispatch, [dispatch](void*) { dispatch->Release(); });
}

Value valueOf(const VARIANT& variant) {
    Variant whole;
    switch (variant.vt) {
    case VT_EMPTY:
        return {};
    case VT_BOOL:
        EXPECT_TRUE(variant.boolVal == VARIANT_TRUE ||
                    variant.boolVal == VARIANT_FALSE); // callers negate it bit by bit
        return variant.boolVal != VARIANT_FALSE;
    case VT_DATE:
        return Date{variant.date};
    case VT_BSTR:
        return platform::toUtf8(variant.bstrVal == nullptr ? L"" : variant.bstrVal);
    case VT_R8:
        return variant.dblVal;
    case VT_DISPATCH:
    case VT_UNKNOWN:
        return objectOf(variant.punkVal);
    default:
        break;
    }
    if ((variant.vt & VT_ARRAY) == 0) {
        ::VariantChangeType(&whole, const_cast<VARIANT*>(&variant), 0, VT_I8);
        return std::int64_t{whole.llVal};
    }
    if (variant.parray == nullptr) return {};
    Array array;
    // SAFEARRAYs keep their bounds last dimension first.
    const USHORT dimensions = variant.parray->cDims;
    array.lower = variant.parray->rgsabound[dimensions - 1].lLbound;
    array.rows = dimensions == 2 ? variant.parray->rgsabound[0].cElements : 0;
    const std::size_t count =
        std::size_t{variant.parray->rgsabound[dimensions - 1].cElements} * std::max(array.rows, 1U);
    const auto size = variant.parray->cbElements;
    const auto* const first = static_cast<const std::uint8_t*>(variant.parray->pvData);
    std::vector<Value> texts;
    for (std::size_t i = 0; i < count; ++i) {
        VARIANT element{};
        element.vt = static_cast<VARTYPE>(variant.vt & ~VT_ARRAY);
        std::memcpy(element.vt == VT_VARIANT ? static_cast<void*>(&element) : &element.byref, first + i * size, size);
        array.hasLongs = element.vt == VT_I4;
        if (element.vt == VT_BSTR)
            texts.push_back(valueOf(element));
        else
            array.elements.push_back(static_cast<std::int32_t>(std::get<std::int64_t>(valueOf(element))));
    }
    return texts.empty() ? Value(array) : Value(texts);
}

// What the caller holds. Scripts have arrays of VARIANT only, and numbers as small as they go.
void give(const Value& value, bool isScript, VARIANT& out);

VARIANT arrayOf(VARTYPE type, LONG lower, ULONG width, ULONG rows, const auto& elements, bool isScript) {
    SAFEARRAYBOUND bounds[] = {{width, lower}, {rows, 0}};
    VARIANT array{};
    array.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    array.parray = ::SafeArrayCreate(type, rows == 0 ? 1 : 2, bounds);
    auto* out = static_cast<std::uint8_t*>(array.parray->pvData);
    for (const auto& element : elements) {
        Variant one;
        give(Value(element), isScript, one);
        std::memcpy(out, type == VT_VARIANT ? static_cast<void*>(&one) : &one.byref, array.parray->cbElements);
        out += array.parray->cbElements;
        one.detach();
    }
    return array;
}

void give(const Value& value, bool isScript, VARIANT& out) {
    const auto* const truth = std::get_if<bool>(&value);
    if (truth != nullptr) out.vt = VT_BOOL, out.boolVal = *truth ? VARIANT_TRUE : VARIANT_FALSE;
    if (const auto* whole = std::get_if<std::int64_t>(&value)) {
        out.vt = isScript && *whole == static_cast<SHORT>(*whole) ? VT_I2
                 : *whole == static_cast<LONG>(*whole)            ? VT_I4
                                                                  : VT_I8;
        out.llVal = *whole; // little-endian: the smaller types begin at the same byte
    }
    if (const auto* const real = std::get_if<double>(&value)) out.vt = VT_R8, out.dblVal = *real;
    if (const auto* const date = std::get_if<Date>(&value)) out.vt = VT_DATE, out.date = date->days;
    if (const auto* const words = std::get_if<std::string>(&value)) {
        std::wstring wide;
        platform::toUtf16(*words, wide);
        out = text(wide.c_str());
    }
    if (const auto* const held = std::get_if<Object>(&value)) {
        out = object(static_cast<IDispatch*>(held->get()));
        if (*held) out.pdispVal->AddRef();
    }
    if (const auto* const list = std::get_if<std::vector<Value>>(&value)) {
        const bool areTexts = std::ranges::all_of(*list, [](const Value& v) { return v.index() == Value("").index(); });
        const VARTYPE type = areTexts && !isScript ? VT_BSTR : VT_VARIANT;
        out = arrayOf(type, 0, static_cast<ULONG>(list->size()), 0, *list, isScript);
    }
    if (const auto* const array = std::get_if<Array>(&value)) {
        const std::vector<std::int64_t> elements(array->elements.begin(), array->elements.end());
        const VARTYPE type = isScript ? VT_VARIANT : array->hasLongs ? VT_I4 : VT_UI1;
        out = arrayOf(type, array->lower, array->rowSize(), array->rows, elements, isScript && !array->hasLongs);
    }
    if (std::holds_alternative<Missing>(value)) out = missing();
}

// What the type library says of a member. A pointer to an interface counts as VT_DISPATCH.
struct Description {
    ULONG_PTR offset = 0;            // in the virtual function table, in bytes
    std::vector<std::wstring> names; // of the parameters
    std::vector<VARTYPE> types;
    std::vector<VARIANT> defaults; // Empty for nothing and zero
    VARTYPE result = VT_EMPTY;     // behind the pointer
};

VARTYPE typeOf(ITypeInfo* info, const TYPEDESC& type) {
    if (type.vt == VT_PTR) {
        const VARTYPE target = typeOf(info, *type.lptdesc);
        const bool isInterface = type.lptdesc->vt == VT_USERDEFINED && target == VT_DISPATCH;
        return static_cast<VARTYPE>(isInterface ? target : VT_BYREF | target);
    }
    if (type.vt == VT_SAFEARRAY) return static_cast<VARTYPE>(VT_ARRAY | typeOf(info, *type.lptdesc));
    if (type.vt == VT_INT_PTR) return sizeof(void*) == 8 ? VT_I8 : VT_I4;
    if (type.vt != VT_USERDEFINED) return type.vt;
    ComPtr<ITypeInfo> referred;
    TYPEATTR* attributes = nullptr;
    info->GetRefTypeInfo(type.hreftype, referred.put());
    referred->GetTypeAttr(&attributes);
    const VARTYPE found = attributes->typekind == TKIND_ENUM ? VT_I4 : VT_DISPATCH;
    referred->ReleaseTypeAttr(attributes);
    return found;
}

std::string errorName(HRESULT status, UINT argument) {
#define NAME(code)                                                                                                     \
    { code, #code }
    static const std::map<HRESULT, std::string> names = {NAME(E_POINTER),
                                                         NAME(DISP_E_TYPEMISMATCH),
                                                         NAME(DISP_E_OVERFLOW),
                                                         NAME(DISP_E_BADPARAMCOUNT),
                                                         NAME(DISP_E_PARAMNOTFOUND),
                                                         NAME(DISP_E_PARAMNOTOPTIONAL),
                                                         NAME(DISP_E_MEMBERNOTFOUND),
                                                         NAME(DISP_E_UNKNOWNNAME)};
#undef NAME
    const auto found = names.find(status);
    return (found != names.end() ? found->second : std::to_string(status)) +
           (argument != 0 ? ' ' + std::to_string(argument) : "");
}

class ComEngine final : public Engine {
  public:
    explicit ComEngine(Calls calls) : m_calls(calls) {
        ComPtr<_cPixSheet> sheet;
        ComPtr<ITypeInfo> shown;
        HREFTYPE reference = 0;
        *sheet.put() = m_server.create();
        sheet->GetTypeInfo(0, 0, shown.put());
        shown->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference); // the virtual function table's face
        shown->GetRefTypeInfo(reference, m_table.put());
    }
    std::vector<std::string> names() const override {
        return {"com", m_calls == Calls::early ? "early" : "late", m_calls == Calls::script ? "script" : "typed"};
    }
    Object create() override {
        _cPixSheet* const made = m_server.create();
        made->put_isGDIplusEnabled(VARIANT_FALSE); // the same bytes as natively
        made->put_HighQualityInterpolation(VARIANT_FALSE);
        return Object(made, [made](void*) { made->Release(); });
    }
    Value call(const Object& object, const std::string& member, std::vector<Argument>& arguments, bool isPut) override;

  private:
    Description describe(const std::wstring& member, WORD kind) const;
    VARIANT passed(const Argument& argument, VARTYPE type, Variant& held) const;
    HRESULT callLate(IDispatch* target, std::wstring name, const std::vector<Argument>& arguments,
                     const std::vector<VARIANT>& values, WORD flags, Variant& result, UINT& wrong) const;
    static HRESULT callEarly(IDispatch* target, const Description& member, std::vector<VARIANT>& values,
                             Variant& result);

    Server m_server; // goes last
    Calls m_calls;
    ComPtr<ITypeInfo> m_table;
};

Description ComEngine::describe(const std::wstring& member, WORD kind) const {
    Description found;
    FUNCDESC* function = nullptr;
    for (UINT i = 0; found.offset == 0 && SUCCEEDED(m_table->GetFuncDesc(i, &function)); ++i) {
        BSTR names[24] = {};
        UINT count = 0;
        m_table->GetNames(function->memid, names, 24, &count);
        const auto isAsked = (function->invkind & kind) != 0 && ::lstrcmpiW(names[0], member.c_str()) == 0;
        if (isAsked) found.offset = static_cast<ULONG_PTR>(function->oVft) & ~ULONG_PTR{1};
        for (UINT n = 0; n < count; ++n) {
            if (isAsked && n != 0) found.names.emplace_back(names[n]);
            ::SysFreeString(names[n]);
        }
        for (SHORT n = 0; isAsked && n < function->cParams; ++n) {
            const ELEMDESC& parameter = function->lprgelemdescParam[n];
            const VARTYPE type = typeOf(m_table.get(), parameter.tdesc);
            const USHORT flags = parameter.paramdesc.wParamFlags;
            if ((flags & PARAMFLAG_FRETVAL) != 0) {
                found.result = type == VT_DISPATCH ? type : static_cast<VARTYPE>(type & ~VT_BYREF);
                continue;
            }
            found.types.push_back(type);
            found.defaults.push_back({});
            if ((flags & PARAMFLAG_FHASDEFAULT) != 0 && type != VT_BSTR)
                found.defaults.back() = parameter.paramdesc.pparamdescex->varDefaultValue;
        }
        m_table->ReleaseFuncDesc(function);
    }
    return found;
}

// An argument in the form in which this kind of caller passes it; `held` is what the caller's variable holds.
VARIANT ComEngine::passed(const Argument& argument, VARTYPE type, Variant& held) const {
    give(argument.value, m_calls == Calls::script, held);
    if (m_calls == Calls::script || (type & ~VT_BYREF) == VT_VARIANT)
        return argument.isVariable || (type & VT_BYREF) != 0 ? variable(held) : held;
    if (m_calls == Calls::typed && (!argument.isVariable || (type & VT_BYREF) == 0)) return held;
    const auto plain = static_cast<VARTYPE>(type & ~VT_BYREF);
    if (held.vt == VT_EMPTY) held.vt = plain; // all zero
    if ((held.vt & VT_ARRAY) == 0 && FAILED(::VariantChangeType(&held, &held, 0, plain)))
        throw std::invalid_argument("an argument of another type");
    return (type & VT_BYREF) != 0 ? typed(plain, &held.byref) : held;
}

HRESULT ComEngine::callLate(IDispatch* target, std::wstring name, const std::vector<Argument>& arguments,
                            const std::vector<VARIANT>& values, WORD flags, Variant& result, UINT& wrong) const {
    std::vector<Named> named;
    std::vector<VARIANT> positional;
    std::vector<std::wstring> names;
    for (const Argument& argument : arguments)
        names.emplace_back(argument.name.begin(), argument.name.end());
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (names[i].empty())
            positional.push_back(values[i]);
        else
            named.push_back({names[i].c_str(), values[i]});
    }
    constexpr UINT none = 99;
    wrong = none;
    const HRESULT status = test::call(target, name.c_str(), positional, &result, named, &wrong, flags);
    wrong = wrong == none ? 0 : static_cast<UINT>(arguments.size()) - wrong;
    return status;
}

HRESULT ComEngine::callEarly(IDispatch* target, const Description& member, std::vector<VARIANT>& values,
                             Variant& result) {
    std::vector<VARTYPE> types = member.types;
    std::vector<VARIANT*> places;
    for (VARIANT& value : values)
        places.push_back(&value);
    VARIANT place = typed(member.result, member.result == VT_VARIANT ? static_cast<void*>(&result) : &result.byref);
    if (member.result != VT_EMPTY) {
        types.push_back(place.vt);
        places.push_back(&place);
        if (member.result != VT_VARIANT) result.vt = member.result;
    }
    VARIANT returned;
    const HRESULT status = ::DispCallFunc(target, member.offset, CC_STDCALL, VT_I4, static_cast<UINT>(types.size()),
                                          types.data(), places.data(), &returned);
    return FAILED(status) ? status : returned.lVal;
}

Value ComEngine::call(const Object& object, const std::string& member, std::vector<Argument>& arguments, bool isPut) {
    auto* const target = static_cast<IDispatch*>(object.get());
    const bool isEarly = m_calls == Calls::early;
    const bool isReference = isPut && std::holds_alternative<Object>(arguments.at(0).value);
    const WORD flags = isReference ? DISPATCH_PROPERTYPUTREF
                       : isPut     ? DISPATCH_PROPERTYPUT
                                   : DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    const std::wstring name(member.begin(), member.end());
    const Description description = describe(name, flags);
    std::vector<Argument> all = arguments;
    if (isEarly) all.resize(description.types.size(), Argument{Missing(), {}});
    std::vector<Variant> held(all.size());
    std::vector<VARIANT> values;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::wstring named(all[i].name.begin(), all[i].name.end());
        const auto found = std::ranges::find(description.names, named) - description.names.begin();
        const auto at = named.empty() ? i : static_cast<std::size_t>(found);
        const VARTYPE type = at < description.types.size() ? description.types[at] : VARTYPE{VT_VARIANT};
        if (isEarly && std::holds_alternative<Missing>(all[i].value) && type != (VT_BYREF | VT_VARIANT))
            all[i].value = valueOf(description.defaults[at]);
        values.push_back(passed(all[i], type, held[i]));
    }
    Variant result;
    UINT wrong = 0;
    const HRESULT status = isEarly ? callEarly(target, description, values, result)
                                   : callLate(target, name, all, values, flags, result, wrong);
    if (FAILED(status)) return Word{errorName(status, wrong)};
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (arguments[i].isVariable) arguments[i].value = valueOf(held[i]);
    return valueOf(result);
}

PIXKIT_RUN_TRANSCRIPTS(ScriptTranscripts, ComEngine(Calls::script));
PIXKIT_RUN_TRANSCRIPTS(TypedTranscripts, ComEngine(Calls::typed));
PIXKIT_RUN_TRANSCRIPTS(EarlyTranscripts, ComEngine(Calls::early));

} // namespace

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
