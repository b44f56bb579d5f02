// Opening tokens with the library and without it.
#include "bench/bench_token.h"

#include <cstdlib>
#include <filesystem>
#include <set>

#include "bench/bench_system.h"
#include "bench/comparison.h"
#include "platform/kernel.h"

namespace zr::bench {

OpenToken::OpenToken(const std::string& module) {
    require(SUCCEEDED(zrkey::createProvider(provider)), "no provider");
    require(SUCCEEDED(provider->Load(zrkey::Text(module).get())), "the module does not load");
    INT count = 0;
    provider->GetKeyCount(&count);
    for (LONG i = 0; i < count && !token; ++i) {
        provider->OpenKey(i, token.receive());
        if (token && FAILED(token->VerifyPIN(zrkey::Text("1234").get(), 0))) {
            token.reset();
        }
    }
    require(static_cast<bool>(token), "no token accepts the PIN");
}

zrkey::ComRef<IKeyCertificate> OpenToken::certificate(const zrkey::Variant& container) const {
    zrkey::ComRef<IKeyContainer> opened;
    zrkey::ComRef<IKeyCertificate> found;
    require(SUCCEEDED(token->OpenContainer(container, opened.receive())) &&
                SUCCEEDED(opened->GetKeyCert(true, found.receive())),
            "no certificate");
    return found;
}

std::string realModule() {
    const char* path = std::getenv("ZRKEY_MODULE");
    require(path, "ZRKEY_MODULE names no module");
    return std::filesystem::relative(path).generic_string();
}

std::string instantModule(long certificates) {
    const std::filesystem::path source(ZRKEY_INSTANT_MODULE);
    const std::string copy = std::string("instant-")
                                 .append(std::to_string(certificates))
                                 .append(source.extension().string());
    // A copy of an earlier run is replaced; one of this run may be loaded and stays as it is.
    static std::set<std::string> s_copies;
    if (s_copies.insert(copy).second) {
        std::filesystem::remove(copy);
        std::filesystem::copy_file(source, copy);
    }
    setVariable("ZRKEY_INSTANT_CERTIFICATES", std::to_string(certificates));
    return copy;
}

namespace {

const CK_FUNCTIONS* functionsOf(const std::string& module) {
    const HMODULE library = LoadLibraryA(std::filesystem::absolute(module).string().c_str());
    require(library, "the module does not load");
    const auto getList = reinterpret_cast<decltype(CK_FUNCTIONS::C_GetFunctionList)>(
        reinterpret_cast<void*>(GetProcAddress(library, "C_GetFunctionList")));
    CK_FUNCTION_LIST* list = nullptr;
    require(getList && getList(&list) == CKR_OK, "no function list");
    return &list->functions;
}

}  // namespace

void startModule(const std::string& module) {
    require(functionsOf(module)->C_Initialize(nullptr) == CKR_OK, "the module does not start");
}

BareModule::BareModule(const std::string& module) : call(functionsOf(module)) {
    CK_SLOT_ID slots[8];
    CK_ULONG count = 8;
    require(call->C_GetSlotList(CK_TRUE, slots, &count) == CKR_OK &&
                call->C_OpenSession(slots[0], CKF_SERIAL_SESSION | CKF_RW_SESSION, nullptr, nullptr,
                                    &session) == CKR_OK,
            "no session");
}

}  // namespace zr::bench
