// The ways to count the characters of texts in UTF-8. All give the same results.
#pragma once

#include "base/dispatch.hpp"

#include <cstddef>

namespace kestu {

struct LengthKernel {
    const char *name;
    bool CpuFeatures::*needs;
    size_t (*characters)(const char *s);
};

extern Dispatch<LengthKernel> length_dispatch;

size_t characters_128(const char *s);
size_t characters_512(const char *s);

} // namespace kestu
