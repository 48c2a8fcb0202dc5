// The doubly linked list: handles, order of visits, and links after every step.
#include "kestu_dl.h"

#include "list_checks.hpp"
#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "support/pool.hpp"

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

using namespace kestu::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

enum Where { after, before, first, last };

// The functions that exist for both kinds of nodes, so that one test serves both.
struct PoolList {
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

template <typename List>
class DlBoth : public testing::Test {
  protected:
    List functions;
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

void collect(uint32_t tag, void *, void *baton) {
    static_cast<std::vector<uint32_t> *>(baton)->push_back(tag);
}

// Yields the error, pointer or number in the baton at tag 3.
struct Stop {
    std::vector<uint32_t> seen;
    kestu_error_t *err = nullptr;
};

kestu_error_t *stop_at_3(uint32_t tag, void *, void *baton) {
    auto *stop = static_cast<Stop *>(baton);
    stop->seen.push_back(tag);
    return tag == 3 ? stop->err : nullptr;
}

} // namespace

TEST_F(DlList, HeaderExample) {
    const auto print = [](uint32_t tag, void *data, void *stream) {
        fprintf(static_cast<FILE *>(stream), "%u=%s ", tag, static_cast<char *>(data));
    };
    char records[][4] = {"one", "two", "six"};
    const auto example = [&](uint32_t n) -> kestu_error_t * {
        kestu_error_t *err = nullptr;
        kestu_dl_t *list = nullptr;
        for (uint32_t i = 0; i < n; ++i)
            if ((err = kestu_dl_append(&list, i, &records[i], &list, pool)))
                return err;
        kestu_dl_walk(list, print, stdout);
        return nullptr;
    };
    testing::internal::CaptureStdout();
    EXPECT_OK(example(3));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "0=one 1=two 2=six ");
}

// Every operation that both kinds have, and those that move nodes, against a vector of tags.
TYPED_TEST(DlBoth, RandomStepsKeepOrderAndLinks) {
    const long blocks_before = live_blocks();
    {
        std::mt19937 random(20240607);
        std::vector<uint32_t> model;
        kestu_dl_t *list = nullptr;
        for (uint32_t step = 1; step <= 3000; ++step) {
            const size_t n = model.size();
            const size_t i = n ? random() % n : 0, j = n ? random() % n : 0;
            kestu_dl_t *handle = kestu_dl_get_n(list, i);
            kestu_dl_t *other = kestu_dl_get_n(list, j);
            void *const data = reinterpret_cast<void *>(uintptr_t{step});
            const auto at = [&](size_t k) { return model.begin() + static_cast<ptrdiff_t>(k); };
            const uint32_t step_kind = random() % 10;
            switch (step_kind) {
            case after:
            case before:
            case first:
            case last: {
                const size_t places[] = {n ? i + 1 : 0, i, 0, n};
                const auto where = static_cast<Where>(step_kind);
                kestu_dl_t *added = nullptr, *const held = handle;
                ASSERT_OK(this->functions.add(where, &handle, step, data, &added));
                model.insert(at(places[where]), step);
                ASSERT_EQ(handle, held ? held : added);
                ASSERT_EQ(kestu_dl_get_data(added), data);
                break;
            }
            case 4:
                ASSERT_OK(n ? kestu_dl_exchange(handle, other) : nullptr);
                if (n)
                    std::swap(model[i], model[j]);
                break;
            case 5: // the handle's own node is found by its datum, and the handle moves on
                this->functions.drop_obj(&handle, kestu_dl_get_data(handle));
                if (n)
                    model.erase(at(i));
                ASSERT_EQ(handle != nullptr, n > 1);
                ASSERT_EQ(!handle || handle->tag == model[std::min(i, n - 2)], true);
                break;
            case 6:
                this->functions.drop_obj(&handle, kestu_dl_get_data(other));
                if (n)
                    model.erase(at(j));
                break;
            case 7:
            case 8:
                if (i == j)
                    break;
                kestu_dl_extract(handle);
                ASSERT_OK(i < j ? kestu_dl_insert_after(other, handle)
                                : kestu_dl_insert_before(other, handle));
                if (i < j)
                    std::rotate(at(i), at(i + 1), at(j + 1));
                else
                    std::rotate(at(j), at(i), at(i + 1));
                break;
            default: { // cut in two, and joined the other way round
                kestu_dl_t *const front = kestu_dl_get_first(handle);
                if (i == 0)
                    break;
                handle->prev->next = nullptr;
                handle->prev = nullptr;
                kestu_dl_join(handle, front);
                std::rotate(model.begin(), at(i), model.end());
            }
            }
            list = handle;
            ASSERT_EQ(checked_tags(list), model) << "step " << step;
            ASSERT_EQ(kestu_dl_count(list), model.size());
            ASSERT_EQ(kestu_dl_get_n(list, model.size()), nullptr);
        }
        std::vector<uint32_t> left;
        this->functions.destroy_func(&list, collect, &left);
        std::sort(left.begin(), left.end());
        std::sort(model.begin(), model.end());
        EXPECT_EQ(left, model);
    }
    EXPECT_EQ(live_blocks(), blocks_before);
}

