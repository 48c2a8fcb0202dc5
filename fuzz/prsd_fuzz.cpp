// The parameter parser beside a plain one that goes character by character, on any lines.
#include "fuzz/check.hpp"
#include "kestu_prsd.h"
#include "kestu_str.h"

#include <vector>

using namespace kestu::fuzz;

namespace {

struct PlainParser {
    std::string separators;
    int state = KESTU_PRSD_BETWEEN;
    std::string text = "";
    std::vector<std::string> found = {};

    void parse(const std::string &line) {
        for (const char c : line)
            take(c);
        if (!text.empty())
            end();
    }

    void take(char c) {
        const bool separates = separators.find(c) != separators.npos;
        if (state == KESTU_PRSD_IN_PARAMETER || state == KESTU_PRSD_QUOTED) {
            if (state == KESTU_PRSD_QUOTED ? c != '"' : !separates) {
                text += c;
                return;
            }
            if (!text.empty())
                end();
            state = KESTU_PRSD_BETWEEN;
        } else if (!separates) {
            state = c == '"'    ? KESTU_PRSD_QUOTED
                    : c == '\\' ? KESTU_PRSD_CONTINUED
                                : KESTU_PRSD_IN_PARAMETER;
            if (state == KESTU_PRSD_IN_PARAMETER)
                text = c;
        }
    }

    void end() {
        found.push_back(text);
        text.clear();
    }
};

void check(const kestu_prsd_param_t &param, const std::string &text) {
    int i = 0;
    double d = 0.0;
    if (succeeded(kestu_str_to_integer(text.c_str(), &i))) {
        require(param.type == KESTU_PRSD_INT && param.i == i);
    } else if (succeeded(kestu_str_to_double(text.c_str(), &d))) {
        require(param.type == KESTU_PRSD_DOUBLE && std::memcmp(&param.d, &d, sizeof d) == 0);
    } else {
        require(param.type == KESTU_PRSD_STRING && param.s == text);
    }
}

// The first line holds the separators, each further one is a call.
void parse(const std::vector<std::string> &lines) {
    apr_pool_t *pool = nullptr;
    require(apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr) == APR_SUCCESS);
    kestu_prsd_t prsd;
    kestu_prsd_clear_p(&prsd);
    PlainParser plain{.separators = lines[0]};
    for (size_t i = 1; i < lines.size(); ++i) {
        require(!kestu_prsd_parse_p(&prsd, lines[i].c_str(), lines[0].c_str(), pool));
        plain.parse(lines[i]);
        require(prsd.state == plain.state);
    }
    require(static_cast<size_t>(prsd.n) == plain.found.size());
    require(prsd.n == prsd.n_int + prsd.n_double + prsd.n_string);
    for (int i = 0; i < prsd.n; ++i)
        check(prsd.params[i], plain.found[static_cast<size_t>(i)]);
    apr_pool_destroy(pool);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    std::vector<std::string> lines(1);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == '\n')
            lines.emplace_back();
        else if (data[i] != '\0')
            lines.back() += static_cast<char>(data[i]);
    }
    parse(lines);
    return 0;
}
