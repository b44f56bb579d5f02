/* Calls each function of zrkey_c.h by its name. The value of each argument says its position. */
#include "tests/unit/include/c_slots.h"

#include <string.h>

#define CALL0(name) (beginCall(), endCall(#name, 0, (unsigned int)object->lpVtbl->name(object)))
#define CALL(count, name, ...) \
    (beginCall(), endCall(#name, count, (unsigned int)object->lpVtbl->name(object, __VA_ARGS__)))
#define SLOTS(interface) (sizeof(interface##Vtbl) / sizeof(void*))

#define P pointerArgument
#define N numberArgument
#define F flagArgument

static VARIANT V(int position) {
    VARIANT variant;
    memset(&variant, 0, sizeof variant);
    variant.vt = VT_I8;
    variant.llVal = numberArgument(position);
    return variant;
}

#define CALL_UNKNOWN() (CALL(2, QueryInterface, P(1), P(2)), CALL0(AddRef), CALL0(Release))
#define CALL_DISPATCH()                                                \
    (CALL_UNKNOWN(), CALL(1, GetTypeInfoCount, P(1)),                  \
     CALL(3, GetTypeInfo, (UINT)N(1), (LCID)N(2), P(3)),               \
     CALL(5, GetIDsOfNames, P(1), P(2), (UINT)N(3), (LCID)N(4), P(5)), \
     CALL(8, Invoke, N(1), P(2), (LCID)N(3), (WORD)N(4), P(5), P(6), P(7), P(8)))

size_t callUnknown(IUnknown* object) {
    CALL_UNKNOWN();
    return SLOTS(IUnknown);
}

size_t callDispatch(IDispatch* object) {
    CALL_DISPATCH();
    return SLOTS(IDispatch);
}

size_t callClassFactory(IClassFactory* object) {
    CALL_UNKNOWN();
    CALL(3, CreateInstance, P(1), P(2), P(3));
    CALL(1, LockServer, N(1));
    return SLOTS(IClassFactory);
}

size_t callSupportErrorInfo(ISupportErrorInfo* object) {
    CALL_UNKNOWN();
    CALL(1, InterfaceSupportsErrorInfo, P(1));
    return SLOTS(ISupportErrorInfo);
}

size_t callTokenProvider(ITokenProvider* object) {
    CALL_DISPATCH();
    CALL(1, Load, P(1));
    CALL0(Unload);
    CALL(2, OpenKey, N(1), P(2));
    CALL(1, GetName, P(1));
    CALL(1, GetKeyCount, P(1));
    CALL(2, GetKeySN, N(1), P(2));
    CALL(1, LoadFinish, P(1));
    return SLOTS(ITokenProvider);
}

static void callTokenInformation(IKeyObject* object) {
    CALL(1, GetSerialNumber, P(1));
    CALL(2, SetLabel, P(1), P(2));
    CALL(1, GetLabel, P(1));
    CALL(1, GetManufacturerID, P(1));
    CALL(1, GetModelID, P(1));
    CALL(1, GetTotalSize, P(1));
    CALL(1, GetFreeSize, P(1));
    CALL(1, GetDigestMethod, P(1));
    CALL(1, GetSignAlgo, P(1));
    CALL(1, GetKeyObjectClassName, P(1));
    CALL(1, GetCaLibPath, P(1));
    CALL(1, GetCSPName, P(1));
    CALL(1, GetAlgoList, P(1));
    CALL(2, GetZRHardApiInfo, P(1), P(2));
}

static void callTokenPins(IKeyObject* object) {
    CALL(3, ModifyPIN, P(1), P(2), N(3));
    CALL(2, GetMaxRetryCount, N(1), P(2));
    CALL(2, GetRemainRetryCount, N(1), P(2));
    CALL(2, IsDefaultPIN, N(1), P(2));
    CALL(2, VerifyPIN, P(1), N(2));
    CALL(2, UnlockPIN, P(1), P(2));
    CALL(1, Lock, P(1));
    CALL(1, Unlock, P(1));
}

static void callTokenFiles(IKeyObject* object) {
    CALL(6, CreateFile, P(1), N(2), N(3), N(4), (ULONG)N(5), P(6));
    CALL(2, FileExists, P(1), P(2));
    CALL(2, OpenFile, P(1), P(2));
    CALL(1, EnumFiles, P(1));
    CALL(1, DeleteFile, P(1));
}

static void callTokenContainers(IKeyObject* object) {
    CALL(2, CreateContainer, P(1), P(2));
    CALL(1, GetContainerCount, P(1));
    CALL(2, OpenContainer, V(1), P(2));
    CALL(1, DeleteContainer, V(1));
    CALL(2, EnumContainer, N(1), P(2));
    CALL(2, GetCertData, P(1), P(2));
    CALL(2, GetPubKeyData, P(1), P(2));
}

static void callTokenSignatures(IKeyObject* object) {
    CALL(3, DigestData, P(1), V(2), P(3));
    CALL(4, SignData, P(1), V(2), P(3), P(4));
    CALL(4, VerifyData, V(1), P(2), P(3), V(4));
    CALL(5, VerifyDataByCert, V(1), P(2), V(3), P(4), V(5));
    CALL(5, VerifyDataByPubKey, V(1), P(2), V(3), P(4), V(5));
}

size_t callKeyObject(IKeyObject* object) {
    CALL_DISPATCH();
    callTokenInformation(object);
    callTokenPins(object);
    callTokenFiles(object);
    callTokenContainers(object);
    callTokenSignatures(object);
    return SLOTS(IKeyObject);
}

size_t callKeyFile(IKeyFile* object) {
    CALL_DISPATCH();
    CALL0(Close);
    CALL0(Flush);
    CALL(1, Write, V(1));
    CALL(2, Read, (ULONG)N(1), P(2));
    CALL(1, GetSize, P(1));
    CALL(2, Seek, N(1), N(2));
    return SLOTS(IKeyFile);
}

size_t callKeyContainer(IKeyContainer* object) {
    CALL_DISPATCH();
    CALL0(Close);
    CALL(1, GetType, P(1));
    CALL(2, ImportCertificate, F(1), V(2));
    CALL(2, ExportCertificate, F(1), P(2));
    CALL(1, GenKeyPair, P(1));
    CALL(2, GetKeyCert, F(1), P(2));
    return SLOTS(IKeyContainer);
}

size_t callKeyCertificate(IKeyCertificate* object) {
    CALL_DISPATCH();
    CALL(1, GetCertData, P(1));
    CALL(1, GetCertID, P(1));
    return SLOTS(IKeyCertificate);
}
