// Objects and signals: emission to 1, 10 and 1000 slots, each for an object of its own; connecting
// and disconnecting, with the hidden slots that tie lives; creating and destroying; large families.
// Beside GObject, libsigc++ and boost.signals2, a bare loop over function pointers, and APR's pools
// without objects.
#include "in_child.hpp"

#include "kestu_lib.h"
#include "kestu_objsig.h"

#include <benchmark/benchmark.h>
#include <boost/signals2.hpp>
#include <glib-object.h>
#include <sigc++/sigc++.h>

#include <string>
#include <vector>

namespace {

uint64_t sum = 0;

[[gnu::noinline]] void slot(kestu_obj_t *, uint32_t, kestu_obj_t *, void *, void *argument) {
    sum += *static_cast<int *>(argument);
}

[[gnu::noinline]] void plain_slot(int *argument) {
    sum += static_cast<uint64_t>(*argument);
}

[[gnu::noinline]] void object_slot(GObject *, int *argument, void *) {
    sum += static_cast<uint64_t>(*argument);
}

constexpr uint32_t signal_code = 100;
int argument = 1;

// Objects that know each other, in a pool of their own.
class Family {
  public:
    explicit Family(size_t size) : members(size) {
        apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
        for (kestu_obj_t *&member : members) {
            kestu_error_clear(kestu_obj_create(&member, nullptr, pool));
            kestu_error_clear(kestu_obj_add_signal(member, signal_code));
        }
    }
    ~Family() { apr_pool_destroy(pool); }

    std::vector<kestu_obj_t *> members;
    apr_pool_t *pool = nullptr;
};

void emit_ours(benchmark::State &state, size_t slots) {
    Family family(slots + 1);
    for (size_t i = 1; i < family.members.size(); ++i)
        kestu_error_clear(
            kestu_obj_connect(family.members[0], signal_code, family.members[i], slot, nullptr));
    for (auto _ : state)
        benchmark::DoNotOptimize(kestu_obj_emit_signal(family.members[0], signal_code, &argument));
}

guint gobject_signal() {
    static const guint id =
        g_signal_new("kestu-bench", G_TYPE_OBJECT, G_SIGNAL_RUN_LAST, 0, nullptr, nullptr,
                     g_cclosure_marshal_VOID__POINTER, G_TYPE_NONE, 1, G_TYPE_POINTER);
    return id;
}

GObject *new_gobject() {
    return static_cast<GObject *>(g_object_new(G_TYPE_OBJECT, nullptr));
}

void emit_gobject(benchmark::State &state, size_t slots) {
    const guint id = gobject_signal();
    GObject *source = new_gobject();
    std::vector<GObject *> others(slots);
    for (GObject *&other : others) {
        other = new_gobject();
        g_signal_connect_object(source, "kestu-bench", G_CALLBACK(object_slot), other,
                                static_cast<GConnectFlags>(0));
    }
    for (auto _ : state)
        g_signal_emit(source, id, 0, &argument);
    for (GObject *other : others)
        g_object_unref(other);
    g_object_unref(source);
}

struct Tracked : sigc::trackable {
    void receive(int *number) { plain_slot(number); }
};

void emit_sigc(benchmark::State &state, size_t slots) {
    sigc::signal<void, int *> signal;
    std::vector<Tracked> others(slots);
    for (Tracked &other : others)
        signal.connect(sigc::mem_fun(other, &Tracked::receive));
    for (auto _ : state)
        signal.emit(&argument);
}

void emit_boost(benchmark::State &state, size_t slots) {
    boost::signals2::signal<void(int *)> signal;
    for (size_t i = 0; i < slots; ++i)
        signal.connect(plain_slot);
    for (auto _ : state)
        signal(&argument);
}

void emit_loop(benchmark::State &state, size_t slots) {
    std::vector<void (*)(int *)> functions(slots, plain_slot);
    benchmark::DoNotOptimize(functions.data());
    for (auto _ : state)
        for (auto *function : functions)
            function(&argument);
}

void connect_ours(benchmark::State &state) {
    Family family(2);
    kestu_obj_t *source = family.members[0], *destination = family.members[1];
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            kestu_obj_connect(source, signal_code, destination, slot, nullptr));
        kestu_obj_disconnect(source, 0xFFFFFFFF, destination, nullptr);
        kestu_obj_disconnect(destination, 0xFFFFFFFF, source, nullptr);
    }
}

void connect_gobject(benchmark::State &state) {
    gobject_signal();
    GObject *source = new_gobject(), *destination = new_gobject();
    for (auto _ : state) {
        const gulong id = g_signal_connect_object(source, "kestu-bench", G_CALLBACK(object_slot),
                                                  destination, static_cast<GConnectFlags>(0));
        g_signal_handler_disconnect(source, id);
    }
    g_object_unref(source);
    g_object_unref(destination);
}

