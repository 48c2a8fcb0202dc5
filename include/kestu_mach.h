/*
 * The host, its operating system, and three clocks.
 *
 *     char name[200];
 *     puts(kestu_mach_os_name(name, sizeof name));
 *     double start = kestu_time_real();
 *
 * Nothing fails: what cannot be found out has a fixed answer. Everything may run at the same time,
 * but for kestu_time_init, which kestu_initialize calls.
 */
#ifndef KESTU_MACH_H
#define KESTU_MACH_H

#include "kestu_defs.h"

#include <apr_time.h>

KESTU_BEGIN_DECLS

/* Families of operating systems, as bit sets in which KESTU_OS_UNIX is common to all. */
enum {
    KESTU_OS_UNIX = 4,      /* any Unix */
    KESTU_OS_LINUX = 12,    /* Linux */
    KESTU_OS_DARWIN = 20,   /* Darwin */
    KESTU_OS_FREEBSD = 100, /* FreeBSD */
};

/* The family of the running system; KESTU_OS_UNIX when it is none of the others. */
KESTU_API int kestu_mach_os(void);

/*
 * Fills `buf` of `size` bytes with a description of the running system: the distribution's name,
 * the kernel's release and the machine type, or what uname tells when the distribution has no name.
 * The text is cut to fit and always terminated. Returns `buf`.
 */
KESTU_API char *kestu_mach_os_name(char *buf, int size);

/* The number of processors configured, at least 1. */
KESTU_API int kestu_mach_os_cpu_num(void);

/* Physical memory in mebibytes; 0.0 when unknown. */
KESTU_API double kestu_mach_physmem(void);

/* The number of the calling process. */
KESTU_API int kestu_getpid(void);

/* Primes the processor clock; kestu_initialize calls it. Always returns 0. */
KESTU_API int kestu_time_init(void);

/* Wall-clock time in seconds since the epoch; 0.0 when it cannot be read. */
KESTU_API double kestu_time_real(void);

/* Processor time of the process, user and system, in seconds; 0.0 before kestu_time_init. */
KESTU_API double kestu_time_cpu(void);

/* Sleeps for `interval` microseconds. */
KESTU_API void kestu_time_sleep(apr_interval_time_t interval);

KESTU_END_DECLS

#endif
