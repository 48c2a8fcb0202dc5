// The singly linked list.
#include "kestu_sl.h"

#include "support/chain.hpp"
#include "support/pool.hpp"

#include <vector>

using namespace kestu::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

void collect(uint32_t tag, void *, void *baton) {
    static_cast<std::vector<uint32_t> *>(baton)->push_back(tag);
}

std::vector<uint32_t> tags_of(kestu_sl_t *node) {
    std::vector<uint32_t> tags;
    kestu_sl_walk(node, collect, &tags);
    return tags;
}

class SlList : public testing::Test {
  protected:
    kestu_sl_t *list = nullptr;
    char objects[8] = {};
    Pool pool;
};

} // namespace

TEST_F(SlList, HeaderExample) {
    char first[] = "first", second[] = "second";
    const auto print = [](uint32_t tag, void *data, void *stream) {
        fprintf(static_cast<FILE *>(stream), "%u=%s ", tag, static_cast<char *>(data));
    };
    testing::internal::CaptureStdout();
    kestu_sl_front(&list, 2, &second, pool);
    kestu_sl_front(&list, 1, &first, pool);
    kestu_sl_walk(list, print, stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "1=first 2=second ");
}

TEST_F(SlList, NodesGoBehindTheGivenOneToTheFrontOrToTheEnd) {
    for (uint32_t tag : {1, 2, 3})
        EXPECT_OK(kestu_sl_add(&list, tag, &objects[tag], pool));
    EXPECT_THAT(tags_of(list), ElementsAre(1, 3, 2));
    EXPECT_OK(kestu_sl_front(&list, 0, nullptr, pool));
    EXPECT_OK(kestu_sl_append(&list, 4, nullptr, pool));
    EXPECT_THAT(tags_of(list), ElementsAre(0, 1, 3, 2, 4));
    for (const auto &[n, tag] : {std::pair{0u, 0u}, {2u, 3u}, {4u, 4u}})
        EXPECT_EQ(kestu_sl_get_n(list, n)->tag, tag);
    EXPECT_EQ(kestu_sl_get_n(list->next, 1)->tag, 3u);
    EXPECT_EQ(kestu_sl_get_n(list, 5), nullptr);
    uint32_t tag = 9;
    EXPECT_EQ(kestu_sl_get_data_tag(list->next, &tag), &objects[1]);
    EXPECT_EQ(tag, 1u);
    kestu_sl_t *other = nullptr;
    EXPECT_OK(kestu_sl_append(&other, 7, nullptr, pool));
    kestu_sl_update(other, 8, &objects[2]);
    EXPECT_EQ(kestu_sl_get_data_tag(other, nullptr), &objects[2]);
    EXPECT_THAT(tags_of(other), ElementsAre(8));
}

TEST_F(SlList, DeletingUnlinksTheNodeBehind) {
    for (uint32_t tag : {1, 2, 3})
        EXPECT_OK(kestu_sl_append(&list, tag, nullptr, pool));
    kestu_sl_delete_next(list);
    EXPECT_THAT(tags_of(list), ElementsAre(1, 3));
    kestu_sl_delete_next(list->next);
    kestu_sl_delete_next(list);
    EXPECT_THAT(tags_of(list), ElementsAre(1));
    kestu_sl_destroy(&list);
    EXPECT_EQ(list, nullptr);
}

TEST_F(SlList, WalksStopAtTheirKindOfResult) {
    for (uint32_t tag : {4, 3, 2, 1})
        EXPECT_OK(kestu_sl_front(&list, tag, &objects[tag], pool));
    std::vector<uint32_t> seen;
    const auto number = [](uint32_t tag, void *, void *baton) {
        collect(tag, nullptr, baton);
        return tag == 3 ? -7 : 0;
    };
    const auto pointer = [](uint32_t tag, void *data, void *baton) {
        collect(tag, nullptr, baton);
        return tag == 2 ? data : nullptr;
    };
    const auto sentinel = [](uint32_t tag, void *, void *baton) {
        collect(tag, nullptr, baton);
        return tag == 3 ? KestuDLlistStopWalking : nullptr;
    };
    EXPECT_EQ(kestu_sl_walk_int_first(list->next, number, &seen), -7);
    EXPECT_EQ(kestu_sl_walk_ptr_first(list, pointer, &seen), &objects[2]);
    EXPECT_EQ(kestu_sl_walk_err_first(list, sentinel, &seen), KestuDLlistStopWalking);
    EXPECT_THAT(seen, ElementsAre(2, 3, 1, 2, 1, 2, 3));
}

TEST_F(SlList, NullNodesAreEmptyLists) {
    uint32_t tag = 77;
    EXPECT_EQ(kestu_sl_get_n(nullptr, 0), nullptr);
    EXPECT_EQ(kestu_sl_get_data(nullptr), nullptr);
    EXPECT_EQ(kestu_sl_get_data_tag(nullptr, &tag), nullptr);
    EXPECT_EQ(tag, 77u);
    kestu_sl_delete_next(nullptr);
    EXPECT_THAT(tags_of(nullptr), IsEmpty());
    EXPECT_EQ(kestu_sl_walk_int_first(nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(kestu_sl_walk_ptr_first(nullptr, nullptr, nullptr), nullptr);
    EXPECT_OK(kestu_sl_walk_err_first(nullptr, nullptr, nullptr));
}

TEST_F(SlList, APoolWithoutMemoryLeavesTheListAsItWas) {
    EXPECT_OK(kestu_sl_add(&list, 1, nullptr, pool));
    for (auto add : {kestu_sl_add, kestu_sl_front, kestu_sl_append}) {
        EXPECT_EQ(pool.without_memory([&] { return add(&list, 2, nullptr, pool); }), nullptr);
        EXPECT_THAT(tags_of(list), ElementsAre(1));
    }
}
