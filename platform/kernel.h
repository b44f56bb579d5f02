// The kernel services that the library calls, under their Windows names.
#pragma once

#ifdef __linux__
#include "platform/linux/kernel.h"
#else
#include "platform/windows/kernel.h"
#endif
