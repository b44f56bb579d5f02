// What a stateful module knows of the test that made it: the tokens, and who records its calls.
// Both outlive the module, as tokens and hosts do.
#pragma once

#include <cstddef>

#include "pkcs11/cryptoki_types.h"

namespace zr::test {

/// Stands in the module's file before 16 digits. Stateful replaces the digits by the address of its
/// tokens in hexadecimal, so that each copy of the file is a module with tokens of its own.
inline constexpr char kTokensMark[] = "zrkey stateful tokens at ";
inline constexpr std::size_t kTokensDigits = 16;

/// The slot of the first token; the others follow.
inline constexpr CK_SLOT_ID kFirstSlot = 11;

/// One Cryptoki call.
struct StatefulCall {
    const char* function;
    CK_SLOT_ID slot;            ///< 0 when the call names none
    CK_SESSION_HANDLE session;  ///< 0 when the call names none; where it ends, what it opened
};

/// Only plain types cross the border between module and test. Tokens are numbered from 0.
class StatefulTokens {
public:
    /// The module's code was loaded or unloaded.
    virtual void setLoaded(bool isLoaded) = 0;
    /// The module was initialised or finalised.
    virtual void setInitialized(bool isInitialized) = 0;
    /// A call begins, and ends. The module holds no lock meanwhile: both may call the library.
    virtual void beginCall(const StatefulCall& call) = 0;
    virtual void endCall(const StatefulCall& call) = 0;
    /// The call is one that no correct caller makes.
    virtual void reportMisuse(const StatefulCall& call, const char* reason) = 0;

    virtual CK_ULONG count() const = 0;
    /// Whether a second search in a session is refused.
    virtual bool isSearchExclusive() const = 0;
    virtual void describe(CK_ULONG token, CK_TOKEN_INFO* info) const = 0;
    virtual bool isPin(CK_ULONG token, CK_USER_TYPE user, const CK_UTF8CHAR* pin,
                       CK_ULONG length) const = 0;
    virtual void setPin(CK_ULONG token, CK_USER_TYPE user, const CK_UTF8CHAR* pin,
                        CK_ULONG length) = 0;

    virtual CK_OBJECT_HANDLE create(CK_ULONG token, const CK_ATTRIBUTE* attributes,
                                    CK_ULONG count) = 0;
    /// @return whether there is such an object; so do read and write.
    virtual bool destroy(CK_ULONG token, CK_OBJECT_HANDLE object) = 0;
    /// Reads lengths, and values where there is a buffer, as C_GetAttributeValue does.
    virtual CK_RV read(CK_ULONG token, CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes,
                       CK_ULONG count) const = 0;
    virtual bool write(CK_ULONG token, CK_OBJECT_HANDLE object, const CK_ATTRIBUTE* attributes,
                       CK_ULONG count) = 0;
    /// The first object above a handle that has these attributes; 0 when there is none.
    virtual CK_OBJECT_HANDLE findAfter(CK_ULONG token, CK_OBJECT_HANDLE handle,
                                       const CK_ATTRIBUTE* attributes, CK_ULONG count) const = 0;

protected:
    ~StatefulTokens() = default;
};

}  // namespace zr::test
