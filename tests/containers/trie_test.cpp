// The trie: its exact shape and counts after all operations, its order, and failures that leave no
// trace.
#include "kestu_mem.h"
#include "kestu_trie.h"

#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "support/pool.hpp"
#include "support/small_stack.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace kestu::test;
using namespace std::string_literals;
using testing::_;
using testing::ElementsAre;
using testing::Pair;
using testing::StartsWith;

namespace {

// The functions that exist for both kinds of nodes, so that one test serves both.
struct PoolTrie {
    static constexpr bool frees = false;
    Pool pool;
    auto create(kestu_trie_t **out) { return kestu_trie_create(out, pool); }
    auto insert(kestu_trie_t *trie, const std::string &key, void *value) {
        return kestu_trie_insert(trie, key.data(), key.size(), value, pool);
    }
    void remove(kestu_trie_t *trie, const std::string &key) {
        kestu_trie_delete(trie, key.data(), key.size());
    }
    void destroy(kestu_trie_t **trie) { kestu_trie_destroy(trie); }
};

struct HeapTrie {
    static constexpr bool frees = true;
    auto create(kestu_trie_t **out) { return kestu_triem_create(out); }
    auto insert(kestu_trie_t *trie, const std::string &key, void *value) {
        return kestu_triem_insert(trie, key.data(), key.size(), value);
    }
    void remove(kestu_trie_t *trie, const std::string &key) {
        kestu_triem_delete(trie, key.data(), key.size());
    }
    void destroy(kestu_trie_t **trie) { kestu_triem_destroy(trie); }
};

char values[256];

// The sub-trie at `node`: a leaf as its key, an inner node as "[count end 0=... 15=...]" with the
// slots that hold something. A test fails when a leaf is not where its key belongs.
std::string checked_shape(const kestu_trie_node_t *node, std::string way = "") {
    if (!node)
        return "";
    if (node->type == KESTU_TRIE_LEAF) {
        const auto *leaf = reinterpret_cast<const kestu_trie_leaf_t *>(node);
        const std::string key(reinterpret_cast<const char *>(leaf->key), leaf->length);
        EXPECT_EQ(leaf->key[leaf->length], 0);
        for (size_t depth = 0; depth < way.size(); ++depth)
            EXPECT_EQ(leaf->key[depth / 2] >> (depth % 2 * 4) & 15, way[depth]);
        return key;
    }
    EXPECT_EQ(node->type, static_cast<uint32_t>(KESTU_TRIE_INNER));
    const auto *inner = reinterpret_cast<const kestu_trie_inner_t *>(node);
    std::string shape = "[";
    shape.append(std::to_string(static_cast<int32_t>(inner->count)));
    if (inner->end) {
        EXPECT_EQ(inner->end->length * 2, way.size());
        shape.append(" ").append(
            checked_shape(reinterpret_cast<kestu_trie_node_t *>(inner->end), way));
    }
    for (int i = 0; i < 16; ++i)
        if (inner->children[i])
            shape.append(" ")
                .append(std::to_string(i))
                .append("=")
                .append(checked_shape(inner->children[i], way + static_cast<char>(i)));
    return shape.append("]");
}

template <typename Kind>
class TrieBoth : public testing::Test {
  protected:
    TrieBoth() { EXPECT_OK(functions.create(&trie)); }
    ~TrieBoth() override { functions.destroy(&trie); }

    void insert(const std::string &key, size_t value = 1) {
        EXPECT_OK(functions.insert(trie, key, &values[value]));
    }
    void remove(const std::string &key) { functions.remove(trie, key); }
    void *search(const std::string &key) { return kestu_trie_search(trie, key.data(), key.size()); }
    std::string shape() { return checked_shape(trie->root); }

    Kind functions;
    kestu_trie_t *trie = nullptr;
};
using BothKinds = testing::Types<PoolTrie, HeapTrie>;
TYPED_TEST_SUITE(TrieBoth, BothKinds, );

void collect(uint64_t length, const uint8_t *key, void *, void *baton) {
    static_cast<std::vector<std::string> *>(baton)->emplace_back(
        reinterpret_cast<const char *>(key), length);
}

std::vector<std::string> walk(const kestu_trie_node_t *node) {
    std::vector<std::string> keys;
    traverse_node(node, collect, &keys);
    return keys;
}

unsigned half(const std::string &key, size_t depth) {
    return static_cast<uint8_t>(key[depth / 2]) >> (depth % 2 * 4) & 15;
}

bool comes_first(const std::string &a, const std::string &b) {
    for (size_t depth = 0; depth < 2 * std::min(a.size(), b.size()); ++depth)
        if (half(a, depth) != half(b, depth))
            return half(a, depth) < half(b, depth);
    return a.size() < b.size();
}

} // namespace

