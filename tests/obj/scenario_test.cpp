// Objects that connect, disconnect, emit and destroy each other from inside slots and cleanups, at
// random. A model knows which connections of plain signals there are; the address sanitizer knows
// the rest.
#include "kestu_objsig.h"

#include "support/chain.hpp"
#include "support/pool.hpp"

#include <algorithm>
#include <map>
#include <random>
#include <set>

using namespace kestu::test;

namespace {

constexpr uint32_t first_code = 100;
constexpr int code_count = 3;

class World {
  public:
    World(unsigned seed, bool quiet) : random(seed), quiet_slots(quiet) {}

    ~World() {
        quiet_slots = true;
        while (!alive.empty())
            kestu_obj_destroy(*alive.begin());
    }

    void step();
    // Emits every signal of every object and expects just the calls that the model has.
    void check();

  private:
    using Key = std::tuple<kestu_obj_t *, uint32_t, kestu_obj_t *>;

    static void slot(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *world,
                     void *argument);
    static void on_cleanup(kestu_obj_t *obj, void *world);

    int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
    kestu_obj_t *any() {
        return alive.empty() ? nullptr : *std::next(alive.begin(), below(int(alive.size())));
    }
    uint32_t any_code() { return first_code + static_cast<uint32_t>(below(code_count)); }

    void create();
    void connect();
    void disconnect();
    void change_family();

    std::mt19937 random;
    bool quiet_slots;
    int depth = 0;
    Pool pool;
    std::set<kestu_obj_t *> alive;
    std::set<Key> connections;
    std::map<Key, int> called;
};

void World::slot(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *baton,
                 void *checking) {
    auto &world = *static_cast<World *>(baton);
    if (checking) {
        ++world.called[{source, code, destination}];
        return;
    }
    EXPECT_TRUE(world.alive.count(source));
    EXPECT_TRUE(world.alive.count(destination));
    if (!world.quiet_slots && world.depth < 4)
        world.step();
}

void World::on_cleanup(kestu_obj_t *obj, void *baton) {
    auto &world = *static_cast<World *>(baton);
    world.alive.erase(obj);
    std::erase_if(world.connections, [obj](const Key &key) {
        return std::get<0>(key) == obj || std::get<2>(key) == obj;
    });
    if (!world.quiet_slots && world.depth < 4)
        world.step();
}

void World::create() {
    static const char *const names[] = {nullptr, "a", "b", "c"};
    kestu_obj_t *owner = below(2) ? any() : nullptr;
    kestu_obj_t *obj = nullptr;
    ASSERT_OK(kestu_obj_create(&obj, names[below(4)], owner ? kestu_obj_get_pool(owner) : pool));
    ASSERT_OK(kestu_obj_cleanup_register(obj, on_cleanup, this));
    for (uint32_t code = first_code; code < first_code + code_count; ++code)
        ASSERT_OK(kestu_obj_add_signal(obj, code));
    alive.insert(obj);
}

void World::connect() {
    kestu_obj_t *source = any(), *destination = any();
    const uint32_t code = any_code();
    ASSERT_OK(kestu_obj_connect(source, code, destination, slot, this));
    connections.insert({source, code, destination});
}

void World::disconnect() {
    kestu_obj_t *source = any(), *destination = below(4) ? any() : nullptr;
    const uint32_t code = below(4) || destination == source ? any_code() : 0xFFFFFFFF;
    if (code == 0xFFFFFFFF && !destination)
        return; // would take the hidden slots away too
    kestu_obj_disconnect(source, code, destination, below(2) && destination ? slot : nullptr);
    std::erase_if(connections, [&](const Key &key) {
        return std::get<0>(key) == source && (code == 0xFFFFFFFF || std::get<1>(key) == code) &&
               (!destination || std::get<2>(key) == destination);
    });
}

void World::change_family() {
    kestu_obj_t *parent = any(), *child = any();
    switch (below(4)) {
    case 0:
        kestu_obj_removec(parent, nullptr, child);
        break;
    case 1:
        kestu_obj_removec(parent, "a", nullptr);
        break;
    case 2:
        kestu_obj_removec_func(
            parent, [](uint32_t, void *, void *) { return 1; }, nullptr);
        break;
    default:
        kestu_error_clear(kestu_obj_addc(parent, child)); // the name may be taken
    }
}

void World::step() {
    ++depth;
    if (alive.size() < 3)
        create();
    switch (below(12)) {
    case 0:
    case 1:
        create();
        break;
    case 2:
    case 3:
    case 4:
        connect();
        break;
    case 5:
        disconnect();
        break;
    case 6:
        change_family();
        break;
    case 7:
        kestu_obj_destroy(any());
        break;
    default:
        kestu_error_clear(kestu_obj_emit_signal(any(), any_code(), nullptr));
    }
    --depth;
}

void World::check() {
    called.clear();
    for (kestu_obj_t *obj : alive)
        for (uint32_t code = first_code; code < first_code + code_count; ++code)
            ASSERT_OK(kestu_obj_emit_signal(obj, code, this));
    std::map<Key, int> expected;
    for (const Key &key : connections)
        expected[key] = 1;
    EXPECT_EQ(called, expected);
}

class Scenario : public testing::TestWithParam<unsigned> {};

} // namespace

