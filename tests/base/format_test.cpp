// The formatting engine: exact texts where it settles or departs from C99, and the C library's own
// output everywhere else.
#include "fuzz/format_model.hpp"
#include "support/test.hpp"

#include "base/decimal.hpp"
#include "base/digits.hpp"

#include <bit>
#include <cstdarg>
#include <cwchar>

using namespace kestu;
using namespace kestu::test;

namespace {

// What a call printed and returned, "-1 <errno> <text>" when it failed. Formats are not checked by
// the compiler, so that the tests can use what it does not know.
std::string printed(const char *format, ...) {
    char text[1000];
    va_list args;
    va_start(args, format);
    errno = 0;
    const int length = rpl_vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (length < 0)
        return "-1 " + std::string(errno == EOVERFLOW ? "EOVERFLOW " : "ERANGE ") + text;
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(static_cast<size_t>(length), std::string(text).size());
    return text;
}

// What a call without a buffer returns.
int measured(const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vsnprintf(nullptr, 0, format, args);
    va_end(args);
    return length;
}

} // namespace

TEST(Format, StringsAndCharacters) {
    const char *none = nullptr;
    EXPECT_EQ(printed("%05s|%+ #'s", "abc", "abc"), "  abc|abc");
    EXPECT_EQ(printed("%s|%8s|%-8s|%.3s|%ls", none, none, none, none, none),
              "(null)|  (null)|(null)  |(nu|(null)");
    EXPECT_EQ(printed("%c|%5c|%-5c|%05c|%.0c", 'x', 'x', 'x', 'x', 'x'), "x|x|x|x|x");
    EXPECT_EQ(printed("%%|%5%|%-5%|%"), "%|%|%|");
    const char unterminated[] = {'a', 'b', 'c'};
    EXPECT_EQ(printed("%.3s|%.*s", unterminated, 2, unterminated), "abc|ab");
    char text[4] = "???";
    EXPECT_EQ(rpl_snprintf(text, sizeof text, "a%cb", '\0'), 3);
    EXPECT_EQ(std::string(text, 4), std::string("a\0b\0", 4));
}

TEST(Format, WideStringsComeOutInUtf8) {
    EXPECT_EQ(printed("%ls|%lc|%5ls|%-3lc|", L"aé€😀", L'é', L"é", L'€'), "aé€😀|é|   é|€|");
    EXPECT_EQ(printed("%.1ls|%.2ls|%.4ls|%.5ls|%4.3ls|", L"é€", L"é€", L"é€", L"é€", L"é€"),
              "|é|é|é€|  é|");
    EXPECT_EQ(printed("%lc|%lc", static_cast<wint_t>(0xD800), static_cast<wint_t>(0x110000)),
              "\uFFFD|\uFFFD");
    const wchar_t unterminated[] = {L'a', L'é'};
    EXPECT_EQ(printed("%.3ls", unterminated), "aé");
}

TEST(Format, UnknownConversionsPrintNothingAndTakeNoArgument) {
    EXPECT_EQ(printed("a%yb%d", 7), "ab7");
    EXPECT_EQ(printed("%-08.3lkx|%qd|%I64d|%hy|%\x80|%d", 7), "x|d|64d|||7");
    EXPECT_EQ(printed("%*y%d", 5, 7), "7");
    EXPECT_EQ(printed("%.-5d%d", 7), "5d7");
}

TEST(Format, AFormatThatEndsInASpecificationEndsThere) {
    for (const char *cut :
         {"abc%", "abc%-", "abc%5", "abc%5.", "abc%.3", "abc%l", "abc%hh", "abc%L"})
        EXPECT_EQ(printed(cut), "abc") << cut;
    EXPECT_EQ(printed("abc%*", 5), "abc");
    EXPECT_EQ(printed(""), "");
}

TEST(Format, NegativeArgumentsAlignLeftOrAreNoPrecision) {
    EXPECT_EQ(printed("%0*d|%.*d|%.*s|%.*f", -4, 7, -3, 7, -1, "abc", INT_MIN, 1.5),
              "7   |7|abc|1.500000");
}

TEST(Format, AnyConversionPrintsAsInTheCLibrary) {
    std::mt19937_64 random(1);
    for (int round = 0; round < 300000; ++round) {
        uint64_t words[8];
        for (uint64_t &word : words)
            word = random();
        fuzz::Input input(reinterpret_cast<const uint8_t *>(words), sizeof words);
        fuzz::compare_any(input);
    }
    EXPECT_EQ(printed("%f|%g|%e|%d", 0.0, -0.0, 0.0, INT_MIN),
              "0.000000|-0|0.000000e+00|-2147483648");
}

