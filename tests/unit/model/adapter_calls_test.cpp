// The arguments that adapters pass to the operations, and the results they return.
#include <memory>

#include "tests/support/fixtures/fake_objects.h"

namespace zr::test {
namespace {

class AdapterCallsTest : public testing::Test {
protected:
    AdapterCallsTest() {
        token->AddRef();
        provider->AddRef();
    }
    ~AdapterCallsTest() override {
        provider->Release();
        token->Release();
    }

    HRESULT call(const char* name, std::vector<VARIANT> arguments = {}) {
        return invoke(token, idOf(token, name), std::move(arguments), &result);
    }

    HRESULT callProvider(const char* name, std::vector<VARIANT> arguments = {}) {
        return invoke(provider, idOf(provider, name), std::move(arguments), &result);
    }

    void expectOutcome(VARIANT_BOOL outcome) const {
        EXPECT_EQ(VT_BOOL, result.vt);
        EXPECT_EQ(outcome, result.boolVal);
    }

    TempDir folder;
    ConsoleCapture console;
    FakeToken* token = new FakeToken;
    FakeProvider* provider = new FakeProvider;
    VARIANT result = poisoned();
    const Text one{"one"};
    const Text two{"two"};
};

TEST_F(AdapterCallsTest, TypedGettersPassTheNumberAndTheResult) {
    VARIANT unsignedNumber = {};
    unsignedNumber.vt = VT_UI4;
    unsignedNumber.ulVal = 4000000000;
    const std::pair<const char*, const char*> members[] = {
        {"GetMaxRetryCount", "max "},
        {"GetRemainRetryCount", "remain "},
        {"IsDefaultPIN", "default "},
    };
    for (const HRESULT answer : {S_OK, S_FALSE, E_OUTOFMEMORY}) {
        token->answer = answer;
        for (const auto& [name, expected] : members) {
            token->recordedResult = nullptr;
            EXPECT_HR(answer, call(name, {number(7)}));
            EXPECT_EQ(expected + std::string("7"), token->recordedCall);
            EXPECT_EQ(&result, token->recordedResult);
            // The low 32 bits, whatever the type of the variant.
            EXPECT_HR(answer, call(name, {unsignedNumber}));
            EXPECT_EQ(expected + std::string("-294967296"), token->recordedCall);
        }
    }
}

TEST_F(AdapterCallsTest, OtherOperationsPassTheResult) {
    const std::pair<const char*, const char*> members[] = {
        {"GetTotalSize", "total"},
        {"GetFreeSize", "free"},
        {"Lock", "lock"},
        {"Unlock", "unlock"},
    };
    for (const HRESULT answer : {S_OK, S_FALSE, E_OUTOFMEMORY}) {
        token->answer = answer;
        for (const auto& [name, expected] : members) {
            token->recordedResult = nullptr;
            EXPECT_HR(answer, call(name));
            EXPECT_EQ(expected, token->recordedCall);
            EXPECT_EQ(&result, token->recordedResult);
        }
        EXPECT_HR(answer, call("FileExists", {string(one)}));
        EXPECT_EQ("exists one", token->recordedCall);
        EXPECT_EQ(&result, token->recordedResult);
    }
}

TEST_F(AdapterCallsTest, TextGettersPassOwnershipAfterAnySuccess) {
    const std::pair<const char*, const char*> members[] = {
        {"GetSerialNumber", "serial"},  {"GetLabel", "label"},
        {"GetManufacturerID", "maker"}, {"GetModelID", "model"},
        {"GetDigestMethod", "digest"},  {"GetSignAlgo", "algo"},
    };
    for (const auto& [name, expected] : members) {
        for (const HRESULT answer : {S_OK, S_FALSE}) {
            token->answer = answer;
            EXPECT_HR(S_OK, call(name));
            ASSERT_EQ(VT_BSTR, result.vt) << name;
            EXPECT_EQ(expected, narrow(result.bstrVal));
            VariantClear(&result);
        }
        token->answer = E_OUTOFMEMORY;
        EXPECT_HR(E_OUTOFMEMORY, call(name));
        EXPECT_EQ(VT_EMPTY, result.vt) << name;
    }
}

TEST_F(AdapterCallsTest, PinOperationsPassThePinsInOrder) {
    for (const HRESULT answer : {S_OK, S_FALSE}) {
        token->answer = answer;
        EXPECT_HR(S_OK, call("UnlockPIN", {string(one), string(two)}));
        EXPECT_EQ("unlock one two", token->recordedCall);
        expectOutcome(VARIANT_TRUE);
        EXPECT_HR(S_OK, call("VerifyPIN", {string(one), number(1)}));
        EXPECT_EQ("verify one 1", token->recordedCall);
        expectOutcome(VARIANT_TRUE);
    }
}

TEST_F(AdapterCallsTest, OperationsWithoutATypePassZero) {
    EXPECT_HR(S_OK, call("VerifyPIN", {string(one)}));
    EXPECT_EQ("verify one 0", token->recordedCall);
    expectOutcome(VARIANT_TRUE);
    for (const auto& [name, expected] :
         {std::pair{"GetMaxRetryCount", "max 0"}, std::pair{"GetRemainRetryCount", "remain 0"},
          std::pair{"IsDefaultPIN", "default 0"}}) {
        EXPECT_HR(S_OK, call(name)) << name;
        EXPECT_EQ(expected, token->recordedCall);
        EXPECT_EQ(&result, token->recordedResult);
    }
}

TEST_F(AdapterCallsTest, UnlockPinWithoutANewPinPassesNull) {
    EXPECT_HR(S_OK, call("UnlockPIN", {string(one)}));
    EXPECT_EQ("unlock one (null)", token->recordedCall);
    expectOutcome(VARIANT_TRUE);
}

TEST_F(AdapterCallsTest, AdaptersCalledDirectlyReadOnlyTheGivenArguments) {
    // One argument on the heap: the address sanitizer reports a read after it.
    const auto argument = std::make_unique<VARIANT>(string(one));
    DISPPARAMS params = {};
    params.rgvarg = argument.get();
    params.cArgs = 1;
    EXPECT_HR(S_OK, token->_VerifyPIN(&params, &result));
    EXPECT_EQ("verify one 0", token->recordedCall);
    EXPECT_HR(S_OK, token->_UnlockPIN(&params, &result));
    EXPECT_EQ("unlock one (null)", token->recordedCall);
    params = {};
    EXPECT_HR(S_OK, token->_IsDefaultPIN(&params, &result));
    EXPECT_EQ("default 0", token->recordedCall);
}

TEST_F(AdapterCallsTest, OperationsWithoutTheirFirstTextReturnInvalidArgument) {
    for (const char* name : {"VerifyPIN", "UnlockPIN", "FileExists"}) {
        EXPECT_HR(E_INVALIDARG, call(name)) << name;
    }
    EXPECT_EQ("", token->recordedCall);
}

TEST_F(AdapterCallsTest, UnlockPinWithANewPinOfAnotherTypeReturnsInvalidArgument) {
    EXPECT_HR(E_INVALIDARG, call("UnlockPIN", {string(one), VARIANT()}));
    EXPECT_HR(E_INVALIDARG, call("UnlockPIN", {string(one), number(0)}));
    EXPECT_EQ("", token->recordedCall);
}

TEST_F(AdapterCallsTest, FailingPinOperationsReturnTheFailureAndFalse) {
    token->answer = E_OUTOFMEMORY;
    EXPECT_HR(E_OUTOFMEMORY, call("UnlockPIN", {string(one), string(two)}));
    expectOutcome(VARIANT_FALSE);
    EXPECT_HR(E_OUTOFMEMORY, call("VerifyPIN", {string(one), number(1)}));
    expectOutcome(VARIANT_FALSE);
}

TEST_F(AdapterCallsTest, UnlockPinAdapterWithInvalidArgumentsSetsTheResultToFalse) {
    std::vector<VARIANT> numbers = {number(1), number(2)};
    DISPPARAMS params = blockOf(numbers);
    for (DISPPARAMS* block : {static_cast<DISPPARAMS*>(nullptr), &params}) {
        result = poisoned();
        EXPECT_HR(E_INVALIDARG, token->_UnlockPIN(block, &result));
        expectOutcome(VARIANT_FALSE);
    }
    EXPECT_EQ("", token->recordedCall);
}

TEST_F(AdapterCallsTest, ProviderOperationsWithAnySuccessReturnOk) {
    provider->answerToken = token;
    for (const HRESULT answer : {S_OK, S_FALSE}) {
        provider->answer = answer;
        EXPECT_HR(S_OK, callProvider("Load", {string(one)}));
        expectOutcome(VARIANT_TRUE);
        EXPECT_HR(S_OK, callProvider("Unload"));
        expectOutcome(VARIANT_TRUE);
        EXPECT_HR(S_OK, callProvider("OpenKey", {number(3)}));
        EXPECT_EQ(3, provider->recordedIndex);
        EXPECT_EQ(VT_DISPATCH, result.vt);
        EXPECT_EQ(static_cast<IDispatch*>(token), result.pdispVal);
        EXPECT_HR(S_OK, callProvider("GetKeyCount"));
        EXPECT_EQ(VT_I4, result.vt);
        EXPECT_EQ(5, result.lVal);
    }
}

TEST_F(AdapterCallsTest, FailingProviderOperationsReturnTheFailureAndZero) {
    provider->answerToken = token;
    provider->answer = E_OUTOFMEMORY;
    const struct {
        const char* name;
        std::vector<VARIANT> arguments;
        VARTYPE type;
    } calls[] = {
        {"Load", {string(one)}, VT_BOOL},
        {"Unload", {}, VT_BOOL},
        {"OpenKey", {number(0)}, VT_DISPATCH},
        {"GetKeyCount", {}, VT_I4},
    };
    for (const auto& entry : calls) {
        EXPECT_HR(E_OUTOFMEMORY, callProvider(entry.name, entry.arguments));
        EXPECT_EQ(entry.type, result.vt) << entry.name;
        EXPECT_EQ(0u, result.ullVal) << entry.name;
    }
}

TEST_F(AdapterCallsTest, ProviderWithoutABackendIsNotImplemented) {
    TokenProvider* bare = new TokenProvider;
    bare->AddRef();
    EXPECT_HR(E_NOTIMPL, invoke(bare, 2, {}, &result));
    expectOutcome(VARIANT_FALSE);
    EXPECT_HR(E_NOTIMPL, invoke(bare, 4, {}, &result));
    EXPECT_EQ(VT_I4, result.vt);
    EXPECT_EQ(0, result.lVal);
    bare->Release();
}

}  // namespace
}  // namespace zr::test
