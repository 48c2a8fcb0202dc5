/*
 * Errors: objects that form chains from the outermost context down to the root cause.
 *
 *     kestu_error_t *err = load(path);
 *     if (err)
 *         return kestu_error_quick_wrap(err, "Cannot start.");
 *     ...
 *     kestu_error_clear(kestu_error_handle(err, kestu_error_stdhandler, stderr));
 *
 * A function that can fail returns a kestu_error_t pointer, null on success. The caller owns the
 * chain and releases it as a whole with kestu_error_clear: an error made above another lives in the
 * same pool, and the head is the only handle to keep.
 *
 * Errors may be made on many threads at once. One chain belongs to one thread at a time.
 */
#ifndef KESTU_ERROR_H
#define KESTU_ERROR_H

#include "kestu_defs.h"
#include "kestu_error_codes.h"

#include <apr_errno.h>
#include <apr_pools.h>

#include <stdint.h>
#include <stdio.h>

KESTU_BEGIN_DECLS

/* Kinds of report. Other values are stored and printed without a name. */
enum {
    KESTU_ERROR_ERROR = 0,       /* a failure */
    KESTU_ERROR_WARNING = 1,     /* no failure, but worth telling */
    KESTU_ERROR_MALFUNCTION = 2, /* the library cannot be used any more */
    KESTU_ERROR_ASSERT = 3,      /* a condition of the program's that does not hold */
    KESTU_ERROR_PLAIN = 4,       /* a message that is printed without kind and code */
};

/* Codes handed out by kestu_error_register begin here. */
enum { KESTU_ERROR_FIRST_REGISTERED = 125000 /* the lowest code that is registered */ };

/* One element of a chain. Read its fields freely; change them through the functions below. */
typedef struct kestu_error_t {
    int32_t type;                /* one of the kinds above */
    int32_t code;                /* 0 for none, one of kestu_error_codes.h, or a registered one */
    const char *message;         /* null: the text of the code is printed */
    const char *file;            /* base name of the source file, or null */
    int32_t line;                /* 0 when unknown */
    const char *function;        /* or null */
    void *data;                  /* the user's, never freed nor copied deeply */
    apr_pool_t *pool;            /* what the record and its texts live in */
    struct kestu_error_t *child; /* the cause, null at the root cause */
} kestu_error_t;

/*
 * Receives one element of a chain in kestu_error_walk: its `code`, `message`, `file`, `line`,
 * `function` (texts may be null) and the caller's `baton`. The result is ignored.
 */
typedef int (*kestu_error_walk_func)(int code, const char *message, const char *file, int line,
                                     const char *function, void *baton);

/* Receives one finished `line`, without a newline, and the caller's `baton`. The result is ignored.
 */
typedef int (*kestu_error_line_func)(const char *line, void *baton);

/* Receives an error `err` that leaves the library unusable. It is not expected to return. */
typedef kestu_error_t *(*kestu_error_malfunction_func)(kestu_error_t *err);

/*
 * The error by which a callback stops a walk without a failure. It is known by its identity and is
 * never cleared.
 */
KESTU_API extern kestu_error_t *KestuDLlistStopWalking;

/*
 * Makes an error; kestu_error_create adds the caller's `line`, `file` and `function`, where 0 and
 * nulls mean unknown. Making an error never fails: when no memory is left for it, the malfunction
 * handler is called, which by default ends the process.
 *
 * errno stays the caller's, here and in all other functions of the library that do not say
 * otherwise.
 *
 * `type` is one of the kinds above, `code` the error code, `child` the cause or null; with a cause
 * the new error lives in the cause's pool, otherwise in a new pool of its own. `message` is copied
 * and may be null.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_error_create_i(int type, int code, int line,
                                                             const char *file, const char *function,
                                                             kestu_error_t *child,
                                                             const char *message);

/*
 * As kestu_error_create_i, with a message of `format` and what follows it, formatted as by
 * kestu_str_snprintf. Of a text that cannot be formatted, what was produced until then is kept. No
 * long double may be passed: the compiler accepts one under `%Lf`, but a double is fetched.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_error_createf_i(int type, int code, int line, const char *file, const char *function,
                      kestu_error_t *child, const char *format, ...) KESTU_PRINTF(7, 8);

/*
 * As kestu_error_create_i for an error of kind 0 and code 0 without a cause, whose message is the
 * text that APR has for `status`.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_error_aprwrap_i(apr_status_t status, int line, const char *file, const char *function);

/*
 * As kestu_error_aprwrap_i, with the text of `format` and ": " before that of APR; when `format` is
 * null, without a message. The text is formatted as by kestu_error_createf_i.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_error_aprwrapf_i(apr_status_t status, int line, const char *file, const char *function,
                       const char *format, ...) KESTU_PRINTF(5, 6);

/*
 * Puts `message` above the cause `child`, which must not be null, and keeps the cause's kind and
 * code. `line`, `file` and `function` are those of kestu_error_create_i.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_error_quick_wrap_i(int line, const char *file,
                                                                 const char *function,
                                                                 kestu_error_t *child,
                                                                 const char *message);

/* The name of the source file; its folders, which errors leave out, where the compiler cannot. */
#ifdef __FILE_NAME__
#define KESTU_FILE_NAME __FILE_NAME__
#else
#define KESTU_FILE_NAME __FILE__
#endif

