// Ordered maps: every function against a map of the standard library, and what memory has to do
// with it.
#include "support/test.hpp"

#include <map>

namespace {

using namespace kestu::test;
using Random = std::mt19937;
using Pairs = std::vector<std::pair<std::string, void *>>;

void *value_of(size_t n) {
    return reinterpret_cast<void *>(n);
}

int note(const void *key, size_t length, void *value, void *pairs) {
    static_cast<Pairs *>(pairs)->emplace_back(std::string(static_cast<const char *>(key), length),
                                              value);
    return 0;
}

// A map beside its model, and a cursor that stays while others change the map.
class Models {
  public:
    explicit Models(Random &random) : random_(random), letters_(letters[random() % 4]) {
        EXPECT_OK(kestu_map_create(&map_, nullptr));
        kestu_map_set_release(
            map_, [](void *, void *count) { ++*static_cast<size_t *>(count); }, &released_);
    }
    ~Models() {
        const size_t left = model_.size();
        released_ = 0;
        kestu_map_destroy(&map_);
        EXPECT_EQ(released_, left);
    }

    void step() {
        switch (random_() % 8) {
        case 0:
        case 1:
        case 2:
            return insert(random_key());
        case 3:
            return replace(random_key());
        case 4:
            return erase(present_or_random());
        case 5:
            return look(present_or_random());
        case 6:
            return move_cursor();
        default:
            return delete_at_cursor();
        }
    }

    void compare() {
        EXPECT_EQ(kestu_map_count(map_), model_.size());
        Pairs all;
        EXPECT_EQ(kestu_map_walk(map_, note, &all), 0);
        EXPECT_EQ(all, Pairs(model_.begin(), model_.end()));
        const std::string prefix = present_or_random().substr(0, random_() % 4);
        Pairs below, expected;
        kestu_map_walk_prefix(map_, prefix.data(), prefix.size(), note, &below);
        for (auto at = model_.lower_bound(prefix);
             at != model_.end() && at->first.starts_with(prefix); ++at)
            expected.emplace_back(*at);
        EXPECT_EQ(below, expected);
    }

  private:
    using Model = std::map<std::string, void *>;
    // How many different bytes keys are made of: narrow to widest nodes.
    static constexpr int letters[] = {2, 15, 60, 256};

    std::string random_key() {
        std::string key(random_() % 5 == 0 ? random_() % 40 : random_() % 4, 'x');
        for (size_t i = key.size() / 2; i < key.size(); ++i) // long keys share their first half
            key[i] = static_cast<char>(random_() % static_cast<unsigned>(letters_) * 7);
        return key;
    }
    std::string present_or_random() {
        const auto at = model_.lower_bound(random_key());
        return random_() % 3 == 0 || at == model_.end() ? random_key() : at->first;
    }

