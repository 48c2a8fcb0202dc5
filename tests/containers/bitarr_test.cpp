// The bit array: values, the zeros around them, and what a refused allocation leaves.
#include "kestu_bitarr.h"

#include "containers/bitarr_count.hpp"
#include "support/alloc_failure.hpp"
#include "support/chain.hpp"

#include <algorithm>
#include <random>
#include <string>

using namespace kestu::test;
using kestu::count_dispatch;
using kestu::CountPath;
using kestu::CpuFeatures;

namespace {

// The bits as text, bit 0 first. A test fails when the array contradicts itself or is not 0 where
// it has to be.
std::string checked_text(const kestu_bitarr_t *ba) {
    std::string text;
    for (size_t k = 0; k < ba->nbits; ++k)
        text += ba->words[k / 64] >> k % 64 & 1 ? '1' : '0';
    EXPECT_EQ(ba->nwords, (ba->nbits + 63) / 64);
    EXPECT_GE(ba->capacity, std::max<size_t>(8, ba->nwords));
    for (size_t k = ba->nbits; k < ba->capacity * 64; ++k)
        if (ba->words[k / 64] >> k % 64 & 1) {
            ADD_FAILURE() << "bit " << k << " is set";
            break;
        }
    return text;
}

// Arrays that are released at the end of a test.
struct Arrays {
    kestu_bitarr_t *of[3] = {};

    Arrays() = default;
    Arrays(const Arrays &) = delete;
    Arrays &operator=(const Arrays &) = delete;
    ~Arrays() {
        for (kestu_bitarr_t *array : of)
            kestu_bitarr_free(array);
    }
};

void set_bit(kestu_bitarr_t *ba, size_t k) {
    ba->words[k / 64] |= uint64_t{1} << k % 64;
}

std::vector<uint64_t> random_words(size_t n, unsigned seed) {
    std::mt19937_64 random(seed);
    std::vector<uint64_t> words(n);
    std::generate(words.begin(), words.end(), std::ref(random));
    return words;
}

} // namespace

TEST(BitArray, HeaderExample) {
    const size_t k = 700;
    const auto example = [&]() -> kestu_error_t * {
        kestu_error_t *err = nullptr;
        kestu_bitarr_t *seen;
        if ((err = kestu_bitarr_create(&seen, 1000)))
            return err;
        seen->words[k / 64] |= uint64_t{1} << (k % 64);
        printf("%zu of %zu\n", kestu_bitarr_num_bits_set(seen), seen->nbits);
        kestu_bitarr_free(seen);
        return nullptr;
    };
    testing::internal::CaptureStdout();
    EXPECT_OK(example());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "1 of 1000\n");
}

TEST(BitArray, CapacityIsAPowerOfTwoAboveTheWordsInUse) {
    const struct {
        size_t nbits, nwords, capacity;
    } cases[] = {{0, 0, 8},     {1, 1, 8},     {64, 1, 8},       {65, 2, 8},
                 {448, 7, 8},   {449, 8, 16},  {512, 8, 16},     {513, 9, 16},
                 {960, 15, 16}, {961, 16, 32}, {10000, 157, 256}};
    for (const auto &c : cases) {
        Arrays arrays;
        auto &[made, grown, filled] = arrays.of;
        ASSERT_OK(kestu_bitarr_create(&made, c.nbits));
        ASSERT_OK(kestu_bitarr_create(&grown, 0));
        ASSERT_OK(kestu_bitarr_resize(&grown, c.nbits));
        EXPECT_EQ(made->nwords, c.nwords);
        EXPECT_EQ(made->capacity, c.capacity);
        // An array grows only when the words do not fit.
        EXPECT_EQ(grown->capacity, c.nwords <= 8 ? 8 : c.capacity);
        EXPECT_EQ(checked_text(made), std::string(c.nbits, '0'));
        EXPECT_EQ(checked_text(grown), std::string(c.nbits, '0'));
        EXPECT_OK(kestu_bitarr_resize(&filled, c.nbits));
        kestu_bitarr_set_all(filled);
        EXPECT_EQ(checked_text(filled), std::string(c.nbits, '1'));
        EXPECT_EQ(kestu_bitarr_num_bits_set(filled), c.nbits);
        EXPECT_EQ(kestu_bitarr_num_bits_cleared(filled), 0u);
    }
}

