// Calls of the system that move bytes.
#pragma once

#include <cerrno>
#include <cstddef>

#include <sys/types.h>

namespace kestu {

// Calls until the call is not interrupted by a signal. Returns how many bytes it moved; 0 after a
// failure.
template <typename Move>
size_t move_bytes(Move move) {
    ssize_t moved = 0;
    do {
        moved = move();
    } while (moved < 0 && errno == EINTR);
    return moved > 0 ? static_cast<size_t>(moved) : 0;
}

} // namespace kestu