TYPED_TEST(TrieBoth, KeysStandAtTheLeastDepthAtWhichTheyAreAlone) {
    this->insert("");
    EXPECT_EQ(this->shape(), "");
    EXPECT_EQ(this->search(""), &values[1]);
    this->insert("a", 2);
    EXPECT_EQ(this->shape(), "[2  1=a]");
    this->insert("ab", 3); // 0x61 0x62: depths 1 and 2 branch on 6 and on 2
    EXPECT_EQ(this->shape(), "[3  1=[2 6=[2 a 2=ab]]]");
    this->insert("\x11", 4); // parts from "a" at its high half
    EXPECT_EQ(this->shape(), "[4  1=[3 1=\x11 6=[2 a 2=ab]]]");
    EXPECT_EQ(this->search("ab"), &values[3]);
    EXPECT_EQ(this->search(""), &values[1]);
    for (const auto &absent : {"abc"s, "b"s, "A"s, "\x01"s, "a\0"s})
        EXPECT_EQ(this->search(absent), nullptr);
    this->insert("abcd", 5);
    EXPECT_EQ(this->search("abc"), nullptr);
    EXPECT_EQ(this->search("ab"), &values[3]);
}

TYPED_TEST(TrieBoth, AKeyIsInsertedOnce) {
    const char *const message =
        TypeParam::frees ? "Can't insert triem node." : "Can't insert trie node.";
    for (const auto &key : {"abc"s, "ab"s, ""s, "a\0b"s, "abc"s}) {
        kestu_error_clear(this->functions.insert(this->trie, key, &values[1]));
        const std::string before = this->shape();
        EXPECT_CHAIN(this->functions.insert(this->trie, key, &values[9]), Element(120082, message),
                     Element(120082, ""));
        EXPECT_EQ(this->shape(), before);
        EXPECT_EQ(this->search(key), &values[1]);
    }
}

// Kept: a failed deletion lowers the counts it passes, and branchings are given up by count.
TYPED_TEST(TrieBoth, FailedDeletionsLowerTheCountsOnTheirWay) {
    for (const auto &key : {"a"s, "ab"s, "abc"s, "q"s})
        this->insert(key);
    EXPECT_EQ(this->shape(), "[4 1=[4 6=[3 a 2=[2 6=[2 ab 3=abc]]] 7=q]]");
    this->remove("abd"); // an empty slot after five branchings
    EXPECT_EQ(this->shape(), "[3 1=[3 6=[2 a 2=[1 6=[1 ab 3=abc]]] 7=q]]");
    this->remove("x");
    this->remove(""); // no end at the root, which keeps its count
    this->remove("a\x02");
    EXPECT_EQ(this->shape(), "[1 1=[2 6=[1 a 2=[0 6=[1 ab 3=abc]]] 7=q]]");
    this->remove("abc"); // "ab" is alone, but its branching does not count 1
    EXPECT_EQ(this->shape(), "[0 1=[1 6=[0 a 2=[-1 6=[0 ab]]] 7=q]]");
    this->remove("ab");
    EXPECT_EQ(this->shape(), "[-1 1=[0 6=[-1 a 2=[-2 6=[-1]]] 7=q]]");
    EXPECT_THAT(walk(this->trie->root), ElementsAre("a", "q"));
    this->insert("ab", 7);
    EXPECT_EQ(this->search("ab"), &values[7]);
}

TEST(Trie, AFailedDeletionCanRaiseALeafThatItDidNotSeek) {
    kestu_trie_t *trie = nullptr;
    ASSERT_OK(kestu_triem_create(&trie));
    for (const char *key : {"a", "q", "A"}) // all below the root's child 1
        ASSERT_OK(kestu_triem_insert(trie, key, 1, values));
    kestu_triem_delete(trie, "1", 1);
    kestu_triem_delete(trie, "1", 1);
    kestu_triem_delete(trie, "q", 1);
    EXPECT_EQ(checked_shape(trie->root), "[0 1=[0 4=A 6=a]]");
    kestu_triem_delete(trie, "A", 1);
    EXPECT_EQ(checked_shape(trie->root), "[-1 1=[-1 6=a]]");
    auto *root = reinterpret_cast<kestu_trie_inner_t *>(trie->root);
    root->count = reinterpret_cast<kestu_trie_inner_t *>(root->children[1])->count = 2;
    kestu_triem_delete(trie, "q", 1);
    EXPECT_EQ(checked_shape(trie->root), "a");
    kestu_triem_destroy(&trie);
}

