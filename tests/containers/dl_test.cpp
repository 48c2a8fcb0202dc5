// The doubly linked list: handles, order of visits, and links after every step.
#include "fuzz/list_model.hpp"
#include "support/test.hpp"
#include "trace.hpp"

using namespace kestu::test;
using kestu::fuzz::checked_nodes;
using kestu::fuzz::checked_tags;

namespace {

class DlList : public testing::Test {
  protected:
    // A list of nodes tagged `lowest` to `highest`, whose data are the elements of `objects`.
    std::vector<kestu_dl_t *> make(uint32_t lowest, uint32_t highest) {
        kestu_dl_t *list = nullptr;
        for (uint32_t tag = lowest; tag <= highest; ++tag)
            EXPECT_OK(kestu_dl_append(&list, tag, &objects[tag], &list, pool));
        return checked_nodes(list);
    }

    Pool pool;
    char objects[32] = {};
};

} // namespace

TEST_F(DlList, CreatedNodesAreInNoList) {
    kestu_dl_t *node = nullptr, *heap_node = nullptr;
    const long blocks = live_blocks();
    EXPECT_OK(kestu_dl_create(7, &objects[7], &node, pool));
    for (const auto drop : {kestu_dlm_delete, +[](kestu_dl_t *one) { kestu_dlm_destroy(&one); }}) {
        ASSERT_OK(kestu_dlm_create(8, &objects[8], &heap_node));
        uint32_t tag = 0;
        EXPECT_EQ(kestu_dl_get_data_tag(heap_node, &tag), &objects[8]);
        EXPECT_TRUE(tag == 8 && !heap_node->prev && !heap_node->next);
        drop(heap_node);
    }
    EXPECT_EQ(live_blocks(), blocks);
    kestu_dl_update(node, 3, &objects[3]);
    EXPECT_EQ(kestu_dl_get_data_tag(node, nullptr), &objects[3]);
    EXPECT_THAT(checked_tags(node), ElementsAre(3));
    EXPECT_OK(pool.without_memory([&] { return kestu_dl_create(2, nullptr, &node, pool); }));
    EXPECT_EQ(node, nullptr); // callers rely on it
    EXPECT_CHAIN(pool.without_memory([&] { return kestu_dlm_create(2, nullptr, &heap_node); }),
                 120012, "Can't allocate memory for dlm node.",
                 "Failed to allocate 32 bytes of memory.");
}

TEST_F(DlList, NullNodesAreEmptyLists) {
    kestu_dl_t *none = nullptr;
    Trace trace;
    void *result = nullptr;
    uint32_t tag = 77;
    EXPECT_EQ(kestu_dl_get_data_tag(none, &tag), nullptr);
    EXPECT_EQ(tag, 77u);
    for (auto get : {kestu_dl_get_prev, kestu_dl_get_next, kestu_dl_get_first, kestu_dl_get_last,
                     kestu_dl_extract})
        EXPECT_EQ(get(none), nullptr);
    for (auto insert : {kestu_dl_insert_before, kestu_dl_insert_after})
        EXPECT_CHAIN(insert(none, none), 120051, "");
    EXPECT_CHAIN(kestu_dl_exchange(none, none), 120052, "");
    for (auto drop : {kestu_dl_delete, kestu_dlm_delete})
        drop(none);
    for (auto walk : {kestu_dl_delete_func, kestu_dlm_delete_func, kestu_dl_walk})
        walk(none, see, &trace);
    for (auto walk : {kestu_dl_delete_errfunc, kestu_dl_walk_err_first})
        EXPECT_OK(walk(none, see_err, &trace));
    for (void *data : {static_cast<void *>(nullptr), static_cast<void *>(objects)}) {
        for (auto drop : {kestu_dl_delete_obj, kestu_dlm_delete_obj})
            drop(&none, data);
        kestu_dl_delete_obj_func(&none, data, see, &trace);
        EXPECT_OK(kestu_dl_delete_obj_errfunc(&none, data, see_err, &trace));
    }
    for (auto destroy : {kestu_dl_destroy, kestu_dlm_destroy})
        destroy(&none);
    for (auto destroy : {kestu_dl_destroy_func, kestu_dlm_destroy_func})
        destroy(&none, see, &trace);
    EXPECT_OK(kestu_dl_destroy_errfunc(&none, see_err, &trace));
    EXPECT_EQ(kestu_dl_walk_int_first(none, see_int, &trace), 0);
    EXPECT_EQ(kestu_dl_walk_ptr_first(none, see_ptr, &trace), nullptr);
    EXPECT_OK(kestu_dl_walk_err_or_ptr_first(none, see_err_or_ptr, &trace, &result));
    kestu_dl_dwalk(&none, see_int, &trace);
    EXPECT_OK(kestu_dl_bubsort(none, nullptr, nullptr));
    for (uint32_t lists : {0, 1})
        EXPECT_OK(kestu_dl_mwalk_err_first(&none, lists, nullptr, nullptr));
    EXPECT_TRUE(trace.seen.empty() && !none);
}

