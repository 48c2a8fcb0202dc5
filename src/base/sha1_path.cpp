// Choosing how SHA-1's compression is computed.
#include "base/sha1_path.hpp"

namespace kestu {
namespace {

constexpr Sha1Path paths[] = {
    {"plain", nullptr, sha1_compress_plain},
    {"instructions", &CpuFeatures::sha, sha1_compress_by_instructions},
};

constexpr Sha1Path first_use = {"not_chosen", nullptr,
                                [](uint32_t *state, const unsigned char *blocks, size_t count) {
                                    sha1_dispatch.choose().compress(state, blocks, count);
                                }};

} // namespace

constinit Dispatch<Sha1Path> sha1_dispatch{paths, first_use};

} // namespace kestu
