// The automation types and functions of the target: on Windows the system's own.
#ifndef ZRKEY_AUTOMATION_H
#define ZRKEY_AUTOMATION_H

#include <windows.h>

#include <oaidl.h>
#include <oleauto.h>

#endif
