// Failures of early-bound calls. Windows only, as Automation is.
#include "host/automation/interfaces.h"
#include "tests/host/automation/automation_test.h"
#include "tests/host/automation/script_array.h"

namespace zr::test {
namespace {

/// The error object of the thread.
struct ThreadError {
    bool exists = false;
    std::string description;
    std::string source;
    GUID interfaceId = {};
};

ThreadError takeThreadError() {
    ThreadError error;
    ComRef<IErrorInfo> info;
    error.exists = GetErrorInfo(0, info.receive()) == S_OK;
    if (error.exists) {
        zrkey::Text description, source;
        info->GetDescription(description.receive());
        info->GetSource(source.receive());
        info->GetGUID(&error.interfaceId);
        error.description = description.utf8();
        error.source = source.utf8();
    }
    return error;
}

template <class Interface>
ComRef<Interface> query(IUnknown* object) {
    ComRef<Interface> found;
    EXPECT_HR(S_OK, object->QueryInterface(__uuidof(Interface), found.receive()));
    return found;
}

class EarlyErrorTest : public AutomationTokenTest {
protected:
    EarlyErrorTest() {
        EXPECT_HR(S_OK, token->QueryInterface(IID_IZRToken, dual.receive()));
        SetErrorInfo(0, nullptr);
    }

    /// A certificate of another maker.
    static IZRCertificate* asCertificate(IDispatch& object) {
        return reinterpret_cast<IZRCertificate*>(&object);
    }

    ComRef<IZRToken> dual;
    VARIANT_BOOL isTrue = 7;
};

TEST_F(EarlyErrorTest, FailureLeavesAnErrorForTheThread) {
    EXPECT_HR(E_FAIL, dual->VerifyPIN(Text("9999"), 0, &isTrue));
    EXPECT_EQ(VARIANT_FALSE, isTrue);
    const ThreadError error = takeThreadError();
    ASSERT_TRUE(error.exists);
    EXPECT_EQ("VerifyPIN failed: E_FAIL (0x80004005)", error.description);
    EXPECT_EQ("ZRKey.Token", error.source);
    EXPECT_TRUE(IsEqualGUID(IID_IZRToken, error.interfaceId));
}

TEST_F(EarlyErrorTest, SuccessLeavesNoErrorOfAnEarlierCall) {
    EXPECT_HR(E_FAIL, dual->VerifyPIN(Text("9999"), 0, &isTrue));
    EXPECT_HR(S_OK, dual->VerifyPIN(Text("1234"), 0, &isTrue));
    EXPECT_EQ(VARIANT_TRUE, isTrue);
    EXPECT_FALSE(takeThreadError().exists);
}

TEST_F(EarlyErrorTest, WrongValueIsRefusedByItsResult) {
    ComRef<IZRTokenProvider> early;
    ASSERT_HR(S_OK, provider->QueryInterface(IID_IZRTokenProvider, early.receive()));
    VARIANT result = poisoned();
    EXPECT_HR(E_INVALIDARG, early->fromHex(Text("0g"), &result));
    EXPECT_EQ(VT_EMPTY, result.vt);
    EXPECT_EQ("fromHex: argument 1 is not hex", takeThreadError().description);
}

TEST_F(EarlyErrorTest, FailureLeavesTheResultZero) {
    LONG number = 7;
    EXPECT_HR(E_NOTIMPL, dual->Lock(&number));
    EXPECT_EQ(0, number);
}

TEST_F(EarlyErrorTest, WrongArgumentIsNamedByItsNumber) {
    const auto signer = query<IZRCertificate>(certificate.get());
    VARIANT result = poisoned();
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->sign(bytes("x"), nullptr, missing(), &result));
    EXPECT_EQ("sign: argument 2 is not a certificate", takeThreadError().description);
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->sign(integer(1), signer.get(), missing(), &result));
    EXPECT_EQ("sign: argument 1 is not bytes", takeThreadError().description);
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->sign(bytes("x"), signer.get(), integer(1), &result));
    EXPECT_EQ("sign: argument 3 is not a text", takeThreadError().description);
    ComRef<IZRContainer> opened;
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->OpenContainer(bytes("x"), opened.receive()));
    EXPECT_EQ("OpenContainer: argument 1 is not a text or a number", takeThreadError().description);
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->OpenContainer(Variant::fromReal(0.5), opened.receive()));
    EXPECT_EQ("OpenContainer: argument 1 is not a whole number", takeThreadError().description);
    EXPECT_HR(DISP_E_OVERFLOW, dual->OpenContainer(Variant::fromReal(1e10), opened.receive()));
    EXPECT_EQ("OpenContainer: argument 1 does not fit 32 bits", takeThreadError().description);
}

