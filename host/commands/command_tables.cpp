// What all commands understand, as tables.
#include "host/commands/command_tables.h"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "host/commands/examples.h"
#include "host/commands/usage.h"
#include "host/objects/idl.h"
#include "host/objects/page_types.h"
#include "host/objects/reference.h"
#include "host/system/utf8_path.h"
#include "host/token/signing.h"
#include "host/web/extension_ids.h"
#include "host/web/host_manifest.h"

namespace zr::host {
namespace {

SwitchRow rowOf(const CLI::Option& option) {
    SwitchRow row;
    for (const std::string& name : option.get_snames()) {
        row.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        row.names.push_back("--" + name);
    }
    if (option.get_type_size() != 0) {
        row.value = option.get_type_name();
    }
    row.help = option.get_description();
    return row;
}

void addRows(std::vector<CommandRow>& table, const CLI::App& command, const std::string& path) {
    CommandRow row;
    row.path = path;
    row.help = command.get_description();
    row.usage = usageOf(command);
    row.isGroup = command.get_require_subcommand_min() > 0;
    row.examples = examplesOf(path);
    for (const CLI::Option* option : command.get_options()) {
        if (option->nonpositional()) {
            row.switches.push_back(rowOf(*option));
        }
    }
    table.push_back(row);
    for (const CLI::App* inner : command.get_subcommands([](const CLI::App*) { return true; })) {
        addRows(table, *inner, path.empty() ? inner->get_name() : path + ' ' + inner->get_name());
    }
}

}  // namespace

std::vector<CommandRow> commandTable(const CLI::App& app) {
    std::vector<CommandRow> table;
    addRows(table, app, "");
    return table;
}

std::string lastWord(const std::string& path) {
    return path.substr(path.rfind(' ') + 1);
}

std::vector<CommandRow> commandsIn(const std::vector<CommandRow>& table, const std::string& group) {
    std::vector<CommandRow> inner;
    std::copy_if(table.begin(), table.end(), std::back_inserter(inner), [&](const CommandRow& row) {
        const std::size_t blank = row.path.rfind(' ');
        return !row.path.empty() &&
               (blank == std::string::npos ? "" : row.path.substr(0, blank)) == group;
    });
    return inner;
}

std::vector<SwitchRow> switchesWithValue(const std::vector<CommandRow>& table) {
    std::vector<SwitchRow> switches;
    for (const CommandRow& command : table) {
        for (const SwitchRow& row : command.switches) {
            const bool isThere =
                std::any_of(switches.begin(), switches.end(),
                            [&](const SwitchRow& other) { return other.names == row.names; });
            if (!row.value.empty() && !isThere) {
                switches.push_back(row);
            }
        }
    }
    return switches;
}

std::string wordsOfValue(const std::string& value) {
    if (value == "SOURCE") {
        return "prompt env: file: fd: -";
    }
    if (value == "METHOD") {
        return "MD5 SHA1 SHA256 SHA384 SHA512";
    }
    if (value == "ALGORITHM") {
        std::string words = algorithmNames();
        std::erase(words, ',');
        return words;
    }
    if (value == "CERT-FORMAT") {
        return "raw hex base64 pem text";
    }
    if (value == "BROWSER") {
        return "chromium chrome edge firefox";
    }
    return value == "FORMAT" ? "raw hex base64 pem" : "";
}

bool isFileValue(const std::string& value) {
    return value == "FILE" || value == "PATH" || value == "DIR" || value == "PROGRAM";
}

std::string generate(const CLI::App& app, const std::string& kind) {
    using Writer = std::string (*)(const std::vector<CommandRow>&);
    constexpr std::pair<const char*, Writer> kWriters[] = {{"bash", bashCompletion},
                                                           {"zsh", zshCompletion},
                                                           {"fish", fishCompletion},
                                                           {"man", manualPage}};
    if (kind == "objects") {
        return objectReference();
    }
    if (kind == "idl") {
        return automationIdl();
    }
    if (kind == "page-types") {
        return pageTypes();
    }
    for (const auto& [name, write] : kWriters) {
        if (kind == name) {
            return write(commandTable(app));
        }
    }
    return {};
}

std::string generateManifest(const std::string& browser, const std::string& program) {
    const std::optional<Browser> known = browserNamed(browser);
    return known ? manifestText(*known, {toPath(program), ownExtensions()}) : std::string();
}

}  // namespace zr::host
