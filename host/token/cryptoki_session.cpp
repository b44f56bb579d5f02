// A session of the command's own on a token.
#include "host/token/cryptoki_session.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "host/system/erasing_allocator.h"
#include "host/system/secret_memory.h"
#include "host/system/system.h"
#include "host/token/cryptoki_call.h"
#include "host/token/cryptoki_names.h"

namespace zr::host {
namespace {

using Functions = CK_FUNCTION_LIST;

/// More objects than any token has: a faulty module may find objects without end.
constexpr std::size_t kMostObjects = 1 << 16;
constexpr CK_ULONG kObjectsPerCall = 64;

/// The parameters of Cryptoki are not constant; the module does not change the bytes.
CK_BYTE* bytesOf(std::string_view bytes) {
    return reinterpret_cast<CK_BYTE*>(const_cast<char*>(bytes.data()));
}

CK_ULONG lengthOf(std::string_view bytes) {
    return static_cast<CK_ULONG>(bytes.size());
}

/// The attributes as a template; borrows their values.
std::vector<CK_ATTRIBUTE> templateOf(const Attributes& attributes) {
    std::vector<CK_ATTRIBUTE> list;
    list.reserve(attributes.size());
    for (const Attribute& attribute : attributes) {
        list.push_back({attribute.type, bytesOf(attribute.value), lengthOf(attribute.value)});
    }
    return list;
}

/// A PIN for one call, with a terminator: a module may write into it and past its end.
class PinBytes {
public:
    explicit PinBytes(const Pin& pin) : m_bytes(pin.view().size() + 1) {
        std::copy(pin.view().begin(), pin.view().end(), m_bytes.begin());
    }
    /// Erases them while they are still protected.
    ~PinBytes() { secureErase(m_bytes.data(), m_bytes.size()); }
    PinBytes(const PinBytes&) = delete;
    PinBytes& operator=(const PinBytes&) = delete;

