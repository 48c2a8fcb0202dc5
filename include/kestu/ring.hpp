// Circular lists, whose nodes are used again.
//
//     kestu::Pool pool;
//     int a = 1, b = 2, c = 3;
//     kestu::Ring<int> waiting(pool);
//     auto first = waiting.add(a);
//     waiting.add(b);
//     waiting.erase(first);
//     waiting.add(c);                              // in the node of the first one
//     assert(*waiting.begin() == 3 && waiting.size() == 2);
#pragma once

#include "../kestu_cdl.h"
#include "error.hpp"

namespace kestu {
inline namespace KESTU_CPP {

// A circular list whose nodes live in a pool, which outlives it. Only occupied nodes are walked.
template <typename T>
class Ring {
    using Held = detail::Held<T>;
    struct Steps {
        struct Place {
            kestu_cdl_t *node = nullptr;
            kestu_cdl_t *last = nullptr; // of all nodes
            bool operator==(const Place &other) const { return node == other.node; }
        };
        static typename Held::Value &show(const Place &place) {
            return Held::value(place.node->data);
        }
        static void next(Place &place) { place.node = occupied(place.node->next); }
        static void previous(Place &place) {
            kestu_cdl_t *node = place.node ? place.node->prev : place.last;
            while (node && !(node->flags & KESTU_CDL_OCCUPIED))
                node = node->prev;
            place.node = node;
        }
        static kestu_cdl_t *record(const Place &place) { return place.node; }

        static kestu_cdl_t *occupied(kestu_cdl_t *node) {
            while (node && !(node->flags & KESTU_CDL_OCCUPIED))
                node = node->next;
            return node;
        }
    };

  public:
    using value_type = typename Held::Value; // what the elements are
    using Given = typename Held::Given;      // what goes in: T &, or std::unique_ptr where it owns
    using Taken = typename Held::Taken; // what comes out: T *, or std::unique_ptr where it owns
    using iterator = detail::Iterator<Steps>; // stands at elements
    using const_iterator = iterator; // the same: the elements are not the ring's to protect

    // Nothing yet; nodes will be made in `pool`.
    explicit Ring(apr_pool_t *pool) noexcept : pool_(pool) {}
    Ring(Ring &&other) noexcept
        : pool_(other.pool_), first_(std::exchange(other.first_, nullptr)),
          last_(std::exchange(other.last_, nullptr)) {}
    Ring &operator=(Ring &&other) noexcept {
        std::swap(pool_, other.pool_);
        std::swap(first_, other.first_);
        std::swap(last_, other.last_);
        return *this;
    }
    ~Ring() { clear(); }

    // The first element.
    iterator begin() const noexcept { return at(Steps::occupied(first_)); }

    // Behind the last element.
    iterator end() const noexcept { return at(nullptr); }

    // Whether there is no element.
    bool empty() const noexcept { return !Steps::occupied(first_); }

    // How many elements there are, found by a walk.
    size_t size() const { return kestu_cdl_count(first_); }

    // Puts an element into the first free node, or into a new one behind the last.
    iterator add(Given value, uint32_t tag = 0) {
        kestu_cdl_t *node = nullptr;
        detail::check(put(value, tag, &node));
        return at(node);
    }

    // As `add` above, but returns the error.
    Expected<iterator> add(std::nothrow_t, Given value, uint32_t tag = 0) {
        kestu_cdl_t *node = nullptr;
        if (kestu_error_t *err = put(value, tag, &node))
            return detail::failed(err);
        return at(node);
    }

    // Frees the node of an element and returns the element; null at the end.
    Taken take(iterator place) {
        kestu_cdl_t *node = place.record();
        if (!node)
            return nullptr;
        kestu_cdl_set_free(node);
        return Held::take(node->data);
    }

    // Frees the node of an element and returns the place of the next one.
    iterator erase(iterator place) {
        take(place++);
        return place;
    }

    // Frees the nodes of all elements.
    void clear() {
        if constexpr (Held::is_owned)
            for (value_type &element : *this)
                Held::take(&element);
        kestu_cdl_set_allfree(first_);
    }

    // The first node, occupied or free; null before there is one.
    kestu_cdl_t *get() const noexcept { return first_; }

  private:
    iterator at(kestu_cdl_t *node) const noexcept { return iterator({node, last_}); }

    kestu_error_t *put(Given &value, uint32_t tag, kestu_cdl_t **node) {
        if ((*node = kestu_cdl_get_ready(first_))) {
            kestu_cdl_set_data_tag(*node, Held::pointer(value), tag);
        } else {
            if (kestu_error_t *err =
                    kestu_cdl_append(&last_, tag, Held::pointer(value), &last_, pool_))
                return err;
            *node = last_;
            if (!first_)
                first_ = last_;
        }
        Held::give_up(value);
        return nullptr;
    }

    apr_pool_t *pool_;
    kestu_cdl_t *first_ = nullptr;
    kestu_cdl_t *last_ = nullptr;
};

} // namespace KESTU_CPP
} // namespace kestu
