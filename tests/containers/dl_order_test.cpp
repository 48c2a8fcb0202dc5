// Doubly linked lists and lists of strings put into another order, and taken as a whole.
#include "fuzz/list_model.hpp"
#include "support/test.hpp"

#include <list>

using namespace kestu::fuzz;
using namespace kestu::test;

namespace {

using Nodes = std::vector<kestu_dl_t *>;

kestu_dl_t *make(size_t count, apr_pool_t *pool, std::mt19937 &random, uint32_t keys) {
    kestu_dl_t *last = nullptr;
    for (size_t i = 0; i < count; ++i)
        EXPECT_OK(
            kestu_dl_append(&last, static_cast<uint32_t>(random()) % keys, nullptr, &last, pool));
    return last;
}

int by_tag(uint32_t a, void *, uint32_t b, void *, void *calls) {
    ++*static_cast<size_t *>(calls);
    return a > b ? 1 : -1; // equal ones are no reason to exchange
}

TEST(DlOrder, SortingIsStableAndTakesFewComparisons) {
    std::mt19937 random(1);
    for (size_t count = 0; count < 400; count += 1 + count / 7) {
        const Pool pool;
        kestu_dl_t *list = make(count, pool, random, count % 2 == 0 ? 10 : 1000000);
        const Nodes made = checked_nodes(list);
        std::list<kestu_dl_t *> sorted(made.begin(), made.end());
        sorted.sort([](const kestu_dl_t *a, const kestu_dl_t *b) { return a->tag < b->tag; });
        Nodes expected(sorted.begin(), sorted.end());
        for (const size_t most : {10 * count, count}) { // the second time it is sorted
            size_t calls = 0;
            (most == count ? kestu_dlm_sort : kestu_dl_sort)(&list, by_tag, &calls);
            EXPECT_EQ(checked_nodes(list), expected);
            EXPECT_TRUE(expected.empty() || list == expected.front());
            EXPECT_LE(calls, most);
        }
        if (list)
            list = list->next ? list->next : list;
        kestu_dl_reverse(&list);
        std::reverse(expected.begin(), expected.end());
        EXPECT_EQ(checked_nodes(list), expected);
        EXPECT_TRUE(expected.empty() || list == expected.front());
    }
}

TEST(DlOrder, SplicingMovesNodesWithinAListAndBetweenLists) {
    const Pool pool;
    std::mt19937 random(1);
    const Nodes a = checked_nodes(make(5, pool, random, 9));
    const Nodes b = checked_nodes(make(3, pool, random, 9));
    ASSERT_OK(kestu_dl_splice(b[2], a[1], a[2]));
    EXPECT_EQ(checked_nodes(a[0]), (Nodes{a[0], a[3], a[4]}));
    EXPECT_EQ(checked_nodes(b[0]), (Nodes{b[0], b[1], b[2], a[1], a[2]}));
    ASSERT_OK(kestu_dl_splice(b[0], b[2], a[2]));
    EXPECT_EQ(checked_nodes(b[0]), (Nodes{b[0], b[2], a[1], a[2], b[1]}));
    ASSERT_OK(kestu_dl_splice(b[0], b[2], b[2])); // to where it stands
    for (auto [node, first, last] : {std::array{b[2], b[2], a[1]},
                                     {a[1], b[2], a[1]},
                                     {a[0], a[1], b[0]},
                                     {a[0], nullptr, b[0]},
                                     {nullptr, b[0], b[0]}})
        EXPECT_CHAIN(kestu_dl_splice(node, first, last),
                     Element(120051, "Unable to splice DL nodes."), Element(120051, ""));
    EXPECT_EQ(checked_nodes(b[0]), (Nodes{b[0], b[2], a[1], a[2], b[1]}));
}

TEST(Strlists, AreSortedJoinedWalkedAndMadeArrays) {
    const Pool pool;
    kestu_strlist_t *list = nullptr;
    ASSERT_EQ(kestu_strlist_create(&list, pool), nullptr);
    kestu_dl_t *last = nullptr;
    for (const char *text : {"pear", "", "apple", static_cast<const char *>(nullptr)})
        ASSERT_OK(kestu_strlist_append(list, &last, text, pool));
    const auto joined = [&] {
        char *text = nullptr;
        EXPECT_OK(kestu_strlist_join(list, ", ", &text, pool));
        return std::string(text);
    };
    EXPECT_EQ(joined(), "pear, , apple, ");
    kestu_strlist_sort(list);
    EXPECT_EQ(joined(), ", , apple, pear");
    const char **strings = nullptr;
    size_t count = 0;
    ASSERT_OK(kestu_strlist_to_array(list, &strings, &count, pool));
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(strings[0], nullptr);
    EXPECT_STREQ(strings[3], "pear");
    EXPECT_EQ(strings[4], nullptr);
    const auto letter = [](const char *str, void *) -> int { return str ? *str : 0; };
    EXPECT_EQ(kestu_strlist_walk(list, letter, nullptr), 'a');
    kestu_strlist_clear(list);
    EXPECT_EQ(joined(), "");
    ASSERT_OK(kestu_strlist_to_array(nullptr, &strings, nullptr, pool));
    EXPECT_EQ(strings[0], nullptr);
    EXPECT_CHAIN(kestu_strlist_append(nullptr, &(last = nullptr), "x", pool), Element(120051, ""));
}

} // namespace
