// Families with pools in each other's pools, in which objects create, connect, emit and destroy
// each other from inside slots and cleanups, at random, while APR destroys pools of its own accord.
// A model knows which connections there are and whose pool has to be gone; the address sanitizer
// knows the rest.
#include "kestu_objsig.h"

#include "support/chain.hpp"
#include "support/pool.hpp"

#include <algorithm>
#include <list>
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
            kestu_obj_destroy(any());
    }

    void step();
    // Emits every signal of every object and expects just the calls that the model has. Expects the
    // pools of the dead to be gone.
    void check();

  private:
    using Key = std::tuple<kestu_obj_t *, uint32_t, kestu_obj_t *>;

    // A pool of APR's or of an object.
    struct Place {
        World *world;
        apr_pool_t *pool;
        kestu_obj_t *owner;   // null for APR's
        bool is_dead = false; // the owner, that is
        bool is_gone = false;
    };

    static void slot(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *world,
                     void *argument);
    static void on_cleanup(kestu_obj_t *obj, void *place);
    static apr_status_t on_pool_end(void *place);

    int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
    template <typename Set>
    auto any_of(const Set &set) {
        return std::next(set.begin(), below(static_cast<int>(set.size())));
    }
    kestu_obj_t *any() { return *any_of(alive); }
    uint32_t any_code() { return first_code + static_cast<uint32_t>(below(code_count)); }
    apr_pool_t *any_pool();
    Place *keep(apr_pool_t *place, kestu_obj_t *owner);

    kestu_error_t *create(apr_pool_t *where);
    void create_somewhere();
    void create_pool();
    void end_pool();
    void clean_up_by_hand();
    void connect(kestu_obj_t *source, kestu_obj_t *destination);
    void replace();
    void disconnect();
    void change_family();

    std::mt19937 random;
    bool quiet_slots;
    int depth = 0;
    std::list<Place> places;
    std::set<kestu_obj_t *> alive;
    kestu_obj_t *newest = nullptr;
    std::set<kestu_obj_t *> dying; // cleaned up, but not forgotten yet
    std::set<Key> connections;
    std::map<Key, int> called;
    Pool pool;
};

void World::slot(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *baton,
                 void *checking) {
    auto &world = *static_cast<World *>(baton);
    if (checking) {
        ++world.called[{source, code, destination}];
        return;
    }
    EXPECT_TRUE(world.alive.count(source) || world.dying.count(source));
    EXPECT_TRUE(world.alive.count(destination) || world.dying.count(destination));
    if (!world.quiet_slots && world.depth < 4)
        world.step();
}

void World::on_cleanup(kestu_obj_t *obj, void *baton) {
    auto &place = *static_cast<Place *>(baton);
    World &world = *place.world;
    place.is_dead = true;
    world.alive.erase(obj);
    world.dying.insert(obj);
    std::erase_if(world.connections, [obj](const Key &key) {
        return std::get<0>(key) == obj || std::get<2>(key) == obj;
    });
    if (world.quiet_slots || world.depth >= 4)
        return;
    if (world.below(8) == 0)
        kestu_error_clear(world.create(obj->pool)); // it may be too late
    world.step();
}

apr_status_t World::on_pool_end(void *baton) {
    auto &place = *static_cast<Place *>(baton);
    place.is_gone = true;
    if (place.is_dead)
        place.world->dying.erase(place.owner);
    return APR_SUCCESS;
}

World::Place *World::keep(apr_pool_t *place, kestu_obj_t *owner) {
    places.push_back({this, place, owner});
    apr_pool_cleanup_register(place, &places.back(), on_pool_end, apr_pool_cleanup_null);
    return &places.back();
}

apr_pool_t *World::any_pool() {
    if (places.empty() || below(4) == 0)
        return pool;
    const Place &place = *any_of(places);
    return place.is_dead || place.is_gone ? static_cast<apr_pool_t *>(pool) : place.pool;
}

kestu_error_t *World::create(apr_pool_t *where) {
    static const char *const names[] = {nullptr, "a", "b", "c"};
    kestu_obj_t *obj = nullptr;
    kestu_error_t *err = kestu_obj_create(&obj, names[below(4)], where);
    if (err)
        return err;
    err = kestu_obj_cleanup_register(obj, on_cleanup, keep(obj->pool, obj));
    for (uint32_t code = first_code; !err && code < first_code + code_count; ++code)
        err = kestu_obj_add_signal(obj, code);
    alive.insert(obj);
    newest = obj;
    return err;
}

