/*
 * A line editor for people: UTF-8, several rows, keys as in shells, undo, history with search,
 * completion, hints and colours.
 *
 *     kestu_edit_t *edit = NULL;
 *     int state = KESTU_EDIT_LINE;
 *     err = kestu_edit_create(&edit, 0, 1, pool);
 *     while (!err && state != KESTU_EDIT_END) {
 *         err = kestu_edit_readline(edit, "> ", 0, &state);
 *         if (!err && state == KESTU_EDIT_LINE)
 *             puts(kestu_edit_line(edit, NULL));
 *     }
 *     kestu_edit_destroy(&edit);
 *
 * A component of its own: link libkestu_edit (pkg-config kestu-edit, kestu::edit in CMake).
 *
 * Programs with an event loop call kestu_edit_begin, and kestu_edit_read whenever the input is
 * readable, until the state is no longer KESTU_EDIT_MORE. An editor without descriptors turns bytes
 * (kestu_edit_feed) into bytes for a screen (kestu_edit_output) and touches nothing else.
 *
 * An editor has no thread, no signal handler and no state beside itself; several may live at once,
 * each used by one thread at a time. The terminal is its own only while a line is read: it is as
 * before when a line has come, has failed or was given up. kestu_edit_restore puts it back from a
 * signal handler. Input that is no terminal is read as it comes, line by line, without a prompt.
 *
 * Text is any bytes. It is shown by grapheme clusters in the widths that Unicode gives them
 * (Unicode Standard Annexes 11 and 29, through utf8proc); bytes that are no UTF-8 are kept and
 * shown as "\xff", control characters as "^A". Nothing recurses, and when no memory is left the
 * line stays as it was.
 *
 * In all functions `edit` is the editor, which is never null but where that is said.
 */
#ifndef KESTU_EDIT_H
#define KESTU_EDIT_H

#include "kestu_error.h"

#include <apr_pools.h>

#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/* An editor. Its record is the library's own. */
typedef struct kestu_edit_t kestu_edit_t;

/* What has become of a line. */
enum {
    KESTU_EDIT_MORE = 0,        /* it goes on */
    KESTU_EDIT_LINE = 1,        /* it is there */
    KESTU_EDIT_END = 2,         /* the input has ended, or Ctrl-D was typed on an empty line */
    KESTU_EDIT_INTERRUPTED = 3, /* Ctrl-C */
    KESTU_EDIT_SUSPENDED = 4,   /* Ctrl-Z: stop the process, and then call kestu_edit_show */
};

/* How a line is read. */
enum {
    KESTU_EDIT_HIDDEN = 1,  /* nothing is shown or kept of it: passwords */
    KESTU_EDIT_ONE_ROW = 2, /* what is wider than the screen scrolls sideways */
};

