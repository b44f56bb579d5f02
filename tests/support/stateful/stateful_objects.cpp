// A stateful Cryptoki module, as tests use it: its tokens and their objects.
#include <algorithm>
#include <cstring>

#include "tests/support/stateful/signature.h"
#include "tests/support/stateful/stateful.h"

namespace zr::test {
namespace {

std::string bytesOf(const CK_ATTRIBUTE& attribute) {
    return attribute.pValue
               ? std::string(static_cast<const char*>(attribute.pValue), attribute.ulValueLen)
               : std::string();
}

template <class Number>
std::string bytesOf(Number number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

template <std::size_t Size>
void fill(CK_BYTE (&field)[Size], const std::string& text) {
    std::memset(field, ' ', Size);
    std::memcpy(field, text.data(), std::min(text.size(), Size));
}

const char* nameOf(const std::string& objectClass) {
    static constexpr const char* names[] = {"data", "certificate", "public key", "private key"};
    CK_OBJECT_CLASS number = 0;
    std::memcpy(&number, objectClass.data(), std::min(objectClass.size(), sizeof number));
    return number < std::size(names) ? names[number] : "object";
}

}  // namespace

Stateful::Token Stateful::makeToken(CK_ULONG token) const {
    Token made;
    made.userPin = pin(token);
    made.securityOfficerPin = "so-" + name(token);
    const auto add = [&made](CK_OBJECT_CLASS objectClass) -> Object& {
        Object& object = made.objects[made.objects.size() + 1];
        object[CKA_CLASS] = bytesOf(objectClass);
        object[CKA_TOKEN] = bytesOf(CK_TRUE);
        return object;
    };
    Object& data = add(CKO_DATA);
    data[CKA_LABEL] = "6";
    data[CKA_VALUE] = file(token);
    Object& certificateObject = add(CKO_CERTIFICATE);
    certificateObject[CKA_CERTIFICATE_TYPE] = bytesOf(CKC_X_509);
    certificateObject[CKA_ID] = "id";
    certificateObject[CKA_VALUE] = certificate(token);
    for (const CK_OBJECT_CLASS objectClass : {CKO_PUBLIC_KEY, CKO_PRIVATE_KEY}) {
        Object& key = add(objectClass);
        key[CKA_KEY_TYPE] = bytesOf(CKK_RSA);
        key[CKA_ID] = "id";
    }
    return made;
}

std::string Stateful::signature(CK_ULONG token, const std::string& data) const {
    CK_TOKEN_INFO info;
    describe(token, &info);
    const std::string serial(reinterpret_cast<const char*>(info.serialNumber),
                             sizeof info.serialNumber);
    return signatureOf(serial, "id", data);
}

std::vector<std::string> Stateful::contents(CK_ULONG token) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> lines;
    for (const auto& entry : m_tokens[token].objects) {
        Object object = entry.second;
        lines.push_back(nameOf(object[CKA_CLASS]) +
                        (" " + object[CKA_LABEL] + object[CKA_ID] + "=" + object[CKA_VALUE]));
    }
    return lines;
}

void Stateful::setFile(Token* token, const std::string& value) {
    for (auto& entry : token->objects) {
        const auto label = entry.second.find(CKA_LABEL);
        if (label != entry.second.end() && label->second == "6") {
            entry.second[CKA_VALUE] = value;
        }
    }
}

void Stateful::overwriteFiles() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Token& token : m_tokens) {
        setFile(&token, kOverwritten);
    }
}

void Stateful::restoreFiles() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (CK_ULONG i = 0; i < m_tokenCount; ++i) {
        setFile(&m_tokens[i], file(i));
    }
}

void Stateful::removeFile(CK_ULONG token, const std::string& label) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::erase_if(m_tokens[token].objects, [&](const auto& entry) {
        const auto found = entry.second.find(CKA_LABEL);
        return found != entry.second.end() && found->second == label;
    });
}

void Stateful::setSearchExclusive(bool isExclusive) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isSearchExclusive = isExclusive;
}

