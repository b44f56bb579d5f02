// The identifiers of zrkey.idl, as data.
#include <windows.h>

#include <oaidl.h>
#include <ocidl.h>

// From here on DEFINE_GUID defines.
#include <initguid.h>

#include "host/automation/interfaces.h"