TEST_F(DlList, DeletingByDatumTakesTheFirstThatCarriesItWhateverTheCallbackReturns) {
    const auto nodes = make(1, 4);
    nodes[3]->data = nodes[1]->data;
    nodes[2]->data = nullptr;
    kestu_dl_t *list = nodes[3];
    Trace trace{4};
    for (void *data : {nodes[1]->data, static_cast<void *>(nullptr), static_cast<void *>(this)})
        EXPECT_OK(kestu_dl_delete_obj_errfunc(&list, data, see_err, &trace));
    EXPECT_THAT(checked_tags(list), ElementsAre(1, 3, 4));
    EXPECT_EQ(kestu_dl_delete_obj_errfunc(&list, nodes[3]->data, see_err, &trace),
              KestuDLlistStopWalking);
    EXPECT_EQ(list, nodes[2]);
    list = nodes[0];
    kestu_dl_delete_obj_func(&list, &objects[1], see, &trace);
    EXPECT_EQ(list, nodes[2]);
    EXPECT_OK(kestu_dl_delete_errfunc(list, see_err, &trace));
    EXPECT_THAT(trace.seen, ElementsAre(2, 4, 1, 3));
    EXPECT_THAT(checked_tags(list), ElementsAre(3));
    kestu_dl_t *forgotten = list = make(1, 2)[1];
    kestu_dl_destroy(&list); // the pool's nodes stay as they are
    EXPECT_EQ(list, nullptr);
    EXPECT_THAT(checked_tags(forgotten), ElementsAre(1, 2));
}

TEST_F(DlList, AnErrorEndsDestructionAndTheHandleReachesTheRest) {
    const struct {
        size_t handle;
        Tags seen;
        std::vector<uint32_t> left;
        uint32_t handle_after;
    } cases[] = {
        {4, {4, 3}, {1, 2, 5, 6}, 5}, {0, {1, 2, 3}, {4, 5, 6}, 4}, {5, {5, 4, 3}, {1, 2, 6}, 6}};
    for (const auto &c : cases) {
        kestu_dl_t *list = make(1, 6)[c.handle];
        const auto [err, seen] = ended(kestu_dl_destroy_errfunc, &list, see_err, 3);
        EXPECT_EQ(seen, c.seen);
        EXPECT_CHAIN(err, 0, "Error while destroy DL List.", "KestuDLlistStopWalking");
        EXPECT_EQ(checked_tags(list), c.left);
        EXPECT_EQ(list->tag, c.handle_after);
    }
    kestu_dl_t *list = make(1, 1)[0];
    Trace trace{1, kestu_error_create(0, 5, nullptr, "no")};
    EXPECT_CHAIN(kestu_dl_destroy_errfunc(&list, see_err, &trace), 5,
                 "Error while destroy DL List.", "no");
}

