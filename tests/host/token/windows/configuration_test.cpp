// The system's configuration. On Windows only: on Linux its folder is /etc, which tests leave alone.
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using SystemConfigurationTest = CommandTest;

TEST_F(SystemConfigurationTest, SystemConfigurationIsUsedWithoutAnother) {
    fs::create_directories(configurations.systemFile().parent_path());
    writeFile(configurations.systemFile(), "<driver><algo>SYSTEM</algo></driver>");
    EXPECT_EQ(std::string::npos, zrkey({"info"}).output.find("\tSYSTEM\n"));
    fs::remove("config.xml");
    EXPECT_NE(std::string::npos, zrkey({"info"}).output.find("\tSYSTEM\n"));
    EXPECT_EQ(0u, zrkey({"config", "show"}).output.find("place:\tsystem\n"));
}

}  // namespace
}  // namespace zr::test
