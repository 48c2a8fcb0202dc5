// Tests that run on every kernel that this processor has, where one result has several.
#pragma once

#include "base/dispatch.hpp"

#include <gtest/gtest.h>

#include <ostream>

namespace kestu {

template <typename Kernel>
requires requires(const Kernel &kernel) {
    kernel.needs;
}
void PrintTo(const Kernel &kernel, std::ostream *out) {
    *out << kernel.name;
}

namespace test {

// The library takes the kernel of the parameter while a test runs.
template <typename Kernel, Dispatch<Kernel> &dispatch>
class OnKernel : public testing::TestWithParam<Kernel> {
  protected:
    void SetUp() override {
        const Kernel &kernel = this->GetParam();
        if (kernel.needs && !(cpu_features().*kernel.needs))
            GTEST_SKIP() << "this processor has no kernel " << kernel.name;
        dispatch.force(kernel);
    }
    void TearDown() override { dispatch.forget(); }
};

constexpr auto name_of_kernel = [](const auto &test) { return test.param.name; };

} // namespace test
} // namespace kestu
