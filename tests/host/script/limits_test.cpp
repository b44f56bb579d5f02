// Scripts that try to get past their limits of time, memory and stack.
#include "tests/host/child_command.h"

#include <chrono>

#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

/// The report of a script that was ended where its line is unknown.
constexpr const char* kTimeUp = "script.js: RangeError: execution timeout\n";

class ScriptLimitsTest : public ChildCommandTest {
protected:
    /// Runs a script that would take minutes with a time limit of a fraction of a second.
    static CommandResult runBriefly(const std::string& text,
                                    std::vector<std::string> options = {}) {
        const auto start = std::chrono::steady_clock::now();
        options.insert(options.end(), {"--time-limit", "0.2"});
        CommandResult result = runText(text, options);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15)) << text;
        EXPECT_EQ(result.exitCode, 1) << text;
        return result;
    }
};

TEST_F(ScriptLimitsTest, LongLoopInTheEngineEndsTheProcessAtTheTimeLimit) {
    const std::string text = "var text = 'a'; while (text.length < 1 << 21) { text += text; } ";
    for (const std::string loop :
         {"/(a+)+b/.exec(new Array(60).join('a'));", "[].indexOf.call({length: 2147483647}, 1);"}) {
        const CommandResult result = runBriefly("print('before'); " + loop);
        EXPECT_EQ(result.output, "before\n") << loop;
        EXPECT_EQ(result.errors, kTimeUp) << loop;
    }
    EXPECT_EQ(runBriefly(text + "(text + text).indexOf(text + 'b');").errors, kTimeUp);
}

TEST_F(ScriptLimitsTest, LongLoopInTheEngineThatCallsTheLibraryEndsWithAnError) {
    // Each leaf looks up the member toJSON of the provider.
    EXPECT_EQ(runBriefly("var tree = new TokenProvider();\n"
                         "for (var depth = 0; depth < 30; ++depth) { tree = [tree, tree]; }\n"
                         "JSON.stringify(tree);\n",
                         {"--late-bound"})
                  .errors,
              "script.js:3: RangeError: execution timeout\n");
}

TEST_F(ScriptLimitsTest, TimeoutIsReportedWhenTheErrorCannotBeDescribed) {
    EXPECT_EQ(runBriefly("RangeError.prototype.toString = Error.prototype.toString = "
                         "function () { throw 1; }; for (;;) {}")
                  .errors,
              "script.js:1: RangeError: execution timeout\n");
    EXPECT_EQ(runBriefly("throw { toString: function () { for (;;) {} } };").errors, kTimeUp);
}

TEST_F(ScriptLimitsTest, EndlessFinalizerAtTheEndEndsAtTheTimeLimit) {
    // Part of a cycle: collected at the end of the script.
    const CommandResult result = runBriefly(
        "var object = {}; object.self = object;\n"
        "Duktape.fin(object, function () { for (;;) {} });\nprint('done');\n");
    EXPECT_EQ(result.output, "done\n");
    EXPECT_EQ(result.errors, kTimeUp);
}

TEST_F(ScriptLimitsTest, ErrorBeforeAnEndlessFinalizerIsReportedWithoutTheTimeout) {
    EXPECT_EQ(runBriefly("var object = {}; object.self = object;\n"
                         "Duktape.fin(object, function () { for (;;) {} });\nthrow 'first';\n")
                  .errors,
              "script.js: uncaught first\n");
}

/// With a token whose sessions take their time to end.
class SlowReleaseTest : public ScriptLimitsTest {
protected:
    void SetUp() override {
        ScriptLimitsTest::SetUp();
        writeFile("config.xml", "<driver/>");
    }
    void TearDown() override {
        setEnvironment("ZRKEY_INSTANT_CLOSE_TIME", "");
        ScriptLimitsTest::TearDown();
    }

    /// Runs a script with a provider.
    static CommandResult runWithProvider(const std::string& closeTime, const std::string& limit,
                                         const std::string& text) {
        setEnvironment("ZRKEY_INSTANT_CLOSE_TIME", closeTime);
        return runText("var provider = new TokenProvider(), tokens = [];\nprovider.Load('" +
                           relativePath(ZR_INSTANT_MODULE) + "');\n" + text,
                       {"--time-limit", limit});
    }
    static void expectEnd(const std::string& text) {
        const auto start = std::chrono::steady_clock::now();
        const CommandResult result = runWithProvider("100", "0.5", text);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15)) << text;
        EXPECT_EQ(result.exitCode, 1) << text;
        EXPECT_EQ(result.errors, kTimeUp) << text;
    }
};

TEST_F(SlowReleaseTest, ReleaseAtTheEndIsWithinTheTimeLimit) {
    const CommandResult result =
        runWithProvider("3000", "2", "tokens.push(provider.OpenKey(0)); print('done');");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "done\n");
    EXPECT_EQ(result.errors, kTimeUp);
}

TEST_F(SlowReleaseTest, ManyReleasesAreEndedWithTheProcess) {
    // Together they would take 30 seconds.
    const std::string open =
        "for (var i = 0; i < 300; ++i) { tokens.push(provider.OpenKey(0)); }\n";
    expectEnd(open);
    expectEnd(open + "tokens = null; Duktape.gc(); print('never');");
}

TEST_F(ScriptLimitsTest, ScriptWithinItsTimeSucceeds) {
    const CommandResult result = runText("print('done');", {"--time-limit", "60"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "done\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(ScriptLimitsTest, ArgumentsOfACallCountTowardTheMemoryLimit) {
    const CommandResult result = runText(
        "var text = 'x', list = []; while (text.length < 1 << 18) { text += text; }\n"
        "while (list.length < 20) { list.push(text); }\n"
        "var provider = new TokenProvider();\n"
        "function load(values) {\n"
        "    try { provider.Load.apply(provider, values); } catch (error) { return error.message; "
        "}\n"
        "}\n"
        "print(load(list));\n"
        // The memory of a call is free again after it.
        "for (var i = 0; i < 20; ++i) { var last = load([text, text]); }\n"
        "print(last);\n",
        {"--memory-limit", "4"});
    EXPECT_EQ(result.output, "alloc failed\nLoad takes 1 argument\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(ScriptLimitsTest, PrintWritesLargeArgumentsOneByOne) {
    const std::string large(1 << 17, 'x');
    const CommandResult result = runText(
        "var text = 'x'; while (text.length < 1 << 17) { text += text; }\n"
        "print(text, text, { toString: function () { throw new Error('not this'); } });\n");
    EXPECT_EQ(result.output, large + ' ' + large);
    EXPECT_EQ(result.errors, "script.js:2: not this\n    at script.js:2\n    at script.js:2\n");
}

}  // namespace
}  // namespace zr::test
