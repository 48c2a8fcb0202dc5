// The bit array: values, the zeros around them, and what a refused allocation leaves.
#include "containers/bitarr_count.hpp"
#include "fuzz/bitarr_model.hpp"
#include "support/on_kernel.hpp"
#include "support/test.hpp"

using namespace kestu::fuzz;
using namespace kestu::test;
using kestu::count_dispatch;
using kestu::CountKernel;

TEST(BitArray, CapacityIsAPowerOfTwoAboveTheWordsInUse) {
    const struct {
        size_t nbits, nwords, capacity;
    } cases[] = {{0, 0, 8},    {1, 1, 8},    {64, 1, 8},   {65, 2, 8},    {448, 7, 8},
                 {449, 8, 16}, {512, 8, 16}, {513, 9, 16}, {960, 15, 16}, {961, 16, 32}};
    for (const auto &c : cases) {
        Arrays arrays;
        auto &[made, grown, other] = arrays.of;
        ASSERT_OK(kestu_bitarr_create(&made, c.nbits));
        ASSERT_OK(kestu_bitarr_create(&grown, 0));
        ASSERT_OK(kestu_bitarr_resize(&grown, c.nbits));
        EXPECT_EQ(made->nwords, c.nwords);
        EXPECT_EQ(made->capacity, c.capacity);
        // An array grows only when the words do not fit.
        EXPECT_EQ(grown->capacity, c.nwords <= 8 ? 8 : c.capacity);
        EXPECT_EQ(checked_text(made), std::string(c.nbits, '0'));
    }
}

TEST(BitArray, RandomStepsAgreeWithText) {
    on_random_inputs(10, 8000, [](Input &input) { BitModel(input).run(); });
}

// Results too large for caches are stored in another way.
TEST(BitArray, LargeArraysAreCombinedWordByWord) {
    kestu_bitarr_t *a = nullptr, *b = nullptr, *out = nullptr;
    ASSERT_OK(kestu_bitarr_create(&a, (size_t{1} << 26) + 64 * 3));
    ASSERT_OK(kestu_bitarr_create(&b, (size_t{1} << 26) + 64 * 5));
    std::mt19937_64 random(1);
    for (const kestu_bitarr_t *array : {a, b})
        std::generate_n(array->words, array->nwords, std::ref(random));
    ASSERT_OK(kestu_bitarr_and(a, b, &out));
    size_t wrong = 0;
    for (size_t i = 0; i < b->nwords; ++i)
        wrong += out->words[i] != (i < a->nwords ? a->words[i] & b->words[i] : 0);
    ASSERT_OK(kestu_bitarr_or(b, a, &out));
    for (size_t i = 0; i < b->nwords; ++i)
        wrong += out->words[i] != (i < a->nwords ? a->words[i] | b->words[i] : b->words[i]);
    ASSERT_OK(kestu_bitarr_and_not(b, a, &out));
    for (size_t i = 0; i < b->nwords; ++i)
        wrong += out->words[i] != (i < a->nwords ? b->words[i] & ~a->words[i] : b->words[i]);
    ASSERT_OK(kestu_bitarr_and_not(a, b, &a));
    wrong += kestu_bitarr_intersects(a, b);
    EXPECT_EQ(wrong, 0u);
    for (kestu_bitarr_t *array : {a, b, out})
        kestu_bitarr_free(array);
}

TEST(BitArray, OperationsClearWhatCallersLeftAboveTheLastBit) {
    Arrays arrays;
    auto &[a, b, out] = arrays.of;
    ASSERT_OK(kestu_bitarr_create(&a, 70));
    a->words[1] = ~uint64_t{0};
    ASSERT_OK(kestu_bitarr_and(a, a, &out));
    EXPECT_EQ(checked_text(out), std::string(64, '0') + "111111");
    ASSERT_OK(kestu_bitarr_create(&b, 0));
    b->words[0] = 1;
    ASSERT_OK(kestu_bitarr_resize(&b, 0));
    EXPECT_EQ(checked_text(b), "");
}

TEST(BitArray, TextShowsAsManyBitsAsFit) {
    Arrays arrays;
    kestu_bitarr_t *&ba = arrays.of[0];
    ASSERT_OK(kestu_bitarr_create(&ba, 67));
    for (size_t k : {0, 9, 63, 64, 66})
        set_bit(ba, k);
    for (size_t size = 0; size <= 70; ++size) {
        std::string buffer(72, '#'), expected = checked_text(ba);
        EXPECT_EQ(kestu_bitarr_tostr(ba, buffer.data(), size, 0, 0), 67u);
        expected.resize(std::min<size_t>(67, size ? size - 1 : 0));
        expected.append(size ? 1 : 0, '\0').resize(72, '#');
        EXPECT_EQ(buffer, expected);
    }
    char text[12];
    kestu_bitarr_tostr(ba, text, sizeof text, '\xFF', '.');
    EXPECT_STREQ(text, "\xFF........\xFF.");
    kestu_bitarr_tostr(ba, text, 4, 0, '\x80');
    EXPECT_STREQ(text, "1\x80\x80");
}

