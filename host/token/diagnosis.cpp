// Looks at everything that a login needs, in order, without logging in.
#include "host/token/diagnosis.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/module_search.h"
#include "host/system/surroundings.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/token/configuration.h"
#include "host/token/cryptoki.h"
#include "host/token/cryptoki_names.h"
#include "host/token/load_cause.h"
#include "host/token/module_choice.h"
#include "host/token/module_loading.h"
#include "host/token/pkcs11_header.h"
#include "host/token/platform_of.h"
#include "host/token/prepared_load.h"
#include "host/token/token_state.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

using Status = Check::Status;

class Doctor {
public:
    explicit Doctor(ModuleOptions options) : m_options(std::move(options)) {}

    Diagnosis run() {
        checkLibraries();
        const bool isModuleGood = checkModule();
        const bool isConfigurationGood = checkConfiguration();
        if (isModuleGood && isConfigurationGood) {
            checkTokens();
        }
        const bool canLogin = m_diagnosis.exitCode == kExitOk;
        add("login", canLogin ? Status::kOk : Status::kFailed,
            canLogin ? "a login could work" : "a login cannot work",
            canLogin ? "" : "correct what failed above");
        return std::move(m_diagnosis);
    }

private:
    void add(const std::string& name, Status status, const std::string& found,
             const std::string& advice = {}) {
        m_diagnosis.checks.push_back({name, status, found, advice});
    }
    /// @return false.
    bool fail(const std::string& name, int exitCode, const Cause& cause) {
        add(name, Status::kFailed, cause.text, cause.advice);
        if (m_diagnosis.exitCode == kExitOk) {
            m_diagnosis.exitCode = exitCode;
        }
        return false;
    }

    void checkLibraries();
    bool checkModule();
    bool checkFile(const std::string& path);
    bool checkStart(const Cryptoki& calls);
    void checkReaderService();
    bool checkConfiguration();
    void checkTokens();
    void checkReaders(const Cryptoki& calls);
    /// @return the exit code of a login to the token.
    int checkToken(const std::string& name, CK_SLOT_ID slot, const Cryptoki& calls);

    ModuleOptions m_options;  ///< with the chosen module
    Diagnosis m_diagnosis;
};

void Doctor::checkLibraries() {
    const auto describe = [](const UsedLibrary& library) {
        return library.version.empty() ? library.file : library.version + ", " + library.file;
    };
    add("command", Status::kOk, ZRKEY_VERSION);
    add("library", Status::kOk, describe(zrkeyLibrary()));
    add("automation", Status::kOk, describe(automationLibrary()));
}

bool Doctor::checkModule() {
    std::string path;
    try {
        const ChosenModule chosen = chooseModule(m_options.path);
        add("module", Status::kOk, chosen.path + ", from " + chosen.origin);
        m_options.path = chosen.path;
        path = toUtf8(moduleFile(chosen.path));
    } catch (const Failure& failure) {
        return fail("module", failure.exitCode, {failure.cause, failure.advice});
    }
    if (!checkFile(path)) {
        return false;
    }
    searchBesideModule(path);
    const Cryptoki calls(path);
    if (!calls.library().isLoaded()) {
        const Cause cause = whyNotLoaded(toPath(path), calls);
        return fail("loader", kExitModule, cause);
    }
    add("loader", Status::kOk, "the system loads it");
    if (!calls.problem().empty()) {
        return fail("functions", kExitModule,
                    {calls.problem(), "name a PKCS #11 module with --module"});
    }
    add("functions", Status::kOk, "C_GetFunctionList returns them");
    checkReaderService();
    return checkStart(calls);
}

bool Doctor::checkFile(const std::string& path) {
    if (const std::optional<Cause> cause = findFileCause(toPath(path))) {
        return fail("file", kExitModule, *cause);
    }
    std::error_code ignored;
    add("file", Status::kOk,
        path + ", " + std::to_string(fs::file_size(toPath(path), ignored)) + " bytes");
    const std::string platform = platformOfFile(toPath(path));
    if (platform.empty() || platform == ownPlatform()) {
        add("platform", Status::kOk, platform.empty() ? "unknown" : platform);
    } else {
        add("platform", Status::kWarning, platform,
            "this command is for " + std::string(ownPlatform()));
    }
    return true;
}

bool Doctor::checkStart(const Cryptoki& calls) {
    const CK_RV result = calls.initialise();
    if (result != CKR_OK) {
        return fail("C_Initialize", kExitModule,
                    {"it returned " + resultText(result),
                     "check the module's own settings, and whether its service runs"});
    }
    add("C_Initialize", Status::kOk, "it returned " + resultText(result));
    ModuleFacts facts;
    const CK_RV information = calls.readModule(facts);
    if (information == CKR_OK) {
        add("version", Status::kOk,
            facts.manufacturer + ", " + facts.description + ", " + facts.version + ", Cryptoki " +
                facts.cryptokiVersion);
    } else {
        add("version", Status::kWarning, "C_GetInfo returned " + resultText(information),
            "the module does not say which one it is");
    }
    // The library starts it again.
    calls.finalise();
    return true;
}