/* As kestu_error_create_i, with the caller's line, file and function. */
#define kestu_error_create(type, code, child, message)                                             \
    kestu_error_create_i((type), (code), __LINE__, KESTU_FILE_NAME, __func__, (child), (message))

/*
 * As kestu_error_createf_i, with the caller's line, file and function; the format and its arguments
 * follow.
 */
#define kestu_error_createf(type, code, child, ...)                                                \
    kestu_error_createf_i((type), (code), __LINE__, KESTU_FILE_NAME, __func__, (child), __VA_ARGS__)

/* As kestu_error_aprwrap_i, with the caller's line, file and function. */
#define kestu_error_aprwrap(status)                                                                \
    kestu_error_aprwrap_i((status), __LINE__, KESTU_FILE_NAME, __func__)

/*
 * As kestu_error_aprwrapf_i, with the caller's line, file and function; the format and its
 * arguments follow.
 */
#define kestu_error_aprwrapf(status, ...)                                                          \
    kestu_error_aprwrapf_i((status), __LINE__, KESTU_FILE_NAME, __func__, __VA_ARGS__)

/* As kestu_error_quick_wrap_i, with the caller's line, file and function. */
#define kestu_error_quick_wrap(child, message)                                                     \
    kestu_error_quick_wrap_i(__LINE__, KESTU_FILE_NAME, __func__, (child), (message))

/*
 * Appends copies of the chain `b` below the root cause of `a`, so that b's errors become the
 * deepest causes in their own order, and releases `b`, which must not be used afterwards. `a` must
 * not be null. Nothing happens when `b` is null or shares elements with `a`; the stop sentinel and
 * the error that a malfunction without memory leaves take nothing in, and `b` is only released. A
 * sentinel that `a` ends in is replaced by a copy.
 */
KESTU_API void kestu_error_compose(kestu_error_t *a, kestu_error_t *b);

/* As kestu_error_compose, and returns the result: the other one when `a` or `b` is null. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_error_compose_create(kestu_error_t *a,
                                                                   kestu_error_t *b);

/*
 * The outermost element of the chain `err` with that `code`, or null. It stays part of the chain.
 */
KESTU_API kestu_error_t *kestu_error_find(kestu_error_t *err, int code);

/* 1 when an element of the chain `err` has that `code`, else 0. */
KESTU_API int kestu_error_is(const kestu_error_t *err, int code);

/* The last element of the chain `err`, or null for null. It stays part of the chain. */
KESTU_API kestu_error_t *kestu_error_root_cause(kestu_error_t *err);

/* Releases the whole chain that `err` belongs to. Null and the stop sentinel are left alone. */
KESTU_API void kestu_error_clear(kestu_error_t *err);

/*
 * An independent copy of the chain `err` in a pool of its own, null for null. The `file` and
 * `function` texts stay shared with the source and must not be used through the copy once the
 * source is cleared.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_error_dup(kestu_error_t *err);

/* Calls `callback` with `baton` for every element of `err`, outermost first. It cannot be stopped.
 */
KESTU_API void kestu_error_walk(kestu_error_t *err, kestu_error_walk_func callback, void *baton);

/* Sets the kind of `err` alone, which must not be null, to `type`. */
KESTU_API void kestu_error_set_type(kestu_error_t *err, int type);

/*
 * Sets the kind of every element of the chain `err` to `type`; a stop sentinel at its end keeps its
 * own. Null is allowed.
 */
KESTU_API void kestu_error_set_type_all(kestu_error_t *err, int type);

