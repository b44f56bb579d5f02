/// @file
/// The identifiers of classes and interfaces, for C and C++. Include zrkey.h or zrkey_c.h.
#ifndef ZRKEY_IDENTIFIERS_H
#define ZRKEY_IDENTIFIERS_H

#include <zrkey/automation.h>

/// How the library's only function is exported and imported.
#ifdef _WIN32
#ifdef ZRKEY_BUILD
#define ZRKEY_EXPORT __declspec(dllexport)
#else
#define ZRKEY_EXPORT __declspec(dllimport)
#endif
#else
#define ZRKEY_EXPORT __attribute__((visibility("default")))
#endif

/// The class identifier that ZCLGetClassObject accepts.
static const GUID LIBID_ZRKey = {
    0xA453F02B, 0x23F9, 0x43F2, {0xAF, 0x82, 0x30, 0x1C, 0x1A, 0xE7, 0x54, 0x89}};
/// The interface that the class factory creates.
static const GUID IID_ITokenProvider = {
    0x34DF3135, 0x4C7D, 0x4000, {0x83, 0x84, 0x6B, 0x48, 0xE2, 0x13, 0xF3, 0xFA}};
/// Declared for hosts that name it; no operation compares it.
static const GUID IID_IKeyManager = {
    0x7FE68A62, 0x9B82, 0x44E9, {0x99, 0x0E, 0xC9, 0xDB, 0x7F, 0x9A, 0x9E, 0x94}};
/// Declared for hosts that name it; no operation compares it.
static const GUID IID_ITokenProviderIPC = {
    0x7A20E9EE, 0xFBCB, 0x4FFA, {0xB2, 0xA6, 0x3E, 0x6B, 0x2E, 0xBF, 0x6E, 0x8B}};
/// Declared for hosts that name it; no operation compares it.
static const GUID IID_IKeyFile = {
    0x03EE18DE, 0x8637, 0x4C69, {0x90, 0x8E, 0x7B, 0x47, 0x79, 0xF0, 0xB8, 0xDA}};
/// Declared for hosts that name it; no operation compares it.
static const GUID IID_IKeyContainer = {
    0x658B212F, 0x2A70, 0x4C93, {0xBD, 0x24, 0x46, 0x89, 0x98, 0xA2, 0xA3, 0x21}};
/// Declared for hosts that name it; no operation compares it.
static const GUID IID_IKeyCertificate = {
    0xCBE939EF, 0xEE3C, 0x412D, {0x87, 0x2C, 0x58, 0x8E, 0x48, 0xA8, 0x6F, 0xA5}};
/// Declared for hosts that name it; no operation compares it.
static const GUID IID_IKeyObject = {
    0x51A29A58, 0xC94A, 0x4EA4, {0xB8, 0xCC, 0x69, 0xB9, 0x6B, 0x10, 0x86, 0x97}};
/// Declared for hosts that name it; no operation compares it.
static const GUID IID_IKeyDevice = {
    0x57E1E167, 0xBBA4, 0x484B, {0x83, 0x59, 0x63, 0x00, 0xB7, 0xC9, 0x08, 0x1D}};
/// Declared for hosts that name it; no operation compares it.
static const GUID IID_IZCLRegister = {
    0x89FA0249, 0x2B8A, 0x44BC, {0xBD, 0xA4, 0xCB, 0x60, 0xBE, 0x03, 0xAA, 0x2E}};

#endif
