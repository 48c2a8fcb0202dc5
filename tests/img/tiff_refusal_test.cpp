// TIFF files that are refused: with which errors, and that nothing is left behind.
#include "kestu_img.h"

#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "tiff_bytes.hpp"

#include <algorithm>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace kestu::test;
using namespace std::string_literals;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char *reading = "Cannot read TIFF image.";
constexpr const char *reading_info = "Cannot read TIFF information from file.";

// The root cause with which a file is refused, by both readers but for `by_pixels`. Nothing must be
// left behind in the record or printed.
Element refusal(std::string_view bytes, bool by_pixels = false) {
    const MemoryFile file(bytes);
    Image img;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    kestu_error_t *err = kestu_img_read_tiff(file.path(), &img);
    const bool left = img.holds_arrays() || img.type != 0;
    kestu_error_t *info_err = kestu_img_read_tiff_info(file.path(), &img);
    const bool info_left = !by_pixels && (img.holds_arrays() || img.type != 0);
    kestu_img_free(&img);
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(left || info_left);
    const auto chain = take_chain(err);
    const auto info_chain = take_chain(info_err);
    if (chain.size() != 2)
        return {-1, "no chain of two"};
    EXPECT_EQ(chain[0], Element(chain[1].first, reading));
    if (by_pixels)
        EXPECT_THAT(info_chain, IsEmpty());
    else
        EXPECT_THAT(info_chain, ElementsAre(Element(chain[1].first, reading_info), chain[1]));
    return chain[1];
}

} // namespace

TEST(TiffRefusal, WhatIsNotTiffIsRefused) {
    EXPECT_EQ(refusal(""), Element(120031, ""));
    EXPECT_EQ(refusal("II*"), Element(120031, ""));
    EXPECT_EQ(refusal("II*\0abc"s), Element(120031, ""));
    EXPECT_EQ(refusal("MM\0*\0\0\0\10"s), Element(120150, "Motorola TIFF is not supported."));
    EXPECT_EQ(refusal("IM*\0"s), Element(120150, "Unknown data format."));
    EXPECT_EQ(refusal("MI*\0"s), Element(120150, "Unknown data format."));
    EXPECT_EQ(refusal("A text."), Element(120150, "Unknown data format."));
    EXPECT_EQ(refusal("II+\0"s), Element(120150, "Unknown TIFF format."));
    EXPECT_EQ(refusal("II*\0\0\0\0\0"s), Element(0, "No image data were found."));
    std::string odd = Tiff::tiny().bytes();
    odd[3] = 7; // is not looked at
    EXPECT_EQ(pixels_of(odd), (std::vector{1, 2, 3, 4}));
}

TEST(TiffRefusal, TagsThatBreakTheirRulesAreRefused) {
    const auto with = [](Field field) { return Tiff::tiny().set(field).bytes(); };
    const auto invalid = [](const char *values) {
        return Element(120151, std::string("Invalid TIFF tag [") + values + "]");
    };
    EXPECT_EQ(refusal(with({258, longs, 1, 8})), invalid("name=258 type=4 length=1 offset=8"));
    EXPECT_EQ(refusal(with({258, shorts, 4, 33})), invalid("name=258 type=3 length=4 offset=33"));
    EXPECT_EQ(refusal(with({258, shorts, 0, 33})), invalid("name=258 type=3 length=0 offset=33"));
    EXPECT_EQ(refusal(with({277, shorts, 3, 1})), invalid("name=277 type=3 length=3 offset=1"));
    EXPECT_EQ(refusal(with({277, longs, 1, 1})), invalid("name=277 type=4 length=1 offset=1"));
    EXPECT_EQ(refusal(with({277, 65535, 0xffffffff, 0x80000000})),
              invalid("name=277 type=65535 length=-1 offset=-2147483648"));
    for (const uint16_t tag : {282, 283}) {
        Tiff tiff = Tiff::tiny();
        tiff.set({tag, rational, 1, tiff.put(u32({1, 0}))});
        EXPECT_EQ(refusal(tiff.bytes()).first, 120151);
    }
}

