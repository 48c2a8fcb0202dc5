// Images over a test's own samples.
#pragma once

#include "kestu_img.h"

#include <vector>

namespace kestu::test {

template <typename Sample>
struct Picture {
    Picture(size_t height, size_t width) : samples(height, std::vector<Sample>(width)) {
        for (auto &row : samples)
            rows.push_back(row.data());
        img.height = static_cast<int32_t>(height);
        img.width = static_cast<int32_t>(width);
        img.samples = 1;
        img.photometric = 1;
        img.bits[0] = 8 * sizeof(Sample);
        if constexpr (sizeof(Sample) == 1)
            img.data8 = rows.data();
        else
            img.data16 = rows.data();
    }

    // Samples that differ from their neighbours in both bytes.
    void fill() {
        for (size_t r = 0; r < samples.size(); ++r)
            for (size_t c = 0; c < samples[r].size(); ++c)
                samples[r][c] = static_cast<Sample>(r * 1031 + c * 257 + r * c);
    }

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
