// Names, arguments and failures of late-bound calls. Windows only, as Automation is.
#include "tests/host/automation/automation_test.h"

namespace zr::test {
namespace {

class AutomationInvokeTest : public AutomationTokenTest {
protected:
    /// Invoke with any flags and no arguments.
    static Answer invokeAs(const ComRef<IDispatch>& object, const std::string& name, int flags) {
        return invoke(object.get(), findId(object.get(), name), static_cast<WORD>(flags), {});
    }
    static std::vector<VARIANT> list(std::initializer_list<VARIANT> values) { return values; }
};

TEST_F(AutomationInvokeTest, NamesAreNotCaseSensitive) {
    EXPECT_EQ(findId(token.get(), "GetLabel"), findId(token.get(), "gEtLABEL"));
    EXPECT_NE(DISPID_UNKNOWN, findId(token.get(), "GetLabel"));
    EXPECT_EQ(DISPID_UNKNOWN, findId(token.get(), "GetLabe"));
    EXPECT_EQ(DISPID_UNKNOWN, findId(token.get(), ""));
    EXPECT_EQ(DISPID_UNKNOWN, findId(token.get(), "_NewEnum"));
}

TEST_F(AutomationInvokeTest, IdsOfNamesRefusesWrongArguments) {
    wchar_t name[] = L"GetLabel";
    LPOLESTR names[] = {name, nullptr};
    DISPID ids[] = {7, 7};
    EXPECT_HR(DISP_E_UNKNOWNINTERFACE, token->GetIDsOfNames(IID_IDispatch, names, 1, 0, ids));
    EXPECT_HR(E_INVALIDARG, token->GetIDsOfNames(IID_NULL, nullptr, 1, 0, ids));
    EXPECT_HR(E_INVALIDARG, token->GetIDsOfNames(IID_NULL, names, 1, 0, nullptr));
    EXPECT_HR(E_INVALIDARG, token->GetIDsOfNames(IID_NULL, names, 0, 0, ids));
    EXPECT_EQ(7, ids[0]);
    EXPECT_HR(DISP_E_UNKNOWNNAME, token->GetIDsOfNames(IID_NULL, names, 2, 0, ids));
    EXPECT_EQ(1, ids[0]);
    EXPECT_EQ(DISPID_UNKNOWN, ids[1]);
    names[0] = nullptr;
    EXPECT_HR(DISP_E_UNKNOWNNAME, token->GetIDsOfNames(IID_NULL, names, 1, 0, ids));
}

TEST_F(AutomationInvokeTest, NameBeyondAsciiIsUnknown) {
    wchar_t name[] = L"GetLabe\u016C";
    LPOLESTR names[] = {name};
    DISPID id = 7;
    EXPECT_HR(DISP_E_UNKNOWNNAME, token->GetIDsOfNames(IID_NULL, names, 1, 0, &id));
    EXPECT_EQ(DISPID_UNKNOWN, id);
}

TEST_F(AutomationInvokeTest, MemberThatOnlyReadsIsMethodAndProperty) {
    for (const int flags :
         {DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_METHOD | DISPATCH_PROPERTYGET}) {
        EXPECT_ANSWER("S:PKCS#11", invokeAs(provider, "GetName", flags));
        EXPECT_ANSWER("S:PKCS#11", invokeAs(provider, "Name", flags));
        EXPECT_ANSWER("object", invokeAs(provider, "tokens", flags));
        EXPECT_ANSWER("object", invokeAs(token, "certificates", flags));
        EXPECT_HR(S_OK, invokeAs(certificate, "pem", flags).result);
        EXPECT_ANSWER("null", invokeAs(certificate, "subject", flags));
        EXPECT_ANSWER("X:41", invokeAs(certificate, "GetCertData", flags));
    }
}

/// Debuggers and inspectors read every property that they find.
TEST_F(AutomationInvokeTest, ReadingAPropertyRunsNoAction) {
    const ComRef<IDispatch> file = call(token, "OpenFile", text("8")).value.toObject();
    const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
    module.takeCalls();
    for (const char* action :
         {"OpenFile", "EnumFiles", "Lock", "Unlock", "EnumContainer", "VerifyPIN", "Close"}) {
        EXPECT_REFUSED(DISP_E_MEMBERNOTFOUND, invokeAs(token, action, DISPATCH_PROPERTYGET))
            << action;
    }
    for (const char* action : {"readAll", "Flush", "Close"}) {
        EXPECT_REFUSED(DISP_E_MEMBERNOTFOUND, invokeAs(file, action, DISPATCH_PROPERTYGET))
            << action;
    }
    for (const char* action : {"Unload", "Close"}) {
        EXPECT_REFUSED(DISP_E_MEMBERNOTFOUND, invokeAs(provider, action, DISPATCH_PROPERTYGET))
            << action;
    }
    EXPECT_REFUSED(DISP_E_MEMBERNOTFOUND, invokeAs(list, "Close", DISPATCH_PROPERTYGET));
    EXPECT_TRUE(module.takeCalls().empty());
    EXPECT_EXCEPTION(E_NOTIMPL, invokeAs(token, "EnumFiles", DISPATCH_METHOD));
    EXPECT_ANSWER("X:636f6e74656e74", invokeAs(file, "readAll", DISPATCH_METHOD));
    // As VBScript calls a member whose result it uses.
    EXPECT_ANSWER("B:true", invokeAs(list, "Close", DISPATCH_METHOD | DISPATCH_PROPERTYGET));
}

TEST_F(AutomationInvokeTest, ArgumentOfAListIsPassedToItsItem) {
    EXPECT_ANSWER("S:a",
                  call(call(token, "certificates", integer(0)).value.toObject(), "GetCertID"));
    EXPECT_ANSWER("S:PKCS#11", call(provider, "Name"));
    EXPECT_ANSWER("object", call(provider, "tokens", text("0")));
    Variant first = integer(0);
    EXPECT_ANSWER("object", invoke(provider.get(), findId(provider.get(), "tokens"),
                                   DISPATCH_PROPERTYGET, {&first.get(), nullptr, 1, 0}));
    const Answer outside = call(token, "certificates", integer(1));
    EXPECT_EXCEPTION(E_INVALIDARG, outside);
    EXPECT_EQ("Item: argument 1 is outside the list", outside.description);
    module.takeCalls();
    const Answer wrong = call(token, "certificates", text("a"));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, wrong);
    EXPECT_EQ(0u, wrong.position);
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(provider, "tokens", Variant()));
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, call(provider, "tokens", integer(0), integer(0)));
    EXPECT_TRUE(module.takeCalls().empty());
    EXPECT_ANSWER("object", call(provider, "tokens", missing()));
    EXPECT_ANSWER("B:true", call(token, "Close"));
    EXPECT_EXCEPTION(E_UNEXPECTED, call(token, "certificates", integer(0)));
}

