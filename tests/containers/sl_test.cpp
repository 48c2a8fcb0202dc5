// The singly linked list.
#include "support/test.hpp"
#include "trace.hpp"

using namespace kestu::test;

namespace {

class SlList : public testing::Test {
  protected:
    // Appends nodes tagged 1 to `last`.
    void append(uint32_t last) {
        for (uint32_t tag = 1; tag <= last; ++tag)
            EXPECT_OK(kestu_sl_append(&list, tag, &objects[tag], pool));
    }
    Tags tags() { return seen_by(kestu_sl_walk, list); }

    kestu_sl_t *list = nullptr;
    char objects[8] = {};
    Pool pool;
};

} // namespace

TEST_F(SlList, NodesGoBehindTheGivenOneToTheFrontOrToTheEnd) {
    for (uint32_t tag : {1, 2, 3})
        EXPECT_OK(kestu_sl_add(&list, tag, &objects[tag], pool));
    EXPECT_THAT(tags(), ElementsAre(1, 3, 2));
    EXPECT_OK(kestu_sl_front(&list, 7, nullptr, pool));
    EXPECT_OK(kestu_sl_append(&list, 4, nullptr, pool));
    EXPECT_THAT(tags(), ElementsAre(7, 1, 3, 2, 4));
    for (const auto &[n, tag] : {std::pair{0u, 7u}, {2u, 3u}, {4u, 4u}})
        EXPECT_EQ(kestu_sl_get_n(list, n)->tag, tag);
    EXPECT_EQ(kestu_sl_get_n(list->next, 1)->tag, 3u);
    EXPECT_EQ(kestu_sl_get_n(list, 5), nullptr);
    uint32_t tag = 9;
    EXPECT_EQ(kestu_sl_get_data_tag(list->next, &tag), &objects[1]);
    EXPECT_EQ(tag, 1u);
    kestu_sl_update(list, 8, &objects[2]);
    EXPECT_EQ(kestu_sl_get_data_tag(list, nullptr), &objects[2]);
    EXPECT_EQ(list->tag, 8u);
}

TEST_F(SlList, DeletingUnlinksTheNodeBehind) {
    append(3);
    kestu_sl_delete_next(list);
    EXPECT_THAT(tags(), ElementsAre(1, 3));
    kestu_sl_delete_next(list->next);
    EXPECT_THAT(tags(), ElementsAre(1, 3));
    kestu_sl_destroy(&list);
    EXPECT_EQ(list, nullptr);
}

TEST_F(SlList, WalksStopAtTheirKindOfResult) {
    append(4);
    EXPECT_THAT(ended(kestu_sl_walk_int_first, list->next, see_int, 3), Pair(3, ElementsAre(2, 3)));
    EXPECT_THAT(ended(kestu_sl_walk_ptr_first, list, see_ptr, 2),
                Pair(&objects[2], ElementsAre(1, 2)));
    EXPECT_THAT(ended(kestu_sl_walk_err_first, list, see_err, 3),
                Pair(KestuDLlistStopWalking, ElementsAre(1, 2, 3)));
}

TEST_F(SlList, NullNodesAreEmptyLists) {
    uint32_t tag = 77;
    EXPECT_EQ(kestu_sl_get_n(list, 0), nullptr);
    EXPECT_EQ(kestu_sl_get_data_tag(list, &tag), nullptr);
    EXPECT_EQ(tag, 77u);
    kestu_sl_delete_next(list);
    EXPECT_THAT(tags(), ElementsAre());
    EXPECT_EQ(ended(kestu_sl_walk_int_first, list, see_int, 0).first, 0);
    EXPECT_EQ(ended(kestu_sl_walk_ptr_first, list, see_ptr, 0).first, nullptr);
    EXPECT_OK(ended(kestu_sl_walk_err_first, list, see_err, 0).first);
}

TEST_F(SlList, APoolWithoutMemoryLeavesTheListAsItWas) {
    append(1);
    for (auto add : {kestu_sl_add, kestu_sl_front, kestu_sl_append}) {
        EXPECT_OK(pool.without_memory([&] { return add(&list, 2, nullptr, pool); }));
        EXPECT_THAT(tags(), ElementsAre(1));
    }
}
