// The state behind the recording Cryptoki module: a token in memory.
#include "tests/support/recording/recording_state.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

template <std::size_t Size>
void fill(CK_BYTE (&field)[Size], const char* text) {
    std::memset(field, ' ', Size);
    std::memcpy(field, text, std::strlen(text));
}

std::string bytesOf(const CK_ATTRIBUTE& attribute) {
    return {static_cast<const char*>(attribute.pValue), attribute.ulValueLen};
}

}  // namespace

void RecordingState::reset() {
    m_settings = {};
    m_settings.slotCount = m_settings.slotCountWhenListed = 1;
    m_settings.isSearchExclusive = true;
    m_settings.foundCount = 1;
    m_settings.signatureLength = 256;
    m_settings.mechanisms[0] = CKM_SHA1_RSA_PKCS;
    m_settings.mechanismCount = 1;
    m_settings.mechanismFlags = 0x2800;  // CKF_SIGN, CKF_VERIFY
    m_settings.userPin = "1234";
    m_settings.securityOfficerPin = "87654321";
    CK_TOKEN_INFO& info = m_settings.tokenInfo;
    fill(info.label, "Recording Token");
    fill(info.manufacturerID, "Test Maker");
    fill(info.model, "Model 1");
    fill(info.serialNumber, "0123456789");
    info.ulTotalPublicMemory = 65536;
    info.ulFreePublicMemory = 4096;
    m_failures.clear();
    m_callback = {};
    m_removed = std::vector<std::size_t>();
    m_counts.clear();
    m_objects.clear();
    m_lastObject = 0;
    m_calls.clear();
    m_fault = {};
    m_sessions.clear();
    m_loggedIn = -1;
    m_userPin.clear();
    m_securityOfficerPin.clear();
}

void RecordingState::fail(const char* function, unsigned int nth, CK_RV result) {
    m_failures.push_back({function ? function : "", nth, result, false});
    m_counts.clear();
}

void RecordingState::removeEntry(std::size_t index) {
    m_removed.push_back(index);
}

CK_OBJECT_HANDLE RecordingState::addObject() {
    m_objects[++m_lastObject];
    return m_lastObject;
}

void RecordingState::setAttribute(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                                  const void* value, std::size_t length) {
    m_objects[object][type] = std::string(static_cast<const char*>(value), length);
}

const void* RecordingState::attribute(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                                      std::size_t* length) const {
    const auto found = m_objects.find(object);
    if (found == m_objects.end() || !found->second.count(type)) {
        return nullptr;
    }
    const std::string& value = found->second.at(type);
    *length = value.size();
    return value.data();
}

void RecordingState::runCallback(const std::string& function) {
    if (m_callback.callback && m_callback.function == function) {
        const Callback now = std::exchange(m_callback, {});
        now.callback(now.argument);
    }
}

CK_RV RecordingState::record(const std::string& function, const std::string& arguments) {
    m_calls.emplace_back(function + "(" + arguments + ")");
    runCallback(function);
    const unsigned int nth = ++m_counts[function];
    const unsigned int overall = ++m_counts[""];
    for (Failure& failure : m_failures) {
        const unsigned int number = failure.function.empty() ? overall : nth;
        if (!failure.isOver && (failure.function.empty() || failure.function == function) &&
            (failure.nth == 0 || failure.nth == number)) {
            failure.isOver = failure.nth != 0;
            return failure.result;
        }
    }
    const CK_RV result = m_fault.beginCall(overall);
    if (m_fault.clearsList()) {
        m_list = {};
    }
    return result;
}

CK_RV RecordingState::openSession(CK_SESSION_HANDLE* session, void* application) {
    if (m_settings.setsApplication) {
        *static_cast<void**>(application) = this;
    }
    *session = 1;
    while (m_sessions.count(*session)) {
        ++*session;
    }
    m_sessions[*session] = {};
    return CKR_OK;
}

