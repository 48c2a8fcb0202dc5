// Escapes to bytes, bytes to escapes, and the two tables behind them.
#include "support/test.hpp"

#include <iconv.h>
#include <memory>

using namespace kestu::test;
using namespace std::literals;

namespace {

enum Mode { narrow = 0, wide = 1, mapped = 2, wide_mapped = 3 };

// What parsing or unparsing leaves behind in a buffer of `capacity` bytes that is guarded by a
// sanitizer and filled with '#'.
struct Result {
    std::vector<Element> errors;
    size_t size;
    std::string buffer;

    // The text, when it fitted.
    std::string text() const { return errors.empty() ? buffer.substr(0, size - 1) : "failed"; }
};

template <typename Convert>
Result convert_into(size_t capacity, Convert convert) {
    const std::unique_ptr<char[]> buffer(new char[capacity]);
    std::fill_n(buffer.get(), capacity, '#');
    size_t size = capacity;
    kestu_error_t *err = convert(buffer.get(), &size);
    return {take_chain(err), size, {buffer.get(), capacity}};
}

Result parse_into(size_t capacity, std::string_view in, int mode = narrow) {
    return convert_into(capacity, [&](char *out, size_t *size) {
        return kestu_str_escape_parse(out, size, in.data(), in.size(), mode & wide, mode & mapped);
    });
}

Result unparse_into(size_t capacity, std::string_view in) {
    return convert_into(capacity, [&](char *out, size_t *size) {
        return kestu_str_escape_unparse(out, size, in.data(), in.size());
    });
}

// The text, after a look at what is needed for it: both must agree.
std::string parse(std::string_view in, int mode = narrow) {
    size_t needed = 0;
    EXPECT_OK(
        kestu_str_escape_parse(nullptr, &needed, in.data(), in.size(), mode & wide, mode & mapped));
    const Result result = parse_into(needed, in, mode);
    EXPECT_EQ(result.size, needed);
    EXPECT_EQ(result.buffer.back(), '\0');
    return result.text();
}

std::string unparse(std::string_view in) {
    size_t needed = 0;
    EXPECT_OK(kestu_str_escape_unparse(nullptr, &needed, in.data(), in.size()));
    const Result result = unparse_into(needed, in);
    EXPECT_EQ(result.size, needed);
    EXPECT_EQ(result.buffer.back(), '\0');
    return result.text();
}

std::string every_byte() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

} // namespace

TEST(EscapeParse, DecodesEscapes) {
    EXPECT_EQ(parse(R"(a\tb)"), "a\tb");
    EXPECT_EQ(parse(R"(\a\b\f\n\r\t\v)"), "\a\b\f\n\r\t\v");
    EXPECT_EQ(parse(R"(\\\"\'\?\q\9\U\ )"), R"(\"'?q9U )");
    EXPECT_EQ(parse(R"(\101\1011\18\0)"), "A\101"
                                          "1\1"
                                          "8\0"s);
    EXPECT_EQ(parse(R"(\377)"), "\377");
    EXPECT_EQ(parse(R"(\x41\x4a\x4A\xfg\x123)"), "AJJ\xF"
                                                 "g\x12"
                                                 "3");
    EXPECT_EQ(parse(R"(\u41\u0041Z\u00e9)"), "AAZ\xE9");
    EXPECT_EQ(parse("\\\0"sv), "\0"s);
    EXPECT_EQ(parse("no escape"), "no escape");
    EXPECT_EQ(parse(""), "");
}

TEST(EscapeParse, ValuesFrom256OnBecomeUtf8) {
    EXPECT_EQ(parse(R"(\400\777)"), "\u0100\u01FF");
    EXPECT_EQ(parse(R"(\u0100\u07ff\u0800\u20ac\ufffe)"), "\u0100\u07FF\u0800\u20AC\uFFFE");
    EXPECT_EQ(parse(R"(a\uffffb)"), "ab"); // no character
}

TEST(EscapeParse, TheEndOfTheInputEndsAnEscape) {
    EXPECT_EQ(parse(R"(a\)"), R"(a\)");
    EXPECT_EQ(parse(R"(\)", wide), "\\\0"s);
    EXPECT_EQ(parse(R"(\x4)"), "\4");
    EXPECT_EQ(parse(R"(\u12)"), "\x12");
    EXPECT_EQ(parse(R"(\12)"), "\n");
    EXPECT_EQ(parse(std::string_view{R"(\101)", 3}), "\10");
}

