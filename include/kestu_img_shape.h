/*
 * Circles and axis-parallel ellipses, drawn pixel by pixel through a callback.
 *
 *     static kestu_error_t *set(int x, int y, void *data, double intensity) {
 *         ((uint8_t **)data)[y][x] = (uint8_t)(255 * intensity);
 *         return NULL;
 *     }
 *     kestu_error_t *err = kestu_img_circle(50, 50, 40, set, img.data8);
 *
 * No image is touched: `plot` receives every pixel together with the caller's `data`, may be called
 * more than once for a pixel, and does the clipping; only pixels whose coordinates do not fit into
 * an int are left out. When it returns an error, drawing stops at once and the drawing function
 * returns that error, the only one there is. Nothing is allocated and no state is kept: everything
 * may run at the same time.
 */
#ifndef KESTU_IMG_SHAPE_H
#define KESTU_IMG_SHAPE_H

#include "kestu_error.h"

KESTU_BEGIN_DECLS

/*
 * Receives a pixel in column `x` and row `y` with the caller's `data`. The `intensity` is how much
 * of the pixel is covered, up to 1. An error ends the drawing.
 */
typedef kestu_error_t *(*kestu_img_plot_func)(int x, int y, void *data, double intensity);

/*
 * Draws with intensity 1 the circle of radius `r` around (`xm`, `ym`). The method is that of
 * incremental error terms (Bresenham, "A linear algorithm for incremental digital display of
 * circular arcs", 1977).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_circle(int xm, int ym, int r,
                                                         kestu_img_plot_func plot, void *data);

/* As kestu_img_circle for the ellipse with half-axes `a` along x and `b` along y. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_ellipse(int xm, int ym, int a, int b,
                                                          kestu_img_plot_func plot, void *data);

/*
 * As kestu_img_circle for the ellipse inscribed in the rectangle of which (`x0`, `y0`) and (`x1`,
 * `y1`) are opposite corners, in any order. The rectangle's sides may be even or odd.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_ellipser(int x0, int y0, int x1, int y1,
                                                           kestu_img_plot_func plot, void *data);

/*
 * Draws the circle of radius `r` around (`xm`, `ym`) as a line of width 1 that covers pixels in
 * part, with the pixels that the walk of kestu_img_circle meets and, in every step, those on the
 * other side of the line. Intensities are those of kestu_img_ellipser_aa. The four ends of the axes
 * come twice, at the beginning and at the end of the walk, both times with 1.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_circle_aa(int xm, int ym, int r,
                                                            kestu_img_plot_func plot, void *data);

/*
 * Draws the ellipse in the rectangle with corners (`x0`, `y0`) and (`x1`, `y1`) as a line of width
 * 1 that covers pixels in part. Every pixel that has a part is plotted once, and intensities add up
 * to the area of the line. The intensity is the part of the pixel between two straight lines at
 * half the width on both sides of the ellipse, in its direction at the point that is next to the
 * pixel's centre; where it bends sharply, and where its halves meet, that of smaller squares within
 * the pixel. This is unweighted area sampling (Catmull, "A hidden-surface algorithm with
 * anti-aliasing", 1978) on the distance from a point to an ellipse (Eberly, "Distance from a point
 * to an ellipse, an ellipsoid, or a hyperellipsoid", 2013).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_ellipser_aa(int x0, int y0, int x1, int y1,
                                                              kestu_img_plot_func plot, void *data);

/* As kestu_img_ellipser_aa for the ellipse around (`xm`, `ym`) with half-axes `a` and `b`. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_ellipse_aa(int xm, int ym, int a, int b,
                                                             kestu_img_plot_func plot, void *data);

/*
 * As kestu_img_ellipser_aa with a line of `width` pixels, and any numbers. The corners are rounded
 * to whole pixels; the width is not rounded. A width of 1 or less draws the line of width 1.
 * Coordinates beyond int count as its ends; what is not a number counts as 0.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_ellipser_waa(double x0, double y0, double x1,
                                                               double y1, double width,
                                                               kestu_img_plot_func plot,
                                                               void *data);

/*
 * As kestu_img_ellipser_waa for the ellipse around (`xm`, `ym`) with half-axes `a` and `b`: what is
 * rounded are the corners (`xm` - `a`, `ym` - `b`) and (`xm` + `a`, `ym` + `b`).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_ellipse_waa(double xm, double ym, double a,
                                                              double b, double width,
                                                              kestu_img_plot_func plot, void *data);
/* As kestu_img_ellipse_waa with both half-axes `r`, around (`xm`, `ym`), `width` wide. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_img_circle_waa(double xm, double ym, double r,
                                                             double width, kestu_img_plot_func plot,
                                                             void *data);

KESTU_END_DECLS

#endif
