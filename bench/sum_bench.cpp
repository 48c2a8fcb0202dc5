// Checksums of short, middling and long buffers beside the libraries that people take for them.
// OpenSSL's own SHA-1 functions are deprecated for its generic ones, but cost less.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "base/crc_table.hpp"
#include "kestu_sum.h"

#include <benchmark/benchmark.h>
#include <isa-l/crc.h>
#include <libdeflate.h>
#include <openssl/evp.h>
#include <openssl/sha.h>
#include <zlib.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

const unsigned char *message() {
    static const std::vector<unsigned char> bytes(1 << 20, 0x5A);
    return bytes.data();
}

template <typename Checksum>
void run(benchmark::State &state, Checksum checksum, size_t size) {
    const unsigned char *data = message();
    for (auto _ : state) {
        benchmark::DoNotOptimize(data);
        benchmark::DoNotOptimize(checksum(data, size));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}

// What reading the bytes costs by itself.
uint64_t exclusive_or(const unsigned char *data, size_t size) {
    uint64_t sum = 0;
    for (size_t i = 0; i < size; i += sizeof sum) {
        uint64_t word = 0;
        std::memcpy(&word, data + i, sizeof word);
        sum ^= word;
    }
    return sum;
}

unsigned char sha1_ours(const unsigned char *data, size_t size) {
    unsigned char digest[KESTU_SHA1_SIZE + 1];
    kestu_sha1(digest, data, static_cast<uint32_t>(size));
    return digest[0];
}

unsigned char sha1_openssl(const unsigned char *data, size_t size) {
    unsigned char digest[SHA_DIGEST_LENGTH];
    SHA_CTX context;
    SHA1_Init(&context);
    SHA1_Update(&context, data, size);
    SHA1_Final(digest, &context);
    return digest[0];
}

unsigned char sha1_evp(const unsigned char *data, size_t size) {
    static EVP_MD_CTX *const context = EVP_MD_CTX_new();
    static EVP_MD *const method = EVP_MD_fetch(nullptr, "SHA1", nullptr);
    unsigned char digest[SHA_DIGEST_LENGTH];
    EVP_DigestInit_ex2(context, method, nullptr);
    EVP_DigestUpdate(context, data, size);
    EVP_DigestFinal_ex(context, digest, nullptr);
    return digest[0];
}

// One case a size, which takes the place of the '*'.
void add(const char *name, auto checksum) {
    for (const auto &[size, text] : {std::pair{64, "64 B"}, {4096, "4 KiB"}, {1 << 20, "1 MiB"}}) {
        std::string full = name;
        full.replace(full.find('*'), 1, text);
        benchmark::RegisterBenchmark(full.c_str(), run<decltype(checksum)>, checksum, size);
    }
}

} // namespace

int main(int argc, char **argv) {
    using Data = const unsigned char *;
    add("crc32 */ours", [](Data data, size_t size) { return kestu_util_crc32(0, data, size); });
    add("crc32 */libdeflate",
        [](Data data, size_t size) { return libdeflate_crc32(0, data, size); });
    add("crc32 */isa-l", [](Data data, size_t size) { return crc32_gzip_refl(0, data, size); });
    add("crc32 */zlib", [](Data data, size_t size) { return crc32_z(0, data, size); });
    add("crc32 */limit (reading)", exclusive_or);
    add("crc16 */ours", [](Data data, size_t size) { return kestu_util_crc16(0, data, size); });
    add("crc16 */isa-l (another polynomial)",
        [](Data data, size_t size) { return crc16_t10dif(0, data, size); });
    add("crc16 */sliced table",
        [](Data data, size_t size) { return kestu::crc_sliced<kestu::Crc16>(0, data, size); });
    add("sha1 */ours", sha1_ours);
    add("sha1 */OpenSSL", sha1_openssl);
    add("sha1 */OpenSSL EVP", sha1_evp);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
