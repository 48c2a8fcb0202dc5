// The checked wrappers, and vectors and matrices with bounds of the caller's own.
#include "support/test.hpp"

using namespace kestu::test;

namespace {

constexpr size_t too_much = SIZE_MAX / 2;
char anchor;

} // namespace

TEST(MemWrappers, BlocksAreAsAskedForAndReleasedByFree) {
    unsigned char *block = nullptr;
    ASSERT_OK(kestu_mem_calloc(300, 7, &block));
    for (size_t i = 0; i < 300 * 7; ++i)
        ASSERT_EQ(block[i], 0);
    free(block);
    block = nullptr;
    ASSERT_OK(kestu_mem_realloc(4, &block));
    std::memcpy(block, "abcd", 4);
    ASSERT_OK(kestu_mem_realloc(100000, &block));
    EXPECT_EQ(std::memcmp(block, "abcd", 4), 0);
    free(block);
    ASSERT_OK(kestu_mem_malloc(1, &block));
    kestu_mem_free(block);
    kestu_mem_free(nullptr);
}

TEST(MemWrappers, EmptyRequestsFailAndTouchNothing) {
    void *p = &anchor;
    EXPECT_CHAIN(kestu_mem_calloc(0, 8, &p), 120010, "Cannot allocate memory for 0 elements.");
    EXPECT_CHAIN(kestu_mem_calloc(0, 0, &p), 120010, "Cannot allocate memory for 0 elements.");
    EXPECT_CHAIN(kestu_mem_calloc(8, 0, &p), 120011,
                 "Cannot allocate memory for element of size 0 bytes.");
    EXPECT_CHAIN(kestu_mem_malloc(0, &p), 120014, "Cannot allocate memory of size 0 bytes.");
    EXPECT_CHAIN(kestu_mem_realloc(0, &p), 120014, "Cannot allocate memory for 0 bytes.");
    EXPECT_EQ(p, &anchor);
}

TEST(MemWrappers, RefusedRequestsNullThePointer) {
    void *p = &anchor;
    EXPECT_CHAIN(kestu_mem_malloc(too_much, &p), 120012,
                 "Failed to allocate 9223372036854775807 bytes of memory.");
    EXPECT_EQ(p, nullptr);
    p = &anchor;
    EXPECT_CHAIN(kestu_mem_calloc(too_much, 1, &p), 120012,
                 "Failed to allocate 9223372036854775807 bytes of memory.");
    EXPECT_EQ(p, nullptr);
    p = &anchor;
    EXPECT_CHAIN(kestu_mem_calloc(SIZE_MAX / 4 + 2, 4, &p), 120012,
                 "Failed to allocate 4 bytes of memory.");
    EXPECT_EQ(p, nullptr);
}

// The old block is lost through the pointer, but neither released nor changed.
TEST(MemWrappers, RefusedResizingLeavesTheOldBlockAllocated) {
    char *block = nullptr;
    ASSERT_OK(kestu_mem_malloc(4, &block));
    std::memcpy(block, "old", 4);
    char *kept = block;
    EXPECT_CHAIN(kestu_mem_realloc(too_much, &block), 120013,
                 "Failed to reallocate memory for 9223372036854775807 bytes.");
    EXPECT_EQ(block, nullptr);
    EXPECT_STREQ(kept, "old");
    kestu_mem_free(kept);
}

TEST(MemWrappers, CopiesReturnTheirDestination) {
    char text[] = "abcdef";
    EXPECT_EQ(kestu_mem_move(text + 1, text, 5), text + 1);
    EXPECT_STREQ(text, "aabcde");
    EXPECT_EQ(kestu_mem_copy(text, "xyz", 3), text);
    EXPECT_STREQ(text, "xyzcde");
}

