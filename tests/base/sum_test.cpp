// The CRCs and SHA-1: published values, messages in pieces and beyond 4 GiB, and that every kernel
// gives the same.
#include "base/crc_kernel.hpp"
#include "base/sha1_kernel.hpp"
#include "support/test.hpp"

#include "support/on_kernel.hpp"

#include <sys/mman.h>

using namespace kestu;
using namespace kestu::test;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes random_bytes(size_t size) {
    std::mt19937 random(size);
    Bytes data(size);
    for (unsigned char &byte : data)
        byte = static_cast<unsigned char>(random());
    return data;
}

// The remainder a bit at a time, from the definition alone.
template <typename Word>
Word divide(Word crc, const Bytes &data, Word polynomial) {
    for (const unsigned char byte : data)
        for (int bit = 0; bit < 8; ++bit) {
            const bool out = ((crc ^ (byte >> bit)) & 1) != 0;
            crc = static_cast<Word>((crc >> 1) ^ (out ? polynomial : 0));
        }
    return crc;
}

std::string hex(const unsigned char *digest) {
    std::string text;
    for (int i = 0; i < KESTU_SHA1_SIZE; ++i) {
        text += "0123456789abcdef"[digest[i] >> 4];
        text += "0123456789abcdef"[digest[i] & 15];
    }
    return text;
}

std::string sha1(const Bytes &data) {
    unsigned char digest[KESTU_SHA1_BUFFER_SIZE];
    kestu_sha1(digest, data.data(), static_cast<uint32_t>(data.size()));
    return hex(digest);
}

// The digest of `data` added in pieces of `piece` bytes.
std::string sha1_in_pieces(const Bytes &data, size_t piece) {
    kestu_sha1_t context;
    kestu_sha1_init(&context);
    for (size_t at = 0; at < data.size(); at += piece)
        kestu_sha1_update(data.data() + at,
                          static_cast<uint32_t>(std::min(piece, data.size() - at)), &context);
    unsigned char digest[KESTU_SHA1_SIZE];
    kestu_sha1_final(digest, &context);
    return hex(digest);
}

} // namespace

TEST(Crc, NoBytesKeepTheCrcAndNoBufferGives0) {
    const Bytes digits = bytes("123456789");
    EXPECT_EQ(kestu_util_crc32(0, digits.data(), 9), 0xCBF43926);
    EXPECT_EQ(kestu_util_crc16(0, digits.data(), 9), 0xBB3D);
    EXPECT_EQ(kestu_util_crc32(0x12345678, digits.data(), 0), 0x12345678);
    EXPECT_EQ(kestu_util_crc16(0x1234, digits.data(), 0), 0x1234);
    for (const size_t size : {size_t{0}, size_t{5}}) {
        EXPECT_EQ(kestu_util_crc32(0x12345678, nullptr, size), 0);
        EXPECT_EQ(kestu_util_crc16(0x1234, nullptr, size), 0);
    }
}

class CrcOnKernel : public kestu::test::OnKernel<CrcKernel, crc_dispatch> {};
INSTANTIATE_TEST_SUITE_P(Kernels, CrcOnKernel, testing::ValuesIn(crc_dispatch.all()),
                         kestu::test::name_of_kernel);

// In one piece and in two.
TEST_P(CrcOnKernel, AgreesWithDivisionBitByBit) {
    for (const size_t size : {1, 15, 16, 17, 63, 64, 200, 1024, 4099}) {
        const Bytes data = random_bytes(size);
        const uint32_t crc32 = ~divide<uint32_t>(~0xFEDCBA98, data, 0xEDB88320);
        const uint16_t crc16 = divide<uint16_t>(0xFEDC, data, 0xA001);
        for (const size_t cut : {size_t{0}, size / 3}) {
            const unsigned char *rest = data.data() + cut;
            EXPECT_EQ(
                kestu_util_crc32(kestu_util_crc32(0xFEDCBA98, data.data(), cut), rest, size - cut),
                crc32);
            EXPECT_EQ(
                kestu_util_crc16(kestu_util_crc16(0xFEDC, data.data(), cut), rest, size - cut),
                crc16);
        }
    }
}

// Each message ends where its block does, so that a sanitizer sees what is read beyond it.
TEST_P(CrcOnKernel, AgreesWithThePlainLoopForEveryLengthAndAlignment) {
    const CrcKernel &plain = crc_dispatch.all().front();
    const Bytes source = random_bytes(1000);
    for (size_t alignment = 0; alignment < 64; ++alignment)
        for (size_t size = 0; size <= source.size(); ++size) {
            Bytes block(alignment + size);
            unsigned char *data = block.data() + alignment;
            std::copy_n(source.data(), size, data);
            ASSERT_EQ(GetParam().crc32(~0U, data, size), plain.crc32(~0U, data, size));
            ASSERT_EQ(GetParam().crc16(0x8421, data, size), plain.crc16(0x8421, data, size));
        }
}

