// Containers: iterators beside the C functions and a model, ownership, and failing allocations.
#include "kestu.hpp"
#include "support/alloc_failure.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <list>
#include <map>
#include <random>
#include <ranges>

namespace {

using kestu::test::fail_each_allocation;
using kestu::test::live_blocks;
using testing::ElementsAre;

static_assert(std::ranges::bidirectional_range<kestu::List<int>>);
static_assert(std::ranges::bidirectional_range<kestu::Ring<int>>);
static_assert(std::ranges::bidirectional_range<kestu::Map<int>>);
static_assert(std::ranges::forward_range<kestu::Stack<int>>);
static_assert(std::ranges::forward_range<kestu::Tree<int>>);
static_assert(std::ranges::forward_range<kestu::Trie<int>>);
static_assert(std::ranges::forward_range<decltype(kestu::BitArray().ones())>);
static_assert(std::ranges::range<decltype(kestu::Map<int>().with_prefix(""))>);
static_assert(std::same_as<std::iter_reference_t<kestu::List<const int>::iterator>, const int &>);

struct Counted {
    static inline int alive = 0;
    int value;
    explicit Counted(int shown) : value(shown) { ++alive; }
    Counted(const Counted &) = delete;
    Counted &operator=(const Counted &) = delete;
    ~Counted() { --alive; }
};
using Owned = std::unique_ptr<Counted>;

Owned counted(int value) {
    return std::make_unique<Counted>(value);
}

template <typename Range>
std::vector<int> shown(const Range &range) {
    std::vector<int> values;
    for (const auto &element : range)
        values.push_back(element);
    return values;
}

template <typename Range>
std::vector<int> shown_backwards(const Range &range) {
    std::vector<int> values;
    for (auto at = range.end(); at != range.begin();)
        values.push_back(*--at);
    std::reverse(values.begin(), values.end());
    return values;
}

// One random change of a list, made in both.
void change(kestu::List<int> &list, std::list<int *> &model, int &value, std::mt19937 &random) {
    const auto at = static_cast<std::ptrdiff_t>(random() % (model.size() + 1));
    const auto place = std::next(list.begin(), at);
    const auto model_place = std::next(model.begin(), at);
    const auto by_value = [](const int *a, const int *b) { return *a < *b; };
    switch (random() % 10) {
    case 0:
        EXPECT_EQ(&*list.push_back(value), &value);
        model.push_back(&value);
        break;
    case 1:
        list.push_front(value);
        model.push_front(&value);
        break;
    case 2:
    case 3:
        EXPECT_EQ(&*list.insert(place, value), &value);
        model.insert(model_place, &value);
        break;
    case 4:
        if (place != list.end()) {
            EXPECT_EQ(list.erase(place) == list.end(), model.erase(model_place) == model.end());
        }
        break;
    case 5:
        EXPECT_EQ(list.pop_front(), model.empty() ? nullptr : model.front());
        if (!model.empty())
            model.pop_front();
        break;
    case 6:
        EXPECT_EQ(list.pop_back(), model.empty() ? nullptr : model.back());
        if (!model.empty())
            model.pop_back();
        break;
    case 7:
        list.sort();
        model.sort(by_value);
        break;
    case 8:
        list.reverse();
        model.reverse();
        break;
    default:
        kestu::List<int> other;
        other.push_back(value);
        list.append(std::move(other));
        model.push_back(&value);
    }
}

TEST(CppList, DoesWhatTheStandardListDoes) {
    std::vector<int> values(64);
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        kestu::List<int> list;
        std::list<int *> model;
        for (int &value : values) {
            value = static_cast<int>(random() % 16);
            change(list, model, value, random);
            std::vector<int> expected;
            for (const int *at : model)
                expected.push_back(*at);
            ASSERT_EQ(shown(list), expected) << seed;
            ASSERT_EQ(shown_backwards(list), expected) << seed;
        }
    }
}

TEST(CppMap, IteratesFindsAndTakesWhatTheStandardMapDoes) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        std::vector<int> values(40);
        kestu::Map<int> map;
        kestu::Trie<int> trie;
        std::map<std::string, int *> model;
        for (int &value : values) {
            std::string key(random() % 4, '\0');
            std::ranges::generate(key, [&] { return "ab\x10\xff"[random() % 4]; });
            if (model.try_emplace(key, &value).second) {
                map.insert(key, value);
                trie.insert(key, value);
            } else {
                EXPECT_THROW(map.insert(key, value), kestu::Error);
                EXPECT_EQ(map.replace(key, value), model[key]);
                EXPECT_EQ(trie.take(key), model[key]);
                trie.insert(key, value);
                model[key] = &value;
            }
            if (random() % 3 == 0) {
                const std::string gone = model.begin()->first;
                EXPECT_TRUE(map.erase(gone) && trie.erase(gone) && !trie.erase(gone));
                model.erase(gone);
            }
        }
        std::vector<std::string> expected, found;
        for (const auto &[key, value] : model)
            expected.push_back(key);
        for (auto [key, value] : map) {
            found.emplace_back(key);
            ASSERT_EQ(&value, model.at(found.back()));
            ASSERT_EQ(trie.find(key), &value);
        }
        ASSERT_EQ(found, expected);
        found.clear();
        for (auto at = map.end(); at != map.begin();)
            found.emplace_back((--at)->key);
        std::ranges::reverse(found);
        ASSERT_EQ(found, expected);

        std::vector<std::string> walked;
        found.clear();
        trie.each([&](std::string_view key, int &) { walked.emplace_back(key); });
        for (auto [key, value] : trie)
            found.emplace_back(key);
        ASSERT_EQ(found, walked) << seed;
        ASSERT_TRUE(std::ranges::is_permutation(walked, expected));

        found.clear();
        for (auto [key, value] : map.with_prefix("a"))
            found.emplace_back(key);
        std::erase_if(expected, [](const std::string &key) { return !key.starts_with("a"); });
        ASSERT_EQ(found, expected);
    }
}

