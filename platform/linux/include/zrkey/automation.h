// The automation types and functions of the target: on Linux those of libzrautomation.
//
// Names, widths, layouts and results are those of Windows x64, so that one source builds on both
// targets. Create and free BSTRs, arrays and the contents of variants with these functions only: a
// host and the library share their allocator.
//
// C++ gets the interfaces as classes, C gets them as structures of function pointers
// (automation_c.h).
#ifndef ZRKEY_AUTOMATION_H
#define ZRKEY_AUTOMATION_H

#ifdef __cplusplus
#include <cstddef>
#include <cstdint>
#include <cstring>
#else
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#endif

#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#if defined(__cplusplus) || __STDC_VERSION__ >= 201112L
#define OLESTR(text) u##text /* C99 has no such texts: see SysAllocStringLen */
#endif

/// For the constants below, which both languages read.
#ifdef __cplusplus
#define ZRAUTOMATION_CAST(type, value) (static_cast<type>(value))
#else
#define ZRAUTOMATION_CAST(type, value) ((type)(value))
#endif

typedef void* PVOID;
typedef char CHAR;
typedef uint8_t BYTE;
typedef int16_t SHORT;
typedef uint16_t USHORT;
typedef uint16_t WORD;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint32_t DWORD;
typedef long long LONGLONG;
typedef unsigned long long ULONGLONG;
typedef float FLOAT;
typedef double DOUBLE;
typedef int32_t BOOL;
#ifdef __cplusplus
typedef char16_t WCHAR;
#else
typedef uint_least16_t WCHAR; /* the type of char16_t, which C99 does not have */
#endif
typedef WCHAR OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
typedef OLECHAR* BSTR;
typedef int32_t HRESULT;
typedef LONG SCODE;
typedef LONG DISPID;
typedef DWORD LCID;
typedef double DATE;
typedef int16_t VARIANT_BOOL;
typedef uint16_t VARTYPE;

// Other libraries have macros of these names, before or after this header.
#if !defined(TRUE) && !defined(FALSE)
enum { TRUE = 1, FALSE = 0 };
#elif !defined(TRUE)
enum { TRUE = 1 };
#elif !defined(FALSE)
enum { FALSE = 0 };
#endif

#define VARIANT_TRUE ZRAUTOMATION_CAST(VARIANT_BOOL, -1)
#define VARIANT_FALSE ZRAUTOMATION_CAST(VARIANT_BOOL, 0)

#define SUCCEEDED(hr) (ZRAUTOMATION_CAST(HRESULT, hr) >= 0)
#define FAILED(hr) (ZRAUTOMATION_CAST(HRESULT, hr) < 0)

#define S_OK ZRAUTOMATION_CAST(HRESULT, 0)
#define S_FALSE ZRAUTOMATION_CAST(HRESULT, 1)
#define E_NOTIMPL ZRAUTOMATION_CAST(HRESULT, 0x80004001u)
#define E_NOINTERFACE ZRAUTOMATION_CAST(HRESULT, 0x80004002u)
#define E_POINTER ZRAUTOMATION_CAST(HRESULT, 0x80004003u)
#define E_FAIL ZRAUTOMATION_CAST(HRESULT, 0x80004005u)
#define E_UNEXPECTED ZRAUTOMATION_CAST(HRESULT, 0x8000FFFFu)
#define E_OUTOFMEMORY ZRAUTOMATION_CAST(HRESULT, 0x8007000Eu)
#define E_INVALIDARG ZRAUTOMATION_CAST(HRESULT, 0x80070057u)
#define RPC_E_CANTCALLOUT_INEXTERNALCALL ZRAUTOMATION_CAST(HRESULT, 0x80010005u)
#define DISP_E_TYPEMISMATCH ZRAUTOMATION_CAST(HRESULT, 0x80020005u)
#define DISP_E_BADVARTYPE ZRAUTOMATION_CAST(HRESULT, 0x80020008u)
#define DISP_E_EXCEPTION ZRAUTOMATION_CAST(HRESULT, 0x80020009u)
#define DISP_E_OVERFLOW ZRAUTOMATION_CAST(HRESULT, 0x8002000Au)
#define DISP_E_BADINDEX ZRAUTOMATION_CAST(HRESULT, 0x8002000Bu)
#define DISP_E_ARRAYISLOCKED ZRAUTOMATION_CAST(HRESULT, 0x8002000Du)

typedef struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} GUID;
typedef GUID IID;
typedef GUID CLSID;
#ifdef __cplusplus
typedef const GUID& REFGUID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;

inline bool IsEqualGUID(const GUID& a, const GUID& b) {
    return memcmp(&a, &b, sizeof(GUID)) == 0;
}
inline bool operator==(const GUID& a, const GUID& b) {
    return IsEqualGUID(a, b);
}
inline bool operator!=(const GUID& a, const GUID& b) {
    return !IsEqualGUID(a, b);
}
#else
typedef const GUID* REFGUID;
typedef const IID* REFIID;
typedef const CLSID* REFCLSID;

