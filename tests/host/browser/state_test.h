// A fixture for what the native messaging hosts of a user share.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "host/browser/site_limits.h"
#include "host/browser/state_folder.h"
#include "host/output/failure.h"
#include "host/system/process.h"
#include "host/system/utf8_path.h"
#include "tests/support/temp_dir.h"

namespace zr::test {

class StateTest : public testing::Test {
protected:
    StateTest() : folder(temp.work() / "state") { host::makeOwnFolder(folder); }

    /// Why there is no folder; empty when there is one.
    static std::string folderFailure() {
        try {
            host::browserStateFolder();
        } catch (const host::Failure& failed) {
            return failed.cause;
        }
        return "";
    }

    static host::Origin site(const std::string& text = "https://shop.example") {
        std::string problem;
        return host::Origin::read(text, problem).value();
    }
    host::SiteLimits limits(const std::string& origin = "https://shop.example") const {
        return {folder, site(origin)};
    }
    std::unique_ptr<host::SiteLimits> connected(
        const std::string& origin = "https://shop.example") const {
        auto made = std::make_unique<host::SiteLimits>(folder, site(origin));
        return made->takeConnection() ? std::move(made) : nullptr;
    }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    std::string read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder / name, std::ios::binary).rdbuf();
        return text.str();
    }

    /// A process that notes so many lines and ends without giving anything back.
    std::optional<host::ChildProcess> startUser(int lines) const {
        std::error_code error;
        const auto program = std::filesystem::absolute(ZR_STATE_USER).make_preferred();
        return host::ChildProcess::start({{program.string(), host::toUtf8(folder),
                                           "https://other.example", std::to_string(lines)}},
                                         error);
    }
    static int wait(std::optional<host::ChildProcess>& child) {
        while (child && !child->exitCode()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return child ? *child->exitCode() : -1;
    }

    TempDir temp;
    std::filesystem::path folder;
};

}  // namespace zr::test
