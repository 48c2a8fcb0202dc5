// The tree: where nodes go, orders and ends of walks, what deletions leave, and links after all.
#include "kestu_tree.h"

#include "list_checks.hpp"
#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "support/pool.hpp"
#include "support/small_stack.hpp"

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>

using namespace kestu::test;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

// The functions that exist for both kinds of nodes, so that one test serves both.
struct PoolTree {
    static constexpr bool frees = false;
    Pool pool;
    auto create(uint32_t tag, void *data, kestu_tree_t **out) {
        return kestu_tree_create(tag, data, out, pool);
    }
    auto append(kestu_tree_t **root, uint32_t tag, void *data, kestu_tree_t **out) {
        return kestu_tree_append(root, tag, data, out, pool);
    }
    auto append_child(kestu_tree_t *parent, uint32_t tag, void *data, kestu_tree_t **out) {
        return kestu_tree_append_child(parent, tag, data, out, pool);
    }
    void remove_subtree(kestu_tree_t *node) { kestu_tree_node_delete(node); }
    void remove_level(kestu_tree_t *node) { kestu_tree_delete(node); }
    void remove_level(kestu_tree_t *node, kestu_visit_func fn, void *baton) {
        kestu_tree_delete_func(node, fn, baton);
    }
    void destroy(kestu_tree_t **root) { kestu_tree_destroy(root); }
};

struct HeapTree {
    static constexpr bool frees = true;
    auto create(uint32_t tag, void *data, kestu_tree_t **out) {
        return kestu_treem_create(tag, data, out);
    }
    auto append(kestu_tree_t **root, uint32_t tag, void *data, kestu_tree_t **out) {
        return kestu_treem_append(root, tag, data, out);
    }
    auto append_child(kestu_tree_t *parent, uint32_t tag, void *data, kestu_tree_t **out) {
        return kestu_treem_append_child(parent, tag, data, out);
    }
    void remove_subtree(kestu_tree_t *node) { kestu_treem_node_delete(node); }
    void remove_level(kestu_tree_t *node) { kestu_treem_delete(node); }
    void remove_level(kestu_tree_t *node, kestu_visit_func fn, void *baton) {
        kestu_treem_delete_func(node, fn, baton);
    }
    void destroy(kestu_tree_t **root) { kestu_treem_destroy(root); }
};

template <typename Tree>
class TreeBoth : public testing::Test {
  protected:
    Tree functions;
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
            EXPECT_EQ(node->child->parent, node);
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
    kestu_tree_t *top(kestu_tree_t *&root, uint32_t tag) {
        kestu_tree_t *node = nullptr;
        EXPECT_OK(kestu_tree_append(&root, tag, &objects[tag], &node, pool));
        return node;
    }

    // 1(2 3(4 5) 6) 7 8(9); the handle is the node 7.
    kestu_tree_t *sample() {
        kestu_tree_t *root = nullptr;
        kestu_tree_t *const one = top(root, 1);
        child(one, 2);
        kestu_tree_t *const three = child(one, 3);
        child(three, 4);
        child(three, 5);
        child(one, 6);
        kestu_tree_t *const seven = top(root, 7);
        child(top(root, 8), 9);
        EXPECT_EQ(checked_shape(seven), "1(2 3(4 5) 6) 7 8(9)");
        return seven;
    }
    kestu_tree_t *find(kestu_tree_t *root, uint32_t tag) {
        return kestu_tree_search_obj(root, &objects[tag]);
    }

    Pool pool;
    char objects[32] = {};
};

// What callbacks saw, as "+tag" before the children and "-tag" after; call number `stop_at` (0 is
// none) yields `err`, or 1 where numbers are returned.
struct Trace {
    size_t stop_at = 0;
    kestu_error_t *err = nullptr;
    std::vector<std::string> seen = {};

    bool add(char sign, uint32_t tag) {
        seen.push_back(std::string(1, sign).append(std::to_string(tag)));
        return seen.size() == stop_at;
    }
};

template <char Sign>
void see(uint32_t tag, void *, void *baton) {
    static_cast<Trace *>(baton)->add(Sign, tag);
}

template <char Sign>
int see_int(uint32_t tag, void *, void *baton) {
    return static_cast<Trace *>(baton)->add(Sign, tag) ? static_cast<int>(100 + tag) : 0;
}

