// zrkey watch --exec: what the program gets. On Linux only, where a test can write a program.
#include "host/system/interruption.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class WatchProgramTest : public CommandTest {
protected:
    ~WatchProgramTest() override { host::forgetInterruption(); }

    static void writeProgram(const std::string& text) {
        writeFile("program.sh", "#!/bin/sh\n" + text);
        fs::permissions("program.sh", fs::perms::owner_all);
    }
    /// Watches for about two seconds.
    CommandResult watch() {
        m_looks = 0;
        module->callBack("C_WaitForSlotEvent", look, this);
        const CommandResult result = zrkey({"watch", "--exec", "./program.sh"});
        host::forgetInterruption();
        return result;
    }

private:
    static void look(void* data) {
        WatchProgramTest& test = *static_cast<WatchProgramTest*>(data);
        if (++test.m_looks == 3) {
            host::noteInterruption(2);
        }
        test.module->callBack("C_WaitForSlotEvent", look, data);
    }

    int m_looks = 0;
};

TEST_F(WatchProgramTest, ValuesAreVariables) {
    setText(module->settings().tokenInfo.label, "$(touch bad) 'a'");
    writeProgram(
        "echo \"$#|$ZRKEY_EVENT|$ZRKEY_SLOT|$ZRKEY_LABEL|$ZRKEY_SERIAL|$ZRKEY_MANUFACTURER|"
        "$ZRKEY_MODEL\"; test -f \"$ZRKEY_MODULE\"\n");
    const CommandResult result = watch();
    EXPECT_NE(std::string::npos,
              result.output.find("0|present|10|$(touch bad) 'a'|Serial|Maker|Model\n"))
        << result.output;
    EXPECT_EQ("", result.errors);
    EXPECT_FALSE(fs::exists("bad"));
}

TEST_F(WatchProgramTest, EndedProgramIsReaped) {
    writeProgram("echo $$ > pid.txt\n");
    watch();
    const std::string process = readFile("pid.txt");
    EXPECT_FALSE(fs::exists("/proc/" + process.substr(0, process.find('\n'))));
}

TEST_F(WatchProgramTest, ClosedPipeEndsTheProgramAsUsual) {
    writeProgram("kill -PIPE $$\n");
    EXPECT_NE(std::string::npos, watch().errors.find("ended with exit code 141 for: present"));
}

TEST_F(WatchProgramTest, FileThatIsNoProgramIsReported) {
    writeFile("program.sh", "no program");
    EXPECT_NE(std::string::npos, watch().errors.find("cannot start \"./program.sh\": "));
}

}  // namespace
}  // namespace zr::test