TEST_F(AutomationInvokeTest, VariableThatWasNeverSetIsAWrongValue) {
    const Answer only = call(token, "OpenFile", Variant());
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, only);
    EXPECT_EQ(0u, only.position);
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, call(token, "OpenFile", missing()));
    const Answer first = call(token, "VerifyPIN", Variant(), Variant());
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, first);
    EXPECT_EQ(1u, first.position);
    const Answer named =
        invokeNamed(token.get(), "VerifyPIN", list({integer(0), Variant()}), {"pinType", "pin"});
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, named);
    EXPECT_EQ(1u, named.position);
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(AutomationInvokeTest, CallOfAllParametersMayLackTheLast) {
    const Variant name = text("9"), zero = integer(0), data = bytes("x"), any = bytes("y");
    EXPECT_ANSWER("object", call(token, "CreateFile", name, zero, zero, zero, missing()));
    EXPECT_ANSWER("object", call(token, "CreateFile", name, zero, zero, zero, Variant()));
    module.takeCalls();
    // The third is the algorithm, and no signature.
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT,
                   call(token, "VerifyData", data, object(certificate), any, missing()));
    const Answer empty = call(token, "VerifyData", data, object(certificate), any, Variant());
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, empty);
    EXPECT_EQ(0u, empty.position);
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(AutomationInvokeTest, NothingCanBeAssigned) {
    for (const int flags :
         {0, DISPATCH_PROPERTYPUT, DISPATCH_PROPERTYPUTREF, DISPATCH_METHOD | DISPATCH_PROPERTYPUT,
          DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUTREF}) {
        EXPECT_REFUSED(DISP_E_MEMBERNOTFOUND, invokeAs(provider, "Name", flags)) << flags;
    }
}

TEST_F(AutomationInvokeTest, MembersThatDoNotExistAreNotFound) {
    for (const LONG id : {0L, -4L, -1L, 99L, 1000L, 1099L, 0x7fffffffL, -0x7fffffffL}) {
        EXPECT_REFUSED(DISP_E_MEMBERNOTFOUND, invoke(token.get(), id, DISPATCH_METHOD, {})) << id;
    }
}

TEST_F(AutomationInvokeTest, OutPointersMayBeNull) {
    DISPPARAMS none = {};
    const DISPID name = findId(provider.get(), "GetName");
    EXPECT_HR(S_OK, provider->Invoke(name, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr,
                                     nullptr));
    const DISPID failing = findId(token.get(), "Lock");
    EXPECT_HR(DISP_E_EXCEPTION, token->Invoke(failing, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr,
                                              nullptr, nullptr));
    Variant wrong = integer(1);
    DISPPARAMS one = {&wrong.get(), nullptr, 1, 0};
    EXPECT_HR(DISP_E_TYPEMISMATCH, token->Invoke(findId(token.get(), "OpenFile"), IID_NULL, 0,
                                                 DISPATCH_METHOD, &one, nullptr, nullptr, nullptr));
}

