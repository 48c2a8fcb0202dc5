/*
 * The records of uthash that public records hold: its dynamic array and its hash handle.
 *
 *     #include <utarray.h>                          // before any header of kestu
 *     #include <kestu.h>
 *     kestu_osig_t *first = utarray_front(obj->signals);
 *
 * These headers define no macro or type of uthash. A program that uses its macros on the records
 * includes <utarray.h> or <uthash.h> before them, or defines `KESTU_USE_UTHASH`; the names below
 * are then those of uthash. Without either they are records of the same layout, to be read. They
 * belong to whom the record that holds them belongs, and to its thread.
 */
#ifndef KESTU_UTHASH_H
#define KESTU_UTHASH_H

#include <stddef.h>

#ifdef KESTU_USE_UTHASH
#include <utarray.h>
#include <uthash.h>
#endif

#ifdef UTARRAY_H
typedef UT_icd kestu_ut_icd_t;
typedef UT_array kestu_ut_array_t;
#else
/* How the elements of an array are treated: UT_icd. Any of the functions may be null. */
typedef struct kestu_ut_icd_t {
    size_t sz;                                /* bytes of an element */
    void (*init)(void *element);              /* makes an element where none was */
    void (*copy)(void *to, const void *from); /* makes an element of another */
    void (*dtor)(void *element);              /* releases what an element holds */
} kestu_ut_icd_t;

/* A dynamic array: UT_array. */
typedef struct kestu_ut_array_t {
    unsigned i;         /* how many elements there are */
    unsigned n;         /* for how many there is room */
    kestu_ut_icd_t icd; /* how the elements are treated */
    char *d;            /* the elements */
} kestu_ut_array_t;
#endif

#ifdef UTHASH_H
typedef UT_hash_handle kestu_ut_hash_handle_t;
#else
/* What makes a record an entry of a hash table: UT_hash_handle. */
typedef struct kestu_ut_hash_handle_t {
    struct UT_hash_table *tbl;      /* the table that it is in */
    void *prev;                     /* the entry before it, in the order of insertion */
    void *next;                     /* the entry behind it */
    struct UT_hash_handle *hh_prev; /* the entry before it at the same place of the table */
    struct UT_hash_handle *hh_next; /* the entry behind it at the same place of the table */
    const void *key;                /* the key */
    unsigned keylen;                /* bytes of the key */
    unsigned hashv;                 /* the hash of the key */
} kestu_ut_hash_handle_t;
#endif

#endif
