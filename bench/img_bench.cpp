// Images of 4096 x 4096: reading and writing TIFF files beside libtiff and beside plain readv and
// writev of rows, and measures beside plain loops.
#include "kestu_img_measure.h"
#include "kestu_img_shape.h"
#include "kestu_mem.h"

#include <benchmark/benchmark.h>
#include <tiffio.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr size_t side = 4096;

// What the pixels look like; counting depends on it.
enum class Content { noise, flat };

template <typename Sample>
struct Rows {
    Rows() : rows(side) {
        for (Sample *&row : rows)
            row = static_cast<Sample *>(std::malloc(side * sizeof(Sample)));
    }
    ~Rows() {
        for (Sample *row : rows)
            std::free(row);
    }
    // Lets the system give every page before measuring begins.
    void touch() {
        for (Sample *row : rows)
            std::memset(row, 1, side * sizeof(Sample));
    }
    std::vector<Sample *> rows;
};

template <typename Sample>
struct Picture : Rows<Sample> {
    explicit Picture(Content content) {
        std::mt19937 random(1);
        for (Sample *row : this->rows)
            for (size_t c = 0; c < side; ++c)
                row[c] = content == Content::noise ? static_cast<Sample>(random()) : Sample{77};
        img.height = img.width = side;
        img.samples = 1;
        img.bits[0] = 8 * sizeof(Sample);
        if constexpr (sizeof(Sample) == 1)
            img.data8 = this->rows.data();
        else
            img.data16 = this->rows.data();
    }
    kestu_img_t img = {};
};

// A file in memory: what is measured is not a disk.
struct File {
    File() {
        char name[] = "/dev/shm/kestu-bench-XXXXXX";
        close(mkstemp(name));
        path = name;
    }
    ~File() { unlink(path.c_str()); }
    std::string path;
};

template <typename Sample>
void write_by_libtiff(const char *path, const Rows<Sample> &rows, uint32_t rows_per_strip) {
    TIFF *tiff = TIFFOpen(path, "wl");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, side);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, side);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8 * sizeof(Sample));
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows_per_strip);
    for (uint32_t r = 0; r < side; ++r)
        TIFFWriteScanline(tiff, rows.rows[r], r);
    TIFFClose(tiff);
}

template <typename Sample>
struct Written : File {
    explicit Written(int64_t strip_bytes) {
        const auto rows = static_cast<size_t>(strip_bytes) / (side * sizeof(Sample));
        write_by_libtiff(path.c_str(), Picture<Sample>(Content::noise),
                         static_cast<uint32_t>(rows > 0 ? rows : side));
    }
};

template <typename Sample>
void count_bytes(benchmark::State &state) {
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(side * side * sizeof(Sample)));
}

template <typename Sample, typename Move>
void for_row_batches(const Rows<Sample> &rows, Move move) {
    constexpr size_t batch = 256;
    for (size_t r = 0; r < side; r += batch) {
        iovec segments[batch];
        for (size_t i = 0; i < batch; ++i)
            segments[i] = {rows.rows[r + i], side * sizeof(Sample)};
        benchmark::DoNotOptimize(move(segments, static_cast<int>(batch)));
    }
}

template <typename Sample>
void read_ours(benchmark::State &state) {
    const Written<Sample> file(state.range(0));
    for (auto _ : state) {
        kestu_img_t img;
        kestu_error_clear(kestu_img_read_tiff(file.path.c_str(), &img));
        benchmark::DoNotOptimize(img.data8);
        kestu_img_free(&img);
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(side * side * sizeof(Sample)));
}

// Strip by strip into a buffer, and from there into rows.
template <typename Sample>
void read_libtiff(benchmark::State &state) {
    const Written<Sample> file(state.range(0));
    for (auto _ : state) {
        TIFF *tiff = TIFFOpen(file.path.c_str(), "r");
        uint32_t rows_per_strip = 0;
        TIFFGetField(tiff, TIFFTAG_ROWSPERSTRIP, &rows_per_strip);
        const std::unique_ptr<char[]> strip(new char[static_cast<size_t>(TIFFStripSize(tiff))]);
        const Rows<Sample> rows;
        for (uint32_t r = 0; r < side; r += rows_per_strip) {
            TIFFReadEncodedStrip(tiff, r / rows_per_strip, strip.get(), -1);
            for (uint32_t i = 0; i < rows_per_strip && r + i < side; ++i)
                std::memcpy(rows.rows[r + i], strip.get() + i * side * sizeof(Sample),
                            side * sizeof(Sample));
        }
        benchmark::DoNotOptimize(rows.rows.data());
        TIFFClose(tiff);
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(side * side * sizeof(Sample)));
}

