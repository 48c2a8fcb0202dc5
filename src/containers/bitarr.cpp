// The bit array.
#include "kestu_bitarr.h"

#include "base/kept_errno.hpp"
#include "containers/bitarr_count.hpp"
#include "error/error.hpp"
#include "kestu_mem.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <emmintrin.h>
#include <span>

using namespace kestu;

namespace {

constexpr kestu_bitarr_t no_bits = {nullptr, 0, 0, 0};

const kestu_bitarr_t &array_of(const kestu_bitarr_t *ba) {
    return ba ? *ba : no_bits;
}

constexpr size_t words_for(size_t nbits) {
    return nbits / 64 + (nbits % 64 != 0);
}

// The least power of two above the number of words: the next bit beyond a full array always fits.
constexpr size_t capacity_for(size_t nwords) {
    return std::max(size_t{8}, size_t{1} << std::bit_width(nwords));
}

void clear_words(kestu_bitarr_t &array, size_t from, size_t to) {
    std::memset(array.words + from, 0, (to - from) * sizeof *array.words);
}

// Clears what lies above the last bit in the last word in use.
void clear_above(kestu_bitarr_t &array) {
    if (array.nbits == 0)
        array.words[0] = 0;
    else if (array.nbits % 64 != 0)
        array.words[array.nwords - 1] &= (uint64_t{1} << array.nbits % 64) - 1;
}

// A refused reallocation leaves the array its old words.
kestu_error_t *grow(kestu_bitarr_t &array, size_t capacity) {
    uint64_t *words = array.words;
    if (kestu_error_t *err = kestu_mem_realloc(capacity * sizeof *words, &words))
        return err;
    array.words = words;
    clear_words(array, array.capacity, capacity);
    array.capacity = capacity;
    return nullptr;
}

kestu_error_t *resize(kestu_bitarr_t **ba, size_t nbits) {
    if (!*ba)
        return kestu_bitarr_create(ba, nbits);
    kestu_bitarr_t &array = **ba;
    const size_t nwords = words_for(nbits);
    if (nwords > array.capacity) {
        if (kestu_error_t *err = grow(array, capacity_for(nwords)))
            return err;
    } else if (nwords < array.nwords) {
        clear_words(array, nwords, array.nwords);
    }
    array.nbits = nbits;
    array.nwords = nwords;
    clear_above(array);
    return nullptr;
}

constexpr uint64_t in_each_byte = 0x0101010101010101;

// Eight bits as the bytes 0 and 1, in memory from bit 0 on.
uint64_t spread(uint8_t bits) {
    const uint64_t own_bit = bits * in_each_byte & 0x8040201008040201;
    return (own_bit + 0x7F * in_each_byte) >> 7 & in_each_byte;
}

// Writes a character for each of `n` bits from `first`, a multiple of 8, on.
void spell(const kestu_bitarr_t &array, size_t first, size_t n, char one, char zero, char *out) {
    const uint64_t zeros = static_cast<uint8_t>(zero) * in_each_byte;
    const auto change = static_cast<uint8_t>(one ^ zero);
    for (size_t i = 0; i < n; i += 8) {
        const size_t bit = first + i;
        const auto bits = static_cast<uint8_t>(array.words[bit / 64] >> bit % 64);
        const uint64_t characters = zeros ^ spread(bits) * change;
        std::memcpy(out + i, &characters, std::min(n - i, sizeof characters));
    }
}

// Results of this many words leave the caches before anybody reads them. They are stored past them,
// which saves the reading of what is overwritten.
constexpr size_t many_words = size_t{1} << 20;

template <typename Operation>
void combine_words(const uint64_t *a, const uint64_t *b, uint64_t *out, size_t n,
                   Operation operation) {
    using Pair [[gnu::vector_size(16)]] = uint64_t;
    const auto pair_at = [](const uint64_t *words) {
        Pair pair;
        std::memcpy(&pair, words, sizeof pair);
        return pair;
    };
    const bool is_aligned = reinterpret_cast<uintptr_t>(out) % sizeof(Pair) == 0;
    size_t i = 0;
    if (n >= many_words && out != a && out != b && is_aligned) {
        for (; i + 2 <= n; i += 2)
            _mm_stream_si128(reinterpret_cast<__m128i *>(out + i),
                             reinterpret_cast<__m128i>(operation(pair_at(a + i), pair_at(b + i))));
        _mm_sfence();
    }
    for (; i < n; ++i)
        out[i] = operation(a[i], b[i]);
}

// Combines word by word, with zeros for what the shorter array lacks. The array at `out` may be `a`
// or `b`, which then has its new length before its words are read.
template <typename Operation>
kestu_error_t *combine(const kestu_bitarr_t *a, const kestu_bitarr_t *b, kestu_bitarr_t **out,
                       Operation operation) {
    const size_t nbits = std::max(array_of(a).nbits, array_of(b).nbits);
    if (kestu_error_t *err = kestu_bitarr_resize(out, nbits))
        return err;
    const bool a_is_shorter = array_of(a).nbits < nbits;
    const kestu_bitarr_t shorter = array_of(a_is_shorter ? a : b);
    const kestu_bitarr_t longer = array_of(a_is_shorter ? b : a);
    uint64_t *const words = (*out)->words;
    const auto in_order = [=](auto of_shorter, auto of_longer) {
        return a_is_shorter ? operation(of_shorter, of_longer) : operation(of_longer, of_shorter);
    };
    combine_words(shorter.words, longer.words, words, shorter.nwords, in_order);
    for (size_t i = shorter.nwords; i < longer.nwords; ++i)
        words[i] = in_order(uint64_t{0}, longer.words[i]);
    clear_above(**out);
    return nullptr;
}

} // namespace