template <char Sign>
kestu_error_t *see_err(uint32_t tag, void *, void *baton) {
    auto *trace = static_cast<Trace *>(baton);
    return trace->add(Sign, tag) ? trace->err : nullptr;
}

const std::vector<std::string> leaving_order = {"-2", "-4", "-5", "-3", "-6",
                                                "-1", "-7", "-9", "-8"};

std::vector<std::string> first_of(const std::vector<std::string> &all, size_t n) {
    return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(n)};
}

} // namespace

TEST_F(Tree, HeaderExample) {
    const auto print = [](uint32_t tag, void *data, void *stream) {
        fprintf(static_cast<FILE *>(stream), "%u=%s ", tag, static_cast<char *>(data));
    };
    char text[64] = "";
    FILE *stream = fmemopen(text, sizeof text, "w");
    char names[3][8] = {"fruit", "apple", "pear"};
    const auto build = [&]() -> kestu_error_t * {
        kestu_error_t *err;
        kestu_tree_t *tree = NULL, *fruit;
        if ((err = kestu_tree_append(&tree, 1, names[0], &fruit, pool)) ||
            (err = kestu_tree_append_child(fruit, 2, names[1], NULL, pool)) ||
            (err = kestu_tree_append_child(fruit, 3, names[2], NULL, pool)))
            return err;
        kestu_tree_walk(tree, print, NULL, stream);
        return NULL;
    };
    EXPECT_OK(build());
    fclose(stream);
    EXPECT_STREQ(text, "1=fruit 2=apple 3=pear ");
}

TEST_F(Tree, NodesGoWhereTheFunctionSaysAndTheHandleStays) {
    kestu_tree_t *root = nullptr, *out = nullptr;
    ASSERT_OK(kestu_tree_prepend(&root, 5, nullptr, &out, pool));
    EXPECT_EQ(out, root);
    kestu_tree_t *const handle = root;
    ASSERT_OK(kestu_tree_prepend(&root, 1, nullptr, nullptr, pool));
    ASSERT_OK(kestu_tree_append(&root, 9, nullptr, nullptr, pool));
    ASSERT_OK(kestu_tree_prepend(&root, 0, nullptr, nullptr, pool)); // before 1, not before 5
    ASSERT_OK(kestu_tree_add_before(&root, 4, nullptr, nullptr, pool));
    ASSERT_OK(kestu_tree_add_after(&root, 6, nullptr, nullptr, pool));
    EXPECT_EQ(root, handle);
    EXPECT_EQ(checked_shape(root), "0 1 4 5 6 9");
    ASSERT_OK(kestu_tree_append(&root, 10, nullptr, &root, pool));
    kestu_tree_update(root, 0xFFFFFFFFu, &out);
    uint32_t tag = 0;
    EXPECT_EQ(kestu_tree_get_data_tag(root, &tag), &out);
    EXPECT_EQ(kestu_tree_get_data_tag(root, nullptr), &out);
    EXPECT_EQ(tag, 0xFFFFFFFFu);
    for (auto add :
         {kestu_tree_prepend, kestu_tree_append, kestu_tree_add_before, kestu_tree_add_after}) {
        kestu_tree_t *empty = nullptr;
        ASSERT_OK(add(&empty, 7, &out, nullptr, pool));
        EXPECT_EQ(checked_shape(empty), "7");
        EXPECT_EQ(empty->data, &out);
    }
}

TEST_F(Tree, ChildIsTheOneThatCameFirstAndMovesOnlyWhenItIsExtracted) {
    kestu_tree_t *parent = nullptr;
    ASSERT_OK(kestu_tree_append(&parent, 1, nullptr, nullptr, pool));
    kestu_tree_t *const entry = child(parent, 5);
    for (const uint32_t tag : {4u, 3u})
        ASSERT_OK(kestu_tree_prepend_child(parent, tag, nullptr, nullptr, pool));
    kestu_tree_t *four = entry->prev;
    ASSERT_OK(kestu_tree_add_before(&four, 8, nullptr, nullptr, pool));
    child(parent, 6);
    EXPECT_EQ(parent->child, entry);
    EXPECT_EQ(kestu_tree_get_first(parent->child)->tag, 3u);
    EXPECT_EQ(checked_shape(parent), "1(3 8 4 5 6)");

    for (const uint32_t left : {4u, 8u, 3u, 6u}) { // to the previous, and else to the next
        kestu_tree_t *const gone = parent->child;
        EXPECT_EQ(kestu_tree_extract(gone), gone);
        EXPECT_EQ(checked_shape(gone), std::to_string(gone->tag));
        EXPECT_EQ(gone->parent, nullptr);
        EXPECT_EQ(parent->child->tag, left);
        checked_shape(parent);
    }
    kestu_tree_extract(parent->child);
    EXPECT_EQ(parent->child, nullptr);
}

