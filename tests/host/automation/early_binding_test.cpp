// Early-bound calls, as compiled clients and Visual Basic make them, against late-bound ones. Windows
// only, as Automation is.
#include <functional>
#include <map>

#include "host/automation/interfaces.h"
#include "tests/host/automation/automation_test.h"

namespace zr::test {
namespace {

/// A member of a dual interface, from the type library.
struct DualMember {
    std::string name;
    DISPID id;
    WORD flags;
    std::vector<VARTYPE> parameters;  ///< without the result
    IID resultInterface = IID_NULL;   ///< of a result that is an object
};

/// The interface that a parameter of the type Interface** points to; IID_NULL for other types.
IID interfaceOf(ITypeInfo& info, const TYPEDESC& type) {
    const bool isObject = type.vt == VT_PTR && type.lptdesc->vt == VT_PTR &&
                          type.lptdesc->lptdesc->vt == VT_USERDEFINED;
    ComRef<ITypeInfo> found;
    TYPEATTR* attributes = nullptr;
    if (!isObject ||
        FAILED(info.GetRefTypeInfo(type.lptdesc->lptdesc->hreftype, found.receive())) ||
        FAILED(found->GetTypeAttr(&attributes))) {
        return IID_NULL;
    }
    const IID iid = attributes->guid;
    found->ReleaseTypeAttr(attributes);
    return iid;
}

DualMember readMember(ITypeInfo& info, const FUNCDESC& function) {
    Text name;
    EXPECT_HR(S_OK,
              info.GetDocumentation(function.memid, name.receive(), nullptr, nullptr, nullptr));
    DualMember member = {name.utf8(), function.memid, static_cast<WORD>(function.invkind), {}};
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        if (parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) {
            member.resultInterface = interfaceOf(info, parameter.tdesc);
        } else {
            member.parameters.push_back(parameter.tdesc.vt);
        }
    }
    return member;
}

/// The description whose calls go through the table of functions of the interface.
ComRef<ITypeInfo> dualInterface(IDispatch* object) {
    ComRef<ITypeInfo> dispatch, dual;
    HREFTYPE reference = 0;
    EXPECT_HR(S_OK, object->GetTypeInfo(0, 0, dispatch.receive()));
    EXPECT_HR(S_OK, dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
    EXPECT_HR(S_OK, dispatch->GetRefTypeInfo(reference, dual.receive()));
    return dual;
}

std::vector<DualMember> membersOf(ITypeInfo& info) {
    std::vector<DualMember> members;
    FUNCDESC* function = nullptr;
    for (UINT i = 0; SUCCEEDED(info.GetFuncDesc(i, &function)); ++i) {
        members.push_back(readMember(info, *function));
        info.ReleaseFuncDesc(function);
    }
    return members;
}

class EarlyBindingTest : public AutomationObjectsTest {
protected:
    /// Arguments with which most members succeed, in reverse order.
    static std::vector<Variant> argumentsFor(const DualMember& member,
                                             const AutomationObjects& objects) {
        std::vector<Variant> reversed;
        for (auto type = member.parameters.rbegin(); type != member.parameters.rend(); ++type) {
            if (*type == VT_PTR) {
                reversed.push_back(object(objects.at("IZRCertificate")));
            } else if (*type == VT_BSTR) {
                reversed.push_back(text(textFor(member.name)));
            } else if (*type == VT_I4) {
                reversed.push_back(integer(0));
            } else {
                reversed.push_back(variantFor(member, reversed.size()));
            }
        }
        return reversed;
    }

    static std::string textFor(const std::string& member) {
        static const std::map<std::string, std::string> texts = {{"VerifyPIN", "1234"},
                                                                 {"ModifyPIN", "1234"},
                                                                 {"DigestData", "MD5"},
                                                                 {"fromHex", "6162"},
                                                                 {"fromBase64", "YWI="}};
        const auto found = texts.find(member);
        return found == texts.end() ? "8" : found->second;
    }

    static Variant variantFor(const DualMember& member, std::size_t fromTheEnd) {
        const bool isAlgorithm =
            (member.name == "sign" || member.name == "verify") && fromTheEnd == 0;
        return isAlgorithm                                                        ? text("rsa-sha1")
               : member.name.ends_with("Container") || member.name == "UnlockPIN" ? text("a")
                                                                                  : bytes("bytes");
    }

    Answer callLate(const std::string& interfaceName, const DualMember& member) {
        const AutomationObjects objects = makeObjects();
        std::vector<Variant> owned = argumentsFor(member, objects);
        std::vector<VARIANT> arguments(owned.begin(), owned.end());
        return invoke(objects.at(interfaceName).get(), member.id, member.flags,
                      {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0});
    }

    Answer callEarly(const std::string& interfaceName, const DualMember& member) {
        const AutomationObjects objects = makeObjects();
        const ComRef<IDispatch>& object = objects.at(interfaceName);
        const ComRef<ITypeInfo> dual = dualInterface(object.get());
        std::vector<Variant> owned = argumentsFor(member, objects);
        std::vector<VARIANT> arguments(owned.begin(), owned.end());
        DISPPARAMS params = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        Answer answer;
        EXCEPINFO info = {};
        answer.result = dual->Invoke(object.get(), member.id, member.flags, &params,
                                     answer.value.receive(), &info, nullptr);
        answer.code = info.scode;
        answer.description =
            Variant::fromText(takeOver(info.bstrDescription)).toText().value_or("");
        answer.source = Variant::fromText(takeOver(info.bstrSource)).toText().value_or("");
        return answer;
    }

    /// Whether a result is an object. It then is of the interface that the type library declares.
    static bool hasDeclaredInterface(const DualMember& member, const Variant& result) {
        if (member.resultInterface == IID_NULL || result.type() != VT_DISPATCH) {
            return false;
        }
        ComRef<IUnknown> declared;
        EXPECT_HR(S_OK,
                  result.get().pdispVal->QueryInterface(member.resultInterface, declared.receive()))
            << member.name;
        EXPECT_EQ(static_cast<void*>(result.get().pdispVal), declared.get()) << member.name;
        return true;
    }

    static zrkey::Text takeOver(BSTR text) {
        zrkey::Text owner;
        owner.reset(text);
        return owner;
    }
};

TEST_F(EarlyBindingTest, EveryMemberAnswersAsByItsName) {
    std::size_t members = 0, successes = 0, objectResults = 0;
    const AutomationObjects objects = makeObjects();
    for (const auto& [interfaceName, object] : objects) {
        for (const DualMember& member : membersOf(*dualInterface(object.get()).get())) {
            const std::string name = interfaceName + "." + member.name;
            const Answer late = callLate(interfaceName, member);
            const std::vector<std::string> lateCalls = module.takeCalls();
            const Answer early = callEarly(interfaceName, member);
            EXPECT_EQ(lateCalls, module.takeCalls()) << name;
            EXPECT_HR(late.result, early.result) << name;
            EXPECT_HR(late.code, early.code) << name;
            EXPECT_EQ(late.description, early.description) << name;
            EXPECT_EQ(late.source, early.source) << name;
            ++members;
            if (SUCCEEDED(late.result)) {
                EXPECT_EQ(shown(late.value), shown(early.value)) << name;
                ++successes;
                objectResults += hasDeclaredInterface(member, early.value) ? 1 : 0;
            }
        }
    }
    EXPECT_LE(80u, members);
    EXPECT_LE(members * 3 / 4, successes);
    // tokens, OpenKey, OpenContainer, certificates, CreateFile, OpenFile, GetKeyCert, KeyCert
    EXPECT_EQ(8u, objectResults);
}

/// The names of a member and of its parameters.
std::vector<zrkey::Text> namesOf(ITypeInfo& info, const DualMember& member) {
    constexpr UINT kMost = 10;
    BSTR names[kMost] = {};
    UINT count = 0;
    EXPECT_HR(S_OK, info.GetNames(member.id, names, kMost, &count));
    std::vector<zrkey::Text> owned(count);
    for (UINT i = 0; i < count; ++i) {
        owned[i].reset(names[i]);
    }
    // Without the result.
    owned.resize(std::min<std::size_t>(count, 1 + member.parameters.size()));
    return owned;
}

TEST_F(EarlyBindingTest, NumbersOfNamesAreThoseOfTheTypeLibrary) {
    std::size_t parameters = 0;
    const AutomationObjects objects = makeObjects();
    for (const auto& [interfaceName, object] : objects) {
        const ComRef<ITypeInfo> dual = dualInterface(object.get());
        for (const DualMember& member : membersOf(*dual.get())) {
            const std::vector<zrkey::Text> names = namesOf(*dual.get(), member);
            std::vector<LPOLESTR> pointers;
            for (const zrkey::Text& name : names) {
                pointers.push_back(name.get());
            }
            std::vector<DISPID> ids(names.size());
            EXPECT_HR(S_OK, object->GetIDsOfNames(IID_NULL, pointers.data(),
                                                  static_cast<UINT>(names.size()), 0, ids.data()))
                << interfaceName << "." << member.name;
            EXPECT_EQ(member.id, ids[0]) << interfaceName << "." << member.name;
            for (std::size_t i = 1; i < ids.size(); ++i) {
                EXPECT_EQ(static_cast<DISPID>(i - 1), ids[i]) << interfaceName << member.name;
                ++parameters;
            }
        }
    }
    EXPECT_LE(50u, parameters);
}

}  // namespace
}  // namespace zr::test
