// CRCs by carry-less multiplication, for registers of any number of 128-bit lanes.
//
// A message is a polynomial over GF(2). A lane of it that stands d bits before another may be
// multiplied by x^d mod P and added to that one without changing the remainder: the message is
// folded, register by register, into one lane, whose remainder is found by Barrett's method. See
// Gopal, Ozturk and others, "Fast CRC Computation for Generic Polynomials Using PCLMULQDQ
// Instruction", Intel 2009.
//
// Bit 0 of a register is its highest power, so that a product of two 64-bit halves stands one bit
// too high for a 128-bit lane: the factors below are smaller by one power of x to make up for it.
//
// Each file that includes this is compiled for other processors. Everything here is internal to the
// file, and nothing of the standard library runs, so that no code for one leaks into another.
#pragma once

#include "base/crc_table.hpp"

#include <immintrin.h>
#include <utility>

namespace kestu {
namespace {

constexpr size_t lane_size = 16;

// A register of one lane. Wider ones offer the same.
struct OneLane {
    using Register = __m128i;
    static constexpr int lanes = 1;

    static Register load(const unsigned char *data) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(data));
    }
    static Register widened(__m128i x) { return x; }
    static Register in_each_lane(__m128i x) { return x; }
    template <int i>
    static __m128i lane(Register x) {
        static_assert(i == 0);
        return x;
    }
    template <int halves>
    static Register product(Register a, Register b) {
        return _mm_clmulepi64_si128(a, b, halves);
    }
};

// Which half of each lane of the first factor, and then of the second, are multiplied.
constexpr int low_by_low = 0x00;
constexpr int low_by_high = 0x10;
constexpr int high_by_high = 0x11;

template <typename Lanes>
constexpr size_t register_size = Lanes::lanes *lane_size;

struct Message {
    const unsigned char *data;
    size_t size;

    template <typename Lanes>
    typename Lanes::Register take() {
        const auto x = Lanes::load(data);
        data += register_size<Lanes>;
        size -= register_size<Lanes>;
        return x;
    }
};

