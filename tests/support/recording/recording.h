// The recording module as a test sees it.
//
//     Recording recording;                 // a module as if loaded anew
//     provider->Load(Text(recording.path()));
//     EXPECT_EQ(calls({"C_Initialize(null)"}), recording.takeCalls());
#pragma once

#include <string>
#include <vector>

#include "kernel.h"
#include "tests/support/recording/recording_module.h"

namespace zr::test {

class Recording {
public:
    Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    ~Recording();

    RecordingModule* operator->() const { return m_control; }

    /// The module's path relative to the current directory, as the library wants it.
    std::string path() const;
    /// The same for the library without C_GetFunctionList.
    std::string noListPath() const;
    /// The files of both.
    static std::string file();
    static std::string noListFile();

    /// The calls since the last time.
    std::vector<std::string> takeCalls();
    /// How many of the calls now recorded are of a function.
    std::size_t count(const std::string& function) const;

    CK_OBJECT_HANDLE addCertificate(const std::string& id, const std::string& value);
    CK_OBJECT_HANDLE addKey(CK_OBJECT_CLASS objectClass, const std::string& id);
    CK_OBJECT_HANDLE addData(const std::string& label, const std::string& value);
    /// The same with a handle at will.
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