TEST(BitArray, RandomStepsAgreeWithText) {
    std::mt19937 random(99);
    Arrays arrays;
    std::string model[3];
    for (int step = 0; step < 4000; ++step) {
        const size_t i = random() % 3, j = random() % 3, o = random() % 3;
        kestu_bitarr_t *&ba = arrays.of[i];
        std::string &bits = model[i];
        switch (random() % 8) {
        case 0:
        case 1: {
            const size_t n = random() % 4 ? random() % 200 : random() % 3000;
            ASSERT_OK(kestu_bitarr_resize(&ba, n));
            bits.resize(n, '0');
            break;
        }
        case 2:
            kestu_bitarr_set_all(ba);
            bits.assign(bits.size(), '1');
            break;
        case 3:
            kestu_bitarr_clear_all(ba);
            bits.assign(bits.size(), '0');
            break;
        case 4:
            kestu_bitarr_toggle_all(ba);
            for (char &bit : bits)
                bit = bit == '0' ? '1' : '0';
            break;
        case 5:
            for (size_t n = bits.size() / 3; n > 0; --n) {
                const size_t k = random() % bits.size();
                set_bit(ba, k);
                bits[k] = '1';
            }
            break;
        case 6: {
            if (i == j)
                break;
            kestu_bitarr_free(arrays.of[j]);
            ASSERT_OK(kestu_bitarr_clone(ba, &arrays.of[j]));
            ASSERT_EQ(arrays.of[j] == nullptr, bits.empty());
            model[j] = bits;
            break;
        }
        default: { // the result may be one of the operands
            const bool is_or = random() % 2;
            auto combine = is_or ? kestu_bitarr_or : kestu_bitarr_and;
            ASSERT_OK(combine(ba, arrays.of[j], &arrays.of[o]));
            std::string a = bits, b = model[j];
            const size_t n = std::max(a.size(), b.size());
            a.resize(n, '0');
            b.resize(n, '0');
            for (size_t k = 0; k < n; ++k)
                a[k] = is_or ? std::max(a[k], b[k]) : std::min(a[k], b[k]);
            model[o] = a;
        }
        }
        for (size_t k = 0; k < 3; ++k) {
            const auto ones =
                static_cast<size_t>(std::count(model[k].begin(), model[k].end(), '1'));
            ASSERT_EQ(arrays.of[k] ? checked_text(arrays.of[k]) : "", model[k]) << "step " << step;
            ASSERT_EQ(kestu_bitarr_num_bits_set(arrays.of[k]), ones);
            ASSERT_EQ(kestu_bitarr_num_bits_cleared(arrays.of[k]), model[k].size() - ones);
        }
    }
}

TEST(BitArray, OperationsClearWhatCallersLeftAboveTheLastBit) {
    Arrays arrays;
    auto &[a, b, out] = arrays.of;
    for (auto operation : {kestu_bitarr_or, kestu_bitarr_and}) {
        ASSERT_OK(kestu_bitarr_resize(&a, 70));
        ASSERT_OK(kestu_bitarr_resize(&b, 70));
        a->words[1] = b->words[1] = ~uint64_t{0};
        ASSERT_OK(operation(a, b, &out));
        EXPECT_EQ(checked_text(out), std::string(64, '0') + "111111");
    }
    ASSERT_OK(kestu_bitarr_resize(&a, 0));
    a->words[0] = 1;
    ASSERT_OK(kestu_bitarr_resize(&a, 0));
    EXPECT_EQ(checked_text(a), "");
}

