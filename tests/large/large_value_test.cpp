// Values of 64 MiB and more, and arrays as hosts may make them.
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>

#include "runtime/md5.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

constexpr std::size_t kLarge = std::size_t{64} << 20;

std::string largeContent() {
    // No zero byte: it would end the text in the record of the module.
    std::string content(kLarge, '\0');
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i % 251 + 1);
    }
    return content;
}

class LargeValueTest : public SigningTokenTest {
protected:
    /// Signs, verifies and digests an array; the module must receive the content.
    void expectUsedAs(const std::string& content, const VARIANT& data) {
        module.takeCalls();
        EXPECT_HR(S_OK, token->SignData(nullptr, data, certificate.get(), result.receive()));
        EXPECT_TRUE(module.takeCalls().back() == "C_Sign(1, [" + content + "], 1024)");
        const ByteArray signature(result.bytes().value());
        EXPECT_HR(S_OK, token->VerifyData(data, certificate.get(), nullptr, signature));
        EXPECT_TRUE(module.takeCalls().back() == "C_Verify(1, [" + content + "], 256)");
        EXPECT_HR(S_OK, token->DigestData(Text("MD5"), data, result.receive()));
        EXPECT_EQ(md5Of(content), result.bytes());
    }

    static std::string md5Of(const std::string& content) {
        std::string digest(16, '\0');
        MD5Data(content.data(), static_cast<unsigned int>(content.size()),
                reinterpret_cast<unsigned char*>(digest.data()));
        return digest;
    }
};

TEST_F(LargeValueTest, ReadOf64MiBReturnsAllBytesAndTheLastOnes) {
    const std::string content = largeContent();
    module.addData("1", content);
    ComRef<IKeyFile> file;
    ASSERT_HR(S_OK, token->OpenFile(Text("2"), file.receive()));
    EXPECT_HR(S_OK, file->GetSize(result.receive()));
    EXPECT_EQ(static_cast<LONG>(kLarge), result.get().lVal);
    EXPECT_HR(S_OK, file->Seek(-5, 2));
    EXPECT_HR(S_OK, file->Read(5, result.receive()));
    EXPECT_EQ(content.substr(kLarge - 5), result.bytes());
    EXPECT_HR(S_OK, file->Seek(0, 2));
    EXPECT_HR(S_OK, file->Read(static_cast<ULONG>(kLarge), result.receive()));
    EXPECT_TRUE(content == result.bytes());
    VARIANT untouched = poisoned();
    EXPECT_HR(E_FAIL, file->Read(1, &untouched));
    EXPECT_EQ(VT_UI1, untouched.vt);
}

TEST_F(LargeValueTest, SignVerifyAndDigestOf64MiBUseAllBytes) {
    const std::string content = largeContent();
    expectUsedAs(content, ByteArray(content));
}

TEST(LargeDigestTest, Md5UpdateWith512MiBCarriesTheBitCount) {
    constexpr unsigned int length = 1u << 29;
    const std::unique_ptr<void, decltype(&std::free)> zeros(std::calloc(length, 1), std::free);
    ASSERT_TRUE(zeros);
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, static_cast<const unsigned char*>(zeros.get()), length);
    EXPECT_EQ(0u, context.count[0]);
    EXPECT_EQ(1u, context.count[1]);
    unsigned char digest[16];
    MD5Final(digest, &context);
    // The result of md5sum.
    const unsigned char expected[16] = {0xaa, 0x55, 0x9b, 0x4e, 0x35, 0x23, 0xa6, 0xc9,
                                        0x31, 0xf0, 0x8f, 0x4d, 0xf5, 0x2d, 0x58, 0xf2};
    EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), digest));
}

TEST_F(LargeValueTest, SignVerifyAndDigestOfALockedArraySucceedAndKeepTheLock) {
    const ByteArray data("locked");
    const VARIANT& variant = data;
    EXPECT_HR(S_OK, SafeArrayLock(variant.parray));
    expectUsedAs("locked", data);
    EXPECT_EQ(1u, variant.parray->cLocks);
    EXPECT_HR(S_OK, SafeArrayUnlock(variant.parray));
}

TEST_F(LargeValueTest, SignVerifyAndDigestIgnoreTheLowerBound) {
    const ByteArray data("from five on");
    data.get().parray->rgsabound[0].lLbound = 5;
    expectUsedAs("from five on", data);
}

TEST_F(LargeValueTest, WriteOfAnyArrayIsRefused) {
    module.addData("1", "old");
    ComRef<IKeyFile> file;
    ASSERT_HR(S_OK, token->OpenFile(Text("2"), file.receive()));
    EXPECT_HR(E_INVALIDARG, file->Write(ByteArray(std::string(kLarge, 'x'))));
    const ByteArray locked("locked");
    SafeArrayLock(locked.get().parray);
    EXPECT_HR(E_INVALIDARG, file->Write(locked));
    SafeArrayUnlock(locked.get().parray);
    EXPECT_HR(S_OK, file->Read(3, result.receive()));
    EXPECT_EQ("old", result.bytes());
}

}  // namespace
}  // namespace zr::test
