// What the doubly linked lists of pools and of the heap have in common: order, links and handles
// after any steps, and what refused nodes leave.
#include "list_model.hpp"
#include "support/test.hpp"
#include "trace.hpp"

using namespace kestu::test;

namespace {

enum Where { after, before, first, last };

struct PoolList {
    static constexpr const char *node_error = nullptr;
    Pool pool;

    auto add(Where where, kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out) {
        constexpr decltype(&kestu_dl_append) functions[] = {kestu_dl_add_after, kestu_dl_add_before,
                                                            kestu_dl_prepend, kestu_dl_append};
        return functions[where](handle, tag, data, out, pool);
    }
    static constexpr auto drop = kestu_dl_delete;
    static constexpr auto drop_func = kestu_dl_delete_func;
    static constexpr auto drop_obj = kestu_dl_delete_obj;
    static constexpr auto destroy_func = kestu_dl_destroy_func;
};

struct HeapList {
    static constexpr const char *node_error = "Can't allocate memory for dlm node.";
    Pool pool;

    auto add(Where where, kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out) {
        constexpr decltype(&kestu_dlm_append) functions[] = {
            kestu_dlm_add_after, kestu_dlm_add_before, kestu_dlm_prepend, kestu_dlm_append};
        return functions[where](handle, tag, data, out);
    }
    static constexpr auto drop = kestu_dlm_delete;
    static constexpr auto drop_func = kestu_dlm_delete_func;
    static constexpr auto drop_obj = kestu_dlm_delete_obj;
    static constexpr auto destroy_func = kestu_dlm_destroy_func;
};

template <typename Kind>
class DlKinds : public ListModel<kestu_dl_t> {
  protected:
    // The steps. `other` is any node, at `there`.
    void add() {
        const size_t n = tags.size(), places[] = {n ? place + 1 : 0, place, 0, n};
        const auto where = static_cast<Where>(below(4));
        expect_added(places[where], [&](uint32_t tag) {
            kestu_dl_t *added = nullptr;
            EXPECT_OK(f.add(where, &handle, tag, datum_of(tag), &added));
            return added;
        });
    }
    void exchange() {
        EXPECT_OK(kestu_dl_exchange(handle, other));
        std::swap(tags[place], tags[there]);
    }
    // The first node with the datum. A handle to it moves to the next node, or else the previous.
    void drop_by_datum() {
        const auto found = std::find_if(tags.begin(), tags.end(),
                                        [&](uint32_t tag) { return datum_of(tag) == other->data; });
        kestu_dl_t *const held = found != at(place) ? handle
                                 : handle->next     ? handle->next
                                                    : handle->prev;
        f.drop_obj(&handle, other->data);
        tags.erase(found);
        ASSERT_EQ(handle, held);
    }
    void drop() {
        if (there == place)
            return;
        const auto is_out = [](uint32_t tag, void *data, void *rest) {
            EXPECT_EQ(data, datum_of(tag));
            EXPECT_THAT(checked_tags(static_cast<kestu_dl_t *>(rest)),
                        testing::Not(testing::Contains(tag)));
        };
        below(2) ? f.drop(other) : f.drop_func(other, is_out, handle);
        tags.erase(at(there));
    }
    // Beside another; where a node stands already, without leaving it.
    void move() {
        const bool behind = below(2);
        if (other != handle && other != (behind ? handle->prev : handle->next)) {
            ASSERT_EQ(kestu_dl_extract(handle), handle);
        }
        EXPECT_OK((behind ? kestu_dl_insert_after : kestu_dl_insert_before)(other, handle));
        if (other == handle)
            return;
        tags.erase(at(place));
        tags.insert(std::find(tags.begin(), tags.end(), other->tag) + behind, handle->tag);
    }
    // Cut in two, and joined the other way round; joined to itself, nothing changes.
    void join() {
        kestu_dl_t *front = kestu_dl_get_first(handle);
        EXPECT_EQ(kestu_dl_join(handle, other), front);
        EXPECT_EQ(kestu_dl_join(handle, nullptr), front);
        EXPECT_EQ(kestu_dl_join(nullptr, handle), nullptr);
        if (place == 0)
            return;
        handle->prev = handle->prev->next = nullptr;
        ASSERT_EQ(kestu_dl_join(handle, front), handle);
        std::rotate(tags.begin(), at(place), tags.end());
    }

