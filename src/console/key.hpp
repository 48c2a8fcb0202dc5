// Keys as the bytes that a terminal sends for them.
#pragma once

#include <string_view>

namespace kestu {

// The most bytes that one read of a key takes.
constexpr size_t max_key_bytes = 18;

// The code of the key that `bytes`, the result of one read, stands for: the byte itself when it is
// alone, a KESTU_KEY value for a known sequence, and KESTU_KEY_UNREADABLE for everything else.
int decode_key(std::string_view bytes);

} // namespace kestu
