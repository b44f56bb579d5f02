// The names that a line of the shell can go on with.
#include "host/script/line_completion.h"

#include "host/objects/provider_object.h"
#include "host/script/context.h"
#include "host/script/late_bound/bound_object.h"
#include "host/script/late_bound/member_names.h"
#include "host/script/late_bound/members.h"
#include "host/script/script_objects.h"
#include "tests/support/fixtures/token.h"

namespace zr::host {
namespace {

using Names = std::vector<std::string>;

class LineCompletionTest : public test::TokenTest {
protected:
    void SetUp() override {
        test::TokenTest::SetUp();
        m_script = duk_create_heap(nullptr, nullptr, nullptr, &m_context, nullptr);
        addLateBoundObjects(m_script);
        addObjectModel(m_script);
        run("var answer = {first: 1, second: {third: 3}, 'no name': 4, firm: 5};");
        run("var nothing = null; function Answer() {}");
        put("provider", provider.get());
        put("token", token.get());
    }
    void TearDown() override {
        duk_destroy_heap(m_script);
        test::TokenTest::TearDown();
    }

    void run(const char* text) { duk_eval_string_noresult(m_script, text); }
    void put(const char* name, IDispatch* borrowed) {
        borrowed->AddRef();
        zrkey::ComRef<IDispatch> object;
        object.reset(borrowed);
        pushLateBound(m_script, std::move(object));
        duk_put_global_string(m_script, name);
    }
    /// Puts objects of the object model in the place of the late-bound ones.
    void putModel() {
        std::shared_ptr<ProviderObject> model;
        ASSERT_EQ(S_OK, ProviderObject::create(model));
        const auto call = [&](const char* name, const Value& argument) {
            return callMember(*model, *findMember(ObjectClass::kProvider, name), {argument});
        };
        call("Load", toWideText(module.path()));
        pushObject(m_script, std::get<ObjectRef>(call("OpenKey", 0.0)));
        duk_put_global_string(m_script, "token");
        pushObject(m_script, model);
        duk_put_global_string(m_script, "provider");
    }
    Names names(const std::string& line) {
        const duk_idx_t before = duk_get_top(m_script);
        const LineCompletion found = completeLine(m_script, line);
        EXPECT_EQ(before, duk_get_top(m_script));
        return found.names;
    }
    bool has(const std::string& line, const std::string& name) {
        const Names found = names(line);
        return std::find(found.begin(), found.end(), name) != found.end();
    }

    duk_context* m_script = nullptr;

private:
    Console m_console{Diagnostics::kDropped};
    ScriptContext m_context{m_console};
};

TEST_F(LineCompletionTest, GlobalsAreFound) {
    EXPECT_EQ((Names{"answer"}), names("print(ans"));
    EXPECT_EQ((Names{"TokenProvider"}), names("new Tok"));
    EXPECT_TRUE(has("", "answer"));
    EXPECT_TRUE(has("", "JSON"));
    EXPECT_EQ(Names{}, names("missing"));
}

TEST_F(LineCompletionTest, PropertiesAreFound) {
    EXPECT_EQ((Names{"firm", "first"}), names("answer.fir"));
    EXPECT_EQ((Names{"third"}), names("x = answer.second.th"));
    EXPECT_TRUE(has("answer.", "hasOwnProperty"));
    EXPECT_FALSE(has("answer.", "no name"));
    EXPECT_TRUE(has("JSON.", "stringify"));
    EXPECT_EQ(3u, completeLine(m_script, "answer.fir").typed);
    EXPECT_EQ(0u, completeLine(m_script, "answer.").typed);
}

TEST_F(LineCompletionTest, ValuesThatAreNoObjectsHaveTheMembersOfTheirKind) {
    run("var text = 'abc';");
    EXPECT_EQ((Names{"toUpperCase"}), names("text.toUp"));
    EXPECT_EQ(Names{}, names("nothing.a"));
    EXPECT_EQ(Names{}, names("missing.a"));
    EXPECT_EQ(Names{}, names("answer.missing.a"));
}

TEST_F(LineCompletionTest, MembersOfTheLibrarysObjectsAreTheirOwn) {
    EXPECT_EQ((Names{"OpenKey"}), names("provider.Op"));
    EXPECT_EQ((Names{"VerifyPIN"}), names("token.VerifyP"));
    EXPECT_FALSE(has("token.", "OpenKey"));
    EXPECT_FALSE(has("provider.", "GetLabel"));
}

TEST_F(LineCompletionTest, EveryMemberOfTheTableIsFoundOnItsObject) {
    putModel();
    for (const auto& [line, objectClass] :
         {std::pair{"provider.", ObjectClass::kProvider}, {"token.", ObjectClass::kToken}}) {
        for (const Member& member : membersOf(objectClass)) {
            EXPECT_TRUE(has(line, member.name)) << line << member.name;
        }
    }
    EXPECT_EQ((Names{"sign"}), names("token.sig"));
    EXPECT_EQ((Names{"Unload"}), names("provider.Un"));
    EXPECT_FALSE(has("token.", "OpenKey"));
    EXPECT_FALSE(has("provider.", "GetLabel"));
}

TEST_F(LineCompletionTest, LateBoundObjectsHaveTheLibrarysMembersAlone) {
    EXPECT_TRUE(has("token.", "SignData"));
    EXPECT_FALSE(has("token.", "sign"));
    EXPECT_FALSE(has("token.", "Close"));
    EXPECT_FALSE(has("provider.", "tokens"));
}

TEST_F(LineCompletionTest, EveryNameInTheListIsAMember) {
    for (const char* name : kProviderMembers) {
        EXPECT_TRUE(has("provider.", name)) << name;
    }
    for (const char* name : kTokenMembers) {
        EXPECT_TRUE(has("token.", name)) << name;
    }
}

TEST_F(LineCompletionTest, PropertiesThatAScriptGaveAnObjectAreFound) {
    run("token.mine = 1;");
    EXPECT_EQ((Names{"mine"}), names("token.mi"));
}

TEST_F(LineCompletionTest, NothingIsFoundBehindACall) {
    run("var calls = 0; function call() { ++calls; return answer }");
    EXPECT_EQ(Names{}, names("call().fir"));
    EXPECT_EQ(Names{}, names("1.fir"));
    EXPECT_EQ(Names{}, names("answer..fir"));
    duk_eval_string(m_script, "calls");
    EXPECT_EQ(0, duk_get_int(m_script, -1));
    duk_pop(m_script);
}

TEST_F(LineCompletionTest, GetterThatThrowsGivesNoNames) {
    run("Object.defineProperty(answer, 'bad', {get: function () { throw 1 }});");
    EXPECT_EQ(Names{}, names("answer.bad.x"));
}

}  // namespace
}  // namespace zr::host
