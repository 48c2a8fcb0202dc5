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
#define KESTU_BEGIN_DECLS extern "C" {
#define KESTU_END_DECLS }
#else
#define KESTU_BEGIN_DECLS
#define KESTU_END_DECLS
#endif

#if defined(__GNUC__)
#define KESTU_API __attribute__((visibility("default")))
#define KESTU_MUST_USE __attribute__((warn_unused_result))
#define KESTU_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define KESTU_API
#define KESTU_MUST_USE
#define KESTU_PRINTF(text, first)
#endif

#endif
