// The stateful Cryptoki module: it keeps state between calls as real modules do. Its sessions end
// with C_Finalize and are then numbered from 1 again. Its code is really loaded and unloaded. It
// reports calls that no correct caller makes. Its tokens belong to the test (stateful.h).
#include <string>

#include "tests/support/stateful/module_sessions.h"

#define EXPORT extern "C" __attribute__((visibility("default"), used))

namespace zr::test {
namespace {

constexpr std::size_t kMarkLength = sizeof kTokensMark - 1;

// Read at run time, because the file is changed after it was linked.
const volatile char s_address[] = "zrkey stateful tokens at 0000000000000000";
static_assert(sizeof s_address == kMarkLength + kTokensDigits + 1);

StatefulTokens* readTokens() {
    std::string digits;
    for (std::size_t i = 0; i < kTokensDigits; ++i) {
        digits += s_address[kMarkLength + i];
    }
    return reinterpret_cast<StatefulTokens*>(std::stoull(digits, nullptr, 16));
}

/// The module from the moment its code is loaded until it is unloaded.
class LoadedModule {
public:
    LoadedModule() : m_tokens(readTokens()), m_sessions(m_tokens) { report(true); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;
    ~LoadedModule() { report(false); }

    ModuleSessions& sessions() { return m_sessions; }

private:
    void report(bool isLoaded) {
        if (m_tokens) {
            m_tokens->setLoaded(isLoaded);
        }
    }

    StatefulTokens* m_tokens;
    ModuleSessions m_sessions;
};

LoadedModule s_module;

ModuleSessions& sessions() {
    return s_module.sessions();
}

CK_RV initialize(void*) {
    return sessions().change({"C_Initialize", 0, 0}, [] { return sessions().initialize(); });
}

CK_RV finalize(void*) {
    return sessions().change({"C_Finalize", 0, 0}, [] { return sessions().finalize(); });
}

CK_RV getSlotList(CK_BBOOL, CK_SLOT_ID* slots, CK_ULONG* count) {
    return sessions().call({"C_GetSlotList", 0, 0},
                           [&](StatefulCall*) { return sessions().slotList(slots, count); });
}

CK_RV getTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO* info) {
    return sessions().call({"C_GetTokenInfo", slot, 0}, [&](const StatefulCall* call) {
        return sessions().tokenInfo(*call, info);
    });
}

CK_RV openSession(CK_SLOT_ID slot, CK_FLAGS, void*, CK_NOTIFY, CK_SESSION_HANDLE* session) {
    return sessions().call({"C_OpenSession", slot, 0}, [&](StatefulCall* call) {
        const CK_RV rv = sessions().open(call);
        *session = call->session;
        return rv;
    });
}

CK_RV closeSession(CK_SESSION_HANDLE handle) {
    return sessions().call("C_CloseSession", handle,
                           [&](ModuleSession&) { return sessions().close(handle); });
}

CK_RV login(CK_SESSION_HANDLE handle, CK_USER_TYPE user, CK_UTF8CHAR* pin, CK_ULONG length) {
    return sessions().call("C_Login", handle, [&](ModuleSession& session) {
        return sessions().login(session, user, pin, length);
    });
}

CK_RV logout(CK_SESSION_HANDLE handle) {
    return sessions().call("C_Logout", handle,
                           [](ModuleSession& session) { return sessions().logout(session); });
}

CK_RV setPin(CK_SESSION_HANDLE handle, CK_UTF8CHAR* oldPin, CK_ULONG oldLength, CK_UTF8CHAR* newPin,
             CK_ULONG newLength) {
    return sessions().call("C_SetPIN", handle, [&](ModuleSession& session) {
        return sessions().setPin(session, oldPin, oldLength, newPin, newLength);
    });
}

CK_RV createObject(CK_SESSION_HANDLE handle, CK_ATTRIBUTE* attributes, CK_ULONG count,
                   CK_OBJECT_HANDLE* object) {
    return sessions().call("C_CreateObject", handle, [&](ModuleSession& session) {
        *object = sessions().tokens()->create(session.token, attributes, count);
        return CKR_OK;
    });
}

CK_RV destroyObject(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE object) {
    return sessions().call("C_DestroyObject", handle, [&](ModuleSession& session) {
        return sessions().tokens()->destroy(session.token, object) ? CKR_OK
                                                                   : CKR_OBJECT_HANDLE_INVALID;
    });
}

CK_RV getAttributeValue(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes,
                        CK_ULONG count) {
    return sessions().call("C_GetAttributeValue", handle, [&](ModuleSession& session) {
        return sessions().tokens()->read(session.token, object, attributes, count);
    });
}

CK_RV setAttributeValue(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes,
                        CK_ULONG count) {
    return sessions().call("C_SetAttributeValue", handle, [&](ModuleSession& session) {
        return sessions().tokens()->write(session.token, object, attributes, count)
                   ? CKR_OK
                   : CKR_OBJECT_HANDLE_INVALID;
    });
}

CK_RV findObjectsInit(CK_SESSION_HANDLE handle, CK_ATTRIBUTE* attributes, CK_ULONG count) {
    return sessions().call("C_FindObjectsInit", handle, [&](ModuleSession& session) {
        return sessions().findInit(session, attributes, count);
    });
}

CK_RV findObjects(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE* objects, CK_ULONG, CK_ULONG* count) {
    return sessions().call("C_FindObjects", handle, [&](ModuleSession& session) {
        return sessions().find(session, objects, count);
    });
}

CK_RV findObjectsFinal(CK_SESSION_HANDLE handle) {
    return sessions().call("C_FindObjectsFinal", handle,
                           [](ModuleSession& session) { return sessions().findFinal(session); });
}

CK_RV signInit(CK_SESSION_HANDLE handle, CK_MECHANISM*, CK_OBJECT_HANDLE key) {
    return sessions().call("C_SignInit", handle, [&](ModuleSession& session) {
        return sessions().signInit(session, key);
    });
}

std::string textOf(const CK_BYTE* bytes, CK_ULONG length) {
    return {reinterpret_cast<const char*>(bytes), length};
}

CK_RV sign(CK_SESSION_HANDLE handle, CK_BYTE* data, CK_ULONG dataLength, CK_BYTE* signature,
           CK_ULONG* length) {
    return sessions().call("C_Sign", handle, [&](ModuleSession& session) {
        return sessions().sign(session, textOf(data, dataLength), signature, length);
    });
}

CK_RV verifyInit(CK_SESSION_HANDLE handle, CK_MECHANISM*, CK_OBJECT_HANDLE key) {
    return sessions().call("C_VerifyInit", handle, [&](ModuleSession& session) {
        return sessions().verifyInit(session, key);
    });
}

CK_RV verify(CK_SESSION_HANDLE handle, CK_BYTE* data, CK_ULONG dataLength, CK_BYTE* signature,
             CK_ULONG length) {
    return sessions().call("C_Verify", handle, [&](ModuleSession& session) {
        return sessions().verify(session, textOf(data, dataLength), textOf(signature, length));
    });
}

CK_FUNCTION_LIST makeList() {
    CK_FUNCTION_LIST list = {};
    list.version = {2, 40};
    CK_FUNCTIONS& functions = list.functions;
    functions.C_Initialize = initialize;
    functions.C_Finalize = finalize;
    functions.C_GetSlotList = getSlotList;
    functions.C_GetTokenInfo = getTokenInfo;
    functions.C_SetPIN = setPin;
    functions.C_OpenSession = openSession;
    functions.C_CloseSession = closeSession;
    functions.C_Login = login;
    functions.C_Logout = logout;
    functions.C_CreateObject = createObject;
    functions.C_DestroyObject = destroyObject;
    functions.C_GetAttributeValue = getAttributeValue;
    functions.C_SetAttributeValue = setAttributeValue;
    functions.C_FindObjectsInit = findObjectsInit;
    functions.C_FindObjects = findObjects;
    functions.C_FindObjectsFinal = findObjectsFinal;
    functions.C_SignInit = signInit;
    functions.C_Sign = sign;
    functions.C_VerifyInit = verifyInit;
    functions.C_Verify = verify;
    return list;
}

CK_FUNCTION_LIST s_list = makeList();

}  // namespace
}  // namespace zr::test

/// Fails in a file that was not made by Stateful, which has no tokens.
EXPORT CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list) {
    if (!zr::test::sessions().tokens()) {
        return CKR_GENERAL_ERROR;
    }
    *list = &zr::test::s_list;
    return CKR_OK;
}
