// SecretText: UTF-8 copies that are wiped when they are destroyed.
#include "runtime/secret.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>

namespace zr::test {
namespace {

constexpr std::size_t kSize = 8;

class SecretTextTest : public testing::Test {
protected:
    explicit SecretTextTest(const OLECHAR* text = OLESTR("1234567"))
        : m_bstr(SysAllocString(text)) {}
    ~SecretTextTest() override { SysFreeString(m_bstr); }

    BSTR m_bstr;
};

TEST_F(SecretTextTest, TextThatFitsIsStoredWithItsLength) {
    const SecretText<kSize> text(m_bstr);
    EXPECT_TRUE(text.fits());
    EXPECT_STREQ("1234567", text.c_str());
    EXPECT_EQ(7u, text.length());
}

TEST_F(SecretTextTest, TextThatIsTooLongIsEmptyAndDoesNotFit) {
    const SecretText<kSize - 1> text(m_bstr);
    EXPECT_FALSE(text.fits());
    EXPECT_STREQ("", text.c_str());
}

TEST_F(SecretTextTest, NullTextIsEmptyAndFits) {
    const SecretText<kSize> text(nullptr);
    EXPECT_TRUE(text.fits());
    EXPECT_EQ(0u, text.length());
}

TEST_F(SecretTextTest, DestructorWipesTheText) {
    alignas(SecretText<kSize>) unsigned char place[sizeof(SecretText<kSize>)];
    const auto holds = [&](const char* text) {
        const std::string wanted = text;
        return std::search(place, place + sizeof place, wanted.begin(), wanted.end()) !=
               place + sizeof place;
    };
    auto* text = new (place) SecretText<kSize>(m_bstr);
    EXPECT_TRUE(holds("1234567"));
    text->~SecretText();
    for (const char* part : {"123", "345", "567"}) {
        EXPECT_FALSE(holds(part));
    }
}

}  // namespace
}  // namespace zr::test