TYPED_TEST(TrieBoth, WalksGoByHalfBytesTheLowOnesFirst) {
    std::vector<std::string> keys = {"", "a", "ab", "abc", "\x10", "\x01", "\x01\x10", "\xFF", "q"};
    for (const auto &key : keys)
        this->insert(key);
    const auto all = walk(this->trie->root);
    EXPECT_THAT(all, ElementsAre("", "\x10", "\x01", "\x01\x10", "a", "ab", "abc", "q", "\xFF"));
    const auto *root = reinterpret_cast<kestu_trie_inner_t *>(this->trie->root);
    EXPECT_THAT(walk(root->children[15]), ElementsAre("\xFF"));
    EXPECT_THAT(walk(root->children[1]), ElementsAre("\x01", "\x01\x10", "a", "ab", "abc", "q"));
    std::vector<std::string> again;
    kestu_trie_walk(this->trie, collect, &again);
    EXPECT_EQ(again, all);
}

// Every level of the way to the last key has another key beside it, which comes after it: more than
// a walk remembers without memory of its own.
TYPED_TEST(TrieBoth, WalksComeBackToAnyNumberOfForks) {
    std::vector<std::string> keys;
    for (size_t i = 0; i < 300; ++i)
        keys.push_back(std::string(i, '\0') + '\x11');
    std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
    for (const auto &key : keys)
        this->insert(key);
    std::sort(keys.begin(), keys.end(), comes_first);
    EXPECT_EQ(walk(this->trie->root), keys);
    struct Expected {
        const std::string *next;
    };
    const auto compare = [](uint64_t length, const uint8_t *, void *, void *baton) {
        EXPECT_EQ(static_cast<Expected *>(baton)->next++->size(), length);
    };
    const auto visited = [&](const kestu_trie_node_t *node) {
        Expected expected{keys.data()};
        AllocFailure no_memory(1, all_after);
        errno = 77;
        traverse_node(node, compare, &expected);
        EXPECT_TRUE(no_memory.happened() && errno == 77);
        return expected.next - keys.data();
    };
    const auto *root = reinterpret_cast<kestu_trie_inner_t *>(this->trie->root);
    EXPECT_EQ(visited(this->trie->root), 300);
    EXPECT_EQ(visited(root->children[0]), 299);
    const auto change_key = [](uint64_t, const uint8_t *key, void *, void *) {
        const_cast<uint8_t *>(key)[0] = 0xFF;
    };
    kestu_trie_walk(this->trie, change_key, nullptr); // after which no way back is known
    EXPECT_LT(visited(this->trie->root), 300);
}

TYPED_TEST(TrieBoth, KeysMayBeDeletedByTheirOwnCopies) {
    const std::string run(40, 'k');
    for (const auto &key : {run + "a", run + "b", run + "bc", ""s})
        this->insert(key);
    const auto remember = [](uint64_t length, const uint8_t *key, void *, void *baton) {
        *static_cast<std::string_view *>(baton) = {reinterpret_cast<const char *>(key), length};
    };
    for (int i = 0; i < 4; ++i) {
        std::string_view last;
        kestu_trie_walk(this->trie, remember, &last);
        (TypeParam::frees ? kestu_triem_delete : kestu_trie_delete)(this->trie, last.data(),
                                                                    last.size());
    }
    EXPECT_EQ(this->trie->root, nullptr);
}

TEST(Trie, NullIsHarmless) {
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
    EXPECT_OK(kestu_triem_insert(trie, "\0", 1, values + 1));
    EXPECT_EQ(kestu_trie_search(trie, nullptr, 0), values);
    EXPECT_EQ(kestu_trie_search(trie, "", 1), values + 1);
    kestu_triem_delete(trie, nullptr, 0);
    EXPECT_EQ(kestu_trie_search(trie, "", 0), nullptr);
    kestu_triem_destroy(&trie);
}

