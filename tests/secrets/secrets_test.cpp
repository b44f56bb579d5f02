// What is left of a PIN in the process's memory, and of what was signed in the log.
#include <vector>

#include "tests/contract/token.h"
#include "tests/support/log_file.h"
#include "tests/support/process_memory.h"

namespace zr::test {
namespace {

// As long as PINs may be that are changed.
constexpr std::size_t kShortPin = 8;
// What was freed is reused from its beginning: of a long PIN the end stays, and that is looked for.
constexpr std::size_t kLongPin = 20;

/// A text whose only readable copy is wiped at the end of its life; no literal holds it.
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

    // Room for all of it at once, so that no copy stays behind where it grew.
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
        EXPECT_HR(S_OK, provider->OpenKey(0, reinterpret_cast<void**>(&token)));
    }
    ~SecretsTest() override { release(); }

    void release() {
        if (token) {
            token->Release();
            provider->Release();
            token = nullptr;
        }
    }

    TempDir folder;
    ConsoleCapture console;
    ITokenProvider* provider = nullptr;
    IKeyObject* token = nullptr;
};

TEST_F(SecretsTest, TheSearchFindsWhatIsThere) {
    SecretPin pin(1);
    EXPECT_EQ(0u, pin.narrowCopies());
    EXPECT_EQ(1u, pin.wideCopies());
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    EXPECT_EQ(1u, pin.narrowCopies());  // the token keeps the PIN of its login
    pin.wipe();
    EXPECT_EQ(0u, pin.wideCopies());
}

TEST_F(SecretsTest, NothingOfALoginStaysAfterTheToken) {
    SecretPin pin(2);
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    pin.wipe();
    release();
    EXPECT_EQ(0u, pin.narrowCopies());
    EXPECT_EQ(0u, pin.wideCopies());
}

TEST_F(SecretsTest, TheNextLoginReplacesThePin) {
    SecretPin pin(3);
    EXPECT_HR(S_OK, token->VerifyPIN(pin.text(), 0));
    pin.wipe();
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1"), 0));
    EXPECT_EQ(0u, pin.narrowCopies());
}

TEST_F(SecretsTest, NothingOfTheNewPinStaysAfterAChange) {
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

TEST_F(SecretsTest, ARefusedChangeLeavesNothing) {
    SecretPin oldPin(6, kShortPin);
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(oldPin.text(), Text("1"), 0));
    oldPin.wipe();
    EXPECT_EQ(0u, oldPin.narrowCopies());
    EXPECT_EQ(0u, oldPin.wideCopies());
}

TEST_F(SecretsTest, NothingOfAScriptsArgumentsStays) {
    SecretPin pin(7);
    VARIANT result = {};
    EXPECT_HR(S_OK,
              invoke(token, idOf(token, "VerifyPIN"), {string(pin.text()), number(0)}, &result));
    pin.wipe();
    release();
    EXPECT_EQ(0u, pin.narrowCopies());
    EXPECT_EQ(0u, pin.wideCopies());
}

TEST_F(SecretsTest, TheLogHoldsNoPinNoDataAndNoSignature) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("PinInTheLog"), 0));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("OldInLog"), Text("NewInLog"), 0));
    IKeyContainer* container = nullptr;
    IKeyCertificate* certificate = nullptr;
    VARIANT which = {};
    which.vt = VT_I4;
    ASSERT_HR(S_OK, token->OpenContainer(which, reinterpret_cast<void**>(&container)));
    EXPECT_HR(S_OK, container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)));
    VARIANT signature = {};
    EXPECT_HR(S_OK, token->SignData(nullptr, Bytes("DataInTheLog"), certificate, &signature));
    const std::string signatureBytes = takeBytes(&signature);
    VARIANT digest = {};
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), Bytes("DataInTheLog"), &digest));
    const std::string digestBytes = takeBytes(&digest);
    certificate->Release();
    container->Release();
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
