// A name looked up and its member called, beside the system's own dispatch, which does both from a type
// library. The library also writes its console lines: once their time counts, and once the time of writing
// the same lines is taken off.
#include <cstdio>
#include <cstring>
#include <string>

#include "bench/bench_token.h"
#include "bench/comparison.h"

namespace zr::bench {
namespace {

/// A member of two texts that does nothing, as the library's UnlockPIN.
HRESULT STDMETHODCALLTYPE doNothing(void*, BSTR, BSTR, VARIANT_BOOL* result) {
    *result = VARIANT_TRUE;
    return S_OK;
}

/// An object of the interface of tokens in the type library of the Automation server, as the system sees
/// it: a table of functions. The member that is called has the same parameters as this one.
class DescribedToken {
public:
    DescribedToken() {
        for (auto& function : m_functions) {
            function = doNothing;
        }
    }

    void* get() { return &m_table; }

private:
    decltype(&doNothing) m_functions[128];
    const void* m_table = m_functions;
};

zrkey::ComRef<ITypeInfo> describeToken() {
    constexpr IID kToken = {
        0xFD411C38, 0x3FDB, 0x4B8C, {0x8C, 0x3C, 0x71, 0x7D, 0x4A, 0x8F, 0x44, 0xCD}};
    const zrkey::Text path(ZRKEY_TYPE_LIBRARY);
    zrkey::ComRef<ITypeLib> library;
    zrkey::ComRef<ITypeInfo> description;
    require(SUCCEEDED(LoadTypeLibEx(path.get(), REGKIND_NONE, library.receive())) &&
                SUCCEEDED(library->GetTypeInfoOfGuid(kToken, description.receive())),
            "no type library");
    return description;
}

/// What one look-up and one call write.
void writeLines() {
    for (const char* line : {"[ZComponentImpl::GetIDsOfNames] call in...\n",
                             "[ZComponentImpl::GetIDsOfNames] lpszName = [UnlockPIN] ...\n",
                             "[ZComponentImpl::GetIDsOfNames] pre proxy...\n",
                             "[ZComponentImpl::GetIDsOfNames] self...\n",
                             "[ZComponentImpl::GetIDsOfNames] *rgdispid = [13] ...\n",
                             "[ZComponentImpl::Invoke] call in...\n",
                             "[ZComponentImpl::CloneDispParams] call in...\n"}) {
        std::fwrite(line, 1, std::strlen(line), stdout);
    }
}

/// The number of bytes that some work writes on standard output.
template <class Work>
long writtenBy(Work work) {
    std::fflush(stdout);
    const long before = std::ftell(stdout);
    work();
    std::fflush(stdout);
    return std::ftell(stdout) - before;
}

void measureCall(Comparison& comparison, bool hasLines) {
    const OpenToken open(instantModule(1));
    const auto description = describeToken();
    DescribedToken object;
    const zrkey::Text name("UnlockPIN");
    LPOLESTR names = name.get();
    const zrkey::Text describedName("unblockPIN");  // two texts; its UnlockPIN takes a VARIANT
    LPOLESTR describedNames = describedName.get();
    const zrkey::Text pin("12345678");
    VARIANT arguments[2];
    for (VARIANT& argument : arguments) {
        argument.vt = VT_BSTR;
        argument.bstrVal = pin.get();
    }
    DISPPARAMS params = {arguments, nullptr, 2, 0};
    const auto byLibrary = [&] {
        DISPID id = 0;
        zrkey::Variant result;
        require(SUCCEEDED(open.token->GetIDsOfNames(IID_NULL, &names, 1, 0, &id)) &&
                    SUCCEEDED(open.token->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params,
                                                 result.receive(), nullptr, nullptr)) &&
                    result.type() == VT_BOOL,
                "the library does not call");
    };
    const auto bySystem = [&] {
        DISPID id = 0;
        zrkey::Variant result;
        require(SUCCEEDED(DispGetIDsOfNames(description.get(), &describedNames, 1, &id)) &&
                    SUCCEEDED(DispInvoke(object.get(), description.get(), id, DISPATCH_METHOD,
                                         &params, result.receive(), nullptr, nullptr)) &&
                    result.type() == VT_BOOL,
                "the system does not call");
    };
    require(writtenBy(byLibrary) == writtenBy(writeLines), "the library writes other lines");
    if (hasLines) {
        comparison.measure(byLibrary, bySystem);
    } else {
        comparison.measureWithout(writeLines, byLibrary, bySystem);
    }
}

}  // namespace

void typeInformationRows(Bench& bench) {
    constexpr const char* kFloor = "DispGetIDsOfNames and DispInvoke over a type library";
    bench.row({"dispatch/name-and-call", kFloor},
              [](Comparison& comparison) { measureCall(comparison, true); });
    bench.row({"dispatch/name-and-call-without-lines", kFloor},
              [](Comparison& comparison) { measureCall(comparison, false); });
}

}  // namespace zr::bench
