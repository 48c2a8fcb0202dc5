// Lists of a million nodes: building, walking and deleting; beside std::list, whose nodes come from
// the same allocator as those of the `dlm` functions, and GList.
#include "kestu_dl.h"
#include "kestu_lib.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <cstdlib>
#include <list>
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
    void destroy() {
        g_list_free(list);
        list = nullptr;
    }
};

// What the allocator costs by itself.
struct BareBlocks {
    std::vector<void *> blocks = std::vector<void *>(nodes);

    void build() {
        for (void *&block : blocks)
            block = malloc(sizeof(kestu_dl_t));
    }
    void destroy() {
        for (void *block : blocks)
            free(block);
    }
};

template <typename List>
void build(benchmark::State &state) {
    List list;
    for (auto _ : state) {
        list.build();
        state.PauseTiming();
        list.destroy();
        state.ResumeTiming();
    }
}

template <typename List>
void walk(benchmark::State &state) {
    List list;
    list.build();
    for (auto _ : state)
        benchmark::DoNotOptimize(list.walk());
    list.destroy();
}

template <typename List>
void destroy(benchmark::State &state) {
    List list;
    for (auto _ : state) {
        state.PauseTiming();
        list.build();
        state.ResumeTiming();
        list.destroy();
    }
}

BENCHMARK_TEMPLATE(build, HeapNodes)->Name("build 1M malloc nodes/ours");
BENCHMARK_TEMPLATE(build, StdList)->Name("build 1M malloc nodes/C++ list");
BENCHMARK_TEMPLATE(build, BareBlocks)->Name("build 1M malloc nodes/limit (malloc)");
BENCHMARK_TEMPLATE(build, AppendedHeapNodes)->Name("append 1M malloc nodes/ours");
BENCHMARK_TEMPLATE(build, StdList)->Name("append 1M malloc nodes/C++ list");
BENCHMARK_TEMPLATE(build, PoolNodes)->Name("build 1M pool nodes/ours");
BENCHMARK_TEMPLATE(build, GLibList)->Name("build 1M pool nodes/GList");
BENCHMARK_TEMPLATE(walk, HeapNodes)->Name("walk 1M malloc nodes/ours");
BENCHMARK_TEMPLATE(walk, StdList)->Name("walk 1M malloc nodes/C++ list");
BENCHMARK_TEMPLATE(walk, PoolNodes)->Name("walk 1M pool nodes/ours");
BENCHMARK_TEMPLATE(walk, GLibList)->Name("walk 1M pool nodes/GList");
BENCHMARK_TEMPLATE(destroy, HeapNodes)->Name("delete 1M malloc nodes/ours");
BENCHMARK_TEMPLATE(destroy, StdList)->Name("delete 1M malloc nodes/C++ list");
BENCHMARK_TEMPLATE(destroy, BareBlocks)->Name("delete 1M malloc nodes/limit (free)");
BENCHMARK_TEMPLATE(destroy, PoolNodes)->Name("delete 1M pool nodes/ours");
BENCHMARK_TEMPLATE(destroy, GLibList)->Name("delete 1M pool nodes/GList");

} // namespace

int main(int argc, char **argv) {
    kestu_initialize();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kestu_terminate();
}
