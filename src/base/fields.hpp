// Printing single arguments as their conversion specifications say: digits, sign, padding.
#pragma once

#include "base/format_spec.hpp"
#include "base/sink.hpp"

#include <cstdint>
#include <cwchar>

namespace kestu {

void put_signed(Sink &sink, const Spec &spec, int64_t value);
void put_unsigned(Sink &sink, const Spec &spec, uint64_t value);

// A null pointer prints as "(nil)", others as with %#x.
void put_pointer(Sink &sink, const Spec &spec, const void *pointer);

// False, with nothing put, when the integer part of the number does not fit 64 bits.
[[nodiscard]] bool put_float(Sink &sink, const Spec &spec, double value);

// The precision of the specification cuts the text. Null prints as "(null)".
void put_string(Sink &sink, const Spec &spec, const char *text);

// As put_string, but comes out in UTF-8. The precision counts bytes and never splits a character;
// behind the last one that it admits nothing is read.
void put_wide_string(Sink &sink, const Spec &spec, const wchar_t *text);

} // namespace kestu
