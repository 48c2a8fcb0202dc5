// TIFF files of strangers: read in full and without pixels, and measured when they are grayscale.
#include "kestu_img_measure.h"
#include "kestu_lib.h"
#include "kestu_mem.h"

#include <cstdint>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

namespace {

// One file in memory serves all inputs.
struct Device {
    Device() : fd(memfd_create("tiff", 0)) {
        kestu_initialize();
        snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    }
    void fill(const uint8_t *data, size_t size) const {
        if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
            abort();
    }

    int fd;
    char path[40];
};

void require(bool condition) {
    if (!condition)
        abort();
}

bool succeeded(kestu_error_t *err) {
    kestu_error_clear(err);
    return err == nullptr;
}

void measure(const kestu_img_t &img) {
    int nbins = 0;
    uint64_t *hist = nullptr;
    double entropy = -1;
    const bool counted = succeeded(kestu_img_histogram(&img, &nbins, &hist));
    require(counted == succeeded(kestu_img_entropy(&img, &entropy)));
    if (!counted)
        return;
    uint64_t pixels = 0;
    for (int i = 0; i < nbins; ++i)
        pixels += hist[i];
    require(pixels == static_cast<uint64_t>(img.height) * static_cast<uint64_t>(img.width));
    require(entropy >= 0 && entropy <= img.bits[0] + 1e-9);
    const double threshold = kestu_img_thres_IJ(nbins, hist);
    require(threshold >= 0 && threshold <= nbins);
    kestu_mem_free(hist);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const Device device;
    device.fill(data, size);
    kestu_img_t img;
    const bool has_info = succeeded(kestu_img_read_tiff_info(device.path, &img));
    kestu_img_free(&img);
    const bool is_read = succeeded(kestu_img_read(device.path, &img));
    require(has_info || !is_read);
    if (is_read && (img.data8 || img.data16))
        measure(img);
    kestu_img_free(&img);
    require(!img.data8 && !img.data16 && !img.strip_offsets && !img.strip_bytes && !img.software);
    return 0;
}
