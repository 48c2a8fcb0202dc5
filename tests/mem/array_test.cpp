// Arrays of any number of dimensions.
#include "support/test.hpp"

using namespace kestu::test;

extern "C" {
void __lsan_disable() __attribute__((weak));
void __lsan_enable() __attribute__((weak));
}

namespace {

using Array = kestu_mem_array_t *;

Array int_array_2x3x4() {
    Array a = nullptr;
    EXPECT_OK(kestu_mem_array_alloc(&a, sizeof(int), 2, 3, 4, 0));
    return a;
}

// Blocks that are lost on purpose within its life are no leak to the sanitizer.
struct LossAllowed {
    LossAllowed() {
        if (__lsan_disable)
            __lsan_disable();
    }
    ~LossAllowed() {
        if (__lsan_enable)
            __lsan_enable();
    }
};

template <size_t... Is>
kestu_error_t *alloc_of_ones(Array *a, std::index_sequence<Is...>) {
    return kestu_mem_array_alloc(a, 8, 1, (static_cast<void>(Is), 1)..., 0);
}

} // namespace

TEST(Arrays, TheHeaderTellsTheShapeAndTheBlocksAreNested) {
    const long before = live_blocks();
    Array a = int_array_2x3x4();
    EXPECT_EQ(a->ndims, 3u);
    EXPECT_THAT(std::vector<uint32_t>(a->dims, a->dims + 3), testing::ElementsAre(2, 3, 4));
    EXPECT_EQ(a->elsize, sizeof(int));
    EXPECT_EQ(live_blocks(), before + 2 + 1 + 2 + 6);
    int ***values = static_cast<int ***>(a->data);
    for (uint32_t i = 0; i < 2; ++i)
        for (uint32_t j = 0; j < 3; ++j)
            for (uint32_t k = 0; k < 4; ++k) {
                EXPECT_EQ(values[i][j][k], 0);
                const uint32_t at[] = {i, j, k};
                const int value = static_cast<int>(100 * i + 10 * j + k);
                EXPECT_OK(kestu_mem_array_copytoel(a, &value, sizeof value, 3, at));
            }
    const uint32_t at[] = {1, 2, 3};
    int value = 0;
    EXPECT_OK(kestu_mem_array_copyfromel(a, &value, sizeof value, 3, at));
    EXPECT_EQ(value, 123);
    EXPECT_EQ(values[0][1][2], 12);
    EXPECT_EQ(values[1][0][3], 103);
    kestu_mem_array_free(a);
    kestu_mem_array_free(nullptr);
    EXPECT_EQ(live_blocks(), before);
}

TEST(Arrays, SettingAllReachesEveryElement) {
    Array a = int_array_2x3x4();
    ASSERT_OK(kestu_mem_array_allset(a, 255, sizeof(int)));
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(static_cast<int ***>(a->data)[i / 12][i / 4 % 3][i % 4], -1);
    EXPECT_CHAIN(kestu_mem_array_allset(a, 0, 8), 0, "Cannot set all elements of an array",
                 "Expected element size 4, found 8");
    EXPECT_EQ(static_cast<int ***>(a->data)[0][0][0], -1);
    kestu_mem_array_free(a);
}

TEST(Arrays, AccessThatDoesNotFitIsRefusedAndCopiesNothing) {
    Array a = int_array_2x3x4();
    const struct {
        size_t elsize;
        int ndims;
        uint32_t at[3];
        const char *message;
    } cases[] = {
        {8, 2, {9, 9, 9}, "Expected element size 4, found 8"},
        {4, 4, {9, 9, 9}, "Expected dimensions 3, found 4"},
        {4, -1, {0, 0, 0}, "Expected dimensions 3, found -1"},
        {4, 3, {2, 3, 4}, "Number of values in dimension 1 is 2, requested position is 2"},
        {4, 3, {1, 3, 4}, "Number of values in dimension 2 is 3, requested position is 3"},
        {4, 3, {1, 2, 4}, "Number of values in dimension 3 is 4, requested position is 4"},
        {4,
         3,
         {0, 0, 1u << 31},
         "Number of values in dimension 3 is 4, requested position is "
         "-2147483648"},
    };
    for (const auto &c : cases) {
        int value[2] = {77, 77};
        EXPECT_CHAIN(kestu_mem_array_copytoel(a, value, c.elsize, c.ndims, c.at), 0,
                     "Cannot copy data to element.", c.message);
        EXPECT_CHAIN(kestu_mem_array_copyfromel(a, value, c.elsize, c.ndims, c.at), 0,
                     "Cannot copy data from element.", c.message);
        EXPECT_EQ(value[0], 77);
    }
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(static_cast<int ***>(a->data)[i / 12][i / 4 % 3][i % 4], 0);
    kestu_mem_array_free(a);
}