TEST_F(Tree, LinkingTakesTheParentOfTheSiblingAndKeepsTheChildren) {
    kestu_tree_t *const root = sample();
    kestu_tree_t *const three = kestu_tree_extract(find(root, 3));
    EXPECT_EQ(checked_shape(three), "3(4 5)");
    EXPECT_EQ(checked_shape(root), "1(2 6) 7 8(9)");
    EXPECT_OK(kestu_tree_insert_before(find(root, 9), three));
    EXPECT_EQ(checked_shape(root), "1(2 6) 7 8(3(4 5) 9)");
    EXPECT_EQ(three->parent->child->tag, 9u);
    EXPECT_EQ(kestu_tree_get_top(find(root, 4))->tag, 8u);
    EXPECT_OK(kestu_tree_insert_after(find(root, 6), kestu_tree_extract(three)));
    EXPECT_OK(kestu_tree_insert_before(root, kestu_tree_extract(find(root, 2))));
    EXPECT_EQ(checked_shape(root), "1(6 3(4 5)) 2 7 8(9)");
    for (auto insert : {kestu_tree_insert_before, kestu_tree_insert_after}) {
        EXPECT_THAT(take_lines(insert(nullptr, three)),
                    ElementsAre("Error(120120): Tree insertion error: invalid pointer. "));
        EXPECT_CHAIN(insert(three, nullptr), Element(120120, ""));
        EXPECT_OK(insert(root, root));
    }
    EXPECT_OK(kestu_tree_insert_before(root, root->prev));
    EXPECT_OK(kestu_tree_insert_after(root, root->next));
    EXPECT_EQ(checked_shape(root), "1(6 3(4 5)) 2 7 8(9)");
}

TEST_F(Tree, NullIsHarmless) {
    uint32_t tag = 77;
    kestu_tree_t *root = nullptr;
    for (auto get :
         {kestu_tree_get_prev, kestu_tree_get_next, kestu_tree_get_parent, kestu_tree_get_child,
          kestu_tree_get_first, kestu_tree_get_last, kestu_tree_get_top, kestu_tree_extract})
        EXPECT_EQ(get(nullptr), nullptr);
    EXPECT_EQ(kestu_tree_get_data(nullptr), nullptr);
    EXPECT_EQ(kestu_tree_get_data_tag(nullptr, &tag), nullptr);
    EXPECT_EQ(tag, 77u);
    EXPECT_EQ(kestu_tree_count(nullptr), 0u);
    EXPECT_EQ(kestu_tree_search_obj(nullptr, nullptr), nullptr);
    EXPECT_EQ(kestu_tree_search_func(nullptr, see_int<'+'>, nullptr), nullptr);
    kestu_tree_walk(nullptr, see<'+'>, see<'-'>, nullptr);
    EXPECT_EQ(kestu_tree_walk_int_first(nullptr, see_int<'+'>, nullptr, nullptr), 0);
    EXPECT_OK(kestu_tree_walk_err_first(nullptr, see_err<'+'>, nullptr, nullptr));
    for (auto remove :
         {kestu_tree_node_delete, kestu_tree_delete, kestu_treem_node_delete, kestu_treem_delete})
        remove(nullptr);
    for (auto remove :
         {kestu_tree_node_delete_func, kestu_tree_delete_func, kestu_treem_delete_func})
        remove(nullptr, see<'-'>, nullptr);
    for (auto remove : {kestu_tree_node_delete_errfunc, kestu_tree_delete_errfunc})
        EXPECT_OK(remove(nullptr, see_err<'-'>, nullptr));
    kestu_tree_delete_obj_func(nullptr, &tag, see<'-'>, nullptr);
    EXPECT_OK(kestu_tree_delete_obj_errfunc(nullptr, &tag, see_err<'-'>, nullptr));
    kestu_tree_destroy(&root);
    kestu_treem_destroy(&root);
    kestu_treem_destroy_func(&root, see<'-'>, nullptr);
    for (auto add : {kestu_tree_prepend_child, kestu_tree_append_child})
        EXPECT_CHAIN(add(nullptr, 1, nullptr, &root, pool), Element(120120, ""));
    EXPECT_CHAIN(kestu_treem_append_child(nullptr, 1, nullptr, &root), Element(120120, ""));
    EXPECT_EQ(root, nullptr);
}

