// Images over a test's own samples.
#pragma once

#include "kestu_img.h"

#include <utility>
#include <vector>

namespace kestu::test {

// A grayscale image, black is zero.
template <typename Sample>
struct Picture {
    explicit Picture(std::vector<std::vector<Sample>> values) : samples(std::move(values)) {
        for (auto &row : samples)
            rows.push_back(row.data());
        img.height = static_cast<int32_t>(samples.size());
        img.width = samples.empty() ? 0 : static_cast<int32_t>(samples[0].size());
        img.samples = 1;
        img.photometric = 1;
        img.bits[0] = 8 * sizeof(Sample);
        if constexpr (sizeof(Sample) == 1)
            img.data8 = rows.data();
        else
            img.data16 = rows.data();
    }

    // Samples that differ from their neighbours in both bytes.
    Picture(size_t height, size_t width)
        : Picture(std::vector(height, std::vector<Sample>(width))) {
        for (size_t r = 0; r < height; ++r)
            for (size_t c = 0; c < width; ++c)
                samples[r][c] = static_cast<Sample>(r * 1031 + c * 257 + r * c);
    }

    Picture(const Picture &) = delete;
    Picture &operator=(const Picture &) = delete;

    std::vector<int> pixels() const {
        std::vector<int> all;
        for (const auto &row : samples)
            all.insert(all.end(), row.begin(), row.end());
        return all;
    }

    std::vector<std::vector<Sample>> samples;
    std::vector<Sample *> rows;
    kestu_img_t img = {};
};

} // namespace kestu::test
