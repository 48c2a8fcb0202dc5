// Reading TIFF files that are bytes in memory.
#pragma once

#include "img/tiff_read.hpp"
#include "support/chain.hpp"
#include "tiff_bytes.hpp"

namespace kestu::test {

using Reader = kestu_error_t *(*)(ByteSource &, kestu_img_t &);

inline kestu_error_t *read_bytes(std::string_view bytes, kestu_img_t &img,
                                 Reader read = read_tiff) {
    ByteSource source({reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()});
    return read(source, img);
}

// The pixels of what is read without an error.
inline std::vector<int> pixels_of(std::string_view bytes) {
    Image img;
    EXPECT_OK(read_bytes(bytes, img));
    return img.pixels();
}

} // namespace kestu::test
