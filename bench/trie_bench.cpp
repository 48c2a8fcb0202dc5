// Tries of words, of random 8-byte keys and of long keys with shared beginnings, beside the ordered
// and the hashed maps that people take for them.
#include "kestu_lib.h"
#include "kestu_trie.h"
#include "key_maps.hpp"

#include <array>

namespace {

struct Heap {
    kestu_trie_t *trie = nullptr;
    Heap() { kestu_error_clear(kestu_triem_create(&trie)); }
    ~Heap() { kestu_triem_destroy(&trie); }
    void insert(const std::string &key) {
        kestu_error_clear(kestu_triem_insert(trie, key.data(), key.size(), value_of(key)));
    }
    void *find(const std::string &key) { return kestu_trie_search(trie, key.data(), key.size()); }
    void erase(const std::string &key) { kestu_triem_delete(trie, key.data(), key.size()); }
};

struct Pooled {
    apr_pool_t *pool = nullptr;
    kestu_trie_t *trie = nullptr;
    Pooled() {
        apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
        kestu_error_clear(kestu_trie_create(&trie, pool));
    }
    ~Pooled() { apr_pool_destroy(pool); }
    void insert(const std::string &key) {
        kestu_error_clear(kestu_trie_insert(trie, key.data(), key.size(), value_of(key), pool));
    }
    void *find(const std::string &key) { return kestu_trie_search(trie, key.data(), key.size()); }
    void erase(const std::string &key) { kestu_trie_delete(trie, key.data(), key.size()); }
};

// Every node on the way of a key counts the keys below it, and these nodes are given by the keys:
// the limit is adding to their counts, all known beforehand.
void count_along_ways(benchmark::State &state, const Keys &keys) {
    measure_in_child(state, [&] {
        const Heap &map = filled<Heap>(keys);
        std::vector<uint32_t *> counts;
        for (const auto &key : keys.sought) {
            kestu_trie_node_t *node = map.trie->root;
            for (size_t depth = 0; depth < 2 * key.size() && node->type == KESTU_TRIE_INNER;
                 ++depth) {
                auto *inner = reinterpret_cast<kestu_trie_inner_t *>(node);
                counts.push_back(&inner->count);
                const auto byte = static_cast<uint8_t>(key[depth / 2]);
                node = inner->children[byte >> depth % 2 * 4 & 15];
            }
        }
        return seconds_for([&] {
            for (uint32_t *count : counts)
                *count += 1;
            benchmark::ClobberMemory();
        });
    });
}

void add_limit(const Keys &keys) {
    const std::string name = "trie insertion, " + keys.name + "/limit (counting along the ways)";
    benchmark::RegisterBenchmark(
        name.c_str(), [&keys](benchmark::State &state) { count_along_ways(state, keys); })
        ->Apply(in_children)
        ->Iterations(1);
}

} // namespace

// Each kind of ours beside the map of the standard library, and beside the fastest there are.
int main(int argc, char **argv) {
    kestu_initialize();
    static const std::array<Keys, 4> all = {words(), numbers(), paths("paths in 200 folders", 200),
                                            paths("paths in 2000 folders", 2000)};
    for (const Keys &keys : all) {
        cases<Heap>("trie", keys, "", "ours");
        add_limit(keys);
        cases<Ordered>("trie", keys, "", "std map");
        cases<Pooled>("trie", keys, ", pool", "ours");
        cases<Ordered>("trie", keys, ", pool", "std map");
        cases<Heap>("trie", keys, ", beside the fastest", "ours");
        cases<Hashed>("trie", keys, ", beside the fastest", "std unordered_map");
        cases<Boost>("trie", keys, ", beside the fastest", "boost unordered_map");
        cases<JudyHash>("trie", keys, ", beside the fastest", "JudyHS");
        if (&keys != &all[1])
            cases<JudyText>("trie", keys, ", beside the fastest", "JudySL");
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kestu_terminate();
}
