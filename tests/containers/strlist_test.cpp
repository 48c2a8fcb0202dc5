// Lists of strings and the tokenizer.
#include "support/test.hpp"

using namespace kestu::test;

namespace {

using Strings = std::vector<std::string>;

class StrlistTest : public testing::Test {
  protected:
    kestu_strlist_t *list(const Strings &strings = {}) {
        kestu_strlist_t *result = nullptr;
        EXPECT_OK(kestu_strlist_create(&result, pool));
        for (const std::string &string : strings)
            EXPECT_OK(kestu_strlist_addlast(result, string.c_str(), pool));
        return result;
    }

    Strings tokens(const Strings &text, const char *separators) {
        kestu_strlist_t *result = list({"from before"});
        EXPECT_OK(kestu_strlist_tokenize(list(text), result, separators, pool));
        return strings(result);
    }

    static Strings strings(kestu_strlist_t *list) {
        Strings result;
        for (int i = 0; const char *string = kestu_strlist_getn(list, i); ++i)
            result.emplace_back(string);
        EXPECT_EQ(kestu_strlist_nelts(list), static_cast<int>(result.size()));
        return result;
    }

    Pool pool;
};

} // namespace

TEST_F(StrlistTest, AddsAtBothEndsAndFindsByNumberAndText) {
    kestu_strlist_t *l = list();
    EXPECT_EQ(kestu_strlist_is_exists(l, ""), 0);
    char text[] = "b";
    ASSERT_OK(kestu_strlist_addlast(l, text, pool));
    text[0] = 'x'; // the list has a copy
    ASSERT_OK(kestu_strlist_addlast(l, "c", pool));
    ASSERT_OK(kestu_strlist_addfirst(l, "a", pool));
    ASSERT_OK(kestu_strlist_addfirst(l, "", pool));
    EXPECT_THAT(strings(l), ElementsAre("", "a", "b", "c"));
    EXPECT_EQ(kestu_strlist_getn(l, 4), nullptr);
    EXPECT_EQ(kestu_strlist_getn(l, -1), nullptr);
    EXPECT_EQ(kestu_strlist_is_exists(l, "a"), 1);
    EXPECT_EQ(kestu_strlist_is_exists(l, "ab"), 0);
    kestu_strlist_destroy(l);
    EXPECT_THAT(strings(l), IsEmpty());
    ASSERT_OK(kestu_strlist_addfirst(l, "again", pool));
    EXPECT_THAT(strings(l), ElementsAre("again"));
}

TEST_F(StrlistTest, CopyingReplacesButAnEmptySourceChangesNothing) {
    kestu_strlist_t *l = list({"1", "2", "3"});
    ASSERT_OK(kestu_strlist_copy(l, list(), pool));
    EXPECT_THAT(strings(l), ElementsAre("1", "2", "3"));
    ASSERT_OK(kestu_strlist_copy(l, list({"x", "y"}), pool));
    ASSERT_OK(kestu_strlist_copy(l, l, pool));
    EXPECT_THAT(strings(l), ElementsAre("x", "y"));
}

// The second string does not fit into the first block of a pool, and another pool has all that are
// left from others.
TEST_F(StrlistTest, ACopyWithoutMemoryIsEmpty) {
    kestu_strlist_t *l = list({"1"}), *source = list({"z", std::string(10000, 'z')});
    const Pool small;
    kestu_error_t *err =
        Pool().without_memory([&] { return kestu_strlist_copy(l, source, small); });
    EXPECT_CHAIN(err, 120012, "Cannot copy list of strings.",
                 "Failed to allocate 10001 bytes of memory.");
    EXPECT_THAT(strings(l), IsEmpty());
}

TEST_F(StrlistTest, SplitsTextAcrossStrings) {
    EXPECT_THAT(tokens({"a b  c"}, " "), ElementsAre("a", "b", "c"));
    EXPECT_THAT(tokens({"  ", "", " "}, " "), IsEmpty());
    EXPECT_THAT(tokens({"ab", "cd"}, " "), ElementsAre("abcd"));
    EXPECT_THAT(tokens({"ab\n", "cd"}, " \n"), ElementsAre("ab", "cd"));
    EXPECT_THAT(tokens({"x \"y z\" w"}, " "), ElementsAre("x", "y z", "w"));
    EXPECT_THAT(tokens({"\"\" a"}, " "), ElementsAre("a"));
    EXPECT_THAT(tokens({"\"ab\"cd"}, " "), ElementsAre("ab", "cd"));
    EXPECT_THAT(tokens({"a\"b c\"d"}, " "), ElementsAre("a\"b", "c\"d"));
    EXPECT_THAT(tokens({"\"ab c"}, " "), ElementsAre("ab c"));
    EXPECT_THAT(tokens({"\"a ", "b\" c"}, " "), ElementsAre("a b", "c"));
    EXPECT_THAT(tokens({"a\"b\"c"}, "\""), ElementsAre("a", "b", "c")) << "a separator first";
    EXPECT_THAT(tokens({"\xE9\xFFz\xE9"}, "\xFF"), ElementsAre("\xE9", "z\xE9"));
}

