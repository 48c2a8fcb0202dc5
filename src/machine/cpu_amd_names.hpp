// Names of AMD's processors that do not tell their own.
#pragma once

#include <cstdint>

namespace kestu {

// Derives the name from the low byte of the signature and from the 12-bit brand identifier, one of
// which must be zero. False, with `name` left alone, when there is no name.
bool amd_name(uint32_t signature_byte, uint32_t brand_id, char (&name)[80]);

// Writes the name of `code` with the number `n` in it; false when the code has no name.
bool amd_name_of_code(uint32_t code, int n, char (&name)[80]);

} // namespace kestu
