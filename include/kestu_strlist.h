/*
 * Lists of strings, and splitting text into tokens.
 *
 *     kestu_strlist_t *text, *tokens;
 *     err = kestu_strlist_create(&text, pool);
 *     err = kestu_strlist_create(&tokens, pool);
 *     err = kestu_strlist_addlast(text, "draw \"a red\" circle", pool);
 *     err = kestu_strlist_tokenize(text, tokens, " ", pool);
 *     puts(kestu_strlist_getn(tokens, 1));                    // a red
 *
 * Strings are copied into the pool given to the function that adds them, and live as long as it
 * does; a list owns nothing. A list belongs to one thread at a time. A null list is an empty one;
 * only adding to it fails, with KESTU_ERR_LIST_INSERTION (120051).
 */
#ifndef KESTU_STRLIST_H
#define KESTU_STRLIST_H

#include "kestu_dl.h"

KESTU_BEGIN_DECLS

/* A list of strings: a cell with the first node of a list, null when it is empty. */
typedef struct kestu_strlist_t {
    kestu_dl_t *head; /* the data of every node is a string, or null */
} kestu_strlist_t;

/*
 * Stores a new empty list, made in `pool`, through `list`. Always returns null; a pool without
 * memory shows as a null list.
 */
KESTU_API kestu_error_t *kestu_strlist_create(kestu_strlist_t **list, apr_pool_t *pool);

/* Empties `list`, which stays usable. The strings go with their pools. */
KESTU_API void kestu_strlist_destroy(kestu_strlist_t *list);

/* Does the same as kestu_strlist_destroy to `list`. */
KESTU_API void kestu_strlist_clear(kestu_strlist_t *list);

/*
 * Adds a copy of `str`, made in `pool`, at the front of `list`. A null string is added as null.
 * Errors are those of kestu_dl_prepend, with the list as it was.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_strlist_addfirst(kestu_strlist_t *list,
                                                               const char *str, apr_pool_t *pool);

/*
 * As kestu_strlist_addfirst, at the end of `list`, which takes a walk. Errors are those of
 * kestu_dl_append.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_strlist_addlast(kestu_strlist_t *list,
                                                              const char *str, apr_pool_t *pool);

/*
 * As kestu_strlist_addlast in constant time: `last` points to a variable of the caller's that is
 * null at first and remembers the end of the list between the calls.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_strlist_append(kestu_strlist_t *list, kestu_dl_t **last, const char *str, apr_pool_t *pool);

/*
 * Receives a string `str`, which may be null, and the `baton` of the walk. What it returns ends a
 * walk unless it is 0.
 */
typedef int (*kestu_strlist_func)(const char *str, void *baton);

/*
 * Calls `fn` with each string of `list` from the first on, and `baton`, until it returns something
 * other than 0, which is returned; 0 at the end.
 */
KESTU_API int kestu_strlist_walk(kestu_strlist_t *list, kestu_strlist_func fn, void *baton);

/* Sorts `list` by the bytes of its strings, null before all others. Stable, in O(n log n). */
KESTU_API void kestu_strlist_sort(kestu_strlist_t *list);

/*
 * Stores the strings of `list` with `separator` between them, as one text made in `pool`, through
 * `text`. Null strings count as empty ones. Error: KESTU_ERR_NO_MEMORY (120012) under "Cannot join
 * strings.", with null stored.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_strlist_join(kestu_strlist_t *list, const char *separator, char **text, apr_pool_t *pool);

/*
 * Stores an array of pointers to the strings of `list`, which are not copied, with a null behind
 * the last one, through `strings`, and their number through `count`, which may be null. The array
 * is made in `pool`. Error: KESTU_ERR_NO_MEMORY (120012) under "Cannot make array of strings.",
 * with null stored.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_strlist_to_array(kestu_strlist_t *list,
                                                               const char ***strings, size_t *count,
                                                               apr_pool_t *pool);

/*
 * String number `n` of `list`, from 0; null when there is none. It is counted from the first: who
 * wants all strings walks `head` by kestu_dl_walk.
 */
KESTU_API const char *kestu_strlist_getn(kestu_strlist_t *list, int n);

/* 1 when `list` holds a string equal to `str`, else 0. */
KESTU_API int kestu_strlist_is_exists(kestu_strlist_t *list, const char *str);

/* The number of strings in `list`. */
KESTU_API int kestu_strlist_nelts(kestu_strlist_t *list);

/*
 * Replaces what `dst` holds by copies, made in `pool`, of the strings of `src`. When `src` is empty
 * `dst` stays as it is. Errors are those of adding under "Cannot copy list of strings.", with `dst`
 * empty.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_strlist_copy(kestu_strlist_t *dst,
                                                           kestu_strlist_t *src, apr_pool_t *pool);

/*
 * Replaces what `dst` holds by the tokens, made in `pool`, of the strings of `src`, read as one
 * text: a token may begin in one string and end in a later one. Tokens are what stands between
 * characters of `separators`, or from a double quote where a token would begin to the next one;
 * quotes are not part of a token, and empty tokens are left out. Tokens may be of any length.
 * Errors: KESTU_ERR_SEPARATOR_COUNT (120060) without separators, KESTU_ERR_NO_TOKEN_DATA (120061)
 * without strings, both with `dst` as it was; and those of adding and allocation under "Failed to
 * tokenize strings.", with the tokens found before in `dst`.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_strlist_tokenize(kestu_strlist_t *src,
                                                               kestu_strlist_t *dst,
                                                               const char *separators,
                                                               apr_pool_t *pool);

KESTU_END_DECLS

#endif
