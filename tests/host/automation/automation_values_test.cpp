// Texts, numbers, objects and results as Automation clients pass and get them. Windows only, as
// Automation is.
#include <cmath>
#include <limits>

#include "tests/host/automation/automation_test.h"
#include "tests/host/automation/script_array.h"

namespace zr::test {
namespace {

class AutomationTextTest : public AutomationTest {};

TEST_F(AutomationTextTest, TextArrivesInFull) {
    EXPECT_ANSWER("X:c3a4f09f9880", call(provider, "fromText", text("ä😀")));
    EXPECT_ANSWER("X:", call(provider, "fromText", text("")));
}

TEST_F(AutomationTextTest, NullTextIsEmpty) {
    EXPECT_ANSWER("X:", call(provider, "fromText", Variant::fromText(zrkey::Text())));
}

TEST_F(AutomationTextTest, ReferenceToATextIsRead) {
    const Text inner("ab");
    BSTR value = inner.get();
    VARIANT once = referenceTo(VT_BSTR, &value);
    EXPECT_ANSWER("X:6162", call(provider, "fromText", once));
    EXPECT_ANSWER("X:6162", call(provider, "fromText", referenceTo(once)));
    BSTR none = nullptr;
    EXPECT_ANSWER("X:", call(provider, "fromText", referenceTo(VT_BSTR, &none)));
}

TEST_F(AutomationTextTest, NumberIsNotAText) {
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(provider, "fromText", integer(123)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(provider, "fromText", Variant::fromBool(true)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(provider, "fromText", bytes("a")));
}

TEST_F(AutomationTextTest, TextWithANulIsAWrongValue) {
    Variant value = Variant::fromText(zrkey::Text());
    value.get().bstrVal = SysAllocStringLen(L"a\0b", 3);
    const Answer answer = call(provider, "fromHex", value);
    EXPECT_EXCEPTION(E_INVALIDARG, answer);
    EXPECT_EQ("fromHex: argument 1 contains a NUL", answer.description);
}

TEST_F(AutomationTextTest, TextWithANulIsWrittenAsItWasRead) {
    const Answer read = call(provider, "toText", bytes(std::string("a\0b", 3)));
    EXPECT_HR(S_OK, read.result);
    EXPECT_ANSWER("X:610062", call(provider, "fromText", read.value));
}

TEST_F(AutomationTextTest, ClosedProviderConverts) {
    EXPECT_ANSWER("B:true", call(provider, "Close"));
    EXPECT_ANSWER("X:6162", call(provider, "fromText", text("ab")));
    EXPECT_ANSWER("S:ab", call(provider, "toText", bytes("ab")));
    EXPECT_ANSWER("S:6162", call(provider, "toHex", bytes("ab")));
    EXPECT_ANSWER("X:6162", call(provider, "fromHex", text("6162")));
    EXPECT_ANSWER("S:YWI=", call(provider, "toBase64", bytes("ab")));
    EXPECT_ANSWER("X:6162", call(provider, "fromBase64", text("YWI=")));
    EXPECT_EXCEPTION(E_UNEXPECTED, call(provider, "GetName"));
}

TEST_F(AutomationTextTest, TextThatIsNotHexIsAWrongValue) {
    const Answer answer = call(provider, "fromHex", text("0g"));
    EXPECT_EXCEPTION(E_INVALIDARG, answer);
    EXPECT_EQ("fromHex: argument 1 is not hex", answer.description);
    EXPECT_EQ("ZRKey.TokenProvider", answer.source);
}

class AutomationNumberTest : public LoadedAutomationTest {
protected:
    /// OpenKey(index) finds a token for 0 alone.
    Answer open(const VARIANT& index) { return call(provider, "OpenKey", index); }
};

VARIANT zero(VARTYPE type) {
    VARIANT variant = {};
    variant.vt = type;
    return variant;
}

TEST_F(AutomationNumberTest, NumberOfEveryTypeIsRead) {
    for (const VARENUM type : {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8,
                               VT_UI8, VT_R4, VT_R8, VT_CY, VT_DECIMAL}) {
        EXPECT_ANSWER("object", open(zero(static_cast<VARTYPE>(type)))) << type;
    }
}

TEST_F(AutomationNumberTest, ReferenceToANumberOfEveryTypeIsRead) {
    for (const VARENUM type : {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8,
                               VT_UI8, VT_R4, VT_R8, VT_CY, VT_DECIMAL}) {
        // Nothing beyond the value is read.
        unsigned char memory[sizeof(DECIMAL)] = {};
        EXPECT_ANSWER("object", open(referenceTo(static_cast<VARTYPE>(type), memory))) << type;
    }
}

TEST_F(AutomationNumberTest, NumberByReferenceIsReadInItsOwnSize) {
    unsigned char memory[] = {0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    EXPECT_ANSWER("object", open(referenceTo(VT_UI1, memory)));
    memory[1] = 0;
    EXPECT_ANSWER("object", open(referenceTo(VT_I2, memory)));
}

TEST_F(AutomationNumberTest, TextIsReadWhenItIsAWholeNumber) {
    EXPECT_ANSWER("object", open(text("0")));
    EXPECT_ANSWER("object", open(text("-0")));
    EXPECT_EXCEPTION(E_FAIL, open(text("12")));
    for (const char* wrong : {"", "-", " 0", "0 ", "0x0", "1.0", "+0", "1e0", "null"}) {
        EXPECT_REFUSED(DISP_E_TYPEMISMATCH, open(text(wrong))) << wrong;
    }
    EXPECT_REFUSED(DISP_E_OVERFLOW, open(text("2147483648")));
    EXPECT_REFUSED(DISP_E_OVERFLOW, open(text("-2147483649")));
    EXPECT_REFUSED(DISP_E_OVERFLOW, open(text(std::string(1000, '9'))));
}

TEST_F(AutomationNumberTest, NumberOfMoreThan32BitsOverflows) {
    for (const double wrong :
         {2147483648.0, -2147483649.0, 1e300, std::numeric_limits<double>::infinity()}) {
        const Answer answer = open(number(wrong));
        EXPECT_HR(DISP_E_OVERFLOW, answer.result) << wrong;
        EXPECT_EQ(0u, answer.position);
    }
}

TEST_F(AutomationNumberTest, FractionIsRefused) {
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, open(number(0.5)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, open(number(std::nan(""))));
}

TEST_F(AutomationNumberTest, OtherValuesAreRefused) {
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, open(Variant::fromBool(false)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, open(zero(VT_NULL)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, open(zero(VT_DATE)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, open(object(provider)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, open(zero(VT_EMPTY)));
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, open(missing()));
}

class AutomationResultTest : public AutomationTokenTest {};

TEST_F(AutomationResultTest, ResultsHaveTheTypesThatEnginesKnow) {
    EXPECT_ANSWER("S:PKCS#11", call(provider, "GetName"));
    EXPECT_ANSWER("N:1", call(provider, "GetKeyCount"));
    EXPECT_ANSWER("N:65536", call(token, "GetTotalSize"));
    module->settings().tokenInfo.ulTotalPublicMemory = CK_UNAVAILABLE_INFORMATION;
    EXPECT_ANSWER("N:4294967295", call(token, "GetTotalSize"));
    EXPECT_ANSWER("L:S:a ", call(token, "EnumContainer"));
    EXPECT_ANSWER("X:41", call(certificate, "GetCertData"));
    EXPECT_ANSWER("object", call(token, "certificates"));
    EXPECT_ANSWER("null", call(certificate, "subject"));
    EXPECT_ANSWER("B:true", call(certificate, "Close"));
}

TEST_F(AutomationResultTest, ObjectThatIsMissingIsANullObject) {
    module->settings().slotCountWhenListed = 0;
    EXPECT_ANSWER("no object", call(provider, "OpenKey", integer(0)));
}

TEST_F(AutomationResultTest, ResultsAreArgumentsAgain) {
    const Answer der = call(certificate, "GetCertData");
    EXPECT_ANSWER("S:41", call(provider, "toHex", der.value));
    EXPECT_ANSWER("S:QQ==", call(provider, "toBase64", der.value));
    EXPECT_ANSWER("S:A", call(provider, "toText", der.value));
}

TEST_F(AutomationResultTest, OnlyOurOwnCertificatesAreAccepted) {
    EXPECT_ANSWER("X:41", call(token, "GetCertData", object(certificate)));
    ScriptArray foreign;
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(token, "GetCertData", foreign.argument()));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(token, "GetCertData", object(token)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(token, "GetCertData", Variant::fromObject({})));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(token, "GetCertData", text("a")));
    EXPECT_EQ(1u, foreign.references());
}

TEST_F(AutomationResultTest, CertificateIsReadThroughEveryKindOfReference) {
    IDispatch* pointer = certificate.get();
    EXPECT_ANSWER("X:41", call(token, "GetCertData", referenceTo(VT_DISPATCH, &pointer)));
    VARIANT unknown = {};
    unknown.vt = VT_UNKNOWN;
    unknown.punkVal = pointer;
    EXPECT_ANSWER("X:41", call(token, "GetCertData", unknown));
    IDispatch* none = nullptr;
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH,
                   call(token, "GetCertData", referenceTo(VT_DISPATCH, &none)));
}

TEST_F(AutomationResultTest, ContainerIsChosenByTextOrNumber) {
    EXPECT_ANSWER("object", call(token, "OpenContainer", text("a")));
    EXPECT_ANSWER("object", call(token, "OpenContainer", integer(0)));
    // A text is a name, never an index.
    EXPECT_EQ(DISP_E_EXCEPTION, call(token, "OpenContainer", text("0")).result);
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(token, "OpenContainer", bytes("a")));
    EXPECT_REFUSED(DISP_E_OVERFLOW, call(token, "OpenContainer", number(1e10)));
}

}  // namespace
}  // namespace zr::test
