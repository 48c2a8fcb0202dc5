// Joining and duplicating chains.
#include "base/kept_errno.hpp"
#include "base/pool_text.hpp"
#include "error/elements.hpp"
#include "error/error.hpp"

namespace kestu {
namespace {

enum class Texts { message_only, all };

// Copies what `from` points to into `pool` and lets it point to the copy. False without memory.
bool copy_text(apr_pool_t *pool, const char *&from) {
    if (from)
        from = pool_copy(pool, from);
    return from;
}

// A copy of one element that has no cause, or null without memory.
kestu_error_t *copy_element(apr_pool_t *pool, const kestu_error_t &from, Texts texts) {
    auto *copy = static_cast<kestu_error_t *>(apr_palloc(pool, sizeof(kestu_error_t)));
    if (!copy)
        return nullptr;
    *copy = from;
    copy->pool = pool;
    copy->child = nullptr;
    bool whole = !from.message || copy_text(pool, copy->message);
    if (texts == Texts::all) {
        whole = (!from.file || copy_text(pool, copy->file)) && whole;
        whole = (!from.function || copy_text(pool, copy->function)) && whole;
    }
    return whole ? copy : nullptr;
}

// Copies the chain `from` into `pool`, in order, and links it at `link`, which is moved to where
// more can be linked. False when no memory is left; what was copied until then is linked.
bool copy_chain(apr_pool_t *pool, const kestu_error_t *from, kestu_error_t **&link, Texts texts) {
    for (; from; from = from->child) {
        *link = copy_element(pool, *from, texts);
        if (!*link)
            return false;
        link = &(*link)->child;
    }
    return true;
}

// Appends copies of the elements of `b` below those of `a`. Shared elements that `a` ends in are
// replaced by copies before, since they stay as they are.
bool append_copies(kestu_error_t *a, const kestu_error_t *b) {
    kestu_error_t **link = &a->child;
    while (*link && !is_shared(**link))
        link = &(*link)->child;
    return copy_chain(a->pool, *link, link, Texts::all) && copy_chain(a->pool, b, link, Texts::all);
}

} // namespace
} // namespace kestu

using namespace kestu;

// Chains that share elements share their pool.
void kestu_error_compose(kestu_error_t *a, kestu_error_t *b) {
    if (!b || a->pool == b->pool)
        return;
    const KeptErrno kept;
    if (!is_shared(*a) && !append_copies(a, b))
        give_up_without_memory(APR_ENOMEM, "Cannot create error.");
    kestu_error_clear(b);
}

kestu_error_t *kestu_error_compose_create(kestu_error_t *a, kestu_error_t *b) {
    if (!a)
        return b;
    kestu_error_compose(a, b);
    return a;
}

// Kept: the copy shares the texts of file and function with the source. Relied on by: callers.
kestu_error_t *kestu_error_dup(kestu_error_t *err) {
    if (!err)
        return nullptr;
    const KeptErrno kept;
    apr_pool_t *pool = nullptr;
    apr_status_t status = new_error_pool(&pool);
    if (status == APR_SUCCESS) {
        kestu_error_t *copy = nullptr;
        kestu_error_t **link = &copy;
        if (copy_chain(pool, err, link, Texts::message_only))
            return copy;
        apr_pool_destroy(pool);
        status = APR_ENOMEM;
    }
    return give_up_without_memory(status, "Cannot duplicate error.");
}