TYPED_TEST(DlBoth, DestroyingGoesBackFromTheHandleAndThenOn) {
    kestu_dl_t *list = nullptr;
    for (uint32_t tag = 1; tag <= 5; ++tag)
        ASSERT_OK(this->functions.add(last, &list, tag, &list, nullptr));
    list = list->next->next;
    struct Seen {
        std::vector<uint32_t> tags, handles;
    } seen;
    this->functions.destroy_func(
        &list,
        [](uint32_t tag, void *data, void *baton) {
            const kestu_dl_t *handle = *static_cast<kestu_dl_t **>(data);
            static_cast<Seen *>(baton)->tags.push_back(tag);
            static_cast<Seen *>(baton)->handles.push_back(handle ? handle->tag : 0);
        },
        &seen);
    EXPECT_EQ(list, nullptr);
    EXPECT_THAT(seen.tags, ElementsAre(2, 1, 3, 4, 5));
    EXPECT_THAT(seen.handles, ElementsAre(3, 3, 4, 5, 0));
}

TYPED_TEST(DlBoth, DeletingHandsOverTagAndDatumOfANodeThatIsOutOfTheList) {
    kestu_dl_t *list = nullptr, *node = nullptr;
    ASSERT_OK(this->functions.add(last, &list, 1, nullptr, nullptr));
    ASSERT_OK(this->functions.add(last, &list, 2, &list, &node));
    this->functions.drop_func(
        node,
        [](uint32_t tag, void *data, void *baton) {
            EXPECT_EQ(tag, 2u);
            EXPECT_EQ(data, baton);
            EXPECT_EQ(kestu_dl_count(*static_cast<kestu_dl_t **>(data)), 1u);
        },
        &list);
    this->functions.drop(list);
}

// Every allocation of the functions that take nodes from the system's allocator.
TEST(DlHeap, RefusedNodesLeaveListHandleAndOutAlone) {
    kestu_dl_t *list = nullptr, *out = nullptr;
    ASSERT_OK(kestu_dlm_append(&list, 1, nullptr, nullptr));
    const struct {
        decltype(&kestu_dlm_append) add;
        const char *message;
    } cases[] = {{kestu_dlm_add_after, "Unable to add DL node."},
                 {kestu_dlm_add_before, "Unable to add DL node."},
                 {kestu_dlm_prepend, "Unable to prepend DL object."},
                 {kestu_dlm_append, "Unable to append DL object."}};
    const Element cause(120012, "Failed to allocate 32 bytes of memory.");
    for (const auto &[add, message] : cases)
        for (kestu_dl_t *const handle : {list, static_cast<kestu_dl_t *>(nullptr)}) {
            kestu_dl_t *moved = handle;
            kestu_error_t *err = nullptr;
            {
                AllocFailure failure(1);
                err = add(&moved, 2, nullptr, &out);
            }
            EXPECT_CHAIN(err, Element(120012, message), cause);
            EXPECT_EQ(moved, handle);
            EXPECT_EQ(out, nullptr);
        }
    EXPECT_THAT(checked_tags(list), ElementsAre(1));
    out = list;
    kestu_error_t *err = nullptr;
    {
        AllocFailure failure(1);
        err = kestu_dlm_create(2, nullptr, &out);
    }
    EXPECT_CHAIN(err, Element(120012, "Can't allocate memory for dlm node."), cause);
    kestu_dlm_destroy(&list);
    EXPECT_EQ(list, nullptr);
}