TEST_P(CrcOnKernel, PartsGiveTheCrcOfTheWhole) {
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

TEST(Crc, PartsMayBeOfAnySize) {
    // Moving by 2^40 bytes at once or by half of them twice is the same.
    constexpr uint64_t half = uint64_t{1} << 39;
    const uint32_t once = kestu_util_crc32_combine(0xCBF43926, 0, 2 * half);
    EXPECT_EQ(kestu_util_crc32_combine(kestu_util_crc32_combine(0xCBF43926, 0, half), 0, half),
              once);
    EXPECT_NE(once, 0xCBF43926);
}

class Sha1OnKernel : public kestu::test::OnKernel<Sha1Kernel, sha1_dispatch> {};
INSTANTIATE_TEST_SUITE_P(Kernels, Sha1OnKernel, testing::ValuesIn(sha1_dispatch.all()),
                         kestu::test::name_of_kernel);

// From FIPS 180-1.
TEST_P(Sha1OnKernel, GivesThePublishedDigests) {
    EXPECT_EQ(sha1({}), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(sha1(bytes("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(sha1(bytes("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
              "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(sha1(Bytes(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
    unsigned char block[KESTU_SHA1_BLOCK_SIZE] = {'a', 'b', 'c', 0x80};
    block[63] = 24;
    kestu_sha1_t context;
    kestu_sha1_init(&context);
    kestu_sha1_transform(context.state, block);
    EXPECT_THAT(context.state,
                ElementsAre(0xA9993E36, 0x4706816A, 0xBA3E2571, 0x7850C26C, 0x9CD0D89D));
}

TEST_P(Sha1OnKernel, PiecesOfAnySizeGiveTheDigestOfTheWhole) {
    for (const size_t size : {55, 56, 63, 64, 65, 119, 120, 128, 1000}) {
        const Bytes data = random_bytes(size);
        for (const size_t piece : {1, 3, 63, 64, 65, 127, 128, 200})
            EXPECT_EQ(sha1_in_pieces(data, piece), sha1(data)) << size << " in " << piece;
    }
}

// Each message ends where its block does, so that a sanitizer sees what is read beyond it.
TEST_P(Sha1OnKernel, AgreesWithThePlainRoundsForEveryLength) {
    const Bytes source = random_bytes(1000);
    for (size_t size = 0; size <= source.size(); ++size) {
        sha1_dispatch.force(sha1_dispatch.all().front());
        const std::string plain = sha1({source.begin(), source.begin() + static_cast<long>(size)});
        sha1_dispatch.force(GetParam());
        Bytes block(size % 16 + size);
        std::copy_n(source.data(), size, block.data() + size % 16);
        unsigned char digest[KESTU_SHA1_BUFFER_SIZE];
        kestu_sha1(digest, block.data() + size % 16, static_cast<uint32_t>(size));
        ASSERT_EQ(hex(digest), plain) << size;
    }
}

TEST(Sha1, WipesTheContextAndEndsTheDigestOfTheOneCallOnly) {
    unsigned char digest[KESTU_SHA1_BUFFER_SIZE + 1];
    std::memset(digest, 0xEE, sizeof digest);
    kestu_sha1(digest, nullptr, 0);
    EXPECT_THAT(Bytes(digest + 19, digest + 22), ElementsAre(0x09, 0, 0xEE));
    kestu_sha1_t context;
    kestu_sha1_init(&context);
    const Bytes secret = random_bytes(100);
    kestu_sha1_update(secret.data(), 100, &context);
    digest[20] = 0xEE;
    kestu_sha1_final(digest, &context);
    EXPECT_EQ(digest[20], 0xEE);
    const auto *left = reinterpret_cast<const unsigned char *>(&context);
    EXPECT_EQ(Bytes(left, left + sizeof context), Bytes(sizeof context));
}

// Nothing is computed here, so that half a GiB costs no time and is never read.
TEST(Sha1, TheBitCountCarriesIntoItsHighWord) {
    static unsigned char last_block[KESTU_SHA1_BLOCK_SIZE];
    const Sha1Kernel keep_block = {"keep_block", nullptr,
                                   [](uint32_t *, const unsigned char *blocks, size_t count) {
                                       if (count == 1)
                                           std::copy_n(blocks, sizeof last_block, last_block);
                                   }};
    constexpr uint32_t half_gib = 1U << 29;
    void *unread = mmap(nullptr, half_gib, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(unread, MAP_FAILED);
    sha1_dispatch.force(keep_block);
    kestu_sha1_t context;
    kestu_sha1_init(&context);
    context.count[0] = 0xFFFFFE00;
    kestu_sha1_update(Bytes(64).data(), 64, &context);
    EXPECT_THAT(context.count, ElementsAre(0, 1));
    kestu_sha1_update(static_cast<unsigned char *>(unread), half_gib, &context);
    unsigned char digest[KESTU_SHA1_SIZE];
    kestu_sha1_final(digest, &context);
    EXPECT_EQ(last_block[0], 0x80);
    EXPECT_THAT(Bytes(last_block + 56, last_block + 64), ElementsAre(0, 0, 0, 2, 0, 0, 0, 0));
    sha1_dispatch.forget();
    munmap(unread, half_gib);
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
