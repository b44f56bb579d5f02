// ZComponentImpl: reference count, name lookup and invocation.
#include "runtime/component_impl.h"

#include "platform/kernel.h"
#include "runtime/diagnostics.h"
#include "runtime/dispatch_table.h"
#include "runtime/string_convert.h"

using zr::consoleError;
using zr::consoleOut;
using zr::consoleOutFormat;

namespace {

constexpr LONG kDying = 1 << 30;

}  // namespace

ZComponentImpl::ZComponentImpl() : m_szClassName("ZComponentImpl") {}

ZComponentImpl::~ZComponentImpl() {
    ClearPDI();
}

HRESULT STDMETHODCALLTYPE ZComponentImpl::QueryInterface(const GUID& riid, void** ppv) {
    if (!ppv) {
        return E_INVALIDARG;
    }
    if (riid != IID_ISupportErrorInfo) {
        return E_NOTIMPL;
    }
    auto* const face = dynamic_cast<ISupportErrorInfo*>(this);
    if (!face) {
        return E_NOTIMPL;  // not part of a ZComponent
    }
    *ppv = face;
    AddRef();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE ZComponentImpl::GetTypeInfoCount(UINT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE ZComponentImpl::GetTypeInfo(UINT, LCID, ITypeInfo**) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE ZComponentImpl::GetIDsOfNames(const GUID& riid, OLECHAR** names,
                                                        UINT count, LCID lcid, DISPID* ids) {
    consoleOut("[ZComponentImpl::GetIDsOfNames] call in...\n");
    if (!names) {
        return E_INVALIDARG;
    }
    char name[1024];
    if (_ZConvUnicodeToUTF8(names[0], name, sizeof name) == 0) {
        name[0] = 0;  // null or too long
    }
    consoleOutFormat("[ZComponentImpl::GetIDsOfNames] lpszName = [%s] ...\n", name);

    consoleOut("[ZComponentImpl::GetIDsOfNames] pre proxy...\n");
    std::optional<DISPID> id;
    if (!AskProxies(1, riid, names, count, lcid, &id)) {
        // A proxy that was not asked may know the name: our member may not be the right one.
        return E_FAIL;
    }
    if (!id) {
        consoleOut("[ZComponentImpl::GetIDsOfNames] self...\n");
        if (const DispatchInfo* row = GetDispatchInfo(this, name)) {
            id = DISPID{row->nId};  // a copy, as the row is packed
        }
    }
    if (!id) {
        consoleOut("[ZComponentImpl::GetIDsOfNames] Last Proxy...\n");
        AskProxies(0, riid, names, count, lcid, &id);
    }
    if (!id) {
        return E_FAIL;
    }
    if (!ids) {
        return E_INVALIDARG;
    }
    ids[0] = *id;
    consoleOutFormat("[ZComponentImpl::GetIDsOfNames] *rgdispid = [%d] ...\n",
                     static_cast<int>(*id));
    return S_OK;
}

HRESULT STDMETHODCALLTYPE ZComponentImpl::Invoke(DISPID id, const GUID& riid, LCID lcid, WORD flags,
                                                 DISPPARAMS* params, VARIANT* result,
                                                 EXCEPINFO* excep, UINT* argErr) {
    consoleOut("[ZComponentImpl::Invoke] call in...\n");
    if (id < 1) {
        consoleOut("[ZComponentImpl::Invoke] argument error...\n");
        return E_INVALIDARG;
    }
    if (result) {
        VariantInit(result);
    }
    HRESULT proxied = CallProxyDispatch(1, id, riid, lcid, flags, params, result, excep, argErr);
    if (SUCCEEDED(proxied)) {
        // The text says "error" although the call succeeded. Kept: hosts know this line.
        consoleOut("[ZComponentImpl::Invoke] call CallProxyDispatch error...\n");
        return proxied;
    }
    const bool isProbe = !params && !result && !excep;
    const std::optional<HRESULT> own =
        isProbe ? Probe(id, flags) : CallMember(id, flags, params, result, excep, argErr);
    if (own) {
        return *own;
    }
    proxied = CallProxyDispatch(0, id, riid, lcid, flags, params, result, excep, argErr);
    if (SUCCEEDED(proxied)) {
        return proxied;
    }
    consoleOut("[ZComponentImpl::Invoke] call end...\n");
    return E_FAIL;
}

/// Answers a probe for a member of the object's own table; nothing when there is no such member.
std::optional<HRESULT> ZComponentImpl::Probe(DISPID id, WORD flags) {
    consoleOut(
        "+++++++++++++++++++// NPAPI. HasProperty & HasMethod support++++++++++++++++++++\n");
    const DispatchInfo* rows = GetSelfDispatchInfo();
    const int count = GetSelfGetDispatchInfoCount();
    for (int i = 0; i < count; ++i) {
        consoleOutFormat("#########pDispList[i].id = [%d] VS pdispparams = [%d]\n",
                         static_cast<int>(rows[i].nId), static_cast<int>(id));
        if (rows[i].nId != id) {
            continue;
        }
        consoleOutFormat("[ZComponentImpl::Invoke] match [%d]...\n", static_cast<int>(id));
        if (flags == DISPATCH_PROPERTYPUT || flags == DISPATCH_PROPERTYGET) {
            if (rows[i].nType == enDispatchProperty) {
                return S_OK;
            }
            consoleOut("[ZComponentImpl::Invoke] not enDispatchProperty...\n");
        } else if (flags == DISPATCH_METHOD) {
            if (rows[i].nType == enDispatchMethod) {
                return S_OK;
            }
            consoleOut("[ZComponentImpl::Invoke] not enDispatchMethod...\n");
        } else {
            consoleOut("[ZComponentImpl::Invoke] match id error...\n");
        }
        return E_FAIL;
    }
    return std::nullopt;
}

/// Calls a member of the object's own table with a copy of the arguments; nothing when there is no
/// such member. The flags do not matter: a property and a method are called alike.
std::optional<HRESULT> ZComponentImpl::CallMember(DISPID id, WORD flags, DISPPARAMS* params,
                                                  VARIANT* result, EXCEPINFO* excep, UINT* argErr) {
    DISPPARAMS clone = {};
    if (!CloneDispParams(id, params, &clone)) {
        consoleOut("[ZComponentImpl::Invoke] call CloneDispParams error...\n");
        return E_FAIL;
    }
    std::optional<HRESULT> outcome;
    if (const DispatchInfo* row = GetDipatchInfo(id, flags, &clone, result, excep, argErr)) {
        const PFNDISPATCH adapter = row->pfnInvoke;
        outcome = adapter ? (this->*adapter)(&clone, result) : E_FAIL;
    } else {
        consoleError("GetDipatchInfo() fail\n");
    }
    FreeDispParams(&clone);
    return outcome;
}

HRESULT STDMETHODCALLTYPE ZComponentImpl::InterfaceSupportsErrorInfo(const GUID&) {
    return S_OK;
}

void ZComponentImpl::FinalRelease() {}

DispatchInfo* ZComponentImpl::GetSelfDispatchInfo() {
    static DispatchInfo s_listDispatchInfo[1] = {};
    return s_listDispatchInfo;
}

int ZComponentImpl::GetSelfGetDispatchInfoCount() {
    return 0;
}

DispatchInfo* ZComponentImpl::GetDipatchInfo(DISPID id, WORD, DISPPARAMS* params, VARIANT* result,
                                             EXCEPINFO* excep, UINT* argErr) {
    if (!params && !result && !excep && !argErr) {
        return nullptr;
    }
    return GetDispatchInfoById(this, id);
}

ULONG ZComponentImpl::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&m_lRef));
}

ULONG ZComponentImpl::Release() {
    const LONG count = InterlockedDecrement(&m_lRef);
    if (count == 0) {
        // Code called by FinalRelease may add a reference and release it again; the count must not
        // reach 0 a second time.
        m_lRef = kDying;
        FinalRelease();
        delete this;
        return 0;
    }
    return static_cast<ULONG>(count);
}

DispatchInfo* ZComponentImpl::GetDispatchInfo(ZComponentImpl* obj, const char* name) {
    return zr::findRow(obj->GetSelfDispatchInfo(), obj->GetSelfGetDispatchInfoCount(), name);
}

DispatchInfo* ZComponentImpl::GetDispatchInfoById(ZComponentImpl* obj, LONG id) {
    return zr::findRow(obj->GetSelfDispatchInfo(), obj->GetSelfGetDispatchInfoCount(), id);
}