TEST(Arrays, SizesOfNothingAreRefusedAndNullTheHeader) {
    Array a = int_array_2x3x4();
    const Array kept = a;
    EXPECT_CHAIN(kestu_mem_array_alloc(&a, 0, 0, 0), 120011, "Cannot allocate array.",
                 "Cannot allocate array for elements of size 0 bytes.");
    EXPECT_EQ(a, nullptr);
    a = kept;
    EXPECT_CHAIN(kestu_mem_array_alloc(&a, 4, 0, 3, 0), 120010, "Cannot allocate array.",
                 "Cannot allocate memory for 0 elements in first dimension.");
    EXPECT_EQ(a, nullptr);
    kestu_mem_array_free(kept);
}

// A block that is too large is named by its own size; blocks that are too many fail before memory
// is spent on them.
TEST(Arrays, SizesBeyondAllMemoryAreRefused) {
    const long before = live_blocks();
    const struct {
        size_t elsize;
        int first, second, third;
        const char *bytes;
    } cases[] = {
        {SIZE_MAX / 4, 3, 0, 0, "Failed to allocate 13835058055282163709 bytes"},
        {SIZE_MAX / 2 + 1, 2, 4, 0, "Failed to allocate 0 bytes"},
        {1u << 20, INT_MAX, INT_MAX, 0, "Failed to allocate 18446744073709551615 bytes"},
        {8, INT_MAX, INT_MAX, INT_MAX, "Failed to allocate 18446744073709551615 bytes"},
        {8, -1, -1, 0, "Failed to allocate 18446744073709551615 bytes"},
    };
    for (const auto &c : cases) {
        Array a = nullptr;
        EXPECT_CHAIN(kestu_mem_array_alloc(&a, c.elsize, c.first, c.second, c.third, 0), 120012,
                     "Cannot allocate array.", HasSubstr(c.bytes));
        EXPECT_EQ(a, nullptr);
    }
    EXPECT_EQ(live_blocks(), before);
}

TEST(Arrays, ManyDimensionsNeedNoStack) {
    const std::vector<uint32_t> at(3001, 0);
    const long before = live_blocks();
    Array a = nullptr;
    ASSERT_OK(alloc_of_ones(&a, std::make_index_sequence<3000>()));
    EXPECT_EQ(a->ndims, 3001u);
    EXPECT_OK(kestu_mem_array_allset(a, 1, 8));
    uint64_t value = 0;
    EXPECT_OK(kestu_mem_array_copyfromel(a, &value, 8, 3001, at.data()));
    EXPECT_EQ(value, 0x0101010101010101u);
    kestu_mem_array_free(a);
    EXPECT_EQ(live_blocks(), before);
}

// Header, dims and its two growths come first, then the storage: the outer block, the two below it,
// each followed by the two blocks of elements that hang off it. What is complete and not above the
// block that fails is lost.
TEST(Arrays, AFailureReleasesTheHeaderAndTheWayToTheBlockThatFailed) {
    constexpr long lost[] = {0, 0, 0, 0, 0, 0, 0, 1, 3, 3, 4};
    LossAllowed allowed;
    const size_t failures = fail_each_allocation([&](size_t n) {
        Array a = nullptr;
        const long before = live_blocks();
        kestu_error_t *err = kestu_mem_array_alloc(&a, 16, 2, 2, 3, 0);
        const long after = live_blocks();
        if (n > std::size(lost)) {
            EXPECT_EQ(err, nullptr);
            kestu_mem_array_free(a);
            EXPECT_EQ(live_blocks(), before);
            return;
        }
        const int code = n == 3 || n == 4 ? 120013 : 120012;
        EXPECT_EQ(after - before, lost[n - 1]) << n;
        EXPECT_EQ(a, nullptr);
        EXPECT_CHAIN(err, code, "Cannot allocate array.", testing::_);
    });
    EXPECT_EQ(failures, std::size(lost));
}
