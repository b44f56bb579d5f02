// A stateful Cryptoki module, as tests use it: its file, and the record of its calls.
#include "tests/support/stateful/stateful.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "platform/kernel.h"

namespace zr::test {
namespace {

// No test loads a module so often without unloading it.
constexpr std::size_t kMostReferences = 100000;

// On Windows the name has no drive: the file is on the drive of the start directory.
const std::filesystem::path s_start = std::filesystem::current_path();

std::string readModule() {
    std::ifstream file(s_start.root_name() / ZR_STATEFUL_MODULE, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Copies the module's file and writes the address of its tokens into the copy.
void writeModule(const std::string& path, const StatefulTokens* tokens) {
    std::string bytes = readModule();
    const std::string mark = kTokensMark + std::string(kTokensDigits, '0');
    const std::size_t found = bytes.find(mark);
    if (found == bytes.npos) {
        throw std::runtime_error("the stateful module cannot be read");
    }
    char digits[kTokensDigits + 1];
    std::snprintf(digits, sizeof digits, "%016llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(tokens)));
    bytes.replace(found, mark.size(), kTokensMark + std::string(digits));
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace

Stateful::Stateful(char letter, CK_ULONG tokens)
    : m_letter(1, letter),
      m_tokenCount(tokens),
      m_path(m_letter + ".dll"),
      m_file(std::filesystem::absolute(m_path).string()) {
    writeModule(m_path, this);
    reset();
}

Stateful::~Stateful() {
    unload();
    std::error_code ignored;
    std::filesystem::remove(m_file, ignored);
}

void Stateful::reset() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_tokens.clear();
    for (CK_ULONG i = 0; i < m_tokenCount; ++i) {
        m_tokens.push_back(makeToken(i));
    }
    m_isRestricted = false;
    m_lastSession = 0;
    m_calls.clear();
    m_misuses.clear();
}

bool Stateful::isLoaded() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isLoaded;
}

void Stateful::setLoaded(bool isLoaded) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isLoaded = isLoaded;
    m_isInitialized = false;
}

bool Stateful::isInitialized() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isInitialized;
}

void Stateful::setInitialized(bool isInitialized) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isInitialized = isInitialized;
}

std::size_t Stateful::unload() {
    if (!isLoaded()) {
        return 0;
    }
    const HMODULE module = LoadLibraryA(m_file.c_str());
    FreeLibrary(module);
    std::size_t freed = 0;
    for (; isLoaded() && freed < kMostReferences; ++freed) {
        FreeLibrary(module);
    }
    return freed;
}

void Stateful::allowOnly(CK_SESSION_HANDLE session, CK_SLOT_ID slot) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isRestricted = true;
    m_allowedSession = session;
    m_allowedSlot = slot;
}

void Stateful::allowAll() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isRestricted = false;
}

void Stateful::beginCall(const StatefulCall& call) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_calls[call.function];
        ++m_calls[""];
        const bool isOther = call.session != 0 ? call.session != m_allowedSession
                                               : std::string(call.function) == "C_GetTokenInfo" &&
                                                     call.slot != m_allowedSlot;
        if (m_isRestricted && isOther) {
            note(call, "the caller may not use it now");
        }
    }
    if (onCall) {
        onCall(call, false);
    }
}

void Stateful::endCall(const StatefulCall& call) {
    if (call.slot != 0 && call.session != 0) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lastSession = call.session;
    }
    if (onCall) {
        onCall(call, true);
    }
}

/// For a call that has not begun: the module refuses it.
void Stateful::reportMisuse(const StatefulCall& call, const char* reason) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_calls[call.function];
    ++m_calls[""];
    note(call, reason);
}

void Stateful::note(const StatefulCall& call, const char* reason) {
    m_misuses.push_back(std::string(call.function) + "(" +
                        std::to_string(call.session != 0 ? call.session : call.slot) +
                        "): " + reason);
}

std::vector<std::string> Stateful::takeMisuses() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> misuses;
    misuses.swap(m_misuses);
    return misuses;
}

std::size_t Stateful::callCount(const std::string& function) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_calls.find(function);
    return found == m_calls.end() ? 0 : found->second;
}

CK_SESSION_HANDLE Stateful::lastSession() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastSession;
}

}  // namespace zr::test