/* What keys do. */
enum {
    KESTU_EDIT_NOTHING = 0,       /* nothing */
    KESTU_EDIT_ACCEPT = 1,        /* ends the line, or begins a row when it is not whole */
    KESTU_EDIT_NEW_ROW = 2,       /* begins a row */
    KESTU_EDIT_INTERRUPT = 3,     /* gives up the line */
    KESTU_EDIT_SUSPEND = 4,       /* asks the program to stop the process */
    KESTU_EDIT_DELETE_OR_END = 5, /* ends the input on an empty line, else deletes to the right */
    KESTU_EDIT_LEFT = 6,          /* moves a character to the left */
    KESTU_EDIT_RIGHT = 7,         /* moves a character to the right */
    KESTU_EDIT_WORD_LEFT = 8,     /* moves to the beginning of a word */
    KESTU_EDIT_WORD_RIGHT = 9,    /* moves to the end of a word */
    KESTU_EDIT_HOME = 10,         /* moves to the beginning of the row in the text */
    KESTU_EDIT_LAST = 11,         /* moves to the end of the row in the text */
    KESTU_EDIT_UP = 12,     /* a row up, or back in the history to a line that begins as this one */
    KESTU_EDIT_DOWN = 13,   /* a row down, or on in the history to a line that begins as this one */
    KESTU_EDIT_OLDER = 14,  /* shows the line before in the history */
    KESTU_EDIT_NEWER = 15,  /* shows the line behind in the history */
    KESTU_EDIT_OLDEST = 16, /* shows the first line of the history */
    KESTU_EDIT_NEWEST = 17, /* shows the line that is being written */
    KESTU_EDIT_SEARCH = 18, /* searches backwards through the history */
    KESTU_EDIT_DELETE_LEFT = 19,  /* deletes the character to the left */
    KESTU_EDIT_DELETE_RIGHT = 20, /* deletes the character at the cursor */
    KESTU_EDIT_KILL_LEFT = 21, /* kills to the beginning of the row: what is killed can be yanked */
    KESTU_EDIT_KILL_RIGHT = 22,      /* kills to the end of the row; there, joins the next one */
    KESTU_EDIT_KILL_WORD_LEFT = 23,  /* kills to the beginning of a word */
    KESTU_EDIT_KILL_WORD_RIGHT = 24, /* kills to the end of a word */
    KESTU_EDIT_KILL_BLANK_LEFT = 25, /* kills back to the last blank */
    KESTU_EDIT_YANK = 26,            /* puts in what was killed last */
    KESTU_EDIT_YANK_OLDER = 27, /* puts what was killed before in place of what was just yanked */
    KESTU_EDIT_TRANSPOSE = 28,  /* exchanges the two characters at the cursor */
    KESTU_EDIT_UNDO = 29,       /* takes back the last change */
    KESTU_EDIT_CLEAR = 30,      /* clears the screen */
    KESTU_EDIT_COMPLETE = 31,   /* asks for completions */
    KESTU_EDIT_CANCEL = 32,     /* ends a search, or a list of completions */
    KESTU_EDIT_QUOTE = 33,      /* takes the next byte as text */
    KESTU_EDIT_PREFIX = 34,     /* the first of two keys */
};

/* Styles of bytes: a colour, and others added to it. */
enum {
    KESTU_EDIT_PLAIN = 0,       /* as the terminal writes */
    KESTU_EDIT_RED = 1,         /* red */
    KESTU_EDIT_GREEN = 2,       /* green */
    KESTU_EDIT_YELLOW = 3,      /* yellow */
    KESTU_EDIT_BLUE = 4,        /* blue */
    KESTU_EDIT_MAGENTA = 5,     /* magenta */
    KESTU_EDIT_CYAN = 6,        /* cyan */
    KESTU_EDIT_BOLD = 16,       /* added: bold */
    KESTU_EDIT_DIM = 32,        /* added: dim */
    KESTU_EDIT_UNDERLINED = 64, /* added: underlined */
    KESTU_EDIT_INVERSE = 128,   /* added: colours exchanged */
};

/*
 * Whether `line` of `length` bytes is whole: 0 lets Enter begin another row. `baton` is the
 * program's.
 */
typedef int (*kestu_edit_whole_func)(const char *line, size_t length, void *baton);

/*
 * The hint that is shown behind `line` of `length` bytes while the cursor is at its end, or null.
 * It must stay as it is until the next call. `baton` is the program's.
 */
typedef const char *(*kestu_edit_hint_func)(const char *line, size_t length, void *baton);

/*
 * Fills `styles`, a byte for each of the `length` bytes of `line`; they come as zeros. `baton` is
 * the program's.
 */
typedef void (*kestu_edit_style_func)(const char *line, size_t length, uint8_t *styles,
                                      void *baton);

/* Where kestu_edit_propose puts completions. */
typedef struct kestu_edit_proposals_t kestu_edit_proposals_t;

/*
 * Proposes what may stand in `line` of `length` bytes from a place before `cursor` up to it: tells
 * that place by kestu_edit_propose_from, which the default leaves at the cursor, and each text by
 * kestu_edit_propose, both with `proposals`. `baton` is the program's.
 */
typedef void (*kestu_edit_complete_func)(kestu_edit_proposals_t *proposals, const char *line,
                                         size_t length, size_t cursor, void *baton);

