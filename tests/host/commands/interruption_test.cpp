// Commands and scripts that are interrupted while they use a module: what they still call, what they
// write, and their exit code.
#include "host/system/interruption.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class InterruptionTest : public CommandTest {
protected:
    InterruptionTest() {
        module.addCertificate("a", "A");
        module.addKey(CKO_PRIVATE_KEY, "a");
        writeFile("data.txt", "data");
        setEnvironment("TEST_NEW_PIN", "5678");
    }
    ~InterruptionTest() override { host::forgetInterruption(); }

    /// Lets an interruption come while the module is in a call.
    void interruptDuring(const char* function) {
        module->callBack(
            function, [](void*) { host::noteInterruption(SIGINT); }, nullptr);
    }
    /// Runs a command that is interrupted.
    /// @return what it wrote to standard error.
    std::string interrupted(const std::vector<std::string>& words) {
        module.takeCalls();
        const CommandResult result = zrkey(words);
        EXPECT_TRUE(host::isInterrupted());
        EXPECT_EQ(host::interruptionExitCode(), result.exitCode);
        EXPECT_EQ("", result.output);
        m_calls = module.takeCalls();
        return result.errors;
    }
    /// The names of the calls after the call in which the interruption came.
    Lines callsAfter(const std::string& function) const {
        Lines names;
        for (const std::string& call : m_calls) {
            names.push_back(call.substr(0, call.find('(')));
        }
        const auto found = std::find(names.begin(), names.end(), function);
        return found == names.end() ? Lines{"not called"} : Lines(found + 1, names.end());
    }
    static std::vector<std::string> sign() { return withPin({"sign", "-i", "data.txt"}); }

    const Lines kEnd = {"C_Logout", "C_CloseSession", "C_Finalize"};

private:
    Lines m_calls;
};

TEST_F(InterruptionTest, DuringTheLoginEndsWithLogoutCloseAndUnload) {
    interruptDuring("C_Login");
    EXPECT_EQ("", interrupted(sign()));
    EXPECT_EQ(kEnd, callsAfter("C_Login"));
}

TEST_F(InterruptionTest, DuringTheStartOpensNoToken) {
    interruptDuring("C_Initialize");
    EXPECT_EQ("", interrupted(sign()));
    EXPECT_EQ(0u, module->openSessions());
    Lines calls = callsAfter("C_Initialize");
    EXPECT_EQ("C_Finalize", calls.back());
    EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "C_OpenSession"));
}

TEST_F(InterruptionTest, DuringOpenSessionDoesNotLogIn) {
    interruptDuring("C_OpenSession");
    EXPECT_EQ("", interrupted(sign()));
    const Lines calls = callsAfter("C_OpenSession");
    EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "C_Login"));
    EXPECT_EQ("C_Finalize", calls.back());
    EXPECT_EQ(0u, module->openSessions());
}

TEST_F(InterruptionTest, BetweenTwoCallsOfTheLibraryMakesNoSecond) {
    interruptDuring("C_FindObjectsFinal");
    EXPECT_EQ("", interrupted(sign()));
    const Lines calls = callsAfter("C_FindObjectsFinal");
    EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "C_SignInit"));
    EXPECT_EQ(kEnd, Lines(calls.end() - 3, calls.end()));
}

TEST_F(InterruptionTest, DuringTheLastCallSaysThatTheWorkIsComplete) {
    interruptDuring("C_SetPIN");
    EXPECT_EQ("zrkey: interrupted: pin change is complete, but its result is not written\n",
              interrupted(withPin({"pin", "change", "--new-pin", "env:TEST_NEW_PIN"})));
    const Lines calls = callsAfter("C_SetPIN");
    EXPECT_EQ("C_Finalize", calls.back());
    EXPECT_EQ(0u, module->openSessions());
}

TEST_F(InterruptionTest, ResultIsNotWrittenAndItsNewFileIsRemoved) {
    interruptDuring("C_Logout");
    EXPECT_EQ("zrkey: interrupted: cert read is complete, but its result is not written\n",
              interrupted(withPin({"cert", "read", "-o", "data.der"})));
    EXPECT_EQ((Lines{"C_CloseSession", "C_Finalize"}), callsAfter("C_Logout"));
    EXPECT_FALSE(std::filesystem::exists("data.der"));
}

TEST_F(InterruptionTest, FailureIsStillReported) {
    interruptDuring("C_Login");
    EXPECT_EQ(0u, interrupted({"login", "--pin", "env:TEST_WRONG_PIN"})
                      .find("zrkey: cannot log in to \"Label\" as user: the PIN is wrong"));
}

TEST_F(InterruptionTest, NextCommandIsNotInterrupted) {
    interruptDuring("C_Login");
    interrupted(sign());
    expectOutput(withPin({"login"}), "logged in to \"Label\" as user\n");
}

class ScriptInterruptionTest : public InterruptionTest {
protected:
    /// Runs a script that has logged in as "token" and ends with more.
    std::string interruptedScript(const std::string& more) {
        return interrupted({"run", "-e",
                            "function open() { var provider = new TokenProvider();"
                            " provider.Load(arguments[0]); return provider.OpenKey(0); }"
                            " var token = open('" +
                                module.path() + "'); token.VerifyPIN('1234', 0);" + more});
    }
};

TEST_F(ScriptInterruptionTest, ScriptThatCatchesErrorsEndsWithLogoutCloseAndUnload) {
    interruptDuring("C_Login");
    EXPECT_EQ("", interruptedScript("for (;;) { try { for (;;) { token.GetLabel(); print(1); } }"
                                    " catch (error) { } finally { print(2); } }"));
    EXPECT_EQ(kEnd, callsAfter("C_Login"));
}

TEST_F(ScriptInterruptionTest, ProviderThatTheScriptDroppedIsUnloaded) {
    interruptDuring("C_Login");
    EXPECT_EQ("", interruptedScript("Duktape.gc(); for (;;) { }"));
    EXPECT_EQ(kEnd, callsAfter("C_Login"));
}

TEST_F(ScriptInterruptionTest, ModuleThatTheScriptUnloadedIsNotUnloadedAgain) {
    interruptDuring("C_Finalize");
    const std::string script = "var provider = new TokenProvider(); provider.Load('" +
                               module.path() + "'); provider.Unload(); for (;;) { }";
    EXPECT_EQ("", interrupted({"run", "-e", script}));
    EXPECT_EQ(Lines(), callsAfter("C_Finalize"));
}

TEST_F(ScriptInterruptionTest, SleepEnds) {
    const auto start = std::chrono::steady_clock::now();
    std::thread other([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        host::noteInterruption(SIGTERM);
    });
    EXPECT_EQ("", interruptedScript("sleep(1000); print('awake');"));
    other.join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    EXPECT_EQ(kEnd, callsAfter("C_Login"));
}

TEST_F(ScriptInterruptionTest, ExitCodeOfTheScriptDoesNotHideTheInterruption) {
    interruptDuring("C_Login");
    EXPECT_EQ("", interruptedScript("exit(7)"));
}

}  // namespace
}  // namespace zr::test
