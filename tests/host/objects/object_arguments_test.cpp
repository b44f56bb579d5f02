// The arguments of every member: number, types and values, before anything is called. The
// expected answers are in expected_answers.txt, not in the table of the members.
#include "host/objects/arguments.h"

#include <cmath>
#include <limits>
#include <optional>

#include "tests/host/objects/expected_answers.h"

#include <gtest/gtest.h>

namespace zr::test {
namespace {

using host::CallError;
using host::Member;
using host::ObjectClass;
using host::Parameter;
using host::ParameterKind;
using host::Value;

constexpr ObjectClass kClasses[] = {ObjectClass::kProvider,    ObjectClass::kToken,
                                    ObjectClass::kFile,        ObjectClass::kContainer,
                                    ObjectClass::kCertificate, ObjectClass::kCollection};

/// An object that no member may reach.
class UntouchedObject : public host::Object {
public:
    explicit UntouchedObject(ObjectClass objectClass, bool isClosed = false)
        : Object(objectClass), m_isClosed(isClosed) {}
    void close() override { ADD_FAILURE() << "closed"; }
    bool isClosed() const override { return m_isClosed; }

private:
    bool m_isClosed;
};

Value objectOf(ObjectClass objectClass, bool isClosed = false) {
    return host::ObjectRef(std::make_shared<UntouchedObject>(objectClass, isClosed));
}

/// The values of expected_answers.txt, but not those that front ends convert before a call.
std::map<std::string, Value> makeValues() {
    using Limits = std::numeric_limits<double>;
    return {{"nothing", host::Nothing()},
            {"null", host::Null()},
            {"true", true},
            {"zero", 0.0},
            {"minusOne", -1.0},
            {"largest", 2147483647.0},
            {"smallest", -2147483648.0},
            {"tooLarge", 2147483648.0},
            {"tooSmall", -2147483649.0},
            {"huge", 1e300},
            {"infinity", Limits::infinity()},
            {"fraction", 1.5},
            {"nan", Limits::quiet_NaN()},
            {"digits", host::toWideText("1234")},
            {"emptyText", host::WideText()},
            {"nulText", host::toWideText(std::string_view("1\0002", 3))},
            {"halfPair", host::WideText{{OLECHAR{0xD800}}}},
            {"letters", host::toWideText("no such thing")},
            {"longText", host::toWideText(std::string(65536, 'x'))},
            {"bytes", host::toBytes("\1\2\3")},
            {"emptyBytes", host::Bytes()},
            {"hugeBytes", host::toBytes(std::string(1048577, 'x'))},
            {"texts", host::WideTexts{host::toWideText("1234")}},
            {"token", objectOf(ObjectClass::kToken)},
            {"certificate", objectOf(ObjectClass::kCertificate)},
            {"closedCertificate", objectOf(ObjectClass::kCertificate, true)},
            {"provider", objectOf(ObjectClass::kProvider)}};
}

const std::map<std::string, Value>& values() {
    static const std::map<std::string, Value> all = makeValues();
    return all;
}

std::string nameOf(const Parameter& parameter) {
    switch (parameter.kind) {
        case ParameterKind::kInteger:
            return "integer";
        case ParameterKind::kText:
            return parameter.mayHaveNul ? "anyText" : "text";
        case ParameterKind::kBytes:
            return "bytes";
        case ParameterKind::kCertificate:
            return "certificate";
        case ParameterKind::kTextOrIndex:
            return "textOrIndex";
        default:
            return "unused";
    }
}

std::vector<Value> goodValues(const std::vector<Parameter>& parameters) {
    const std::map<std::string, const char*> names = {
        {"integer", "zero"},     {"text", "digits"},
        {"bytes", "bytes"},      {"certificate", "certificate"},
        {"textOrIndex", "zero"}, {"anyText", "digits"},
        {"unused", "null"}};
    std::vector<Value> good;
    for (const Parameter& parameter : parameters) {
        good.push_back(values().at(names.at(nameOf(parameter))));
    }
    return good;
}

std::optional<CallError> errorOf(const Member& member, const std::vector<Value>& given) {
    try {
        host::Arguments(member, given);
    } catch (const CallError& error) {
        return error;
    }
    return std::nullopt;
}

std::string faultOf(const CallError& error) {
    switch (error.fault()) {
        case CallError::Fault::kType:
            return "type";
        case CallError::Fault::kRange:
            return "range";
        default:
            return "value";
    }
}

void expectWrongCount(const Member& member, const std::vector<Value>& given) {
    const auto error = errorOf(member, given);
    ASSERT_TRUE(error) << member.name << " took " << given.size() << " arguments";
    EXPECT_EQ(CallError::Kind::kCount, error->kind());
    EXPECT_EQ(member.name, error->member());
    EXPECT_EQ(E_INVALIDARG, error->result().code());
}

template <class Check>
void forEachMember(Check check) {
    for (const ObjectClass objectClass : kClasses) {
        for (const Member& member : host::membersOf(objectClass)) {
            SCOPED_TRACE(member.name);
            check(member);
        }
    }
}

class ObjectArgumentsTest : public testing::Test {
protected:
    void expectAnswer(const Member& member, std::vector<Value> given, std::size_t position,
                      const std::string& value) const {
        SCOPED_TRACE(value);
        const Parameter& parameter = member.parameters[position];
        given[position] = values().at(value);
        const auto error = errorOf(member, given);
        const bool isUnused = parameter.kind == ParameterKind::kUnused;
        const std::string wanted = isUnused ? "ok" : m_expected.answer(value, nameOf(parameter));
        ASSERT_EQ(wanted, error ? faultOf(*error) : "ok") << parameter.name;
        if (error) {
            EXPECT_EQ(CallError::Kind::kArgument, error->kind());
            EXPECT_EQ(position, error->argument());
            EXPECT_EQ(member.name, error->member());
            EXPECT_EQ(E_INVALIDARG, error->result().code());
        }
    }

