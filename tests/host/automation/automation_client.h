// An Automation client of zrkeycom.dll: it loads the DLL by its path, without registration, and calls
// members by name.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/fixtures/library.h"
#include "tests/support/hresult.h"

namespace zr::test {

/// What a late-bound call returned.
struct Answer {
    HRESULT result = S_OK;
    Variant value;
    HRESULT code = S_OK;  ///< of EXCEPINFO
    std::string source;
    std::string description;
    UINT position = kUntouched;

    static constexpr UINT kUntouched = 99;
};

/// The exports of the DLL, which stays loaded until the program ends.
HRESULT getClassObject(REFCLSID id, REFIID iid, void** result);
HRESULT canUnloadNow();

/// A new provider. Needs an apartment.
ComRef<IDispatch> makeAutomationProvider();

/// The number of a name; DISPID_UNKNOWN when there is none.
DISPID findId(IDispatch* object, const std::string& name);

Answer invoke(IDispatch* object, DISPID id, WORD flags, DISPPARAMS params);
/// @param reversed  the arguments in reverse order.
/// @param names     of the first arguments in it.
Answer invokeNamed(IDispatch* object, const std::string& member, std::vector<VARIANT> reversed,
                   std::vector<std::string> names);

/// Calls a member.
/// @param arguments  borrowed, in the order in which they are written.
template <class... Arguments>
Answer call(const ComRef<IDispatch>& object, const std::string& name,
            const Arguments&... arguments) {
    std::vector<VARIANT> reversed = {static_cast<const VARIANT&>(arguments)...};
    std::reverse(reversed.begin(), reversed.end());
    return invokeNamed(object.get(), name, std::move(reversed), {});
}
Answer read(const ComRef<IDispatch>& object, const std::string& property);

// Arguments.
Variant text(const std::string& text);
Variant bytes(const std::string& bytes);
inline Variant integer(LONG number) {
    return Variant::fromNumber(number);
}
Variant object(const ComRef<IDispatch>& object);
VARIANT missing();
/// A variant that refers to another.
VARIANT referenceTo(VARIANT& variant);
/// A variant that refers to a value of a type.
VARIANT referenceTo(VARTYPE type, void* value);

/// A result as text: "S:abc", "N:1", "B:true", "X:00ff" for bytes, "null", "empty", "object", ...
std::string shown(const VARIANT& value);

testing::AssertionResult isAnswer(const char*, const char* call, const std::string& expected,
                                  const Answer& answer);
testing::AssertionResult isRefusal(const char*, const char* call, HRESULT expected,
                                   const Answer& answer);
testing::AssertionResult isException(const char*, const char* call, HRESULT expected,
                                     const Answer& answer);

}  // namespace zr::test

/// A call that succeeds with a result as shown() writes it.
#define EXPECT_ANSWER(expected, answer) EXPECT_PRED_FORMAT2(zr::test::isAnswer, expected, answer)
/// A call that fails without EXCEPINFO.
#define EXPECT_REFUSED(expected, answer) EXPECT_PRED_FORMAT2(zr::test::isRefusal, expected, answer)
/// A call that fails with EXCEPINFO.
#define EXPECT_EXCEPTION(expected, answer) \
    EXPECT_PRED_FORMAT2(zr::test::isException, expected, answer)
