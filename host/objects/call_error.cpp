// Why a call of a member failed, for every front end.
#include "host/objects/call_error.h"

#include <utility>

namespace zr::host {

CallError CallError::refused(std::string member, HRESULT result, const std::string& cause) {
    std::string text = member;
    text.append(" failed: ").append(zrkey::Result(result).text());
    if (!cause.empty()) {
        text.append(": ").append(cause);
    }
    return {Kind::kRefused, std::move(member), result, std::move(text)};
}

CallError CallError::wrongCount(std::string member, const std::string& takes) {
    std::string text = member;
    text.append(" ").append(takes);
    return {Kind::kCount, std::move(member), E_INVALIDARG, std::move(text)};
}

CallError CallError::wrongArgument(std::string member, std::size_t index, Fault fault,
                                   const std::string& problem) {
    std::string text = member;
    text.append(": argument ").append(std::to_string(index + 1)).append(" ").append(problem);
    CallError error(Kind::kArgument, std::move(member), E_INVALIDARG, std::move(text));
    error.m_argument = index;
    error.m_fault = fault;
    return error;
}

CallError CallError::closed(std::string member) {
    std::string text = member;
    text.append(" failed: the object was closed");
    return {Kind::kClosed, std::move(member), E_UNEXPECTED, std::move(text)};
}

}  // namespace zr::host