TEST(BitArray, TextShowsAsManyBitsAsFit) {
    Arrays arrays;
    kestu_bitarr_t *&ba = arrays.of[0];
    ASSERT_OK(kestu_bitarr_create(&ba, 67));
    for (size_t k : {0, 9, 63, 64, 66})
        set_bit(ba, k);
    const std::string whole = checked_text(ba);
    for (size_t size = 0; size <= 70; ++size) {
        std::string buffer(72, '#');
        EXPECT_EQ(kestu_bitarr_tostr(ba, buffer.data(), size, 0, 0), 67u);
        const size_t shown = std::min<size_t>(67, size ? size - 1 : 0);
        std::string expected = whole.substr(0, shown);
        if (size > 0)
            expected += '\0';
        expected.resize(72, '#');
        EXPECT_EQ(buffer, expected);
    }
    char text[12];
    kestu_bitarr_tostr(ba, text, sizeof text, '\xFF', '.');
    EXPECT_STREQ(text, "\xFF........\xFF.");
    kestu_bitarr_tostr(ba, text, sizeof text, 0, '\x80');
    EXPECT_STREQ(text, "1\x80\x80\x80\x80\x80\x80\x80\x80"
                       "1\x80");
    EXPECT_EQ(kestu_bitarr_tostr(ba, nullptr, 0, 0, 0), 67u);
}

TEST(BitArray, PrintingWritesOneCharacterABit) {
    for (size_t nbits : {0, 1, 64, 4095, 4096, 4097, 10000}) {
        Arrays arrays;
        kestu_bitarr_t *&ba = arrays.of[0];
        ASSERT_OK(kestu_bitarr_create(&ba, nbits));
        for (size_t k = 0; k < nbits; k += 3 + k / 7)
            set_bit(ba, k);
        char *text = nullptr;
        size_t size = 0;
        FILE *stream = open_memstream(&text, &size);
        kestu_bitarr_print(ba, stream);
        fclose(stream);
        EXPECT_EQ(std::string(text, size), checked_text(ba));
        free(text);
    }
}

TEST(BitArray, NullIsAnArrayOfNoBits) {
    Arrays arrays;
    kestu_bitarr_t *&ba = arrays.of[0];
    char text[4] = "abc";
    kestu_bitarr_free(nullptr);
    kestu_bitarr_set_all(nullptr);
    kestu_bitarr_clear_all(nullptr);
    kestu_bitarr_toggle_all(nullptr);
    kestu_bitarr_print(nullptr, stdout);
    EXPECT_EQ(kestu_bitarr_tostr(nullptr, text, sizeof text, 0, 0), 0u);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(kestu_bitarr_num_bits_set(nullptr), 0u);
    EXPECT_EQ(kestu_bitarr_num_bits_cleared(nullptr), 0u);
    ba = reinterpret_cast<kestu_bitarr_t *>(text);
    EXPECT_OK(kestu_bitarr_clone(nullptr, &ba));
    EXPECT_EQ(ba, nullptr);
    EXPECT_OK(kestu_bitarr_and(nullptr, nullptr, &ba));
    EXPECT_EQ(checked_text(ba), "");
    EXPECT_OK(kestu_bitarr_clone(ba, &arrays.of[1]));
    EXPECT_EQ(arrays.of[1], nullptr);
}

// Seven allocations: two in each of three new arrays, and one to grow.
TEST(BitArray, RefusedAllocationsLeaveArraysAsTheyWere) {
    const long before = live_blocks();
    for (size_t n = 1; n <= 8; ++n) {
        Arrays arrays;
        auto &[made, resized, copy] = arrays.of;
        kestu_error_t *err = nullptr;
        {
            AllocFailure failure(n);
            err = kestu_bitarr_create(&made, 100);
            kestu_bitarr_set_all(made);
            if (!err)
                err = kestu_bitarr_resize(&resized, 100);
            if (!err)
                err = kestu_bitarr_clone(made, &copy);
            if (!err)
                err = kestu_bitarr_resize(&made, 1000);
        }
        EXPECT_EQ(err ? err->code : 0, n <= 6 ? 120012 : n == 7 ? 120013 : 0);
        EXPECT_EQ(made != nullptr, n > 2);
        EXPECT_EQ(resized != nullptr, n > 4);
        EXPECT_EQ(copy != nullptr, n > 6);
        if (n > 2) {
            EXPECT_EQ(checked_text(made).substr(0, 100), std::string(100, '1'));
            EXPECT_EQ(made->nbits, n > 7 ? 1000u : 100u);
        }
        kestu_error_clear(err);
    }
    EXPECT_EQ(live_blocks(), before);
}