    CK_UTF8CHAR* data() { return reinterpret_cast<CK_UTF8CHAR*>(m_bytes.data()); }
    CK_ULONG size() const { return static_cast<CK_ULONG>(m_bytes.size() - 1); }

private:
    ErasedBytes m_bytes;
    SecretMemory m_protection{m_bytes.data(), m_bytes.size()};
};

/// A mechanism for one call; borrows the parameter.
CK_MECHANISM mechanismOf(const Mechanism& mechanism) {
    const bool hasParameter = !mechanism.parameter.empty();
    return {mechanism.type, hasParameter ? bytesOf(mechanism.parameter) : nullptr,
            lengthOf(mechanism.parameter)};
}

/// Results of C_GetAttributeValue beside which the other attributes are valid.
bool isPartial(CK_RV result) {
    return result == CKR_ATTRIBUTE_SENSITIVE || result == CKR_ATTRIBUTE_TYPE_INVALID;
}

/// Gets a signature.
/// @param get  called with room for it, and the length of the room.
template <class Get>
CK_RV takeSignature(std::string& signature, Get get) {
    std::string room(kLongestSignature, '\0');
    auto length = static_cast<CK_ULONG>(room.size());
    const CK_RV result = get(bytesOf(room), &length);
    if (result == CKR_OK && length > room.size()) {
        return kImpossibleAnswer;
    }
    signature = result == CKR_OK ? room.substr(0, length) : std::string();
    return result;
}

bool isShown(const CK_ATTRIBUTE& attribute) {
    return attribute.ulValueLen != CK_UNAVAILABLE_INFORMATION;
}

}  // namespace

Attribute numberAttribute(CK_ATTRIBUTE_TYPE type, CK_ULONG value) {
    return {type, std::string(reinterpret_cast<const char*>(&value), sizeof value)};
}

Attribute truthAttribute(CK_ATTRIBUTE_TYPE type, bool value) {
    return {type, std::string(1, static_cast<char>(value ? CK_TRUE : CK_FALSE))};
}

std::optional<CK_ULONG> toNumber(const std::optional<std::string>& value) {
    CK_ULONG number = 0;
    if (!value || value->size() != sizeof number) {
        return std::nullopt;
    }
    std::memcpy(&number, value->data(), sizeof number);
    return number;
}

bool isTrue(const std::optional<std::string>& value) {
    return value && value->size() == 1 && (*value)[0] != static_cast<char>(CK_FALSE);
}

template <auto entry, class... Arguments>
CK_RV CryptokiSession::call(const char* function, Arguments... arguments) {
    m_lastFunction = function;
    return callModule<entry>(m_module, arguments...);
}

CryptokiSession::CryptokiSession(const Cryptoki& module, CK_SLOT_ID slot, Access access)
    : m_module(module) {
    const CK_FLAGS flags =
        CKF_SERIAL_SESSION | (access == Access::kReadWrite ? CKF_RW_SESSION : CK_FLAGS{0});
    m_result =
        call<&Functions::C_OpenSession>("C_OpenSession", slot, flags, nullptr, nullptr, &m_session);
}

CryptokiSession::~CryptokiSession() {
    if (m_result == CKR_OK) {
        callModule<&Functions::C_CloseSession>(m_module, m_session);
    }
}

CK_RV CryptokiSession::login(CK_USER_TYPE type, const Pin& pin) {
    PinBytes bytes(pin);
    return call<&Functions::C_Login>("C_Login", m_session, type, bytes.data(), bytes.size());
}

CK_RV CryptokiSession::logout() {
    return call<&Functions::C_Logout>("C_Logout", m_session);
}

CK_RV CryptokiSession::initPin(const Pin& pin) {
    PinBytes bytes(pin);
    return call<&Functions::C_InitPIN>("C_InitPIN", m_session, bytes.data(), bytes.size());
}

CK_RV CryptokiSession::find(const Attributes& attributes, std::vector<CK_OBJECT_HANDLE>& objects) {
    objects.clear();
    std::vector<CK_ATTRIBUTE> list = templateOf(attributes);
    CK_RV result = call<&Functions::C_FindObjectsInit>("C_FindObjectsInit", m_session, list.data(),
                                                       static_cast<CK_ULONG>(list.size()));
    if (result != CKR_OK) {
        return result;
    }
    CK_OBJECT_HANDLE found[kObjectsPerCall] = {};
    CK_ULONG count = 0;
    do {
        count = 0;
        result = call<&Functions::C_FindObjects>("C_FindObjects", m_session, found, kObjectsPerCall,
                                                 &count);
        if (result == CKR_OK && (count > kObjectsPerCall || objects.size() > kMostObjects)) {
            result = kImpossibleAnswer;
        }
        if (result == CKR_OK) {
            objects.insert(objects.end(), found, found + count);
        }
    } while (result == CKR_OK && count > 0);
    // Whatever happened, the search is over; only a success may become a failure here.
    const CK_RV end = callModule<&Functions::C_FindObjectsFinal>(m_module, m_session);
    if (result == CKR_OK && end != CKR_OK) {
        m_lastFunction = "C_FindObjectsFinal";
        result = end;
    }
    if (result != CKR_OK) {
        objects.clear();
    }
    return result;
}

CK_RV CryptokiSession::read(CK_OBJECT_HANDLE object, const std::vector<CK_ATTRIBUTE_TYPE>& types,
                            AttributeValues& values) {
    values.assign(types.size(), std::nullopt);
    std::vector<CK_ATTRIBUTE> list(types.size());
    for (std::size_t i = 0; i < types.size(); ++i) {
        list[i].type = types[i];
    }
    const auto count = static_cast<CK_ULONG>(list.size());
    const auto get = [&] {
        const CK_RV result = call<&Functions::C_GetAttributeValue>("C_GetAttributeValue", m_session,
                                                                   object, list.data(), count);
        return isPartial(result) ? CKR_OK : result;
    };
    CK_RV result = get();
    if (result != CKR_OK) {
        return result;
    }
    std::vector<std::string> rooms(types.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        CK_ATTRIBUTE& attribute = list[i];
        if (!isShown(attribute)) {
            attribute.ulValueLen = 0;
        } else if (attribute.ulValueLen > kLongestValue) {
            return kImpossibleAnswer;
        } else {
            // One byte more, so that a value without bytes has a buffer too.
            rooms[i].resize(attribute.ulValueLen + 1);
            attribute.pValue = rooms[i].data();
        }
    }
    result = get();
    for (std::size_t i = 0; i < list.size() && result == CKR_OK; ++i) {
        if (!list[i].pValue || !isShown(list[i])) {
            continue;
        }
        if (list[i].ulValueLen >= rooms[i].size()) {
            return kImpossibleAnswer;
        }
        rooms[i].resize(list[i].ulValueLen);
        values[i] = std::move(rooms[i]);
    }
    return result;
}

CK_RV CryptokiSession::readShort(CK_OBJECT_HANDLE object,
                                 const std::vector<CK_ATTRIBUTE_TYPE>& types,
                                 AttributeValues& values) {
    std::vector<std::array<char, kShortValue>> rooms(types.size());
    std::vector<CK_ATTRIBUTE> list(types.size());
    for (std::size_t i = 0; i < types.size(); ++i) {
        list[i] = {types[i], rooms[i].data(), static_cast<CK_ULONG>(kShortValue)};
    }
    const CK_RV result = call<&Functions::C_GetAttributeValue>(
        "C_GetAttributeValue", m_session, object, list.data(), static_cast<CK_ULONG>(list.size()));
    const bool isLong = std::any_of(list.begin(), list.end(), [](const CK_ATTRIBUTE& attribute) {
        return attribute.ulValueLen > kShortValue;
    });
    // Beside a missing value one that is too long looks missing too.
    if (result != CKR_OK || isLong) {
        return read(object, types, values);
    }
    values.clear();
    for (std::size_t i = 0; i < list.size(); ++i) {
        values.emplace_back(std::string(rooms[i].data(), list[i].ulValueLen));
    }
    return result;
}

CK_RV CryptokiSession::create(const Attributes& attributes, CK_OBJECT_HANDLE& object) {
    std::vector<CK_ATTRIBUTE> list = templateOf(attributes);
    return call<&Functions::C_CreateObject>("C_CreateObject", m_session, list.data(),
                                            static_cast<CK_ULONG>(list.size()), &object);
}

CK_RV CryptokiSession::copy(CK_OBJECT_HANDLE object, const Attributes& changes,
                            CK_OBJECT_HANDLE& made) {
    std::vector<CK_ATTRIBUTE> list = templateOf(changes);
    return call<&Functions::C_CopyObject>("C_CopyObject", m_session, object, list.data(),
                                          static_cast<CK_ULONG>(list.size()), &made);
}

CK_RV CryptokiSession::set(CK_OBJECT_HANDLE object, const Attributes& attributes) {
    std::vector<CK_ATTRIBUTE> list = templateOf(attributes);
    return call<&Functions::C_SetAttributeValue>("C_SetAttributeValue", m_session, object,
                                                 list.data(), static_cast<CK_ULONG>(list.size()));
}

CK_RV CryptokiSession::destroy(CK_OBJECT_HANDLE object) {
    return call<&Functions::C_DestroyObject>("C_DestroyObject", m_session, object);
}

CK_RV CryptokiSession::signInit(const Mechanism& mechanism, CK_OBJECT_HANDLE key) {
    CK_MECHANISM raw = mechanismOf(mechanism);
    return call<&Functions::C_SignInit>("C_SignInit", m_session, &raw, key);
}

CK_RV CryptokiSession::sign(std::string_view data, std::string& signature) {
    return takeSignature(signature, [&](CK_BYTE* bytes, CK_ULONG* length) {
        return call<&Functions::C_Sign>("C_Sign", m_session, bytesOf(data), lengthOf(data), bytes,
                                        length);
    });
}

CK_RV CryptokiSession::signUpdate(std::string_view part) {
    return call<&Functions::C_SignUpdate>("C_SignUpdate", m_session, bytesOf(part), lengthOf(part));
}

CK_RV CryptokiSession::signFinal(std::string& signature) {
    return takeSignature(signature, [&](CK_BYTE* bytes, CK_ULONG* length) {
        return call<&Functions::C_SignFinal>("C_SignFinal", m_session, bytes, length);
    });
}

CK_RV CryptokiSession::verifyInit(const Mechanism& mechanism, CK_OBJECT_HANDLE key) {
    CK_MECHANISM raw = mechanismOf(mechanism);
    return call<&Functions::C_VerifyInit>("C_VerifyInit", m_session, &raw, key);
}

CK_RV CryptokiSession::verify(std::string_view data, std::string_view signature) {
    return call<&Functions::C_Verify>("C_Verify", m_session, bytesOf(data), lengthOf(data),
                                      bytesOf(signature), lengthOf(signature));
}

CK_RV CryptokiSession::verifyUpdate(std::string_view part) {
    return call<&Functions::C_VerifyUpdate>("C_VerifyUpdate", m_session, bytesOf(part),
                                            lengthOf(part));
}

CK_RV CryptokiSession::verifyFinal(std::string_view signature) {
    return call<&Functions::C_VerifyFinal>("C_VerifyFinal", m_session, bytesOf(signature),
                                           lengthOf(signature));
}

}  // namespace zr::host
