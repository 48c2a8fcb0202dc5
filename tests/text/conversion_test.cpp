// Texts to numbers, by the C library's rules and by strict ones, and doubles to texts.
#include "support/test.hpp"

#include <cfenv>
#include <charconv>

using namespace kestu::test;

namespace {

std::string cut_message(const char *s, const char *word, const char *reason = "") {
    return "Cannot convert string '" + std::string(s) + "' to " + word + reason;
}

} // namespace

TEST(StrConversion, WholeNumbers) {
    int n = 0;
    for (const auto &[text, value] : {std::pair{"42", 42},
                                      {" \t\n42", 42},
                                      {"+7", 7},
                                      {"-0012", -12},
                                      {"2147483648", INT32_MIN},
                                      {"4294967296", 0},
                                      {"9223372036854775807", -1}}) {
        EXPECT_OK(kestu_str_to_integer(text, &n));
        EXPECT_EQ(n, value) << text;
    }
    int64_t wide = 0;
    EXPECT_OK(kestu_str_to_int64("-9223372036854775808", &wide));
    EXPECT_EQ(wide, INT64_MIN);
    double real = 0;
    for (const auto &[text, value] :
         {std::pair{"1.5", 1.5}, {" -2e3", -2000.0}, {"0x1p-3", 0.125}, {"inf", HUGE_VAL}}) {
        EXPECT_OK(kestu_str_to_double(text, &real));
        EXPECT_EQ(real, value) << text;
    }
}

TEST(StrConversion, WhatIsNoNumberIsRefusedAndStoresNothing) {
    int n = 77;
    int64_t wide = 77;
    double real = 77;
    for (const char *text : {"", " ", "+", "42 ", "4 2", "0x10", "1.0", "ten"}) {
        EXPECT_CHAIN(kestu_str_to_integer(text, &n), 120062, cut_message(text, "integer"));
        EXPECT_CHAIN(kestu_str_to_int64(text, &wide), 120062, cut_message(text, "int64"));
    }
    for (const char *text : {"", " ", ".", "1.5 ", "1.5x", "e3"})
        EXPECT_CHAIN(kestu_str_to_double(text, &real), 120063, cut_message(text, "double"));
    const std::string reason = std::string(": ") + strerror(ERANGE);
    // Out of range comes before what stands behind the number.
    for (const char *text :
         {"99999999999999999999", "-99999999999999999999", "99999999999999999999x"}) {
        EXPECT_CHAIN(kestu_str_to_integer(text, &n), 120062,
                     cut_message(text, "integer", reason.c_str()));
        EXPECT_CHAIN(kestu_str_to_int64(text, &wide), 120062,
                     cut_message(text, "int64", reason.c_str()));
    }
    for (const char *text : {"1e999", "-1e999", "1e-999", "1e-320"})
        EXPECT_CHAIN(kestu_str_to_double(text, &real), 120063,
                     cut_message(text, "double", reason.c_str()));
    EXPECT_EQ(n, 77);
    EXPECT_EQ(wide, 77);
    EXPECT_EQ(real, 77);
}

TEST(StrConversion, NumbersAreThoseOfTheCLibraryInEveryRounding) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        for (size_t length = random() % (i % 2 ? 9 : 30); text.size() < length;)
            text += "000123456789.-+e"[random() % (i % 3 ? 13 : 16)];
        fesetround(i % 8 ? FE_TONEAREST : FE_UPWARD);
        char *end = nullptr;
        errno = 0;
        const double real = std::strtod(text.c_str(), &end);
        const bool is_real = errno == 0 && !text.empty() && *end == '\0';
        const long whole = std::strtol(text.c_str(), &end, 10);
        const bool is_whole = errno != ERANGE && !text.empty() && *end == '\0';
        double real_read = 0;
        int64_t whole_read = 0;
        kestu_error_t *real_err = kestu_str_to_double(text.c_str(), &real_read);
        kestu_error_t *whole_err = kestu_str_to_int64(text.c_str(), &whole_read);
        ASSERT_TRUE(is_real ? !real_err && real == real_read : real_err != nullptr) << text;
        ASSERT_TRUE(is_whole ? !whole_err && whole == whole_read : whole_err != nullptr) << text;
        kestu_error_clear(real_err);
        kestu_error_clear(whole_err);
    }
    fesetround(FE_TONEAREST);
}

TEST(StrConversion, IntegersAreASignAndDigits) {
    for (const char *text : {"0", "-0012", "+7", "123456789012345678901234567890"})
        EXPECT_EQ(kestu_str_is_integer(text), 1) << text;
    for (const char *text : {"", "+", "-", "+-1", "1.0", " 1", "1 ", "0x1", "1a", "\xB2"})
        EXPECT_EQ(kestu_str_is_integer(text), 0) << text;
}

