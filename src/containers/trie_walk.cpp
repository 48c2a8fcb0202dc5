// The walk over the entries of a trie.
#include "base/kept_errno.hpp"
#include "containers/trie_nodes.hpp"

#include <cstdlib>
#include <iterator>
#include <utility>

using namespace kestu;
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
// with nothing beside the way down is none of them. Without memory for more the highest are lost.
class Forks {
  public:
    Forks() = default;
    ~Forks() { release(); }
    Forks(const Forks &) = delete;
    Forks &operator=(const Forks &) = delete;

    void push(Fork fork) {
        if (end_ - begin_ == room_ && !grow()) {
            ++begin_;
            lost_ = true;
        }
        forks_[end_++ % room_] = fork;
    }
    Fork pop() { return end_ > begin_ ? forks_[--end_ % room_] : Fork{nullptr, 0}; }

    bool lost() const { return lost_; }
    void forget() {
        begin_ = end_ = 0;
        lost_ = false;
    }

  private:
    bool grow() {
        const KeptErrno kept;
        auto *more = static_cast<Fork *>(std::malloc(2 * room_ * sizeof(Fork)));
        if (!more)
            return false;
        for (size_t i = begin_; i < end_; ++i)
            more[i - begin_] = forks_[i % room_];
        release();
        forks_ = more;
        end_ -= begin_;
        begin_ = 0;
        room_ *= 2;
        return true;
    }
    void release() {
        if (forks_ != few_)
            std::free(forks_);
    }

    Fork few_[64];
    Fork *forks_ = few_;
    size_t begin_ = 0, end_ = 0; // numbers of forks, which stand at their remainder by the room
    size_t room_ = std::size(few_);
    bool lost_ = false;
};

// Collects the forks on the way of a leaf's key from `node` at `depth`: what comes after the leaf.
// False when its key does not lead to it.
bool retrace(Forks &forks, const Node *node, const Leaf *leaf, size_t depth) {
    const Key key(leaf);
    forks.forget();
    for (; node && is_inner(node) && depth / 2 <= key.length; ++depth) {
        const unsigned slot = key.ends_at(depth) ? end_slot : 1 + key.half(depth);
        const uint32_t later = occupied(as_inner(node)) & ~((2U << slot) - 1);
        if (later)
            forks.push({as_inner(node), later});
        node = at_slot(as_inner(node), slot);
    }
    return node == reinterpret_cast<const Node *>(leaf);
}

// Finds the forks that were lost below `top`, at whatever depth that stands, by the key of the last
// leaf that was visited. False when there is none, or when a caller changed its key.
bool find_lost(Forks &forks, const Node *top, const Leaf *last) {
    if (!forks.lost() || !last)
        return false;
    for (size_t depth = 0; depth / 2 <= last->length; ++depth)
        if (retrace(forks, top, last, depth))
            return true;
    return false;
}

} // namespace

void traverse_node(const kestu_trie_node_t *top, kestu_trie_func fn, void *baton) {
    Forks forks;
    const Leaf *last = nullptr; // since forks were found again, so that every turn comes further
    Fork fork{nullptr, 0};
    for (const Node *node = top; node;) {
        if (is_inner(node)) {
            if (fork.left)
                forks.push(fork);
            fork = {as_inner(node), occupied(as_inner(node))};
        } else if (is_leaf(node)) {
            last = as_leaf(node);
            fn(last->length, last->key, last->value, baton);
        }
        if (!fork.left)
            fork = forks.pop();
        if (!fork.left && find_lost(forks, top, std::exchange(last, nullptr)))
            fork = forks.pop();
        node = fork.left ? fork.next() : nullptr;
    }
}
