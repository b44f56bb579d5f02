// Loading when a module is loaded already: what stays, what is done once more.
#include "tests/contract/token_log.h"

namespace zr::test {
namespace {

class SecondLoadTest : public TokenLogTest {
protected:
    HRESULT load() { return provider->Load(Text(module.path())); }

    /// The lists of the provider, as a token that it opens is given them.
    Lines lists() {
        IKeyObject* opened = nullptr;
        Lines given;
        for (const std::string& line :
             told([&] { provider->OpenKey(0, reinterpret_cast<void**>(&opened)); })) {
            if (line.find("List=[") != line.npos) {
                given.push_back(line);
            }
        }
        opened->Release();
        return given;
    }
    static Lines lists(const std::string& algorithms, const std::string& digests) {
        return {"[SetAlgoList] KeyObject_pkcs11::m_szAlgoList=[" + algorithms + "]",
                "[SetDigestList] KeyObject_pkcs11::m_szDigestList=[" + digests + "]"};
    }
};

TEST_F(SecondLoadTest, AMissingFileLeavesProviderAndTokensUsable) {
    EXPECT_HR(E_FAIL, provider->Load(Text("missing.dll")));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(lists("RSA", "MD5"), lists());
    module.takeCalls();
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(Lines{"C_Finalize(null)"}, module.takeCalls());
}

TEST_F(SecondLoadTest, TheModuleIsInitialisedOnceMoreAndNotFinalised) {
    module.takeCalls();
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
}

TEST_F(SecondLoadTest, BothListsAreAppended) {
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] algoList=[RSARSA]",
                     "[LoadConfig] digestList=[MD5MD5]", "[Load] End"}),
              told([&] { EXPECT_HR(S_OK, load()); }));
    EXPECT_EQ(lists("RSARSA", "MD5MD5"), lists());
}

TEST_F(SecondLoadTest, OnlyTheFirstDigestElementCounts) {
    folder.write("config.xml", "<driver><x/><digest>A</digest><digest>B</digest><algo/></driver>");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(lists("RSA", "MD5A"), lists());
}

TEST_F(SecondLoadTest, AListThatDoesNotFitAnyMoreStays) {
    for (const bool isDigest : {false, true}) {
        const std::string rest(496, isDigest ? 'd' : 'a');
        const auto write = [&](const std::string& text) {
            folder.writeConfig(isDigest ? "" : text, isDigest ? text : "");
        };
        const Lines before = lists();
        write(rest + "x");
        EXPECT_HR(E_FAIL, load());
        EXPECT_EQ(before, lists());
        write(rest);
        EXPECT_HR(S_OK, load());
        write("x");
        EXPECT_HR(E_FAIL, load());
    }
    EXPECT_EQ(lists("RSA" + std::string(496, 'a'), "MD5" + std::string(496, 'd')), lists());
}

}  // namespace
}  // namespace zr::test