TEST(BitArray, SizesThatNoMachineHasFail) {
    Arrays arrays;
    auto &[ba, other, out] = arrays.of;
    const Element create(120012, "Cannot create bit array."),
        resize(120012, "Cannot resize bit array.");
    const Element refused(120012, "Failed to allocate 4611686018427387904 bytes of memory.");
    EXPECT_CHAIN(kestu_bitarr_create(&ba, SIZE_MAX), create, refused);
    EXPECT_EQ(ba, nullptr);
    EXPECT_CHAIN(kestu_bitarr_resize(&ba, SIZE_MAX), resize, create, refused);
    ASSERT_OK(kestu_bitarr_create(&ba, 3));
    kestu_bitarr_set_all(ba);
    EXPECT_CHAIN(kestu_bitarr_resize(&ba, SIZE_MAX), Element(120013, "Cannot resize bit array."),
                 Element(120013, "Failed to reallocate memory for 4611686018427387904 bytes."));
    EXPECT_EQ(checked_text(ba), "111");
    const kestu_bitarr_t vast = {nullptr, SIZE_MAX, 0, 0};
    EXPECT_CHAIN(kestu_bitarr_or(ba, &vast, &out), resize, create, refused);
    EXPECT_EQ(out, nullptr);
}

class CountOnPath : public testing::TestWithParam<CountPath> {
  protected:
    void SetUp() override {
        const bool CpuFeatures::*needed = GetParam().needs;
        if (needed && !(kestu::cpu_features().*needed))
            GTEST_SKIP() << "this processor has no path " << GetParam().name;
    }
};

INSTANTIATE_TEST_SUITE_P(Paths, CountOnPath, testing::ValuesIn(count_dispatch.all()),
                         [](const auto &path) { return path.param.name; });

// Each run of words ends where its block does, so that a sanitizer sees what is read beyond it.
TEST_P(CountOnPath, AgreesWithCountingBitByBit) {
    const auto words = random_words(400, 5);
    size_t expected = 0;
    for (size_t n = 0; n <= words.size(); ++n) {
        const std::vector<uint64_t> run(words.begin(), words.begin() + static_cast<ptrdiff_t>(n));
        ASSERT_EQ(GetParam().count(run.data(), n), expected) << n << " words";
        for (size_t k = 0; n < words.size() && k < 64; ++k)
            expected += words[n] >> k & 1;
    }
    const std::vector<uint64_t> full(1000, ~uint64_t{0});
    for (size_t from : {0, 1, 2, 3})
        EXPECT_EQ(GetParam().count(full.data() + from, full.size() - from), 64 * (1000 - from));
}

TEST(CountPaths, TheWidestThatTheFeaturesAllowIsTaken) {
    const auto best = [](CpuFeatures features) { return count_dispatch.best(features).name; };
    EXPECT_STREQ(best({}), "registers_128");
    EXPECT_STREQ(best({.avx2 = true}), "registers_256");
    EXPECT_STREQ(best({.avx2 = true, .count512 = true}), "registers_512");
}

TEST(CountPaths, AFeatureCountsOnlyWithItsRegistersSaved) {
    constexpr uint32_t avx = 1U << 28, avx2 = 1U << 5, avx512 = avx2 | 1U << 16,
                       counting = 1U << 14;
    const auto widest = [](const kestu::CpuAnswers &answers) {
        const CpuFeatures features = features_of(answers);
        return features.count512 ? 512 : features.avx2 ? 256 : 128;
    };
    EXPECT_EQ(widest({avx, avx512, counting, 0xE7}), 512);
    EXPECT_EQ(widest({avx, avx512, 0, 0xE7}), 256);
    EXPECT_EQ(widest({avx, avx512, counting, 0x07}), 256);
    EXPECT_EQ(widest({avx, avx2, counting, 0xE7}), 256);
    EXPECT_EQ(widest({avx, avx512, counting, 0x03}), 128);
    EXPECT_EQ(widest({0, avx512, counting, 0xE7}), 128);
    EXPECT_EQ(widest({avx, 0, counting, 0xE7}), 128);
}
