// Chains as lines, and the texts of codes.
#include "support/test.hpp"

using namespace kestu::test;

namespace {

std::string line_of(int type, int code, const char *message, const char *file = nullptr,
                    const char *function = nullptr) {
    const auto lines =
        take_lines(kestu_error_create_i(type, code, 12, file, function, nullptr, message));
    return lines.size() == 1 ? lines[0] : "not one line";
}

} // namespace

TEST(Report, LinesHaveKindCodeTextAndPlace) {
    EXPECT_EQ(line_of(0, 120012, nullptr), "Error(120012): Failed to allocate memory ");
    EXPECT_EQ(line_of(1, 1, nullptr), "Warning(1): Warning ");
    EXPECT_EQ(line_of(0, 0, nullptr), "Error: Unknown KesTU error (code=0) ");
    EXPECT_EQ(line_of(3, -5, nullptr), "Assert(-5): Unknown KesTU error (code=-5) ");
    EXPECT_EQ(line_of(2, 7, "m"), "Malfunction(7): m ");
    EXPECT_EQ(line_of(9, 7, "m"), "(7): m ");
    EXPECT_EQ(line_of(4, 7, "m"), "m ");
    EXPECT_EQ(line_of(4, 120037, nullptr),
              "The call is not implemented of applicable for such IO type. ");
    EXPECT_EQ(line_of(0, 0, "m", "dir/a.c", "f"), "Error: m [a.c(12), f]");
    EXPECT_EQ(line_of(4, 0, "m", "a.c", "f"), "m [a.c(12), f]");
    EXPECT_EQ(line_of(0, 0, "m", "a.c"), "Error: m ");
    EXPECT_EQ(line_of(0, 0, "m", nullptr, "f"), "Error: m ");
    EXPECT_EQ(line_of(0, 0, ""), "Error:  ");
}

TEST(Report, TextsOfCodesThatAreEasilyMixedUp) {
    EXPECT_EQ(line_of(4, 120010, nullptr), "Incorrect number of elements ");
    EXPECT_EQ(line_of(4, 120013, nullptr), "Failed to allocate memory ");
    EXPECT_EQ(line_of(4, 120171, nullptr), "Thread Level was not reported by Leaf 0xB ");
    EXPECT_EQ(line_of(4, 120190, nullptr), "Invalid size of bit array ");
    EXPECT_EQ(line_of(4, 120191, nullptr), "Unknown KesTU error (code=120191) ");
    EXPECT_EQ(line_of(4, 124999, nullptr), "Unknown KesTU error (code=124999) ");
}

TEST(Report, PiecesAndLinesAreCutAtTheirBounds) {
    EXPECT_EQ(line_of(4, 0, std::string(4104, 'x').c_str()), std::string(4104, 'x') + " ");
    EXPECT_EQ(line_of(4, 0, std::string(4105, 'x').c_str()), std::string(4105, 'x'));
    EXPECT_EQ(line_of(4, 0, std::string(9000, 'x').c_str()), std::string(4105, 'x'));
    const std::string function(2000, 'f');
    EXPECT_EQ(line_of(4, 0, std::string(9000, 'x').c_str(), "a.c", function.c_str()),
              (std::string(4105, 'x') + "[a.c(12), " + function).substr(0, 5095));
}

TEST(Report, OnlyRepeatedCodesWithoutMessageAreLeftOut) {
    kestu_error_t *err = nullptr;
    for (const char *message : {"one", "", "two", "", "three", ""})
        err =
            kestu_error_create_i(4, 120031, 0, nullptr, nullptr, err, *message ? message : nullptr);
    err = kestu_error_create_i(4, 120032, 0, nullptr, nullptr, err, nullptr);
    EXPECT_THAT(take_lines(err), ElementsAre("Cannot write to IO stream. ",
                                             "Cannot read IO stream. ", "three ", "two ", "one "));
}

// A long chain is sorted by its codes, of which all bytes count.
TEST(Report, RepeatedCodesAreLeftOutOfLongChainsWithAndWithoutMemory) {
    for (const bool scarce : {false, true}) {
        std::vector<std::string> expected;
        kestu_error_t *err = nullptr;
        for (int i = 0; i < 600; ++i) {
            const int code = -(i % 70) * 0x01020304;
            err = kestu_error_create_i(4, code, 0, nullptr, nullptr, err,
                                       i % 7 == 0 ? "own" : nullptr);
        }
        std::set<int> seen;
        for (const kestu_error_t *e = err; e; e = e->child)
            if (e->message || seen.insert(e->code).second)
                expected.push_back(
                    e->message ? "own "
                               : "Unknown KesTU error (code=" + std::to_string(e->code) + ") ");
        std::vector<std::string> lines;
        {
            AllocFailure failure(scarce ? 1 : 1000000, only_one);
            lines = take_lines(err);
        }
        EXPECT_EQ(lines, expected);
    }
}

TEST(Report, HandingNullCallsNothing) {
    EXPECT_EQ(kestu_error_handle(nullptr, nullptr, nullptr), nullptr);
}

TEST(Report, TheStandardHandlerWritesLinesToItsStream) {
    char *text = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&text, &size);
    EXPECT_EQ(kestu_error_stdhandler("a line", stream), 7);
    fclose(stream);
    EXPECT_STREQ(text, "a line\n");
    free(text);
    testing::internal::CaptureStderr();
    kestu_error_stdhandler("to stderr", nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "to stderr\n");
}

TEST(RegisteredTexts, TheLowestFreeCodeIsHandedOut) {
    int codes[3];
    for (int &code : codes)
        EXPECT_EQ(kestu_error_register(&code, ("text " + std::to_string(&code - codes)).c_str()),
                  nullptr);
    EXPECT_THAT(codes, ElementsAre(125000, 125001, 125002));
    EXPECT_EQ(line_of(0, 125001, nullptr), "Error(125001): text 1 ");
    EXPECT_OK(kestu_error_deregister(125001));
    EXPECT_OK(kestu_error_deregister(125000));
    EXPECT_OK(kestu_error_deregister(5));
    EXPECT_OK(kestu_error_deregister(-2147483647 - 1));
    EXPECT_EQ(line_of(0, 125001, nullptr), "Error(125001): Unregistered error ");
    EXPECT_EQ(line_of(0, 2147483647, nullptr), "Error(2147483647): Unregistered error ");
    int again = 0;
    kestu_error_register(&again, "again");
    EXPECT_EQ(again, 125000);
    EXPECT_EQ(line_of(0, 125000, nullptr), "Error(125000): again ");
}
