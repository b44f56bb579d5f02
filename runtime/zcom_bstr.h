// zrapi::ZComBSTR: an owned BSTR with a cached UTF-8 view.
#pragma once

#include <zrkey/automation.h>

namespace zrapi {

class ZComBSTR {
public:
    ZComBSTR() = default;
    /// Creates a string of UTF-8 text.
    explicit ZComBSTR(const char* utf8);
    /// Copies s.
    explicit ZComBSTR(BSTR& s);
    /// @param copy  true copies s; false takes over s.
    ZComBSTR(BSTR& s, bool copy);
    /// Copies and assigned objects share string and cache; the last object frees them. When out of
    /// memory, the object becomes empty.
    ZComBSTR(const ZComBSTR& other);
    ZComBSTR& operator=(const ZComBSTR& other);
    virtual ~ZComBSTR();

    /// The string itself, owned by the object.
    operator BSTR() const;
    /// Converts the string to UTF-8; null without a string and on failure. The text is valid until
    /// the next conversion, Clear or the end of the object.
    operator const char*();

    /// Length in UTF-16 units.
    UINT GetLength() const;
    /// Length in bytes.
    UINT GetByteLength() const;
    /// Frees the string and its UTF-8 text.
    void Clear();
    /// A copy up to the first zero unit, owned by the caller.
    BSTR Copy() const;
    static int GetStreamSize(BSTR s);

private:
    void ClearCache();
    void Share(const ZComBSTR& other);

    BSTR m_bstr = nullptr;
    char* m_pszUtf8 = nullptr;
};

}  // namespace zrapi
