// Chains as JSON, and finding codes in them.
#include "support/test.hpp"

#include <fstream>

using namespace kestu::test;

namespace {

kestu_error_t *chain() {
    kestu_error_t *err = kestu_error_create_i(0, KESTU_ERR_OPEN, 12, "a/reader.c", "load", nullptr,
                                              "\"a\\b\" \x01 h\xC3\xA9 \xC3( \xED\xA0\x80");
    err = kestu_error_create_i(KESTU_ERROR_PLAIN, 0, 0, nullptr, nullptr, err, nullptr);
    return kestu_error_create_i(77, 3, 0, nullptr, nullptr, err, "");
}

constexpr const char *chain_text =
    R"({"errors":[{"kind":"other","code":3,"message":""},{"kind":"plain","code":0},)"
    R"({"kind":"error","code":120030,"text":"IO stream cannot be opened.",)"
    R"("message":"\"a\\b\" \u0001 hé \ufffd( \ufffd\ufffd\ufffd",)"
    R"("file":"reader.c","line":12,"function":"load"}]})";

int add_line(const char *line, void *text) {
    *static_cast<std::string *>(text) += std::string(line) + "\n";
    return 0;
}

TEST(ErrorJson, IsOneObjectAChainWhateverTheBytes) {
    const Pool pool;
    kestu_error_t *err = chain();
    EXPECT_STREQ(kestu_error_to_json(err, pool), chain_text);
    EXPECT_STREQ(kestu_error_to_json(nullptr, pool), R"({"errors":[]})");
    std::string lines;
    EXPECT_EQ(kestu_error_handle_json(err, add_line, &lines), err);
    EXPECT_EQ(kestu_error_handle_json(nullptr, add_line, &lines), nullptr);
    EXPECT_EQ(lines, std::string(chain_text) + "\n");
    std::string people, poor;
    poor.reserve(1000);
    kestu_error_handle(err, add_line, &people);
    {
        const AllocFailure failure(1);
        kestu_error_handle_json(
            err,
            [](const char *line, void *text) {
                static_cast<std::string *>(text)->append(line).append("\n");
                return 0;
            },
            &poor);
    }
    EXPECT_EQ(poor, people);
    kestu_error_clear(err);
}

TEST(ErrorJson, BecomesALineOfALog) {
    const Pool pool;
    const std::string name = testing::TempDir() + "json_test.log";
    std::remove(name.c_str());
    kestu_log_t *log = nullptr;
    kestu_error_clear(kestu_log_create(&log, name.c_str(), pool));
    kestu_error_t *err = chain();
    kestu_log_json(log, err);
    kestu_log_json(log, nullptr);
    kestu_log_json(log, err);
    kestu_error_clear(err);
    kestu_log_terminate(log);
    std::ifstream file(name);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(content, std::string(chain_text) + "\n" + chain_text + "\n");
    std::remove(name.c_str());
}

kestu_error_t *pass_on(kestu_error_t *err, bool *went_on) {
    KESTU_TRY(err);
    *went_on = true;
    return nullptr;
}

TEST(ErrorChains, AreAskedForACode) {
    bool went_on = false;
    kestu_error_t *err = pass_on(chain(), &went_on);
    EXPECT_FALSE(went_on);
    EXPECT_EQ(kestu_error_find(err, KESTU_ERR_OPEN), kestu_error_root_cause(err));
    EXPECT_EQ(kestu_error_find(err, 3), err);
    EXPECT_TRUE(kestu_error_is(err, 0));
    EXPECT_FALSE(kestu_error_is(err, KESTU_ERR_READ) || kestu_error_is(nullptr, 0));
    kestu_error_clear(err);
    EXPECT_EQ(pass_on(nullptr, &went_on), nullptr);
    EXPECT_TRUE(went_on);
}

} // namespace
