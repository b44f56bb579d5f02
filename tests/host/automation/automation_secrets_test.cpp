// What remains of a PIN in memory after an Automation client used it. Windows only, as Automation is.
#include "host/automation/interfaces.h"
#include "tests/host/automation/automation_test.h"
#include "tests/support/process_memory.h"

namespace zr::test {
namespace {

constexpr UINT kPinSize = 20;
/// Freed memory is reused from its beginning, so the tests search for the end of the PIN.
constexpr UINT kSearched = 12;

/// A PIN that no literal and no other variable contains. Its letters are computed one at a time.
OLECHAR letter(int seed, UINT i) {
    return static_cast<OLECHAR>('A' + (static_cast<UINT>(seed) * 7 + i * i * 5 + i) % 26);
}

/// The client's own copy of the PIN, erased on destruction.
class ClientPin {
public:
    explicit ClientPin(int seed) : m_text(SysAllocStringLen(nullptr, kPinSize)) {
        for (UINT i = 0; i < kPinSize; ++i) {
            m_text[i] = letter(seed, i);
        }
    }
    ~ClientPin() {
        SecureZeroMemory(m_text, kPinSize * sizeof(OLECHAR));
        SysFreeString(m_text);
    }
    ClientPin(const ClientPin&) = delete;
    ClientPin& operator=(const ClientPin&) = delete;

    BSTR get() const { return m_text; }
    VARIANT argument() const { return string(m_text); }

private:
    BSTR m_text;
};

template <class Unit>
std::size_t copies(int seed) {
    Unit units[kSearched] = {};
    for (UINT i = 0; i < kSearched; ++i) {
        units[i] = static_cast<Unit>(letter(seed, kPinSize - kSearched + i));
    }
    const MaskedBytes masked(units, sizeof units);
    SecureZeroMemory(units, sizeof units);
    return masked.countInMemory();
}

void expectNoCopy(int seed) {
    EXPECT_EQ(0u, copies<char>(seed));
    EXPECT_EQ(0u, copies<OLECHAR>(seed));
}

class AutomationSecretsTest : public testing::Test {
protected:
    AutomationSecretsTest() {
        folder.writeConfig();
        EXPECT_ANSWER("B:true", call(provider, "Load", text(relativePath(ZR_INSTANT_MODULE))));
        token = call(provider, "OpenKey", integer(0)).value.toObject();
    }

    /// The token keeps the PIN of a login for calls beside the library, until it is closed.
    void close() { EXPECT_ANSWER("B:true", call(token, "Close")); }

    const Apartment apartment;
    TempDir folder;
    ComRef<IDispatch> provider = makeAutomationProvider();
    ComRef<IDispatch> token;
};

TEST_F(AutomationSecretsTest, SearchFindsThePinOfTheClient) {
    {
        const ClientPin pin(1);
        EXPECT_LE(1u, copies<OLECHAR>(1));
    }
    expectNoCopy(1);
}

TEST_F(AutomationSecretsTest, LoginLeavesNoPin) {
    EXPECT_ANSWER("B:true", call(token, "VerifyPIN", ClientPin(2).argument()));
    close();
    expectNoCopy(2);
}

TEST_F(AutomationSecretsTest, LoginByReferenceLeavesNoPin) {
    {
        const ClientPin pin(3);
        VARIANT once = pin.argument();
        EXPECT_ANSWER("B:true", call(token, "VerifyPIN", referenceTo(once), text("0")));
    }
    close();
    expectNoCopy(3);
}

TEST_F(AutomationSecretsTest, EarlyBoundLoginLeavesNoPin) {
    ComRef<IZRToken> dual;
    ASSERT_HR(S_OK, token->QueryInterface(IID_IZRToken, dual.receive()));
    VARIANT_BOOL done = VARIANT_FALSE;
    EXPECT_HR(S_OK, dual->VerifyPIN(ClientPin(4).get(), 0, &done));
    EXPECT_HR(E_INVALIDARG, dual->VerifyPIN(ClientPin(4).get(), 2, &done));
    close();
    expectNoCopy(4);
}

TEST_F(AutomationSecretsTest, PinInAWrongPlaceLeavesNoCopy) {
    const ClientPin pin(5);
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(token, "VerifyPIN", text("1234"), pin.argument()));
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT,
                   call(token, "VerifyPIN", pin.argument(), integer(0), integer(0)));
    EXPECT_REFUSED(DISP_E_TYPEMISMATCH, call(provider, "toHex", pin.argument()));
    EXPECT_EQ(0u, copies<char>(5));
    // The client's own.
    EXPECT_EQ(1u, copies<OLECHAR>(5));
}

}  // namespace
}  // namespace zr::test
