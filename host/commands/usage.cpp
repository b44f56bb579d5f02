// Help pages and the line about wrong usage.
//
// A word that the command does not expect may be a PIN. It is repeated only when it cannot be one:
// the name of an option, the first word, or a word that resembles a command. Otherwise its number
// names it.
#include "host/commands/usage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <limits>
#include <string_view>

#include "host/output/printable.h"

namespace zr::host {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-";

class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter() { label("SUBCOMMAND", "COMMAND"); }

    /// Leaves out the lists of excluded options: the parser sorts them by address, which varies.
    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string text = CLI::Formatter::make_option_opts(option);
        return text.substr(0, text.find(" Excludes:"));
    }
};

/// How many letters were added, left out, replaced, or exchanged with the next one.
std::size_t mistakesBetween(const std::string& left, const std::string& right) {
    std::vector<std::vector<std::size_t>> count(left.size() + 1,
                                                std::vector<std::size_t>(right.size() + 1));
    for (std::size_t i = 0; i <= left.size(); ++i) {
        for (std::size_t j = 0; j <= right.size(); ++j) {
            if (i == 0 || j == 0) {
                count[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = left[i - 1] == right[j - 1] ? 0 : 1;
            count[i][j] = std::min(
                {count[i - 1][j] + 1, count[i][j - 1] + 1, count[i - 1][j - 1] + replaced});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                count[i][j] = std::min(count[i][j], count[i - 2][j - 2] + 1);
            }
        }
    }
    return count[left.size()][right.size()];
}

std::string didYouMean(const Words& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? " (did you mean " : " or ") + name;
    }
    return text.empty() ? "" : text + "?)";
}

std::vector<const CLI::App*> commandsOf(const CLI::App& group) {
    return group.get_subcommands([](const CLI::App*) { return true; });
}

/// The names of the options of a command.
Words optionNames(const CLI::App& command) {
    Words names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

/// The name of an option at the start of a word; empty when the word is none.
std::string optionName(const std::string& word) {
    if (word.starts_with("--") && word.size() > 2) {
        return word.substr(0, word.find('='));
    }
    // What follows in the word may be a value.
    return word.size() > 1 && word[0] == '-' && std::isalpha(static_cast<unsigned char>(word[1]))
               ? word.substr(0, 2)
               : "";
}

/// "argument 2", for a word that may be a PIN. Without a number when it is there more than once.
std::string numberOf(const std::string& word, const Words& words) {
    const auto found = std::find(words.begin(), words.end(), word);
    return std::count(words.begin(), words.end(), word) != 1
               ? "an argument"
               : "argument " + std::to_string(found - words.begin() + 1);
}

/// Describes words that a command does not expect.
std::string describeExtras(const CLI::App& command, const Words& extras, const Words& words) {
    std::string options;
    std::string others;
    const char* plural = "";
    const char* verb = " is";
    for (const std::string& extra : extras) {
        const std::string name = optionName(extra);
        if (name.empty()) {
            verb = others.empty() ? " is" : " are";
            others += (others.empty() ? "" : " and ") + numberOf(extra, words);
            continue;
        }
        plural = options.empty() ? "" : "s";
        options += " " + name + didYouMean(similarNames(name, optionNames(command)));
    }
    return options.empty() ? others + verb + " not expected"
                           : "unknown option" + (plural + options);
}

/// Describes a word in the place of a command.
std::string describeUnknown(const CLI::App& group, const std::string& word, const Words& words) {
    Words names;
    Words inGroups;
    for (const CLI::App* command : commandsOf(group)) {
        names.push_back(command->get_name());
        for (const CLI::App* inner : commandsOf(*command)) {
            if (inner->get_name() == word) {
                inGroups.push_back(command->get_name() + ' ' + word);
            }
        }
    }
    const Words similar = inGroups.empty() ? similarNames(word, names) : inGroups;
    const bool isFirst = !words.empty() && word == words.front();
    const bool isName = isFirst && word.find_first_not_of(kLetters) == std::string::npos;
    return isName || !similar.empty() ? "unknown command \"" + word + '"' + didYouMean(similar)
                                      : numberOf(word, words) + " is not a command";
}

std::string describeMissing(const CLI::App& group) {
    std::string names;
    for (const CLI::App* command : commandsOf(group)) {
        names += (names.empty() ? "" : ", ") + command->get_name();
    }
    return (group.get_parent() ? group.get_name() + " needs a command: "
                               : "a command is missing: ") +
           names;
}

/// The words that look like options and that a command does not know.
Words unknownOptions(const CLI::App& command) {
    Words options = command.remaining();
    options.erase(std::remove_if(options.begin(), options.end(),
                                 [](const std::string& word) { return optionName(word).empty(); }),
                  options.end());
    return options;
}

std::string describe(const CLI::App& app, const CLI::App& command, const CLI::Error& error,
                     const Words& words) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
        Words extras = app.remaining(true);
        if (command.get_prefix_command() && !extras.empty()) {
            // The parser stops at the first: the others may be known.
            extras.resize(1);
        }
        return describeExtras(command, extras, words);
    }
    if (command.get_require_subcommand_min() > 0) {
        const Words extras = command.remaining();
        if (extras.empty()) {
            return describeMissing(command);
        }
        return extras.front().starts_with('-') ? describeExtras(command, extras, words)
                                               : describeUnknown(command, extras.front(), words);
    }
    const bool isRequired =
        error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    if (const Words options = unknownOptions(command); isRequired && !options.empty()) {
        // What is missing may be what was mistyped.
        return describeExtras(command, options, words);
    }
    const std::string what = error.what();
    // The parser's "--index: 1 required N missing" and "--index: At Most 1 required but received 2".
    if (const std::size_t end = what.find(": 1 required "); end != std::string::npos) {
        return what.substr(0, end) + " needs a value";
    }
    const std::size_t end = what.find(": At Most 1 required");
    return end == std::string::npos ? what : what.substr(0, end) + " is given more than once";
}

}  // namespace

