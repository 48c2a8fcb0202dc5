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
 * 16-bit nor 8-bit grayscale.", "The image has no pixels." when there should be some. Images are
 * only read: all functions may run at the same time.
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
 * of an image.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_histogram(const kestu_img_t *img, int *nbins,
                                                            uint64_t **hist);

/*
 * Stores through `entropy` the Shannon entropy of the gray levels of `img` in bits; 0 for an image
 * without pixels. The only error is an image that is not measured, under "Can't calculate entropy
 * for an image.". Nothing is allocated: the counts of 16 bits take 256 KiB of stack (512 KiB above
 * 2^32 pixels).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_entropy(const kestu_img_t *img, double *entropy);

/*
 * The threshold, not rounded, between the dark and the bright pixels that `hist`, the `nbins`
 * counts of a histogram, tells of: the iterative intermeans or isodata method (Ridler and Calvard,
 * "Picture thresholding using an iterative selection method", 1978). The bins at both ends take
 * part like any other. `nbins` * 0.5 when fewer than two levels occur.
 */
KESTU_API double kestu_img_thres_IJ(int nbins, const uint64_t *hist);

/*
 * Stores for every pixel of `img` 0 at the dark end, which is the largest value (255 or 65535) when
 * white is zero and 0 when black is zero, and 1 elsewhere: as a double in the same row and column
 * of the caller's matrix `out`, which has the image's height and width, and rows that do not
 * overlap; what is stored there meanwhile may be something else. The only error is an image that is
 * not measured, under "Cannot provide image data mask.". Nothing is allocated.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_data_dmask(const kestu_img_t *img, double **out);

/*
 * As kestu_img_data_dmask for the optical density: of a pixel of value q, where M is the largest,
 * `saturated` for q = M; otherwise log10(M / (M - q)) when white is zero and log10(M / q) when
 * black is zero, where it is infinite for q = 0. The error stands under "Can't calculate optical
 * intensity.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_calc_density(const kestu_img_t *img, double **out,
                                                               double saturated);

/*
 * As kestu_img_data_dmask for the relative intensity of an imaging-plate scan: 10^((v - 1/2) *
 * `latitude`) * `resolution`^2 / 10000 * (4000 / `sensitivity`), in which v is q / M when white is
 * zero and (M - q) / M when black is zero, for a pixel of value q where M is the largest. The error
 * stands under "Can't calculate Fuji relative intensity.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_calc_fujiri(const kestu_img_t *img, double **out,
                                                              double resolution, double sensitivity,
                                                              double latitude);

KESTU_END_DECLS

#endif