TEST(StrStrict, TheEndsOfEachTypeAreReadAndWhatLiesBeyondIsNot) {
    const std::string reason = std::string(": ") + strerror(ERANGE);
    int n = 77;
    int64_t wide = 77;
    uint64_t natural = 77;
    for (const char *text : {"2147483648", "-2147483649", "4294967297", "99999999999999999999"})
        EXPECT_CHAIN(kestu_str_strict_integer(text, &n), 120062,
                     cut_message(text, "integer", reason.c_str()));
    for (const char *text : {"9223372036854775808", "-9223372036854775809"})
        EXPECT_CHAIN(kestu_str_strict_int64(text, &wide), 120062,
                     cut_message(text, "int64", reason.c_str()));
    for (const char *text : {"-1", "18446744073709551616", "184467440737095516150"}) {
        EXPECT_CHAIN(kestu_str_strict_uint64(text, &natural), 120062,
                     cut_message(text, "uint64", reason.c_str()));
        EXPECT_CHAIN(kestu_str_to_uint64(text, &natural), 120062,
                     cut_message(text, "uint64", reason.c_str()));
    }
    for (const char *text : {"", " 1", "1 ", "+", "+-1", "0x1", "1.0", "99999999999999999999x"}) {
        EXPECT_CHAIN(kestu_str_strict_integer(text, &n), 120062, cut_message(text, "integer"));
        EXPECT_CHAIN(kestu_str_strict_int64(text, &wide), 120062, cut_message(text, "int64"));
        EXPECT_CHAIN(kestu_str_strict_uint64(text, &natural), 120062, cut_message(text, "uint64"));
    }
    EXPECT_TRUE(n == 77 && wide == 77 && natural == 77);
    EXPECT_OK(kestu_str_strict_integer("-2147483648", &n));
    EXPECT_EQ(n, INT32_MIN);
    EXPECT_OK(kestu_str_strict_int64("-9223372036854775808", &wide));
    EXPECT_EQ(wide, INT64_MIN);
    EXPECT_OK(kestu_str_strict_uint64("+018446744073709551615", &natural));
    EXPECT_EQ(natural, UINT64_MAX);
    EXPECT_OK(kestu_str_to_uint64(" \t-0", &natural));
    EXPECT_EQ(natural, 0u);
}

TEST(StrStrict, DoublesAreDecimalAndFinite) {
    const std::string reason = std::string(": ") + strerror(ERANGE);
    double real = 77;
    for (const char *text : {"", " 1", "1 ", ".", "e3", "0x1p3", "+-1", "1,5", "1e", "--1"})
        EXPECT_CHAIN(kestu_str_strict_double(text, &real), 120063, cut_message(text, "double"));
    for (const char *text : {"1e999", "-1e309", "1e-999", "-0.0001e-400"})
        EXPECT_CHAIN(kestu_str_strict_double(text, &real), 120063,
                     cut_message(text, "double", reason.c_str()));
    EXPECT_EQ(real, 77);
    for (const auto &[text, value] : {std::pair{"+1.5", 1.5},
                                      {"-.5e1", -5.0},
                                      {"5e-324", 5e-324},
                                      {"-0.0e-999", -0.0},
                                      {"-inf", -HUGE_VAL}}) {
        EXPECT_OK(kestu_str_strict_double(text, &real));
        EXPECT_EQ(real, value) << text;
    }
}

// Values near powers of two, where the neighbours stand at different distances, and decimal ones.
TEST(StrShortest, DoublesAreWrittenAsTheStandardWritesThem) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 300000; ++i) {
        const uint64_t bits = random();
        const double decimal =
            static_cast<double>(bits % 1000000) * std::pow(10, bits % 600 - 300.0);
        const double value = i % 3 == 0   ? std::bit_cast<double>(bits)
                             : i % 3 == 1 ? std::bit_cast<double>(bits & 0xFFF0000000000001)
                                          : decimal;
        char text[KESTU_STR_DOUBLE_SIZE], wanted[32] = {};
        std::to_chars(std::begin(wanted), std::end(wanted), value);
        ASSERT_EQ(kestu_str_from_double(value, text, sizeof text), strlen(wanted));
        ASSERT_STREQ(text, wanted);
        double read = 0;
        ASSERT_OK(kestu_str_strict_double(text, &read));
        ASSERT_TRUE(read == value || std::isnan(value)) << text;
    }
    char cut[4] = "???";
    EXPECT_EQ(kestu_str_from_double(0.125, cut, 0), 5u);
    EXPECT_STREQ(cut, "???");
    EXPECT_EQ(kestu_str_from_double(0.125, cut, sizeof cut), 5u);
    EXPECT_STREQ(cut, "0.1");
}
