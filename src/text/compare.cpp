// Choosing how texts are compared without regard to the case of ASCII letters.
#include "text/compare.hpp"

#include "kestu_str.h"
#include "text/compare_registers.hpp"

#include <emmintrin.h>

namespace kestu {
namespace {

struct Register128 {
    using Bytes [[gnu::vector_size(16)]] = unsigned char;
    using SignedBytes [[gnu::vector_size(16)]] = signed char;

    static unsigned mask(Bytes bytes) {
        return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(bytes)));
    }
    // The bytes from number `shift` on of two blocks.
    static Bytes join(Bytes low, Bytes high, size_t shift) {
        const Bytes both[] = {low, high};
        Bytes joined;
        std::memcpy(&joined, reinterpret_cast<const char *>(both) + shift, sizeof joined);
        return joined;
    }
};

constexpr CompareKernel kernels[] = {
    {"registers_128", nullptr, compare_folded_128},
    {"registers_256", &CpuFeatures::avx2, compare_folded_256},
};

constexpr CompareKernel first_use = {"not_chosen", nullptr, [](const char *s1, const char *s2) {
                                         return compare_dispatch.choose().compare(s1, s2);
                                     }};

} // namespace

constinit Dispatch<CompareKernel> compare_dispatch{kernels, first_use};

int compare_folded_128(const char *s1, const char *s2) {
    return compare_folded<Register128, Register128>(s1, s2);
}

} // namespace kestu

using namespace kestu;

// Short texts are mostly through before a kernel would have been looked up.
[[gnu::no_sanitize_address]] int kestu_str_stricmp(const char *s1, const char *s2) {
    Comparison texts{s1, s2};
    if (lie_alike<Register128>(texts) && compare_alike<Register128>(texts, 3))
        return texts.difference;
    return compare_dispatch.current().compare(texts.s1, texts.s2);
}
