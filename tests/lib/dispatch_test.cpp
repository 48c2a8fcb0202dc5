// Which kernel is taken for the functions that have several.
#include "base/crc_kernel.hpp"
#include "base/sha1_kernel.hpp"
#include "containers/bitarr_count.hpp"
#include "support/test.hpp"
#include "text/compare.hpp"

#include <atomic>
#include <thread>

using namespace kestu;
using namespace kestu::test;

namespace {

std::vector<std::string> best(const CpuFeatures &features) {
    return {crc_dispatch.best(features).name, sha1_dispatch.best(features).name,
            count_dispatch.best(features).name, compare_dispatch.best(features).name};
}

} // namespace

TEST(Dispatch, TheFastestKernelThatTheFeaturesAllowIsTaken) {
    EXPECT_THAT(best({}), ElementsAre("sliced", "plain", "registers_128", "registers_128"));
    EXPECT_THAT(best({.clmul = true, .sha = true, .avx2 = true}),
                ElementsAre("folded_128", "instructions", "registers_256", "registers_256"));
    EXPECT_EQ(best({.clmul = true, .clmul256 = true})[0], "folded_256");
    EXPECT_THAT(best({true, true, true, true, true, true, true}),
                ElementsAre("folded_512", "instructions", "registers_512", "registers_512"));
}

// Each answer without one of its bits, and the features that are left: clmul in 128, 256 and 512
// bits, sha, avx2, bytes512 and count512.
TEST(Dispatch, AFeatureCountsOnlyWithItsRegistersSaved) {
    constexpr CpuAnswers all = {1U << 1 | 1U << 9 | 1U << 19 | 1U << 28,
                                1U << 5 | 1U << 16 | 1U << 29 | 1U << 30, 1U << 10 | 1U << 14,
                                0xE7};
    const struct {
        CpuAnswers without;
        const char *left;
    } cases[] = {{{}, "1111111"},
                 {{1U << 1}, "0001111"},
                 {{1U << 9}, "0000111"},
                 {{1U << 19}, "0000111"},
                 {{1U << 28}, "1001000"},
                 {{0, 1U << 5}, "1001000"},
                 {{0, 1U << 16}, "1101100"},
                 {{0, 1U << 29}, "1110111"},
                 {{0, 0, 1U << 10}, "1001111"},
                 {{0, 1U << 30}, "1111101"},
                 {{0, 0, 1U << 14}, "1111110"},
                 {{0, 0, 0, 1 << 1}, "1001000"},
                 {{0, 0, 0, 1 << 2}, "1001000"},
                 {{0, 0, 0, 1 << 5}, "1101100"},
                 {{0, 0, 0, 1 << 6}, "1101100"},
                 {{0, 0, 0, 1 << 7}, "1101100"}};
    for (const auto &[without, left] : cases) {
        const CpuFeatures features =
            features_of({all.leaf1_ecx & ~without.leaf1_ecx, all.leaf7_ebx & ~without.leaf7_ebx,
                         all.leaf7_ecx & ~without.leaf7_ecx, all.xcr0 & ~without.xcr0});
        std::string text;
        for (const bool feature :
             {features.clmul, features.clmul256, features.clmul512, features.sha, features.avx2,
              features.bytes512, features.count512})
            text += feature ? '1' : '0';
        EXPECT_EQ(text, left);
    }
}

TEST(Dispatch, ThreadsMayMeetAtTheFirstCall) {
    constexpr unsigned char text[] = "123456789";
    crc_dispatch.forget();
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] { right += kestu_util_crc32(0, text, 9) == 0xCBF43926; });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(right, 8);
    EXPECT_EQ(&crc_dispatch.current(), &crc_dispatch.best(cpu_features()));
}
