// Comparing result codes.
#include "tests/support/hresult.h"

#include <cstdio>
#include <string>

namespace zr::test {
namespace {

std::string describe(HRESULT hr) {
    static constexpr struct {
        HRESULT hr;
        const char* name;
    } names[] = {
        {S_OK, "S_OK"},
        {S_FALSE, "S_FALSE"},
        {E_NOTIMPL, "E_NOTIMPL"},
        {E_NOINTERFACE, "E_NOINTERFACE"},
        {E_POINTER, "E_POINTER"},
        {E_FAIL, "E_FAIL"},
        {E_OUTOFMEMORY, "E_OUTOFMEMORY"},
        {E_INVALIDARG, "E_INVALIDARG"},
        {DISP_E_TYPEMISMATCH, "DISP_E_TYPEMISMATCH"},
        {DISP_E_BADVARTYPE, "DISP_E_BADVARTYPE"},
        {DISP_E_EXCEPTION, "DISP_E_EXCEPTION"},
        {DISP_E_OVERFLOW, "DISP_E_OVERFLOW"},
        {DISP_E_ARRAYISLOCKED, "DISP_E_ARRAYISLOCKED"},
        {RPC_E_CANTCALLOUT_INEXTERNALCALL, "RPC_E_CANTCALLOUT_INEXTERNALCALL"},
    };
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned int>(hr));
    for (const auto& entry : names) {
        if (entry.hr == hr) {
            return std::string(entry.name) + " (" + code + ")";
        }
    }
    return code;
}

}  // namespace

testing::AssertionResult isResult(const char*, const char* callText, HRESULT expected,
                                  HRESULT actual) {
    if (expected == actual) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << callText << " gave " << describe(actual) << ", expected " << describe(expected);
}

}  // namespace zr::test
