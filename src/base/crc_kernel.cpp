// Choosing how the CRCs are computed.
#include "base/crc_kernel.hpp"

#include "base/crc_table.hpp"

namespace kestu {
namespace {

constexpr CrcKernel kernels[] = {
    {"bytewise", nullptr, crc_bytewise<Crc32>, crc_bytewise<Crc32c>, crc_bytewise<Crc16>},
    {"sliced", nullptr, crc_sliced<Crc32>, crc_sliced<Crc32c>, crc_sliced<Crc16>},
    {"folded_128", &CpuFeatures::clmul, crc32_folded_128, crc32c_folded_128, crc16_folded_128},
    {"folded_256", &CpuFeatures::clmul256, crc32_folded_256, crc32c_folded_256, crc16_folded_256},
    {"folded_512", &CpuFeatures::clmul512, crc32_folded_512, crc32c_folded_512, crc16_folded_512},
};

constexpr CrcKernel first_use = {"not_chosen", nullptr,
                                 [](uint32_t crc, const unsigned char *data, size_t size) {
                                     return crc_dispatch.choose().crc32(crc, data, size);
                                 },
                                 [](uint32_t crc, const unsigned char *data, size_t size) {
                                     return crc_dispatch.choose().crc32c(crc, data, size);
                                 },
                                 [](uint16_t crc, const unsigned char *data, size_t size) {
                                     return crc_dispatch.choose().crc16(crc, data, size);
                                 }};

} // namespace

constinit Dispatch<CrcKernel> crc_dispatch{kernels, first_use};

} // namespace kestu
