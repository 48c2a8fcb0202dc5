// The trie: the C edge.
#include "kestu_trie.h"

#include "containers/trie_change.hpp"
#include "mem/nodes.hpp"

using namespace kestu;
using namespace kestu::trie;

// Kept: a pool without memory shows as a null handle, not as an error.
// Relied on by: programs that drop what is returned.
kestu_error_t *kestu_trie_create(kestu_trie_t **out, apr_pool_t *pool) {
    *out = pool_node<kestu_trie_t>(pool);
    if (*out)
        **out = {nullptr};
    return nullptr;
}

kestu_error_t *kestu_triem_create(kestu_trie_t **out) {
    if (kestu_error_t *err = HeapNodes::make(out))
        return wrap(err, "Can't create new triem.");
    **out = {nullptr};
    return nullptr;
}

kestu_error_t *kestu_trie_insert(kestu_trie_t *trie, const void *key, size_t length, void *value,
                                 apr_pool_t *pool) {
    return insert(PoolNodes{pool}, trie, {key, length}, value, "Can't insert trie node.");
}

kestu_error_t *kestu_triem_insert(kestu_trie_t *trie, const void *key, size_t length, void *value) {
    return insert(HeapNodes{}, trie, {key, length}, value, "Can't insert triem node.");
}

void *kestu_trie_search(const kestu_trie_t *trie, const void *key, size_t length) {
    const Key wanted(key, length);
    const Leaf *leaf = trie ? find_leaf(trie->root, wanted) : nullptr;
    return leaf && wanted.is_of(leaf) ? leaf->value : nullptr;
}

void kestu_trie_delete(kestu_trie_t *trie, const void *key, size_t length) {
    if (trie)
        remove<PoolNodes>(&trie->root, {key, length});
}

void kestu_triem_delete(kestu_trie_t *trie, const void *key, size_t length) {
    if (trie)
        remove<HeapNodes>(&trie->root, {key, length});
}

void kestu_trie_walk(const kestu_trie_t *trie, kestu_trie_func fn, void *baton) {
    if (trie)
        traverse_node(trie->root, fn, baton);
}

void kestu_trie_destroy(kestu_trie_t **trie) {
    *trie = nullptr;
}

void kestu_triem_destroy(kestu_trie_t **trie) {
    if (!*trie)
        return;
    release_all<HeapNodes>((*trie)->root);
    HeapNodes::release(*trie);
    *trie = nullptr;
}
