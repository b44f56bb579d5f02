// What remains of PINs in memory, and of PINs, data and signatures in the log.
#include <vector>

#include "model/key_object.h"
#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"
#include "tests/support/process_memory.h"

namespace zr::test {
namespace {

// ModifyPIN accepts up to 8 characters.
constexpr std::size_t kShortPin = 8;
// Freed memory is reused from its beginning, so the tests search for the end of a long PIN.
constexpr std::size_t kLongPin = 20;

/// A PIN that exists in one readable copy only; no literal holds it.
class SecretPin {
public:
    explicit SecretPin(int seed, std::size_t length = kLongPin) {
        for (int i = 0; i < static_cast<int>(length); ++i) {
            const auto letter = static_cast<char>('A' + (seed * 7 + i * i * 5 + i) % 26);
            m_narrow.push_back(letter);
            m_wide.push_back(static_cast<OLECHAR>(letter));
        }
        const std::size_t end = length - kShortPin;
        m_maskedNarrow = MaskedBytes(m_narrow.data() + end, kShortPin);
        m_maskedWide = MaskedBytes(m_wide.data() + end, kShortPin * sizeof(OLECHAR));
        m_text = SysAllocStringLen(m_wide.data(), static_cast<UINT>(m_wide.size()));
        wipeCopies();
    }
    SecretPin(const SecretPin&) = delete;
    SecretPin& operator=(const SecretPin&) = delete;
    ~SecretPin() { SysFreeString(m_text); }

    BSTR text() const { return m_text; }
    void wipe() { fill(m_text, SysStringByteLen(m_text)); }
    std::size_t narrowCopies() const { return m_maskedNarrow.countInMemory(); }
    std::size_t wideCopies() const { return m_maskedWide.countInMemory(); }

private:
    static void fill(void* memory, std::size_t size) {
        volatile char* bytes = static_cast<char*>(memory);
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = '-';
        }
    }
    void wipeCopies() {
        fill(m_narrow.data(), m_narrow.size());
        fill(m_wide.data(), m_wide.size() * sizeof(OLECHAR));
    }

    // Reserved at once: growing would leave copies in freed memory.
    std::vector<char> m_narrow = reserved<char>();
    std::vector<OLECHAR> m_wide = reserved<OLECHAR>();
    MaskedBytes m_maskedNarrow{"", 0};
    MaskedBytes m_maskedWide{"", 0};
    BSTR m_text;

    template <class Unit>
    static std::vector<Unit> reserved() {
        std::vector<Unit> units;
        units.reserve(64);
        return units;
    }
};

class SecretsTest : public testing::Test {
protected:
    SecretsTest() {
        folder.writeConfig();
        folder.enableLog();
        provider = makeProvider();
        EXPECT_HR(S_OK, provider->Load(Text(relativePath(ZR_INSTANT_MODULE))));
        EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
    }

    void release() {
        token.reset();
        provider.reset();
    }

    TempDir folder;
    ConsoleCapture console;
    ComRef<ITokenProvider> provider;
    ComRef<IKeyObject> token;
};

TEST_F(SecretsTest, SearchFindsThePinInMemory) {
    SecretPin pin(1);
    EXPECT_EQ(0u, pin.narrowCopies());
    EXPECT_EQ(1u, pin.wideCopies());
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    EXPECT_EQ(1u, pin.narrowCopies());  // the token stores the PIN of its login
    pin.wipe();
    EXPECT_EQ(0u, pin.wideCopies());
}

TEST_F(SecretsTest, ReleaseAfterVerifyPinLeavesNoPinInMemory) {
    SecretPin pin(2);
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    pin.wipe();
    release();
    EXPECT_EQ(0u, pin.narrowCopies());
    EXPECT_EQ(0u, pin.wideCopies());
}

TEST_F(SecretsTest, SecondVerifyPinLeavesNoFirstPinInMemory) {
    SecretPin pin(3);
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    pin.wipe();
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1"), 0));
    EXPECT_EQ(0u, pin.narrowCopies());
}

TEST_F(SecretsTest, ModifyPinLeavesNoNewPinInMemory) {
    SecretPin oldPin(4, kShortPin);
    SecretPin newPin(5, kShortPin);
    EXPECT_HR(S_OK, token->ModifyPIN(oldPin.text(), newPin.text(), 0));
    oldPin.wipe();
    newPin.wipe();
    EXPECT_EQ(0u, newPin.narrowCopies());
    EXPECT_EQ(0u, newPin.wideCopies());
    release();
    EXPECT_EQ(0u, oldPin.narrowCopies());
    EXPECT_EQ(0u, oldPin.wideCopies());
}

TEST_F(SecretsTest, RefusedModifyPinLeavesNoPinInMemory) {
    SecretPin oldPin(6, kShortPin);
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(oldPin.text(), Text("1"), 0));
    oldPin.wipe();
    EXPECT_EQ(0u, oldPin.narrowCopies());
    EXPECT_EQ(0u, oldPin.wideCopies());
}

