// Runs statements one after the other, as they are typed.
#pragma once

#include <duktape.h>

#include <string>
#include <string_view>

#include "host/system/line_editor.h"

namespace zr::host {

class ScriptShell {
public:
    /// @param name    of the statements in messages.
    /// @param editor  null: lines of standard input. Both outlive the shell.
    ScriptShell(duk_context* script, const std::string& name, LineEditor* editor);

    /// Runs statements until there is no more input, or one calls exit.
    /// @return 1 when a statement failed and standard input is not a terminal, else 0.
    int run();

private:
    /// Reads the lines of a statement. A cancelled one is empty.
    /// @return false when there is none.
    bool readStatement(ErasedBytes& statement);
    /// @return false after an interruption that ends the shell; Ctrl-C in an editor does not.
    bool goesOn();
    LineResult readLine(const char* prompt, ErasedBytes& line);
    /// @return false when it failed; that is shown.
    bool runStatement(std::string_view statement);

    duk_context* m_script;
    std::string m_name;
    LineEditor* m_editor;
    bool m_isInteractive;
};

}  // namespace zr::host
