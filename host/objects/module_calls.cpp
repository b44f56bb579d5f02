// Direct calls of a module that the library has loaded.
#include "host/objects/module_calls.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "host/token/pkcs11_header.h"

namespace zr::host {
namespace {

std::vector<ModuleCalls*>& allCalls() {
    static std::vector<ModuleCalls*> all;
    return all;
}

/// The address by which the library recognises a module.
const void* identityOf(const Cryptoki& calls) {
    const auto* list = static_cast<const CK_FUNCTION_LIST*>(calls.functions());
    return list ? reinterpret_cast<const void*>(list->C_Finalize) : nullptr;
}

}  // namespace

ModuleCalls::ModuleCalls(const std::string& path) {
    auto calls = std::make_shared<Cryptoki>(path);
    calls->startApart();
    // When the calls are apart, the library's end of the module does not affect them.
    m_identity = calls->isApart() ? nullptr : identityOf(*calls);
    m_calls = std::move(calls);
    allCalls().push_back(this);
}

ModuleCalls::~ModuleCalls() {
    std::erase(allCalls(), this);
    if (ModuleCalls* other = findOther()) {
        other->m_kept.splice(other->m_kept.end(), m_kept);
    }
}

void ModuleCalls::keep(zrkey::ComRef<ITokenProvider> provider) noexcept {
    try {
        m_kept.push_back(std::move(provider));
    } catch (const std::bad_alloc&) {
        // Released with the argument.
    }
}

ModuleCalls* ModuleCalls::findOther() const {
    const auto found = std::ranges::find_if(allCalls(), [this](const ModuleCalls* calls) {
        return calls != this && m_identity && calls->m_identity == m_identity;
    });
    return found == allCalls().end() ? nullptr : *found;
}

void ModuleCalls::end() {
    std::vector<std::shared_ptr<const Cryptoki>> ended;
    for (ModuleCalls* calls : allCalls()) {
        if (calls == this || (m_identity && calls->m_identity == m_identity)) {
            // Released after the loop: that may call the module.
            ended.push_back(std::move(calls->m_calls));
            calls->m_calls.reset();
        }
    }
}

}  // namespace zr::host
