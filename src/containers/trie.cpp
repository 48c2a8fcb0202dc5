// The trie: the C edge.
#include "kestu_trie.h"

#include "containers/trie_change.hpp"
#include "mem/nodes.hpp"

using namespace kestu;
using namespace kestu::trie;

namespace {

// The leaf of a key, or null.
const Leaf *leaf_at(const kestu_trie_t *trie, Key key) {
    const Leaf *leaf = trie ? find_leaf(trie->root, key) : nullptr;
    return leaf && key.is_of(leaf) ? leaf : nullptr;
}

bool begins(Key prefix, const Leaf *leaf) {
    return leaf->length >= prefix.length && are_same(leaf->key, prefix.bytes, prefix.length);
}

} // namespace

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
    const Leaf *leaf = leaf_at(trie, {key, length});
    return leaf ? leaf->value : nullptr;
}

int kestu_trie_find(const kestu_trie_t *trie, const void *key, size_t length, void **value) {
    const Leaf *leaf = leaf_at(trie, {key, length});
    if (leaf && value)
        *value = leaf->value;
    return leaf != nullptr;
}

size_t kestu_trie_count(const kestu_trie_t *trie) {
    size_t count = 0;
    const auto add = [](uint64_t, const uint8_t *, void *, void *sum) {
        ++*static_cast<size_t *>(sum);
    };
    kestu_trie_walk(trie, add, &count);
    return count;
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

void kestu_trie_walk_prefix(const kestu_trie_t *trie, const void *prefix, size_t length,
                            kestu_trie_func fn, void *baton) {
    Node *node = trie ? trie->root : nullptr;
    const Key wanted(prefix, length);
    for (size_t depth = 0; node && is_inner(node) && depth < 2 * length; ++depth)
        node = as_inner(node)->children[wanted.half(depth)];
    if (!node)
        return;
    if (is_inner(node) || (is_leaf(node) && begins(wanted, as_leaf(node))))
        traverse_node(node, fn, baton);
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
