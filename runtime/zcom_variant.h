// zrapi::ZComVariant: a VARIANT with typed constructors and assignments.
//
// A constructor or assignment that fails sets VT_ERROR with the failing result. Typed assignments
// do not release what the variant holds; only those from VARIANT and ZComVariant do. Kept: users of
// the runtime depend on the difference.
#pragma once

#include <zrkey/automation.h>

#include "runtime/zcom_bstr.h"

namespace zrapi {

class ZComVariant : public VARIANT {
public:
    ZComVariant();
    ZComVariant(const VARIANT& source);
    ZComVariant(const ZComVariant& source);
    ~ZComVariant();

    ZComVariant(const OLECHAR* source) : ZComVariant() { *this = source; }
    ZComVariant(const char* source) : ZComVariant() { *this = source; }
    ZComVariant(const ZComBSTR& source) : ZComVariant() { *this = source; }
    ZComVariant(bool source) : ZComVariant() { *this = source; }
    /// @param type  VT_I4 or VT_INT, printed on standard output; any other sets VT_ERROR.
    ZComVariant(int source, VARTYPE type = VT_I4);
    /// @param type  VT_I4 or VT_ERROR; any other sets VT_ERROR.
    ZComVariant(long source, VARTYPE type = VT_I4);
    /// @param type  VT_UI4 or VT_UINT; any other sets VT_ERROR.
    ZComVariant(unsigned int source, VARTYPE type = VT_UI4);
    /// @param type  VT_R8 or VT_DATE; any other sets VT_ERROR.
    ZComVariant(double source, VARTYPE type = VT_R8);
    ZComVariant(unsigned char source) : ZComVariant() { *this = source; }
    ZComVariant(char source) : ZComVariant() { *this = source; }
    ZComVariant(short source) : ZComVariant() { *this = source; }
    ZComVariant(unsigned short source) : ZComVariant() { *this = source; }
    ZComVariant(unsigned long source) : ZComVariant() { *this = source; }
    ZComVariant(float source) : ZComVariant() { *this = source; }
    ZComVariant(long long source) : ZComVariant() { *this = source; }
    ZComVariant(unsigned long long source) : ZComVariant() { *this = source; }
    ZComVariant(CY source) : ZComVariant() { *this = source; }
    ZComVariant(IDispatch* source) : ZComVariant() { *this = source; }
    ZComVariant(IUnknown* source) : ZComVariant() { *this = source; }
    ZComVariant(const SAFEARRAY* source) : ZComVariant() { *this = source; }

    ZComVariant& operator=(const VARIANT& source);
    ZComVariant& operator=(const ZComVariant& source);
    ZComVariant& operator=(const OLECHAR* source);
    ZComVariant& operator=(const char* source);
    ZComVariant& operator=(const ZComBSTR& source);
    /// Adds a reference.
    ZComVariant& operator=(IDispatch* source);
    /// Adds a reference.
    ZComVariant& operator=(IUnknown* source);
    /// Copies the array.
    ZComVariant& operator=(const SAFEARRAY* source);
    ZComVariant& operator=(bool source) { return Put(VT_BOOL, boolVal, source ? -1 : 0); }
    ZComVariant& operator=(int source) { return Put(VT_I4, lVal, source); }
    ZComVariant& operator=(long source) { return Put(VT_I4, lVal, source); }
    ZComVariant& operator=(unsigned int source) { return Put(VT_UI4, ulVal, source); }
    ZComVariant& operator=(double source) { return Put(VT_R8, dblVal, source); }
    ZComVariant& operator=(unsigned char source) { return Put(VT_UI1, bVal, source); }
    ZComVariant& operator=(char source) { return Put(VT_I1, cVal, source); }
    ZComVariant& operator=(short source) { return Put(VT_I2, iVal, source); }
    ZComVariant& operator=(unsigned short source) { return Put(VT_UI2, uiVal, source); }
    ZComVariant& operator=(unsigned long source) { return Put(VT_UI4, ulVal, source); }
    ZComVariant& operator=(float source) { return Put(VT_R4, fltVal, source); }
    ZComVariant& operator=(long long source) { return Put(VT_I8, llVal, source); }
    ZComVariant& operator=(unsigned long long source) { return Put(VT_UI8, ullVal, source); }
    ZComVariant& operator=(CY source) { return Put(VT_CY, cyVal, source); }

