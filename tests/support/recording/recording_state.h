// The state behind the recording Cryptoki module.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/recording/recording_module.h"

/// Stores the module's entry points.
void fillFunctionList(CK_FUNCTIONS* functions);

class RecordingState final : public RecordingModule {
public:
    RecordingState() { reset(); }

    void reset() override;
    Settings& settings() override { return m_settings; }
    void fail(const char* function, unsigned int nth, CK_RV result) override;
    void removeEntry(std::size_t index) override;
    CK_OBJECT_HANDLE addObject() override;
    void setAttribute(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type, const void* value,
                      std::size_t length) override;
    void removeObject(CK_OBJECT_HANDLE object) override { m_objects.erase(object); }
    std::size_t objectCount() const override { return m_objects.size(); }
    const void* attribute(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                          std::size_t* length) const override;
    std::size_t callCount() const override { return m_calls.size(); }
    const char* call(std::size_t index) const override { return m_calls.at(index).c_str(); }
    void clearCalls() override { m_calls.clear(); }
    std::size_t openSessions() const override { return m_sessions; }
    bool isSearchOpen() const override { return m_isSearchOpen; }

    /// Records a call.
    /// @return the result it has to fail with, or CKR_OK.
    CK_RV record(const std::string& function, const std::string& arguments);
    CK_FUNCTION_LIST* makeList();

    using Attributes = std::map<CK_ATTRIBUTE_TYPE, std::string>;

    CK_RV openSession(CK_SESSION_HANDLE* session, void* application);
    CK_RV closeSession();
    CK_RV login(CK_USER_TYPE user, const std::string& pin);
    CK_RV logout();
    CK_RV setPin(const std::string& oldPin, const std::string& newPin);
    CK_RV findInit(const CK_ATTRIBUTE* attributes, CK_ULONG count);
    CK_RV find(CK_OBJECT_HANDLE* object, CK_ULONG* count);
    CK_RV findFinal();
    CK_RV create(const CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_HANDLE* object);
    CK_RV destroy(CK_OBJECT_HANDLE object);
    CK_RV read(CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes, CK_ULONG count);
    CK_RV write(CK_OBJECT_HANDLE object, const CK_ATTRIBUTE* attributes, CK_ULONG count);

private:
    struct Failure {
        std::string function;
        unsigned int nth;
        CK_RV result;
    };

    CK_ULONG reportedLength(const CK_ATTRIBUTE& attribute, std::size_t length) const;

    Settings m_settings;
    std::vector<Failure> m_failures;
    std::vector<std::size_t> m_removed;
    std::map<std::string, unsigned int> m_counts;
    std::map<CK_OBJECT_HANDLE, Attributes> m_objects;
    CK_OBJECT_HANDLE m_lastObject = 0;
    std::vector<std::string> m_calls;
    std::size_t m_sessions = 0;
    int m_loggedIn = -1;
    std::string m_userPin;
    std::string m_securityOfficerPin;
    bool m_isSearchOpen = false;
    std::vector<CK_OBJECT_HANDLE> m_found;
    CK_FUNCTION_LIST m_list;
};
