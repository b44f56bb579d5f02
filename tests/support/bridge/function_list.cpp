// The bridge's function list: the 68 entry points in their standard order.
#include "tests/support/bridge/calls.h"

namespace zr::bridge {
namespace {

using windows::Info;
using windows::Mechanism;
using windows::MechanismInfo;
using windows::SessionInfo;
using windows::SlotInfo;
using windows::TokenInfo;
using Bytes = CK_BYTE*;

template <class Function>
void* entry(Function* function) {
    return reinterpret_cast<void*>(function);
}

windows::FunctionList s_list = {
    {2, 40},
    {
        entry(&initialize),
        entry(&forward<&CK_FUNCTIONS::C_Finalize, void*>),
        entry(&forward<&CK_FUNCTIONS::C_GetInfo, Info*>),
        entry(&getFunctionList),
        entry(&getSlotList),
        entry(&forward<&CK_FUNCTIONS::C_GetSlotInfo, Handle, SlotInfo*>),
        entry(&forward<&CK_FUNCTIONS::C_GetTokenInfo, Handle, TokenInfo*>),
        entry(&getMechanismList),
        entry(&forward<&CK_FUNCTIONS::C_GetMechanismInfo, Handle, Ulong, MechanismInfo*>),
        entry(&forward<&CK_FUNCTIONS::C_InitToken, Handle, Bytes, Ulong, Bytes>),
        entry(&forward<&CK_FUNCTIONS::C_InitPIN, Handle, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_SetPIN, Handle, Bytes, Ulong, Bytes, Ulong>),
        entry(&openSession),
        entry(&forward<&CK_FUNCTIONS::C_CloseSession, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_CloseAllSessions, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_GetSessionInfo, Handle, SessionInfo*>),
        entry(&forward<&CK_FUNCTIONS::C_GetOperationState, Handle, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_SetOperationState, Handle, Bytes, Ulong, Handle, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_Login, Handle, Ulong, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_Logout, Handle>),
        entry(&createObject),
        entry(&copyObject),
        entry(&forward<&CK_FUNCTIONS::C_DestroyObject, Handle, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_GetObjectSize, Handle, Handle, Ulong*>),
        entry(&getAttributeValue),
        entry(&setAttributeValue),
        entry(&findObjectsInit),
        entry(&findObjects),
        entry(&forward<&CK_FUNCTIONS::C_FindObjectsFinal, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_EncryptInit, Handle, Mechanism*, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_Encrypt, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_EncryptUpdate, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_EncryptFinal, Handle, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_DecryptInit, Handle, Mechanism*, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_Decrypt, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_DecryptUpdate, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_DecryptFinal, Handle, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_DigestInit, Handle, Mechanism*>),
        entry(&forward<&CK_FUNCTIONS::C_Digest, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_DigestUpdate, Handle, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_DigestKey, Handle, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_DigestFinal, Handle, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_SignInit, Handle, Mechanism*, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_Sign, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_SignUpdate, Handle, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_SignFinal, Handle, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_SignRecoverInit, Handle, Mechanism*, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_SignRecover, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_VerifyInit, Handle, Mechanism*, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_Verify, Handle, Bytes, Ulong, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_VerifyUpdate, Handle, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_VerifyFinal, Handle, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_VerifyRecoverInit, Handle, Mechanism*, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_VerifyRecover, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_DigestEncryptUpdate, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_DecryptDigestUpdate, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_SignEncryptUpdate, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&forward<&CK_FUNCTIONS::C_DecryptVerifyUpdate, Handle, Bytes, Ulong, Bytes, Ulong*>),
        entry(&generateKey),
        entry(&generateKeyPair),
        entry(
            &forward<&CK_FUNCTIONS::C_WrapKey, Handle, Mechanism*, Handle, Handle, Bytes, Ulong*>),
        entry(&unwrapKey),
        entry(&deriveKey),
        entry(&forward<&CK_FUNCTIONS::C_SeedRandom, Handle, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_GenerateRandom, Handle, Bytes, Ulong>),
        entry(&forward<&CK_FUNCTIONS::C_GetFunctionStatus, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_CancelFunction, Handle>),
        entry(&forward<&CK_FUNCTIONS::C_WaitForSlotEvent, Ulong, Handle*, void*>),
    },
};

}  // namespace

Ulong getFunctionList(windows::FunctionList** list) {
    if (!list) {
        return windows::narrow(CKR_ARGUMENTS_BAD);
    }
    if (!nativeModule()) {
        return windows::narrow(CKR_GENERAL_ERROR);
    }
    *list = &s_list;
    return windows::narrow(CKR_OK);
}

}  // namespace zr::bridge

/// The library's one export.
extern "C" [[gnu::ms_abi, gnu::visibility("default")]] zr::bridge::windows::Ulong C_GetFunctionList(
    zr::bridge::windows::FunctionList** list) {
    return zr::bridge::getFunctionList(list);
}
