// The object model in scripts.
#include "host/script/script_objects.h"

#include <string>
#include <utility>
#include <vector>

#include "host/objects/arguments.h"
#include "host/objects/provider_object.h"
#include "host/script/context.h"
#include "host/script/script_values.h"

namespace zr::host {
namespace {

// Keys that a script cannot spell.
constexpr const char* kNumberKey = DUK_HIDDEN_SYMBOL("number");
constexpr const char* kMemberKey = DUK_HIDDEN_SYMBOL("member");
constexpr const char* kClassKey = DUK_HIDDEN_SYMBOL("class");
constexpr const char* kPrototypesKey = DUK_HIDDEN_SYMBOL("prototypes");

constexpr ObjectClass kClasses[] = {ObjectClass::kProvider, ObjectClass::kToken, ObjectClass::kFile,
                                    ObjectClass::kContainer, ObjectClass::kCertificate};

/// The number of an object of ours, not one that a script's object inherits; 0: it has none.
std::uint32_t numberAt(duk_context* script, duk_idx_t index) {
    index = duk_normalize_index(script, index);
    duk_push_string(script, kNumberKey);
    duk_get_prop_desc(script, index, 0);
    std::uint32_t number = 0;
    if (duk_is_object(script, -1)) {
        duk_get_prop_string(script, -1, "value");
        number = duk_get_uint(script, -1);
        duk_pop(script);
    }
    duk_pop(script);
    return number;
}

/// Finalizer. A script may call it too; the object is dead afterwards.
duk_ret_t releaseObject(duk_context* script) {
    ScriptContext& context = contextOf(script);
    ObjectRef object =
        duk_is_object(script, 0) ? context.objects.remove(numberAt(script, 0)) : ObjectRef();
    if (!object) {
        return 0;
    }
    if (context.endProcess && context.use.isOverdue()) {
        // The engine cannot be stopped while it releases many objects.
        context.endProcess();
    }
    callLibrary(context, [&] {
        object.reset();
        return S_OK;
    });
    return 0;
}

void putText(duk_context* script, const char* property, const std::string& text) {
    duk_push_lstring(script, text.data(), text.size());
    duk_put_prop_string(script, -2, property);
}

duk_ret_t throwCallError(duk_context* script, const CallError& error) {
    const bool isMisuse =
        error.kind() == CallError::Kind::kCount || error.kind() == CallError::Kind::kArgument;
    duk_push_error_object_raw(script, isMisuse ? DUK_ERR_TYPE_ERROR : DUK_ERR_ERROR, nullptr, 0,
                              "%s", error.what());
    duk_push_number(script, static_cast<std::uint32_t>(error.result().code()));
    duk_put_prop_string(script, -2, "hresult");
    putText(script, "result", std::string(error.result().name()));
    putText(script, "member", error.member());
    if (error.kind() == CallError::Kind::kArgument) {
        duk_push_number(script, static_cast<double>(error.argument() + 1));
        duk_put_prop_string(script, -2, "argument");
    }
    return duk_throw(script);
}

/// Refuses a wrong number of arguments before any of them is looked at.
void requireCount(duk_context* script, const Member& member, duk_idx_t count) {
    while (count > 0 && duk_is_undefined(script, count - 1)) {
        // Left out at the end.
        --count;
    }
    try {
        Arguments::checkCount(member, static_cast<std::size_t>(count));
    } catch (const CallError& error) {
        throwCallError(script, error);
    }
}

/// Why a value that the object model does not have is refused.
/// @param count  the arguments of the call.
const char* problemOf(const Member& member, duk_idx_t index, duk_idx_t count) {
    const auto place = static_cast<std::size_t>(index);
    const bool isWhole = static_cast<std::size_t>(count) == member.parameters.size();
    const std::vector<Parameter> given = isWhole ? member.parameters : member.usedParameters();
    return place < given.size() && given[place].kind == ParameterKind::kBytes
               ? "is not bytes: give a Uint8Array"
               : "has a type that cannot be passed";
}

/// Converts the arguments of a call, after charging the script for them.
std::vector<Value> readArguments(duk_context* script, const Member& member, duk_idx_t count,
                                 ScriptCharge& charge) {
    for (duk_idx_t i = 0; i < count; ++i) {
        if (!charge.add(argumentSize(script, i))) {
            throwError(script, DUK_ERR_ERROR, "alloc failed");
        }
    }
    requireCount(script, member, count);
    const bool isWhole = static_cast<std::size_t>(count) == member.parameters.size();
    std::vector<Value> arguments;
    for (duk_idx_t i = 0; i < count; ++i) {
        if (isWhole &&
            member.parameters[static_cast<std::size_t>(i)].kind == ParameterKind::kUnused &&
            !duk_is_undefined(script, i)) {
            // Of any type: the library does not look at it.
            arguments.emplace_back(Null());
            continue;
        }
        std::optional<Value> argument = readValue(script, i);
        if (!argument) {
            throwCallError(script, CallError::wrongArgument(
                                       member.name, static_cast<std::size_t>(i),
                                       CallError::Fault::kType, problemOf(member, i, count)));
        }
        arguments.push_back(std::move(*argument));
    }
    return arguments;
}

/// What a call ended with.
struct Outcome {
    Value value;
    std::optional<CallError> error = {};
};

/// The engine's errors must not pass through the frames of a call, nor its own through the engine.
Outcome call(ScriptContext& context, Object& object, const Member& member,
             const std::vector<Value>& arguments) {
    Outcome outcome;
    callLibrary(context, [&] {
        try {
            outcome.value = callMember(object, member, arguments);
        } catch (const CallError& error) {
            outcome.error = error;
        } catch (const Interrupted&) {
            // The caller stops the script.
        }
        return S_OK;
    });
    return outcome;
}

/// A member, called with an object of its class as "this".
duk_ret_t callScriptMember(duk_context* script) {
    const duk_idx_t count = duk_get_top(script);
    ScriptContext& context = contextOf(script);
    duk_push_current_function(script);
    duk_get_prop_string(script, -1, kMemberKey);
    const Member& member = *static_cast<const Member*>(duk_get_pointer(script, -1));
    duk_get_prop_string(script, -2, kClassKey);
    const auto objectClass = static_cast<ObjectClass>(duk_get_int(script, -1));
    duk_push_this(script);
    const ObjectRef object = objectAt(script, -1);
    stopInTime(script);
    if (!object || object->objectClass() != objectClass) {
        return throwError(script, DUK_ERR_TYPE_ERROR,
                          std::string(member.name) + " was not called on a " + nameOf(objectClass));
    }
    ScriptCharge charge(context.use);
    const Outcome outcome =
        call(context, *object, member, readArguments(script, member, count, charge));
    stopInTime(script);
    if (outcome.error) {
        return throwCallError(script, *outcome.error);
    }
    pushValue(script, outcome.value);
    return 1;
}

/// Adds the members of a class to the prototype on top of the stack.
void addMembers(duk_context* script, ObjectClass objectClass) {
    for (const Member& member : membersOf(objectClass)) {
        duk_push_c_function(script, callScriptMember, DUK_VARARGS);
        duk_push_pointer(script, const_cast<Member*>(&member));
        duk_put_prop_string(script, -2, kMemberKey);
        duk_push_int(script, static_cast<int>(objectClass));
        duk_put_prop_string(script, -2, kClassKey);
        duk_push_string(script, "name");
        duk_push_string(script, member.name);
        duk_def_prop(script, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
        duk_put_prop_string(script, -2, member.name);
    }
}

/// Pushes the prototype of a class.
void pushPrototype(duk_context* script, ObjectClass objectClass) {
    duk_push_heap_stash(script);
    duk_get_prop_string(script, -1, kPrototypesKey);
    duk_get_prop_string(script, -1, nameOf(objectClass));
    duk_replace(script, -3);
    duk_pop(script);
}

duk_ret_t makeProvider(duk_context* script) {
    if (!duk_is_constructor_call(script)) {
        return throwError(script, DUK_ERR_TYPE_ERROR, "TokenProvider must be called with new");
    }
    stopInTime(script);
    ScriptContext& context = contextOf(script);
    if (!context.interruptions) {
        context.interruptions.emplace();
    }
    std::shared_ptr<ProviderObject> provider;
    const HRESULT result = callLibrary(context, [&] { return ProviderObject::create(provider); });
    if (FAILED(result)) {
        return throwCallError(script, CallError::refused("TokenProvider", result));
    }
    pushObject(script, std::move(provider));
    return 1;
}

}  // namespace

void addObjectModel(duk_context* script) {
    duk_push_heap_stash(script);
    duk_push_bare_object(script);
    for (const ObjectClass objectClass : kClasses) {
        duk_push_object(script);
        addMembers(script, objectClass);
        duk_put_prop_string(script, -2, nameOf(objectClass));
    }
    duk_put_prop_string(script, -2, kPrototypesKey);
    duk_pop(script);
    duk_push_c_function(script, makeProvider, 0);
    pushPrototype(script, ObjectClass::kProvider);
    duk_put_prop_string(script, -2, "prototype");
    duk_put_global_string(script, "TokenProvider");
}

void pushObject(duk_context* script, ObjectRef object) {
    ScriptContext& context = contextOf(script);
    const std::uint32_t number = context.objects.newNumber();
    duk_require_stack(script, 5);
    duk_push_object(script);
    pushPrototype(script, object->objectClass());
    duk_set_prototype(script, -2);
    duk_push_uint(script, number);
    duk_put_prop_string(script, -2, kNumberKey);
    duk_push_c_function(script, releaseObject, 2);
    duk_set_finalizer(script, -2);
    context.objects.add(number, std::move(object));
}

ObjectRef objectAt(duk_context* script, duk_idx_t index) {
    return duk_is_object(script, index) ? contextOf(script).objects.find(numberAt(script, index))
                                        : ObjectRef();
}

}  // namespace zr::host
