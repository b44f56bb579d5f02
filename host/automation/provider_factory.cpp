// The class factory of the one class that clients can create.
#include "host/automation/provider_factory.h"

#include <zrkey/zrkey.hpp>

#include <atomic>
#include <new>

#include "host/automation/objects.h"
#include "host/automation/server_state.h"

namespace zr::automation {
namespace {

class ProviderFactory final : public IClassFactory {
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        const bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
        *result = isKnown ? this : nullptr;
        if (!isKnown) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        return outer ? CLASS_E_NOAGGREGATION : createProvider(iid, result);
    }
    STDMETHODIMP LockServer(BOOL isLocked) override {
        lockServer(isLocked != FALSE);
        return S_OK;
    }

private:
    std::atomic<ULONG> m_references = 1;
    LiveObject m_live;
};

}  // namespace

HRESULT createProviderFactory(REFIID iid, void** result) noexcept {
    *result = nullptr;
    zrkey::ComRef<IClassFactory> factory;
    factory.reset(new (std::nothrow) ProviderFactory);
    return factory ? factory->QueryInterface(iid, result) : E_OUTOFMEMORY;
}

}  // namespace zr::automation
