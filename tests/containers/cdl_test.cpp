// The circular list: outward order, and nodes that are freed and handed out again.
#include "kestu_cdl.h"

#include "list_checks.hpp"
#include "support/chain.hpp"
#include "support/pool.hpp"

#include <algorithm>
#include <random>

using namespace kestu::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Seen {
    std::vector<uint32_t> tags;
    uint32_t stop_at = 0;
    kestu_error_t *err = nullptr;
};

void collect(uint32_t tag, void *, void *baton) {
    static_cast<Seen *>(baton)->tags.push_back(tag);
}

int number(uint32_t tag, void *, void *baton) {
    collect(tag, nullptr, baton);
    return tag == static_cast<Seen *>(baton)->stop_at ? -5 : 0;
}

kestu_error_t *error(uint32_t tag, void *, void *baton) {
    return number(tag, nullptr, baton) ? static_cast<Seen *>(baton)->err : nullptr;
}

kestu_error_t *error_or_pointer(uint32_t tag, void *data, void *baton, void **result) {
    kestu_error_t *err = error(tag, data, baton);
    if (!err && tag == static_cast<Seen *>(baton)->stop_at)
        *result = data;
    return err;
}

class CdlList : public testing::Test {
  protected:
    // Nodes tagged 1 to 5, number 4 free.
    CdlList() {
        for (uint32_t tag = 1; tag <= 5; ++tag)
            EXPECT_OK(kestu_cdl_append(&list, tag, &objects[tag], &nodes[tag], pool));
        kestu_cdl_set_free(nodes[4]);
    }

    std::vector<uint32_t> outward(uint32_t from) {
        Seen seen;
        kestu_cdl_walk(nodes[from], collect, &seen);
        return seen.tags;
    }

    std::vector<uint32_t> in_order(uint32_t from) {
        Seen seen;
        kestu_cdl_flwalk(nodes[from], collect, &seen);
        return seen.tags;
    }

    Pool pool;
    kestu_cdl_t *list = nullptr;
    kestu_cdl_t *nodes[6] = {};
    char objects[6] = {};
};

} // namespace

TEST_F(CdlList, HeaderExample) {
    int item = 0;
    const uint32_t tag = 9;
    const auto example = [&]() -> kestu_error_t * {
        kestu_error_t *err = nullptr;
        kestu_cdl_t *node = kestu_cdl_get_ready(list);
        if (node)
            kestu_cdl_set_data_tag(node, &item, tag);
        else if ((err = kestu_cdl_append(&list, tag, &item, nullptr, pool)))
            return err;
        return nullptr;
    };
    EXPECT_OK(example());
    EXPECT_OK(example());
    EXPECT_THAT(checked_tags(list), ElementsAre(1, 2, 3, 9, 5, 9));
    EXPECT_EQ(kestu_cdl_get_data(nodes[4]), &item);
}

