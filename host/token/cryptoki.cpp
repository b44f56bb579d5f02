// Direct calls of a PKCS #11 module: the module, its slots and tokens.
#include "host/token/cryptoki.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "host/token/cryptoki_call.h"
#include "host/token/cryptoki_names.h"

namespace zr::host {
namespace {

using Functions = CK_FUNCTION_LIST;

/// More slots than any reader has, and more mechanisms than there are: a faulty module may report
/// billions.
constexpr CK_ULONG kLongestList = 1UL << 16;

/// A text field without the blanks and zeros at its end, as the library reads it.
template <std::size_t size>
std::string textOf(const unsigned char (&field)[size]) {
    std::size_t length = size;
    while (length > 0 && (field[length - 1] == 0 || field[length - 1] == ' ')) {
        --length;
    }
    // The library's text ends at the first zero.
    const std::string_view text(reinterpret_cast<const char*>(field), length);
    return std::string(text.substr(0, text.find('\0')));
}

std::string textOf(const CK_VERSION& version) {
    return std::to_string(version.major).append(".").append(std::to_string(version.minor));
}

/// Reads a list: first its length, then its items.
/// @param get  called with the items, null at first, and their count.
template <class Get>
CK_RV readList(std::vector<CK_ULONG>& items, Get get) {
    items.clear();
    CK_ULONG count = 0;
    CK_RV result = get(nullptr, &count);
    if (result != CKR_OK || count == 0) {
        return result;
    }
    if (count > kLongestList) {
        return kImpossibleAnswer;
    }
    // p11-kit's client reads one item behind the list.
    const CK_ULONG room = count;
    std::vector<CK_ULONG> list(room + 1);
    result = get(list.data(), &count);
    if (result == CKR_OK) {
        list.resize(std::min(room, count));
        items = std::move(list);
    }
    return result;
}

}  // namespace

bool isBlankToken(std::string_view label, std::string_view serial) {
    return label.empty() && serial.find_first_not_of('0') == std::string_view::npos;
}

Cryptoki::Cryptoki(const std::string& path) : m_library(path) {
    using GetFunctionList = CK_RV (*)(const Functions** list);
    const auto getList = reinterpret_cast<GetFunctionList>(m_library.find("C_GetFunctionList"));
    if (!getList) {
        m_problem = "it has no function C_GetFunctionList";
        return;
    }
    const Functions* list = nullptr;
    const CK_RV result = getList(&list);
    if (result != CKR_OK) {
        m_problem = "its C_GetFunctionList returned " + resultText(result);
    } else if (!list) {
        m_problem = "its C_GetFunctionList returned no functions";
    } else {
        m_functions = list;
    }
}

Cryptoki::~Cryptoki() {
    if (m_isApart) {
        finalise();
    }
}

void Cryptoki::startApart() {
    CK_INFO ignored = {};
    m_isApart =
        callModule<&Functions::C_GetInfo>(*this, &ignored) == CKR_CRYPTOKI_NOT_INITIALIZED &&
        initialise() == CKR_OK;
}

CK_RV Cryptoki::initialise() const {
    return callModule<&Functions::C_Initialize>(*this, nullptr);
}

CK_RV Cryptoki::finalise() const {
    return callModule<&Functions::C_Finalize>(*this, nullptr);
}

CK_RV Cryptoki::readModule(ModuleFacts& facts) const {
    CK_INFO raw = {};
    const CK_RV result = callModule<&Functions::C_GetInfo>(*this, &raw);
    if (result == CKR_OK) {
        facts = {textOf(raw.manufacturerID), textOf(raw.libraryDescription),
                 textOf(raw.libraryVersion), textOf(raw.cryptokiVersion)};
    }
    return result;
}

CK_RV Cryptoki::listSlots(bool withToken, std::vector<CK_SLOT_ID>& slots) const {
    const auto present = static_cast<CK_BBOOL>(withToken ? CK_TRUE : CK_FALSE);
    return readList(slots, [&](CK_SLOT_ID* list, CK_ULONG* count) {
        return callModule<&Functions::C_GetSlotList>(*this, present, list, count);
    });
}

std::optional<std::vector<CK_SLOT_ID>> Cryptoki::slots(bool withToken) const {
    std::vector<CK_SLOT_ID> slots;
    if (listSlots(withToken, slots) != CKR_OK) {
        return std::nullopt;
    }
    return slots;
}

CK_RV Cryptoki::readSlot(CK_SLOT_ID slot, SlotFacts& facts) const {
    CK_SLOT_INFO raw = {};
    const CK_RV result = callModule<&Functions::C_GetSlotInfo>(*this, slot, &raw);
    if (result == CKR_OK) {
        facts = {textOf(raw.slotDescription), textOf(raw.manufacturerID), raw.flags};
    }
    return result;
}

CK_RV Cryptoki::readToken(CK_SLOT_ID slot, TokenFacts& facts) const {
    // Room behind the structure: a module for another version of it may write more.
    struct {
        CK_TOKEN_INFO info;
        unsigned char rest[128];
    } raw = {};
    const CK_RV result = callModule<&Functions::C_GetTokenInfo>(*this, slot, &raw.info);
    if (result == CKR_OK) {
        const CK_TOKEN_INFO& info = raw.info;
        facts = {textOf(info.label),
                 textOf(info.serialNumber),
                 textOf(info.manufacturerID),
                 textOf(info.model),
                 textOf(info.firmwareVersion),
                 info.flags,
                 info.ulMinPinLen,
                 info.ulMaxPinLen};
    }
    return result;
}

CK_RV Cryptoki::listMechanisms(CK_SLOT_ID slot, std::vector<CK_MECHANISM_TYPE>& mechanisms) const {
    return readList(mechanisms, [&](CK_MECHANISM_TYPE* list, CK_ULONG* count) {
        return callModule<&Functions::C_GetMechanismList>(*this, slot, list, count);
    });
}

CK_RV Cryptoki::readMechanism(CK_SLOT_ID slot, CK_MECHANISM_TYPE mechanism,
                              MechanismFacts& facts) const {
    CK_MECHANISM_INFO raw = {};
    const CK_RV result = callModule<&Functions::C_GetMechanismInfo>(*this, slot, mechanism, &raw);
    if (result == CKR_OK) {
        facts = {raw.ulMinKeySize, raw.ulMaxKeySize, raw.flags};
    }
    return result;
}

CK_RV Cryptoki::takeSlotEvent(CK_SLOT_ID& slot) const {
    return callModule<&Functions::C_WaitForSlotEvent>(*this, CK_FLAGS{CKF_DONT_BLOCK}, &slot,
                                                      nullptr);
}

}  // namespace zr::host
