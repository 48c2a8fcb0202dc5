// One pass from front to back: a fixed head that names its own length, then the rows.
#include "img/tiff_write.hpp"

#include "base/kept_errno.hpp"
#include "error/error.hpp"
#include "img/rows.hpp"
#include "img/samples.hpp"
#include "img/tiff_format.hpp"
#include "kestu_str.h"
#include "kestu_version.h"

#include <cstring>
#include <limits>

namespace kestu {
namespace {

using tiff::Entry;

constexpr uint16_t entry_count = 10;

// Everything in front of the pixels, as it stands in the file. Of the text, what ends with its
// terminator is written, and the pixels follow at once.
struct [[gnu::packed]] Head {
    char magic[4];
    uint32_t directory;
    uint16_t count;
    Entry entries[entry_count];
    uint32_t next_directory;
    char software[100];
};
constexpr uint32_t directory_at = offsetof(Head, count);
constexpr uint32_t software_at = offsetof(Head, software);
static_assert(directory_at == 8 && software_at == 134);

Entry short_entry(tiff::Tag tag, int32_t value) {
    return {tag, tiff::short_type, 1, static_cast<uint16_t>(value)};
}

Entry long_entry(tiff::Tag tag, uint64_t value) {
    return {tag, tiff::long_type, 1, static_cast<uint32_t>(value)};
}

// Kept: other depths repeat the value of the entry before. Relied on by: readers of the head alone.
uint64_t strip_bytes(const kestu_img_t &img) {
    const auto sample_size =
        with_samples(img, []<typename Sample>(Sample **) { return sizeof(Sample); });
    return sample_size > 0 ? pixels_of(img) * sample_size : static_cast<uint16_t>(img.samples);
}

// Fills `head` and returns how many of its bytes belong into the file.
size_t fill_head(Head &head, const kestu_img_t &img) {
    kestu_str_strlcpy(head.software, "KESTU " KESTU_VERSION_STRING, sizeof head.software);
    const auto text_size = static_cast<uint32_t>(std::strlen(head.software) + 1);
    const uint32_t pixels_at = software_at + text_size;
    std::memcpy(head.magic, "II*", sizeof head.magic);
    head.directory = directory_at;
    head.count = entry_count;
    const Entry entries[entry_count] = {
        long_entry(tiff::image_width, static_cast<uint32_t>(img.width)),
        long_entry(tiff::image_length, static_cast<uint32_t>(img.height)),
        short_entry(tiff::bits_per_sample, img.bits[0]),
        short_entry(tiff::compression, tiff::no_compression),
        short_entry(tiff::photometric_interpretation, img.photometric),
        long_entry(tiff::strip_offsets, pixels_at),
        short_entry(tiff::samples_per_pixel, img.samples),
        long_entry(tiff::strip_byte_counts, strip_bytes(img)),
        short_entry(tiff::planar_configuration, tiff::chunky),
        {tiff::software, tiff::ascii_type, text_size, software_at},
    };
    std::memcpy(head.entries, entries, sizeof entries);
    head.next_directory = 0;
    return pixels_at;
}

kestu_error_t *write_bytes(OutputFile &file, void *bytes, size_t size) {
    auto *from = static_cast<char *>(bytes);
    while (size > 0) {
        const iovec segment = {from, size};
        const size_t written = file.gather(&segment, 1);
        if (written == 0)
            return fail(KESTU_ERR_WRITE);
        from += written;
        size -= written;
    }
    return nullptr;
}

template <typename Sample>
kestu_error_t *write_rows(OutputFile &file, const kestu_img_t &img, Sample **rows) {
    if (pixels_of(img) == 0)
        return nullptr;
    if (!rows)
        return fail(KESTU_ERR_IMAGE_STRUCTURE, "The image has no pixels.");
    RowCursor<Sample> cursor(rows, static_cast<size_t>(img.height), static_cast<size_t>(img.width));
    RowSegments segments;
    while (!cursor.at_end()) {
        const int count = cursor.next(segments, std::numeric_limits<uint64_t>::max());
        const size_t written = file.gather(segments, count);
        if (written == 0)
            return fail(KESTU_ERR_WRITE);
        cursor.advance(written);
    }
    return nullptr;
}

} // namespace

kestu_error_t *write_tiff(OutputFile &file, const kestu_img_t &img) {
    if (strip_bytes(img) > std::numeric_limits<uint32_t>::max())
        return fail(KESTU_ERR_IMAGE_STRUCTURE, "An image of %d x %d pixels is too large for TIFF.",
                    img.width, img.height);
    Head head;
    const size_t size = fill_head(head, img);
    kestu_error_t *err = write_bytes(file, &head, size);
    if (err)
        return err;
    return with_samples(img, [&](auto rows) { return write_rows(file, img, rows); });
}

} // namespace kestu

using namespace kestu;

kestu_error_t *kestu_img_write_tiff(const char *path, const kestu_img_t *img) {
    const KeptErrno kept;
    OutputFile file;
    kestu_error_t *err = file.open(path);
    if (!err)
        err = file.close(write_tiff(file, *img));
    return wrap(err, "Cannot write TIFF image.");
}
