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

// All features but one, or without registers saved, and what is left: clmul in 128, 256 and 512
// bits, sha, avx2, bytes512 and count512.
TEST(Dispatch, AFeatureCountsOnlyWithItsRegistersSaved) {
    kestu_cpu_features_t all;
    std::fill(std::begin(all.words), std::end(all.words), ~0U);
    all.saved = all.permitted = 0xE7;
    const struct {
        int missing;
        uint64_t unsaved;
        const char *left;
    } cases[] = {{KESTU_CPU_FEATURE_NONE, 0, "1111111"},
                 {KESTU_CPU_FEATURE_PCLMULQDQ, 0, "0001111"},
                 {KESTU_CPU_FEATURE_SSSE3, 0, "0000111"},
                 {KESTU_CPU_FEATURE_SSE4_1, 0, "0000111"},
                 {KESTU_CPU_FEATURE_OSXSAVE, 0, "1001000"},
                 {KESTU_CPU_FEATURE_AVX, 0, "1001000"},
                 {KESTU_CPU_FEATURE_AVX2, 0, "1001000"},
                 {KESTU_CPU_FEATURE_AVX512F, 0, "1101100"},
                 {KESTU_CPU_FEATURE_SHA_NI, 0, "1110111"},
                 {KESTU_CPU_FEATURE_VPCLMULQDQ, 0, "1001111"},
                 {KESTU_CPU_FEATURE_AVX512BW, 0, "1111101"},
                 {KESTU_CPU_FEATURE_AVX512_VPOPCNTDQ, 0, "1111110"},
                 {KESTU_CPU_FEATURE_NONE, 1 << 1, "1001000"},
                 {KESTU_CPU_FEATURE_NONE, 1 << 2, "1001000"},
                 {KESTU_CPU_FEATURE_NONE, 1 << 5, "1101100"},
                 {KESTU_CPU_FEATURE_NONE, 1 << 6, "1101100"},
                 {KESTU_CPU_FEATURE_NONE, 1 << 7, "1101100"}};
    for (const auto &[missing, unsaved, left] : cases) {
        kestu_cpu_features_t answers = all;
        answers.saved &= ~unsaved;
        if (missing != KESTU_CPU_FEATURE_NONE)
            answers.words[missing / 32] &= ~(1U << missing % 32);
        const CpuFeatures features = features_of(answers);
        std::string text;
        for (const bool feature :
             {features.clmul, features.clmul256, features.clmul512, features.sha, features.avx2,
              features.bytes512, features.count512})
            text += feature ? '1' : '0';
        EXPECT_EQ(text, left);
    }
    all.permitted = 0;
    EXPECT_EQ(kestu_cpu_feature_state(&all, KESTU_CPU_FEATURE_AVX512BW), KESTU_CPU_ENABLED);
    EXPECT_EQ(kestu_cpu_feature_state(&all, KESTU_CPU_FEATURE_AMX_INT8), KESTU_CPU_PRESENT);
    all.words[KESTU_CPU_FEATURE_AVX / 32] &= ~(1U << KESTU_CPU_FEATURE_AVX % 32);
    EXPECT_EQ(kestu_cpu_feature_state(&all, KESTU_CPU_FEATURE_AVX2), KESTU_CPU_PRESENT);
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