void connect_sigc(benchmark::State &state) {
    sigc::signal<void, int *> signal;
    Tracked other;
    for (auto _ : state) {
        sigc::connection connection = signal.connect(sigc::mem_fun(other, &Tracked::receive));
        connection.disconnect();
    }
}

void create_ours(benchmark::State &state) {
    for (auto _ : state) {
        kestu_obj_t *parent = nullptr, *child = nullptr;
        kestu_error_clear(kestu_obj_create(&parent, "parent", kestu_pool));
        kestu_error_clear(kestu_obj_create(&child, "child", kestu_obj_get_pool(parent)));
        kestu_error_clear(kestu_obj_addc(parent, child));
        kestu_obj_destroy(parent);
    }
}

void create_gobject(benchmark::State &state) {
    for (auto _ : state) {
        GObject *parent = new_gobject();
        g_object_set_data_full(parent, "child", new_gobject(), g_object_unref);
        g_object_unref(parent);
    }
}

constexpr size_t depth = 100'000;
constexpr size_t width = 1'000'000;

kestu_obj_t *new_object(apr_pool_t *pool) {
    kestu_obj_t *obj = nullptr;
    kestu_error_clear(kestu_obj_create(&obj, nullptr, pool));
    return obj;
}

// Destroying a chain of objects, each in the pool of its parent.
double chain_ours() {
    kestu_obj_t *top = new_object(kestu_pool), *last = top;
    for (size_t i = 1; i < depth; ++i) {
        kestu_obj_t *child = new_object(kestu_obj_get_pool(last));
        kestu_error_clear(kestu_obj_addc(last, child));
        last = child;
    }
    return seconds_for([&] { kestu_obj_destroy(top); });
}

double chain_of_pools() {
    apr_pool_t *top = nullptr, *last = nullptr;
    apr_pool_create_ex(&top, kestu_pool, nullptr, nullptr);
    last = top;
    for (size_t i = 1; i < depth; ++i)
        apr_pool_create_ex(&last, last, nullptr, nullptr);
    return seconds_for([&] { apr_pool_destroy(top); });
}

// Adding children to one parent, and destroying them all.
double wide_ours() {
    kestu_obj_t *top = new_object(kestu_pool);
    std::vector<kestu_obj_t *> children(width);
    for (kestu_obj_t *&child : children)
        child = new_object(kestu_pool);
    return seconds_for([&] {
        for (kestu_obj_t *child : children)
            kestu_error_clear(kestu_obj_addc(top, child));
        kestu_obj_destroy(top);
    });
}

double wide_of_pools() {
    apr_pool_t *top = nullptr, *child = nullptr;
    apr_pool_create_ex(&top, kestu_pool, nullptr, nullptr);
    for (size_t i = 0; i < width; ++i)
        apr_pool_create_ex(&child, top, nullptr, nullptr);
    return seconds_for([&] { apr_pool_destroy(top); });
}

void register_family(const char *name, double (*body)()) {
    benchmark::RegisterBenchmark(name,
                                 [body](benchmark::State &state) { measure_in_child(state, body); })
        ->Apply(in_children)
        ->Iterations(1);
}

} // namespace

int main(int argc, char **argv) {
    kestu_initialize();
    for (const size_t slots : {1, 10, 1000}) {
        const std::string name = "emit to " + std::to_string(slots) + "/";
        benchmark::RegisterBenchmark((name + "ours").c_str(), emit_ours, slots);
        benchmark::RegisterBenchmark((name + "GObject").c_str(), emit_gobject, slots);
        benchmark::RegisterBenchmark((name + "libsigc++").c_str(), emit_sigc, slots);
        benchmark::RegisterBenchmark((name + "boost.signals2").c_str(), emit_boost, slots);
        benchmark::RegisterBenchmark((name + "limit (bare loop)").c_str(), emit_loop, slots);
    }
    benchmark::RegisterBenchmark("connect and disconnect/ours", connect_ours);
    benchmark::RegisterBenchmark("connect and disconnect/GObject", connect_gobject);
    benchmark::RegisterBenchmark("connect and disconnect/libsigc++", connect_sigc);
    benchmark::RegisterBenchmark("create with a named child/ours", create_ours);
    benchmark::RegisterBenchmark("create with a named child/GObject", create_gobject);
    register_family("destroy 100000 deep/ours", chain_ours);
    register_family("destroy 100000 deep/limit (bare pools)", chain_of_pools);
    register_family("add and destroy 1000000 wide/ours", wide_ours);
    register_family("add and destroy 1000000 wide/limit (bare pools)", wide_of_pools);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kestu_terminate();
}
