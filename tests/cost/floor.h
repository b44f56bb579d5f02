/* The work of the library's operations by hand: the bare Cryptoki calls and what a program needs around
   them. Each function does the work once; a result is made and freed. */
#ifndef ZRKEY_TESTS_COST_FLOOR_H
#define ZRKEY_TESTS_COST_FLOOR_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Loads a module that is initialised already and opens a session.
   Returns 0 on failure. */
int floorOpen(const char* modulePath);

/* Each returns 0 when the work could not be done. */
int floorSign(const unsigned char* data, size_t size);
int floorVerify(const unsigned char* data, size_t size);
int floorListCertificates(void);
int floorOpenCertificate(void);
int floorReadCertificate(void);
int floorReadFile(void);
int floorOpenToken(void);

int floorDigest(const unsigned char* data, size_t size);
int floorUtf8ToUtf16(const char* text, uint16_t* out, size_t size);
int floorUtf16ToUtf8(const uint16_t* text, char* out, size_t size);
int floorFindMember(const uint16_t* name);
int floorCallMember(int id);
int floorLog(const char* path, const char* operation, int line, const char* message);

#ifdef __cplusplus
}
#endif

#endif
