// The doubly linked list.
#include "kestu_dl.h"

#include "containers/links.hpp"
#include "containers/nodes.hpp"
#include "containers/walks.hpp"
#include "kestu_mem.h"

#include <cstring>
#include <utility>

using namespace kestu;

namespace {

constexpr Place<kestu_dl_t> after_handle{link_after, "Unable to add DL node."};
constexpr Place<kestu_dl_t> before_handle{link_before, "Unable to add DL node."};
constexpr Place<kestu_dl_t> at_front{link_first, "Unable to prepend DL object."};
constexpr Place<kestu_dl_t> at_end{link_last, "Unable to append DL object."};

// Nodes from the system's allocator, whose failures say what they were for.
struct DlmNodes : HeapNodes {
    static kestu_error_t *make(kestu_dl_t **node) {
        return wrap(HeapNodes::make(node), "Can't allocate memory for dlm node.");
    }
};

kestu_dl_t unlinked(uint32_t tag, void *data) {
    return {tag, nullptr, nullptr, data};
}

auto whole_list(kestu_dl_t *node) {
    return forward(first_of(node));
}

kestu_dl_t *extract(kestu_dl_t *node) {
    if (node->prev)
        node->prev->next = node->next;
    if (node->next)
        node->next->prev = node->prev;
    node->prev = node->next = nullptr;
    return node;
}

// Who takes over the tag and datum of a node that is deleted: nobody, a callback whose result does
// not matter, or one that may fail.
constexpr auto nobody = [](uint32_t, void *) -> kestu_error_t * { return nullptr; };

auto taker(kestu_visit_func fn, void *baton) {
    return [=](uint32_t tag, void *data) -> kestu_error_t * {
        fn(tag, data, baton);
        return nullptr;
    };
}

auto taker(kestu_err_func fn, void *baton) {
    return [=](uint32_t tag, void *data) { return fn(tag, data, baton); };
}

template <typename Nodes, typename Taker>
kestu_error_t *remove(kestu_dl_t *node, Taker take) {
    if (!node)
        return nullptr;
    extract(node);
    kestu_error_t *err = take(node->tag, node->data);
    Nodes::release(node);
    return err;
}

template <typename Nodes, typename Taker>
kestu_error_t *remove_obj(kestu_dl_t **handle, void *data, Taker take) {
    if (!data)
        return nullptr;
    kestu_dl_t *node =
        find_node<kestu_dl_t>(whole_list(*handle), [=](kestu_dl_t *n) { return n->data == data; });
    if (node && node == *handle)
        *handle = node->next ? node->next : node->prev;
    return remove<Nodes>(node, take);
}

template <typename Nodes, typename Taker>
kestu_error_t *remove_all(kestu_dl_t **handle, Taker take) {
    while (*handle && (*handle)->prev)
        if (kestu_error_t *err = remove<Nodes>((*handle)->prev, take))
            return err;
    while (kestu_dl_t *node = *handle) {
        *handle = node->next;
        if (kestu_error_t *err = remove<Nodes>(node, take))
            return err;
    }
    return nullptr;
}

// Where the lists of a walk in step stand, and what their nodes carry.
class Cursors {
  public:
    explicit Cursors(uint32_t count) : n(count) {}
    ~Cursors() {
        kestu_mem_free(nodes);
        kestu_mem_free(tags);
        kestu_mem_free(data);
    }
    Cursors(const Cursors &) = delete;
    Cursors &operator=(const Cursors &) = delete;

    kestu_error_t *start(kestu_dl_t *const *handles) {
        kestu_error_t *err = kestu_mem_malloc(n * sizeof *nodes, &nodes);
        if (!err)
            err = kestu_mem_malloc(n * sizeof *tags, &tags);
        if (!err)
            err = kestu_mem_malloc(n * sizeof *data, &data);
        for (uint32_t i = 0; !err && i < n; ++i)
            nodes[i] = first_of(handles[i]);
        return err;
    }

    // False when every list has ended.
    bool read() {
        bool any = false;
        for (uint32_t i = 0; i < n; ++i) {
            tags[i] = nodes[i] ? nodes[i]->tag : 0;
            data[i] = nodes[i] ? nodes[i]->data : nullptr;
            any = any || nodes[i];
        }
        return any;
    }

    void advance() {
        for (uint32_t i = 0; i < n; ++i)
            nodes[i] = nodes[i] ? nodes[i]->next : nullptr;
    }

    uint32_t *tags = nullptr;
    void **data = nullptr;

