// The cases: every fault of one Cryptoki call.
#include "tests/faults/fault_case.h"

#include <cstddef>
#include <set>
#include <stdexcept>

namespace zr::test {
namespace {

struct NamedResult {
    CK_RV result;
    const char* name;
};
constexpr NamedResult kFailures[] = {
    {CKR_GENERAL_ERROR, "CKR_GENERAL_ERROR"},
    {CKR_DEVICE_REMOVED, "CKR_DEVICE_REMOVED"},
    {CKR_SESSION_HANDLE_INVALID, "CKR_SESSION_HANDLE_INVALID"},
};

struct NamedLie {
    RecordingFault::Kind kind;
    const char* name;
};
constexpr NamedLie kLengths[] = {
    {RecordingFault::kLengthLess, "a length one too small"},
    {RecordingFault::kLengthMore, "a length one too large"},
    {RecordingFault::kLengthZero, "a length of 0"},
    {RecordingFault::kLengthUnavailable, "CK_UNAVAILABLE_INFORMATION"},
    {RecordingFault::kLengthLargest, "the largest length"},
};
constexpr NamedLie kPastRoom[] = {{RecordingFault::kLengthPastRoom, "a length past the buffer"}};
constexpr NamedLie kCounts[] = {
    {RecordingFault::kCountZero, "a count of 0"},
    {RecordingFault::kCountMore, "a count one too large"},
    {RecordingFault::kCountLargest, "the largest count"},
};
constexpr NamedLie kUnterminated[] = {{RecordingFault::kUnterminated, "bytes without terminators"}};

struct Entry {
    const char* function;
    std::size_t offset;
};
constexpr Entry kEntries[] = {
    {"C_Initialize", offsetof(CK_FUNCTIONS, C_Initialize)},
    {"C_Finalize", offsetof(CK_FUNCTIONS, C_Finalize)},
    {"C_GetSlotList", offsetof(CK_FUNCTIONS, C_GetSlotList)},
    {"C_GetTokenInfo", offsetof(CK_FUNCTIONS, C_GetTokenInfo)},
    {"C_SetPIN", offsetof(CK_FUNCTIONS, C_SetPIN)},
    {"C_OpenSession", offsetof(CK_FUNCTIONS, C_OpenSession)},
    {"C_CloseSession", offsetof(CK_FUNCTIONS, C_CloseSession)},
    {"C_Login", offsetof(CK_FUNCTIONS, C_Login)},
    {"C_Logout", offsetof(CK_FUNCTIONS, C_Logout)},
    {"C_CreateObject", offsetof(CK_FUNCTIONS, C_CreateObject)},
    {"C_DestroyObject", offsetof(CK_FUNCTIONS, C_DestroyObject)},
    {"C_GetAttributeValue", offsetof(CK_FUNCTIONS, C_GetAttributeValue)},
    {"C_SetAttributeValue", offsetof(CK_FUNCTIONS, C_SetAttributeValue)},
    {"C_FindObjectsInit", offsetof(CK_FUNCTIONS, C_FindObjectsInit)},
    {"C_FindObjects", offsetof(CK_FUNCTIONS, C_FindObjects)},
    {"C_FindObjectsFinal", offsetof(CK_FUNCTIONS, C_FindObjectsFinal)},
    {"C_SignInit", offsetof(CK_FUNCTIONS, C_SignInit)},
    {"C_Sign", offsetof(CK_FUNCTIONS, C_Sign)},
    {"C_VerifyInit", offsetof(CK_FUNCTIONS, C_VerifyInit)},
    {"C_Verify", offsetof(CK_FUNCTIONS, C_Verify)},
};

std::size_t indexOf(const std::string& function) {
    for (const Entry& entry : kEntries) {
        if (function == entry.function) {
            return entry.offset / sizeof(void*);
        }
    }
    throw std::runtime_error("no entry point " + function);
}

class Cases {
public:
    explicit Cases(bool isSearchExclusive) : m_isSearchExclusive(isSearchExclusive) {}

