// Containers and certificates.
#include "tests/contract/token.h"

namespace zr::test {
namespace {

class TokenContainersTest : public TokenTest {
protected:
    Lines list(INT reserved = 0) {
        VARIANT result = poisoned();
        EXPECT_HR(S_OK, token->EnumContainer(reserved, &result));
        Lines names;
        if (result.vt == (VT_ARRAY | VT_BSTR)) {
            void* data = nullptr;
            SafeArrayAccessData(result.parray, &data);
            for (ULONG i = 0; i < result.parray->rgsabound[0].cElements; ++i) {
                names.push_back(narrow(static_cast<BSTR*>(data)[i]));
            }
            SafeArrayUnaccessData(result.parray);
            VariantClear(&result);
        } else {
            EXPECT_EQ(VT_UI1, result.vt);
        }
        return names;
    }

    ULONG count() {
        VARIANT result = poisoned();
        EXPECT_HR(S_OK, token->GetContainerCount(&result));
        EXPECT_EQ(VT_UI4, result.vt);
        return result.ulVal;
    }

    HRESULT open(const VARIANT& which, IKeyContainer** container) {
        return token->OpenContainer(which, reinterpret_cast<void**>(container));
    }

    static VARIANT index(LONG value, VARTYPE type = VT_I4) {
        VARIANT variant;
        VariantInit(&variant);
        variant.vt = type;
        variant.lVal = value;
        return variant;
    }

    std::string typeOf(const VARIANT& which) {
        IKeyContainer* container = nullptr;
        EXPECT_HR(S_OK, open(which, &container));
        BSTR text = nullptr;
        EXPECT_HR(S_OK, container->GetType(&text));
        container->Release();
        const std::string type = narrow(text);
        SysFreeString(text);
        return type;
    }

    std::string certificateOf(const VARIANT& which) {
        IKeyContainer* container = nullptr;
        EXPECT_HR(S_OK, open(which, &container));
        IKeyCertificate* certificate = nullptr;
        EXPECT_HR(S_OK, container->GetKeyCert(false, reinterpret_cast<void**>(&certificate)));
        container->Release();
        VARIANT data;
        VariantInit(&data);
        EXPECT_HR(S_OK, token->GetCertData(certificate, &data));
        certificate->Release();
        return takeBytes(&data);
    }
};

TEST_F(TokenContainersTest, ATokenWithoutCertificatesHasNone) {
    EXPECT_EQ(0u, count());
    EXPECT_EQ(Lines{}, list());
    IKeyContainer* container = nullptr;
    EXPECT_HR(E_FAIL, open(index(0), &container));
    EXPECT_EQ(nullptr, container);
}

TEST_F(TokenContainersTest, TheWalkAsksForOneCertificateAfterTheOther) {
    module.addCertificate("a", "A");
    module.takeCalls();
    EXPECT_EQ(1u, count());
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=1 0x1=1})", "C_FindObjects(1, 1)",
                     "C_GetAttributeValue(1, 1, {0x0 0x80 0x102})",
                     "C_GetAttributeValue(1, 1, {0x0=0 0x80[] 0x102[]})", "C_FindObjects(1, 1)",
                     "C_FindObjectsFinal(1)"}),
              module.takeCalls());
}

TEST_F(TokenContainersTest, MoreThanThirtyTwoAreListedInOrder) {
    Lines expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back("container " + std::to_string(i));
        module.addCertificate(expected.back(), "x");
    }
    EXPECT_EQ(expected, list());
    EXPECT_EQ(100u, count());
}

TEST_F(TokenContainersTest, NamesEndAtTheFirstZero) {
    module.addCertificate(std::string("ab\0cd", 5), "first");
    module.addCertificate("", "second");
    EXPECT_EQ((Lines{"ab", ""}), list());
    EXPECT_EQ("first", certificateOf(string(Text("ab"))));
    EXPECT_EQ("second", certificateOf(string(Text(""))));
}

TEST_F(TokenContainersTest, OpenedByNameOrByIndex) {
    module.addCertificate("a", "first");
    module.addCertificate("b", "second");
    EXPECT_EQ("first", certificateOf(string(Text("a"))));
    EXPECT_EQ("second", certificateOf(string(Text("b"))));
    EXPECT_EQ("first", certificateOf(index(0)));
    EXPECT_EQ("second", certificateOf(index(1)));
}