TEST_F(SecretsTest, ScriptVerifyPinLeavesNoPinInMemory) {
    SecretPin pin(7);
    VARIANT result = {};
    EXPECT_HR(S_OK, invoke(token.get(), idOf(token.get(), "VerifyPIN"),
                           {string(pin.text()), number(0)}, &result));
    pin.wipe();
    release();
    EXPECT_EQ(0u, pin.narrowCopies());
    EXPECT_EQ(0u, pin.wideCopies());
}

TEST_F(SecretsTest, UnloadLeavesNoPinOfALiveTokenInMemory) {
    SecretPin pin(8);
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    pin.wipe();
    EXPECT_EQ(1u, pin.narrowCopies());
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(0u, pin.narrowCopies());
    EXPECT_EQ(0u, pin.wideCopies());
}

TEST_F(SecretsTest, ReleaseOfAnotherProviderOverTheModuleLeavesNoPinInMemory) {
    SecretPin pin(9);
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    pin.wipe();
    ComRef<ITokenProvider> other = makeProvider();
    EXPECT_HR(S_OK, other->Load(Text(relativePath(ZR_INSTANT_MODULE))));
    EXPECT_EQ(1u, pin.narrowCopies());
    other.reset();
    EXPECT_EQ(0u, pin.narrowCopies());
}

TEST_F(SecretsTest, UnloadLeavesNoPinOfATokenThatDeleteFileKeepsInMemory) {
    SecretPin pin(10);
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    pin.wipe();
    EXPECT_HR(S_OK, token->DeleteFile(Text("7")));
    EXPECT_NE(0u, token.release()->Release());
    EXPECT_EQ(1u, pin.narrowCopies());
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(0u, pin.narrowCopies());
    EXPECT_EQ(0u, pin.wideCopies());
}

TEST_F(SecretsTest, CloseKeyLeavesNoPinInMemory) {
    SecretPin pin(11);
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    pin.wipe();
    EXPECT_EQ(1u, pin.narrowCopies());
    // Not part of IKeyObject, but in a slot that compiled hosts call.
    EXPECT_HR(S_OK, static_cast<KeyObject*>(token.get())->CloseKey());
    EXPECT_EQ(0u, pin.narrowCopies());
}

TEST_F(SecretsTest, LogContainsNoPinDataOrSignature) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("PinInTheLog"), 0));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("OldInLog"), Text("NewInLog"), 0));
    ComRef<IKeyCertificate> certificate = openCertificate(token.get(), Variant::fromNumber(0));
    ByteArray signature;
    EXPECT_HR(S_OK, token->SignData(nullptr, ByteArray("DataInTheLog"), certificate.get(),
                                    signature.receive()));
    const std::string signatureBytes = signature.bytes().value();
    ByteArray digest;
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), ByteArray("DataInTheLog"), digest.receive()));
    const std::string digestBytes = digest.bytes().value();
    certificate.reset();
    release();
    const auto files = findLogFiles(folder.home());
    ASSERT_EQ(1u, files.size());
    const std::string log = readText(files[0]);
    EXPECT_NE(log.npos, log.find("[SignData:"));
    for (const std::string& secret :
         {std::string("InTheLog"), std::string("InLog"), signatureBytes, digestBytes}) {
        EXPECT_EQ(log.npos, log.find(secret));
    }
}

}  // namespace
}  // namespace zr::test
