// The names of the members that the library's objects can have. An object itself does not list its
// members: it says of a name whether it knows it.
#pragma once

namespace zr::host {

inline constexpr const char* kProviderMembers[] = {"GetKeyCount", "Load", "OpenKey", "Unload"};

inline constexpr const char* kTokenMembers[] = {"CreateContainer",
                                                "CreateFile",
                                                "DeleteContainer",
                                                "DeleteFile",
                                                "DigestData",
                                                "EnumContainer",
                                                "EnumFiles",
                                                "FileExists",
                                                "GetContainerCount",
                                                "GetDigestMethod",
                                                "GetFreeSize",
                                                "GetLabel",
                                                "GetManufacturerID",
                                                "GetMaxRetryCount",
                                                "GetModelID",
                                                "GetRemainRetryCount",
                                                "GetSerialNumber",
                                                "GetSignAlgo",
                                                "GetTotalSize",
                                                "IsDefaultPIN",
                                                "Lock",
                                                "ModifyPIN",
                                                "OpenContainer",
                                                "OpenFile",
                                                "SetLabel",
                                                "SignData",
                                                "Unlock",
                                                "UnlockPIN",
                                                "VerifyData",
                                                "VerifyPIN"};

}  // namespace zr::host
