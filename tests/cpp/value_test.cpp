// Pools, matrices, arrays, texts, parameters, logs, images and checksums.
#include "kestu.hpp"
#include "support/alloc_failure.hpp"
#include "support/pty.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <list>
#include <numeric>

namespace {

using kestu::test::fail_each_allocation;
using kestu::test::live_blocks;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(CppPool, IsAResourceAndDestroysWhatItMakes) {
    const auto shared = std::make_shared<int>(1);
    kestu::Pool pool;
    {
        kestu::Pool child = pool.child();
        EXPECT_EQ(apr_pool_parent_get(child), pool.get());
        EXPECT_EQ(**child.make<std::shared_ptr<int>>(shared), 1);
        EXPECT_EQ(shared.use_count(), 2);
        child.clear();
        EXPECT_EQ(shared.use_count(), 1);
        std::pmr::memory_resource *resource = child.resource();
        kestu::Pool moved = std::move(child);
        EXPECT_EQ(moved.resource(), resource);
        std::pmr::list<std::pmr::string> texts(resource);
        for (int i = 0; i < 1000; ++i)
            texts.emplace_back(static_cast<size_t>(i), 'x');
        EXPECT_EQ(texts.back().size(), 999);
        for (size_t alignment : {1U, 8U, 16U, 64U, 4096U})
            EXPECT_EQ(reinterpret_cast<uintptr_t>(resource->allocate(3, alignment)) % alignment, 0);
        const volatile size_t too_much = SIZE_MAX; // unknown to the compiler, which would warn
        EXPECT_THROW(static_cast<void>(resource->allocate(too_much)), std::bad_alloc);
        moved.make<std::shared_ptr<int>>(shared);
        EXPECT_EQ(moved.make<int[]>(100)[99], 0);
        EXPECT_THROW(moved.make<int[]>(too_much), std::bad_alloc);
    }
    EXPECT_EQ(shared.use_count(), 1);
}

TEST(CppArray, HasBoundsAndLeavesNothingBehind) {
    const long before = live_blocks();
    const size_t failures = fail_each_allocation([](size_t) {
        static_cast<void>(kestu::Matrix<int>::make(std::nothrow, -1, 1, 5, 6));
        static_cast<void>(kestu::Array<int, 3>::make(std::nothrow, {2, 3, 4}));
        static_cast<void>(kestu::Image::make(std::nothrow, 3, 4, 16));
    });
    EXPECT_EQ(failures, 4 + 11 + 4);
    EXPECT_EQ(live_blocks(), before);

    kestu::Matrix<int> made(-1, 1, 5, 6);
    made(-1, 5) = 1;
    made.at(1, 6) = 2;
    for (auto [row, column] : {std::pair(-2, 5), {2, 5}, {0, 4}, {0, 7}})
        EXPECT_THROW(made.at(row, column), kestu::Error);
    const kestu::Matrix<int> matrix = std::move(made);
    EXPECT_EQ(matrix(-1, 5), 1);
    EXPECT_THAT(matrix.row(1), ElementsAre(0, 2));
    const kestu::Array<int, 3> array({2, 3, 4});
    array(1, 2, 3) = 7;
    EXPECT_EQ(array.at(1, 2, 3), 7);
    EXPECT_THAT(array.row(1, 2), ElementsAre(0, 0, 0, 7));
    EXPECT_THROW(array.at(1, 3, 3), kestu::Error);
    for (const std::array<uint32_t, 2> &dims :
         {std::array<uint32_t, 2>{UINT32_MAX, UINT32_MAX}, {0, 1}, {1, 0}})
        EXPECT_FALSE((kestu::Array<int64_t, 2>::make(std::nothrow, dims).has_value()));
    EXPECT_FALSE(kestu::Matrix<int>::make(std::nothrow, 5, 1, 0, 1).has_value());
    EXPECT_THROW((kestu::Array<int, 1>().at(0)), kestu::Error);
}

TEST(CppText, ConvertsTheWholeTextOrNothing) {
    EXPECT_EQ(kestu::to_number<int>(std::string_view("123456").substr(1, 3)), 234);
    EXPECT_EQ(kestu::to_number<long>(std::string(200, '0') + "7"), 7);
    EXPECT_EQ(kestu::to_number<int16_t>("-32768"), -32768);
    using namespace std::string_view_literals;
    for (std::string_view text : {"2147483648"sv, "42\0"sv, "4\0002"sv, ""sv, "4 "sv})
        EXPECT_FALSE(kestu::to_number<int>(std::nothrow, text)) << text;
    for (int base = 2; base <= 62; ++base)
        for (int64_t value : {INT64_MIN, int64_t{-1}, int64_t{0}, INT64_MAX})
            EXPECT_EQ(kestu::from_base(kestu::to_base(value, base).c_str(), base), value) << base;
    for (std::string_view text : {"", "12x", "99999999999999999999", "1\0"})
        EXPECT_FALSE(kestu::from_base(
            std::nothrow, std::string_view(text.data(), text.size() + (text == "1")), 10))
            << text;
    EXPECT_EQ(kestu::to_base(1, 63), "");

    std::string all(256, '\0');
    std::iota(all.begin(), all.end(), '\0');
    EXPECT_EQ(kestu::unescape(kestu::escape(all)), all);
    EXPECT_EQ(kestu::unescape("\\u20ac"), "\xe2\x82\xac");
    EXPECT_EQ(kestu::unescape(std::nothrow, "\\xg").error().code(), KESTU_ERR_NO_HEX_DIGITS);
    EXPECT_EQ(kestu::escape("") + kestu::unescape(""), "");
    EXPECT_FALSE(kestu::is_utf8("\xff"));
}

TEST(CppParameters, AreNumbersAndTexts) {
    kestu::Pool pool;
    kestu::Parameters line(pool);
    EXPECT_TRUE(line.begin() == line.end());
    line.parse("007 2.5 \\");
    EXPECT_TRUE(line.is_incomplete());
    line.parse("\"a b\"");
    ASSERT_EQ(line.size(), 3);
    EXPECT_EQ(line[0], kestu::Parameter(7));
    EXPECT_EQ(line[1], kestu::Parameter(2.5));
    EXPECT_EQ(line[2], kestu::Parameter("a b"));
    EXPECT_EQ(line.text(0), "007");
    EXPECT_TRUE(line.is_quoted(2));
}

TEST(CppEditor, ReadsLinesAndLeavesTheTerminalAsItWas) {
    using kestu::test::Terminal;
    Terminal terminal(80, 24);
    const termios before = terminal.settings();
    terminal.run([] {
        kestu::Editor editor("> ");
        while (auto line = editor.read())
            Terminal::report("line of " + std::to_string(line->size()));
        Terminal::report("end");
        Terminal::report(std::to_string(editor.read(std::nothrow).error().code()));
    });
    terminal.wait_for_text("> |");
    terminal.type("a");
    terminal.wait_for_text("> a|");
    terminal.type("\r");
    EXPECT_EQ(terminal.wait_for_report(), "line of 2"); // with its line feed
    terminal.wait_for_text("> |");
    terminal.type("\x04"); // Ctrl-D
    EXPECT_EQ(terminal.wait_for_report(), "end");
    terminal.wait_for_text("> |");
    terminal.type("\x1b[99~"); // no key
    EXPECT_EQ(terminal.wait_for_report(), std::to_string(KESTU_ERR_NO_CHARACTER));
    EXPECT_EQ(terminal.settings().c_lflag, before.c_lflag);
}

class CppFile : public testing::Test {
  protected:
    CppFile() { std::filesystem::create_directory(folder_); }
    ~CppFile() override { std::filesystem::remove_all(folder_); }
    std::string path(const char *name) const { return (folder_ / name).string(); }

