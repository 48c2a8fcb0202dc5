// Lists of a million nodes: building, walking, sorting and deleting; beside std::list, whose nodes
// come from the same allocator as those of the `dlm` functions, and GList, whose nodes come in
// slices.
#include "in_child.hpp"
#include "kestu_dl.h"
#include "kestu_lib.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <cstdlib>
#include <cstring>
#include <list>
#include <random>
#include <vector>

namespace {

constexpr uint32_t nodes = 1000000;

struct Datum {
    uint32_t tag;
    void *data;
};

void add_tag(uint32_t tag, void *, void *sum) {
    *static_cast<uint64_t *>(sum) += tag;
}

int by_tag(uint32_t tag_a, void *, uint32_t tag_b, void *, void *) {
    return (tag_a > tag_b) - (tag_a < tag_b);
}

using Order = std::mt19937;

void shuffle_tags(kestu_dl_t *list, Order &order) {
    for (; list; list = list->next)
        list->tag = static_cast<uint32_t>(order());
}

// Builds a list as any loop that wants speed: `add` links a node behind the handle it is given, and
// moves that to the new node.
template <typename Add>
kestu_dl_t *build_list(Add add) {
    kestu_dl_t *first = nullptr, *last = nullptr;
    for (uint32_t i = 0; i < nodes; ++i) {
        if (kestu_error_t *err = add(&last, i)) {
            kestu_error_clear(err);
            break;
        }
        first = first ? first : last;
    }
    return first;
}

struct HeapNodes {
    kestu_dl_t *list = nullptr;

    void build() {
        list = build_list([](kestu_dl_t **last, uint32_t tag) {
            return kestu_dlm_add_after(last, tag, nullptr, last);
        });
    }
    uint64_t walk() {
        uint64_t sum = 0;
        kestu_dl_walk(list, add_tag, &sum);
        return sum;
    }
    void shuffle(Order &order) { shuffle_tags(list, order); }
    void sort() { kestu_dlm_sort(&list, by_tag, nullptr); }
    void destroy() { kestu_dlm_destroy(&list); }
};

// Appending looks for the last node from the handle on, which is that node.
struct AppendedHeapNodes : HeapNodes {
    void build() {
        list = build_list([](kestu_dl_t **last, uint32_t tag) {
            return kestu_dlm_append(last, tag, nullptr, last);
        });
    }
};

struct PoolNodes {
    kestu_dl_t *list = nullptr;
    apr_pool_t *pool = nullptr;

    void build() {
        apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
        list = build_list([this](kestu_dl_t **last, uint32_t tag) {
            return kestu_dl_add_after(last, tag, nullptr, last, pool);
        });
    }
    uint64_t walk() {
        uint64_t sum = 0;
        kestu_dl_walk(list, add_tag, &sum);
        return sum;
    }
    void destroy() {
        kestu_dl_destroy(&list);
        apr_pool_destroy(pool);
    }
};

struct StdList {
    std::list<Datum> list;

    void build() {
        for (uint32_t i = 0; i < nodes; ++i)
            list.push_back({i, nullptr});
    }
    uint64_t walk() {
        uint64_t sum = 0;
        for (const Datum &datum : list)
            add_tag(datum.tag, datum.data, &sum);
        return sum;
    }
    void shuffle(Order &order) {
        for (Datum &datum : list)
            datum.tag = static_cast<uint32_t>(order());
    }
    void sort() {
        list.sort([](const Datum &a, const Datum &b) { return a.tag < b.tag; });
    }
    void destroy() { list.clear(); }
};

// A GList node holds one pointer, so tag and datum stand in records, which are made beforehand.
// Prepending is the fastest way to build a GList.
struct GLibList {
    GList *list = nullptr;
    std::vector<Datum> records = std::vector<Datum>(nodes);

    void build() {
        for (Datum &record : records)
            list = g_list_prepend(list, &record);
    }
    uint64_t walk() {
        uint64_t sum = 0;
        const auto add = [](void *data, void *s) {
            const auto *record = static_cast<Datum *>(data);
            add_tag(record->tag, record->data, s);
        };
        g_list_foreach(list, add, &sum);
        return sum;
    }
    void shuffle(Order &order) {
        for (Datum &record : records)
            record.tag = static_cast<uint32_t>(order());
    }
    void sort() {
        list = g_list_sort(list, [](const void *a, const void *b) {
            return by_tag(static_cast<const Datum *>(a)->tag, nullptr,
                          static_cast<const Datum *>(b)->tag, nullptr, nullptr);
        });
    }
    void destroy() {
        g_list_free(list);
        list = nullptr;
    }
};

// What the allocators cost by themselves: a block for each node, and each block written.
template <typename Allocate>
void fill_blocks(Allocate allocate) {
    for (uint32_t i = 0; i < nodes; ++i)
        std::memset(allocate(i), 1, sizeof(kestu_dl_t));
}

struct BareBlocks {
    std::vector<void *> blocks = std::vector<void *>(nodes);

