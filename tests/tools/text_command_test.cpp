// `kestu escape`, `kestu unescape` and `kestu base` as a user runs them.
#include "support/process.hpp"
#include "support/test.hpp"

using namespace kestu::test;

TEST(Escape, AnyBytesComeBackThroughPrintableText) {
    std::string bytes;
    for (int round = 0; round < 300; ++round)
        for (int byte = 0; byte < 256; ++byte)
            bytes += static_cast<char>(byte * (round % 7 + 1));
    const Ran escaped = run_kestu({"escape"}, bytes);
    EXPECT_EQ(escaped.status, 0);
    EXPECT_EQ(escaped.out.find_first_not_of("\n", escaped.out.size() - 1), std::string::npos);
    for (size_t i = 0; i + 1 < escaped.out.size(); ++i)
        ASSERT_TRUE(isprint(static_cast<unsigned char>(escaped.out[i]))) << i;
    EXPECT_TRUE(run_kestu({"unescape"}, escaped.out).out == bytes);
    EXPECT_EQ(run_kestu({"unescape"}, run_kestu({"escape"}, "").out).out, "");
}

TEST(Escape, EachArgumentIsALine) {
    EXPECT_EQ(run_kestu({"escape", "a\"b", "tab\there", ""}).out, "a\\\"b\ntab\\there\n\n");
    EXPECT_EQ(run_kestu({"unescape", "\\x41\\u20ac\\n", "\\101\n"}).out, "A\xe2\x82\xac\nA\n");
}

TEST(Escape, ABadEscapeFails) {
    const Ran ran = run_kestu({"unescape", "good\\n", "bad\\x"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, "good\n");
    EXPECT_THAT(ran.err, HasSubstr("Error(120064)"));
}

TEST(Base, WritesIntegersInAnyBase) {
    EXPECT_EQ(run_kestu({"base", "62", "61", "-62", "0", "+3843"}).out, "z\n-10\n0\nzz\n");
    EXPECT_EQ(run_kestu({"base", "2", "-9223372036854775808"}).out,
              "-1" + std::string(63, '0') + "\n");
    EXPECT_EQ(run_kestu({"base", "10", "--from", "16", "0xFF", "7FFFFFFFFFFFFFFF"}).out,
              "255\n9223372036854775807\n");
    EXPECT_EQ(run_kestu({"base", "--from", "62", "10", "--", "-zz"}).out, "-3843\n");
}

TEST(Base, RefusesWhatIsNoNumberInTheBase) {
    for (const char *value : {"", "12a", "x", "1 ", "9223372036854775808"}) {
        const Ran ran = run_kestu({"base", "16", "5", value, "17"});
        EXPECT_EQ(ran.status, 1) << value;
        EXPECT_EQ(ran.out, "5\n11\n");
        EXPECT_THAT(ran.err, HasSubstr(value));
    }
    for (const char *base : {"1", "63", "x"})
        EXPECT_EQ(run_kestu({"base", base, "5"}).status, 2);
}