TEST_F(TokenContainersTest, WhatDoesNotMatchIsNotOpened) {
    module.addCertificate("a", "first");
    IKeyContainer* container = nullptr;
    const Text wrongName("A");
    for (const VARIANT& which : {index(1), index(-1), index(0, VT_I2), index(0, VT_UI4),
                                 index(0, VT_EMPTY), string(wrongName), string(nullptr)}) {
        EXPECT_HR(E_FAIL, open(which, &container));
    }
    EXPECT_EQ(nullptr, container);
    EXPECT_HR(E_INVALIDARG, token->OpenContainer(index(0), nullptr));
    EXPECT_EQ(2u, token->AddRef());
    token->Release();
}

TEST_F(TokenContainersTest, TwoCertificatesOfOneNameGiveTheFirstsBytes) {
    module.addCertificate("same", "first");
    module.addCertificate("same", "second");
    EXPECT_EQ((Lines{"same", "same"}), list());
    EXPECT_EQ(2u, count());
    EXPECT_EQ("first", certificateOf(index(1)));
}

TEST_F(TokenContainersTest, OfTwoCertificatesOfOneNameTheFirstIsOpened) {
    for (const char* type : {"one", "two"}) {
        module->setAttribute(module.addCertificate("same", type), CKA_CERTIFICATE_TYPE, type, 3);
    }
    const Text name("same");
    EXPECT_EQ("one", typeOf(string(name)));
    EXPECT_EQ("one", typeOf(index(0)));
    EXPECT_EQ("two", typeOf(index(1)));
}

TEST_F(TokenContainersTest, TypesAreTextUpToAZeroOr63Bytes) {
    const CK_OBJECT_HANDLE object = module.addCertificate("a", "A");
    for (const std::size_t length : {62, 63, 64, 65, 1000}) {
        const std::string type(length, 'T');
        module->setAttribute(object, CKA_CERTIFICATE_TYPE, type.data(), length);
        EXPECT_EQ(type.substr(0, 63), typeOf(index(0)));
    }
    module->setAttribute(object, CKA_CERTIFICATE_TYPE, "x\0y", 3);
    EXPECT_EQ("x", typeOf(index(0)));
}

TEST_F(TokenContainersTest, TheReservedArgumentMakesNoDifference) {
    module.addCertificate("a", "A");
    module.addCertificate("b", "B");
    EXPECT_EQ((Lines{"a", "b"}), list(1));
    EXPECT_EQ((Lines{"a", "b"}), list(0));
}

TEST_F(TokenContainersTest, LongNamesAreListedButOpenedUpTo127Bytes) {
    const std::string fits(127, 'a');
    const std::string tooLong(128, 'b');
    const std::string huge(4096, 'c');
    for (const auto& name : {fits, tooLong, huge}) {
        module.addCertificate(name, "x");
    }
    EXPECT_EQ((Lines{fits, tooLong, huge}), list());
    EXPECT_EQ("x", certificateOf(index(0)));
    IKeyContainer* container = nullptr;
    EXPECT_HR(E_FAIL, open(index(1), &container));
    EXPECT_HR(E_FAIL, open(string(Text(huge)), &container));
}

TEST_F(TokenContainersTest, AContainerAnswersItsOperations) {
    module.addCertificate("a", "first");
    IKeyContainer* container = nullptr;
    EXPECT_HR(S_OK, open(index(0), &container));
    BSTR type = nullptr;
    EXPECT_HR(S_OK, container->GetType(&type));
    EXPECT_EQ("", narrow(type));
    SysFreeString(type);
    EXPECT_HR(E_INVALIDARG, container->GetType(nullptr));
    EXPECT_HR(E_INVALIDARG, container->GetKeyCert(true, nullptr));
    EXPECT_HR(E_NOTIMPL, container->GenKeyPair(nullptr));
    EXPECT_HR(E_NOTIMPL, container->ExportCertificate(true, nullptr));
    EXPECT_HR(E_NOTIMPL, container->ImportCertificate(true, index(0)));
    IKeyCertificate* first = nullptr;
    IKeyCertificate* second = nullptr;
    container->GetKeyCert(true, reinterpret_cast<void**>(&first));
    container->GetKeyCert(false, reinterpret_cast<void**>(&second));
    EXPECT_NE(first, second);
    EXPECT_HR(S_OK, container->Close());
    EXPECT_EQ(2u, container->Release());
    BSTR id = nullptr;
    EXPECT_HR(S_OK, first->GetCertID(&id));
    EXPECT_EQ("a", narrow(id));
    SysFreeString(id);
    EXPECT_HR(E_INVALIDARG, first->GetCertID(nullptr));
    EXPECT_HR(E_INVALIDARG, first->GetCertData(nullptr));
    module->removeObject(1);
    VARIANT data = poisoned();
    EXPECT_HR(E_FAIL, first->GetCertData(&data));
    EXPECT_EQ(VT_UI1, data.vt);
    first->Release();
    second->Release();
}

