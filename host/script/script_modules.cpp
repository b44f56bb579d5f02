// Modules for scripts: the global require.
//
// A module is a file. Its source becomes the body of a function of exports, require and module; the
// call of it fills exports. Each module has a require of its own, which knows the module's folder
// under two names: as it is shown in messages, and without symbolic links.
#include "host/script/script_modules.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "host/script/context.h"
#include "host/script/engine_text.h"
#include "host/script/script_files.h"
#include "host/script/syntax.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

// Keys that a script cannot spell.
constexpr const char* kModulesKey = DUK_HIDDEN_SYMBOL("modules");
constexpr const char* kFolderKey = DUK_HIDDEN_SYMBOL("folder");
constexpr const char* kShownFolderKey = DUK_HIDDEN_SYMBOL("shownFolder");

/// On the line on which the module's source begins, so that its lines keep their numbers.
constexpr std::string_view kBeforeSource = "(function (exports, require, module) {";
/// The source may end with a comment.
constexpr std::string_view kAfterSource = "\n})";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

fs::path toPath(std::string_view utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}

std::string toText(const fs::path& path) {
    const std::u8string utf8 = path.generic_u8string();
    return std::string(utf8.begin(), utf8.end());
}

/// The path without symbolic links, where that is known.
fs::path resolve(const fs::path& path) {
    std::error_code error;
    fs::path resolved = fs::canonical(path, error);
    return error ? fs::absolute(path, error).lexically_normal() : resolved;
}

bool isFile(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error) && !fs::is_directory(path, error);
}

struct ModuleFile {
    std::string path;   ///< without symbolic links
    std::string shown;  ///< its name in messages
};

ModuleFile findModule(const std::string& folder, const std::string& shownFolder,
                      const std::string& name) {
    const fs::path wanted = toPath(folder) / toPath(name);
    const std::string suffix = isFile(wanted) ? "" : ".js";
    return {toText(resolve(toPath(toText(wanted) + suffix))),
            toText((toPath(shownFolder) / toPath(name + suffix)).lexically_normal())};
}

std::string propertyAt(duk_context* script, duk_idx_t index, const char* key) {
    duk_get_prop_string(script, index, key);
    std::string text(viewOf(utf8At(script, -1)));
    duk_pop(script);
    return text;
}

duk_ret_t requireModule(duk_context* script);

/// Pushes a function require for a file.
void pushRequire(duk_context* script, const fs::path& path, const fs::path& shown) {
    duk_push_c_function(script, requireModule, 1);
    pushText(script, toText(path.parent_path()));
    duk_put_prop_string(script, -2, kFolderKey);
    pushText(script, toText(shown.parent_path()));
    duk_put_prop_string(script, -2, kShownFolderKey);
}

/// Pushes the function that a module is, from its file.
void pushModuleFunction(duk_context* script, const ModuleFile& file) {
    pushFile(script, file.path, file.shown, "require");
    duk_size_t size = 0;
    const char* const bytes = static_cast<const char*>(duk_get_buffer_data(script, -1, &size));
    std::string_view source(bytes, size);
    if (source.starts_with(kByteOrderMark)) {
        source.remove_prefix(kByteOrderMark.size());
    }
    const std::size_t wholeSize = kBeforeSource.size() + source.size() + kAfterSource.size();
    char* const whole = static_cast<char*>(duk_push_fixed_buffer(script, wholeSize));
    char* const copy = whole + kBeforeSource.copy(whole, kBeforeSource.size());
    kAfterSource.copy(copy + source.copy(copy, source.size()), kAfterSource.size());
    if (source.starts_with("#!")) {
        // A line for the system's shell becomes a comment.
        copy[0] = copy[1] = '/';
    }
    duk_remove(script, -2);
    pushText(script, file.shown);
    // Not DUK_COMPILE_FUNCTION: it ignores what follows a brace too many.
    compileSource(script, {whole, wholeSize}, DUK_COMPILE_EVAL);
    duk_call(script, 0);
    duk_remove(script, -2);
}

/// Runs a module with the object module on top of the stack.
duk_ret_t runModule(duk_context* script, void* data) {
    const ModuleFile& file = *static_cast<const ModuleFile*>(data);
    const duk_idx_t module = duk_get_top_index(script);
    pushModuleFunction(script, file);
    duk_get_prop_string(script, module, "exports");
    duk_dup_top(script);
    pushRequire(script, toPath(file.path), toPath(file.shown));
    duk_dup(script, module);
    // The function, this, exports, require, module.
    duk_call_method(script, 3);
    return 0;
}

/// require(path): the exports of a module, which runs at the first call.
duk_ret_t requireModule(duk_context* script) {
    const std::string name = pathArgument(script, 0, "require");
    stopInTime(script);
    duk_push_current_function(script);
    const ModuleFile file = findModule(propertyAt(script, -1, kFolderKey),
                                       propertyAt(script, -1, kShownFolderKey), name);
    duk_push_heap_stash(script);
    duk_get_prop_string(script, -1, kModulesKey);
    const duk_idx_t modules = duk_get_top_index(script);
    if (!duk_get_prop_lstring(script, modules, file.path.data(), file.path.size())) {
        duk_pop(script);
        duk_push_object(script);
        duk_push_object(script);
        duk_put_prop_string(script, -2, "exports");
        // Known before it runs: in a cycle the others get what it has exported so far.
        duk_dup_top(script);
        duk_put_prop_lstring(script, modules, file.path.data(), file.path.size());
        duk_dup_top(script);
        ModuleFile running = file;
        if (duk_safe_call(script, runModule, &running, 1, 1) != DUK_EXEC_SUCCESS) {
            // The next call runs it again.
            duk_del_prop_lstring(script, modules, file.path.data(), file.path.size());
            return duk_throw(script);
        }
        duk_pop(script);
    }
    duk_get_prop_string(script, -1, "exports");
    return 1;
}

}  // namespace

void addModules(duk_context* script, const std::string& file) {
    duk_push_heap_stash(script);
    duk_push_bare_object(script);
    duk_put_prop_string(script, -2, kModulesKey);
    duk_pop(script);
    const fs::path shown = toPath(file);
    pushRequire(script, resolve(file.empty() ? fs::path("script") : shown), shown);
    duk_put_global_string(script, "require");
}

}  // namespace zr::host
