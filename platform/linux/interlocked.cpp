// Atomic increment and decrement.
#include "platform/linux/kernel.h"

LONG InterlockedIncrement(volatile LONG* value) {
    return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST);
}

LONG InterlockedDecrement(volatile LONG* value) {
    return __atomic_sub_fetch(value, 1, __ATOMIC_SEQ_CST);
}
