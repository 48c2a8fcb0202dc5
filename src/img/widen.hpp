// Narrow numbers that grow where they stand.
#pragma once

#include <cstddef>
#include <cstring>

namespace kestu {

// Where `count` narrow numbers stand before they are widened: in the second half of the array.
template <typename Narrow, typename Wide>
Narrow *narrow_half(Wide *array, size_t count) {
    static_assert(2 * sizeof(Narrow) == sizeof(Wide));
    return reinterpret_cast<Narrow *>(array) + count;
}

// Turns them into numbers of the whole array. None is overwritten before it was read.
template <typename Narrow, typename Wide>
void widen(Wide *array, size_t count) {
    const Narrow *const narrow = narrow_half<Narrow>(array, count);
    for (size_t i = 0; i < count; ++i) {
        Narrow number;
        std::memcpy(&number, narrow + i, sizeof number);
        array[i] = number;
    }
}

} // namespace kestu
