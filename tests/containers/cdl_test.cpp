// The circular list: outward order, and nodes that are freed and handed out again.
#include "fuzz/list_model.hpp"
#include "support/test.hpp"
#include "trace.hpp"

using namespace kestu::test;
using kestu::fuzz::checked_tags;
using kestu::fuzz::Input;
using kestu::fuzz::on_random_inputs;

namespace {

class CdlList : public testing::Test {
  protected:
    // Nodes tagged 1 to 5, number 4 free.
    CdlList() {
        for (uint32_t tag = 1; tag <= 5; ++tag)
            EXPECT_OK(kestu_cdl_append(&list, tag, &objects[tag], &nodes[tag], pool));
        kestu_cdl_set_free(nodes[4]);
    }

    Pool pool;
    kestu_cdl_t *list = nullptr;
    kestu_cdl_t *nodes[6] = {};
    char objects[6] = {};
};

} // namespace

TEST_F(CdlList, NodesAreHandedOutAsTheyAreWithTheFlagsOfTheCaller) {
    nodes[4]->flags = 0xF0;
    EXPECT_EQ(kestu_cdl_get_free(nodes[2]), nodes[4]);
    EXPECT_EQ(kestu_cdl_get_ready(nodes[2]), nodes[4]);
    EXPECT_EQ(nodes[4]->flags, 0xF1u);
    EXPECT_EQ(kestu_cdl_get_tag(nodes[4]), 4u);
    EXPECT_EQ(kestu_cdl_get_data(nodes[4]), &objects[4]);
    EXPECT_EQ(kestu_cdl_get_ready(nodes[2]), nullptr);
    kestu_cdl_set_free(nodes[4]);
    EXPECT_EQ(nodes[4]->flags, 0xF0u);
}

TEST_F(CdlList, OnlyADatumThatIsThereFreesANode) {
    nodes[5]->data = nullptr;
    for (void *data : {static_cast<void *>(nullptr), static_cast<void *>(this)})
        kestu_cdl_set_free_obj(nodes[3], data);
    EXPECT_EQ(kestu_cdl_count(list), 4u);
    kestu_cdl_set_allfree(nodes[3]);
    EXPECT_EQ(kestu_cdl_count(list), 0u);
}

// Each walk from node 3, some ended at a node. The free node is neither shown nor ends a walk.
TEST_F(CdlList, WalksGoOutwardOrFromFirstToLastAndStopAtTheirKindOfResult) {
    kestu_cdl_t *const from = nodes[3];
    EXPECT_THAT(seen_by(kestu_cdl_walk, from), ElementsAre(3, 2, 1, 5));
    EXPECT_THAT(seen_by(kestu_cdl_walk, nodes[4]), ElementsAre(3, 2, 1, 5));
    EXPECT_THAT(seen_by(kestu_cdl_flwalk, from), ElementsAre(1, 2, 3, 5));
    EXPECT_THAT(ended(kestu_cdl_walk_int_first, from, see_int, 2), Pair(2, ElementsAre(3, 2)));
    EXPECT_THAT(ended(kestu_cdl_walk_int_first, from, see_int, 4),
                Pair(0, ElementsAre(3, 2, 1, 5)));
    EXPECT_THAT(ended(kestu_cdl_walk_node_first, from, see_int, 2),
                Pair(nodes[2], ElementsAre(3, 2)));
    EXPECT_EQ(ended(kestu_cdl_walk_node_first, from, see_int, 4).first, nullptr);
    EXPECT_THAT(ended(kestu_cdl_walk_ptr_first, from, see_ptr, 5),
                Pair(&objects[5], ElementsAre(3, 2, 1, 5)));
    EXPECT_THAT(ended(kestu_cdl_walk_err_first, from, see_err, 2),
                Pair(KestuDLlistStopWalking, ElementsAre(3, 2)));
    EXPECT_THAT(ended(kestu_cdl_flwalk_err_first, from, see_err, 2),
                Pair(KestuDLlistStopWalking, ElementsAre(1, 2)));
    for (auto walk : {kestu_cdl_walk_err_or_ptr_first, kestu_cdl_flwalk_err_or_ptr_first}) {
        Trace errors{2}, pointers{5, nullptr};
        void *result = nullptr; // not cleared by a walk
        EXPECT_EQ(walk(from, see_err_or_ptr, &errors, &result), KestuDLlistStopWalking);
        for (int i = 0; i < 2; ++i) {
            EXPECT_OK(walk(from, see_err_or_ptr, &pointers, &result));
            EXPECT_EQ(result, &objects[5]);
        }
        const bool is_outward = walk == kestu_cdl_walk_err_or_ptr_first;
        EXPECT_EQ(pointers.seen, is_outward ? Tags({3, 2, 1, 5, 3}) : Tags({1, 2, 3, 5, 1}));
    }
    const auto is_odd = [](uint32_t tag, void *, void *) { return static_cast<int>(tag % 2); };
    kestu_cdl_walk_free(from, is_odd, nullptr); // goes on
    EXPECT_THAT(seen_by(kestu_cdl_walk, from), ElementsAre(2));
}

