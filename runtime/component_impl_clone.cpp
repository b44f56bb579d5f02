// ZComponentImpl: the copies of the arguments that adapters are called with.
#include <cstdlib>

#include "runtime/component_impl.h"
#include "runtime/diagnostics.h"
#include "runtime/secret.h"
#include "runtime/value_utils.h"

using zr::consoleOut;

namespace {

constexpr UINT kDeclaredArguments = sizeof(DispatchInfo::vtArgs);

/// Copies one argument into an empty variant. An argument that is no valid variant is copied as
/// VT_EMPTY.
/// @return false when out of memory.
bool cloneArgument(const VARIANT& source, std::uint8_t declared, VARIANT* target) {
    switch (source.vt) {
        case VT_R8:
            // Scripts pass every number as a double.
            if (declared == VT_I4) {
                target->vt = VT_I4;
                target->lVal = zr::truncateToLong(source.dblVal);
                return true;
            }
            if (declared == VT_I1) {
                target->vt = VT_I1;
                target->cVal = static_cast<CHAR>(zr::truncateToByte(source.dblVal));
                return true;
            }
            break;
        case VT_BSTR:
            target->vt = VT_BSTR;
            target->bstrVal = SysAllocString(source.bstrVal);
            return target->bstrVal || !source.bstrVal;
        case VT_DISPATCH:
        case VT_UNKNOWN:
            *target = source;
            if (target->punkVal) {
                target->punkVal->AddRef();
            }
            return true;
        default:
            break;
    }
    const HRESULT hr = VariantCopy(target, const_cast<VARIANT*>(&source));
    if (FAILED(hr)) {
        target->vt = VT_EMPTY;
    }
    return hr != E_OUTOFMEMORY;
}

}  // namespace

BOOL ZComponentImpl::CloneDispParams(DISPID id, DISPPARAMS* src, DISPPARAMS* dst) {
    consoleOut("[ZComponentImpl::CloneDispParams] call in...\n");
    if (!dst) {
        consoleOut("[ZComponentImpl::CloneDispParams] 1 argument error.\n");
        return 0;
    }
    const bool hasArguments = src && src->cArgs > 0;
    const DispatchInfo* row = hasArguments ? GetDispatchInfoById(this, id) : nullptr;
    if (!src || (row && !src->rgvarg)) {
        consoleOut("[ZComponentImpl::CloneDispParams] 2 argument error.\n");
        return 0;
    }
    *dst = *src;
    dst->rgvarg = nullptr;
    if (!hasArguments) {
        return 1;
    }
    // Zeroed: the spare element, and without a row all elements, stay VT_EMPTY.
    dst->rgvarg = static_cast<VARIANT*>(
        std::calloc(static_cast<std::size_t>(src->cArgs) + 1, sizeof(VARIANT)));
    if (!dst->rgvarg) {
        consoleOut("[ZComponentImpl::CloneDispParams] params->rgvarg == NULL.\n");
        return 0;
    }
    for (UINT i = 0; row && i < src->cArgs; ++i) {
        const std::uint8_t declared = i < kDeclaredArguments ? row->vtArgs[i] : std::uint8_t{0};
        if (!cloneArgument(src->rgvarg[i], declared, &dst->rgvarg[i])) {
            FreeDispParams(dst);
            return 0;
        }
    }
    return 1;
}

void ZComponentImpl::FreeDispParams(DISPPARAMS* params) {
    if (!params || !params->rgvarg) {
        return;
    }
    for (UINT i = 0; i < params->cArgs; ++i) {
        if (params->rgvarg[i].vt == VT_BSTR && params->rgvarg[i].bstrVal) {
            // Every text may be a PIN.
            zr::wipe(params->rgvarg[i].bstrVal, SysStringByteLen(params->rgvarg[i].bstrVal));
        }
        VariantClear(&params->rgvarg[i]);
    }
    std::free(params->rgvarg);
    params->rgvarg = nullptr;
}