TEST(Format, GroupsOfThreeDigits) {
    EXPECT_EQ(printed("%'d|%'d|%'d|%'d|%'d", 0, 999, 1000, -1234567, INT_MIN),
              "0|999|1,000|-1,234,567|-2,147,483,648");
    EXPECT_EQ(printed("%'lu|%'x|%'#X|%'#o", UINT64_MAX, 0x12345u, 0xABCDEFu, 01234567u),
              "18,446,744,073,709,551,615|12,345|0XABC,DEF|01,234,567");
    EXPECT_EQ(printed("%'12d|%-'12d|%'012d|%'+012d", 1234567, 1234567, 1234567, 1234567),
              "   1,234,567|1,234,567   |0001,234,567|+001,234,567");
    EXPECT_EQ(printed("%'.5d|%'.6d|%'12.7d|%'.0d|", 12, 1234, -12, 0),
              "00,012|001,234|  -0,000,012||");
    EXPECT_EQ(
        printed("%'.2f|%'014.2f|%'g|%'.9g|%'e", 1234567.891, 1234567.891, 123456.0, 1234567.0, 1e9),
        "1,234,567.89|001,234,567.89|123,456|1,234,567|1.000000e+09");
    EXPECT_EQ(printed("%'.0f|%'.20g", 18446744073709549568.0, 5e19),
              "18,446,744,073,709,549,568|50,000,000,000,000,000,000");
}

TEST(Format, InfinityAndNotANumberArePaddedAsText) {
    const double inf = INFINITY;
    EXPECT_EQ(printed("%f|%F|%e|%E|%g|%G|%a|%A", inf, inf, inf, inf, inf, inf, inf, inf),
              "inf|INF|inf|INF|inf|INF|inf|INF");
    EXPECT_EQ(printed("%e|%E|%+f|% f|%+F|%f", NAN, NAN, NAN, NAN, inf, -inf),
              "nan|NAN|+nan| nan|+INF|-inf");
    EXPECT_EQ(printed("%06f|%-6f|%+06.1f|%f", inf, inf, inf, -NAN), "   inf|inf   |  +inf|-nan");
}

TEST(Format, FloatsDepartFromC99WhereTheyShould) {
    EXPECT_EQ(printed("%a|%A|%.1a|%Ld|%La|%LF", 1.5, 1.5, 1.5, -5, 1.5, 1.5),
              "1.500000|1.500000|1.5|-5|1.500000|1.500000");
    EXPECT_EQ(printed("%.25f|%.25e", 0.5, 0.5), "0.5000000000000000000|5.0000000000000000000e-01");
    EXPECT_EQ(printed("%.19f", 0.1), "0.1000000000000000056");
    EXPECT_EQ(printed("%.99g|%.20g", 1.1, 1.1), "1.1000000000000000888|1.1000000000000000888");
    EXPECT_EQ(printed("%.17g|%.30g|%.30g", 0.00012345678901234567, 0.1, 1e22),
              "0.0001234567890123457|0.1000000000000000056|1e+22");
    EXPECT_EQ(printed("%.20g|%#.20g", 5e19, 0.125), "50000000000000000000|0.1250000000000000000");
    // Below 1e-308 the exponent stays and the digits begin with zeros.
    EXPECT_EQ(
        printed("%e|%.19e|%g|%.0e|%g", 1e-310, 4.9406564584124654e-324, 1e-310, 9e-309, 5e-324),
        "0.010000e-308|0.0000000000000004941e-308|0.01e-308|1e-308|0e-308");
}

TEST(Format, AlternativeFormsKeepPointAndZeros) {
    EXPECT_EQ(printed("%#g|%#.0g|%#.0f|%#.0e|%#g|%#g", 1.0, 1.0, 1.0, 1.0, 999999.5, 0.0),
              "1.00000|1.|1.|1.e+00|1.00000e+06|0.00000");
}

// All bits are compared here, so that values that 128 bits cannot tell from a tie are checked too.
TEST(Format, RoundedDigitsAreTheNearest) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 20000; ++round) {
        const double value = std::bit_cast<double>(random() >> 1);
        if (!std::isfinite(value))
            continue;
        const int places = static_cast<int>(random() % (max_places + 1));
        const Binary binary = to_binary(value);
        const auto [digits, exponent] = round_scientific(binary, places);
        const auto above = compare_with_halves(binary, places - exponent, 2 * digits + 1);
        const auto below = digits > 0
                               ? compare_with_halves(binary, places - exponent, 2 * digits - 1)
                               : std::strong_ordering::greater;
        ASSERT_TRUE(above <= 0 && below >= 0) << value;
        ASSERT_TRUE((above != 0 && below != 0) || digits % 2 == 0) << value;
        ASSERT_LT(digits, Uint128{10} * powers_of_ten[static_cast<size_t>(places)]) << value;
        if (exponent > min_exponent) {
            ASSERT_GE(digits, powers_of_ten[static_cast<size_t>(places)]) << value;
        }
    }
}