// It may be too late for a place that is going just now.
void World::create_somewhere() {
    kestu_error_t *err = create(any_pool());
    EXPECT_TRUE(!err || depth > 1);
    kestu_error_clear(err);
}

void World::create_pool() {
    apr_pool_t *made = nullptr;
    apr_pool_create_ex(&made, any_pool(), nullptr, nullptr);
    keep(made, nullptr);
}

// APR destroys or clears a pool, of its own or of an object.
void World::end_pool() {
    if (places.empty())
        return;
    const Place place = *any_of(places);
    if (place.is_gone)
        return;
    if (place.owner && below(2))
        apr_pool_clear(place.pool); // gone for the model, and with the pool above for APR
    else
        apr_pool_destroy(place.pool);
}

void World::clean_up_by_hand() {
    kestu_obj_t *obj = any();
    kestu_obj_cleanup(obj);
    kestu_obj_cleanup(obj);
    kestu_obj_destroy(obj);
}

void World::connect(kestu_obj_t *source, kestu_obj_t *destination) {
    if (!quiet_slots && below(8) == 0) {
        ASSERT_OK(kestu_obj_connect(source, KESTU_OBJ_SIGNAL_DESTROY, destination, slot, this));
        return;
    }
    const uint32_t code = any_code();
    ASSERT_OK(kestu_obj_connect(source, code, destination, slot, this));
    connections.insert({source, code, destination});
}

// APR gives the memory of the old to the new, and so the new has its address.
void World::replace() {
    kestu_obj_t *source = any();
    kestu_obj_destroy(any());
    ASSERT_OK(create(pool));
    if (alive.count(source))
        connect(source, newest);
}

// While signals are emitted, disconnecting from all of them would wait and take later connections
// with it.
void World::disconnect() {
    kestu_obj_t *source = any(), *destination = below(4) ? any() : nullptr;
    const bool from_all = depth == 1 && destination && destination != source && below(4) == 0;
    const uint32_t code = from_all ? 0xFFFFFFFF : any_code();
    kestu_obj_disconnect(source, code, destination, below(2) && destination ? slot : nullptr);
    std::erase_if(connections, [&](const Key &key) {
        return std::get<0>(key) == source && (from_all || std::get<1>(key) == code) &&
               (!destination || std::get<2>(key) == destination);
    });
}

void World::change_family() {
    kestu_obj_t *parent = any(), *child = any();
    switch (below(8)) {
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
    while (alive.size() < 3)
        ASSERT_OK(create(pool));
    switch (below(24)) {
    case 0:
    case 1:
    case 2:
    case 3:
        create_somewhere();
        break;
    case 4:
        create_pool();
        break;
    case 5:
    case 6:
    case 7:
    case 8:
    case 9:
        connect(any(), any());
        break;
    case 10:
        disconnect();
        break;
    case 11:
    case 12:
        change_family();
        break;
    case 13:
        kestu_obj_destroy(any());
        break;
    case 14:
        replace();
        break;
    case 15:
        clean_up_by_hand();
        break;
    case 16:
        if (depth == 1)
            end_pool();
        break;
    case 17:
        if (FILE *nowhere = fopen("/dev/null", "w")) {
            kestu_obj_print_signals(any(), nowhere);
            fclose(nowhere);
        }
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

    kestu_obj_t *last = nullptr; // what APR's destructions have left goes with the next object
    ASSERT_OK(kestu_obj_create(&last, nullptr, pool));
    ++depth;
    kestu_obj_destroy(last);
    --depth;
    dying.clear();
    std::erase_if(places, [](const Place &place) { return place.is_gone; });
    for (const Place &place : places)
        EXPECT_FALSE(place.is_dead);
}

class Scenario : public testing::TestWithParam<unsigned> {};

} // namespace

TEST_P(Scenario, CallsWhatIsConnectedAndEndsEveryPoolOfTheDead) {
    for (const bool quiet : {true, false}) {
        World world(GetParam(), quiet);
        for (int i = 0; i < 400; ++i) {
            world.step();
            if (i % 5 == 0)
                world.check();
            if (HasFailure())
                return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Scenario, testing::Range(1u, 201u));

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
