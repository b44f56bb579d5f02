// The manual page.
#include "host/commands/command_tables.h"

namespace zr::host {
namespace {

/// Text in which the formatter finds no commands of its own.
std::string plain(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '-') {
            escaped += "\\-";
        } else if (c == '\\') {
            escaped += "\\e";
        } else if (c == '\'') {
            escaped += "\\(aq";
        } else if (c == '"') {
            escaped += "\\(dq";
        } else {
            escaped += c;
        }
    }
    return escaped.starts_with('.') ? "\\&" + escaped : escaped;
}

/// A text of the help as a sentence.
std::string sentence(const std::string& help) {
    return plain(help) + (help.ends_with('.') ? "\n" : ".\n");
}

std::string switchText(const SwitchRow& row) {
    std::string names;
    for (const std::string& name : row.names) {
        names += (names.empty() ? "\\fB" : ", \\fB") + plain(name) + "\\fR";
    }
    if (!row.value.empty()) {
        names += " \\fI" + plain(row.value) + "\\fR";
    }
    return ".TP\n" + names + '\n' + sentence(row.help);
}

std::string commandText(const CommandRow& command) {
    std::string text = ".SS \"" + plain(command.usage) + "\"\n" + sentence(command.help);
    for (const SwitchRow& row : command.switches) {
        text += switchText(row);
    }
    text += ".PP\nExamples:\n.PP\n.nf\n";
    for (const std::string& example : command.examples) {
        text += "    zrkey " + plain(example) + '\n';
    }
    return text + ".fi\n";
}

}  // namespace

std::string manualPage(const std::vector<CommandRow>& table) {
    std::string text =
        ".TH ZRKEY 1 \"\" \"zrkey " ZRKEY_VERSION
        "\" \"User Commands\"\n"
        ".SH NAME\n"
        "zrkey \\- cryptographic tokens from the command line and from scripts\n"
        ".SH SYNOPSIS\n"
        "\\fBzrkey\\fR \\fICOMMAND\\fR [\\fIOPTION\\fR...]\n"
        ".SH COMMANDS\n"
        "\\fB\\-\\-module\\fR, \\fB\\-\\-workdir\\fR, \\fB\\-\\-config\\fR, \\fB\\-\\-json\\fR, "
        "\\fB\\-v\\fR and \\fB\\-q\\fR may also stand before the command.\n";
    for (const CommandRow& command : table) {
        text += commandText(command);
    }
    return text +
           ".SH ENVIRONMENT\n"
           ".TP\n\\fBZRKEY_MODULE\\fR\nThe PKCS #11 module, a path or a name, unless "
           "\\fB\\-\\-module\\fR names it.\n"
           ".SH FILES\n"
           "The configuration is the first of these:\n"
           ".TP\n\\fIconfig.xml\\fR\nIn the working folder.\n"
           ".TP\n\\fI$XDG_CONFIG_HOME/zrkey/config.xml\\fR or "
           "\\fI~/.config/zrkey/config.xml\\fR\nThe user\\(aqs.\n"
           ".TP\n\\fI/etc/zrkey/config.xml\\fR\nThe system\\(aqs.\n"
           ".PP\nWithout a file a built\\-in configuration is used.\n"
           ".TP\n\\fIzrkey.conf\\fR\nBeside the user\\(aqs or the system\\(aqs: the default "
           "module, "
           "\\fBmodule = \\fR\\fIPATH\\fR.\n"
           ".SH \"EXIT STATUS\"\n"
           ".TP\n0\nSuccess.\n"
           ".TP\n1\nThe operation failed, the token was removed, or a local file or stream could "
           "not "
           "be read or written.\n"
           ".TP\n2\nWrong usage; no token was changed and no retry used.\n"
           ".TP\n3\nThe module or its configuration could not be loaded or found.\n"
           ".TP\n4\nNo token, file or certificate matches, or several do.\n"
           ".TP\n5\nThe login was refused: the PIN is wrong or not initialised.\n"
           ".TP\n6\nThe signature does not verify, or the token lacks the public key.\n"
           ".TP\n7\nThe operation needs a login.\n"
           ".TP\n8\nThe PIN is locked.\n";
}

}  // namespace zr::host
