// Objects of hosts and scripts, as far as the component asks them.
#pragma once
#include "com/Automation.h"
#include <dispex.h>
#include <functional>
#include <map>
#include <string>

namespace pixkit::test {

// An object whose members are called by name. Those of some script engines know names through IDispatchEx alone.
class LateObject final : public IDispatchEx {
  public:
    using Member = std::function<HRESULT(const DISPPARAMS& arguments, VARIANT& result)>;

    explicit LateObject(std::map<std::wstring, Member> members, bool isScript = false)
        : m_isScript(isScript), m_members(std::move(members)) {}

    STDMETHODIMP QueryInterface(REFIID id, void** result) override {
        if (asked) asked();
        const bool isKnown =
            isLiar || id == IID_IUnknown || id == IID_IDispatch || (m_isScript && id == __uuidof(IDispatchEx));
        *result = isKnown ? this : nullptr;
        return isKnown ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { // a variable of the test's
        if (--references == 0 && gone) gone();
        return references;
    }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        return m_isScript ? E_NOTIMPL : answer ? (*ids = 0, S_OK) : find(names[0], ids);
    }
    STDMETHODIMP GetDispID(BSTR name, DWORD, DISPID* id) override { return find(name, id); }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* exception,
                        UINT*) override {
        if (answer) return answer(*arguments, *result);
        if (static_cast<std::size_t>(id) >= m_members.size()) return DISP_E_MEMBERNOTFOUND;
        const HRESULT status = std::next(m_members.begin(), id)->second(*arguments, *result);
        if (status == DISP_E_EXCEPTION) exception->bstrDescription = ::SysAllocString(L"What went wrong");
        return status;
    }
    STDMETHODIMP InvokeEx(DISPID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, IServiceProvider*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP DeleteMemberByName(BSTR, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteMemberByDispID(DISPID) override { return E_NOTIMPL; }
    STDMETHODIMP GetMemberProperties(DISPID, DWORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMemberName(DISPID, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetNextDispID(DWORD, DISPID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetNameSpaceParent(IUnknown**) override { return E_NOTIMPL; }

    ULONG references = 1;
    bool isLiar = false;         // says that it has every interface
    Member answer;               // to every call, where it is there
    std::function<void()> asked; // for an interface
    std::function<void()> gone;  // after the last reference

  private:
    HRESULT find(const wchar_t* name, DISPID* id) const {
        const auto found = m_members.find(name);
        *id = static_cast<DISPID>(std::distance(m_members.begin(), found));
        return found != m_members.end() ? S_OK : DISP_E_UNKNOWNNAME;
    }

    bool m_isScript;
    std::map<std::wstring, Member> m_members;
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
