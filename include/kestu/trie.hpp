// Tries.
//
//     int ann = 1, anna = 2;
//     kestu::Trie<int> ages;
//     ages.insert("Ann", ann);
//     ages.insert("Anna", anna);
//     for (auto [name, age] : ages)                // std::string_view and int &
//         assert(*ages.find(name) == age);
#pragma once

#include "../kestu_trie.h"
#include "error.hpp"

#include <string_view>
#include <vector>

namespace kestu {
inline namespace KESTU_CPP {

// A trie whose nodes it owns (the `triem` functions), in the order of kestu_trie_walk. Iterators
// stay right until the trie changes. They keep the way to their entry, which makes copies of them
// dear; `each` is the faster walk.
template <typename T>
class Trie {
    using Held = detail::Held<T>;

  public:
    using Entry = detail::Entry<typename Held::Value>; // a key and the value under it

  private:
    // A branching with those of its children that are still to be visited, a bit for each.
    struct Branch {
        const kestu_trie_inner_t *node;
        unsigned children;
    };
    struct Steps {
        struct Place {
            const kestu_trie_leaf_t *leaf = nullptr;
            std::vector<Branch> way = {};
            bool operator==(const Place &other) const { return leaf == other.leaf; }
        };
        static Entry show(const Place &place) {
            return {key_of(place.leaf->length, place.leaf->key), Held::value(place.leaf->value)};
        }
        static const kestu_trie_leaf_t *record(const Place &place) { return place.leaf; }

        static void next(Place &place) {
            place.leaf = nullptr;
            if (!place.way.empty())
                descend(place, take_child(place.way));
        }

        // Goes to the first leaf from `node` on, if there is one: branchings may have lost theirs.
        static void descend(Place &place, const kestu_trie_node_t *node) {
            while (node->type == KESTU_TRIE_INNER) {
                const auto *inner = reinterpret_cast<const kestu_trie_inner_t *>(node);
                unsigned children = 0;
                for (unsigned i = 0; i < 16; ++i)
                    children |= static_cast<unsigned>(inner->children[i] != nullptr) << i;
                if (children != 0)
                    place.way.push_back({inner, children});
                place.leaf = inner->end;
                if (place.leaf || place.way.empty())
                    return;
                node = take_child(place.way);
            }
            place.leaf = reinterpret_cast<const kestu_trie_leaf_t *>(node);
        }

        static const kestu_trie_node_t *take_child(std::vector<Branch> &way) {
            Branch &last = way.back();
            const kestu_trie_node_t *child = last.node->children[__builtin_ctz(last.children)];
            last.children &= last.children - 1;
            if (last.children == 0)
                way.pop_back();
            return child;
        }
    };

  public:
    using value_type = Entry;           // what the elements are
    using Given = typename Held::Given; // what goes in: T &, or std::unique_ptr where it owns
    using Taken = typename Held::Taken; // what comes out: T *, or std::unique_ptr where it owns
    using iterator = detail::Iterator<Steps>; // stands at entries
    using const_iterator = iterator;          // the same: the values are not the trie's to protect

    Trie() noexcept = default;
    Trie(Trie &&other) noexcept : trie_(std::exchange(other.trie_, nullptr)) {}
    Trie &operator=(Trie &&other) noexcept {
        std::swap(trie_, other.trie_);
        return *this;
    }
    ~Trie() { clear(); }

    // The first entry.
    iterator begin() const {
        typename Steps::Place place;
        if (!empty())
            Steps::descend(place, trie_->root);
        return iterator(std::move(place));
    }

    // Behind the last entry.
    iterator end() const noexcept { return iterator(); }

    // Whether there is no entry.
    bool empty() const noexcept { return !trie_ || !trie_->root; }

    // How many entries there are, found by a walk.
    size_t size() const { return kestu_trie_count(trie_); }

    // The value under the key, null when there is none.
    typename Held::Value *find(std::string_view key) const {
        return static_cast<typename Held::Value *>(
            kestu_trie_search(trie_, key.data(), key.size()));
    }

    // Whether the key is there.
    bool contains(std::string_view key) const {
        return kestu_trie_find(trie_, key.data(), key.size(), nullptr) != 0;
    }

    // Calls `fn` with key and value of all entries.
    template <typename Function>
    void each(Function fn) const {
        walk(fn, [this](auto callback, void *baton) { kestu_trie_walk(trie_, callback, baton); });
    }

    // As `each` above, for the entries whose keys begin with the prefix.
    template <typename Function>
    void each(std::string_view prefix, Function fn) const {
        walk(fn, [this, prefix](auto callback, void *baton) {
            kestu_trie_walk_prefix(trie_, prefix.data(), prefix.size(), callback, baton);
        });
    }

    // Adds a value under a key, which must not be there yet.
    void insert(std::string_view key, Given value) { detail::check(put(key, value)); }

    // As `insert` above, but returns the error.
    Expected<void> insert(std::nothrow_t, std::string_view key, Given value) {
        return detail::outcome(put(key, value));
    }

    // Removes an entry. Whether it was there.
    bool erase(std::string_view key) {
        void *value = nullptr;
        if (!kestu_trie_find(trie_, key.data(), key.size(), &value))
            return false;
        kestu_triem_delete(trie_, key.data(), key.size());
        Held::take(value);
        return true;
    }

    // Removes an entry and returns its value; null when there was none.
    Taken take(std::string_view key) {
        void *value = nullptr;
        if (kestu_trie_find(trie_, key.data(), key.size(), &value))
            kestu_triem_delete(trie_, key.data(), key.size());
        return Held::take(value);
    }

    // Removes all entries.
    void clear() {
        if constexpr (Held::is_owned)
            each(
                [](std::string_view, typename Held::Value &value) noexcept { Held::take(&value); });
        kestu_triem_destroy(&trie_);
    }

    // The trie, which stays this one's; null before the first insertion.
    kestu_trie_t *get() const noexcept { return trie_; }

  private:
    static std::string_view key_of(uint64_t length, const uint8_t *key) noexcept {
        return {reinterpret_cast<const char *>(key), length};
    }

    template <typename Function, typename Walk>
    static void walk(Function &fn, Walk walk_with) {
        const auto visit = [&fn](uint64_t length, const uint8_t *key, void *value) noexcept(
                               noexcept(fn({}, std::declval<typename Held::Value &>()))) {
            fn(key_of(length, key), Held::value(value));
        };
        detail::Carried carried(visit);
        walk_with(carried.template callback<kestu_trie_func>(), static_cast<void *>(&carried));
        carried.rethrow();
    }

    kestu_error_t *put(std::string_view key, Given &value) {
        kestu_error_t *err = trie_ ? nullptr : kestu_triem_create(&trie_);
        if (!err)
            err = kestu_triem_insert(trie_, key.data(), key.size(), Held::pointer(value));
        if (!err)
            Held::give_up(value);
        return err;
    }

    kestu_trie_t *trie_ = nullptr;
};

} // namespace KESTU_CPP
} // namespace kestu
