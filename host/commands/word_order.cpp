// The words of the command line in the order that the parser expects.
#include "host/commands/word_order.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>

namespace zr::host {
namespace {

using Words = std::vector<std::string>;

/// How many words a global option takes, with its value; 0 for other words.
std::size_t wordsOfOption(const std::string& word) {
    for (const GlobalOption& option : kGlobalOptions) {
        if (word == option.name) {
            return option.hasValue ? 2 : 1;
        }
        if (option.hasValue && word.starts_with(std::string(option.name) + '=')) {
            return 1;
        }
    }
    return 0;
}

const CLI::App* commandIn(const CLI::App& group, const std::string& word) {
    const std::vector<const CLI::App*> commands =
        group.get_subcommands([&](const CLI::App* command) { return command->check_name(word); });
    return commands.empty() ? nullptr : commands.front();
}

bool isGroup(const CLI::App& command) {
    return command.get_require_subcommand_min() > 0;
}

/// The words that show the help of the command that the words name. Never words that run it.
Words helpWords(const CLI::App& app, const Words& words) {
    Words shown;
    const CLI::App* group = &app;
    for (const std::string& word : words) {
        const CLI::App* command = commandIn(*group, word);
        shown.push_back(word);
        if (!command) {
            // Alone after its group it is an error.
            return shown;
        }
        if (!isGroup(*command)) {
            break;
        }
        group = command;
    }
    shown.emplace_back("--help");
    return shown;
}

}  // namespace

Words inParserOrder(const CLI::App& app, const Words& words) {
    Words options;
    Words path;
    const CLI::App* group = &app;
    std::size_t next = 0;
    while (group && isGroup(*group) && next < words.size()) {
        const std::size_t count = wordsOfOption(words[next]);
        const std::size_t end = std::min(next + std::max<std::size_t>(count, 1), words.size());
        Words& target = count > 0 ? options : path;
        target.insert(target.end(), words.begin() + static_cast<std::ptrdiff_t>(next),
                      words.begin() + static_cast<std::ptrdiff_t>(end));
        if (count == 0) {
            group = commandIn(*group, words[next]);
        }
        next = end;
    }
    const Words rest(words.begin() + static_cast<std::ptrdiff_t>(next), words.end());
    const bool isPageOfHelp = !rest.empty() && (rest.front() == "-h" || rest.front() == "--help");
    if (path == Words{"help"} && !isPageOfHelp) {
        return helpWords(app, rest);
    }
    Words ordered = path;
    if (group && !isGroup(*group)) {
        // Before the words of a script, too.
        ordered.insert(ordered.end(), options.begin(), options.end());
    }
    ordered.insert(ordered.end(), rest.begin(), rest.end());
    return ordered;
}

}  // namespace zr::host
