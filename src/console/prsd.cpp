// The parameter parser. A parameter is always a piece of the text, so it is measured there and
// copied once, whatever its length.
#include "kestu_prsd.h"

#include "kestu_str.h"
#include "mem/memory.hpp"

#include <algorithm>
#include <cctype>
#include <cstring>

using namespace kestu;

namespace {

constexpr size_t entries_at_once = 10;

// What an entry does not tell of its parameter. These stand behind the entries of a full array.
struct Source {
    const char *text;
    bool is_quoted;
};

// The entries of the array that holds so many parameters. Entries are granted in tens, which `room`
// counts, but the array doubles: a text of n parameters takes memory in proportion to n.
size_t capacity_for(size_t parameters) {
    size_t entries = entries_at_once;
    while (entries < parameters)
        entries *= 2;
    return entries;
}

Source *sources_of(const kestu_prsd_t &prsd, size_t parameters) {
    return reinterpret_cast<Source *>(prsd.params + capacity_for(parameters));
}

kestu_error_t *make_room(kestu_prsd_t &prsd, apr_pool_t *pool) {
    const auto used = static_cast<size_t>(prsd.n);
    const size_t entries = capacity_for(used + 1);
    if (used == 0 || entries != capacity_for(used)) {
        char *memory = nullptr;
        constexpr size_t entry_size = sizeof(kestu_prsd_param_t) + sizeof(Source);
        if (kestu_error_t *err = pool_make(pool, &memory, entries * entry_size))
            return err;
        const kestu_prsd_t old = prsd;
        prsd.params = reinterpret_cast<kestu_prsd_param_t *>(memory);
        std::fill_n(prsd.params, entries, kestu_prsd_param_t{});
        if (used > 0) {
            std::copy_n(old.params, used, prsd.params);
            std::copy_n(sources_of(old, used), used, sources_of(prsd, used + 1));
        }
    }
    prsd.room = static_cast<int>(entries_at_once);
    return nullptr;
}

const char *skip_space(const char *text) {
    while (std::isspace(static_cast<unsigned char>(*text)))
        ++text;
    return text;
}

// Most words begin with a letter that begins no number ("inf" and "nan" are numbers). Knowing them
// saves making an error for each, only to release it.
bool may_be_double(const char *text) {
    text = skip_space(text);
    if (*text == '+' || *text == '-')
        ++text;
    return !std::isalpha(static_cast<unsigned char>(*text)) || std::strchr("iInN", *text);
}

bool accepted(kestu_error_t *refusal) {
    const bool accepted = !refusal;
    kestu_error_clear(refusal);
    return accepted;
}

void classify(kestu_prsd_t &prsd, kestu_prsd_param_t &param, char *text) {
    if (kestu_str_is_integer(skip_space(text)) && accepted(kestu_str_to_integer(text, &param.i))) {
        param.type = KESTU_PRSD_INT;
        ++prsd.n_int;
    } else if (may_be_double(text) && accepted(kestu_str_to_double(text, &param.d))) {
        param.type = KESTU_PRSD_DOUBLE;
        ++prsd.n_double;
    } else {
        param.type = KESTU_PRSD_STRING;
        param.s = text;
        ++prsd.n_string;
    }
}

kestu_error_t *add_parameter(kestu_prsd_t &prsd, std::string_view text, apr_pool_t *pool) {
    if (prsd.room == 0)
        if (kestu_error_t *err = make_room(prsd, pool))
            return err;
    char *copy = nullptr;
    if (kestu_error_t *err = pool_make_text(pool, &copy, text))
        return err;
    sources_of(prsd, static_cast<size_t>(prsd.n) + 1)[prsd.n] = {copy,
                                                                 prsd.state == KESTU_PRSD_QUOTED};
    classify(prsd, prsd.params[prsd.n], copy);
    ++prsd.n;
    --prsd.room;
    return nullptr;
}

// Finds where the next parameter begins, or the end of the text.
const char *begin_parameter(kestu_prsd_t &prsd, const char *text, const char *separators) {
    text += std::strspn(text, separators);
    switch (*text) {
    case '\0':
        return text;
    case '"':
        prsd.state = KESTU_PRSD_QUOTED;
        return text + 1;
    case '\\':
        prsd.state = KESTU_PRSD_CONTINUED;
        return text + 1;
    default:
        prsd.state = KESTU_PRSD_IN_PARAMETER;
        return text;
    }
}

// The state outlives the end of the text, so that the next text goes on in it.
kestu_error_t *parse(kestu_prsd_t &prsd, const char *text, const char *separators,
                     apr_pool_t *pool) {
    while (*text) {
        if (prsd.state != KESTU_PRSD_IN_PARAMETER && prsd.state != KESTU_PRSD_QUOTED) {
            text = begin_parameter(prsd, text, separators);
            continue;
        }
        const char *ends = prsd.state == KESTU_PRSD_QUOTED ? "\"" : separators;
        const size_t length = std::strcspn(text, ends);
        if (length > 0)
            if (kestu_error_t *err = add_parameter(prsd, {text, length}, pool))
                return err;
        text += length;
        if (*text) {
            prsd.state = KESTU_PRSD_BETWEEN;
            ++text;
        }
    }
    return nullptr;
}

const Source *source_of(const kestu_prsd_t *prsd, int n) {
    const bool exists = prsd && n >= 0 && n < prsd->n;
    return exists ? sources_of(*prsd, static_cast<size_t>(prsd->n)) + n : nullptr;
}

} // namespace

kestu_error_t *kestu_prsd_parse_p(kestu_prsd_t *prsd, const char *str, const char *separators,
                                  apr_pool_t *pool) {
    return wrap(parse(*prsd, str, separators, pool), "Can't parse string.");
}

int kestu_prsd_incomplete(const kestu_prsd_t *prsd) {
    return prsd->state == KESTU_PRSD_CONTINUED;
}

void kestu_prsd_clear_p(kestu_prsd_t *prsd) {
    *prsd = {};
}

const char *kestu_prsd_text(const kestu_prsd_t *prsd, int n) {
    const Source *source = source_of(prsd, n);
    return source ? source->text : nullptr;
}

int kestu_prsd_is_quoted(const kestu_prsd_t *prsd, int n) {
    const Source *source = source_of(prsd, n);
    return source && source->is_quoted;
}
