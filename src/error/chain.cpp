// Combining, inspecting and releasing chains of errors.
#include "error/error.hpp"

#include "base/pool_text.hpp"

using namespace kestu;

namespace {

// A text of a copied element: null stays null, `ok` becomes false when there is no memory.
const char *copy_text(apr_pool_t *pool, const char *text, bool &ok) {
    if (!text)
        return nullptr;
    const char *copy = pool_copy(pool, text);
    ok = ok && copy;
    return copy;
}

enum class Copied { message_only, all_texts };

// Copies the chain `from` into `pool`, in order, and links it at `link`. False when no memory is
// left; what was copied until then is linked.
bool copy_chain(apr_pool_t *pool, const kestu_error_t *from, kestu_error_t **link, Copied copied) {
    bool ok = true;
    for (; from && ok; from = from->child) {
        auto *copy = static_cast<kestu_error_t *>(apr_palloc(pool, sizeof(kestu_error_t)));
        if (!copy)
            return false;
        *copy = *from;
        copy->pool = pool;
        copy->child = nullptr;
        copy->message = copy_text(pool, from->message, ok);
        if (copied == Copied::all_texts) {
            copy->file = copy_text(pool, from->file, ok);
            copy->function = copy_text(pool, from->function, ok);
        }
        *link = copy;
        link = &copy->child;
    }
    return ok;
}

} // namespace

void kestu_error_compose(kestu_error_t *a, kestu_error_t *b) {
    if (!b)
        return;
    if (!copy_chain(a->pool, b, &kestu_error_root_cause(a)->child, Copied::all_texts))
        give_up_without_memory(APR_ENOMEM, "Cannot create error.");
    kestu_error_clear(b);
}

kestu_error_t *kestu_error_compose_create(kestu_error_t *a, kestu_error_t *b) {
    if (!a)
        return b;
    kestu_error_compose(a, b);
    return a;
}

kestu_error_t *kestu_error_root_cause(kestu_error_t *err) {
    while (err && err->child)
        err = err->child;
    return err;
}

void kestu_error_clear(kestu_error_t *err) {
    if (err && err->pool)
        apr_pool_destroy(err->pool);
}

// The copy shares the texts of file and function with the source, as callers have come to expect.
kestu_error_t *kestu_error_dup(kestu_error_t *err) {
    if (!err)
        return nullptr;
    apr_pool_t *pool = nullptr;
    apr_status_t status = new_error_pool(&pool);
    kestu_error_t *copy = nullptr;
    if (status == APR_SUCCESS) {
        if (copy_chain(pool, err, &copy, Copied::message_only))
            return copy;
        apr_pool_destroy(pool);
        status = APR_ENOMEM;
    }
    return give_up_without_memory(status, "Cannot duplicate error.");
}

void kestu_error_walk(kestu_error_t *err, kestu_error_walk_func callback, void *baton) {
    for (; err; err = err->child)
        callback(err->code, err->message, err->file, err->line, err->function, baton);
}

void kestu_error_set_type(kestu_error_t *err, int type) {
    err->type = type;
}

void kestu_error_set_type_all(kestu_error_t *err, int type) {
    for (; err; err = err->child)
        err->type = type;
}

void kestu_error_set_data(kestu_error_t *err, void *data) {
    if (err)
        err->data = data;
}

void *kestu_error_get_data(kestu_error_t *err) {
    return err ? err->data : nullptr;
}

void *kestu_error_get_data_first(kestu_error_t *err) {
    while (err && !err->data)
        err = err->child;
    return kestu_error_get_data(err);
}