#define IsEqualGUID(a, b) (memcmp((a), (b), sizeof(GUID)) == 0)
#endif

enum VARENUM {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_VOID = 24,
    VT_HRESULT = 25,
    VT_PTR = 26,
    VT_SAFEARRAY = 27,
    VT_RECORD = 36,
    VT_VECTOR = 0x1000,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_RESERVED = 0x8000,
    VT_TYPEMASK = 0xfff
};

enum { VARIANT_NOVALUEPROP = 1, VARIANT_ALPHABOOL = 2, VARIANT_LOCALBOOL = 16 };

enum { DISPATCH_METHOD = 1, DISPATCH_PROPERTYGET = 2, DISPATCH_PROPERTYPUT = 4 };

typedef struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
} SAFEARRAYBOUND;

typedef struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];
} SAFEARRAY;

enum {
    FADF_AUTO = 0x1,
    FADF_STATIC = 0x2,
    FADF_EMBEDDED = 0x4,
    FADF_FIXEDSIZE = 0x10,
    FADF_HAVEIID = 0x40,
    FADF_HAVEVARTYPE = 0x80,
    FADF_BSTR = 0x100,
    FADF_UNKNOWN = 0x200,
    FADF_DISPATCH = 0x400,
    FADF_VARIANT = 0x800,
    FADF_CREATEVECTOR = 0x2000
};

typedef union CY {
    struct {
        ULONG Lo;
        LONG Hi;
    } s;
    LONGLONG int64;
} CY;

typedef union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
} ULARGE_INTEGER;

typedef struct IUnknown IUnknown;
typedef struct IDispatch IDispatch;
typedef struct IRecordInfo IRecordInfo;
typedef struct ITypeInfo ITypeInfo;

typedef struct BRECORD {
    PVOID pvRecord;
    IRecordInfo* pRecInfo;
} BRECORD;

typedef struct tagVARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    __extension__ union {  // C99 has no unnamed unions
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        FLOAT fltVal;
        DOUBLE dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        CY cyVal;
        DATE date;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        BYTE* pbVal;
        SHORT* piVal;
        LONG* plVal;
        LONGLONG* pllVal;
        FLOAT* pfltVal;
        DOUBLE* pdblVal;
        VARIANT_BOOL* pboolVal;
        SCODE* pscode;
        CY* pcyVal;
        DATE* pdate;
        BSTR* pbstrVal;
        IUnknown** ppunkVal;
        IDispatch** ppdispVal;
        SAFEARRAY** pparray;
        struct tagVARIANT* pvarVal;
        PVOID byref;
        CHAR cVal;
        USHORT uiVal;
        ULONG ulVal;
        ULONGLONG ullVal;
        INT intVal;
        UINT uintVal;
        CHAR* pcVal;
        USHORT* puiVal;
        ULONG* pulVal;
        ULONGLONG* pullVal;
        INT* pintVal;
        UINT* puintVal;
        BRECORD brecVal;
    };
} VARIANT;
typedef VARIANT VARIANTARG;

typedef struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
} DISPPARAMS;

typedef struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    PVOID pvReserved;
    HRESULT(STDMETHODCALLTYPE* pfnDeferredFillIn)(struct EXCEPINFO*);
    SCODE scode;
} EXCEPINFO;

#ifdef __cplusplus
static_assert(sizeof(GUID) == 16, "a GUID has 16 bytes");
static_assert(sizeof(VARIANT) == 24, "the 24-byte Win64 VARIANT");
static_assert(offsetof(VARIANT, llVal) == 8, "the value lies at byte 8");
static_assert(sizeof(SAFEARRAY) == 32 && offsetof(SAFEARRAY, pvData) == 16 &&
                  offsetof(SAFEARRAY, rgsabound) == 24,
              "the Win64 SAFEARRAY");
static_assert(sizeof(DISPPARAMS) == 24 && offsetof(DISPPARAMS, cArgs) == 16,
              "the Win64 DISPPARAMS");
static_assert(sizeof(EXCEPINFO) == 64, "the Win64 EXCEPINFO");

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

struct IDispatch : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count,
                                                    LCID lcid, DISPID* ids) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags,
                                             DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                             UINT* argErr) = 0;
};

struct IClassFactory : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;
};

struct ISupportErrorInfo : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) = 0;
};

struct IErrorInfo : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSource(BSTR* source) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR* description) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* helpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* helpContext) = 0;
};

struct ICreateErrorInfo : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR helpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD helpContext) = 0;
};

#else
#include <zrkey/automation_c.h>
#endif