CK_RV RecordingState::closeSession(CK_SESSION_HANDLE session) {
    if (!m_sessions.erase(session)) {
        return CKR_SESSION_HANDLE_INVALID;
    }
    if (m_sessions.empty()) {
        m_loggedIn = -1;
    }
    return CKR_OK;
}

CK_RV RecordingState::closeAll() {
    m_sessions.clear();
    m_loggedIn = -1;
    return CKR_OK;
}

CK_RV RecordingState::login(CK_USER_TYPE user, const std::string& pin) {
    constexpr CK_USER_TYPE kContextSpecific = 2;
    if (user == kContextSpecific) {
        return m_loggedIn < 0     ? CKR_USER_NOT_LOGGED_IN
               : pin == m_userPin ? CKR_OK
                                  : CKR_PIN_INCORRECT;
    }
    if (m_loggedIn >= 0) {
        return CKR_USER_ALREADY_LOGGED_IN;
    }
    if (m_userPin.empty()) {
        m_userPin = m_settings.userPin;
        m_securityOfficerPin = m_settings.securityOfficerPin;
    }
    if (pin != (user == CKU_USER ? m_userPin : m_securityOfficerPin)) {
        return CKR_PIN_INCORRECT;
    }
    m_loggedIn = static_cast<int>(user);
    return CKR_OK;
}

CK_RV RecordingState::logout() {
    if (m_loggedIn < 0) {
        return CKR_USER_NOT_LOGGED_IN;
    }
    m_loggedIn = -1;
    return CKR_OK;
}

CK_RV RecordingState::setPin(const std::string& oldPin, const std::string& newPin) {
    std::string& pin = m_loggedIn == static_cast<int>(CKU_SO) ? m_securityOfficerPin : m_userPin;
    if (pin != oldPin) {
        return CKR_PIN_INCORRECT;
    }
    pin = newPin;
    return CKR_OK;
}

CK_RV RecordingState::initPin(const std::string& pin) {
    if (m_loggedIn != static_cast<int>(CKU_SO)) {
        return CKR_USER_NOT_LOGGED_IN;
    }
    m_userPin = pin;
    return CKR_OK;
}

bool RecordingState::isSearchOpen() const {
    return std::any_of(m_sessions.begin(), m_sessions.end(),
                       [](const auto& entry) { return entry.second.isSearchOpen; });
}

RecordingState::Session* RecordingState::searching(CK_SESSION_HANDLE session) {
    const auto found = m_sessions.find(session);
    return found != m_sessions.end() && found->second.isSearchOpen ? &found->second : nullptr;
}

CK_RV RecordingState::findInit(CK_SESSION_HANDLE session, const CK_ATTRIBUTE* attributes,
                               CK_ULONG count) {
    if (!m_sessions.count(session)) {
        return CKR_SESSION_HANDLE_INVALID;
    }
    if (searching(session) && m_settings.isSearchExclusive) {
        return CKR_OPERATION_ACTIVE;
    }
    if (m_settings.vanishingSearch > 0 && --m_settings.vanishingSearch == 0) {
        m_objects.erase(m_settings.vanishingObject);
    }
    Session& search = m_sessions[session];
    search.isSearchOpen = true;
    search.found.clear();
    for (const auto& entry : m_objects) {
        const Attributes& object = entry.second;
        const bool isMatch = std::all_of(attributes, attributes + count, [&](const auto& wanted) {
            const auto found = object.find(wanted.type);
            return found != object.end() && found->second == bytesOf(wanted);
        });
        if (isMatch) {
            search.found.push_back(entry.first);
        }
    }
    return CKR_OK;
}

CK_RV RecordingState::find(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE* object, CK_ULONG* count) {
    Session* search = searching(session);
    if (!search) {
        return CKR_OPERATION_NOT_INITIALIZED;
    }
    *count = search->found.empty() ? 0 : m_settings.foundCount;
    if (!search->found.empty()) {
        *object = search->found.front();
        search->found.erase(search->found.begin());
    }
    return CKR_OK;
}