void Doctor::checkReaderService() {
    const ReaderService service = readerService();
    if (!service.isNeeded) {
        return;
    }
    if (service.problem) {
        add("pcscd", Status::kWarning, service.socket + ": " + service.problem.message(),
            "start the service, for example with: systemctl start pcscd.socket");
    } else {
        add("pcscd", Status::kOk, service.socket + " answers");
    }
    std::string names;
    for (const std::string& device : service.devices) {
        names.append(names.empty() ? "" : ", ").append(device);
    }
    if (names.empty()) {
        add("USB readers", Status::kWarning, "none", "connect a reader");
    } else {
        add("USB readers", Status::kOk, names);
    }
}

bool Doctor::checkConfiguration() {
    try {
        const ConfigurationPlace place = chooseConfiguration(configurationPlaces(m_options));
        readConfiguration(place);
        add("configuration", Status::kOk, place.description());
        return true;
    } catch (const Failure& failure) {
        return fail("configuration", failure.exitCode, {failure.cause, failure.advice});
    }
}

void Doctor::checkTokens() {
    try {
        const LoadedModule module(m_options);
        add("Load", Status::kOk, "the library loads the module and the configuration");
        const Cryptoki& calls = module.calls();
        checkReaders(calls);
        std::vector<CK_SLOT_ID> slots;
        const CK_RV result = calls.listSlots(true, slots);
        if (result != CKR_OK) {
            fail("tokens", kExitNotFound, moduleCause("C_GetSlotList", result));
            return;
        }
        // One token is enough. Without a good one the first says why.
        std::optional<int> worst;
        bool hasGoodToken = false;
        for (std::size_t i = 0; i < slots.size(); ++i) {
            const int code = checkToken("token " + std::to_string(i), slots[i], calls);
            hasGoodToken = hasGoodToken || code == kExitOk;
            worst = worst.value_or(code);
        }
        if (!hasGoodToken && slots.empty()) {
            fail("tokens", kExitNotFound, whyNoToken(module.calls()));
        } else if (!hasGoodToken) {
            m_diagnosis.exitCode = *worst;
        }
    } catch (const Failure& failure) {
        fail("Load", failure.exitCode, {failure.cause, failure.advice});
    }
}

void Doctor::checkReaders(const Cryptoki& calls) {
    std::vector<CK_SLOT_ID> slots;
    if (calls.listSlots(false, slots) != CKR_OK || slots.empty()) {
        return;
    }
    std::string names;
    for (const CK_SLOT_ID slot : slots) {
        SlotFacts facts;
        const bool isRead = calls.readSlot(slot, facts) == CKR_OK;
        names.append(names.empty() ? "" : ", ")
            .append(isRead && !facts.description.empty() ? facts.description
                                                         : "slot " + std::to_string(slot));
    }
    add("readers", Status::kOk, std::to_string(slots.size()) + ": " + names);
}

int Doctor::checkToken(const std::string& name, CK_SLOT_ID slot, const Cryptoki& calls) {
    TokenFacts facts;
    const CK_RV result = calls.readToken(slot, facts);
    if (result != CKR_OK) {
        const Cause cause = moduleCause("C_GetTokenInfo", result);
        add(name, Status::kWarning, cause.text, cause.advice);
        return kExitNotFound;
    }
    if (isBlankToken(facts.label, facts.serial)) {
        add(name, Status::kWarning, "it is not initialised",
            "initialise it with the tool of its maker, if it is to be used");
        return kExitNotFound;
    }
    const std::string token = inQuotes(facts.label) + ", serial number " + facts.serial + ": ";
    switch (pinStateOf(facts.flags, false)) {
        case PinState::kLocked:
            add(name, Status::kWarning, token + "the user PIN is locked",
                "ask the issuer to unlock it");
            return kExitPinLocked;
        case PinState::kNotSet:
            add(name, Status::kWarning, token + "the user PIN is not initialised",
                "the issuer has to set it");
            return kExitLoginRefused;
        case PinState::kLastTry:
            add(name, Status::kWarning, token + "one try is left for the user PIN",
                "make sure of the PIN before it is used");
            return kExitOk;
        case PinState::kFewTries:
            add(name, Status::kWarning, token + "a wrong user PIN was tried",
                "make sure of the PIN before it is used");
            return kExitOk;
        default:
            add(name, Status::kOk, token + "its user PIN is not locked");
            return kExitOk;
    }
}

}  // namespace

const char* Check::statusName() const {
    switch (status) {
        case Status::kOk:
            return "ok";
        case Status::kWarning:
            return "warning";
        case Status::kFailed:
            break;
    }
    return "failed";
}

Diagnosis diagnose(const ModuleOptions& options) {
    return Doctor(options).run();
}

}  // namespace zr::host