/* Sets the user's datum of `err` alone to `data`; does nothing for null. */
KESTU_API void kestu_error_set_data(kestu_error_t *err, void *data);

/* The user's datum of `err`; null for null. */
KESTU_API void *kestu_error_get_data(kestu_error_t *err);

/*
 * The first user's datum that is not null from `err` towards the root cause; null when there is
 * none.
 */
KESTU_API void *kestu_error_get_data_first(kestu_error_t *err);

/*
 * Starts the error subsystem in a child pool of `parent`; kestu_initialize calls it. Returns 0, 2
 * when the pool, or 4 when the mutex could not be created.
 */
KESTU_API int kestu_error_initialize(apr_pool_t *parent);

/* Stops the error subsystem and releases every error still alive; kestu_terminate calls it. */
KESTU_API void kestu_error_terminate(void);

/*
 * The text of `code`: a built-in one (kestu_error_codes.h) or one that is registered, null for a
 * code that has none. It lives as long as the code.
 */
KESTU_API const char *kestu_error_text(int code);

/*
 * Registers a copy of `text` and stores its new code, 125000 or above, through `code`; the lowest
 * code that is free is handed out. Always returns null; without memory the malfunction handler is
 * called, and if that returns, the code has no text. Safe to call from many threads.
 */
KESTU_API kestu_error_t *kestu_error_register(int *code, const char *text);

/*
 * Gives the registered `code` back; unknown codes are ignored. Returns an error only when the mutex
 * cannot be locked. Safe to call from many threads.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_error_deregister(int code);

/*
 * Hands the chain `err` to `handler`, one line an element from the head to the root cause, together
 * with `baton`, and returns `err` unchanged, so that the result can be passed to kestu_error_clear.
 * An element without a message of its own is left out when one with the same code was printed
 * before. A line reads "Error(120030): Cannot open file 'a.tif' [reader.c(12), load]"; an element's
 * own message or the text of its code stands behind the kind and code. Null prints nothing.
 */
KESTU_API kestu_error_t *kestu_error_handle(kestu_error_t *err, kestu_error_line_func handler,
                                            void *baton);

/* A handler that writes `line` and a newline to `stream`, a FILE pointer, or to stderr when null.
 */
KESTU_API int kestu_error_stdhandler(const char *line, void *stream);

/*
 * The chain `err` as one JSON object on one line, made in `pool`; null without memory:
 *
 *     {"errors":[{"kind":"error","code":120030,"text":"IO stream cannot be opened.",
 *     "message":"Cannot open file 'a.tif'","file":"reader.c","line":12,"function":"load"}]}
 *
 * The outermost element comes first. Kinds are "error", "warning", "malfunction", "assert", "plain"
 * and "other"; what an element does not have is left out. The object is UTF-8: other bytes stand as
 * U+FFFD. A null chain has no elements.
 */
KESTU_API char *kestu_error_to_json(const kestu_error_t *err, apr_pool_t *pool);

/*
 * As kestu_error_handle, but hands the whole chain `err` to `handler`, with `baton`, as one line of
 * such JSON. Without memory for it, and for null, it does what kestu_error_handle does.
 */
KESTU_API kestu_error_t *kestu_error_handle_json(kestu_error_t *err, kestu_error_line_func handler,
                                                 void *baton);

/*
 * Returns the error of `call` from the function at hand if it failed:
 *
 *     KESTU_TRY(kestu_trie_insert(trie, key, length, value, pool));
 */
#define KESTU_TRY(call)                                                                            \
    do {                                                                                           \
        kestu_error_t *kestu_try_error_ = (call);                                                  \
        if (kestu_try_error_)                                                                      \
            return kestu_try_error_;                                                               \
    } while (0)

/*
 * Sets the handler of errors that leave the library unusable to `handler`, and returns the previous
 * one; the default prints the chain to standard error and aborts.
 */
KESTU_API kestu_error_malfunction_func
kestu_error_set_malfunction_handler(kestu_error_malfunction_func handler);

/* The present handler of errors that leave the library unusable. */
KESTU_API kestu_error_malfunction_func kestu_error_get_malfunction_handler(void);

/*
 * Calls the present handler of errors that leave the library unusable with `err`, and returns what
 * it returns.
 */
KESTU_API kestu_error_t *kestu_error_malfunction(kestu_error_t *err);

KESTU_END_DECLS

#endif
