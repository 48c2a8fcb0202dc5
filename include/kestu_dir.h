/*
 * Walking the files of a folder or of its whole subtree, filtered by lists of file-name patterns.
 *
 *     kestu_dir_traverse_t walk = {.flags = KESTU_DIR_RECURSE, .callback = print_path};
 *     err = kestu_dir_traverse("src", "*.c;*.h", "*_old.*", &walk, pool);
 *
 * A pattern list is text: patterns of apr_fnmatch separated by ";". They are matched against the
 * whole path, the folder's name as it was given included, so that "*.c" finds "src/io/file.c" as
 * long as KESTU_DIR_SLASH does not keep "*" from crossing "/"; with KESTU_DIR_NAMES against the
 * name alone, so that "file.*" finds it too.
 *
 * Traversals run at the same time when each has options and a pool of its own.
 */
#ifndef KESTU_DIR_H
#define KESTU_DIR_H

#include "kestu_error.h"

#include <apr_pools.h>
#include <apr_tables.h>

KESTU_BEGIN_DECLS

/* What `flags` may hold. The first four are apr_fnmatch's own. */
enum {
    KESTU_DIR_NOESCAPE = 0x01,   /* a backslash in a pattern stands for itself */
    KESTU_DIR_SLASH = 0x02,      /* "/" is matched by "/" only */
    KESTU_DIR_PERIOD = 0x04,     /* a leading "." is matched by "." only */
    KESTU_DIR_CASE_BLIND = 0x08, /* letters match in either case */
    KESTU_DIR_RECURSE = 0x10,    /* visit subfolders too */
    KESTU_DIR_STOP = 0x20,       /* end at the first error of the callback */
    KESTU_DIR_GO_ON = 0x40,      /* report a subfolder that cannot be opened, and go on */
    KESTU_DIR_NAMES = 0x80,      /* match the last component of a path, not all of it */
    KESTU_DIR_FOLDERS = 0x100,   /* ask the callback about each subfolder */
};

/*
 * Called with the `path` of a file, the `user_data` of the options and a `pool` that is cleared
 * before the next file. An error that it returns is taken over: printed on standard error and
 * released, or with KESTU_DIR_STOP handed to the caller of the traversal. KestuDLlistStopWalking
 * ends the traversal without a failure.
 *
 * With KESTU_DIR_FOLDERS it is called for subfolders as well, whether the lists match them or not,
 * with a "/" at the end of `path`; KestuDLlistStopWalking then keeps the traversal out of that
 * folder, and does not end it.
 */
typedef kestu_error_t *(*kestu_dir_func)(const char *path, void *user_data, apr_pool_t *pool);

/* The options of one traversal: filled with zeros but for what is wanted. */
typedef struct kestu_dir_traverse_t {
    int flags;                   /* KESTU_DIR_RECURSE and so on, or 0 */
    apr_array_header_t *exclude; /* of char *: files that match one are left out */
    apr_array_header_t *include; /* of char *: only files that match one are visited; null: all */
    kestu_dir_func callback;     /* called for every file that passes */
    void *user_data;             /* handed through to the callback */
} kestu_dir_traverse_t;

/*
 * Calls the callback of `options` for every regular file and symbolic link of the folder `dir`
 * whose path passes the lists. Links are not followed; folders, devices, pipes and sockets are not
 * reported, but for folders with KESTU_DIR_FOLDERS. The files of a folder come in the order in
 * which the system returns them, then its subfolders in theirs, each as a whole. Files that vanish
 * or cannot be looked up are passed over.
 *
 * `include` and `exclude` are pattern lists that are compiled into `options` within `pool`; with a
 * null text the list that is there stays. An empty `include` lets no file pass.
 *
 * Memory is taken from child pools of `pool`; beside what is needed for one file only the paths of
 * subfolders still to be visited are kept, and one folder is open at a time.
 *
 * Errors stand under "Cannot traverse directories.": "(src/io): " and the system's text for a
 * folder that cannot be opened (with KESTU_DIR_GO_ON only for `dir` itself; that of another is
 * printed on standard error), the system's text for one that cannot be closed or fails to be read
 * 16 times in a row, for a path that grows beyond the system's bound, and when no memory is left.
 * Each failed read before that prints a warning on standard output. When the callback's error ends
 * the traversal, the folder it was called for stays open until `pool` is cleared.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dir_traverse(const char *dir, const char *include,
                                                           const char *exclude,
                                                           kestu_dir_traverse_t *options,
                                                           apr_pool_t *pool);

/*
 * Compiles the pattern list `text` into a new array of strings in `pool` and stores it through
 * `array`. Pieces that are empty do not count. A null text, or no memory left, leaves the array as
 * it was.
 */
KESTU_API void compilePattern(const char *text, apr_array_header_t **array, apr_pool_t *pool);

/*
 * 1 when `path` matches one of the patterns in `array` under the flags of `options`, and when
 * `array` is null; 0 when it matches none, and for a null path.
 */
KESTU_API int matchToCompositePattern(const char *path, const apr_array_header_t *array,
                                      const kestu_dir_traverse_t *options);

KESTU_END_DECLS

#endif
