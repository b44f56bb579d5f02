// The results of operations when one of their Cryptoki calls fails, on a working token.
#include "tests/faults/documented_results.h"

#include <algorithm>

namespace zr::test {
namespace {

struct Row {
    const char* step;
    const char* function;
    unsigned int nth;  ///< of the calls of the function in the step; 0 every other
    HRESULT result;
};

constexpr Row kRows[] = {
    {"Load", "C_Initialize", 0, E_FAIL},
    {"Unload", "C_Finalize", 0, S_OK},
    {"GetKeyCount", "C_GetSlotList", 0, E_FAIL},
    {"OpenKey", "C_GetSlotList", 1, E_FAIL},
    // Hosts detect it by the null pointer only.
    {"OpenKey", "C_GetSlotList", 2, S_OK},
    {"OpenKey", "C_OpenSession", 0, E_FAIL},

    {"GetSerialNumber", "C_GetTokenInfo", 0, E_FAIL},
    {"GetLabel", "C_GetTokenInfo", 0, E_FAIL},
    {"GetManufacturerID", "C_GetTokenInfo", 0, E_FAIL},
    {"GetModelID", "C_GetTokenInfo", 0, E_FAIL},
    {"GetTotalSize", "C_GetTokenInfo", 0, E_FAIL},
    {"GetFreeSize", "C_GetTokenInfo", 0, E_FAIL},

    {"VerifyPIN", "C_Login", 0, E_FAIL},
    // A second login that finds the first login still active also succeeds.
    {"VerifyPIN", "C_Logout", 0, S_OK},
    {"ModifyPIN", "C_Logout", 0, S_OK},
    {"ModifyPIN", "C_Login", 0, E_FAIL},
    {"ModifyPIN", "C_SetPIN", 0, E_FAIL},

    // Whether the file is there does not matter.
    {"CreateFile", "C_FindObjectsInit", 0, S_OK},
    {"CreateFile", "C_FindObjects", 0, S_OK},
    {"CreateFile", "C_GetAttributeValue", 0, S_OK},
    {"CreateFile", "C_FindObjectsFinal", 0, S_OK},
    {"CreateFile", "C_CreateObject", 0, E_FAIL},
    {"FileExists", "C_FindObjectsInit", 0, E_FAIL},
    {"FileExists", "C_FindObjects", 0, E_FAIL},
    {"FileExists", "C_GetAttributeValue", 0, E_FAIL},
    {"FileExists", "C_FindObjectsFinal", 0, E_FAIL},
    {"OpenFile", "C_FindObjectsInit", 0, E_FAIL},
    {"OpenFile", "C_FindObjects", 0, E_FAIL},
    {"OpenFile", "C_FindObjectsFinal", 0, S_OK},
    // The labels of two objects, then the value: a value without a length is empty.
    {"OpenFile", "C_GetAttributeValue", 5, S_OK},
    {"OpenFile", "C_GetAttributeValue", 0, E_FAIL},
    {"OpenFile of none", "C_FindObjectsInit", 0, E_FAIL},
    {"OpenFile of none", "C_FindObjects", 0, E_FAIL},
    {"OpenFile of none", "C_GetAttributeValue", 0, E_FAIL},
    {"OpenFile of none", "C_FindObjectsFinal", 0, E_FAIL},
    {"Flush", "C_SetAttributeValue", 0, E_FAIL},
    {"DeleteFile", "C_FindObjectsInit", 0, E_FAIL},
    {"DeleteFile", "C_FindObjects", 0, E_FAIL},
    {"DeleteFile", "C_FindObjectsFinal", 0, S_OK},
    // The labels of four objects, then the value.
    {"DeleteFile", "C_GetAttributeValue", 9, S_OK},
    {"DeleteFile", "C_GetAttributeValue", 0, E_FAIL},
    {"DeleteFile", "C_DestroyObject", 0, E_FAIL},

    // A failure ends the listing; the objects found before it count.
    {"GetContainerCount", "C_FindObjectsInit", 0, S_OK},
    {"GetContainerCount", "C_FindObjects", 0, S_OK},
    {"GetContainerCount", "C_GetAttributeValue", 0, S_OK},
    {"GetContainerCount", "C_FindObjectsFinal", 0, S_OK},
    {"EnumContainer", "C_FindObjectsInit", 0, S_OK},
    {"EnumContainer", "C_FindObjects", 0, S_OK},
    {"EnumContainer", "C_GetAttributeValue", 0, S_OK},
    {"EnumContainer", "C_FindObjectsFinal", 0, S_OK},
    {"OpenContainer by index", "C_FindObjectsInit", 0, E_FAIL},
    {"OpenContainer by index", "C_FindObjects", 0, E_FAIL},
    {"OpenContainer by index", "C_GetAttributeValue", 0, E_FAIL},
    {"OpenContainer by index", "C_FindObjectsFinal", 0, S_OK},
    {"OpenContainer by name", "C_FindObjectsInit", 0, E_FAIL},
    {"OpenContainer by name", "C_FindObjects", 0, E_FAIL},
    {"OpenContainer by name", "C_GetAttributeValue", 0, E_FAIL},
    {"OpenContainer by name", "C_FindObjectsFinal", 0, S_OK},
    {"GetCertData", "C_FindObjectsInit", 0, E_FAIL},
    {"GetCertData", "C_FindObjects", 0, E_FAIL},
    {"GetCertData", "C_GetAttributeValue", 0, E_FAIL},
    {"GetCertData", "C_FindObjectsFinal", 0, S_OK},
    {"GetCertData of the token", "C_FindObjectsInit", 0, E_FAIL},
    {"GetCertData of the token", "C_FindObjects", 0, E_FAIL},
    {"GetCertData of the token", "C_GetAttributeValue", 0, E_FAIL},
    {"GetCertData of the token", "C_FindObjectsFinal", 0, S_OK},
    {"GetPubKeyData", "C_FindObjectsInit", 0, E_FAIL},
    {"GetPubKeyData", "C_FindObjects", 0, E_FAIL},
    {"GetPubKeyData", "C_GetAttributeValue", 0, E_FAIL},
    {"GetPubKeyData", "C_FindObjectsFinal", 0, E_FAIL},

    {"SignData", "C_FindObjectsInit", 0, E_FAIL},
    {"SignData", "C_FindObjects", 0, E_FAIL},
    {"SignData", "C_GetAttributeValue", 0, E_FAIL},
    {"SignData", "C_FindObjectsFinal", 0, S_OK},
    {"SignData", "C_SignInit", 0, E_FAIL},
    {"SignData", "C_Sign", 0, E_FAIL},
    {"VerifyData", "C_FindObjectsInit", 0, E_FAIL},
    {"VerifyData", "C_FindObjects", 0, E_FAIL},
    {"VerifyData", "C_GetAttributeValue", 0, E_FAIL},
    {"VerifyData", "C_FindObjectsFinal", 0, S_OK},
    {"VerifyData", "C_VerifyInit", 0, E_FAIL},
    {"VerifyData", "C_Verify", 0, E_FAIL},
    {"VerifyData of a wrong signature", "C_FindObjectsInit", 0, E_FAIL},
    {"VerifyData of a wrong signature", "C_FindObjects", 0, E_FAIL},
    {"VerifyData of a wrong signature", "C_GetAttributeValue", 0, E_FAIL},
    {"VerifyData of a wrong signature", "C_FindObjectsFinal", 0, E_FAIL},
    {"VerifyData of a wrong signature", "C_VerifyInit", 0, E_FAIL},
    {"VerifyData of a wrong signature", "C_Verify", 0, E_FAIL},
};

const Row* findRow(const FaultyCall& faulty, unsigned int nth) {
    for (const Row& row : kRows) {
        if (faulty.step == row.step && faulty.function == row.function && row.nth == nth) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace

std::string checkDocumentedResult(const RunContext& context) {
    const FaultyCall& faulty = context.faulty;
    if (!faulty.result) {
        // A Release, which has no result.
        return "";
    }
    const Row* exact = findRow(faulty, faulty.nthInStep);
    const Row* row = exact ? exact : findRow(faulty, 0);
    const std::string where =
        faulty.step + " by " + faulty.function + " " + std::to_string(faulty.nthInStep) + ": ";
    if (!row) {
        return where + "no documented result";
    }
    const testing::AssertionResult result =
        isResult("", faulty.step.c_str(), row->result, *faulty.result);
    return result ? "" : where + result.message();
}

std::vector<std::string> resultsWithoutCall(const std::vector<MadeCall>& calls) {
    std::vector<std::string> unmet;
    for (const Row& row : kRows) {
        const bool isMet = std::any_of(calls.begin(), calls.end(), [&row](const MadeCall& call) {
            return call.step == row.step && call.function() == row.function &&
                   (row.nth == 0 || row.nth == call.nthInStep);
        });
        if (!isMet) {
            unmet.push_back(std::string(row.step) + " by " + row.function);
        }
    }
    return unmet;
}

}  // namespace zr::test
