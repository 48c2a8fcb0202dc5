// Lists.
//
//     std::string pear = "pear", apple = "apple";
//     kestu::List<std::string> fruit;              // refers to the strings
//     fruit.push_back(pear);
//     fruit.push_back(apple, 7);                   // with a tag
//     fruit.sort();
//     assert(fruit.front() == "apple" && fruit.begin().record()->tag == 7);
//     kestu::List<std::unique_ptr<int>> numbers;   // owns the numbers
//     numbers.push_back(std::make_unique<int>(1));
#pragma once

#include "../kestu_dl.h"
#include "error.hpp"

#include <functional>

namespace kestu {
inline namespace KESTU_CPP {

// A doubly linked list whose nodes it owns (the `dlm` functions). Iterators stay right until their
// element is removed, and so do references; the end belongs to the list.
template <typename T>
class List {
    using Held = detail::Held<T>;
    struct Steps {
        struct Place {
            kestu_dl_t *node = nullptr;
            const List *list = nullptr;
            bool operator==(const Place &other) const { return node == other.node; }
        };
        static typename Held::Value &show(const Place &place) {
            return Held::value(place.node->data);
        }
        static void next(Place &place) { place.node = place.node->next; }
        static void previous(Place &place) {
            place.node = place.node ? place.node->prev : place.list->last_;
        }
        static kestu_dl_t *record(const Place &place) { return place.node; }
    };

  public:
    using value_type = typename Held::Value; // what the elements are
    using Given = typename Held::Given;      // what goes in: T &, or std::unique_ptr where it owns
    using Taken = typename Held::Taken; // what comes out: T *, or std::unique_ptr where it owns
    using iterator = detail::Iterator<Steps>; // stands at elements
    using const_iterator = iterator; // the same: the elements are not the list's to protect

    List() noexcept = default;
    List(List &&other) noexcept
        : first_(std::exchange(other.first_, nullptr)), last_(std::exchange(other.last_, nullptr)) {
    }
    List &operator=(List &&other) noexcept {
        std::swap(first_, other.first_);
        std::swap(last_, other.last_);
        return *this;
    }
    ~List() { clear(); }

    // The first element.
    iterator begin() const noexcept { return at(first_); }

    // Behind the last element.
    iterator end() const noexcept { return at(nullptr); }

    // Whether there is no element.
    bool empty() const noexcept { return !first_; }

    // How many elements there are, found by a walk.
    size_t size() const { return kestu_dl_count(first_); }

    // The first element, which must be there.
    value_type &front() const noexcept { return Held::value(first_->data); }

    // The last element, which must be there.
    value_type &back() const noexcept { return Held::value(last_->data); }

    // Adds an element at the end.
    iterator push_back(Given value, uint32_t tag = 0) {
        detail::check(append(value, tag));
        return at(last_);
    }

    // As `push_back` above, but returns the error.
    Expected<iterator> push_back(std::nothrow_t, Given value, uint32_t tag = 0) {
        if (kestu_error_t *err = append(value, tag))
            return detail::failed(err);
        return at(last_);
    }

    // Adds an element at the beginning.
    iterator push_front(Given value, uint32_t tag = 0) {
        detail::check(prepend(value, tag));
        return at(first_);
    }

    // As `push_front` above, but returns the error.
    Expected<iterator> push_front(std::nothrow_t, Given value, uint32_t tag = 0) {
        if (kestu_error_t *err = prepend(value, tag))
            return detail::failed(err);
        return at(first_);
    }

    // Adds an element before `place`.
    iterator insert(iterator place, Given value, uint32_t tag = 0) {
        detail::check(add(place, value, tag));
        return place;
    }

    // As `insert` above, but returns the error.
    Expected<iterator> insert(std::nothrow_t, iterator place, Given value, uint32_t tag = 0) {
        if (kestu_error_t *err = add(place, value, tag))
            return detail::failed(err);
        return place;
    }

    // Removes the first element and returns it; null when there is none.
    Taken pop_front() { return take(begin()); }

    // Removes the last element and returns it; null when there is none.
    Taken pop_back() { return take(at(last_)); }

    // Removes the element at `place` and returns it; null at the end.
    Taken take(iterator place) {
        kestu_dl_t *node = place.record();
        if (!node)
            return nullptr;
        first_ = node == first_ ? node->next : first_;
        last_ = node == last_ ? node->prev : last_;
        Taken taken = Held::take(node->data);
        kestu_dlm_delete(node);
        return taken;
    }

    // Removes the element at `place` and returns the place of the next one.
    iterator erase(iterator place) {
        iterator next = std::next(place);
        take(place);
        return next;
    }

    // Removes all elements.
    void clear() {
        if constexpr (Held::is_owned)
            for (value_type &element : *this)
                Held::take(&element);
        kestu_dlm_destroy(&first_);
        last_ = nullptr;
    }

    // Sorts by `less`, stable. What it throws leaves all elements in the list, in some order.
    template <typename Less = std::less<>>
    void sort(Less less = {}) {
        const auto compare = [&less](uint32_t, void *a, uint32_t, void *b) noexcept(
                                 noexcept(less(Held::value(b), Held::value(a)))) -> int {
            return less(Held::value(b), Held::value(a));
        };
        detail::Carried carried(compare);
        kestu_dlm_sort(&first_, carried.template callback<kestu_dl_compare_func>(), &carried);
        last_ = kestu_dl_get_last(first_);
        carried.rethrow();
    }

    // Reverses the order.
    void reverse() {
        last_ = first_;
        kestu_dl_reverse(&first_);
    }

    // Moves all elements of `other` to the end of this list.
    void append(List &&other) noexcept {
        if (this == &other || !other.first_)
            return;
        first_ = first_ ? kestu_dl_join(last_, other.first_) : other.first_;
        last_ = other.last_;
        other.first_ = other.last_ = nullptr;
    }

    // The first node, null for an empty list.
    kestu_dl_t *get() const noexcept { return first_; }

  private:
    iterator at(kestu_dl_t *node) const noexcept { return iterator({node, this}); }

    kestu_error_t *append(Given &value, uint32_t tag) {
        kestu_error_t *err = kestu_dlm_append(&last_, tag, Held::pointer(value), &last_);
        if (!err)
            Held::give_up(value);
        if (!first_)
            first_ = last_;
        return err;
    }
    kestu_error_t *prepend(Given &value, uint32_t tag) {
        kestu_error_t *err = kestu_dlm_prepend(&first_, tag, Held::pointer(value), &first_);
        if (!err)
            Held::give_up(value);
        if (!last_)
            last_ = first_;
        return err;
    }
    kestu_error_t *add(iterator &place, Given &value, uint32_t tag) {
        kestu_dl_t *node = place.record();
        kestu_error_t *err = nullptr;
        if (!node) {
            err = append(value, tag);
            place = at(err ? nullptr : last_);
        } else if (node == first_) {
            err = prepend(value, tag);
            place = begin();
        } else {
            err = kestu_dlm_add_before(&node, tag, Held::pointer(value), &node);
            if (!err)
                Held::give_up(value);
            place = at(node);
        }
        return err;
    }

    kestu_dl_t *first_ = nullptr;
    kestu_dl_t *last_ = nullptr;
};

} // namespace KESTU_CPP
} // namespace kestu