    void insert(const std::string &key) {
        void *value = value_of(++serial_);
        kestu_error_t *err = kestu_map_insert(map_, key.data(), key.size(), value);
        EXPECT_EQ(err == nullptr, model_.emplace(key, value).second);
        kestu_error_clear(err);
    }
    void replace(const std::string &key) {
        void *old = &old, *value = value_of(++serial_);
        EXPECT_OK(kestu_map_replace(map_, key.data(), key.size(), value, &old));
        EXPECT_EQ(old, std::exchange(model_[key], value));
        if (cursor_.key && key_of(cursor_) == key)
            cursor_.value = value;
    }
    void erase(const std::string &key) {
        if (cursor_.key && key_of(cursor_) == key)
            return;
        void *old = nullptr;
        const auto at = model_.find(key);
        ASSERT_EQ(kestu_map_delete(map_, key.data(), key.size(), &old), at != model_.end());
        if (at != model_.end()) {
            EXPECT_EQ(old, at->second);
            model_.erase(at);
        }
    }
    void look(const std::string &key) {
        void *value = nullptr;
        const auto at = model_.find(key);
        ASSERT_EQ(kestu_map_find(map_, key.data(), key.size(), &value), at != model_.end());
        EXPECT_EQ(value, at == model_.end() ? nullptr : at->second);
        const auto find = [&](auto bound) {
            bound(map_, key.data(), key.size(), &cursor_);
            return cursor_;
        };
        expect_at(find(kestu_map_longest_prefix), longest_prefix(key));
        expect_at(find(kestu_map_seek), at);
        expect_at(find(kestu_map_upper_bound), model_.upper_bound(key));
        expect_at(find(kestu_map_lower_bound), model_.lower_bound(key));
    }
    Model::const_iterator longest_prefix(std::string text) {
        for (;; text.pop_back())
            if (const auto at = model_.find(text); at != model_.end() || text.empty())
                return at;
    }
    void move_cursor() {
        if (!cursor_.key) {
            kestu_map_first(map_, &cursor_);
            expect_at(cursor_, model_.begin());
            kestu_map_last(map_, &cursor_);
            return expect_at(cursor_, model_.empty() ? model_.end() : std::prev(model_.end()));
        }
        auto at = model_.find(key_of(cursor_));
        if (random_() % 2 == 0) {
            kestu_map_next(&cursor_);
            expect_at(cursor_, std::next(at));
        } else {
            kestu_map_previous(&cursor_);
            expect_at(cursor_, at == model_.begin() ? model_.end() : std::prev(at));
        }
    }
    void delete_at_cursor() {
        if (!cursor_.key)
            return;
        const auto at = model_.find(key_of(cursor_));
        const size_t before = released_;
        kestu_map_delete_at(&cursor_, nullptr);
        EXPECT_EQ(released_, before + 1);
        expect_at(cursor_, model_.erase(at));
    }

    static std::string key_of(const kestu_map_cursor_t &at) {
        return {static_cast<const char *>(at.key), at.length};
    }
    void expect_at(const kestu_map_cursor_t &at, Model::const_iterator expected) {
        ASSERT_EQ(at.key != nullptr, expected != model_.end());
        if (at.key) {
            EXPECT_EQ(key_of(at), expected->first);
            EXPECT_EQ(at.value, expected->second);
        }
    }

