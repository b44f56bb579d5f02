// What remains of a PIN in memory after a script used it.
#include "host/output/console.h"
#include "host/script/engine.h"
#include "host/system/byte_io.h"
#include "tests/host/redirection.h"
#include "tests/support/fixtures/token.h"
#include "tests/support/process_memory.h"

namespace zr::test {
namespace {

constexpr std::size_t kPinSize = 20;
/// Freed memory is reused from its beginning, so the tests search for the end of the PIN.
constexpr std::size_t kSearched = 12;

/// A PIN that no literal and no other variable holds. Its letters are computed one at a time.
char letter(int seed, std::size_t i) {
    return static_cast<char>('A' + (static_cast<std::size_t>(seed) * 7 + i * i * 5 + i) % 26);
}

template <class Unit>
MaskedBytes maskedPin(int seed) {
    Unit units[kSearched] = {};
    for (std::size_t i = 0; i < kSearched; ++i) {
        units[i] = static_cast<Unit>(letter(seed, kPinSize - kSearched + i));
    }
    MaskedBytes masked(units, sizeof units);
    host::secureErase(units, sizeof units);
    return masked;
}

class ScriptSecretsTest : public testing::Test {
protected:
    ScriptSecretsTest() {
        folder.writeConfig();
        module = relativePath(ZR_INSTANT_MODULE);
    }

    /// Runs the file "script.js" on a token, with the PIN in place of each "#" of the text.
    /// @param pin  given to the script.
    bool run(int seed, const std::string& text, std::optional<host::Pin> pin = {}) {
        writeScript(seed, text);
        const Redirection output(host::kStandardOutput, host::openDroppedOutput());
        host::Console console(host::Diagnostics::kDropped);
        std::error_code error;
        const host::ErasedBytes source = host::readBytes("script.js", error);
        host::ScriptEngine engine(console);
        return engine.run({"script.js",
                           host::viewOf(source),
                           {module},
                           host::ScriptOrigin::kFile,
                           false,
                           std::move(pin)}) == 0;
    }

    static std::size_t narrowCopies(int seed) { return maskedPin<char>(seed).countInMemory(); }
    static std::size_t wideCopies(int seed) { return maskedPin<OLECHAR>(seed).countInMemory(); }

    static void expectNoCopy(int seed) {
        EXPECT_EQ(0U, narrowCopies(seed));
        EXPECT_EQ(0U, wideCopies(seed));
    }

    TempDir folder;
    std::string module;

private:
    /// Byte by byte: no buffer of this test holds the PIN.
    static void writeScript(int seed, const std::string& text) {
        std::error_code error;
        const int file = host::openForWriting("script.js", error);
        EXPECT_FALSE(host::emptyFile(file));
        for (const char character : text) {
            for (std::size_t i = 0; i < (character == '#' ? kPinSize : 1); ++i) {
                const char byte = character == '#' ? letter(seed, i) : character;
                host::writeAll(file, {&byte, 1});
            }
        }
        host::closeDescriptor(file);
    }
};

const std::string kOpen =
    "var provider = new TokenProvider(); provider.Load(arguments[0]);\n"
    "var token = provider.OpenKey(0);\n";

TEST_F(ScriptSecretsTest, SearchFindsThePinInTheScript) {
    {
        std::error_code error;
        EXPECT_TRUE(run(1, "var pin = '#';"));
        const host::ErasedBytes source = host::readBytes("script.js", error);
        // And perhaps its end in a register that the system has saved.
        EXPECT_LE(1U, narrowCopies(1));
    }
    expectNoCopy(1);
}

TEST_F(ScriptSecretsTest, LoginLeavesNoPin) {
    EXPECT_TRUE(run(2, kOpen + "token.VerifyPIN('#', 0);"));
    expectNoCopy(2);
}

TEST_F(ScriptSecretsTest, RefusedCallLeavesNoPin) {
    EXPECT_FALSE(run(3, kOpen + "token.VerifyPIN('#', 2);"));
    expectNoCopy(3);
    EXPECT_FALSE(run(4, kOpen + "token.VerifyPIN('#', {});"));
    expectNoCopy(4);
}

TEST_F(ScriptSecretsTest, PinThatGrewInTheScriptLeavesNoCopy) {
    EXPECT_TRUE(run(5, kOpen +
                           "var pin = ''; '#'.split('').forEach(function (c) { pin += c; });\n"
                           "var list = []; for (var i = 0; i < 50; ++i) { list.push(pin + i); }\n"
                           "var bytes = new Uint8Array(list.join('').length);\n"
                           "token.VerifyPIN(pin, 0); list = null; Duktape.gc();\n"));
    expectNoCopy(5);
}

TEST_F(ScriptSecretsTest, PrintLeavesNoPin) {
    EXPECT_TRUE(run(7, "print('#', 'of', ['#']); print('#');"));
    expectNoCopy(7);
}

TEST_F(ScriptSecretsTest, PinGivenToTheScriptLeavesNoCopy) {
    for (const char* use : {"token.VerifyPIN(readPin(), 0);", "readPin() + readLine;", ""}) {
        host::Pin pin;
        for (std::size_t i = 0; i < kPinSize; ++i) {
            EXPECT_TRUE(pin.append(letter(8, i)));
        }
        EXPECT_TRUE(run(8, kOpen + use, std::move(pin)));
        expectNoCopy(8);
    }
}

TEST_F(ScriptSecretsTest, PinInFilesAndVariablesLeavesNoCopy) {
    EXPECT_TRUE(run(9, "writeFile('pin', '#');\n"));
    EXPECT_TRUE(run(0,
                    "var pin = readFile('pin', 'utf8'), bytes = readFile('pin');\n"
                    "writeFile('pin', bytes); writeFile('pin', pin + '\\udd11');\n"
                    "pin = readFile('pin', 'utf8'); writeFile('pin', pin + pin);\n"));
    expectNoCopy(9);
}

}  // namespace
}  // namespace zr::test
