// Tests with a scripted pinentry; on Linux only, where prompts are those of a pinentry.
#include <fstream>
#include <sstream>

#include "tests/host/browser/linux/scripted_pinentry.h"

namespace fs = std::filesystem;

namespace zr::test {

ScriptedPinentryTest::ScriptedPinentryTest() : m_program(temp.work() / "pinentry") {
    fs::create_symlink(ZR_SCRIPTED_PINENTRY, m_program);
}

std::string ScriptedPinentryTest::path(const char* extension) const {
    return program() + extension;
}

void ScriptedPinentryTest::script(const std::string& actions) const {
    std::ofstream(path(".script")) << "hurry\n" << actions << '\n';
    fs::remove(path(".asked"));
    fs::remove(path(".next"));
}

std::string ScriptedPinentryTest::asked() const {
    std::ostringstream text;
    text << std::ifstream(path(".asked")).rdbuf();
    return text.str();
}

std::vector<std::string> ScriptedPinentryTest::all(const std::string& command) const {
    std::vector<std::string> found;
    std::istringstream lines(asked());
    for (std::string line; std::getline(lines, line);) {
        if (line == command || line.starts_with(command + " ")) {
            found.push_back(line.substr(std::min(command.size() + 1, line.size())));
        }
    }
    return found;
}

std::string ScriptedPinentryTest::last(const std::string& command) const {
    const std::vector<std::string> found = all(command);
    return found.empty() ? "" : found.back();
}

std::string ScriptedPinentryTest::description() const {
    std::string text;
    const std::string line = last("SETDESC");
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool isCode = line[i] == '%' && i + 2 < line.size();
        text += isCode ? static_cast<char>(std::stoi(line.substr(i + 1, 2), nullptr, 16)) : line[i];
        i += isCode ? 2 : 0;
    }
    return text;
}

}  // namespace zr::test