    void step() {
        move_handle();
        there = tags.empty() || below(3) == 0 ? place : below(tags.size());
        other = kestu_dl_get_n(handle, there);
        constexpr void (DlKinds::*steps[])() = {
            &DlKinds::add,  &DlKinds::exchange, &DlKinds::drop_by_datum,
            &DlKinds::drop, &DlKinds::move,     &DlKinds::join,
        };
        (this->*steps[handle && below(3) ? below(6) : 0])();
    }

    Kind f;
    kestu_dl_t *other = nullptr;
    size_t there = 0;
};
using Kinds = testing::Types<PoolList, HeapList>;
TYPED_TEST_SUITE(DlKinds, Kinds, );

} // namespace

TYPED_TEST(DlKinds, RandomStepsKeepOrderLinksAndHandles) {
    const long blocks = live_blocks();
    for (int step = 0; step < 3000 && !this->HasFailure(); ++step) {
        this->step();
        ASSERT_EQ(checked_tags(this->handle), this->tags) << "step " << step;
        ASSERT_EQ(kestu_dl_count(this->handle), this->tags.size());
        ASSERT_EQ(kestu_dl_get_n(this->handle, this->tags.size()), nullptr);
    }
    this->f.destroy_func(
        &this->handle, [](uint32_t, void *, void *) {}, nullptr);
    EXPECT_EQ(live_blocks(), blocks);
}

// Each call shows the tag and where the handle stands.
TYPED_TEST(DlKinds, DestroyingGoesBackFromTheHandleAndThenOn) {
    kestu_dl_t *list = nullptr;
    for (uint32_t tag = 1; tag <= 5; ++tag)
        ASSERT_OK(this->f.add(last, &list, tag, &list, nullptr));
    list = list->next->next;
    Trace trace;
    const auto see_both = [](uint32_t tag, void *data, void *seen) {
        const kestu_dl_t *now = *static_cast<kestu_dl_t **>(data);
        see(10 * tag + (now ? now->tag : 0), nullptr, seen);
    };
    this->f.destroy_func(&list, see_both, &trace);
    EXPECT_EQ(list, nullptr);
    EXPECT_THAT(trace.seen, ElementsAre(23, 13, 34, 45, 50));
}

TYPED_TEST(DlKinds, RefusedNodesLeaveListHandleAndOutAlone) {
    constexpr const char *messages[] = {"Unable to add DL node.", "Unable to add DL node.",
                                        "Unable to prepend DL object.",
                                        "Unable to append DL object."};
    kestu_dl_t *list = nullptr, *none = nullptr, *out = nullptr;
    ASSERT_OK(this->f.add(last, &list, 1, nullptr, nullptr));
    kestu_dl_t *const held = list;
    for (const Where where : {after, before, first, last})
        for (kestu_dl_t **grown : {&list, &none}) {
            std::vector<Element> expected = {{120012, messages[where]}};
            if (TypeParam::node_error)
                expected.emplace_back(120012, TypeParam::node_error);
            expected.emplace_back(120012, "Failed to allocate 32 bytes of memory.");
            EXPECT_EQ(take_chain(this->f.pool.without_memory(
                          [&] { return this->f.add(where, grown, 2, nullptr, &out); })),
                      expected);
        }
    EXPECT_EQ(list, held);
    EXPECT_THAT(checked_tags(list), ElementsAre(1));
    EXPECT_TRUE(!none && !out);
    this->f.drop(list);
}
