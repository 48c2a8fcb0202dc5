// Walking the directories of a TIFF file.
#include "img/tiff_directory.hpp"

#include "error/error.hpp"
#include "img/tiff_format.hpp"
#include "img/widen.hpp"
#include "kestu_mem.h"

#include <limits>

namespace kestu {
namespace {

using tiff::Entry;

constexpr double cm_per_inch = 2.54;
constexpr uint32_t largest_depth = 32; // larger values of BitsPerSample are offsets

// Entries are remembered while directories are walked and their arrays are read at the end: a later
// directory may replace them, and reading each would let a small file cause a lot of work.
struct Lists {
    Entry strip_offsets = {};
    Entry strip_bytes = {};
    Entry software = {};
};

class DirectoryReader {
  public:
    DirectoryReader(ByteSource &source, kestu_img_t &img) : source_(source), img_(img) {}
    kestu_error_t *run();

  private:
    kestu_error_t *read_header(uint32_t *first_directory);
    kestu_error_t *walk(uint32_t directory);
    kestu_error_t *read_directory(uint64_t offset, uint32_t *next);
    kestu_error_t *take(const Entry &entry);
    kestu_error_t *take_bits(const Entry &entry);
    kestu_error_t *take_samples(const Entry &entry);
    kestu_error_t *take_resolution(const Entry &entry, double &resolution);
    kestu_error_t *take_list(const Entry &entry, uint64_t bytes, Entry &list);
    kestu_error_t *read_list(const Entry &list, uint32_t *&array, int32_t &count);
    kestu_error_t *read_software(const Entry &text);
    kestu_error_t *apply_resolution_unit();

