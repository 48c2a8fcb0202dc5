#include "unpack.hpp"

#include <cmath>
#include <cstring>
#include <limits>

namespace kestu::tiff {
namespace {

template <typename Number>
Number load(const uint8_t *row, uint64_t index) {
    Number number;
    std::memcpy(&number, row + index * sizeof number, sizeof number);
    return number;
}

uint32_t load_triple(const uint8_t *row, uint64_t index) {
    const uint8_t *at = row + 3 * index;
    return at[0] | uint32_t{at[1]} << 8 | uint32_t{at[2]} << 16;
}

// Other depths stand side by side, the highest bit first, whatever the byte order.
uint32_t load_bits(const uint8_t *row, uint64_t index, unsigned bits) {
    const uint64_t from = index * bits;
    const uint64_t end = from + bits;
    uint64_t value = 0;
    for (uint64_t byte = from / 8; byte * 8 < end; ++byte)
        value = value << 8 | row[byte];
    return static_cast<uint32_t>(value >> ((8 - end % 8) % 8) & ((uint64_t{1} << bits) - 1));
}

template <typename Out, typename Load>
void take(const Samples &from, Out *out, Load load) {
    for (uint32_t c = 0; c < from.count; ++c)
        out[c] = static_cast<Out>(load(from.row, from.first + c * from.step));
}

// A float of one sign bit, `exponent_bits`, and `fraction_bits` (IEEE 754).
double small_float(uint32_t word, int exponent_bits, int fraction_bits) {
    const int exponent = static_cast<int>(word >> fraction_bits) & ((1 << exponent_bits) - 1);
    const auto fraction = static_cast<double>(word & ((1U << fraction_bits) - 1));
    const int bias = (1 << (exponent_bits - 1)) - 1;
    const double sign = word >> (exponent_bits + fraction_bits) ? -1 : 1;
    if (exponent == (1 << exponent_bits) - 1)
        return fraction != 0 ? std::numeric_limits<double>::quiet_NaN()
                             : sign * std::numeric_limits<double>::infinity();
    const double hidden = exponent > 0 ? std::ldexp(1.0, fraction_bits) : 0;
    return sign *
           std::ldexp(fraction + hidden, (exponent > 0 ? exponent : 1) - bias - fraction_bits);
}

} // namespace

void unpack_integers(const Samples &from, unsigned bits, uint32_t sign, uint32_t *out) {
    switch (bits) {
    case 8:
        take(from, out, load<uint8_t>);
        break;
    case 16:
        take(from, out, load<uint16_t>);
        break;
    case 24:
        take(from, out, load_triple);
        break;
    case 32:
        take(from, out, load<uint32_t>);
        break;
    default:
        take(from, out, [=](const uint8_t *row, uint64_t i) { return load_bits(row, i, bits); });
    }
    for (uint32_t c = 0; sign != 0 && c < from.count; ++c)
        out[c] ^= sign;
}

void unpack_floats(const Samples &from, unsigned bits, double *out) {
    switch (bits) {
    case 16:
        return take(from, out, [](const uint8_t *row, uint64_t i) {
            return small_float(load<uint16_t>(row, i), 5, 10);
        });
    case 24:
        return take(from, out, [](const uint8_t *row, uint64_t i) {
            return small_float(load_triple(row, i), 7, 16);
        });
    case 32:
        return take(from, out, load<float>);
    default:
        return take(from, out, load<double>);
    }
}

} // namespace kestu::tiff