TEST(Trie, NodesOfInvalidTypeAreLeftAlone) {
    Pool pool;
    kestu_trie_t *trie = nullptr;
    ASSERT_OK(kestu_trie_create(&trie, pool));
    for (const char *key : {"a", "b", "ab"})
        ASSERT_OK(kestu_trie_insert(trie, key, std::strlen(key), values, pool));
    auto *root = reinterpret_cast<kestu_trie_inner_t *>(trie->root);
    kestu_trie_node_t *const b = root->children[2];
    b->type = 2;
    EXPECT_CHAIN(kestu_trie_insert(trie, "2", 1, values, pool),
                 Element(120091, "Can't insert trie node."), Element(120091, ""));
    EXPECT_EQ(root->count, 3u);
    kestu_trie_delete(trie, "b", 1);
    EXPECT_EQ(root->children[2], b);
    EXPECT_EQ(root->count, 2u);
    EXPECT_EQ(kestu_trie_search(trie, "b", 1), values);
    EXPECT_THAT(walk(trie->root), ElementsAre("a", "ab"));

    kestu_trie_node_t invalid = {5};
    ASSERT_OK(kestu_triem_create(&trie));
    trie->root = &invalid;
    EXPECT_CHAIN(kestu_triem_insert(trie, "a", 1, values),
                 Element(120091, "Can't insert triem node."), Element(120091, ""));
    kestu_triem_delete(trie, "a", 1);
    EXPECT_EQ(trie->root, &invalid);
    kestu_triem_destroy(&trie);
    EXPECT_EQ(trie, nullptr);
}

TEST(TrieFailures, AnInsertionThatFailsLeavesNoTrace) {
    kestu_trie_t *trie = nullptr;
    const auto refused = [&] {
        AllocFailure failure(1);
        return kestu_triem_create(&trie);
    };
    EXPECT_CHAIN(refused(), Element(120012, "Can't create new triem."),
                 Element(120012, "Failed to allocate 8 bytes of memory."));
    EXPECT_EQ(trie, nullptr);
    ASSERT_OK(kestu_triem_create(&trie));
    for (const char *key : {"k", "kestu", "kestu_trie_a", "q"})
        ASSERT_OK(kestu_triem_insert(trie, key, std::strlen(key), values));
    const std::string before = checked_shape(trie->root);
    size_t failures = 0;
    for (bool failed = true; failed; failures += failed) {
        kestu_error_t *err = nullptr;
        const long blocks = live_blocks();
        {
            AllocFailure failure(failures + 1);
            err = kestu_triem_insert(trie, "kestu_trie_b", 12, values);
            failed = failure.happened();
        }
        if (!failed)
            break;
        EXPECT_EQ(live_blocks(), blocks);
        EXPECT_CHAIN(err, Element(120012, "Can't insert triem node."),
                     Pair(120012, StartsWith("Failed to allocate ")));
        EXPECT_EQ(checked_shape(trie->root), before);
    }
    EXPECT_EQ(failures, 1u + 12); // the leaf, and inner nodes at the depths 11 to 22
    EXPECT_EQ(kestu_trie_search(trie, "kestu_trie_b", 12), values);
    kestu_triem_destroy(&trie);
}

TEST(TrieFailures, APoolWithoutMemoryLeavesTheTrieAsItWas) {
    Pool pool;
    kestu_trie_t *trie = nullptr;
    ASSERT_OK(kestu_trie_create(&trie, pool));
    ASSERT_OK(kestu_trie_insert(trie, "kestu", 5, values, pool));
    ASSERT_OK(kestu_trie_insert(trie, "kestu_trie_a", 12, values, pool));
    const std::string before = checked_shape(trie->root);
    EXPECT_CHAIN(pool.without_memory(
                     [&] { return kestu_trie_insert(trie, "kestu_trie_b", 12, values, pool); }),
                 Element(120012, "Can't insert trie node."),
                 Pair(120012, StartsWith("Failed to allocate ")));
    EXPECT_EQ(checked_shape(trie->root), before);
}

TEST(TrieFailures, AKeyTooLongForAnyMemoryIsRefused) {
    kestu_trie_t *trie = nullptr;
    ASSERT_OK(kestu_triem_create(&trie));
    for (const size_t length : {SIZE_MAX, SIZE_MAX - 32, SIZE_MAX / 2})
        EXPECT_CHAIN(kestu_triem_insert(trie, "a", length, values),
                     Element(120012, "Can't insert triem node."),
                     Pair(120012, StartsWith("Failed to allocate ")));
    EXPECT_EQ(trie->root, nullptr);
    kestu_triem_destroy(&trie);
}

