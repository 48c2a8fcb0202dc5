// Comparing texts without regard to the case of ASCII letters in 256-bit registers.
#include "text/compare.hpp"
#include "text/compare_registers.hpp"

#include <immintrin.h>

namespace kestu {
namespace {

struct Register256 {
    using Bytes [[gnu::vector_size(32)]] = unsigned char;
    using SignedBytes [[gnu::vector_size(32)]] = signed char;
    using Anywhere [[gnu::vector_size(32), gnu::aligned(1), gnu::may_alias]] = unsigned char;

    static unsigned mask(Bytes bytes) {
        return static_cast<unsigned>(_mm256_movemask_epi8(reinterpret_cast<__m256i>(bytes)));
    }
};

} // namespace

int compare_folded_256(const char *s1, const char *s2) {
    return compare_folded<Register256>(s1, s2);
}

} // namespace kestu
