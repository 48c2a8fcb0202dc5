// TIFF files of strangers, of every layout: pages are described, listed and read, strictly and
// with lenience, within limits.
#include "fuzz/check.hpp"
#include "kestu_tiff.h"

#include <cstdio>

#include <sys/mman.h>
#include <unistd.h>

using namespace kestu::fuzz;

namespace {

// A file in memory.
struct Device {
    Device() : fd(memfd_create("tiff", 0)) { snprintf(path, sizeof path, "/proc/self/fd/%d", fd); }

    int fd;
    char path[40];
};

int count(int tag, const char *name, const char *value, void *baton) {
    require(tag >= 0 && name && value);
    ++*static_cast<int *>(baton);
    return 0;
}

uint32_t read(const char *path, const kestu_tiff_options_t &options) {
    kestu_tiff_reader_t *reader = nullptr;
    const bool opened = succeeded(kestu_tiff_open(path, &options, &reader));
    uint32_t pages = 0;
    if (opened) {
        int tags = 0;
        require(kestu_tiff_tags(reader, count, &tags) == 0 && tags > 0);
        pages = kestu_tiff_info(reader)->pages;
        kestu_tiff_close(&reader);
    }
    kestu_img_t img;
    kestu_tiff_info_t info;
    const bool whole = succeeded(kestu_tiff_read(path, &options, &img, &info));
    require(opened || !whole);
    if (whole) {
        const auto width = static_cast<size_t>(img.width);
        unsigned sum = 0; // every level is there
        for (int r = 0; r < img.height; ++r)
            for (size_t c = 0; c < width; ++c)
                sum += img.data8 ? img.data8[r][c] : img.data16[r][c];
        require(img.height > 0 && width > 0 && (options.lenient || info.lost == 0) && sum + 1 > 0);
    }
    kestu_img_free(&img);
    return pages;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    static const Device device;
    require(ftruncate(device.fd, 0) == 0 &&
            pwrite(device.fd, data, size, 0) == static_cast<ssize_t>(size));
    kestu_tiff_options_t options{};
    options.max_pixels = 1 << 18;
    options.max_memory = 16 << 20;
    uint32_t pages = 1;
    for (uint32_t page = 1; page <= pages && page <= 3; ++page) {
        options.page = page;
        options.lenient = 0;
        pages = std::max(pages, read(device.path, options));
        options.lenient = 1;
        pages = std::max(pages, read(device.path, options));
    }
    return 0;
}