// Two million branchings, one below the other, three times.
TYPED_TEST(TrieBoth, KeysOfAMegabyteNeedNoStack) {
    run_on_small_stack([&] {
        const std::string keys[] = {std::string(1000000, 'k') + "a",
                                    std::string(1000000, 'k') + "b", std::string(500000, 'k')};
        for (const auto &key : keys)
            this->insert(key);
        EXPECT_CHAIN(this->functions.insert(this->trie, keys[1], values), Pair(120082, _),
                     Element(120082, ""));
        for (const auto &key : keys)
            EXPECT_EQ(this->search(key), &values[1]);
        EXPECT_EQ(this->search(keys[0] + "c"), nullptr);
        EXPECT_THAT(walk(this->trie->root), ElementsAre(keys[2], keys[0], keys[1]));
        this->remove(keys[0]); // the rest of its way goes, down from the end of the short key
        EXPECT_THAT(walk(this->trie->root), ElementsAre(keys[2], keys[1]));
        if (TypeParam::frees) {
            const auto failing = [&] {
                AllocFailure failure(900000);
                return this->functions.insert(this->trie, keys[0], values);
            };
            EXPECT_CHAIN(failing(), Pair(120012, _), Pair(120012, _));
        }
        this->insert(keys[0], 3);
        EXPECT_EQ(this->search(keys[0]), &values[3]);
        this->functions.destroy(&this->trie);
    });
}

namespace {

// The trie as it is told: recursive, and in the order of the telling.
struct Model {
    uint32_t type = KESTU_TRIE_LEAF;
    std::string key = {};
    void *value = nullptr;
    uint32_t count = 0;
    std::unique_ptr<Model> end = nullptr;
    std::array<std::unique_ptr<Model>, 16> children = {};

    std::unique_ptr<Model> &slot_of(const std::string &wanted, size_t depth) {
        return wanted.size() * 2 > depth ? children[half(wanted, depth)] : end;
    }
};
using Slot = std::unique_ptr<Model>;

// The code of the error, or 0.
int insert_in(Slot &slot, Slot &added, size_t depth) {
    if (!slot) {
        slot = std::move(added);
        return 0;
    }
    if (slot->type > KESTU_TRIE_INNER)
        return 120091;
    if (slot->type == KESTU_TRIE_LEAF) {
        auto inner = std::make_unique<Model>(Model{.type = KESTU_TRIE_INNER, .count = 1});
        Slot &present = inner->slot_of(slot->key, depth);
        present = std::move(slot);
        const int code = insert_in(inner, added, depth);
        slot = std::move(code ? present : inner);
        return code;
    }
    Slot &next = slot->slot_of(added->key, depth);
    const bool ends = &next == &slot->end;
    const int code = ends && next ? 120082 : insert_in(next, added, depth + 1);
    slot->count += code == 0;
    return code;
}

void remove_from(Slot &slot, const std::string &key, size_t depth) {
    if (!slot || slot->type > KESTU_TRIE_INNER)
        return;
    if (slot->type == KESTU_TRIE_LEAF) {
        if (slot->key == key)
            slot = nullptr;
        return;
    }
    Slot &next = slot->slot_of(key, depth);
    if (&next == &slot->end && (!next || next->key != key))
        return;
    remove_from(next, key, depth + 1);
    if (--slot->count != 1)
        return;
    std::vector<Slot *> present;
    if (slot->end)
        present.push_back(&slot->end);
    for (auto &child : slot->children)
        if (child)
            present.push_back(&child);
    if (present.size() == 1 && (*present[0])->type == KESTU_TRIE_LEAF) {
        Slot risen = std::move(*present[0]);
        slot = std::move(risen);
    }
}

// The node at the end of a key's way, or null.
const Model *seek(const Slot &slot, const std::string &key, size_t depth = 0) {
    const bool leads_on = slot && slot->type == KESTU_TRIE_INNER;
    return leads_on ? seek(slot->slot_of(key, depth), key, depth + 1) : slot.get();
}

void *value_in(const Slot &root, const std::string &key) {
    const Model *leaf = seek(root, key);
    return leaf && leaf->key == key ? leaf->value : nullptr;
}

bool is_told(const kestu_trie_node_t *node, const Slot &slot) {
    if (!node || !slot || node->type != slot->type || node->type > KESTU_TRIE_INNER)
        return node ? slot && node->type == slot->type : !slot;
    if (node->type == KESTU_TRIE_LEAF) {
        const auto *leaf = reinterpret_cast<const kestu_trie_leaf_t *>(node);
        return leaf->value == slot->value &&
               slot->key == std::string_view(reinterpret_cast<char *>(leaf->key), leaf->length);
    }
    const auto *inner = reinterpret_cast<const kestu_trie_inner_t *>(node);
    return inner->count == slot->count &&
           is_told(reinterpret_cast<kestu_trie_node_t *>(inner->end), slot->end) &&
           std::equal(inner->children, inner->children + 16, slot->children.begin(), is_told);
}

// Some letters, in half of the keys long runs that others share or leave on their way, and letters.
std::string random_key(std::mt19937 &random, bool long_runs) {
    const auto below = [&random](size_t n) { return random() % n; };
    const auto letters = [&](size_t most) {
        std::string text(below(most + 1), '\0');
        for (char &byte : text)
            byte = "\x00\x01\x10\x11"[below(4)];
        return text;
    };
    if (!long_runs)
        return letters(4);
    constexpr size_t lengths[] = {8, 15, 16, 17, 18, 24};
    return letters(1) + std::string(lengths[below(6)], 'k') + letters(2);
}

} // namespace

