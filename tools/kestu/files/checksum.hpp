// Checksums of files and streams, of the kinds that the library computes.
#pragma once

#include "common/progress.hpp"

#include "kestu_sum.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace program {

enum class SumKind { sha1, crc32, crc16 };

struct SumName {
    SumKind kind;
    const char *option; // on the command line
    const char *description;
    const char *tag; // in lines of the tagged style
    size_t digits;   // hexadecimal digits of the sum
};

inline constexpr SumName sum_names[] = {
    {SumKind::sha1, "--sha1", "SHA-1 (taken when no kind is named)", "SHA1", 40},
    {SumKind::crc32, "--crc32", "CRC-32 of zlib and IEEE 802.3", "CRC32", 8},
    {SumKind::crc16, "--crc16", "CRC-16/ARC", "CRC16", 4}};

// A sum under way.
class Sum {
  public:
    explicit Sum(SumKind wanted) : kind_(wanted) { kestu_sha1_init(&sha1_); }

    void add(const unsigned char *data, size_t size);

    // In lower-case hexadecimal digits. Nothing can be added after it.
    std::string digits();

  private:
    SumKind kind_;
    kestu_sha1_t sha1_{};
    uint32_t crc_ = 0;
};

// The digits of a file's sum, or what is wrong with the file.
struct FileSum {
    std::string digits;
    std::string fault;
    bool is_missing = false;
};

// The sum of the file at `path`, or of standard input for "-". `progress` is told of every byte.
FileSum sum_of_file(const std::string &path, SumKind kind, Progress &progress);

// The bytes of a file that its sum takes; nothing when nobody knows how many.
std::optional<unsigned long long> size_of_file(const std::string &path);

} // namespace program