TEST(TiffRefusal, ValuesThatTheFileDoesNotHoldAreRefused) {
    const Field cases[] = {
        {258, shorts, 3, 0x7fffffff}, {273, longs, 2, 0xffffffff},    {273, longs, 0xffffffff, 8},
        {273, shorts, 1 << 20, 8},    {279, longs, 0x80000000, 8},    {279, shorts, 2, 0x2000},
        {282, rational, 1, 1000},     {283, rational, 1, 0xffffffff}, {305, ascii, 0xffffffff, 8},
        {305, ascii, 200, 8},         {305, ascii, 1, 1000},
    };
    for (const Field &field : cases)
        EXPECT_EQ(refusal(Tiff::tiny().set(field).bytes()), Element(120031, ""))
            << field.tag << " " << field.count;
}

TEST(TiffRefusal, StructuresThatMakeNoImageAreRefused) {
    EXPECT_EQ(refusal(Tiff::tiny().set(296, 1).bytes()),
              Element(120152, "Unknown resolution units [1] in TIFF file"));
    EXPECT_EQ(refusal(Tiff::tiny().drop(279).bytes()),
              Element(120152, "Inconsistent number of strips [1 vs. 0]"));
    EXPECT_EQ(refusal(Tiff::tiny().drop(262).bytes(), true),
              Element(120152, "Unknown photometric interpretation"));
    Image img;
    EXPECT_CHAIN(read(Tiff::tiny().drop(262).drop(279).bytes(), img), Element(120152, reading),
                 Element(120152, "Unknown photometric interpretation"));
}

TEST(TiffRefusal, DirectoriesThatNeverEndAreRefused) {
    const auto empty = [](uint32_t next) { return tiff_directory({}, next); };
    const std::string cycles[] = {
        tiff_header(8) + empty(8),
        tiff_header(8) + empty(14) + empty(20) + empty(14),
        tiff_header(8) + empty(14) + empty(20) + empty(26) + empty(8) + std::string(500, '\0'),
    };
    for (const std::string &bytes : cycles)
        EXPECT_EQ(refusal(bytes), Element(120152, "TIFF directories form a loop."));
    MemoryFile shared(tiff_header(8));
    shared.resize(1400);
    for (unsigned at = 8; at < 128; at += 6) {
        shared.write_at(at, u16({100}));
        shared.write_at(at + 2 + 100 * 12, u32({at + 6}));
    }
    EXPECT_EQ(refusal(shared.bytes()), Element(120152, "TIFF directories share bytes."));
}

// Nothing that a small file claims makes the reader ask for much memory.
TEST(TiffRefusal, ImagesThatClaimMoreThanTheFileHoldsAreRefused) {
    const struct {
        uint32_t width, height, bits;
    } cases[] = {{1, 1u << 31, 8},   {1, 0x7fffffff, 8},           {0, 0x7fffffff, 16},
                 {0xffffffff, 1, 8}, {0xffffffff, 0xffffffff, 16}, {1, 1'000'005, 8},
                 {1024, 1025, 8},    {(1 << 19) + 3, 1, 16},       {65536, 65536, 16}};
    for (const auto &c : cases)
        EXPECT_EQ(refusal(Tiff::gray(c.width, c.height, c.bits, "abcd").bytes(), true),
                  Element(120153, ""))
            << c.width << " x " << c.height;
    EXPECT_EQ(pixels_of(Tiff::gray((1 << 19) + 2, 1, 16, "a\0b\0"s).bytes())[1], 'b');
    EXPECT_EQ(refusal(Tiff::tiny().set(279, 1000).bytes(), true), Element(120153, ""));
    EXPECT_EQ(refusal(Tiff::tiny().set(273, 0xffffffff).bytes(), true), Element(120153, ""));
    Tiff shared = Tiff::gray(4096, 4096, 8, std::string(60000, 'a'));
    std::string offsets;
    std::string bytes;
    for (int i = 0; i < 1000; ++i) {
        offsets += u16({8});
        bytes += u16({60000});
    }
    shared.set({273, shorts, 1000, shared.put(offsets)});
    shared.set({279, shorts, 1000, shared.put(bytes)});
    EXPECT_EQ(refusal(shared.bytes(), true), Element(120153, ""));
    EXPECT_EQ(pixels_of(shared.set(257, 256).bytes()), std::vector<int>(1 << 20, 'a'));
}

