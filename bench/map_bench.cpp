// Ordered maps of words, of random 8-byte keys and of long keys with shared beginnings, beside the
// ordered and the hashed maps that people take for them; and the keys behind a prefix.
#include "kestu_lib.h"
#include "kestu_map.h"
#include "key_maps.hpp"

#include <glib.h>

#include <array>

namespace {

struct Radix {
    kestu_map_t *map = nullptr;
    Radix() { kestu_error_clear(kestu_map_create(&map, nullptr)); }
    ~Radix() { kestu_map_destroy(&map); }
    void insert(const std::string &key) {
        kestu_error_clear(kestu_map_insert(map, key.data(), key.size(), value_of(key)));
    }
    void *find(const std::string &key) {
        void *value = nullptr;
        kestu_map_find(map, key.data(), key.size(), &value);
        return value;
    }
    void erase(const std::string &key) { kestu_map_delete(map, key.data(), key.size(), nullptr); }
};

// For keys without zero bytes.
struct GLib {
    GHashTable *table = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, nullptr);
    ~GLib() { g_hash_table_destroy(table); }
    void insert(const std::string &key) {
        g_hash_table_insert(table, g_strdup(key.c_str()), value_of(key));
    }
    void *find(const std::string &key) { return g_hash_table_lookup(table, key.c_str()); }
    void erase(const std::string &key) { g_hash_table_remove(table, key.c_str()); }
};

// 200 prefixes with 1,000 keys each, in random order.
const Keys &prefixed() {
    static const Keys keys = [] {
        std::mt19937_64 random(1);
        Keys made = {"1,000 keys each"};
        for (int i = 0; i < 200000; ++i)
            made.present.push_back("/srv/data/projects/" + std::to_string(1000 + i / 1000) + "/" +
                                   std::to_string(random()) + ".tif");
        std::shuffle(made.present.begin(), made.present.end(), random);
        return made;
    }();
    return keys;
}

// Adds up the lengths of all keys, prefix by prefix.
template <typename Map, typename Scan>
void scan(benchmark::State &state, Scan scan_prefix) {
    measure_in_child(state, [&] {
        Map &map = filled<Map>(prefixed());
        size_t bytes = 0;
        const double seconds = seconds_for([&] {
            for (int i = 1000; i < 1200; ++i)
                bytes += scan_prefix(map, "/srv/data/projects/" + std::to_string(i) + "/");
        });
        benchmark::DoNotOptimize(bytes);
        return seconds;
    });
}

size_t scan_ours(Radix &radix, const std::string &prefix) {
    size_t bytes = 0;
    const auto add = [](const void *, size_t length, void *, void *sum) {
        *static_cast<size_t *>(sum) += length;
        return 0;
    };
    kestu_map_walk_prefix(radix.map, prefix.data(), prefix.size(), add, &bytes);
    return bytes;
}

size_t scan_standard(Ordered &ordered, const std::string &prefix) {
    size_t bytes = 0;
    const auto &map = ordered.map;
    for (auto at = map.lower_bound(prefix); at != map.end() && at->first.starts_with(prefix); ++at)
        bytes += at->first.size();
    return bytes;
}

} // namespace

int main(int argc, char **argv) {
    kestu_initialize();
    static const std::array<Keys, 3> all = {words(), numbers(),
                                            paths("paths in 2000 folders", 2000)};
    for (const Keys &keys : all) {
        cases<Radix>("map", keys, "", "ours");
        cases<Hashed>("map", keys, "", "std unordered_map");
        cases<Ordered>("map", keys, "", "std map");
        if (&keys == &all[1])
            continue;
        cases<GLib>("map", keys, "", "GHashTable");
        cases<JudyText>("map", keys, "", "JudySL");
    }
    prefixed();
    const auto add = [](const char *name, auto run) {
        benchmark::RegisterBenchmark(name, run)->Apply(in_children)->Iterations(1);
    };
    add("map prefixes, 1,000 keys each/ours",
        [](benchmark::State &state) { scan<Radix>(state, scan_ours); });
    add("map prefixes, 1,000 keys each/std map",
        [](benchmark::State &state) { scan<Ordered>(state, scan_standard); });
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kestu_terminate();
}
