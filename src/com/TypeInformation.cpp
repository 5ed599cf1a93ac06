#include "com/TypeInformation.h"
#include "com/module.h"
#include "pixkit_com.h"
#include "platform/Lock.h"
#include <algorithm>
#include <mutex>

namespace pixkit::com {

namespace {

platform::Lock sharedMutex; // apartments load the library concurrently
// Behind a pointer, so that nothing is released while the process ends, when other DLLs are gone already.
std::shared_ptr<const TypeInformation>* shared = nullptr;

// A description that a type description handed out and that must go back to it.
template <class Description, auto release>
class Lent {
  public:
    explicit Lent(ITypeInfo* info) : m_info(info) {}
    ~Lent() {
        if (m_description != nullptr) (m_info->*release)(m_description);
    }
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;

    Description** put() { return &m_description; }
    const Description* operator->() const { return m_description; }

  private:
    ITypeInfo* m_info;
    Description* m_description = nullptr;
};
using FunctionDescription = Lent<FUNCDESC, &ITypeInfo::ReleaseFuncDesc>;
using TypeAttributes = Lent<TYPEATTR, &ITypeInfo::ReleaseTypeAttr>;

VARTYPE plainType(VARTYPE type) {
    switch (type) {
    case VT_INT:
        return VT_I4;
    case VT_UINT:
        return VT_UI4;
    case VT_INT_PTR:
        return sizeof(void*) == 8 ? VT_I8 : VT_I4;
    default:
        return type;
    }
}

HRESULT describeType(ITypeInfo* info, const TYPEDESC& type, Parameter& parameter);

HRESULT describeUserType(ITypeInfo* info, HREFTYPE reference, Parameter& parameter) {
    ComPtr<ITypeInfo> referred;
    if (const HRESULT status = info->GetRefTypeInfo(reference, referred.put()); FAILED(status)) return status;
    TypeAttributes attributes(referred.get());
    if (const HRESULT status = referred->GetTypeAttr(attributes.put()); FAILED(status)) return status;
    switch (attributes->typekind) {
    case TKIND_ENUM:
        parameter.type = VT_I4;
        return S_OK;
    case TKIND_ALIAS:
        return describeType(referred.get(), attributes->tdescAlias, parameter);
    default:
        parameter.type = VT_UNKNOWN;
        parameter.interfaceId = attributes->guid;
        return S_OK;
    }
}

// A pointer to an interface is an object, a pointer to that an object by reference; other pointers are references.
HRESULT describeType(ITypeInfo* info, const TYPEDESC& type, Parameter& parameter) {
    using Kind = Parameter::Kind;
    switch (type.vt) {
    case VT_USERDEFINED:
        return describeUserType(info, type.hreftype, parameter);
    case VT_SAFEARRAY: {
        const HRESULT status = describeType(info, *type.lptdesc, parameter);
        parameter.kind = Kind::arrayReference;
        return status;
    }
    case VT_PTR: {
        const HRESULT status = describeType(info, *type.lptdesc, parameter);
        if (parameter.kind == Kind::object) {
            parameter.kind = Kind::objectReference;
        } else if (parameter.kind == Kind::variant) {
            parameter.kind = Kind::variantReference;
        } else if (parameter.kind == Kind::value) {
            parameter.kind = parameter.type == VT_UNKNOWN ? Kind::object : Kind::reference;
        }
        return status;
    }
    case VT_DISPATCH:
    case VT_UNKNOWN:
        parameter.kind = Kind::object;
        parameter.type = VT_UNKNOWN;
        parameter.interfaceId = type.vt == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
        return S_OK;
    case VT_VARIANT:
        parameter.kind = Kind::variant;
        [[fallthrough]];
    default:
        parameter.type = plainType(type.vt);
        return S_OK;
    }
}

HRESULT describeParameter(ITypeInfo* info, const ELEMDESC& element, Parameter& parameter) {
    if (const HRESULT status = describeType(info, element.tdesc, parameter); FAILED(status)) return status;
    const USHORT flags = element.paramdesc.wParamFlags;
    parameter.isOptional = (flags & PARAMFLAG_FOPT) != 0;
    if ((flags & PARAMFLAG_FHASDEFAULT) == 0 || element.paramdesc.pparamdescex == nullptr) return S_OK;
    auto value = std::make_shared<Variant>();
    const HRESULT status = ::VariantChangeTypeEx(value.get(), &element.paramdesc.pparamdescex->varDefaultValue,
                                                 LOCALE_INVARIANT, 0, parameter.type);
    parameter.defaultValue = std::move(value);
    return status;
}

HRESULT describeMember(ITypeInfo* info, const FunctionDescription& function, Member& member) {
    member.id = function->memid;
    member.kind = function->invkind;
    // The low bit is a flag of some type libraries.
    member.tableOffset = static_cast<ULONG_PTR>(function->oVft) & ~ULONG_PTR{1};
    for (SHORT i = 0; i < function->cParams; ++i) {
        const ELEMDESC& element = function->lprgelemdescParam[i];
        if ((element.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) == 0) {
            if (const HRESULT status = describeParameter(info, element, member.parameters.emplace_back());
                FAILED(status))
                return status;
        } else {
            member.hasResult = true;
            if (const HRESULT status = describeType(info, *element.tdesc.lptdesc, member.result); FAILED(status))
                return status;
        }
    }
    member.takesAnyNumber = function->cParamsOpt == -1 && !member.parameters.empty();
    if (member.takesAnyNumber) {
        // A type library cannot call any parameter of such a member optional. Those that can hold nothing are.
        for (Parameter& parameter : member.parameters)
            parameter.isOptional |= parameter.kind == Parameter::Kind::variantReference;
        member.parameters.back().isOptional = true;
    }
    return member.parameters.size() <= maximumParameters ? S_OK : TYPE_E_UNSUPFORMAT;
}

} // namespace

HRESULT TypeInformation::read() {
    const std::wstring path = modulePath();
    ComPtr<ITypeLib> library;
    if (const HRESULT status = ::LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.put()); FAILED(status))
        return status;
    if (const HRESULT status = library->GetTypeInfoOfGuid(IID__cPixSheet, m_interface.put()); FAILED(status))
        return status;
    if (const HRESULT status = library->GetTypeInfoOfGuid(CLSID_cPixSheet, m_class.put()); FAILED(status))
        return status;

