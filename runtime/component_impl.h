// ZComponentImpl makes an object scriptable: reference count, name look-up, calls through a table
// of DispatchInfo rows, and a chain of proxies that add members to an object.
//
// Reference counts are atomic; everything else is used from one thread at a time.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>
#include <cstdint>
#include <optional>

class ZComponentImpl;

enum { enDispatchProperty = 0, enDispatchMethod = 1 };

/// An adapter: unpacks the arguments of a call (rgvarg[0] is the first), calls the operation and
/// sets the result.
using PFNDISPATCH = HRESULT (ZComponentImpl::*)(DISPPARAMS* params, VARIANT* result);

#pragma pack(push, 1)

/// One row of a class's method table. Packed: the layout is part of the binary contract.
struct DispatchInfo {
    std::int32_t nId;          ///< from 1, in row order
    char szName[200];          ///< matched case-sensitively
    std::int32_t nType;        ///< enDispatchProperty or enDispatchMethod
    PFNDISPATCH pfnInvoke;     ///< null: the member is listed but cannot be called
    VARTYPE vtResult;          ///< for information; the adapter decides the type
    std::uint8_t vtArgs[200];  ///< types of the arguments; VT_I4, VT_R8, VT_I1 convert numbers
};

/// One node of a proxy chain.
struct ProxyDispatchInfo {
    IDispatch* pDispatch;    ///< holds one reference
    std::int32_t nIdOffset;  ///< added to the ids of the proxy, subtracted to call it
    std::int32_t nStage;     ///< 1: asked before the object's own table; 0: after it
    char szName[20];         ///< a label; empty without a label that fits
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

    /// Returns the ISupportErrorInfo interface and no other.
    /// @param ppv  receives the interface with one reference; untouched on failure.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  ppv is null.
    /// @retval E_NOTIMPL     riid is any other identifier, also IID_IUnknown or IID_IDispatch.
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(const GUID& riid, void** ppv);
    /// @retval E_NOTIMPL  always: there is no type library.
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count);
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info);
    /// Resolves names[0]: first by the proxies of stage 1, then by the object's own table, then by
    /// the proxies of stage 0. Further names are only passed on to proxies.
    /// @param ids  ids[0] receives the id; untouched on failure.
    /// @retval S_OK          found.
    /// @retval E_INVALIDARG  names is null; or the name is found and ids is null.
    /// @retval E_FAIL        there is no such member, or out of memory to ask a proxy.
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(const GUID& riid, OLECHAR** names, UINT count,
                                                    LCID lcid, DISPID* ids);
    /// Calls a member. When params, result and excep are all null, the call is the probe of a
    /// plug-in host: it asks whether the member is a property or a method, and calls nothing.
    /// @param result  set to VT_EMPTY first, without being cleared. May be null.
    /// @retval S_OK          a proxy took the call, or a probe found the member.
    /// @retval E_INVALIDARG  id is below 1.
    /// @retval E_FAIL        there is no such member, or it cannot be called.
    /// @note For a member of the object's own table, the result of its adapter is returned.
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID id, const GUID& riid, LCID lcid, WORD flags,
                                             DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                             UINT* argErr);
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(const GUID& riid);
    /// Called once after the last reference was released, before the destructor.
    virtual void FinalRelease();
    virtual DispatchInfo* GetSelfDispatchInfo();
    virtual int GetSelfGetDispatchInfoCount();
    /// Appends a proxy to the chain and adds a reference to it.
    /// @param idOffset  added to the ids of the proxy.
    /// @param stage     1 to ask it before the object's own table, 0 after it.
    /// @param name      a label of at most 19 characters, or null. A longer label is dropped.
    /// @return 1 when done; 0 when proxy is null or already in the chain, or out of memory.
    virtual BOOL AddProxyDispatch(IDispatch* proxy, LONG idOffset, int stage, const char* name);
    /// Removes a proxy from the chain and releases it.
    /// @return 1 when done; 0 when proxy is not in the chain.
    virtual BOOL RemoveProxyDispatch(IDispatch* proxy);
    /// @return the row to call; null when there is none, or params, result, excep and argErr are
    ///         all null.
    virtual DispatchInfo* GetDipatchInfo(DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                         EXCEPINFO* excep, UINT* argErr);
    /// Calls the proxies of a stage until one succeeds.
    /// @retval S_OK    one succeeded, whatever its own success code.
    /// @retval E_FAIL  none succeeded.
    virtual HRESULT CallProxyDispatch(int stage, DISPID id, const GUID& riid, LCID lcid, WORD flags,
                                      DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                      UINT* argErr);
    /// Copies the arguments of a call. Script numbers are converted to the types in the member's
    /// row.
    /// @param id   the member; when it is not in the object's own table, all copies are VT_EMPTY.
    /// @param dst  receives the copies, with a zeroed variant after the last; free them with
    ///             FreeDispParams.
    /// @return 1 when done; 0 when src or dst is null, src has a count but no array, or out of
    ///         memory.
    virtual BOOL CloneDispParams(DISPID id, DISPPARAMS* src, DISPPARAMS* dst);

    ULONG AddRef();
    /// @return the new count; 0 when the object was destroyed.
    ULONG Release();
    ProxyDispatchInfo* FindPDI(IDispatch* proxy) const;
    void ClearPDI();
    void PrintPDI() const;
    void FreeDispParams(DISPPARAMS* params);

    /// @return the row in the table of obj, or null.
    static DispatchInfo* GetDispatchInfo(ZComponentImpl* obj, const char* name);
    static DispatchInfo* GetDispatchInfoById(ZComponentImpl* obj, LONG id);

private:
    class ProxyWalk;

    template <class Ask>
    bool AnyProxy(int stage, Ask ask);
    bool AskProxies(int stage, const GUID& riid, OLECHAR** names, UINT count, LCID lcid,
                    std::optional<DISPID>* found);
    void RemoveNode(ProxyDispatchInfo* node, ProxyDispatchInfo* previous);
    std::optional<HRESULT> Probe(DISPID id, WORD flags);
    std::optional<HRESULT> CallMember(DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                      EXCEPINFO* excep, UINT* argErr);

    LONG m_lRef = 0;
    ProxyDispatchInfo* m_pHead = nullptr;
    ProxyDispatchInfo* m_pTail = nullptr;
    char m_szClassName[16];
    ProxyWalk* m_pWalks = nullptr;  ///< the current walks through the chain, innermost first
};
