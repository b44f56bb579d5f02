// What the help pages say of each command.
#include "tests/host/command_pages.h"

#include <algorithm>
#include <sstream>

namespace zr::test {
namespace {

/// The column at which the help texts begin.
constexpr std::size_t kTextColumn = 30;

/// A line such as "  -i,--input FILE=-           The file to read".
PageRow readRow(const std::string& line) {
    PageRow row;
    std::istringstream words(line.substr(0, kTextColumn));
    std::string word;
    words >> word;
    std::istringstream names(word);
    for (std::string name; std::getline(names, name, ',');) {
        row.names.push_back(name);
    }
    while (words >> word) {
        if (word == "REQUIRED") {
            row.isRequired = true;
        } else if (row.value.empty()) {
            row.value = word.substr(0, word.find('='));
        }
    }
    return row;
}

void addPages(std::vector<CommandPage>& pages, const Words& path,
              const std::function<CommandResult(const Words&)>& zrkey) {
    const CommandResult help = zrkey(joined({"help"}, path));
    EXPECT_EQ(0, help.exitCode);
    CommandPage page;
    page.path = path;
    Words inner;
    std::string section;
    std::istringstream stream(help.output);
    for (std::string line; std::getline(stream, line);) {
        const bool isRow = line.starts_with("  ") && line.size() > 2 && line[2] != ' ';
        if (!line.starts_with(' ')) {
            section = line;
        } else if (isRow && section == "Subcommands:") {
            inner.push_back(readRow(line).names.front());
        } else if (isRow && (section == "Options:" || section == "Positionals:")) {
            page.rows.push_back(readRow(line));
        }
    }
    page.isGroup = !inner.empty();
    if (!path.empty()) {
        pages.push_back(page);
    }
    for (const std::string& name : inner) {
        if (name != "help") {
            addPages(pages, joined(path, {name}), zrkey);
        }
    }
}

}  // namespace

std::string CommandPage::name() const {
    std::string text;
    for (const std::string& word : path) {
        text.append(text.empty() ? "" : " ").append(word);
    }
    return text;
}

bool CommandPage::has(const std::string& name) const {
    return std::any_of(rows.begin(), rows.end(), [&](const PageRow& row) {
        return std::find(row.names.begin(), row.names.end(), name) != row.names.end();
    });
}

std::vector<CommandPage> commandPages(const std::function<CommandResult(const Words&)>& zrkey) {
    std::vector<CommandPage> pages;
    addPages(pages, {}, zrkey);
    EXPECT_GE(pages.size(), 20u);
    return pages;
}

Words usualWords(const CommandPage& page, const Words& options) {
    Words words = page.path;
    for (const PageRow& row : page.rows) {
        const std::string& name = row.names.back();
        if (!options.empty() && name == options.front()) {
            continue;
        }
        if (row.isRequired && row.isSwitch()) {
            words = joined(words, {name, "data.bin"});
        } else if (row.isRequired) {
            words.push_back("7");
        } else if (name == "--pin" || name == "--new-pin") {
            words = joined(words, {name, "env:TEST_PIN"});
        }
    }
    words = joined(words, options);
    // The help page does not say which words it needs; they come last.
    return page.name() == "run" ? joined(words, {"script.js"}) : words;
}

Words joined(Words first, const Words& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

}  // namespace zr::test
