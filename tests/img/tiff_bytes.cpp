#include "tiff_bytes.hpp"

#include "support/chain.hpp"

#include <algorithm>
#include <cstdlib>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestu::test {
namespace {

constexpr uint32_t data_at = 8;

template <typename Number>
std::string pack(const std::vector<unsigned> &numbers) {
    std::string bytes;
    for (const unsigned n : numbers)
        for (size_t i = 0; i < sizeof(Number); ++i)
            bytes += static_cast<char>(n >> (8 * i));
    return bytes;
}

template <typename Sample>
void collect(const kestu_img_t &img, Sample *const *rows, std::vector<int> &pixels) {
    for (int r = 0; rows && r < img.height; ++r)
        pixels.insert(pixels.end(), rows[r], rows[r] + img.width);
}

void require(bool done) {
    if (!done)
        std::abort();
}

} // namespace

std::vector<int> Image::pixels() const {
    std::vector<int> all;
    collect(*this, data8, all);
    collect(*this, data16, all);
    return all;
}

MemoryFile::MemoryFile(std::string_view bytes)
    : fd_(memfd_create("test", 0)), path_("/proc/self/fd/" + std::to_string(fd_)) {
    write_at(0, bytes);
}

MemoryFile::~MemoryFile() {
    close(fd_);
}

void MemoryFile::write_at(uint64_t offset, std::string_view bytes) {
    require(pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(offset)) ==
            static_cast<ssize_t>(bytes.size()));
}

void MemoryFile::resize(uint64_t size) {
    require(ftruncate(fd_, static_cast<off_t>(size)) == 0);
}

std::string MemoryFile::bytes() const {
    struct stat info = {};
    require(fstat(fd_, &info) == 0);
    std::string content(static_cast<size_t>(info.st_size), '\0');
    require(pread(fd_, content.data(), content.size(), 0) == info.st_size);
    return content;
}

std::string u16(const std::vector<unsigned> &numbers) {
    return pack<uint16_t>(numbers);
}
std::string u32(const std::vector<unsigned> &numbers) {
    return pack<uint32_t>(numbers);
}

std::string tiff_header(uint32_t first_directory) {
    return std::string("II*\0", 4) + u32({first_directory});
}

std::string tiff_directory(const std::vector<Field> &fields, uint32_t next) {
    std::string bytes = u16({static_cast<unsigned>(fields.size())});
    for (const Field &f : fields)
        bytes += u16({f.tag, f.type}) + u32({f.count, f.value});
    return bytes + u32({next});
}

uint32_t Tiff::put(std::string_view bytes) {
    const size_t offset = data_at + data_.size();
    data_ += bytes;
    return static_cast<uint32_t>(offset);
}

Tiff &Tiff::set(Field field) {
    drop(field.tag);
    fields_.push_back(field);
    return *this;
}

Tiff &Tiff::set_ratio(uint16_t tag, unsigned numerator, unsigned denominator) {
    return set({tag, rational, 1, put(u32({numerator, denominator}))});
}

// A number alone stands in the entry itself.
Tiff &Tiff::set_list(uint16_t tag, uint16_t type, const std::vector<unsigned> &numbers) {
    const auto count = static_cast<uint32_t>(numbers.size());
    if (count == 1)
        return set({tag, type, 1, numbers[0]});
    return set({tag, type, count, put(type == longs ? u32(numbers) : u16(numbers))});
}

Tiff &Tiff::set_strips(const std::vector<std::pair<unsigned, unsigned>> &strips, uint16_t type) {
    std::vector<unsigned> offsets, bytes;
    for (const auto &[place, size] : strips) {
        offsets.push_back(data_at + place);
        bytes.push_back(size);
    }
    return set_list(273, type, offsets).set_list(279, type == longs ? shorts : longs, bytes);
}

Tiff &Tiff::drop(uint16_t tag) {
    std::erase_if(fields_, [tag](const Field &f) { return f.tag == tag; });
    return *this;
}

std::string Tiff::bytes() const {
    return tiff_header(static_cast<uint32_t>(data_at + data_.size())) + data_ +
           tiff_directory(fields_);
}

Tiff Tiff::gray(uint32_t width, uint32_t height, uint32_t bits, std::string_view samples) {
    Tiff tiff;
    const uint32_t strip = tiff.put(samples);
    tiff.set(256, width).set(257, height).set({258, shorts, 1, bits}).set(262, 1);
    tiff.set({277, shorts, 1, 1}).set(273, strip);
    return tiff.set(279, static_cast<uint32_t>(samples.size()));
}

std::vector<int> pixels_of(std::string_view bytes) {
    const MemoryFile file(bytes);
    Image img;
    EXPECT_OK(kestu_img_read_tiff(file.path(), &img));
    return img.pixels();
}

} // namespace kestu::test
