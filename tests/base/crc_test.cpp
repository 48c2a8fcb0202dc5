// The CRCs: what callers rely on, and that every kernel gives the results of the plain loop.
#include "base/crc_kernel.hpp"

#include "kestu_sum.h"
#include "support/on_kernel.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

using namespace kestu;

namespace {

using Bytes = std::vector<unsigned char>;

const unsigned char *bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char *>(text.data());
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

} // namespace

TEST(Crc, PublishedValues) {
    const std::string_view digits = "123456789";
    const std::string_view fox = "The quick brown fox jumps over the lazy dog";
    EXPECT_EQ(kestu_util_crc32(0, bytes(digits), digits.size()), 0xCBF43926);
    EXPECT_EQ(kestu_util_crc32(0, bytes(fox), fox.size()), 0x414FA339);
    EXPECT_EQ(kestu_util_crc32(0, Bytes(32, 0x00).data(), 32), 0x190A55AD);
    EXPECT_EQ(kestu_util_crc32(0, Bytes(32, 0xFF).data(), 32), 0xFF6CAB0B);
    EXPECT_EQ(kestu_util_crc16(0, bytes(digits), digits.size()), 0xBB3D);
    EXPECT_EQ(kestu_util_crc16(0xFFFF, bytes(digits), digits.size()), 0x4B37); // "MODBUS"
}

TEST(Crc, NoBytesKeepTheCrcAndNoBufferGives0) {
    EXPECT_EQ(kestu_util_crc32(0x12345678, bytes(""), 0), 0x12345678);
    EXPECT_EQ(kestu_util_crc16(0x1234, bytes(""), 0), 0x1234);
    for (const size_t size : {size_t{0}, size_t{5}}) {
        EXPECT_EQ(kestu_util_crc32(0x12345678, nullptr, size), 0);
        EXPECT_EQ(kestu_util_crc16(0x1234, nullptr, size), 0);
    }
}

TEST(Crc, ACrcCanBeContinued) {
    const Bytes data = random_bytes(300);
    const uint32_t whole32 = kestu_util_crc32(0, data.data(), data.size());
    const uint16_t whole16 = kestu_util_crc16(0, data.data(), data.size());
    for (size_t cut = 0; cut <= data.size(); ++cut) {
        const unsigned char *rest = data.data() + cut;
        const size_t left = data.size() - cut;
        EXPECT_EQ(kestu_util_crc32(kestu_util_crc32(0, data.data(), cut), rest, left), whole32);
        EXPECT_EQ(kestu_util_crc16(kestu_util_crc16(0, data.data(), cut), rest, left), whole16);
    }
}

class CrcOnKernel : public kestu::test::OnKernel<CrcKernel, crc_dispatch> {};
INSTANTIATE_TEST_SUITE_P(Kernels, CrcOnKernel, testing::ValuesIn(crc_dispatch.all()),
                         kestu::test::name_of_kernel);

TEST_P(CrcOnKernel, AgreesWithDivisionBitByBit) {
    for (const size_t size : {1, 15, 16, 17, 63, 64, 200, 1024, 4099}) {
        const Bytes data = random_bytes(size);
        EXPECT_EQ(kestu_util_crc32(0xFEDCBA98, data.data(), size),
                  ~divide<uint32_t>(~0xFEDCBA98, data, 0xEDB88320));
        EXPECT_EQ(kestu_util_crc16(0xFEDC, data.data(), size),
                  divide<uint16_t>(0xFEDC, data, 0xA001));
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

TEST(CrcKernels, TheFastestThatTheFeaturesAllowIsTaken) {
    const auto best = [](CpuFeatures features) { return crc_dispatch.best(features).name; };
    EXPECT_STREQ(best({}), "sliced");
    EXPECT_STREQ(best({.sha = true}), "sliced");
    EXPECT_STREQ(best({.clmul = true}), "folded_128");
    EXPECT_STREQ(best({.clmul = true, .clmul256 = true}), "folded_256");
    EXPECT_STREQ(best({.clmul = true, .clmul256 = true, .clmul512 = true}), "folded_512");
}

TEST(CrcKernels, AFeatureCountsOnlyWithItsRegistersSaved) {
    constexpr uint32_t leaf1 = 1U << 1 | 1U << 9 | 1U << 19 | 1U << 28;
    constexpr uint32_t leaf7_ebx = 1U << 5 | 1U << 16 | 1U << 29;
    constexpr uint32_t leaf7_ecx = 1U << 10;
    const auto widest = [](const CpuAnswers &answers) {
        const CpuFeatures features = features_of(answers);
        return features.clmul512 ? 512 : features.clmul256 ? 256 : features.clmul ? 128 : 0;
    };
    EXPECT_EQ(widest({leaf1, leaf7_ebx, leaf7_ecx, 0xE7}), 512);
    EXPECT_EQ(widest({leaf1, leaf7_ebx, leaf7_ecx, 0x67}), 256); // not the upper 16 registers
    EXPECT_EQ(widest({leaf1, leaf7_ebx, leaf7_ecx, 0x07}), 256);
    EXPECT_EQ(widest({leaf1, leaf7_ebx, leaf7_ecx, 0x03}), 128);
    EXPECT_EQ(widest({leaf1, leaf7_ebx, leaf7_ecx, 0}), 128);
    EXPECT_EQ(widest({leaf1, leaf7_ebx & ~(1U << 16), leaf7_ecx, 0xE7}), 256);
    EXPECT_EQ(widest({leaf1, leaf7_ebx & ~(1U << 5), leaf7_ecx, 0xE7}), 128);
    EXPECT_EQ(widest({leaf1, leaf7_ebx, 0, 0xE7}), 128);
    EXPECT_EQ(widest({leaf1 & ~(1U << 1), leaf7_ebx, leaf7_ecx, 0xE7}), 0);
    EXPECT_EQ(widest({leaf1 & ~(1U << 19), leaf7_ebx, leaf7_ecx, 0xE7}), 0);
    EXPECT_EQ(widest({}), 0);
    EXPECT_TRUE(features_of({leaf1, leaf7_ebx, leaf7_ecx, 0}).sha);
    EXPECT_FALSE(features_of({leaf1, leaf7_ebx & ~(1U << 29), leaf7_ecx, 0xE7}).sha);
    EXPECT_FALSE(features_of({leaf1 & ~(1U << 9), leaf7_ebx, leaf7_ecx, 0xE7}).sha);
}

TEST(CrcKernels, ThreadsMayMeetAtTheFirstCall) {
    const Bytes data = random_bytes(1000);
    const uint32_t wanted = kestu_util_crc32(0, data.data(), data.size());
    crc_dispatch.forget();
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] { right += kestu_util_crc32(0, data.data(), 1000) == wanted; });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(right, 8);
    EXPECT_EQ(&crc_dispatch.current(), &crc_dispatch.best(cpu_features()));
}
