// Files for scripts: the globals readFile and writeFile.
#include "host/script/script_files.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <string_view>
#include <system_error>

#include "host/script/context.h"
#include "host/script/engine_text.h"
#include "host/script/script_text.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

constexpr std::size_t kFirstRoom = 1 << 16;
/// How many bytes are read or written between two checks of the time.
constexpr std::size_t kBlock = 1 << 20;
/// The bytes that half of a surrogate pair has in the engine's text.
constexpr std::size_t kHalf = 3;

/// A descriptor, closed on destruction: the engine throws errors through these functions.
class OpenedFile {
public:
    explicit OpenedFile(int descriptor) : m_descriptor(descriptor) {}
    ~OpenedFile() {
        if (m_descriptor >= 0) {
            closeDescriptor(m_descriptor);
        }
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    int get() const { return m_descriptor; }
    std::error_code close() {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return closeDescriptor(descriptor);
    }

private:
    int m_descriptor;
};

duk_ret_t throwFailure(duk_context* script, const std::string& function, const std::string& name,
                       const std::string& reason) {
    return throwError(
        script, DUK_ERR_ERROR,
        std::string(function).append(" failed: ").append(name).append(": ").append(reason));
}

/// readFile(path), readFile(path, "utf8").
duk_ret_t callReadFile(duk_context* script) {
    const std::string path = pathArgument(script, 0, "readFile");
    const bool wantsText = !duk_is_undefined(script, 1);
    if (wantsText && (!isText(script, 1) || viewOf(utf8At(script, 1)) != "utf8")) {
        return throwError(script, DUK_ERR_TYPE_ERROR,
                          "readFile: the second argument can only be \"utf8\"");
    }
    pushFile(script, path, path, "readFile");
    duk_size_t size = 0;
    const char* const bytes = static_cast<const char*>(duk_get_buffer_data(script, -1, &size));
    if (!wantsText) {
        duk_push_buffer_object(script, -1, 0, size, DUK_BUFOBJ_UINT8ARRAY);
    } else if (utf8::is_valid(std::string_view(bytes, size))) {
        pushText(script, {bytes, size});
    } else {
        return throwFailure(script, "readFile", path, "it is not valid UTF-8 text");
    }
    return 1;
}

/// The size of the longest beginning of the engine's text that is not longer than a block and splits
/// no character, nor a pair of surrogates.
std::size_t wholeBlock(std::string_view text) {
    if (text.size() <= kBlock) {
        return text.size();
    }
    std::size_t size = kBlock;
    while (size > kBlock - kHalf && (text[size] & 0xC0) == 0x80) {
        --size;
    }
    const bool isSecondHalf =
        text[size] == '\xED' && size + 1 < text.size() && (text[size + 1] & 0xF0) == 0xB0;
    return isSecondHalf ? size - kHalf : size;
}

/// writeFile(path, bytesOrText).
duk_ret_t callWriteFile(duk_context* script) {
    const std::string path = pathArgument(script, 0, "writeFile");
    const bool isTextGiven = isText(script, 1);
    if (!isTextGiven && !duk_is_buffer_data(script, 1)) {
        return throwError(script, DUK_ERR_TYPE_ERROR,
                          "writeFile: the content is neither bytes nor a text");
    }
    duk_size_t size = 0;
    const void* const content =
        isTextGiven ? duk_get_lstring(script, 1, &size) : duk_get_buffer_data(script, 1, &size);
    std::string_view rest(static_cast<const char*>(content), content ? size : 0);
    stopInTime(script);
    std::error_code error;
    OpenedFile file(openForWriting(path, error));
    if (!error) {
        error = emptyFile(file.get());
    }
    while (!error && !rest.empty()) {
        stopInTime(script);
        const std::string_view block =
            rest.substr(0, isTextGiven ? wholeBlock(rest) : std::min(kBlock, rest.size()));
        error = writeAll(file.get(), isTextGiven ? viewOf(toUtf8(block)) : block);
        rest.remove_prefix(block.size());
    }
    if (file.get() >= 0) {
        const std::error_code closeError = file.close();
        error = error ? error : closeError;
    }
    return error ? throwFailure(script, "writeFile", path, error.message()) : 0;
}

}  // namespace

void pushFile(duk_context* script, const std::string& path, const std::string& name,
              const std::string& function) {
    stopInTime(script);
    std::error_code error;
    const OpenedFile file(openForReading(path, error));
    std::size_t room = kFirstRoom;
    std::size_t size = 0;
    char* bytes = static_cast<char*>(duk_push_dynamic_buffer(script, room));
    while (!error) {
        stopInTime(script);
        if (size == room) {
            room *= 2;
            bytes = static_cast<char*>(duk_resize_buffer(script, -1, room));
        }
        const std::size_t count =
            readSome(file.get(), bytes + size, std::min(room - size, kBlock), error);
        if (count == 0) {
            break;
        }
        size += count;
    }
    if (error) {
        throwFailure(script, function, name, error.message());
    }
    duk_resize_buffer(script, -1, size);
}

void addFileFunctions(duk_context* script) {
    duk_push_c_function(script, callReadFile, 2);
    duk_put_global_string(script, "readFile");
    duk_push_c_function(script, callWriteFile, 2);
    duk_put_global_string(script, "writeFile");
}

}  // namespace zr::host
