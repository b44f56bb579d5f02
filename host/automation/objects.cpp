// The objects of the model as Automation clients get them.
#include "host/automation/objects.h"

#include <memory>
#include <mutex>
#include <new>

#include "host/automation/client_loading.h"
#include "host/automation/client_objects.h"
#include "host/automation/dual_objects.h"
#include "host/automation/library_loader.h"
#include "host/automation/server_state.h"
#include "host/objects/provider_object.h"

namespace zr::automation {
namespace {

IDispatch* makeObject(host::ObjectRef object) {
    switch (object->objectClass()) {
        case host::ObjectClass::kProvider:
            return makeTokenProvider(std::move(object));
        case host::ObjectClass::kToken:
            return makeToken(std::move(object));
        case host::ObjectClass::kFile:
            return makeFile(std::move(object));
        case host::ObjectClass::kContainer:
            return makeContainer(std::move(object));
        case host::ObjectClass::kCertificate:
            return makeCertificate(std::move(object));
        default:
            return makeCollection(std::move(object));
    }
}

}  // namespace

HRESULT createProvider(REFIID iid, void** result) noexcept {
    *result = nullptr;
    try {
        const std::lock_guard lock(libraryLock());
        zrkey::ComRef<ITokenProvider> library;
        if (const HRESULT created = createLibraryProvider(library); FAILED(created)) {
            return created;
        }
        auto provider = std::make_shared<host::ProviderObject>(
            std::move(library), std::shared_ptr<host::ModuleCalls>(), loadForClient);
        return wrap(std::move(provider))->QueryInterface(iid, result);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

zrkey::ComRef<IDispatch> wrap(host::ObjectRef object) {
    // No other thread finds an object that is not complete.
    const std::lock_guard lock(libraryLock());
    zrkey::ComRef<IDispatch> made = Registration::find(*object);
    if (made) {
        return made;
    }
    made.reset(makeObject(std::move(object)));
    return made;
}

}  // namespace zr::automation
