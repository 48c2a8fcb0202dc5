/*
 * Chains of errors as bytes, to carry an error to another process or to store it, and a checksum to
 * compare chains by.
 *
 *     void *image;
 *     size_t size;
 *     kestu_error_serialize(err, &image, &size);      // in the worker, which sends the bytes
 *     free(image);
 *     ...
 *     kestu_error_deserialize(&err, image, size);     // in its parent
 *
 * An image is a memory image of tpl with the map "A(iissis)": one record an element, the root cause
 * first, with type, code, message, file, line and function. Data and pools are not carried. No
 * state is kept: everything may run at the same time on different chains. tpl ends the process when
 * it has no memory left.
 */
#ifndef KESTU_ERROR_IMAGE_H
#define KESTU_ERROR_IMAGE_H

#include "kestu_error.h"

#include <stddef.h>

KESTU_BEGIN_DECLS

/*
 * Stores the image of the chain `err`, which may be null, through `image` and its bytes through
 * `size`. The caller releases the image with free(). When the library has no memory left, null and
 * 0 are stored.
 */
KESTU_API void kestu_error_serialize(const kestu_error_t *err, void **image, size_t *size);

/*
 * Stores through `err` the chain that the `size` bytes at `image` hold: in the order of the chain
 * that was serialised, in a pool of its own. Null is stored when the image holds no records, and
 * when the bytes are anything but an image as kestu_error_serialize makes it; they may come from a
 * stranger.
 */
KESTU_API void kestu_error_deserialize(kestu_error_t **err, const void *image, size_t size);

/*
 * A CRC-16 over all elements of `err`: 0 to 65535, 0 for null. Data do not count; of each element,
 * from the head to the root cause, type, code, line, message, file and function do.
 */
KESTU_API int kestu_error_crc16(const kestu_error_t *err);

KESTU_END_DECLS

#endif