TEST(CppTree, WalksParentsBeforeTheirChildren) {
    int n[] = {0, 1, 2, 3, 4, 5, 6};
    kestu::Tree<int> tree;
    auto zero = tree.append(n[0]);
    auto four = tree.append(n[4], 9);
    auto one = tree.append(zero, n[1]);
    tree.append(one, n[2]);
    tree.append(zero, n[3]);
    tree.append(four, n[5]);
    EXPECT_THAT(shown(tree), ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_THAT(shown(tree.children(zero)), ElementsAre(1, 3));
    EXPECT_THAT(shown(tree.top()), ElementsAre(0, 4));
    EXPECT_EQ(tree.parent(one), zero);
    EXPECT_EQ(tree.parent(zero), tree.end());
    EXPECT_EQ(four.record()->tag, 9);
    tree.erase(one);
    tree.erase(four);
    tree.append(n[6]);
    EXPECT_THAT(shown(tree), ElementsAre(0, 3, 6));
    tree.erase(tree.begin());
    EXPECT_THAT(shown(tree), ElementsAre(6));
}

TEST(CppRing, UsesFreeNodesAgain) {
    kestu::Pool pool;
    kestu::Ring<int> ring(pool);
    int n[] = {1, 2, 3, 4};
    auto first = ring.add(n[0]);
    ring.add(n[1]);
    auto third = ring.add(n[2]);
    EXPECT_EQ(*ring.erase(first), 2);
    EXPECT_EQ(ring.erase(third), ring.end());
    EXPECT_THAT(shown(ring), ElementsAre(2));
    EXPECT_THAT(shown_backwards(ring), ElementsAre(2));
    EXPECT_EQ(ring.add(n[3]).record(), first.record());
    EXPECT_THAT(shown_backwards(ring), ElementsAre(4, 2));
    ring.clear();
    EXPECT_TRUE(ring.empty());
}

// Every kind of container that owns, used in both ways.
void own_all(bool nothrow) {
    kestu::List<Owned> list;
    for (int i = 0; i < 3; ++i)
        nothrow ? take(list.push_back(std::nothrow, counted(i))) : list.push_back(counted(i));
    list.erase(list.begin());
    EXPECT_EQ(list.pop_back()->value, 2);

    kestu::Tree<Owned> tree;
    const auto top = tree.append(counted(1));
    if (nothrow)
        take(tree.append(std::nothrow, top, counted(2)));
    else
        tree.append(top, counted(2));
    tree.append(counted(3));
    tree.erase(top);

    kestu::Map<Owned> map;
    kestu::Trie<Owned> trie;
    for (const char *key : {"a", "b", "c"}) {
        map.insert(key, counted(1));
        trie.insert(key, counted(1));
    }
    if (nothrow) {
        take(map.insert(std::nothrow, "d", counted(1)));
        take(trie.insert(std::nothrow, "d", counted(1)));
    }
    EXPECT_EQ(map.replace("a", counted(2))->value, 1);
    map.erase("b");
    trie.erase("b");
    EXPECT_EQ(map.take("c")->value, 1);
    EXPECT_EQ(trie.take("c")->value, 1);
    EXPECT_FALSE(trie.insert(std::nothrow, "a", counted(4)).has_value());

    kestu::Pool pool;
    kestu::Stack<Owned> stack(pool);
    kestu::Ring<Owned> ring(pool);
    for (int i = 0; i < 3; ++i) {
        stack.push(counted(i));
        ring.add(counted(i));
    }
    EXPECT_EQ(stack.pop()->value, 2);
    ring.erase(ring.begin());
    kestu::Stack<Owned> moved = std::move(stack);
}

TEST(CppContainers, OwnTheirElementsAndLeaveNothingBehindWithoutMemory) {
    for (const bool nothrow : {false, true}) {
        own_all(nothrow);
        EXPECT_EQ(Counted::alive, 0);
        const long before = live_blocks();
        const size_t failures = fail_each_allocation([&](size_t n) {
            try {
                own_all(nothrow);
            } catch (const kestu::Error &error) {
                EXPECT_TRUE(error.has(KESTU_ERR_NO_MEMORY)) << n << ' ' << error.what();
            } catch (const std::bad_alloc &) {
            }
            EXPECT_EQ(Counted::alive, 0) << n;
        });
        EXPECT_GT(failures, 10); // sanitizers keep operator new to themselves
        EXPECT_EQ(live_blocks(), before);
    }
}

TEST(CppBitArray, ShowsItsOnes) {
    kestu::BitArray bits(130);
    for (size_t bit : {0U, 64U, 129U})
        bits.set(bit);
    std::vector<size_t> found;
    std::ranges::copy(bits.ones(), std::back_inserter(found));
    EXPECT_THAT(found, ElementsAre(0, 64, 129));
    kestu::BitArray other = bits.copy();
    other.flip();
    EXPECT_FALSE(bits.intersects(other));
    other |= bits;
    EXPECT_EQ(other.count(), 130);
    other &= bits;
    EXPECT_EQ(other, bits);
    bits <<= 1;
    EXPECT_EQ(bits.to_string('x', '.').substr(0, 3), ".x.");
    kestu::BitArray empty;
    EXPECT_EQ(empty.ones().begin(), empty.ones().end());
    EXPECT_EQ(empty.to_string(), "");
    EXPECT_FALSE(empty.resize(std::nothrow, SIZE_MAX));
}

} // namespace
