// The automation types and functions of the target: on Windows those of the system.
#ifndef ZRKEY_AUTOMATION_H
#define ZRKEY_AUTOMATION_H

#include <windows.h>

#include <oaidl.h>
#include <oleauto.h>

#endif
