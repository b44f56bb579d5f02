// zrapi::ZComBSTR: an owned BSTR with a cached UTF-8 view.
#pragma once

#include <zrkey/automation.h>

namespace zrapi {

class ZComBSTR {
public:
    ZComBSTR() = default;
    /// A new string of UTF-8 text.
    explicit ZComBSTR(const char* utf8);
    /// A copy of s.
    explicit ZComBSTR(BSTR& s);
    /// @param copy  true copies s; false takes s over and frees it later.
    ZComBSTR(BSTR& s, bool copy);
    /// Copies and assigned objects share string and cache; the last one frees them. Null when
    /// memory is short.
    ZComBSTR(const ZComBSTR& other);
    ZComBSTR& operator=(const ZComBSTR& other);
    virtual ~ZComBSTR();

    /// The string itself, still owned by the object.
    operator BSTR() const;
    /// The UTF-8 view, made anew; null when there is no string or on failure.
    /// Valid until the next such call, Clear or destruction.
    operator const char*();

    /// Length in UTF-16 units.
    UINT GetLength() const;
    /// Length in bytes.
    UINT GetByteLength() const;
    /// Frees string and cache.
    void Clear();
    /// A copy up to the first terminator, owned by the caller.
    BSTR Copy() const;
    static int GetStreamSize(BSTR s);

private:
    void ClearCache();
    void Share(const ZComBSTR& other);

    BSTR m_bstr = nullptr;
    char* m_pszUtf8 = nullptr;
};

}  // namespace zrapi
