// Begins the layout of Cryptoki structures: packed on bytes for Windows, as PKCS #11 v2.40 defines
// it; natural for Linux. winegcc, which builds for Linux, defines _WIN32 too.
#ifndef __linux__
#pragma pack(push, 1)
#endif
