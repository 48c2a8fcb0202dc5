// Families with pools in each other's pools, in which objects create, connect, emit and destroy
// each other from inside slots and cleanups, while APR destroys pools of its own accord. A model
// knows which connections there are and whose pool has to be gone; the address sanitizer knows the
// rest.
#pragma once

#include "fuzz/check.hpp"
#include "kestu_objsig.h"

#include <list>
#include <map>
#include <set>
#include <tuple>

namespace kestu::fuzz {

constexpr uint32_t first_code = 100;
constexpr int code_count = 3;

class World {
  public:
    // With quiet slots nothing happens within what happens.
    World(Input &input, bool quiet) : in_(input), quiet_slots_(quiet) {
        apr_pool_create_ex(&pool_, kestu_pool, nullptr, nullptr);
    }
    ~World() {
        quiet_slots_ = true;
        while (!alive_.empty())
            kestu_obj_destroy(any());
        apr_pool_destroy(pool_);
    }
    World(const World &) = delete;
    World &operator=(const World &) = delete;

    void run() {
        for (int i = 0; !in_.empty(); ++i) {
            step();
            if (i % 5 == 0)
                check();
        }
    }

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

    int below(int n) { return in_.byte() % n; }
    template <typename Set>
    auto any_of(const Set &set) {
        return std::next(set.begin(), below(static_cast<int>(set.size())));
    }
    kestu_obj_t *any() { return *any_of(alive_); }
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

    void end_any() { kestu_obj_destroy(any()); }
    void connect_any() { connect(any(), any()); }
    void print();
    void emit() { kestu_error_clear(kestu_obj_emit_signal(any(), any_code(), nullptr)); }
    void step();
    // Emits every signal of every object: just the calls that the model has are made. The pools of
    // the dead are gone.
    void check();