TEST(TiffRefusal, MatricesWithoutRowsOrColumnsAreTheAllocatorsErrors) {
    Image img;
    EXPECT_CHAIN(read(Tiff::tiny().set(256, 0).bytes(), img), Element(120010, reading),
                 Element(120010, "Cannot allocate matrix."),
                 Element(120010, "Cannot allocate memory for 0 elements."));
    EXPECT_CHAIN(read(Tiff::tiny().set(257, 0).set(256, 1u << 31).bytes(), img),
                 Element(120014, reading), Element(120014, "Cannot allocate matrix."),
                 Element(120014, "Cannot allocate memory of size 0 bytes."));
    EXPECT_FALSE(img.holds_arrays());
}

TEST(TiffRefusal, AFileCutAnywhereIsRefused) {
    const std::string pixels = "abcdef";
    const std::vector<Field> fields = {{256, longs, 1, 3},      {257, longs, 1, 2},
                                       {258, shorts, 1, 8},     {262, shorts, 1, 1},
                                       {282, rational, 1, 122}, {305, ascii, 10, 130},
                                       {273, longs, 2, 140},    {279, shorts, 2, 148}};
    std::string file = tiff_header(8) + tiff_directory(fields);
    ASSERT_EQ(file.size(), 110u);
    file.resize(122);
    file += u32({300, 1}) + "a program\0"s + u32({152, 154}) + u16({2, 4}) + pixels;
    EXPECT_EQ(pixels_of(file), std::vector<int>(pixels.begin(), pixels.end()));
    refusal("");
    const long blocks = live_blocks();
    for (size_t size = 0; size < file.size(); ++size) {
        const bool in_pixels = size >= 152;
        EXPECT_EQ(refusal(std::string_view(file).substr(0, size), in_pixels),
                  Element(in_pixels ? 120153 : 120031, ""))
            << "cut to " << size;
    }
    EXPECT_EQ(live_blocks(), blocks);
}

TEST(TiffRefusal, PathsThatLeadToNoFile) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::temp_directory_path() / ("kestu-img-" + std::to_string(getpid()));
    fs::create_directory(folder);
    const std::string loop = folder / "loop";
    const std::string fifo = folder / "fifo";
    fs::create_symlink(loop, loop);
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    Image img;
    for (const std::string &path : {folder.string() + "/missing", loop, loop + "/a"}) {
        std::fill_n(reinterpret_cast<char *>(&img), sizeof(kestu_img_t), '\xff');
        EXPECT_CHAIN(kestu_img_read_tiff(path.c_str(), &img), Element(120030, reading),
                     Element(120030, "Cannot open file '" + path + "'"));
        EXPECT_FALSE(img.holds_arrays());
    }
    for (const std::string &path : {folder.string(), "/dev/null"s, "/proc/self/mem"s})
        EXPECT_CHAIN(kestu_img_read_tiff(path.c_str(), &img), Element(120031, reading),
                     Element(120031, ""));
    const int end = open(fifo.c_str(), O_RDWR | O_CLOEXEC);
    const std::string bytes = Tiff::tiny().bytes();
    ASSERT_EQ(write(end, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    EXPECT_CHAIN(kestu_img_read_tiff(fifo.c_str(), &img), Element(120033, reading),
                 Element(120033, ""));
    close(end);
    fs::remove_all(folder);
}

TEST(TiffRefusal, WithoutMemoryNothingIsLeftBehind) {
    Tiff tiff = Tiff::gray(2, 3, 16, std::string(12, '\1'));
    tiff.set({305, ascii, 5, tiff.put("text")});
    tiff.set({273, longs, 2, tiff.put(u32({8, 14}))});
    tiff.set({279, shorts, 2, tiff.put(u16({6, 6}))});
    const MemoryFile file(tiff.bytes());
    const long blocks = live_blocks();
    size_t failures = 0;
    fail_each_allocation([&](size_t) {
        Image img;
        if (kestu_error_t *err = kestu_img_read(file.path(), &img)) {
            ++failures;
            EXPECT_FALSE(img.holds_arrays());
            const int code = err->code;
            kestu_error_clear(err);
            EXPECT_THAT(code, AnyOf(120012, 120030));
        } else {
            EXPECT_EQ(img.data16[2][1], 257);
        }
    });
    EXPECT_GE(failures, 10u);
    EXPECT_EQ(live_blocks(), blocks);
}
