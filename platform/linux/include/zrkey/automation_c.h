// The interfaces of automation.h for C: structures of function pointers, in the order in which C++
// has them as virtual functions. Include zrkey/automation.h.
#ifndef ZRKEY_AUTOMATION_C_H
#define ZRKEY_AUTOMATION_C_H

typedef struct IClassFactory IClassFactory;
typedef struct ISupportErrorInfo ISupportErrorInfo;

typedef struct IUnknownVtbl {
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(IUnknown* This, REFIID riid, void** ppv);
    ULONG(STDMETHODCALLTYPE* AddRef)(IUnknown* This);
    ULONG(STDMETHODCALLTYPE* Release)(IUnknown* This);
} IUnknownVtbl;

struct IUnknown {
    const IUnknownVtbl* lpVtbl;
};

typedef struct IDispatchVtbl {
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(IDispatch* This, REFIID riid, void** ppv);
    ULONG(STDMETHODCALLTYPE* AddRef)(IDispatch* This);
    ULONG(STDMETHODCALLTYPE* Release)(IDispatch* This);
    HRESULT(STDMETHODCALLTYPE* GetTypeInfoCount)(IDispatch* This, UINT* count);
    HRESULT(STDMETHODCALLTYPE* GetTypeInfo)
    (IDispatch* This, UINT index, LCID lcid, ITypeInfo** info);
    HRESULT(STDMETHODCALLTYPE* GetIDsOfNames)
    (IDispatch* This, REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids);
    HRESULT(STDMETHODCALLTYPE* Invoke)
    (IDispatch* This, DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
     VARIANT* result, EXCEPINFO* excep, UINT* argErr);
} IDispatchVtbl;

struct IDispatch {
    const IDispatchVtbl* lpVtbl;
};

typedef struct IClassFactoryVtbl {
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(IClassFactory* This, REFIID riid, void** ppv);
    ULONG(STDMETHODCALLTYPE* AddRef)(IClassFactory* This);
    ULONG(STDMETHODCALLTYPE* Release)(IClassFactory* This);
    HRESULT(STDMETHODCALLTYPE* CreateInstance)
    (IClassFactory* This, IUnknown* outer, REFIID riid, void** ppv);
    HRESULT(STDMETHODCALLTYPE* LockServer)(IClassFactory* This, BOOL lock);
} IClassFactoryVtbl;

struct IClassFactory {
    const IClassFactoryVtbl* lpVtbl;
};

typedef struct ISupportErrorInfoVtbl {
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(ISupportErrorInfo* This, REFIID riid, void** ppv);
    ULONG(STDMETHODCALLTYPE* AddRef)(ISupportErrorInfo* This);
    ULONG(STDMETHODCALLTYPE* Release)(ISupportErrorInfo* This);
    HRESULT(STDMETHODCALLTYPE* InterfaceSupportsErrorInfo)(ISupportErrorInfo* This, REFIID riid);
} ISupportErrorInfoVtbl;

struct ISupportErrorInfo {
    const ISupportErrorInfoVtbl* lpVtbl;
};

#endif
