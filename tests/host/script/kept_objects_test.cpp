// Scripts that keep thousands of objects: the memory limit holds, and every session is closed.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class KeptObjectsTest : public CommandTest {
protected:
    KeptObjectsTest() { module.addCertificate("a", "A"); }

    static CommandResult run(const std::string& code) {
        return zrkey({"run", "--memory-limit", "1", "-e", code});
    }
};

TEST_F(KeptObjectsTest, ObjectsWithoutEndEndAtTheMemoryLimit) {
    const CommandResult result = run("var kept = []; for (;;) { kept.push(provider.OpenKey(0)); }");
    EXPECT_EQ(1, result.exitCode);
    // Without memory the engine may not be able to make the error.
    const bool isReported = result.errors.find("alloc failed") != std::string::npos ||
                            result.errors.find("DoubleError") != std::string::npos;
    EXPECT_TRUE(isReported) << result.errors;
    EXPECT_LT(1000u, module.count("C_OpenSession"));
    EXPECT_EQ(module.count("C_OpenSession"), module.count("C_CloseSession"));
    EXPECT_EQ(1u, module.count("C_Finalize"));
}

TEST_F(KeptObjectsTest, ObjectsAreReleasedInAnyOrder) {
    const CommandResult result =
        run("var kept = [];"
            "for (var i = 0; i < 500; ++i) {"
            "    var token = provider.OpenKey(0), container = token.OpenContainer(0);"
            "    kept.push(token, container, container.GetKeyCert());"
            "}"
            "token = container = null;"
            "for (i = 0; i < kept.length; ++i) {"
            "    var last = kept[i * 7 % kept.length];"
            "    kept[i * 7 % kept.length] = null;"
            "}"
            "print(last.Close(), last.Close());");
    EXPECT_EQ("true true\n", result.output);
    EXPECT_EQ("", result.errors);
    EXPECT_EQ(500u, module.count("C_CloseSession"));
}

TEST_F(KeptObjectsTest, ClosedObjectsThatAreKeptHaveNoSessions) {
    const CommandResult result =
        run("var kept = [];"
            "for (var i = 0; i < 500; ++i) { kept.push(provider.OpenKey(0)); kept[i].Close(); }"
            "try { kept[0].GetLabel(); } catch (error) { print(error.message, error.result); }"
            "exit();");
    EXPECT_EQ("GetLabel failed: the object was closed E_UNEXPECTED\n", result.output);
    EXPECT_EQ("", result.errors);
    EXPECT_EQ(500u, module.count("C_CloseSession"));
}

}  // namespace
}  // namespace zr::test
