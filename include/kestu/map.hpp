// Ordered maps.
//
//     int anna = 31, bert = 42;
//     kestu::Map<int> ages;                        // refers to the ages
//     ages.insert("Anna", anna);
//     ages.insert("Bert", bert);
//     for (auto [name, age] : ages)                // std::string_view and int &
//         printf("%.*s is %d\n", int(name.size()), name.data(), age);
//     assert(*ages.find("Bert") == 42 && !ages.find("Carl"));
//     kestu::Map<std::unique_ptr<int>> owned;      // owns its values
//     owned.insert("Anna", std::make_unique<int>(31));
#pragma once

#include "../kestu_map.h"
#include "error.hpp"

#include <string_view>

namespace kestu {
inline namespace KESTU_CPP {

// A map from byte strings to T in the order of the bytes. Iterators stay right until their entry is
// removed.
template <typename T>
class Map {
    using Held = detail::Held<T>;

  public:
    using Entry = detail::Entry<typename Held::Value>; // a key and the value under it

  private:
    struct Steps {
        struct Place {
            kestu_map_cursor_t cursor{};
            kestu_map_t *map = nullptr;
            bool operator==(const Place &other) const { return cursor.key == other.cursor.key; }
        };
        static Entry show(const Place &place) {
            return {{static_cast<const char *>(place.cursor.key), place.cursor.length},
                    Held::value(place.cursor.value)};
        }
        static void next(Place &place) { kestu_map_next(&place.cursor); }
        static void previous(Place &place) {
            place.cursor.key ? kestu_map_previous(&place.cursor)
                             : kestu_map_last(place.map, &place.cursor);
        }
        static const kestu_map_cursor_t *record(const Place &place) { return &place.cursor; }
    };

  public:
    using value_type = Entry;           // what the elements are
    using Given = typename Held::Given; // what goes in: T &, or std::unique_ptr where it owns
    using Taken = typename Held::Taken; // what comes out: T *, or std::unique_ptr where it owns
    using iterator = detail::Iterator<Steps>; // stands at entries
    using const_iterator = iterator;          // the same: the values are not the map's to protect

    // Where the keys that begin with a prefix end.
    struct PrefixEnd {
        std::string_view prefix; // how the keys begin

        // Whether the key at `at` does not begin so.
        friend bool operator==(const iterator &at, const PrefixEnd &end) {
            return !at.record()->key || !(*at).key.starts_with(end.prefix);
        }
    };

    Map() noexcept = default;
    Map(Map &&other) noexcept : map_(std::exchange(other.map_, nullptr)) {}
    Map &operator=(Map &&other) noexcept {
        std::swap(map_, other.map_);
        return *this;
    }
    ~Map() { kestu_map_destroy(&map_); }

    // The first entry.
    iterator begin() const { return at(kestu_map_first); }

    // Behind the last entry.
    iterator end() const noexcept { return iterator({{}, map_}); }

    // Whether there is no entry.
    bool empty() const { return size() == 0; }

    // How many entries there are, in constant time.
    size_t size() const { return kestu_map_count(map_); }

    // The value under the key, null when there is none.
    typename Held::Value *find(std::string_view key) const {
        void *value = nullptr;
        kestu_map_find(map_, key.data(), key.size(), &value);
        return static_cast<typename Held::Value *>(value);
    }

    // Whether the key is there.
    bool contains(std::string_view key) const {
        return kestu_map_find(map_, key.data(), key.size(), nullptr) != 0;
    }

    // The entry of the key; the end when there is none.
    iterator seek(std::string_view key) const { return at(kestu_map_seek, key); }

    // The first entry whose key is not before the key.
    iterator lower_bound(std::string_view key) const { return at(kestu_map_lower_bound, key); }

    // The first entry whose key is behind the key.
    iterator upper_bound(std::string_view key) const { return at(kestu_map_upper_bound, key); }

    // The entry with the longest key that begins the text.
    iterator longest_prefix(std::string_view text) const {
        return at(kestu_map_longest_prefix, text);
    }

    // The entries whose keys begin with `prefix`, which lives as long as the range.
    detail::Range<iterator, PrefixEnd> with_prefix(std::string_view prefix) const {
        return {lower_bound(prefix), {prefix}};
    }

    // Calls `fn` with key and value of all entries, until it returns true; the fastest way. Whether
    // it did.
    template <typename Function>
    bool each(Function fn) const {
        return walk(fn, [this](auto callback, void *baton) {
            return kestu_map_walk(map_, callback, baton);
        });
    }

    // As `each` above, for the entries whose keys begin with the prefix.
    template <typename Function>
    bool each(std::string_view prefix, Function fn) const {
        return walk(fn, [this, prefix](auto callback, void *baton) {
            return kestu_map_walk_prefix(map_, prefix.data(), prefix.size(), callback, baton);
        });
    }

    // Adds a value under a key, which must not be there yet.
    void insert(std::string_view key, Given value) { detail::check(put(key, value)); }

    // As `insert` above, but returns the error.
    Expected<void> insert(std::nothrow_t, std::string_view key, Given value) {
        return detail::outcome(put(key, value));
    }

    // Adds a value in the place of the one under the key, which it returns; null when there was
    // none.
    Taken replace(std::string_view key, Given value) {
        void *old = nullptr;
        detail::check(put_over(key, value, &old));
        return Held::take(old);
    }

    // As `replace` above, but returns the error.
    Expected<Taken> replace(std::nothrow_t, std::string_view key, Given value) {
        void *old = nullptr;
        if (kestu_error_t *err = put_over(key, value, &old))
            return detail::failed(err);
        return Held::take(old);
    }

    // Removes an entry. Whether it was there.
    bool erase(std::string_view key) {
        return kestu_map_delete(map_, key.data(), key.size(), nullptr) != 0;
    }

    // Removes an entry and returns its value; null when there was none.
    Taken take(std::string_view key) {
        void *value = nullptr;
        kestu_map_delete(map_, key.data(), key.size(), &value);
        return Held::take(value);
    }

    // Removes the entry at `place` and returns the place of the next one.
    iterator erase(iterator place) {
        kestu_map_delete_at(&place.place().cursor, nullptr);
        return place;
    }

    // Removes all entries.
    void clear() { kestu_map_clear(map_); }

    // The map, which stays this one's; null before the first insertion.
    kestu_map_t *get() const noexcept { return map_; }

  private:
    template <typename Find, typename... Key>
    iterator at(Find stand, Key... key) const {
        typename Steps::Place place{{}, map_};
        stand(map_, key.data()..., key.size()..., &place.cursor);
        return iterator(place);
    }

    template <typename Function, typename Walk>
    static bool walk(Function &fn, Walk walk_with) {
        const auto visit = [&fn](const void *key, size_t length, void *value) {
            const std::string_view text(static_cast<const char *>(key), length);
            auto &shown = Held::value(value);
            if constexpr (std::is_void_v<decltype(fn(text, shown))>)
                return fn(text, shown), false;
            else
                return static_cast<bool>(fn(text, shown));
        };
        detail::Carried carried(visit);
        const int result =
            walk_with(carried.template callback<kestu_map_func>(), static_cast<void *>(&carried));
        carried.rethrow();
        return result != 0;
    }

    static void release(void *value, void *) noexcept { Held::take(value); }

    kestu_error_t *create() {
        if (map_)
            return nullptr;
        kestu_error_t *err = kestu_map_create(&map_, nullptr);
        if (Held::is_owned && !err)
            kestu_map_set_release(map_, release, nullptr);
        return err;
    }
    kestu_error_t *put(std::string_view key, Given &value) {
        kestu_error_t *err = create();
        if (!err)
            err = kestu_map_insert(map_, key.data(), key.size(), Held::pointer(value));
        if (!err)
            Held::give_up(value);
        return err;
    }
    kestu_error_t *put_over(std::string_view key, Given &value, void **old) {
        kestu_error_t *err = create();
        if (!err)
            err = kestu_map_replace(map_, key.data(), key.size(), Held::pointer(value), old);
        if (!err)
            Held::give_up(value);
        return err;
    }

    kestu_map_t *map_ = nullptr;
};

} // namespace KESTU_CPP
} // namespace kestu
