// Images of chains from strangers: as they come, and with a header that fits them.
#include "fuzz/check.hpp"
#include "kestu_error_image.h"

#include <tpl.h>

extern "C" tpl_hook_t tpl_hook;

using namespace kestu::fuzz;

namespace {

int refuse_to_print(const char *, ...) {
    std::abort();
}

void refuse_to_exit(const char *, ...) {
    std::abort();
}

// What comes out of bytes goes through an image once more unchanged.
void check(const void *bytes, size_t size) {
    kestu_error_t *err = nullptr;
    kestu_error_deserialize(&err, bytes, size);
    void *image = nullptr;
    size_t image_size = 0;
    kestu_error_serialize(err, &image, &image_size);
    require(image != nullptr);
    kestu_error_t *copy = nullptr;
    kestu_error_deserialize(&copy, image, image_size);
    require(kestu_error_crc16(copy) == kestu_error_crc16(err));
    require(!copy == !err);
    std::free(image);
    kestu_error_clear(copy);
    kestu_error_clear(err);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    tpl_hook.oops = refuse_to_print;
    tpl_hook.fatal = refuse_to_exit;
    start_library();
    check(data, size);
    std::string framed("tpl\2----A(iissis)\0", 18);
    framed.append(reinterpret_cast<const char *>(data), size);
    const auto framed_size = static_cast<uint32_t>(framed.size());
    std::memcpy(framed.data() + 4, &framed_size, sizeof framed_size);
    check(framed.data(), framed.size());
    return 0;
}