__m128i halves(uint64_t low, uint64_t high) {
    return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

// The remainder of x^power as a 64-bit half.
template <typename Crc>
consteval uint64_t factor(int power) {
    return uint64_t{Crc::power_of_x(power)} << (64 - Crc::width);
}

// What the lanes of `x` are worth `bytes` bytes further on.
template <typename Crc, typename Lanes, int bytes>
typename Lanes::Register moved(typename Lanes::Register x) {
    if constexpr (bytes == 0) {
        return x;
    } else {
        const auto factors =
            Lanes::in_each_lane(halves(factor<Crc>(8 * bytes + 63), factor<Crc>(8 * bytes - 1)));
        const auto low = Lanes::template product<low_by_low>(x, factors);
        const auto high = Lanes::template product<high_by_high>(x, factors);
        return low ^ high;
    }
}

// Folds in the whole registers of `message`, one after the other.
template <typename Crc, typename Lanes>
typename Lanes::Register fold_each(typename Lanes::Register x, Message &message) {
    while (message.size >= register_size<Lanes>)
        x = moved<Crc, Lanes, register_size<Lanes>>(x) ^ message.take<Lanes>();
    return x;
}

// Folds the lanes of `x` into one.
template <typename Crc, typename Lanes, int... i>
__m128i fold_lanes(typename Lanes::Register x, std::integer_sequence<int, i...>) {
    return (moved<Crc, OneLane, lane_size *(Lanes::lanes - 1 - i)>(Lanes::template lane<i>(x)) ^
            ...);
}

// Folds the whole registers of `message`, at least four, into one lane. Four chains run side by
// side, since a product takes much longer than the processor needs to begin the next one.
template <typename Crc, typename Lanes>
__m128i fold_bulk(typename Crc::Word crc, Message &message) {
    using Register = typename Lanes::Register;
    constexpr int size = register_size<Lanes>;
    Register a = message.take<Lanes>() ^ Lanes::widened(_mm_cvtsi32_si128(static_cast<int>(crc)));
    Register b = message.take<Lanes>();
    Register c = message.take<Lanes>();
    Register d = message.take<Lanes>();
    while (message.size >= 4 * size) {
        a = moved<Crc, Lanes, 4 * size>(a) ^ message.take<Lanes>();
        b = moved<Crc, Lanes, 4 * size>(b) ^ message.take<Lanes>();
        c = moved<Crc, Lanes, 4 * size>(c) ^ message.take<Lanes>();
        d = moved<Crc, Lanes, 4 * size>(d) ^ message.take<Lanes>();
    }
    d ^= moved<Crc, Lanes, 3 * size>(a) ^ moved<Crc, Lanes, 2 * size>(b) ^
         moved<Crc, Lanes, size>(c);
    d = fold_each<Crc, Lanes>(d, message);
    return fold_lanes<Crc, Lanes>(d, std::make_integer_sequence<int, Lanes::lanes>{});
}

// The 16 places from index 16 + n on move a lane's bytes down by n, those from 16 - n on move them
// up.
alignas(16) constexpr signed char shifts[48] = {
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0,  1,  2,  3,  4,  5,  6,  7,
    8,  9,  10, 11, 12, 13, 14, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};

// Folds in the last 1 to 15 bytes, which follow a lane in memory. The bytes of `x` and these are
// cut anew: as many as are left come first, and a whole lane behind them.
template <typename Crc>
__m128i fold_rest(__m128i x, const Message &rest) {
    const auto *down = reinterpret_cast<const unsigned char *>(shifts) + 16 + rest.size;
    const __m128i up = OneLane::load(down - 16);
    const __m128i first = _mm_shuffle_epi8(x, up);
    const __m128i tail = OneLane::load(rest.data + rest.size - lane_size);
    const __m128i last = _mm_blendv_epi8(tail, _mm_shuffle_epi8(x, OneLane::load(down)), up);
    return moved<Crc, OneLane, lane_size>(first) ^ last;
}

// The quotient of x^(64 + width) by the polynomial, without its last term, which falls off below.
template <typename Crc>
consteval uint64_t reciprocal() {
    uint64_t quotient = 0;
    for (int i = 0; i < 64; ++i)
        quotient |= uint64_t{Crc::power_of_x(Crc::width - 1 + i) & 1U} << i;
    return quotient;
}

// The remainder of a lane with `width` zero bits behind it.
template <typename Crc>
typename Crc::Word remainder(__m128i x) {
    constexpr int word_size = sizeof(typename Crc::Word);
    const __m128i fold = halves(factor<Crc>(64 + Crc::width - 1), 0);
    const __m128i high = _mm_unpackhi_epi64(_mm_setzero_si128(), x);
    x = OneLane::product<low_by_low>(x, fold) ^ _mm_srli_si128(high, word_size);
    // Barrett: the quotient is exact, and of its product with the polynomial only the last `width`
    // bits matter.
    const __m128i barrett = halves(reciprocal<Crc>(), uint64_t{Crc::polynomial} << 1 | 1);
    const __m128i quotient =
        OneLane::product<low_by_low>(_mm_srli_si128(x, 8 - word_size), barrett);
    const __m128i product = OneLane::product<low_by_high>(quotient, barrett);
    const __m128i result = _mm_srli_si128(x, 8 - word_size) ^ product;
    return static_cast<typename Crc::Word>(_mm_extract_epi64(result, 1));
}

template <typename Crc, typename Lanes>
typename Crc::Word crc_folded(typename Crc::Word crc, const unsigned char *data, size_t size) {
    if (size < lane_size)
        return crc_sliced<Crc>(crc, data, size);
    Message message{data, size};
    __m128i x;
    if (size >= 4 * register_size<Lanes>)
        x = fold_bulk<Crc, Lanes>(crc, message);
    else if (size >= 4 * lane_size)
        x = fold_bulk<Crc, OneLane>(crc, message);
    else
        x = message.take<OneLane>() ^ _mm_cvtsi32_si128(static_cast<int>(crc));
    x = fold_each<Crc, OneLane>(x, message);
    if (message.size > 0)
        x = fold_rest<Crc>(x, message);
    return remainder<Crc>(x);
}

} // namespace
} // namespace kestu
