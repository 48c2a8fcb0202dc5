// The stack.
#include "kestu_stk.h"

#include "support/chain.hpp"
#include "support/pool.hpp"

#include <vector>

using namespace kestu::test;
using testing::ElementsAre;

namespace {

class Stack : public testing::Test {
  protected:
    Stack() { EXPECT_OK(kestu_stk_create(&stack, pool)); }

    void push(uint32_t last) {
        for (uint32_t tag = 1; tag <= last; ++tag)
            EXPECT_OK(kestu_stk_push(stack, tag, &objects[tag], pool));
    }

    Pool pool;
    kestu_stk_t *stack = nullptr;
    char objects[8] = {};
};

std::vector<uint32_t> tags_of(kestu_stk_t *stack) {
    std::vector<uint32_t> tags;
    const auto collect = [](uint32_t tag, void *, void *baton) {
        static_cast<std::vector<uint32_t> *>(baton)->push_back(tag);
    };
    kestu_stk_walk(stack, collect, &tags);
    return tags;
}

} // namespace

TEST_F(Stack, HeaderExample) {
    int item = 0;
    const auto example = [&]() -> kestu_error_t * {
        kestu_error_t *err = nullptr;
        if ((err = kestu_stk_push(stack, 1, &item, pool)))
            return err;
        EXPECT_EQ(kestu_stk_pop(stack), &item);
        return nullptr;
    };
    EXPECT_OK(example());
}

TEST_F(Stack, TheLastInIsTheFirstOut) {
    push(3);
    EXPECT_THAT(tags_of(stack), ElementsAre(3, 2, 1));
    uint32_t tag = 0;
    EXPECT_EQ(kestu_stk_get_data(stack, &tag), &objects[3]);
    EXPECT_EQ(tag, 3u);
    for (size_t left : {2, 1, 0}) {
        EXPECT_EQ(kestu_stk_pop(stack), &objects[left + 1]);
        EXPECT_EQ(kestu_stk_count(stack), left);
    }
    EXPECT_EQ(kestu_stk_pop(stack), nullptr);
    EXPECT_EQ(kestu_stk_count(stack), 0u);
    EXPECT_EQ(kestu_stk_get_data(stack, &tag), nullptr);
    EXPECT_EQ(tag, 3u);
}

TEST_F(Stack, CopiesHaveTheSameOrderAndLiveOnTheirOwn) {
    kestu_stk_t *copy = nullptr;
    push(3);
    EXPECT_OK(kestu_stk_copy(stack, &copy, pool));
    kestu_stk_destroy(stack);
    EXPECT_EQ(kestu_stk_count(stack), 0u);
    EXPECT_EQ(stack->top, nullptr);
    EXPECT_EQ(kestu_stk_count(copy), 3u);
    EXPECT_THAT(tags_of(copy), ElementsAre(3, 2, 1));
    EXPECT_EQ(kestu_stk_get_data(copy, nullptr), &objects[3]);
    EXPECT_OK(kestu_stk_copy(stack, &copy, pool));
    EXPECT_EQ(kestu_stk_count(copy), 0u);
}

TEST_F(Stack, WalksGoDownAndStopAtTheirKindOfResult) {
    push(4);
    const auto pointer = [](uint32_t tag, void *data, void *) { return tag == 3 ? data : nullptr; };
    const auto sentinel = [](uint32_t tag, void *, void *) {
        return tag == 2 ? KestuDLlistStopWalking : nullptr;
    };
    EXPECT_EQ(kestu_stk_walk_ptr_first(stack, pointer, nullptr), &objects[3]);
    EXPECT_EQ(kestu_stk_walk_err_first(stack, sentinel, nullptr), KestuDLlistStopWalking);
}

TEST_F(Stack, ANullStackIsEmptyAndTakesNothing) {
    kestu_stk_t *copy = nullptr;
    EXPECT_CHAIN(kestu_stk_push(nullptr, 1, nullptr, pool),
                 Element(120051, "Can't push object to stack."), Element(120051, ""));
    EXPECT_EQ(kestu_stk_pop(nullptr), nullptr);
    EXPECT_EQ(kestu_stk_get_data(nullptr, nullptr), nullptr);
    EXPECT_EQ(kestu_stk_count(nullptr), 0u);
    kestu_stk_destroy(nullptr);
    kestu_stk_walk(nullptr, nullptr, nullptr);
    EXPECT_EQ(kestu_stk_walk_ptr_first(nullptr, nullptr, nullptr), nullptr);
    EXPECT_OK(kestu_stk_walk_err_first(nullptr, nullptr, nullptr));
    EXPECT_OK(kestu_stk_copy(nullptr, &copy, pool));
    EXPECT_EQ(kestu_stk_count(copy), 0u);
}

TEST_F(Stack, PoolsWithoutMemoryAreReportedWithNothingPushed) {
    push(1);
    kestu_stk_t *copy = stack;
    EXPECT_CHAIN(pool.without_memory([&] { return kestu_stk_push(stack, 2, nullptr, pool); }),
                 Element(120012, "Can't push object to stack."),
                 Element(120012, "Failed to allocate 24 bytes of memory."));
    EXPECT_EQ(kestu_stk_count(stack), 1u);
    EXPECT_THAT(tags_of(stack), ElementsAre(1));
    EXPECT_CHAIN(pool.without_memory([&] { return kestu_stk_copy(stack, &copy, pool); }),
                 Element(120012, "Can't copy stack."),
                 Element(120012, "Failed to allocate 16 bytes of memory."));
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(pool.without_memory([&] { return kestu_stk_create(&stack, pool); }), nullptr);
    EXPECT_EQ(stack, nullptr);
}
