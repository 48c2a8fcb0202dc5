// Reading libtiff's own files with the wide reader, beside libtiff and the loops of its users.
#include "kestu_tiff.h"

#include <benchmark/benchmark.h>
#include <tiffio.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <malloc.h>
#include <unistd.h>

namespace {

constexpr uint32_t side = 2048;

struct Layout {
    const char *name;
    const char *mode;
    uint16_t bits, samples, compression;
    uint32_t tile;
};

constexpr Layout layouts[] = {
    {"8 bits, big-endian", "wb", 8, 1, COMPRESSION_NONE, 0},
    {"16 bits, big-endian", "wb", 16, 1, COMPRESSION_NONE, 0},
    {"16 bits in tiles", "wl", 16, 1, COMPRESSION_NONE, 256},
    {"8 bits, LZW", "wl", 8, 1, COMPRESSION_LZW, 0},
    {"16 bits, deflate", "wl", 16, 1, COMPRESSION_ADOBE_DEFLATE, 0},
    {"8 bits, PackBits", "wl", 8, 1, COMPRESSION_PACKBITS, 0},
    {"RGB", "wl", 8, 3, COMPRESSION_NONE, 0},
    {"RGB, LZW", "wl", 8, 3, COMPRESSION_LZW, 0},
};

// A file in memory: what is measured is not a disk.
struct File {
    explicit File(const Layout &layout) {
        char name[] = "/dev/shm/kestu-bench-XXXXXX";
        close(mkstemp(name));
        path = name;
        TIFF *tiff = TIFFOpen(name, layout.mode);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, side);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, side);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, layout.bits);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, layout.samples);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, layout.compression);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, layout.samples == 3 ? 2 : 1);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        if (layout.tile > 0) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, layout.tile);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, layout.tile);
        } else {
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
        }
        const bool tiled = layout.tile > 0;
        const uint32_t blocks = tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
        std::vector<uint8_t> block(
            static_cast<size_t>(tiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff)));
        std::mt19937 random(1);
        for (uint32_t i = 0; i < blocks; ++i) {
            for (size_t k = 0; k < block.size(); ++k)
                block[k] = static_cast<uint8_t>(k / 7 + random() % 4); // somewhat compressible
            const auto size = static_cast<tmsize_t>(block.size());
            if (tiled)
                TIFFWriteEncodedTile(tiff, i, block.data(), size);
            else
                TIFFWriteEncodedStrip(tiff, i, block.data(), size);
        }
        TIFFClose(tiff);
    }
    ~File() { unlink(path.c_str()); }
    std::string path;
};

void ours(benchmark::State &state, const Layout &layout) {
    const File file(layout);
    for (auto _ : state) {
        kestu_img_t img;
        kestu_error_clear(kestu_tiff_read(file.path.c_str(), nullptr, &img, nullptr));
        benchmark::DoNotOptimize(img.data8);
        kestu_img_free(&img);
    }
}

// Rows of a picture, each a block of its own as those of an image record.
struct Rows {
    explicit Rows(size_t bytes) : rows(side) {
        for (uint8_t *&row : rows)
            row = static_cast<uint8_t *>(std::malloc(bytes));
    }
    ~Rows() {
        for (uint8_t *row : rows)
            std::free(row);
    }
    std::vector<uint8_t *> rows;
};

void read_tiles(TIFF *tiff, const Layout &layout, Rows &rows) {
    const size_t pixel = layout.bits / 8U;
    std::vector<uint8_t> tile(static_cast<size_t>(TIFFTileSize(tiff)));
    for (uint32_t top = 0; top < side; top += layout.tile)
        for (uint32_t left = 0; left < side; left += layout.tile) {
            TIFFReadTile(tiff, tile.data(), left, top, 0, 0);
            for (uint32_t r = 0; r < layout.tile; ++r)
                std::memcpy(rows.rows[top + r] + left * pixel,
                            tile.data() + r * layout.tile * pixel, layout.tile * pixel);
        }
}

void read_strips(TIFF *tiff, const Layout &layout, Rows &rows) {
    uint32_t rows_of_strip = 0;
    TIFFGetField(tiff, TIFFTAG_ROWSPERSTRIP, &rows_of_strip);
    const size_t pixel = layout.bits / 8U;
    std::vector<uint8_t> strip(static_cast<size_t>(TIFFStripSize(tiff)));
    for (uint32_t top = 0; top < side; top += rows_of_strip) {
        TIFFReadEncodedStrip(tiff, top / rows_of_strip, strip.data(), -1);
        for (uint32_t r = 0; r < rows_of_strip && top + r < side; ++r) {
            const uint8_t *from = strip.data() + r * side * layout.samples * pixel;
            uint8_t *to = rows.rows[top + r];
            if (layout.samples == 1)
                std::memcpy(to, from, side * pixel);
            else
                for (uint32_t c = 0; c < side; ++c, from += 3)
                    to[c] = static_cast<uint8_t>(0.299 * from[0] + 0.587 * from[1] +
                                                 0.114 * from[2] + 0.5);
        }
    }
}

void libtiff(benchmark::State &state, const Layout &layout) {
    const File file(layout);
    for (auto _ : state) {
        Rows rows(side * (layout.bits / 8U));
        TIFF *tiff = TIFFOpen(file.path.c_str(), "r");
        if (layout.tile > 0)
            read_tiles(tiff, layout, rows);
        else
            read_strips(tiff, layout, rows);
        benchmark::DoNotOptimize(rows.rows.data());
        TIFFClose(tiff);
    }
}

const bool registered = [] {
    // Freed memory stays with the process. Else the order of its calls decides which side gets it
    // cleared anew by the system in each iteration.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    for (const Layout &layout : layouts) {
        const std::string name = std::string("wide read of ") + layout.name;
        benchmark::RegisterBenchmark((name + "/ours").c_str(), ours, layout);
        benchmark::RegisterBenchmark((name + "/libtiff").c_str(), libtiff, layout);
    }
    return true;
}();

} // namespace
