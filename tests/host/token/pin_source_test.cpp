// PIN sources: their names, what is read from them, and what is refused before it costs a retry.
#include "host/token/pin_source.h"

#include "host/output/failure.h"
#include "host/system/system.h"
#include "tests/host/child_command.h"
#include "tests/host/next_descriptor.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

using host::parsePinSource;
using host::Pin;
using host::PinSource;

/// In a fresh folder.
class PinSourceTest : public testing::Test {
protected:
    ~PinSourceTest() override { setEnvironment("ZRKEY_TEST_PIN", ""); }

    static std::string read(const std::string& source) {
        return std::string(readPin(parsePinSource(source).value(), "").view());
    }

    /// The message of a refusal; empty when the PIN was accepted.
    static std::string refusal(const std::string& source) {
        try {
            read(source);
        } catch (const host::Failure& failure) {
            EXPECT_EQ(host::kExitUsage, failure.exitCode);
            return failure.line();
        }
        return {};
    }

    static std::string refusalOfFile(const std::string& content) {
        writeFile("pin.txt", content);
        return refusal("file:pin.txt");
    }

    TempDir folder;
};

TEST_F(PinSourceTest, BarePinIsNotASource) {
    for (const char* text : {"1234", "", "env:", "file:", "fd:", "fd:x", "fd:-1", "fd:1x",
                             "env:A=B", "fd:99999999999", "Prompt", "pass:1234"}) {
        EXPECT_FALSE(parsePinSource(text)) << text;
    }
}

TEST_F(PinSourceTest, DashReadsStandardInput) {
    EXPECT_EQ(PinSource::Kind::kDescriptor, parsePinSource("-")->kind);
    EXPECT_EQ(0, parsePinSource("-")->descriptor);
    EXPECT_EQ(7, parsePinSource("fd:7")->descriptor);
    EXPECT_EQ(PinSource::Kind::kPrompt, parsePinSource("prompt")->kind);
}

TEST_F(PinSourceTest, VariableIsReadWithItsBlanks) {
    setEnvironment("ZRKEY_TEST_PIN", "12 34 ");
    EXPECT_EQ("12 34 ", read("env:ZRKEY_TEST_PIN"));
}

TEST_F(PinSourceTest, UnsetVariableIsRefused) {
    EXPECT_NE(
        std::string::npos,
        refusal("env:ZRKEY_TEST_PIN").find("from the variable ZRKEY_TEST_PIN: it is not set"));
}

TEST_F(PinSourceTest, FileIsReadUpToItsFirstLineEnd) {
    for (const char* content : {"1234", "1234\n", "1234\r\n", "1234\n5678\n"}) {
        writeFile("pin.txt", content);
        EXPECT_EQ("1234", read("file:pin.txt")) << content;
    }
}

TEST_F(PinSourceTest, EveryFileIsClosed) {
    const int before = nextDescriptor();
    writeFile("pin.txt", "1234");
    EXPECT_EQ("1234", read("file:pin.txt"));
    refusalOfFile(std::string(200, '1'));
    EXPECT_EQ(before, nextDescriptor());
}

TEST_F(PinSourceTest, MissingFileIsRefused) {
    EXPECT_NE(std::string::npos,
              refusal("file:nowhere").find("from \"nowhere\": No such file or directory"));
    EXPECT_NE(std::string::npos, refusal("fd:77").find("from descriptor 77: Bad file descriptor"));
}

TEST_F(PinSourceTest, EmptyPinIsRefused) {
    EXPECT_NE(std::string::npos, refusalOfFile("").find("the PIN is empty"));
    EXPECT_NE(std::string::npos, refusalOfFile("\r\n1234").find("the PIN is empty"));
}

TEST_F(PinSourceTest, OverlongPinIsRefused) {
    writeFile("pin.txt", std::string(127, '1'));
    EXPECT_EQ(std::string(127, '1'), read("file:pin.txt"));
    EXPECT_NE(std::string::npos,
              refusalOfFile(std::string(128, '1')).find("longer than 127 bytes"));
}

TEST_F(PinSourceTest, OverlongLineIsReadUpToTheFirstExtraByte) {
    writeFile("pin.txt", std::string(200, '1'));
    std::error_code error;
    const int descriptor = host::openForReading("pin.txt", error);
    EXPECT_NE(std::string::npos,
              refusal("fd:" + std::to_string(descriptor)).find("longer than 127 bytes"));
    char rest[200];
    EXPECT_EQ(200u - 128u, host::readSome(descriptor, rest, sizeof rest, error));
    host::closeDescriptor(descriptor);
}

TEST_F(PinSourceTest, ByteOrderMarkOfAFileIsSkipped) {
    const std::string mark = "\xEF\xBB\xBF";
    for (const std::string& pin : {std::string("1234"), std::string(127, '1'), mark + "1234"}) {
        writeFile("pin.txt", mark + pin + "\n");
        EXPECT_EQ(pin, read("file:pin.txt"));
    }
    EXPECT_NE(std::string::npos, refusalOfFile(mark).find("the PIN is empty"));
    writeFile("pin.txt", mark + "1234");
    std::error_code error;
    const int descriptor = host::openForReading("pin.txt", error);
    EXPECT_EQ(mark + "1234", read("fd:" + std::to_string(descriptor)));
    host::closeDescriptor(descriptor);
}

TEST_F(PinSourceTest, ReplacementCharacterIsAccepted) {
    writeFile("pin.txt", "12\xEF\xBF\xBD");
    EXPECT_EQ("12\xEF\xBF\xBD", read("file:pin.txt"));
}

TEST_F(PinSourceTest, PinThatIsNotUtf8IsRefused) {
    EXPECT_NE(std::string::npos, refusalOfFile("12\xFF"
                                               "34")
                                     .find("not valid UTF-8"));
    EXPECT_NE(std::string::npos, refusalOfFile(std::string("12\0"
                                                           "34",
                                                           5))
                                     .find("not valid UTF-8"));
    EXPECT_NE(std::string::npos, refusalOfFile("\xED\xA0\xBD\xED\xB4\x91").find("not valid UTF-8"));
    writeFile("pin.txt", "\xC3\xA4\xF0\x9F\x94\x91");
    EXPECT_EQ("\xC3\xA4\xF0\x9F\x94\x91", read("file:pin.txt"));
}

TEST_F(PinSourceTest, RefusalDoesNotShowThePin) {
    EXPECT_EQ(std::string::npos, refusalOfFile("4711\xFF").find("4711"));
}

TEST_F(PinSourceTest, MovedPinIsErased) {
    Pin first;
    for (const char byte : {'1', '2'}) {
        first.append(byte);
    }
    const char* place = first.view().data();
    const Pin second = std::move(first);
    EXPECT_EQ("12", second.view());
    EXPECT_EQ(0, place[0]);
    EXPECT_EQ(0, place[1]);
}

}  // namespace
}  // namespace zr::test