TEST_F(CdlList, WalksSkipFreeNodesAndGoOutwardOrFromFirstToLast) {
    EXPECT_THAT(outward(3), ElementsAre(3, 2, 1, 5));
    EXPECT_THAT(outward(4), ElementsAre(3, 2, 1, 5));
    EXPECT_THAT(in_order(4), ElementsAre(1, 2, 3, 5));
    kestu_cdl_set_occupied(nodes[4]);
    EXPECT_THAT(outward(3), ElementsAre(3, 2, 1, 4, 5));
    EXPECT_THAT(outward(1), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(outward(5), ElementsAre(5, 4, 3, 2, 1));
    EXPECT_THAT(in_order(3), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(CdlList, FreeNodesAreFoundOutwardAndHandedOutAsTheyAre) {
    kestu_cdl_set_free(nodes[1]);
    nodes[1]->flags = 0xF0;
    EXPECT_EQ(kestu_cdl_get_free(nodes[2]), nodes[1]);
    EXPECT_EQ(kestu_cdl_get_free(nodes[4]), nodes[4]);
    EXPECT_EQ(kestu_cdl_get_ready(nodes[2]), nodes[1]);
    EXPECT_EQ(nodes[1]->flags, 0xF1u);
    EXPECT_EQ(kestu_cdl_get_tag(nodes[1]), 1u);
    EXPECT_EQ(kestu_cdl_get_data(nodes[1]), &objects[1]);
    EXPECT_EQ(kestu_cdl_get_ready(nodes[2]), nodes[4]);
    EXPECT_EQ(kestu_cdl_get_ready(nodes[2]), nullptr);
    EXPECT_EQ(kestu_cdl_get_free(nodes[2]), nullptr);
    kestu_cdl_set_free(nodes[1]);
    EXPECT_EQ(nodes[1]->flags, 0xF0u);
}

TEST_F(CdlList, FreeingByDatumTakesTheFirstOccupiedNodeOutward) {
    for (uint32_t i : {1, 2, 4, 5})
        nodes[i]->data = &objects[0];
    kestu_cdl_set_free_obj(nodes[3], nullptr);
    kestu_cdl_set_free_obj(nodes[3], this);
    EXPECT_EQ(kestu_cdl_count(list), 4u);
    kestu_cdl_set_free_obj(nodes[3], &objects[0]);
    EXPECT_THAT(in_order(1), ElementsAre(1, 3, 5));
    kestu_cdl_set_free_obj(nodes[4], &objects[0]);
    kestu_cdl_set_free_obj(nodes[4], &objects[0]);
    EXPECT_THAT(in_order(1), ElementsAre(3));
    kestu_cdl_set_allfree(nodes[3]);
    EXPECT_EQ(kestu_cdl_count(list), 0u);
    EXPECT_THAT(checked_tags(list), ElementsAre(1, 2, 3, 4, 5));
}

// Each walk from node 3, ended at node 2 (outward) or at node 2 of the list order.
TEST_F(CdlList, WalksStopAtTheirKindOfResult) {
    Seen seen{{}, 2, KestuDLlistStopWalking};
    void *result = nullptr;
    EXPECT_EQ(kestu_cdl_walk_int_first(nodes[3], number, &seen), -5);
    EXPECT_EQ(kestu_cdl_walk_node_first(nodes[3], number, &seen), nodes[2]);
    EXPECT_EQ(kestu_cdl_walk_err_first(nodes[3], error, &seen), KestuDLlistStopWalking);
    EXPECT_EQ(kestu_cdl_walk_err_or_ptr_first(nodes[3], error_or_pointer, &seen, &result),
              KestuDLlistStopWalking);
    EXPECT_EQ(result, nullptr);
    EXPECT_THAT(seen.tags, ElementsAre(3, 2, 3, 2, 3, 2, 3, 2));
    seen.tags.clear();
    EXPECT_EQ(kestu_cdl_flwalk_err_first(nodes[3], error, &seen), KestuDLlistStopWalking);
    EXPECT_EQ(kestu_cdl_flwalk_err_or_ptr_first(nodes[3], error_or_pointer, &seen, &result),
              KestuDLlistStopWalking);
    EXPECT_THAT(seen.tags, ElementsAre(1, 2, 1, 2));
    seen = {{}, 5, nullptr};
    EXPECT_OK(kestu_cdl_walk_err_or_ptr_first(nodes[3], error_or_pointer, &seen, &result));
    EXPECT_EQ(result, &objects[5]);
    EXPECT_OK(kestu_cdl_walk_err_or_ptr_first(nodes[3], error_or_pointer, &seen, &result));
    EXPECT_OK(kestu_cdl_flwalk_err_or_ptr_first(nodes[3], error_or_pointer, &seen, &result));
    EXPECT_THAT(seen.tags, ElementsAre(3, 2, 1, 5, 3, 1));
    const auto pointer = [](uint32_t tag, void *data, void *) { return tag > 3 ? data : nullptr; };
    EXPECT_EQ(kestu_cdl_walk_ptr_first(nodes[3], pointer, nullptr), &objects[5]);
    seen = {{}, 4, nullptr}; // a free node stops nothing
    EXPECT_EQ(kestu_cdl_walk_int_first(nodes[3], number, &seen), 0);
    EXPECT_EQ(kestu_cdl_walk_node_first(nodes[3], number, &seen), nullptr);
}

TEST_F(CdlList, AFreeingWalkGoesOn) {
    const auto is_odd = [](uint32_t tag, void *, void *) { return static_cast<int>(tag % 2); };
    kestu_cdl_walk_free(nodes[3], is_odd, nullptr);
    EXPECT_THAT(in_order(3), ElementsAre(2));
}

TEST_F(CdlList, NullNodesAreEmptyLists) {
    kestu_cdl_t *none = nullptr;
    Seen seen;
    void *result = nullptr;
    for (auto get :
         {kestu_cdl_get_first, kestu_cdl_get_last, kestu_cdl_get_free, kestu_cdl_get_ready})
        EXPECT_EQ(get(none), nullptr);
    EXPECT_EQ(kestu_cdl_get_n(none, 0), nullptr);
    EXPECT_EQ(kestu_cdl_count(none), 0u);
    EXPECT_EQ(kestu_cdl_get_data(none), nullptr);
    EXPECT_EQ(kestu_cdl_get_tag(none), 0u);
    kestu_cdl_set_data(none, objects);
    kestu_cdl_set_tag(none, 1);
    kestu_cdl_set_data_tag(none, objects, 1);
    kestu_cdl_set_free(none);
    kestu_cdl_set_occupied(none);
    kestu_cdl_set_free_obj(none, objects);
    kestu_cdl_set_allfree(none);
    kestu_cdl_destroy(&none);
    kestu_cdl_walk(none, collect, &seen);
    kestu_cdl_flwalk(none, collect, &seen);
    kestu_cdl_walk_free(none, number, &seen);
    EXPECT_EQ(kestu_cdl_walk_node_first(none, number, &seen), nullptr);
    EXPECT_EQ(kestu_cdl_walk_int_first(none, number, &seen), 0);
    EXPECT_EQ(kestu_cdl_walk_ptr_first(none, nullptr, &seen), nullptr);
    EXPECT_OK(kestu_cdl_walk_err_first(none, error, &seen));
    EXPECT_OK(kestu_cdl_flwalk_err_first(none, error, &seen));
    EXPECT_OK(kestu_cdl_walk_err_or_ptr_first(none, error_or_pointer, &seen, &result));
    EXPECT_OK(kestu_cdl_flwalk_err_or_ptr_first(none, error_or_pointer, &seen, &result));
    EXPECT_THAT(seen.tags, IsEmpty());
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
    for (const auto &c : cases) {
        kestu_cdl_t *handle = nodes[3], *out = nullptr;
        kestu_error_t *err =
            pool.without_memory([&] { return c.add(&handle, 9, nullptr, &out, pool); });
        EXPECT_CHAIN(err, Element(120012, c.message),
                     Element(120012, "Failed to allocate 32 bytes of memory."));
        EXPECT_EQ(handle, nodes[3]);
        EXPECT_EQ(out, nullptr);
    }
    EXPECT_THAT(checked_tags(list), ElementsAre(1, 2, 3, 4, 5));
}

namespace {

struct Slot {
    uint32_t tag;
    bool occupied;
};

// The model's occupied tags in outward order from the slot `from`.
std::vector<uint32_t> outward_model(const std::vector<Slot> &slots, size_t from) {
    std::vector<uint32_t> tags;
    for (size_t i = from + 1; i-- > 0;)
        if (slots[i].occupied)
            tags.push_back(slots[i].tag);
    for (size_t i = from + 1; i < slots.size(); ++i)
        if (slots[i].occupied)
            tags.push_back(slots[i].tag);
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
        const auto nodes = checked_nodes(handle);
        const size_t n = model.size(), i = random() % n;
        const auto at = [&](size_t k) { return model.begin() + static_cast<ptrdiff_t>(k); };
        handle = nodes[i];
        const uint32_t grow = n < 60 ? random() % 6 : 3 + random() % 3;
        if (grow == 0) {
            ASSERT_OK(kestu_cdl_append(&handle, step, nullptr, nullptr, pool));
            model.push_back({step, true});
        } else if (grow == 1) {
            ASSERT_OK(kestu_cdl_prepend(&handle, step, nullptr, nullptr, pool));
            model.insert(model.begin(), {step, true});
        } else if (grow == 2) {
            ASSERT_OK(kestu_cdl_add(&handle, step, nullptr, nullptr, pool));
            model.insert(at(i + 1), {step, true});
        } else if (grow == 3) {
            kestu_cdl_set_free(handle);
            model[i].occupied = false;
        } else if (kestu_cdl_t *ready = kestu_cdl_get_ready(handle)) {
            // Free and occupied exchanged, the first in outward order is the one that was ready.
            auto inverse = model;
            for (Slot &slot : inverse)
                slot.occupied = !slot.occupied;
            const uint32_t tag = outward_model(inverse, i)[0];
            ASSERT_EQ(ready->tag, tag);
            std::find_if(model.begin(), model.end(), [=](const Slot &s) {
                return s.tag == tag;
            })->occupied = true;
        }
        std::vector<uint32_t> all, occupied;
        for (const Slot &slot : model) {
            all.push_back(slot.tag);
            if (slot.occupied)
                occupied.push_back(slot.tag);
        }
        ASSERT_EQ(checked_tags(handle), all) << "step " << step;
        Seen seen;
        kestu_cdl_walk(nodes[i], collect, &seen);
        const auto now = checked_nodes(handle);
        const auto place = std::find(now.begin(), now.end(), nodes[i]) - now.begin();
        ASSERT_EQ(seen.tags, outward_model(model, static_cast<size_t>(place)));
        ASSERT_EQ(kestu_cdl_count(handle), occupied.size());
        const size_t k = random() % (occupied.size() + 1);
        const kestu_cdl_t *nth = kestu_cdl_get_n(handle, k);
        ASSERT_EQ(nth ? nth->tag : ~0u, k < occupied.size() ? occupied[k] : ~0u);
    }
}
