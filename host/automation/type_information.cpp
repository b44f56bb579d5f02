// The type library in the resources of this DLL.
#include "host/automation/type_information.h"

#include <zrkey/zrkey.hpp>

#include <new>

#include "host/automation/own_file.h"

namespace zr::automation {

HRESULT getTypeInformation(REFGUID id, ITypeInfo** info) noexcept {
    *info = nullptr;
    zrkey::ComRef<ITypeLib> library;
    try {
        // The system keeps the library as long as one of its descriptions is in use.
        const HRESULT result = LoadTypeLibEx(ownFile().c_str(), REGKIND_NONE, library.receive());
        return FAILED(result) ? result : library->GetTypeInfoOfGuid(id, info);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace zr::automation
