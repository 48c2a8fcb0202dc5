// What a trie tells of a null value, of its size, and of the keys behind a prefix.
#include "support/test.hpp"

using namespace kestu::test;

namespace {

using Keys = std::set<std::string>;

void note(uint64_t length, const uint8_t *key, void *, void *keys) {
    static_cast<Keys *>(keys)->emplace(reinterpret_cast<const char *>(key), length);
}

Keys behind(const kestu_trie_t *trie, const std::string &prefix) {
    Keys found;
    kestu_trie_walk_prefix(trie, prefix.data(), prefix.size(), note, &found);
    return found;
}

TEST(TriePrefixes, LeadToAllKeysThatTheyBegin) {
    const Pool pool;
    std::mt19937 random(1);
    kestu_trie_t *trie = nullptr;
    ASSERT_EQ(kestu_trie_create(&trie, pool), nullptr);
    Keys keys;
    for (int step = 0; step < 500; ++step) {
        std::string key(random() % 3 == 0 ? 40 : 0, 's'); // long ones lead through a chain
        for (size_t left = random() % 6; left > 0; --left)
            key += static_cast<char>(random() % 4 * 17);
        if (keys.insert(key).second) {
            ASSERT_OK(kestu_trie_insert(trie, key.data(), key.size(), nullptr, pool));
        }
        EXPECT_EQ(kestu_trie_count(trie), keys.size());
        const std::string prefix =
            key.substr(0, random() % (key.size() + 2)) + (step % 9 ? "" : "x");
        Keys expected;
        for (const std::string &any : keys)
            if (any.starts_with(prefix))
                expected.insert(any);
        EXPECT_EQ(behind(trie, prefix), expected);
        void *value = &value;
        EXPECT_EQ(kestu_trie_find(trie, prefix.data(), prefix.size(), &value),
                  keys.contains(prefix));
        EXPECT_EQ(value == nullptr, keys.contains(prefix));
    }
    EXPECT_EQ(behind(nullptr, ""), Keys());
    EXPECT_EQ(kestu_trie_count(nullptr), 0U);
    EXPECT_FALSE(kestu_trie_find(nullptr, "a", 1, nullptr));
}

} // namespace
