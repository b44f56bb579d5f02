// The Automation object of the provider.
#include "host/automation/dispatch_object.h"
#include "host/automation/dual_objects.h"
#include "host/automation/interfaces.h"

namespace zr::automation {
namespace {

class TokenProviderDispatch final : public DispatchObject<IZRTokenProvider, ::TokenProvider> {
public:
    using DispatchObject::DispatchObject;

    STDMETHODIMP Load(BSTR path, VARIANT_BOOL* result) override {
        return call("Load", result, path);
    }
    STDMETHODIMP Unload(VARIANT_BOOL* result) override { return call("Unload", result); }
    STDMETHODIMP GetName(BSTR* result) override { return call("GetName", result); }
    STDMETHODIMP get_Name(BSTR* result) override { return call("GetName", result); }
    STDMETHODIMP GetKeyCount(LONG* result) override { return call("GetKeyCount", result); }
    STDMETHODIMP get_KeyCount(LONG* result) override { return call("GetKeyCount", result); }
    STDMETHODIMP OpenKey(LONG index, IZRToken** result) override {
        return call("OpenKey", result, index);
    }
    STDMETHODIMP get_tokens(IZRCollection** result) override { return call("tokens", result); }
    STDMETHODIMP toHex(VARIANT bytes, BSTR* result) override {
        return call("toHex", result, bytes);
    }
    STDMETHODIMP fromHex(BSTR text, VARIANT* result) override {
        return call("fromHex", result, text);
    }
    STDMETHODIMP toBase64(VARIANT bytes, BSTR* result) override {
        return call("toBase64", result, bytes);
    }
    STDMETHODIMP fromBase64(BSTR text, VARIANT* result) override {
        return call("fromBase64", result, text);
    }
    STDMETHODIMP toText(VARIANT bytes, BSTR* result) override {
        return call("toText", result, bytes);
    }
    STDMETHODIMP fromText(BSTR text, VARIANT* result) override {
        return call("fromText", result, text);
    }
    STDMETHODIMP Close(VARIANT_BOOL* result) override { return call("Close", result); }
};

}  // namespace

IDispatch* makeTokenProvider(host::ObjectRef object) {
    return new TokenProviderDispatch(std::move(object));
}

}  // namespace zr::automation
