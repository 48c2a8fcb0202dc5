// The trie: as its model in all operations, failures that leave no trace, and keys of any length.
#include "fuzz/trie_model.hpp"
#include "support/test.hpp"

#include "support/small_stack.hpp"

using namespace kestu::test;
using kestu::fuzz::HeapTrie;
using kestu::fuzz::PoolTrie;

namespace {

char values[8];

template <typename Kind>
class Trie : public testing::Test {
  protected:
    Trie() { EXPECT_OK(functions.create(&trie)); }
    ~Trie() override { functions.destroy(&trie); }

    void insert(const std::string &key, size_t value = 1) {
        EXPECT_OK(functions.insert(trie, key, &values[value]));
    }
    void remove(const std::string &key) { functions.remove(trie, key); }
    void *search(const std::string &key) { return kestu_trie_search(trie, key.data(), key.size()); }

    Kind functions;
    kestu_trie_t *trie = nullptr;
};
using Kinds = testing::Types<PoolTrie, HeapTrie>;
TYPED_TEST_SUITE(Trie, Kinds, );

// A leaf as its key, an inner node as "[count end 0=... 15=...]" with the slots that hold
// something.
std::string shape(const kestu_trie_node_t *node) {
    if (!node || node->type == KESTU_TRIE_LEAF)
        return node ? reinterpret_cast<const char *>(
                          reinterpret_cast<const kestu_trie_leaf_t *>(node)->key)
                    : "";
    const auto *inner = reinterpret_cast<const kestu_trie_inner_t *>(node);
    std::string text = "[" + std::to_string(static_cast<int32_t>(inner->count));
    if (inner->end)
        text += " "s + reinterpret_cast<char *>(inner->end->key);
    for (int i = 0; i < 16; ++i)
        if (inner->children[i])
            text += " " + std::to_string(i) + "=" + shape(inner->children[i]);
    return text + "]";
}

void collect(uint64_t length, const uint8_t *key, void *, void *baton) {
    static_cast<std::vector<std::string> *>(baton)->emplace_back(
        reinterpret_cast<const char *>(key), length);
}

std::vector<std::string> walk(const kestu_trie_node_t *node) {
    std::vector<std::string> keys;
    traverse_node(node, collect, &keys);
    return keys;
}

} // namespace

TYPED_TEST(Trie, AnyStepsAndEditsKeepEverySlotCountAndOrder) {
    const long blocks = live_blocks();
    kestu::fuzz::on_random_inputs(20, 20000, kestu::fuzz::run_trie_model<TypeParam>);
    kestu::fuzz::on_random_inputs(1200, 500, kestu::fuzz::run_trie_model<TypeParam>);
    EXPECT_EQ(live_blocks(), blocks);
}

// Kept: a failed deletion lowers the counts it passes, and branchings are given up by count.
TYPED_TEST(Trie, FailedDeletionsLowerTheCountsOnTheirWay) {
    for (const auto &key : {"a"s, "ab"s, "abc"s, "q"s})
        this->insert(key);
    EXPECT_EQ(shape(this->trie->root), "[4 1=[4 6=[3 a 2=[2 6=[2 ab 3=abc]]] 7=q]]");
    this->remove("abd"); // an empty slot after five branchings
    EXPECT_EQ(shape(this->trie->root), "[3 1=[3 6=[2 a 2=[1 6=[1 ab 3=abc]]] 7=q]]");
    this->remove("x");
    this->remove(""); // no end at the root, which keeps its count
    this->remove("a\x02");
    EXPECT_EQ(shape(this->trie->root), "[1 1=[2 6=[1 a 2=[0 6=[1 ab 3=abc]]] 7=q]]");
    this->remove("abc"); // "ab" is alone, but its branching does not count 1
    this->remove("ab");
    EXPECT_EQ(shape(this->trie->root), "[-1 1=[0 6=[-1 a 2=[-2 6=[-1]]] 7=q]]");
}

