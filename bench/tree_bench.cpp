// A tree of a million nodes, eight below each parent, beside GLib's GNode: built level by level,
// walked, searched and released. The limits are the allocations by themselves, and the callback
// over an array of nodes.
#include "in_child.hpp"
#include "kestu_lib.h"
#include "kestu_tree.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr size_t size = 1000000;
constexpr size_t fan_out = 8;

void add_tag(uint32_t tag, void *, void *sum) {
    *static_cast<uint64_t *>(sum) += tag;
}

// What both kinds of our nodes share.
struct Ours {
    using Node = kestu_tree_t;
    static uint64_t walk(Node *root, bool children_first) {
        uint64_t sum = 0;
        kestu_tree_walk(root, children_first ? nullptr : add_tag,
                        children_first ? add_tag : nullptr, &sum);
        return sum;
    }
    static uint64_t count(Node *root) { return kestu_tree_count(root); }
    static Node *find(Node *root, void *data) { return kestu_tree_search_obj(root, data); }
};

struct Heap : Ours {
    static Node *add(Node *parent, uint32_t tag) {
        Node *node = nullptr;
        if (kestu_error_t *err = parent ? kestu_treem_append_child(parent, tag, nullptr, &node)
                                        : kestu_treem_create(tag, nullptr, &node))
            kestu_error_malfunction(err);
        return node;
    }
    static void begin() {}
    static void release(Node *root) { kestu_treem_destroy(&root); }
    static void *allocate(size_t bytes) { return std::malloc(bytes); }
    static void release_blocks(const std::vector<void *> &blocks) {
        for (void *block : blocks)
            std::free(block);
    }
};

struct Pooled : Ours {
    static inline apr_pool_t *pool = nullptr;
    static Node *add(Node *parent, uint32_t tag) {
        Node *node = nullptr;
        if (kestu_error_t *err = parent ? kestu_tree_append_child(parent, tag, nullptr, &node, pool)
                                        : kestu_tree_create(tag, nullptr, &node, pool))
            kestu_error_malfunction(err);
        return node;
    }
    static void begin() { apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr); }
    static void release(Node *) { apr_pool_destroy(pool); }
    static void *allocate(size_t bytes) { return apr_palloc(pool, bytes); }
    static void release_blocks(const std::vector<void *> &) { apr_pool_destroy(pool); }
};

struct Glib {
    using Node = GNode;
    static Node *add(Node *parent, uint32_t tag) {
        void *data = GUINT_TO_POINTER(tag);
        return parent ? g_node_append_data(parent, data) : g_node_new(data);
    }
    static void begin() {}
    static void release(Node *root) { g_node_destroy(root); }
    static uint64_t walk(Node *root, bool children_first) {
        uint64_t sum = 0;
        const auto add = [](GNode *node, void *baton) -> gboolean {
            *static_cast<uint64_t *>(baton) += GPOINTER_TO_UINT(node->data);
            return FALSE;
        };
        g_node_traverse(root, children_first ? G_POST_ORDER : G_PRE_ORDER, G_TRAVERSE_ALL, -1, add,
                        &sum);
        return sum;
    }
    static uint64_t count(Node *root) { return g_node_n_nodes(root, G_TRAVERSE_ALL); }
    static Node *find(Node *root, void *data) {
        return g_node_find(root, G_PRE_ORDER, G_TRAVERSE_ALL, data);
    }
};

// The nodes of the tree that is being built, level by level.
std::vector<void *> all_nodes;

template <typename Tree>
typename Tree::Node *make() {
    auto **nodes = reinterpret_cast<typename Tree::Node **>(all_nodes.data());
    Tree::begin();
    nodes[0] = Tree::add(nullptr, 0);
    for (size_t i = 1; i < size; ++i)
        nodes[i] = Tree::add(nodes[(i - 1) / fan_out], static_cast<uint32_t>(i));
    return nodes[0];
}

// What the allocators cost by themselves: a block for each node, and each block written.
template <typename Kind>
struct Bare : Kind {
    using Node = void;
    static Node *add(Node *, uint32_t) {
        return std::memset(Kind::allocate(sizeof(kestu_tree_t)), 1, sizeof(kestu_tree_t));
    }
    static void release(Node *) { Kind::release_blocks(all_nodes); }
};

