// The doubly linked list: handles, order of visits, and links after every step.
#include "kestu_dl.h"

#include "list_checks.hpp"
#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "support/pool.hpp"
#include "trace.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <random>
#include <string>

using namespace kestu::test;
using testing::ElementsAre;
using testing::Pair;

namespace {

enum Where { after, before, first, last };

// The functions that exist for both kinds of nodes, so that one test serves both.
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

template <typename Functions>
class DlBoth : public testing::Test {
  protected:
    Functions f;
};
using BothKinds = testing::Types<PoolList, HeapList>;
TYPED_TEST_SUITE(DlBoth, BothKinds, );

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

void *datum_of(uint32_t tag) {
    return reinterpret_cast<void *>(uintptr_t{tag});
}

} // namespace

// Every operation that both kinds have, and those that move nodes, against a vector of tags.
TYPED_TEST(DlBoth, RandomStepsKeepOrderAndLinks) {
    std::mt19937 random(20240607);
    std::vector<uint32_t> model;
    model.reserve(3000);
    kestu_dl_t *list = nullptr;
    const long blocks = live_blocks();
    for (uint32_t step = 1; step <= 3000; ++step) {
        const size_t n = model.size();
        const size_t i = n ? random() % n : 0, j = n && random() % 2 ? random() % n : i;
        kestu_dl_t *handle = kestu_dl_get_n(list, i);
        kestu_dl_t *const other = kestu_dl_get_n(list, j), *held = handle;
        const auto at = [&](size_t k) { return model.begin() + static_cast<ptrdiff_t>(k); };
        const uint32_t kind = n ? random() % 10 : random() % 4;
        switch (kind) {
        case after:
        case before:
        case first:
        case last: {
            const size_t places[] = {n ? i + 1 : 0, i, 0, n};
            kestu_dl_t *added = nullptr;
            ASSERT_OK(this->f.add(static_cast<Where>(kind), &handle, step, datum_of(step), &added));
            model.insert(at(places[kind]), step);
            ASSERT_EQ(handle, held ? held : added);
            ASSERT_EQ(kestu_dl_get_data(added), datum_of(step));
            break;
        }
        case 4:
            ASSERT_OK(kestu_dl_exchange(handle, other));
            std::swap(model[i], model[j]);
            break;
        case 5: // only the handle to the deleted node moves, to the next or else to the previous
            held = i != j ? handle : handle->next ? handle->next : handle->prev;
            this->f.drop_obj(&handle, other->data);
            model.erase(at(j));
            ASSERT_EQ(handle, held);
            break;
        case 6:
            if (i == j)
                break;
            this->f.drop_func(
                other,
                [](uint32_t tag, void *data, void *rest) {
                    EXPECT_EQ(data, datum_of(tag));
                    EXPECT_THAT(checked_tags(static_cast<kestu_dl_t *>(rest)),
                                testing::Not(testing::Contains(tag)));
                },
                handle);
            model.erase(at(j));
            break;
        case 7:
            if (i != j) {
                this->f.drop(other);
                model.erase(at(j));
            }
            break;
        case 8: // out, and in again at the far side of another
            if (i == j)
                break;
            ASSERT_EQ(kestu_dl_extract(handle), handle);
            ASSERT_OK((i < j ? kestu_dl_insert_after : kestu_dl_insert_before)(other, handle));
            if (i < j)
                std::rotate(at(i), at(i + 1), at(j + 1));
            else
                std::rotate(at(j), at(i), at(i + 1));
            break;
        default: // cut in two, and joined the other way round
            if (i == 0)
                break;
            held = kestu_dl_get_first(handle);
            handle->prev = handle->prev->next = nullptr;
            ASSERT_EQ(kestu_dl_join(handle, held), handle);
            std::rotate(model.begin(), at(i), model.end());
        }
        list = handle;
        ASSERT_EQ(checked_tags(list), model) << "step " << step;
        ASSERT_EQ(kestu_dl_count(list), model.size());
        ASSERT_EQ(kestu_dl_get_n(list, model.size()), nullptr);
    }
    this->f.destroy_func(
        &list, [](uint32_t, void *, void *) {}, nullptr);
    EXPECT_EQ(live_blocks(), blocks);
}

