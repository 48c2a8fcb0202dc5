// A tree of a million nodes, eight below each parent, beside GLib's GNode: built level by level,
// walked, searched and released. The limits are the allocations by themselves, and the callback
// over an array of nodes.
#include "kestu_lib.h"
#include "kestu_tree.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <cstdlib>
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
        if (parent)
            kestu_error_clear(kestu_treem_append_child(parent, tag, nullptr, &node));
        else
            kestu_error_clear(kestu_treem_create(tag, nullptr, &node));
        return node;
    }
    static void begin() {}
    static void release(Node *root) { kestu_treem_destroy(&root); }
};

struct Pooled : Ours {
    static inline apr_pool_t *pool = nullptr;
    static Node *add(Node *parent, uint32_t tag) {
        Node *node = nullptr;
        if (parent)
            kestu_error_clear(kestu_tree_append_child(parent, tag, nullptr, &node, pool));
        else
            kestu_error_clear(kestu_tree_create(tag, nullptr, &node, pool));
        return node;
    }
    static void begin() { apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr); }
    static void release(Node *) { apr_pool_destroy(pool); }
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
std::vector<void *> all_nodes(size);

template <typename Tree>
typename Tree::Node *make() {
    auto **nodes = reinterpret_cast<typename Tree::Node **>(all_nodes.data());
    Tree::begin();
    nodes[0] = Tree::add(nullptr, 0);
    for (size_t i = 1; i < size; ++i)
        nodes[i] = Tree::add(nodes[(i - 1) / fan_out], static_cast<uint32_t>(i));
    return nodes[0];
}

template <typename Tree>
void build(benchmark::State &state) {
    for (auto _ : state) {
        auto *root = make<Tree>();
        benchmark::DoNotOptimize(root);
        state.PauseTiming();
        Tree::release(root);
        state.ResumeTiming();
    }
}

template <typename Tree>
void release(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto *root = make<Tree>();
        state.ResumeTiming();
        Tree::release(root);
    }
}

template <typename Tree>
void live(benchmark::State &state) {
    for (auto _ : state) {
        auto *root = make<Tree>();
        benchmark::DoNotOptimize(Tree::walk(root, false));
        Tree::release(root);
    }
}

// The trees that are walked are made before all others, so that each lies in memory as its
// allocator hands it out at first.
template <typename Tree>
typename Tree::Node *standing = nullptr;

template <typename Tree, typename Use>
void use(benchmark::State &state, Use how) {
    for (auto _ : state)
        benchmark::DoNotOptimize(how(standing<Tree>));
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

void mallocs(benchmark::State &state) {
    std::vector<void *> blocks(size);
    for (auto _ : state) {
        for (auto &block : blocks)
            block = std::malloc(sizeof(kestu_tree_t));
        state.PauseTiming();
        for (auto &block : blocks)
            std::free(block);
        state.ResumeTiming();
    }
}

void frees(benchmark::State &state) {
    std::vector<void *> blocks(size);
    for (auto _ : state) {
        state.PauseTiming();
        for (auto &block : blocks)
            block = std::malloc(sizeof(kestu_tree_t));
        state.ResumeTiming();
        for (auto &block : blocks)
            std::free(block);
    }
}

void pool_allocations(benchmark::State &state) {
    for (auto _ : state) {
        Pooled::begin();
        for (size_t i = 0; i < size; ++i)
            benchmark::DoNotOptimize(apr_palloc(Pooled::pool, sizeof(kestu_tree_t)));
        state.PauseTiming();
        Pooled::release(nullptr);
        state.ResumeTiming();
    }
}

void array(benchmark::State &state) {
    std::vector<kestu_tree_t> nodes(size);
    kestu_visit_func call = add_tag;
    for (auto _ : state) {
        uint64_t sum = 0;
        benchmark::DoNotOptimize(call);
        for (const auto &node : nodes)
            call(node.tag, node.data, &sum);
        benchmark::DoNotOptimize(sum);
    }
}

template <typename Tree>
void cases(const std::string &kind, void (*allocate)(benchmark::State &)) {
    const auto add = [](const std::string &name, void (*run)(benchmark::State &)) {
        benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
    };
    const std::string build_name = "tree build, " + kind, release_name = "tree release, " + kind,
                      walk_name = "tree walk, " + kind,
                      back_name = "tree walk children first, " + kind,
                      count_name = "tree count, " + kind,
                      life_name = "tree build, walk and release, " + kind,
                      miss_name = "tree search, " + kind;
    add(build_name + "/ours", build<Tree>);
    add(build_name + "/GNode", build<Glib>);
    add(build_name + "/limit (allocations)", allocate);
    add(walk_name + "/ours", walk<Tree>);
    add(walk_name + "/GNode", walk<Glib>);
    add(walk_name + "/limit (calls over an array)", array);
    add(back_name + "/ours", walk_back<Tree>);
    add(back_name + "/GNode", walk_back<Glib>);
    add(count_name + "/ours", count<Tree>);
    add(count_name + "/GNode", count<Glib>);
    add(miss_name + "/ours", miss<Tree>);
    add(miss_name + "/GNode", miss<Glib>);
    add(life_name + "/ours", live<Tree>);
    add(life_name + "/GNode", live<Glib>);
    add(release_name + "/ours", release<Tree>);
    add(release_name + "/GNode", release<Glib>);
}

} // namespace

int main(int argc, char **argv) {
    kestu_initialize();
    standing<Heap> = make<Heap>();
    standing<Pooled> = make<Pooled>();
    standing<Glib> = make<Glib>();
    cases<Heap>("malloc", mallocs);
    cases<Pooled>("pool", pool_allocations);
    benchmark::RegisterBenchmark("tree release, malloc/limit (frees)", frees)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kestu_terminate();
}