TEST_F(DlList, PoolsWithoutMemoryAreReportedExceptByCreate) {
    kestu_dl_t *list = make(1, 1)[0], *out = list;
    EXPECT_EQ(pool.without_memory([&] { return kestu_dl_create(2, nullptr, &out, pool); }),
              nullptr);
    EXPECT_EQ(out, nullptr);
    kestu_error_t *err =
        pool.without_memory([&] { return kestu_dl_append(&list, 2, nullptr, &out, pool); });
    EXPECT_CHAIN(err, Element(120012, "Unable to append DL object."),
                 Element(120012, "Failed to allocate 32 bytes of memory."));
    EXPECT_THAT(checked_tags(list), ElementsAre(1));
}

TEST_F(DlList, CreatedNodesAreInNoList) {
    kestu_dl_t *node = nullptr, *heap_node = nullptr;
    EXPECT_OK(kestu_dl_create(7, &objects[7], &node, pool));
    ASSERT_OK(kestu_dlm_create(8, &objects[8], &heap_node));
    EXPECT_THAT(checked_tags(node), ElementsAre(7));
    EXPECT_OK(kestu_dl_insert_before(node, heap_node));
    EXPECT_THAT(checked_tags(node), ElementsAre(8, 7));
    EXPECT_EQ(kestu_dl_get_prev(node), heap_node);
    EXPECT_EQ(kestu_dl_get_next(heap_node), node);
    uint32_t tag = 0;
    EXPECT_EQ(kestu_dl_get_data_tag(heap_node, &tag), &objects[8]);
    EXPECT_EQ(tag, 8u);
    kestu_dl_update(node, 3, &objects[3]);
    EXPECT_EQ(kestu_dl_get_data_tag(node, nullptr), &objects[3]);
    EXPECT_THAT(checked_tags(node), ElementsAre(8, 3));
    kestu_dlm_delete(heap_node);
    EXPECT_THAT(checked_tags(node), ElementsAre(3));
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
    std::vector<uint32_t> seen;
    void *result = nullptr;
    uint32_t tag = 77;
    EXPECT_EQ(kestu_dl_get_data(none), nullptr);
    EXPECT_EQ(kestu_dl_get_data_tag(none, &tag), nullptr);
    EXPECT_EQ(tag, 77u);
    for (auto get : {kestu_dl_get_prev, kestu_dl_get_next, kestu_dl_get_first, kestu_dl_get_last,
                     kestu_dl_extract})
        EXPECT_EQ(get(none), nullptr);
    EXPECT_EQ(kestu_dl_get_n(none, 0), nullptr);
    EXPECT_EQ(kestu_dl_count(none), 0u);
    EXPECT_CHAIN(kestu_dl_insert_after(none, none), Element(120051, ""));
    EXPECT_CHAIN(kestu_dl_exchange(none, none), Element(120052, ""));
    kestu_dl_delete(none);
    kestu_dlm_delete(none);
    kestu_dl_delete_func(none, collect, &seen);
    kestu_dlm_delete_func(none, collect, &seen);
    EXPECT_OK(kestu_dl_delete_errfunc(none, stop_at_3, &seen));
    kestu_dl_delete_obj(&none, objects);
    EXPECT_OK(kestu_dl_delete_obj_errfunc(&none, objects, stop_at_3, &seen));
    kestu_dl_destroy(&none);
    kestu_dlm_destroy(&none);
    kestu_dl_destroy_func(&none, collect, &seen);
    EXPECT_OK(kestu_dl_destroy_errfunc(&none, stop_at_3, &seen));
    kestu_dl_walk(none, collect, &seen);
    EXPECT_OK(kestu_dl_walk_err_first(none, stop_at_3, &seen));
    EXPECT_OK(kestu_dl_walk_err_or_ptr_first(none, nullptr, &seen, &result));
    EXPECT_EQ(kestu_dl_walk_int_first(none, nullptr, nullptr), 0);
    EXPECT_EQ(kestu_dl_walk_ptr_first(none, nullptr, nullptr), nullptr);
    kestu_dl_dwalk(&none, nullptr, nullptr);
    EXPECT_OK(kestu_dl_bubsort(none, nullptr, nullptr));
    EXPECT_OK(kestu_dl_mwalk_err_first(nullptr, 0, nullptr, nullptr));
    EXPECT_OK(kestu_dl_mwalk_err_first(&none, 1, nullptr, nullptr));
    EXPECT_THAT(seen, IsEmpty());
    EXPECT_EQ(none, nullptr);
}

