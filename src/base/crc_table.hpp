// CRCs by tables alone, on every processor.
#pragma once

#include "base/crc_polynomial.hpp" // IWYU pragma: export

namespace kestu {

// One lookup and one step of the register a byte. This defines the result of every other kernel.
template <typename Crc>
typename Crc::Word crc_bytewise(typename Crc::Word crc, const unsigned char *data, size_t size);

// As many bytes a step as there are tables, still with one lookup a byte: the lookups of a step do
// not wait for each other ("slicing", Kounavis and Berry 2005).
template <typename Crc>
typename Crc::Word crc_sliced(typename Crc::Word crc, const unsigned char *data, size_t size);

} // namespace kestu
