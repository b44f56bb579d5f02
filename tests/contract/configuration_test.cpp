// How Load reads "config.xml", and what it logs.
#include <filesystem>

#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

class ConfigurationTest : public ModuleTest {
protected:
    ConfigurationTest() {
        folder.enableLog();
        provider = makeProvider();
        m_before = readLogLines(folder.home()).size();
    }

    /// Loads the module with a configuration.
    HRESULT load(const std::string& text) {
        folder.write("config.xml", text);
        return provider->Load(Text(module.path()));
    }

    /// The lines that were logged since the provider was created.
    Lines logged() const {
        Lines lines = readLogLines(folder.home());
        lines.erase(lines.begin(), lines.begin() + static_cast<Lines::difference_type>(m_before));
        return lines;
    }

    ComRef<ITokenProvider> provider;

private:
    std::size_t m_before = 0;
};

TEST_F(ConfigurationTest, LoadWithADriverAfterAnotherTopLevelElementReadsTheDriver) {
    EXPECT_HR(S_OK, load("<other/><driver><algo>A</algo><digest>D</digest></driver>"));
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] algoList=[A]", "[LoadConfig] digestList=[D]",
                     "[Load] End"}),
              logged());
}

TEST_F(ConfigurationTest, LoadWithTwoDriversReadsTheFirst) {
    EXPECT_HR(S_OK, load("<driver><algo>A</algo></driver><driver><algo>B</algo></driver>"));
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] algoList=[A]", "[Load] End"}), logged());
}

TEST_F(ConfigurationTest, LoadWithoutListElementsLogsNoListLine) {
    EXPECT_HR(S_OK, load("<driver/>"));
    EXPECT_EQ((Lines{"[Load] Begin", "[Load] End"}), logged());
}

TEST_F(ConfigurationTest, LoadWithEmptyListElementsLogsNoListLine) {
    EXPECT_HR(S_OK, load("<driver><algo/><digest></digest></driver>"));
    EXPECT_EQ((Lines{"[Load] Begin", "[Load] End"}), logged());
}

TEST_F(ConfigurationTest, LoadWithOneListElementLogsItsLineOnly) {
    EXPECT_HR(S_OK, load("<driver><digest>D</digest></driver>"));
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] digestList=[D]", "[Load] End"}), logged());
}

TEST_F(ConfigurationTest, LoadWithoutADriverLogsNoEndLine) {
    EXPECT_HR(E_FAIL, load("<other/>"));
    EXPECT_EQ(Lines{"[Load] Begin"}, logged());
}

TEST_F(ConfigurationTest, LoadWithoutAFileLogsNoEndLine) {
    std::filesystem::remove("config.xml");
    EXPECT_HR(E_FAIL, provider->Load(Text(module.path())));
    EXPECT_EQ(Lines{"[Load] Begin"}, logged());
}

TEST_F(ConfigurationTest, LoadWithAListThatIsTooLongLogsNoEndLine) {
    EXPECT_HR(E_FAIL, load("<driver><algo>" + std::string(500, 'a') + "</algo></driver>"));
    EXPECT_EQ(Lines{"[Load] Begin"}, logged());
}

}  // namespace
}  // namespace zr::test
