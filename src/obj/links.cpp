// Links: what stands behind the slots that kestu_obj_link connects.
#include "obj/links.hpp"

#include "kestu_mem.h"

namespace kestu {

// Found without a call, from wherever the library was loaded.
[[gnu::tls_model("initial-exec")]] constinit thread_local Running *Running::innermost = nullptr;

void run_link(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *user,
              void *argument) {
    auto *link = static_cast<kestu_link_t *>(user);
    if (link->is_blocked)
        return;
    // The slot may end the link.
    const kestu_link_func fn = link->fn;
    void *const datum = link->user;
    if (link->flags & KESTU_LINK_ONCE)
        link->end(link);
    kestu_error_t *err = fn(source, code, destination, datum, argument);
    kestu_error_t **const failures = Running::innermost->failures;
    if (failures)
        *failures = kestu_error_compose_create(err, *failures);
    else
        kestu_error_clear(err);
}

void gone_link(kestu_obj_t *, uint32_t, kestu_obj_t *, void *, void *) {}

void let_go(kestu_slot_func callback, void *user) {
    kestu_link_t *link = link_of(callback, user);
    if (!link)
        return;
    link->is_alive = false;
    if (--link->holders == 0)
        kestu_mem_free(link);
}

} // namespace kestu
