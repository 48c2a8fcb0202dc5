// Histogram, entropy and threshold beside plain loops over the definitions.
#include "picture.hpp"
#include "support/test.hpp"

using namespace kestu::test;

namespace {

constexpr const char *counting = "Cannot create histogram of an image.";
constexpr const char *measuring = "Can't calculate entropy for an image.";

std::vector<uint64_t> histogram(const kestu_img_t &img) {
    int nbins = 0;
    uint64_t *hist = nullptr;
    EXPECT_OK(kestu_img_histogram(&img, &nbins, &hist));
    std::vector<uint64_t> counts(hist, hist + nbins);
    kestu_mem_free(hist);
    return counts;
}

double entropy(const kestu_img_t &img) {
    double value = -1;
    EXPECT_OK(kestu_img_entropy(&img, &value));
    return value;
}

double threshold(const std::vector<uint64_t> &hist) {
    return kestu_img_thres_IJ(static_cast<int>(hist.size()), hist.data());
}

// Samples in runs of equal ones, from noise (1) to long ones.
template <typename Sample>
void expect_plain_counts(size_t width, unsigned mean_run, std::mt19937 &random) {
    SCOPED_TRACE(testing::Message() << width << ", " << mean_run);
    Picture<Sample> picture(5, width);
    std::vector<uint64_t> counts(size_t{1} << (8 * sizeof(Sample)));
    Sample value = 0;
    for (auto &row : picture.samples)
        for (Sample &sample : row) {
            sample = value = random() % mean_run == 0 ? static_cast<Sample>(random()) : value;
            ++counts[sample];
        }
    double bits = 0;
    for (const uint64_t count : counts)
        if (count) {
            const double p = static_cast<double>(count) / static_cast<double>(5 * width);
            bits -= p * std::log(p) / 0.6931471805599453;
        }
    EXPECT_EQ(histogram(picture.img), counts);
    EXPECT_EQ(entropy(picture.img), bits);
}

// The mean level of the bins from `first` to `last`.
double mean(const std::vector<uint64_t> &hist, size_t first, size_t last) {
    double levels = 0, pixels = 0;
    for (size_t i = first; i <= last; ++i) {
        levels += static_cast<double>(i * hist[i]);
        pixels += static_cast<double>(hist[i]);
    }
    return levels / pixels;
}

// The method to the letter: all sums anew for every split.
double literal_threshold(const std::vector<uint64_t> &hist) {
    size_t min = 0, max = hist.size() - 1;
    while (min < max && hist[min] == 0)
        ++min;
    while (max > min && hist[max] == 0)
        --max;
    if (min >= max)
        return static_cast<double>(hist.size()) * 0.5;
    size_t m = min;
    double result = 0;
    do {
        result = (mean(hist, min, m) + mean(hist, m + 1, max)) / 2;
        ++m;
    } while (static_cast<double>(m + 1) <= result && m < max - 1);
    return result;
}

} // namespace

TEST(Histogram, CountsAreThoseOfAPlainLoop) {
    std::mt19937 random(1);
    for (const unsigned mean_run : {1, 3, 40, 400})
        for (const size_t width : {1, 4, 7, 8, 9, 15, 16, 17, 31, 33, 600, 1023}) {
            expect_plain_counts<uint8_t>(width, mean_run, random);
            expect_plain_counts<uint16_t>(width, mean_run, random);
        }
}

// The rows of a very large image may be one row many times.
TEST(Histogram, MorePixelsOfALevelThan32BitsCount) {
    Picture<uint8_t> row(std::vector(1, std::vector<uint8_t>(1 << 16, 9)));
    row.samples[0][100] = 8;
    row.rows.resize((1 << 16) + 100, row.rows[0]);
    row.img.data8 = row.rows.data();
    row.img.height = static_cast<int32_t>(row.rows.size());
    EXPECT_EQ(histogram(row.img)[9], row.rows.size() * ((1 << 16) - 1));
    const double p = 1.0 / (1 << 16);
    EXPECT_NEAR(entropy(row.img), -p * std::log2(p) - (1 - p) * std::log2(1 - p), 1e-12);
}

TEST(Histogram, ImagesWithoutPixelsHaveNone) {
    Picture<uint16_t> picture(0, 0);
    for (const int side : {0, 5, -1}) {
        picture.img.height = side;
        picture.img.width = side == 5 ? 0 : 5;
        EXPECT_EQ(histogram(picture.img), std::vector<uint64_t>(65536));
        EXPECT_EQ(entropy(picture.img), 0.0);
    }
}

TEST(Histogram, OtherImagesAreRefusedAndWithoutMemoryThereIsNone) {
    constexpr const char *not_gray = "The image is not grayscale.";
    constexpr const char *no_depth = "The image is neither 16-bit nor 8-bit grayscale.";
    const struct {
        int32_t samples, photometric, bits;
        const char *message;
    } cases[] = {{3, 2, 12, not_gray},
                 {1, 2, 12, "The photointerpretation is not sutable: 2"},
                 {1, -1, 8, "The photointerpretation is not sutable: -1"},
                 {1, 0, 12, no_depth},
                 {1, 0, 8, "The image has no pixels."}};
    for (const auto &c : cases) {
        kestu_img_t img = {};
        img.height = img.width = 1;
        img.samples = c.samples;
        img.photometric = c.photometric;
        img.bits[0] = c.bits;
        int nbins = -1;
        uint64_t *hist = nullptr;
        double value = -1;
        EXPECT_CHAIN(kestu_img_histogram(&img, &nbins, &hist), 0, counting, c.message);
        EXPECT_CHAIN(kestu_img_entropy(&img, &value), 0, measuring, c.message);
        EXPECT_EQ(nbins, -1);
        EXPECT_EQ(value, -1);
    }
    const Picture<uint16_t> picture(2, 2);
    uint64_t *hist = nullptr;
    int nbins = 0;
    const auto starved = [&] {
        const AllocFailure failure(1);
        return kestu_img_histogram(&picture.img, &nbins, &hist);
    };
    EXPECT_CHAIN(starved(), 120012, counting, "Failed to allocate 524288 bytes of memory.");
}

TEST(Threshold, HistogramsWithoutTwoLevelsGiveTheMiddle) {
    const std::pair<std::vector<uint64_t>, double> cases[] = {
        {{5}, 0.5}, {{0, 0, 0}, 1.5}, {{0, 4, 0}, 1.5}, {{0, 3, 0, 3}, 2.0}};
    for (const auto &[hist, middle] : cases)
        EXPECT_EQ(threshold(hist), middle);
    EXPECT_EQ(kestu_img_thres_IJ(0, nullptr), 0.0);
}

// Small counts, whose sums can be carried along from split to split, and counts so large that sums
// are rounded and products wrap.
TEST(Threshold, IsTheMethodToTheLetter) {
    std::mt19937_64 random(2);
    for (int round = 0; round < 400; ++round) {
        std::vector<uint64_t> hist(1 + random() % 300);
        const int shift = static_cast<int>(random() % 64);
        for (uint64_t &count : hist)
            count = random() % 4 == 0 ? random() >> shift : 0;
        const double expected = literal_threshold(hist);
        const double found = threshold(hist);
        EXPECT_TRUE(found == expected || (std::isnan(found) && std::isnan(expected)))
            << "round " << round << ": " << found << " instead of " << expected;
    }
}
