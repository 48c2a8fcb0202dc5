/*
 * What all public headers share: visibility, linkage and the compiler's help against misuse.
 *
 * Every function of the library has C linkage. Nearly all that can fail return a pointer to an
 * error (kestu_error.h); null means success and results come back through out-parameters. The
 * compiler warns when such a result is dropped.
 */
#ifndef KESTU_DEFS_H
#define KESTU_DEFS_H

#ifdef __cplusplus
/* Begins the declarations of a header that have C linkage. */
#define KESTU_BEGIN_DECLS extern "C" {
/* Ends the declarations of a header that have C linkage. */
#define KESTU_END_DECLS }
#else
#define KESTU_BEGIN_DECLS
#define KESTU_END_DECLS
#endif

#if defined(__GNUC__)
/* Marks what the library exports. */
#define KESTU_API __attribute__((visibility("default")))
/* Lets the compiler warn when a result is dropped. */
#define KESTU_MUST_USE __attribute__((warn_unused_result))
/* Lets the compiler check argument `text`, a format, with those from `first` on; 0: a va_list. */
#define KESTU_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define KESTU_API
#define KESTU_MUST_USE
#define KESTU_PRINTF(text, first)
#endif

#endif
