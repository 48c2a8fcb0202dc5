// Bit arrays.
//
//     kestu::BitArray seen(1000);
//     seen.set(7);
//     seen.set(700);
//     for (size_t bit : seen.ones())               // 7, 700
//         assert(seen[bit]);
//     assert(seen.count() == 2 && seen.size() == 1000);
#pragma once

#include "../kestu_bitarr.h"
#include "error.hpp"

#include <span>
#include <string>

namespace kestu {
inline namespace KESTU_CPP {

// A bit array (kestu_bitarr.h).
class BitArray {
    struct Steps {
        struct Place {
            size_t bit = 0;
            const kestu_bitarr_t *bits = nullptr;
            bool operator==(const Place &other) const { return bit == other.bit; }
        };
        static size_t show(const Place &place) { return place.bit; }
        static void next(Place &place) {
            place.bit = kestu_bitarr_next_set(place.bits, place.bit + 1);
        }
        static const kestu_bitarr_t *record(const Place &place) { return place.bits; }
    };

  public:
    using one_iterator = detail::Iterator<Steps>; // stands at bits that are 1

    BitArray() noexcept = default;

    // `size` bits, all 0.
    explicit BitArray(size_t size) { resize(size); }
    BitArray(BitArray &&other) noexcept : bits_(std::exchange(other.bits_, nullptr)) {}
    BitArray &operator=(BitArray &&other) noexcept {
        std::swap(bits_, other.bits_);
        return *this;
    }
    ~BitArray() { kestu_bitarr_free(bits_); }

    // Bits below the new size keep their values, new ones are 0.
    void resize(size_t size) { detail::check(kestu_bitarr_resize(&bits_, size)); }

    // As `resize` above, but returns the error.
    Expected<void> resize(std::nothrow_t, size_t size) {
        return detail::outcome(kestu_bitarr_resize(&bits_, size));
    }

    // An array of its own with the same bits.
    BitArray copy() const {
        BitArray made;
        detail::check(kestu_bitarr_clone(bits_, &made.bits_));
        return made;
    }

    // As `copy` above, but returns the error.
    Expected<BitArray> copy(std::nothrow_t) const {
        BitArray made;
        if (kestu_error_t *err = kestu_bitarr_clone(bits_, &made.bits_))
            return detail::failed(err);
        return made;
    }

    // Takes the bits of `words`, bit 0 of the first one first.
    void assign(std::span<const uint64_t> words) {
        detail::check(kestu_bitarr_import_words(&bits_, words.data(), words.size() * 64));
    }

    // As `assign` above, but returns the error.
    Expected<void> assign(std::nothrow_t, std::span<const uint64_t> words) {
        return detail::outcome(kestu_bitarr_import_words(&bits_, words.data(), words.size() * 64));
    }

    // The number of bits.
    size_t size() const noexcept { return bits_ ? bits_->nbits : 0; }

    // Whether it has no bits.
    bool empty() const noexcept { return size() == 0; }

    // The number of bits that are 1.
    size_t count() const { return kestu_bitarr_num_bits_set(bits_); }

    // The value of a bit; false beyond the end.
    bool operator[](size_t bit) const { return kestu_bitarr_get(bits_, bit) != 0; }

    // Sets a bit; beyond the end nothing happens.
    void set(size_t bit) { kestu_bitarr_set(bits_, bit); }

    // Clears a bit; beyond the end nothing happens.
    void reset(size_t bit) { kestu_bitarr_clear(bits_, bit); }

    // Inverts a bit; beyond the end nothing happens.
    void flip(size_t bit) { kestu_bitarr_toggle(bits_, bit); }

    // Sets `count` bits from `from` on, as far as the array goes.
    void set(size_t from, size_t count) { kestu_bitarr_set_range(bits_, from, count); }

    // Clears `count` bits from `from` on, as far as the array goes.
    void reset(size_t from, size_t count) { kestu_bitarr_clear_range(bits_, from, count); }

    // Inverts `count` bits from `from` on, as far as the array goes.
    void flip(size_t from, size_t count) { kestu_bitarr_toggle_range(bits_, from, count); }

    // Sets all bits.
    void set() { kestu_bitarr_set_all(bits_); }

    // Clears all bits.
    void reset() { kestu_bitarr_clear_all(bits_); }

    // Inverts all bits.
    void flip() { kestu_bitarr_toggle_all(bits_); }

    // Moves all bits to numbers larger by `count`; the length stays.
    BitArray &operator<<=(size_t count) {
        kestu_bitarr_shift_up(bits_, count);
        return *this;
    }

    // Moves all bits to numbers smaller by `count`; the length stays.
    BitArray &operator>>=(size_t count) {
        kestu_bitarr_shift_down(bits_, count);
        return *this;
    }

    // Sets what is set in `other` too. The shorter one counts as filled up with zeros.
    BitArray &operator|=(const BitArray &other) {
        detail::check(kestu_bitarr_or(bits_, other.bits_, &bits_));
        return *this;
    }

    // Clears what is not set in `other`. The shorter one counts as filled up with zeros.
    BitArray &operator&=(const BitArray &other) {
        detail::check(kestu_bitarr_and(bits_, other.bits_, &bits_));
        return *this;
    }

    // As `|=`, but returns the error.
    Expected<void> unite(std::nothrow_t, const BitArray &other) {
        return detail::outcome(kestu_bitarr_or(bits_, other.bits_, &bits_));
    }

    // As `&=`, but returns the error.
    Expected<void> intersect(std::nothrow_t, const BitArray &other) {
        return detail::outcome(kestu_bitarr_and(bits_, other.bits_, &bits_));
    }

    // Whether both have the same bits set. The shorter one counts as filled up with zeros.
    friend bool operator==(const BitArray &a, const BitArray &b) {
        return kestu_bitarr_equal(a.bits_, b.bits_) != 0;
    }

    // Whether `other` has all bits that are set here.
    bool is_subset_of(const BitArray &other) const {
        return kestu_bitarr_is_subset(bits_, other.bits_) != 0;
    }

    // Whether a bit is set in both.
    bool intersects(const BitArray &other) const {
        return kestu_bitarr_intersects(bits_, other.bits_) != 0;
    }

    // The first bit from `from` on that is 1; size() when none is.
    size_t next_one(size_t from) const { return kestu_bitarr_next_set(bits_, from); }

    // The first bit from `from` on that is 0; size() when none is.
    size_t next_zero(size_t from) const { return kestu_bitarr_next_clear(bits_, from); }

    // The numbers of the bits that are 1.
    detail::Range<one_iterator> ones() const {
        const kestu_bitarr_t *bits = bits_;
        const size_t end = size();
        return {one_iterator({kestu_bitarr_next_set(bits, 0), bits}), one_iterator({end, bits})};
    }

    // Bit k is bit k % 64 of word k / 64. Those behind the end stay 0.
    std::span<uint64_t> words() noexcept {
        return bits_ ? std::span(bits_->words, bits_->nwords) : std::span<uint64_t>();
    }

    // A character for each bit, bit 0 first.
    std::string to_string(char one = '1', char zero = '0') const {
        std::string text(size(), zero);
        kestu_bitarr_tostr(bits_, text.data(), text.size() + 1, one, zero);
        return text;
    }

    // Null for an array that has never had bits.
    kestu_bitarr_t *get() const noexcept { return bits_; }

  private:
    kestu_bitarr_t *bits_ = nullptr;
};

} // namespace KESTU_CPP
} // namespace kestu
