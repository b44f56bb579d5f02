// The local time in logs: in the time stamp of each line and in the name of the file.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string>
#include <thread>

#include "model/token_provider.h"
#include "tests/support/log_file.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

constexpr int kDay = 24 * 60 * 60 * 1000;
/// How much two clocks of a system may differ, in ms: the coarse clock of Windows ticks every 16
/// ms.
constexpr int kTick = 20;

int milliseconds(int hour, int minute, int second, int fraction = 0) {
    return ((hour * 60 + minute) * 60 + second) * 1000 + fraction;
}

/// The local time of day in ms plus one day, so that subtracting a tick stays positive.
int timeOfDay() {
    const auto now =
        std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const std::tm local = *std::localtime(&seconds);
    return kDay + milliseconds(local.tm_hour, local.tm_min, local.tm_sec,
                               static_cast<int>(now.time_since_epoch().count() % 1000));
}

/// Whether a time of day is between two values of timeOfDay, also around midnight.
bool isBetween(int first, int time, int last) {
    return (time - first + 2 * kDay) % kDay <= (last - first + kDay) % kDay;
}

class LogTimeTest : public testing::Test {
protected:
    LogTimeTest() {
        // A zone that no machine is set to. Windows ignores the variable.
        setEnvironment("TZ", "XXX-05:45");
        timeOfDay();  // makes localtime read the zone
    }
    ~LogTimeTest() override {
        setEnvironment("TZ", m_zone);
        timeOfDay();
    }

    TempDir folder;

private:
    static std::string zone() {
        const char* value = std::getenv("TZ");
        return value ? value : "";
    }

    const std::string m_zone = zone();
};

TEST_F(LogTimeTest, LogWritesTheLocalTimeOfTheCall) {
    const std::string path = (folder.work() / "time.log").string();
    ZRLog log;
    log.SetFilePath(path.c_str());
    for (int i = 0; i < 5; ++i) {
        const int first = timeOfDay() - kTick;
        log.Log(0, "\n");
        const int last = timeOfDay() + kTick;
        std::istringstream text(readText(path));
        std::string line;
        for (int k = 0; k <= i; ++k) {
            std::getline(text, line);
        }
        int hour = 0;
        int minute = 0;
        int second = 0;
        int fraction = 0;
        ASSERT_EQ(4,
                  std::sscanf(line.c_str(), "[%d:%d:%d.%d]", &hour, &minute, &second, &fraction));
        EXPECT_TRUE(isBetween(first, milliseconds(hour, minute, second, fraction), last)) << line;
        std::this_thread::sleep_for(std::chrono::milliseconds(2 * kTick));
    }
}

TEST_F(LogTimeTest, EnableLogNamesTheFileAfterTheTimeOfTheProvider) {
    folder.enableLog();
    int first = timeOfDay() - kTick;
    auto* provider = new TokenProvider();
    const int last = timeOfDay() + kTick;
    provider->AddRef();
    const std::string name = findLogFiles(folder.home()).at(0).filename().string();
    int hour = 0;
    int minute = 0;
    int second = 0;
    ASSERT_EQ(3, std::sscanf(name.c_str(), "TokenProvider_%2d%2d%2d", &hour, &minute, &second));
    first -= first % 1000;
    EXPECT_TRUE(isBetween(first, milliseconds(hour, minute, second), last)) << name;
    provider->Release();
}

}  // namespace
}  // namespace zr::test