TEST_F(Tree, WalksCoverTheWholeLevelInThePromisedOrder) {
    kestu_tree_t *const root = sample();
    Trace pre, post, both, inner, none;
    kestu_tree_walk(root, see<'+'>, nullptr, &pre);
    EXPECT_THAT(pre.seen, ElementsAre("+1", "+2", "+3", "+4", "+5", "+6", "+7", "+8", "+9"));
    kestu_tree_walk(root, nullptr, see<'-'>, &post);
    EXPECT_EQ(post.seen, leaving_order);
    kestu_tree_walk(root, see<'+'>, see<'-'>, &both);
    EXPECT_THAT(both.seen, ElementsAre("+1", "+2", "-2", "+3", "+4", "-4", "+5", "-5", "-3", "+6",
                                       "-6", "-1", "+7", "-7", "+8", "+9", "-9", "-8"));
    kestu_tree_walk(find(root, 3), see<'+'>, nullptr, &inner);
    EXPECT_THAT(inner.seen, ElementsAre("+2", "+3", "+4", "+5", "+6"));
    kestu_tree_walk(root, nullptr, nullptr, &none);
    EXPECT_EQ(kestu_tree_count(root), 9u);
    EXPECT_EQ(kestu_tree_count(find(root, 5)), 2u);
    ASSERT_OK(kestu_tree_prepend_child(find(root, 3), 10, nullptr, nullptr, pool));
    Trace prepended;
    kestu_tree_walk(find(root, 4), see<'+'>, nullptr, &prepended);
    EXPECT_THAT(prepended.seen, ElementsAre("+10", "+4", "+5"));
}

// Every call of both callbacks, one after the other, ends the walk.
TEST_F(Tree, TheFirstResultEndsAWalkAtOnce) {
    kestu_tree_t *const root = sample();
    Trace all;
    kestu_tree_walk(root, see<'+'>, see<'-'>, &all);
    kestu_error_t *const failure = kestu_error_create(0, 1, nullptr, "stop");
    for (size_t n = 1; n <= all.seen.size(); ++n) {
        Trace ints{n};
        const int tag = std::stoi(all.seen[n - 1].substr(1));
        EXPECT_EQ(kestu_tree_walk_int_first(root, see_int<'+'>, see_int<'-'>, &ints), 100 + tag);
        EXPECT_EQ(ints.seen, first_of(all.seen, n));
        for (kestu_error_t *const err : {failure, KestuDLlistStopWalking}) {
            Trace errors{n, err};
            EXPECT_EQ(kestu_tree_walk_err_first(root, see_err<'+'>, see_err<'-'>, &errors), err);
            EXPECT_EQ(errors.seen, first_of(all.seen, n));
        }
    }
    kestu_error_clear(failure);
    Trace whole;
    EXPECT_EQ(kestu_tree_walk_int_first(root, see_int<'+'>, see_int<'-'>, &whole), 0);
    EXPECT_OK(kestu_tree_walk_err_first(root, nullptr, see_err<'-'>, &whole));
    EXPECT_EQ(whole.seen.size(), all.seen.size() + leaving_order.size());
}

