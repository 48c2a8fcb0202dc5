// Formats and what fits them. That others do not compile is seen by refused.sh.
#include "kestu.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using kestu::detail::Fault;
using kestu::detail::fault_of;
using View = std::string_view;

static_assert(fault_of<>("100 %%") == Fault::none);
static_assert(fault_of<int, short, char, bool, unsigned char>("%d%d%d%i%u") == Fault::none);
static_assert(fault_of<unsigned, int, long>("%u %x %lo") == Fault::none);
static_assert(fault_of<long, long long, size_t, std::ptrdiff_t>("%ld%lld%zu%td") == Fault::none);
static_assert(fault_of<short, unsigned char>("%hd%hhx") == Fault::none);
static_assert(fault_of<float, double, double>("%f%-+ #0'10.3lg%A") == Fault::none);
static_assert(fault_of<char, int, wchar_t>("%c%c%lc") == Fault::none);
static_assert(fault_of<char[4], std::string, const char *, View>("%s%s%s%.*s") == Fault::none);
static_assert(fault_of<int, int, char *, const wchar_t *>("%*.*s%ls") == Fault::none);
static_assert(fault_of<int *, void *, const char *>("%p%p%p") == Fault::none);

static_assert(fault_of<>("%d") == Fault::too_few_arguments);
static_assert(fault_of<int>("%*d") == Fault::too_few_arguments);
static_assert(fault_of<int>("%%") == Fault::too_many_arguments);
static_assert(fault_of<long>("%d") == Fault::wrong_argument);
static_assert(fault_of<int>("%ld") == Fault::wrong_argument);
static_assert(fault_of<int>("%hd") == Fault::wrong_argument);
static_assert(fault_of<int>("%u") == Fault::wrong_argument);
static_assert(fault_of<unsigned>("%d") == Fault::wrong_argument);
static_assert(fault_of<int>("%f") == Fault::wrong_argument);
static_assert(fault_of<double>("%d") == Fault::wrong_argument);
static_assert(fault_of<long double>("%f") == Fault::wrong_argument);
static_assert(fault_of<int>("%s") == Fault::wrong_argument);
static_assert(fault_of<wchar_t *>("%s") == Fault::wrong_argument);
static_assert(fault_of<char *>("%ls") == Fault::wrong_argument);
static_assert(fault_of<View>("%.*d") == Fault::wrong_argument);
static_assert(fault_of<View>("%s") == Fault::view_without_precision);
static_assert(fault_of<View>("%.3s") == Fault::view_without_precision);
static_assert(fault_of<long, char *>("%*s") == Fault::layout_is_no_int);
static_assert(fault_of<int>("%2147483648d") == Fault::layout_is_too_large);
static_assert(fault_of<int>("%2147483647d") == Fault::none);
static_assert(fault_of<int>("%n") == Fault::unknown_conversion);
static_assert(fault_of<double>("%Lf") == Fault::unknown_conversion);
static_assert(fault_of<int>("%1$d") == Fault::unknown_conversion);
static_assert(fault_of<int>("%") == Fault::unknown_conversion);

TEST(Format, PrintsWhatTheEngineDoes) {
    const std::string text = "text";
    EXPECT_EQ(kestu::format("%'d|%5.1f|%-6s|%.*s|%c|%zu", 1234567, 2.25F, text, View("abcd", 2),
                            'x', text.size()),
              "1,234,567|  2.2|text  |ab|x|4");
    EXPECT_EQ(kestu::format("%.*s", View()), "");
    EXPECT_EQ(kestu::format("%s%s", "", std::string(1000, 'x')), std::string(1000, 'x'));
    EXPECT_EQ(kestu::format("%s", std::string(255, 'y')).size(), 255);
    EXPECT_EQ(kestu::format("%s", std::string(256, 'y')), std::string(256, 'y'));
    char few[4];
    EXPECT_EQ(kestu::format_to(few, "%d", 123456), 6);
    EXPECT_STREQ(few, "123");
}

TEST(Format, TellsWhatTheEngineCannotDo) {
    char few[4];
    EXPECT_THROW(kestu::format("%f", 1e30), kestu::Error);
    EXPECT_FALSE(kestu::format(std::nothrow, "%f", 1e30));
    EXPECT_FALSE(kestu::format_to(std::nothrow, few, "%f", 1e30));
    EXPECT_EQ(errno, EOVERFLOW);
}

} // namespace