  private:
    kestu_dl_t **nodes = nullptr;
    const uint32_t n;
};

// Puts `node` where another stood between `prev` and `next`; fails when that one stood alone.
kestu_error_t *insert_between(kestu_dl_t *prev, kestu_dl_t *node, kestu_dl_t *next) {
    return prev ? insert_after(prev, node) : insert_before(next, node);
}

kestu_error_t *exchange_apart(kestu_dl_t *a, kestu_dl_t *b) {
    kestu_dl_t *const a_prev = a->prev, *const a_next = a->next;
    kestu_dl_t *const b_prev = b->prev, *const b_next = b->next;
    extract(a);
    extract(b);
    if (kestu_error_t *err = insert_between(b_prev, a, b_next))
        return err;
    return insert_between(a_prev, b, a_next);
}

kestu_error_t *exchange(kestu_dl_t *a, kestu_dl_t *b) {
    kestu_error_t *err = nullptr;
    if (!a || !b)
        return fail(120052);
    if (a->next == b)
        err = insert_after(b, extract(a));
    else if (b->next == a)
        err = insert_after(a, extract(b));
    else if (a != b)
        err = exchange_apart(a, b);
    return wrap(err, "Unable to exchange DL nodes.");
}

int32_t hook_key(const void *record) {
    int32_t key;
    std::memcpy(&key, static_cast<const char *>(record) + 108, sizeof key);
    return key;
}

} // namespace

// Callers rely on null whatever happens: a pool without memory shows as a null node.
kestu_error_t *kestu_dl_create(uint32_t tag, void *data, kestu_dl_t **out, apr_pool_t *pool) {
    *out = pool_node<kestu_dl_t>(pool);
    if (*out)
        **out = unlinked(tag, data);
    return nullptr;
}

kestu_error_t *kestu_dlm_create(uint32_t tag, void *data, kestu_dl_t **out) {
    if (kestu_error_t *err = DlmNodes::make(out))
        return err;
    **out = unlinked(tag, data);
    return nullptr;
}

kestu_error_t *kestu_dl_insert_before(kestu_dl_t *node, kestu_dl_t *new_node) {
    return insert_before(node, new_node);
}

kestu_error_t *kestu_dl_insert_after(kestu_dl_t *node, kestu_dl_t *new_node) {
    return insert_after(node, new_node);
}

