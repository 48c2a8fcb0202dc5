// Counting bits in 256-bit registers.
#include "containers/bitarr_adder.hpp"
#include "containers/bitarr_count.hpp"

namespace kestu {
namespace {

using Register = uint64_t __attribute__((vector_size(32)));

} // namespace

size_t count_bits_256(const uint64_t *words, size_t n) {
    return count_bits<Register>(words, n);
}

} // namespace kestu
