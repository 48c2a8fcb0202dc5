// Counting the gray levels of images.
#pragma once

#include "img/samples.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list> // IWYU pragma: keep
#include <limits>

namespace kestu {

template <typename Sample, typename Count>
class LevelCounts {
  public:
    static constexpr size_t levels = levels_of<Sample>;

    // Neighbours that are equal would have to wait for each other's count: several sets of counters
    // let them go on. With 16 bits, a second set would cost more in the cache than it saves.
    static constexpr size_t sets = sizeof(Sample) == 1 ? 4 : 1;

    // Counts in the caller's counters, levels * sets of them, which are zero.
    explicit LevelCounts(Count *counters) : counters_(counters) {}

    void add(const Sample *row, size_t n) {
        const Sample *const end = row + n;
        while (end - row >= per_block) {
            const Sample *next = end_of_run(row, end);
            if (next != row) {
                counters_[*row] += static_cast<Count>(next - row);
            } else {
                next = row + per_block;
                add_each(row);
            }
            row = next;
        }
        for (; row != end; ++row)
            ++counters_[*row];
    }

    uint64_t of(size_t level) const {
        uint64_t sum = 0;
        for (size_t set = 0; set < sets; ++set)
            sum += counters_[set * levels + level];
        return sum;
    }

  private:
    static constexpr int digits = std::numeric_limits<Sample>::digits;
    static constexpr ptrdiff_t per_word = sizeof(uint64_t) / sizeof(Sample);
    static constexpr ptrdiff_t per_block = 2 * per_word;

    static uint64_t word_at(const Sample *pixels) {
        uint64_t word;
        std::memcpy(&word, pixels, sizeof word);
        return word;
    }

    // The end of the run of blocks of one level that begins at `pixels`, which is `pixels` when
    // there is none. The pixels of a word are equal when rotating it by one of them changes
    // nothing.
    static const Sample *end_of_run(const Sample *pixels, const Sample *end) {
        const uint64_t word = word_at(pixels);
        if (word != word_at(pixels + per_word) || word != (word << digits | word >> (64 - digits)))
            return pixels;
        pixels = skip_equal<8 * per_block>(pixels + per_block, end, word);
        return skip_equal<per_block>(pixels, end, word);
    }

    // Goes on by `step` pixels as long as all their words are `word`. Long runs wait for memory
    // alone. They ask for the next page early, since the processor's own fetching stops at the end
    // of a page.
    template <ptrdiff_t step>
    static const Sample *skip_equal(const Sample *pixels, const Sample *end, uint64_t word) {
        for (; end - pixels >= step; pixels += step) {
            uint64_t difference = 0;
            for (ptrdiff_t i = 0; i < step; i += per_word)
                difference |= word_at(pixels + i) ^ word;
            if (difference)
                break;
            if constexpr (step > per_block)
                fetch_ahead(pixels);
        }
        return pixels;
    }

    static void fetch_ahead(const Sample *pixels) {
        const auto next_page = reinterpret_cast<uintptr_t>(pixels) + 4096;
        __builtin_prefetch(reinterpret_cast<const void *>(next_page));
        __builtin_prefetch(reinterpret_cast<const void *>(next_page + 64));
    }

    void add_each(const Sample *pixels) {
        for (const uint64_t word : {word_at(pixels), word_at(pixels + per_word)})
            for (size_t i = 0; i < per_word; ++i)
                ++counters_[i % sets * levels + static_cast<Sample>(word >> (i * digits))];
    }

    Count *counters_;
};

template <typename Sample, typename Count>
void count_rows(const kestu_img_t &img, Sample *const *rows, LevelCounts<Sample, Count> &counts) {
    for (int32_t r = 0; r < img.height && img.width > 0; ++r)
        counts.add(rows[r], static_cast<size_t>(img.width));
}

// Whether a level may occur more often than 32 bits count.
inline bool needs_wide_counts(const kestu_img_t &img) {
    return pixels_of(img) > std::numeric_limits<uint32_t>::max();
}

} // namespace kestu
