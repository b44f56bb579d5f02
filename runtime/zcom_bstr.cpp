// zrapi::ZComBSTR: an owned BSTR with a cached UTF-8 view.
#include "runtime/zcom_bstr.h"

#include <cstring>
#include <new>

#include "runtime/block_owners.h"
#include "runtime/string_convert.h"

namespace zrapi {

ZComBSTR::ZComBSTR(const char* utf8) : m_bstr(ZSysAllocUTF8String(utf8)) {}

ZComBSTR::ZComBSTR(BSTR& s) : m_bstr(SysAllocString(s)) {}

ZComBSTR::ZComBSTR(BSTR& s, bool copy) : m_bstr(copy ? SysAllocString(s) : s) {}

ZComBSTR::ZComBSTR(const ZComBSTR& other) {
    Share(other);
}

ZComBSTR& ZComBSTR::operator=(const ZComBSTR& other) {
    if (this != &other) {
        Clear();
        Share(other);
    }
    return *this;
}

ZComBSTR::~ZComBSTR() {
    Clear();
}

ZComBSTR::operator BSTR() const {
    return m_bstr;
}

ZComBSTR::operator const char*() {
    ClearCache();
    // Most text is short: one conversion gives both its size and its bytes.
    char few[128];
    if (const int length = ZConvUnicodeToUTF8(m_bstr, few, sizeof few)) {
        const auto size = static_cast<unsigned int>(length);
        m_pszUtf8 = new (std::nothrow) char[size];
        return m_pszUtf8 ? static_cast<char*>(std::memcpy(m_pszUtf8, few, size)) : nullptr;
    }
    const auto size = static_cast<unsigned int>(ZBstrToUtf8(m_bstr, nullptr, 0));
    if (size == 0) {
        return nullptr;
    }
    m_pszUtf8 = new (std::nothrow) char[size];
    if (m_pszUtf8 && ZConvUnicodeToUTF8(m_bstr, m_pszUtf8, size) == 0) {
        ClearCache();
    }
    return m_pszUtf8;
}

UINT ZComBSTR::GetLength() const {
    return SysStringLen(m_bstr);
}

UINT ZComBSTR::GetByteLength() const {
    return SysStringByteLen(m_bstr);
}

void ZComBSTR::Clear() {
    if (m_bstr && zr::dropOwner(m_bstr)) {
        SysFreeString(m_bstr);
    }
    m_bstr = nullptr;
    ClearCache();
}

BSTR ZComBSTR::Copy() const {
    return SysAllocString(m_bstr);
}

int ZComBSTR::GetStreamSize(BSTR s) {
    return ZSysStringGetStreamSize(s);
}

void ZComBSTR::ClearCache() {
    if (m_pszUtf8 && zr::dropOwner(m_pszUtf8)) {
        delete[] m_pszUtf8;
    }
    m_pszUtf8 = nullptr;
}

void ZComBSTR::Share(const ZComBSTR& other) {
    m_bstr = zr::addOwner(other.m_bstr) ? other.m_bstr : nullptr;
    m_pszUtf8 = zr::addOwner(other.m_pszUtf8) ? other.m_pszUtf8 : nullptr;
}

}  // namespace zrapi
