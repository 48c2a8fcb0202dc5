// The walk over the entries of a trie.
#include "containers/trie_nodes.hpp"
#include "kestu_mem.h"

#include <cstdlib>
#include <iterator>

using namespace kestu::trie;

namespace {

// An inner node with the set of its slots that are yet to be visited.
struct Fork {
    const Inner *inner;
    uint32_t left;

    const Node *next() {
        const auto slot = static_cast<unsigned>(std::countr_zero(left));
        left &= left - 1;
        return at_slot(inner, slot);
    }
};

// The forks above the current one that have slots left. They are few, however long the keys: a node
// with nothing beside the way down is none of them.
class Forks {
  public:
    Forks() = default;
    ~Forks() {
        if (forks != few)
            kestu_mem_free(forks);
    }
    Forks(const Forks &) = delete;
    Forks &operator=(const Forks &) = delete;

    // False when there is no memory for one more.
    bool push(Fork fork) {
        if (count == room && !grow())
            return false;
        forks[count++] = fork;
        return true;
    }
    Fork pop() { return count > 0 ? forks[--count] : Fork{nullptr, 0}; }

  private:
    bool grow() {
        auto *more = static_cast<Fork *>(std::malloc(2 * room * sizeof(Fork)));
        if (!more)
            return false;
        std::copy_n(forks, count, more);
        if (forks != few)
            kestu_mem_free(forks);
        forks = more;
        room *= 2;
        return true;
    }

    Fork few[64];
    Fork *forks = few;
    size_t count = 0, room = std::size(few);
};

} // namespace

void traverse_node(const kestu_trie_node_t *node, kestu_trie_func fn, void *baton) {
    Forks forks;
    for (Fork fork{nullptr, 0}; node; node = fork.left ? fork.next() : nullptr) {
        if (is_inner(node)) {
            const Fork below{as_inner(node), occupied(as_inner(node))};
            if (!fork.left || forks.push(fork))
                fork = below;
            else // Without memory to come back here, a walk of its own sees to what is below. It
                 // takes an eighth as much of the stack, at most, as the nodes on the way take.
                traverse_node(node, fn, baton);
        } else if (is_leaf(node)) {
            const Leaf *leaf = as_leaf(node);
            fn(leaf->length, leaf->key, leaf->value, baton);
        }
        if (!fork.left)
            fork = forks.pop();
    }
}
