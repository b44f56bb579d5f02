// Names and calls by name, beside a minimal dispatch object that writes the same console lines to the
// same file. Both texts are compared before anything is measured.
#include <zrkey/zrkey.hpp>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "bench/bench_token.h"
#include "bench/comparison.h"
#include "bench/token_members.h"

namespace zr::bench {
namespace {

/// Looks names up and calls members, as simply as the lines allow.
class MinimalDispatch {
public:
    virtual ~MinimalDispatch() = default;

    virtual HRESULT GetIDsOfNames(OLECHAR** names, DISPID* id) {
        char name[64];
        std::size_t length = 0;
        while (length < sizeof name - 1 && names[0][length]) {
            name[length] = static_cast<char>(names[0][length]);
            ++length;
        }
        name[length] = 0;
        write("[ZComponentImpl::GetIDsOfNames] call in...\n");
        std::printf("[ZComponentImpl::GetIDsOfNames] lpszName = [%s] ...\n", name);
        write("[ZComponentImpl::GetIDsOfNames] pre proxy...\n");
        write("[ZComponentImpl::GetIDsOfNames] self...\n");
        for (std::size_t i = 0; i < std::size(kTokenMembers); ++i) {
            if (std::strcmp(kTokenMembers[i], name) == 0) {
                *id = static_cast<DISPID>(i + 1);
                std::printf("[ZComponentImpl::GetIDsOfNames] *rgdispid = [%d] ...\n",
                            static_cast<int>(*id));
                return S_OK;
            }
        }
        write("[ZComponentImpl::GetIDsOfNames] Last Proxy...\n");
        return E_FAIL;
    }

    virtual HRESULT Invoke(DISPID id, DISPPARAMS* params, VARIANT* result) {
        write("[ZComponentImpl::Invoke] call in...\n");
        write("[ZComponentImpl::CloneDispParams] call in...\n");
        VariantInit(result);
        switch (id) {
            case kUnlockPin:
                return unlock(params, result);
            case kGetDigestMethod:
                result->vt = VT_BSTR;
                result->bstrVal = SysAllocString(OLESTR("MD5"));
                return S_OK;
            default:
                return E_FAIL;
        }
    }

private:
    static void write(const char* line) { std::fwrite(line, 1, std::strlen(line), stdout); }

    /// Copies the two texts for the call, and wipes the copies afterwards: they may be PINs.
    static HRESULT unlock(const DISPPARAMS* params, VARIANT* result) {
        for (UINT i = 0; i < 2; ++i) {
            const BSTR text = params->rgvarg[i].bstrVal;
            const BSTR copy = SysAllocStringLen(text, SysStringLen(text));
            require(copy, "no copy");
            std::memset(copy, 0, SysStringByteLen(copy));
            keep(copy);
            SysFreeString(copy);
        }
        result->vt = VT_BOOL;
        result->boolVal = VARIANT_TRUE;
        return S_OK;
    }
};

/// What a function writes to standard output.
template <class Function>
std::string linesOf(Function function) {
    std::fflush(stdout);
    std::rewind(stdout);
    function();
    std::fflush(stdout);
    const long end = std::ftell(stdout);
    std::ifstream file("console.txt", std::ios::binary);
    std::string text(static_cast<std::size_t>(end), '\0');
    file.read(text.data(), end);
    return text;
}

template <class Subject, class Floor>
void measureLines(Comparison& comparison, Subject subject, Floor floor) {
    const std::string lines = linesOf(subject);
    require(!lines.empty() && lines == linesOf(floor), "the two write different lines");
    comparison.measure(subject, floor);
}

void measureName(Comparison& comparison, const OLECHAR* name, HRESULT expected) {
    const OpenToken open(instantModule(1));
    MinimalDispatch minimal;
    MinimalDispatch* const floor = &minimal;
    keep(&floor);
    const zrkey::Text text(name);
    LPOLESTR names = text.get();
    measureLines(
        comparison,
        [&] {
            DISPID id = 0;
            require(open.token->GetIDsOfNames(IID_NULL, &names, 1, 0, &id) == expected,
                    "another result");
            keep(&id);
        },
        [&] {
            DISPID id = 0;
            require(floor->GetIDsOfNames(&names, &id) == expected, "another result");
            keep(&id);
        });
}

void measureCall(Comparison& comparison, DISPID id, UINT texts) {
    const OpenToken open(instantModule(1));
    MinimalDispatch minimal;
    MinimalDispatch* const floor = &minimal;
    keep(&floor);
    VARIANT arguments[2];
    const zrkey::Text pin("12345678");
    for (VARIANT& argument : arguments) {
        argument.vt = VT_BSTR;
        argument.bstrVal = pin.get();
    }
    DISPPARAMS params = {arguments, nullptr, texts, 0};
    HRESULT expected = E_FAIL;
    measureLines(
        comparison,
        [&] {
            zrkey::Variant result;
            expected = open.token->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params,
                                          result.receive(), nullptr, nullptr);
            keep(&result);
        },
        [&] {
            zrkey::Variant result;
            require(floor->Invoke(id, &params, result.receive()) == expected, "another result");
            keep(&result);
        });
}

}  // namespace

void dispatchRows(Bench& bench) {
    constexpr const char* kFloor = "a minimal dispatch that writes the same lines to the same file";
    bench.row({"dispatch/name", kFloor},
              [](Comparison& comparison) { measureName(comparison, OLESTR("SignData"), S_OK); });
    bench.row({"dispatch/missing-name", kFloor},
              [](Comparison& comparison) { measureName(comparison, OLESTR("SignDate"), E_FAIL); });
    bench.row({"dispatch/call", kFloor},
              [](Comparison& comparison) { measureCall(comparison, kGetDigestMethod, 0); });
    bench.row({"dispatch/call-texts", kFloor},
              [](Comparison& comparison) { measureCall(comparison, kUnlockPin, 2); });
}

}  // namespace zr::bench
