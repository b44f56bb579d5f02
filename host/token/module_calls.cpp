// Direct calls of a PKCS #11 module.
#include "host/token/module_calls.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace zr::host {
namespace {

/// More slots than any reader has: a faulty module may report billions.
constexpr ModuleNumber kMostSlots = 1UL << 16;

// Positions in the list of functions.
constexpr std::size_t kInitialise = 0;
constexpr std::size_t kFinalise = 1;
constexpr std::size_t kGetSlotList = 4;
constexpr std::size_t kGetTokenInfo = 6;

/// Where the functions begin in their list, behind a version of two bytes: the structures are
/// packed on Windows and aligned on Linux.
constexpr std::size_t kFirstFunction = sizeof(ModuleNumber) == 4 ? 2 : 8;

/// CK_TOKEN_INFO up to the lengths of PINs, and room for the rest.
struct RawToken {
    char label[32];
    char manufacturer[32];
    char model[16];
    char serial[16];
    ModuleNumber flags;
    ModuleNumber sessions[4];
    ModuleNumber longestPin;
    ModuleNumber shortestPin;
    unsigned char rest[256];
};
static_assert(offsetof(RawToken, flags) == 96, "the same on both targets, packed or not");

/// A text field without the blanks and zeros at its end, as the library reads it.
template <std::size_t size>
std::string textOf(const char (&field)[size]) {
    std::size_t length = size;
    while (length > 0 && (field[length - 1] == 0 || field[length - 1] == ' ')) {
        --length;
    }
    // The library's text ends at the first zero.
    const std::string_view text(field, length);
    return std::string(text.substr(0, text.find('\0')));
}

const char* nameOf(ModuleNumber result) {
    constexpr std::pair<ModuleNumber, const char*> kNames[] = {
        {0x0, "CKR_OK"},
        {0x1, "CKR_CANCEL"},
        {0x2, "CKR_HOST_MEMORY"},
        {0x3, "CKR_SLOT_ID_INVALID"},
        {0x5, "CKR_GENERAL_ERROR"},
        {0x6, "CKR_FUNCTION_FAILED"},
        {0x7, "CKR_ARGUMENTS_BAD"},
        {0x8, "CKR_NO_EVENT"},
        {0x9, "CKR_NEED_TO_CREATE_THREADS"},
        {0xA, "CKR_CANT_LOCK"},
        {0x30, "CKR_DEVICE_ERROR"},
        {0x31, "CKR_DEVICE_MEMORY"},
        {0x32, "CKR_DEVICE_REMOVED"},
        {0x50, "CKR_FUNCTION_CANCELED"},
        {0x54, "CKR_FUNCTION_NOT_SUPPORTED"},
        {0xE0, "CKR_TOKEN_NOT_PRESENT"},
        {0xE1, "CKR_TOKEN_NOT_RECOGNIZED"},
        {0x190, "CKR_CRYPTOKI_NOT_INITIALIZED"},
        {0x191, "CKR_CRYPTOKI_ALREADY_INITIALIZED"},
        {0x1A0, "CKR_MUTEX_BAD"},
        {0x1A1, "CKR_MUTEX_NOT_LOCKED"},
    };
    for (const auto& [number, name] : kNames) {
        if (number == result) {
            return name;
        }
    }
    return result >= 0x80000000UL ? "an error of its maker's" : "an unexpected error";
}

}  // namespace

std::string resultText(ModuleNumber result) {
    char hex[32];
    std::snprintf(hex, sizeof hex, " (0x%08lX)", result);
    return std::string(nameOf(result)).append(hex);
}

ModuleCalls::ModuleCalls(const std::string& path) : m_library(path) {
    using GetFunctionList = ModuleNumber (*)(const unsigned char** list);
    const auto getList = reinterpret_cast<GetFunctionList>(m_library.find("C_GetFunctionList"));
    if (!getList) {
        m_problem = "it has no function C_GetFunctionList";
        return;
    }
    const unsigned char* list = nullptr;
    const ModuleNumber result = getList(&list);
    if (result != kResultOk) {
        m_problem = "its C_GetFunctionList returned " + resultText(result);
    } else if (!list) {
        m_problem = "its C_GetFunctionList returned no functions";
    } else {
        m_functions = list + kFirstFunction;
    }
}

template <class... Arguments>
ModuleNumber ModuleCalls::call(std::size_t index, Arguments... arguments) const {
    ModuleNumber (*function)(Arguments...) = nullptr;
    if (m_functions) {
        std::memcpy(&function, m_functions + index * sizeof function, sizeof function);
    }
    return function ? function(arguments...) : kResultNotSupported;
}

ModuleNumber ModuleCalls::initialise() const {
    return call<void*>(kInitialise, nullptr);
}

void ModuleCalls::finalise() const {
    call<void*>(kFinalise, nullptr);
}

std::optional<std::vector<ModuleNumber>> ModuleCalls::slots(bool withToken) const {
    const auto present = static_cast<unsigned char>(withToken ? 1 : 0);
    ModuleNumber count = 0;
    ModuleNumber* const none = nullptr;
    if (call(kGetSlotList, present, none, &count) != kResultOk || count > kMostSlots) {
        return std::nullopt;
    }
    std::vector<ModuleNumber> slots(count);
    if (count > 0 && call(kGetSlotList, present, slots.data(), &count) != kResultOk) {
        return std::nullopt;
    }
    slots.resize(std::min<std::size_t>(slots.size(), count));
    return slots;
}

ModuleNumber ModuleCalls::readToken(ModuleNumber slot, TokenFacts& facts) const {
    RawToken raw = {};
    const ModuleNumber result = call(kGetTokenInfo, slot, &raw);
    if (result == kResultOk) {
        facts = {textOf(raw.label), textOf(raw.serial), raw.flags, raw.shortestPin, raw.longestPin};
    }
    return result;
}

}  // namespace zr::host