    // By reference: the caller owns what the pointer refers to.
    ZComVariant& operator=(unsigned char* source) { return PutReference(VT_UI1, source); }
    ZComVariant& operator=(short* source) { return PutReference(VT_I2, source); }
    ZComVariant& operator=(unsigned short* source) { return PutReference(VT_UI2, source); }
    ZComVariant& operator=(int* source) { return PutReference(VT_I4, source); }
    ZComVariant& operator=(long* source) { return PutReference(VT_I4, source); }
    ZComVariant& operator=(unsigned int* source) { return PutReference(VT_UI4, source); }
    ZComVariant& operator=(unsigned long* source) { return PutReference(VT_UI4, source); }
    ZComVariant& operator=(long long* source) { return PutReference(VT_I8, source); }
    ZComVariant& operator=(unsigned long long* source) { return PutReference(VT_UI8, source); }
    ZComVariant& operator=(float* source) { return PutReference(VT_R4, source); }
    ZComVariant& operator=(double* source) { return PutReference(VT_R8, source); }

    /// Clears this. Returns the result of VariantClear.
    HRESULT Clear();
    /// Copies source into this. Returns the result of VariantCopy.
    HRESULT Copy(const VARIANT* source);
    /// As Clear and Copy; a failure also sets VT_ERROR with the result.
    HRESULT InternalClear();
    HRESULT InternalCopy(const VARIANT* source);
    /// Copies a VT_BSTR with its full byte length.
    /// @param out  receives a string that the caller owns.
    /// @retval S_OK                 done.
    /// @retval DISP_E_TYPEMISMATCH  this is not VT_BSTR.
    /// @retval E_POINTER            this is VT_BSTR and out is null.
    /// @retval E_OUTOFMEMORY        out of memory.
    HRESULT CopyTo(BSTR* out) const;
    /// Clears this and moves the content of source into it; source becomes VT_EMPTY.
    /// @retval S_OK          done. Otherwise the failure of VariantClear; both are then unchanged.
    /// @retval E_INVALIDARG  source is null.
    HRESULT Attach(VARIANT* source);
    /// Clears target and moves the content of this into it; this becomes VT_EMPTY.
    /// @retval S_OK       done. Otherwise the failure of VariantClear; both are then unchanged.
    /// @retval E_POINTER  target is null.
    HRESULT Detach(VARIANT* target);
    /// Converts source into this; a null source converts this itself. Returns the result of
    /// VariantChangeType.
    HRESULT ChangeType(VARTYPE type, const VARIANT* source = nullptr);

    // VT_NULL, VT_I1, VT_UI2, VT_UI4 and VT_UI8 compare their values. All others call
    // ZVariantCompare, so they are never equal, less or greater.
    bool operator==(const VARIANT& other) const;
    bool operator==(const ZComVariant& other) const;
    bool operator!=(const VARIANT& other) const;
    bool operator!=(const ZComVariant& other) const;
    bool operator<(const VARIANT& other) const;
    bool operator>(const VARIANT& other) const;
    /// @return 0 when a is less, 1 when equal, 2 when greater; E_FAIL for types that are not
    ///         compared.
    static HRESULT VarCmp(VARIANT* a, VARIANT* b, LCID lcid, ULONG flags);

    /// Computes the size of the value in a stream, with its 2-byte type. Types without a fixed size
    /// are converted to text.
    /// @param size  receives the size in bytes; untouched on failure.
    /// @retval S_OK          done. Otherwise the failure of the conversion.
    /// @retval E_INVALIDARG  size is null.
    /// @retval E_FAIL        this is an interface.
    HRESULT GetSizeMax(ULARGE_INTEGER* size) const;
    /// As GetSizeMax; 2 when that fails or the size does not fit 32 bits.
    ULONG GetSize() const;

private:
    template <class Field, class Value>
    ZComVariant& Put(VARTYPE type, Field& field, Value value) {
        vt = type;
        field = static_cast<Field>(value);
        return *this;
    }
    ZComVariant& PutReference(VARTYPE type, void* target);
    ZComVariant& PutString(BSTR string, bool failed);
    ZComVariant& PutError(HRESULT result);
};

}  // namespace zrapi