/*
 * Makes an editor that reads from the descriptor `in` and shows on `out`, and stores it through
 * `made`; -1 for both makes one without. It goes with `pool` unless that is null. Fails with
 * KESTU_ERR_NO_MEMORY (120012).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_create(kestu_edit_t **made, int in, int out,
                                                          apr_pool_t *pool);

/* Ends the line of `edit`, releases it and sets the handle to null; null does nothing. */
KESTU_API void kestu_edit_destroy(kestu_edit_t **edit);

/*
 * Begins a line with `edit` behind `prompt` (colours in escape sequences are kept, other sequences
 * left out), in the way that `flags` tells. Fails with KESTU_ERR_NO_MEMORY (120012) and
 * KESTU_ERR_WRITE (120032); no line is then begun.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_begin(kestu_edit_t *edit, const char *prompt,
                                                         int flags);

/*
 * Gives `size` bytes at `bytes` to `edit` as typed, stores through `taken` how many it took (null:
 * nobody asks) and through `state` what has become of the line. It takes all but what stands behind
 * the end of a line. Fails with KESTU_ERR_NO_MEMORY (120012), and the line goes on without what
 * found no room; with KESTU_ERR_WRITE (120032) the line is given up.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_feed(kestu_edit_t *edit, const void *bytes,
                                                        size_t size, size_t *taken, int *state);

/*
 * As kestu_edit_feed with what the input of `edit` holds now, up to the end of the line; what
 * follows stays in the input. Waits when there is nothing. A file or pipe that ends amid a line
 * gives what is there, and `state` then is KESTU_EDIT_LINE; what was typed at a terminal that hangs
 * up is no line. KESTU_ERR_READ (120031) ends the line.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_read(kestu_edit_t *edit, int *state);

/*
 * Reads a line: begins it on `edit` with `prompt` and `flags`, reads until its end, and stops the
 * process for Ctrl-Z. `state` is that of kestu_edit_read, never KESTU_EDIT_MORE or
 * KESTU_EDIT_SUSPENDED. Follows the size of the window: at the next key, or at once where SIGWINCH
 * has a handler. Errors are those of kestu_edit_begin and kestu_edit_read.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_readline(kestu_edit_t *edit, const char *prompt,
                                                            int flags, int *state);

/*
 * The text of the line of `edit`, ended by a zero byte, until the next call of another function;
 * its bytes are counted through `length` unless that is null.
 */
KESTU_API const char *kestu_edit_line(const kestu_edit_t *edit, size_t *length);

/*
 * Puts `text` of `length` bytes in place of the line of `edit`, which undo takes back. Fails with
 * KESTU_ERR_NO_MEMORY (120012) and KESTU_ERR_WRITE (120032).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_set_line(kestu_edit_t *edit, const char *text,
                                                            size_t length);

/* Gives up the line of `edit`, where one is read, and puts the terminal back. */
KESTU_API void kestu_edit_end(kestu_edit_t *edit);

/*
 * Puts the terminal of `edit` back, from a signal handler too: for programs that are about to end,
 * or to stop. kestu_edit_readline takes it up again when the handler returns. Null does nothing.
 */
KESTU_API void kestu_edit_restore(const kestu_edit_t *edit);

/*
 * Takes the line of `edit` off the screen and puts the terminal back, so that the program may print
 * or stop. Fails with KESTU_ERR_WRITE (120032).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_hide(kestu_edit_t *edit);

/*
 * Takes the line of `edit` up again below what was printed. Fails with KESTU_ERR_WRITE (120032) and
 * KESTU_ERR_NO_MEMORY (120012).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_show(kestu_edit_t *edit);

/*
 * Tells `edit` that the screen has `columns` and `rows` now; zeros ask the terminal. What is shown
 * is drawn anew. A screen that nobody has told the size of has 80 and 24. Fails as kestu_edit_show.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_resize(kestu_edit_t *edit, unsigned columns,
                                                          unsigned rows);

/*
 * What `edit`, which has no descriptors, has drawn since the last call, `length` bytes (counted
 * through it unless null). They are its own until the next call of any function.
 */
