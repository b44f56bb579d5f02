// A session from Load to Unload: the provider and its tokens.
#include "tests/faults/scenario.h"

#include "tests/faults/oracle.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

const char* const kContainers[] = {"alpha", "beta", "gamma"};

}  // namespace

void fillModule(Recording* module) {
    (*module)->reset();
    (*module)->settings().slotCount = (*module)->settings().slotCountWhenListed = 2;
    module->addData("20", "twenty");
    module->addData("6", "0123456789");
    module->addData("30", "");
    for (const char* id : kContainers) {
        module->addCertificate(id, std::string("certificate of ") + id);
        module->addKey(CKO_PRIVATE_KEY, id);
        module->addKey(CKO_PUBLIC_KEY, id);
    }
}

Scenario::Scenario(RunContext& context, IClassFactory* factory, const std::string& module)
    : m_context(context), m_modulePath(module) {
    factory->CreateInstance(nullptr, IID_ITokenProvider, m_provider.receive());
}

void Scenario::run() {
    load();
    countTokens();
    Token token = openToken(1);
    if (token.object) {
        useToken(token);
        releaseToken(&token, false);
    }
    unload();
}

void Scenario::useToken(Token& token) {
    readInformation(token);
    verifyPin(&token, "1234");
    verifyPin(&token, "1234");
    modifyPin(&token, "1234", "56789");
    modifyPin(&token, "56789", "1234");
    useFiles(token);
    useContainers(token);
    digest(token);
}

void Scenario::load() {
    Step step(m_context, "Load");
    const HRESULT hr = m_provider->Load(Text(m_modulePath));
    const auto& settings = m_context.module->settings();
    if (settings.functionListResult != CKR_OK || settings.functionListIsNull) {
        step.expect(E_OUTOFMEMORY, hr);
        return;
    }
    m_context.isLoaded = true;
    const CK_RV rv = step.call("C_Initialize(null)").result;
    m_context.isLoaded = rv == CKR_OK || rv == CKR_CRYPTOKI_ALREADY_INITIALIZED;
    step.expect(m_context.isLoaded ? S_OK : E_FAIL, hr);
}

void Scenario::countTokens() {
    Step step(m_context, "GetKeyCount");
    INT count = 77;
    const HRESULT hr = m_provider->GetKeyCount(&count);
    const RecordingAnswer slots = step.call("C_GetSlotList(1, null)");
    const bool isCounted = slots.result == CKR_OK;
    step.expect(isCounted ? S_OK : E_FAIL, hr);
    step.equal("the count", isCounted ? static_cast<INT>(slots.count) : 0, count);
}

Scenario::Token Scenario::openToken(LONG index) {
    Step step(m_context, "OpenKey");
    void* const untouched = this;
    void* opened = untouched;
    const HRESULT hr = m_provider->OpenKey(index, &opened);
    const auto fail = [&](HRESULT expected) {
        step.expect(expected, hr);
        step.equal("the token", untouched, opened);
        return Token{};
    };
    const auto wanted = static_cast<CK_ULONG>(index);
    const RecordingAnswer count = step.call("C_GetSlotList(1, null)");
    if (count.result != CKR_OK || wanted >= count.count || count.count > 1UL << 20) {
        return fail(E_FAIL);
    }
    const RecordingAnswer list = step.call("C_GetSlotList(1, list)");
    if (list.result != CKR_OK || wanted >= list.count) {
        return fail(S_OK);
    }
    Token token;
    token.slot = 10 + wanted;
    const RecordingAnswer session =
        step.call("C_OpenSession(" + std::to_string(token.slot) + ", 6, set, null)");
    if (session.result != CKR_OK) {
        return fail(E_FAIL);
    }
    ++m_openSessions;
    step.expect(S_OK, hr);
    if (opened == untouched || !opened) {
        step.problem("handed out no token");
        return Token{};
    }
    token.object.reset(static_cast<IKeyObject*>(opened));
    token.session = session.handle;
    return token;
}

void Scenario::releaseToken(Token* token, bool isKept) {
    Step step(m_context, isKept ? "Release of a kept token" : "Release of the token");
    step.equal("the count", isKept ? 1UL : 0UL,
               static_cast<unsigned long>(token->object.release()->Release()));
    if (isKept) {
        ++m_keptTokens;
        return;
    }
    if (token->isLoggedIn) {
        step.call(callOf("C_Logout", token->session) + ")");
    }
    m_openSessions -= step.isOk(callOf("C_CloseSession", token->session) + ")") ? 1 : 0;
}

void Scenario::unload() {
    {
        Step step(m_context, "Unload");
        step.expect(S_OK, m_provider->Unload());
        if (step.isOk("C_Finalize(null)")) {
            m_openSessions = 0;
        }
        m_context.isLoaded = false;
    }
    Step step(m_context, "Release of the provider");
    // Each token that is kept alive holds the provider.
    step.equal("the count", static_cast<unsigned long>(m_keptTokens),
               static_cast<unsigned long>(m_provider.release()->Release()));
    step.equal("the number of open sessions", m_openSessions, m_context.module->openSessions());
}

}  // namespace zr::test
