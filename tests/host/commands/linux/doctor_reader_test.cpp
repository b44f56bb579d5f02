// zrkey doctor with a module that reaches readers through pcscd. On Linux only, where that is.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "host/system/shared_library.h"
#include "host/system/surroundings.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class DoctorReaderTest : public CommandTest {
protected:
    ~DoctorReaderTest() override { setEnvironment("PCSCLITE_CSOCK_NAME", ""); }

    /// OpenSC's module, which needs no reader to start.
    static constexpr const char* kModule = "/usr/lib/x86_64-linux-gnu/opensc-pkcs11.so";
    static std::string report() { return zrkey({"doctor", "--module", kModule}).output; }
    static bool has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }
};

TEST_F(DoctorReaderTest, ServiceThatDoesNotRunIsAWarning) {
    setEnvironment("PCSCLITE_CSOCK_NAME", "/nowhere/pcscd.comm");
    const std::string output = report();
    EXPECT_TRUE(has(output,
                    "warning\tpcscd\t/nowhere/pcscd.comm: No such file or directory; start "
                    "the service"))
        << output;
    EXPECT_TRUE(has(output, "\tUSB readers\t")) << output;
    EXPECT_TRUE(has(output, "ok\tC_Initialize\t")) << output;
    EXPECT_TRUE(has(output, "failed\ttokens\t")) << output;
}

TEST_F(DoctorReaderTest, SocketOnWhichNobodyListensIsAWarning) {
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = "own.comm";
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(0, bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    setEnvironment("PCSCLITE_CSOCK_NAME", path);
    EXPECT_TRUE(has(report(), "warning\tpcscd\town.comm: Connection refused"));
    close(server);
}

TEST_F(DoctorReaderTest, SocketThatAnswersIsGood) {
    const host::SharedLibrary needsTheService(kModule);
    ASSERT_TRUE(needsTheService.isLoaded()) << needsTheService.problem();
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = "own.comm";
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(0, bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    ASSERT_EQ(0, listen(server, 1));
    setEnvironment("PCSCLITE_CSOCK_NAME", path);
    const host::ReaderService service = host::readerService();
    EXPECT_TRUE(service.isNeeded);
    EXPECT_EQ(path, service.socket);
    EXPECT_FALSE(service.problem) << service.problem.message();
    close(server);
}

TEST_F(DoctorReaderTest, ModuleThatNeedsNoServiceHasNoSuchCheck) {
    EXPECT_FALSE(has(zrkey({"doctor"}).output, "pcscd"));
}

}  // namespace
}  // namespace zr::test
