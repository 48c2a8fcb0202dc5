// Images of 4096 x 4096: reading TIFF files beside libtiff's strips and a plain readv into new
// rows, and measures beside plain loops.
#include "kestu_img_measure.h"
#include "kestu_lib.h"
#include "kestu_mem.h"

#include <benchmark/benchmark.h>
#include <tiffio.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
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

// A file in memory that libtiff has written: what is measured is the readers, not a disk.
template <typename Sample>
struct File {
    explicit File(uint32_t strip_bytes) {
        char name[] = "/dev/shm/kestu-bench-XXXXXX";
        close(mkstemp(name));
        path = name;
        const Picture<Sample> picture(Content::noise);
        TIFF *tiff = TIFFOpen(name, "wl");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, side);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, side);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8 * sizeof(Sample));
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                     strip_bytes ? strip_bytes / (side * sizeof(Sample)) : side);
        for (uint32_t r = 0; r < side; ++r)
            TIFFWriteScanline(tiff, picture.rows[r], r);
        TIFFClose(tiff);
    }
    ~File() { unlink(path.c_str()); }
    std::string path;
};

template <typename Sample>
void read_ours(benchmark::State &state) {
    const File<Sample> file(static_cast<uint32_t>(state.range(0)));
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
    const File<Sample> file(static_cast<uint32_t>(state.range(0)));
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
    const File<Sample> file(static_cast<uint32_t>(state.range(0)));
    for (auto _ : state) {
        const Rows<Sample> rows;
        const int fd = open(file.path.c_str(), O_RDONLY | O_CLOEXEC);
        constexpr size_t batch = 256;
        for (size_t r = 0; r < side; r += batch) {
            iovec segments[batch];
            for (size_t i = 0; i < batch; ++i)
                segments[i] = {rows.rows[r + i], side * sizeof(Sample)};
            benchmark::DoNotOptimize(readv(fd, segments, batch));
        }
        close(fd);
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(side * side * sizeof(Sample)));
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

// One strip (0) and strips of 8 KiB.
#define READ(depth, sample)                                                                        \
    BENCHMARK_TEMPLATE(read_ours, sample)->Name("read " depth "/ours")->Arg(0)->Arg(8192);         \
    BENCHMARK_TEMPLATE(read_libtiff, sample)->Name("read " depth "/libtiff")->Arg(0)->Arg(8192);   \
    BENCHMARK_TEMPLATE(read_limit, sample)->Name("read " depth "/limit (readv)")->Arg(0)

#define COUNT(what, depth, sample)                                                                 \
    BENCHMARK_TEMPLATE(what##_ours, sample, Content::noise)->Name(#what " " depth " noise/ours");  \
    BENCHMARK_TEMPLATE(what##_plain, sample, Content::noise)                                       \
        ->Name(#what " " depth " noise/plain loop");                                               \
    BENCHMARK_TEMPLATE(what##_ours, sample, Content::flat)->Name(#what " " depth " flat/ours");    \
    BENCHMARK_TEMPLATE(what##_plain, sample, Content::flat)                                        \
        ->Name(#what " " depth " flat/plain loop")

READ("8 bits", uint8_t);
READ("16 bits", uint16_t);
COUNT(histogram, "8 bits", uint8_t);
COUNT(histogram, "16 bits", uint16_t);
COUNT(entropy, "8 bits", uint8_t);
COUNT(entropy, "16 bits", uint16_t);

} // namespace

int main(int argc, char **argv) {
    kestu_initialize();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kestu_terminate();
}
