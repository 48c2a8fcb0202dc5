// Bounded copies, comparison, lengths, trimming, replacement and text in pools.
#include "support/on_kernel.hpp"
#include "support/test.hpp"
#include "text/compare.hpp"
#include "text/length.hpp"

#include <sys/mman.h>

using namespace kestu::test;
using kestu::compare_dispatch;

namespace {

// A copy of a text whose terminator is the last byte before memory that must not be touched, but
// for `behind` bytes; or that begins as many bytes behind such memory.
class EdgeText {
  public:
    explicit EdgeText(const std::string &text, size_t behind = 0, bool at_front = false) {
        constexpr size_t page = 4096;
        size_ = (text.size() + behind + page) / page * page + 2 * page;
        memory_ = static_cast<char *>(
            mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        memset(memory_, '#', size_); // what stands behind the end is not looked at
        mprotect(memory_, page, PROT_NONE);
        mprotect(memory_ + size_ - page, page, PROT_NONE);
        start_ = memory_ + (at_front ? page + behind : size_ - page - behind - text.size() - 1);
        memcpy(start_, text.c_str(), text.size() + 1);
    }
    ~EdgeText() { munmap(memory_, size_); }
    EdgeText(const EdgeText &) = delete;
    EdgeText &operator=(const EdgeText &) = delete;
    operator const char *() const { return start_; }

  private:
    char *memory_;
    char *start_;
    size_t size_;
};

std::string take_text(char *text) {
    const std::string copy = text ? text : "(none)";
    free(text);
    return copy;
}

std::string trimmed(std::string text) {
    EXPECT_EQ(kestu_str_trim(text.data()), text.data());
    return text.c_str();
}

} // namespace

TEST(StrBounded, CopiesAndAppendsWithinEverySize) {
    const std::string source = "abcdefgh";
    for (size_t length = 0; length <= source.size(); ++length) {
        const char *src = source.c_str() + source.size() - length;
        for (size_t size = 0; size < 12; ++size) {
            std::string target(16, '#');
            EXPECT_EQ(kestu_str_strlcpy(target.data(), src, size), length);
            std::string expected = size > 0 ? std::string(src).substr(0, size - 1) + '\0' : "";
            expected.resize(16, '#');
            EXPECT_EQ(target, expected);

            for (const std::string head : {"", "xy", "uvwxyz"}) {
                target = head + '\0';
                target.resize(16, '#');
                const bool ends = head.size() < size;
                EXPECT_EQ(kestu_str_strlcat(target.data(), src, size),
                          std::min(head.size(), size) + length);
                expected = ends ? (head + src).substr(0, size - 1) + '\0' : head + '\0';
                expected.resize(16, '#');
                EXPECT_EQ(target, expected) << head << size;
            }
        }
    }
}

class StrComparison : public OnKernel<kestu::CompareKernel, compare_dispatch> {
  protected:
    // Short texts never come to the kernel by the public function.
    static int compare(const char *s1, const char *s2) {
        const int result = GetParam().compare(s1, s2);
        EXPECT_EQ(kestu_str_stricmp(s1, s2), result);
        return result;
    }
};
INSTANTIATE_TEST_SUITE_P(Kernels, StrComparison, testing::ValuesIn(compare_dispatch.all()),
                         name_of_kernel);

TEST_P(StrComparison, BytesAreFoldedAndSigned) {
    EXPECT_EQ(compare("ABC", "abd"), -1);
    EXPECT_EQ(compare("abc", "ab"), 99);
    EXPECT_EQ(compare("\xE9", "a"), -23 - 97);
    EXPECT_EQ(compare("", ""), 0);
    const auto fold = [](int c) {
        return static_cast<signed char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    };
    const std::string tail = " and a tail that is longer than a register";
    // Alone, and behind so much that other registers were compared before.
    for (const std::string &head : {std::string(), std::string(20, 'x'), std::string(60, 'x')})
        for (int a = 0; a < 256; ++a)
            for (int b = 0; b < 256; ++b) {
                const std::string s1 = head + static_cast<char>(a) + (a ? tail : "");
                const std::string s2 = head + static_cast<char>(b) + (b ? tail : "");
                ASSERT_EQ(compare(s1.c_str(), s2.c_str()), fold(a) - fold(b)) << a << " " << b;
            }
}

TEST_P(StrComparison, NothingBesideThePagesOfATextIsRead) {
    for (size_t length = 0; length < 100; ++length) {
        std::string upper(length, 'K');
        const std::string lower(length, 'k');
        const EdgeText edge(upper);
        for (const size_t shift : {0, 1, 7, 15, 16, 31, 32, 40}) {
            const EdgeText other(lower, shift);
            ASSERT_EQ(compare(edge, other), 0);
            ASSERT_EQ(compare(other, edge), 0);
            const EdgeText front(lower, shift, true);
            ASSERT_EQ(compare(edge, front), 0);
            ASSERT_EQ(compare(front, edge), 0);
        }
        for (size_t place = 0; place < length; ++place) {
            upper[place] = 'm';
            ASSERT_EQ(compare(EdgeText(upper), edge), 2);
            upper[place] = 'K';
        }
    }
}

TEST_P(StrComparison, LongTextsThatMeetPagesAtDifferentPlaces) {
    const std::string lower(20000, 'z');
    const std::string upper(20000, 'Z');
    for (const size_t shift : {0, 1, 7, 15, 16, 31, 33, 100}) {
        const EdgeText a(lower);
        const EdgeText b(upper, shift);
        EXPECT_EQ(compare(a, b), 0) << shift;
        EXPECT_EQ(compare(a, EdgeText(upper + "!", shift)), -'!') << shift;
    }
}

TEST(StrLength, BytesAndCharacters) {
    EXPECT_EQ(kestu_str_len(""), 0);
    EXPECT_EQ(kestu_str_len("aé"), 3);
    EXPECT_EQ(kestu_str_utf8_len(""), 0u);
    EXPECT_EQ(kestu_str_utf8_len("é"), 1u);
    EXPECT_EQ(kestu_str_utf8_len("a€😀z"), 4u);
    EXPECT_EQ(kestu_str_utf8_len("\x80\xBF\xC0\xFF\x7F"), 3u);
}

TEST(StrLength, CharactersOfTextsOfAnyLengthAndBytes) {
    std::mt19937_64 random(1);
    std::string text;
    for (const size_t length :
         {1, 7, 8, 9, 15, 16, 17, 31, 33, 4079, 4080, 4081, 4096, 8160, 100000}) {
        // Mostly bytes that begin characters, so that counts come near what a register's bytes
        // hold.
        text.resize(length);
        size_t expected = 0;
        for (char &c : text) {
            c = static_cast<char>(random() % 8 ? random() % 127 + 1 : random() % 255 + 1);
            expected += (c & 0xC0) != 0x80;
        }
        for (const kestu::LengthKernel &kernel : kestu::length_dispatch.all()) {
            if (kernel.needs && !(kestu::cpu_features().*kernel.needs))
                continue;
            for (const size_t behind : {0, 1, 70, 150, 230, 300})
                EXPECT_EQ(kernel.characters(EdgeText(text, behind)), expected) << kernel.name;
        }
    }
    EXPECT_EQ(kestu_str_utf8_len(std::string(1 << 20, 'a').c_str()), 1u << 20);
    EXPECT_EQ(kestu_str_utf8_len(std::string(1 << 20, '\x80').c_str()), 0u);
}

TEST(StrTrim, WhiteSpaceAtBothEndsGoes) {
    EXPECT_EQ(kestu_str_trim(nullptr), nullptr);
    EXPECT_EQ(trimmed("  a b  "), "a b");
    EXPECT_EQ(trimmed("   "), "");
    EXPECT_STREQ(kestu_str_trim(const_cast<char *>("")), "");
    EXPECT_EQ(trimmed("x"), "x");
    EXPECT_EQ(trimmed("\t\n\v\f\r x\xA0 \r\n"), "x\xA0");
}

TEST(StrReplace, AllOccurrencesOrTheFirst) {
    struct Case {
        const char *s, *from, *to, *all, *first;
    };
    for (const auto &[s, from, to, all, first] :
         {Case{"aXbXc", "X", "YY", "aYYbYYc", "aYYbXc"}, Case{"aa", "a", "aa", "aaaa", "aaa"},
          Case{"aaa", "aa", "b", "ba", "ba"}, Case{"XX", "X", "", "", "X"},
          Case{"abc", "abc", "x", "x", "x"}, Case{"abc", "abcd", "x", "abc", "abc"},
          Case{"", "a", "b", "", ""}, Case{"abc", "", "x", "abc", "xabc"}}) {
        EXPECT_EQ(take_text(kestu_str_replace_all(s, from, to)), all) << s;
        EXPECT_EQ(take_text(kestu_str_replace(s, from, to)), first) << s;
    }
    EXPECT_EQ(take_text(kestu_str_replace_all("abc", nullptr, "x")), "abc");
    EXPECT_EQ(take_text(kestu_str_replace_all("abc", "a", nullptr)), "abc");
}

TEST(StrReplace, TextsOfAnyLengthAndDensity) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 30000; ++i) {
        const size_t letters = 1 + random() % 3;
        const auto word = [&](size_t most) {
            std::string text(random() % most, ' ');
            for (char &c : text)
                c = "abc"[random() % letters];
            return text;
        };
        const std::string text = word(random() % 8 ? 300 : 3000);
        const std::string from = "abc"[random() % letters] + word(random() % 8 ? 4 : 90);
        const std::string to = word(random() % 4 ? 6 : 100);
        std::string expected;
        size_t rest = 0;
        for (size_t at = 0; (at = text.find(from, rest)) != text.npos; rest = at + from.size())
            expected += text.substr(rest, at - rest) + to;
        expected += text.substr(rest);
        ASSERT_EQ(take_text(kestu_str_replace_all(EdgeText(text), from.c_str(), to.c_str())),
                  expected);
    }
}

