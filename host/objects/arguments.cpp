// The arguments of one call, checked.
#include "host/objects/arguments.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <new>

namespace zr::host {
namespace {

constexpr std::size_t kMostBytes = std::numeric_limits<LONG>::max();

bool isInRange(double number) {
    return number >= std::numeric_limits<LONG>::min() && number <= std::numeric_limits<LONG>::max();
}

/// What is wrong with a value; null: nothing.
struct Problem {
    const char* text = nullptr;
    CallError::Fault fault = CallError::Fault::kType;
};

Problem problemOf(double number) {
    if (std::isinf(number) || std::trunc(number) == number) {
        return isInRange(number) ? Problem()
                                 : Problem{"does not fit 32 bits", CallError::Fault::kRange};
    }
    return {"is not a whole number"};
}

Problem problemOf(const WideText& text) {
    const bool hasNul = std::find(text.units.begin(), text.units.end(), 0) != text.units.end();
    return hasNul ? Problem{"contains a NUL", CallError::Fault::kValue} : Problem();
}

Problem problemOf(const Bytes& bytes) {
    return bytes.bytes.size() > kMostBytes
               ? Problem{"has more than 2147483647 bytes", CallError::Fault::kRange}
               : Problem();
}

Problem problemOf(const ObjectRef& object) {
    if (object->objectClass() != ObjectClass::kCertificate) {
        return {"is not a certificate"};
    }
    return object->isClosed() ? Problem{"was closed", CallError::Fault::kValue} : Problem();
}

/// @tparam T      the type that the value has to have.
/// @param  wrong  the problem of a value of another type.
template <class T>
Problem problemOf(const Value& value, const char* wrong) {
    const T* typed = std::get_if<T>(&value);
    return typed ? problemOf(*typed) : Problem{wrong};
}

Problem problemOf(const Value& value, ParameterKind kind) {
    switch (kind) {
        case ParameterKind::kInteger:
            return problemOf<double>(value, "is not a number");
        case ParameterKind::kText:
            return problemOf<WideText>(value, "is not a text");
        case ParameterKind::kBytes:
            return problemOf<Bytes>(value, "is not bytes");
        case ParameterKind::kTextOrIndex:
            return std::holds_alternative<double>(value)
                       ? problemOf<double>(value, "")
                       : problemOf<WideText>(value, "is not a text or a number");
        default:
            return problemOf<ObjectRef>(value, "is not a certificate");
    }
}

bool isUsed(const Parameter& parameter) {
    return parameter.kind != ParameterKind::kUnused;
}

/// @param all  of the parameters, the ones that are not used too.
std::string countText(std::size_t fewest, std::size_t used, std::size_t all) {
    if (all == 0) {
        return "takes no argument";
    }
    std::string text = "takes ";
    if (fewest < used) {
        text.append(std::to_string(fewest)).append(used - fewest > 1 ? " to " : " or ");
    } else if (used < all) {
        text.append(std::to_string(used)).append(" or ");
    }
    return text.append(std::to_string(all)).append(all == 1 ? " argument" : " arguments");
}

}  // namespace

Member Member::returning(ObjectClass objectClass) const {
    Member changed = *this;
    changed.resultClass = objectClass;
    return changed;
}

Member Member::forPages() const {
    Member changed = *this;
    changed.isForPages = true;
    return changed;
}

Member Member::orNull() const {
    Member changed = *this;
    changed.mayBeNull = true;
    return changed;
}

Member Member::forClosed() const {
    Member changed = *this;
    changed.isForClosed = true;
    return changed;
}

std::vector<Parameter> Member::usedParameters() const {
    std::vector<Parameter> used;
    std::ranges::copy_if(parameters, std::back_inserter(used), isUsed);
    return used;
}

void Arguments::checkCount(const Member& member, std::size_t given) {
    const std::vector<Parameter> used = member.usedParameters();
    const auto fewest =
        static_cast<std::size_t>(std::ranges::count(used, false, &Parameter::isOptional));
    if (given != member.parameters.size() && (given < fewest || given > used.size())) {
        throw CallError::wrongCount(member.name,
                                    countText(fewest, used.size(), member.parameters.size()));
    }
}

Arguments::Arguments(const Member& member, const std::vector<Value>& values) : m_member(member) {
    std::span<const Value> given(values);
    while (!given.empty() && kindOf(given.back()) == Kind::kNothing) {
        // Left out at the end.
        given = given.first(given.size() - 1);
    }
    checkCount(member, given.size());
    const std::vector<Parameter> used = member.usedParameters();
    const std::vector<Parameter>& parameters =
        given.size() > used.size() ? member.parameters : used;
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (isUsed(parameters[i])) {
            m_positions.push_back(i);
            m_values.push_back(&given[i]);
            check(parameters[i]);
        }
    }
}

void Arguments::check(const Parameter& parameter) const {
    const Value& value = *m_values.back();
    if (parameter.mayHaveNul && std::holds_alternative<WideText>(value)) {
        return;
    }
    const Problem problem = problemOf(value, parameter.kind);
    if (problem.text) {
        throw faulty(m_values.size() - 1, problem.fault, problem.text);
    }
}

LONG Arguments::integer(std::size_t index, LONG missing) const {
    return has(index) ? static_cast<LONG>(std::get<double>(value(index))) : missing;
}

const WideText& Arguments::text(std::size_t index) const {
    return std::get<WideText>(value(index));
}

std::string_view Arguments::bytes(std::size_t index) const {
    return viewOf(std::get<Bytes>(value(index)).bytes);
}

zrkey::ByteArray Arguments::byteArray(std::size_t index) const {
    return zrkey::ByteArray(bytes(index));
}

void Arguments::require(HRESULT result) const {
    if (FAILED(result)) {
        throw refused(result);
    }
}

CallError Arguments::faulty(std::size_t index, CallError::Fault fault,
                            const std::string& problem) const {
    return CallError::wrongArgument(m_member.name, m_positions[index], fault, problem);
}

CallError Arguments::wrong(std::size_t index, const std::string& problem) const {
    return faulty(index, CallError::Fault::kValue, problem);
}

CallError Arguments::refused(HRESULT result, const std::string& cause) const {
    return CallError::refused(m_member.name, result, cause);
}

CallError Arguments::closed() const {
    return CallError::closed(m_member.name);
}

Value bytesOf(const zrkey::ByteArray& result) {
    const std::optional<std::string> bytes = result.bytes();
    if (!bytes) {
        throw std::bad_alloc();
    }
    return toBytes(*bytes);
}

Value textOf(const zrkey::Text& text) {
    return toWideText(text.get());
}

}  // namespace zr::host
