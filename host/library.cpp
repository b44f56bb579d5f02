// What the command asks of the component library itself: a provider, and names for its results.
#include "library.h"

#include <cstdio>

namespace zr::host {
namespace {

struct ResultName {
    HRESULT result;
    const char* name;
};

constexpr ResultName kResultNames[] = {
    {S_OK, "S_OK"},
    {E_NOTIMPL, "E_NOTIMPL"},
    {E_NOINTERFACE, "E_NOINTERFACE"},
    {E_POINTER, "E_POINTER"},
    {E_FAIL, "E_FAIL"},
    {E_UNEXPECTED, "E_UNEXPECTED"},
    {E_OUTOFMEMORY, "E_OUTOFMEMORY"},
    {E_INVALIDARG, "E_INVALIDARG"},
    {RPC_E_CANTCALLOUT_INEXTERNALCALL, "RPC_E_CANTCALLOUT_INEXTERNALCALL"},
    {DISP_E_TYPEMISMATCH, "DISP_E_TYPEMISMATCH"},
    {DISP_E_EXCEPTION, "DISP_E_EXCEPTION"},
    {DISP_E_OVERFLOW, "DISP_E_OVERFLOW"},
};

}  // namespace

HRESULT createProvider(ComRef<ITokenProvider>& provider) {
    ComRef<IClassFactory> factory;
    HRESULT result = ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, factory.receive());
    if (SUCCEEDED(result)) {
        result = factory->CreateInstance(nullptr, IID_ITokenProvider, provider.receive());
    }
    return result;
}

std::string resultName(HRESULT result) {
    for (const ResultName& row : kResultNames) {
        if (row.result == result) {
            return row.name;
        }
    }
    return {};
}

std::string resultNumber(HRESULT result) {
    char number[16];
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(result));
    return number;
}

std::string resultText(HRESULT result) {
    const std::string name = resultName(result);
    return name.empty() ? resultNumber(result) : name + " (" + resultNumber(result) + ")";
}

}  // namespace zr::host
