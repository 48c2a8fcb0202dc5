// The stack.
#include "support/test.hpp"
#include "trace.hpp"

using namespace kestu::test;

namespace {

class Stack : public testing::Test {
  protected:
    Stack() { EXPECT_OK(kestu_stk_create(&stack, pool)); }

    void push(uint32_t last) {
        for (uint32_t tag = 1; tag <= last; ++tag)
            EXPECT_OK(kestu_stk_push(stack, tag, &objects[tag % 8], pool));
    }

    Pool pool;
    kestu_stk_t *stack = nullptr;
    char objects[8] = {};
};

} // namespace

TEST_F(Stack, TheLastInIsTheFirstOutOfACopyToo) {
    kestu_stk_t *copy = nullptr;
    push(3);
    EXPECT_OK(kestu_stk_copy(stack, &copy, pool));
    kestu_stk_destroy(stack);
    EXPECT_EQ(kestu_stk_count(stack), 0u);
    EXPECT_EQ(kestu_stk_pop(stack), nullptr);
    push(3);
    uint32_t tag = 0;
    for (kestu_stk_t *any : {stack, copy}) {
        for (const size_t left : {2, 1, 0}) {
            EXPECT_EQ(kestu_stk_get_data(any, &tag), &objects[left + 1]);
            EXPECT_EQ(tag, left + 1);
            EXPECT_EQ(kestu_stk_pop(any), &objects[left + 1]);
            EXPECT_EQ(kestu_stk_count(any), left);
        }
        EXPECT_EQ(kestu_stk_pop(any), nullptr);
        EXPECT_EQ(kestu_stk_count(any), 0u);
        EXPECT_EQ(kestu_stk_get_data(any, &tag), nullptr);
        EXPECT_EQ(tag, 1u);
    }
}

TEST_F(Stack, WalksGoDownAndStopAtTheirKindOfResult) {
    push(4);
    EXPECT_THAT(seen_by(kestu_stk_walk, stack), ElementsAre(4, 3, 2, 1));
    EXPECT_THAT(ended(kestu_stk_walk_ptr_first, stack, see_ptr, 3),
                Pair(&objects[3], ElementsAre(4, 3)));
    EXPECT_THAT(ended(kestu_stk_walk_err_first, stack, see_err, 2),
                Pair(KestuDLlistStopWalking, ElementsAre(4, 3, 2)));
}

TEST_F(Stack, ANullStackIsEmptyAndTakesNothing) {
    kestu_stk_t *none = nullptr, *copy = nullptr;
    EXPECT_CHAIN(kestu_stk_push(none, 1, nullptr, pool), 120051, "Can't push object to stack.", "");
    EXPECT_EQ(kestu_stk_pop(none), nullptr);
    EXPECT_EQ(kestu_stk_get_data(none, nullptr), nullptr);
    EXPECT_EQ(kestu_stk_count(none), 0u);
    kestu_stk_destroy(none);
    EXPECT_THAT(seen_by(kestu_stk_walk, none), ElementsAre());
    EXPECT_EQ(ended(kestu_stk_walk_ptr_first, none, see_ptr, 0).first, nullptr);
    EXPECT_OK(ended(kestu_stk_walk_err_first, none, see_err, 0).first);
    EXPECT_OK(kestu_stk_copy(none, &copy, pool));
    EXPECT_EQ(kestu_stk_count(copy), 0u);
}

// A copy may fail at its first request, or when the pool's first block is full.
TEST_F(Stack, PoolsWithoutMemoryAreReportedWithNothingPushedOrCopied) {
    push(1000);
    kestu_stk_t *copy = stack;
    EXPECT_CHAIN(pool.without_memory([&] { return kestu_stk_push(stack, 2, nullptr, pool); }),
                 120012, "Can't push object to stack.", "Failed to allocate 24 bytes of memory.");
    EXPECT_TRUE(kestu_stk_count(stack) == 1000 && stack->top->tag == 1000);
    EXPECT_CHAIN(pool.without_memory([&] { return kestu_stk_copy(stack, &copy, pool); }), 120012,
                 "Can't copy stack.", "Failed to allocate 16 bytes of memory.");
    EXPECT_EQ(std::exchange(copy, stack), nullptr);
    const auto into_a_new_pool = [&] {
        Pool small;
        AllocFailure failure(1, pools_too);
        return kestu_stk_copy(stack, &copy, small);
    };
    EXPECT_CHAIN(into_a_new_pool(), 120012, "Can't copy stack.",
                 "Failed to allocate 24 bytes of memory.");
    EXPECT_EQ(copy, nullptr);
    EXPECT_OK(pool.without_memory([&] { return kestu_stk_create(&stack, pool); }));
    EXPECT_EQ(stack, nullptr);
}