    ByteSource &source_;
    kestu_img_t &img_;
    Lists lists_;
    uint64_t directory_bytes_ = 0;
};

// Fields of the record are signed: values from 2^31 up become negative.
int32_t as_signed(uint32_t value) {
    return static_cast<int32_t>(value);
}

kestu_error_t *invalid_tag(const Entry &entry) {
    return fail(KESTU_ERR_TIFF_TAG, "Invalid TIFF tag [name=%d type=%d length=%d offset=%d]",
                entry.tag, entry.type, as_signed(entry.count), as_signed(entry.value));
}

kestu_error_t *store(const Entry &entry, int32_t &field) {
    field = as_signed(entry.value);
    return nullptr;
}

// The bytes that a list of strips takes in the file outside of its entry.
uint64_t width_of(const Entry &list) {
    return list.type == tiff::long_type ? sizeof(uint32_t) : sizeof(uint16_t);
}
uint64_t bytes_of(const Entry &list) {
    return list.count == 1 ? 0 : list.count * width_of(list);
}

kestu_error_t *DirectoryReader::read_header(uint32_t *first_directory) {
    char magic[4];
    if (kestu_error_t *err = source_.read_at(0, magic, sizeof magic))
        return err;
    if (magic[0] == 'M' && magic[1] == 'M')
        return fail(KESTU_ERR_NOT_TIFF, "Motorola TIFF is not supported.");
    if (magic[0] != 'I' || magic[1] != 'I')
        return fail(KESTU_ERR_NOT_TIFF, "Unknown data format.");
    if (magic[2] != 42)
        return fail(KESTU_ERR_NOT_TIFF, "Unknown TIFF format.");
    if (kestu_error_t *err =
            source_.read_at(sizeof magic, first_directory, sizeof *first_directory))
        return err;
    return *first_directory != 0 ? nullptr : fail(0, "No image data were found.");
}

// A chain of directories that leads back to itself is found with Brent's method: a landmark is left
// behind after 1, 2, 4, ... steps, and a loop sooner or later arrives at it. Directories that
// together are larger than the file share bytes: they are refused because a walk through all ways
// of sharing would take very long.
kestu_error_t *DirectoryReader::walk(uint32_t directory) {
    uint32_t landmark = 0;
    uint64_t steps = 0;
    uint64_t until_landmark = 1;
    while (directory != 0) {
        if (directory == landmark)
            return fail(KESTU_ERR_IMAGE_STRUCTURE, "TIFF directories form a loop.");
        if (++steps == until_landmark) {
            landmark = directory;
            until_landmark *= 2;
        }
        if (kestu_error_t *err = read_directory(directory, &directory))
            return err;
        if (directory_bytes_ > source_.size())
            return fail(KESTU_ERR_IMAGE_STRUCTURE, "TIFF directories share bytes.");
    }
    return nullptr;
}

kestu_error_t *DirectoryReader::read_directory(uint64_t offset, uint32_t *next) {
    int16_t entries = 0;
    if (kestu_error_t *err = source_.read_at(offset, &entries, sizeof entries))
        return err;
    uint64_t place = offset + sizeof entries;
    for (int i = 0; i < entries; ++i, place += sizeof(Entry)) {
        Entry entry;
        if (kestu_error_t *err = source_.read_at(place, &entry, sizeof entry))
            return err;
        if (kestu_error_t *err = take(entry))
            return err;
    }
    directory_bytes_ += place + sizeof *next - offset;
    return source_.read_at(place, next, sizeof *next);
}

kestu_error_t *DirectoryReader::take(const Entry &entry) {
    switch (entry.tag) {
    case tiff::image_width:
        return store(entry, img_.width);
    case tiff::image_length:
        return store(entry, img_.height);
    case tiff::bits_per_sample:
        return take_bits(entry);
    case tiff::compression:
        return store(entry, img_.compression);
    case tiff::photometric_interpretation:
        return store(entry, img_.photometric);
    case tiff::strip_offsets:
        return take_list(entry, bytes_of(entry), lists_.strip_offsets);
    case tiff::samples_per_pixel:
        return take_samples(entry);
    case tiff::strip_byte_counts:
        return take_list(entry, bytes_of(entry), lists_.strip_bytes);
    case tiff::x_resolution:
        return take_resolution(entry, img_.xres);
    case tiff::y_resolution:
        return take_resolution(entry, img_.yres);
    case tiff::planar_configuration:
        return store(entry, img_.planar);
    case tiff::resolution_unit:
        return store(entry, img_.resunit);
    case tiff::software:
        return take_list(entry, entry.count, lists_.software);
    default:
        return nullptr;
    }
}

kestu_error_t *DirectoryReader::take_bits(const Entry &entry) {
    if (entry.type != tiff::short_type)
        return invalid_tag(entry);
    if (entry.value <= largest_depth) {
        for (int32_t &bits : img_.bits)
            bits = as_signed(entry.value);
        return nullptr;
    }
    uint16_t depths[3];
    if (entry.count < 1 || entry.count > 3)
        return invalid_tag(entry);
    if (kestu_error_t *err = source_.read_at(entry.value, depths, entry.count * sizeof depths[0]))
        return err;
    for (uint32_t i = 0; i < entry.count; ++i)
        img_.bits[i] = depths[i];
    return nullptr;
}

kestu_error_t *DirectoryReader::take_samples(const Entry &entry) {
    if (entry.type != tiff::short_type || entry.count != 1)
        return invalid_tag(entry);
    return store(entry, img_.samples);
}

kestu_error_t *DirectoryReader::take_resolution(const Entry &entry, double &resolution) {
    uint32_t ratio[2];
    if (kestu_error_t *err = source_.read_at(entry.value, ratio, sizeof ratio))
        return err;
    if (ratio[1] == 0)
        return invalid_tag(entry);
    resolution = static_cast<double>(ratio[0]) / ratio[1];
    return nullptr;
}

kestu_error_t *DirectoryReader::take_list(const Entry &entry, uint64_t bytes, Entry &list) {
    if (!source_.holds(entry.value, bytes))
        return fail(KESTU_ERR_READ);
    if (entry.count > static_cast<uint32_t>(std::numeric_limits<int32_t>::max()))
        return invalid_tag(entry);
    list = entry;
    return nullptr;
}

kestu_error_t *DirectoryReader::read_list(const Entry &list, uint32_t *&array, int32_t &count) {
    if (list.count == 0)
        return nullptr;
    if (kestu_error_t *err = kestu_mem_malloc(list.count * sizeof(uint32_t), &array))
        return err;
    count = as_signed(list.count);
    if (list.count == 1) {
        array[0] = list.value;
        return nullptr;
    }
    const uint64_t bytes = bytes_of(list);
    char *end = reinterpret_cast<char *>(array + list.count);
    if (kestu_error_t *err = source_.read_at(list.value, end - bytes, bytes))
        return err;
    if (list.type != tiff::long_type)
        widen<uint16_t>(array, list.count);
    return nullptr;
}

kestu_error_t *DirectoryReader::read_software(const Entry &text) {
    if (text.tag != tiff::software)
        return nullptr;
    if (kestu_error_t *err = kestu_mem_calloc(text.count + size_t{1}, 1, &img_.software))
        return err;
    return source_.read_at(text.value, img_.software, text.count);
}

kestu_error_t *DirectoryReader::apply_resolution_unit() {
    switch (img_.resunit) {
    case -1:
    case 2:
        return nullptr;
    case 3:
        img_.xres *= cm_per_inch;
        img_.yres *= cm_per_inch;
        return nullptr;
    default:
        return fail(KESTU_ERR_IMAGE_STRUCTURE, "Unknown resolution units [%d] in TIFF file",
                    img_.resunit);
    }
}

kestu_error_t *DirectoryReader::run() {
    uint32_t first = 0;
    kestu_error_t *err = read_header(&first);
    if (!err)
        err = source_.measure();
    if (!err)
        err = walk(first);
    if (!err)
        err = read_list(lists_.strip_offsets, img_.strip_offsets, img_.n_strip_offsets);
    if (!err)
        err = read_list(lists_.strip_bytes, img_.strip_bytes, img_.n_strip_bytes);
    if (!err)
        err = read_software(lists_.software);
    return err ? err : apply_resolution_unit();
}

} // namespace

kestu_error_t *read_tiff_directories(ByteSource &source, kestu_img_t &img) {
    return DirectoryReader(source, img).run();
}

} // namespace kestu
