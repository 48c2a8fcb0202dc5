#include "directory.hpp"

#include <unistd.h>

namespace kestu::tiff {
namespace {

template <typename Number>
Number turned(Number number) {
    if constexpr (sizeof number == 2)
        return static_cast<Number>(__builtin_bswap16(number));
    else if constexpr (sizeof number == 4)
        return static_cast<Number>(__builtin_bswap32(number));
    else
        return static_cast<Number>(__builtin_bswap64(number));
}

// The parts of a value that are turned each for itself.
uint64_t part_size(uint16_t type) {
    return type == TIFF_RATIONAL || type == TIFF_SRATIONAL ? 4 : Directory::size_of(type);
}

} // namespace

uint64_t Directory::size_of(uint16_t type) {
    switch (type) {
    case TIFF_BYTE:
    case TIFF_ASCII:
    case TIFF_SBYTE:
    case TIFF_UNDEFINED:
        return 1;
    case TIFF_SHORT:
    case TIFF_SSHORT:
        return 2;
    case TIFF_LONG:
    case TIFF_SLONG:
    case TIFF_FLOAT:
    case TIFF_IFD:
        return 4;
    case TIFF_RATIONAL:
    case TIFF_SRATIONAL:
    case TIFF_DOUBLE:
    case TIFF_LONG8:
    case TIFF_SLONG8:
    case TIFF_IFD8:
        return 8;
    default:
        return 0;
    }
}

bool Directory::read(void *out, uint64_t size, uint64_t at) const {
    return at <= handle_.file_size() && size <= handle_.file_size() - at &&
           pread(handle_.fd(), out, size, static_cast<off_t>(at)) == static_cast<ssize_t>(size);
}

template <typename Number>
bool Directory::number(Number &out, uint64_t at) const {
    if (!read(&out, sizeof out, at))
        return false;
    if (swapped_)
        out = turned(out);
    return true;
}

Directory::Directory(Handle &handle)
    : handle_(handle), swapped_(TIFFIsByteSwapped(handle.tiff()) != 0) {
    uint16_t version = 0;
    big_ = number(version, 2) && version == 43;
    const uint64_t at = TIFFCurrentDirOffset(handle.tiff());
    uint16_t short_count = 0;
    if (big_)
        number(count_, at);
    else if (number(short_count, at))
        count_ = short_count;
    first_ = at + (big_ ? 8 : 2);
}

bool Directory::entry(uint64_t index, Entry &entry) const {
    const uint64_t size = big_ ? 20 : 12;
    if (index >= count_ || index > handle_.file_size() / size)
        return false;
    const uint64_t at = first_ + index * size;
    entry = {};
    uint32_t count = 0;
    uint32_t place = 0;
    if (!number(entry.tag, at) || !number(entry.type, at + 2))
        return false;
    if (!(big_ ? number(entry.count, at + 4) : number(count, at + 4)))
        return false;
    entry.count += count;
    const uint64_t room = big_ ? 8 : 4;
    const uint64_t place_at = at + 4 + room;
    entry.inside = entry.count <= room && entry.count * size_of(entry.type) <= room;
    entry.at = place_at;
    if (entry.inside)
        return true;
    if (big_)
        return number(entry.at, place_at);
    const bool found = number(place, place_at);
    entry.at = place;
    return found;
}

bool Directory::read_values(const Entry &entry, void *out, uint64_t count) const {
    const uint64_t size = size_of(entry.type);
    if (!read(out, count * size, entry.at))
        return false;
    const uint64_t part = part_size(entry.type);
    const auto parts = static_cast<tmsize_t>(part > 0 ? count * size / part : 0);
    if (swapped_ && part == 2)
        TIFFSwabArrayOfShort(static_cast<uint16_t *>(out), parts);
    else if (swapped_ && part == 4)
        TIFFSwabArrayOfLong(static_cast<uint32_t *>(out), parts);
    else if (swapped_ && part == 8)
        TIFFSwabArrayOfLong8(static_cast<uint64_t *>(out), parts);
    return true;
}

bool Directory::lists_stand_apart() const {
    Entry entry{};
    for (uint64_t i = 0; this->entry(i, entry); ++i) {
        const bool list = entry.tag == TIFFTAG_STRIPOFFSETS || entry.tag == TIFFTAG_STRIPBYTECOUNTS;
        if (entry.inside && ((list && entry.count > 1) || entry.tag == TIFFTAG_SOFTWARE))
            return false;
    }
    return true;
}

} // namespace kestu::tiff