CK_RV RecordingState::findFinal(CK_SESSION_HANDLE session) {
    Session* search = searching(session);
    if (!search) {
        return CKR_OPERATION_NOT_INITIALIZED;
    }
    search->isSearchOpen = false;
    return CKR_OK;
}

CK_RV RecordingState::create(const CK_ATTRIBUTE* attributes, CK_ULONG count,
                             CK_OBJECT_HANDLE* object) {
    *object = addObject();
    return write(*object, attributes, count);
}

CK_RV RecordingState::copy(CK_OBJECT_HANDLE object, const CK_ATTRIBUTE* changes, CK_ULONG count,
                           CK_OBJECT_HANDLE* made) {
    const auto found = m_objects.find(object);
    if (found == m_objects.end()) {
        return CKR_OBJECT_HANDLE_INVALID;
    }
    const Attributes copied = found->second;
    *made = addObject();
    m_objects[*made] = copied;
    return write(*made, changes, count);
}

CK_RV RecordingState::destroy(CK_OBJECT_HANDLE object) {
    return m_objects.erase(object) ? CKR_OK : CKR_OBJECT_HANDLE_INVALID;
}

CK_ULONG RecordingState::reportedLength(const CK_ATTRIBUTE& attribute, std::size_t length) const {
    const int now = attribute.pValue ? Settings::kOnRead : Settings::kOnQuery;
    const bool isLie = attribute.type == m_settings.lyingType &&
                       (m_settings.lie == now || m_settings.lie == Settings::kAlways);
    return isLie ? m_settings.lyingLength : static_cast<CK_ULONG>(length);
}

CK_RV RecordingState::read(CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes, CK_ULONG count) {
    const auto found = m_objects.find(object);
    if (found == m_objects.end()) {
        return CKR_OBJECT_HANDLE_INVALID;
    }
    CK_RV result = CKR_OK;
    std::vector<CK_ULONG> rooms;
    for (CK_ULONG i = 0; i < count; ++i) {
        CK_ATTRIBUTE& attribute = attributes[i];
        rooms.push_back(attribute.ulValueLen);
        const auto value = found->second.find(attribute.type);
        if (value == found->second.end()) {
            attribute.ulValueLen = CK_UNAVAILABLE_INFORMATION;
            result = CKR_ATTRIBUTE_TYPE_INVALID;
            continue;
        }
        const std::size_t length = value->second.size();
        if (attribute.pValue) {
            // A falsified length may exceed the buffer: fill the buffer only.
            std::memcpy(attribute.pValue, value->second.data(),
                        std::min<std::size_t>(length, attribute.ulValueLen));
        }
        attribute.ulValueLen = reportedLength(attribute, length);
    }
    m_fault.lieAboutValues(attributes, rooms.data(), count);
    for (CK_ULONG i = 0; i < count; ++i) {
        lastCall().addValue(attributes[i].ulValueLen, attributes[i].pValue, rooms[i]);
    }
    return result;
}

CK_RV RecordingState::write(CK_OBJECT_HANDLE object, const CK_ATTRIBUTE* attributes,
                            CK_ULONG count) {
    if (!m_objects.count(object)) {
        return CKR_OBJECT_HANDLE_INVALID;
    }
    for (CK_ULONG i = 0; i < count; ++i) {
        m_objects[object][attributes[i].type] = bytesOf(attributes[i]);
    }
    return CKR_OK;
}

CK_FUNCTION_LIST* RecordingState::makeList() {
    m_list = {};
    m_list.version = {2, 40};
    fillFunctionList(&m_list.functions);
    for (const std::size_t index : m_removed) {
        std::memset(reinterpret_cast<char*>(&m_list.functions) + index * sizeof(void*), 0,
                    sizeof(void*));
    }
    return &m_list;
}
