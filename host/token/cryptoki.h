// Direct calls of a PKCS #11 module: the one place where the command does not go through the
// library. The library returns E_FAIL whatever happened and knows only some of the functions.
//
// The library calls the same module in the same process. So a module that the library has
// initialised is not initialised again (but see startApart), and sessions (cryptoki_session.h) are
// opened beside the library's. No length or count of a module is trusted.
//
// The constants are those of host/token/pkcs11_header.h, which files that name them include.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/system/shared_library.h"

// 32 bits on Windows, 64 on Linux.
using CK_ULONG = unsigned long;
using CK_RV = CK_ULONG;
using CK_FLAGS = CK_ULONG;
using CK_SLOT_ID = CK_ULONG;
using CK_MECHANISM_TYPE = CK_ULONG;

namespace zr::host {

struct ModuleFacts {
    std::string manufacturer;
    std::string description;
    std::string version;          ///< of the module: "2.6"
    std::string cryptokiVersion;  ///< "2.40"
};

struct SlotFacts {
    std::string description;
    std::string manufacturer;
    CK_FLAGS flags = 0;
};

/// What a token says about itself, as far as the command asks.
struct TokenFacts {
    std::string label;
    std::string serial;
    std::string manufacturer;
    std::string model;
    std::string firmwareVersion;  ///< "1.4"
    CK_FLAGS flags = 0;
    CK_ULONG shortestPin = 0;
    CK_ULONG longestPin = 0;  ///< 0 or CK_UNAVAILABLE_INFORMATION: the token does not say
};

/// Whether a token is not initialised: modules fill the serial number of an empty slot with zeros.
bool isBlankToken(std::string_view label, std::string_view serial);

struct MechanismFacts {
    CK_ULONG smallestKey = 0;
    CK_ULONG largestKey = 0;
    CK_FLAGS flags = 0;
};

class Cryptoki {
public:
    /// Loads the module and gets its functions, without initialising it.
    /// @param path  absolute, in UTF-8.
    explicit Cryptoki(const std::string& path);
    /// Finalises what startApart initialised.
    ~Cryptoki();
    Cryptoki(const Cryptoki&) = delete;
    Cryptoki& operator=(const Cryptoki&) = delete;

    const SharedLibrary& library() const { return m_library; }
    /// Why a loaded module has no functions; empty when it has them.
    const std::string& problem() const { return m_problem; }
    /// The module's CK_FUNCTION_LIST; null when it has none.
    const void* functions() const { return m_functions; }

    CK_RV initialise() const;
    CK_RV finalise() const;

    /// Initialises a module that the library has loaded, if it is not initialised for these functions.
    /// Most modules have one list of functions. p11-kit's client and proxy return a new list at each
    /// C_GetFunctionList, and the functions of each list work as if for another program.
    void startApart();
    /// Whether startApart had to do so: the library's login is not valid for these functions.
    bool isApart() const { return m_isApart; }

    CK_RV readModule(ModuleFacts& facts) const;
    /// @param withToken  leaves empty readers out.
    CK_RV listSlots(bool withToken, std::vector<CK_SLOT_ID>& slots) const;
    /// The same; nullopt when the module cannot list them.
    std::optional<std::vector<CK_SLOT_ID>> slots(bool withToken) const;
    CK_RV readSlot(CK_SLOT_ID slot, SlotFacts& facts) const;
    CK_RV readToken(CK_SLOT_ID slot, TokenFacts& facts) const;
    CK_RV listMechanisms(CK_SLOT_ID slot, std::vector<CK_MECHANISM_TYPE>& mechanisms) const;
    CK_RV readMechanism(CK_SLOT_ID slot, CK_MECHANISM_TYPE mechanism, MechanismFacts& facts) const;
    /// Takes the next event of a slot without waiting.
    /// @return CKR_NO_EVENT when there is none, CKR_FUNCTION_NOT_SUPPORTED when the module has none.
    CK_RV takeSlotEvent(CK_SLOT_ID& slot) const;

private:
    SharedLibrary m_library;
    const void* m_functions = nullptr;
    std::string m_problem;
    bool m_isApart = false;
};

}  // namespace zr::host
