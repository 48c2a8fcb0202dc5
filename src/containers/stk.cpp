// The stack.
#include "kestu_stk.h"

#include "containers/sl.hpp"
#include "mem/nodes.hpp"

using namespace kestu;

namespace {

kestu_sl_t *top_of(kestu_stk_t *stack) {
    return stack ? stack->top : nullptr;
}

kestu_stk_t *make_stack(apr_pool_t *pool) {
    auto *stack = pool_node<kestu_stk_t>(pool);
    return stack ? new (stack) kestu_stk_t{} : nullptr;
}

// Puts an element where `link` points, which is the top or below an element of the stack.
kestu_error_t *push_at(kestu_stk_t *stack, kestu_sl_t **link, uint32_t tag, void *data,
                       apr_pool_t *pool) {
    if (!insert_at(link, tag, data, pool))
        return no_memory(sizeof(kestu_sl_t));
    ++stack->count;
    return nullptr;
}

// The elements in the same order, from the top down.
kestu_error_t *copy_elements(const kestu_sl_t *from, kestu_stk_t *stack, apr_pool_t *pool) {
    for (kestu_sl_t **end = &stack->top; from; from = from->next, end = &(*end)->next)
        if (kestu_error_t *err = push_at(stack, end, from->tag, from->data, pool))
            return err;
    return nullptr;
}

} // namespace

// Kept: a pool without memory shows as a null stack, not as an error.
// Relied on by: programs that drop what is returned.
kestu_error_t *kestu_stk_create(kestu_stk_t **out, apr_pool_t *pool) {
    *out = make_stack(pool);
    return nullptr;
}

kestu_error_t *kestu_stk_push(kestu_stk_t *stack, uint32_t tag, void *data, apr_pool_t *pool) {
    kestu_error_t *err =
        stack ? push_at(stack, &stack->top, tag, data, pool) : fail(KESTU_ERR_LIST_INSERTION);
    return wrap(err, "Can't push object to stack.");
}

void *kestu_stk_pop(kestu_stk_t *stack) {
    kestu_sl_t *top = top_of(stack);
    if (!top)
        return nullptr;
    stack->top = top->next;
    --stack->count;
    return top->data;
}

void *kestu_stk_get_data(kestu_stk_t *stack, uint32_t *tag) {
    return kestu_sl_get_data_tag(top_of(stack), tag);
}

uint64_t kestu_stk_count(kestu_stk_t *stack) {
    return stack ? stack->count : 0;
}

void kestu_stk_destroy(kestu_stk_t *stack) {
    if (stack)
        *stack = {nullptr, 0};
}

void kestu_stk_walk(kestu_stk_t *stack, kestu_visit_func fn, void *baton) {
    kestu_sl_walk(top_of(stack), fn, baton);
}

void *kestu_stk_walk_ptr_first(kestu_stk_t *stack, kestu_ptr_func fn, void *baton) {
    return kestu_sl_walk_ptr_first(top_of(stack), fn, baton);
}

kestu_error_t *kestu_stk_walk_err_first(kestu_stk_t *stack, kestu_err_func fn, void *baton) {
    return kestu_sl_walk_err_first(top_of(stack), fn, baton);
}

kestu_error_t *kestu_stk_copy(kestu_stk_t *source, kestu_stk_t **out, apr_pool_t *pool) {
    kestu_stk_t *copy = make_stack(pool);
    kestu_error_t *err =
        copy ? copy_elements(top_of(source), copy, pool) : no_memory(sizeof(kestu_stk_t));
    *out = err ? nullptr : copy;
    return wrap(err, "Can't copy stack.");
}
