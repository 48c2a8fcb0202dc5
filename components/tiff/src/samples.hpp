// From the samples of a row to its levels of gray.
#pragma once

#include "page.hpp"

namespace kestu::tiff {

// A row of samples: together in the first plane, or each channel in a plane of its own.
struct RawRow {
    const uint8_t *planes[3] = {};
};

class Levels {
  public:
    [[nodiscard]] kestu_error_t *open(Page &page);

    // Stores the levels of a row: bytes, or uint16_t.
    void convert(const RawRow &row, void *out);

    bool copies() const { return copied_; }

    // Floats are stretched between the least and the largest of the values that were looked at.
    bool stretches() const { return floats_; }
    void look_at(const RawRow &row);
    void stretch(kestu_tiff_info_t &info);

  private:
    [[nodiscard]] kestu_error_t *make_values(uint64_t bytes);
    [[nodiscard]] kestu_error_t *make_table();
    double full_scale() const;
    void unpack(const RawRow &row);
    void mix_floats();
    void store_integers(const RawRow &row, void *out);
    void store_floats(void *out) const;

    const Page *page_ = nullptr;
    bool floats_ = false;
    bool copied_ = false; // samples are levels
    bool luma_of_bytes_ = false;
    uint64_t sign_ = 0; // of signed samples, which becomes a value
    double least_ = 0, largest_ = 0;
    bool any_ = false;
    Block values_; // of up to three channels of a row, as numbers of 32 bits or as doubles
    Block table_;  // the level of every value, as uint16_t
};

} // namespace kestu::tiff
