// Why a request of a page failed, as the page reads it.
#include "host/browser/page_error.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "host/browser/complaint.h"
#include "host/objects/call_error.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/interruption.h"

namespace zr::host {
namespace {

PageError errorOf(const CallError& error) {
    switch (error.kind()) {
        case CallError::Kind::kCount:
            return {page_code::kArguments, error.what()};
        case CallError::Kind::kArgument:
            return PageError(page_code::kArguments, error.what()).withArgument(error.argument());
        case CallError::Kind::kClosed:
            return {page_code::kClosed, error.what()};
        default:
            break;
    }
    const HRESULT result = error.result().code();
    const char* code = result == RPC_E_CANTCALLOUT_INEXTERNALCALL ? page_code::kNotLoggedIn
                       : result == E_OUTOFMEMORY                  ? page_code::kOutOfMemory
                                                                  : page_code::kRefused;
    return PageError(code, error.what()).withResult(static_cast<std::uint32_t>(result));
}

}  // namespace

PageError PageError::wrongArgument(std::size_t index, const std::string& problem) {
    std::string message = "argument ";
    message.append(std::to_string(index + 1)).append(" ").append(problem);
    return PageError(page_code::kArguments, std::move(message)).withArgument(index);
}

bool PageError::isOneOf(std::initializer_list<const char*> codes) const {
    return std::ranges::any_of(
        codes, [this](const char* code) { return std::string_view(code) == m_code; });
}

PageError& PageError::withResult(std::uint32_t result) {
    m_result = result;
    return *this;
}

PageError& PageError::withArgument(std::size_t index) {
    m_argument = index;
    return *this;
}

nlohmann::json PageError::json(const std::string& member) const {
    nlohmann::json error = {{"code", m_code}, {"message", m_message}};
    if (m_result) {
        error["hresult"] = *m_result;
    }
    if (!member.empty()) {
        error["member"] = member;
    }
    if (m_argument) {
        error["argument"] = *m_argument;
    }
    return error;
}

PageError currentPageError() {
    try {
        throw;
    } catch (const PageError& error) {
        return error;
    } catch (const CallError& error) {
        return errorOf(error);
    } catch (const Failure& failure) {
        complain(failure.line());
        return {page_code::kInternal, "the host failed; its standard error says why"};
    } catch (const std::bad_alloc&) {
        return {page_code::kOutOfMemory, "out of memory"};
    } catch (const Interrupted&) {
        return {page_code::kAborted, "the host was asked to end"};
    } catch (const std::exception& error) {
        complain(std::string("zrkey-browser: ").append(printable(error.what())).append("\n"));
        return {page_code::kInternal, "an unexpected failure; the host's standard error says more"};
    } catch (...) {
        return {page_code::kInternal, "an unexpected failure"};
    }
}

}  // namespace zr::host