TEST(Format, LengthsAreStoredInTheWidthAskedFor) {
    signed char in_char[2] = {0, 77};
    short in_short[2] = {0, 77};
    int in_int[2] = {0, 77};
    int64_t in_64 = -1;
    EXPECT_EQ(printed("%300s%hhn%hn%n", "", in_char, in_short, in_int).size(), 300u);
    EXPECT_EQ(in_char[0], 300 - 256);
    EXPECT_EQ(in_short[0], 300);
    EXPECT_EQ(in_int[0], 300);
    EXPECT_EQ(in_char[1] + in_short[1] + in_int[1], 3 * 77);
    for (const char *format : {"abcd%ln", "abcd%lln", "abcd%jn", "abcd%tn", "abcd%zn"}) {
        in_64 = -1;
        EXPECT_EQ(printed(format, &in_64), "abcd");
        EXPECT_EQ(in_64, 4) << format;
    }
    EXPECT_EQ(printed("ab%Ln", in_int), "ab");
    EXPECT_EQ(in_int[0], 2);
    // What is cut off counts too.
    char text[3];
    EXPECT_EQ(rpl_snprintf(text, sizeof text, "hello%n", in_int), 5);
    EXPECT_EQ(in_int[0], 5);
}

TEST(Format, TheTextIsCutAtTheBufferAndNothingBehindIsTouched) {
    const std::string whole = "plain text, 1,234,567 <  +1.50>        0x00ff (null) 1.5e+300 é";
    for (size_t size = 0; size <= whole.size() + 2; ++size) {
        std::string buffer(100, '#');
        const int length =
            rpl_snprintf(buffer.data(), size, "plain text, %'d <%+7.2f>%*s0x%04x %s %g %ls",
                         1234567, 1.5, 8, "", 255u, static_cast<char *>(nullptr), 1.5e300, L"é");
        EXPECT_EQ(static_cast<size_t>(length), whole.size());
        const size_t stored = size > 0 ? std::min(size - 1, whole.size()) : 0;
        std::string expected = whole.substr(0, stored) + (size > 0 ? std::string(1, '\0') : "");
        expected.resize(buffer.size(), '#');
        EXPECT_EQ(buffer, expected) << size;
    }
    EXPECT_EQ(measured("%s", "hello"), 5);
    char text[20];
    EXPECT_EQ(rpl_snprintf(text, SIZE_MAX, "%s, %d", "hello", 5), 8);
    EXPECT_STREQ(text, "hello, 5");
}

TEST(Format, NumbersThatAreTooLargeEndTheText) {
    EXPECT_EQ(printed("ab%fcd", 1e20), "-1 EOVERFLOW ab");
    EXPECT_EQ(printed("ab%.0fcd", 0x1p64), "-1 EOVERFLOW ab");
    EXPECT_EQ(printed("%a%s", -1e300, "x"), "-1 EOVERFLOW ");
    EXPECT_EQ(printed("%.0f", std::nextafter(0x1p64, 0)), "18446744073709549568");
    EXPECT_EQ(printed("ab%99999999999dcd", 1), "-1 EOVERFLOW ab");
    EXPECT_EQ(printed("ab%2147483648y", 1), "-1 EOVERFLOW ab");
    EXPECT_EQ(printed("ab%.2147483648s", "x"), "-1 EOVERFLOW ab");
    EXPECT_EQ(printed("ab%18446744073709551617d", 1), "-1 EOVERFLOW ab");
    EXPECT_EQ(printed("ab%*d", INT_MIN, 1), "-1 EOVERFLOW ab");
    EXPECT_EQ(printed("%.2147483647s", "x"), "x");
}

TEST(Format, LengthsBeyondIntFail) {
    char text[4];
    errno = 0;
    EXPECT_EQ(rpl_snprintf(text, sizeof text, "%2147483646dx", 1), -1);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_STREQ(text, "   ");
    EXPECT_EQ(measured("%2147483646d", 1), 2147483646);
    EXPECT_EQ(measured("%-2147483647s", ""), -1);
    EXPECT_EQ(measured("%.*d%.*d%.*d", INT_MAX, 1, INT_MAX, 1, INT_MAX, 1), -1);
    // The mark of a number that is too large comes first.
    errno = 0;
    EXPECT_EQ(measured("%2147483647d%f", 1, 1e20), -1);
    EXPECT_EQ(errno, EOVERFLOW);
}

TEST(FormatToNewStrings, LengthsAroundTheBufferOfDrafts) {
    for (const size_t length : {0u, 1u, 510u, 511u, 512u, 513u, 5000u}) {
        const std::string text(length, 'x');
        char *made = nullptr;
        EXPECT_EQ(rpl_asprintf(&made, "%s", text.c_str()), static_cast<int>(length));
        EXPECT_EQ(made, text);
        free(made);
        EXPECT_EQ(kestu_str_asprintf(&made, "%d%s", 7, text.c_str()), static_cast<int>(length) + 1);
        EXPECT_EQ(made, "7" + text);
        free(made);
    }
}

TEST(FormatToNewStrings, FailuresAreTold) {
    char untouched[] = "untouched";
    char *made = untouched;
    errno = 0;
    EXPECT_EQ(rpl_asprintf(&made, "%f", 1e20), -1);
    EXPECT_EQ(errno, EOVERFLOW);
    EXPECT_EQ(made, untouched);
    for (const char *format : {"%d", "%600d"}) {
        AllocFailure failure(1);
        made = untouched;
        EXPECT_EQ(rpl_asprintf(&made, format, 1), -1);
        EXPECT_EQ(errno, ENOMEM);
        EXPECT_EQ(made, nullptr);
    }
}