// A trie beside its model. Operations change both, and so does a caller who edits records: types,
// links, counts and keys, and nodes of his own.
template <typename Kind>
class TrieModel : public TrieBoth<Kind> {
  protected:
    using Real = kestu_trie_node_t;
    using Inner = kestu_trie_inner_t;
    using Leaf = kestu_trie_leaf_t;

    // One change to what the way of a key passes.
    void edit(const std::string &key) {
        size_t depth = 0;
        Real **real = &this->trie->root;
        Slot *slot = &model;
        for (size_t rest = below(60); rest > 0 && *slot && (*slot)->type == 1; --rest, ++depth) {
            if (key.size() * 2 == depth)
                return;
            real = &reinterpret_cast<Inner *>(*real)->children[half(key, depth)];
            slot = &(*slot)->children[half(key, depth)];
        }
        if (!*slot) {
            if (apart.empty())
                return;
            *real = apart.back().first;
            *slot = std::move(apart.back().second);
            apart.pop_back();
        } else if ((*slot)->type > KESTU_TRIE_INNER) {
            (*real)->type = (*slot)->type = types[*real];
            types.erase(*real);
        } else if (const size_t kind = below(5); kind == 0) {
            types[*real] = (*slot)->type;
            (*real)->type = (*slot)->type = static_cast<uint32_t>(2 + below(9));
        } else if (kind == 1) {
            apart.emplace_back(std::exchange(*real, nullptr), std::move(*slot));
        } else if ((*slot)->type == KESTU_TRIE_INNER) {
            reinterpret_cast<Inner *>(*real)->count = (*slot)->count =
                static_cast<uint32_t>(below(4));
        } else {
            kind == 2 ? grow(real, slot, depth) : rename(reinterpret_cast<Leaf *>(*real), **slot);
        }
    }

    // An inner node that nobody cleared takes the place of a leaf.
    void grow(Real **real, Slot *slot, size_t depth) {
        auto *inner = static_cast<Inner *>(block(sizeof(Inner)));
        Slot above = std::make_unique<Model>(Model{.type = KESTU_TRIE_INNER, .count = 1});
        const std::string &key = (*slot)->key;
        inner->type = KESTU_TRIE_INNER;
        inner->end = nullptr;
        inner->count = 1;
        std::fill_n(inner->children, 16, nullptr);
        if (key.size() * 2 > depth)
            inner->children[half(key, depth)] = *real;
        else
            inner->end = reinterpret_cast<Leaf *>(*real);
        above->slot_of(key, depth) = std::move(*slot);
        *real = reinterpret_cast<Real *>(inner);
        *slot = std::move(above);
    }

