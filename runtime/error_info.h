// The runtime's own error information: the error object, the one slot for the current error, and
// the functions that report into it.
//
// The slot belongs to the whole library, not to a thread; the last report wins.
#pragma once

#include <zrkey/automation.h>

/// An error's description, behind the standard IErrorInfo and ICreateErrorInfo.
/// Strings handed out stay the object's; they live as long as it does.
class ZErrorInfo : public IErrorInfo, public ICreateErrorInfo {
public:
    ZErrorInfo() = default;
    ZErrorInfo(const ZErrorInfo&) = delete;
    ZErrorInfo& operator=(const ZErrorInfo&) = delete;

    /// @param ppv  set to null first; receives IErrorInfo or ICreateErrorInfo with a reference.
    /// @retval E_INVALIDARG   ppv is null.
    /// @retval E_NOINTERFACE  any other identifier, IID_IUnknown included.
    HRESULT STDMETHODCALLTYPE QueryInterface(const GUID& riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    // Getters answer E_INVALIDARG for null; strings are handed out without a copy.
    HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) override;
    HRESULT STDMETHODCALLTYPE GetSource(BSTR* source) override;
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR* description) override;
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* helpFile) override;
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* helpContext) override;
    virtual ~ZErrorInfo();
    HRESULT STDMETHODCALLTYPE SetGUID(const GUID& guid) override;
    // Strings are copied; E_FAIL, and a null field, when no string results, as for null.
    HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) override;
    HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) override;
    HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR helpFile) override;
    HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD helpContext) override;

private:
    struct OwnedString;

    HRESULT Replace(BSTR* field, LPOLESTR text);

    LONG m_lRef = 0;
    GUID m_guid = {};
    BSTR m_bstrSource = nullptr;
    BSTR m_bstrDescription = nullptr;
    BSTR m_bstrHelpFile = nullptr;
    DWORD m_dwHelpContext = 0;
    OwnedString* m_pStrings = nullptr;
};

/// What ZCLReportError throws.
class _zcl_error {
public:
    /// @param errorInfo  taken over with one reference; may be null.
    _zcl_error(HRESULT hr, IErrorInfo* errorInfo);
    _zcl_error(const _zcl_error& other);
    _zcl_error& operator=(const _zcl_error&) = delete;
    virtual ~_zcl_error();

    HRESULT m_hr;
    IErrorInfo* m_pErrorInfo;  ///< one reference, released by the destructor; may be null
    char* m_pszText;           ///< owned, made with new[]; null when thrown by ZCLReportError
};

/// @param out  receives a new error object with one reference.
/// @retval E_INVALIDARG   out is null.
/// @retval E_OUTOFMEMORY  memory is short.
HRESULT ZCreateErrorInfo(ICreateErrorInfo** out);

/// Replaces the current error.
/// @param reserved  ignored.
/// @param info      gains a reference; null empties the slot.
HRESULT ZSetErrorInfo(ULONG reserved, IErrorInfo* info);

/// Reads the current error without clearing it.
/// @param out  receives the error with a reference, or null.
/// @retval E_INVALIDARG  out is null.
HRESULT ZGetErrorInfo(ULONG reserved, IErrorInfo** out);

/// @return 1 always.
int ZCLInitialize();
/// Empties the slot.
void ZCLUninitialize();

/// @param progId  set to null: the library registers no programmatic identifiers.
/// @retval E_INVALIDARG  progId is null.
HRESULT ZProgIDFromCLSID(const GUID& clsid, LPOLESTR* progId);

/// Records an error in the slot and throws it to a native caller. Any exception but _zcl_error that
/// would leave the function ends the process.
/// @param clsid        not used.
/// @param description  null is recorded as no description.
/// @throws _zcl_error  with hr and the error object.
/// @retval DISP_E_EXCEPTION  the error object cannot be made.
HRESULT ZCLReportError(const GUID& clsid, const OLECHAR* description, const GUID& iid, LONG hr);

/// As ZCLReportError, with UTF-8 text.
/// @retval E_INVALIDARG  description is null.
/// @retval E_FAIL        the text cannot be converted.
HRESULT ZCLReportErrorUTF8(const GUID& clsid, const char* description, const GUID& iid, LONG hr);
