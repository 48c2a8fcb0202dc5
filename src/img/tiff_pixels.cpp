// Samples go from the file straight into the rows: strips that follow one another in the file are
// read together, scattered over many rows a call.
#include "img/tiff_pixels.hpp"

#include "error/error.hpp"
#include "img/rows.hpp"
#include "img/samples.hpp"

#include <algorithm>

namespace kestu {
namespace {

// How far the claims of an image may exceed what its strips hold.
constexpr uint64_t excess_bytes = 1 << 20;
constexpr uint64_t excess_rows = 1'000'000;

// The odd byte that a strip of 16-bit samples may end with is no sample.
template <typename Sample>
uint64_t whole_samples(uint32_t bytes) {
    return bytes / sizeof(Sample) * sizeof(Sample);
}

// The bytes of all samples in the strips. Strips that reach past the end of the file are refused.
template <typename Sample>
kestu_error_t *measure_strips(const ByteSource &source, const kestu_img_t &img, uint64_t &bytes) {
    bytes = 0;
    for (int32_t i = 0; i < img.n_strip_bytes; ++i) {
        if (!source.holds(img.strip_offsets[i], img.strip_bytes[i]))
            return fail(KESTU_ERR_INCOMPLETE_DATA);
        bytes += whole_samples<Sample>(img.strip_bytes[i]);
    }
    return nullptr;
}

// Whether the image is too large for `bytes` of samples.
template <typename Sample>
bool claims_too_much(const kestu_img_t &img, uint64_t bytes) {
    const uint64_t rows = static_cast<uint32_t>(img.height);
    const uint64_t row_bytes = uint64_t{static_cast<uint32_t>(img.width)} * sizeof(Sample);
    return rows > bytes / sizeof(Sample) + excess_rows ||
           (row_bytes != 0 && rows > (bytes + excess_bytes) / row_bytes);
}

// Reads `bytes` at `offset` into the rows; what the image has no room for is left unread.
template <typename Sample>
kestu_error_t *read_run(ByteSource &source, uint64_t offset, uint64_t bytes,
                        RowCursor<Sample> &cursor) {
    RowSegments segments;
    while (bytes > 0 && !cursor.at_end()) {
        const int count = cursor.next(segments, bytes);
        const size_t got = source.scatter(offset, segments, count);
        if (got == 0)
            return fail(KESTU_ERR_INCOMPLETE_DATA);
        cursor.advance(got);
        offset += got;
        bytes -= got;
    }
    return nullptr;
}

template <typename Sample>
kestu_error_t *read_strips(ByteSource &source, const kestu_img_t &img, RowCursor<Sample> cursor) {
    uint64_t offset = 0;
    uint64_t bytes = 0;
    for (int32_t i = 0; i < img.n_strip_bytes && !cursor.at_end(); ++i) {
        if (img.strip_offsets[i] != offset + bytes) {
            if (kestu_error_t *err = read_run(source, offset, bytes, cursor))
                return err;
            offset = img.strip_offsets[i];
            bytes = 0;
        }
        bytes += whole_samples<Sample>(img.strip_bytes[i]);
    }
    return read_run(source, offset, bytes, cursor);
}

template <typename Sample>
kestu_error_t *read_matrix(ByteSource &source, kestu_img_t &img, Sample **&matrix) {
    uint64_t bytes = 0;
    if (kestu_error_t *err = measure_strips<Sample>(source, img, bytes))
        return err;
    // Strips may share bytes of the file, but no memory is asked for on that account.
    if (claims_too_much<Sample>(img, std::min(bytes, source.size())))
        return fail(KESTU_ERR_INCOMPLETE_DATA);
    const uint64_t row_bytes = uint64_t{static_cast<uint32_t>(img.width)} * sizeof(Sample);
    const uint64_t filled = row_bytes == 0 ? 0 : bytes / row_bytes;
    if (kestu_error_t *err = allocate_rows(matrix, img.height, img.width, filled))
        return err;
    return read_strips(
        source, img,
        RowCursor<Sample>(matrix, static_cast<size_t>(img.height), static_cast<size_t>(img.width)));
}

} // namespace

kestu_error_t *read_tiff_pixels(ByteSource &source, kestu_img_t &img) {
    return with_samples(img, [&](auto &matrix) { return read_matrix(source, img, matrix); });
}

} // namespace kestu