TEST_F(AutomationInvokeTest, WrongPointersAreRefused) {
    const DISPID name = findId(provider.get(), "GetName");
    const auto invokeWith = [&](REFIID iid, DISPPARAMS* params) {
        VARIANT result = poisoned();
        const HRESULT answer =
            provider->Invoke(name, iid, 0, DISPATCH_METHOD, params, &result, nullptr, nullptr);
        EXPECT_EQ(VT_EMPTY, result.vt);
        return answer;
    };
    DISPPARAMS params = {};
    EXPECT_HR(DISP_E_UNKNOWNINTERFACE, invokeWith(IID_IDispatch, &params));
    EXPECT_HR(E_INVALIDARG, invokeWith(IID_NULL, nullptr));
    params.cArgs = 1;
    EXPECT_HR(E_INVALIDARG, invokeWith(IID_NULL, &params));
    Variant argument;
    params.rgvarg = &argument.get();
    params.cNamedArgs = 1;
    EXPECT_HR(E_INVALIDARG, invokeWith(IID_NULL, &params));
    DISPID ids[] = {0, 1};
    params.rgdispidNamedArgs = ids;
    params.cNamedArgs = 2;
    EXPECT_HR(E_INVALIDARG, invokeWith(IID_NULL, &params));
}

TEST_F(AutomationInvokeTest, WrongNumberOfArgumentsIsRefused) {
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, call(token, "OpenFile"));
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, call(token, "OpenFile", text("7"), text("8")));
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, call(provider, "GetName", integer(1)));
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, call(token, "VerifyPIN"));
    const std::vector<VARIANT> many(10'000, integer(1).get());
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, invokeNamed(token.get(), "OpenFile", many, {}));
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(AutomationInvokeTest, ArgumentsAtTheEndMayBeLeftOut) {
    EXPECT_ANSWER("B:true", call(token, "VerifyPIN", text("1234"), missing()));
    EXPECT_ANSWER("B:true", call(token, "VerifyPIN", text("1234"), Variant()));
    VARIANT left = missing();
    EXPECT_ANSWER("B:true", call(token, "VerifyPIN", text("1234"), referenceTo(left)));
    EXPECT_ANSWER("S:PKCS#11", call(provider, "GetName", missing(), missing()));
}

TEST_F(AutomationInvokeTest, ArgumentAtFaultIsCountedFromTheLast) {
    const Answer first = call(token, "VerifyPIN", integer(1234), integer(0));
    EXPECT_HR(DISP_E_TYPEMISMATCH, first.result);
    EXPECT_EQ(1u, first.position);
    const Answer last = call(token, "VerifyPIN", text("1234"), text("user"));
    EXPECT_HR(DISP_E_TYPEMISMATCH, last.result);
    EXPECT_EQ(0u, last.position);
    const Answer middle = call(token, "ModifyPIN", text("1234"), missing(), integer(0));
    EXPECT_HR(DISP_E_TYPEMISMATCH, middle.result);
    EXPECT_EQ(1u, middle.position);
    EXPECT_EQ(0u, module.takeCalls().size());
}

TEST_F(AutomationInvokeTest, ParametersThatAreNotUsedMayBeGivenAllTogether) {
    const Answer plain = call(token, "SignData", bytes("x"), object(certificate));
    const Answer whole = call(token, "SignData", text("any"), bytes("x"), object(certificate));
    EXPECT_HR(S_OK, plain.result) << plain.description;
    EXPECT_ANSWER(shown(plain.value), whole);
    EXPECT_ANSWER("L:S:a ", call(token, "EnumContainer", integer(1)));
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, call(token, "CreateFile", text("9"), integer(0)));
    EXPECT_ANSWER("object", call(token, "CreateFile", text("9"), integer(0), text("x"),
                                 Variant::fromObject({}), bytes("a")));
}

TEST_F(AutomationInvokeTest, NamedArgumentsComeInAnyOrder) {
    const Variant pin = text("1234"), type = integer(0), other = text("56789");
    EXPECT_ANSWER("B:true",
                  invokeNamed(token.get(), "VerifyPIN", list({type, pin}), {"PinType", "PIN"}));
    EXPECT_ANSWER("B:true",
                  invokeNamed(token.get(), "VerifyPIN", list({pin, type}), {"pin", "pinType"}));
    EXPECT_ANSWER("B:true", invokeNamed(token.get(), "VerifyPIN", list({type, pin}), {"pinType"}));
    EXPECT_ANSWER("B:true", invokeNamed(token.get(), "VerifyPIN", list({pin}), {"pin"}));
    module.takeCalls();
    invokeNamed(token.get(), "ModifyPIN", list({other, pin}), {"newPin", "oldPin"});
    EXPECT_EQ(1u, module.count("C_SetPIN"));
}

