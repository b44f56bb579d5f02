// The recording module, as tests use it.
//
//     Recording recording;  // a newly loaded module
//     provider->Load(Text(recording.path()));
//     EXPECT_EQ(calls({"C_Initialize(null)"}), recording.takeCalls());
#pragma once

#include <string>
#include <vector>

#include "platform/kernel.h"
#include "tests/support/recording/recording_module.h"

namespace zr::test {

class Recording {
public:
    Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    ~Recording();

    RecordingModule* operator->() const { return m_control; }

    /// The module's path relative to the current directory, as Load expects it.
    std::string path() const;
    /// The path of the library without C_GetFunctionList.
    std::string noListPath() const;
    /// The absolute paths of both.
    static std::string file();
    static std::string noListFile();

    /// The calls since the previous takeCalls.
    std::vector<std::string> takeCalls();
    /// The number of recorded calls of a function.
    std::size_t count(const std::string& function) const;

    CK_OBJECT_HANDLE addCertificate(const std::string& id, const std::string& value);
    CK_OBJECT_HANDLE addKey(CK_OBJECT_CLASS objectClass, const std::string& id);
    CK_OBJECT_HANDLE addData(const std::string& label, const std::string& value);
    /// The same with a given handle.
    void addDataAt(CK_OBJECT_HANDLE object, const std::string& label, const std::string& value);
    /// An attribute's bytes; "(none)" when there is none.
    std::string read(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type) const;

private:
    CK_OBJECT_HANDLE addTokenObject(CK_OBJECT_CLASS objectClass);
    void makeTokenObject(CK_OBJECT_HANDLE object, CK_OBJECT_CLASS objectClass);

    HMODULE m_module;
    RecordingModule* m_control;
};

}  // namespace zr::test
