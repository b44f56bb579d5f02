// Messages to the host: what is one, and what ends the process.
#include "host/browser/messages.h"

#include <gtest/gtest.h>

#include "host/browser/malformed.h"

namespace zr::test {
namespace {

using host::CancelMessage;
using host::HelloMessage;
using host::PageMessage;
using host::readMessage;
using host::RequestMessage;

/// Why a text is not a message; empty when it is one.
std::string problemOf(const std::string& text) {
    try {
        readMessage(text);
        return {};
    } catch (const host::Malformed& malformed) {
        return malformed.problem;
    }
}

/// A request with some text in the place of its arguments.
std::string requestWith(const std::string& arguments) {
    return R"({"id":1,"object":1,"member":"m","arguments":)" + arguments + "}";
}

TEST(MessageTest, ReadsAHandshake) {
    const PageMessage message =
        readMessage(R"({"hello":{"protocol":7,"origin":"https://example.com"}})");
    const auto& hello = std::get<HelloMessage>(message);
    EXPECT_EQ(7, hello.protocol);
    EXPECT_EQ("https://example.com", hello.origin);
}

TEST(MessageTest, ReadsAHandshakeThatOnlyChecks) {
    const auto isCheck = [](const char* text) {
        return std::get<HelloMessage>(readMessage(text)).isCheck;
    };
    EXPECT_TRUE(isCheck(R"({"hello":{"protocol":1,"origin":"x","check":true}})"));
    EXPECT_FALSE(isCheck(R"({"hello":{"protocol":1,"origin":"x","check":false}})"));
    EXPECT_FALSE(isCheck(R"({"hello":{"protocol":1,"origin":"x"}})"));
    EXPECT_NE("", problemOf(R"({"hello":{"protocol":1,"origin":"x","check":1}})"));
}

TEST(MessageTest, RefusesALongMember) {
    const auto withMember = [](std::size_t length) {
        return R"({"id":1,"object":1,"arguments":[],"member":")" + std::string(length, 'm') + "\"}";
    };
    EXPECT_EQ("", problemOf(withMember(64)));
    EXPECT_EQ("\"member\" is longer than 64 bytes", problemOf(withMember(65)));
}

TEST(MessageTest, ReadsARequest) {
    const PageMessage message = readMessage(
        R"({"id":9007199254740991,"object":0,"member":"x","arguments":[{"upload":3},null,{"upload":4}],"active":true})");
    const auto& request = std::get<RequestMessage>(message);
    EXPECT_EQ(9007199254740991u, request.id);
    EXPECT_EQ(0u, request.object);
    EXPECT_EQ("x", request.member);
    EXPECT_EQ((std::vector<std::uint64_t>{3, 4}), request.uploads());
    EXPECT_TRUE(request.isActive);
    EXPECT_FALSE(std::get<RequestMessage>(readMessage(requestWith("[]"))).isActive);
}

TEST(MessageTest, ReadsACancellation) {
    EXPECT_EQ(7u, std::get<CancelMessage>(readMessage(R"({"cancel":7})")).id);
}

TEST(MessageTest, TakesEveryKindOfArgument) {
    EXPECT_EQ(
        "",
        problemOf(requestWith(R"([null,true,1.5,-3,"t",{"bytes":""},{"upload":0},{"object":2}])")));
}

TEST(MessageTest, RefusesWhatIsNotJson) {
    for (const char* text :
         {"", " ", "{", "{}x", "{\"cancel\":1}{\"cancel\":2}", "{'cancel':1}", "{\"cancel\":01}",
          "{\"cancel\":1,}", "{\"cancel\":NaN}", "// x\n{\"cancel\":1}", "{\"cancel\":1e999}",
          "\xEF\xBB\xBF{\"cancel\":1}", "{\"cancel\":1}\xFF", "{\"\xC0\x80\":1}",
          "{\"\xED\xA0\x80\":1}", R"({"\ud800":1})"}) {
        EXPECT_NE("", problemOf(text)) << text;
    }
    EXPECT_NE("", problemOf(std::string("{\"cancel\":1}\0{", 14)));
}

TEST(MessageTest, RefusesOtherValuesThanObjects) {
    for (const char* text : {"null", "1", "\"hello\"", "[]", "[{\"cancel\":1}]"}) {
        EXPECT_EQ("a message is not an object", problemOf(text)) << text;
    }
}

TEST(MessageTest, RefusesDepth) {
    // The object and the list of arguments are two levels.
    EXPECT_EQ("an argument is a list", problemOf(requestWith("[[[[[[[]]]]]]]")));
    EXPECT_EQ("a message is nested too deeply", problemOf(requestWith("[[[[[[[[]]]]]]]]")));
    EXPECT_EQ("a message is nested too deeply",
              problemOf(std::string(60000, '[') + std::string(5000, ']')));
}

TEST(MessageTest, RefusesAKeyTwice) {
    EXPECT_NE("", problemOf(R"({"cancel":1,"cancel":1})"));
    EXPECT_NE("", problemOf(R"({"hello":{"protocol":1,"origin":"a","origin":"b"}})"));
    EXPECT_NE("", problemOf(R"({"cancel":1,"c\u0061ncel":2})"));
}

TEST(MessageTest, RefusesKeysThatAreMissingOrUnknown) {
    for (const char* text :
         {"{}", R"({"hello":{}})", R"({"hello":{"protocol":1}})", R"({"hello":{"origin":"x"}})",
          R"({"hello":{"protocol":1,"origin":"x","more":1}})",
          R"({"hello":{"protocol":1,"origin":"x"},"id":1})", R"({"cancel":1,"id":2})",
          R"({"id":1,"object":1,"member":"m"})", R"({"id":1,"object":1,"arguments":[]})",
          R"({"id":1,"member":"m","arguments":[]})", R"({"object":1,"member":"m","arguments":[]})",
          R"({"id":1,"object":1,"member":"m","arguments":[],"origin":"https://other.example"})"}) {
        EXPECT_NE("", problemOf(text)) << text;
    }
}

TEST(MessageTest, RefusesValuesOfOtherTypes) {
    for (const char* text :
         {R"({"hello":1})", R"({"hello":{"protocol":"1","origin":"x"}})",
          R"({"hello":{"protocol":1.5,"origin":"x"}})", R"({"hello":{"protocol":-1,"origin":"x"}})",
          R"({"hello":{"protocol":1,"origin":1}})", R"({"cancel":0})", R"({"cancel":-1})",
          R"({"cancel":1.0})", R"({"cancel":"1"})", R"({"cancel":9007199254740992})",
          R"({"id":0,"object":1,"member":"m","arguments":[]})",
          R"({"id":1,"object":-1,"member":"m","arguments":[]})",
          R"({"id":1,"object":1,"member":1,"arguments":[]})",
          R"({"id":1,"object":1,"member":"m","arguments":{}})",
          R"({"id":1,"object":1,"member":"m","arguments":[],"active":1})"}) {
        EXPECT_NE("", problemOf(text)) << text;
    }
}

TEST(MessageTest, RefusesArguments) {
    for (const char* arguments :
         {"[[]]", "[{}]", R"([{"bytes":1}])", R"([{"bytes":"","object":1}])", R"([{"object":"1"}])",
          R"([{"object":-1}])", R"([{"upload":1.5}])", R"([{"other":1}])", "[1,2,3,4,5,6,7,8,9]"}) {
        EXPECT_NE("", problemOf(requestWith(arguments))) << arguments;
    }
}

}  // namespace
}  // namespace zr::test
