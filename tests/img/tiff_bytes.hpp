// TIFF files made by hand, and files that live in memory.
#pragma once

#include "kestu_img.h"

#include "support/process.hpp"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace kestu::test {

// A record that is released with the test that made it.
struct Image : kestu_img_t {
    Image() : kestu_img_t{} {}
    ~Image() { kestu_img_free(this); }
    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;

    bool holds_arrays() const {
        return data8 || data16 || strip_offsets || strip_bytes || software;
    }

    // All pixels, row after row; empty without a matrix.
    std::vector<int> pixels() const {
        std::vector<int> all;
        for (int r = 0; (data8 || data16) && r < height; ++r)
            for (int c = 0; c < width; ++c)
                all.push_back(data8 ? data8[r][c] : data16[r][c]);
        return all;
    }
};

// A file without a name that can be opened through its path.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view bytes = {}) { write_at(0, bytes); }
    ~MemoryFile() { close(fd_); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    const char *path() const { return path_.c_str(); }
    std::string bytes() const { return read_file(path_); }
    void write_at(uint64_t offset, std::string_view bytes) {
        if (pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(offset)) !=
            static_cast<ssize_t>(bytes.size()))
            std::abort();
    }

  private:
    int fd_ = memfd_create("test", 0);
    std::string path_ = "/proc/self/fd/" + std::to_string(fd_);
};

template <typename Number>
std::string packed(const std::vector<unsigned> &numbers) {
    std::string bytes;
    for (const unsigned n : numbers)
        for (size_t i = 0; i < sizeof(Number); ++i)
            bytes += static_cast<char>(n >> (8 * i));
    return bytes;
}
inline std::string u16(const std::vector<unsigned> &numbers) {
    return packed<uint16_t>(numbers);
}
inline std::string u32(const std::vector<unsigned> &numbers) {
    return packed<uint32_t>(numbers);
}

enum : uint16_t { ascii = 2, shorts = 3, longs = 4, rational = 5 };

struct Field {
    uint16_t tag, type;
    uint32_t count, value;
};

inline std::string tiff_header(uint32_t first_directory) {
    return std::string("II*\0", 4) + u32({first_directory});
}

inline std::string tiff_directory(const std::vector<Field> &fields, uint32_t next = 0) {
    std::string bytes = u16({static_cast<unsigned>(fields.size())});
    for (const Field &f : fields)
        bytes += u16({f.tag, f.type}) + u32({f.count, f.value});
    return bytes + u32({next});
}

// A file with one directory behind its data.
class Tiff {
  public:
    // A grayscale image, black is zero, whose samples stand in one strip in front of other data.
    Tiff(uint32_t width, uint32_t height, uint32_t bits, std::string_view samples) {
        const uint32_t strip = put(samples);
        set(256, width).set(257, height).set({258, shorts, 1, bits}).set(262, 1);
        set({277, shorts, 1, 1}).set(273, strip);
        set(279, static_cast<uint32_t>(samples.size()));
    }

    // The pixels 1, 2 and 3, 4 of 8 bits.
    Tiff() : Tiff(2, 2, 8, "\1\2\3\4") {}

    // Places bytes in the file and returns their offset.
    uint32_t put(std::string_view bytes) {
        data_ += bytes;
        return static_cast<uint32_t>(data_at + data_.size() - bytes.size());
    }

    // In place of a field with the same tag.
    Tiff &set(Field field) {
        drop(field.tag).fields_.push_back(field);
        return *this;
    }
    Tiff &set(uint16_t tag, uint32_t value) { return set({tag, longs, 1, value}); }
    Tiff &set_ratio(uint16_t tag, unsigned numerator, unsigned denominator) {
        return set({tag, rational, 1, put(u32({numerator, denominator}))});
    }
    Tiff &drop(uint16_t tag) {
        std::erase_if(fields_, [tag](const Field &f) { return f.tag == tag; });
        return *this;
    }

    // Strips by their places in the data and their bytes. Places are numbers of `type`, the bytes
    // of the other type of integers.
    Tiff &set_strips(const std::vector<std::pair<unsigned, unsigned>> &strips, uint16_t type) {
        std::vector<unsigned> offsets, bytes;
        for (const auto &[place, size] : strips) {
            offsets.push_back(data_at + place);
            bytes.push_back(size);
        }
        return set_list(273, type, offsets).set_list(279, type == longs ? shorts : longs, bytes);
    }

    std::string bytes() const {
        return tiff_header(static_cast<uint32_t>(data_at + data_.size())) + data_ +
               tiff_directory(fields_);
    }

  private:
    static constexpr uint32_t data_at = 8;

    // A number alone stands in the entry itself.
    Tiff &set_list(uint16_t tag, uint16_t type, const std::vector<unsigned> &numbers) {
        const auto count = static_cast<uint32_t>(numbers.size());
        if (count == 1)
            return set({tag, type, 1, numbers[0]});
        return set({tag, type, count, put(type == longs ? u32(numbers) : u16(numbers))});
    }

    std::string data_;
    std::vector<Field> fields_;
};

} // namespace kestu::test
