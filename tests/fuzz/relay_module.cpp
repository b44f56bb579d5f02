// A Cryptoki module that hands out a function list set by the fuzzer.
#include "pkcs11/cryptoki_types.h"

namespace {

CK_FUNCTION_LIST* s_list = nullptr;

}  // namespace

extern "C" __attribute__((visibility("default"), used)) void SetRelayList(CK_FUNCTION_LIST* list) {
    s_list = list;
}

extern "C" __attribute__((visibility("default"), used)) CK_RV C_GetFunctionList(
    CK_FUNCTION_LIST** list) {
    *list = s_list;
    return s_list ? CKR_OK : CKR_GENERAL_ERROR;
}