TEST_F(DlList, WalksBeginAtTheFirstNodeAndStopAtTheirKindOfResult) {
    kestu_dl_t *const middle = make(1, 5)[2];
    EXPECT_THAT(seen_by(kestu_dl_walk, middle), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(ended(kestu_dl_walk_int_first, middle, see_int, 3), Pair(3, ElementsAre(1, 2, 3)));
    EXPECT_THAT(ended(kestu_dl_walk_ptr_first, middle, see_ptr, 4),
                Pair(&objects[4], ElementsAre(1, 2, 3, 4)));
    EXPECT_THAT(ended(kestu_dl_walk_err_first, middle, see_err, 2),
                Pair(KestuDLlistStopWalking, ElementsAre(1, 2)));
    Trace error{3}, pointer{2, nullptr};
    void *result = nullptr; // not cleared by a walk
    EXPECT_EQ(kestu_dl_walk_err_or_ptr_first(middle, see_err_or_ptr, &error, &result),
              KestuDLlistStopWalking);
    for (int i = 0; i < 2; ++i) {
        EXPECT_OK(kestu_dl_walk_err_or_ptr_first(middle, see_err_or_ptr, &pointer, &result));
        EXPECT_EQ(result, &objects[2]);
    }
    EXPECT_THAT(error.seen, ElementsAre(1, 2, 3));
    EXPECT_THAT(pointer.seen, ElementsAre(1, 2, 1));
    EXPECT_STREQ(KestuDLlistStopWalking->message, "KestuDLlistStopWalking");
}

TEST_F(DlList, ADeletingWalkLeavesTheHandleAtTheFirstThatIsKept) {
    const struct {
        uint32_t rejected; // bit n rejects tag n
        std::vector<uint32_t> kept;
    } cases[] = {{0, {1, 2, 3, 4}}, {0b00110, {3, 4}}, {0b10100, {1, 3}}, {0b11110, {}}};
    for (auto c : cases) {
        kestu_dl_t *list = make(1, 4)[2];
        const auto rejects = [](uint32_t tag, void *, void *rejected) {
            return static_cast<int>(*static_cast<uint32_t *>(rejected) & 1U << tag);
        };
        kestu_dl_dwalk(&list, rejects, &c.rejected);
        EXPECT_EQ(checked_tags(list), c.kept);
        EXPECT_TRUE(!list || list->tag == c.kept[0]);
    }
}

TEST_F(DlList, NodesLinkedInBehindAreWalkedButNotWhereNodesMayGo) {
    struct Linking {
        kestu_dl_t *list, *more;
        Trace trace = {};
    };
    const auto link = [](uint32_t tag, void *data, void *baton) {
        auto *linking = static_cast<Linking *>(baton);
        EXPECT_OK(kestu_dl_insert_after(linking->list, linking->more)); // the first time
        return see_int(tag, data, &linking->trace);
    };
    Linking walked{make(1, 1)[0], make(2, 2)[0]}, deleting{make(1, 1)[0], make(2, 2)[0]};
    EXPECT_EQ(kestu_dl_walk_int_first(walked.list, link, &walked), 0);
    EXPECT_THAT(walked.trace.seen, ElementsAre(1, 2));
    kestu_dl_dwalk(&deleting.list, link, &deleting);
    EXPECT_THAT(deleting.trace.seen, ElementsAre(1));
}

// The one walk that takes the sentinel for success.
TEST_F(DlList, ListsWalkInStepAndShorterOnesDropOut) {
    kestu_dl_t *const handles[] = {make(1, 1)[0], nullptr, make(11, 13)[1], make(21, 21)[0]};
    std::string seen;
    const auto show = [](uint32_t n, const uint32_t *tags, void *const *data, void *text) {
        for (uint32_t i = 0; i < n; ++i)
            *static_cast<std::string *>(text) += std::to_string(tags[i]) + (data[i] ? "+ " : "- ");
        return static_cast<kestu_error_t *>(nullptr);
    };
    EXPECT_OK(kestu_dl_mwalk_err_first(handles, 4, show, &seen));
    EXPECT_EQ(seen, "1+ 0- 11+ 21+ 0- 0- 12+ 0- 0- 0- 13+ 0- ");
    const auto stop = [](uint32_t, const uint32_t *, void *const *, void *err) {
        return static_cast<kestu_error_t *>(err);
    };
    kestu_error_t *const failure = kestu_error_create(0, 1, nullptr, "no");
    EXPECT_EQ(kestu_dl_mwalk_err_first(handles, 4, stop, failure), failure);
    kestu_error_clear(failure);
    const long before = live_blocks();
    const size_t allocations = fail_each_allocation([&](size_t n) {
        kestu_error_t *err = kestu_dl_mwalk_err_first(handles, 4, stop, KestuDLlistStopWalking);
        EXPECT_EQ(err == nullptr, n > 3);
        EXPECT_EQ(err ? err->code : 120012, 120012);
        EXPECT_EQ(kestu_error_root_cause(err), err);
        kestu_error_clear(err);
    });
    EXPECT_EQ(allocations, 3u);
    EXPECT_EQ(live_blocks(), before);
}

TEST_F(DlList, ExchangingSwapsPlacesInTwoLists) {
    for (uint32_t i = 0; i < 3; ++i)
        for (uint32_t j = 0; j < 3; ++j) {
            const auto a = make(0, 2), b = make(10, 12);
            std::vector<uint32_t> tags_a = {0, 1, 2}, tags_b = {10, 11, 12};
            EXPECT_OK(kestu_dl_exchange(a[i], b[j]));
            std::swap(tags_a[i], tags_b[j]);
            EXPECT_EQ(checked_tags(b[j]), tags_a);
            EXPECT_EQ(checked_tags(a[i]), tags_b);
        }
}

// A node that is a whole list leaves no place for the other behind it.
TEST_F(DlList, ExchangingWithALoneNodeFailsHalfway) {
    for (const bool lone_first : {false, true}) {
        const auto nodes = make(1, 3), lone = make(9, 9);
        EXPECT_CHAIN(
            kestu_dl_exchange(lone_first ? lone[0] : nodes[1], lone_first ? nodes[1] : lone[0]),
            120051, "Unable to exchange DL nodes.", "");
        EXPECT_EQ(checked_tags(nodes[0]),
                  lone_first ? std::vector({1u, 9u, 3u}) : std::vector({1u, 3u}));
        EXPECT_THAT(checked_tags(nodes[1]), ElementsAre(2));
    }
}

// Every node with all behind it, exchanged at once: how equal ones end up depends on that.
TEST_F(DlList, SortingIsTheExchangeSortCallForCall) {
    const auto compare_tens = [](uint32_t a, void *, uint32_t b, void *, void *calls) {
        static_cast<std::string *>(calls)->append(std::to_string(a) + "-" + std::to_string(b) +
                                                  " ");
        return static_cast<int>(a / 10) - static_cast<int>(b / 10);
    };
    kestu_dl_t *list = nullptr;
    for (const uint32_t tag : {30, 20, 31, 10, 21})
        ASSERT_OK(kestu_dl_append(&list, tag, nullptr, nullptr, pool));
    std::string calls;
    ASSERT_OK(kestu_dl_bubsort(list->next->next, compare_tens, &calls));
    EXPECT_THAT(checked_tags(list), ElementsAre(10, 20, 21, 30, 31));
    EXPECT_EQ(calls, "30-20 20-31 20-10 10-21 30-31 30-20 20-21 31-30 31-21 30-31 ");
}

TEST_F(DlList, HooksAreComparedByTheirSignedKey) {
    char a[112] = {}, b[112] = {};
    for (const auto &[key_a, key_b, result] :
         {std::tuple{1, 2, -1}, {2, 1, 1}, {5, 5, 0}, {-1, 1, -1}, {INT32_MAX, INT32_MIN, 1}}) {
        std::memcpy(a + 108, &key_a, 4);
        std::memcpy(b + 108, &key_b, 4);
        EXPECT_EQ(kestu_hook_bubsort_callback(9, a, 1, b, nullptr), result);
    }
}
