// Numbers out of rows of samples.
#pragma once

#include <cstdint>

namespace kestu::tiff {

// Every `step`th sample of a row from the sample `first` on.
struct Samples {
    const uint8_t *row;
    uint64_t first, step;
    uint32_t count;
};

// Integers of 1 to 32 bits. The bit `sign` of each is turned, which makes signed numbers unsigned
// in the same order.
void unpack_integers(const Samples &from, unsigned bits, uint32_t sign, uint32_t *out);

// Floats of 16, 24, 32 or 64 bits.
void unpack_floats(const Samples &from, unsigned bits, double *out);

} // namespace kestu::tiff
