// Files that scripts read and write.
#include "tests/host/child_command.h"

#include <chrono>

namespace zr::test {
namespace {

class ScriptFilesTest : public ChildCommandTest {
protected:
    static void expectOutput(const std::string& text, const std::string& output,
                             const std::vector<std::string>& options = {}) {
        const CommandResult result = runText(text, options);
        EXPECT_EQ(0, result.exitCode) << text;
        EXPECT_EQ(output, result.output) << text;
        EXPECT_EQ("", result.errors) << text;
    }
    static void expectError(const std::string& text, const std::string& message,
                            const std::vector<std::string>& options = {}) {
        const CommandResult result = runText(text, options);
        EXPECT_EQ(1, result.exitCode) << text;
        EXPECT_EQ("script.js:1: " + message + "\n", result.errors) << text;
    }
};

TEST_F(ScriptFilesTest, BytesAreReadAndWrittenUnchanged) {
    const std::string bytes("\0\r\n\xff\x1a\n", 6);
    writeFile("in.bin", bytes);
    expectOutput(
        "var bytes = readFile('in.bin'); print(bytes.length, bytes[3]);\n"
        "print(Object.prototype.toString.call(bytes));\nwriteFile('out.bin', bytes);",
        "6 255\n[object Uint8Array]\n");
    EXPECT_EQ(bytes, readFile("out.bin"));
}

TEST_F(ScriptFilesTest, ViewsOfBytesAreWrittenAsTheyAreInView) {
    expectOutput(
        "var all = new Uint8Array([97, 98, 99, 100]);\n"
        "writeFile('view', all.subarray(1, 3)); writeFile('buffer', all.buffer);\n"
        "writeFile('empty', new Uint8Array(0));",
        "");
    EXPECT_EQ("bc", readFile("view"));
    EXPECT_EQ("abcd", readFile("buffer"));
    EXPECT_EQ("", readFile("empty"));
}

TEST_F(ScriptFilesTest, TextIsUtf8InFiles) {
    const std::string text = "Gr\u00fc\u00dfe \U0001F511\n";
    expectOutput(
        "writeFile('text', 'Gr\\u00fc\\u00dfe \\ud83d\\udd11\\n');\n"
        "var text = readFile('text', 'utf8'); print(text.length, text.charCodeAt(7));",
        "9 56593\n");
    EXPECT_EQ(text, readFile("text"));
    expectOutput("writeFile('half', 'a\\udd11b\\ud83d');", "");
    EXPECT_EQ("a\uFFFDb\uFFFD", readFile("half"));
    writeFile("mark",
              "\xEF\xBB\xBF"
              "a");
    expectOutput("print(readFile('mark', 'utf8').charCodeAt(0) === 0xFEFF);", "true\n");
}

TEST_F(ScriptFilesTest, LongTextsAreSplitAtNoCharacter) {
    expectOutput(
        "function repeat(text, count) { return new Array(count + 1).join(text); }\n"
        // The engine has a surrogate pair in six bytes. Each text is a little longer than 1 MiB.
        "var texts = [['\\ud83d\\udd11', 6], ['\\u20ac', 3], ['\\u00fc', 2]];\n"
        "texts.forEach(function (text) {\n"
        "    for (var i = 0; i < text[1]; ++i) {\n"
        "        var all = repeat('x', i) + repeat(text[0], Math.ceil(1100000 / text[1]));\n"
        "        writeFile('long', all);\n"
        "        if (readFile('long', 'utf8') !== all) { print('different', text[0], i); }\n"
        "    }\n"
        "});\n",
        "");
}

TEST_F(ScriptFilesTest, ContentIsReplaced) {
    writeFile("file", "much longer than the new content");
    expectOutput("writeFile('file', 'short');", "");
    EXPECT_EQ("short", readFile("file"));
}

TEST_F(ScriptFilesTest, MissingFileIsAnError) {
    expectError("readFile('nowhere');", "readFile failed: nowhere: No such file or directory");
    expectError("writeFile('no/such/folder', '');",
                "writeFile failed: no/such/folder: No such file or directory");
    expectError("readFile('');", "readFile failed: : No such file or directory");
}

TEST_F(ScriptFilesTest, FolderIsAnError) {
    std::filesystem::create_directory("folder");
    // The two systems refuse it with different errors.
    expectOutput(
        "[function () { readFile('folder'); },\n"
        " function () { writeFile('folder', ''); }].forEach(function (use) {\n"
        "    try { use(); } catch (error) { print(error.message.split(': ', 2)); }\n"
        "});",
        "readFile failed,folder\nwriteFile failed,folder\n");
}

TEST_F(ScriptFilesTest, InvalidUtf8IsNoText) {
    for (const char* bytes : {"a\xff", "\xC3", "\xED\xA0\xBD\xED\xB4\x91", "\xF4\x90\x80\x80"}) {
        writeFile("bytes", bytes);
        expectError("readFile('bytes', 'utf8');",
                    "readFile failed: bytes: it is not valid UTF-8 text");
    }
}

TEST_F(ScriptFilesTest, WrongArgumentsAreATypeError) {
    for (const char* path : {"", "undefined", "1", "{}", "Symbol('a')"}) {
        expectError(std::string("readFile(") + path + ");",
                    "TypeError: readFile: the path is not a text");
    }
    expectError("writeFile('a\\u0000b', '');", "TypeError: writeFile: the path contains a NUL");
    for (const char* encoding : {"'latin1'", "null", "1", "Symbol('utf8')"}) {
        expectError(std::string("readFile('script.js', ") + encoding + ");",
                    "TypeError: readFile: the second argument can only be \"utf8\"");
    }
    writeFile("kept", "kept");
    for (const char* content : {"undefined", "1", "{}", "[1]", "Symbol('a')"}) {
        expectError(std::string("writeFile('kept', ") + content + ");",
                    "TypeError: writeFile: the content is neither bytes nor a text");
    }
    EXPECT_EQ("kept", readFile("kept"));
}

TEST_F(ScriptFilesTest, LargeFileCountsTowardTheMemoryLimit) {
    writeFile("large", std::string(5 << 20, 'x'));
    expectError("readFile('large');", "alloc failed", {"--memory-limit", "4"});
    expectError("readFile('large', 'utf8');", "alloc failed", {"--memory-limit", "4"});
    // The memory is free again after an error.
    expectOutput(
        "for (var i = 0; i < 20; ++i) { try { readFile('large', 'no'); } catch (e) {} }\n"
        "for (var i = 0; i < 20; ++i) { try { readFile('large/x'); } catch (e) {} }\n"
        "print(readFile('large').length);",
        "5242880\n", {"--memory-limit", "32"});
}

}  // namespace
}  // namespace zr::test