  private:
    std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("kestu_values_" + std::to_string(kestu_getpid()));
};

TEST_F(CppFile, LogsTakeCheckedFormatsAndErrors) {
    {
        kestu::Log log(path("log"));
        log.print("%zu %lld %s\n", size_t{1}, 2LL, std::string("three"));
        log.print_dated("dated %.2f\n", 1.5);
        log.write(kestu::Error(5, "inner").wrap("outer"));
        log.write_json(kestu::Error(5, "json"));
    }
    std::ifstream file(path("log"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[0], "1 2 three");
    EXPECT_THAT(lines[1], testing::EndsWith(": dated 1.50"));
    EXPECT_THAT(lines[3], HasSubstr("inner"));
    EXPECT_THAT(lines[4], HasSubstr(R"("message":"json")"));
    EXPECT_THAT(kestu::Log::make(std::nothrow, path("no/log")).error().what(),
                HasSubstr("Cannot create log."));
}

TEST_F(CppFile, ImagesAreDrawnWrittenReadAndMeasured) {
    for (const int bits : {8, 16}) {
        kestu::Image image(40, 50, bits);
        kestu::draw_circle(20, 15, 10, [&](int x, int y, double) {
            if (bits == 8)
                image.row<uint8_t>(y)[static_cast<size_t>(x)] = 9;
            else
                image.row<uint16_t>(y)[static_cast<size_t>(x)] = 9;
        });
        image.write(path("circle.tif"));
        const kestu::Image again = kestu::Image::read(path("circle.tif"));
        EXPECT_EQ(again.height(), 40);
        EXPECT_EQ(again.has<uint8_t>(), bits == 8);
        EXPECT_EQ(bits == 8 ? again.row<uint8_t>(15)[10] : again.row<uint16_t>(15)[10], 9);
        const kestu::Histogram levels = again.histogram();
        EXPECT_EQ(levels.size(), size_t{1} << bits);
        EXPECT_EQ(levels[9] + levels[0], 2000);
        EXPECT_GT(levels[9], 50);
        EXPECT_GT(levels.threshold(), 0);
        EXPECT_GT(again.entropy(), 0);
        EXPECT_EQ(again.mask().row(15)[10], 1);
        EXPECT_EQ(again.density(7).columns(), 50);
    }
    EXPECT_THROW(kestu::Image(3, 3, 12), kestu::Error);
    EXPECT_THROW(kestu::Image::read(path("none.tif")), kestu::Error);
    EXPECT_FALSE(kestu::Image(3, 3, 8).write(std::nothrow, path("no/x.tif")));
    EXPECT_FALSE(kestu::Image().histogram(std::nothrow));
}

TEST(CppSum, TakesTextsAndRowsInPieces) {
    EXPECT_EQ(kestu::crc32("123456789"), 0xCBF43926);
    EXPECT_EQ(kestu::crc32c("6789", kestu::crc32c("12345")), 0xE3069283);
    EXPECT_EQ(kestu::crc16("123456789"), 0xBB3D);
    EXPECT_EQ(kestu::crc32(std::vector<int>(), 5), 5);
    const std::array<uint16_t, 2> words = {0x3231, 0x3433};
    EXPECT_EQ(kestu::crc32(words), kestu::crc32("1234"));
    kestu::Sha1 sum;
    const char *abc = "a9993e364706816aba3e25717850c26c9cd0d89d";
    EXPECT_EQ(kestu::to_hex(sum.update("a").update(std::string("bc")).digest()), abc);
    EXPECT_EQ(kestu::to_hex(sum.update("abc").digest()), abc);
    EXPECT_EQ(kestu::to_hex(kestu::sha1("abc")), abc);
}

TEST(CppMachine, IsDescribed) {
    const auto cpu = kestu::processor(std::nothrow);
    EXPECT_TRUE(!cpu || (*cpu)->thread_count > 0);
    EXPECT_GE(kestu::processor_count(), 1);
    EXPECT_FALSE(kestu::os_name().empty());
}

} // namespace
