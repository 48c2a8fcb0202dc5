// The parameter parser beside a plain one that goes character by character.
#pragma once

#include "fuzz/check.hpp"
#include "kestu_prsd.h"
#include "kestu_str.h"

#include <vector>

namespace kestu::fuzz {

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

inline void check_param(const kestu_prsd_param_t &param, const std::string &text) {
    int i = 0;
    double d = 0.0;
    require(param.type == KESTU_PRSD_INT || param.i == 0);
    require(param.type == KESTU_PRSD_DOUBLE || param.d == 0.0);
    require(param.type == KESTU_PRSD_STRING || !param.s);
    if (succeeded(kestu_str_to_integer(text.c_str(), &i))) {
        require(param.type == KESTU_PRSD_INT && param.i == i);
    } else if (succeeded(kestu_str_to_double(text.c_str(), &d))) {
        require(param.type == KESTU_PRSD_DOUBLE && std::memcmp(&param.d, &d, sizeof d) == 0);
    } else {
        require(param.type == KESTU_PRSD_STRING && param.s == text);
    }
}

// The first line holds the separators, each further one is a call.
inline void compare_parsers(const std::vector<std::string> &lines) {
    apr_pool_t *pool = nullptr;
    require(apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr) == APR_SUCCESS);
    kestu_prsd_t prsd;
    kestu_prsd_clear_p(&prsd);
    PlainParser plain{.separators = lines[0]};
    for (size_t i = 1; i < lines.size(); ++i) {
        require(!kestu_prsd_parse_p(&prsd, lines[i].c_str(), lines[0].c_str(), pool));
        plain.parse(lines[i]);
        require(prsd.state == plain.state);
        require(kestu_prsd_incomplete(&prsd) == (plain.state == KESTU_PRSD_CONTINUED));
    }
    require(static_cast<size_t>(prsd.n) == plain.found.size());
    int counts[4] = {};
    for (int i = 0; i < prsd.n; ++i) {
        check_param(prsd.params[i], plain.found[static_cast<size_t>(i)]);
        ++counts[prsd.params[i].type];
    }
    require(prsd.n_int == counts[KESTU_PRSD_INT] && prsd.n_double == counts[KESTU_PRSD_DOUBLE]);
    require(prsd.n_string == counts[KESTU_PRSD_STRING]);
    apr_pool_destroy(pool);
}

} // namespace kestu::fuzz