TEST_F(DlList, DeletingByDatumTakesTheFirstThatCarriesIt) {
    const auto nodes = make(1, 4);
    nodes[3]->data = nodes[1]->data;
    nodes[2]->data = nullptr;
    kestu_dl_t *list = nodes[3];
    std::vector<uint32_t> seen;
    kestu_dl_delete_obj_func(&list, nodes[1]->data, collect, &seen);
    EXPECT_EQ(list, nodes[3]);
    kestu_dl_delete_obj_func(&list, nullptr, collect, &seen);
    kestu_dl_delete_obj_func(&list, &objects[20], collect, &seen);
    EXPECT_THAT(checked_tags(list), ElementsAre(1, 3, 4));
    kestu_dl_delete_obj_func(&list, nodes[3]->data, collect, &seen);
    EXPECT_EQ(list, nodes[2]);
    EXPECT_THAT(seen, ElementsAre(2, 4));
    kestu_dl_destroy(&list); // forgets the pool's nodes, which stay as they are
    EXPECT_EQ(list, nullptr);
    EXPECT_THAT(checked_tags(nodes[0]), ElementsAre(1, 3));
}

TEST_F(DlList, DeletingReturnsTheErrorOfTheCallbackAndDeletesAllTheSame) {
    const auto nodes = make(3, 4);
    kestu_dl_t *list = nodes[0];
    Stop stop{{}, kestu_error_create(0, 5, nullptr, "no")};
    kestu_error_t *err = kestu_dl_delete_obj_errfunc(&list, &objects[3], stop_at_3, &stop);
    EXPECT_EQ(err, stop.err);
    EXPECT_CHAIN(err, Element(5, "no"));
    EXPECT_THAT(checked_tags(list), ElementsAre(4));
    EXPECT_OK(kestu_dl_delete_errfunc(list, stop_at_3, &stop));
    EXPECT_THAT(stop.seen, ElementsAre(3, 4));
}

TEST_F(DlList, AnErrorEndsDestructionAndTheHandleReachesTheRest) {
    const struct {
        size_t handle;
        std::vector<uint32_t> seen, left;
        uint32_t handle_after;
    } cases[] = {
        {4, {4, 3}, {1, 2, 5, 6}, 5}, {0, {1, 2, 3}, {4, 5, 6}, 4}, {5, {5, 4, 3}, {1, 2, 6}, 6}};
    for (const auto &c : cases) {
        kestu_dl_t *list = make(1, 6)[c.handle];
        Stop stop{{}, kestu_error_create(0, 5, nullptr, "no")};
        EXPECT_CHAIN(kestu_dl_destroy_errfunc(&list, stop_at_3, &stop),
                     Element(5, "Error while destroy DL List."), Element(5, "no"));
        EXPECT_EQ(stop.seen, c.seen);
        EXPECT_EQ(checked_tags(list), c.left);
        EXPECT_EQ(list->tag, c.handle_after);
    }
}

TEST_F(DlList, WalksStopAtTheirKindOfResult) {
    kestu_dl_t *const middle = make(1, 5)[2];
    std::vector<uint32_t> seen;
    const auto number = [](uint32_t tag, void *, void *baton) {
        collect(tag, nullptr, baton);
        return tag == 3 ? -7 : 0;
    };
    const auto pointer = [](uint32_t tag, void *data, void *baton) {
        collect(tag, nullptr, baton);
        return tag == 4 ? data : nullptr;
    };
    kestu_dl_walk(middle, collect, &seen);
    EXPECT_EQ(kestu_dl_walk_int_first(middle, number, &seen), -7);
    EXPECT_EQ(kestu_dl_walk_ptr_first(middle, pointer, &seen), &objects[4]);
    EXPECT_THAT(seen, ElementsAre(1, 2, 3, 4, 5, 1, 2, 3, 1, 2, 3, 4));
}

