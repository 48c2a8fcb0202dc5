// Inspecting and releasing chains of errors.
#include "error/elements.hpp"

kestu_error_t *kestu_error_root_cause(kestu_error_t *err) {
    while (err && err->child)
        err = err->child;
    return err;
}

kestu_error_t *kestu_error_find(kestu_error_t *err, int code) {
    while (err && err->code != code)
        err = err->child;
    return err;
}

int kestu_error_is(const kestu_error_t *err, int code) {
    return kestu_error_find(const_cast<kestu_error_t *>(err), code) != nullptr;
}

void kestu_error_clear(kestu_error_t *err) {
    if (err && !kestu::is_shared(*err))
        apr_pool_destroy(err->pool);
}

void kestu_error_walk(kestu_error_t *err, kestu_error_walk_func callback, void *baton) {
    for (; err; err = err->child)
        callback(err->code, err->message, err->file, err->line, err->function, baton);
}

void kestu_error_set_type(kestu_error_t *err, int type) {
    err->type = type;
}

void kestu_error_set_type_all(kestu_error_t *err, int type) {
    for (; err && !kestu::is_shared(*err); err = err->child)
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