KESTU_API const char *kestu_edit_output(kestu_edit_t *edit, size_t *length);

/*
 * Lets the keys called `keys` do `action` in `edit` from now on. One key, or Ctrl-X and another
 * one, with blanks between: "Ctrl-A", "Alt-Backspace", "Ctrl-Left", "F5", "Ctrl-X Ctrl-U". Names:
 * Up Down Left Right Home End PageUp PageDown Insert Delete Backspace Tab Enter Escape Space F1 to
 * F12; before them, in this order, Shift-, Ctrl-, Alt-. Fails with KESTU_ERR_WRONG_KEY (120086) and
 * KESTU_ERR_NO_MEMORY (120012).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_bind(kestu_edit_t *edit, const char *keys,
                                                        int action);

/* Lets `edit` ask `func` with `baton` whether a line is whole; null: nobody. */
KESTU_API void kestu_edit_on_whole(kestu_edit_t *edit, kestu_edit_whole_func func, void *baton);

/* Lets `edit` ask `func` with `baton` for hints; null: nobody. */
KESTU_API void kestu_edit_on_hint(kestu_edit_t *edit, kestu_edit_hint_func func, void *baton);

/* Lets `edit` ask `func` with `baton` for styles; null: nobody. */
KESTU_API void kestu_edit_on_style(kestu_edit_t *edit, kestu_edit_style_func func, void *baton);

/* Lets `edit` ask `func` with `baton` for completions; null: nobody. */
KESTU_API void kestu_edit_on_complete(kestu_edit_t *edit, kestu_edit_complete_func func,
                                      void *baton);

/* What is proposed stands in `proposals` in place of the text from byte `place` on. */
KESTU_API void kestu_edit_propose_from(kestu_edit_proposals_t *proposals, size_t place);

/*
 * Adds `text` to `proposals`. In a list it stands as `shown`, or as itself when that is null. When
 * it is the only one, `behind` (null: nothing) is written after it. Fails with KESTU_ERR_NO_MEMORY
 * (120012).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_propose(kestu_edit_proposals_t *proposals,
                                                           const char *text, const char *shown,
                                                           const char *behind);

/*
 * Adds `line` of `length` bytes to the history of `edit`, in place of an equal one that is not the
 * last; lines that are read are not added by themselves. The oldest goes when there are more than
 * the limit. Fails with KESTU_ERR_NO_MEMORY (120012).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_history_add(kestu_edit_t *edit, const char *line,
                                                               size_t length);

/* Lets the history of `edit` hold at most `lines`, 1000 until this is called. */
KESTU_API void kestu_edit_history_limit(kestu_edit_t *edit, size_t lines);

/* How many lines the history of `edit` holds. */
KESTU_API size_t kestu_edit_history_count(const kestu_edit_t *edit);

/*
 * The line of the history of `edit` at `index`, 0 for the oldest, or null; its bytes are counted
 * through `length` unless that is null.
 */
KESTU_API const char *kestu_edit_history_line(const kestu_edit_t *edit, size_t index,
                                              size_t *length);

/*
 * Adds the lines of the file at `path` to the history of `edit`; a file that is not there has none.
 * It is locked meanwhile. Failures: KESTU_ERR_OPEN (120030) and KESTU_ERR_READ (120031), each with
 * the system's text, and KESTU_ERR_NO_MEMORY (120012).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_history_load(kestu_edit_t *edit,
                                                                const char *path);

/*
 * Adds the lines that were added to the history of `edit` since it was last loaded or saved to the
 * file at `path`, which nobody else may read, and shortens one that has grown beyond the limit; so
 * the lines of several programs are kept. The file is locked meanwhile. Failures are those of
 * kestu_edit_history_load, and KESTU_ERR_WRITE (120032) with the system's text.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_edit_history_save(kestu_edit_t *edit,
                                                                const char *path);

KESTU_END_DECLS

#endif
