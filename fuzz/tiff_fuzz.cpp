// TIFF files of strangers: read in full and without pixels; what is grayscale is measured, written,
// and read again.
#include "fuzz/check.hpp"
#include "img/tiff_read.hpp"
#include "kestu_img_measure.h"
#include "kestu_mem.h"

#include <cstdio>

#include <sys/mman.h>

using namespace kestu::fuzz;

namespace {

// A file in memory.
struct Device {
    Device() { snprintf(path, sizeof path, "/proc/self/fd/%d", memfd_create("tiff", 0)); }

    char path[40];
};

void count(const kestu_img_t &img) {
    int nbins = 0;
    uint64_t *hist = nullptr;
    double entropy = -1;
    require(succeeded(kestu_img_histogram(&img, &nbins, &hist)));
    require(succeeded(kestu_img_entropy(&img, &entropy)));
    uint64_t pixels = 0;
    for (int i = 0; i < nbins; ++i)
        pixels += hist[i];
    require(pixels == static_cast<uint64_t>(img.height) * static_cast<uint64_t>(img.width));
    require(entropy >= 0 && entropy <= img.bits[0] + 1e-9);
    const double threshold = kestu_img_thres_IJ(nbins, hist);
    require(threshold >= 0 && threshold <= nbins);
    kestu_mem_free(hist);
}

void convert(const kestu_img_t &img) {
    double **out = nullptr;
    require(
        succeeded(kestu_mem_matrix_alloc(&out, sizeof **out, 0, img.height - 1, 0, img.width - 1)));
    require(succeeded(kestu_img_calc_fujiri(&img, out, 50, 1000, 4)));
    require(succeeded(kestu_img_calc_density(&img, out, 3)));
    require(succeeded(kestu_img_data_dmask(&img, out)));
    kestu_mem_matrix_free(out, sizeof **out, 0, img.height - 1, 0, img.width - 1);
}

void write_and_read_again(const kestu_img_t &img) {
    static const Device device;
    require(succeeded(kestu_img_write_tiff(device.path, &img)));
    kestu_img_t again;
    require(succeeded(kestu_img_read(device.path, &again)));
    require(again.width == img.width && again.height == img.height && again.bits[0] == img.bits[0]);
    const size_t row_bytes = static_cast<size_t>(img.width) * (img.data8 ? 1 : 2);
    for (int r = 0; r < img.height; ++r)
        require(img.data8 ? memcmp(img.data8[r], again.data8[r], row_bytes) == 0
                          : memcmp(img.data16[r], again.data16[r], row_bytes) == 0);
    kestu_img_free(&again);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    kestu::ByteSource source({data, size});
    kestu_img_t img;
    const bool has_info = succeeded(kestu::read_tiff_info(source, img));
    kestu_img_free(&img);
    const bool is_read = succeeded(kestu::read_image(source, img));
    require(has_info || !is_read);
    if (is_read && (img.data8 || img.data16)) {
        double entropy = 0;
        if (succeeded(kestu_img_entropy(&img, &entropy))) {
            count(img);
            if (static_cast<size_t>(img.height) * static_cast<size_t>(img.width) < 10000)
                convert(img);
        }
        write_and_read_again(img);
    }
    kestu_img_free(&img);
    require(!img.data8 && !img.data16 && !img.strip_offsets && !img.strip_bytes && !img.software);
    return 0;
}