static const IID IID_IUnknown = {
    0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
static const IID IID_IDispatch = {
    0x00020400, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
static const IID IID_IClassFactory = {
    0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
static const IID IID_ISupportErrorInfo = {
    0xDF0B3D60, 0x548F, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
static const IID IID_IErrorInfo = {
    0x1CF2B120, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
static const IID IID_ICreateErrorInfo = {
    0x22F03340, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
static const IID IID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

#ifdef __cplusplus
extern "C" {
#endif

/// Creates a string of terminated text.
/// @return owned by the caller; null for null and when out of memory.
BSTR SysAllocString(const OLECHAR* text);
/// Creates a string of length UTF-16 units.
/// @param text  the units to copy; null zeroes the string.
/// @return owned by the caller; null when out of memory.
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
/// Creates a string of length bytes.
/// @param bytes  the bytes to copy; null zeroes the string.
/// @return owned by the caller; null when out of memory.
BSTR SysAllocStringByteLen(const char* bytes, UINT length);
/// Frees a string; null is ignored.
void SysFreeString(BSTR text);
/// @return the length in UTF-16 units without the terminator; 0 for null.
UINT SysStringLen(BSTR text);
/// @return the length in bytes without the terminator; 0 for null.
UINT SysStringByteLen(BSTR text);

/// Sets a variant to VT_EMPTY without freeing what it holds.
void VariantInit(VARIANT* variant);
/// Frees what a variant holds and sets it to VT_EMPTY.
/// @retval S_OK               done.
/// @retval DISP_E_BADVARTYPE     vt is not a variant type; the variant is unchanged.
/// @retval DISP_E_ARRAYISLOCKED  the variant holds a locked array and is unchanged.
HRESULT VariantClear(VARIANT* variant);
/// Clears target and copies source into it. Strings and arrays are copied, interfaces gain a
/// reference.
/// @retval S_OK  done. Otherwise the failure of VariantClear or of the copy.
HRESULT VariantCopy(VARIANT* target, const VARIANT* source);
/// Converts a variant to another type.
/// @param target  receives the converted value; may be source. Unchanged on failure.
/// @param flags   0, or any of VARIANT_NOVALUEPROP, VARIANT_ALPHABOOL and VARIANT_LOCALBOOL.
/// @retval S_OK                 done.
/// @retval DISP_E_TYPEMISMATCH  there is no such conversion, or the text is no value of the type.
/// @retval DISP_E_OVERFLOW      the value does not fit.
/// @retval DISP_E_BADVARTYPE    one of the types is not a variant type.
HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type);

/// Creates an array of zeroed elements.
/// @return owned by the caller, who frees it with SafeArrayDestroy or with the variant that holds
///         it; null when elements cannot have the type, a bound is too large or out of memory.
SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
/// Frees an array and its elements; null is ignored.
/// @retval S_OK                  done.
/// @retval DISP_E_ARRAYISLOCKED  the array is locked and unchanged.
HRESULT SafeArrayDestroy(SAFEARRAY* array);
/// @retval S_OK          one lock more.
/// @retval E_INVALIDARG  array is null.
/// @retval E_UNEXPECTED  there are 65,535 locks already.
HRESULT SafeArrayLock(SAFEARRAY* array);
/// @retval S_OK          one lock less.
/// @retval E_INVALIDARG  array is null.
/// @retval E_UNEXPECTED  the array is not locked.
HRESULT SafeArrayUnlock(SAFEARRAY* array);
/// Locks an array and returns its elements. Call SafeArrayUnaccessData afterwards.
/// @param data  receives the first element; owned by the array.
/// @retval S_OK          done. Otherwise a result of SafeArrayLock; E_INVALIDARG also for null
///                       data.
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
/// As SafeArrayUnlock.
HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
/// Makes a deep copy.
/// @param copy  receives the copy, owned by the caller; null for a null array and on failure.
/// @retval S_OK           done.
/// @retval E_INVALIDARG   copy is null.
/// @retval E_OUTOFMEMORY  out of memory. Otherwise the failure of copying an element.
HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
/// @param type  receives the type of the elements.
/// @retval S_OK          done.
/// @retval E_INVALIDARG  an argument is null, or the array does not record its type.
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
/// @return the number of dimensions; 0 for null.
UINT SafeArrayGetDim(SAFEARRAY* array);
/// @return the size of an element in bytes; 0 for null.
UINT SafeArrayGetElemsize(SAFEARRAY* array);
/// @param dimension  from 1.
/// @param bound      receives the lowest index.
/// @retval S_OK             done.
/// @retval E_INVALIDARG     array or bound is null.
/// @retval DISP_E_BADINDEX  there is no such dimension.
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
/// As SafeArrayGetLBound, for the highest index.
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);

#ifdef __cplusplus
}  // extern "C"
#endif

#endif