TEST_F(Tree, SearchesFindTheFirstParentsBeforeChildren) {
    kestu_tree_t *const root = sample();
    kestu_tree_update(find(root, 5), 5, &objects[7]);
    EXPECT_EQ(find(root, 7)->tag, 5u);
    EXPECT_EQ(find(root->next, 2)->tag, 2u);
    EXPECT_EQ(find(find(root, 4), 6), nullptr);
    const auto above = [](uint32_t tag, void *, void *limit) {
        return tag > *static_cast<uint32_t *>(limit) ? -1 : 0;
    };
    uint32_t limit = 3;
    EXPECT_EQ(kestu_tree_search_func(root, above, &limit)->tag, 4u);
    limit = 9;
    EXPECT_EQ(kestu_tree_search_func(root, above, &limit), nullptr);
}

TYPED_TEST(TreeBoth, DeletionFromAMiddleSiblingTakesTheWholeLevel) {
    auto &f = this->functions;
    kestu_tree_t *root = nullptr, *two = nullptr;
    Trace trace;
    ASSERT_OK(f.append(&root, 1, nullptr, nullptr));
    ASSERT_OK(f.append(&root, 2, nullptr, &two));
    for (const uint32_t tag : {3u, 4u, 5u})
        ASSERT_OK(f.append_child(two, tag, nullptr, nullptr));
    f.remove_level(two->child->next, see<'-'>, &trace);
    EXPECT_THAT(trace.seen, ElementsAre("-3", "-4", "-5"));
    EXPECT_EQ(checked_shape(root), "1 2");
    ASSERT_OK(f.append_child(two, 9, nullptr, nullptr));
    const long before = live_blocks();
    f.remove_level(two);
    EXPECT_EQ(live_blocks(), before - (TypeParam::frees ? 3 : 0));
    root = nullptr;
    ASSERT_OK(f.append(&root, 1, nullptr, nullptr));
    f.destroy(&root);
    EXPECT_EQ(root, nullptr);
}

TEST_F(Tree, DeletionCallsLeavesFirstOnNodesAlreadyOut) {
    kestu_tree_t *const root = sample();
    Trace trace;
    kestu_tree_node_delete_func(find(root, 3), see<'-'>, &trace);
    EXPECT_THAT(trace.seen, ElementsAre("-4", "-5", "-3"));
    EXPECT_EQ(checked_shape(root), "1(2 6) 7 8(9)");
    kestu_tree_delete_obj_func(root, &objects[8], see<'-'>, &trace);
    kestu_tree_delete_obj_func(root, &objects[8], see<'-'>, &trace); // not there any more
    EXPECT_EQ(trace.seen.size(), 5u);
    EXPECT_EQ(checked_shape(root), "1(2 6) 7");
    const auto still_linked = [](uint32_t, void *data, void *baton) {
        EXPECT_EQ(kestu_tree_search_obj(static_cast<kestu_tree_t *>(baton), data), nullptr);
    };
    kestu_tree_delete_func(root->prev->child, still_linked, root);
    EXPECT_EQ(checked_shape(root), "1 7");

    kestu_tree_t *heap = nullptr, *parent = nullptr;
    EXPECT_OK(kestu_treem_append(&heap, 1, nullptr, nullptr));
    EXPECT_OK(kestu_treem_append(&heap, 2, nullptr, &parent));
    EXPECT_OK(kestu_treem_append_child(parent, 3, nullptr, nullptr));
    Trace destroyed;
    kestu_treem_destroy_func(&heap, see<'-'>, &destroyed);
    EXPECT_THAT(destroyed.seen, ElementsAre("-1", "-3", "-2"));
    EXPECT_EQ(heap, nullptr);
}

