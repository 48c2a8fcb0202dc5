/*
 * Grayscale images: the record that holds one, and TIFF files.
 *
 *     kestu_img_t img;
 *     kestu_error_t *err = kestu_img_read("scan.tif", &img);
 *     if (!err)
 *         printf("%d\n", img.data8 ? img.data8[0][0] : img.data16[0][0]);
 *     kestu_img_free(&img);
 *
 * The record belongs to the caller, its arrays to the record. A pixel is addressed as row, then
 * column. No state is kept: different records may be used at the same time. Measures of an image
 * are in kestu_img_measure.h.
 */
#ifndef KESTU_IMG_H
#define KESTU_IMG_H

#include "kestu_error.h"

#include <stdint.h>

KESTU_BEGIN_DECLS

/*
 * An image and what its file says of it. The matrices are those of kestu_mem_matrix_alloc with
 * rows 0 to height - 1 and columns 0 to width - 1; at most one of them is not null.
 */
typedef struct kestu_img_t {
    uint8_t **data8;         /* the pixels when bits[0] is 8 */
    uint16_t **data16;       /* the pixels when bits[0] is 16 */
    int32_t type;            /* 1 when a TIFF image has been read, else 0 */
    int32_t height;          /* rows */
    int32_t width;           /* columns */
    int32_t samples;         /* samples per pixel */
    int32_t bits[3];         /* bits per sample of up to three channels; the first one counts */
    int32_t photometric;     /* 0 white is zero, 1 black is zero, ...; -1 when the file is silent */
    double xres;             /* pixels per inch, 0 when the file is silent */
    double yres;             /* pixels per inch, 0 when the file is silent */
    char *software;          /* the program that wrote the file, or null */
    int32_t compression;     /* as the file has it; the reader takes all data as uncompressed */
    int32_t planar;          /* planar configuration */
    uint32_t *strip_offsets; /* where the strips stand in the file */
    int32_t n_strip_offsets; /* how many strips have an offset */
    uint32_t *strip_bytes;   /* how long the strips are */
    int32_t n_strip_bytes;   /* how many strips have a length */
    int32_t resunit;         /* resolution unit: 2 inch, 3 centimetre; -1 when the file is silent */
} kestu_img_t;

/*
 * Reads the file at `path` into the record `img`. The record is zeroed first, so its arrays have to
 * be released before it is read into again; a failure leaves it without arrays.
 *
 * What is read is little-endian TIFF (revision 6.0) of 8 or 16 bits in uncompressed strips, with
 * any number of directories: a later one's tags replace an earlier one's. Samples are stored one
 * after another, row by row, wherever the strips end; pixels that the strips do not reach are 0,
 * and samples beyond the last pixel are left unread. Other depths give a record without pixels. The
 * values of StripOffsets, StripByteCounts and Software stand at the entry's offset even when they
 * would fit into the entry itself, but for a single strip.
 *
 * Everything that a file claims is compared with its size before memory is asked for. Errors, under
 * "Cannot read TIFF image.", are those of kestu_mem_matrix_alloc and:
 *
 * - KESTU_ERR_OPEN (120030) "Cannot open file '%s'";
 * - KESTU_ERR_READ (120031) when the file ends too soon, or cannot be read;
 * - KESTU_ERR_SEEK (120033) when the file cannot be positioned in, as a pipe;
 * - KESTU_ERR_NOT_TIFF (120150) "Motorola TIFF is not supported.", "Unknown data format.", "Unknown
 *   TIFF format.";
 * - KESTU_ERR_TIFF_TAG (120151) "Invalid TIFF tag [name=%d type=%d length=%d offset=%d]";
 * - KESTU_ERR_IMAGE_STRUCTURE (120152) for the structure of the image: its strips, resolution unit,
 *   photometric interpretation, or directories that form a loop or share bytes;
 * - KESTU_ERR_INCOMPLETE_DATA (120153) for strips that reach past the end of the file; or an image
 *   that claims more samples than the file holds by 1 MiB, or by a million rows;
 * - code 0 "No image data were found.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_read_tiff(const char *path, kestu_img_t *img);

/*
 * As kestu_img_read_tiff without the pixels. The errors stand under "Cannot read TIFF information
 * from file.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_read_tiff_info(const char *path,
                                                                 kestu_img_t *img);

/*
 * Reads the file at `path` into the record `img`, whatever its format, of which only TIFF is known
 * today. Errors are those of the TIFF readers under "Cannot read image.";
 * KESTU_ERR_UNKNOWN_IMAGE_TYPE (120154) for a file that is not TIFF.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_read(const char *path, kestu_img_t *img);

/*
 * Writes the image `img` as little-endian TIFF to the file at `path`: ten directory entries, the
 * text "KESTU " with the library's version, and the rows as one uncompressed strip. Resolutions are
 * not written; of a depth other than 8 and 16 bits only the head is. Errors: KESTU_ERR_OPEN
 * (120030) "Cannot open file '%s'"; KESTU_ERR_WRITE (120032) when the file does not take all bytes,
 * which leaves it as far as it was written; KESTU_ERR_IMAGE_STRUCTURE (120152) for an image whose
 * pixels need 4 GiB or more, or that has none although its height and width say so; all under
 * "Cannot write TIFF image.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_write_tiff(const char *path,
                                                             const kestu_img_t *img);

/*
 * Writes `nrows` pointers to rows of `ncols` doubles, `rows`, to the file at `path` as a 16-bit
 * image, white is zero. The smallest value becomes 0 and the largest 65535; a value x between them
 * becomes |(x - smallest) * 65535 / (largest - smallest)|, cut to an integer; equal values all
 * become 0. The smallest is looked for among values below 1e300 and the largest among those above
 * -1e300. Values that are not a number, and others for which the formula yields none, become 0;
 * results above 65535 become 65535. Errors are those of kestu_img_write_tiff and of
 * kestu_mem_matrix_alloc under "Cannot convert double array to TIFF image.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_darr_to_tiff(const char *path, double **rows,
                                                               int nrows, int ncols);

/*
 * Releases the matrices, the strip arrays and the software text of `img` and sets their pointers to
 * null. The other fields stay.
 */
KESTU_API void kestu_img_free(kestu_img_t *img);

/* Stores the resolution of `img` in pixels per millimetre through `xmm` and `ymm`; returns null. */
KESTU_API kestu_error_t *kestu_img_get_resmm(const kestu_img_t *img, double *xmm, double *ymm);

KESTU_END_DECLS

#endif
