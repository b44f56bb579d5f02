// The arguments of one call, each converted to native before it and back after it.
//
//     Argument<windows::Ulong*> length(pLength);
//     const CK_RV rv = sign(..., length.native());
//     length.finish(rv);
#pragma once

#include <algorithm>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "tests/support/bridge/handles.h"
#include "tests/support/bridge/windows_layout.h"

namespace zr::bridge {

/// Bytes, flags and untyped pointers are the same on both sides.
template <class T>
class Argument {
    static_assert(std::is_same_v<T, CK_BBOOL> || std::is_same_v<T, CK_BYTE*> ||
                  std::is_same_v<T, void*>);

public:
    explicit Argument(T value) : m_value(value) {}
    T native() { return m_value; }
    void finish(CK_RV) {}

private:
    T m_value;
};

template <>
class Argument<windows::Ulong> {
public:
    explicit Argument(windows::Ulong value) : m_value(value) {}
    CK_ULONG native() { return m_value; }
    void finish(CK_RV) {}

private:
    CK_ULONG m_value;
};

template <>
class Argument<windows::Handle> {
public:
    explicit Argument(windows::Handle value) : m_value(toNative(value)) {}
    CK_ULONG native() { return m_value; }
    void finish(CK_RV) {}

private:
    CK_ULONG m_value;
};

/// A length in and out. A failure may also report a length.
template <>
class Argument<windows::Ulong*> {
public:
    explicit Argument(windows::Ulong* value) : m_target(value), m_value(value ? *value : 0) {}
    CK_ULONG* native() { return m_target ? &m_value : nullptr; }
    void finish(CK_RV) {
        if (m_target) {
            *m_target = windows::narrow(m_value);
        }
    }

private:
    windows::Ulong* m_target;
    CK_ULONG m_value;
};

template <>
class Argument<windows::Handle*> {
public:
    explicit Argument(windows::Handle* value) : m_target(value) {}
    CK_ULONG* native() { return m_target ? &m_value : nullptr; }
    void finish(CK_RV rv) {
        if (m_target && rv == CKR_OK) {
            *m_target = toWindows(m_value);
        }
    }

private:
    windows::Handle* m_target;
    CK_ULONG m_value = 0;
};

/// Parameters are bytes, as the initial vectors of block ciphers are. Those of RSA-PSS, three numbers,
/// become wider; another structure would need a translation of its own.
template <>
class Argument<windows::Mechanism*> {
public:
    explicit Argument(windows::Mechanism* value) : m_isNull(!value) {
        if (!value) {
            return;
        }
        m_value = {value->mechanism, value->pParameter, value->ulParameterLen};
        Ulong numbers[kPssNumbers];
        if (isPss(value->mechanism) && value->pParameter &&
            value->ulParameterLen == sizeof numbers) {
            std::memcpy(numbers, value->pParameter, sizeof numbers);
            std::copy(std::begin(numbers), std::end(numbers), m_pss);
            m_value.pParameter = m_pss;
            m_value.ulParameterLen = sizeof m_pss;
        }
    }
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;
    CK_MECHANISM* native() { return m_isNull ? nullptr : &m_value; }
    void finish(CK_RV) {}

private:
    using Ulong = windows::Ulong;
    static constexpr std::size_t kPssNumbers = 3;

    /// CKM_RSA_PKCS_PSS, and with SHA-1, SHA-256, SHA-384, SHA-512.
    static bool isPss(Ulong mechanism) {
        return mechanism == 0xD || mechanism == 0xE || (mechanism >= 0x43 && mechanism <= 0x45);
    }

    bool m_isNull;
    CK_MECHANISM m_value = {};
    CK_ULONG m_pss[kPssNumbers] = {};
};

void copy(const CK_INFO& from, windows::Info* to);
void copy(const CK_SLOT_INFO& from, windows::SlotInfo* to);
void copy(const CK_TOKEN_INFO& from, windows::TokenInfo* to);
void copy(const CK_SESSION_INFO& from, windows::SessionInfo* to);
void copy(const CK_MECHANISM_INFO& from, windows::MechanismInfo* to);

/// A structure that a successful call fills.
template <class Native, class Windows>
class InfoArgument {
public:
    explicit InfoArgument(Windows* value) : m_target(value) {}
    Native* native() { return m_target ? &m_value : nullptr; }
    void finish(CK_RV rv) {
        if (m_target && rv == CKR_OK) {
            copy(m_value, m_target);
        }
    }

private:
    Windows* m_target;
    Native m_value = {};
};

template <>
class Argument<windows::Info*> : public InfoArgument<CK_INFO, windows::Info> {
    using InfoArgument::InfoArgument;
};
template <>
class Argument<windows::SlotInfo*> : public InfoArgument<CK_SLOT_INFO, windows::SlotInfo> {
    using InfoArgument::InfoArgument;
};
template <>
class Argument<windows::TokenInfo*> : public InfoArgument<CK_TOKEN_INFO, windows::TokenInfo> {
    using InfoArgument::InfoArgument;
};
template <>
class Argument<windows::SessionInfo*> : public InfoArgument<CK_SESSION_INFO, windows::SessionInfo> {
    using InfoArgument::InfoArgument;
};
template <>
class Argument<windows::MechanismInfo*>
    : public InfoArgument<CK_MECHANISM_INFO, windows::MechanismInfo> {
    using InfoArgument::InfoArgument;
};

}  // namespace zr::bridge
