// The tree: where nodes go, orders and ends of walks, what deletions leave, and links after all.
#include "fuzz/tree_model.hpp"
#include "support/small_stack.hpp"
#include "support/test.hpp"
#include "trace.hpp"

using namespace kestu::fuzz;
using namespace kestu::test;

namespace {

template <typename Functions>
class TreeBoth : public testing::Test {
  protected:
    Functions f;
};
using BothKinds = testing::Types<PoolTree, HeapTree>;
TYPED_TEST_SUITE(TreeBoth, BothKinds, );

// The tags of the level of `any` and of all below it as "1(2 3(4)) 5". A test fails where links of
// neighbours, of parents and of children contradict each other.
std::string checked_shape(kestu_tree_t *any) {
    std::string shape;
    bool entry_found = false;
    for (kestu_tree_t *node : checked_nodes(any)) {
        EXPECT_EQ(node->parent, any->parent);
        entry_found |= any->parent && any->parent->child == node;
        shape.append(shape.empty() ? "" : " ").append(std::to_string(node->tag));
        if (node->child) {
            EXPECT_EQ(kestu_tree_get_parent(node->child), node);
            shape.append("(").append(checked_shape(node->child)).append(")");
        }
    }
    EXPECT_TRUE(!any || !any->parent || entry_found);
    return shape;
}

class Tree : public testing::Test {
  protected:
    kestu_tree_t *child(kestu_tree_t *parent, uint32_t tag) {
        kestu_tree_t *node = nullptr;
        EXPECT_OK(kestu_tree_append_child(parent, tag, &objects[tag], &node, pool));
        return node;
    }

    // The handle is the node 7.
    static constexpr const char *sample_shape = "1(2 3(4 5) 6) 7 8(9)";
    kestu_tree_t *sample() {
        kestu_tree_t *top[10] = {}, *root = nullptr;
        for (const uint32_t tag : {1, 7, 8})
            EXPECT_OK(kestu_tree_append(&root, tag, &objects[tag], &top[tag], pool));
        child(top[1], 2);
        kestu_tree_t *const three = child(top[1], 3);
        child(top[1], 6);
        child(three, 4);
        child(three, 5);
        child(top[8], 9);
        return top[7];
    }
    kestu_tree_t *find(kestu_tree_t *root, uint32_t tag) {
        return kestu_tree_search_obj(root, &objects[tag]);
    }

    Pool pool;
    char objects[32] = {};
};

// Callbacks after the children, which note negative tags.
void leave(uint32_t tag, void *data, void *trace) {
    see(-tag, data, trace);
}
int leave_int(uint32_t tag, void *data, void *trace) {
    return see_int(-tag, data, trace);
}
kestu_error_t *leave_err(uint32_t tag, void *data, void *trace) {
    return see_err(-tag, data, trace);
}

const Tags whole_walk = {1, 2, -2, 3, 4, -4, 5, -5, -3, 6, -6, -1, 7, -7, 8, 9, -9, -8};

// What a walk with the given callbacks shows.
Tags seen_in(kestu_tree_t *node, kestu_visit_func pre, kestu_visit_func post) {
    Trace trace;
    kestu_tree_walk(node, pre, post, &trace);
    return trace.seen;
}

} // namespace

TEST_F(Tree, NodesGoWhereTheFunctionSaysAndTheHandleStays) {
    const struct {
        decltype(&kestu_tree_append) add;
        const char *shape;
    } cases[] = {{kestu_tree_prepend, "9 8 7"},
                 {kestu_tree_append, "7 8 9"},
                 {kestu_tree_add_before, "8 9 7"},
                 {kestu_tree_add_after, "7 9 8"}};
    for (const auto &[add, shape] : cases) {
        kestu_tree_t *root = nullptr, *out = nullptr;
        ASSERT_OK(add(&root, 7, nullptr, nullptr, pool));
        ASSERT_OK(add(&root, 8, nullptr, nullptr, pool));
        ASSERT_OK(add(&root, 9, &pool, &out, pool));
        EXPECT_EQ(root->tag, 7u);
        EXPECT_EQ(checked_shape(root), shape);
        uint32_t tag = 0;
        EXPECT_EQ(kestu_tree_get_data_tag(out, &tag), &pool);
        EXPECT_EQ(tag, 9u);
        kestu_tree_update(out, 0xFFFFFFFF, &tag);
        EXPECT_EQ(kestu_tree_get_data_tag(out, nullptr), &tag);
        EXPECT_EQ(out->tag, 0xFFFFFFFF);
    }
}

