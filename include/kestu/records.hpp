// The iterator of all families: it stands at a record of the C library.
#pragma once

#include "base.hpp"

#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kestu {
inline namespace KESTU_CPP {
namespace detail {

// `Steps` tells what the iterator holds (Place, whose default stands nowhere: the end), what it
// shows, and how it goes on:
//
//     static auto show(const Place &);          // a reference, or a record of references
//     static void next(Place &);
//     static void previous(Place &);            // where there is a way back, from the end too
//     static auto record(const Place &);        // the record of the C library
template <typename Steps>
class Iterator {
    using Place = typename Steps::Place;
    static constexpr bool has_way_back = requires(Place & place) { Steps::previous(place); };

  public:
    using reference = decltype(Steps::show(std::declval<const Place &>()));
    using value_type = std::remove_cvref_t<reference>;
    using difference_type = std::ptrdiff_t;
    using iterator_concept = std::conditional_t<has_way_back, std::bidirectional_iterator_tag,
                                                std::forward_iterator_tag>;
    using iterator_category = std::conditional_t<std::is_reference_v<reference>, iterator_concept,
                                                 std::input_iterator_tag>;

    Iterator() = default;
    explicit Iterator(Place place) noexcept : place_(std::move(place)) {}

    reference operator*() const { return Steps::show(place_); }
    auto operator->() const {
        if constexpr (std::is_reference_v<reference>)
            return std::addressof(**this);
        else
            return Arrow{**this};
    }

    Iterator &operator++() {
        Steps::next(place_);
        return *this;
    }
    Iterator operator++(int) {
        Iterator before = *this;
        ++*this;
        return before;
    }
    Iterator &operator--() requires has_way_back {
        Steps::previous(place_);
        return *this;
    }
    Iterator operator--(int) requires has_way_back {
        Iterator before = *this;
        --*this;
        return before;
    }

    friend bool operator==(const Iterator &a, const Iterator &b) { return a.place_ == b.place_; }

    // The record at which the iterator stands, for C functions and what only the record tells, such
    // as its tag.
    auto record() const { return Steps::record(place_); }

    const Place &place() const { return place_; }
    Place &place() { return place_; }

  private:
    struct Arrow {
        reference shown;
        const reference *operator->() const { return &shown; }
    };

    Place place_{};
};

// Two iterators, for range-for and std::ranges.
template <typename First, typename Last = First>
struct Range {
    First first;
    Last last;
    First begin() const { return first; }
    Last end() const { return last; }
};

// A T that a container holds a pointer to.
template <typename T>
struct Shown {
    using Value = T;
    static T &value(void *pointer) noexcept { return *static_cast<T *>(pointer); }
};

// What containers with keys show of an entry.
template <typename T>
struct Entry {
    std::string_view key;
    T &value;
};

// How the containers, which hold pointers, hold a T. Those of T refer to objects of the caller's,
// which outlive their place in the container; those of std::unique_ptr<T> own them.
template <typename T>
struct Held : Shown<T> {
    using Given = T &; // what goes in
    using Taken = T *; // what comes out, null for nothing
    static constexpr bool is_owned = false;

    static void *pointer(T &value) noexcept {
        return const_cast<std::remove_cv_t<T> *>(std::addressof(value));
    }
    static void give_up(T &) noexcept {}
    static T *take(void *pointer) noexcept { return static_cast<T *>(pointer); }
};

template <typename T>
struct Held<std::unique_ptr<T>> : Shown<T> {
    using Given = std::unique_ptr<T>;
    using Taken = std::unique_ptr<T>;
    static constexpr bool is_owned = true;

    static void *pointer(Given &value) noexcept {
        return const_cast<std::remove_cv_t<T> *>(value.get());
    }
    static void give_up(Given &value) noexcept { static_cast<void>(value.release()); }
    static Taken take(void *pointer) noexcept { return Taken(static_cast<T *>(pointer)); }
};

} // namespace detail
} // namespace KESTU_CPP
} // namespace kestu
