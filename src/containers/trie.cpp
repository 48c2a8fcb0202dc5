// The trie: lookup, insertion, deletion and release, each a loop along the way of a key.
#include "kestu_trie.h"

#include "containers/trie_chain.hpp"
#include "mem/nodes.hpp"

#include <utility>

using namespace kestu;
using namespace kestu::trie;

namespace {

// A node that is not an inner one counts as a leaf here, whatever its type.
const Leaf *find_leaf(Node *node, Key key) {
    for (size_t depth = 0; node; ++depth) {
        if (!is_inner(node))
            return as_leaf(node);
        const Stretch stretch(as_inner(node), key, depth);
        depth += stretch.steps;
        if (key.ends_at(depth))
            return stretch.last()->end;
        node = stretch.last()->children[key.half(depth)];
        fetch_leaf_beside(node);
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

// Adds to the counts of the nodes on the way of a key. Those of a chain wait and have their turn a
// few at a time, while the nodes behind the chain come from memory.
class Counter {
  public:
    explicit Counter(uint32_t added) : added_(added) {}
    ~Counter() { add(left_); }
    Counter(const Counter &) = delete;
    Counter &operator=(const Counter &) = delete;

    void add(const Stretch &stretch) {
        stretch.first->count += added_;
        if (stretch.steps > 0) {
            add(left_);
            next_ = stretch.behind;
            left_ = stretch.steps;
        }
    }
    void add_some() {
        if (left_ > 0) [[unlikely]]
            add(std::min(left_, some));
    }

  private:
    static constexpr size_t some = 16;

    void add(size_t count) {
        for (size_t i = 0; i < count; ++i)
            next_[i]->count += added_;
        next_ += count;
        left_ -= count;
    }

    uint32_t added_;
    Inner *const *next_ = nullptr;
    size_t left_ = 0;
};

// Where the way of a key leads: through the inner node `last`, if through any, to the slot behind
// it that holds no inner node; or no farther than to `last`, when the key is used up there.
struct Place {
    Inner *last;
    Node **slot;
    size_t depth;
};

// Follows the way of a key and adds to the counts of the inner nodes on it.
Place follow(Node **slot, Key key, uint32_t added) {
    Counter counter(added);
    Inner *last = nullptr;
    size_t depth = 0;
    for (; *slot && is_inner(*slot); ++depth) {
        const Stretch stretch(as_inner(*slot), key, depth);
        counter.add(stretch);
        last = stretch.last();
        depth += stretch.steps;
        if (key.ends_at(depth))
            return {last, nullptr, depth};
        slot = &last->children[key.half(depth)];
        fetch_leaf_beside(*slot);
        counter.add_some();
    }
    return {last, slot, depth};
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
    if (!place.slot) {
        if (place.last->end)
            return fail(120082);
        place.last->end = leaf;
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

bool leads_only_to(const Inner *inner, const Node *below) {
    return inner->count == 1 && only_node(inner) == below;
}

// The leaf that alone is left below `last`, the last inner node on the way of a key, takes the
// place of that node and of those above it that lead to nothing else.
template <typename Nodes>
void raise_single_leaf(Node **root, Key key, const Inner *last) {
    Node *const leaf = last->count == 1 ? only_node(last) : nullptr;
    if (!leaf || !is_leaf(leaf))
        return;
    Node **top = root;
    Inner *cut = nullptr; // the head of the chain that loses its end
    Node **slot = root;
    for (size_t depth = 0;; ++depth) {
        const Stretch stretch(as_inner(*slot), key, depth);
        size_t step = stretch.steps;
        while (step > 0 && leads_only_to(stretch.at(step - 1), as_node(stretch.at(step))))
            --step;
        if (step > 0) {
            top = &stretch.at(step - 1)->children[key.half(depth + step - 1)];
            cut = stretch.first;
        }
        if (stretch.last() == last)
            break;
        depth += stretch.steps;
        slot = &stretch.last()->children[key.half(depth)];
        if (!leads_only_to(stretch.last(), *slot)) {
            top = slot;
            cut = nullptr;
        }
    }
    for (Node *node = *top; node != leaf;) {
        Node *const below = only_node(as_inner(node));
        Nodes::release(node);
        node = below;
    }
    *top = leaf;
    if (cut)
        HeadMark::clear(cut);
}

// Lowers the counts on the way down, whether or not the key is there: callers rely on counts that
// shrink. Only a key that ends at an inner node without being there leaves that node's count.
template <typename Nodes>
void remove(Node **root, Key key) {
    const auto [last, slot, depth] = follow(root, key, -1u);
    Leaf *found = nullptr; // whose copy of the key may be the very key that was handed in
    if (!slot) {
        if (!last->end || !key.is_of(last->end)) {
            ++last->count;
            return;
        }
        std::swap(found, last->end);
    } else if (*slot && is_leaf(*slot) && key.is_of(as_leaf(*slot))) {
        found = as_leaf(*slot);
        *slot = nullptr;
    }
    if (last)
        raise_single_leaf<Nodes>(root, key, last);
    Nodes::release(found);
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
