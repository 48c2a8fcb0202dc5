// Bits, ranges, scans and comparisons of bit arrays beside arrays of bool.
#include "support/test.hpp"

namespace {

using Model = std::vector<bool>;

Model bits_of(const kestu_bitarr_t *ba) {
    Model bits(ba->nbits);
    for (size_t i = 0; i < bits.size(); ++i)
        bits[i] = kestu_bitarr_get(ba, i);
    EXPECT_EQ(kestu_bitarr_num_bits_set(ba),
              static_cast<size_t>(std::count(bits.begin(), bits.end(), true)));
    return bits;
}

// Changes a range of the array and of the model in one of several ways.
void change(unsigned how, kestu_bitarr_t *ba, Model &model, size_t from, size_t count) {
    const size_t end = std::min(model.size(), from + count);
    const auto each = [&](auto function, auto value) {
        function(ba, from, count);
        for (size_t i = from; i < end; ++i)
            model[i] = value(model[i]);
    };
    if (how == 0)
        each(kestu_bitarr_set_range, [](bool) { return true; });
    else if (how == 1)
        each(kestu_bitarr_clear_range, [](bool) { return false; });
    else if (how == 2)
        each(kestu_bitarr_toggle_range, [](bool bit) { return !bit; });
    else if (how == 3) {
        kestu_bitarr_shift_up(ba, count);
        for (size_t i = model.size(); i-- > 0;)
            model[i] = i >= count && model[i - count];
    } else {
        kestu_bitarr_shift_down(ba, count);
        for (size_t i = 0; i < model.size(); ++i)
            model[i] = count < model.size() - i && model[i + count];
    }
}

void expect_scans(const kestu_bitarr_t *ba, const Model &model, size_t from) {
    const auto first = model.begin() + static_cast<ptrdiff_t>(std::min(from, model.size()));
    const auto at = [&](bool bit) {
        return static_cast<size_t>(std::find(first, model.end(), bit) - model.begin());
    };
    EXPECT_EQ(kestu_bitarr_next_set(ba, from), at(true));
    EXPECT_EQ(kestu_bitarr_next_clear(ba, from), at(false));
}

void expect_comparisons(const kestu_bitarr_t *a, const kestu_bitarr_t *b) {
    bool equal = true, subset = true, common = false;
    for (size_t i = 0; i < std::max(a->nbits, b->nbits); ++i) {
        const int x = kestu_bitarr_get(a, i), y = kestu_bitarr_get(b, i);
        equal &= x == y;
        subset &= x <= y;
        common |= x && y;
    }
    EXPECT_EQ(kestu_bitarr_equal(a, b), equal);
    EXPECT_EQ(kestu_bitarr_is_subset(a, b), subset);
    EXPECT_EQ(kestu_bitarr_intersects(a, b), common);
}

TEST(BitRanges, AgreeWithArraysOfBool) {
    std::mt19937_64 random(1);
    for (int round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
        const size_t nbits = random() % 400;
        kestu_bitarr_t *ba = nullptr, *copy = nullptr;
        ASSERT_OK(kestu_bitarr_create(&ba, nbits));
        Model model(nbits);
        for (int step = 0; step < 30; ++step) {
            const size_t from = random() % (nbits + 70),
                         count = random() % (random() % 8 == 0 ? 600 : 90);
            change(random() % 5, ba, model, from, count);
            EXPECT_EQ(bits_of(ba), model);
            expect_scans(ba, model, from);
        }
        std::vector<uint64_t> words(1 + nbits / 50, ~uint64_t{0});
        EXPECT_EQ(kestu_bitarr_export_words(ba, words.data(), words.size()), ba->nwords);
        EXPECT_EQ(std::count(words.begin(), words.end(), 0) >=
                      static_cast<ptrdiff_t>(words.size() - ba->nwords),
                  true);
        ASSERT_OK(kestu_bitarr_import_words(&copy, words.data(), nbits));
        expect_comparisons(ba, copy);
        EXPECT_TRUE(kestu_bitarr_equal(ba, copy));
        words[0] ^= 1;
        ASSERT_OK(kestu_bitarr_import_words(&copy, words.data(), nbits - nbits / 3));
        expect_comparisons(ba, copy);
        expect_comparisons(copy, ba);
        kestu_bitarr_free(ba);
        kestu_bitarr_free(copy);
    }
}

TEST(BitRanges, StopAtTheEndsOfNumbers) {
    kestu_bitarr_t *ba = nullptr;
    ASSERT_OK(kestu_bitarr_create(&ba, 100));
    kestu_bitarr_set(ba, 100);
    kestu_bitarr_set_range(ba, 99, SIZE_MAX);
    EXPECT_EQ(bits_of(ba), [] {
        Model last(100);
        last[99] = true;
        return last;
    }());
    kestu_bitarr_toggle(ba, 99);
    kestu_bitarr_set(ba, 7);
    kestu_bitarr_clear(ba, 7);
    EXPECT_EQ(kestu_bitarr_next_set(ba, SIZE_MAX), 100U);
    kestu_bitarr_shift_down(ba, SIZE_MAX);
    EXPECT_EQ(kestu_bitarr_num_bits_set(ba), 0U);
    kestu_bitarr_free(ba);
    kestu_bitarr_set_range(nullptr, 0, 1);
    kestu_bitarr_shift_up(nullptr, 1);
    kestu_bitarr_shift_down(nullptr, 1);
    EXPECT_TRUE(kestu_bitarr_equal(nullptr, nullptr) && kestu_bitarr_is_subset(nullptr, nullptr));
    EXPECT_EQ(kestu_bitarr_next_clear(nullptr, 0) + kestu_bitarr_get(nullptr, 0), 0U);
}

} // namespace
