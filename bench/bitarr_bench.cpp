// Bit arrays of 10^8 bits: counting, setting, combining and looking for the next one; beside
// boost::dynamic_bitset, std::bitset and CRoaring.
#include "kestu_bitarr.h"

#include <benchmark/benchmark.h>
#include <boost/dynamic_bitset.hpp>
#include <roaring/roaring.h>

#include <bitset>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

namespace {

constexpr size_t bits = 100000000;
constexpr size_t words = (bits + 63) / 64;

std::vector<uint64_t> random_words(unsigned seed) {
    std::mt19937_64 random(seed);
    std::vector<uint64_t> result(words);
    for (uint64_t &word : result)
        word = random();
    result.back() &= (uint64_t{1} << bits % 64) - 1;
    return result;
}

// Bits that are `distance` apart on the average.
std::vector<uint32_t> sparse_bits(uint32_t distance) {
    std::mt19937 random(4);
    std::vector<uint32_t> result;
    for (uint32_t bit = 0; bit < bits; bit += 1 + random() % (2 * distance))
        result.push_back(bit);
    return result;
}

// Two arrays of random bits and one for results, in the terms of each peer.
struct Ours {
    kestu_bitarr_t *a = make(random_words(1));
    kestu_bitarr_t *b = make(random_words(2));
    kestu_bitarr_t *out = make(random_words(3));

    Ours() = default;
    Ours(const Ours &) = delete;
    Ours &operator=(const Ours &) = delete;
    ~Ours() {
        for (kestu_bitarr_t *array : {a, b, out})
            kestu_bitarr_free(array);
    }
    static kestu_bitarr_t *make(const std::vector<uint64_t> &from) {
        kestu_bitarr_t *array = nullptr;
        if (kestu_error_t *err = kestu_bitarr_create(&array, bits))
            kestu_error_malfunction(err);
        std::memcpy(array->words, from.data(), words * sizeof from[0]);
        return array;
    }
    size_t count() { return kestu_bitarr_num_bits_set(a); }
    void set() { kestu_bitarr_set_all(out); }
    void toggle() { kestu_bitarr_toggle_all(out); }
    void unite() { kestu_error_clear(kestu_bitarr_or(a, b, &out)); }
    void unite_in_place() { kestu_error_clear(kestu_bitarr_or(a, b, &a)); }
    void intersect() { kestu_error_clear(kestu_bitarr_and(a, b, &out)); }
};

// Both standard-like peers combine in place only, so that a result elsewhere is a copy first.
template <typename Bits>
struct OfOperators {
    Bits a, b, out;

    size_t count() { return a.count(); }
    void set() { out.set(); }
    void toggle() { out.flip(); }
    void unite() { (out = a) |= b; }
    void unite_in_place() { a |= b; }
    void intersect() { (out = a) &= b; }
};

struct Boost : OfOperators<boost::dynamic_bitset<uint64_t>> {
    Boost() : OfOperators{make(1), make(2), make(3)} {}
    static boost::dynamic_bitset<uint64_t> make(unsigned seed) {
        const auto from = random_words(seed);
        boost::dynamic_bitset<uint64_t> result(from.begin(), from.end());
        result.resize(bits);
        return result;
    }
};

using StandardBits = std::bitset<bits>;
struct Standard {
    std::unique_ptr<OfOperators<StandardBits>> all = std::make_unique<OfOperators<StandardBits>>();

    Standard() {
        std::memcpy(static_cast<void *>(&all->a), random_words(1).data(), sizeof all->a);
        std::memcpy(static_cast<void *>(&all->b), random_words(2).data(), sizeof all->b);
    }
    size_t count() { return all->count(); }
    void set() { all->set(); }
    void toggle() { all->toggle(); }
    void unite() { all->unite(); }
    void unite_in_place() { all->unite_in_place(); }
    void intersect() { all->intersect(); }
};

// Bits so dense that CRoaring keeps them as bits too.
struct Roaring {
    roaring_bitmap_t *a = make(random_words(1));
    roaring_bitmap_t *b = make(random_words(2));

    Roaring() = default;
    Roaring(const Roaring &) = delete;
    Roaring &operator=(const Roaring &) = delete;
    ~Roaring() {
        roaring_bitmap_free(a);
        roaring_bitmap_free(b);
    }
    static roaring_bitmap_t *make(const std::vector<uint64_t> &from) {
        roaring_bitmap_t *result = roaring_bitmap_create();
        for (uint32_t bit = 0; bit < bits; ++bit)
            if (from[bit / 64] >> bit % 64 & 1)
                roaring_bitmap_add(result, bit);
        return result;
    }
    void unite() { roaring_bitmap_free(roaring_bitmap_or(a, b)); }
    void unite_in_place() { roaring_bitmap_or_inplace(a, b); }
    void intersect() { roaring_bitmap_free(roaring_bitmap_and(a, b)); }
};

// What memory allows: reading one array, writing one, and as much as two are read and one written.
struct Memory {
    std::vector<uint64_t> a = random_words(1), out = random_words(2);
    std::vector<uint64_t> half = std::vector<uint64_t>(words / 2);