// The sentinel comes back from every walk but the one in step, which takes it for success.
TEST_F(DlList, ErrorsAndTheSentinelComeBackUnchanged) {
    kestu_dl_t *list = make(1, 5)[1];
    for (kestu_error_t *err : {KestuDLlistStopWalking, kestu_error_create(0, 1, nullptr, "e")}) {
        Stop stop{{}, err};
        EXPECT_EQ(kestu_dl_walk_err_first(list, stop_at_3, &stop), err);
        void *result = nullptr;
        const auto with_result = [](uint32_t tag, void *data, void *baton, void **) {
            return stop_at_3(tag, data, baton);
        };
        EXPECT_EQ(kestu_dl_walk_err_or_ptr_first(list, with_result, &stop, &result), err);
        EXPECT_THAT(stop.seen, ElementsAre(1, 2, 3, 1, 2, 3));
        const auto in_step = [](uint32_t, const uint32_t *tags, void *const *, void *baton) {
            return stop_at_3(tags[0], nullptr, baton);
        };
        const bool is_sentinel = err == KestuDLlistStopWalking;
        const long before = live_blocks();
        EXPECT_EQ(kestu_dl_mwalk_err_first(&list, 1, in_step, &stop), is_sentinel ? nullptr : err);
        EXPECT_EQ(live_blocks(), before);
        if (!is_sentinel)
            kestu_error_clear(err);
    }
    Stop stop{{}, KestuDLlistStopWalking};
    EXPECT_EQ(kestu_dl_destroy_errfunc(&list, stop_at_3, &stop), KestuDLlistStopWalking);
    EXPECT_STREQ(KestuDLlistStopWalking->message, "KestuDLlistStopWalking");
}

TEST_F(DlList, AWalkEndsOnceTheResultIsSetAndDoesNotClearIt) {
    kestu_dl_t *const list = make(1, 5)[4];
    const auto set_at_2 = [](uint32_t tag, void *data, void *baton, void **result) {
        collect(tag, nullptr, baton);
        *result = tag == 2 ? data : *result;
        return static_cast<kestu_error_t *>(nullptr);
    };
    std::vector<uint32_t> seen;
    void *result = nullptr;
    EXPECT_OK(kestu_dl_walk_err_or_ptr_first(list, set_at_2, &seen, &result));
    EXPECT_EQ(result, &objects[2]);
    EXPECT_OK(kestu_dl_walk_err_or_ptr_first(list, set_at_2, &seen, &result));
    EXPECT_EQ(result, &objects[2]);
    EXPECT_THAT(seen, ElementsAre(1, 2, 1));
}

TEST_F(DlList, ADeletingWalkLeavesTheHandleAtTheFirstThatIsKept) {
    const struct {
        uint32_t rejected; // bit n rejects tag n
        std::vector<uint32_t> kept;
    } cases[] = {{0, {1, 2, 3, 4}}, {0b00110, {3, 4}}, {0b10100, {1, 3}}, {0b11110, {}}};
    for (const auto &c : cases) {
        auto rejected = c.rejected;
        kestu_dl_t *list = make(1, 4)[2];
        kestu_dl_dwalk(
            &list,
            [](uint32_t tag, void *, void *baton) {
                return static_cast<int>(*static_cast<uint32_t *>(baton) & (1u << tag));
            },
            &rejected);
        EXPECT_EQ(checked_tags(list), c.kept);
        EXPECT_TRUE(!list || list->tag == c.kept[0]);
    }
}

TEST_F(DlList, NodesLinkedInBehindAreWalked) {
    struct Growing {
        apr_pool_t *pool;
        kestu_dl_t *list;
        std::vector<uint32_t> seen;
    } growing{pool, make(1, 1)[0], {}};
    kestu_dl_walk(
        growing.list,
        [](uint32_t tag, void *, void *baton) {
            auto *g = static_cast<Growing *>(baton);
            g->seen.push_back(tag);
            if (tag < 4) {
                EXPECT_OK(kestu_dl_append(&g->list, tag + 1, nullptr, nullptr, g->pool));
            }
        },
        &growing);
    EXPECT_THAT(growing.seen, ElementsAre(1, 2, 3, 4));
}

