// What the TIFF reader and the TIFF writer share: the names of the format (TIFF, revision 6.0).
#pragma once

#include <bit>
#include <cstdint>

namespace kestu::tiff {

// Numbers of the file are loaded and stored as they stand in memory.
static_assert(std::endian::native == std::endian::little);

enum Tag : uint16_t {
    image_width = 256,
    image_length = 257,
    bits_per_sample = 258,
    compression = 259,
    photometric_interpretation = 262,
    strip_offsets = 273,
    samples_per_pixel = 277,
    strip_byte_counts = 279,
    x_resolution = 282,
    y_resolution = 283,
    planar_configuration = 284,
    resolution_unit = 296,
    software = 305,
};

enum Type : uint16_t { ascii_type = 2, short_type = 3, long_type = 4 };

enum Compression : int32_t { no_compression = 1 };
enum Planar : int32_t { chunky = 1 };

// A directory entry as it stands in the file: 12 bytes without gaps.
struct Entry {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    uint32_t value; // or the offset of what does not fit
};
static_assert(sizeof(Entry) == 12);

} // namespace kestu::tiff
