// TIFF files made by hand, and files that live in memory.
#pragma once

#include "kestu_img.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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
    std::vector<int> pixels() const;
};

// A file without a name that can be opened through its path.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view bytes = {});
    ~MemoryFile();
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    const char *path() const { return path_.c_str(); }
    void write_at(uint64_t offset, std::string_view bytes);
    void resize(uint64_t size);
    std::string bytes() const;

  private:
    int fd_;
    std::string path_;
};

std::string u16(const std::vector<unsigned> &numbers);
std::string u32(const std::vector<unsigned> &numbers);

enum : uint16_t { ascii = 2, shorts = 3, longs = 4, rational = 5 };

struct Field {
    uint16_t tag, type;
    uint32_t count, value;
};

std::string tiff_header(uint32_t first_directory);
std::string tiff_directory(const std::vector<Field> &fields, uint32_t next = 0);

// A file with one directory behind its data.
class Tiff {
  public:
    // Places bytes in the file and returns their offset.
    uint32_t put(std::string_view bytes);

    Tiff &set(uint16_t tag, uint32_t value) { return set({tag, longs, 1, value}); }
    Tiff &set(Field field); // in place of a field with the same tag
    Tiff &set_ratio(uint16_t tag, unsigned numerator, unsigned denominator);
    Tiff &drop(uint16_t tag);

    // Strips by their places in the data and their bytes. Places are numbers of `type`, the bytes
    // of the other type of integers.
    Tiff &set_strips(const std::vector<std::pair<unsigned, unsigned>> &strips, uint16_t type);

    std::string bytes() const;

    // A grayscale image, black is zero, whose samples stand in one strip in front of other data.
    static Tiff gray(uint32_t width, uint32_t height, uint32_t bits, std::string_view samples);

    // The pixels 1, 2 and 3, 4 of 8 bits.
    static Tiff tiny() { return gray(2, 2, 8, "\1\2\3\4"); }

  private:
    Tiff &set_list(uint16_t tag, uint16_t type, const std::vector<unsigned> &numbers);

    std::string data_;
    std::vector<Field> fields_;
};

// The pixels of a file that is read without an error.
std::vector<int> pixels_of(std::string_view bytes);

} // namespace kestu::test
