// The state behind the recording Cryptoki module.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/recording/fault_injector.h"
#include "tests/support/recording/recorded_call.h"
#include "tests/support/recording/recording_module.h"

/// Stores the module's entry points.
void fillFunctionList(CK_FUNCTIONS* functions);

class RecordingState final : public RecordingModule {
public:
    RecordingState() { reset(); }

    void reset() override;
    Settings& settings() override { return m_settings; }
    void fail(const char* function, unsigned int nth, CK_RV result) override;
    void setFault(const RecordingFault& fault) override { m_fault.set(fault); }
    bool wasFaultHit() const override { return m_fault.wasHit(); }
    void callBack(const char* function, void (*callback)(void*), void* argument) override {
        m_callback = {function, callback, argument};
    }
    void removeEntry(std::size_t index) override;
    CK_OBJECT_HANDLE addObject() override;
    void setAttribute(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type, const void* value,
                      std::size_t length) override;
    void removeObject(CK_OBJECT_HANDLE object) override { m_objects.erase(object); }
    std::size_t objectCount() const override { return m_objects.size(); }
    const void* attribute(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                          std::size_t* length) const override;
    std::size_t callCount() const override { return m_calls.size(); }
    const char* call(std::size_t index) const override { return m_calls.at(index).line().c_str(); }
    std::size_t callLength(std::size_t index) const override {
        return m_calls.at(index).line().size();
    }
    RecordingAnswer answer(std::size_t index) const override { return m_calls.at(index).answer(); }
    void clearCalls() override { m_calls.clear(); }
    std::size_t openSessions() const override { return m_sessions.size(); }
    bool isSearchOpen() const override;

    /// Calls back when a test asked for it during this function.
    void runCallback(const std::string& function);
    /// Records a call.
    /// @return the failure to return, or CKR_OK.
    CK_RV record(const std::string& function, const std::string& arguments);
    CK_FUNCTION_LIST* makeList();
    FaultInjector& fault() { return m_fault; }
    /// The call that was recorded last.
    RecordedCall& lastCall() { return m_calls.back(); }

    using Attributes = std::map<CK_ATTRIBUTE_TYPE, std::string>;

    CK_RV openSession(CK_SESSION_HANDLE* session, void* application);
    CK_RV closeSession(CK_SESSION_HANDLE session);
    CK_RV closeAll();
    CK_RV login(CK_USER_TYPE user, const std::string& pin);
    CK_RV logout();
    CK_RV setPin(const std::string& oldPin, const std::string& newPin);
    CK_RV initPin(const std::string& pin);
    CK_RV findInit(CK_SESSION_HANDLE session, const CK_ATTRIBUTE* attributes, CK_ULONG count);
    CK_RV find(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE* object, CK_ULONG* count);
    CK_RV findFinal(CK_SESSION_HANDLE session);
    CK_RV create(const CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_HANDLE* object);
    CK_RV copy(CK_OBJECT_HANDLE object, const CK_ATTRIBUTE* changes, CK_ULONG count,
               CK_OBJECT_HANDLE* made);
    CK_RV destroy(CK_OBJECT_HANDLE object);
    CK_RV read(CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes, CK_ULONG count);
    CK_RV write(CK_OBJECT_HANDLE object, const CK_ATTRIBUTE* attributes, CK_ULONG count);

private:
    struct Failure {
        std::string function;
        unsigned int nth;
        CK_RV result;
        bool isOver;  ///< it has happened; never true for a failure of every call
    };

    struct Callback {
        std::string function;
        void (*callback)(void*) = nullptr;
        void* argument = nullptr;
    };

    struct Session {
        bool isSearchOpen = false;
        std::vector<CK_OBJECT_HANDLE> found;
    };

    /// @return null when no search is open in the session.
    Session* searching(CK_SESSION_HANDLE session);
    CK_ULONG reportedLength(const CK_ATTRIBUTE& attribute, std::size_t length) const;

    Settings m_settings;
    std::vector<Failure> m_failures;
    Callback m_callback;
    std::vector<std::size_t> m_removed;
    std::map<std::string, unsigned int> m_counts;
    std::map<CK_OBJECT_HANDLE, Attributes> m_objects;
    CK_OBJECT_HANDLE m_lastObject = 0;
    std::vector<RecordedCall> m_calls;
    FaultInjector m_fault;
    std::map<CK_SESSION_HANDLE, Session> m_sessions;
    int m_loggedIn = -1;
    std::string m_userPin;
    std::string m_securityOfficerPin;
    CK_FUNCTION_LIST m_list;
};
