// The information of modules, slots, tokens and sessions in the layout of Windows.
#include <cstring>

#include "tests/support/bridge/arguments.h"

namespace zr::bridge {

using windows::narrow;

void copy(const CK_INFO& from, windows::Info* to) {
    to->cryptokiVersion = from.cryptokiVersion;
    std::memcpy(to->manufacturerID, from.manufacturerID, sizeof to->manufacturerID);
    to->flags = narrow(from.flags);
    std::memcpy(to->libraryDescription, from.libraryDescription, sizeof to->libraryDescription);
    to->libraryVersion = from.libraryVersion;
}

void copy(const CK_SLOT_INFO& from, windows::SlotInfo* to) {
    std::memcpy(to->slotDescription, from.slotDescription, sizeof to->slotDescription);
    std::memcpy(to->manufacturerID, from.manufacturerID, sizeof to->manufacturerID);
    to->flags = narrow(from.flags);
    to->hardwareVersion = from.hardwareVersion;
    to->firmwareVersion = from.firmwareVersion;
}

void copy(const CK_TOKEN_INFO& from, windows::TokenInfo* to) {
    std::memcpy(to->label, from.label, sizeof to->label);
    std::memcpy(to->manufacturerID, from.manufacturerID, sizeof to->manufacturerID);
    std::memcpy(to->model, from.model, sizeof to->model);
    std::memcpy(to->serialNumber, from.serialNumber, sizeof to->serialNumber);
    to->flags = narrow(from.flags);
    to->ulMaxSessionCount = narrow(from.ulMaxSessionCount);
    to->ulSessionCount = narrow(from.ulSessionCount);
    to->ulMaxRwSessionCount = narrow(from.ulMaxRwSessionCount);
    to->ulRwSessionCount = narrow(from.ulRwSessionCount);
    to->ulMaxPinLen = narrow(from.ulMaxPinLen);
    to->ulMinPinLen = narrow(from.ulMinPinLen);
    to->ulTotalPublicMemory = narrow(from.ulTotalPublicMemory);
    to->ulFreePublicMemory = narrow(from.ulFreePublicMemory);
    to->ulTotalPrivateMemory = narrow(from.ulTotalPrivateMemory);
    to->ulFreePrivateMemory = narrow(from.ulFreePrivateMemory);
    to->hardwareVersion = from.hardwareVersion;
    to->firmwareVersion = from.firmwareVersion;
    std::memcpy(to->utcTime, from.utcTime, sizeof to->utcTime);
}

void copy(const CK_SESSION_INFO& from, windows::SessionInfo* to) {
    to->slotID = toWindows(from.slotID);
    to->state = narrow(from.state);
    to->flags = narrow(from.flags);
    to->ulDeviceError = narrow(from.ulDeviceError);
}

void copy(const CK_MECHANISM_INFO& from, windows::MechanismInfo* to) {
    to->ulMinKeySize = narrow(from.ulMinKeySize);
    to->ulMaxKeySize = narrow(from.ulMaxKeySize);
    to->flags = narrow(from.flags);
}

}  // namespace zr::bridge