TEST_F(StrlistTest, TokensHaveNoLimitInLengthOrNumberAndLeaveNothingBehind) {
    const std::string part(100000, 'p');
    std::string many;
    for (int i = 0; i < 100000; ++i)
        many += "t ";
    kestu_strlist_t *text = list({many}), *found = list();
    const long before = live_blocks();
    EXPECT_THAT(tokens({part, part + " " + part}, " "), ElementsAre(part + part, part));
    ASSERT_OK(kestu_strlist_tokenize(text, found, " ", pool));
    EXPECT_EQ(kestu_strlist_nelts(found), 100000);
    EXPECT_EQ(live_blocks(), before);
}

TEST_F(StrlistTest, SplittingNothingIsRefused) {
    kestu_strlist_t *l = list({"kept"});
    EXPECT_CHAIN(kestu_strlist_tokenize(list(), l, "", pool), 120060,
                 "Cannot tokenize string: incorrect number of tokens [0].");
    EXPECT_CHAIN(kestu_strlist_tokenize(list(), l, " ", pool), 120061, "");
    EXPECT_THAT(strings(l), ElementsAre("kept"));
}

TEST_F(StrlistTest, NullListsAreEmptyAndNullStringsStayNull) {
    kestu_strlist_t *none = nullptr, *l = list({"a"});
    kestu_strlist_clear(none);
    EXPECT_EQ(kestu_strlist_getn(none, 0), nullptr);
    EXPECT_EQ(kestu_strlist_nelts(none), 0);
    EXPECT_EQ(kestu_strlist_is_exists(none, "a"), 0);
    EXPECT_OK(kestu_strlist_copy(l, none, pool));
    EXPECT_CHAIN(kestu_strlist_addfirst(none, "a", pool), 120051, "");
    EXPECT_CHAIN(kestu_strlist_addlast(none, "a", pool), 120051, "");
    EXPECT_CHAIN(kestu_strlist_copy(none, l, pool), 120051, "Cannot copy list of strings.", "");
    EXPECT_CHAIN(kestu_strlist_tokenize(none, l, " ", pool), 120061, "");
    EXPECT_CHAIN(kestu_strlist_tokenize(l, l, nullptr, pool), 120060,
                 "Cannot tokenize string: incorrect number of tokens [0].");
    EXPECT_OK(kestu_strlist_addfirst(l, nullptr, pool));
    EXPECT_OK(kestu_strlist_addlast(l, "b c", pool));
    kestu_strlist_t *copy = list();
    EXPECT_OK(kestu_strlist_copy(copy, l, pool));
    EXPECT_EQ(kestu_strlist_nelts(copy), 3);
    EXPECT_EQ(kestu_strlist_getn(copy, 0), nullptr);
    EXPECT_EQ(kestu_strlist_is_exists(copy, "b c"), 1);
    EXPECT_EQ(kestu_strlist_is_exists(copy, nullptr), 0);
    EXPECT_OK(kestu_strlist_tokenize(copy, copy, " ", pool)); // in place
    EXPECT_THAT(strings(copy), ElementsAre("ab", "c"));
}

TEST_F(StrlistTest, NoMemoryKeepsTheTokensFoundBefore) {
    const std::string longer(50, 'c');
    // The second token of the second text outgrows what the first one took.
    kestu_strlist_t *texts[] = {list({"a b"}), list({"a b", longer})};
    kestu_strlist_t *found[] = {list(), list()};
    kestu_error_t *errors[2] = {};
    for (const size_t failing : {1, 2}) {
        AllocFailure failure(failing);
        errors[failing - 1] =
            kestu_strlist_tokenize(texts[failing - 1], found[failing - 1], " ", pool);
    }
    EXPECT_CHAIN(errors[0], 120013, "Failed to tokenize strings.",
                 "Failed to reallocate memory for 1 bytes.");
    EXPECT_CHAIN(errors[1], 120013, "Failed to tokenize strings.",
                 "Failed to reallocate memory for 51 bytes.");
    EXPECT_THAT(strings(found[0]), IsEmpty());
    EXPECT_THAT(strings(found[1]), ElementsAre("a"));
}
