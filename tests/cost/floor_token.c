/* The Cryptoki calls behind the library's operations, with as few calls as a program needs. */
#include <dlfcn.h>
#include <p11-kit/pkcs11.h>
#include <stdlib.h>
#include <string.h>

#include "tests/cost/floor.h"

static CK_FUNCTION_LIST* s_call;
static CK_SESSION_HANDLE s_session;
static CK_BBOOL s_true = CK_TRUE;

static const char kId[] = "00000001";

int floorOpen(const char* modulePath) {
    void* module = dlopen(modulePath, RTLD_NOW);
    CK_C_GetFunctionList getList = NULL;
    if (module) {
        /* A pointer to a function cannot be cast in C. */
        *(void**)&getList = dlsym(module, "C_GetFunctionList");
    }
    return getList && getList(&s_call) == CKR_OK &&
           s_call->C_OpenSession(0, CKF_SERIAL_SESSION | CKF_RW_SESSION, NULL, NULL, &s_session) ==
               CKR_OK;
}

static int begin(CK_OBJECT_CLASS class) {
    CK_ATTRIBUTE search[2];
    search[0].type = CKA_CLASS;
    search[0].pValue = &class;
    search[0].ulValueLen = sizeof class;
    search[1].type = CKA_TOKEN;
    search[1].pValue = &s_true;
    search[1].ulValueLen = sizeof s_true;
    return s_call->C_FindObjectsInit(s_session, search, 2) == CKR_OK;
}

static int next(CK_OBJECT_HANDLE* object) {
    CK_ULONG count = 0;
    return s_call->C_FindObjects(s_session, object, 1, &count) == CKR_OK && count == 1;
}

/* Reads one attribute as terminated text. */
static int read(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type, char* text, CK_ULONG* size) {
    CK_ATTRIBUTE attribute;
    attribute.type = type;
    attribute.pValue = text;
    attribute.ulValueLen = *size - 1;
    if (s_call->C_GetAttributeValue(s_session, object, &attribute, 1) != CKR_OK) {
        return 0;
    }
    text[attribute.ulValueLen] = 0;
    *size = attribute.ulValueLen;
    return 1;
}

/* Finds the first object of a class of which an attribute has this text. */
static int find(CK_OBJECT_CLASS class, CK_ATTRIBUTE_TYPE type, const char* wanted,
                CK_OBJECT_HANDLE* object) {
    int isFound = 0;
    if (!begin(class)) {
        return 0;
    }
    while (!isFound && next(object)) {
        char text[64];
        CK_ULONG size = sizeof text;
        isFound = read(*object, type, text, &size) && strcmp(text, wanted) == 0;
    }
    s_call->C_FindObjectsFinal(s_session);
    return isFound;
}

/* Makes what a caller gets and frees it, as the callers of the library do. */
static int handOut(const void* bytes, size_t size) {
    void* copy = malloc(size);
    if (copy) {
        memcpy(copy, bytes, size);
    }
    free(copy);
    return copy != NULL;
}

int floorSign(const unsigned char* data, size_t size) {
    CK_MECHANISM mechanism = {CKM_SHA1_RSA_PKCS, NULL, 0};
    CK_OBJECT_HANDLE key = 0;
    CK_BYTE signature[1024];
    CK_ULONG length = sizeof signature;
    return find(CKO_PRIVATE_KEY, CKA_ID, kId, &key) &&
           s_call->C_SignInit(s_session, &mechanism, key) == CKR_OK &&
           s_call->C_Sign(s_session, (CK_BYTE*)data, size, signature, &length) == CKR_OK &&
           handOut(signature, length);
}

int floorVerify(const unsigned char* data, size_t size) {
    CK_MECHANISM mechanism = {CKM_SHA1_RSA_PKCS, NULL, 0};
    CK_OBJECT_HANDLE key = 0;
    CK_BYTE signature[256] = {0};
    return find(CKO_PUBLIC_KEY, CKA_ID, kId, &key) &&
           s_call->C_VerifyInit(s_session, &mechanism, key) == CKR_OK &&
           s_call->C_Verify(s_session, (CK_BYTE*)data, size, signature, sizeof signature) == CKR_OK;
}

/* A list of UTF-16 texts, each with its length before it. */
struct List {
    uint16_t** texts;
    size_t count;
    size_t room;
};

static int append(struct List* list, const char* name) {
    const size_t length = strlen(name);
    uint16_t* text;
    if (list->count == list->room) {
        const size_t room = list->room ? 2 * list->room : 16;
        uint16_t** texts = realloc(list->texts, room * sizeof *texts);
        if (!texts) {
            return 0;
        }
        list->texts = texts;
        list->room = room;
    }
    text = malloc((length + 3) * sizeof *text);
    if (!text) {
        return 0;
    }
    text[0] = (uint16_t)length;
    text[1] = 0;
    for (size_t i = 0; i <= length; ++i) {
        text[i + 2] = (unsigned char)name[i];
    }
    list->texts[list->count++] = text;
    return 1;
}

int floorListCertificates(void) {
    struct List list = {NULL, 0, 0};
    CK_OBJECT_HANDLE object = 0;
    int isComplete = begin(CKO_CERTIFICATE);
    while (isComplete && next(&object)) {
        char name[64];
        CK_ULONG size = sizeof name;
        isComplete = read(object, CKA_ID, name, &size) && append(&list, name);
    }
    s_call->C_FindObjectsFinal(s_session);
    for (size_t i = 0; i < list.count; ++i) {
        free(list.texts[i]);
    }
    free(list.texts);
    return isComplete && list.count > 0;
}

int floorOpenCertificate(void) {
    CK_OBJECT_HANDLE object = 0;
    char name[64];
    CK_ULONG size = sizeof name;
    const int isFound =
        begin(CKO_CERTIFICATE) && next(&object) && read(object, CKA_ID, name, &size);
    s_call->C_FindObjectsFinal(s_session);
    return isFound && handOut(name, size);
}

int floorReadCertificate(void) {
    CK_OBJECT_HANDLE object = 0;
    char value[4096];
    CK_ULONG size = sizeof value;
    return find(CKO_CERTIFICATE, CKA_ID, kId, &object) && read(object, CKA_VALUE, value, &size) &&
           handOut(value, size);
}

int floorReadFile(void) {
    CK_OBJECT_HANDLE object = 0;
    char value[4096];
    CK_ULONG size = sizeof value;
    return find(CKO_DATA, CKA_LABEL, "6", &object) && read(object, CKA_VALUE, value, &size) &&
           handOut(value, size);
}

int floorOpenToken(void) {
    CK_SLOT_ID slots[8];
    CK_ULONG count = 8;
    CK_SESSION_HANDLE session = 0;
    return s_call->C_GetSlotList(CK_TRUE, slots, &count) == CKR_OK && count > 0 &&
           s_call->C_OpenSession(slots[0], CKF_SERIAL_SESSION | CKF_RW_SESSION, NULL, NULL,
                                 &session) == CKR_OK &&
           s_call->C_CloseSession(session) == CKR_OK;
}