bool Stateful::isSearchExclusive() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isSearchExclusive;
}

void Stateful::describe(CK_ULONG token, CK_TOKEN_INFO* info) const {
    *info = {};
    fill(info->label, label(token));
    fill(info->manufacturerID, "Test Maker");
    fill(info->model, "Stateful");
    fill(info->serialNumber, name(token));
    info->ulTotalPublicMemory = 65536;
    info->ulFreePublicMemory = 4096;
}

bool Stateful::isPin(CK_ULONG token, CK_USER_TYPE user, const CK_UTF8CHAR* pin,
                     CK_ULONG length) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Token& asked = m_tokens[token];
    return std::string(reinterpret_cast<const char*>(pin), length) ==
           (user == CKU_USER ? asked.userPin : asked.securityOfficerPin);
}

std::string Stateful::currentPin(CK_ULONG token) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_tokens[token].userPin;
}

void Stateful::setPin(CK_ULONG token, CK_USER_TYPE user, const CK_UTF8CHAR* pin, CK_ULONG length) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Token& changed = m_tokens[token];
    (user == CKU_USER ? changed.userPin : changed.securityOfficerPin) =
        std::string(reinterpret_cast<const char*>(pin), length);
}

CK_OBJECT_HANDLE Stateful::create(CK_ULONG token, const CK_ATTRIBUTE* attributes, CK_ULONG count) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto& objects = m_tokens[token].objects;
    // The tokens number their objects alike, so that a number from another token is a wrong object.
    const CK_OBJECT_HANDLE object = objects.empty() ? 1 : objects.rbegin()->first + 1;
    for (CK_ULONG i = 0; i < count; ++i) {
        objects[object][attributes[i].type] = bytesOf(attributes[i]);
    }
    return object;
}

bool Stateful::destroy(CK_ULONG token, CK_OBJECT_HANDLE object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_tokens[token].objects.erase(object) > 0;
}

CK_RV Stateful::read(CK_ULONG token, CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes,
                     CK_ULONG count) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_tokens[token].objects.find(object);
    if (found == m_tokens[token].objects.end()) {
        return CKR_OBJECT_HANDLE_INVALID;
    }
    CK_RV result = CKR_OK;
    for (CK_ULONG i = 0; i < count; ++i) {
        CK_ATTRIBUTE& attribute = attributes[i];
        const auto value = found->second.find(attribute.type);
        const bool isThere = value != found->second.end();
        if (!isThere || (attribute.pValue && attribute.ulValueLen < value->second.size())) {
            result = isThere ? CKR_BUFFER_TOO_SMALL : CKR_ATTRIBUTE_TYPE_INVALID;
            attribute.ulValueLen = CK_UNAVAILABLE_INFORMATION;
            continue;
        }
        if (attribute.pValue) {
            std::memcpy(attribute.pValue, value->second.data(), value->second.size());
        }
        attribute.ulValueLen = static_cast<CK_ULONG>(value->second.size());
    }
    return result;
}

bool Stateful::write(CK_ULONG token, CK_OBJECT_HANDLE object, const CK_ATTRIBUTE* attributes,
                     CK_ULONG count) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_tokens[token].objects.find(object);
    if (found == m_tokens[token].objects.end()) {
        return false;
    }
    for (CK_ULONG i = 0; i < count; ++i) {
        found->second[attributes[i].type] = bytesOf(attributes[i]);
    }
    return true;
}

CK_OBJECT_HANDLE Stateful::findAfter(CK_ULONG token, CK_OBJECT_HANDLE handle,
                                     const CK_ATTRIBUTE* attributes, CK_ULONG count) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto& objects = m_tokens[token].objects;
    for (auto entry = objects.upper_bound(handle); entry != objects.end(); ++entry) {
        const bool isMatch = std::all_of(attributes, attributes + count, [&](const auto& wanted) {
            const auto found = entry->second.find(wanted.type);
            return found != entry->second.end() && found->second == bytesOf(wanted);
        });
        if (isMatch) {
            return entry->first;
        }
    }
    return 0;
}

}  // namespace zr::test
