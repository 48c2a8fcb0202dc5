// The trie: lookup, insertion, deletion and release, each a loop along the way of a key.
#include "kestu_trie.h"

#include "containers/nodes.hpp"
#include "containers/trie_chain.hpp"

using namespace kestu;
using namespace kestu::trie;

namespace {

// A node that is not an inner one counts as a leaf here, whatever its type.
const Leaf *find_leaf(const Node *node, Key key) {
    for (size_t depth = 0; node;) {
        if (!is_inner(node))
            return as_leaf(node);
        const Inner *inner = as_inner(node);
        if (const Chain *chain = chain_from(inner); chain && chain->leads(key, depth)) {
            node = as_node(chain->last);
            depth += chain->steps;
            continue;
        }
        if (key.ends_at(depth))
            return inner->end;
        node = inner->children[key.half(depth++)];
    }
    return nullptr;
}

// One block holds a leaf and its key, so that a lookup finds both together.
template <typename Nodes>
kestu_error_t *make_leaf(const Nodes &nodes, Key key, void *value, Leaf **leaf) {
    size_t bytes = 0;
    if (__builtin_add_overflow(sizeof(Leaf) + 1, key.length, &bytes))
        bytes = SIZE_MAX;
    if (kestu_error_t *err = nodes.make(leaf, bytes))
        return err;
    auto *copy = reinterpret_cast<uint8_t *>(*leaf + 1);
    if (key.length > 0)
        std::memcpy(copy, key.bytes, key.length);
    copy[key.length] = 0;
    **leaf = {KESTU_TRIE_LEAF, copy, key.length, value};
    return nullptr;
}

// Releases what hangs below a slot. The inner nodes that wait for it hang on one another by their
// `end`, whose leaf goes first, so that no depth needs a stack.
template <typename Nodes>
void release_all(Node *root) {
    Leaf *waiting = nullptr;
    const auto take = [&waiting](Node *node) {
        if (!node)
            return;
        if (is_inner(node)) {
            Nodes::release(as_inner(node)->end);
            as_inner(node)->end = waiting;
            waiting = reinterpret_cast<Leaf *>(node);
        } else if (is_leaf(node)) {
            Nodes::release(node);
        }
    };
    take(root);
    while (waiting) {
        auto *inner = reinterpret_cast<Inner *>(waiting);
        waiting = inner->end;
        for (Node *child : inner->children)
            take(child);
        Nodes::release(inner);
    }
}

// Where the way of a key leads: to a slot that holds no inner node, or to the inner node at which
// the key is used up.
struct Place {
    Node **slot;
    size_t depth;
    Inner *ends_at() const { return *slot && is_inner(*slot) ? as_inner(*slot) : nullptr; }
};

// Follows the way of a key and adds to the counts of the inner nodes on it.
Place follow(Node **slot, Key key, uint32_t added) {
    size_t depth = 0;
    while (*slot && is_inner(*slot)) {
        Inner *inner = as_inner(*slot);
        inner->count += added;
        if (const Chain *chain = chain_from(inner); chain && chain->leads(key, depth)) {
            inner = chain->add_to_counts(inner, added);
            depth += chain->steps - 1;
        }
        if (key.ends_at(depth))
            break;
        slot = &inner->children[key.half(depth++)];
    }
    return {slot, depth};
}

void attach(Inner *inner, size_t depth, Leaf *leaf) {
    const Key key(leaf);
    if (key.ends_at(depth))
        inner->end = leaf;
    else
        inner->children[key.half(depth)] = as_node(leaf);
}

// Puts inner nodes in the place of a leaf, down to the depth at which its key and the new one part.
template <typename Nodes>
kestu_error_t *split(const Nodes &nodes, Place place, Leaf *leaf) {
    Leaf *const present = as_leaf(*place.slot);
    const Key key(leaf);
    if (key.is_of(present))
        return fail(120082);
    const size_t last = parting(key, Key(present), place.depth);
    ChainMaker chain(key, place.depth, last);
    Node *top = nullptr;
    Node **slot = &top;
    for (size_t depth = place.depth;; ++depth) {
        Inner *inner = nullptr;
        if (kestu_error_t *err = nodes.make(&inner, chain.block_size(depth))) {
            release_all<Nodes>(top);
            return err;
        }
        *inner = {KESTU_TRIE_INNER, nullptr, 2, {}};
        chain.add(inner, depth);
        *slot = as_node(inner);
        if (depth == last) {
            attach(inner, depth, present);
            attach(inner, depth, leaf);
            break;
        }
        slot = &inner->children[key.half(depth)];
    }
    *place.slot = top;
    return nullptr;
}

template <typename Nodes>
kestu_error_t *put(const Nodes &nodes, Place place, Leaf *leaf) {
    if (Inner *inner = place.ends_at()) {
        if (inner->end)
            return fail(120082);
        inner->end = leaf;
        return nullptr;
    }
    if (*place.slot)
        return is_leaf(*place.slot) ? split(nodes, place, leaf) : fail(120091);
    *place.slot = as_node(leaf);
    return nullptr;
}

// Counts on the way down, which is right in nearly all cases, and takes it back after a failure.
template <typename Nodes>
kestu_error_t *insert(const Nodes &nodes, kestu_trie_t *trie, Key key, void *value,
                      const char *failed) {
    if (!trie)
        return nullptr;
    Leaf *leaf = nullptr;
    if (kestu_error_t *err = make_leaf(nodes, key, value, &leaf))
        return wrap(err, failed);
    if (kestu_error_t *err = put(nodes, follow(&trie->root, key, 1), leaf)) {
        follow(&trie->root, key, -1u);
        Nodes::release(leaf);
        return wrap(err, failed);
    }
    return nullptr;
}

// The leaf that alone is left below the inner node `last` takes the place of that node and of those
// above it, up to the slot `top`, that lead to nothing else. False when there is no such leaf.
template <typename Nodes>
bool raise_single_leaf(Node **top, const Inner *last) {
    Node *const leaf = last && last->count == 1 ? only_node(last) : nullptr;
    if (!leaf || !is_leaf(leaf))
        return false;
    for (Node *node = *top; node != leaf;) {
        Node *const below = only_node(as_inner(node));
        Nodes::release(node);
        node = below;
    }
    *top = leaf;
    return true;
}

// Lowers the counts on the way down, whether or not the key is there: callers rely on counts that
// shrink. Only a key that ends at an inner node without being there leaves that node's count.
template <typename Nodes>
void remove(Node **root, Key key) {
    Node **slot = root;
    Node **top = root; // from here down to `last` no node leads to anything beside
    Inner *last = nullptr;
    Inner *head = nullptr; // of the chain by which `slot` was reached, if it was by one
    Inner *cut = nullptr;  // the same for `top`
    const auto pass = [&](Inner *inner) {
        if (last && !(last->count == 1 && only_node(last) == as_node(inner))) {
            top = slot;
            cut = head;
        }
        --inner->count;
        last = inner;
    };
    for (size_t depth = 0; *slot && is_inner(*slot);) {
        Inner *const inner = as_inner(*slot);
        const bool ends = key.ends_at(depth);
        if (ends && !(inner->end && key.is_of(inner->end)))
            return;
        pass(inner);
        if (ends) {
            Nodes::release(inner->end);
            inner->end = nullptr;
            break;
        }
        const Chain *chain = chain_from(inner);
        head = chain && chain->leads(key, depth) ? inner : nullptr;
        for (size_t i = 0; head && i + 1 < chain->steps; ++i) {
            slot = &last->children[key.half(depth++)];
            pass(chain->nodes()[i]);
        }
        slot = &last->children[key.half(depth++)];
    }
    if (*slot && is_leaf(*slot) && key.is_of(as_leaf(*slot))) {
        Nodes::release(*slot);
        *slot = nullptr;
    }
    if (raise_single_leaf<Nodes>(top, last) && cut)
        HeadMark::set(cut, 0);
}

} // namespace

// Callers rely on null whatever happens: a pool without memory shows as a null handle.
kestu_error_t *kestu_trie_create(kestu_trie_t **out, apr_pool_t *pool) {
    *out = static_cast<kestu_trie_t *>(apr_palloc(pool, sizeof **out));
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
