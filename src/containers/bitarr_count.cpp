// Choosing how bits are counted.
#include "containers/bitarr_count.hpp"

#include "containers/bitarr_adder.hpp"

namespace kestu {
namespace {

constexpr CountKernel kernels[] = {
    {"registers_128", nullptr, count_bits_128},
    {"registers_256", &CpuFeatures::avx2, count_bits_256},
    {"registers_512", &CpuFeatures::count512, count_bits_512},
};

constexpr CountKernel first_use = {"not_chosen", nullptr, [](const uint64_t *words, size_t n) {
                                       return count_dispatch.choose().count(words, n);
                                   }};

using Register = uint64_t __attribute__((vector_size(16)));

} // namespace

constinit Dispatch<CountKernel> count_dispatch{kernels, first_use};

size_t count_bits_128(const uint64_t *words, size_t n) {
    return count_bits<Register>(words, n);
}

} // namespace kestu
