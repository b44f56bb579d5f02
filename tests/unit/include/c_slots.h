// The calls of zrkey_c_test through the structures of zrkey_c.h. They are written in C and call
// recording objects that are written in C++: both include this header.
#ifndef ZR_TESTS_UNIT_INCLUDE_C_SLOTS_H
#define ZR_TESTS_UNIT_INCLUDE_C_SLOTS_H

#include <stddef.h>
#include <zrkey/zrkey_c.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Begins a call: from here on arguments have other values.
void beginCall(void);
/// The values of the argument at a position, from 1, of the call that was begun.
void* pointerArgument(int position);
int numberArgument(int position);
bool flagArgument(int position);
/// Expects that the call has reached the operation of this name, with these arguments and result.
void endCall(const char* name, int argumentCount, unsigned int result);

/// Each calls every function of its interface, and returns how many functions the structure has.
size_t callUnknown(IUnknown* object);
size_t callDispatch(IDispatch* object);
size_t callClassFactory(IClassFactory* object);
size_t callSupportErrorInfo(ISupportErrorInfo* object);
size_t callTokenProvider(ITokenProvider* object);
size_t callKeyObject(IKeyObject* object);
size_t callKeyFile(IKeyFile* object);
size_t callKeyContainer(IKeyContainer* object);
size_t callKeyCertificate(IKeyCertificate* object);

#ifdef __cplusplus
}
#endif

#endif
