// The class TokenProvider of the object model.
#include "host/objects/provider_object.h"

#include <utility>

#include "host/objects/byte_texts.h"
#include "host/objects/collection_object.h"
#include "host/objects/token_object.h"
#include "host/system/shared_library.h"
#include "host/token/token_table.h"

namespace zr::host {
namespace {

Value load(ProviderObject& provider, const Arguments& arguments) {
    provider.loader()(provider, arguments, arguments.text(0));
    return true;
}

Value unload(ProviderObject& provider, const Arguments& arguments) {
    const auto library = provider.use(arguments);
    provider.endCalls();
    arguments.require(library->Unload());
    return true;
}

Value getKeyCount(ProviderObject& provider, const Arguments& arguments) {
    INT count = 0;
    arguments.require(provider.use(arguments)->GetKeyCount(&count));
    return static_cast<double>(count);
}

Value openKey(ProviderObject& provider, const Arguments& arguments) {
    const LONG index = arguments.integer(0);
    // Before the call, during which the host may load another module.
    auto calls = provider.calls();
    zrkey::ComRef<IKeyObject> token;
    arguments.require(provider.use(arguments)->OpenKey(index, token.receive()));
    if (!token) {
        return Null();
    }
    return std::make_shared<TokenObject>(std::move(token), index, std::move(calls));
}

Value getName(ProviderObject& provider, const Arguments& arguments) {
    return readText(provider, arguments, &ITokenProvider::GetName);
}

Value tokens(ProviderObject& provider, const Arguments& arguments) {
    const auto library = provider.use(arguments);
    const auto calls = provider.calls();
    INT count = 0;
    arguments.require(library->GetKeyCount(&count));
    std::vector<ObjectRef> found;
    for (TokenRow& row : readTokens(*library.get()).rows) {
        found.push_back(std::make_shared<TokenObject>(std::move(row.token), row.index, calls));
    }
    return std::make_shared<CollectionObject>(std::move(found));
}

}  // namespace

void ProviderObject::noteLoad(ITokenProvider& library, const std::string& file, HRESULT result) {
    if (FAILED(result) && !SharedLibrary(file).isLoaded()) {
        // The library keeps its earlier module.
        return;
    }
    // Of a module that has not started there are none: they would start it.
    INT count = 0;
    const bool hasModule = SUCCEEDED(result) || SUCCEEDED(library.GetKeyCount(&count));
    auto calls = hasModule ? std::make_shared<ModuleCalls>(file) : nullptr;
    if (!isClosed()) {
        m_calls = std::move(calls);
    }
}

void ProviderObject::endCalls() {
    if (const auto calls = std::exchange(m_calls, nullptr)) {
        calls->end();
    }
}

std::span<const Member> providerMembers() {
    using enum ParameterKind;
    static const Member members[] = {
        libraryCall<load>(
            "Load", {{"path", kText}}, Kind::kBoolean,
            "Loads a PKCS #11 module. Scripts give a path relative to the current directory, which "
            "must contain config.xml; Automation clients give any path, and config.xml is found as "
            "by the command. Fails without a valid config.xml, but the module stays loaded."),
        libraryCall<unload>("Unload", {}, Kind::kBoolean,
                            "Ends the module that was loaded last, for the whole process, also for "
                            "other providers that loaded it; succeeds also when none is loaded."),
        libraryCall<getName>("GetName", {}, Kind::kText, "Returns \"PKCS#11\".").forPages(),
        libraryCall<getKeyCount>("GetKeyCount", {}, Kind::kNumber,
                                 "Counts the slots that contain a token.")
            .forPages(),
        libraryCall<openKey>(
            "OpenKey", {{"index", kInteger}}, Kind::kObject,
            "Opens the token in a slot, counted from 0 among the slots that contain "
            "one; null when the slots changed during the call.")
            .returning(ObjectClass::kToken)
            .orNull()
            .forPages(),
        composedCall<tokens>(
            "tokens", {}, Kind::kObject,
            "Opens all tokens; leaves out slots that cannot be opened and tokens that are not "
            "initialised.")
            .returning(ObjectClass::kCollection)
            .forPages(),
        composedCall<bytesToHex>("toHex", {{"bytes", kBytes}}, Kind::kText,
                                 "Writes bytes as hex in lower case.")
            .forClosed(),
        composedCall<hexToBytes>("fromHex", {{"text", kText}}, Kind::kBytes,
                                 "Reads hex; ignores blanks and line ends.")
            .forClosed(),
        composedCall<bytesToBase64>("toBase64", {{"bytes", kBytes}}, Kind::kText,
                                    "Writes bytes as base64, on one line.")
            .forClosed(),
        composedCall<base64ToBytes>("fromBase64", {{"text", kText}}, Kind::kBytes,
                                    "Reads base64; ignores blanks and line ends.")
            .forClosed(),
        composedCall<bytesToText>("toText", {{"bytes", kBytes}}, Kind::kText,
                                  "Reads bytes as UTF-8; a malformed byte becomes U+FFFD.")
            .forClosed(),
        composedCall<textToBytes>("fromText", {{"text", kText, false, true}}, Kind::kBytes,
                                  "Writes a text as UTF-8.")
            .forClosed(),
        composedCall<closeObject>(
            "Close", {}, Kind::kBoolean,
            "Releases the provider; its tokens stay usable. Its module ends when no "
            "provider and no token of it is left.")
            .forClosed()
            .forPages()};
    return members;
}

}  // namespace zr::host