    size_t count() { return std::accumulate(a.begin(), a.end(), uint64_t{0}); }
    void set() { std::memset(out.data(), 0xFF, words * sizeof out[0]); }
    void unite() {
        std::memcpy(out.data(), a.data(), words * sizeof out[0]);
        std::memcpy(half.data(), a.data(), half.size() * sizeof half[0]);
    }
};

template <typename Peer, auto operation>
void run(benchmark::State &state) {
    Peer peer;
    for (auto _ : state) {
        if constexpr (std::is_void_v<decltype((peer.*operation)())>)
            (peer.*operation)();
        else
            benchmark::DoNotOptimize((peer.*operation)());
        benchmark::ClobberMemory();
    }
}

// Looks up all bits that are set, one from the other on.
struct OurScan {
    kestu_bitarr_t *array = nullptr;

    explicit OurScan(const std::vector<uint32_t> &set) {
        if (kestu_error_t *err = kestu_bitarr_create(&array, bits))
            kestu_error_malfunction(err);
        for (const uint32_t bit : set)
            kestu_bitarr_set(array, bit);
    }
    OurScan(const OurScan &) = delete;
    OurScan &operator=(const OurScan &) = delete;
    ~OurScan() { kestu_bitarr_free(array); }
    size_t sum() const {
        size_t sum = 0;
        for (size_t bit = 0; (bit = kestu_bitarr_next_set(array, bit)) < bits; ++bit)
            sum += bit;
        return sum;
    }
};

struct StandardScan {
    std::unique_ptr<StandardBits> array = std::make_unique<StandardBits>();

    explicit StandardScan(const std::vector<uint32_t> &set) {
        for (const uint32_t bit : set)
            array->set(bit);
    }
    size_t sum() const {
        size_t sum = 0;
        for (size_t bit = array->_Find_first(); bit < bits; bit = array->_Find_next(bit))
            sum += bit;
        return sum;
    }
};

// Keeps the numbers of bits where they are sparse, not the bits.
struct RoaringScan {
    roaring_bitmap_t *array;

    explicit RoaringScan(const std::vector<uint32_t> &set)
        : array(roaring_bitmap_of_ptr(set.size(), set.data())) {}
    RoaringScan(const RoaringScan &) = delete;
    RoaringScan &operator=(const RoaringScan &) = delete;
    ~RoaringScan() { roaring_bitmap_free(array); }
    size_t sum() const {
        size_t sum = 0;
        roaring_uint32_iterator_t at;
        roaring_init_iterator(array, &at);
        for (; at.has_value; roaring_advance_uint32_iterator(&at))
            sum += at.current_value;
        return sum;
    }
};

template <typename Peer>
void scan(benchmark::State &state) {
    const Peer peer(sparse_bits(static_cast<uint32_t>(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(peer.sum());
}

#define CASE(peer, operation, name) BENCHMARK(run<peer, &peer::operation>)->Name(name)

CASE(Ours, count, "count 1e8 bits/ours");
CASE(Boost, count, "count 1e8 bits/Boost dynamic_bitset");
CASE(Standard, count, "count 1e8 bits/C++ bitset");
CASE(Memory, count, "count 1e8 bits/limit (reading)");
CASE(Ours, set, "set 1e8 bits/ours");
CASE(Boost, set, "set 1e8 bits/Boost dynamic_bitset");
CASE(Standard, set, "set 1e8 bits/C++ bitset");
CASE(Memory, set, "set 1e8 bits/limit (memset)");
CASE(Ours, toggle, "toggle 1e8 bits/ours");
CASE(Boost, toggle, "toggle 1e8 bits/Boost dynamic_bitset");
CASE(Standard, toggle, "toggle 1e8 bits/C++ bitset");
CASE(Ours, unite, "or 1e8 bits/ours");
CASE(Boost, unite, "or 1e8 bits/Boost dynamic_bitset");
CASE(Standard, unite, "or 1e8 bits/C++ bitset");
CASE(Roaring, unite, "or 1e8 bits/CRoaring");
CASE(Memory, unite, "or 1e8 bits/limit (memcpy of as much)");
CASE(Ours, unite_in_place, "or in place 1e8 bits/ours");
CASE(Boost, unite_in_place, "or in place 1e8 bits/Boost dynamic_bitset");
CASE(Standard, unite_in_place, "or in place 1e8 bits/C++ bitset");
CASE(Roaring, unite_in_place, "or in place 1e8 bits/CRoaring");
CASE(Ours, intersect, "and 1e8 bits/ours");
CASE(Boost, intersect, "and 1e8 bits/Boost dynamic_bitset");
CASE(Standard, intersect, "and 1e8 bits/C++ bitset");
CASE(Roaring, intersect, "and 1e8 bits/CRoaring");

#define SCAN(peer, who)                                                                            \
    BENCHMARK(scan<peer>)                                                                          \
        ->Name("next set bit/" who)                                                                \
        ->ArgName("distance")                                                                      \
        ->Arg(10)                                                                                  \
        ->Arg(1000)                                                                                \
        ->Arg(300000)

SCAN(OurScan, "ours");
SCAN(StandardScan, "C++ bitset");
SCAN(RoaringScan, "CRoaring");

} // namespace
