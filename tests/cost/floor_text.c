/* Texts, calls by name and log lines, written as a C program writes them. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <time.h>

#include "tests/cost/floor.h"

int floorUtf8ToUtf16(const char* text, uint16_t* out, size_t size) {
    const unsigned char* in = (const unsigned char*)text;
    size_t length = 0;
    while (*in && length < size) {
        if (*in < 0x80) {
            out[length++] = *in++;
        } else if ((in[0] & 0xE0) == 0xC0 && (in[1] & 0xC0) == 0x80) {
            out[length++] = (uint16_t)((in[0] & 0x1F) << 6 | (in[1] & 0x3F));
            in += 2;
        } else if ((in[0] & 0xF0) == 0xE0 && (in[1] & 0xC0) == 0x80 && (in[2] & 0xC0) == 0x80) {
            out[length++] = (uint16_t)((in[0] & 0x0F) << 12 | (in[1] & 0x3F) << 6 | (in[2] & 0x3F));
            in += 3;
        } else {
            return 0;
        }
    }
    if (length == size) {
        return 0;
    }
    out[length] = 0;
    return 1;
}

int floorUtf16ToUtf8(const uint16_t* text, char* out, size_t size) {
    size_t length = 0;
    for (; *text && length + 4 <= size; ++text) {
        if (*text < 0x80) {
            out[length++] = (char)*text;
        } else if (*text < 0x800) {
            out[length++] = (char)(0xC0 | *text >> 6);
            out[length++] = (char)(0x80 | (*text & 0x3F));
        } else {
            out[length++] = (char)(0xE0 | *text >> 12);
            out[length++] = (char)(0x80 | (*text >> 6 & 0x3F));
            out[length++] = (char)(0x80 | (*text & 0x3F));
        }
    }
    out[length] = 0;
    return *text == 0;
}

static const char* const kMembers[] = {"GetSerialNumber",  "SetLabel",
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

/* A minimal dispatch that writes the lines of the library. */
int floorFindMember(const uint16_t* name) {
    char text[1024];
    fputs("[ZComponentImpl::GetIDsOfNames] call in...\n", stdout);
    if (!floorUtf16ToUtf8(name, text, sizeof text)) {
        return 0;
    }
    printf("[ZComponentImpl::GetIDsOfNames] lpszName = [%s] ...\n", text);
    fputs("[ZComponentImpl::GetIDsOfNames] pre proxy...\n", stdout);
    fputs("[ZComponentImpl::GetIDsOfNames] self...\n", stdout);
    for (size_t i = 0; i < sizeof kMembers / sizeof *kMembers; ++i) {
        if (strcmp(kMembers[i], text) == 0) {
            printf("[ZComponentImpl::GetIDsOfNames] *rgdispid = [%d] ...\n", (int)i + 1);
            return (int)i + 1;
        }
    }
    return 0;
}

int floorCallMember(int id) {
    uint16_t* text = NULL;
    fputs("[ZComponentImpl::Invoke] call in...\n", stdout);
    fputs("[ZComponentImpl::CloneDispParams] call in...\n", stdout);
    if (strcmp(kMembers[id - 1], "GetDigestMethod") == 0) {
        text = malloc(8 * sizeof *text);
        if (text) {
            floorUtf8ToUtf16("MD5", text, 8);
        }
    }
    free(text);
    return text != NULL;
}

int floorLog(const char* path, const char* operation, int line, const char* message) {
    FILE* file = fopen(path, "a");
    struct timeval now;
    struct tm parts;
    if (!file) {
        return 0;
    }
    gettimeofday(&now, NULL);
    localtime_r(&now.tv_sec, &parts);
    fprintf(file, "[%02d:%02d:%02d.%03d] [%s:%d] %s", parts.tm_hour, parts.tm_min, parts.tm_sec,
            (int)(now.tv_usec / 1000), operation, line, message);
    return fclose(file) == 0;
}
