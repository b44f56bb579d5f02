// The class TokenProvider of the object model.
#pragma once

#include <memory>
#include <utility>

#include "host/objects/library_object.h"
#include "host/objects/module_calls.h"

namespace zr::host {

class ProviderObject;

/// What the member Load does. Throws a CallError or a Failure when nothing is loaded.
/// @param path  as the caller gave it.
using Loader = void (*)(ProviderObject& provider, const Arguments& arguments, const WideText& path);
/// Loads by a path relative to the current directory, with the config.xml that is there.
void loadAsLibrary(ProviderObject& provider, const Arguments& arguments, const WideText& path);

class ProviderObject : public LibraryObject<ITokenProvider, ObjectClass::kProvider> {
public:
    /// @param calls  of the loaded module; null: none is loaded, or it has not started.
    explicit ProviderObject(zrkey::ComRef<ITokenProvider> provider,
                            std::shared_ptr<ModuleCalls> calls = {}, Loader load = loadAsLibrary)
        : LibraryObject(std::move(provider)), m_calls(std::move(calls)), m_loader(load) {}

    /// Makes a provider without a module.
    /// @return the library's result.
    static HRESULT create(std::shared_ptr<ProviderObject>& provider);

    ~ProviderObject() override { close(); }

    void close() final {
        if (const auto calls = std::exchange(m_calls, nullptr)) {
            calls->keep(take());
        }
        LibraryObject::close();
    }
    const std::shared_ptr<ModuleCalls>& calls() const { return m_calls; }
    /// Takes over the calls of the module that the library has after a Load.
    /// @param file    that the library loads, absolute, in UTF-8.
    /// @param result  of the Load.
    void noteLoad(ITokenProvider& library, const std::string& file, HRESULT result);
    /// The library unloads the module now.
    void endCalls();
    Loader loader() const { return m_loader; }

private:
    std::shared_ptr<ModuleCalls> m_calls;
    Loader m_loader;
};

std::span<const Member> providerMembers();

}  // namespace zr::host