TEST_F(Tree, ChildIsTheOneThatCameFirst) {
    kestu_tree_t *const parent = sample(), *const entry = child(parent, 12);
    for (const uint32_t tag : {11u, 10u})
        ASSERT_OK(kestu_tree_prepend_child(parent, tag, nullptr, nullptr, pool));
    EXPECT_EQ(kestu_tree_get_child(parent), entry);
    EXPECT_EQ(checked_shape(parent), "1(2 3(4 5) 6) 7(10 11 12) 8(9)");
}

TEST_F(Tree, LinkingRefusesNullAndLeavesANodeWhereItStandsAlready) {
    kestu_tree_t *const root = sample();
    for (auto insert : {kestu_tree_insert_before, kestu_tree_insert_after}) {
        EXPECT_THAT(take_lines(insert(nullptr, root)),
                    ElementsAre("Error(120120): Tree insertion error: invalid pointer. "));
        EXPECT_CHAIN(insert(root, nullptr), 120120, "");
        EXPECT_OK(insert(root, root));
    }
    EXPECT_OK(kestu_tree_insert_before(root, root->prev));
    EXPECT_OK(kestu_tree_insert_after(root, root->next));
    EXPECT_EQ(checked_shape(root), sample_shape);
}

TEST_F(Tree, NullIsHarmless) {
    uint32_t tag = 77;
    kestu_tree_t *root = nullptr;
    for (auto get :
         {kestu_tree_get_prev, kestu_tree_get_next, kestu_tree_get_parent, kestu_tree_get_child,
          kestu_tree_get_first, kestu_tree_get_last, kestu_tree_get_top, kestu_tree_extract})
        EXPECT_EQ(get(nullptr), nullptr);
    EXPECT_EQ(kestu_tree_get_data_tag(nullptr, &tag), nullptr);
    EXPECT_EQ(tag, 77u);
    EXPECT_EQ(kestu_tree_count(nullptr), 0u);
    EXPECT_EQ(kestu_tree_search_func(nullptr, see_int, nullptr), nullptr);
    EXPECT_THAT(seen_in(nullptr, see, leave), ElementsAre());
    EXPECT_EQ(kestu_tree_walk_int_first(nullptr, see_int, nullptr, nullptr), 0);
    EXPECT_OK(kestu_tree_walk_err_first(nullptr, see_err, nullptr, nullptr));
    EXPECT_EQ(kestu_tree_search_obj(nullptr, nullptr), nullptr);
    for (auto remove :
         {kestu_tree_node_delete, kestu_tree_delete, kestu_treem_node_delete, kestu_treem_delete})
        remove(nullptr);
    for (auto remove :
         {kestu_tree_node_delete_func, kestu_tree_delete_func, kestu_treem_delete_func})
        remove(nullptr, see, nullptr);
    for (auto remove : {kestu_tree_node_delete_errfunc, kestu_tree_delete_errfunc})
        EXPECT_OK(remove(nullptr, see_err, nullptr));
    kestu_tree_delete_obj_func(nullptr, &tag, see, nullptr);
    EXPECT_OK(kestu_tree_delete_obj_errfunc(nullptr, &tag, see_err, nullptr));
    kestu_treem_destroy_func(&root, see, nullptr);
    for (auto add : {kestu_tree_prepend_child, kestu_tree_append_child})
        EXPECT_CHAIN(add(nullptr, 1, nullptr, &root, pool), 120120, "");
    EXPECT_CHAIN(kestu_treem_append_child(nullptr, 1, nullptr, &root), 120120, "");
    EXPECT_EQ(root, nullptr);
}

