// The Automation object of a file.
#include "host/automation/dispatch_object.h"
#include "host/automation/dual_objects.h"
#include "host/automation/interfaces.h"

namespace zr::automation {
namespace {

class FileDispatch final : public DispatchObject<IZRFile, ::File> {
public:
    using DispatchObject::DispatchObject;

    STDMETHODIMP GetSize(LONG* result) override { return call("GetSize", result); }
    STDMETHODIMP get_Size(LONG* result) override { return call("GetSize", result); }
    STDMETHODIMP Read(LONG length, VARIANT* result) override {
        return call("Read", result, length);
    }
    STDMETHODIMP readAll(VARIANT* result) override { return call("readAll", result); }
    STDMETHODIMP Seek(LONG offset, LONG origin, VARIANT_BOOL* result) override {
        return call("Seek", result, offset, origin);
    }
    STDMETHODIMP Write(VARIANT data, VARIANT_BOOL* result) override {
        return call("Write", result, data);
    }
    STDMETHODIMP Flush(VARIANT_BOOL* result) override { return call("Flush", result); }
    STDMETHODIMP Close(VARIANT_BOOL* result) override { return call("Close", result); }
};

}  // namespace

IDispatch* makeFile(host::ObjectRef object) {
    return new FileDispatch(std::move(object));
}

}  // namespace zr::automation
