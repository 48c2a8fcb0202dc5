// Storing formatted text.
#include "base/sink.hpp"

#include "base/short_copy.hpp"

namespace kestu {

void Sink::copy(char *to, const char *from, size_t n) {
    copy_bytes(to, from, n);
}

} // namespace kestu
