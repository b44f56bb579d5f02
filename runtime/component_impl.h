// ZComponentImpl: what makes an object scriptable. Reference count, name lookup, invocation by a
// table of DispatchInfo rows, and a chain of proxies that add members to an object.
//
// Reference counts are atomic; everything else is used from one thread at a time.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>
#include <cstdint>
#include <optional>

class ZComponentImpl;

enum { enDispatchProperty = 0, enDispatchMethod = 1 };

/// An adapter: unpacks a call's arguments (rgvarg[0] is the first), calls the operation and sets
/// the result.
using PFNDISPATCH = HRESULT (ZComponentImpl::*)(DISPPARAMS* params, VARIANT* result);

#pragma pack(push, 1)

/// One row of a class's method table. Packed: the layout is part of the binary contract.
struct DispatchInfo {
    std::int32_t nId;          ///< rows are numbered from 1
    char szName[200];          ///< matched case-sensitively
    std::int32_t nType;        ///< enDispatchProperty or enDispatchMethod
    PFNDISPATCH pfnInvoke;     ///< null: listed, but cannot be called
    VARTYPE vtResult;          ///< informative; only the adapters set the result
    std::uint8_t vtArgs[200];  ///< types of the arguments; VT_I4, VT_R8, VT_I1 steer coercion
};

/// One node of a proxy chain.
struct ProxyDispatchInfo {
    IDispatch* pDispatch;    ///< with one reference
    std::int32_t nIdOffset;  ///< added to the proxy's ids, subtracted before it is called
    std::int32_t nStage;     ///< 1 asked before the object's own table, 0 after it
    char szName[20];         ///< a label; empty when none was given or it did not fit
    ProxyDispatchInfo* pNext;
};

#pragma pack(pop)

static_assert(sizeof(DispatchInfo) == 426);
static_assert(offsetof(DispatchInfo, pfnInvoke) == 208);
static_assert(sizeof(ProxyDispatchInfo) == 44);

class ZComponentImpl {
public:
    ZComponentImpl();
    ZComponentImpl(const ZComponentImpl&) = delete;
    ZComponentImpl& operator=(const ZComponentImpl&) = delete;
    virtual ~ZComponentImpl();

    // The order of the virtual operations is part of the binary contract.

    /// Hands out the ISupportErrorInfo face and no other interface; callers hold those that they
    /// were handed.
    /// @retval S_OK          *ppv set, with one reference.
    /// @retval E_INVALIDARG  ppv is null.
    /// @retval E_NOTIMPL     any other identifier, IID_IUnknown and IID_IDispatch included.
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(const GUID& riid, void** ppv);
    /// @retval E_NOTIMPL  always; there is no type library.
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count);
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info);
    /// Resolves names[0] into ids[0]: first by the proxies of stage 1, then by the own table, then
    /// by the proxies of stage 0.
    /// @retval S_OK          found.
    /// @retval E_INVALIDARG  names is null, or ids is and there is such a member.
    /// @retval E_FAIL        no such member, or memory is short while a proxy is asked.
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(const GUID& riid, OLECHAR** names, UINT count,
                                                    LCID lcid, DISPID* ids);
    /// Calls a member. With params, result and excep all null it is a plug-in host's probe, which
    /// asks whether the member exists as a property or a method and calls nothing.
    /// @param result  overwritten with VT_EMPTY first, without being cleared.
    /// @retval E_INVALIDARG  id is below 1.
    /// @retval E_FAIL        no such member, or it cannot be called. Otherwise the adapter's result.
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID id, const GUID& riid, LCID lcid, WORD flags,
                                             DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                             UINT* argErr);
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(const GUID& riid);
    /// Called once, when the last reference is gone, before the destructor.
    virtual void FinalRelease();
    virtual DispatchInfo* GetSelfDispatchInfo();
    virtual int GetSelfGetDispatchInfoCount();
    /// Appends a proxy to the chain and adds a reference to it.
    /// @param name  a label of at most 19 characters, or null.
    /// @return 1 done; 0 when proxy is null or in the chain already, or memory is short.
    virtual BOOL AddProxyDispatch(IDispatch* proxy, LONG idOffset, int stage, const char* name);
    /// @return 1 removed and released; 0 when it is not in the chain.
    virtual BOOL RemoveProxyDispatch(IDispatch* proxy);
    /// The row to call, or null; null also when params, result, excep and argErr are all null.
    virtual DispatchInfo* GetDipatchInfo(DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                         EXCEPINFO* excep, UINT* argErr);
    /// Calls the proxies of a stage until one succeeds.
    /// @retval S_OK    one succeeded, whatever its own success code.
    /// @retval E_FAIL  none did.
    virtual HRESULT CallProxyDispatch(int stage, DISPID id, const GUID& riid, LCID lcid, WORD flags,
                                      DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                      UINT* argErr);
    /// Copies a call's arguments, script numbers coerced as the member's row declares.
    /// @param id   without a row in the own table, all copies are VT_EMPTY.
    /// @param dst  receives the copy; freed by FreeDispParams.
    /// @return 1 done; 0 when there is no list, no array for a member's arguments or no memory.
    virtual BOOL CloneDispParams(DISPID id, DISPPARAMS* src, DISPPARAMS* dst);

    ULONG AddRef();
    /// @return 0 when the object was destroyed, else the count.
    ULONG Release();
    ProxyDispatchInfo* FindPDI(IDispatch* proxy) const;
    void ClearPDI();
    void PrintPDI() const;
    void FreeDispParams(DISPPARAMS* params);

    /// The row of an object's table, or null.
    static DispatchInfo* GetDispatchInfo(ZComponentImpl* obj, const char* name);
    static DispatchInfo* GetDispatchInfoById(ZComponentImpl* obj, LONG id);

private:
    template <class Ask>
    bool AnyProxy(int stage, Ask ask) const;
    bool AskProxies(int stage, const GUID& riid, OLECHAR** names, UINT count, LCID lcid,
                    std::optional<DISPID>* found) const;
    std::optional<HRESULT> Probe(DISPID id, WORD flags);
    std::optional<HRESULT> CallMember(DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                      EXCEPINFO* excep, UINT* argErr);

    LONG m_lRef = 0;
    ProxyDispatchInfo* m_pHead = nullptr;
    ProxyDispatchInfo* m_pTail = nullptr;
    char m_szClassName[16];
};
