// Load when a module is already loaded: what is kept, what is repeated.
#include "tests/support/fixtures/token_log.h"

namespace zr::test {
namespace {

class SecondLoadTest : public TokenLogTest {
protected:
    HRESULT load() { return provider->Load(Text(module.path())); }

    /// The lists of the provider, as logged when it opens a token.
    Lines lists() {
        ComRef<IKeyObject> opened;
        Lines given;
        for (const std::string& line : logged([&] { provider->OpenKey(0, opened.receive()); })) {
            if (line.find("List=[") != line.npos) {
                given.push_back(line);
            }
        }
        return given;
    }
    static Lines lists(const std::string& algorithms, const std::string& digests) {
        return {"[SetAlgoList] KeyObject_pkcs11::m_szAlgoList=[" + algorithms + "]",
                "[SetDigestList] KeyObject_pkcs11::m_szDigestList=[" + digests + "]"};
    }
};

TEST_F(SecondLoadTest, LoadOfAMissingFileKeepsProviderAndTokenUsable) {
    EXPECT_HR(E_FAIL, provider->Load(Text("missing.dll")));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(lists("RSA", "MD5"), lists());
    module.takeCalls();
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(Lines{"C_Finalize(null)"}, module.takeCalls());
}

TEST_F(SecondLoadTest, SecondLoadInitialisesTheModuleAgainWithoutFinalising) {
    module.takeCalls();
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
}

TEST_F(SecondLoadTest, SecondLoadAppendsBothLists) {
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] algoList=[RSARSA]",
                     "[LoadConfig] digestList=[MD5MD5]", "[Load] End"}),
              logged([&] { EXPECT_HR(S_OK, load()); }));
    EXPECT_EQ(lists("RSARSA", "MD5MD5"), lists());
}

TEST_F(SecondLoadTest, SecondLoadReadsTheFirstDigestElementOnly) {
    folder.write("config.xml", "<driver><x/><digest>A</digest><digest>B</digest><algo/></driver>");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(lists("RSA", "MD5A"), lists());
}

TEST_F(SecondLoadTest, LoadWithoutRoomForAnAlgorithmTextLeavesThatListAndAppendsTheOther) {
    const std::string rest(496, 'a');
    folder.writeConfig(rest, "");
    EXPECT_HR(S_OK, load());
    folder.writeConfig("x", "y");
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] algoList=[RSA" + rest + "]",
                     "[LoadConfig] digestList=[MD5y]", "[Load] End"}),
              logged([&] { EXPECT_HR(S_OK, load()); }));
    EXPECT_EQ(lists("RSA" + rest, "MD5y"), lists());
}

TEST_F(SecondLoadTest, LoadWithoutRoomForADigestTextLeavesThatListAndAppendsTheOther) {
    const std::string rest(496, 'd');
    folder.writeConfig("", rest);
    EXPECT_HR(S_OK, load());
    folder.writeConfig("x", "y");
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] algoList=[RSAx]",
                     "[LoadConfig] digestList=[MD5" + rest + "]", "[Load] End"}),
              logged([&] { EXPECT_HR(S_OK, load()); }));
    EXPECT_EQ(lists("RSAx", "MD5" + rest), lists());
}

TEST_F(SecondLoadTest, LoadOfAListThatIsTooLongByItselfFails) {
    for (const bool isDigest : {false, true}) {
        const std::string text(500, 'x');
        folder.writeConfig(isDigest ? "" : text, isDigest ? text : "");
        EXPECT_HR(E_FAIL, load());
        EXPECT_EQ(lists("RSA", "MD5"), lists());
    }
}

}  // namespace
}  // namespace zr::test