    void build() {
        fill_blocks([this](uint32_t i) { return blocks[i] = std::malloc(sizeof(kestu_dl_t)); });
    }
    void destroy() {
        for (void *block : blocks)
            std::free(block);
    }
};

struct BarePoolBlocks {
    apr_pool_t *pool = nullptr;

    void build() {
        apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
        fill_blocks([this](uint32_t) { return apr_palloc(pool, sizeof(kestu_dl_t)); });
    }
    void destroy() { apr_pool_destroy(pool); }
};

// The first list of a process, in memory that comes fresh from the system.
template <typename List>
void first_build(benchmark::State &state) {
    measure_in_child(state, [] {
        List list;
        return seconds_for([&] { list.build(); });
    });
}

// Another list, in memory that the first has given back.
template <typename List>
void next_build(benchmark::State &state) {
    measure_in_child(state, [] {
        List list;
        list.build();
        list.destroy();
        return seconds_for([&] { list.build(); });
    });
}

template <typename List>
void walk(benchmark::State &state) {
    measure_in_child(state, [] {
        List list;
        list.build();
        benchmark::DoNotOptimize(list.walk());
        return seconds_for([&] { benchmark::DoNotOptimize(list.walk()); });
    });
}

template <typename List>
void sort(benchmark::State &state) {
    measure_in_child(state, [] {
        List list;
        Order order;
        list.build();
        list.shuffle(order);
        return seconds_for([&] { list.sort(); });
    });
}

template <typename List>
void destroy(benchmark::State &state) {
    measure_in_child(state, [] {
        List list;
        list.build();
        return seconds_for([&] { list.destroy(); });
    });
}

#define CASE(work, List, name) BENCHMARK_TEMPLATE(work, List)->Name(name)->Apply(in_children)

CASE(first_build, HeapNodes, "list of 1M malloc nodes, first/ours");
CASE(first_build, StdList, "list of 1M malloc nodes, first/C++ list");
CASE(first_build, BareBlocks, "list of 1M malloc nodes, first/limit (malloc)");
CASE(next_build, HeapNodes, "list of 1M malloc nodes, next/ours");
CASE(next_build, StdList, "list of 1M malloc nodes, next/C++ list");
CASE(next_build, BareBlocks, "list of 1M malloc nodes, next/limit (malloc)");
CASE(next_build, AppendedHeapNodes, "list of 1M malloc nodes, appended/ours");
CASE(next_build, StdList, "list of 1M malloc nodes, appended/C++ list");
CASE(first_build, PoolNodes, "list of 1M pool nodes, first/ours");
CASE(first_build, GLibList, "list of 1M pool nodes, first/GList");
CASE(first_build, BarePoolBlocks, "list of 1M pool nodes, first/limit (apr_palloc)");
CASE(next_build, PoolNodes, "list of 1M pool nodes, next/ours");
CASE(next_build, GLibList, "list of 1M pool nodes, next/GList");
CASE(next_build, BarePoolBlocks, "list of 1M pool nodes, next/limit (apr_palloc)");
CASE(walk, HeapNodes, "list walk, 1M malloc nodes/ours");
CASE(walk, StdList, "list walk, 1M malloc nodes/C++ list");
CASE(walk, PoolNodes, "list walk, 1M pool nodes/ours");
CASE(walk, GLibList, "list walk, 1M pool nodes/GList");
CASE(sort, HeapNodes, "list sort, 1M malloc nodes/ours");
CASE(sort, StdList, "list sort, 1M malloc nodes/C++ list");
CASE(sort, GLibList, "list sort, 1M malloc nodes/GList");
CASE(destroy, HeapNodes, "list deletion, 1M malloc nodes/ours");
CASE(destroy, StdList, "list deletion, 1M malloc nodes/C++ list");
CASE(destroy, BareBlocks, "list deletion, 1M malloc nodes/limit (free)");
CASE(destroy, PoolNodes, "list deletion, 1M pool nodes/ours");
CASE(destroy, GLibList, "list deletion, 1M pool nodes/GList");

} // namespace
