// The entry points of the bridge.
//
// forward<> generates an entry point whose arguments are translated independently; those with
// templates and lists are written out.
#pragma once

#include <tuple>

#include "tests/support/bridge/arguments.h"
#include "tests/support/bridge/native_module.h"

namespace zr::bridge {

/// @tparam entry  the native entry point.
/// @tparam W      its arguments in the layout of Windows.
template <auto entry, class... W>
[[gnu::ms_abi]] windows::Ulong forward(W... values) {
    std::tuple<Argument<W>...> arguments(values...);
    const CK_RV rv = std::apply(
        [](auto&... argument) { return callNative<entry>(argument.native()...); }, arguments);
    std::apply([rv](auto&... argument) { (argument.finish(rv), ...); }, arguments);
    return windows::narrow(rv);
}

using windows::Handle;
using windows::Ulong;

[[gnu::ms_abi]] Ulong initialize(void* initArgs);
[[gnu::ms_abi]] Ulong getFunctionList(windows::FunctionList** list);
[[gnu::ms_abi]] Ulong getSlotList(CK_BBOOL tokenPresent, Handle* slots, Ulong* count);
[[gnu::ms_abi]] Ulong getMechanismList(Handle slot, Ulong* mechanisms, Ulong* count);
[[gnu::ms_abi]] Ulong openSession(Handle slot, Ulong flags, void* application, void* notify,
                                  Handle* session);
[[gnu::ms_abi]] Ulong findObjectsInit(Handle session, windows::Attribute* attributes, Ulong count);
[[gnu::ms_abi]] Ulong findObjects(Handle session, Handle* objects, Ulong maximum, Ulong* count);
[[gnu::ms_abi]] Ulong createObject(Handle session, windows::Attribute* attributes, Ulong count,
                                   Handle* object);
[[gnu::ms_abi]] Ulong copyObject(Handle session, Handle object, windows::Attribute* attributes,
                                 Ulong count, Handle* newObject);
[[gnu::ms_abi]] Ulong getAttributeValue(Handle session, Handle object,
                                        windows::Attribute* attributes, Ulong count);
[[gnu::ms_abi]] Ulong setAttributeValue(Handle session, Handle object,
                                        windows::Attribute* attributes, Ulong count);
[[gnu::ms_abi]] Ulong generateKey(Handle session, windows::Mechanism* mechanism,
                                  windows::Attribute* attributes, Ulong count, Handle* key);
[[gnu::ms_abi]] Ulong generateKeyPair(Handle session, windows::Mechanism* mechanism,
                                      windows::Attribute* publicAttributes, Ulong publicCount,
                                      windows::Attribute* privateAttributes, Ulong privateCount,
                                      Handle* publicKey, Handle* privateKey);
[[gnu::ms_abi]] Ulong unwrapKey(Handle session, windows::Mechanism* mechanism, Handle unwrappingKey,
                                CK_BYTE* wrapped, Ulong wrappedLength,
                                windows::Attribute* attributes, Ulong count, Handle* key);
[[gnu::ms_abi]] Ulong deriveKey(Handle session, windows::Mechanism* mechanism, Handle baseKey,
                                windows::Attribute* attributes, Ulong count, Handle* key);

}  // namespace zr::bridge