TEST_F(CdlList, NullNodesAreEmptyLists) {
    kestu_cdl_t *none = nullptr;
    Trace trace;
    void *result = nullptr;
    for (auto get :
         {kestu_cdl_get_first, kestu_cdl_get_last, kestu_cdl_get_free, kestu_cdl_get_ready})
        EXPECT_EQ(get(none), nullptr);
    EXPECT_EQ(kestu_cdl_get_n(none, 0), nullptr);
    EXPECT_EQ(kestu_cdl_count(none), 0u);
    EXPECT_EQ(kestu_cdl_get_data(none), nullptr);
    EXPECT_EQ(kestu_cdl_get_tag(none), 0u);
    kestu_cdl_set_data_tag(none, objects, 1);
    for (auto set : {kestu_cdl_set_free, kestu_cdl_set_occupied, kestu_cdl_set_allfree})
        set(none);
    kestu_cdl_set_free_obj(none, objects);
    for (auto walk : {kestu_cdl_walk, kestu_cdl_flwalk})
        walk(none, see, &trace);
    kestu_cdl_walk_free(none, see_int, &trace);
    EXPECT_EQ(kestu_cdl_walk_node_first(none, see_int, &trace), nullptr);
    EXPECT_EQ(kestu_cdl_walk_int_first(none, see_int, &trace), 0);
    EXPECT_EQ(kestu_cdl_walk_ptr_first(none, see_ptr, &trace), nullptr);
    for (auto walk : {kestu_cdl_walk_err_first, kestu_cdl_flwalk_err_first})
        EXPECT_OK(walk(none, see_err, &trace));
    for (auto walk : {kestu_cdl_walk_err_or_ptr_first, kestu_cdl_flwalk_err_or_ptr_first})
        EXPECT_OK(walk(none, see_err_or_ptr, &trace, &result));
    EXPECT_THAT(trace.seen, ElementsAre());
    EXPECT_CHAIN(kestu_cdl_insert_before(none, list), 120051, "");
    EXPECT_CHAIN(kestu_cdl_insert_after(list, none), 120051, "");
    kestu_cdl_destroy(&list);
    EXPECT_EQ(list, nullptr);
}

TEST_F(CdlList, APoolWithoutMemoryIsReportedWithNothingChanged) {
    const struct {
        decltype(&kestu_cdl_append) add;
        const char *message;
    } cases[] = {{kestu_cdl_append, "Unable to append DL object."},
                 {kestu_cdl_prepend, "Unable to prepend DL object."},
                 {kestu_cdl_add, "Unable to add DL object."}};
    kestu_cdl_t *out = nullptr;
    for (const auto &c : cases)
        EXPECT_CHAIN(pool.without_memory([&] { return c.add(&list, 9, nullptr, &out, pool); }),
                     120012, c.message, "Failed to allocate 32 bytes of memory.");
    EXPECT_EQ(list, nodes[1]);
    EXPECT_EQ(out, nullptr);
    EXPECT_THAT(checked_tags(list), ElementsAre(1, 2, 3, 4, 5));
}

TEST(CdlModel, RandomStepsKeepOrderLinksAndOccupation) {
    on_random_inputs(10, 3000, [](Input &input) { kestu::fuzz::CdlModel(input).run(); });
}
