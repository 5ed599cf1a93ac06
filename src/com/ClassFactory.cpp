#include "com/ClassFactory.h"
#include "com/PixSheetObject.h"
#include "com/module.h"
#include <new>

namespace pixkit::com {

namespace {

class ClassFactory final : public IClassFactory {
  public:
    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (interfaceId != IID_IUnknown && interfaceId != IID_IClassFactory) return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(::InterlockedIncrement(&m_references)); }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG left = ::InterlockedDecrement(&m_references);
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID interfaceId, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        return PixSheetObject::create(interfaceId, object);
    }
    STDMETHODIMP LockServer(BOOL lock) override {
        lockModule(lock != FALSE);
        return S_OK;
    }

  private:
    ~ClassFactory() = default;

    LONG m_references = 1;
    ModuleReference m_module;
};

} // namespace

HRESULT createClassFactory(REFIID interfaceId, void** object) noexcept {
    auto* const factory = new (std::nothrow) ClassFactory;
    if (factory == nullptr) return E_OUTOFMEMORY;
    const HRESULT result = factory->QueryInterface(interfaceId, object);
    factory->Release();
    return result;
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