// Every level of the way to the last key has another key beside it, which comes after it: more than
// a walk remembers without memory of its own.
TYPED_TEST(Trie, WalksComeBackToAnyNumberOfForks) {
    for (size_t i = 0; i < 300; ++i)
        this->insert(std::string(299 - i, '\0') + '\x11');
    // The longest key is the first of any walk; what is left counts down.
    const auto compare = [](uint64_t length, const uint8_t *, void *, void *left) {
        EXPECT_EQ(length, (*static_cast<size_t *>(left))--);
    };
    const auto expect_all = [&](const kestu_trie_node_t *node) {
        size_t left = 300;
        AllocFailure no_memory(1, all_after);
        errno = 77;
        traverse_node(node, compare, &left);
        EXPECT_TRUE(no_memory.happened() && errno == 77);
        return left;
    };
    const auto *root = reinterpret_cast<kestu_trie_inner_t *>(this->trie->root);
    EXPECT_EQ(expect_all(this->trie->root), 0u);
    EXPECT_EQ(expect_all(root->children[0]), 1u);
    const auto change_key = [](uint64_t, const uint8_t *key, void *, void *) {
        const_cast<uint8_t *>(key)[0] = 0xFF;
    };
    kestu_trie_walk(this->trie, change_key, nullptr); // after which no way back is known
    EXPECT_GT(expect_all(this->trie->root), 0u);
}

TYPED_TEST(Trie, KeysMayBeDeletedByTheirOwnCopies) {
    const std::string run(40, 'k');
    for (const auto &key : {run + "a", run + "b", run + "bc", ""s})
        this->insert(key);
    const auto remember = [](uint64_t length, const uint8_t *key, void *, void *baton) {
        *static_cast<std::string_view *>(baton) = {reinterpret_cast<const char *>(key), length};
    };
    for (int i = 0; i < 4; ++i) {
        std::string_view last;
        kestu_trie_walk(this->trie, remember, &last);
        this->functions.remove(this->trie, last);
    }
    EXPECT_EQ(this->trie->root, nullptr);
}

TEST(TrieEdges, NullIsHarmless) {
    Pool pool;
    EXPECT_OK(kestu_trie_insert(nullptr, "a", 1, values, pool));
    EXPECT_OK(kestu_triem_insert(nullptr, "a", 1, values));
    EXPECT_EQ(kestu_trie_search(nullptr, "a", 1), nullptr);
    kestu_trie_delete(nullptr, "a", 1);
    kestu_triem_delete(nullptr, "a", 1);
    kestu_trie_walk(nullptr, collect, nullptr);
    traverse_node(nullptr, collect, nullptr);
    kestu_trie_t *trie = nullptr;
    kestu_trie_destroy(&trie);
    kestu_triem_destroy(&trie);
    ASSERT_OK(kestu_triem_create(&trie));
    EXPECT_EQ(kestu_trie_search(trie, nullptr, 0), nullptr);
    kestu_trie_walk(trie, collect, nullptr);
    EXPECT_OK(kestu_triem_insert(trie, nullptr, 0, values));
    EXPECT_EQ(kestu_trie_search(trie, "", 0), values);
    kestu_triem_delete(trie, nullptr, 0);
    EXPECT_EQ(kestu_trie_search(trie, nullptr, 0), nullptr);
    kestu_triem_destroy(&trie);
}

TYPED_TEST(Trie, RefusalsNameTheirKindAndLeaveInvalidNodesAlone) {
    this->insert("a");
    EXPECT_CHAIN(this->functions.insert(this->trie, "a", values), 120082, TypeParam::failed, "");
    kestu_trie_node_t invalid = {5};
    kestu_trie_node_t *const root = std::exchange(this->trie->root, &invalid);
    EXPECT_CHAIN(this->functions.insert(this->trie, "b", values), 120091, TypeParam::failed, "");
    this->remove("a");
    EXPECT_EQ(this->trie->root, &invalid);
    EXPECT_THAT(walk(this->trie->root), ElementsAre());
    this->functions.destroy(&this->trie);
    EXPECT_EQ(this->trie, nullptr);
    ASSERT_OK(this->functions.create(&this->trie));
    this->trie->root = root;
}