TEST(StrReplace, NoMemoryYieldsNullAndLeavesNothing) {
    for (const char *from : {"a", "zz"}) {
        AllocFailure failure(1, all_after);
        errno = 77;
        const bool refused = !kestu_str_replace_all("banana", from, "xy") &&
                             !kestu_str_replace("banana", from, "xy");
        EXPECT_TRUE(refused && errno == 77);
    }
}

TEST(StrReplace, CharactersInPlace) {
    std::string text = "banana";
    EXPECT_EQ(kestu_str_replace_char(text.data(), 'a', '\xFF'), text.data());
    EXPECT_EQ(text, "b\xFFn\xFFn\xFF");
    EXPECT_STREQ(kestu_str_replace_char(text.data(), 'n', 'n'), text.c_str());
    EXPECT_STREQ(kestu_str_replace_char(text.data(), '\0', 'x'), text.c_str());
    kestu_str_replace_char(text.data(), 'n', '\0'); // the text ends there
    EXPECT_EQ(text, "b\xFF\0\xFFn\xFF"s);
}

TEST(StrInPools, TextsOfAnyLength) {
    Pool pool;
    EXPECT_STREQ(kestu_str_psprintf(pool, "%d of %s", 3, "x"), "3 of x");
    EXPECT_STREQ(kestu_str_psprintf(pool, "%s", ""), "");
    for (const size_t length : {511u, 512u, 513u, 100000u}) {
        const std::string text(length, 'x');
        EXPECT_EQ(kestu_str_psprintf(pool, "%s!", text.c_str()), text + "!");
    }
}

TEST(StrInPools, FailuresYieldNull) {
    Pool pool;
    errno = 0;
    EXPECT_EQ(kestu_str_psprintf(pool, "%f", 1e20), nullptr);
    EXPECT_EQ(errno, EOVERFLOW);
    EXPECT_EQ(pool.without_memory([&] { return kestu_str_psprintf(pool, "%d", 5); }), nullptr);
    EXPECT_EQ(pool.without_memory([&] { return kestu_str_psprintf(pool, "%5000d", 5); }), nullptr);
}
