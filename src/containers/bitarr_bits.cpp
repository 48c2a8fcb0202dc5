// Single bits, ranges and scans of the bit array.
#include "kestu_bitarr.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

uint64_t bit_of(size_t bit) {
    return uint64_t{1} << bit % 64;
}

// Calls `change` with each word that holds bits of a range, cut to the array, and the mask of
// these.
template <typename Change>
void change_range(kestu_bitarr_t *ba, size_t from, size_t count, Change change) {
    const size_t nbits = ba ? ba->nbits : 0;
    if (from >= nbits || count == 0)
        return;
    const size_t last = from + std::min(count, nbits - from) - 1;
    const uint64_t first_mask = ~uint64_t{0} << from % 64;
    const uint64_t last_mask = ~uint64_t{0} >> (63 - last % 64);
    uint64_t *const first_word = ba->words + from / 64, *const last_word = ba->words + last / 64;
    if (first_word == last_word)
        return change(*first_word, first_mask & last_mask);
    change(*first_word, first_mask);
    for (uint64_t *word = first_word + 1; word < last_word; ++word)
        change(*word, ~uint64_t{0});
    change(*last_word, last_mask);
}

// The first bit from `from` on that is 1 in the words combined with `change` by exclusive or.
size_t next_bit(const kestu_bitarr_t *ba, size_t from, uint64_t change) {
    const size_t nbits = ba ? ba->nbits : 0;
    if (from >= nbits)
        return nbits;
    const uint64_t *const words = ba->words;
    uint64_t bits = (words[from / 64] ^ change) & ~uint64_t{0} << from % 64;
    size_t word = from / 64;
    while (bits == 0 && ++word < ba->nwords)
        bits = words[word] ^ change;
    return std::min(nbits, 64 * word + static_cast<size_t>(std::countr_zero(bits)));
}

uint64_t word_at(const kestu_bitarr_t *ba, size_t i) {
    return ba && i < ba->nwords ? ba->words[i] : 0;
}

// Whether `holds` is true of all pairs of words, the shorter array filled up with zeros.
template <typename Holds>
int all_words(const kestu_bitarr_t *a, const kestu_bitarr_t *b, Holds holds) {
    const size_t nwords = std::max(a ? a->nwords : 0, b ? b->nwords : 0);
    const size_t both = std::min(a ? a->nwords : 0, b ? b->nwords : 0);
    for (size_t i = 0; i < both; ++i)
        if (!holds(a->words[i], b->words[i]))
            return 0;
    for (size_t i = both; i < nwords; ++i)
        if (!holds(word_at(a, i), word_at(b, i)))
            return 0;
    return 1;
}

} // namespace

int kestu_bitarr_get(const kestu_bitarr_t *ba, size_t bit) {
    return ba && bit < ba->nbits && (ba->words[bit / 64] & bit_of(bit)) != 0;
}

void kestu_bitarr_set(kestu_bitarr_t *ba, size_t bit) {
    kestu_bitarr_set_range(ba, bit, 1);
}

void kestu_bitarr_clear(kestu_bitarr_t *ba, size_t bit) {
    kestu_bitarr_clear_range(ba, bit, 1);
}

void kestu_bitarr_toggle(kestu_bitarr_t *ba, size_t bit) {
    kestu_bitarr_toggle_range(ba, bit, 1);
}

void kestu_bitarr_set_range(kestu_bitarr_t *ba, size_t from, size_t count) {
    change_range(ba, from, count, [](uint64_t &word, uint64_t mask) { word |= mask; });
}

void kestu_bitarr_clear_range(kestu_bitarr_t *ba, size_t from, size_t count) {
    change_range(ba, from, count, [](uint64_t &word, uint64_t mask) { word &= ~mask; });
}

void kestu_bitarr_toggle_range(kestu_bitarr_t *ba, size_t from, size_t count) {
    change_range(ba, from, count, [](uint64_t &word, uint64_t mask) { word ^= mask; });
}

size_t kestu_bitarr_next_set(const kestu_bitarr_t *ba, size_t from) {
    return next_bit(ba, from, 0);
}

size_t kestu_bitarr_next_clear(const kestu_bitarr_t *ba, size_t from) {
    return next_bit(ba, from, ~uint64_t{0});
}

void kestu_bitarr_shift_up(kestu_bitarr_t *ba, size_t count) {
    if (!ba || count == 0)
        return;
    if (count < ba->nbits) {
        const size_t words = count / 64, bits = count % 64;
        for (size_t i = ba->nwords; i-- > words;) {
            const uint64_t below = i > words ? ba->words[i - words - 1] : 0;
            ba->words[i] = ba->words[i - words] << bits | (bits ? below >> (64 - bits) : 0);
        }
    }
    kestu_bitarr_clear_range(ba, 0, count);
    if (ba->nbits % 64 != 0)
        ba->words[ba->nwords - 1] &= bit_of(ba->nbits) - 1;
}

void kestu_bitarr_shift_down(kestu_bitarr_t *ba, size_t count) {
    if (!ba || count == 0)
        return;
    if (count >= ba->nbits)
        return kestu_bitarr_clear_range(ba, 0, count);
    const size_t words = count / 64, bits = count % 64;
    for (size_t i = 0; i + words < ba->nwords; ++i) {
        const uint64_t above = word_at(ba, i + words + 1);
        ba->words[i] = ba->words[i + words] >> bits | (bits ? above << (64 - bits) : 0);
    }
    kestu_bitarr_clear_range(ba, ba->nbits - count, count);
}

int kestu_bitarr_equal(const kestu_bitarr_t *a, const kestu_bitarr_t *b) {
    return all_words(a, b, [](uint64_t x, uint64_t y) { return x == y; });
}

int kestu_bitarr_is_subset(const kestu_bitarr_t *a, const kestu_bitarr_t *b) {
    return all_words(a, b, [](uint64_t x, uint64_t y) { return (x & ~y) == 0; });
}

int kestu_bitarr_intersects(const kestu_bitarr_t *a, const kestu_bitarr_t *b) {
    return !all_words(a, b, [](uint64_t x, uint64_t y) { return (x & y) == 0; });
}

size_t kestu_bitarr_export_words(const kestu_bitarr_t *ba, uint64_t *words, size_t count) {
    const size_t nwords = ba ? ba->nwords : 0;
    const size_t copied = std::min(count, nwords);
    if (copied > 0)
        std::memcpy(words, ba->words, copied * sizeof *words);
    std::fill(words + copied, words + count, 0);
    return nwords;
}

kestu_error_t *kestu_bitarr_import_words(kestu_bitarr_t **ba, const uint64_t *words, size_t nbits) {
    if (kestu_error_t *err = kestu_bitarr_resize(ba, nbits))
        return err;
    kestu_bitarr_t &array = **ba;
    if (array.nwords > 0)
        std::memcpy(array.words, words, array.nwords * sizeof *words);
    if (nbits % 64 != 0)
        array.words[array.nwords - 1] &= bit_of(nbits) - 1;
    return nullptr;
}
