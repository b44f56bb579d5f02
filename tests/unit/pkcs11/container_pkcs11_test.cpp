// What the adapter of a container passes to the operation, and what it does with the result.
#include "model/key_certificate.h"
#include "tests/support/fixtures/fake_objects.h"

namespace zr::test {
namespace {

class ContainerCallsTest : public testing::Test {
protected:
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
    ComRef<FakeContainer> container = makeObject<FakeContainer>();
    VARIANT result = poisoned();
};

TEST_F(ContainerCallsTest, GetKeyCertTakesTheFlagFromTheFirstArgument) {
    for (const VARIANT_BOOL set : {VARIANT_TRUE, VARIANT_BOOL{1}, VARIANT_BOOL{256}}) {
        EXPECT_HR(S_OK, get({flag(set)}));
    }
    EXPECT_HR(S_OK, get({flag(VARIANT_TRUE), flag(VARIANT_FALSE)}));
    EXPECT_EQ("true true true true ", container->recordedFlags);
    container->recordedFlags.clear();
    EXPECT_HR(S_OK, get({flag(VARIANT_FALSE)}));
    EXPECT_HR(S_OK, get({}));
    EXPECT_HR(S_OK, get({flag(VARIANT_FALSE), flag(VARIANT_TRUE)}));
    EXPECT_EQ("false false false ", container->recordedFlags);
    EXPECT_TRUE(container->recordedNull);
}

TEST_F(ContainerCallsTest, InvokeOfGetKeyCertPassesTheFlag) {
    EXPECT_HR(S_OK, invoke(container.get(), 1, {flag(VARIANT_TRUE)}, &result));
    EXPECT_HR(S_OK, invoke(container.get(), 1, {flag(1)}, &result));
    EXPECT_HR(S_OK, invoke(container.get(), 1, {flag(VARIANT_FALSE)}, &result));
    EXPECT_HR(S_OK, invoke(container.get(), 1, {}, &result));
    EXPECT_EQ("true true false false ", container->recordedFlags);
}

TEST_F(ContainerCallsTest, GetKeyCertReturnsTheCodeAndLeavesTheResultOnFailure) {
    const auto certificate = makeObject<KeyCertificate>(nullptr);
    container->answerCertificate = certificate.get();
    container->answer = S_FALSE;
    EXPECT_HR(S_FALSE, get({flag(VARIANT_TRUE)}));
    EXPECT_EQ(VT_DISPATCH, result.vt);
    EXPECT_EQ(static_cast<IDispatch*>(certificate.get()), result.pdispVal);

    container->answer = E_OUTOFMEMORY;
    result = poisoned();
    EXPECT_HR(E_OUTOFMEMORY, get({flag(VARIANT_TRUE)}));
    EXPECT_EQ(VT_UI1, result.vt);
    EXPECT_EQ(poisoned().ullVal, result.ullVal);
}

}  // namespace
}  // namespace zr::test
