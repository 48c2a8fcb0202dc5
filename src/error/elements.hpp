// What every element of a chain is asked.
#pragma once

#include "kestu_error.h"

namespace kestu {

// The sentinel and the elements in static storage belong to no chain: chains may end in them, and
// nothing that is done to such a chain changes them.
inline bool is_shared(const kestu_error_t &err) {
    return &err == KestuDLlistStopWalking || !err.pool;
}

} // namespace kestu
