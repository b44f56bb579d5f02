// The logger: every text is written completely after the time, up to the size of the buffer, and a
// provider writes its file below the home in the environment.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "model/zr_log.h"
#include "tests/fuzz/expect.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/objects.h"

namespace {

using zr::fuzz::expect;

constexpr std::size_t kLongest = 81919;
constexpr std::size_t kTimeLength = 15;  // "[hh:mm:ss.mmm] "

void checkMessage(zr::fuzz::Input& input, const ZRLog& log) {
    const int level = input.number<int>();
    const std::size_t repeats = input.byte() == 255 ? 1000 : 1;
    const std::string name = input.text(input.below(32));
    const std::string part = input.text();
    std::string message;
    for (std::size_t i = 0; i < repeats; ++i) {
        message += part.c_str();
    }
    const auto line = input.number<unsigned int>();
    std::remove("fuzz.log");
    log.Log(level, "[%s:%u] %s", name.c_str(), line, message.c_str());
    std::string expected =
        "[" + std::string(name.c_str()) + ":" + std::to_string(line) + "] " + message;
    expected.resize(std::min(expected.size(), kLongest));
    std::ifstream file("fuzz.log", std::ios::binary);
    const std::string written{std::istreambuf_iterator<char>(file), {}};
    expect(written.size() == kTimeLength + expected.size(), "a line is as long as its message");
    expect(written.compare(kTimeLength, written.npos, expected) == 0,
           "a message is written as it is");
    expect(written.front() == '[' && written[kTimeLength - 2] == ']', "the time comes before it");
}

/// Logging into a file of any name is on or off, without other effects.
void checkPath(const std::string& path) {
    const std::string name = "d/" + std::string(path.c_str());
    if (name.find("..") != name.npos) {
        return;
    }
    ZRLog log;
    expect(log.SetFilePath(name.c_str()) == 0, "the answer is 0 always");
    log.Log(0, "%s", "text");
    if (name.size() >= 500) {
        expect(std::filesystem::is_empty("d"), "a path that is too long turns logging off");
    }
    std::filesystem::remove_all("d");
    std::filesystem::create_directory("d");
}

/// A provider logs below its home or not at all, for any home.
void checkHome(const std::string& name) {
    const std::string home = "d/" + std::string(name.c_str());
    if (home.find("..") != home.npos) {
        return;
    }
    setenv("ZRKEY_HOME_X64", home.c_str(), 1);
    std::filesystem::create_directories("d");
    std::error_code ignored;
    std::filesystem::create_directories(home, ignored);
    {
        const auto provider = zr::fuzz::makeProvider();
        expect(provider->Unload() == S_OK);
    }
    unsetenv("ZRKEY_HOME_X64");
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("d")) {
        if (entry.is_regular_file()) {
            const std::string path = entry.path().string();
            expect(path.size() < 260, "a path that is too long turns logging off");
            expect(path.find("/log/") != path.npos && path.ends_with(".log"),
                   "the file has its name and its place");
            expect(entry.file_size() > 0, "the lines are on the disk");
            ++files;
        }
    }
    expect(files <= 1, "a provider has one file at most");
    std::filesystem::remove_all("d");
    std::filesystem::create_directory("d");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isPrepared = std::filesystem::create_directory("d") || true;
    expect(isPrepared);
    zr::fuzz::Input input(data, size);
    ZRLog log;
    log.SetFilePath("fuzz.log");
    const std::size_t place = input.below(4);
    if (place == 1) {
        checkPath(input.text(2 * input.byte()));
    } else if (place == 2) {
        checkHome(input.text(2 * input.byte()));
    }
    checkMessage(input, log);
    log.SetFilePath(nullptr);
    std::remove("fuzz.log");
    log.Log(0, "%s", "off");
    expect(!std::filesystem::exists("fuzz.log"), "without a path nothing is written");
    return 0;
}
