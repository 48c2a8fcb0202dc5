/*
 * The line editor: reads lines from the terminal while the user edits them, with a history.
 *
 *     kestu_ri_t *ctx;
 *     char *line;
 *     err = kestu_ri_readline_init(&ctx, "> ", 1, pool);
 *     while (!err && !(err = kestu_ri_readline(&line, ctx)))
 *         err = run(line);                    // "ls\n", or "" after Ctrl-C
 *
 * The editor works on standard input and standard output, which have to be a terminal, and puts it
 * into a raw mode only while kestu_ri_readline runs. A context lives in a pool of its own until
 * kestu_ri_readline_terminate. One thread at a time uses a terminal; the notice of a changed window
 * (SIGWINCH) belongs to the whole process. `ctx` is always a context of kestu_ri_readline_init.
 */
#ifndef KESTU_READLINE_H
#define KESTU_READLINE_H

#include "kestu_error.h"
#include "kestu_strlist.h"

#include <apr_pools.h>

#include <stddef.h>
#include <termios.h>

KESTU_BEGIN_DECLS

/* What dl_readchar returns beside the codes 1 to 255 of single bytes. */
enum {
    KESTU_KEY_FAILED = -1,    /* the read failed; errno tells why */
    KESTU_KEY_UNREADABLE = 0, /* the end of the input, or bytes that are no known key */
    KESTU_KEY_DELETE = 10001, /* the key Delete */
    KESTU_KEY_UP = 10002,     /* the arrow up */
    KESTU_KEY_DOWN = 10003,   /* the arrow down */
    KESTU_KEY_RIGHT = 10004,  /* the arrow to the right */
    KESTU_KEY_LEFT = 10005,   /* the arrow to the left */
    KESTU_KEY_END = 10006,    /* the key End */
    KESTU_KEY_HOME = 10007,   /* the key Home */
};

/* Directions in the history. */
enum {
    KESTU_RI_NEWER = 0, /* to lines that were read later */
    KESTU_RI_OLDER = 1, /* to lines that were read before */
};

/* An editor. Read its fields freely; `echo` and `prompt` may be changed between two lines. */
typedef struct kestu_ri_t {
    apr_pool_t *pool;         /* the context's own; all of it lives there */
    apr_pool_t *line_pool;    /* the line and the saved line; cleared when the next one begins */
    char *line;               /* the line being edited, or the last one; null before the first */
    size_t size;              /* the bytes that `line` has room for, terminator included */
    int echo;                 /* not 0: print the prompt and draw the line */
    int cols;                 /* the width of the terminal in columns */
    int rows;                 /* the height of the terminal in rows */
    char *prompt;             /* or null for none */
    kestu_strlist_t *history; /* earlier lines, the newest first */
    int hist_count;           /* lines in `history` */
    int hist_index;           /* the entry that is shown, 0 the newest, -1 for the new line */
    char *saved_line;         /* the new line as it was when the user went to the history */
    int fresh;                /* 1 until the user goes to the history */
    struct termios saved_termios; /* the terminal's settings at the beginning of the line */
    struct termios raw_termios;   /* the terminal's settings while reading */
} kestu_ri_t;

/*
 * Stores a new context through `ctx`, in a child pool of `pool`, with a copy of `prompt`, which may
 * be null. With an `echo` of 0 lines are read silently. Takes over the handling of SIGWINCH: the
 * first change of the window's size after this call is noticed, later ones are not. Errors, under
 * "Can't initialize readline.": that of the pool, and KESTU_ERR_NO_MEMORY (120012) when it has no
 * memory; nothing is stored then.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_ri_readline_init(kestu_ri_t **ctx, const char *prompt,
                                                               int echo, apr_pool_t *pool);

/*
 * Reads one line and stores it through `line`; it is valid until the next call and has no limit of
 * length. Enter ends the line with a line feed that stands where the cursor stood, and Ctrl-C with
 * an empty line. What is entered by a carriage return, as terminals send it, goes to the history
 * unless it is empty.
 *
 * Keys: left, right, home (Ctrl-A), end (Ctrl-E), backspace (Ctrl-H), delete; up and down for the
 * history; Ctrl-L clears the screen and moves the cursor right. Ctrl-D does nothing while there is
 * text, and Ctrl-K, Ctrl-N and Ctrl-P never do. Every other byte is inserted. All signals of the
 * terminal stay on, so that Ctrl-C reaches the editor only where they are switched off. A row of
 * the terminal is redrawn after each key; a longer line is not folded.
 *
 * Errors, with nothing stored: KESTU_ERR_CONSOLE_SIZE (120130) under "Can't retrive line." when
 * standard output is no terminal; KESTU_ERR_NO_CHARACTER (120131) for a sequence of bytes that is
 * no key, and at the end of the input; KESTU_ERR_CHARACTER_READ (120132) with the system's text
 * when reading fails; KESTU_ERR_HALTED_BY_USER (120133) for Ctrl-D on an empty line;
 * KESTU_ERR_NO_MEMORY (120012) when no memory is left; and those of kestu_ri_readline_addhist. What
 * was typed before is still in the context's line. After KESTU_ERR_NO_CHARACTER (120131),
 * KESTU_ERR_CHARACTER_READ (120132), a failed addition to the history, and KESTU_ERR_CONSOLE_SIZE
 * (120130) for a window that changed while reading, the terminal is left in raw mode: give it
 * saved_termios back with tcsetattr before the next line, which would take the raw settings for the
 * user's own.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_ri_readline(char **line, kestu_ri_t *ctx);

/* Releases `ctx` with its lines and its history. Null is allowed. */
KESTU_API void kestu_ri_readline_terminate(kestu_ri_t *ctx);

/*
 * Makes a copy of `str` the newest entry of the history. Error: KESTU_ERR_NO_MEMORY (120012) under
 * "Readline: can't add string to history.", with the history as it was.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_ri_readline_addhist(const char *str, kestu_ri_t *ctx);

/*
 * Replaces the line by the next entry of the history in the direction `dir`, or by the new line as
 * it was before, and returns 1. Returns 0, with the line as it was, when there is none in that
 * direction or no memory is left.
 */
KESTU_API int kestu_ri_readline_hist(kestu_ri_t *ctx, int dir);

/*
 * Replaces the line's buffer by one of `size` bytes, at least 1, that holds as much of the text as
 * fits and is zero behind it. When no memory is left the line stays as it was.
 */
KESTU_API void kestu_ri_readline_growbuffer(kestu_ri_t *ctx, size_t size);

/*
 * Reads one key from standard input with a single read of at most 18 bytes: the byte itself, a
 * value like KESTU_KEY_UP for the sequence of a known key, or KESTU_KEY_UNREADABLE. `ctx` is not
 * used and may be null.
 */
KESTU_API int dl_readchar(kestu_ri_t *ctx);

KESTU_END_DECLS

#endif