    // A dual interface has two faces: late-bound clients are shown the one that hides how results are returned; the
    // calls here follow the other.
    constexpr auto otherFace = static_cast<UINT>(-1);
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> table;
    HRESULT status = m_interface->GetRefTypeOfImplType(otherFace, &reference);
    if (SUCCEEDED(status)) status = m_interface->GetRefTypeInfo(reference, table.put());
    if (FAILED(status)) return status;
    TypeAttributes attributes(table.get());
    status = table->GetTypeAttr(attributes.put());
    if (FAILED(status)) return status;
    for (UINT i = 0; i < attributes->cFuncs && SUCCEEDED(status); ++i) {
        FunctionDescription function(table.get());
        status = table->GetFuncDesc(i, function.put());
        if (SUCCEEDED(status)) status = describeMember(table.get(), function, m_members.emplace_back());
    }
    if (FAILED(status)) return status;
    std::stable_sort(m_members.begin(), m_members.end(), [](const Member& a, const Member& b) { return a.id < b.id; });
    return S_OK;
}

HRESULT TypeInformation::get(std::shared_ptr<const TypeInformation>& information) noexcept try {
    const std::lock_guard lock(sharedMutex);
    if (shared == nullptr) {
        const auto fresh = std::make_shared<TypeInformation>();
        if (const HRESULT status = fresh->read(); FAILED(status)) return status;
        shared = new std::shared_ptr<const TypeInformation>(fresh);
    }
    information = *shared;
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

void TypeInformation::forget() noexcept {
    const std::lock_guard lock(sharedMutex);
    delete std::exchange(shared, nullptr);
}

const Member* TypeInformation::find(DISPID id, WORD flags) const noexcept {
    const auto first = std::lower_bound(m_members.begin(), m_members.end(), id,
                                        [](const Member& m, DISPID key) { return m.id < key; });
    for (auto member = first; member != m_members.end() && member->id == id; ++member)
        if ((member->kind & flags) != 0) return &*member;
    return nullptr;
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
