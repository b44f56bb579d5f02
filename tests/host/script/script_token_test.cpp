// Scripts on a real token: the whole object model, bad input, and the example that signs a letter,
// whose signature openssl checks afterwards (around-scripts).
#include "tests/host/command_token_test.h"

namespace zr::test {
namespace {

class ScriptTokenTest : public CommandTokenTest {
protected:
    static std::string module() {
        return relativePath(fromEnvironment("ZRKEY_TEST_MODULE").c_str());
    }
    static CommandResult signLetter(const std::vector<std::string>& arguments) {
        std::vector<std::string> words = {"run", "--pin", "env:TEST_PIN",
                                          ZRKEY_EXAMPLES "/sign_letter.js"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return zrkey(words);
    }
};

TEST_F(ScriptTokenTest, ObjectModelDoesWhatItsReferenceSays) {
    const CommandResult result =
        zrkey({"run", ZRKEY_SCRIPTS "/token_objects.js", module(), "1234", "87654321"});
    EXPECT_EQ(readFile(ZRKEY_SCRIPTS "/token_objects.expected"), result.output);
    EXPECT_EQ("", result.errors);
    EXPECT_EQ(0, result.exitCode);
}

TEST_F(ScriptTokenTest, BadInputIsAnsweredAsExpected) {
    expectOutput(zrkey({"run", ZRKEY_SCRIPTS "/bad_arguments.js", ZRKEY_EXPECTED_ANSWERS, module(),
                        "1234", "87654321"}),
                 "0 differences in 1200 calls\n");
}

TEST_F(ScriptTokenTest, ShellShowsEachObjectByItsClass) {
    expectOutput(zrkey({"shell"},
                       "var token = provider.tokens()[0]\ntoken\nprovider.tokens()\n"
                       "token.certificates()\ntoken.OpenContainer(0)\n"
                       "provider\n[provider.GetName]\n"),
                 "[Token]\n[[Token]]\n[[Certificate]]\n[Container]\n[TokenProvider]\n"
                 "[[function GetName]]\n");
}

TEST_F(ScriptTokenTest, LateBoundScriptsGetWhatTheLibraryAnswers) {
    expectOutput(zrkey({"shell", "--late-bound"},
                       "var token = provider.OpenKey(0)\n[provider, token]\n"
                       "token.VerifyPIN('1234', 0)\ntypeof token.sign\n"
                       "try { token.SignData() } catch (error) { error.message }\n"),
                 "[[TokenProvider], [Token]]\ntrue\n\"undefined\"\n"
                 "\"SignData failed: E_FAIL (0x80004005)\"\n");
}

TEST_F(ScriptTokenTest, LetterIsSigned) {
    const std::string letter = tokenFile("letter.txt");
    writeFile(letter, "a letter\n");
    expectOutput(signLetter({letter}),
                 std::string("signed ").append(letter).append(" as CN=ZRKey Test\n"));
}

TEST_F(ScriptTokenTest, LetterOfAnotherTokenIsNotSigned) {
    writeFile("letter.txt", "a letter\n");
    const CommandResult result = signLetter({"letter.txt", "no-such-serial"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("sign_letter.js: 0 tokens match; name one by its serial number\n", result.errors);
    EXPECT_FALSE(std::filesystem::exists("letter.txt.sig"));
}

TEST_F(ScriptTokenTest, LetterIsNotSignedWithAWrongPin) {
    writeFile("letter.txt", "a letter\n");
    setEnvironment("TEST_PIN", "97531");
    const CommandResult result = signLetter({"letter.txt"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("sign_letter.js: the token refused the PIN\n", result.errors);
    EXPECT_FALSE(std::filesystem::exists("letter.txt.sig"));
}

TEST_F(ScriptTokenTest, MissingLetterCostsNoLogin) {
    const CommandResult missing = signLetter({"missing.txt"});
    EXPECT_EQ(1, missing.exitCode);
    EXPECT_NE(std::string::npos, missing.errors.find("missing.txt")) << missing.errors;
    const CommandResult usage = signLetter({});
    EXPECT_EQ(2, usage.exitCode);
    EXPECT_EQ("usage: zrkey run sign_letter.js FILE [SERIAL]\n", usage.errors);
}

TEST_F(ScriptTokenTest, HundredsOfTokensThatNobodyKeepsAreClosed) {
    writeFile("cycles.js",
              "for (var i = 0; i < 200; ++i) {\n"
              "    var token = provider.OpenKey(0);\n"
              "    token.VerifyPIN(arguments[0]);\n"
              "    token.OpenContainer(0).GetKeyCert().GetCertID();\n"
              "}\n"
              "print('done');\n");
    expectOutput(zrkey({"run", "--memory-limit", "2", "cycles.js", "1234"}), "done\n");
}

}  // namespace
}  // namespace zr::test