TEST_F(Tree, WalksCoverTheWholeLevelInThePromisedOrder) {
    kestu_tree_t *const root = sample();
    EXPECT_EQ(seen_in(root, see, leave), whole_walk);
    EXPECT_THAT(seen_in(root, see, nullptr), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_THAT(seen_in(root, nullptr, see), ElementsAre(2, 4, 5, 3, 6, 1, 7, 9, 8));
    EXPECT_THAT(seen_in(root, nullptr, nullptr), ElementsAre());
    ASSERT_OK(kestu_tree_prepend_child(find(root, 3), 10, nullptr, nullptr, pool));
    EXPECT_THAT(seen_in(find(root, 6), see, nullptr), ElementsAre(2, 3, 10, 4, 5, 6));
    EXPECT_EQ(kestu_tree_count(find(root, 6)), 6u);
}

// Every call of both callbacks, one after the other, ends the walk.
TEST_F(Tree, TheFirstResultEndsAWalkAtOnce) {
    kestu_tree_t *const root = sample();
    kestu_error_t *const failure = kestu_error_create(0, 1, nullptr, "stop");
    for (size_t n = 1; n <= whole_walk.size(); ++n) {
        const Tags expected(whole_walk.begin(), whole_walk.begin() + static_cast<ptrdiff_t>(n));
        Trace ints{expected.back()};
        EXPECT_EQ(kestu_tree_walk_int_first(root, see_int, leave_int, &ints), expected.back());
        EXPECT_EQ(ints.seen, expected);
        for (kestu_error_t *const err : {failure, KestuDLlistStopWalking}) {
            Trace errors{expected.back(), err};
            EXPECT_EQ(kestu_tree_walk_err_first(root, see_err, leave_err, &errors), err);
            EXPECT_EQ(errors.seen, expected);
        }
    }
    kestu_error_clear(failure);
    Trace whole;
    EXPECT_EQ(kestu_tree_walk_int_first(root, see_int, leave_int, &whole), 0);
    EXPECT_OK(kestu_tree_walk_err_first(root, nullptr, see_err, &whole));
    EXPECT_EQ(whole.seen.size(), whole_walk.size() + 9);
}

TEST_F(Tree, SearchesFindTheFirstParentsBeforeChildren) {
    kestu_tree_t *const root = sample();
    find(root, 5)->data = &objects[7];
    EXPECT_EQ(find(root, 7)->tag, 5u);
    EXPECT_EQ(find(find(root, 3), 1), nullptr); // never above
    EXPECT_EQ(kestu_tree_get_top(find(root, 9))->tag, 8u);
    const auto above = [](uint32_t tag, void *, void *limit) {
        return tag > *static_cast<uint32_t *>(limit) ? -1 : 0;
    };
    uint32_t limit = 2;
    EXPECT_EQ(kestu_tree_search_func(root, above, &limit)->tag, 3u);
    limit = 9;
    EXPECT_EQ(kestu_tree_search_func(root, above, &limit), nullptr);
}

TEST_F(Tree, DeletionCallsLeavesFirstOnNodesAlreadyOut) {
    kestu_tree_t *const root = sample();
    const auto is_out = [](uint32_t, void *data, void *node) {
        EXPECT_EQ(kestu_tree_search_obj(static_cast<kestu_tree_t *>(node), data), nullptr);
    };
    Trace trace;
    kestu_tree_node_delete_func(find(root, 4), is_out, root);
    for (int i = 0; i < 2; ++i) // the second time, it is not there any more
        kestu_tree_delete_obj_func(root, &objects[8], see, &trace);
    EXPECT_THAT(trace.seen, ElementsAre(9, 8));
    EXPECT_EQ(checked_shape(root), "1(2 3(5) 6) 7");
    kestu_tree_delete_func(find(root, 2), is_out, root);
    EXPECT_EQ(checked_shape(root), "1 7");
}

TEST_F(Tree, DestroyingFreesHeapNodesAndForgetsThoseOfPools) {
    kestu_tree_t *const seven = sample();
    kestu_tree_t *root = seven, *two = nullptr;
    kestu_tree_destroy(&root);
    EXPECT_EQ(root, nullptr);
    EXPECT_EQ(checked_shape(seven), sample_shape);
    Trace trace;
    trace.seen.reserve(3);
    const long before = live_blocks();
    for (const bool is_told : {true, false}) {
        for (const uint32_t tag : {1u, 2u})
            ASSERT_OK(kestu_treem_append(&root, tag, nullptr, &two));
        ASSERT_OK(kestu_treem_append(&two->child, 3, nullptr, nullptr)); // as a level of its own
        is_told ? kestu_treem_destroy_func(&root, see, &trace) : kestu_treem_destroy(&root);
        EXPECT_EQ(root, nullptr);
        EXPECT_EQ(live_blocks(), before);
    }
    EXPECT_THAT(trace.seen, ElementsAre(1, 3, 2));
}

// The deletion is stopped at each of its calls: the nodes handed out so far are out, all others are
// linked as before.
TEST_F(Tree, AnErrorStopsADeletionAndTheRestStaysLinked) {
    const std::pair<int, const char *> stops[] = {{2, "1(3(4 5) 6) 7 8(9)"},
                                                  {4, "1(3(5) 6) 7 8(9)"},
                                                  {5, "1(3 6) 7 8(9)"},
                                                  {3, "1(6) 7 8(9)"},
                                                  {6, "1 7 8(9)"},
                                                  {1, "7 8(9)"},
                                                  {7, "8(9)"},
                                                  {9, "8"},
                                                  {8, ""}};
    Tags gone;
    for (const auto &[tag, left] : stops) {
        kestu_tree_t *const root = sample(), *const last = root->next;
        gone.push_back(tag);
        EXPECT_THAT(ended(kestu_tree_delete_errfunc, root, see_err, tag),
                    testing::Pair(KestuDLlistStopWalking, gone));
        EXPECT_EQ(checked_shape(tag == 8 ? nullptr : last), left);
    }
    kestu_tree_t *const root = sample();
    Trace trace{5}, none;
    EXPECT_EQ(kestu_tree_delete_obj_errfunc(root, &objects[3], see_err, &trace),
              KestuDLlistStopWalking);
    EXPECT_EQ(checked_shape(root), "1(2 3 6) 7 8(9)");
    EXPECT_OK(kestu_tree_delete_obj_errfunc(root, &objects[4], see_err, &none));
    EXPECT_OK(kestu_tree_node_delete_errfunc(find(root, 8), see_err, &none));
    EXPECT_THAT(none.seen, ElementsAre(9, 8));
}

TEST_F(Tree, NoMemoryIsReportedAndNothingIsTouched) {
    kestu_tree_t *root = sample(), *out = root, *none = nullptr;
    apr_pool_t *const p = pool;
    const auto refused = [&](auto add, auto... arguments) {
        return pool.without_memory([&] { return add(arguments...); });
    };
    const auto text = [](const char *message) { return Element(120012, message); };
    const Element cause = text("Failed to allocate 48 bytes of memory."),
                  made = text("Can't allocate memory for treem node."),
                  append = text("Unable to append Tree node."),
                  append_child = text("Unable to append child Tree node.");
    const struct {
        decltype(&kestu_tree_append) add;
        Element message;
    } cases[] = {{kestu_tree_append, append},
                 {kestu_tree_prepend, text("Unable to prepend Tree node.")},
                 {kestu_tree_add_before, text("Unable to add Tree node.")},
                 {kestu_tree_add_after, text("Unable to add Tree node.")}};
    for (kestu_tree_t **handle : {&root, &none}) {
        for (const auto &[add, message] : cases)
            EXPECT_CHAIN(refused(add, handle, 2, nullptr, &out, p), message, cause);
        EXPECT_CHAIN(refused(kestu_treem_append, handle, 2, nullptr, &out), append, made, cause);
    }
    EXPECT_CHAIN(refused(kestu_tree_prepend_child, root, 2, nullptr, &out, p),
                 text("Unable to prepend child Tree node."), cause);
    EXPECT_CHAIN(refused(kestu_tree_append_child, root, 2, nullptr, &out, p), append_child, cause);
    EXPECT_CHAIN(refused(kestu_treem_append_child, root, 2, nullptr, &out), append_child, made,
                 cause);
    EXPECT_EQ(out, root);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(checked_shape(root), sample_shape);
    EXPECT_OK(refused(kestu_tree_create, 2, nullptr, &out, p));
    EXPECT_EQ(out, nullptr);
    EXPECT_CHAIN(refused(kestu_treem_create, 2, nullptr, &root), made, cause);
    EXPECT_EQ(root, nullptr);
}

TYPED_TEST(TreeBoth, AMillionLevelsNeedNoStack) {
    constexpr uint32_t levels = 1000000;
    run_on_small_stack([&] {
        const long before = live_blocks();
        kestu_tree_t *root = nullptr, *node = nullptr;
        kestu_error_t *err = this->f.append(&root, 0, &node);
        for (uint32_t tag = 1; !err && tag < levels; ++tag)
            err = this->f.append_child(node, tag, &node);
        EXPECT_OK(err);
        EXPECT_EQ(kestu_tree_count(root), levels);
        EXPECT_EQ(kestu_tree_get_top(node), root);
        const auto descending = [](uint32_t tag, void *, void *expected) -> int {
            return tag != --*static_cast<uint32_t *>(expected);
        };
        uint32_t expected = levels;
        EXPECT_EQ(kestu_tree_walk_int_first(root, nullptr, descending, &expected), 0);
        EXPECT_EQ(kestu_tree_search_obj(root, &root), nullptr);
        while (node->tag > levels / 2)
            node = node->parent;
        this->f.remove_subtree(node);
        EXPECT_EQ(kestu_tree_count(root), levels / 2);
        this->f.remove_level(root);
        EXPECT_EQ(live_blocks(), before);
    });
}

TYPED_TEST(TreeBoth, RandomStepsKeepAllLinks) {
    on_random_inputs(20, 2000, [](Input &input) { TreeModel<TypeParam>(input).run(); });
}
