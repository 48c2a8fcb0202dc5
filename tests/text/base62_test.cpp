// Integers as text in any base up to 62, and back.
#include "support/test.hpp"

#include <cctype>
#include <charconv>

using namespace kestu::test;

namespace {

std::string text_of(int64_t value, int base) {
    char text[66] = "";
    const int length = kestu_str_int64_to_base62(value, base, text, sizeof text);
    EXPECT_EQ(static_cast<size_t>(length), std::strlen(text));
    return text;
}

// The number and how many characters were read for it.
std::tuple<int64_t, long> number_in(const char *text, int base) {
    int64_t value = 12345;
    char *end = nullptr;
    EXPECT_OK(kestu_str_base62_to_int64(text, &end, base, &value)) << text;
    return {value, end - text};
}

// The limit that is stored instead of a number that does not fit.
int64_t limit_for(const char *text, int base) {
    int64_t value = 12345;
    char untouched = 0;
    char *end = &untouched;
    const std::string quoted = std::string(1, '\'') + text + '\'';
    EXPECT_CHAIN(kestu_str_base62_to_int64(text, &end, base, &value), 120062,
                 quoted + " does not fit into 64-bit signed integer.");
    EXPECT_EQ(end, &untouched);
    return value;
}

using Read = std::tuple<int64_t, long>;

} // namespace

TEST(Base62, NumbersToText) {
    EXPECT_EQ(text_of(61, 62), "z");
    EXPECT_EQ(text_of(-62, 62), "-10");
    EXPECT_EQ(text_of(10, 36), "A");
    EXPECT_EQ(text_of(36, 37), "a");
    EXPECT_EQ(text_of(0, 2), "0");
    EXPECT_EQ(text_of(INT64_MAX, 10), "9223372036854775807");
    EXPECT_EQ(text_of(INT64_MIN, 10), "-9223372036854775808");
    EXPECT_EQ(text_of(INT64_MIN, 2), "-1" + std::string(63, '0'));
    EXPECT_EQ(text_of(INT64_MIN, 16), "-8000000000000000");
}

TEST(Base62, TextIsCutToTheRoomAndItsFullLengthReturned) {
    char text[4] = "###";
    EXPECT_EQ(kestu_str_int64_to_base62(-123, 10, text, 3), 4);
    EXPECT_STREQ(text, "-1");
    EXPECT_EQ(kestu_str_int64_to_base62(7, 10, text, 1), 1);
    EXPECT_STREQ(text, "");
    text[0] = '#';
    EXPECT_EQ(kestu_str_int64_to_base62(7, 10, text, 0), 1);
    EXPECT_EQ(text[0], '#');
}

TEST(Base62, AnImpossibleBaseWritesNothing) {
    for (const int base : {63, 1, 0, -10}) {
        char text[] = "#";
        EXPECT_EQ(kestu_str_int64_to_base62(5, base, text, sizeof text), 0);
        EXPECT_STREQ(text, "#");
    }
}

TEST(Base62, TextToNumbers) {
    EXPECT_EQ(number_in(" -zz", 62), Read(-3843, 4));
    EXPECT_EQ(number_in("\t\n\v\f\r +12.5", 10), Read(12, 9));
    EXPECT_EQ(number_in("12", 3), Read(5, 2));
    EXPECT_EQ(number_in("123", 3), Read(5, 2));
    EXPECT_EQ(number_in("Zz", 36), Read(35, 1));
    EXPECT_EQ(number_in("9223372036854775807", 10), Read(INT64_MAX, 19));
    EXPECT_EQ(number_in("-9223372036854775808", 10), Read(INT64_MIN, 20));
    EXPECT_EQ(number_in("-0", 10), Read(0, 2));
    int64_t value = 0;
    EXPECT_OK(kestu_str_base62_to_int64("77", nullptr, 8, &value));
    EXPECT_EQ(value, 63);
}

TEST(Base62, PrefixesChooseTheBase) {
    EXPECT_EQ(number_in("0x1F", 0), Read(31, 4));
    EXPECT_EQ(number_in("-0X1F", 16), Read(-31, 5));
    EXPECT_EQ(number_in("1F", 16), Read(31, 2));
    EXPECT_EQ(number_in("017", 0), Read(15, 3));
    EXPECT_EQ(number_in("018", 0), Read(1, 2));
    EXPECT_EQ(number_in("0", 0), Read(0, 1));
    EXPECT_EQ(number_in("19", 0), Read(19, 2));
    EXPECT_EQ(number_in("0x1F", 10), Read(0, 1));
    EXPECT_EQ(number_in("0x1", 62), Read(59 * 62 + 1, 3));
}

// The prefix is not a number by itself: lower-case letters are never hexadecimal digits.
TEST(Base62, NoDigitIsNoError) {
    EXPECT_EQ(number_in("0xff", 0), Read(0, 0));
    EXPECT_EQ(number_in("0x", 16), Read(0, 0));
    EXPECT_EQ(number_in("  -", 10), Read(0, 0));
    EXPECT_EQ(number_in("", 0), Read(0, 0));
    EXPECT_EQ(number_in("- 5", 10), Read(0, 0));
    EXPECT_EQ(number_in("5", -10), Read(0, 0));
    EXPECT_EQ(number_in("00", 1), Read(0, 2));
    EXPECT_EQ(number_in("1\xFF", 1000), Read(1, 1));
}

TEST(Base62, NumbersThatDoNotFitGiveTheLimit) {
    EXPECT_EQ(limit_for("9223372036854775808", 10), INT64_MAX);
    EXPECT_EQ(limit_for("-9223372036854775809", 10), INT64_MIN);
    EXPECT_EQ(limit_for(" 18446744073709551616", 10), INT64_MAX); // 2^64, where a word turns over
    EXPECT_EQ(limit_for("-18446744073709551617rest", 10), INT64_MIN);
    EXPECT_EQ(limit_for("0x8000000000000000", 0), INT64_MAX);
    EXPECT_EQ(limit_for("zzzzzzzzzzzzzzzzzzzzzzzzzz", 62), INT64_MAX);
    EXPECT_EQ(limit_for(("1" + std::string(63, '0')).c_str(), 2), INT64_MAX);
}

TEST(Base62, EveryBaseGivesEveryNumberBack) {
    std::mt19937_64 random(62);
    for (int base = 2; base <= 62; ++base)
        for (int bit = 0; bit < 64; ++bit)
            for (int64_t value :
                 {static_cast<int64_t>(random() >> bit), INT64_MIN >> bit, INT64_MAX >> bit}) {
                const std::string text = text_of(value, base);
                ASSERT_EQ(number_in(text.c_str(), base), Read(value, text.size())) << base;
                if (base > 36)
                    continue;
                char peer[66];
                char *end = std::to_chars(peer, peer + sizeof peer, value, base).ptr;
                std::transform(peer, end, peer, [](unsigned char c) { return std::toupper(c); });
                ASSERT_EQ(text, std::string(peer, end)) << base;
            }
}