    Input &in_;
    bool quiet_slots_;
    int depth_ = 0;
    std::list<Place> places_;
    std::set<kestu_obj_t *> alive_;
    kestu_obj_t *newest_ = nullptr;
    std::set<kestu_obj_t *> dying_; // cleaned up, but not forgotten yet
    std::set<Key> connections_;
    std::map<Key, int> called_;
    apr_pool_t *pool_ = nullptr;
};

inline void World::slot(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *baton,
                        void *checking) {
    auto &world = *static_cast<World *>(baton);
    if (checking) {
        ++world.called_[{source, code, destination}];
        return;
    }
    require(world.alive_.count(source) || world.dying_.count(source));
    require(world.alive_.count(destination) || world.dying_.count(destination));
    if (!world.quiet_slots_ && world.depth_ < 4)
        world.step();
}

inline void World::on_cleanup(kestu_obj_t *obj, void *baton) {
    auto &place = *static_cast<Place *>(baton);
    World &world = *place.world;
    place.is_dead = true;
    world.alive_.erase(obj);
    world.dying_.insert(obj);
    std::erase_if(world.connections_, [obj](const Key &key) {
        return std::get<0>(key) == obj || std::get<2>(key) == obj;
    });
    if (world.quiet_slots_ || world.depth_ >= 4)
        return;
    if (world.below(8) == 0)
        kestu_error_clear(world.create(obj->pool)); // it may be too late
    world.step();
}

inline apr_status_t World::on_pool_end(void *baton) {
    auto &place = *static_cast<Place *>(baton);
    place.is_gone = true;
    if (place.is_dead)
        place.world->dying_.erase(place.owner);
    return APR_SUCCESS;
}

inline World::Place *World::keep(apr_pool_t *place, kestu_obj_t *owner) {
    places_.push_back({this, place, owner});
    apr_pool_cleanup_register(place, &places_.back(), on_pool_end, apr_pool_cleanup_null);
    return &places_.back();
}

inline apr_pool_t *World::any_pool() {
    if (places_.empty() || below(4) == 0)
        return pool_;
    const Place &place = *any_of(places_);
    return place.is_dead || place.is_gone ? pool_ : place.pool;
}

inline kestu_error_t *World::create(apr_pool_t *where) {
    static const char *const names[] = {nullptr, "a", "b", "c"};
    kestu_obj_t *obj = nullptr;
    kestu_error_t *err = kestu_obj_create(&obj, names[below(4)], where);
    if (err)
        return err;
    err = kestu_obj_cleanup_register(obj, on_cleanup, keep(obj->pool, obj));
    for (uint32_t code = first_code; !err && code < first_code + code_count; ++code)
        err = kestu_obj_add_signal(obj, code);
    alive_.insert(obj);
    newest_ = obj;
    return err;
}

// It may be too late for a place that is going just now.
inline void World::create_somewhere() {
    kestu_error_t *err = create(any_pool());
    require(!err || depth_ > 1);
    kestu_error_clear(err);
}

inline void World::create_pool() {
    apr_pool_t *made = nullptr;
    apr_pool_create_ex(&made, any_pool(), nullptr, nullptr);
    keep(made, nullptr);
}

// APR destroys or clears a pool, of its own or of an object.
inline void World::end_pool() {
    if (depth_ > 1 || places_.empty())
        return;
    const Place place = *any_of(places_);
    if (place.is_gone)
        return;
    if (place.owner && below(2))
        apr_pool_clear(place.pool); // gone for the model, and with the pool above for APR
    else
        apr_pool_destroy(place.pool);
}

inline void World::clean_up_by_hand() {
    kestu_obj_t *obj = any();
    kestu_obj_cleanup(obj);
    kestu_obj_cleanup(obj);
    kestu_obj_destroy(obj);
}

inline void World::connect(kestu_obj_t *source, kestu_obj_t *destination) {
    if (!quiet_slots_ && below(8) == 0) {
        require(succeeded(
            kestu_obj_connect(source, KESTU_OBJ_SIGNAL_DESTROY, destination, slot, this)));
        return;
    }
    const uint32_t code = any_code();
    require(succeeded(kestu_obj_connect(source, code, destination, slot, this)));
    connections_.insert({source, code, destination});
}

// APR gives the memory of the old to the new, and so the new has its address.
inline void World::replace() {
    kestu_obj_t *source = any();
    kestu_obj_destroy(any());
    require(succeeded(create(pool_)));
    if (alive_.count(source))
        connect(source, newest_);
}

// While signals are emitted, disconnecting from all of them would wait and take later connections_
// with it.
inline void World::disconnect() {
    kestu_obj_t *source = any(), *destination = below(4) ? any() : nullptr;
    const bool from_all = depth_ == 1 && destination && destination != source && below(4) == 0;
    const uint32_t code = from_all ? 0xFFFFFFFF : any_code();
    kestu_obj_disconnect(source, code, destination, below(2) && destination ? slot : nullptr);
    std::erase_if(connections_, [&](const Key &key) {
        return std::get<0>(key) == source && (from_all || std::get<1>(key) == code) &&
               (!destination || std::get<2>(key) == destination);
    });
}

inline void World::change_family() {
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

inline void World::print() {
    if (FILE *nowhere = fopen("/dev/null", "w")) {
        kestu_obj_print_signals(any(), nowhere);
        fclose(nowhere);
    }
}

inline void World::step() {
    constexpr void (World::*steps[])() = {
        &World::create_somewhere, &World::create_somewhere, &World::create_somewhere,
        &World::create_somewhere, &World::create_pool,      &World::connect_any,
        &World::connect_any,      &World::connect_any,      &World::connect_any,
        &World::connect_any,      &World::disconnect,       &World::change_family,
        &World::change_family,    &World::end_any,          &World::replace,
        &World::clean_up_by_hand, &World::end_pool,         &World::print};
    ++depth_;
    while (alive_.size() < 3)
        require(succeeded(create(pool_)));
    const auto choice = static_cast<size_t>(below(24));
    (this->*(choice < std::size(steps) ? steps[choice] : &World::emit))();
    --depth_;
}

inline void World::check() {
    called_.clear();
    for (kestu_obj_t *obj : alive_)
        for (uint32_t code = first_code; code < first_code + code_count; ++code)
            require(succeeded(kestu_obj_emit_signal(obj, code, this)));
    std::map<Key, int> expected;
    for (const Key &key : connections_)
        expected[key] = 1;
    require(called_ == expected);

    kestu_obj_t *last = nullptr; // what APR's destructions have left goes with the next object
    require(succeeded(kestu_obj_create(&last, nullptr, pool_)));
    ++depth_;
    kestu_obj_destroy(last);
    --depth_;
    dying_.clear();
    std::erase_if(places_, [](const Place &place) { return place.is_gone; });
    for (const Place &place : places_)
        require(!place.is_dead);
}

} // namespace kestu::fuzz
