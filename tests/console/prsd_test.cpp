// Splitting lines into parameters, and what the record carries from one line to the next.
#include "fuzz/prsd_model.hpp"
#include "support/test.hpp"

using namespace kestu::test;

namespace {

class Parser : public testing::Test {
  protected:
    Parser() { kestu_prsd_clear_p(&prsd); }

    // Parses the lines into a cleared record; every parameter is shown as its kind and value.
    std::vector<std::string> parse(const std::vector<std::string> &lines,
                                   const char *separators = " ") {
        kestu_prsd_clear_p(&prsd);
        for (const std::string &line : lines)
            EXPECT_OK(kestu_prsd_parse_p(&prsd, line.c_str(), separators, pool));
        return shown();
    }

    std::vector<std::string> shown() const {
        std::vector<std::string> result;
        for (int i = 0; i < prsd.n; ++i)
            result.push_back(show(prsd.params[i]));
        return result;
    }

    static std::string show(const kestu_prsd_param_t &param) {
        char number[32];
        std::snprintf(number, sizeof number, "%g", param.d);
        const std::string all[] = {std::to_string(param.i), number, param.s ? param.s : "-"};
        return "ids"[param.type - 1] + (":" + all[param.type - 1]);
    }

    Pool pool;
    kestu_prsd_t prsd;
};

} // namespace

TEST_F(Parser, ParametersAreClassified) {
    EXPECT_THAT(parse({"1 2.5 abc"}), ElementsAre("i:1", "d:2.5", "s:abc"));
    EXPECT_EQ(prsd.n, 3);
    const struct {
        const char *text, *shown;
    } cases[] = {
        {"-0012", "i:-12"},
        {"+7", "i:7"},
        {"4294967296", "i:0"}, // an int keeps the low 32 bits
        {"9223372036854775807", "i:-1"},
        {"9223372036854775808", "d:9.22337e+18"},
        {"0x10", "d:16"},
        {"-0x1p-1", "d:-0.5"},
        {".5", "d:0.5"},
        {"1e3", "d:1000"},
        {"inf", "d:inf"},
        {"-InFinity", "d:-inf"},
        {"Nan", "d:nan"},
        {"nan(7)", "d:nan"},
        {"1e999", "s:1e999"}, // beyond both kinds of number
        {"1e-400", "s:1e-400"},
        {"1a", "s:1a"},
        {"+", "s:+"},
        {"-x", "s:-x"},
        {"info", "s:info"},
        {"nil", "s:nil"},
        {"e5", "s:e5"},
        {"/", "s:/"},
        {"\xff", "s:\xff"},
        {"\" 12\"", "i:12"}, // conversions skip white space in front, and none behind
        {"\" -2.5\"", "d:-2.5"},
        {"\"12 \"", "s:12 "},
        {"\" \"", "s: "},
        {"\" word\"", "s: word"},
    };
    for (const auto &c : cases)
        EXPECT_THAT(parse({c.text}), ElementsAre(c.shown)) << c.text;
}

TEST_F(Parser, AnyLinesAreSplitAsByAPlainParser) {
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::string> lines(2 + random() % 4);
        lines[0] = std::vector<std::string>{" ", ";,", "", "\xe9", "\"\\"}[random() % 5];
        for (size_t i = 1; i < lines.size(); ++i)
            for (size_t length = random() % 12; length > 0; --length)
                lines[i] += " \";,\\\xe9"
                            "ab1.-e"[random() % 12];
        kestu::fuzz::compare_parsers(lines);
    }
}

TEST_F(Parser, TheStateIsCarriedIntoTheNextLine) {
    EXPECT_THAT(parse({"a", "\"b c\""}), ElementsAre("s:a", "s:\"b", "s:c\""));
    EXPECT_THAT(parse({"\"a b", "c d\" e "}), ElementsAre("s:a b", "s:c d", "s:e"));
    EXPECT_THAT(parse({"1 \\", "\"2 3\""}), ElementsAre("i:1", "s:2 3"));
    kestu_prsd_clear_p(&prsd);
    EXPECT_EQ(prsd.state, KESTU_PRSD_BETWEEN);
    EXPECT_EQ(prsd.params, nullptr);
}

TEST_F(Parser, TakesAnyNumberOfParameters) {
    constexpr int many = 12345;
    std::vector<std::string> expected;
    for (int i = 0; i < many; ++i) {
        ASSERT_OK(kestu_prsd_parse_p(&prsd, (std::to_string(i) + " ").c_str(), " ", pool));
        ASSERT_EQ(prsd.room, 9 - i % 10);
        expected.push_back("i:" + std::to_string(i));
    }
    EXPECT_EQ(shown(), expected);
    for (int i = 0; i < many; ++i)
        EXPECT_EQ(kestu_prsd_text(&prsd, i), std::to_string(i));
    EXPECT_EQ(kestu_prsd_text(&prsd, -1), nullptr);
    EXPECT_EQ(kestu_prsd_text(&prsd, many), nullptr);
}

TEST_F(Parser, TellsHowAParameterWasWritten) {
    parse({"007 \"2024\" 1e1 \"a", " b\" word"});
    std::vector<std::string> written;
    for (int i = 0; i < prsd.n; ++i)
        written.push_back((kestu_prsd_is_quoted(&prsd, i) ? "quoted " : "") +
                          std::string(kestu_prsd_text(&prsd, i)));
    EXPECT_THAT(written, ElementsAre("007", "quoted 2024", "1e1", "quoted a", "quoted  b", "word"));
    EXPECT_FALSE(kestu_prsd_is_quoted(&prsd, 6));
}

TEST_F(Parser, TakesParametersOfAnyLength) {
    for (const size_t length : {999u, 1000u, 1001u, 1u << 20}) {
        const std::string word(length, 'w');
        const std::string digits = std::string(length, '0') + "42";
        const std::vector<std::string> expected{"s:" + word, "s:" + word + " ", "i:42", "d:42.5"};
        EXPECT_TRUE(parse({word + " \"" + word + " \" " + digits + " " + digits + ".5"}) ==
                    expected);
    }
}

TEST_F(Parser, WithoutMemoryKeepsWhatItHas) {
    ASSERT_OK(kestu_prsd_parse_p(&prsd, "a b \"", " ", pool));
    const std::string huge(1 << 24, 'h'); // more than pools keep for later
    const std::string line = huge + "\" c";
    const auto fail_once = [&] {
        AllocFailure failure(1, pools_too);
        return kestu_prsd_parse_p(&prsd, line.c_str(), " ", pool);
    };
    EXPECT_CHAIN(fail_once(), 120012, "Can't parse string.",
                 "Failed to allocate 16777217 bytes of memory.");
    EXPECT_THAT(shown(), ElementsAre("s:a", "s:b"));
    EXPECT_EQ(prsd.room, 8);
    EXPECT_EQ(prsd.state, KESTU_PRSD_QUOTED);
    ASSERT_OK(kestu_prsd_parse_p(&prsd, line.c_str(), " ", pool));
    const std::vector<std::string> expected{"s:a", "s:b", "s:" + huge, "s:c"};
    EXPECT_TRUE(shown() == expected);
}
