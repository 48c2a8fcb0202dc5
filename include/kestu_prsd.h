/*
 * The parameter parser: splits lines of text into parameters, each an integer, a floating-point
 * number or a string.
 *
 *     kestu_prsd_t prsd;
 *     kestu_prsd_clear_p(&prsd);
 *     err = kestu_prsd_parse_p(&prsd, "scale 2.5 'a b' \"a b\"", " ", pool);
 *     // 5 entries: "scale", 2.5, "'a", "b'" and "a b"
 *
 * A parameter ends at a separator, and one in double quotes at the next quote. A backslash where a
 * parameter could begin asks for another line. The record belongs to the caller and carries the
 * parser's state from one call to the next; entries and strings live in the pool of the calls,
 * which has to live as long as the record is used. A record belongs to one thread at a time.
 */
#ifndef KESTU_PRSD_H
#define KESTU_PRSD_H

#include "kestu_error.h"

#include <apr_pools.h>

KESTU_BEGIN_DECLS

/* What a parameter is. */
enum {
    KESTU_PRSD_INT = 1,    /* an integer */
    KESTU_PRSD_DOUBLE = 2, /* a floating-point number */
    KESTU_PRSD_STRING = 3, /* a string */
};

/* Where the parser stands between two calls. */
enum {
    KESTU_PRSD_BETWEEN = 0,      /* between parameters */
    KESTU_PRSD_IN_PARAMETER = 1, /* in a parameter */
    KESTU_PRSD_QUOTED = 2,       /* in a parameter in quotes */
    KESTU_PRSD_CONTINUED = 3,    /* behind a backslash that asks for another line */
};

/* One parameter. The fields of the other types are 0 and null. */
typedef struct kestu_prsd_param_t {
    double d; /* a floating-point number */
    int i;    /* an integer */
    char *s;  /* a string */
    int type; /* KESTU_PRSD_INT, KESTU_PRSD_DOUBLE or KESTU_PRSD_STRING */
} kestu_prsd_param_t;

/* The parameters found so far. Clear it before the first call. */
typedef struct kestu_prsd_t {
    int n_double;               /* floating-point parameters */
    int n_string;               /* string parameters */
    int n_int;                  /* integer parameters */
    int n;                      /* all parameters: the entries of `params` that are set */
    int room;                   /* entries that can still be set before the array is made longer */
    kestu_prsd_param_t *params; /* the parameters, in the pool of the calls */
    int state;                  /* one of the states above */
} kestu_prsd_t;

/*
 * Adds the parameters in `str` to `prsd`, going on in the state that the last call left. Every
 * character of `separators` parts parameters. A quote opens a quoted parameter only where a
 * parameter may begin, and an empty one adds nothing; elsewhere quotes and backslashes are
 * ordinary. The end of `str` ends a parameter but not the state: an open quote or parameter takes
 * the beginning of the next `str` as a parameter of its own.
 *
 * A parameter is an integer when kestu_str_to_integer accepts it, else a floating-point number when
 * kestu_str_to_double does ("0x10" is 16.0), else a string; quotes make no difference. Parameters
 * may be of any length and number; the array `params` moves as it grows. Entries and strings are
 * made in `pool`.
 *
 * Error: KESTU_ERR_NO_MEMORY (120012) under "Can't parse string." when no memory is left; the
 * parameters before stay.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_prsd_parse_p(kestu_prsd_t *prsd, const char *str, const char *separators, apr_pool_t *pool);

/* 1 when what was parsed into `prsd` ends with a backslash that asks for another line, else 0. */
KESTU_API int kestu_prsd_incomplete(const kestu_prsd_t *prsd);

/*
 * Parameter number `n` of `prsd`, from 0, as it stood in the text, so that 007 and a file named
 * 2024 are not lost; null when there is none. For records that kestu_prsd_parse_p alone has filled.
 */
KESTU_API const char *kestu_prsd_text(const kestu_prsd_t *prsd, int n);

/*
 * 1 when parameter number `n` of `prsd`, from 0, stood in quotes, else 0. For records that
 * kestu_prsd_parse_p alone has filled.
 */
KESTU_API int kestu_prsd_is_quoted(const kestu_prsd_t *prsd, int n);

/* Fills the record `prsd` with zeros. The entries stay in their pool. */
KESTU_API void kestu_prsd_clear_p(kestu_prsd_t *prsd);

KESTU_END_DECLS

#endif
