// The control of the recording Cryptoki module: its objects, its answers, its recorded calls.
//
// The module keeps its state as long as it is loaded; a test holds a reference of its own, so that
// the record outlives the library's Unload.
#pragma once

#include <cstddef>

#include "pkcs11/cryptoki_types.h"
#include "tests/support/recording/recording_fault.h"

/// Returned by the module's export "GetRecordingModule". Only plain types cross the border.
class RecordingModule {
public:
    /// Answers that a test may change.
    struct Settings {
        CK_RV functionListResult;      ///< of C_GetFunctionList
        bool functionListIsNull;       ///< C_GetFunctionList hands out null
        CK_TOKEN_INFO tokenInfo;       ///< of every slot
        CK_ULONG slotCount;            ///< slots with a token
        CK_ULONG slotCountWhenListed;  ///< the same when a list is requested
        CK_ULONG emptySlotCount;       ///< slots without a token
        bool isSearchExclusive;        ///< a second C_FindObjectsInit is CKR_OPERATION_ACTIVE
        CK_ULONG foundCount;           ///< what C_FindObjects reports for an object; 1
        CK_ATTRIBUTE_TYPE lyingType;   ///< an attribute whose length is reported wrongly
        CK_ULONG lyingLength;          ///< the length it reports; see lie
        enum { kNever, kOnQuery, kOnRead, kAlways } lie;
        CK_ULONG signatureLength;  ///< bytes of a signature
        const CK_BYTE* signature;  ///< those bytes; null: 0, 1, 2, ...
        CK_MECHANISM_TYPE mechanisms[8];
        CK_ULONG mechanismCount;
        CK_FLAGS mechanismFlags;  ///< of every mechanism
        CK_SLOT_ID eventSlot;     ///< of the next event; 0 none
        const char* userPin;
        const char* securityOfficerPin;
        bool setsApplication;              ///< C_OpenSession writes through the application pointer
        bool overwritesPin;                ///< C_Login writes into the PIN, over its terminator too
        CK_OBJECT_HANDLE vanishingObject;  ///< disappears when the vanishingSearch-th search begins
        unsigned int vanishingSearch;      ///< from 1, counted from now; 0 never
    };

    /// Removes calls, failures and objects; restores the default answers: one token, user PIN 1234.
    virtual void reset() = 0;
    virtual Settings& settings() = 0;
    /// Lets a call fail.
    /// @param function  "C_Login"; null counts the calls of all functions.
    /// @param nth       from 1, counted from now; 0 every one.
    virtual void fail(const char* function, unsigned int nth, CK_RV result) = 0;
    /// Sets the fault of one call; replaces the previous fault.
    virtual void setFault(const RecordingFault& fault) = 0;
    /// Whether that call was made.
    virtual bool wasFaultHit() const = 0;
    /// Calls back once, from within the next call of a function.
    virtual void callBack(const char* function, void (*callback)(void*), void* argument) = 0;
    /// Removes an entry point from the list that is handed out next.
    virtual void removeEntry(std::size_t index) = 0;

    /// @return the object's handle.
    virtual CK_OBJECT_HANDLE addObject() = 0;
    /// @param object  created when it does not exist.
    virtual void setAttribute(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type, const void* value,
                              std::size_t length) = 0;
    virtual void removeObject(CK_OBJECT_HANDLE object) = 0;
    virtual std::size_t objectCount() const = 0;
    /// @return null when the object has no such attribute.
    virtual const void* attribute(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                                  std::size_t* length) const = 0;

    virtual std::size_t callCount() const = 0;
    /// One call: name and arguments, "C_Login(1, 1, 1234)". Valid until the next call.
    virtual const char* call(std::size_t index) const = 0;
    /// The bytes of that text, which may contain zeros.
    virtual std::size_t callLength(std::size_t index) const = 0;
    virtual RecordingAnswer answer(std::size_t index) const = 0;
    virtual void clearCalls() = 0;
    virtual std::size_t openSessions() const = 0;
    virtual bool isSearchOpen() const = 0;

protected:
    ~RecordingModule() = default;
};