// Each call shows the tag and where the handle stands.
TYPED_TEST(DlBoth, DestroyingGoesBackFromTheHandleAndThenOn) {
    const long blocks = live_blocks();
    kestu_dl_t *list = nullptr;
    for (uint32_t tag = 1; tag <= 5; ++tag)
        ASSERT_OK(this->f.add(last, &list, tag, &list, nullptr));
    list = list->next->next;
    Trace trace;
    const auto see_both = [](uint32_t tag, void *data, void *seen) {
        const kestu_dl_t *handle = *static_cast<kestu_dl_t **>(data);
        see(10 * tag + (handle ? handle->tag : 0), nullptr, seen);
    };
    this->f.destroy_func(&list, see_both, &trace);
    EXPECT_EQ(list, nullptr);
    EXPECT_THAT(trace.seen, ElementsAre(23, 13, 34, 45, 50));
    trace = {};
    EXPECT_EQ(live_blocks(), blocks);
}

TYPED_TEST(DlBoth, RefusedNodesLeaveListHandleAndOutAlone) {
    constexpr const char *messages[] = {"Unable to add DL node.", "Unable to add DL node.",
                                        "Unable to prepend DL object.",
                                        "Unable to append DL object."};
    kestu_dl_t *list = nullptr, *none = nullptr, *out = nullptr;
    ASSERT_OK(this->f.add(last, &list, 1, nullptr, nullptr));
    kestu_dl_t *const handle = list;
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
    EXPECT_EQ(list, handle);
    EXPECT_THAT(checked_tags(list), ElementsAre(1));
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(out, nullptr);
    this->f.drop(list);
}

TEST_F(DlList, CreatedNodesAreInNoList) {
    kestu_dl_t *node = nullptr, *heap_node = nullptr;
    const long blocks = live_blocks();
    EXPECT_OK(kestu_dl_create(7, &objects[7], &node, pool));
    for (const auto drop : {kestu_dlm_delete, +[](kestu_dl_t *one) { kestu_dlm_destroy(&one); }}) {
        ASSERT_OK(kestu_dlm_create(8, &objects[8], &heap_node));
        EXPECT_EQ(kestu_dl_get_prev(heap_node), nullptr);
        EXPECT_EQ(kestu_dl_get_next(heap_node), nullptr);
        uint32_t tag = 0;
        EXPECT_EQ(kestu_dl_get_data_tag(heap_node, &tag), &objects[8]);
        EXPECT_EQ(tag, 8u);
        drop(heap_node);
        EXPECT_EQ(live_blocks(), blocks);
    }
    kestu_dl_update(node, 3, &objects[3]);
    EXPECT_EQ(kestu_dl_get_data_tag(node, nullptr), &objects[3]);
    EXPECT_THAT(checked_tags(node), ElementsAre(3));
    const auto create = [&] {
        errno = 77;
        return kestu_dl_create(2, nullptr, &node, pool);
    };
    EXPECT_EQ(pool.without_memory(create), nullptr); // callers rely on it
    EXPECT_TRUE(!node && errno == 77);
    EXPECT_CHAIN(pool.without_memory([&] { return kestu_dlm_create(2, nullptr, &heap_node); }),
                 Element(120012, "Can't allocate memory for dlm node."),
                 Element(120012, "Failed to allocate 32 bytes of memory."));
}