TEST(MemVectors, EveryIndexBetweenTheBoundsIsValidAndZero) {
    const long before = live_blocks();
    for (const auto &[lo, hi] : {std::pair{1, 10}, {-7, -7}, {-3, 4}, {2000000000, 2000000003}}) {
        double *v = nullptr;
        ASSERT_OK(kestu_mem_vector_alloc(&v, sizeof *v, lo, hi));
        for (int i = lo; i <= hi; ++i) {
            EXPECT_EQ(v[i], 0.0);
            v[i] = i;
        }
        kestu_mem_vector_free(v, sizeof *v, lo);
    }
    kestu_mem_vector_free(nullptr, 8, 1);
    EXPECT_EQ(live_blocks(), before);
}

TEST(MemVectors, BoundsThatHoldNothingFailAndTouchNothing) {
    const Element outer_empty(120010, "Cannot allocate vector.");
    const Element empty(120010, "Cannot allocate memory for 0 elements.");
    void *v = &anchor;
    EXPECT_CHAIN(kestu_mem_vector_alloc(&v, 8, 5, 4), outer_empty, empty);
    EXPECT_CHAIN(kestu_mem_vector_alloc(&v, 8, INT_MIN, INT_MAX), outer_empty, empty);
    EXPECT_CHAIN(kestu_mem_vector_alloc(&v, 1, 5, 3), 120012, "Cannot allocate vector.",
                 "Failed to allocate 18446744073709551615 bytes of memory.");
    EXPECT_CHAIN(kestu_mem_vector_alloc(&v, 0, 1, 2), 120011, "Cannot allocate vector.",
                 "Cannot allocate memory for element of size 0 bytes.");
    EXPECT_EQ(v, &anchor);
}

TEST(MemMatrices, EveryElementBetweenTheBoundsIsValidAndZero) {
    const long before = live_blocks();
    int **m = nullptr;
    ASSERT_OK(kestu_mem_matrix_alloc(&m, sizeof **m, -2, 3, 5, 9));
    for (int r = -2; r <= 3; ++r)
        for (int c = 5; c <= 9; ++c) {
            EXPECT_EQ(m[r][c], 0);
            m[r][c] = 100 * r + c;
        }
    EXPECT_EQ(m[-2][9], -191);
    EXPECT_EQ(m[3][5], 305);
    EXPECT_EQ(live_blocks(), before + 7);
    kestu_mem_matrix_free(m, sizeof **m, -2, 3, 5, 9);
    kestu_mem_matrix_free(nullptr, 8, 1, 2, 3, 4);
    EXPECT_EQ(live_blocks(), before);
}

TEST(MemMatrices, BoundsThatHoldNoRowsFailAndTouchNothing) {
    void *m = &anchor;
    EXPECT_CHAIN(kestu_mem_matrix_alloc(&m, 8, 5, 4, 1, 1), 120014, "Cannot allocate matrix.",
                 "Cannot allocate memory of size 0 bytes.");
    EXPECT_EQ(m, &anchor);
    EXPECT_CHAIN(kestu_mem_matrix_alloc(&m, 8, 5, 3, 1, 1), 120012, "Cannot allocate matrix.",
                 "Failed to allocate 18446744073709551608 bytes of memory.");
    EXPECT_EQ(m, &anchor);
}

// The pointer is set before the first row, and rows that were made stay.
TEST(MemMatrices, ARowThatFailsLeavesTheMatrixPartlyBuilt) {
    int **m = nullptr;
    EXPECT_CHAIN(kestu_mem_matrix_alloc(&m, sizeof **m, 1, 1, 2, 1), 120010,
                 "Cannot allocate matrix.", "Cannot allocate memory for 0 elements.");
    ASSERT_NE(m, nullptr);
    kestu_mem_free(m + 1);

    const long before = live_blocks();
    kestu_error_t *err;
    {
        AllocFailure failure(3); // the pointers and the first row are granted
        err = kestu_mem_matrix_alloc(&m, sizeof **m, 0, 2, 0, 9);
    }
    EXPECT_CHAIN(err, 120012, "Cannot allocate matrix.", "Failed to allocate 40 bytes of memory.");
    EXPECT_EQ(live_blocks(), before + 2);
    kestu_mem_free(m[0]);
    kestu_mem_free(m);
}