TEST(EscapeParse, WideCharactersAreTwoBytesAndMayBeMapped) {
    EXPECT_EQ(parse("A\x80\xFE", wide), "A\0\x80\0\xFE\0"s);
    EXPECT_EQ(parse("A\x80\xFE", wide_mapped), "A\0\xC7\0\xA0\x25"s);
    EXPECT_EQ(parse("A\x80", mapped), "A\x80");
    EXPECT_EQ(parse(R"(\x80)", wide_mapped), "\x80\0"s); // an escape is not mapped
}

TEST(EscapeParse, MarkedLeadBytesKeepTheByteBehindThem) {
    CharSet[0x81] |= KESTU_CHAR_LEAD;
    EXPECT_EQ(parse("\x81\\n\x82"), "\x81\\n\x82");
    EXPECT_EQ(parse("\x81\\n", wide_mapped), "\x81\\n\0"s);
    EXPECT_EQ(parse("a\x81"), "a\x81");
    EXPECT_EQ(parse(R"(\\n)"), R"(\n)");
    CharSet[0x81] &= ~uint32_t{KESTU_CHAR_LEAD};
}

TEST(EscapeParse, TheBufferBoundsWhatIsWrittenAndNotWhatIsCounted) {
    const auto expect = [](size_t capacity, std::string_view buffer, int mode = narrow) {
        const Result result = parse_into(capacity, R"(a\tbc)", mode);
        EXPECT_THAT(result.errors, testing::IsEmpty());
        EXPECT_EQ(result.size, (mode & wide) ? 9 : 5);
        EXPECT_EQ(result.buffer, buffer);
    };
    expect(6, "a\tbc\0#"sv);
    expect(5, "a\tbc\0"sv);
    expect(4, "a\tb\0"sv);
    expect(1, "\0"sv);
    expect(0, "");
    expect(4, "a\0\t\0"sv, wide);
    EXPECT_EQ(parse_into(2, "").buffer, "\0#"sv);
    EXPECT_EQ(parse_into(2, "").size, 1);
}

TEST(EscapeParse, FailsWithoutDigitsAndWithoutRoomForUtf8) {
    for (const std::string_view bad : {R"(ab\x)", R"(ab\xg)", R"(ab\u)", R"(ab\u\n)"}) {
        const Result result = parse_into(9, bad);
        EXPECT_THAT(result.errors, ElementsAre(Pair(120064, "")));
        EXPECT_EQ(result.size, 9);
        EXPECT_EQ(result.buffer.substr(0, 3), "ab\0"sv);
    }
    EXPECT_EQ(parse_into(6, R"(ab\u20acd)").buffer, "ab\u20AC\0"sv);
    for (const std::string_view cut : {""sv, "\0"sv, "a\0"sv, "ab\0"sv, "ab\0#"sv, "ab\0##"sv}) {
        const Result result = parse_into(cut.size(), R"(ab\u20ac)");
        EXPECT_THAT(result.errors, ElementsAre(Pair(0, "")));
        EXPECT_EQ(result.buffer, cut);
    }
}

