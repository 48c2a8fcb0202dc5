// CRCs put together from parts, CRC-32C on every kernel, and messages beyond 4 GiB.
#include "base/crc_kernel.hpp"
#include "base/sha1_kernel.hpp"
#include "support/on_kernel.hpp"
#include "support/test.hpp"

#include <sys/mman.h>

using namespace kestu;
using namespace kestu::test;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes random_bytes(size_t size) {
    std::mt19937 random(size);
    Bytes data(size);
    for (unsigned char &byte : data)
        byte = static_cast<unsigned char>(random());
    return data;
}

class CrcPartsOnKernel : public test::OnKernel<CrcKernel, crc_dispatch> {};
INSTANTIATE_TEST_SUITE_P(Kernels, CrcPartsOnKernel, testing::ValuesIn(crc_dispatch.all()),
                         test::name_of_kernel);

TEST_P(CrcPartsOnKernel, GiveTheCrcOfTheWhole) {
    const auto *digits = reinterpret_cast<const unsigned char *>("123456789");
    EXPECT_EQ(kestu_util_crc32c(0, digits, 9), 0xE3069283);
    EXPECT_EQ(kestu_util_crc32c(5, digits, 0), 5U);
    EXPECT_EQ(kestu_util_crc32c(5, nullptr, 9), 0U);
    const auto check = [](auto crc, auto combine, const Bytes &data, size_t cut) {
        const unsigned char *rest = data.data() + cut;
        const size_t size = data.size() - cut;
        const auto whole = crc(0, data.data(), data.size());
        EXPECT_EQ(crc(crc(0, data.data(), cut), rest, size), whole);
        EXPECT_EQ(combine(crc(0, data.data(), cut), crc(0, rest, size), size), whole);
    };
    for (const size_t size : {1, 16, 63, 64, 200, 1024, 4099}) {
        const Bytes data = random_bytes(size);
        EXPECT_EQ(GetParam().crc32c(7, data.data(), size),
                  crc_dispatch.all().front().crc32c(7, data.data(), size));
        for (const size_t cut : {size_t{0}, size / 3, size}) {
            check(kestu_util_crc32, kestu_util_crc32_combine, data, cut);
            check(kestu_util_crc32c, kestu_util_crc32c_combine, data, cut);
            check(kestu_util_crc16, kestu_util_crc16_combine, data, cut);
        }
    }
}

TEST(CrcParts, MayBeOfAnySize) {
    // Moving by 2^40 bytes at once or by half of them twice is the same.
    constexpr uint64_t half = uint64_t{1} << 39;
    const uint32_t once = kestu_util_crc32_combine(0xCBF43926, 0, 2 * half);
    EXPECT_EQ(kestu_util_crc32_combine(kestu_util_crc32_combine(0xCBF43926, 0, half), 0, half),
              once);
    EXPECT_NE(once, 0xCBF43926);
}

// Nothing is read: a kernel only counts the blocks that it is given.
TEST(Sha1, TakesMoreThan4GiBAtOnce) {
    static size_t blocks_seen = 0;
    const Sha1Kernel count_blocks = {
        "count_blocks", nullptr,
        [](uint32_t *, const unsigned char *, size_t count) { blocks_seen += count; }};
    constexpr size_t size = size_t{5} << 30;
    void *unread =
        mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(unread, MAP_FAILED);
    sha1_dispatch.force(count_blocks);
    unsigned char digest[KESTU_SHA1_BUFFER_SIZE];
    digest[KESTU_SHA1_SIZE] = 1;
    kestu_sha1_64(digest, static_cast<unsigned char *>(unread), size);
    EXPECT_EQ(blocks_seen, size / KESTU_SHA1_BLOCK_SIZE + 1);
    EXPECT_EQ(digest[KESTU_SHA1_SIZE], 0);
    kestu_sha1_t context;
    kestu_sha1_init(&context);
    kestu_sha1_update64(static_cast<unsigned char *>(unread), size, &context);
    EXPECT_EQ(uint64_t{context.count[1]} << 32 | context.count[0], 8 * uint64_t{size});
    sha1_dispatch.forget();
    munmap(unread, size);
}

} // namespace
