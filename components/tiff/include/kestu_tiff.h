/*
 * TIFF files of every kind that libtiff reads, as grayscale images.
 *
 *     kestu_tiff_options_t options = {.page = 2};
 *     kestu_tiff_info_t info;
 *     kestu_img_t img;
 *     kestu_error_t *err = kestu_tiff_read("stack.tif", &options, &img, &info);
 *     if (!err)
 *         printf("page 2 of %u, %d x %d\n", info.pages, img.width, img.height);
 *     kestu_img_free(&img);
 *
 * A component of its own: link libkestu_tiff (pkg-config kestu-tiff, kestu::tiff in CMake). Where
 * kestu_img.h takes one plain layout as it stands, this reader takes both byte orders, BigTIFF,
 * strips and tiles, all compressions, any page, and turns what it finds into levels of gray:
 *
 * - unsigned and signed integers of 1 to 32 bits, and floats of 16, 24, 32 and 64. Up to 8 bits
 *   become 8, all others 16, stretched so that the full scale of the file is the full scale of
 *   the image: that of its integers, or the finite values of this page from the least to the
 *   largest for floats, where what is not a number becomes 0;
 * - white is zero and black is zero stay what they are, levels as stored;
 * - palettes and colours become their luma 0.299 R + 0.587 G + 0.114 B (Rec. ITU-R BT.601) of
 *   the stored values, black is zero. Alpha and other extra samples are left out, and counted.
 *   CMYK, CIE L*a*b* and YCbCr outside of JPEG are first made RGB of 8 bits by libtiff;
 * - the orientation is applied: row 0 is the top, column 0 the left.
 *
 * Nothing is printed and no state is kept: what libtiff says stands in the chain of a failure, and
 * different files may be read and written at the same time. Handles serve one thread at a time.
 */
#ifndef KESTU_TIFF_H
#define KESTU_TIFF_H

#include "kestu_img.h"

#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/* How to read. A record of zeros, or none, is what most want. */
typedef struct kestu_tiff_options_t {
    uint32_t page;        /* 1 is the first; 0 stands for 1 */
    int32_t lenient;      /* 0: damage is a failure; else what is lost is 0, and counted */
    uint64_t max_pixels;  /* of a page; 0 stands for 2^30 */
    uint64_t max_memory;  /* for one page, and for any one block, in bytes; 0 stands for 2^32 */
    uint64_t reserved[4]; /* zeros; room for later fields */
} kestu_tiff_options_t;

/* What a page is in its file, and what became of it. */
typedef struct kestu_tiff_info_t {
    uint32_t page;        /* which one it is, 1 the first */
    uint32_t pages;       /* how many the file has */
    uint32_t width;       /* of the image, in pixels, after the orientation was applied */
    uint32_t height;      /* of the image, in pixels, after the orientation was applied */
    int32_t levels;       /* bits of a level in the image: 8 or 16 */
    int32_t bits;         /* bits of a sample in the file */
    int32_t samples;      /* samples of a pixel in the file */
    int32_t format;       /* of samples: 1 unsigned, 2 signed, 3 float */
    int32_t photometric;  /* as the file has it; -1 when it is silent */
    int32_t gray;         /* of the image: 0 white is zero, 1 black is zero */
    int32_t compression;  /* as the file has it */
    int32_t planar;       /* 1 samples of a pixel together, 2 apart */
    int32_t orientation;  /* as the file has it, 1 to 8 */
    int32_t ignored;      /* samples of a pixel that were left out */
    int32_t big_endian;   /* 1 or 0: the byte order */
    int32_t big_tiff;     /* 1 or 0: offsets of 64 bits */
    int32_t tiled;        /* 1 or 0: tiles, not strips */
    int32_t plain;        /* 1 or 0: kestu_img_read makes the same image of this file */
    int32_t resunit;      /* 1 none, 2 inch, 3 centimetre */
    double xres;          /* pixels per unit; 0 when the file is silent */
    double yres;          /* pixels per unit; 0 when the file is silent */
    double factor;        /* a level stands for the value offset + factor * level of the file */
    double offset;        /* the value of the file that level 0 stands for */
    uint64_t lost;        /* pixels in damaged parts, so far; with `lenient` only */
    char warning[128];    /* the first of libtiff, or empty */
    uint64_t reserved[4]; /* room for later fields */
} kestu_tiff_info_t;