// The deletion is stopped at each of its calls: the nodes handed out so far are out, all others are
// linked as before.
TEST_F(Tree, AnErrorStopsADeletionAndTheRestStaysLinked) {
    const char *const left[] = {"1(3(4 5) 6) 7 8(9)",
                                "1(3(5) 6) 7 8(9)",
                                "1(3 6) 7 8(9)",
                                "1(6) 7 8(9)",
                                "1 7 8(9)",
                                "7 8(9)",
                                "8(9)",
                                "8",
                                ""};
    for (size_t n = 1; n <= leaving_order.size(); ++n) {
        kestu_tree_t *const root = sample();
        kestu_tree_t *const last = find(root, 8);
        Trace trace{n, KestuDLlistStopWalking};
        EXPECT_EQ(kestu_tree_delete_errfunc(root, see_err<'-'>, &trace), KestuDLlistStopWalking);
        EXPECT_EQ(trace.seen, first_of(leaving_order, n));
        EXPECT_EQ(checked_shape(n < 9 ? last : nullptr), left[n - 1]);
    }
    kestu_tree_t *const root = sample();
    Trace below{2, KestuDLlistStopWalking}, node{3, KestuDLlistStopWalking}, none;
    EXPECT_EQ(kestu_tree_node_delete_errfunc(find(root, 3), see_err<'-'>, &below),
              KestuDLlistStopWalking);
    EXPECT_EQ(checked_shape(root), "1(2 3 6) 7 8(9)");
    child(find(root, 3), 4);
    child(find(root, 3), 5);
    EXPECT_EQ(kestu_tree_delete_obj_errfunc(root, &objects[3], see_err<'-'>, &node),
              KestuDLlistStopWalking);
    EXPECT_EQ(checked_shape(root), "1(2 6) 7 8(9)");
    EXPECT_OK(kestu_tree_delete_obj_errfunc(root, &objects[3], see_err<'-'>, &none));
    EXPECT_OK(kestu_tree_node_delete_errfunc(find(root, 8), see_err<'-'>, &none));
    EXPECT_THAT(none.seen, ElementsAre("-9", "-8"));
}

TEST(TreeFailures, NoMemoryIsReportedAndNothingIsTouched) {
    kestu_tree_t *root = nullptr, *out = nullptr;
    ASSERT_OK(kestu_treem_append(&root, 1, nullptr, nullptr));
    const Element cause(120012, "Failed to allocate 48 bytes of memory.");
    const Element made(120012, "Can't allocate memory for treem node.");
    const auto failing = [](auto call) {
        AllocFailure failure(1);
        return call();
    };
    EXPECT_CHAIN(failing([&] { return kestu_treem_create(1, nullptr, &out); }), made, cause);
    out = root;
    EXPECT_CHAIN(failing([&] { return kestu_treem_append(&root, 2, nullptr, &out); }),
                 Element(120012, "Unable to append Tree node."), made, cause);
    EXPECT_CHAIN(failing([&] { return kestu_treem_append_child(root, 2, nullptr, &out); }),
                 Element(120012, "Unable to append child Tree node."), made, cause);
    EXPECT_EQ(out, root);
    EXPECT_EQ(checked_shape(root), "1");
    kestu_treem_destroy(&root);
    EXPECT_CHAIN(failing([&] { return kestu_treem_append(&root, 2, nullptr, nullptr); }),
                 Element(120012, "Unable to append Tree node."), made, cause);
    EXPECT_EQ(root, nullptr);
}

TEST_F(Tree, APoolWithoutMemoryIsReportedWhereANodeIsLinked) {
    kestu_tree_t *root = sample(), *out = root;
    EXPECT_CHAIN(pool.without_memory(
                     [&] { return kestu_tree_prepend_child(root, 10, nullptr, &out, pool); }),
                 Element(120012, "Unable to prepend child Tree node."),
                 Element(120012, "Failed to allocate 48 bytes of memory."));
    EXPECT_EQ(out, root);
    EXPECT_EQ(checked_shape(root), "1(2 3(4 5) 6) 7 8(9)");
}

TYPED_TEST(TreeBoth, AMillionLevelsNeedNoStack) {
    constexpr uint32_t levels = 1000000;
    auto &f = this->functions;
    run_on_small_stack([&] {
        const long before = live_blocks();
        kestu_tree_t *root = nullptr, *node = nullptr;
        kestu_error_t *err = f.append(&root, 0, nullptr, &node);
        for (uint32_t tag = 1; !err && tag < levels; ++tag)
            err = f.append_child(node, tag, nullptr, &node);
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
        f.remove_subtree(node);
        EXPECT_EQ(kestu_tree_count(root), levels / 2);
        f.remove_level(root);
        EXPECT_TRUE(!TypeParam::frees || live_blocks() == before);
    });
}

namespace {

// What a tree should be: as simple as can be, and written with other means. `entry` is the handle's
// node, or the parent's `child`.
struct Model {
    kestu_tree_t *node = nullptr;
    Model *parent = nullptr, *entry = nullptr;
    std::vector<std::unique_ptr<Model>> children = {};

