// The members of a token by name, in the order of their numbers, which begin with 1.
#pragma once

namespace zr::bench {

inline constexpr const char* kTokenMembers[] = {"GetSerialNumber",  "SetLabel",
                                                "GetLabel",         "GetManufacturerID",
                                                "GetModelID",       "GetTotalSize",
                                                "GetFreeSize",      "ModifyPIN",
                                                "GetMaxRetryCount", "GetRemainRetryCount",
                                                "IsDefaultPIN",     "VerifyPIN",
                                                "UnlockPIN",        "Lock",
                                                "Unlock",           "CreateFile",
                                                "FileExists",       "OpenFile",
                                                "EnumFiles",        "DeleteFile",
                                                "GetDigestMethod",  "DigestData",
                                                "CreateContainer",  "GetContainerCount",
                                                "OpenContainer",    "DeleteContainer",
                                                "EnumContainer",    "SignData",
                                                "VerifyData",       "GetSignAlgo"};

inline constexpr int kUnlockPin = 13;
inline constexpr int kGetDigestMethod = 21;

}  // namespace zr::bench
