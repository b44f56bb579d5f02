// The Automation object of a container.
#include "host/automation/dispatch_object.h"
#include "host/automation/dual_objects.h"
#include "host/automation/interfaces.h"

namespace zr::automation {
namespace {

class ContainerDispatch final : public DispatchObject<IZRContainer, ::Container> {
public:
    using DispatchObject::DispatchObject;

    STDMETHODIMP GetKeyCert(IZRCertificate** result) override { return call("GetKeyCert", result); }
    STDMETHODIMP get_KeyCert(IZRCertificate** result) override {
        return call("GetKeyCert", result);
    }
    STDMETHODIMP GetType(BSTR* result) override { return call("GetType", result); }
    STDMETHODIMP get_Type(BSTR* result) override { return call("GetType", result); }
    STDMETHODIMP Close(VARIANT_BOOL* result) override { return call("Close", result); }
};

}  // namespace

IDispatch* makeContainer(host::ObjectRef object) {
    return new ContainerDispatch(std::move(object));
}

}  // namespace zr::automation
