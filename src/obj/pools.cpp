// The pools of objects.
#include "obj/pools.hpp"

#include "obj/pool_owners.hpp"

#include <new> // IWYU pragma: keep

using namespace kestu;

namespace {

// APR destroys pools within pools by recursion. What lies deeper is taken away before.
constexpr unsigned levels_for_apr = 64;

[[gnu::tls_model("initial-exec")]] constinit thread_local Object *first_waiting = nullptr;

Object *host_of(apr_pool_t *pool) {
    for (; pool; pool = apr_pool_parent_get(pool))
        if (Object *owner = pool_owner(pool))
            return owner;
    return nullptr;
}

// Cleanups may make objects in the pool of the object that is being destroyed. That would never end
// if the cleanups of those could do the same.
bool is_closed(const Object &host) {
    return host.is_going && (host.life == Life::dead || (host.life == Life::dying && host.is_late));
}

class GuestLock {
  public:
    explicit GuestLock(Object &host) : host_(host) {
        while (host_.guests_locked.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~GuestLock() { host_.guests_locked.clear(std::memory_order_release); }
    GuestLock(const GuestLock &) = delete;
    GuestLock &operator=(const GuestLock &) = delete;

  private:
    Object &host_;
};

void move_in(Object &guest, Object &host) {
    const GuestLock lock(host);
    guest.host = &host;
    guest.is_late = host.is_going;
    guest.next_guest = host.guests;
    if (host.guests)
        host.guests->prev_guest = &guest;
    host.guests = &guest;
}

void move_out(Object &guest) {
    if (!guest.host)
        return;
    const GuestLock lock(*guest.host);
    (guest.prev_guest ? guest.prev_guest->next_guest : guest.host->guests) = guest.next_guest;
    if (guest.next_guest)
        guest.next_guest->prev_guest = guest.prev_guest;
    guest.host = nullptr;
}

void wait(Object &object) {
    object.is_waiting = true;
    object.prev_waiting = nullptr;
    object.next_waiting = first_waiting;
    if (first_waiting)
        first_waiting->prev_waiting = &object;
    first_waiting = &object;
}

void stop_waiting(Object &object) {
    if (!object.is_waiting)
        return;
    object.is_waiting = false;
    if (object.prev_waiting)
        object.prev_waiting->next_waiting = object.next_waiting;
    else if (first_waiting == &object) // it may have been a thread's that has ended
        first_waiting = object.next_waiting;
    if (object.next_waiting)
        object.next_waiting->prev_waiting = object.prev_waiting;
}

// Whether something that lives in the object's pool is just being destroyed. Each guest is looked
// at once, since a pool that is not in use goes at once.
bool is_in_use(const Object &top) {
    for (const Object *at = top.guests; at;) {
        if (at->life == Life::dying || at->is_going)
            return true;
        if (at->guests) {
            at = at->guests;
            continue;
        }
        while (!at->next_guest && at->host != &top)
            at = at->host;
        at = at->next_guest;
    }
    return false;
}

// Leaves an object whose guests have been left, and returns the next guest of its host.
Object *leave(Object *at, unsigned depth) {
    if (depth % levels_for_apr != 0)
        return at->next_guest;
    const Object *host = at->host;
    apr_pool_destroy(at->pool);
    return host->guests;
}

// Destroys the pools that lie too deep within that of `top` for APR, the deepest first. Slots and
// cleanups that are called on the way may destroy and make objects, but the hosts stay: their pools
// are going.
void flatten(Object &top) {
    unsigned depth = 0;
    for (Object *at = &top;;) {
        at->is_going = true;
        if (at->guests) {
            at = at->guests;
            ++depth;
            continue;
        }
        for (;;) {
            if (at == &top)
                return;
            Object *const host = at->host;
            if (Object *next = leave(at, depth)) {
                at = next;
                break;
            }
            at = host;
            --depth;
        }
    }
}

// The first thing that APR does when it destroys or clears a pool.
apr_status_t begin_end(void *data) {
    const Destroying destroying;
    auto &object = *static_cast<Object *>(data);
    stop_waiting(object);
    object.is_going = true;
    if (!object.host || !object.host->is_going)
        flatten(object);
    return APR_SUCCESS;
}

// The last thing. APR does not look for pools that cleanups have made within this one.
apr_status_t complete_end(void *data) {
    const Destroying destroying;
    auto &object = *static_cast<Object *>(data);
    while (object.guests)
        apr_pool_destroy(object.guests->pool);
    if (Destroying::is_outermost())
        release_waiting_pools();
    move_out(object);
    clear_pool_owner(object.pool);
    return APR_SUCCESS;
}

Object *first_that_may_go() {
    Object *object = first_waiting;
    while (object && is_in_use(*object))
        object = object->next_waiting;
    return object;
}

// What APR takes from the new pool here cannot fail: there is room for it.
Object *move_in(apr_pool_t *pool) {
    auto *object = new (apr_palloc(pool, sizeof(Object))) Object{};
    object->pool = pool;
    if (!set_pool_owner(pool, *object))
        return nullptr;
    apr_pool_pre_cleanup_register(pool, object, begin_end);
    apr_pool_cleanup_register(pool, object, complete_end, apr_pool_cleanup_null);
    return object;
}

} // namespace

namespace kestu {

apr_status_t make_object(Object **out, apr_pool_t *parent) {
    Object *const host = host_of(parent);
    if (host && is_closed(*host))
        return APR_ENOPOOL;
    apr_pool_t *pool = nullptr;
    const apr_status_t status = apr_pool_create_ex(&pool, parent, nullptr, nullptr);
    if (status != APR_SUCCESS)
        return status;
    Object *object = move_in(pool);
    if (!object) {
        apr_pool_destroy(pool);
        return APR_ENOMEM;
    }
    if (host)
        move_in(*object, *host);
    *out = object;
    return APR_SUCCESS;
}

void release_pool(Object &object) {
    if (object.is_going || object.is_waiting)
        return;
    if (is_in_use(object))
        wait(object);
    else
        apr_pool_destroy(object.pool);
}

void release_waiting_pools() {
    while (Object *object = first_that_may_go())
        apr_pool_destroy(object->pool);
}

} // namespace kestu
