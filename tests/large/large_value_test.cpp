// Values of 64 MiB and more, and arrays as hosts may make them.
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>

#include "runtime/md5.h"
#include "tests/contract/token.h"

namespace zr::test {
namespace {

constexpr std::size_t kLarge = std::size_t{64} << 20;

std::string largeContent() {
    // Without a zero, which would end the module's record of it.
    std::string content(kLarge, '\0');
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i % 251 + 1);
    }
    return content;
}

class LargeValueTest : public SigningTokenTest {
protected:
    /// Signs, verifies and digests data as this very text.
    void expectUsedAs(const std::string& content, const VARIANT& data) {
        module.takeCalls();
        EXPECT_HR(S_OK, token->SignData(nullptr, data, certificate, &result));
        EXPECT_TRUE(module.takeCalls().back() == "C_Sign(1, [" + content + "], 1024)");
        const std::string signature = takeBytes(&result);
        EXPECT_HR(S_OK, token->VerifyData(data, certificate, nullptr, Bytes(signature)));
        EXPECT_TRUE(module.takeCalls().back() == "C_Verify(1, [" + content + "], 256)");
        EXPECT_HR(S_OK, token->DigestData(Text("MD5"), data, &result));
        EXPECT_EQ(md5Of(content), takeBytes(&result));
    }

    static std::string md5Of(const std::string& content) {
        std::string digest(16, '\0');
        MD5Data(content.data(), static_cast<unsigned int>(content.size()),
                reinterpret_cast<unsigned char*>(digest.data()));
        return digest;
    }
};

TEST_F(LargeValueTest, AFileOf64MiBIsReadWholeAndFromItsEnd) {
    const std::string content = largeContent();
    module.addData("1", content);
    IKeyFile* file = nullptr;
    ASSERT_HR(S_OK, token->OpenFile(Text("2"), reinterpret_cast<void**>(&file)));
    EXPECT_HR(S_OK, file->GetSize(&result));
    EXPECT_EQ(static_cast<LONG>(kLarge), result.lVal);
    EXPECT_HR(S_OK, file->Seek(-5, 2));
    EXPECT_HR(S_OK, file->Read(5, &result));
    EXPECT_EQ(content.substr(kLarge - 5), takeBytes(&result));
    EXPECT_HR(S_OK, file->Seek(0, 2));
    EXPECT_HR(S_OK, file->Read(static_cast<ULONG>(kLarge), &result));
    EXPECT_TRUE(content == takeBytes(&result));
    VARIANT untouched = poisoned();
    EXPECT_HR(E_FAIL, file->Read(1, &untouched));
    EXPECT_EQ(VT_UI1, untouched.vt);
    file->Release();
}

TEST_F(LargeValueTest, AnArrayOf64MiBIsSignedVerifiedAndDigested) {
    const std::string content = largeContent();
    expectUsedAs(content, Bytes(content));
}

TEST(LargeDigestTest, APieceOf512MiBCountsMoreBitsThanOneWordHolds) {
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
    // As md5sum tells it.
    const unsigned char expected[16] = {0xaa, 0x55, 0x9b, 0x4e, 0x35, 0x23, 0xa6, 0xc9,
                                        0x31, 0xf0, 0x8f, 0x4d, 0xf5, 0x2d, 0x58, 0xf2};
    EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), digest));
}

TEST_F(LargeValueTest, AnArrayThatTheHostHasLockedIsUsedAndStaysLocked) {
    const Bytes data("locked");
    const VARIANT& variant = data;
    EXPECT_HR(S_OK, SafeArrayLock(variant.parray));
    expectUsedAs("locked", data);
    EXPECT_EQ(1u, variant.parray->cLocks);
    EXPECT_HR(S_OK, SafeArrayUnlock(variant.parray));
}

TEST_F(LargeValueTest, TheLowerBoundOfAnArrayDoesNotMatter) {
    const Bytes data("from five on");
    static_cast<const VARIANT&>(data).parray->rgsabound[0].lLbound = 5;
    expectUsedAs("from five on", data);
}

TEST_F(LargeValueTest, WriteRefusesEveryArray) {
    module.addData("1", "old");
    IKeyFile* file = nullptr;
    ASSERT_HR(S_OK, token->OpenFile(Text("2"), reinterpret_cast<void**>(&file)));
    EXPECT_HR(E_INVALIDARG, file->Write(Bytes(std::string(kLarge, 'x'))));
    const Bytes locked("locked");
    SafeArrayLock(static_cast<const VARIANT&>(locked).parray);
    EXPECT_HR(E_INVALIDARG, file->Write(locked));
    SafeArrayUnlock(static_cast<const VARIANT&>(locked).parray);
    EXPECT_HR(S_OK, file->Read(3, &result));
    EXPECT_EQ("old", takeBytes(&result));
    file->Release();
}

}  // namespace
}  // namespace zr::test
