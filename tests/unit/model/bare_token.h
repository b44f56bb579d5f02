// A token of no backend.
#pragma once

#include "model/key_object.h"

namespace zr::test {

/// What has no body in the base answers here.
class BareToken : public KeyObject {
public:
    using KeyObject::DigestData;
    using KeyObject::EnumContainer;
    using KeyObject::KeyObject;
    HRESULT STDMETHODCALLTYPE DigestData(BSTR, VARIANT, VARIANT*) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE EnumContainer(INT, VARIANT*) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE SignData(BSTR, VARIANT, IKeyCertificate*, VARIANT*) override {
        return S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE VerifyDataByCert(VARIANT, IKeyCertificate*, VARIANT, BSTR,
                                               VARIANT) override {
        return S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE VerifyDataByPubKey(VARIANT, IKeyCertificate*, VARIANT, BSTR,
                                                 VARIANT) override {
        return S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE GetKeyObjectClassName(BSTR*) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE GetCaLibPath(BSTR*) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE GetCSPName(BSTR*) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE GetAlgoList(BSTR*) override { return S_FALSE; }
};

}  // namespace zr::test
