// The Automation object of a list.
#include "host/automation/dispatch_object.h"
#include "host/automation/dual_objects.h"
#include "host/automation/interfaces.h"

namespace zr::automation {
namespace {

class CollectionDispatch final : public DispatchObject<IZRCollection, ::Collection> {
public:
    using DispatchObject::DispatchObject;

    STDMETHODIMP get__NewEnum(IUnknown** result) override { return callEnumerator(result); }
    STDMETHODIMP get_Count(LONG* result) override { return call("Count", result); }
    STDMETHODIMP get_Item(LONG index, IDispatch** result) override {
        return call("Item", result, index);
    }
    STDMETHODIMP Close(VARIANT_BOOL* result) override { return call("Close", result); }
};

}  // namespace

IDispatch* makeCollection(host::ObjectRef object) {
    return new CollectionDispatch(std::move(object));
}

}  // namespace zr::automation
