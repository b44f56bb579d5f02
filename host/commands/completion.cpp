// Completion of the command line in bash, zsh and fish.
//
// Each script first finds the command in the words before the cursor, leaving out switches and
// their values, and then offers what the command understands. The word help is left out too, so that
// the commands come after it.
#include "host/commands/command_tables.h"

namespace zr::host {
namespace {

/// In single quotes for bash and zsh.
std::string shellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

/// In single quotes for fish.
std::string fishQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + "'";
}

std::string joined(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) {
        text.append(text.empty() ? "" : separator).append(word);
    }
    return text;
}

/// The names of all switches with a value.
std::string namesWithValue(const std::vector<CommandRow>& table, const char* separator) {
    std::vector<std::string> names;
    for (const SwitchRow& row : switchesWithValue(table)) {
        names.insert(names.end(), row.names.begin(), row.names.end());
    }
    return joined(names, separator);
}

}  // namespace

std::string bashCompletion(const std::vector<CommandRow>& table) {
    std::string text =
        "# Completion of zrkey for bash.\n"
        "_zrkey() {\n"
        "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
        "    local command= i\n"
        "    COMPREPLY=()\n"
        "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
        "        case ${COMP_WORDS[i]} in\n"
        "            " +
        namesWithValue(table, "|") +
        ") ((++i)) ;;\n"
        "            -* | help) ;;\n"
        "            *) command+=${command:+ }${COMP_WORDS[i]} ;;\n"
        "        esac\n"
        "    done\n"
        "    case $before in\n";
    for (const SwitchRow& row : switchesWithValue(table)) {
        text += "        " + joined(row.names, "|") + ") ";
        if (isFileValue(row.value)) {
            text += row.value == "DIR" ? "mapfile -t COMPREPLY < <(compgen -d -- \"$word\")"
                                       : "mapfile -t COMPREPLY < <(compgen -f -- \"$word\")";
        } else if (const std::string words = wordsOfValue(row.value); !words.empty()) {
            text += "mapfile -t COMPREPLY < <(compgen -W '" + words + "' -- \"$word\")";
        } else {
            text += ":";
        }
        text += "; return ;;\n";
    }
    text +=
        "    esac\n"
        "    local names\n"
        "    case $command in\n";
    for (const CommandRow& command : table) {
        std::vector<std::string> names;
        for (const CommandRow& inner :
             command.isGroup ? commandsIn(table, command.path) : std::vector<CommandRow>()) {
            names.push_back(lastWord(inner.path));
        }
        for (const SwitchRow& row : command.switches) {
            names.insert(names.end(), row.names.begin(), row.names.end());
        }
        text += "        '" + command.path + "') names='" + joined(names, " ") + "' ;;\n";
    }
    return text +
           "        *) mapfile -t COMPREPLY < <(compgen -f -- \"$word\"); return ;;\n"
           "    esac\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$names\" -- \"$word\")\n"
           "    if [ \"$command\" = run ] && [[ $word != -* ]]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
           "    fi\n"
           "}\n"
           "complete -o filenames -F _zrkey zrkey\n";
}

std::string zshCompletion(const std::vector<CommandRow>& table) {
    std::string text =
        "#compdef zrkey\n"
        "# Completion of zrkey for zsh.\n"
        "_zrkey() {\n"
        "    local command='' i\n"
        "    local -a commands switches\n"
        "    for ((i = 2; i < CURRENT; ++i)); do\n"
        "        case ${words[i]} in\n"
        "            (" +
        namesWithValue(table, "|") +
        ") ((++i)) ;;\n"
        "            (-*|help) ;;\n"
        "            (*) command+=\"${command:+ }${words[i]}\" ;;\n"
        "        esac\n"
        "    done\n"
        "    case ${words[CURRENT - 1]} in\n";
    for (const SwitchRow& row : switchesWithValue(table)) {
        text += "        (" + joined(row.names, "|") + ") ";
        if (isFileValue(row.value)) {
            text += row.value == "DIR" ? "_files -/" : "_files";
        } else if (const std::string words = wordsOfValue(row.value); !words.empty()) {
            text += "compadd -- " + words;
        } else {
            text += "_message " + shellQuoted(row.value);
        }
        text += "; return ;;\n";
    }
    text +=
        "    esac\n"
        "    case $command in\n";
    for (const CommandRow& command : table) {
        text += "        ('" + command.path + "')\n";
        if (command.isGroup) {
            text += "            commands=(\n";
            for (const CommandRow& inner : commandsIn(table, command.path)) {
                text += "                " + shellQuoted(lastWord(inner.path) + ':' + inner.help) +
                        '\n';
            }
            text += "            )\n";
        }
        text += "            switches=(\n";
        for (const SwitchRow& row : command.switches) {
            for (const std::string& name : row.names) {
                text += "                " + shellQuoted(name + ':' + row.help) + '\n';
            }
        }
        text += "            )\n            ;;\n";
    }
    return text +
           "        (*) _files; return ;;\n"
           "    esac\n"
           "    ((${#commands})) && _describe 'command' commands\n"
           "    [[ $command == run ]] && _files\n"
           "    _describe -o 'option' switches\n"
           "}\n"
           "_zrkey \"$@\"\n";
}

std::string fishCompletion(const std::vector<CommandRow>& table) {
    std::string text =
        "# Completion of zrkey for fish.\n"
        "function __zrkey_is\n"
        "    set -l found\n"
        "    set -l is_value 0\n"
        "    for word in (commandline -opc)[2..-1]\n"
        "        if test $is_value = 1\n"
        "            set is_value 0\n"
        "            continue\n"
        "        end\n"
        "        switch $word\n"
        "            case " +
        namesWithValue(table, " ") +
        "\n"
        "                set is_value 1\n"
        "            case '-*' help\n"
        "            case '*'\n"
        "                set found $found $word\n"
        "        end\n"
        "    end\n"
        "    test \"$found\" = \"$argv\"\n"
        "end\n"
        "complete -c zrkey -f\n"
        "complete -c zrkey -n '__zrkey_is run' -F\n";
    for (const CommandRow& command : table) {
        const std::string start = "complete -c zrkey -n '__zrkey_is" +
                                  (command.path.empty() ? std::string() : ' ' + command.path) + "'";
        for (const CommandRow& inner :
             command.isGroup ? commandsIn(table, command.path) : std::vector<CommandRow>()) {
            text += start + " -a " + lastWord(inner.path) + " -d " + fishQuoted(inner.help) + '\n';
        }
        for (const SwitchRow& row : command.switches) {
            text += start;
            for (const std::string& name : row.names) {
                text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
            }
            if (isFileValue(row.value)) {
                text += " -r -F";
            } else if (!row.value.empty()) {
                text += " -x";
                if (const std::string words = wordsOfValue(row.value); !words.empty()) {
                    text += " -a '" + words + "'";
                }
            }
            text += " -d " + fishQuoted(row.help) + '\n';
        }
    }
    return text;
}

}  // namespace zr::host