TEST(TrieEdges, AnInsertionThatFailsLeavesNoTrace) {
    kestu_trie_t *trie = nullptr;
    const Element refused(120012, "Can't insert triem node.");
    ASSERT_OK(kestu_triem_create(&trie));
    for (const size_t length : {SIZE_MAX, SIZE_MAX - 32, SIZE_MAX / 2})
        EXPECT_CHAIN(kestu_triem_insert(trie, "a", length, values), refused,
                     Pair(120012, StartsWith("Failed to allocate ")));
    for (const std::string key : {"k", "kestu", "kestu_trie_a", "q"})
        ASSERT_OK(kestu_triem_insert(trie, key.data(), key.size(), values));
    const std::string before = shape(trie->root);
    size_t failures = 0;
    for (bool failed = true; failed; failures += failed) {
        const long blocks = live_blocks();
        AllocFailure failure(failures + 1);
        kestu_error_t *err = kestu_triem_insert(trie, "kestu_trie_b", 12, values);
        failed = failure.happened();
        EXPECT_EQ(err ? err->code : 120012, 120012);
        kestu_error_clear(err);
        EXPECT_TRUE(!failed || (live_blocks() == blocks && shape(trie->root) == before));
    }
    EXPECT_EQ(failures, 1u + 12); // the leaf, and inner nodes at the depths 11 to 22
    EXPECT_EQ(kestu_trie_search(trie, "kestu_trie_b", 12), values);
    kestu_triem_destroy(&trie);
    const auto create_without_memory = [&] {
        AllocFailure failure(1);
        return kestu_triem_create(&trie);
    };
    EXPECT_CHAIN(create_without_memory(), 120012, "Can't create new triem.",
                 "Failed to allocate 8 bytes of memory.");
    EXPECT_EQ(trie, nullptr);
}

TEST(TrieEdges, APoolWithoutMemoryLeavesTheTrieAsItWas) {
    Pool pool;
    kestu_trie_t *trie = nullptr;
    ASSERT_OK(kestu_trie_create(&trie, pool));
    ASSERT_OK(kestu_trie_insert(trie, "kestu", 5, values, pool));
    ASSERT_OK(kestu_trie_insert(trie, "kestu_trie_a", 12, values, pool));
    const std::string before = shape(trie->root);
    EXPECT_CHAIN(pool.without_memory(
                     [&] { return kestu_trie_insert(trie, "kestu_trie_b", 12, values, pool); }),
                 120012, PoolTrie::failed, StartsWith("Failed to allocate "));
    EXPECT_EQ(shape(trie->root), before);
}

// The first node of a long way that keys share says so in the gaps of its record.
TEST(TrieEdges, ARecordInTheMemoryOfAnotherTrieStandsForItself) {
    Pool pool;
    const std::string stem(40, 's');
    kestu_trie_t *trie = nullptr;
    const auto make = [&] {
        apr_pool_clear(pool);
        ASSERT_OK(kestu_trie_create(&trie, pool));
        ASSERT_OK(kestu_trie_insert(trie, (stem + "1").c_str(), 41, values, pool));
    };
    make();
    ASSERT_OK(kestu_trie_insert(trie, (stem + "2").c_str(), 41, values, pool));
    make();
    apr_palloc(pool, sizeof(kestu_trie_leaf_t) + 42); // as the second key took
    auto *const inner =
        static_cast<kestu_trie_inner_t *>(apr_palloc(pool, sizeof(kestu_trie_inner_t)));
    std::memset(apr_palloc(pool, 200), 's', 200);
    inner->type = KESTU_TRIE_INNER;
    inner->end = nullptr;
    inner->count = 1;
    std::fill_n(inner->children, 16, nullptr);
    inner->children['s' & 15] = trie->root;
    trie->root = reinterpret_cast<kestu_trie_node_t *>(inner);
    EXPECT_EQ(kestu_trie_search(trie, stem.data(), 40), nullptr);
    EXPECT_EQ(kestu_trie_search(trie, (stem + "1").data(), 41), values);
}

// Two million branchings, one below the other, three times.
TYPED_TEST(Trie, KeysOfAMegabyteNeedNoStack) {
    run_on_small_stack([&] {
        const std::string keys[] = {std::string(1000000, 'k') + "a",
                                    std::string(1000000, 'k') + "b", std::string(500000, 'k')};
        for (const auto &key : keys)
            this->insert(key);
        EXPECT_CHAIN(this->functions.insert(this->trie, keys[1], values), 120082, _, "");
        for (const auto &key : keys)
            EXPECT_EQ(this->search(key), &values[1]);
        EXPECT_EQ(this->search(keys[0] + "c"), nullptr);
        EXPECT_THAT(walk(this->trie->root), ElementsAre(keys[2], keys[0], keys[1]));
        this->remove(keys[0]); // the rest of its way goes, down from the end of the short key
        EXPECT_THAT(walk(this->trie->root), ElementsAre(keys[2], keys[1]));
        if (TypeParam::frees) {
            AllocFailure failure(900000);
            EXPECT_CHAIN(this->functions.insert(this->trie, keys[0], values), 120012, _, _);
        }
        this->insert(keys[0], 3);
        EXPECT_EQ(this->search(keys[0]), &values[3]);
        this->functions.destroy(&this->trie);
    });
}