TEST_F(AutomationInvokeTest, NamedArgumentMayBeOneThatIsNotUsed) {
    const Variant data = bytes("x"), algorithm = text("any"), signer = object(certificate);
    const Answer plain = call(token, "SignData", data, signer);
    EXPECT_ANSWER(shown(plain.value),
                  invokeNamed(token.get(), "SignData", list({algorithm, signer, data}),
                              {"algorithm", "cert", "data"}));
    EXPECT_ANSWER(shown(plain.value), invokeNamed(token.get(), "SignData",
                                                  list({algorithm, signer, data}), {"algorithm"}));
    EXPECT_ANSWER(shown(plain.value),
                  invokeNamed(token.get(), "SignData", list({signer, data, algorithm}), {"cert"}));
}

TEST_F(AutomationInvokeTest, NamedArgumentThatIsUnknownOrGivenTwiceIsRefused) {
    const Variant pin = text("1234"), type = integer(0);
    EXPECT_REFUSED(DISP_E_UNKNOWNNAME,
                   invokeNamed(token.get(), "VerifyPIN", list({pin}), {"pine"}));
    Answer answer =
        invokeNamed(token.get(), "VerifyPIN", list({type, pin, pin}), {"pinType", "pin"});
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, answer);
    answer = invokeNamed(token.get(), "VerifyPIN", list({pin, pin}), {"pin", "pin"});
    EXPECT_HR(DISP_E_PARAMNOTFOUND, answer.result);
    EXPECT_EQ(1u, answer.position);
    answer = invokeNamed(token.get(), "VerifyPIN", list({pin, pin}), {"pin"});
    EXPECT_HR(DISP_E_PARAMNOTFOUND, answer.result);
    EXPECT_EQ(0u, answer.position);
    VARIANT arguments[] = {pin};
    for (DISPID id : {DISPID(2), DISPID(-3), DISPID(0x7fffffff)}) {
        EXPECT_REFUSED(DISP_E_PARAMNOTFOUND, invoke(token.get(), findId(token.get(), "VerifyPIN"),
                                                    DISPATCH_METHOD, {arguments, &id, 1, 1}))
            << id;
    }
    EXPECT_EQ(0u, module.takeCalls().size());
}

TEST_F(AutomationInvokeTest, RequiredArgumentThatNoNameGivesIsRefused) {
    const Variant type = integer(0);
    EXPECT_REFUSED(DISP_E_PARAMNOTOPTIONAL,
                   invokeNamed(token.get(), "VerifyPIN", list({type}), {"pinType"}));
    EXPECT_REFUSED(
        DISP_E_PARAMNOTOPTIONAL,
        invokeNamed(token.get(), "VerifyPIN", list({type, missing()}), {"pinType", "pin"}));
}

TEST_F(AutomationInvokeTest, FailureOfTheTokenIsAnException) {
    const Answer answer = call(token, "VerifyPIN", text("9999"));
    EXPECT_EXCEPTION(E_FAIL, answer);
    EXPECT_EQ("ZRKey.Token", answer.source);
    EXPECT_EQ("VerifyPIN failed: E_FAIL (0x80004005)", answer.description);
    EXPECT_EQ(Answer::kUntouched, answer.position);
}

TEST_F(AutomationInvokeTest, ClosedObjectRefusesEveryCall) {
    EXPECT_ANSWER("B:true", call(certificate, "Close"));
    const Answer answer = call(certificate, "pem");
    EXPECT_EXCEPTION(E_UNEXPECTED, answer);
    EXPECT_EQ("ZRKey.Certificate", answer.source);
    EXPECT_EXCEPTION(E_UNEXPECTED, read(certificate, "CertData"));
    EXPECT_EXCEPTION(E_INVALIDARG, call(token, "GetCertData", object(certificate)));
    EXPECT_ANSWER("B:true", call(certificate, "Close"));
}

TEST_F(AutomationInvokeTest, FailureLeavesTheErrorOfTheThreadAlone) {
    SetErrorInfo(0, nullptr);
    EXPECT_EXCEPTION(E_FAIL, call(token, "VerifyPIN", text("9999")));
    ComRef<IErrorInfo> error;
    EXPECT_HR(S_FALSE, GetErrorInfo(0, error.receive()));
}

}  // namespace
}  // namespace zr::test
