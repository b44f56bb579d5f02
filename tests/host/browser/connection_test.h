// A connection in the test's own process, over the recording module.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "host/browser/base64url.h"
#include "tests/host/browser/page_connection.h"
#include "tests/host/command_test.h"

namespace zr::test {

using host::PromptEnd;

inline json bytes(const std::string& value) {
    return {{"bytes", host::toBase64Url(value)}};
}

inline json object(std::uint64_t number) {
    return {{"object", number}};
}

class ConnectionTest : public ModuleTest {
protected:
    ConnectionTest() {
        setText(module->settings().tokenInfo.label, "Label");
        setText(module->settings().tokenInfo.serialNumber, "Serial");
        std::string problem;
        settings.module = Recording::file();
        settings.allow = {*host::Origin::read(kSite, problem)};
        settings.callSeconds = 10;
        std::filesystem::create_directory(state);
    }
    ~ConnectionTest() override { close(); }

    void connect() { m_connection = std::make_unique<PageConnection>(state, settings); }
    void close() { m_connection.reset(); }
    PageConnection& connection() { return *m_connection; }
    PageFrames& page() { return *m_connection->page; }
    FakePrompt& prompt() { return m_connection->prompt; }

    /// Greets and opens the token.
    /// @return its number.
    std::uint64_t openToken() {
        connect();
        EXPECT_EQ(1, page().greet(kSite).value("provider", 0));
        return page().valueOf(1, "OpenKey", {0}).value("object", std::uint64_t{0});
    }
    /// The first certificate of a token.
    std::uint64_t openCertificate(std::uint64_t token) {
        const json list = page().valueOf(token, "certificates");
        return list.empty() ? 0 : list.at(0).value("object", std::uint64_t{0});
    }
    std::string login(std::uint64_t token, bool isActive = true) {
        return page().codeOf(token, "login", json::array(), isActive);
    }
    std::string greetingCode(const json& hello) {
        connect();
        page().write({{"hello", hello}});
        const json reply = page().read();
        EXPECT_TRUE(page().read().is_null());
        EXPECT_EQ(0, connection().finish());
        return reply.value("/hello/error/code"_json_pointer, "");
    }
    std::vector<std::string> audit() {
        std::vector<std::string> lines;
        std::ifstream file(state / "audit.jsonl");
        for (std::string line; std::getline(file, line);) {
            const json entry = json::parse(line);
            lines.push_back(entry.at("member").get<std::string>() + ' ' +
                            entry.at("outcome").get<std::string>());
        }
        return lines;
    }

    std::filesystem::path state = std::filesystem::absolute("state");
    host::BrowserSettings settings;

private:
    std::unique_ptr<PageConnection> m_connection;
};

}  // namespace zr::test
