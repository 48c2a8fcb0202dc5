// The ways to compare texts without regard to the case of ASCII letters. All give the same results.
#pragma once

#include "base/dispatch.hpp"

namespace kestu {

struct CompareKernel {
    const char *name;
    bool CpuFeatures::*needs;
    int (*compare)(const char *s1, const char *s2);
};

extern Dispatch<CompareKernel> compare_dispatch;

int compare_folded_128(const char *s1, const char *s2);
int compare_folded_256(const char *s1, const char *s2);

} // namespace kestu
