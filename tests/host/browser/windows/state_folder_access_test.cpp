// A folder that others can write is refused; on Windows only, where a list says who can.
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include "tests/host/browser/state_test.h"

namespace zr::test {
namespace {

class StateFolderAccessTest : public StateTest {
protected:
    /// @param rules  in the language for security descriptors.
    void setAccess(const wchar_t* rules) const {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(rules, SDDL_REVISION_1,
                                                                         &descriptor, nullptr));
        EXPECT_TRUE(SetFileSecurityW(folder.c_str(), DACL_SECURITY_INFORMATION, descriptor));
        LocalFree(descriptor);
    }
};

TEST_F(StateFolderAccessTest, FolderIsForItsUserAlone) {
    EXPECT_EQ("", host::folderProblem(folder));
}

TEST_F(StateFolderAccessTest, FolderThatOthersCanWriteIsRefused) {
    setAccess(L"D:P(A;OICI;FA;;;OW)(A;OICI;FA;;;WD)");
    EXPECT_EQ("can be written by other users", host::folderProblem(folder));
}

}  // namespace
}  // namespace zr::test
