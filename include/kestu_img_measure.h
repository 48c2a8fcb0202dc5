/*
 * Measures of grayscale images.
 *
 *     int nbins;
 *     uint64_t *hist;
 *     kestu_error_t *err = kestu_img_histogram(&img, &nbins, &hist);
 *     if (!err)
 *         printf("%g\n", kestu_img_thres_IJ(nbins, hist));
 *
 * An image is measured when it has one sample a pixel, photometric interpretation 0 or 1, and 8 or
 * 16 bits. What is not is refused with an error of code 0, these being checked in this order: "The
 * image is not grayscale.", "The photointerpretation is not sutable: %d", "The image is neither
 * 16-bit nor 8-bit grayscale.". Images are only read: all functions may run at the same time.
 */
#ifndef KESTU_IMG_MEASURE_H
#define KESTU_IMG_MEASURE_H

#include "kestu_img.h"

KESTU_BEGIN_DECLS

/*
 * Counts the pixels of `img` of every gray level. Stores the number of levels, 256 or 65536,
 * through `nbins` and through `hist` a new array of as many counts, which the caller releases with
 * kestu_mem_free. White-is-zero images are counted as stored. Errors: an image that is not
 * measured, with nothing stored, and those of kestu_mem_calloc, all under "Cannot create histogram
 * of an image.". Takes 256 KiB of stack for 16 bits (512 KiB above 2^32 pixels).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_histogram(const kestu_img_t *img, int *nbins,
                                                            uint64_t **hist);

/*
 * Stores through `entropy` the Shannon entropy of the gray levels of `img` in bits; 0 for an image
 * without pixels. The only error is an image that is not measured, under "Can't calculate entropy
 * for an image.". Nothing is allocated; the stack is used as by kestu_img_histogram.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_entropy(const kestu_img_t *img, double *entropy);

/*
 * The threshold, not rounded, between the dark and the bright pixels that `hist`, the `nbins`
 * counts of a histogram, tells of: the iterative intermeans or isodata method (Ridler and Calvard,
 * "Picture thresholding using an iterative selection method", 1978). The bins at both ends take
 * part like any other. `nbins` * 0.5 when fewer than two levels occur.
 */
KESTU_API double kestu_img_thres_IJ(int nbins, const uint64_t *hist);

KESTU_END_DECLS

#endif