TEST_F(DlList, LinkingANodeWhereItStandsChangesNothing) {
    const auto nodes = make(1, 3);
    for (kestu_dl_t *node : {nodes[0], nodes[1]}) {
        EXPECT_OK(kestu_dl_insert_before(nodes[1], node));
        EXPECT_OK(kestu_dl_insert_after(nodes[0], node));
        EXPECT_OK(kestu_dl_exchange(node, node));
    }
    EXPECT_EQ(kestu_dl_join(nodes[1], nodes[2]), nodes[0]);
    EXPECT_EQ(kestu_dl_join(nodes[1], nullptr), nodes[0]);
    EXPECT_EQ(kestu_dl_join(nullptr, nodes[1]), nullptr);
    EXPECT_THAT(checked_tags(nodes[0]), ElementsAre(1, 2, 3));
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
    EXPECT_EQ(kestu_dl_get_n(none, 0), nullptr);
    EXPECT_EQ(kestu_dl_count(none), 0u);
    for (auto insert : {kestu_dl_insert_before, kestu_dl_insert_after})
        EXPECT_CHAIN(insert(none, none), Element(120051, ""));
    EXPECT_CHAIN(kestu_dl_exchange(none, none), Element(120052, ""));
    for (auto drop : {kestu_dl_delete, kestu_dlm_delete})
        drop(none);
    for (auto drop : {kestu_dl_delete_func, kestu_dlm_delete_func, kestu_dl_walk})
        drop(none, see, &trace);
    for (auto drop : {kestu_dl_delete_errfunc, kestu_dl_walk_err_first})
        EXPECT_OK(drop(none, see_err, &trace));
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
    EXPECT_OK(kestu_dl_mwalk_err_first(nullptr, 0, nullptr, nullptr));
    EXPECT_OK(kestu_dl_mwalk_err_first(&none, 1, nullptr, nullptr));
    EXPECT_THAT(trace.seen, ElementsAre());
    EXPECT_EQ(none, nullptr);
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
        EXPECT_CHAIN(err, Element(0, "Error while destroy DL List."),
                     Element(0, "KestuDLlistStopWalking"));
        EXPECT_EQ(checked_tags(list), c.left);
        EXPECT_EQ(list->tag, c.handle_after);
    }
    kestu_dl_t *list = make(1, 1)[0];
    Trace trace{1, kestu_error_create(0, 5, nullptr, "no")};
    EXPECT_CHAIN(kestu_dl_destroy_errfunc(&list, see_err, &trace),
                 Element(5, "Error while destroy DL List."), Element(5, "no"));
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
            Element(120051, "Unable to exchange DL nodes."), Element(120051, ""));
        EXPECT_EQ(checked_tags(nodes[0]),
                  lone_first ? std::vector({1u, 9u, 3u}) : std::vector({1u, 3u}));
        EXPECT_THAT(checked_tags(nodes[1]), ElementsAre(2));
    }
}

namespace {

// What a sort compares, in its order, and the keys: the tags without their lowest digit, which
// tells nodes of equal keys apart.
using Calls = std::vector<std::pair<uint32_t, uint32_t>>;

int compare_tens(uint32_t a, void *, uint32_t b, void *, void *calls) {
    static_cast<Calls *>(calls)->emplace_back(a, b);
    return static_cast<int>(a / 10) - static_cast<int>(b / 10);
}

} // namespace

TEST_F(DlList, SortingIsTheExchangeSortCallForCall) {
    std::mt19937 random(7);
    for (uint32_t round = 0; round < 300; ++round) {
        std::vector<uint32_t> tags(round % 10);
        kestu_dl_t *list = nullptr;
        for (uint32_t i = 0; i < tags.size(); ++i) {
            tags[i] = random() % 4 * 10 + i;
            ASSERT_OK(kestu_dl_append(&list, tags[i], nullptr, nullptr, pool));
        }
        kestu_dl_t *const handle = kestu_dl_get_n(list, tags.size() / 2);
        Calls calls, expected;
        ASSERT_OK(kestu_dl_bubsort(handle, compare_tens, &calls));
        for (size_t i = 0; i < tags.size(); ++i)
            for (size_t j = i + 1; j < tags.size(); ++j)
                if (compare_tens(tags[i], nullptr, tags[j], nullptr, &expected) > 0)
                    std::swap(tags[i], tags[j]);
        ASSERT_EQ(checked_tags(handle), tags);
        ASSERT_EQ(calls, expected);
    }
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