TEST_F(TokenContainersTest, ScriptsReachTheCertificate) {
    const ConsoleCapture console;
    module.addCertificate("a", "first");
    IKeyContainer* container = nullptr;
    EXPECT_HR(S_OK, open(index(0), &container));
    EXPECT_EQ(1, idOf(container, "GetKeyCert"));
    VARIANT result;
    EXPECT_HR(S_OK, invoke(container, 1, {index(-1, VT_BOOL)}, &result));
    ASSERT_EQ(VT_DISPATCH, result.vt);
    IDispatch* certificate = result.pdispVal;
    EXPECT_EQ(1, idOf(certificate, "GetCertID"));
    EXPECT_EQ(2, idOf(certificate, "GetCertData"));
    VARIANT value;
    EXPECT_HR(S_OK, invoke(certificate, 1, {}, &value));
    EXPECT_EQ("a", narrow(value.bstrVal));
    VariantClear(&value);
    EXPECT_HR(S_OK, invoke(certificate, 2, {}, &value));
    EXPECT_EQ("first", takeBytes(&value));
    VariantClear(&result);
    container->Release();
}

TEST_F(TokenContainersTest, EveryFailingCallEndsTheWalkAndClosesIt) {
    module.addCertificate("a", "A");
    module.addCertificate("b", "B");
    for (unsigned int nth = 1; nth <= 4; ++nth) {
        module->fail("C_GetAttributeValue", nth, CKR_DEVICE_REMOVED);
        EXPECT_EQ(nth <= 2 ? 0u : 1u, count()) << nth;
        EXPECT_FALSE(module->isSearchOpen());
        module->reset();
        token->Release();
        EXPECT_HR(S_OK, provider->OpenKey(0, reinterpret_cast<void**>(&token)));
        module.addCertificate("a", "A");
        module.addCertificate("b", "B");
    }
    module->fail("C_FindObjects", 2, CKR_DEVICE_REMOVED);
    EXPECT_EQ(1u, count());
    module->settings().foundCount = 2;
    EXPECT_EQ(0u, count());
}

TEST_F(TokenContainersTest, LengthsThatLieStayInBounds) {
    module.addCertificate("abc", "A");
    auto& settings = module->settings();
    settings.lyingType = CKA_ID;
    for (const auto lie : {RecordingModule::Settings::onQuery, RecordingModule::Settings::onRead,
                           RecordingModule::Settings::always}) {
        settings.lie = lie;
        for (const CK_ULONG length : {CK_ULONG{0}, CK_ULONG{1}, CK_ULONG{2}, CK_ULONG{1000},
                                      CK_ULONG{0x80000000}, CK_UNAVAILABLE_INFORMATION}) {
            settings.lyingLength = length;
            EXPECT_LE(list().size(), 1u);
            EXPECT_FALSE(module->isSearchOpen());
        }
    }
}

TEST_F(TokenContainersTest, AWalkContinuesAndClosesASearchLeftOpen) {
    module.addData("6", "x");
    module.addCertificate("a", "A");
    VARIANT exists;
    EXPECT_HR(S_OK, token->FileExists(Text("7"), &exists));
    EXPECT_TRUE(module->isSearchOpen());
    EXPECT_EQ(0u, count());
    EXPECT_FALSE(module->isSearchOpen());
    EXPECT_EQ(1u, count());
}

TEST_F(TokenContainersTest, MissingResultsAreRefusedWithoutACall) {
    VARIANT result = poisoned();
    EXPECT_HR(E_INVALIDARG, token->GetContainerCount(nullptr));
    EXPECT_HR(E_INVALIDARG, token->EnumContainer(0, nullptr));
    EXPECT_HR(E_INVALIDARG, token->GetCertData(nullptr, &result));
    EXPECT_EQ(Lines{}, module.takeCalls());
    EXPECT_EQ(VT_UI1, result.vt);
}

TEST_F(SigningTokenTest, CertificateDataWithoutAResultAreRefused) {
    EXPECT_HR(E_INVALIDARG, token->GetCertData(certificate, nullptr));
    EXPECT_EQ(Lines{}, module.takeCalls());
}

}  // namespace
}  // namespace zr::test