/*
 * Reads a page of the file at `path` into the record `img`, which is zeroed first and has to be
 * released with kestu_img_free; a failure leaves it without arrays. `options` may be null, and so
 * may `info`, which is filled on success. The record has one sample of 8 or 16 bits, photometric
 * interpretation 0 or 1, resolutions in pixels per inch (0 without a unit), the text of the file's
 * Software tag, and no strips.
 *
 * Memory is taken as the pixels come, so that a small file that claims to be large costs little
 * before it is found out. Errors, all under "Cannot read TIFF page." and with what libtiff said as
 * their cause, behind "libtiff: ":
 *
 * - KESTU_ERR_NO_MEMORY (120012) when no memory is left;
 * - KESTU_ERR_OPEN (120030) "Cannot open file '%s'";
 * - KESTU_ERR_READ (120031) when the file cannot be read;
 * - KESTU_ERR_NOT_TIFF (120150) when it is not TIFF;
 * - KESTU_ERR_IMAGE_STRUCTURE (120152) for the page: it does not exist, is larger than the limits,
 *   or has no meaning in gray;
 * - KESTU_ERR_INCOMPLETE_DATA (120153) for strips or tiles that are missing, cut off or damaged, or
 *   not decoded by this libtiff.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tiff_read(const char *path,
                                                        const kestu_tiff_options_t *options,
                                                        kestu_img_t *img, kestu_tiff_info_t *info);

/* A page that is being read. */
typedef struct kestu_tiff_reader_t kestu_tiff_reader_t;

/*
 * Row by row: stores a reader of a page of the file at `path` through `out`, or null. `options` may
 * be null. What a reader holds at once is a strip, if it is not uncompressed or decoded row by row,
 * or a row of tiles; pages that are turned or stand on their head are held whole. Errors are those
 * of kestu_tiff_read.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_tiff_open(const char *path, const kestu_tiff_options_t *options, kestu_tiff_reader_t **out);

/* What the page of `reader` is. The record is the reader's own. */
KESTU_API const kestu_tiff_info_t *kestu_tiff_info(const kestu_tiff_reader_t *reader);

/*
 * Stores the next row of the page of `reader` at `row`, which has room for its width of bytes, or
 * of uint16_t when its levels have 16 bits. After the last row comes the first. Errors are those of
 * kestu_tiff_read; the reader can only be closed then.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tiff_row(kestu_tiff_reader_t *reader, void *row);

/*
 * Receives a `tag` of a page by its number, its `name` in libtiff or "" when it is private, its
 * `value` as a text in which control characters stand as "\x1b" (long lists and texts are cut and
 * end in "..."), and the caller's `baton`. What it returns ends the walk unless it is 0.
 */
typedef int (*kestu_tiff_tag_func)(int tag, const char *name, const char *value, void *baton);

/*
 * Calls `func` with `baton` for every tag of the page of `reader`, in the order of the file, and
 * returns the last result. Tags whose values cannot be read have "?" for a value.
 */
KESTU_API int kestu_tiff_tags(kestu_tiff_reader_t *reader, kestu_tiff_tag_func func, void *baton);

/* Closes `reader` and sets it to null. A null reader does nothing. */
KESTU_API void kestu_tiff_close(kestu_tiff_reader_t **reader);

/* How to write. */
typedef struct kestu_tiff_write_options_t {
    int32_t deflate;         /* 0: not compressed, else by deflate */
    int32_t reserved_flags;  /* 0 */
    const char *description; /* the ImageDescription tag, or null */
    const char *software;    /* the Software tag; null stands for "KESTU " and the version */
    uint64_t reserved[4];    /* zeros; room for later fields */
} kestu_tiff_write_options_t;

/*
 * Writes the image `img` to the file at `path`, with its resolution and its unit: little-endian
 * strips of about 64 KiB, BigTIFF when it could grow beyond 4 GiB. `options` may be null. Errors,
 * under "Cannot write TIFF image.": KESTU_ERR_NO_MEMORY (120012); KESTU_ERR_OPEN (120030) "Cannot
 * open file '%s'"; KESTU_ERR_WRITE (120032) with what libtiff said when the file does not take all
 * bytes; KESTU_ERR_IMAGE_STRUCTURE (120152) for an image that is not grayscale of 8 or 16 bits, or
 * has no pixels.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tiff_write(const char *path, const kestu_img_t *img,
                                                         const kestu_tiff_write_options_t *options);

/* A file that is being written. */
typedef struct kestu_tiff_writer_t kestu_tiff_writer_t;

/*
 * Row by row: stores through `out` a writer of the file at `path`, or null, for an image of the
 * width, height, depth, photometric interpretation and resolution of `form`, whose matrices are not
 * looked at. `options` may be null. Errors are those of kestu_tiff_write.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tiff_create(const char *path, const kestu_img_t *form,
                                                          const kestu_tiff_write_options_t *options,
                                                          kestu_tiff_writer_t **out);

/*
 * Appends a `row` of bytes, or of uint16_t, to the image of `writer`. Errors are those of
 * kestu_tiff_write.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tiff_put_row(kestu_tiff_writer_t *writer,
                                                           const void *row);

/*
 * Closes `writer` and sets it to null, which a null writer is already. Errors are those of
 * kestu_tiff_write: only a file whose writer was finished with success is whole.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tiff_finish(kestu_tiff_writer_t **writer);

KESTU_END_DECLS

#endif
