// A host that takes any steps: its objects, what calls it back, and the steps of providers.
#include "tests/fuzz/sequence.h"

#include <cstring>

#include "runtime/component_impl.h"
#include "tests/fuzz/sequence_call.h"

namespace zr::fuzz {
namespace {

constexpr std::size_t kMostProxies = 4;
// Above the numbers of the members of all objects.
constexpr LONG kProxyOffset = 1000;

}  // namespace

Sequence::Sequence(Input& input, Modules& modules)
    : m_input(input), m_modules(modules), m_modulesCallBack(input.flag()) {
    const bool isSearchExclusive = input.flag();
    for (Stateful* module : m_modules.all) {
        module->reset();
        module->setSearchExclusive(isSearchExclusive);
        module->onCall = [this](const zr::test::StatefulCall& call, bool isEnd) {
            called(call, isEnd);
        };
    }
    applyAllowed();
}

void Sequence::step() {
    const std::uint8_t choice = m_input.byte();
    const Token* const token = any(m_tokens);
    const Provider* const provider = any(m_providers);
    if (choice < 16 || !provider) {
        keep(m_providers, {std::make_shared<ProviderLife>(m_modules), makeProvider()});
    } else if (choice < 96) {
        useProvider(*provider);
    } else if (choice < 128) {
        release();
    } else if (choice < 144) {
        callByName();
    } else if (choice < 200 && token) {
        useToken(*token);
    } else if (const auto* file = any(m_files); choice < 220 && file) {
        useFile(*file);
    } else if (const auto* container = any(m_containers); choice < 235 && container) {
        useContainer(*container);
    } else if (const auto* certificate = any(m_certificates)) {
        useCertificate(*certificate);
    }
}

void Sequence::finish() {
    while (!m_certificates.empty() || !m_containers.empty() || !m_files.empty() ||
           !m_tokens.empty() || !m_providers.empty()) {
        release();
        releaseAny(m_certificates);
        releaseAny(m_containers);
        releaseAny(m_files);
        releaseAny(m_tokens);
        releaseAny(m_providers);
    }
    m_proxies.clear();
    expect(HostProxy::count() == 0 && HostCertificate::count() == 0,
           "the library keeps no object of the host");
    for (std::size_t i = 0; i < kModules; ++i) {
        Stateful& module = *m_modules.all[i];
        module.onCall = nullptr;
        expect(module.callCount("C_Finalize") == m_modules.finalizations[i],
               "each Unload finalises the module once");
        expect(module.unload() == m_modules.references[i],
               "the library loads and frees a module as often as predicted");
    }
}

void Sequence::release() {
    switch (m_input.below(8)) {
        case 0:
            releaseAny(m_providers);
            break;
        case 1:
        case 2:
            releaseAny(m_tokens);
            break;
        case 3:
        case 4:
            releaseAny(m_files);
            break;
        case 5:
            releaseAny(m_containers);
            break;
        default:
            releaseAny(m_certificates);
    }
}

void Sequence::called(const zr::test::StatefulCall& call, bool isEnd) {
    if (!m_call) {
        return;
    }
    if (isEnd && std::strcmp(call.function, "C_OpenSession") == 0) {
        m_call->session = call.session;
    }
    // The model of lives learns of a provider that ends only afterwards.
    const bool isProviderEnding =
        m_call->kind() == Call::kRelease && std::strcmp(call.function, "C_Finalize") == 0;
    if (m_modulesCallBack && !isProviderEnding) {
        callBack();
    }
}

void Sequence::callBack() {
    if (!m_call || !m_call->takeCallBack()) {
        return;
    }
    if (m_call->kind() != Call::kLoadsOnly) {
        step();
    } else if (const Provider* provider = any(m_providers)) {
        useProvider(*provider);
    }
}

HRESULT Sequence::answerAsProxy() {
    callBack();
    return m_input.flag() ? S_OK : E_FAIL;
}

/// Allows the modules' calls for the token in use, and no others.
void Sequence::applyAllowed() {
    for (Stateful* module : m_modules.all) {
        module->allowOnly(0, 0);
    }
    if (m_call && m_call->isAlive()) {
        const TokenLife& token = *m_call->token();
        token.ofModule().allowOnly(token.session, zr::test::kFirstSlot + token.slot);
    }
}

std::size_t Sequence::callCount() const {
    std::size_t count = 0;
    for (const Stateful* module : m_modules.all) {
        count += module->callCount();
    }
    return count;
}

void Sequence::useProvider(const Provider& used) {
    const Held<Provider> provider(*this, used);
    switch (m_input.below(8)) {
        case 0:
        case 1:
            load(provider);
            break;
        case 2:
            unload(provider);
            break;
        case 3: {
            const int module = provider->life->module;
            const bool isReady = module >= 0 && m_modules.all[module]->isInitialized();
            const Call call(*this, nullptr);
            INT count = 7;
            const HRESULT hr = provider->object->GetKeyCount(&count);
            expect(!call.isCertain() ||
                       (isReady ? hr == S_OK && count == 2 : hr == E_FAIL && count == 0),
                   "the keys of a module are counted when it is initialised");
            break;
        }
        default:
            openKey(provider);
    }
}

void Sequence::load(const Held<Provider>& provider) {
    const std::size_t module = m_input.below(kModules);
    // The module that was loaded before stays loaded for ever.
    provider->life->module = -1;
    const Call call(*this, nullptr);
    const HRESULT hr = provider->object->Load(Text(m_modules.all[module]->path()).get());
    expect(hr == S_OK || (hr == E_FAIL && !call.isCertain()));
    provider->life->module = -1;
    if (hr == S_OK) {
        provider->life->module = static_cast<int>(module);
        ++m_modules.references[module];
    }
}

void Sequence::unload(const Held<Provider>& provider) {
    const int module = provider->life->module;
    const Call call(*this, nullptr);
    provider->life->unload();
    expect(provider->object->Unload() == S_OK);
    if (module >= 0) {
        // Also ends what was opened while the module finalised.
        ++m_modules.epochs[static_cast<std::size_t>(module)];
    }
}

void Sequence::openKey(const Held<Provider>& provider) {
    const int module = provider->life->module;
    const bool isReady = module >= 0 && m_modules.all[module]->isInitialized();
    const std::uint64_t epoch = module >= 0 ? m_modules.epochs[module] : 0;
    const std::size_t slot = m_input.below(16) % 3;
    Token opened;
    {
        const Call call(*this, nullptr);
        const HRESULT hr =
            provider->object->OpenKey(static_cast<LONG>(slot), opened.object.receive());
        expect(!call.isCertain() || hr == (isReady && slot < 2 ? S_OK : E_FAIL),
               "a token is opened when its module is initialised");
        expect(!call.isCertain() || (hr == S_OK) == static_cast<bool>(opened.object));
        expect(SUCCEEDED(hr) || !opened.object, "what fails opens nothing");
        if (!opened.object) {
            return;
        }
        opened.life = std::make_shared<TokenLife>(
            TokenLife{provider->life, module, static_cast<CK_ULONG>(slot), call.session, epoch});
        expect(opened.life->isAlive(),
               "a token is not opened on a module that was unloaded meanwhile");
    }
    keep(m_tokens, std::move(opened));
}

/// Adds a proxy to the object, or removes one.
void Sequence::useProxy(IDispatch* object) {
    auto* component = dynamic_cast<ZComponentImpl*>(object);
    if (m_proxies.size() < kMostProxies) {
        m_proxies.emplace_back().reset(new HostProxy([this] { return answerAsProxy(); }));
        m_proxies.back()->AddRef();
    }
    const ComRef<HostProxy> proxy = m_proxies[m_input.below(m_proxies.size())];
    if (m_input.flag()) {
        component->RemoveProxyDispatch(proxy.get());
    } else {
        component->AddProxyDispatch(proxy.get(), kProxyOffset + static_cast<LONG>(m_input.below(3)),
                                    static_cast<int>(m_input.below(2)), "proxy");
    }
}

void Sequence::callByName() {
    static constexpr const char* tokenNames[] = {"GetLabel", "GetContainerCount", "GetSignAlgo",
                                                 "GetTotalSize", "Other"};
    switch (m_input.below(4)) {
        case 0:
            if (const Provider* provider = any(m_providers)) {
                callByName(*provider, "GetKeyCount");
            }
            break;
        case 1:
            if (const auto* certificate = any(m_certificates)) {
                callByName(*certificate, "GetCertData");
            }
            break;
        default:
            if (const Token* token = any(m_tokens)) {
                callByName(*token, tokenNames[m_input.below(std::size(tokenNames))]);
            }
    }
}

/// Calls a member without arguments, through the proxies of the object.
template <class H>
void Sequence::callByName(const H& used, const char* name) {
    const Held<H> held(*this, used);
    IDispatch* const object = held->object.get();
    if (m_input.byte() >= 128) {
        useProxy(object);
    }
    std::shared_ptr<TokenLife> token;
    if constexpr (!std::is_same_v<H, Provider>) {
        token = held->life;
    }
    const Call call(*this, token);
    Text text(name);
    LPOLESTR names[] = {text.get()};
    DISPID id = 0;
    if (object->GetIDsOfNames(IID_NULL, names, 1, 0, &id) == S_OK) {
        DISPPARAMS params = {};
        Variant result;
        const HRESULT hr = object->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params,
                                          result.receive(), nullptr, nullptr);
        expect(SUCCEEDED(hr) || result.type() == VT_EMPTY || result.type() == VT_I4 ||
                   result.type() == VT_BOOL,
               "what fails hands out nothing");
    }
}

}  // namespace zr::fuzz