TEST_F(DlList, ListsWalkInStepAndShorterOnesDropOut) {
    kestu_dl_t *const handles[] = {make(1, 1)[0], nullptr, make(11, 13)[1]};
    std::string seen;
    EXPECT_OK(kestu_dl_mwalk_err_first(
        handles, 3,
        [](uint32_t n, const uint32_t *tags, void *const *data, void *baton) {
            for (uint32_t i = 0; i < n; ++i)
                *static_cast<std::string *>(baton) +=
                    std::to_string(tags[i]) + (data[i] ? "+ " : "- ");
            return static_cast<kestu_error_t *>(nullptr);
        },
        &seen));
    EXPECT_EQ(seen, "1+ 0- 11+ 0- 0- 12+ 0- 0- 13+ ");
    const long before = live_blocks();
    const auto stop = [](uint32_t, const uint32_t *, void *const *, void *) {
        return KestuDLlistStopWalking;
    };
    EXPECT_EQ(fail_each_allocation([&](size_t n) {
                  kestu_error_t *err = kestu_dl_mwalk_err_first(handles, 3, stop, nullptr);
                  EXPECT_EQ(err ? err->code : 0, n <= 3 ? 120012 : 0);
                  EXPECT_EQ(kestu_error_root_cause(err), err);
                  kestu_error_clear(err);
              }),
              3u);
    EXPECT_EQ(live_blocks(), before);
}

TEST_F(DlList, ExchangingSwapsPlacesInTwoLists) {
    for (uint32_t i = 0; i < 3; ++i)
        for (uint32_t j = 0; j < 3; ++j) {
            const auto a = make(0, 2), b = make(10, 12);
            EXPECT_OK(kestu_dl_exchange(a[i], b[j]));
            auto tags = checked_tags(b[j]);
            EXPECT_EQ(tags[i], 10 + j);
            EXPECT_EQ(tags[(i + 1) % 3], (i + 1) % 3);
            tags = checked_tags(a[i]);
            EXPECT_EQ(tags[j], i);
            EXPECT_EQ(tags[(j + 1) % 3], 10 + (j + 1) % 3);
        }
}

// A node that is a whole list leaves no place for the other behind it.
TEST_F(DlList, ExchangingWithALoneNodeFailsHalfway) {
    const Element head(120051, "Unable to exchange DL nodes."), cause(120051, "");
    auto lone = make(9, 9)[0];
    auto nodes = make(1, 3);
    EXPECT_CHAIN(kestu_dl_exchange(nodes[1], lone), head, cause);
    EXPECT_THAT(checked_tags(nodes[0]), ElementsAre(1, 3));
    EXPECT_THAT(checked_tags(nodes[1]), ElementsAre(2));
    EXPECT_THAT(checked_tags(lone), ElementsAre(9));
    nodes = make(1, 3);
    EXPECT_CHAIN(kestu_dl_exchange(lone, nodes[1]), head, cause);
    EXPECT_THAT(checked_tags(nodes[0]), ElementsAre(1, 9, 3));
    EXPECT_THAT(checked_tags(nodes[1]), ElementsAre(2));
}

namespace {

// What a sort compares, in its order, and the keys: the tags without their lowest digit, which
// tells nodes of equal keys apart.
using Calls = std::vector<std::pair<uint32_t, uint32_t>>;

int compare_tens(uint32_t a, void *, uint32_t b, void *, void *baton) {
    static_cast<Calls *>(baton)->emplace_back(a, b);
    return static_cast<int>(a / 10) - static_cast<int>(b / 10);
}

} // namespace

TEST_F(DlList, SortingIsTheExchangeSortCallForCall) {
    std::mt19937 random(7);
    for (uint32_t n : {0u, 1u, 2u, 3u, 5u, 8u, 9u}) {
        for (int round = 0; round < 40; ++round) {
            std::vector<uint32_t> tags;
            kestu_dl_t *list = nullptr;
            for (uint32_t i = 0; i < n; ++i) {
                tags.push_back(random() % 4 * 10 + i);
                ASSERT_OK(kestu_dl_append(&list, tags[i], nullptr, nullptr, pool));
            }
            kestu_dl_t *const handle = kestu_dl_get_n(list, n / 2);
            Calls calls, expected;
            ASSERT_OK(kestu_dl_bubsort(handle, compare_tens, &calls));
            for (size_t i = 0; i < n; ++i)
                for (size_t j = i + 1; j < n; ++j)
                    if (compare_tens(tags[i], nullptr, tags[j], nullptr, &expected) > 0)
                        std::swap(tags[i], tags[j]);
            ASSERT_EQ(checked_tags(handle), tags);
            ASSERT_EQ(calls, expected);
        }
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
