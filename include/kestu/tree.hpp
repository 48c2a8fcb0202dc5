// Trees.
//
//     std::string fruit = "fruit", apple = "apple", pear = "pear";
//     kestu::Tree<std::string> tree;
//     auto node = tree.append(fruit);
//     tree.append(node, apple);
//     tree.append(node, pear, 7);                  // with a tag
//     for (std::string &text : tree)               // fruit, apple, pear
//         puts(text.c_str());
//     for (std::string &text : tree.children(node))
//         assert(text != "fruit");
#pragma once

#include "../kestu_tree.h"
#include "error.hpp"

#include <cstdint>

namespace kestu {
inline namespace KESTU_CPP {

// A tree whose nodes it owns (the `treem` functions). Iterators stay right until their node is
// erased.
template <typename T>
class Tree {
    using Held = detail::Held<T>;
    struct Siblings {
        using Place = kestu_tree_t *;
        static typename Held::Value &show(Place node) { return Held::value(node->data); }
        static void next(Place &node) { node = node->next; }
        static kestu_tree_t *record(Place node) { return node; }
    };
    struct Steps : Siblings { // parents before their children
        static void next(kestu_tree_t *&node) {
            // What was made next mostly lies a little further on. A guess does no harm.
            __builtin_prefetch(
                reinterpret_cast<const void *>(reinterpret_cast<uintptr_t>(node) + 2048));
            if (kestu_tree_t *child = node->child) {
                while (child->prev)
                    child = child->prev;
                node = child;
                return;
            }
            while (node && !node->next)
                node = node->parent;
            if (node)
                node = node->next;
        }
    };

  public:
    using value_type = typename Held::Value; // what the elements are
    using Given = typename Held::Given;      // what goes in: T &, or std::unique_ptr where it owns
    using Taken = typename Held::Taken; // what comes out: T *, or std::unique_ptr where it owns
    using iterator = detail::Iterator<Steps>; // stands at nodes, parents before their children
    using const_iterator = iterator; // the same: the elements are not the tree's to protect
    using sibling_iterator = detail::Iterator<Siblings>; // stands at nodes of one level

    Tree() noexcept = default;
    Tree(Tree &&other) noexcept
        : first_(std::exchange(other.first_, nullptr)), last_(std::exchange(other.last_, nullptr)) {
    }
    Tree &operator=(Tree &&other) noexcept {
        std::swap(first_, other.first_);
        std::swap(last_, other.last_);
        return *this;
    }
    ~Tree() { clear(); }

    // The first node; all follow, parents before their children.
    iterator begin() const noexcept { return iterator(first_); }

    // Behind the last node.
    iterator end() const noexcept { return iterator(); }

    // Whether there is no node.
    bool empty() const noexcept { return !first_; }

    // How many nodes there are, found by a walk.
    uint64_t size() const { return kestu_tree_count(first_); }

    // The nodes of the top level.
    detail::Range<sibling_iterator> top() const noexcept { return {sibling_iterator(first_), {}}; }

    // The nodes just below `parent`.
    detail::Range<sibling_iterator> children(iterator parent) const {
        return {sibling_iterator(kestu_tree_get_first(parent.record()->child)), {}};
    }

    // The node above `node`; the end for a node of the top level.
    iterator parent(iterator node) const noexcept { return iterator(node.record()->parent); }

    // The node at which an iterator over siblings stands.
    static iterator node(sibling_iterator sibling) noexcept { return iterator(sibling.record()); }

    // Adds a node at the end of the top level.
    iterator append(Given value, uint32_t tag = 0) {
        detail::check(put(value, tag));
        return iterator(last_);
    }

    // As `append` above, but returns the error.
    Expected<iterator> append(std::nothrow_t, Given value, uint32_t tag = 0) {
        if (kestu_error_t *err = put(value, tag))
            return detail::failed(err);
        return iterator(last_);
    }

    // Adds a node as the last child of `parent`.
    iterator append(iterator parent, Given value, uint32_t tag = 0) {
        kestu_tree_t *node = nullptr;
        detail::check(put_below(parent.record(), value, tag, &node));
        return iterator(node);
    }

    // As `append` above, but returns the error.
    Expected<iterator> append(std::nothrow_t, iterator parent, Given value, uint32_t tag = 0) {
        kestu_tree_t *node = nullptr;
        if (kestu_error_t *err = put_below(parent.record(), value, tag, &node))
            return detail::failed(err);
        return iterator(node);
    }

    // Removes the node with all that is below it.
    void erase(iterator place) {
        kestu_tree_t *node = place.record();
        first_ = node == first_ ? node->next : first_;
        last_ = node == last_ ? node->prev : last_;
        kestu_treem_delete_func(kestu_tree_extract(node), release, nullptr);
    }

    // Removes all nodes.
    void clear() {
        kestu_treem_delete_func(first_, release, nullptr);
        first_ = last_ = nullptr;
    }

    // The first node, null for an empty tree.
    kestu_tree_t *get() const noexcept { return first_; }

  private:
    static void release(uint32_t, void *data, void *) noexcept { Held::take(data); }

    kestu_error_t *put(Given &value, uint32_t tag) {
        kestu_error_t *err = kestu_treem_append(&last_, tag, Held::pointer(value), &last_);
        if (!err)
            Held::give_up(value);
        if (!first_)
            first_ = last_;
        return err;
    }
    static kestu_error_t *put_below(kestu_tree_t *parent, Given &value, uint32_t tag,
                                    kestu_tree_t **node) {
        kestu_error_t *err = kestu_treem_append_child(parent, tag, Held::pointer(value), node);
        if (!err)
            Held::give_up(value);
        return err;
    }

    kestu_tree_t *first_ = nullptr;
    kestu_tree_t *last_ = nullptr; // of the top level
};

} // namespace KESTU_CPP
} // namespace kestu
