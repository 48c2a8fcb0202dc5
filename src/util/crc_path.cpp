// Choosing how the CRCs are computed.
#include "util/crc_path.hpp"

#include "util/crc_table.hpp"

#include <atomic>

namespace kestu {
namespace {

constexpr CrcPath paths[] = {
    {"bytewise", nullptr, crc_bytewise<Crc32>, crc_bytewise<Crc16>},
    {"sliced", nullptr, crc_sliced<Crc32>, crc_sliced<Crc16>},
    {"folded_128", &CpuFeatures::clmul, crc32_folded_128, crc16_folded_128},
    {"folded_256", &CpuFeatures::clmul256, crc32_folded_256, crc16_folded_256},
    {"folded_512", &CpuFeatures::clmul512, crc32_folded_512, crc16_folded_512},
};

const CrcPath &choose();

constexpr CrcPath not_chosen = {"not_chosen", nullptr,
                                [](uint32_t crc, const unsigned char *data, size_t size) {
                                    return choose().crc32(crc, data, size);
                                },
                                [](uint16_t crc, const unsigned char *data, size_t size) {
                                    return choose().crc16(crc, data, size);
                                }};

// Threads that come here at once choose the same, and what it points to never changes.
constinit std::atomic<const CrcPath *> path_in_use{&not_chosen};

const CrcPath &choose() {
    const CrcPath &best = best_crc_path(cpu_features());
    force_crc_path(best);
    return best;
}

} // namespace

std::span<const CrcPath> crc_paths() {
    return paths;
}

const CrcPath &best_crc_path(const CpuFeatures &features) {
    const CrcPath *best = paths;
    for (const CrcPath &path : paths)
        if (path.runs_on(features))
            best = &path;
    return *best;
}

const CrcPath &crc_path() {
    return *path_in_use.load(std::memory_order_relaxed);
}

void force_crc_path(const CrcPath &path) {
    path_in_use.store(&path, std::memory_order_relaxed);
}

void forget_crc_path() {
    force_crc_path(not_chosen);
}

} // namespace kestu
