// A fixture for what is in host/web: places of its own instead of the machine's.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "host/output/failure.h"
#include "host/web/browser_settings.h"
#include "host/web/manifest_places.h"
#include "tests/host/child_command.h"
#include "tests/host/web/replaced_places.h"
#include "tests/support/temp_dir.h"

namespace zr::test {

inline host::Origin origin(const std::string& text) {
    std::string problem;
    return host::Origin::read(text, problem).value();
}

/// The line of the failure that a function throws, without "zrkey: cannot "; "-" when there is none.
inline std::string failureOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const host::Failure& failure) {
        const std::string line = failure.line();
        const std::size_t begin = std::string_view("zrkey: cannot ").size();
        return line.substr(begin, line.size() - begin - 1);
    }
    return "-";
}

/// The name of zrkey-browser on this target.
inline const std::string kProgramName = host::defaultHostProgram().filename().string();

/// Whether the system can have a file of this name: Wine cannot in the C locale.
inline bool canMakeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    return std::filesystem::create_directories(folder, error) && !error;
}

class WebTest : public testing::Test {
protected:
    std::filesystem::path userFile() const {
        return web.places.userConfiguration / "zrkey/browser.json";
    }
    std::filesystem::path systemFile() const {
        return web.places.systemConfiguration / "zrkey/browser.json";
    }
    static void write(const std::filesystem::path& file, const std::string& text) {
        std::filesystem::create_directories(file.parent_path());
        writeFile(file, text);
    }

    /// A program that can be named as zrkey-browser.
    static std::filesystem::path makeProgram(const std::filesystem::path& in) {
        const std::filesystem::path program = in / kProgramName;
        write(program, "#!/bin/sh\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        return program;
    }

    TempDir folder;
    WebPlacesReplacement web{folder.root()};
};

}  // namespace zr::test
