// The interfaces and identifiers of zrkey.idl.
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <ocidl.h>

// The library's own header has this name too.
#define LIBID_ZRKey LIBID_ZRKeyAutomation
#include <zrkeycom.h>
#undef LIBID_ZRKey
