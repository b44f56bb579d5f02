// zrapi::ZComVariant: a VARIANT with typed constructors and assignments.
//
// A constructor or assignment that fails leaves VT_ERROR with the failing result. Typed assignments
// do not release what the variant held before; only those from VARIANT and ZComVariant do. Hosts of
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
    /// @param type  VT_I4 or VT_INT, reported on standard output; any other gives VT_ERROR.
    ZComVariant(int source, VARTYPE type = VT_I4);
    /// @param type  VT_I4 or VT_ERROR.
    ZComVariant(long source, VARTYPE type = VT_I4);
    /// @param type  VT_UI4 or VT_UINT.
    ZComVariant(unsigned int source, VARTYPE type = VT_UI4);
    /// @param type  VT_R8 or VT_DATE.
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

    // By reference: what is pointed to stays the caller's.
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

    /// The result of VariantClear.
    HRESULT Clear();
    /// The result of VariantCopy into this.
    HRESULT Copy(const VARIANT* source);
    /// As Clear and Copy; a failure also leaves VT_ERROR with the result.
    HRESULT InternalClear();
    HRESULT InternalCopy(const VARIANT* source);
    /// Copies a VT_BSTR with its full byte length.
    /// @param out  receives a string that the caller owns.
    /// @retval S_OK                 done.
    /// @retval DISP_E_TYPEMISMATCH  not VT_BSTR.
    /// @retval E_POINTER            VT_BSTR and out is null.
    /// @retval E_OUTOFMEMORY        memory is short.
    HRESULT CopyTo(BSTR* out) const;
    /// Takes the content of source over; source becomes VT_EMPTY.
    /// @retval E_INVALIDARG  source is null. Otherwise S_OK or the failure of VariantClear.
    HRESULT Attach(VARIANT* source);
    /// Hands the content to target, which is cleared first; this becomes VT_EMPTY.
    /// @retval E_POINTER  target is null. Otherwise S_OK or the failure of VariantClear.
    HRESULT Detach(VARIANT* target);
    /// Converts source, or this when source is null, into this.
    HRESULT ChangeType(VARTYPE type, const VARIANT* source = nullptr);

    // VT_NULL, VT_I1, VT_UI2, VT_UI4 and VT_UI8 compare by value; all others ask ZVariantCompare
    // and so are never equal, less or greater.
    bool operator==(const VARIANT& other) const;
    bool operator==(const ZComVariant& other) const;
    bool operator!=(const VARIANT& other) const;
    bool operator!=(const ZComVariant& other) const;
    bool operator<(const VARIANT& other) const;
    bool operator>(const VARIANT& other) const;
    /// @return 0 when a is less, 1 equal, 2 greater; E_FAIL for types that are not compared.
    static HRESULT VarCmp(VARIANT* a, VARIANT* b, LCID lcid, ULONG flags);

    /// Bytes the value takes in a stream, its 2-byte type included.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  size is null.
    /// @retval E_FAIL        an interface; otherwise the failure of the conversion to text.
    HRESULT GetSizeMax(ULARGE_INTEGER* size) const;
    /// As GetSizeMax; 2 where that fails or the size does not fit 32 bits.
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
