// A session of the command's own on a token, beside the library's. It shares the library's login:
// PKCS #11 logs a whole program in or out of a token.
//
//     CryptokiSession session(module, slot, CryptokiSession::Access::kReadOnly);
//     std::vector<CK_OBJECT_HANDLE> found;
//     if (session.result() == CKR_OK) {
//         CK_RV result = session.find({numberAttribute(CKA_CLASS, CKO_DATA)}, found);
//     }
//
// Each function returns the result of the call that failed, or CKR_OK; lastFunction() names the
// call. It returns kImpossibleAnswer when the module reports a length or a count that cannot be
// right.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/token/cryptoki.h"
#include "host/token/pin.h"

using CK_SESSION_HANDLE = CK_ULONG;
using CK_OBJECT_HANDLE = CK_ULONG;
using CK_ATTRIBUTE_TYPE = CK_ULONG;
using CK_USER_TYPE = CK_ULONG;

namespace zr::host {

/// The longest value of an attribute, and the longest signature.
inline constexpr std::size_t kLongestValue = 1 << 20;
inline constexpr std::size_t kLongestSignature = 4096;
/// The longest value of an attribute that is read without asking for its length first.
inline constexpr std::size_t kShortValue = 256;

/// An attribute with its value: bytes, as the module takes them.
struct Attribute {
    CK_ATTRIBUTE_TYPE type = 0;
    std::string value;
};
using Attributes = std::vector<Attribute>;
/// nullopt: the object does not have the attribute, or does not show it.
using AttributeValues = std::vector<std::optional<std::string>>;

Attribute numberAttribute(CK_ATTRIBUTE_TYPE type, CK_ULONG value);
Attribute truthAttribute(CK_ATTRIBUTE_TYPE type, bool value);
/// The number that a value holds; nullopt when it is not as long as a number.
std::optional<CK_ULONG> toNumber(const std::optional<std::string>& value);
/// Whether a value is CK_TRUE.
bool isTrue(const std::optional<std::string>& value);

/// A mechanism with its parameter: the bytes of a structure, or none.
struct Mechanism {
    CK_MECHANISM_TYPE type = 0;
    std::string parameter;
};

class CryptokiSession {
public:
    enum class Access { kReadOnly, kReadWrite };

    /// Opens the session.
    /// @param module  borrowed; it must be initialised, and stay so for the life of the session.
    CryptokiSession(const Cryptoki& module, CK_SLOT_ID slot, Access access);
    /// Closes it.
    ~CryptokiSession();
    CryptokiSession(const CryptokiSession&) = delete;
    CryptokiSession& operator=(const CryptokiSession&) = delete;

    /// The result of C_OpenSession.
    CK_RV result() const { return m_result; }
    /// The entry point that was called last: "C_OpenSession".
    const char* lastFunction() const { return m_lastFunction; }

    /// @param type  CKU_USER, CKU_SO or CKU_CONTEXT_SPECIFIC.
    CK_RV login(CK_USER_TYPE type, const Pin& pin);
    CK_RV logout();
    /// Sets the user's PIN; needs a login as security officer.
    CK_RV initPin(const Pin& pin);

    /// Finds the objects with these attributes, in the order of the module.
    CK_RV find(const Attributes& attributes, std::vector<CK_OBJECT_HANDLE>& objects);
    /// Reads attributes of an object; one value per type.
    CK_RV read(CK_OBJECT_HANDLE object, const std::vector<CK_ATTRIBUTE_TYPE>& types,
               AttributeValues& values);
    /// The same for values that are seldom long: one call instead of two when no value has more than
    /// kShortValue bytes.
    CK_RV readShort(CK_OBJECT_HANDLE object, const std::vector<CK_ATTRIBUTE_TYPE>& types,
                    AttributeValues& values);
    CK_RV create(const Attributes& attributes, CK_OBJECT_HANDLE& object);
    /// @param changes  attributes of the copy that differ.
    CK_RV copy(CK_OBJECT_HANDLE object, const Attributes& changes, CK_OBJECT_HANDLE& made);
    CK_RV set(CK_OBJECT_HANDLE object, const Attributes& attributes);
    CK_RV destroy(CK_OBJECT_HANDLE object);

    CK_RV signInit(const Mechanism& mechanism, CK_OBJECT_HANDLE key);
    /// Signs everything at once, after signInit.
    CK_RV sign(std::string_view data, std::string& signature);
    /// Signs part by part, after signInit.
    CK_RV signUpdate(std::string_view part);
    CK_RV signFinal(std::string& signature);

    CK_RV verifyInit(const Mechanism& mechanism, CK_OBJECT_HANDLE key);
    CK_RV verify(std::string_view data, std::string_view signature);
    CK_RV verifyUpdate(std::string_view part);
    CK_RV verifyFinal(std::string_view signature);

private:
    template <auto entry, class... Arguments>
    CK_RV call(const char* function, Arguments... arguments);

    const Cryptoki& m_module;
    CK_SESSION_HANDLE m_session = 0;
    const char* m_lastFunction = "C_OpenSession";
    CK_RV m_result;
};

}  // namespace zr::host
