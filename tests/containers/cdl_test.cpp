// The circular list: outward order, and nodes that are freed and handed out again.
#include "kestu_cdl.h"

#include "list_checks.hpp"
#include "support/chain.hpp"
#include "support/pool.hpp"
#include "trace.hpp"

#include <algorithm>
#include <random>

using namespace kestu::test;
using testing::ElementsAre;
using testing::Pair;

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

TEST_F(CdlList, FreeingByDatumTakesTheFirstOccupiedNodeOutward) {
    for (uint32_t i : {1, 2, 4})
        nodes[i]->data = &objects[0];
    nodes[5]->data = nullptr;
    for (void *data : {static_cast<void *>(nullptr), static_cast<void *>(this)})
        kestu_cdl_set_free_obj(nodes[3], data);
    EXPECT_EQ(kestu_cdl_count(list), 4u);
    kestu_cdl_set_free_obj(nodes[4], &objects[0]);
    EXPECT_THAT(seen_by(kestu_cdl_flwalk, list), ElementsAre(1, 3, 5));
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
    EXPECT_CHAIN(kestu_cdl_insert_before(none, list), Element(120051, ""));
    EXPECT_CHAIN(kestu_cdl_insert_after(list, none), Element(120051, ""));
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
                     Element(120012, c.message),
                     Element(120012, "Failed to allocate 32 bytes of memory."));
    EXPECT_EQ(list, nodes[1]);
    EXPECT_EQ(out, nullptr);
    EXPECT_THAT(checked_tags(list), ElementsAre(1, 2, 3, 4, 5));
}

namespace {

struct Slot {
    uint32_t tag;
    bool occupied;
};

// The tags, free or occupied, in outward order from the slot `from`.
Tags outward(const std::vector<Slot> &slots, size_t from, bool occupied) {
    Tags tags;
    const auto add = [&](const Slot &slot) {
        if (slot.occupied == occupied)
            tags.push_back(static_cast<int>(slot.tag));
    };
    for (size_t i = from + 1; i-- > 0;)
        add(slots[i]);
    for (size_t i = from + 1; i < slots.size(); ++i)
        add(slots[i]);
    return tags;
}

} // namespace

TEST(CdlModel, RandomStepsKeepOrderLinksAndOccupation) {
    std::mt19937 random(314159);
    Pool pool;
    std::vector<Slot> model{{0, true}};
    kestu_cdl_t *handle = nullptr;
    ASSERT_OK(kestu_cdl_append(&handle, 0, nullptr, nullptr, pool));
    for (uint32_t step = 1; step <= 2000; ++step) {
        const size_t n = model.size(), i = random() % n;
        kestu_cdl_t *const held = handle = checked_nodes(handle)[i], *lone = nullptr;
        const auto added = [&](kestu_error_t *err, size_t place) {
            EXPECT_OK(err);
            model.insert(model.begin() + static_cast<ptrdiff_t>(place), {step, true});
        };
        switch (n < 60 ? random() % 8 : 5 + random() % 3) {
        case 0:
            added(kestu_cdl_append(&handle, step, nullptr, nullptr, pool), n);
            break;
        case 1:
            added(kestu_cdl_prepend(&handle, step, nullptr, nullptr, pool), 0);
            break;
        case 2:
            added(kestu_cdl_add(&handle, step, nullptr, nullptr, pool), i + 1);
            break;
        case 3:
            ASSERT_OK(kestu_cdl_append(&lone, step, nullptr, nullptr, pool));
            added(kestu_cdl_insert_before(handle, lone), i);
            break;
        case 4:
            ASSERT_OK(kestu_cdl_append(&lone, step, nullptr, nullptr, pool));
            added(kestu_cdl_insert_after(handle, lone), i + 1);
            break;
        case 5:
            kestu_cdl_set_free(handle);
            model[i].occupied = false;
            break;
        default: {
            const kestu_cdl_t *ready = kestu_cdl_get_ready(handle);
            const Tags free = outward(model, i, false);
            ASSERT_EQ(ready ? Tags{static_cast<int>(ready->tag)} : Tags(),
                      Tags(free.begin(), free.begin() + !free.empty()));
            for (Slot &slot : model)
                slot.occupied |= ready && slot.tag == ready->tag;
        }
        }
        ASSERT_EQ(handle, held);
        std::vector<uint32_t> all;
        for (const Slot &slot : model)
            all.push_back(slot.tag);
        ASSERT_EQ(checked_tags(handle), all) << "step " << step;
        const auto place = std::find(all.begin(), all.end(), handle->tag) - all.begin();
        ASSERT_EQ(seen_by(kestu_cdl_walk, handle),
                  outward(model, static_cast<size_t>(place), true));
        const Tags occupied = outward(model, 0, true);
        ASSERT_EQ(kestu_cdl_count(handle), occupied.size());
        const size_t k = random() % (occupied.size() + 1);
        const kestu_cdl_t *nth = kestu_cdl_get_n(handle, k);
        ASSERT_EQ(nth ? static_cast<int>(nth->tag) : -1, k < occupied.size() ? occupied[k] : -1);
    }
}
