// docs/habits.md: calls by name, and what the objects answer to every host.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

using ArgumentsGoInTheirNaturalOrder = SoftTokenTest;
using AMissingArgumentReadsAsZero = SoftTokenTest;
using AKnownNameMayNotBeCallable = SoftTokenTest;
using QueryInterfaceAnswersENOTIMPL = SoftTokenTest;
using TheRuntimeWritesToTheConsole = SoftTokenTest;

HRESULT verifyPin(const ComRef<IKeyObject>& token, const std::vector<VARIANT>& arguments) {
    const ConsoleCapture quiet;
    Variant result;
    const HRESULT hr =
        invoke(token.get(), idOf(token.get(), "VerifyPIN"), arguments, result.receive());
    EXPECT_EQ(hr == S_OK, result.toBool());
    return hr;
}

TEST_F(ArgumentsGoInTheirNaturalOrder, VerifyPinByNameTakesThePinFirst) {
    const Text pin("1234");
    EXPECT_HR(S_OK, verifyPin(token, {string(pin), number(0)}));
    EXPECT_HR(E_INVALIDARG, verifyPin(token, {number(0), string(pin)}));
}

TEST_F(AMissingArgumentReadsAsZero, VerifyPinByNameWithoutATypeLogsInTheUser) {
    const Text pin("1234");
    const Text officersPin("87654321");
    EXPECT_HR(S_OK, verifyPin(token, {string(pin)}));
    EXPECT_HR(E_FAIL, verifyPin(token, {string(officersPin)}));
    EXPECT_HR(S_OK, verifyPin(token, {string(pin), number(0), number(7)}));
    EXPECT_HR(E_INVALIDARG, verifyPin(token, {}));
}

TEST_F(AMissingArgumentReadsAsZero, ProviderRefusesAnotherNumberOfArguments) {
    const ConsoleCapture quiet;
    const DISPID openKey = idOf(provider.get(), "OpenKey");
    Variant result;
    EXPECT_HR(E_INVALIDARG, invoke(provider.get(), openKey, {}, result.receive()));
    EXPECT_HR(E_INVALIDARG,
              invoke(provider.get(), openKey, {number(0), number(0)}, result.receive()));
}

TEST_F(AKnownNameMayNotBeCallable, FourteenKnownNamesFail) {
    const ConsoleCapture quiet;
    for (const char* name :
         {"SetLabel", "ModifyPIN", "CreateFile", "OpenFile", "EnumFiles", "DeleteFile",
          "DigestData", "CreateContainer", "GetContainerCount", "OpenContainer", "DeleteContainer",
          "EnumContainer", "SignData", "VerifyData"}) {
        const DISPID id = idOf(token.get(), name);
        EXPECT_LT(0, id) << name;
        Variant result;
        EXPECT_HR(E_FAIL, invoke(token.get(), id, {}, result.receive())) << name;
    }
}

TEST_F(AKnownNameMayNotBeCallable, NamesInOtherLettersAreUnknown) {
    const ConsoleCapture quiet;
    OLECHAR name[] = OLESTR("getLabel");
    LPOLESTR names = name;
    DISPID id = 0;
    EXPECT_HR(E_FAIL, token->GetIDsOfNames(IID_NULL, &names, 1, 0, &id));
    EXPECT_LT(0, idOf(token.get(), "GetLabel"));
}

TEST_F(QueryInterfaceAnswersENOTIMPL, ObjectsKnowTheErrorInformationInterfaceOnly) {
    for (const IID& iid : {IID_IUnknown, IID_IDispatch, IID_IKeyObject}) {
        void* face = nullptr;
        EXPECT_HR(E_NOTIMPL, token->QueryInterface(iid, &face));
        EXPECT_EQ(nullptr, face);
    }
    ComRef<ISupportErrorInfo> support;
    EXPECT_HR(S_OK, token->QueryInterface(IID_ISupportErrorInfo, support.receive()));
    EXPECT_TRUE(support);
}

TEST_F(QueryInterfaceAnswersENOTIMPL, ProviderStoresItselfWithoutAReference) {
    ComRef<ITokenProvider> other = makeProvider();
    void* face = nullptr;
    EXPECT_HR(E_NOTIMPL, other->QueryInterface(IID_ITokenProvider, &face));
    EXPECT_EQ(other.get(), face);
    EXPECT_EQ(0u, other.release()->Release());
}

TEST_F(TheRuntimeWritesToTheConsole, CallsByNameWriteAndVirtualCallsDoNot) {
    ConsoleCapture virtualCall;
    Text label;
    EXPECT_HR(S_OK, token->GetLabel(label.receive()));
    EXPECT_EQ("", virtualCall.stop().out);
    ConsoleCapture byName;
    Variant result;
    invoke(token.get(), idOf(token.get(), "GetLabel"), {}, result.receive());
    const std::string lines = byName.stop().out;
    EXPECT_NE(std::string::npos, lines.find("[ZComponentImpl::GetIDsOfNames] call in...\n"));
    EXPECT_NE(std::string::npos, lines.find("[ZComponentImpl::Invoke] call in...\n"));
}

}  // namespace
}  // namespace zr::test
