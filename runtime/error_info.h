// Error information: the error object, the slot for the current error, and the functions that
// report an error.
//
// There is one slot for the whole library, not one per thread; the last report wins.
#pragma once

#include <zrkey/automation.h>

/// The description of an error, with the standard interfaces IErrorInfo and ICreateErrorInfo.
class ZErrorInfo : public IErrorInfo, public ICreateErrorInfo {
public:
    ZErrorInfo() = default;
    ZErrorInfo(const ZErrorInfo&) = delete;
    ZErrorInfo& operator=(const ZErrorInfo&) = delete;

    /// @param riid  IID_IErrorInfo or IID_ICreateErrorInfo.
    /// @param ppv   receives the interface with one reference; null on failure.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   ppv is null.
    /// @retval E_NOINTERFACE  riid is any other identifier, also IID_IUnknown.
    HRESULT STDMETHODCALLTYPE QueryInterface(const GUID& riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    // Getters return E_INVALIDARG for a null argument, else S_OK. The strings they return are not
    // copies: they belong to the object, live as long as it does, and must not be freed.
    HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) override;
    HRESULT STDMETHODCALLTYPE GetSource(BSTR* source) override;
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR* description) override;
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* helpFile) override;
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* helpContext) override;
    virtual ~ZErrorInfo();
    HRESULT STDMETHODCALLTYPE SetGUID(const GUID& guid) override;
    // Setters return S_OK. Texts are copied; for a null text, and when out of memory, the field
    // becomes null and the result is E_FAIL.
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

/// The exception that ZCLReportError throws.
class _zcl_error {
public:
    /// @param errorInfo  takes over one reference; may be null.
    _zcl_error(HRESULT hr, IErrorInfo* errorInfo);
    _zcl_error(const _zcl_error& other);
    _zcl_error& operator=(const _zcl_error&) = delete;
    virtual ~_zcl_error();

    HRESULT m_hr;
    IErrorInfo* m_pErrorInfo;  ///< holds one reference; may be null
    char* m_pszText;           ///< owned, from new[]; null when thrown by ZCLReportError
};

/// @param out  receives a new error object with one reference.
/// @retval S_OK           done.
/// @retval E_INVALIDARG   out is null.
/// @retval E_OUTOFMEMORY  out of memory.
HRESULT ZCreateErrorInfo(ICreateErrorInfo** out);

/// Replaces the current error.
/// @param reserved  ignored.
/// @param info      gains a reference; null empties the slot.
/// @retval S_OK  always.
HRESULT ZSetErrorInfo(ULONG reserved, IErrorInfo* info);

/// Reads the current error; the slot keeps it.
/// @param reserved  ignored.
/// @param out       receives the error with one reference; null when the slot is empty.
/// @retval S_OK          done.
/// @retval E_INVALIDARG  out is null.
HRESULT ZGetErrorInfo(ULONG reserved, IErrorInfo** out);

/// @return 1 always.
int ZCLInitialize();
/// Empties the slot.
void ZCLUninitialize();

/// @param progId  receives null: the library registers no programmatic identifiers.
/// @retval S_OK          done.
/// @retval E_INVALIDARG  progId is null.
HRESULT ZProgIDFromCLSID(const GUID& clsid, LPOLESTR* progId);

/// Stores an error in the slot and throws it to a native caller. Any other exception inside the
/// function ends the process.
/// @param clsid        ignored.
/// @param description  null stores no description.
/// @param iid          stored as the GUID of the error.
/// @param hr           the result in the exception.
/// @throws _zcl_error  with hr and the error object.
/// @retval DISP_E_EXCEPTION  the error object cannot be created; nothing is thrown.
HRESULT ZCLReportError(const GUID& clsid, const OLECHAR* description, const GUID& iid, LONG hr);

/// As ZCLReportError, with UTF-8 text.
/// @retval E_INVALIDARG      description is null; nothing is thrown.
/// @retval E_FAIL            the text cannot be converted; nothing is thrown.
HRESULT ZCLReportErrorUTF8(const GUID& clsid, const char* description, const GUID& iid, LONG hr);