TEST_F(EarlyErrorTest, ListLeavesErrorsAsEveryObject) {
    const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
    const auto early = query<IZRCollection>(list.get());
    EXPECT_HR(E_FAIL, dual->VerifyPIN(Text("9999"), 0, &isTrue));
    ComRef<IUnknown> items;
    EXPECT_HR(S_OK, early->get__NewEnum(items.receive()));
    EXPECT_TRUE(items);
    EXPECT_FALSE(takeThreadError().exists);
    EXPECT_HR(E_POINTER, early->get__NewEnum(nullptr));
    EXPECT_EQ("_NewEnum: the result is a null pointer", takeThreadError().description);
    EXPECT_HR(S_OK, early->Close(&isTrue));
    EXPECT_HR(E_UNEXPECTED, early->get__NewEnum(items.receive()));
    EXPECT_FALSE(items);
    const ThreadError error = takeThreadError();
    EXPECT_EQ("_NewEnum failed: the object was closed", error.description);
    EXPECT_EQ("ZRKey.Collection", error.source);
    EXPECT_TRUE(IsEqualGUID(IID_IZRCollection, error.interfaceId));
}

TEST_F(EarlyErrorTest, NullResultIsRefusedBeforeTheCall) {
    module.takeCalls();
    EXPECT_HR(E_POINTER, dual->VerifyPIN(Text("1234"), 0, nullptr));
    EXPECT_HR(E_POINTER, dual->GetLabel(nullptr));
    EXPECT_HR(E_POINTER, dual->get_certificates(nullptr));
    EXPECT_HR(E_POINTER, dual->EnumContainer(nullptr));
    EXPECT_EQ("EnumContainer: the result is a null pointer", takeThreadError().description);
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(EarlyErrorTest, NullTextIsEmpty) {
    module.takeCalls();
    EXPECT_HR(E_FAIL, dual->VerifyPIN(nullptr, 0, &isTrue));
    const std::vector<std::string> calls = module.takeCalls();
    EXPECT_LT(0, std::ranges::count(calls, "C_Login(1, 1, )"));
    EXPECT_EQ("VerifyPIN failed: E_FAIL (0x80004005)", takeThreadError().description);
}

TEST_F(EarlyErrorTest, OtherObjectThanACertificateIsRefused) {
    VARIANT result = poisoned();
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->GetCertData(nullptr, &result));
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->GetCertData(asCertificate(*token.get()), &result));
    ScriptArray foreign;
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->GetCertData(asCertificate(foreign), &result));
    EXPECT_EQ(1u, foreign.references());
    EXPECT_EQ(VT_EMPTY, result.vt);
}

TEST_F(EarlyErrorTest, ObjectThatClaimsEveryInterfaceIsRefused) {
    class Claimer final : public IDispatch {
    public:
        STDMETHODIMP QueryInterface(REFIID, void** result) override {
            *result = this;
            return S_OK;
        }
        STDMETHODIMP_(ULONG) AddRef() override { return 2; }
        STDMETHODIMP_(ULONG) Release() override { return 1; }
        STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
        STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
        STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
            return E_NOTIMPL;
        }
        STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                            UINT*) override {
            return E_NOTIMPL;
        }
    } claimer;
    VARIANT result = poisoned();
    EXPECT_HR(DISP_E_TYPEMISMATCH, dual->GetCertData(asCertificate(claimer), &result));
}

TEST_F(EarlyErrorTest, MissingObjectIsANullPointer) {
    ComRef<IZRTokenProvider> early;
    ASSERT_HR(S_OK, provider->QueryInterface(IID_IZRTokenProvider, early.receive()));
    module->settings().slotCountWhenListed = 0;
    ComRef<IZRToken> none;
    EXPECT_HR(S_OK, early->OpenKey(0, none.receive()));
    EXPECT_FALSE(none);
}

TEST_F(EarlyErrorTest, OptionalTextMayBeLeftOut) {
    VARIANT_BOOL done = VARIANT_FALSE;
    EXPECT_HR(S_OK, dual->UnlockPIN(Text("8765"), missing(), &done));
    EXPECT_EQ(VARIANT_TRUE, done);
}

}  // namespace
}  // namespace zr::test