    Random &random_;
    int letters_;
    kestu_map_t *map_ = nullptr;
    kestu_map_cursor_t cursor_ = {};
    Model model_;
    size_t serial_ = 0, released_ = 0;
};

TEST(Maps, DoWhatAnOrderedMapDoes) {
    for (unsigned seed = 0; seed < 300 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Models models(random);
        for (size_t steps = random() % 3000; steps > 0; --steps)
            models.step();
        models.compare();
    }
}

Pairs entries_of(const kestu_map_t *map) {
    Pairs all;
    kestu_map_walk(map, note, &all);
    return all;
}

// Nothing here but the library allocates.
void fill_and_copy(const std::vector<std::string> &keys, std::vector<char> &is_there) {
    kestu_map_t *map = nullptr, *copy = nullptr;
    if (kestu_error_t *err = kestu_map_create(&map, nullptr))
        return kestu_error_clear(err);
    for (size_t i = 0; i < keys.size(); ++i) {
        kestu_error_t *err = kestu_map_insert(map, keys[i].data(), keys[i].size(), nullptr);
        is_there[i] = err == nullptr;
        kestu_error_clear(err);
        if (i % 4 == 3)
            is_there[i / 2] ^=
                kestu_map_delete(map, keys[i / 2].data(), keys[i / 2].size(), nullptr);
    }
    kestu_error_clear(kestu_map_copy(&copy, map, nullptr, nullptr, nullptr));
    for (size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(kestu_map_find(map, keys[i].data(), keys[i].size(), nullptr), is_there[i]);
        const kestu_map_t *same = copy ? copy : map;
        EXPECT_EQ(kestu_map_find(same, keys[i].data(), keys[i].size(), nullptr), is_there[i]);
    }
    kestu_map_destroy(&copy);
    kestu_map_destroy(&map);
}

TEST(Maps, StayAsTheyWereWhenMemoryFails) {
    const long before = live_blocks();
    for (unsigned seed = 0; seed < 20; ++seed) {
        Random random(seed);
        std::vector<std::string> keys;
        for (size_t i = 0; i < 600; ++i)
            keys.push_back(std::to_string(random() % 5000) + std::to_string(i) +
                           std::string(i % 90, 'x'));
        std::vector<char> is_there(keys.size());
        EXPECT_GT(fail_each_allocation([&](size_t) { fill_and_copy(keys, is_there); }), 10U);
    }
    EXPECT_EQ(live_blocks(), before);
}

TEST(Maps, TakeAscendingKeysAllOrNone) {
    const Pool pool;
    kestu_map_t *map = nullptr;
    ASSERT_OK(kestu_map_create(&map, pool));
    const void *keys[] = {nullptr, "a", "ab", "b", "b"};
    const size_t lengths[] = {0, 1, 2, 1, 1};
    EXPECT_CHAIN(kestu_map_append(map, keys, lengths, nullptr, 5),
                 Element(KESTU_ERR_WRONG_KEY, "Cannot append to map."),
                 Element(KESTU_ERR_WRONG_KEY, "Keys do not ascend."));
    EXPECT_EQ(kestu_map_count(map), 0U);
    ASSERT_OK(kestu_map_append(map, keys, lengths, nullptr, 4));
    EXPECT_EQ(entries_of(map),
              (Pairs{{"", nullptr}, {"a", nullptr}, {"ab", nullptr}, {"b", nullptr}}));
    EXPECT_CHAIN(kestu_map_append(map, keys + 2, lengths + 2, nullptr, 1),
                 Element(KESTU_ERR_WRONG_KEY, "Cannot append to map."),
                 Element(KESTU_ERR_WRONG_KEY, "Keys do not ascend."));
}

// Values are counted in `refs`, which all releases bring back to 0.
TEST(Maps, ReleaseWhatTheyWereGivenOnce) {
    int refs = 2;
    const auto release = [](void *value, void *) { --*static_cast<int *>(value); };
    kestu_map_t *map = nullptr, *copy = nullptr;
    {
        const Pool pool;
        ASSERT_OK(kestu_map_create(&map, pool));
        kestu_map_set_release(map, release, nullptr);
        ASSERT_OK(kestu_map_insert(map, "a", 1, &refs));
        ASSERT_OK(kestu_map_insert(map, "b", 1, &refs));
        const auto add_reference = [](void **made, void *value, void *most) -> kestu_error_t * {
            if (++*static_cast<int *>(value) > *static_cast<int *>(most))
                return --*static_cast<int *>(value), kestu_error_create(0, 1, nullptr, "too many");
            *made = value;
            return nullptr;
        };
        int most = 3;
        EXPECT_CHAIN(kestu_map_copy(&copy, map, add_reference, &most, pool),
                     Element(1, "Cannot copy map."), Element(1, "too many"));
        EXPECT_EQ(copy, nullptr);
        EXPECT_EQ(refs, 2);
        ASSERT_OK(kestu_map_copy(&copy, map, add_reference, &(most = 4), pool));
        kestu_map_destroy(&copy);
        EXPECT_EQ(refs, 2);
        kestu_map_clear(map);
        EXPECT_EQ(refs, 0);
        ASSERT_OK(kestu_map_insert(map, "c", 1, &++refs));
    }
    EXPECT_EQ(refs, 0);
}

TEST(Maps, ThatAreNullAreEmpty) {
    kestu_map_t *map = nullptr;
    kestu_map_cursor_t at;
    EXPECT_EQ(kestu_map_count(map) + kestu_map_find(map, "a", 1, nullptr), 0U);
    EXPECT_FALSE(kestu_map_first(map, &at) || kestu_map_lower_bound(map, "a", 1, &at) ||
                 kestu_map_next(&at) || kestu_map_previous(&at) ||
                 kestu_map_delete_at(&at, nullptr));
    EXPECT_EQ(entries_of(map), Pairs());
    kestu_map_destroy(&map);
}

} // namespace