    // A shorter key, one that parts from the old one anywhere, or another in a block of its own.
    void rename(Leaf *leaf, Model &leaf_model) {
        std::string &key = leaf_model.key;
        if (const size_t kind = below(3); kind == 0 && !key.empty()) {
            key.resize(below(key.size()));
        } else if (kind == 1 && !key.empty()) {
            key[below(key.size())] ^= static_cast<char>(1U << below(8));
        } else {
            key += 'k';
            // The library's own copies stand behind their leaves.
            if (Kind::frees && leaf->key != reinterpret_cast<uint8_t *>(leaf + 1))
                kestu_mem_free(leaf->key);
            leaf->key = static_cast<uint8_t *>(block(key.size()));
        }
        std::copy(key.begin(), key.end(), leaf->key);
        leaf->length = key.size();
    }

    // Memory with leftovers.
    void *block(size_t size) {
        void *block = nullptr;
        if constexpr (Kind::frees)
            EXPECT_OK(kestu_mem_malloc(size, &block));
        else
            block = apr_palloc(this->functions.pool, size);
        return block;
    }

    size_t below(size_t n) { return random() % n; }

    void operate(const std::string &key, bool inserts) {
        if (inserts) {
            auto leaf = std::make_unique<Model>(Model{.key = key, .value = values + below(256)});
            void *value = leaf->value;
            kestu_error_t *err = this->functions.insert(this->trie, key, value);
            ASSERT_EQ(err ? err->code : 0, insert_in(model, leaf, 0));
            kestu_error_clear(err);
        } else {
            remove_from(model, key, 0);
            this->remove(key);
        }
    }

    void finish() {
        for (const auto &[node, type] : types)
            node->type = type;
        apart.emplace_back(this->trie->root, nullptr);
        for (auto &[node, its_model] : apart) {
            this->trie->root = node;
            this->functions.destroy(&this->trie);
            ASSERT_OK(this->functions.create(&this->trie));
        }
        apart.clear();
        apart.shrink_to_fit();
        types.clear();
        model = nullptr;
    }

    std::mt19937 random;
    Slot model;
    std::vector<std::pair<Real *, Slot>> apart;
    std::map<Real *, uint32_t> types; // of the nodes whose type is invalid now
};
TYPED_TEST_SUITE(TrieModel, BothKinds, );

TYPED_TEST(TrieModel, RandomOperationsKeepEverySlotAndCount) {
    for (const bool long_runs : {false, true}) {
        std::set<std::string> stored;
        const int turn = long_runs ? 20 : 500;
        for (int step = 0; step < 12 * (long_runs ? 100 : turn); ++step) {
            std::string key = random_key(this->random, long_runs);
            // In turns the trie grows and shrinks, also down to nothing.
            const bool inserts = this->below(10) < (step / turn % 2 ? 2 : 8);
            // Where counts are to stay true, so that nodes go, keys are there.
            if (const auto next = stored.lower_bound(key);
                !inserts && long_runs && next != stored.end())
                key = *next;
            this->operate(key, inserts);
            inserts ? (void)stored.insert(key) : (void)stored.erase(key);
            ASSERT_TRUE(is_told(this->trie->root, this->model)) << "step " << step;
            const std::string any = random_key(this->random, long_runs);
            ASSERT_EQ(this->search(any), value_in(this->model, any));
            ASSERT_EQ(stored.contains(any), this->search(any) != nullptr);
        }
        for (const auto &key : stored)
            this->operate(key, false);
        ASSERT_TRUE(is_told(this->trie->root, this->model));
        this->finish();
    }
}

TYPED_TEST(TrieModel, RecordsMeanWhatACallerMadeOfThem) {
    const long blocks = live_blocks();
    for (unsigned seed = 0; seed < 2000 && !this->HasFailure(); ++seed) {
        this->random.seed(seed);
        for (int step = 0; step < 40; ++step) {
            const std::string key = random_key(this->random, seed % 4 != 0);
            if (this->below(3) == 0) {
                this->edit(key);
                this->operate(key, false); // after which searches see the change
            } else {
                this->operate(key, this->below(4) != 0);
            }
            ASSERT_TRUE(is_told(this->trie->root, this->model)) << seed << ", step " << step;
            const std::string any = random_key(this->random, seed % 4 != 0);
            // An inner node that is taken for a leaf has no key.
            if (const Model *found = seek(this->model, any); !found || found->value) {
                ASSERT_EQ(this->search(any), value_in(this->model, any)) << "seed " << seed;
            }
        }
        this->finish();
    }
    EXPECT_EQ(live_blocks(), blocks);
}