    void addListFaults() {
        const std::string where = "C_GetFunctionList: ";
        for (const NamedResult& failure : kFailures) {
            add(FaultCase::kListFails, {RecordingFault::kNone, 0, failure.result, 0},
                where + failure.name);
        }
        add(FaultCase::kListIsNull, {}, where + "a null list");
    }

    void addMissing(const std::string& function) {
        add(FaultCase::kMissingEntry, {}, function + ": a null pointer in the list");
        m_cases.back().function = function;
    }

    void addFaults(const MadeCall& call, unsigned int nth) {
        const std::string where =
            "call " + std::to_string(nth) + ", " + call.line + " in " + call.step + ": ";
        for (const NamedResult& failure : kFailures) {
            add(FaultCase::kInCall, {RecordingFault::kFailure, nth, failure.result, 0},
                where + failure.name);
        }
        const std::string function = call.function();
        // For these two, the state of the module after a late failure is undefined.
        if (function != "C_SetAttributeValue" && function != "C_Finalize") {
            add(FaultCase::kInCall, {RecordingFault::kLateFailure, nth, CKR_GENERAL_ERROR, 0},
                where + "CKR_GENERAL_ERROR after the work");
        }
        add(FaultCase::kInCall, {RecordingFault::kListCleared, nth, CKR_OK, 0},
            where + "the list it handed out zeroed");
        if (function == "C_GetSlotList" || function == "C_FindObjects") {
            addLies(kCounts, nth, 1, where);
        } else if (function == "C_GetTokenInfo") {
            addLies(kLengths, nth, 2, where);
            addLies(kUnterminated, nth, 1, where);
        } else if (function == "C_GetAttributeValue") {
            addLies(kLengths, nth, call.answer.valueCount, where);
            addLies(kUnterminated, nth, call.answer.valueCount, where);
        } else if (function == "C_Sign") {
            addLies(kLengths, nth, 1, where);
            addLies(kPastRoom, nth, 1, where);
        }
    }

    std::vector<FaultCase> take() { return std::move(m_cases); }

private:
    void add(FaultCase::Kind kind, const RecordingFault& fault, const std::string& description) {
        m_cases.push_back({m_isSearchExclusive, kind, fault, "", description});
    }

    template <std::size_t Count>
    void addLies(const NamedLie (&lies)[Count], unsigned int nth, std::size_t places,
                 const std::string& where) {
        for (std::size_t place = 0; place < places; ++place) {
            for (const NamedLie& lie : lies) {
                add(FaultCase::kInCall, {lie.kind, nth, CKR_OK, place},
                    where + lie.name + " at " + std::to_string(place));
            }
        }
    }

    bool m_isSearchExclusive;
    std::vector<FaultCase> m_cases;
};

}  // namespace

std::vector<FaultCase> makeFaultCases(const std::vector<MadeCall>& calls, bool isSearchExclusive) {
    Cases cases(isSearchExclusive);
    cases.addListFaults();
    std::set<std::string> functions;
    for (const MadeCall& call : calls) {
        if (functions.insert(call.function()).second) {
            cases.addMissing(call.function());
        }
    }
    unsigned int nth = 0;
    for (const MadeCall& call : calls) {
        cases.addFaults(call, ++nth);
    }
    return cases.take();
}

void applyFault(const FaultCase& fault, RunContext* context) {
    context->module->settings().isSearchExclusive = fault.isSearchExclusive;
    switch (fault.kind) {
        case FaultCase::kInCall:
            context->module->setFault(fault.fault);
            context->faulty.nth = fault.fault.nth;
            break;
        case FaultCase::kMissingEntry:
            context->missing = fault.function;
            context->module->removeEntry(indexOf(fault.function));
            break;
        case FaultCase::kListFails:
            context->module->settings().functionListResult = fault.fault.result;
            break;
        case FaultCase::kListIsNull:
            context->module->settings().functionListIsNull = true;
            break;
    }
}

}  // namespace zr::test