template <typename Sample>
void read_limit(benchmark::State &state) {
    const Written<Sample> file(state.range(0));
    for (auto _ : state) {
        const Rows<Sample> rows;
        const int fd = open(file.path.c_str(), O_RDONLY | O_CLOEXEC);
        for_row_batches(
            rows, [fd](const iovec *segments, int count) { return readv(fd, segments, count); });
        close(fd);
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(side * side * sizeof(Sample)));
}

template <typename Sample>
void write_ours(benchmark::State &state) {
    const Picture<Sample> picture(Content::noise);
    const File file;
    for (auto _ : state)
        kestu_error_clear(kestu_img_write_tiff(file.path.c_str(), &picture.img));
    count_bytes<Sample>(state);
}

template <typename Sample, uint32_t rows_per_strip>
void write_libtiff(benchmark::State &state) {
    const Picture<Sample> picture(Content::noise);
    const File file;
    for (auto _ : state)
        write_by_libtiff(file.path.c_str(), picture, rows_per_strip);
    count_bytes<Sample>(state);
}

template <typename Sample>
void write_limit(benchmark::State &state) {
    const Picture<Sample> picture(Content::noise);
    const File file;
    for (auto _ : state) {
        const int fd = open(file.path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        for_row_batches(picture, [fd](const iovec *segments, int count) {
            return writev(fd, segments, count);
        });
        close(fd);
    }
    count_bytes<Sample>(state);
}

template <typename Sample, Content content>
void histogram_ours(benchmark::State &state) {
    const Picture<Sample> picture(content);
    for (auto _ : state) {
        int nbins = 0;
        uint64_t *hist = nullptr;
        kestu_error_clear(kestu_img_histogram(&picture.img, &nbins, &hist));
        benchmark::DoNotOptimize(hist[0]);
        kestu_mem_free(hist);
    }
}

template <typename Sample, Content content>
void histogram_plain(benchmark::State &state) {
    const Picture<Sample> picture(content);
    for (auto _ : state) {
        std::vector<uint64_t> hist(size_t{1} << (8 * sizeof(Sample)));
        for (const Sample *row : picture.rows)
            for (size_t c = 0; c < side; ++c)
                ++hist[row[c]];
        benchmark::DoNotOptimize(hist.data());
    }
}

template <typename Sample, Content content>
void entropy_ours(benchmark::State &state) {
    const Picture<Sample> picture(content);
    for (auto _ : state) {
        double entropy = 0;
        kestu_error_clear(kestu_img_entropy(&picture.img, &entropy));
        benchmark::DoNotOptimize(entropy);
    }
}

template <typename Sample, Content content>
void entropy_plain(benchmark::State &state) {
    const Picture<Sample> picture(content);
    for (auto _ : state) {
        std::vector<uint32_t> hist(size_t{1} << (8 * sizeof(Sample)));
        for (const Sample *row : picture.rows)
            for (size_t c = 0; c < side; ++c)
                ++hist[row[c]];
        double entropy = 0;
        for (const uint32_t count : hist)
            if (count) {
                const double p = count / static_cast<double>(side * side);
                entropy -= p * std::log2(p);
            }
        benchmark::DoNotOptimize(entropy);
    }
}

enum class Measure { density, intensity };

template <typename Sample, Measure measure>
void convert_ours(benchmark::State &state) {
    const Picture<Sample> picture(Content::noise);
    Rows<double> out;
    out.touch();
    double **rows = out.rows.data();
    for (auto _ : state)
        if constexpr (measure == Measure::density)
            kestu_error_clear(kestu_img_calc_density(&picture.img, rows, 5));
        else
            kestu_error_clear(kestu_img_calc_fujiri(&picture.img, rows, 50, 1000, 4));
}

template <typename Sample, Measure measure>
void convert_plain(benchmark::State &state) {
    const Picture<Sample> picture(Content::noise);
    Rows<double> out;
    out.touch();
    const double full = std::numeric_limits<Sample>::max();
    for (auto _ : state)
        for (size_t r = 0; r < side; ++r)
            for (size_t c = 0; c < side; ++c) {
                const double q = picture.rows[r][c];
                if constexpr (measure == Measure::density)
                    out.rows[r][c] = q == full ? 5 : std::log10(full / (full - q));
                else
                    out.rows[r][c] = std::pow(10.0, (q / full - 0.5) * 4) * 1;
            }
}

// A plain table lookup that has nothing to compute.
void convert_limit(benchmark::State &state) {
    const Picture<uint16_t> picture(Content::noise);
    Rows<double> out;
    out.touch();
    const std::vector<double> table(65536, 1.0);
    for (auto _ : state)
        for (size_t r = 0; r < side; ++r)
            for (size_t c = 0; c < side; ++c)
                out.rows[r][c] = table[picture.rows[r][c]];
}

kestu_error_t *add(int, int, void *sum, double intensity) {
    *static_cast<double *>(sum) += intensity;
    return nullptr;
}

void circle(benchmark::State &state) {
    double sum = 0;
    for (auto _ : state)
        kestu_error_clear(kestu_img_circle(0, 0, 500, add, &sum));
    benchmark::DoNotOptimize(sum);
}

void outline(benchmark::State &state) {
    double sum = 0;
    for (auto _ : state)
        kestu_error_clear(
            kestu_img_ellipse_waa(0, 0, 500, 400, static_cast<double>(state.range(0)), add, &sum));
    benchmark::DoNotOptimize(sum);
}

// One strip (0) and strips of 8 KiB.
#define READ(depth, sample)                                                                        \
    BENCHMARK_TEMPLATE(read_ours, sample)                                                          \
        ->Name("read " depth "/ours")                                                              \
        ->ArgName("strip")                                                                         \
        ->Arg(0)                                                                                   \
        ->Arg(8192);                                                                               \
    BENCHMARK_TEMPLATE(read_libtiff, sample)                                                       \
        ->Name("read " depth "/libtiff")                                                           \
        ->ArgName("strip")                                                                         \
        ->Arg(0)                                                                                   \
        ->Arg(8192);                                                                               \
    BENCHMARK_TEMPLATE(read_limit, sample)                                                         \
        ->Name("read " depth "/limit (readv)")                                                     \
        ->ArgName("strip")                                                                         \
        ->Arg(0)

#define COUNT(what, depth, sample)                                                                 \
    BENCHMARK_TEMPLATE(what##_ours, sample, Content::noise)->Name(#what " " depth " noise/ours");  \
    BENCHMARK_TEMPLATE(what##_plain, sample, Content::noise)                                       \
        ->Name(#what " " depth " noise/plain loop");                                               \
    BENCHMARK_TEMPLATE(what##_ours, sample, Content::flat)->Name(#what " " depth " flat/ours");    \
    BENCHMARK_TEMPLATE(what##_plain, sample, Content::flat)                                        \
        ->Name(#what " " depth " flat/plain loop")

// libtiff's fastest are strips of 64 rows.
#define WRITE(depth, sample)                                                                       \
    BENCHMARK_TEMPLATE(write_ours, sample)->Name("write " depth "/ours");                          \
    BENCHMARK_TEMPLATE(write_libtiff, sample, side)->Name("write " depth "/libtiff, one strip");   \
    BENCHMARK_TEMPLATE(write_libtiff, sample, 64)->Name("write " depth "/libtiff, 64 rows");       \
    BENCHMARK_TEMPLATE(write_limit, sample)->Name("write " depth "/limit (writev)")

#define CONVERT(what, depth, sample)                                                               \
    BENCHMARK_TEMPLATE(convert_ours, sample, Measure::what)->Name(#what " " depth "/ours");        \
    BENCHMARK_TEMPLATE(convert_plain, sample, Measure::what)->Name(#what " " depth "/plain loop")

READ("8 bits", uint8_t);
READ("16 bits", uint16_t);
WRITE("8 bits", uint8_t);
WRITE("16 bits", uint16_t);
COUNT(histogram, "8 bits", uint8_t);
COUNT(histogram, "16 bits", uint16_t);
COUNT(entropy, "8 bits", uint8_t);
COUNT(entropy, "16 bits", uint16_t);
CONVERT(density, "8 bits", uint8_t);
CONVERT(density, "16 bits", uint16_t);
BENCHMARK(convert_limit)->Name("density 16 bits/limit (table lookups)");
CONVERT(intensity, "16 bits", uint16_t);
BENCHMARK(circle)->Name("circle of radius 500/ours");
BENCHMARK(outline)->Name("smooth ellipse 500 x 400/ours")->ArgName("width")->Arg(1)->Arg(10);

} // namespace
