// Why a call of a member failed, in the forms in which Automation reports it.
#include "host/automation/call_failure.h"

#include <new>
#include <utility>

#include "host/objects/call_error.h"
#include "host/system/interruption.h"

namespace zr::automation {
namespace {

using host::CallError;

/// The result that Automation has for a kind of failure; DISP_E_EXCEPTION: none.
HRESULT dispatchResultOf(const CallError& error) {
    if (error.kind() == CallError::Kind::kCount) {
        return DISP_E_BADPARAMCOUNT;
    }
    if (error.kind() != CallError::Kind::kArgument) {
        return DISP_E_EXCEPTION;
    }
    switch (error.fault()) {
        case CallError::Fault::kType:
            return DISP_E_TYPEMISMATCH;
        case CallError::Fault::kRange:
            return DISP_E_OVERFLOW;
        default:
            return DISP_E_EXCEPTION;
    }
}

CallFailure failureOf(const CallError& error) {
    const HRESULT result = dispatchResultOf(error);
    return {result, result == DISP_E_EXCEPTION ? error.result().code() : result, error.what()};
}

CallFailure failureOf(const WrongArgument& error, const char* member) {
    std::string description = std::string(member).append(": ");
    description.append(error.text.empty() ? "the arguments are wrong" : error.text);
    return {error.result, error.result, std::move(description), error.position};
}

/// The text as an Automation client owns it; null when out of memory.
/// @param utf8  a system's text may be in another encoding: a malformed byte becomes U+FFFD.
BSTR toBstr(const std::string& utf8) {
    try {
        const host::WideText wide = host::toWideText(utf8);
        return SysAllocStringLen(wide.units.data(), static_cast<UINT>(wide.units.size()));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

CallFailure currentFailure(const char* member) {
    try {
        throw;
    } catch (const CallError& error) {
        return failureOf(error);
    } catch (const WrongArgument& error) {
        return failureOf(error, member);
    } catch (const std::bad_alloc&) {
        return {E_OUTOFMEMORY, E_OUTOFMEMORY, std::string(member).append(": out of memory")};
    } catch (const host::Interrupted&) {
        return {DISP_E_EXCEPTION, E_ABORT, std::string(member).append(": interrupted")};
    } catch (const std::exception& error) {
        return {DISP_E_EXCEPTION, E_UNEXPECTED,
                std::string(member).append(": ").append(error.what())};
    } catch (...) {
        return {DISP_E_EXCEPTION, E_UNEXPECTED, std::string(member).append(": unexpected error")};
    }
}

std::string sourceOf(host::ObjectClass objectClass) {
    return std::string("ZRKey.").append(host::nameOf(objectClass));
}

HRESULT report(const CallFailure& failure, host::ObjectClass objectClass, EXCEPINFO* info,
               UINT* position) {
    if (failure.invokeResult == DISP_E_EXCEPTION && info) {
        *info = {};
        info->scode = failure.result;
        info->bstrSource = toBstr(sourceOf(objectClass));
        info->bstrDescription = toBstr(failure.description);
    }
    if (failure.position && position) {
        *position = *failure.position;
    }
    return failure.invokeResult;
}

HRESULT reportEarly(const CallFailure& failure, host::ObjectClass objectClass, REFIID iid) {
    zrkey::ComRef<ICreateErrorInfo> error;
    zrkey::ComRef<IErrorInfo> info;
    if (FAILED(CreateErrorInfo(error.receive()))) {
        return failure.result;
    }
    // The error object copies the texts.
    zrkey::Text source, description;
    source.reset(toBstr(sourceOf(objectClass)));
    description.reset(toBstr(failure.description));
    error->SetGUID(iid);
    error->SetSource(source.get());
    error->SetDescription(description.get());
    if (SUCCEEDED(error->QueryInterface(IID_IErrorInfo, info.receive()))) {
        SetErrorInfo(0, info.get());
    }
    return failure.result;
}

}  // namespace zr::automation
