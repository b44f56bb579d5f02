// The calls with attribute templates.
#include "tests/support/bridge/attributes.h"
#include "tests/support/bridge/calls.h"

namespace zr::bridge {
namespace {

/// Makes no call for a template that is refused.
template <class Call>
Ulong withTemplate(const Attributes& attributes, Call call) {
    return windows::narrow(attributes.refusal() == CKR_OK ? call() : attributes.refusal());
}

/// The same for calls that create an object.
template <class Call>
Ulong makeObject(const Attributes& attributes, Handle* object, Call call) {
    return withTemplate(attributes, [&] {
        Argument<Handle*> made(object);
        const CK_RV rv = call(made.native());
        made.finish(rv);
        return rv;
    });
}

}  // namespace

Ulong findObjectsInit(Handle session, windows::Attribute* attributes, Ulong count) {
    Attributes search(attributes, count);
    return withTemplate(search, [&] {
        return callNative<&CK_FUNCTIONS::C_FindObjectsInit>(toNative(session), search.native(),
                                                            search.count());
    });
}

Ulong createObject(Handle session, windows::Attribute* attributes, Ulong count, Handle* object) {
    Attributes made(attributes, count);
    return makeObject(made, object, [&](CK_ULONG* handle) {
        return callNative<&CK_FUNCTIONS::C_CreateObject>(toNative(session), made.native(),
                                                         made.count(), handle);
    });
}

Ulong copyObject(Handle session, Handle object, windows::Attribute* attributes, Ulong count,
                 Handle* newObject) {
    Attributes changed(attributes, count);
    return makeObject(changed, newObject, [&](CK_ULONG* handle) {
        return callNative<&CK_FUNCTIONS::C_CopyObject>(toNative(session), toNative(object),
                                                       changed.native(), changed.count(), handle);
    });
}

Ulong getAttributeValue(Handle session, Handle object, windows::Attribute* attributes,
                        Ulong count) {
    Attributes read(attributes, count);
    return withTemplate(read, [&] {
        const CK_RV rv = callNative<&CK_FUNCTIONS::C_GetAttributeValue>(
            toNative(session), toNative(object), read.native(), read.count());
        // Some failures also report lengths.
        read.handBack();
        return rv;
    });
}

Ulong setAttributeValue(Handle session, Handle object, windows::Attribute* attributes,
                        Ulong count) {
    Attributes written(attributes, count);
    return withTemplate(written, [&] {
        return callNative<&CK_FUNCTIONS::C_SetAttributeValue>(toNative(session), toNative(object),
                                                              written.native(), written.count());
    });
}

Ulong generateKey(Handle session, windows::Mechanism* mechanism, windows::Attribute* attributes,
                  Ulong count, Handle* key) {
    Attributes made(attributes, count);
    Argument<windows::Mechanism*> method(mechanism);
    return makeObject(made, key, [&](CK_ULONG* handle) {
        return callNative<&CK_FUNCTIONS::C_GenerateKey>(toNative(session), method.native(),
                                                        made.native(), made.count(), handle);
    });
}

Ulong generateKeyPair(Handle session, windows::Mechanism* mechanism,
                      windows::Attribute* publicAttributes, Ulong publicCount,
                      windows::Attribute* privateAttributes, Ulong privateCount, Handle* publicKey,
                      Handle* privateKey) {
    Attributes publicPart(publicAttributes, publicCount);
    Attributes privatePart(privateAttributes, privateCount);
    Argument<windows::Mechanism*> method(mechanism);
    return withTemplate(publicPart, [&] {
        if (privatePart.refusal() != CKR_OK) {
            return privatePart.refusal();
        }
        Argument<Handle*> publicMade(publicKey);
        Argument<Handle*> privateMade(privateKey);
        const CK_RV rv = callNative<&CK_FUNCTIONS::C_GenerateKeyPair>(
            toNative(session), method.native(), publicPart.native(), publicPart.count(),
            privatePart.native(), privatePart.count(), publicMade.native(), privateMade.native());
        publicMade.finish(rv);
        privateMade.finish(rv);
        return rv;
    });
}

Ulong unwrapKey(Handle session, windows::Mechanism* mechanism, Handle unwrappingKey,
                CK_BYTE* wrapped, Ulong wrappedLength, windows::Attribute* attributes, Ulong count,
                Handle* key) {
    Attributes made(attributes, count);
    Argument<windows::Mechanism*> method(mechanism);
    return makeObject(made, key, [&](CK_ULONG* handle) {
        return callNative<&CK_FUNCTIONS::C_UnwrapKey>(
            toNative(session), method.native(), toNative(unwrappingKey), wrapped, wrappedLength,
            made.native(), made.count(), handle);
    });
}

Ulong deriveKey(Handle session, windows::Mechanism* mechanism, Handle baseKey,
                windows::Attribute* attributes, Ulong count, Handle* key) {
    Attributes made(attributes, count);
    Argument<windows::Mechanism*> method(mechanism);
    return makeObject(made, key, [&](CK_ULONG* handle) {
        return callNative<&CK_FUNCTIONS::C_DeriveKey>(toNative(session), method.native(),
                                                      toNative(baseKey), made.native(),
                                                      made.count(), handle);
    });
}

}  // namespace zr::bridge