    size_t place() const {
        size_t i = 0;
        while (parent->children[i].get() != this)
            ++i;
        return i;
    }
    void adopt(size_t at, std::unique_ptr<Model> child) {
        child->parent = this;
        entry = entry ? entry : child.get();
        children.insert(children.begin() + static_cast<std::ptrdiff_t>(at), std::move(child));
    }
    std::unique_ptr<Model> leave() {
        const size_t at = place();
        auto self = std::move(parent->children[at]);
        parent->children.erase(parent->children.begin() + static_cast<std::ptrdiff_t>(at));
        if (parent->entry == this)
            parent->entry =
                parent->children.empty() ? nullptr : parent->children[at > 0 ? at - 1 : at].get();
        return self;
    }
    void all(std::vector<Model *> &found) {
        for (const auto &child : children) {
            found.push_back(child.get());
            child->all(found);
        }
    }
};

void expect_as_model(const Model &model, kestu_tree_t *entry) {
    ASSERT_EQ(entry, model.entry ? model.entry->node : nullptr);
    const auto nodes = checked_nodes(entry);
    ASSERT_EQ(nodes.size(), model.children.size());
    for (size_t i = 0; i < nodes.size(); ++i) {
        ASSERT_EQ(nodes[i], model.children[i]->node);
        ASSERT_EQ(nodes[i]->parent, model.node);
        ASSERT_NO_FATAL_FAILURE(expect_as_model(*model.children[i], nodes[i]->child));
    }
}

} // namespace

TYPED_TEST(TreeBoth, RandomOperationsKeepAllLinksAsInAModel) {
    auto &f = this->functions;
    ASSERT_NO_FATAL_FAILURE(expect_as_model(Model{}, nullptr)); // takes what gtest keeps
    const long before = live_blocks();
    std::mt19937 random(4711);
    const auto below = [&random](size_t n) { return random() % n; };
    for (int round = 0; round < 20; ++round) {
        kestu_tree_t *root = nullptr;
        Model model;
        for (uint32_t tag = 1; tag < 400; ++tag) {
            std::vector<Model *> all;
            model.all(all);
            Model *const any = all.empty() ? nullptr : all[below(all.size())];
            const size_t what = any ? below(12) : 0;
            kestu_tree_t *node = nullptr;
            if (what < 2) {
                ASSERT_OK(f.append(&root, tag, &root, &node));
                model.adopt(model.children.size(), std::make_unique<Model>(Model{node}));
            } else if (what < 6) {
                ASSERT_OK(f.append_child(any->node, tag, &root, &node));
                any->adopt(any->children.size(), std::make_unique<Model>(Model{node}));
            } else if (what < 8) {
                ASSERT_OK(f.create(tag, &root, &node));
                const bool after = what == 7;
                ASSERT_OK(
                    (after ? kestu_tree_insert_after : kestu_tree_insert_before)(any->node, node));
                any->parent->adopt(any->place() + after, std::make_unique<Model>(Model{node}));
            } else if (what < 10) { // out of its place, and with its sub-tree beside another
                auto moved = any->leave();
                EXPECT_EQ(kestu_tree_extract(any->node), any->node);
                all.clear();
                model.all(all);
                root = model.entry ? model.entry->node : nullptr;
                if (all.empty()) {
                    f.remove_subtree(any->node);
                } else {
                    Model *const beside = all[below(all.size())];
                    ASSERT_OK(kestu_tree_insert_after(beside->node, any->node));
                    beside->parent->adopt(beside->place() + 1, std::move(moved));
                }
            } else if (what == 10) {
                f.remove_subtree(any->node);
                any->leave();
            } else if (Model *const parent = any->parent; parent->node && below(3) == 0) {
                f.remove_level(any->node);
                parent->children.clear();
                parent->entry = nullptr;
            }
            root = model.entry ? model.entry->node : nullptr;
            ASSERT_NO_FATAL_FAILURE(expect_as_model(model, root));
            all.clear();
            model.all(all);
            ASSERT_EQ(kestu_tree_count(root), all.size());
        }
        f.remove_level(root);
    }
    EXPECT_TRUE(!TypeParam::frees || live_blocks() == before);
}