kestu_error_t *kestu_dl_add_after(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out,
                                  apr_pool_t *pool) {
    return add_node(after_handle, PoolNodes{pool}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dl_add_before(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out,
                                   apr_pool_t *pool) {
    return add_node(before_handle, PoolNodes{pool}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dl_prepend(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out,
                                apr_pool_t *pool) {
    return add_node(at_front, PoolNodes{pool}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dl_append(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out,
                               apr_pool_t *pool) {
    return add_node(at_end, PoolNodes{pool}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dlm_add_after(kestu_dl_t **handle, uint32_t tag, void *data,
                                   kestu_dl_t **out) {
    return add_node(after_handle, DlmNodes{}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dlm_add_before(kestu_dl_t **handle, uint32_t tag, void *data,
                                    kestu_dl_t **out) {
    return add_node(before_handle, DlmNodes{}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dlm_prepend(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out) {
    return add_node(at_front, DlmNodes{}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dlm_append(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out) {
    return add_node(at_end, DlmNodes{}, unlinked(tag, data), handle, out);
}

// Joining a list with itself would close it to a ring, in which no walk ends.
kestu_dl_t *kestu_dl_join(kestu_dl_t *a, kestu_dl_t *b) {
    kestu_dl_t *const first = first_of(a);
    kestu_dl_t *const second = first_of(b);
    if (first && second && first != second) {
        second->prev = last_of(a);
        second->prev->next = second;
    }
    return first;
}

void *kestu_dl_get_data(kestu_dl_t *node) {
    return node ? node->data : nullptr;
}

void *kestu_dl_get_data_tag(kestu_dl_t *node, uint32_t *tag) {
    if (node && tag)
        *tag = node->tag;
    return kestu_dl_get_data(node);
}

void kestu_dl_update(kestu_dl_t *node, uint32_t tag, void *data) {
    node->tag = tag;
    node->data = data;
}

kestu_dl_t *kestu_dl_get_prev(kestu_dl_t *node) {
    return node ? node->prev : nullptr;
}

kestu_dl_t *kestu_dl_get_next(kestu_dl_t *node) {
    return node ? node->next : nullptr;
}

kestu_dl_t *kestu_dl_get_first(kestu_dl_t *node) {
    return first_of(node);
}

kestu_dl_t *kestu_dl_get_last(kestu_dl_t *node) {
    return last_of(node);
}

kestu_dl_t *kestu_dl_get_n(kestu_dl_t *node, size_t n) {
    return nth_node<kestu_dl_t>(whole_list(node), n);
}

size_t kestu_dl_count(kestu_dl_t *node) {
    size_t count = 0;
    for (const kestu_dl_t *n = node; n; n = n->next)
        ++count;
    for (const kestu_dl_t *n = kestu_dl_get_prev(node); n; n = n->prev)
        ++count;
    return count;
}

kestu_dl_t *kestu_dl_extract(kestu_dl_t *node) {
    return node ? extract(node) : nullptr;
}

void kestu_dl_delete(kestu_dl_t *node) {
    remove<PoolNodes>(node, nobody);
}

void kestu_dlm_delete(kestu_dl_t *node) {
    remove<DlmNodes>(node, nobody);
}

void kestu_dl_delete_func(kestu_dl_t *node, kestu_visit_func fn, void *baton) {
    remove<PoolNodes>(node, taker(fn, baton));
}

void kestu_dlm_delete_func(kestu_dl_t *node, kestu_visit_func fn, void *baton) {
    remove<DlmNodes>(node, taker(fn, baton));
}

kestu_error_t *kestu_dl_delete_errfunc(kestu_dl_t *node, kestu_err_func fn, void *baton) {
    return remove<PoolNodes>(node, taker(fn, baton));
}

void kestu_dl_delete_obj(kestu_dl_t **handle, void *data) {
    remove_obj<PoolNodes>(handle, data, nobody);
}

void kestu_dlm_delete_obj(kestu_dl_t **handle, void *data) {
    remove_obj<DlmNodes>(handle, data, nobody);
}

void kestu_dl_delete_obj_func(kestu_dl_t **handle, void *data, kestu_visit_func fn, void *baton) {
    remove_obj<PoolNodes>(handle, data, taker(fn, baton));
}

kestu_error_t *kestu_dl_delete_obj_errfunc(kestu_dl_t **handle, void *data, kestu_err_func fn,
                                           void *baton) {
    return remove_obj<PoolNodes>(handle, data, taker(fn, baton));
}

void kestu_dl_destroy(kestu_dl_t **handle) {
    *handle = nullptr;
}

void kestu_dlm_destroy(kestu_dl_t **handle) {
    remove_all<DlmNodes>(handle, nobody);
}

void kestu_dl_destroy_func(kestu_dl_t **handle, kestu_visit_func fn, void *baton) {
    remove_all<PoolNodes>(handle, taker(fn, baton));
}

void kestu_dlm_destroy_func(kestu_dl_t **handle, kestu_visit_func fn, void *baton) {
    remove_all<DlmNodes>(handle, taker(fn, baton));
}

kestu_error_t *kestu_dl_destroy_errfunc(kestu_dl_t **handle, kestu_err_func fn, void *baton) {
    return wrap(remove_all<PoolNodes>(handle, taker(fn, baton)), "Error while destroy DL List.");
}

void kestu_dl_walk(kestu_dl_t *node, kestu_visit_func fn, void *baton) {
    visit_all(whole_list(node), fn, baton);
}

int kestu_dl_walk_int_first(kestu_dl_t *node, kestu_int_func fn, void *baton) {
    return first_result(whole_list(node), fn, baton);
}

void *kestu_dl_walk_ptr_first(kestu_dl_t *node, kestu_ptr_func fn, void *baton) {
    return first_result(whole_list(node), fn, baton);
}

kestu_error_t *kestu_dl_walk_err_first(kestu_dl_t *node, kestu_err_func fn, void *baton) {
    return first_result(whole_list(node), fn, baton);
}

kestu_error_t *kestu_dl_walk_err_or_ptr_first(kestu_dl_t *node, kestu_err_or_ptr_func fn,
                                              void *baton, void **result) {
    return first_error_or_pointer(whole_list(node), fn, baton, result);
}

// Reads the next node before the call, unlike the other walks: here a node may go away.
void kestu_dl_dwalk(kestu_dl_t **handle, kestu_int_func fn, void *baton) {
    kestu_dl_t *first_kept = nullptr;
    for (kestu_dl_t *node = first_of(*handle), *next; node; node = next) {
        next = node->next;
        if (fn(node->tag, node->data, baton))
            extract(node);
        else if (!first_kept)
            first_kept = node;
    }
    *handle = first_kept;
}

kestu_error_t *kestu_dl_mwalk_err_first(kestu_dl_t *const *handles, uint32_t n,
                                        kestu_dl_mwalk_func fn, void *baton) {
    if (n == 0)
        return nullptr;
    Cursors lists(n);
    if (kestu_error_t *err = lists.start(handles))
        return err;
    while (lists.read()) {
        if (kestu_error_t *err = fn(n, lists.tags, lists.data, baton))
            return err == KestuDLlistStopWalking ? nullptr : err;
        lists.advance();
    }
    return nullptr;
}

kestu_error_t *kestu_dl_exchange(kestu_dl_t *a, kestu_dl_t *b) {
    return exchange(a, b);
}

kestu_error_t *kestu_dl_bubsort(kestu_dl_t *node, kestu_dl_compare_func compare, void *baton) {
    for (kestu_dl_t *a = first_of(node); a; a = a->next)
        for (kestu_dl_t *b = a->next; b; b = b->next) {
            if (compare(a->tag, a->data, b->tag, b->data, baton) <= 0)
                continue;
            if (kestu_error_t *err = exchange(a, b))
                return wrap(err, "Can't sort dllist.");
            std::swap(a, b);
        }
    return nullptr;
}

int kestu_hook_bubsort_callback(uint32_t, void *a, uint32_t, void *b, void *) {
    const int32_t key_a = hook_key(a);
    const int32_t key_b = hook_key(b);
    return (key_a > key_b) - (key_a < key_b);
}
