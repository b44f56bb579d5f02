// The slot for the current error, and the functions that report an error to a native caller.
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "runtime/diagnostics.h"
#include "runtime/error_info.h"
#include "runtime/string_convert.h"

namespace {

IErrorInfo* s_pErrorInfo = nullptr;

/// Calls a reporting function. Any exception but _zcl_error ends the process.
template <class Report>
HRESULT throwingOnlyZclError(Report report) {
    try {
        return report();
    } catch (const _zcl_error&) {
        throw;
    } catch (...) {
        std::terminate();
    }
}

HRESULT reportError(const OLECHAR* description, const GUID& iid, LONG hr) {
    ICreateErrorInfo* create = nullptr;
    if (FAILED(ZCreateErrorInfo(&create))) {
        return DISP_E_EXCEPTION;
    }
    create->SetGUID(iid);
    create->SetDescription(const_cast<LPOLESTR>(description));
    IErrorInfo* info = nullptr;
    const HRESULT result = create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info));
    create->Release();
    if (FAILED(result)) {
        // Without the interface, the report is dropped.
        return S_OK;
    }
    ZSetErrorInfo(0, info);
    throw _zcl_error(hr, info);
}

}  // namespace

_zcl_error::_zcl_error(HRESULT hr, IErrorInfo* errorInfo)
    : m_hr(hr), m_pErrorInfo(errorInfo), m_pszText(nullptr) {}

_zcl_error::_zcl_error(const _zcl_error& other)
    : m_hr(other.m_hr), m_pErrorInfo(other.m_pErrorInfo), m_pszText(nullptr) {
    if (m_pErrorInfo) {
        m_pErrorInfo->AddRef();
    }
    if (other.m_pszText) {
        const std::size_t size = std::strlen(other.m_pszText) + 1;
        m_pszText = new (std::nothrow) char[size];
        if (m_pszText) {
            std::memcpy(m_pszText, other.m_pszText, size);
        }
    }
}

_zcl_error::~_zcl_error() {
    if (m_pErrorInfo) {
        m_pErrorInfo->Release();
    }
    delete[] m_pszText;
}

HRESULT ZCreateErrorInfo(ICreateErrorInfo** out) {
    if (!out) {
        return E_INVALIDARG;
    }
    auto* info = new (std::nothrow) ZErrorInfo();
    if (!info) {
        return E_OUTOFMEMORY;
    }
    info->AddRef();
    const HRESULT result =
        info->QueryInterface(IID_ICreateErrorInfo, reinterpret_cast<void**>(out));
    info->Release();
    return result;
}

HRESULT ZSetErrorInfo(ULONG, IErrorInfo* info) {
    if (info) {
        info->AddRef();
    }
    // Set the slot first: the last release of the old error may read it.
    IErrorInfo* const old = std::exchange(s_pErrorInfo, info);
    if (old) {
        old->Release();
    }
    return S_OK;
}

HRESULT ZGetErrorInfo(ULONG, IErrorInfo** out) {
    if (!out) {
        return E_INVALIDARG;
    }
    *out = s_pErrorInfo;
    if (s_pErrorInfo) {
        s_pErrorInfo->AddRef();
    }
    return S_OK;
}

int ZCLInitialize() {
    return 1;
}

void ZCLUninitialize() {
    ZSetErrorInfo(0, nullptr);
}

HRESULT ZProgIDFromCLSID(const GUID&, LPOLESTR* progId) {
    if (!progId) {
        return E_INVALIDARG;
    }
    *progId = nullptr;
    return S_OK;
}

HRESULT ZCLReportError(const GUID&, const OLECHAR* description, const GUID& iid, LONG hr) {
    return throwingOnlyZclError([&] { return reportError(description, iid, hr); });
}

HRESULT ZCLReportErrorUTF8(const GUID&, const char* description, const GUID& iid, LONG hr) {
    return throwingOnlyZclError([&]() -> HRESULT {
        if (!description) {
            return E_INVALIDARG;
        }
        BSTR text = _ZSysAllocUTF8String(description);
        if (!text) {
            return E_FAIL;
        }
        struct Free {
            BSTR text;
            ~Free() { SysFreeString(text); }
        } const free{text};
        return reportError(text, iid, hr);
    });
}