TEST(EscapeUnparse, WritesPrintableText) {
    EXPECT_EQ(unparse("\1\n\""), R"(\x01\n\")");
    EXPECT_EQ(unparse("\a\b\t\n\v\f\r"), R"(\a\b\t\n\v\f\r)");
    EXPECT_EQ(unparse("\6\16\x1F\x7F\x80\xFF\0"sv), R"(\x06\x0E\x1F\x7F\x80\xFF\x00)");
    EXPECT_EQ(unparse(R"(a'b"c?d\e ~)"), R"(a\'b\"c\?d\\e ~)");
    EXPECT_EQ(unparse(""), "");
}

TEST(EscapeUnparse, StopsBeforeTheFirstItemThatDoesNotFit) {
    const auto expect = [](size_t capacity, std::string_view in, std::string_view buffer,
                           size_t size) {
        const Result result = unparse_into(capacity, in);
        EXPECT_THAT(result.errors, ElementsAre(Pair(120066, "")));
        EXPECT_EQ(result.buffer, buffer);
        EXPECT_EQ(result.size, size);
    };
    expect(4, "\1", "\0###"sv, 1);
    expect(5, "ab\1c", "ab\0##"sv, 3);
    expect(4, "ab\n", "ab\0#"sv, 3);
    expect(4, "abcd", "abc\0"sv, 4);
    expect(2, "\n", "\0#"sv, 1);
    expect(1, "a", "\0"sv, 1);
    expect(0, "a", "", 1); // nothing is written beyond a buffer that has no room at all
    EXPECT_EQ(unparse_into(5, "\1").buffer, "\\x01\0"sv);
    EXPECT_EQ(unparse_into(3, "\n").buffer, "\\n\0"sv);
}

TEST(Escape, ParsingWhatWasUnparsedGivesEveryByteBack) {
    const std::string bytes = every_byte();
    EXPECT_EQ(parse(unparse(bytes)), bytes);
    for (const char c : bytes) // a digit behind an escape is not taken for a part of it
        EXPECT_EQ(parse(unparse(std::string{c, 'A', c, '7'})), (std::string{c, 'A', c, '7'}));
}

TEST(EscapeSteps, ScanHexStopsAtItsLimitsAndNeedsADigit) {
    const auto scan = [](std::string_view text, int digits) {
        const char *at = text.data();
        uint32_t value = 99;
        kestu_error_t *err = scan_hex(&at, text.data() + text.size(), digits, &value);
        const bool failed = err != nullptr;
        EXPECT_THAT(take_chain(err), testing::SizeIs(failed ? 1 : 0));
        return std::tuple{failed, value, at - text.data()};
    };
    EXPECT_EQ(scan("1aF", 4), std::tuple(false, 0x1AF, 3));
    EXPECT_EQ(scan("12345", 4), std::tuple(false, 0x1234, 4));
    EXPECT_EQ(scan("9g", 4), std::tuple(false, 9, 1));
    EXPECT_EQ(scan("g", 4), std::tuple(true, 0, 0));
    EXPECT_EQ(scan("", 4), std::tuple(true, 0, 0));
    EXPECT_EQ(scan("1", 0), std::tuple(true, 0, 0));
}

TEST(EscapeSteps, CodePointsBecomeUtf8WhereThereIsRoom) {
    const auto convert = [](uint32_t code, size_t room) {
        char bytes[5] = "####";
        char *at = bytes;
        size_t measured = room;
        const int result = convert_from_ucs(code, &at, &room);
        EXPECT_EQ(convert_from_ucs(code, nullptr, &measured), result);
        EXPECT_EQ(measured, room);
        EXPECT_STREQ(at, std::string(static_cast<size_t>(bytes + 4 - at), '#').c_str());
        return std::tuple{result, std::string(bytes, at), room};
    };
    EXPECT_EQ(convert(0x7F, 4), std::tuple(1, "\x7F", 3));
    EXPECT_EQ(convert(0x80, 4), std::tuple(1, "\u0080", 2));
    EXPECT_EQ(convert(0xFFFD, 3), std::tuple(1, "\uFFFD", 0));
    EXPECT_EQ(convert(0x10000, 4), std::tuple(1, "\U00010000", 0));
    EXPECT_EQ(convert(0x10FFFF, 4), std::tuple(1, "\U0010FFFF", 0));
    EXPECT_EQ(convert(0x110000, 4), std::tuple(-1, "", 4));
    EXPECT_EQ(convert(0xFFFF, 0), std::tuple(1, "", 0));
    EXPECT_EQ(convert('a', 0), std::tuple(0, "", 0));
    EXPECT_EQ(convert(0x10000, 3), std::tuple(0, "", 3));
}

TEST(EscapeTables, UniCodeIsCodePage437) {
    const iconv_t converter = iconv_open("UTF-16LE", "CP437");
    ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
    for (unsigned byte = 0; byte < 256; ++byte) {
        char in = static_cast<char>(byte);
        uint16_t code = 0;
        char *from = &in;
        char *to = reinterpret_cast<char *>(&code);
        size_t left = 1;
        size_t room = sizeof code;
        ASSERT_EQ(iconv(converter, &from, &left, &to, &room), 0);
        EXPECT_EQ(UniCode[byte], code) << byte;
    }
    iconv_close(converter);
}

TEST(EscapeTables, ClassesOfBytes) {
    const auto members = [](uint32_t classes) {
        std::string bytes;
        for (int byte = 0; byte < 256; ++byte)
            if (CharSet[byte] == classes)
                bytes += static_cast<char>(byte);
        return bytes;
    };
    const std::string bytes = every_byte();
    EXPECT_EQ(members(0x01), "GHIJKLMNOPQRSTUVWXYZ_ghijklmnopqrstuvwxyz" + bytes.substr(128, 27) +
                                 bytes.substr(160, 8));
    EXPECT_EQ(members(0x02), "0123456789");
    EXPECT_EQ(members(0x05), "ABCDEFabcdef");
    EXPECT_EQ(members(0x08), "\0\n\\"s);
    EXPECT_EQ(members(0x18), "?");
    EXPECT_EQ(members(0x10), "\"'(),.;[]{}~");
    EXPECT_EQ(members(0x20), "!#%&*+-/:<=>^|");
    EXPECT_EQ(members(0x40), "\t\v\f\r ");
    EXPECT_EQ(members(0x00).size(), 256 - 76 - 10 - 12 - 3 - 1 - 12 - 14 - 5);
    EXPECT_EQ(CharSet[256], 0);
}