// The first tree of a process, in memory that comes fresh from the system.
template <typename Tree>
void first_build(benchmark::State &state) {
    measure_in_child(state, [] {
        all_nodes.assign(size, nullptr);
        return seconds_for([] { benchmark::DoNotOptimize(make<Tree>()); });
    });
}

// Another tree, in memory that the first has given back.
template <typename Tree>
void next_build(benchmark::State &state) {
    measure_in_child(state, [] {
        all_nodes.assign(size, nullptr);
        Tree::release(make<Tree>());
        return seconds_for([] { benchmark::DoNotOptimize(make<Tree>()); });
    });
}

template <typename Tree>
void release(benchmark::State &state) {
    measure_in_child(state, [] {
        all_nodes.assign(size, nullptr);
        auto *root = make<Tree>();
        return seconds_for([&] { Tree::release(root); });
    });
}

template <typename Tree>
void life(benchmark::State &state) {
    const auto live = [] {
        auto *root = make<Tree>();
        benchmark::DoNotOptimize(Tree::walk(root, false));
        Tree::release(root);
    };
    measure_in_child(state, [&] {
        all_nodes.assign(size, nullptr);
        live();
        return seconds_for(live);
    });
}

// Uses a tree for the second time.
template <typename Tree, typename Use>
void use(benchmark::State &state, Use how) {
    measure_in_child(state, [&] {
        all_nodes.assign(size, nullptr);
        auto *root = make<Tree>();
        benchmark::DoNotOptimize(how(root));
        return seconds_for([&] { benchmark::DoNotOptimize(how(root)); });
    });
}

template <typename Tree>
void walk(benchmark::State &state) {
    use<Tree>(state, [](auto *root) { return Tree::walk(root, false); });
}

template <typename Tree>
void walk_back(benchmark::State &state) {
    use<Tree>(state, [](auto *root) { return Tree::walk(root, true); });
}

template <typename Tree>
void count(benchmark::State &state) {
    use<Tree>(state, Tree::count);
}

template <typename Tree>
void miss(benchmark::State &state) {
    use<Tree>(state, [](auto *root) { return Tree::find(root, &root); });
}

// The callback over nodes that lie in a row.
void array(benchmark::State &state) {
    measure_in_child(state, [] {
        std::vector<kestu_tree_t> nodes(size);
        kestu_visit_func call = add_tag;
        return seconds_for([&] {
            uint64_t sum = 0;
            benchmark::DoNotOptimize(call);
            for (const auto &node : nodes)
                call(node.tag, node.data, &sum);
            benchmark::DoNotOptimize(sum);
        });
    });
}

template <typename Tree>
void cases(const std::string &kind) {
    const auto add = [&kind](const char *name, const char *who, void (*run)(benchmark::State &)) {
        benchmark::RegisterBenchmark((name + kind + who).c_str(), run)->Apply(in_children);
    };
    const auto beside = [&add](const char *name, auto ours, auto peers) {
        add(name, "/ours", ours);
        add(name, "/GNode", peers);
    };
    beside("tree of 1M nodes, first, ", first_build<Tree>, first_build<Glib>);
    add("tree of 1M nodes, first, ", "/limit (allocations)", first_build<Bare<Tree>>);
    beside("tree of 1M nodes, next, ", next_build<Tree>, next_build<Glib>);
    add("tree of 1M nodes, next, ", "/limit (allocations)", next_build<Bare<Tree>>);
    beside("tree walk, ", walk<Tree>, walk<Glib>);
    add("tree walk, ", "/limit (calls over an array)", array);
    beside("tree walk children first, ", walk_back<Tree>, walk_back<Glib>);
    beside("tree count, ", count<Tree>, count<Glib>);
    beside("tree search, ", miss<Tree>, miss<Glib>);
    beside("tree release, ", release<Tree>, release<Glib>);
    add("tree release, ", "/limit (releasing blocks)", release<Bare<Tree>>);
    beside("tree build, walk and release, ", life<Tree>, life<Glib>);
}

} // namespace

int main(int argc, char **argv) {
    kestu_initialize();
    cases<Heap>("malloc");
    cases<Pooled>("pool");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kestu_terminate();
}