std::shared_ptr<CLI::FormatterBase> helpFormatter() {
    return std::make_shared<HelpFormatter>();
}

std::string fullName(const CLI::App& command) {
    const CLI::App* parent = command.get_parent();
    return parent ? fullName(*parent) + ' ' + command.get_name() : command.get_name();
}

std::string usageOf(const CLI::App& command) {
    std::string name = fullName(command);
    const auto formatter = std::dynamic_pointer_cast<CLI::Formatter>(command.get_formatter());
    if (!formatter) {
        return name;
    }
    const std::string usage = formatter->make_usage(&command, name);
    const std::size_t begin = std::string_view("Usage: ").size();
    return usage.substr(begin, usage.find('\n') - begin);
}

Words similarNames(const std::string& mistyped, const Words& names) {
    constexpr std::size_t kMostMistakes = 2;
    constexpr std::size_t kLongest = 32;
    Words similar;
    std::size_t fewest = std::numeric_limits<std::size_t>::max();
    for (const std::string& name : names) {
        if (mistyped.size() > kLongest) {
            break;
        }
        // The start of a name is a mistake of one letter.
        const bool isStart = mistyped.size() > 1 && name.starts_with(mistyped);
        const std::size_t mistakes = isStart ? 1 : mistakesBetween(mistyped, name);
        // In a short name two mistakes leave too little.
        if (mistakes > kMostMistakes || mistakes * 2 > name.size() || mistakes > fewest) {
            continue;
        }
        if (mistakes < fewest) {
            similar.clear();
            fewest = mistakes;
        }
        similar.push_back(name);
    }
    return similar;
}

std::string usageLine(const CLI::App& app, const CLI::Error& error, const Words& words) {
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    const std::string help = "zrkey help" + fullName(*command).substr(app.get_name().size());
    return "zrkey: " + printable(describe(app, *command, error, words)) +
           "; usage: " + usageOf(*command) + "; " + help + " shows more\n";
}

}  // namespace zr::host