TEST(BitArray, PrintingWritesOneCharacterABit) {
    for (size_t nbits : {0, 1, 64, 4095, 4096, 4097, 10000}) {
        Arrays arrays;
        kestu_bitarr_t *&ba = arrays.of[0];
        ASSERT_OK(kestu_bitarr_create(&ba, nbits));
        for (size_t k = 0; k < nbits; k += 3 + k / 7)
            set_bit(ba, k);
        testing::internal::CaptureStdout();
        kestu_bitarr_print(ba, stdout);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), checked_text(ba));
    }
}

TEST(BitArray, NullIsAnArrayOfNoBits) {
    Arrays arrays;
    auto &[ba, copy, other] = arrays.of;
    char text[4] = "abc";
    for (auto change :
         {kestu_bitarr_free, kestu_bitarr_set_all, kestu_bitarr_clear_all, kestu_bitarr_toggle_all})
        change(nullptr);
    kestu_bitarr_print(nullptr, stdout);
    EXPECT_EQ(kestu_bitarr_tostr(nullptr, text, sizeof text, 0, 0), 0u);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(kestu_bitarr_num_bits_set(nullptr), 0u);
    EXPECT_EQ(kestu_bitarr_num_bits_cleared(nullptr), 0u);
    EXPECT_OK(kestu_bitarr_and(nullptr, nullptr, &ba));
    EXPECT_EQ(checked_text(ba), "");
    for (const kestu_bitarr_t *source : {static_cast<kestu_bitarr_t *>(nullptr), ba}) {
        copy = ba;
        EXPECT_OK(kestu_bitarr_clone(source, &copy));
        EXPECT_EQ(copy, nullptr);
    }
}

// Seven allocations: two in each of three new arrays, and one to grow.
TEST(BitArray, RefusedAllocationsLeaveArraysAsTheyWere) {
    const long before = live_blocks();
    const size_t allocations = fail_each_allocation([](size_t n) {
        kestu_bitarr_t none = {};
        kestu_bitarr_t *made = &none, *resized = nullptr, *copy = &none;
        kestu_error_t *err = kestu_bitarr_create(&made, 100);
        kestu_bitarr_set_all(made);
        if (!err && !(err = kestu_bitarr_resize(&resized, 100)) &&
            !(err = kestu_bitarr_clone(made, &copy)))
            err = kestu_bitarr_resize(&made, 1000);
        EXPECT_EQ(err ? err->code : 0, n <= 6 ? 120012 : n == 7 ? 120013 : 0);
        EXPECT_EQ(made != nullptr, n > 2);
        EXPECT_EQ(resized != nullptr, n > 4);
        EXPECT_EQ(copy != nullptr, n <= 4 || n > 6) << "not reached, or refused";
        EXPECT_TRUE(!made || (kestu_bitarr_num_bits_set(made) == 100 &&
                              made->nbits == (n > 7 ? 1000 : 100)));
        kestu_error_clear(err);
        for (kestu_bitarr_t *array : {made, resized, copy == &none ? nullptr : copy})
            kestu_bitarr_free(array);
    });
    EXPECT_EQ(allocations, 7u);
    EXPECT_EQ(live_blocks(), before);
}

TEST(BitArray, SizesThatNoMachineHasFail) {
    Arrays arrays;
    auto &[ba, other, out] = arrays.of;
    const char *const refused = "Failed to allocate 4611686018427387904 bytes of memory.";
    EXPECT_CHAIN(kestu_bitarr_resize(&ba, SIZE_MAX), 120012, "Cannot resize bit array.",
                 "Cannot create bit array.", refused);
    ASSERT_OK(kestu_bitarr_create(&ba, 3));
    kestu_bitarr_set_all(ba);
    EXPECT_CHAIN(kestu_bitarr_resize(&ba, SIZE_MAX), 120013, "Cannot resize bit array.",
                 "Failed to reallocate memory for 4611686018427387904 bytes.");
    EXPECT_EQ(checked_text(ba), "111");
    const kestu_bitarr_t vast = {nullptr, SIZE_MAX, 0, 0};
    EXPECT_CHAIN(kestu_bitarr_or(ba, &vast, &out), 120012, "Cannot resize bit array.",
                 "Cannot create bit array.", refused);
    EXPECT_EQ(out, nullptr);
}

class CountOnKernel : public kestu::test::OnKernel<CountKernel, count_dispatch> {};
INSTANTIATE_TEST_SUITE_P(Kernels, CountOnKernel, testing::ValuesIn(count_dispatch.all()),
                         kestu::test::name_of_kernel);

// Each run of words ends where its block does, so that a sanitizer sees what is read beyond it.
TEST_P(CountOnKernel, AgreesWithCountingBitByBit) {
    std::mt19937_64 random(5);
    std::vector<uint64_t> words;
    size_t expected = 0;
    for (size_t n = 0; n <= 400; ++n) {
        words.shrink_to_fit();
        ASSERT_EQ(GetParam().count(words.data(), n), expected) << n << " words";
        words.push_back(random());
        for (size_t k = 0; k < 64; ++k)
            expected += words[n] >> k & 1;
    }
    words.assign(1000, ~uint64_t{0});
    for (size_t from : {0, 1, 2, 3})
        EXPECT_EQ(GetParam().count(words.data() + from, 1000 - from), 64 * (1000 - from));
}
