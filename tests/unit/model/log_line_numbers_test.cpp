// The line numbers of the reference counting lines: each is that of the log call in the source.
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "model/key_file.h"
#include "model/token_provider.h"
#include "tests/support/fixtures/bare_token.h"
#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

/// A line of a source file of the library, from 1.
std::string sourceLine(const std::string& file, int number) {
    std::ifstream source(std::string(ZR_SOURCE_FOLDER "/") + file);
    std::string line;
    for (int i = 0; i < number && std::getline(source, line); ++i) {
    }
    return line;
}

TEST(LogLineNumbersTest, AddRefAndReleaseWriteTheLineOfTheirLogCall) {
    TempDir folder;
    folder.enableLog();
    auto* provider = new TokenProvider;
    provider->AddRef();
    auto* token = new BareToken(provider);
    token->AddRef();
    auto* file = new KeyFile(token);
    file->AddRef();
    file->Release();
    token->Release();
    provider->Release();

    const std::map<std::string, std::string> sources = {
        {"TokenProvider", "model/token_provider.cpp"},
        {"KeyObject", "model/key_object.cpp"},
        {"KeyFile", "model/key_file.cpp"}};
    const std::regex pattern(R"(\[(AddRef|Release):(\d+)\] (\[(\w+)::\w+\] (call\.\.\.|count=)))");
    std::set<std::string> seen;
    ASSERT_EQ(1u, findLogFiles(folder.home()).size());
    std::istringstream log(readText(findLogFiles(folder.home()).front()));
    for (std::string line; std::getline(log, line);) {
        std::smatch match;
        if (std::regex_search(line, match, pattern)) {
            const std::string source = sourceLine(sources.at(match[4]), std::stoi(match[2]));
            EXPECT_NE(std::string::npos, source.find(match[3])) << line << " stands at " << source;
            seen.insert(match[3]);
        }
    }
    EXPECT_EQ(
        (std::set<std::string>{"[TokenProvider::AddRef] count=", "[TokenProvider::Release] call...",
                               "[TokenProvider::Release] count=", "[KeyObject::AddRef] call...",
                               "[KeyObject::Release] call...",
                               "[KeyObject::Release] count=", "[KeyFile::AddRef] call...",
                               "[KeyFile::Release] call...", "[KeyFile::Release] count="}),
        seen);
}

}  // namespace
}  // namespace zr::test
