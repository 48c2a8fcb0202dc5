// Choosing how SHA-1's compression is computed.
#include "base/sha1_kernel.hpp"

namespace kestu {
namespace {

constexpr Sha1Kernel kernels[] = {
    {"plain", nullptr, sha1_compress_plain},
    {"instructions", &CpuFeatures::sha, sha1_compress_by_instructions},
};

constexpr Sha1Kernel first_use = {"not_chosen", nullptr,
                                  [](uint32_t *state, const unsigned char *blocks, size_t count) {
                                      sha1_dispatch.choose().compress(state, blocks, count);
                                  }};

} // namespace

constinit Dispatch<Sha1Kernel> sha1_dispatch{kernels, first_use};

} // namespace kestu
