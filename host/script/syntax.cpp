// Compiles source text, and explains syntax errors of source that is too new for the engine.
#include "host/script/syntax.h"

#include <algorithm>
#include <cctype>

#include "host/script/context.h"
#include "host/script/engine_text.h"

namespace zr::host {
namespace {

// A key that a script cannot spell.
constexpr const char* kExplanationKey = DUK_HIDDEN_SYMBOL("explanation");

constexpr const char* kEdition = "scripts are ECMAScript 5.1 with parts of later editions";

struct Newer {
    std::string_view text;
    const char* name;
};

constexpr Newer kNewerSigns[] = {
    {"=>", "an arrow function"}, {"`", "a template text"},     {"...", "\"...\""},
    {"??", "\"?\?\""},           {"function*", "a generator"}, {"catch{", "catch without a name"},
    {"var{", "destructuring"},   {"var[", "destructuring"},    {"const{", "destructuring"},
    {"const[", "destructuring"}, {"&&=", "\"&&=\""},           {"||=", "\"||=\""}};
constexpr Newer kNewerWords[] = {{"let", "\"let\""},       {"class", "\"class\""},
                                 {"async", "\"async\""},   {"await", "\"await\""},
                                 {"yield", "a generator"}, {"import", "\"import\""},
                                 {"export", "\"export\""}, {"of", "a loop with \"of\""}};

bool isWordCharacter(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_' ||
           character == '$';
}

/// The line without comments at its end, the contents of texts in quotes, and blanks that separate
/// no words.
std::string codeOf(std::string_view line) {
    std::string code;
    char quote = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char character = line[i];
        const char next = i + 1 < line.size() ? line[i + 1] : '\0';
        if (quote != 0) {
            i += character == '\\' ? 1 : 0;
            quote = character == quote ? '\0' : quote;
        } else if (character == '"' || character == '\'') {
            quote = character;
            code.push_back('"');
        } else if (character == '/' && next == '/') {
            break;
        } else if (character != ' ' && character != '\t' && character != '\r') {
            code.push_back(character);
        } else if (!code.empty() && isWordCharacter(code.back()) && isWordCharacter(next)) {
            code.push_back(' ');
        }
    }
    return code;
}

/// Whether a word stands alone and names no property.
bool hasWord(std::string_view code, std::string_view word) {
    for (std::size_t at = code.find(word); at != std::string_view::npos;
         at = code.find(word, at + 1)) {
        const char before = at > 0 ? code[at - 1] : ' ';
        const char after = at + word.size() < code.size() ? code[at + word.size()] : ' ';
        if (!isWordCharacter(before) && before != '.' && !isWordCharacter(after) && after != ':') {
            return true;
        }
    }
    return false;
}

/// Whether a function of the line has a parameter with a default value.
bool hasDefaultValue(std::string_view code) {
    for (std::size_t at = code.find("function"); at != std::string_view::npos;
         at = code.find("function", at + 1)) {
        const std::size_t begin = std::min(code.find('(', at), code.size());
        if (code.substr(begin, code.find(')', begin) - begin).find('=') != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

/// Whether the line has a "?." that is not the beginning of "? .5".
bool hasOptionalChain(std::string_view code) {
    const std::size_t at = code.find("?.");
    return at != std::string_view::npos &&
           (at + 2 == code.size() || std::isdigit(static_cast<unsigned char>(code[at + 2])) == 0);
}

std::string_view lineOf(std::string_view source, std::size_t number) {
    for (std::size_t line = 1; line < number; ++line) {
        const std::size_t end = source.find('\n');
        source.remove_prefix(end == std::string_view::npos ? source.size() : end + 1);
    }
    return source.substr(0, source.find('\n'));
}

/// Gives the syntax error on top of the stack its explanation.
void explain(duk_context* script, std::string_view source) {
    duk_get_prop_string(script, -1, "lineNumber");
    const unsigned number = duk_get_uint(script, -1);
    duk_pop(script);
    std::string text = kEdition;
    if (const char* const newer = findNewerSyntax(lineOf(source, number))) {
        text.append("; line ").append(std::to_string(number)).append(" has ").append(newer);
    }
    pushText(script, text);
    duk_put_prop_string(script, -2, kExplanationKey);
}

}  // namespace

const char* findNewerSyntax(std::string_view line) {
    const std::string code = codeOf(line);
    for (const Newer& sign : kNewerSigns) {
        if (code.find(sign.text) != std::string::npos) {
            return sign.name;
        }
    }
    for (const Newer& word : kNewerWords) {
        if (hasWord(code, word.text)) {
            return word.name;
        }
    }
    if (hasOptionalChain(code)) {
        return "\"?.\"";
    }
    return hasDefaultValue(code) ? "a default value" : nullptr;
}

void compileSource(duk_context* script, std::string_view source, duk_uint_t flags) {
    // A null pointer is an error for the engine, also without a size.
    const char* const text = source.empty() ? "" : source.data();
    if (duk_pcompile_lstring_filename(script, flags, text, source.size()) != 0) {
        if (duk_get_error_code(script, -1) == DUK_ERR_SYNTAX_ERROR) {
            explain(script, source);
        }
        duk_throw(script);
    }
}

std::string explanationAt(duk_context* script, duk_idx_t index) {
    duk_get_prop_string(script, index, kExplanationKey);
    std::string text;
    if (isText(script, -1)) {
        text = viewOf(utf8At(script, -1));
    }
    duk_pop(script);
    return text;
}

}  // namespace zr::host