    ExpectedAnswers m_expected;
};

TEST_F(ObjectArgumentsTest, TableHasTheExpectedMembersAndParameters) {
    std::size_t count = 0;
    for (const ObjectClass objectClass : kClasses) {
        for (const Member& member : host::membersOf(objectClass)) {
            std::string name = host::nameOf(objectClass);
            name.append(".").append(member.name);
            SCOPED_TRACE(name);
            ++count;
            ASSERT_TRUE(m_expected.members().contains(name));
            const ExpectedMember& expected = m_expected.members().at(name);
            std::vector<ExpectedParameter> used = expected.parameters;
            std::size_t next = 0;
            for (std::size_t i = 0; i < member.parameters.size(); ++i) {
                const Parameter& parameter = member.parameters[i];
                const bool isUnused = parameter.kind == ParameterKind::kUnused;
                EXPECT_EQ(isUnused, expected.unused.contains(i + 1)) << parameter.name;
                if (!isUnused) {
                    ASSERT_LT(next, used.size());
                    EXPECT_EQ(used[next].kind, nameOf(parameter));
                    EXPECT_EQ(used[next++].isOptional, parameter.isOptional);
                }
            }
            EXPECT_EQ(used.size(), next);
        }
    }
    EXPECT_EQ(m_expected.members().size(), count);
}

TEST_F(ObjectArgumentsTest, AllOrOnlyTheUsedArgumentsAreAccepted) {
    forEachMember([](const Member& member) {
        EXPECT_FALSE(errorOf(member, goodValues(member.usedParameters())));
        EXPECT_FALSE(errorOf(member, goodValues(member.parameters)));
    });
}

TEST_F(ObjectArgumentsTest, OtherNumbersOfArgumentsAreRefused) {
    forEachMember([](const Member& member) {
        std::vector<Value> given = goodValues(member.parameters);
        given.emplace_back(1.0);
        expectWrongCount(member, given);
        given.resize(given.size() + 100, 1.0);
        expectWrongCount(member, given);
        given = goodValues(member.usedParameters());
        const bool isNeeded = !given.empty() && !member.usedParameters().back().isOptional;
        if (isNeeded) {
            given.pop_back();
            expectWrongCount(member, given);
            // As if it were left out.
            given.emplace_back(host::Nothing());
            expectWrongCount(member, given);
        } else if (!given.empty()) {
            given.back() = host::Nothing();
            EXPECT_FALSE(errorOf(member, given));
        }
    });
}

TEST_F(ObjectArgumentsTest, EveryValueInEveryPlaceIsAnsweredAsExpected) {
    std::size_t checked = 0;
    for (const std::string& value : m_expected.values()) {
        checked += values().contains(value) ? 1 : 0;
    }
    // The others are what a front end converts.
    EXPECT_EQ(m_expected.values().size() - 3, checked);
    forEachMember([&](const Member& member) {
        const std::vector<Value> good = goodValues(member.parameters);
        for (std::size_t i = 0; i < good.size(); ++i) {
            for (const auto& [name, value] : values()) {
                // At the end it is an argument that is left out.
                if (name != "nothing" || i + 1 < good.size()) {
                    expectAnswer(member, good, i, name);
                }
            }
        }
    });
}

TEST_F(ObjectArgumentsTest, PositionIsThatAmongTheArgumentsGiven) {
    const Member& member = *host::findMember(ObjectClass::kToken, "SignData");
    const auto error = errorOf(member, {host::toBytes(""), 1.0});
    ASSERT_TRUE(error);
    EXPECT_EQ(1u, error->argument());
    EXPECT_STREQ("SignData: argument 2 is not a certificate", error->what());
    EXPECT_STREQ("SignData takes 2 or 3 arguments", errorOf(member, {})->what());
    const Member& verify = *host::findMember(ObjectClass::kToken, "verify");
    EXPECT_STREQ("verify takes 3 or 4 arguments", errorOf(verify, {})->what());
}

}  // namespace
}  // namespace zr::test
