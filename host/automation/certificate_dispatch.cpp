// The Automation object of a certificate.
#include "host/automation/dispatch_object.h"
#include "host/automation/dual_objects.h"
#include "host/automation/interfaces.h"

namespace zr::automation {
namespace {

class CertificateDispatch final : public DispatchObject<IZRCertificate, ::Certificate> {
public:
    using DispatchObject::DispatchObject;

    STDMETHODIMP GetCertData(VARIANT* result) override { return call("GetCertData", result); }
    STDMETHODIMP get_CertData(VARIANT* result) override { return call("GetCertData", result); }
    STDMETHODIMP GetCertID(BSTR* result) override { return call("GetCertID", result); }
    STDMETHODIMP get_CertID(BSTR* result) override { return call("GetCertID", result); }
    STDMETHODIMP get_pem(BSTR* result) override { return call("pem", result); }
    STDMETHODIMP get_subject(VARIANT* result) override { return call("subject", result); }
    STDMETHODIMP Close(VARIANT_BOOL* result) override { return call("Close", result); }
};

}  // namespace

IDispatch* makeCertificate(host::ObjectRef object) {
    return new CertificateDispatch(std::move(object));
}

}  // namespace zr::automation
