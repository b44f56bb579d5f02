// Lines of standard input for scripts: the global readLine.
#include "host/script/line_input.h"

#include <algorithm>
#include <string_view>
#include <system_error>

#include "host/script/context.h"
#include "host/script/engine_text.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

constexpr std::size_t kBlock = 1 << 16;

/// Reads more of standard input.
/// @return false at its end.
bool readMore(duk_context* script, ScriptInput& input) {
    input.bytes.resize(kBlock);
    input.taken = 0;
    std::error_code error;
    const std::size_t count =
        readSome(kStandardInput, input.bytes.data(), input.bytes.size(), error);
    input.bytes.resize(count);
    stopInTime(script);
    if (error) {
        throwError(script, DUK_ERR_ERROR, "readLine failed: " + error.message());
    }
    return count > 0;
}

/// Appends bytes to the buffer on top of the stack, which the engine counts as the script's memory.
void appendTo(duk_context* script, std::size_t& size, std::string_view bytes) {
    duk_size_t room = 0;
    char* line = static_cast<char*>(duk_get_buffer_data(script, -1, &room));
    if (bytes.size() > room - size) {
        line = static_cast<char*>(
            duk_resize_buffer(script, -1, std::max(2 * room, size + bytes.size())));
    }
    std::copy(bytes.begin(), bytes.end(), line + size);
    size += bytes.size();
}

duk_ret_t readLine(duk_context* script) {
    if (contextOf(script).input.wasTheScript) {
        return throwError(script, DUK_ERR_ERROR,
                          "readLine failed: standard input contained the script");
    }
    stopInTime(script);
    pushInputLine(script);
    return 1;
}

}  // namespace

void pushInputLine(duk_context* script) {
    ScriptInput& input = contextOf(script).input;
    duk_push_dynamic_buffer(script, 0);
    std::size_t size = 0;
    bool isWhole = false;
    bool isEnd = false;
    while (!isWhole && !isEnd) {
        const std::string_view rest = viewOf(input.bytes).substr(input.taken);
        const std::size_t end = rest.find('\n');
        const std::string_view part = rest.substr(0, end);
        appendTo(script, size, part);
        isWhole = end != std::string_view::npos;
        input.taken += part.size() + (isWhole ? 1 : 0);
        isEnd = !isWhole && !readMore(script, input);
    }
    if (isEnd && size == 0) {
        duk_push_null(script);
        return;
    }
    const char* const line = static_cast<const char*>(duk_get_buffer_data(script, -1, nullptr));
    const bool hasReturn = isWhole && size > 0 && line[size - 1] == '\r';
    pushText(script, {line, size - (hasReturn ? 1 : 0)});
}

void addLineInput(duk_context* script) {
    duk_push_c_function(script, readLine, 0);
    duk_put_global_string(script, "readLine");
}

}  // namespace zr::host