// Without slots that act, the model tells every call.
TEST_P(Scenario, CallsWhatIsConnectedAndNothingElse) {
    World world(GetParam(), true);
    for (int i = 0; i < 400; ++i) {
        world.step();
        if (i % 10 == 0)
            world.check();
        if (HasFatalFailure() || HasNonfatalFailure())
            return;
    }
}

TEST_P(Scenario, ActingFromSlotsAndCleanupsIsSafe) {
    World world(GetParam(), false);
    for (int i = 0; i < 400; ++i)
        world.step();
}

INSTANTIATE_TEST_SUITE_P(Seeds, Scenario, testing::Range(1u, 21u));

// Every object destroys the next one when it is destroyed, around a ring.
TEST(Ring, OfObjectsThatDestroyEachOtherDestroysEachOnce) {
    Pool pool;
    static int destroyed;
    destroyed = 0;
    const auto destroy_next = [](kestu_obj_t *, uint32_t, kestu_obj_t *next, void *, void *) {
        kestu_obj_destroy(next);
    };
    std::vector<kestu_obj_t *> ring(10);
    for (kestu_obj_t *&obj : ring) {
        ASSERT_OK(kestu_obj_create(&obj, nullptr, pool));
        ASSERT_OK(kestu_obj_cleanup_register(
            obj, [](kestu_obj_t *, void *) { ++destroyed; }, nullptr));
    }
    for (size_t i = 0; i < ring.size(); ++i)
        ASSERT_OK(kestu_obj_connect(ring[i], KESTU_OBJ_SIGNAL_DESTROY, ring[(i + 1) % ring.size()],
                                    destroy_next, nullptr));
    kestu_obj_destroy(ring[3]);
    EXPECT_EQ(destroyed, 10);
}

// The child lives in the pool of the parent that its own slot destroys.
TEST(Ring, AChildMayDestroyTheParentInWhosePoolItLives) {
    Pool pool;
    kestu_obj_t *parent = nullptr, *child = nullptr;
    ASSERT_OK(kestu_obj_create(&parent, "parent", pool));
    ASSERT_OK(kestu_obj_create(&child, "child", kestu_obj_get_pool(parent)));
    ASSERT_OK(kestu_obj_addc(parent, child));
    const auto destroy_other = [](kestu_obj_t *, uint32_t, kestu_obj_t *other, void *, void *) {
        kestu_obj_destroy(other);
    };
    ASSERT_OK(kestu_obj_connect(child, KESTU_OBJ_SIGNAL_DESTROY, parent, destroy_other, nullptr));
    kestu_obj_destroy(child);
}
