// The Automation object of a token.
#include "host/automation/dispatch_object.h"
#include "host/automation/dual_objects.h"
#include "host/automation/interfaces.h"

namespace zr::automation {
namespace {

class TokenDispatch final : public DispatchObject<IZRToken, ::Token> {
public:
    using DispatchObject::DispatchObject;

    STDMETHODIMP GetLabel(BSTR* result) override { return call("GetLabel", result); }
    STDMETHODIMP get_Label(BSTR* result) override { return call("GetLabel", result); }
    STDMETHODIMP GetSerialNumber(BSTR* result) override { return call("GetSerialNumber", result); }
    STDMETHODIMP get_SerialNumber(BSTR* result) override { return call("GetSerialNumber", result); }
    STDMETHODIMP GetManufacturerID(BSTR* result) override {
        return call("GetManufacturerID", result);
    }
    STDMETHODIMP get_ManufacturerID(BSTR* result) override {
        return call("GetManufacturerID", result);
    }
    STDMETHODIMP GetModelID(BSTR* result) override { return call("GetModelID", result); }
    STDMETHODIMP get_ModelID(BSTR* result) override { return call("GetModelID", result); }
    STDMETHODIMP GetTotalSize(DOUBLE* result) override { return call("GetTotalSize", result); }
    STDMETHODIMP get_TotalSize(DOUBLE* result) override { return call("GetTotalSize", result); }
    STDMETHODIMP GetFreeSize(DOUBLE* result) override { return call("GetFreeSize", result); }
    STDMETHODIMP get_FreeSize(DOUBLE* result) override { return call("GetFreeSize", result); }
    STDMETHODIMP VerifyPIN(BSTR pin, LONG type, VARIANT_BOOL* result) override {
        return call("VerifyPIN", result, pin, type);
    }
    STDMETHODIMP ModifyPIN(BSTR oldPin, BSTR newPin, LONG type, VARIANT_BOOL* result) override {
        return call("ModifyPIN", result, oldPin, newPin, type);
    }
    STDMETHODIMP unblockPIN(BSTR soPin, BSTR newPin, VARIANT_BOOL* result) override {
        return call("unblockPIN", result, soPin, newPin);
    }
    STDMETHODIMP UnlockPIN(BSTR soPin, VARIANT newPin, VARIANT_BOOL* result) override {
        return call("UnlockPIN", result, soPin, newPin);
    }
    STDMETHODIMP GetMaxRetryCount(LONG type, LONG* result) override {
        return call("GetMaxRetryCount", result, type);
    }
    STDMETHODIMP GetRemainRetryCount(LONG type, LONG* result) override {
        return call("GetRemainRetryCount", result, type);
    }
    STDMETHODIMP IsDefaultPIN(LONG type, LONG* result) override {
        return call("IsDefaultPIN", result, type);
    }
    STDMETHODIMP Lock(LONG* result) override { return call("Lock", result); }
    STDMETHODIMP Unlock(LONG* result) override { return call("Unlock", result); }
    STDMETHODIMP SetLabel(BSTR label, VARIANT_BOOL* result) override {
        return call("SetLabel", result, label);
    }
    STDMETHODIMP EnumContainer(VARIANT* result) override { return call("EnumContainer", result); }
    STDMETHODIMP GetContainerCount(LONG* result) override {
        return call("GetContainerCount", result);
    }
    STDMETHODIMP get_ContainerCount(LONG* result) override {
        return call("GetContainerCount", result);
    }
    STDMETHODIMP OpenContainer(VARIANT which, IZRContainer** result) override {
        return call("OpenContainer", result, which);
    }
    STDMETHODIMP get_certificates(IZRCollection** result) override {
        return call("certificates", result);
    }
    STDMETHODIMP GetCertData(IZRCertificate* certificate, VARIANT* result) override {
        return call("GetCertData", result, certificate);
    }
    STDMETHODIMP GetPubKeyData(IZRCertificate* certificate, VARIANT* result) override {
        return call("GetPubKeyData", result, certificate);
    }
    STDMETHODIMP CreateContainer(BSTR name, IZRContainer** result) override {
        return call("CreateContainer", result, name);
    }
    STDMETHODIMP DeleteContainer(VARIANT which, VARIANT_BOOL* result) override {
        return call("DeleteContainer", result, which);
    }
    STDMETHODIMP SignData(VARIANT data, IZRCertificate* certificate, VARIANT* result) override {
        return call("SignData", result, data, certificate);
    }
    STDMETHODIMP VerifyData(VARIANT data, IZRCertificate* certificate, VARIANT signature,
                            VARIANT_BOOL* result) override {
        return call("VerifyData", result, data, certificate, signature);
    }
    STDMETHODIMP sign(VARIANT data, IZRCertificate* certificate, VARIANT algorithm,
                      VARIANT* result) override {
        return call("sign", result, data, certificate, algorithm);
    }
    STDMETHODIMP verify(VARIANT data, IZRCertificate* certificate, VARIANT signature,
                        VARIANT algorithm, VARIANT_BOOL* result) override {
        return call("verify", result, data, certificate, signature, algorithm);
    }
    STDMETHODIMP GetDigestMethod(BSTR* result) override { return call("GetDigestMethod", result); }
    STDMETHODIMP get_DigestMethod(BSTR* result) override { return call("GetDigestMethod", result); }
    STDMETHODIMP DigestData(BSTR method, VARIANT data, VARIANT* result) override {
        return call("DigestData", result, method, data);
    }
    STDMETHODIMP GetSignAlgo(BSTR* result) override { return call("GetSignAlgo", result); }
    STDMETHODIMP get_SignAlgo(BSTR* result) override { return call("GetSignAlgo", result); }
    STDMETHODIMP GetAlgoList(BSTR* result) override { return call("GetAlgoList", result); }
    STDMETHODIMP get_AlgoList(BSTR* result) override { return call("GetAlgoList", result); }
    STDMETHODIMP CreateFile(BSTR name, IZRFile** result) override {
        return call("CreateFile", result, name);
    }
    STDMETHODIMP FileExists(BSTR name, LONG* result) override {
        return call("FileExists", result, name);
    }
    STDMETHODIMP OpenFile(BSTR name, IZRFile** result) override {
        return call("OpenFile", result, name);
    }
    STDMETHODIMP DeleteFile(BSTR name, VARIANT_BOOL* result) override {
        return call("DeleteFile", result, name);
    }
    STDMETHODIMP writeFile(BSTR name, VARIANT data, VARIANT_BOOL* result) override {
        return call("writeFile", result, name, data);
    }
    STDMETHODIMP EnumFiles() override { return call("EnumFiles"); }
    STDMETHODIMP Close(VARIANT_BOOL* result) override { return call("Close", result); }
};

}  // namespace

IDispatch* makeToken(host::ObjectRef object) {
    return new TokenDispatch(std::move(object));
}

}  // namespace zr::automation
