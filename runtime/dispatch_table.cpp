// Searching method tables.
#include "runtime/dispatch_table.h"

#include <cstring>

namespace zr {

DispatchInfo* findRow(DispatchInfo* rows, int count, const char* name) {
    if (!name || !*name) {
        return nullptr;
    }
    for (int i = 0; i < count; ++i) {
        // Most rows differ in the first letter, which is compared without a call.
        if (rows[i].szName[0] == name[0] && std::strcmp(rows[i].szName, name) == 0) {
            return &rows[i];
        }
    }
    return nullptr;
}

DispatchInfo* findRow(DispatchInfo* rows, int count, LONG id) {
    for (int i = 0; id >= 1 && i < count; ++i) {
        if (rows[i].nId == id) {
            return &rows[i];
        }
    }
    return nullptr;
}

}  // namespace zr