kestu_error_t *kestu_bitarr_create(kestu_bitarr_t **ba, size_t nbits) {
    constexpr const char *failed = "Cannot create bit array.";
    kestu_bitarr_t *array = nullptr;
    *ba = nullptr;
    if (kestu_error_t *err = kestu_mem_malloc(sizeof *array, &array))
        return wrap(err, failed);
    const size_t nwords = words_for(nbits);
    *array = {nullptr, nbits, nwords, capacity_for(nwords)};
    if (kestu_error_t *err =
            kestu_mem_calloc(array->capacity, sizeof *array->words, &array->words)) {
        kestu_mem_free(array);
        return wrap(err, failed);
    }
    *ba = array;
    return nullptr;
}

kestu_error_t *kestu_bitarr_resize(kestu_bitarr_t **ba, size_t nbits) {
    return wrap(resize(ba, nbits), "Cannot resize bit array.");
}

void kestu_bitarr_free(kestu_bitarr_t *ba) {
    if (ba)
        kestu_mem_free(ba->words);
    kestu_mem_free(ba);
}

void kestu_bitarr_print(const kestu_bitarr_t *ba, FILE *stream) {
    const KeptErrno kept;
    char text[4096];
    const kestu_bitarr_t &array = array_of(ba);
    for (size_t first = 0; first < array.nbits; first += sizeof text) {
        const size_t n = std::min(array.nbits - first, sizeof text);
        spell(array, first, n, '1', '0', text);
        fwrite(text, 1, n, stream);
    }
}

size_t kestu_bitarr_tostr(const kestu_bitarr_t *ba, char *buf, size_t size, char one, char zero) {
    const kestu_bitarr_t &array = array_of(ba);
    if (size > 0) {
        const size_t n = std::min(array.nbits, size - 1);
        spell(array, 0, n, one ? one : '1', zero ? zero : '0', buf);
        buf[n] = '\0';
    }
    return array.nbits;
}

void kestu_bitarr_set_all(kestu_bitarr_t *ba) {
    if (!ba)
        return;
    std::memset(ba->words, 0xFF, ba->nwords * sizeof *ba->words);
    clear_above(*ba);
}

void kestu_bitarr_clear_all(kestu_bitarr_t *ba) {
    if (ba)
        clear_words(*ba, 0, ba->nwords);
}

void kestu_bitarr_toggle_all(kestu_bitarr_t *ba) {
    if (!ba)
        return;
    for (uint64_t &word : std::span(ba->words, ba->nwords))
        word = ~word;
    clear_above(*ba);
}

kestu_error_t *kestu_bitarr_clone(const kestu_bitarr_t *src, kestu_bitarr_t **dst) {
    const kestu_bitarr_t &source = array_of(src);
    *dst = nullptr;
    if (source.nbits == 0)
        return nullptr;
    kestu_error_t *err = kestu_bitarr_create(dst, source.nbits);
    if (!err)
        std::memcpy((*dst)->words, source.words, source.nwords * sizeof *source.words);
    return err;
}

size_t kestu_bitarr_num_bits_set(const kestu_bitarr_t *ba) {
    const kestu_bitarr_t &array = array_of(ba);
    return count_dispatch.current().count(array.words, array.nwords);
}

size_t kestu_bitarr_num_bits_cleared(const kestu_bitarr_t *ba) {
    return array_of(ba).nbits - kestu_bitarr_num_bits_set(ba);
}

kestu_error_t *kestu_bitarr_or(const kestu_bitarr_t *a, const kestu_bitarr_t *b,
                               kestu_bitarr_t **out) {
    return combine(a, b, out, [](auto x, auto y) { return x | y; });
}

kestu_error_t *kestu_bitarr_and(const kestu_bitarr_t *a, const kestu_bitarr_t *b,
                                kestu_bitarr_t **out) {
    return combine(a, b, out, [](auto x, auto y) { return x & y; });
}

kestu_error_t *kestu_bitarr_and_not(const kestu_bitarr_t *a, const kestu_bitarr_t *b,
                                    kestu_bitarr_t **out) {
    return combine(a, b, out, [](auto x, auto y) { return x & ~y; });
}
