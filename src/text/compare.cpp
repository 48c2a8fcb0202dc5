// Choosing how texts are compared without regard to the case of ASCII letters.
#include "text/compare.hpp"

#include "kestu_str.h"
#include "text/compare_registers.hpp"

#include <emmintrin.h>

using namespace kestu;

namespace kestu {
namespace {

struct Register128 {
    using Bytes [[gnu::vector_size(16)]] = unsigned char;
    using SignedBytes [[gnu::vector_size(16)]] = signed char;
    using Anywhere [[gnu::vector_size(16), gnu::aligned(1), gnu::may_alias]] = unsigned char;

    static unsigned mask(Bytes bytes) {
        return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(bytes)));
    }
};

constexpr ComparePath paths[] = {
    {"registers_128", nullptr, compare_folded_128},
    {"registers_256", &CpuFeatures::avx2, compare_folded_256},
};

constexpr ComparePath first_use = {"not_chosen", nullptr, [](const char *s1, const char *s2) {
                                       return compare_dispatch.choose().compare(s1, s2);
                                   }};

} // namespace

constinit Dispatch<ComparePath> compare_dispatch{paths, first_use};

int compare_folded_128(const char *s1, const char *s2) {
    return compare_folded<Register128>(s1, s2);
}

} // namespace kestu

// Short texts are through before a path would have been looked up.
[[gnu::no_sanitize_address]] int kestu_str_stricmp(const char *s1, const char *s2) {
    constexpr ptrdiff_t step = sizeof(Register128::Bytes), head = 3 * step;
    if ((offset_in_page(s1) | offset_in_page(s2)) <= page_size - head) [[likely]] {
        for (ptrdiff_t i = 0; i < head; i += step)
            if (const unsigned found = stops<Register128>(s1 + i, s2 + i))
                return difference_at(s1 + i, s2 + i, found);
        s1 += head;
        s2 += head;
    }
    return compare_dispatch.current().compare(s1, s2);
}
