// What the adapter of a container hands to the operation, and what it makes of the answer.
#include "model/key_certificate.h"
#include "tests/unit/model/told_objects.h"

namespace zr::test {
namespace {

class ContainerCallsTest : public testing::Test {
protected:
    ContainerCallsTest() { container->AddRef(); }
    ~ContainerCallsTest() override { container->Release(); }

    HRESULT get(std::vector<VARIANT> arguments) {
        DISPPARAMS params = blockOf(arguments);
        return container->_GetKeyCert(&params, &result);
    }

    static VARIANT flag(VARIANT_BOOL value) {
        VARIANT variant = {};
        variant.vt = VT_BOOL;
        variant.boolVal = value;
        return variant;
    }

    ConsoleCapture console;
    ToldContainer* container = new ToldContainer;
    VARIANT result = poisoned();
};

TEST_F(ContainerCallsTest, TheFlagIsTheFirstArgument) {
    for (const VARIANT_BOOL set : {VARIANT_TRUE, VARIANT_BOOL{1}, VARIANT_BOOL{256}}) {
        EXPECT_HR(S_OK, get({flag(set)}));
    }
    EXPECT_HR(S_OK, get({flag(VARIANT_TRUE), flag(VARIANT_FALSE)}));
    EXPECT_EQ("true true true true ", container->told);
    container->told.clear();
    EXPECT_HR(S_OK, get({flag(VARIANT_FALSE)}));
    EXPECT_HR(S_OK, get({}));
    EXPECT_HR(S_OK, get({flag(VARIANT_FALSE), flag(VARIANT_TRUE)}));
    EXPECT_EQ("false false false ", container->told);
    EXPECT_TRUE(container->wasNull);
}

TEST_F(ContainerCallsTest, TheFlagArrivesThroughInvoke) {
    EXPECT_HR(S_OK, invoke(container, 1, {flag(VARIANT_TRUE)}, &result));
    EXPECT_HR(S_OK, invoke(container, 1, {flag(1)}, &result));
    EXPECT_HR(S_OK, invoke(container, 1, {flag(VARIANT_FALSE)}, &result));
    EXPECT_HR(S_OK, invoke(container, 1, {}, &result));
    EXPECT_EQ("true true false false ", container->told);
}

TEST_F(ContainerCallsTest, TheCodeIsPassedOnAndAFailureLeavesTheResult) {
    auto* certificate = new KeyCertificate(nullptr);
    certificate->AddRef();
    container->answered = certificate;
    container->answer = S_FALSE;
    EXPECT_HR(S_FALSE, get({flag(VARIANT_TRUE)}));
    EXPECT_EQ(VT_DISPATCH, result.vt);
    EXPECT_EQ(static_cast<IDispatch*>(certificate), result.pdispVal);

    container->answer = E_OUTOFMEMORY;
    result = poisoned();
    EXPECT_HR(E_OUTOFMEMORY, get({flag(VARIANT_TRUE)}));
    EXPECT_EQ(VT_UI1, result.vt);
    EXPECT_EQ(poisoned().ullVal, result.ullVal);
    certificate->Release();
}

}  // namespace
}  // namespace zr::test
